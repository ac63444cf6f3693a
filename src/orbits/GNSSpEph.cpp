#include "orbits/GNSSpEph.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "orbits/GNSSpClk.h"
#include "orbits/SatelliteNumber.h"

namespace {

// Reads one line without its line end; false at the end of the stream.
bool NextLine(std::ifstream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

// The number in the len characters from pos, 0 when the line ends before
// pos, as the fixed-column fields read everywhere in the program.
long double NumberAt(const std::string& line, std::size_t pos, std::size_t len = std::string::npos)
{
    if (pos >= line.size()) return 0.0L;
    const std::string field = line.substr(pos, len);
    return std::strtold(field.c_str(), nullptr);
}

long IntegerAt(const std::string& line, std::size_t pos, std::size_t len = std::string::npos)
{
    if (pos >= line.size()) return 0;
    const std::string field = line.substr(pos, len);
    return std::atol(field.c_str());
}

// Satellite of a three-character field: letter, tens (blank for none), units.
short SatelliteAt(const std::string& line, std::size_t pos)
{
    const char tens = line[pos + 1];
    const char units = line[pos + 2];
    int prn = (units >= '0' && units <= '9') ? units - '0' : 0;
    if (tens >= '0' && tens <= '9') prn += 10 * (tens - '0');
    return PreciseSatelliteNumber(line[pos], prn);
}

bool StartsWith(const std::string& line, const char* head)
{
    return line.compare(0, std::strlen(head), head) == 0;
}

}  // namespace

GNSSpEph::GNSSpEph()
    : Relativity(0.0L), DTisOK(true), PSisOK(true), version(' '), flag(' '),
      nepoch(0), nSatListLines(0), nComments(0), nsat(0), interval(0.0L),
      posBase(0.0L), clkBase(0.0L), nPtsPos(7), nPtsTime(2),
      OMEGAz(7.292115146700000e-5L), nEpochLines(0)
{
    sp3file[0] = '\0';
}

namespace {

// Periodic relativity term 2 r·v/c² (s). r·v stays below 1e12 m²/s, far
// inside long double's range, so one division serves.
long double RelativityTerm(const xyzt& p, const xyz& v)
{
    constexpr long double PerC2 = 1.0L / (GNSSpEphns::C_mps * GNSSpEphns::C_mps);
    return 2.0L * (v.x * p.x + v.y * p.y + v.z * p.z) * PerC2;
}

}  // namespace

void GNSSpEph::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(sp3file))
        ProgramError("Orvo", "PRECISE ORBIT FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(sp3file, file);
}

void GNSSpEph::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("PRECISE ORBIT FILE ") + sp3file + ": line "
                         + std::to_string(lineNo) + ": " + text);
}

void GNSSpEph::ReadFile()
{
    CountSomeLines();
    ReadFileHeader();
    // A header count beyond the epochs present means a cut file; checking
    // it here keeps a wrong count from sizing the record store.
    if (nepoch > nEpochLines)
        ProgramError("Orvo", std::string("PRECISE ORBIT FILE ") + sp3file + ": header announces "
                             + std::to_string(nepoch) + " epochs, the file holds "
                             + std::to_string(nEpochLines));
    epoch.Resize(nepoch);
    sat.Resize(nsat * nepoch, 1, 0);
    sPos.Resize(nsat * nepoch, 1, xyzt());
    sPosSig.Resize(nsat * nepoch, 1, xyzt());
    ReadFileData();
    SetLfact();
    // Slot-major copy of the records: the 14 nodes of one satellite are
    // then adjacent, where the file order puts a whole epoch between them.
    bySlot.Resize(nsat * nepoch);
    for (long i = 0; i < nepoch; ++i)
        for (long j = 0; j < nsat; ++j) bySlot(j * nepoch + i) = sPos(j + nsat * i);
    // Missing nodes counted ahead per satellite: whether a window holds one
    // is then one difference, not a look at each of its nodes.
    emptyBefore.Resize(nsat * (nepoch + 1));
    for (long j = 0; j < nsat; ++j) {
        long* const count = &emptyBefore(j * (nepoch + 1));
        count[0] = 0;
        for (long i = 0; i < nepoch; ++i) {
            const xyzt& n = bySlot(j * nepoch + i);
            const bool empty = std::fabs(n.x) + std::fabs(n.y) + std::fabs(n.z) < GNSSpEphns::EmptyNode_m;
            count[i + 1] = count[i] + (empty ? 1 : 0);
        }
    }
}

