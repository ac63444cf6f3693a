#include "orbits/GLNSat.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>
#include <sys/stat.h>

#include "geodesy/TimeConverse.h"
#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

using fieldtext::ToLong;
using fieldtext::ToLongDouble;
using fieldtext::TrimmedField;

namespace {

// 0-based columns of the fields of a data line.
constexpr std::size_t SlotPos = 1, SlotLen = 9;
constexpr std::size_t FromPos = 10, FromSecPos = 27, FromSecLen = 4;
constexpr std::size_t ToPos = 31, ToSecPos = 48, ToSecLen = 3;
constexpr std::size_t ChannelPos = 51;

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

// Comment lines, lines opening with a blank and empty lines carry no
// channel; the layout reserves column 0 for the system letter.
bool IsDataLine(const std::string& line)
{
    return !line.empty() && line[0] != '#' && line[0] != ' ';
}

int DaysInMonth(long year, long month)
{
    const int leap = ymdhms::LeapYear(year) ? 1 : 0;
    return month_day[leap][month] - month_day[leap][month - 1];
}

}  // namespace

GLNSat::GLNSat()
    : IsGLNSat(false), nsat(0), lastEph(GLNSatns::LastEphDay, GLNSatns::LastEphSecond)
{
    file[0] = '\0';
}

void GLNSat::SetFile(const char* fname)
{
    if (fname == nullptr || std::strlen(fname) >= sizeof(file))
        ProgramError("Orvo", "GLONASS FREQUENCY CHANNEL FILE NAME MISSING OR LONGER THAN 255 "
                             "CHARACTERS!");
    struct stat st;
    if (stat(fname, &st) != 0)
        ProgramError("Orvo", "GLONASS FREQUENCY CHANNEL FILE DOES NOT EXIST!");
    std::strcpy(file, fname);
}

void GLNSat::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("GLONASS FREQUENCY CHANNEL FILE ") + file + ": line "
                         + std::to_string(lineNo) + ": " + text);
}

void GLNSat::ReadFile()
{
    // A folder opens on POSIX systems but gives no lines: as good as closed.
    if (!FileExists(file))
        ProgramError("Orvo", "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!");
    std::ifstream in(file);
    if (!in) ProgramError("Orvo", "GLONASS FREQUENCY CHANNEL FILE CAN NOT BE OPENED!");
    CountGNSSats(in);
    in.clear();
    in.seekg(0);
    sat.Resize(nsat, 1, 0);
    eph.Resize(nsat, 2, mjd());
    FreqChannel.Resize(nsat, 1, 0.0L);
    fileLine.Resize(nsat, 1, 0L);
    ReadGLNFreqChan(in);
    CheckConflicts();
    IsGLNSat = false;
}

void GLNSat::CheckConflicts() const
{
    // Lines by slot, and within a slot by start: a line can then only
    // overlap lines before it that are still open at its start.
    std::vector<long> order(static_cast<std::size_t>(nsat));
    for (long i = 0; i < nsat; ++i) order[static_cast<std::size_t>(i)] = i;
    std::stable_sort(order.begin(), order.end(), [this](long a, long b) {
        if (sat(a) != sat(b)) return sat(a) < sat(b);
        return eph(a, FROM) < eph(b, FROM);
    });
    // Of the lines still open, the one that runs longest. Open lines of one
    // slot share a channel (else the file was refused already), so it
    // stands for all of them. Periods that only touch at one instant are a
    // change of channel, not a conflict: the earlier line wins that instant.
    long open = -1;
    for (const long i : order) {
        if (open >= 0 && sat(open) == sat(i) && eph(i, FROM) < eph(open, TO)
            && std::fabs(FreqChannel(open) - FreqChannel(i)) > 0.5L)
            ProgramError("Orvo", std::string("GLONASS FREQUENCY CHANNEL FILE ") + file + ": lines "
                                     + std::to_string(std::min(fileLine(open), fileLine(i))) + " and "
                                     + std::to_string(std::max(fileLine(open), fileLine(i)))
                                     + ": SLOT " + std::to_string(sat(i) - GLNSatns::SatBase)
                                     + " ON TWO CHANNELS IN OVERLAPPING PERIODS!");
        if (open < 0 || sat(open) != sat(i) || eph(i, TO) > eph(open, TO)) open = i;
    }
}

void GLNSat::CountGNSSats(std::istream& in)
{
    nsat = 0;
    std::string line;
    long lineNo = 0;
    while (NextLine(in, line)) {
        ++lineNo;
        // The format's line buffer holds 511 characters; a longer line is
        // no line of this format.
        if (line.size() >= static_cast<std::size_t>(GLNSatns::LineSize))
            Fail(lineNo, "LINE LONGER THAN 511 CHARACTERS!");
        if (IsDataLine(line)) ++nsat;
    }
    // A channel file without one channel would silently set every GLONASS
    // satellite to channel 0: surely not what the user meant by naming it.
    if (nsat == 0) Fail(lineNo, "NO FREQUENCY CHANNEL LINES!");
}

