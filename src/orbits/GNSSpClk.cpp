#include "orbits/GNSSpClk.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "orbits/SatelliteNumber.h"

namespace {

using fieldtext::NextLine;

bool Holds(const std::string& line, const char* text)
{
    return line.find(text) != std::string::npos;
}

// Characters of the date text of an AS line, from posDate.
constexpr std::size_t DateWidth = 26;

// True when the AS line's date text differs from previous, which then
// takes it. Compared in place: some hundred thousand lines share a few
// thousand dates. The caller has checked that the line holds the date.
bool NewDate(std::string_view line, std::size_t posDate, std::string& previous)
{
    const std::string_view date = line.substr(posDate, DateWidth);
    if (date == previous) return false;
    previous.assign(date);
    return true;
}

bool IsAS(std::string_view line) { return line.size() >= 2 && line[0] == 'A' && line[1] == 'S'; }

// The epoch of an AS record's date text; false when it does not parse.
bool DateOf(const std::string& text, mjd& t)
{
    unsigned short y = 0, mo = 0, d = 0, h = 0, mi = 0;
    long double sec = 0.0L;
    if (std::sscanf(text.c_str(), "%hu %hu %hu %hu %hu %Lf", &y, &mo, &d, &h, &mi, &sec) != 6) return false;
    t = ymdhms2mjd(ymdhms(y, mo, d, h, mi, sec));
    return true;
}

}  // namespace

GNSSpClk::GNSSpClk()
    : DTisOK(true), type(' '), version(0.0f), nepoch(0), nsat(0), interval(0.0L),
      intervalUnit(0.0L), EpochIx(0), perLfact{0.0L, 0.0L, 0.0L, 0.0L}, posDate(8),
      nHeaderLines(0)
{
    clkfile[0] = '\0';
}

void GNSSpClk::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(clkfile))
        ProgramError("Orvo", "RINEX CLOCK FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(clkfile, file);
}

void GNSSpClk::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("RINEX CLOCK FILE ") + clkfile + ": line "
                         + std::to_string(lineNo) + ": " + text);
}

void GNSSpClk::ReadFile()
{
    GetCLKVersion();
    std::ifstream in(clkfile);
    if (!in) ProgramError("Orvo", std::string("RINEX CLOCK FILE ") + clkfile + " CAN NOT BE OPENED!");
    ReadFileHeader(in);
    ReadEpochs(in);
    in.close();

    SatClk.Resize(nepoch, nsat, GNSSpClkns::NoClock_s);
    ReadFileData();

    // Interpolation takes the nodes as equally spaced by the smallest
    // spacing; time order was checked while reading.
    interval = epoch(1) - epoch(0);
    for (long i = 2; i < nepoch; ++i) {
        const long double d = epoch(i) - epoch(i - 1);
        if (d < interval) interval = d;
    }
    intervalUnit = interval / 60.0L;
    const long double u3 = intervalUnit * intervalUnit * intervalUnit;
    const long double lfact[4] = {-6.0L * u3, 2.0L * u3, -2.0L * u3, 6.0L * u3};
    for (int k = 0; k < 4; ++k) perLfact[k] = 1.0L / lfact[k];
    // Which node steps have the interpolation's spacing, asked once here
    // rather than three times for every value.
    evenStep.Resize(nepoch, 1, false);
    for (long i = 1; i < nepoch; ++i)
        evenStep(i) = !(std::fabs(epoch(i) - epoch(i - 1) - 60.0L * intervalUnit) > GNSSpClkns::SpacingTol_s);
}

void GNSSpClk::GetCLKVersion()
{
    std::ifstream in(clkfile);
    if (!in) ProgramError("Orvo", std::string("RINEX CLOCK FILE ") + clkfile + " CAN NOT BE OPENED!");
    std::string line;
    NextLine(in, line);
    const std::size_t at = line.find("RINEX VERSION / TYPE");
    if (at == std::string::npos)
        ProgramError("Orvo", "INPUT RINEX CLOCK FILE IS NOT IN RINEX FORMAT - RINEX VERSION / TYPE NOT IN FIRST LINE");
    version = std::strtof(line.c_str(), nullptr);
    if (at == 60)
        type = line[20];
    else if (at == 65)
        type = line[21];
    else
        ProgramError("Orvo", "INPUT RINEX CLOCK FILE FIRST LINE PROBLEM - RINEX VERSION / TYPE NOT AT POSITION 60 OR 65");
    if (type != 'C')
        ProgramError("Orvo", "RINEX CLOCK FILE IS NOT IN RINEX CLOCK FORMAT - RINEX TYPE IS NOT 'C'");
}