void GNSSpEph::CountSomeLines()
{
    std::ifstream in(sp3file);
    if (!in)
        ProgramError("Orvo", std::string("PRECISE ORBIT FILE ") + sp3file + " CAN NOT BE OPENED!");
    nSatListLines = 0;
    nComments = 0;
    nEpochLines = 0;
    std::string line;
    bool inHeader = true;
    while (NextLine(in, line)) {
        if (!line.empty() && line[0] == '*') {
            inHeader = false;
            ++nEpochLines;
        } else if (inHeader) {
            if (StartsWith(line, "+ ")) ++nSatListLines;
            if (StartsWith(line, "/*")) ++nComments;
        }
    }
}

void GNSSpEph::ReadFileHeader()
{
    std::ifstream in(sp3file);
    std::string line;
    long lineNo = 0;
    auto next = [&](const char* what) {
        if (!NextLine(in, line)) Fail(lineNo + 1, std::string("file ends in the header (") + what + ")");
        ++lineNo;
    };

    next("first line");
    // The epoch count ends at index 38; a shorter line is no SP3 header.
    if (line.size() < 39 || line[0] != '#')
        Fail(lineNo, "first line is not an SP3 header line");
    version = line[1];
    flag = line[2];
    nepoch = IntegerAt(line, 32, 7);

    next("second line");
    if (line.size() < 45 || !StartsWith(line, "##"))
        Fail(lineNo, "second line is not an SP3 \"##\" line");
    interval = NumberAt(line, 23, 15);
    const long day = IntegerAt(line, 38, 6);
    const long double dayFraction = NumberAt(line, 44);
    if (day < 0 || day > 199999 || !(dayFraction >= 0.0L && dayFraction < 1.0L))
        Fail(lineNo, "start epoch is not a valid modified Julian date");
    StartEpoch = mjd(static_cast<unsigned long>(day), dayFraction * 86400.0L);

    // The interpolation and the window rule need a positive spacing and at
    // least 2*nPtsPos equally spaced nodes.
    if (!(interval > 0.0L))
        Fail(lineNo, "epoch interval is not positive");
    if (nepoch < 2L * nPtsPos)
        Fail(1, "fewer than " + std::to_string(2 * nPtsPos)
                    + " epochs: too short for the 14-node orbit interpolation");
    if (nSatListLines < 1)
        Fail(lineNo, "no satellite list (\"+ \") lines in the header");

    const long listCapacity = 17L * nSatListLines;
    long n = 0;
    for (long k = 0; k < nSatListLines; ++k) {
        next("satellite list");
        if (!StartsWith(line, "+ ")) Fail(lineNo, "satellite list line expected");
        if (k == 0) {
            const long count = IntegerAt(line, 2, 4);
            // Three-character satellite fields allow at most 999 entries.
            if (count < 1 || count > listCapacity || count > 999)
                Fail(lineNo, "satellite count " + std::to_string(count)
                                 + " does not fit the satellite list lines");
            nsat = static_cast<short>(count);
            satList.Resize(nsat, 1, 0);
            satListSig.Resize(nsat, 1, 0);
        }
        for (int j = 0; j < 17 && n < nsat; ++j, ++n) {
            if (line.size() < static_cast<std::size_t>(12 + 3 * j))
                Fail(lineNo, "satellite list line ends before entry " + std::to_string(n + 1));
            satList(n) = SatelliteAt(line, 9 + 3 * j);
        }
    }

    n = 0;
    for (long k = 0; k < nSatListLines; ++k) {
        next("accuracy list");
        if (!StartsWith(line, "++")) Fail(lineNo, "accuracy (\"++\") line expected");
        for (int j = 0; j < 17 && n < nsat; ++j, ++n)
            satListSig(n) = static_cast<short>(IntegerAt(line, 9 + 3 * j, 3));
    }

    next("%c line");
    next("%c line");
    next("%f line");
    if (!StartsWith(line, "%f")) Fail(lineNo, "\"%f\" line with the exponent bases expected");
    posBase = NumberAt(line, 2, 11);
    clkBase = NumberAt(line, 13, 13);
    for (int k = 0; k < 3; ++k) next("%f/%i lines");
    for (long k = 0; k < nComments; ++k) next("comment lines");
}

