#include "preprocessing/SetAmbiguities.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "driver/Console.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "observations/AmbRecord.h"
#include "preprocessing/AmbiguityTable.h"
#include "observations/SatelliteSystem.h"

namespace {

// Random names drawn before an existing arc file is simply overwritten.
constexpr int AmbFileAttempts = 100;

// Label of a report line: indent, text padded so that all values line up.
std::string Label(const std::string& indent, const std::string& text)
{
    std::string s = indent + text;
    if (s.size() < 38) s.append(38 - s.size(), ' ');
    return s + ": ";
}

bool InUse(const gCPosC& gc, short sat)
{
    switch (SystemOf(sat)) {
    case SysGPS: return gc.isGPS;
    case SysGLN: return gc.isGLN;
    case SysGAL: return gc.isGAL;
    default: return false;
    }
}

// The stage order is the only guard on the per-record arrays; say plainly
// when it was broken instead of stopping on an index deep in a loop.
void CheckArrays(const gCPosC& gc)
{
    const RINEXData& d = gc.rnxd;
    const long n = d.GetNObs();
    if (gc.OKSAT.NRow() < n || gc.ELV.NRow() < n)
        ProgramError("Orvo", "AMBIGUITIES: OBSERVATION CORRECTIONS NOT SET FOR ALL OBSERVATIONS!");
    long total = 0;
    for (long i = 0; i < d.GetNEpoch(); ++i) total += d.nsat(i);
    if (total != n || d.sat.NRow() < n)
        ProgramError("Orvo", "AMBIGUITIES: EPOCH SATELLITE COUNTS DISAGREE WITH THE NUMBER OF "
                             "OBSERVATIONS!");
}

// A marker name is free text; a path separator in it would send the
// temporary file into a folder that need not exist.
std::string AmbFileName(const std::string& marker)
{
    std::string safe = marker;
    for (char& c : safe)
        if (c == '/' || c == '\\') c = '_';
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    std::vector<char> buf(safe.size() + 32);
    // A file of that name may be left by a run that ended early; drawing
    // again keeps this run from taking over its content.
    for (int attempt = 0; attempt < AmbFileAttempts; ++attempt) {
        std::snprintf(buf.data(), buf.size(), "Ambiq_%s_%d.b", safe.c_str(), std::rand());
        if (!std::ifstream(buf.data()).good()) break;
    }
    return std::string(buf.data());
}

std::vector<AmbRecord> ReadArcs(const std::string& name, long nAmb)
{
    std::ifstream in(name, std::ios::binary | std::ios::ate);
    if (!in) ProgramError("Orvo", "AMBIGUITY FILE " + name + " CAN NOT BE OPENED FOR READING!");
    const std::streamoff bytes = in.tellg();
    // Count checked against the file before allocating for it.
    if (nAmb < 0 || bytes < static_cast<std::streamoff>(nAmb) * AmbRecordns::Size)
        ProgramError("Orvo", "AMBIGUITY FILE " + name + " HOLDS FEWER THAN "
                                 + std::to_string(nAmb) + " ARCS!");
    in.seekg(0);
    std::vector<AmbRecord> arcs(static_cast<std::size_t>(nAmb));
    for (AmbRecord& a : arcs)
        if (!ReadAmbRecord(in, a))
            ProgramError("Orvo", "AMBIGUITY FILE " + name + " CAN NOT BE READ!");
    return arcs;
}

void Clear(matrix<gnssobs>& m, bool listed, long k)
{
    if (listed && k < m.NRow()) m(k) = gnssobs();
}

}  // namespace

