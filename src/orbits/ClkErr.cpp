#include "orbits/ClkErr.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <ostream>
#include <sstream>

#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"

namespace {

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

bool IsBlank(const std::string& line)
{
    return line.find_first_not_of(" \t") == std::string::npos;
}

}  // namespace

ClkErr::ClkErr() : nepoch(0), RefSystem(' ')
{
    clkfile[0] = '\0';
}

void ClkErr::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(clkfile))
        ProgramError("Orvo", "RECEIVER CLOCK ERROR FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(clkfile, file);
}

void ClkErr::ReadFile()
{
    CountClkData();
    epoch.Resize(nepoch);
    CErr.Resize(nepoch);
    ReadFileData();
}

void ClkErr::CountClkData()
{
    std::ifstream in(clkfile);
    if (!in)
        ProgramError("Orvo", std::string("RECEIVER CLOCK ERROR FILE ") + clkfile + " CAN NOT BE OPENED!");
    std::string line;
    if (!NextLine(in, line) || line.find("CLOCK ERROR FILE:") == std::string::npos)
        ProgramError("Orvo", "Line 1 of clock file is not >CLOCK ERROR FILE:< line!");
    // The letter stands at index 18, behind the label.
    if (!NextLine(in, line) || line.find("CLOCK REF. SYS. :") == std::string::npos || line.size() < 19)
        ProgramError("Orvo", "Line 2 of clock file is not >CLOCK REF. SYS. :< line!");
    RefSystem = line[18];
    nepoch = 0;
    while (NextLine(in, line))
        if (!IsBlank(line)) ++nepoch;
}

void ClkErr::ReadFileData()
{
    std::ifstream in(clkfile);
    std::string line;
    NextLine(in, line);
    NextLine(in, line);
    long lineNo = 2;
    long i = 0;
    while (i < nepoch && NextLine(in, line)) {
        ++lineNo;
        if (IsBlank(line)) continue;
        // Exactly three numbers: NaN, inf, text or a fourth field are no
        // clock of this program's writing.
        std::istringstream words(line);
        std::string w[4];
        long day = 0;
        long double sec = 0.0L, value_us = 0.0L;
        words >> w[0] >> w[1] >> w[2] >> w[3];
        if (!w[3].empty() || !fieldtext::ToLong(w[0], day) || !fieldtext::ToLongDouble(w[1], sec)
            || !fieldtext::ToLongDouble(w[2], value_us) || day < 0 || day > 199999 || !(sec >= 0.0L && sec < 2.0L * 86400.0L))
            ProgramError("Orvo", std::string("RECEIVER CLOCK ERROR FILE ") + clkfile + ": line "
                                 + std::to_string(lineNo) + " is not MJD, second of day and clock");
        if (std::fabs(value_us) > ClkErrns::MaxClock_us)
            ProgramError("Orvo", std::string("RECEIVER CLOCK ERROR FILE ") + clkfile + ": line "
                                 + std::to_string(lineNo) + ": receiver clock beyond 1 s");
        // Added rather than set, so that a second printed as 86400.000
        // rolls over into the next day instead of being refused.
        mjd t(static_cast<unsigned long>(day), 0.0L);
        t += sec;
        epoch(i) = t;
        CErr(i) = value_us * 1e-6L;
        ++i;
    }
}

void ClkErr::Write(std::ostream& out, const std::string& markerName,
                   const std::string& markerNumber, char refSystem,
                   const matrix<mjd>& epochs, const matrix<long double>& dtAll_m)
{
    if (epochs.Length() != dtAll_m.Length())
        ProgramError("Orvo", "RECEIVER CLOCK ERROR FILE: " + std::to_string(epochs.Length())
                             + " epochs but " + std::to_string(dtAll_m.Length()) + " clock values");
    out << "CLOCK ERROR FILE: " << markerName << " / " << markerNumber << "\n";
    out << "CLOCK REF. SYS. : " << refSystem << "\n";
    char buf[64];
    for (long i = 0; i < epochs.Length(); ++i) {
        std::snprintf(buf, sizeof(buf), "%6lu%10.3Lf  %10.6Lf", epochs(i).GetMJDay(),
                      epochs(i).GetSecond(), dtAll_m(i) * ClkErrns::MicrosecondsPerMetre);
        out << buf << "\n";
    }
}