void GNSSpEph::ReadFileData()
{
    std::ifstream in(sp3file);
    std::string line;
    long lineNo = 0;
    // Skip the header read before: the same count of lines up to the
    // first epoch line.
    const long headerLines = 2 + 2 * nSatListLines + 6 + nComments;
    for (long k = 0; k < headerLines; ++k) {
        if (!NextLine(in, line)) Fail(lineNo + 1, "file ends in the header");
        ++lineNo;
    }

    // Velocity and correlation lines follow their position line; velocities
    // come from the derivative of the position polynomial instead.
    auto nextData = [&](const std::string& missing) {
        do {
            if (!NextLine(in, line)) Fail(lineNo + 1, missing);
            ++lineNo;
        } while (!line.empty() && (line[0] == 'V' || StartsWith(line, "EP") || StartsWith(line, "EV")));
    };
    // A blank field is no zero and "nan" no coordinate: either would reach
    // every range of the satellite.
    auto field = [&](std::size_t pos, const char* what) {
        const std::string f = fieldtext::TrimmedField(line, pos, 14);
        long double v = 0.0L;
        if (!fieldtext::ToLongDouble(f, v))
            Fail(lineNo, std::string(what) + " \"" + f + "\" is not a number");
        return v;
    };
    long firstRefused = 0;
    refused.clear();

    // Epochs are stored equally spaced from the header's start; the epoch
    // line is checked against that, so that a gap can't shift every later
    // block by one interval unnoticed. 1 µs: the lines give 1e-8 s.
    constexpr long double EpochMatch_s = 1e-6L;
    for (long i = 0; i < nepoch; ++i) {
        nextData("file ends before epoch " + std::to_string(i + 1));
        if (line.empty() || line[0] != '*') Fail(lineNo, "epoch line (\"*\") expected");
        unsigned short y = 0, mo = 0, d = 0, h = 0, mi = 0;
        long double s = 0.0L;
        if (std::sscanf(line.c_str() + 1, "%hu %hu %hu %hu %hu %Lf", &y, &mo, &d, &h, &mi, &s) != 6)
            Fail(lineNo, "epoch line does not hold a date");
        ymdhms ep(y, mo, d, h, mi, s);
        mjd epMjd = ymdhms2mjd(ep);
        if (std::fabs(epMjd - StartEpoch) > EpochMatch_s)
            Fail(lineNo, "epoch is not the header's start plus a whole number of intervals");
        epoch(i) = StartEpoch;
        StartEpoch += interval;

        for (long j = 0; j < nsat; ++j) {
            nextData("file ends in the records of epoch " + std::to_string(i + 1));
            if (line.size() < 4) Fail(lineNo, "record line too short");
            const long indx = j + static_cast<long>(nsat) * i;
            sat(indx) = SatelliteAt(line, 1);
            // Interpolation addresses records by header slot, so a record
            // out of that order would lend one satellite's orbit to another.
            if (sat(indx) != satList(j))
                Fail(lineNo, "record of satellite " + std::to_string(sat(indx))
                                 + " where the header order has " + std::to_string(satList(j)));
            if (line[0] != 'P') continue;
            if (line.size() < 60) Fail(lineNo, "position record shorter than 60 characters");
            xyzt& p = sPos(indx);
            p.x = field(4, "x coordinate") * 1000.0L;
            p.y = field(18, "y coordinate") * 1000.0L;
            p.z = field(32, "z coordinate") * 1000.0L;
            const long double clk_us = field(46, "clock");
            p.dt = clk_us * 1e-6L;
            xyzt& sg = sPosSig(indx);
            // The "no clock" mark is kept as 999999 s, far beyond the 0.9 s
            // that the interpolation takes as missing.
            const bool noClock = std::fabs(clk_us - GNSSpEphns::NoClock_us) < 2.0L;
            const long double r = std::hypot(p.x, p.y, p.z);
            const bool empty = std::fabs(p.x) + std::fabs(p.y) + std::fabs(p.z) < GNSSpEphns::EmptyNode_m;
            const bool badPos = !empty && (r < GNSSpEphns::MinOrbitRadius_m || r > GNSSpEphns::MaxOrbitRadius_m);
            const bool refuse = badPos || (!noClock && std::fabs(p.dt) > GNSSpClkns::MaxSatClock_s);
            if (refuse) {
                if (refused.empty()) firstRefused = lineNo;
                ++refused[sat(indx)];
                if (badPos) p.x = p.y = p.z = 0.0L;
            }
            if (noClock || refuse) {
                p.dt = 999999.0L;
                sg = xyzt();
                continue;
            }
            sg.x = line.size() > 62 ? std::pow(posBase, NumberAt(line, 61, 2)) * 0.001L : 0.0L;
            sg.y = line.size() > 65 ? std::pow(posBase, NumberAt(line, 64, 2)) * 0.001L : 0.0L;
            sg.z = line.size() > 68 ? std::pow(posBase, NumberAt(line, 67, 2)) * 0.001L : 0.0L;
            sg.dt = line.size() > 72 ? std::pow(clkBase, NumberAt(line, 70, 3)) * 1e-12L : 0.0L;
        }
    }
    if (!refused.empty()) {
        long n = 0;
        for (const auto& r : refused) n += r.second;
        ProgramWarningCout("Orvo", std::string("PRECISE ORBIT FILE ") + sp3file + ": " + std::to_string(n)
                                       + " NODES OUTSIDE THE ORBIT SHELLS OR WITH CLOCKS BEYOND 0.1 S"
                                         " REFUSED AS MISSING, THE FIRST IN LINE "
                                       + std::to_string(firstRefused) + "!");
    }
}