void ArcParameters(long double T_s, long double& MaxAmbTimeGap, long& MinObsAmb)
{
    namespace ns = SetAmbiguitiesns;
    MaxAmbTimeGap = ns::GapIntervals * T_s + ns::IntervalSlack_s;
    const long double t = T_s + ns::IntervalSlack_s;
    if (t < 2.0L)
        MinObsAmb = 120;
    else if (t < 3.0L)
        MinObsAmb = 60;
    else if (t < 4.0L)
        MinObsAmb = 40;
    else if (t < 10.0L)
        MinObsAmb = 30;
    else if (t < 20.0L)
        MinObsAmb = 25;
    else
        MinObsAmb = 15;
}

AmbiguityLookup::AmbiguityLookup(const matrix<long>& AI, const matrix<short>& AP, long namb) : AI_(AI)
{
    const long n = AI.NCol() < 3 ? 0 : std::min({namb, AI.NRow(), AP.NRow()});
    if (n <= 0) return;
    short high = AP(0);
    low_ = AP(0);
    for (long k = 1; k < n; ++k) {
        low_ = std::min(low_, AP(k));
        high = std::max(high, AP(k));
    }
    arcsOf_.resize(static_cast<std::size_t>(high - low_ + 1));
    for (long k = 0; k < n; ++k) arcsOf_[static_cast<std::size_t>(AP(k) - low_)].push_back(k);
}

long AmbiguityLookup::Find(short prn, long ieph) const
{
    const long s = static_cast<long>(prn) - low_;
    if (s < 0 || s >= static_cast<long>(arcsOf_.size())) return -1;
    for (long k : arcsOf_[static_cast<std::size_t>(s)])
        if (AI_(k, 0) <= ieph && ieph <= AI_(k, 2)) return k;
    return -1;
}

