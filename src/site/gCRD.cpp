#include "site/gCRD.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <istream>

#include "geodesy/TimeConverse.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

namespace {

const char* const Prog = "Orvo";
const char* const FullPattern = "%Lf %Lf %Lf %Lf %Lf %Lf %u-%u-%u %u:%u:%Lf";
// Columns of the name and number fields.
constexpr std::size_t NamePos = 5, NameLen = 20, NumberPos = 26, NumberLen = 60;
constexpr std::size_t Name2Pos = 26, Name2Len = 20, SigmaLen = 15;
constexpr int PosWidth = 15, VelWidth = 10;
const char* const Heading1 =
    "# ID MARKER_NAME          MARKER_NUMBER                                                      X [m]"
    "        Y [m]          Z [m]       VX[m/yr]  VY[m/yr]  VZ[m/yr]  YYYY-MM-DD HH:MM:SS";
const char* const Heading2 =
    "#*** ******************** ************************************************************ *********.****"
    " *********.**** *********.**** ****.**** ****.**** ****.****  ****-**-** **:**:**";

enum class Kind { End, Comment, Data };

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

// A line too short to reach column 3 has a blank ID column: editors strip
// trailing blanks, so it ends the table like a written blank would.
Kind Classify(const std::string& line)
{
    if (line.size() < 4 || line[3] == ' ') return Kind::End;
    return line[0] == '#' ? Kind::Comment : Kind::Data;
}

bool IsComment(const std::string& line) { return !line.empty() && line[0] == '#'; }

std::string Trimmed(const std::string& s)
{
    const std::size_t a = s.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return s.substr(a, s.find_last_not_of(' ') - a + 1);
}

// Columns [pos, pos + len) that the line holds, trimmed; empty past its end.
std::string Field(const std::string& line, std::size_t pos, std::size_t len)
{
    return pos >= line.size() ? std::string() : Trimmed(line.substr(pos, len));
}

bool StartsWithName(const std::string& line, const char* mname)
{
    const std::size_t n = std::strlen(mname);
    return line.size() >= NamePos + n && line.compare(NamePos, n, mname) == 0;
}

bool Finite(const xyz& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

[[noreturn]] void BadLine(const std::string& station)
{
    ProgramError(Prog, "PROBLEM READING COORDINATE LINE FOR STATION " + station + "!");
}

// Appends v in width columns with 4 decimals. A value that fills its field
// would touch its neighbour (or, for X, lose its first digit to the reader
// starting one column in), so it is refused.
bool PutFixed(std::string& out, long double v, int width)
{
    char b[64];
    const int n = std::snprintf(b, sizeof b, "%.4Lf", v);
    if (!std::isfinite(v) || n <= 0 || n >= width) return false;
    out.append(static_cast<std::size_t>(width - n), ' ');
    out += b;
    return true;
}

}  // namespace

gCRD::gCRD() : IsSiteB(false), icrd(0) { file[0] = '\0'; }

void gCRD::SetFile(const char* name)
{
    if (name == nullptr || std::strlen(name) >= sizeof(file))
        ProgramError(Prog, "COORDINATE FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    if (!FileExists(name)) ProgramError(Prog, "COORDINATE FILE DOES NOT EXIST!");
    std::strcpy(file, name);
}

bool gCRD::ParseFull(const std::string& line, xyz& pos, xyz& vel, mjd& ref)
{
    if (line.size() <= static_cast<std::size_t>(gCRDns::NumPos)) return false;
    unsigned y = 0, mo = 0, d = 0, h = 0, mi = 0;
    long double s = 0.0L;
    if (std::sscanf(line.c_str() + gCRDns::NumPos, FullPattern, &pos.x, &pos.y, &pos.z, &vel.x, &vel.y,
                    &vel.z, &y, &mo, &d, &h, &mi, &s) != 12)
        return false;
    // %Lf takes "nan" and "inf", and %u wraps a negative number: neither is
    // a position or a date. Checked here rather than by ymdhms so that the
    // message names the station.
    if (!Finite(pos) || !Finite(vel)) return false;
    if (y < 1901 || y > 2199 || mo < 1 || mo > 12 || d < 1 || h > 23 || mi > 59 || !(s >= 0.0L && s < 60.0L))
        return false;
    const int leap = ymdhms::LeapYear(y) ? 1 : 0;
    if (d > static_cast<unsigned>(month_day[leap][mo] - month_day[leap][mo - 1])) return false;
    dm.Set(static_cast<unsigned short>(y), static_cast<unsigned short>(mo), static_cast<unsigned short>(d),
           static_cast<unsigned short>(h), static_cast<unsigned short>(mi), s);
    ref = ymdhms2mjd(dm);
    return true;
}

xyz gCRD::Find(const char* mname, const char* mnumber, const mjd* eph, xyz* vel)
{
    IsSiteB = false;
    if (vel) *vel = xyz();
    std::ifstream in;
    if (FileExists(file)) in.open(file);
    if (!in.is_open()) ProgramError(Prog, "COORDINATE FILE CAN NOT BE OPENED!");
    // An empty name is a prefix of every name: it would hand any station's
    // position to a file without MARKER NAME.
    if (mname == nullptr || mname[0] == '\0') return xyz();
    const std::string number = Trimmed(mnumber ? mnumber : "");

    std::string line;
    bool more = NextLine(in, line);
    if (!eph)  // the position-only form allows any heading comments
        while (more && IsComment(line)) more = NextLine(in, line);
    for (; more; more = NextLine(in, line)) {
        const Kind k = Classify(line);
        if (k == Kind::End) break;
        if (k == Kind::Comment || !StartsWithName(line, mname)) continue;
        if (!eph) {
            xyz p;
            if (line.size() <= static_cast<std::size_t>(gCRDns::NumPos)
                || std::sscanf(line.c_str() + gCRDns::NumPos, "%Lf %Lf %Lf", &p.x, &p.y, &p.z) != 3
                || !Finite(p))
                BadLine(mname);
            IsSiteB = true;
            return p;
        }
        const std::string col = Field(line, NumberPos, NumberLen);
        if (!col.empty() && col != number) continue;
        xyz p, v;
        mjd ref;
        if (!ParseFull(line, p, v, ref)) BadLine(mname);
        const long double yRef = dm.GetYearDec();
        dm = mjd2ymdhms(*eph);
        const long double dY = dm.GetYearDec() - yRef;
        IsSiteB = true;
        if (vel) *vel = v;
        return xyz(p.x + dY * v.x, p.y + dY * v.y, p.z + dY * v.z);
    }
    return xyz();
}

xyz gCRD::GetCRD(const char* mname, const char* mnumber, const mjd& eph) { return Find(mname, mnumber, &eph, nullptr); }

xyz gCRD::GetCRD(const char* mname, const char* mnumber, const mjd& eph, xyz& vel)
{
    return Find(mname, mnumber, &eph, &vel);
}

xyz gCRD::GetCRD(const char* mname) { return Find(mname, nullptr, nullptr, nullptr); }

long gCRD::ReadCRDs_Count()
{
    std::ifstream in(file);
    std::string line;
    long n = 0;
    while (NextLine(in, line)) {
        const Kind k = Classify(line);
        if (k == Kind::End) break;
        if (k == Kind::Data) ++n;
    }
    return n;
}

void gCRD::ReadCRDs_Read(matrix<std::string>& PT, matrix<xyz>& POS, matrix<xyz>& VEL, matrix<mjd>& EPH)
{
    std::ifstream in(file);
    std::string line;
    // The count bounds the second walk, should the file grow in between.
    for (long i = 0; i < PT.NRow() && NextLine(in, line);) {
        const Kind k = Classify(line);
        if (k == Kind::End) break;
        if (k == Kind::Comment) continue;
        PT(i) = Field(line, NamePos, NameLen);
        if (!ParseFull(line, POS(i), VEL(i), EPH(i))) BadLine(PT(i));
        ++i;
    }
}

long gCRD::ReadCRDs(matrix<std::string>& PT, matrix<xyz>& POS, matrix<xyz>& VEL, matrix<mjd>& EPH)
{
    if (file[0] == '\0') ProgramError(Prog, "COORDINATE FILE IS NOT SET!");
    const long n = FileExists(file) ? ReadCRDs_Count() : 0;
    PT.Resize(n, 1, std::string());
    POS.Resize(n, 1, xyz());
    VEL.Resize(n, 1, xyz());
    EPH.Resize(n, 1, mjd());
    if (n > 0) ReadCRDs_Read(PT, POS, VEL, EPH);
    return n;
}

long gCRD::Section(const char* conStr, int nNames, const int* sigPos, int nSig, long double minSig,
                   matrix<std::string>& PT, matrix<long double>* SIG)
{
    long n = 0;
    // Pass 0 counts the rows, pass 1 fills the matrices sized by it.
    for (int pass = 0; pass < 2; ++pass) {
        PT.Resize(n, nNames, std::string());
        if (SIG) SIG->Resize(n, nSig, 0.0L);
        if (pass == 1 && n == 0) break;
        std::ifstream in;
        if (FileExists(file)) in.open(file);
        // An empty heading text is found in every comment line.
        if (!in.is_open() || conStr == nullptr || conStr[0] == '\0') return 0;
        std::string line;
        bool more = NextLine(in, line);
        while (more && !(IsComment(line) && line.find(conStr) != std::string::npos)) more = NextLine(in, line);
        if (more) more = NextLine(in, line);
        // Comment lines under the heading describe the columns; a blank in
        // their column 3 must not end a section that has not begun.
        while (more && IsComment(line)) more = NextLine(in, line);
        long i = 0;
        for (; more && (pass == 0 || i < n); more = NextLine(in, line)) {
            const Kind k = Classify(line);
            if (k == Kind::End) break;
            if (k == Kind::Comment) continue;
            if (pass == 1) {
                PT(i, 0) = Field(line, NamePos, NameLen);
                if (nNames > 1) PT(i, 1) = Field(line, Name2Pos, Name2Len);
                for (int j = 0; j < nSig; ++j) {
                    // As everywhere in the fixed-column files, a field that
                    // does not convert reads 0.
                    long double s = std::strtold(Field(line, sigPos[j], SigmaLen).c_str(), nullptr);
                    // A zero sigma would be an infinite weight.
                    if (!std::isfinite(s) || std::fabs(s) < gCRDns::SigmaThres) s = minSig;
                    (*SIG)(i, j) = s;
                }
            }
            ++i;
        }
        n = i;
    }
    return n;
}

long gCRD::ReadMINConst(matrix<std::string>& PT, const char* conStr)
{
    return Section(conStr, 1, nullptr, 0, 0.0L, PT, nullptr);
}

long gCRD::ReadFixedStat(matrix<std::string>& PT, const char* conStr)
{
    return Section(conStr, 1, nullptr, 0, 0.0L, PT, nullptr);
}

long gCRD::ReadABSConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr)
{
    static const int pos[3] = {26, 41, 56};
    return Section(conStr, 1, pos, 3, gCRDns::MinAbsSigma, PT, &SIG);
}

long gCRD::ReadRELConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr)
{
    static const int pos[3] = {47, 62, 77};
    return Section(conStr, 2, pos, 3, gCRDns::MinRelSigma, PT, &SIG);
}