void GNSSpClk::ReadFileHeader(std::istream& in)
{
    const bool before304 = static_cast<double>(version) < 3.039;
    const int nSatLine = before304 ? 15 : 16;
    posDate = before304 ? 8 : 13;
    std::string line;
    long lineNo = 0;
    nsat = 0;
    while (true) {
        if (!NextLine(in, line)) ProgramError("Orvo", "RINEX CLOCK FILE - UNSUCCESFUL READING (HEADER)");
        ++lineNo;
        if (Holds(line, "END OF HEADER")) break;
        if (!Holds(line, "# OF SOLN SATS")) continue;

        const long count = std::atol(line.c_str());
        // Each satellite needs a column of SatClk and an entry of satIx.
        if (count < 1 || count >= GNSSpClkns::NSatIx)
            Fail(lineNo, "satellite count " + std::to_string(count) + " out of 1 to 699");
        nsat = static_cast<short>(count);
        satList.Resize(nsat, 1, 0);
        long n = 0;
        for (long k = 0; k < nsat / nSatLine + 1 && n < nsat; ++k) {
            if (!NextLine(in, line)) ProgramError("Orvo", "RINEX CLOCK FILE - UNSUCCESFUL READING (HEADER)");
            ++lineNo;
            for (int j = 0; j < nSatLine && n < nsat; ++j, ++n) {
                const std::size_t pos = 4 * static_cast<std::size_t>(j);
                if (line.size() < pos + 3)
                    Fail(lineNo, "satellite list line ends before entry " + std::to_string(n + 1));
                const int prn = std::atoi(line.c_str() + pos + 1);
                const short s = PreciseSatelliteNumber(line[pos], prn);
                // A system the program doesn't process keeps its place in
                // the list but gets no column.
                if (s >= GNSSpClkns::NSatIx || (s < 0 && s != -1))
                    Fail(lineNo, "satellite entry " + line.substr(pos, 3) + " out of range");
                satList(n) = s;
            }
        }
    }
    nHeaderLines = lineNo;
    if (nsat < 1) Fail(lineNo, "header has no # OF SOLN SATS list");
    satIx.Resize(GNSSpClkns::NSatIx, 1, -1);
    for (short i = 0; i < nsat; ++i)
        if (satList(i) >= 0) satIx(satList(i)) = i;
}

void GNSSpClk::SetSpan(const mjd& first, const mjd& last)
{
    hasSpan = true;
    spanFirst = first;
    spanLast = last;
}

void GNSSpClk::ReadEpochs(std::istream& in)
{
    std::string previous;
    long lineNo = nHeaderLines, badLine = 0;
    std::string bad;
    std::vector<mjd> fileEpoch;
    // Where each epoch's first line is: its number and its place in the file.
    struct Start {
        long line;
        std::streamoff at;
    };
    std::vector<Start> epochStart;
    const std::streamoff start = in.tellg();
    // Epochs met inside the span and behind it: once the span holds the
    // four epochs the interpolation needs and the margin behind it is read,
    // the rest of the file is not kept, and the pass ends there. A few hours
    // of observations then cost a few hours of the file, not the whole day.
    long inSpan = 0, behindSpan = 0;
    fieldtext::LineScanner scan(in);
    std::string_view line;
    while (scan.Next(line)) {
        ++lineNo;
        if (!IsAS(line)) continue;
        // The clock bias is the E19.12 field that ends 50 characters behind
        // posDate; a line cut inside it (the last line of a cut file) would
        // read a number off by powers of ten without any sign.
        if (line.size() < posDate + GNSSpClkns::BiasFieldEnd) Fail(lineNo, "AS record too short");
        if (!NewDate(line, posDate, previous) && !fileEpoch.empty()) continue;
        mjd t;
        if (DateOf(previous, t)) {
            if (badLine == 0 && !fileEpoch.empty() && !(t - fileEpoch.back() > 0.0L))
                badLine = lineNo, bad = "epochs are not in increasing time order";
        } else if (badLine == 0) {
            badLine = lineNo, bad = "AS record date does not parse";
        }
        fileEpoch.push_back(t);
        epochStart.push_back({lineNo, start + static_cast<std::streamoff>(scan.Offset())});
        if (!hasSpan || badLine > 0) continue;
        if (spanLast < t) ++behindSpan;
        else if (!(t < spanFirst)) ++inSpan;
        // One epoch past the margin is counted too: it bounds the data
        // pass, which stops on the first epoch it does not keep.
        if (inSpan >= 4 && behindSpan > GNSSpClkns::SpanMarginEpochs) {
            if (start >= 0) CheckFileEnd(in, epochStart.back().at, t);
            break;
        }
    }
    // Four nodes for the cubic, and two epochs at least for a spacing.
    const long nFile = static_cast<long>(fileEpoch.size());
    nepochFile = nFile;
    if (nFile < 4) Fail(lineNo, "fewer than four epochs of AS records (" + std::to_string(nFile) + ")");
    if (badLine > 0) Fail(badLine, bad);

    // Only the epochs of the span and a margin on either side are kept: a
    // few hours of observations need not parse a whole day of 30-s clocks.
    // A span that meets fewer than four epochs keeps the whole file, for the
    // callers' test of the span.
    firstKept = 0;
    nepoch = nFile;
    if (hasSpan) {
        long a = 0, b = nFile - 1;
        while (a < nFile && fileEpoch[static_cast<std::size_t>(a)] < spanFirst) ++a;
        while (b >= 0 && spanLast < fileEpoch[static_cast<std::size_t>(b)]) --b;
        if (b - a + 1 >= 4) {
            a = std::max(0L, a - GNSSpClkns::SpanMarginEpochs);
            b = std::min(nFile - 1, b + GNSSpClkns::SpanMarginEpochs);
            firstKept = a;
            nepoch = b - a + 1;
        }
    }
    epoch.Resize(nepoch);
    for (long i = 0; i < nepoch; ++i) epoch(i) = fileEpoch[static_cast<std::size_t>(firstKept + i)];
    firstKeptLine = epochStart[static_cast<std::size_t>(firstKept)].line;
    firstKeptAt = start >= 0 ? epochStart[static_cast<std::size_t>(firstKept)].at : -1;
}