void GNSSpEph::SetLfact()
{
    // Barycentric weights of equally spaced nodes, in seconds: the
    // reciprocal of the product of the node's distances to all others. The
    // products of 13 distances of up to two hours stay far inside the range
    // of long double (about 1e50 against 1e4932).
    auto fill = [this](matrix<long double>& w, int n) {
        w.Resize(2 * n);
        for (int i = 0; i < 2 * n; ++i) {
            long double prod = 1.0L;
            for (int j = 0; j < 2 * n; ++j)
                if (j != i) prod *= (i - j) * interval;
            w(i) = 1.0L / prod;
        }
    };
    fill(wPos, nPtsPos);
    fill(wClk, nPtsTime);
    // Header slot per satellite number; the first slot of a number listed
    // twice answers, as a search from the top would.
    short maxSat = -1;
    for (long k = 0; k < nsat; ++k) maxSat = std::max(maxSat, satList(k));
    slotOf.Resize(maxSat + 1L, 1, -1L);
    for (long k = nsat - 1; k >= 0; --k)
        if (satList(k) >= 0) slotOf(satList(k)) = k;
}

void GNSSpEph::WarnIfOutside(const mjd& ephCalc)
{
    if (epoch(0) - ephCalc > GNSSpEphns::MaxOutside_s
        || ephCalc - epoch(nepoch - 1) > GNSSpEphns::MaxOutside_s)
        ProgramWarning("Orvo", "CALCULATION EPOCH NOT IN EPOCH INTERVAL OF INPUT PRECISE ORBIT FILE!");
}

void GNSSpEph::CalcSatPosition(unsigned short sati, mjd& ephCalc, xyzt& psat, xyzt& vsat)
{
    WarnIfOutside(ephCalc);
    Interpolate(sati, ephCalc, psat, vsat);
}

xyzt GNSSpEph::LastVelocity() const
{
    // The product rule carried along the prefix and suffix products gives
    // the basis derivatives with no division and no special case on a node.
    // The prefix and suffix products are those of the interpolation.
    const long n = lastNodes;
    const long double* const pre = lastPre;
    const long double* const suf = lastSuf;
    long double dPre[MaxNodes + 1], dSuf[MaxNodes + 1];
    dPre[0] = 0.0L;
    dSuf[n] = 0.0L;
    for (long k = 0, m = n - 1; k < n; ++k, --m) {
        dPre[k + 1] = dPre[k] * lastSeconds[k] + pre[k];
        dSuf[m] = dSuf[m + 1] * lastSeconds[m] + suf[m + 1];
    }
    const long double* const w = wPos.v;
    xyzt v;
    for (long k = 0; k < n; ++k) {
        const long double slope = (dPre[k] * suf[k + 1] + pre[k] * dSuf[k + 1]) * w[k];
        v.x += lastNode[k].x * slope;
        v.y += lastNode[k].y * slope;
        v.z += lastNode[k].z * slope;
    }
    return v;
}

