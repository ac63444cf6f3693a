#include "delays/DCB.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "numerics/FieldText.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

using fieldtext::TrimmedField;
using fieldtext::NextLine;

namespace {

const char HeaderEnd[] = "PRN / STATION NAME";

bool Digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Station lines share the letter but not the two digits; a line that
// stops at the number is a cut satellite line, kept so that it is caught.
bool IsSatLine(const std::string& l)
{
    return l.size() >= 3 && (l[0] == 'G' || l[0] == 'R') && Digit(l[1]) && Digit(l[2])
           && (l.size() == 3 || std::isspace(static_cast<unsigned char>(l[3])));
}

void WarnMissing(short sat, const char* tail)
{
    char text[128];
    std::snprintf(text, sizeof text, "SATELLITE: %02d NOT LISTED IN DCB VALUES - SETTING 0.0s VALUES%s!",
                  static_cast<int>(sat), tail);
    ProgramWarning("Orvo", text);
}

}  // namespace

DCB::DCB() : nsat(0)
{
    file[0] = '\0';
    ParseValidDate();
}

void DCB::SetFile(const char* name)
{
    if (name == nullptr || std::strlen(name) >= sizeof(file))
        ProgramError("Orvo", "DCB FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(file, name);
}

void DCB::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("DCB FILE ") + file + ": line " + std::to_string(lineNo) + ": " + text);
}

void DCB::ParseValidDate()
{
    const std::string path(file);
    const std::size_t slash = path.find_last_of('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::size_t back = name.find("_ALL") != std::string::npos ? 12 : 8;
    StartEpoch.Set(DCBns::WideStartDay, 0.0L);
    EndEpoch.Set(DCBns::WideEndDay, 0.0L);
    if (name.size() < back) return;
    const std::string yymm = name.substr(name.size() - back, 4);
    for (char c : yymm)
        if (!Digit(c)) return;
    const long yy = std::stol(yymm.substr(0, 2)), month = std::stol(yymm.substr(2, 2));
    // A month 00 or 13 is no date: the name only looks like one.
    if (month < 1 || month > 12) return;
    const long year = yy > DCBns::LastCenturyFrom ? 1900 + yy : 2000 + yy;
    const auto first = [](long y, long m) {
        return ymdhms2mjd(ymdhms(static_cast<unsigned short>(y), static_cast<unsigned short>(m), 1, 0, 0, 0.0L));
    };
    StartEpoch = first(year, month);
    EndEpoch = month == 12 ? first(year + 1, 1) : first(year, month + 1);
    EndEpoch += -DCBns::PeriodEndGap;
}

void DCB::ReadFile()
{
    ParseValidDate();
    // A folder opens on POSIX systems but gives no lines: as good as closed.
    if (!FileExists(file)) ProgramError("Orvo", std::string("DCB FILE ") + file + " CAN NOT BE OPENED!");
    std::ifstream in(file);
    if (!in) ProgramError("Orvo", std::string("DCB FILE ") + file + " CAN NOT BE OPENED!");
    CountSatLines(in);
    in.clear();
    in.seekg(0);
    sat.Resize(nsat, 1, 0);
    VAL.Resize(nsat, 1, 0.0L);
    RMS.Resize(nsat, 1, 0.0L);
    ReadSatLines(in);
}

void DCB::CountSatLines(std::istream& in)
{
    long n = 0, lineNo = 0;
    bool inTable = false;
    std::string line;
    while (NextLine(in, line)) {
        ++lineNo;
        if (line.size() >= DCBns::LineSize) Fail(lineNo, "LINE LONGER THAN 511 CHARACTERS!");
        if (!inTable) {
            inTable = line.find(HeaderEnd) != std::string::npos;
        } else if (IsSatLine(line) && ++n > DCBns::MaxLines) {
            Fail(lineNo, "MORE THAN 32767 SATELLITE LINES!");
        }
    }
    nsat = static_cast<short>(n);
}

void DCB::ReadSatLines(std::istream& in)
{
    long i = 0, lineNo = 0;
    bool inTable = false;
    std::string line;
    while (i < nsat && NextLine(in, line)) {
        ++lineNo;
        if (!inTable) {
            inTable = line.find(HeaderEnd) != std::string::npos;
            continue;
        }
        if (!IsSatLine(line)) continue;
        if (line.size() <= DCBns::RMSPos) Fail(lineNo, "SATELLITE LINE ENDS BEFORE THE RMS (COLUMN 39)!");
        long double v = 0.0L, r = 0.0L;
        if (!fieldtext::ToLongDouble(TrimmedField(line, DCBns::ValuePos, DCBns::FieldLen), v))
            Fail(lineNo, "BIAS (COLUMN 27) IS NO NUMBER!");
        if (!fieldtext::ToLongDouble(TrimmedField(line, DCBns::RMSPos, DCBns::FieldLen), r))
            Fail(lineNo, "RMS (COLUMN 39) IS NO NUMBER!");
        sat(i) = static_cast<short>((line[0] == 'R' ? DCBns::GLONASSBase : 0) + 10 * (line[1] - '0') + (line[2] - '0'));
        VAL(i) = v * DCBns::NanoSecond;
        RMS(i) = r * DCBns::NanoSecond;
        ++i;
    }
    // The file changed between the passes.
    if (i < nsat) Fail(lineNo, "FILE SHORTER THAN AT COUNTING!");
}

long DCB::Find(short s) const
{
    for (long i = 0; i < nsat; ++i)
        if (sat(i) == s) return i;
    return -1;
}

void DCB::GetDCB(short s, long double& val, long double& rms) const
{
    const long i = Find(s);
    val = i < 0 ? 0.0L : VAL(i);
    rms = i < 0 ? 0.0L : RMS(i);
    if (i < 0) WarnMissing(s, "");
}

long double DCB::GetDCBRMS(short s) const
{
    const long i = Find(s);
    if (i < 0) WarnMissing(s, " FOR RMS");
    return i < 0 ? 0.0L : RMS(i);
}

long double DCB::GetDCBVAL(short s) const
{
    const long i = Find(s);
    if (i < 0) WarnMissing(s, " FOR VAL");
    return i < 0 ? 0.0L : VAL(i);
}