mjd GLNSat::ReadEpoch(const std::string& line, std::size_t pos, std::size_t secPos,
                      std::size_t secLen, long lineNo, const char* which)
{
    long f[5];
    const std::size_t at[5] = {pos, pos + 5, pos + 8, pos + 11, pos + 14};
    const std::size_t len[5] = {4, 2, 2, 2, 2};
    const char* const name[5] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE"};
    for (int i = 0; i < 5; ++i)
        if (!ToLong(TrimmedField(line, at[i], len[i]), f[i]))
            Fail(lineNo, std::string(name[i]) + " " + which + " IS NO NUMBER (COLUMN "
                             + std::to_string(at[i] + 1) + ")!");
    long double sec = 0.0L;
    if (!ToLongDouble(TrimmedField(line, secPos, secLen), sec))
        Fail(lineNo, std::string("SECOND ") + which + " IS NO NUMBER (COLUMN "
                         + std::to_string(secPos + 1) + ")!");
    // Checked here rather than by ymdhms so that the message names the file
    // and the line.
    const bool ok = f[0] >= 1901 && f[0] <= 2199 && f[1] >= 1 && f[1] <= 12 && f[2] >= 1
                    && f[2] <= DaysInMonth(f[0], f[1]) && f[3] >= 0 && f[3] <= 23 && f[4] >= 0
                    && f[4] <= 59 && sec >= 0.0L && sec < 60.0L;
    if (!ok) Fail(lineNo, std::string("EPOCH ") + which + " NOT VALID!");
    dm.Set(static_cast<unsigned short>(f[0]), static_cast<unsigned short>(f[1]),
           static_cast<unsigned short>(f[2]), static_cast<unsigned short>(f[3]),
           static_cast<unsigned short>(f[4]), sec);
    return ymdhms2mjd(dm);
}

void GLNSat::ReadGLNFreqChan(std::istream& in)
{
    std::string line;
    long lineNo = 0, i = 0;
    while (i < nsat && NextLine(in, line)) {
        ++lineNo;
        if (!IsDataLine(line)) continue;
        if (!std::isalpha(static_cast<unsigned char>(line[0])))
            Fail(lineNo, "NO SYSTEM LETTER IN COLUMN 1!");
        // The channel is the last field: a line that ends before it is cut.
        if (line.size() <= ChannelPos) Fail(lineNo, "LINE ENDS BEFORE THE CHANNEL (COLUMN 52)!");

        long slot = 0;
        if (!ToLong(TrimmedField(line, SlotPos, SlotLen), slot) || slot < 1
            || slot > GLNSatns::MaxSlot)
            Fail(lineNo, "SLOT NUMBER MISSING OR NOT IN 1..99!");
        sat(i) = static_cast<short>(GLNSatns::SatBase + slot);

        eph(i, FROM) = ReadEpoch(line, FromPos, FromSecPos, FromSecLen, lineNo, "FROM");
        if (line[ToPos] == ' ') {
            // An open period: anything in the end columns would be a field
            // out of place, e.g. a channel shifted to the left.
            if (!TrimmedField(line, ToPos, ChannelPos - ToPos).empty())
                Fail(lineNo, "TEXT IN THE COLUMNS OF AN OPEN PERIOD END (32-51)!");
            eph(i, TO) = lastEph;
        } else {
            eph(i, TO) = ReadEpoch(line, ToPos, ToSecPos, ToSecLen, lineNo, "TO");
        }
        if (eph(i, TO) < eph(i, FROM)) Fail(lineNo, "PERIOD ENDS BEFORE IT STARTS!");

        long k = 0;
        if (!ToLong(TrimmedField(line, ChannelPos, line.size() - ChannelPos), k))
            Fail(lineNo, "FREQUENCY CHANNEL IS NO WHOLE NUMBER (COLUMN 52)!");
        if (k < GLNSatns::MinChannel || k > GLNSatns::MaxChannel)
            Fail(lineNo, "FREQUENCY CHANNEL " + std::to_string(k) + " NOT IN -7..+6!");
        FreqChannel(i) = static_cast<long double>(k);
        fileLine(i) = lineNo;
        ++i;
    }
    // The file changed between the passes.
    if (i < nsat) Fail(lineNo, "FILE SHORTER THAN AT COUNTING!");
}

long double GLNSat::GetFreqNum(short satprn, mjd& seph)
{
    for (long i = 0; i < nsat; ++i) {
        if (sat(i) != satprn) continue;
        if (seph >= eph(i, FROM) && seph <= eph(i, TO)) {
            IsGLNSat = true;
            return FreqChannel(i);
        }
    }
    IsGLNSat = false;
    return 0.0L;
}