void GNSSpEph::Interpolate(unsigned short sati, const mjd& ephCalc, xyzt& psat, xyzt& vsat,
                           bool withVelocity)
{
    // The quotient is bounded before the cast: an epoch years away would
    // overflow long, and the window rule clamps anything beyond the file.
    long double q = (ephCalc - epoch(0)) / interval;
    if (q > 1e9L) q = 1e9L;
    if (q < -1e9L) q = -1e9L;
    const long ix = static_cast<long>(q);

    const long isatList = sati < slotOf.Length() ? slotOf(sati) : -1;
    NodeMissing = false;
    OutOfSpan = epoch(0) - ephCalc > GNSSpEphns::MaxExtrapolation_s
                || ephCalc - epoch(nepoch - 1) > GNSSpEphns::MaxExtrapolation_s;
    if (isatList < 0 || OutOfSpan) {
        PSisOK = false;
        DTisOK = false;
        return;
    }
    PSisOK = true;
    DTisOK = true;

    // Window of 2n nodes centred on the interval holding the epoch, slid
    // inward at the file's ends; ReadFile guarantees nepoch >= 2*nPtsPos.
    auto window = [this, ix](int n, long& i1, long& i2) {
        i1 = ix - n + 1;
        i2 = ix + n;
        if (i1 < 0) { i1 = 0; i2 = 2L * n - 1; }
        if (i2 >= nepoch) { i2 = nepoch - 1; i1 = nepoch - 2L * n; }
    };

    long i1 = 0, i2 = 0;
    window(nPtsPos, i1, i2);
    const long nNodes = i2 - i1 + 1;
    // The satellite's nodes lie side by side in the slot-major copy.
    const xyzt* node = &bySlot(isatList * nepoch + i1);
    const long* const emptyCount = &emptyBefore(isatList * (nepoch + 1));
    if (emptyCount[i2 + 1] != emptyCount[i1]) {
        PSisOK = false;
        DTisOK = false;
        NodeMissing = true;
        return;
    }

    // Seconds from each node. The basis polynomial of node k is the
    // product of all other factors times its weight: prefix and suffix
    // products give all of them in one pass.
    long double* const pre = lastPre;
    long double* const suf = lastSuf;
    long double* const sec = lastSeconds;
    // The difference of operator- (days scaled first, then the seconds),
    // formed here without a call per node.
    const unsigned long day = ephCalc.GetMJDay();
    const long double second = ephCalc.GetSecond();
    const mjd* const nodeEpoch = &epoch(i1 + nNodes - 1) - (nNodes - 1);
    for (long k = 0; k < nNodes; ++k) {
        const unsigned long d = nodeEpoch[k].GetMJDay();
        const long double days = day >= d ? static_cast<long double>(day - d) : -static_cast<long double>(d - day);
        sec[k] = days * 86400.0L + (second - nodeEpoch[k].GetSecond());
    }
    // The two product chains in one loop, and the sums in locals: each
    // chain then waits on its own multiplications only.
    pre[0] = 1.0L;
    suf[nNodes] = 1.0L;
    for (long k = 0, m = nNodes - 1; k < nNodes; ++k, --m) {
        pre[k + 1] = pre[k] * sec[k];
        suf[m] = suf[m + 1] * sec[m];
    }
    const long double* const w = wPos.v;
    long double x = 0.0L, y = 0.0L, z = 0.0L;
    for (long k = 0; k < nNodes; ++k) {
        const long double basis = pre[k] * suf[k + 1] * w[k];
        x += node[k].x * basis;
        y += node[k].y * basis;
        z += node[k].z * basis;
    }
    p0 = xyzt(x, y, z, 0.0L);
    lastNode = node;
    lastNodes = nNodes;
    v0 = withVelocity ? LastVelocity() : xyzt();

    // The clock window lies inside the position window (both are centred
    // on the same interval and slid inward at the same ends).
    const long p1 = i1;
    window(nPtsTime, i1, i2);
    lastIx = ix;
    lastClockOffset = i1 - p1;
    lastClockNodes = i2 - i1 + 1;
    p0.dt = WindowClock(sec);
    v0.dt = 0.0L;
    psat = p0;
    vsat = v0;
}

long double GNSSpEph::WindowClock(const long double* sec)
{
    const xyzt* const node = lastNode + lastClockOffset;
    const long double* const s = sec + lastClockOffset;
    long double clk = 0.0L;
    for (long i = 0; i < lastClockNodes; ++i) {
        const long double dtNode = node[i].dt;
        if (std::fabs(dtNode) > GNSSpEphns::MaxClock_s) {
            DTisOK = false;
            break;
        }
        long double pxi = wClk.v[i];
        for (long j = 0; j < lastClockNodes; ++j)
            if (j != i) pxi *= s[j];
        clk += dtNode * pxi;
    }
    return clk;
}

