#include "delays/myDCB.h"

#include <cstdio>
#include <cstring>
#include <fstream>

#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

using fieldtext::TrimmedField;

namespace {
// The tool writes the label misspelt; it is matched as written.
const char RefLabel[] = "#REFERECNE EPOCH:";
constexpr unsigned long LastDay = 199999;  // the mjd class's range
constexpr long double DaySeconds = 86400.0L;
}  // namespace

myDCB::myDCB() : nsat(0), recP1C1(0.0L), recP2C1(0.0L), recP1C1rms(0.0L), recP2C1rms(0.0L)
{
    file[0] = '\0';
}

void myDCB::SetFile(const char* name)
{
    if (name == nullptr || std::strlen(name) >= sizeof(file))
        ProgramError("Orvo", "MESKAL DCB FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(file, name);
}

void myDCB::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("MESKAL DCB FILE ") + file + ": line " + std::to_string(lineNo) + ": " + text);
}

void myDCB::ReadFile()
{
    // A folder opens on POSIX systems but gives no lines: as good as closed.
    if (!FileExists(file)) ProgramError("Orvo", std::string("MESKAL DCB FILE ") + file + " CAN NOT BE OPENED!");
    std::ifstream in(file);
    if (!in) ProgramError("Orvo", std::string("MESKAL DCB FILE ") + file + " CAN NOT BE OPENED!");
    Scan(in, false);
    in.clear();
    in.seekg(0);
    sat.Resize(nsat, 1, 0);
    VAL.Resize(nsat, 2, 0.0L);
    RMS.Resize(nsat, 2, 0.0L);
    Scan(in, true);
}

void myDCB::ReadValues(const std::string& line, long lineNo, long double v[4]) const
{
    if (line.size() <= myDCBns::ValuePos[3]) Fail(lineNo, "LINE ENDS BEFORE THE LAST VALUE (COLUMN 44)!");
    for (int j = 0; j < 4; ++j)
        if (!fieldtext::ToLongDouble(TrimmedField(line, myDCBns::ValuePos[j], myDCBns::FieldLen), v[j]))
            Fail(lineNo, "VALUE AT COLUMN " + std::to_string(myDCBns::ValuePos[j] + 1) + " IS NO NUMBER!");
}

void myDCB::Scan(std::istream& in, bool fill)
{
    long n = 0, lineNo = 0;
    std::string line;
    while (fieldtext::NextLine(in, line)) {
        ++lineNo;
        if (line.size() >= myDCBns::LineSize) Fail(lineNo, "LINE LONGER THAN 511 CHARACTERS!");
        if (!fill && line.find(RefLabel) != std::string::npos) {
            long day = 0;
            long double sec = 0.0L;
            if (!fieldtext::ToLong(TrimmedField(line, myDCBns::DayPos, myDCBns::DayLen), day) || day < 0
                || static_cast<unsigned long>(day) > LastDay
                || !fieldtext::ToLongDouble(TrimmedField(line, myDCBns::SecPos, line.size()), sec) || sec < 0.0L
                || sec >= DaySeconds)
                Fail(lineNo, "REFERENCE EPOCH (MJD AT COLUMN 19, SECOND AT COLUMN 25) NOT VALID!");
            RefEpoch.Set(static_cast<unsigned long>(day), sec);
        }
        if (line.empty() || (line[0] != 'S' && line[0] != 'R')) continue;
        if (!fill) {
            if (line[0] == 'S' && ++n > myDCBns::MaxLines) Fail(lineNo, "MORE THAN 32767 SATELLITE LINES!");
            continue;
        }
        long double v[4];
        ReadValues(line, lineNo, v);
        if (line[0] == 'R') {
            recP1C1 = v[0], recP1C1rms = v[1], recP2C1 = v[2], recP2C1rms = v[3];
            continue;
        }
        if (n >= nsat) Fail(lineNo, "FILE LONGER THAN AT COUNTING!");
        const char sys = line[myDCBns::SysPos];
        long num = 0;
        if (sys != 'G' && sys != 'R' && sys != 'E') Fail(lineNo, "SYSTEM LETTER (COLUMN 7) NOT G, R OR E!");
        if (!fieldtext::ToLong(TrimmedField(line, myDCBns::NumPos, myDCBns::NumLen), num) || num < 1 || num > 99)
            Fail(lineNo, "SATELLITE NUMBER (COLUMN 8) NOT IN 1..99!");
        sat(n) = static_cast<short>((sys == 'R' ? 100 : sys == 'E' ? 200 : 0) + num);
        VAL(n, myDCBns::ColP1C1) = v[0], RMS(n, myDCBns::ColP1C1) = v[1];
        VAL(n, myDCBns::ColP2C1) = v[2], RMS(n, myDCBns::ColP2C1) = v[3];
        ++n;
    }
    if (!fill) nsat = static_cast<short>(n);
    // The file changed between the passes.
    else if (n < nsat) Fail(lineNo, "FILE SHORTER THAN AT COUNTING!");
}

long myDCB::Find(short s) const
{
    for (long i = 0; i < nsat; ++i)
        if (sat(i) == s) return i;
    return -1;
}

namespace {
void WarnMissing(short s)
{
    char text[128];
    std::snprintf(text, sizeof text, "SATELLITE: %02d NOT LISTED IN DCB VALUES - SETTING 0.0s VALUES!",
                  static_cast<int>(s));
    ProgramWarning("Orvo", text);
}
}  // namespace

void myDCB::GetDCB(short s, long double& valP1C1, long double& rmsP1C1, long double& valP2C1,
                   long double& rmsP2C1) const
{
    GetDCBVAL(s, valP1C1, valP2C1);
    const long i = Find(s);
    rmsP1C1 = i < 0 ? 0.0L : RMS(i, myDCBns::ColP1C1);
    rmsP2C1 = i < 0 ? 0.0L : RMS(i, myDCBns::ColP2C1);
}

void myDCB::GetDCBRMS(short s, long double& P1C1, long double& P2C1) const
{
    const long i = Find(s);
    if (i < 0) WarnMissing(s);
    P1C1 = i < 0 ? 0.0L : RMS(i, myDCBns::ColP1C1);
    P2C1 = i < 0 ? 0.0L : RMS(i, myDCBns::ColP2C1);
}

void myDCB::GetDCBVAL(short s, long double& P1C1, long double& P2C1) const
{
    const long i = Find(s);
    if (i < 0) WarnMissing(s);
    P1C1 = i < 0 ? 0.0L : VAL(i, myDCBns::ColP1C1);
    P2C1 = i < 0 ? 0.0L : VAL(i, myDCBns::ColP2C1);
}
