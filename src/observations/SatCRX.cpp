#include "observations/SatCRX.h"

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

#include "geodesy/TimeConverse.h"
#include "numerics/ProgramError.h"

namespace {

constexpr unsigned long LastEphDay = 88068;      // 2099-12-31
constexpr long double LastEphSecond = 86399.0L;  // 23:59:59

// Columns of a data line.
constexpr std::size_t ColSat = 1, ColProblem = 13, ColKind = 14, ColAction = 21;
constexpr std::size_t ColFrom[6] = {32, 37, 40, 43, 46, 49};
constexpr std::size_t ColTo[6] = {53, 58, 61, 64, 67, 70};
/// A line must be longer than this to carry an end date.
constexpr std::size_t MinEndDateLength = 71;

// The number that starts at column col (atoi rule); 0 past the line's end.
int IntAt(const std::string& line, std::size_t col)
{
    return col < line.size() ? std::atoi(line.c_str() + col) : 0;
}

long double RealAt(const std::string& line, std::size_t col)
{
    return col < line.size() ? std::strtold(line.c_str() + col, nullptr) : 0.0L;
}

// Length of the line without leading and trailing white space.
std::size_t TrimmedLength(const std::string& line)
{
    const char* ws = " \t\r\n\v\f";
    const std::size_t b = line.find_first_not_of(ws);
    if (b == std::string::npos) return 0;
    return line.find_last_not_of(ws) - b + 1;
}

// A data line ends with the seconds of its start (column 50) or of its end
// (column 71). Ending inside a date it was cut, and the fields it lacks
// would read 0 or an open end: a period shifted without a word.
bool IsCutDataLine(const std::string& line)
{
    const std::size_t last = line.find_last_not_of(" \t\r\n\v\f");
    return last < ColFrom[5] + 1 || (last >= ColTo[0] && last < ColTo[5] + 1);
}

bool IsDataLine(const std::string& line)
{
    if (line.size() <= ColKind) return false;
    const char k = line[ColKind];
    return k == '1' || k == '2' || k == '3';
}

}  // namespace

SatCRX::SatCRX() : nsat(0), lastEph(LastEphDay, LastEphSecond) {}

void SatCRX::SetFile(const std::string& name)
{
    struct stat st;
    if (stat(name.c_str(), &st) != 0)
        ProgramError("Orvo", "SATELLITE PROBLEM FILE DOES NOT EXIST!");
    file = name;
}

template <class Take>
void SatCRX::WalkDataLines(Take take)
{
    std::ifstream in(file);
    if (!in) ProgramError("Orvo", "SATELLITE PROBLEM FILE CAN NOT BE OPENED!");
    std::string line;
    long lineNo = 0;
    for (int i = 0; i < SatCRXns::HeaderLines; ++i, ++lineNo)
        if (!std::getline(in, line)) return;
    while (std::getline(in, line)) {
        ++lineNo;
        // A line beyond the 512-character buffer fails the read, and the
        // list ends there as at the end of the file.
        if (line.size() > SatCRXns::MaxLineLength) return;
        if (TrimmedLength(line) <= SatCRXns::MaxEndLineLength) return;
        if (!IsDataLine(line)) continue;
        if (IsCutDataLine(line))
            ProgramError("Orvo", "SATELLITE PROBLEM FILE " + file + ": line " + std::to_string(lineNo)
                                     + ": DATA LINE ENDS INSIDE A DATE!");
        take(line);
    }
}

void SatCRX::CountGNSSats()
{
    long n = 0;
    WalkDataLines([&n](const std::string&) { n++; });
    nsat = n;
    sat.Resize(nsat, 1, 0);
    eph.Resize(nsat, 2, mjd());
    TypAct.Resize(nsat, 2, 0);
}

void SatCRX::ReadSatProblems()
{
    long k = 0;
    WalkDataLines([this, &k](const std::string& line) {
        if (k >= nsat) return;  // the file grew between the passes
        sat(k) = static_cast<short>(IntAt(line, ColSat));
        TypAct(k, PROBLEM) = static_cast<short>(IntAt(line, ColProblem));
        TypAct(k, ACTION) = static_cast<short>(IntAt(line, ColAction));
        dm.Set(static_cast<unsigned short>(IntAt(line, ColFrom[0])),
               static_cast<unsigned short>(IntAt(line, ColFrom[1])),
               static_cast<unsigned short>(IntAt(line, ColFrom[2])),
               static_cast<unsigned short>(IntAt(line, ColFrom[3])),
               static_cast<unsigned short>(IntAt(line, ColFrom[4])), RealAt(line, ColFrom[5]));
        eph(k, FROM) = ymdhms2mjd(dm);
        if (line.size() > MinEndDateLength && line[ColTo[0]] != ' ') {
            dm.Set(static_cast<unsigned short>(IntAt(line, ColTo[0])),
                   static_cast<unsigned short>(IntAt(line, ColTo[1])),
                   static_cast<unsigned short>(IntAt(line, ColTo[2])),
                   static_cast<unsigned short>(IntAt(line, ColTo[3])),
                   static_cast<unsigned short>(IntAt(line, ColTo[4])), RealAt(line, ColTo[5]));
            eph(k, TO) = ymdhms2mjd(dm);
        } else {
            eph(k, TO) = lastEph;
        }
        k++;
    });
}

void SatCRX::ReadFile()
{
    CountGNSSats();
    ReadSatProblems();
}

void SatCRX::GetSatelliteProblem(short s, const mjd& t, short& problem, short& action) const
{
    problem = 0;
    action = 0;
    for (long k = 0; k < nsat; ++k) {
        if (sat(k) != s || t < eph(k, FROM) || t > eph(k, TO)) continue;
        problem = TypAct(k, PROBLEM);
        action = TypAct(k, ACTION);
        return;
    }
}