void GNSSpClk::CheckFileEnd(std::istream& in, std::streamoff from, const mjd& last)
{
    // A file cut short shows in its last line; 64 kB hold some ten epochs.
    constexpr std::streamoff TailBytes = 65536;
    in.clear();
    if (!in.seekg(0, std::ios::end)) return;
    const std::streamoff end = in.tellg();
    const std::streamoff at = std::max(from, end - TailBytes);
    if (at < 0 || !in.seekg(at)) return;
    // The line number of a fault is only counted when there is one.
    auto failAt = [this](std::streamoff offset, const std::string& text) {
        std::ifstream again(clkfile);
        long lineNo = 1;
        fieldtext::LineScanner count(again);
        std::string_view l;
        while (count.Next(l) && static_cast<std::streamoff>(count.Offset()) < offset) ++lineNo;
        Fail(lineNo, text);
    };
    fieldtext::LineScanner scan(in);
    std::string_view line;
    // Unless it starts the epoch at from, the first line may be a piece.
    if (at > from) scan.Next(line);
    std::string date;
    std::streamoff dateAt = -1;
    while (scan.Next(line)) {
        if (!IsAS(line)) continue;
        const std::streamoff lineAt = at + static_cast<std::streamoff>(scan.Offset());
        if (line.size() < posDate + GNSSpClkns::BiasFieldEnd) failAt(lineAt, "AS record too short");
        date.assign(line.substr(posDate, DateWidth));
        dateAt = lineAt;
    }
    if (dateAt < 0) return;
    mjd t;
    if (!DateOf(date, t)) failAt(dateAt, "AS record date does not parse");
    if (t < last) failAt(dateAt, "epochs are not in increasing time order");
}

void GNSSpClk::ReadFileData()
{
    namespace ns = GNSSpClkns;
    std::ifstream in(clkfile);
    // The lines before the first kept epoch were checked by the count:
    // passed over unread, as is everything after the last kept epoch. The
    // count ran on a stream of the same file, which told its place.
    if (firstKeptAt < 0 || !in.seekg(firstKeptAt))
        ProgramError("Orvo", "RINEX CLOCK FILE - UNSUCCESFUL READING (DATA-HEADER)");
    long lineNo = firstKeptLine - 1;
    fieldtext::LineScanner scan(in);
    std::string_view line;
    long fileIx = firstKept - 1, ieph = -1, firstRefused = 0;
    std::string previous;
    refused.clear();
    while (scan.Next(line)) {
        ++lineNo;
        if (!IsAS(line)) continue;
        if (line.size() < posDate + GNSSpClkns::BiasFieldEnd) Fail(lineNo, "AS record too short");
        if (NewDate(line, posDate, previous) || ieph < 0) {
            ++fileIx;
            ieph = fileIx - firstKept;
            // The file was counted on this stream's text; a file that
            // changed since would overrun the epochs.
            if (fileIx >= nepochFile) Fail(lineNo, "more epochs than counted");
            if (ieph >= nepoch) break;
        }
        // A blank bias is no zero clock, and "nan" would carry into every
        // range of the satellite. A line cut in the last exponent digit
        // passes the length test but leaves a normalised mantissa of 0.1 or
        // more: the clock bound refuses it.
        char field[ns::BiasFieldWidth + 1];
        fieldtext::CopyTrimmedField(line, posDate + ns::BiasFieldStart, ns::BiasFieldWidth, field, sizeof field);
        long double bias = 0.0L;
        if (!fieldtext::ToLongDouble(field, bias))
            Fail(lineNo, std::string("clock bias \"") + field + "\" is not a number");
        // The number behind the system letter, read from its own columns:
        // the line is not terminated where it ends.
        char number[4];
        fieldtext::CopyTrimmedField(line, 4, 3, number, sizeof number);
        const int prn = std::atoi(number);
        const short s = PreciseSatelliteNumber(line[3], prn);
        // A satellite the header doesn't list has no column.
        if (s < 0 || s >= ns::NSatIx || satIx(s) < 0) continue;
        if (std::fabs(bias) > ns::MaxSatClock_s) {
            if (refused.empty()) firstRefused = lineNo;
            ++refused[s];
            continue;
        }
        SatClk(ieph, satIx(s)) = bias;
    }
    if (!refused.empty()) {
        long n = 0;
        for (const auto& r : refused) n += r.second;
        ProgramWarningCout("Orvo", std::string("RINEX CLOCK FILE ") + clkfile + ": " + std::to_string(n)
                                       + " CLOCK VALUES BEYOND 0.1 S REFUSED AS MISSING, THE FIRST IN LINE "
                                       + std::to_string(firstRefused) + "!");
    }
}