long gCRD::ReadDHConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr)
{
    static const int pos[1] = {47};
    return Section(conStr, 2, pos, 1, gCRDns::MinRelSigma, PT, &SIG);
}

long gCRD::ReadDNEConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr)
{
    static const int pos[2] = {47, 62};
    return Section(conStr, 2, pos, 2, gCRDns::MinRelSigma, PT, &SIG);
}

bool gCRD::OpenOutputFile(const char* name)
{
    if (CRDOutput.is_open()) CRDOutput.close();
    CRDOutput.clear();
    icrd = 0;
    if (name == nullptr) return false;
    CRDOutput.open(name);
    if (!CRDOutput.is_open()) return false;
    CRDOutput << Heading1 << "\n" << Heading2 << "\n";
    return static_cast<bool>(CRDOutput);
}

bool gCRD::PrintGPoint(const char* mname, const char* mnumber, const xyz& pos, const xyz& vel, const mjd& t)
{
    if (!CRDOutput.is_open() || icrd >= 9999) return false;
    // Whole seconds on the line: round the epoch itself, so that 59.6 s
    // carries into the minute (and on into the day) instead of printing 60.
    mjd r = t;
    r += std::round(t.GetSecond()) - t.GetSecond();
    dm = mjd2ymdhms(r);
    char head[128], date[64];
    std::snprintf(head, sizeof head, "%4ld %-20.20s %-60.60s", icrd + 1, mname ? mname : "",
                  mnumber ? mnumber : "");
    std::snprintf(date, sizeof date, " %04u-%02u-%02u %02u:%02u:%02ld", unsigned(dm.GetYear()),
                  unsigned(dm.GetMonth()), unsigned(dm.GetDay()), unsigned(dm.GetHour()),
                  unsigned(dm.GetMinute()), std::lround(dm.GetSecond()));
    std::string out = head;
    const bool fits = PutFixed(out, pos.x, PosWidth) && PutFixed(out, pos.y, PosWidth)
                      && PutFixed(out, pos.z, PosWidth) && PutFixed(out, vel.x, VelWidth)
                      && PutFixed(out, vel.y, VelWidth) && PutFixed(out, vel.z, VelWidth);
    if (!fits) return false;
    ++icrd;
    CRDOutput << out << date << "\n";
    return static_cast<bool>(CRDOutput);
}

void gCRD::CloseOutputFile()
{
    if (CRDOutput.is_open()) CRDOutput.close();
}

xyz AprioriPosition(gCRD& acrd, const char* mname, const char* mnumber, const mjd& eph, const xyz& rinexPos)
{
    const xyz p = acrd.GetCRD(mname, mnumber, eph);
    if (acrd.IsSite()) return p;
    ProgramWarning(Prog, "SITE NAME NOT LISTED IN APRIORI COORDINATE FILE - USING RINEX VALUES!");
    return rinexPos;
}