long double GNSSpEph::CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                      xyzt& psat, xyzt& vsat)
{
    WarnIfOutside(ephCalc);
    return IteratedLightTime(sati, ephCalc, prec, psat, vsat);
}

long double GNSSpEph::CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                      xyzt& psat, xyzt& vsat, long double tauHint)
{
    using namespace GNSSpEphns;
    WarnIfOutside(ephCalc);
    if (!(tauHint > 0.0L && tauHint <= MaxFlightTime_s))
        return IteratedLightTime(sati, ephCalc, prec, psat, vsat);
    ephr = ephCalc;
    ephr += -tauHint;
    xyzt p1, v1;
    Interpolate(sati, ephr, p1, v1, true);
    ephr = ephCalc;
    // Whatever leaves the one interpolation's window or the hint's reach
    // takes the full iteration, which answers every such case.
    if (!PSisOK) return IteratedLightTime(sati, ephCalc, prec, psat, vsat);
    const LightTimeState start{tauHint, p1, xyz(v1.x, v1.y, v1.z)};
    const xyz acc = EarthFixedAcceleration(start);
    long double tau = tauHint;
    bool converged = false;
    const long double dist = CarriedLightTime(start, acc, 0.0L, prec, psat, tau, converged);
    const long double moved = tauHint - tau;
    const long double q = std::clamp((ephCalc - epoch(0) - tau) / interval, -1e9L, 1e9L);
    if (!converged || !(std::fabs(moved) <= MaxHintError_s) || static_cast<long>(q) != lastIx
        || !(dist > 0.0L) || !(tau <= MaxFlightTime_s))
        return IteratedLightTime(sati, ephCalc, prec, psat, vsat);
    // The clock on the same nodes at the emission epoch found.
    long double sec[MaxNodes];
    for (long k = 0; k < lastNodes; ++k) sec[k] = lastSeconds[k] + moved;
    psat.dt = WindowClock(sec);
    vsat = xyzt(v1.x + acc.x * moved, v1.y + acc.y * moved, v1.z + acc.z * moved, 0.0L);
    return Solved(tau, dist, psat, vsat);
}

long double GNSSpEph::CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                      xyzt& psat, xyzt& vsat, LightTimeHints& hints)
{
    const short sat = static_cast<short>(sati);
    const long double dist = CalcSatPosition(sati, ephCalc, prec, psat, vsat, hints.Predict(sat, ephCalc));
    if (PSisOK && dist > 0.0L) hints.Keep(sat, ephCalc, lastTau, prec, psat, vsat);
    return dist;
}

long double GNSSpEph::Solved(long double tau, long double dist, xyzt& psat, const xyzt& vsat)
{
    lastTau = tau;
    lastPos = psat;
    lastVel = vsat;
    Relativity = RelativityTerm(psat, vsat);
    psat.dt -= Relativity;
    return dist;
}

long double GNSSpEph::IteratedLightTime(unsigned short sati, mjd& ephCalc, xyz& prec,
                                        xyzt& psat, xyzt& vsat)
{
    using GNSSpEphns::C_mps;
    long double thres = 1.0L, dist = 0.0L, deltat = -0.075L, tauUsed = 0.0L;
    int niter = 0;
    ephr = ephCalc;
    PSisOK = true;
    DTisOK = true;
    while (thres > GNSSpEphns::LightTimeThres_m) {
        ephr += deltat;
        tauUsed = -deltat;
        // The velocity only serves the relativity term of the last step.
        Interpolate(sati, ephr, psat, vsat, false);
        if (!PSisOK) return -1.0L;
        // The receiver carried into the Earth-fixed frame of emission.
        ps = prec;
        ps.RotateZ(-deltat * OMEGAz);
        const long double dx = ps.x - psat.x, dy = ps.y - psat.y, dz = ps.z - psat.z;
        dist = std::sqrt(dx * dx + dy * dy + dz * dz);
        thres = std::fabs(deltat * C_mps + dist);
        deltat = -dist / C_mps;
        if (!(-deltat <= GNSSpEphns::MaxFlightTime_s)) {
            PSisOK = false;
            DTisOK = false;
            return -1.0L;
        }
        ephr = ephCalc;
        ++niter;
        if (niter > GNSSpEphns::MaxLightTimeIter) {
            ProgramWarning("Orvo", "CalcSatPosition():      TO MANY ITERATIONS: > 10!!");
            break;
        }
    }
    vsat = LastVelocity();
    return Solved(tauUsed, dist, psat, vsat);
}