void SetAmbiguities(gCPosC& gc)
{
    if (!gc.ifL3) return;
    RINEXHeader& h = gc.rnxh;
    RINEXData& d = gc.rnxd;
    CheckArrays(gc);

    // Every arc parameter follows from the sampling interval; without one,
    // the gap limit would be negative and every arc would vanish unseen.
    const long double T = h.GetInterval();
    if (!(T > 0.0L))
        ProgramError("Orvo", "AMBIGUITIES: SAMPLING INTERVAL OF THE RINEX FILE NOT DETERMINED!");

    ProgramSubSubTitle("DETERMINING PHASE AMBIGUITIES:", 0);
    const long double minElevation =
        Pi * static_cast<long double>(gc.MinElevation) / 180.0L;
    const std::ios::fmtflags flags = std::cout.flags();
    const std::streamsize prec = std::cout.precision();
    std::cout << std::fixed;
    std::cout << Label("  ", "Minimum elevation angle") << std::setprecision(2)
              << gc.MinElevation << " deg\n";

    ArcParameters(T, gc.MaxAmbTimeGap, gc.MinObsAmb);
    d.SetAmbFile(AmbFileName(h.mname));

    long nAmb = 0;
    if (gc.isL4ScreenConst)
        d.ScreenL4(gc.ELV, minElevation, gc.MinObsAmb, gc.ThresL40, gc.dThresL4,
                   gc.MaxAmbTimeGap, nAmb);
    else
        d.ScreenL4Linear(gc.ELV, minElevation, gc.MinObsAmb, gc.ThresL40, gc.dThresL4,
                         gc.MaxAmbTimeGap, nAmb);
    std::cout << "  Geometry free [L4] ambiguity search :\n"
              << Label("   ", "Minimum number of observations") << gc.MinObsAmb << "\n"
              << Label("   ", "Maximum time gap") << std::setprecision(1) << gc.MaxAmbTimeGap
              << " s\n"
              << Label("   ", "Threshold for L4 linear combination") << std::setprecision(1)
              << gc.ThresL40 * 1000.0L << " + "
              << gc.dThresL4 * std::sqrt(T + SetAmbiguitiesns::IntervalSlack_s) * 1000.0L
              << " mm\n"
              << Label("   ", "Number of ambiguities") << nAmb << "\n";

    d.ScreenMW(gc.MWRMSThres, gc.MinObsAmb, gc.ELV, nAmb, &gc.SINELV);
    std::cout << "  Melbourne-Wuebbena [MW] amb. search :\n"
              << Label("   ", "Threshold for MW RMS") << std::setprecision(2) << gc.MWRMSThres
              << " m\n"
              << Label("   ", "Number of ambiguities") << nAmb << "\n";

    const std::vector<AmbRecord> arcs = ReadArcs(d.AmbFile, nAmb);

    // A-priori ambiguity: L3 - code averages the code noise over the arc and
    // leaves the ambiguity plus the code biases of the solution.
    const long n = d.GetNObs();
    std::vector<long double> mean(arcs.size(), 0.0L);
    std::vector<long> count(arcs.size(), 0);
    long nOK = 0;
    for (std::size_t a = 0; a < arcs.size(); ++a) {
        const AmbRecord& arc = arcs[a];
        // An arc off the store would make the walk read foreign records.
        if (arc.iStart < 0 || arc.iEnd >= d.GetNEpoch() || arc.iStart > arc.iEnd
            || arc.ioStart < 0 || arc.ioStart > n)
            ProgramError("Orvo", "AMBIGUITY FILE " + d.AmbFile + " HOLDS AN ARC OUTSIDE THE DATA!");
        ArcL3MinusCode(gc, arc.sat, arc.iStart, arc.ioStart, arc.iEnd, count[a], mean[a]);
        if (count[a] > 0) ++nOK;
    }
    std::cout << Label("  ", "Testing all ambiguities - # of OK") << nOK << "\n\n";

    gc.nAmb = nOK;
    gc.xAmb.Resize(nOK, 1, 0.0L);
    gc.AmbIndex.Resize(nOK, 4, 0L);
    gc.AmbSat.Resize(nOK, 1, static_cast<short>(0));
    for (std::size_t a = 0, i = 0; a < arcs.size(); ++a) {
        if (count[a] == 0) continue;
        gc.xAmb(i) = mean[a];
        gc.AmbIndex(i, 0) = arcs[a].iStart;
        gc.AmbIndex(i, 1) = arcs[a].ioStart;
        gc.AmbIndex(i, 2) = arcs[a].iEnd;
        gc.AmbIndex(i, 3) = count[a];
        gc.AmbSat(i) = arcs[a].sat;
        ++i;
    }

    ProgramSubSubSubTitle("A-PRIORI VALUES OF AMBIGUITIES:", 2);
    PrintAmbiguityTable(gc);

    // The file only carried the arcs between the screening steps; a copy
    // left behind harms nothing but the user's folder, so it is a warning.
    if (std::remove(d.AmbFile.c_str()) != 0)
        ProgramWarning("Orvo", "AMBIGUITY FILE " + d.AmbFile + " CAN NOT BE REMOVED!");

    // Phase outside every arc has no ambiguity to go with it and must not
    // reach the adjustment. The span decides, not the elevation.
    long nRemoved = 0;
    const AmbiguityLookup lookup(gc.AmbIndex, gc.AmbSat, gc.nAmb);
    long k = 0;
    for (long i = 0; i < d.GetNEpoch(); ++i)
        for (long j = 0; j < d.nsat(i); ++j, ++k) {
            const short sat = d.sat(k);
            if (!InUse(gc, sat)) continue;
            if (lookup.Find(sat, i) >= 0) continue;
            if (h.iL1 && k < d.L1.NRow() && !d.L1(k).IsNull()) ++nRemoved;
            Clear(d.L1, h.iL1, k);
            if (sat >= 201)
                Clear(d.L7, h.iL7, k);
            else
                Clear(d.L2, h.iL2, k);
            Clear(d.L3, h.iL3, k);
            Clear(d.L4, h.iL4, k);
            Clear(d.MW, h.iMW, k);
        }
    std::cout << Label("  ", "Removing unusable phase observations") << nRemoved << "\n\n";
    std::cout.flags(flags);
    std::cout.precision(prec);
}