bool GNSSpClk::EndTests(const mjd& reph)
{
    if (reph < epoch(0)) {
        EpochIx = 0;
        if (epoch(0) - reph > GNSSpClkns::MaxOutside_s)
            ProgramWarning("Orvo", "RINEX CLOCK - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL (<-300s)");
        return true;
    }
    if (reph > epoch(nepoch - 1)) {
        EpochIx = nepoch - 1;
        if (reph - epoch(nepoch - 1) > GNSSpClkns::MaxOutside_s)
            ProgramWarning("Orvo", "RINEX CLOCK - GETTING INDEX - INPUT EPOCH OUT OF DATA INTERVAL (>300s)");
        return true;
    }
    return false;
}

void GNSSpClk::SetEpochIndex(mjd& reph)
{
    if (EndTests(reph)) return;
    for (EpochIx = 0; EpochIx < nepoch - 1; ++EpochIx)
        if (!(epoch(EpochIx) > reph) && epoch(EpochIx + 1) > reph) return;
    EpochIx = nepoch - 1;
}

void GNSSpClk::SetEpochIndex(mjd& reph, long EpochIxOld)
{
    if (EndTests(reph)) return;
    long ix = EpochIxOld;
    if (ix < 0) ix = 0;
    if (ix > nepoch - 1) ix = nepoch - 1;
    if (ix < nepoch - 1 && !(reph < epoch(ix)) && reph < epoch(ix + 1)) {
        EpochIx = ix;
        return;
    }
    if (reph < epoch(ix)) {
        while (ix >= 0 && reph < epoch(ix)) --ix;
    } else {
        while (ix < nepoch && reph > epoch(ix)) ++ix;
    }
    // Inside the file both walks end on a valid index; the clamp only
    // guards the reads that follow.
    if (ix < 0) ix = 0;
    if (ix > nepoch - 1) ix = nepoch - 1;
    EpochIx = ix;
}

void GNSSpClk::GetSatelliteClock(short& prn, mjd& reph, long double& dt)
{
    DTisOK = false;
    if (prn < 0 || prn >= GNSSpClkns::NSatIx || satIx(prn) < 0) return;
    const long col = satIx(prn);

    if (epoch(0) - reph > GNSSpClkns::MaxExtrapolation_s
        || reph - epoch(nepoch - 1) > GNSSpClkns::MaxExtrapolation_s)
        return;
    long first = EpochIx - 1;
    if (EpochIx <= 0) first = 0;
    else if (EpochIx >= nepoch - 4) first = nepoch - 4;
    // The four nodes down the satellite's column, the range checked once:
    // the estimator asks at every record of every iteration.
    const long double* const node = &SatClk(first, col);
    const bool* const even = &evenStep(first);
    if (first + 3 >= SatClk.NRow() || first + 3 >= evenStep.NRow()) return;
    const long stride = SatClk.NCol();
    long double c[4];
    for (int k = 0; k < 4; ++k) {
        c[k] = node[k * stride];
        if (c[k] > GNSSpClkns::MaxClock_s) return;
        if (k > 0 && !even[k]) return;
    }
    const long double x = (reph - epoch(first)) * (1.0L / 60.0L);
    DTisOK = true;

    const long double u = intervalUnit;
    const long double T[4] = {(x - u) * (x - 2.0L * u) * (x - 3.0L * u), x * (x - 2.0L * u) * (x - 3.0L * u),
                              x * (x - u) * (x - 3.0L * u), x * (x - u) * (x - 2.0L * u)};
    long double sum = 0.0L;
    for (int k = 0; k < 4; ++k) sum += c[k] * T[k] * perLfact[k];
    dt = sum;
}