xyz GNSSpEph::EarthFixedAcceleration(const LightTimeState& s) const
{
    // The orbit files are Earth-fixed: Coriolis (0.3 m/s²) and centrifugal
    // (0.1 m/s²) terms join the central attraction.
    const long double r = std::sqrt(s.pos.x * s.pos.x + s.pos.y * s.pos.y + s.pos.z * s.pos.z);
    const long double k = GNSSpEphns::EarthGM_m3ps2 / (r * r * r), w2 = OMEGAz * OMEGAz;
    return xyz(-k * s.pos.x + 2.0L * OMEGAz * s.vel.y + w2 * s.pos.x,
               -k * s.pos.y - 2.0L * OMEGAz * s.vel.x + w2 * s.pos.y, -k * s.pos.z);
}

long double GNSSpEph::CarriedLightTime(const LightTimeState& s, const xyz& acc, long double shift_s,
                                       const xyz& prec, xyzt& psat, long double& tau, bool& converged) const
{
    using GNSSpEphns::C_mps;
    long double next = s.tau, thres = 1.0L, dist = 0.0L;
    for (int niter = 0; thres > GNSSpEphns::LightTimeThres_m && niter < GNSSpEphns::MaxLightTimeIter; ++niter) {
        tau = next;
        const long double dt = shift_s - (tau - s.tau), half = 0.5L * dt * dt;
        psat.x = s.pos.x + s.vel.x * dt + acc.x * half;
        psat.y = s.pos.y + s.vel.y * dt + acc.y * half;
        psat.z = s.pos.z + s.vel.z * dt + acc.z * half;
        xyz turned = prec;
        turned.RotateZ(tau * OMEGAz);
        const long double dx = turned.x - psat.x, dy = turned.y - psat.y, dz = turned.z - psat.z;
        dist = std::sqrt(dx * dx + dy * dy + dz * dz);
        thres = std::fabs(dist - tau * C_mps);
        next = dist * PerSpeedOfLight_spm;
    }
    converged = thres <= GNSSpEphns::LightTimeThres_m;
    return dist;
}

xyzt GNSSpEph::SolvedPosition(const LightTimeState& s)
{
    xyzt p = s.pos;
    p.dt -= RelativityTerm(s.pos, s.vel);
    return p;
}

long double GNSSpEph::MovedSatPosition(const LightTimeState& s, long double shift_s, const xyz& prec,
                                       xyzt& psat, LightTimeState* carried)
{
    // The iteration of CalcSatPosition, started from the saved light time:
    // one or two steps, since the flight time changes by nanoseconds.
    long double tau = s.tau;
    bool converged = false;
    const xyz acc = EarthFixedAcceleration(s);
    const long double dist = CarriedLightTime(s, acc, shift_s, prec, psat, tau, converged);
    // The clock keeps its saved value; the caller bounds the shift, since
    // the orbit files' clocks drift by up to 3e-10 s/s. The velocity is
    // carried as well: left as saved, it would move the relativity term by
    // v²·shift·2/c², 0.05 mm over the 0.5 ms a receiver clock may stand off.
    psat.dt = s.pos.dt;
    const long double dt = shift_s - (tau - s.tau);
    const xyz vel(s.vel.x + acc.x * dt, s.vel.y + acc.y * dt, s.vel.z + acc.z * dt);
    if (carried != nullptr) *carried = {tau, psat, vel};
    Relativity = RelativityTerm(psat, vel);
    psat.dt -= Relativity;
    return dist;
}

long double GNSSpEph::CalcSatPosition(unsigned short sati, mjd& ephCalc, xyz& prec,
                                      xyzt& psat, xyzt& vsat, gnssobs& P)
{
    WarnIfOutside(ephCalc);
    const long double dt = P.obs / GNSSpEphns::C_mps;
    ephr = ephCalc;
    ephr += -dt;
    Interpolate(sati, ephr, psat, vsat);
    ps = prec;
    ps.RotateZ(OMEGAz * dt);
    const long double dx = ps.x - psat.x, dy = ps.y - psat.y, dz = ps.z - psat.z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}
