// Arc screening of RINEXData: the phase of each satellite is cut where a
// cycle slip or a gap breaks it, first on the geometry-free L4, then on the
// Melbourne-Wuebbena combination. The arcs travel to the ambiguity stage
// through the temporary file AmbFile.
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "numerics/Trigonometry.h"
#include "observations/AmbRecord.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "observations/RINEXData.h"
#include "observations/SatEpochIndex.h"

namespace RINEXScreenns {
/// Elevation (rad) below which an MW value weighs 2·sin|E| instead of 1:
/// 30 degrees, where multipath starts to dominate the code.
inline constexpr long double MWLowElev = 0.52359877559829887307710723054658381L;
/// Starting sigma of an MW part (m): half the GPS wide-lane wavelength, the
/// noise a clean MW stays well inside.
inline constexpr long double MWSigma0 = 0.430959200161002818673L;
/// Largest disagreement (m) of two neighbouring MW values still taken as
/// one jump: one GPS wide-lane wavelength.
inline constexpr long double MWJumpAgree = 0.861918400322005637346L;
/// Points farther than this many sigmas from the running MW mean are off.
inline constexpr long double MWOffSigmas = 6.0L;
/// An L1 wavelength (m) below this means no usable carrier for CL1.
inline constexpr long double MinWavelength = 0.01L;
}  // namespace RINEXScreenns

namespace {

// The record of sat in epoch iEpoch whose value of obs is
// present and whose elevation is above minElev; -1 when there is none. A
// combination that was never formed has no rows and so no series.
long SeriesRecord(const SatEpochIndex& idx, const matrix<gnssobs>& obs, short sat, long iEpoch,
                  const matrix<long double>& elev, long double minElev)
{
    const long r = idx.Of(sat, iEpoch);
    if (r < 0 || r >= obs.NRow() || obs(r).IsNull()) return -1;
    return elev(r) > minElev ? r : -1;
}

// A satellite's records are looked up by walking epoch blocks, so counts
// that do not add up to the store would read another satellite's record or
// run off the end; elevations must cover every record read.
void CheckScreenInput(const RINEXData& d, const matrix<long double>& elev)
{
    long total = 0;
    for (long i = 0; i < d.nepochall; ++i) total += d.nsat(i);
    if (total != d.nsatall || d.sat.NRow() < d.nsatall)
        RINEXData::RINEXDataError(
            "ARC SCREENING: EPOCH SATELLITE COUNTS DISAGREE WITH THE NUMBER OF OBSERVATIONS!");
    if (elev.NRow() < d.nsatall)
        RINEXData::RINEXDataError("ARC SCREENING: ELEVATIONS NOT SET FOR ALL OBSERVATIONS!");
}

// The arc file is the only channel to the ambiguity stage: a run that cannot
// write it would silently lose all phase, so it stops instead.
std::ofstream OpenForWriting(const std::string& name)
{
    if (name.empty()) RINEXData::RINEXDataError("ARC SCREENING: AMBIGUITY FILE NAME NOT SET!");
    std::ofstream out(name, std::ios::binary | std::ios::trunc);
    if (!out)
        RINEXData::RINEXDataError("AMBIGUITY FILE " + name + " CAN NOT BE OPENED FOR WRITING!");
    return out;
}

void Write(std::ofstream& out, const std::string& name, short sat, long iStart, long ioStart,
           long iEnd, long nobs)
{
    AmbRecord a;
    a.sat = sat;
    a.iStart = static_cast<std::int32_t>(iStart);
    a.ioStart = static_cast<std::int32_t>(ioStart);
    a.iEnd = static_cast<std::int32_t>(iEnd);
    a.nobs = static_cast<std::int32_t>(nobs);
    if (!WriteAmbRecord(out, a))
        RINEXData::RINEXDataError("AMBIGUITY FILE " + name + " CAN NOT BE WRITTEN!");
}

void Close(std::ofstream& out, const std::string& name)
{
    out.close();
    if (!out) RINEXData::RINEXDataError("AMBIGUITY FILE " + name + " CAN NOT BE WRITTEN!");
}

// The L1 wavelength (m) of a satellite for the CL1 limit; 0 where the
// carrier is not known, which passes the satellite over.
long double L1Wavelength(short sat)
{
    if (sat >= 0 && sat <= 99) return GPSc::lamb1;
    if (sat >= 101 && sat <= 100 + GLONASSc::NSlots && GLONASSc::lamb.NRow() > sat - 101)
        return GLONASSc::lamb(sat - 101, 0);
    return 0.0L;
}

// The walk shared by ScreenL4 and ScreenCL1: consecutive accepted records of
// a series are compared, and an arc ends where cut() says so.
template <class Cut>
void ScreenSequential(const RINEXData& d, const SatEpochIndex& idx, const matrix<gnssobs>& obs,
                      short sat,
                      const matrix<long double>& elev, long double minElev, long minObsAmb,
                      Cut cut, std::ofstream& out, const std::string& name, long& nAmbAll)
{
    bool running = false;
    long lastEpoch = 0, lastRec = 0, iStart = 0, count = 0;
    for (long i = 0; i < d.nepochall; ++i) {
        const long r = SeriesRecord(idx, obs, sat, i, elev, minElev);
        if (r < 0) continue;
        if (running) {
            const long double dt = d.epoch(i) - d.epoch(lastEpoch);
            const long double dObs = obs(r).obs - obs(lastRec).obs;
            if (cut(dt, dObs)) {
                if (count >= minObsAmb) {
                    Write(out, name, sat, iStart, idx.FirstOfEpoch(iStart), lastEpoch, count);
                    ++nAmbAll;
                }
                iStart = i;
                count = 1;
            } else {
                ++count;
            }
        } else {
            running = true;
            iStart = i;
            count = 1;
        }
        lastEpoch = i;
        lastRec = r;
    }
    if (running && count >= minObsAmb) {
        Write(out, name, sat, iStart, idx.FirstOfEpoch(iStart), lastEpoch, count);
        ++nAmbAll;
    }
}

// One value of the MW list of an arc, with where it stands.
struct MWValue {
    long double mw;
    long epoch;
};

}  // namespace

void RINEXData::ScreenL4(const matrix<long double>& Elev, long double MinElev, long MinObsAmb,
                         long double dL40, long double ddL4, long double MaxTimeGap,
                         long& NAmbAll) const
{
    CheckScreenInput(*this, Elev);
    const SatEpochIndex idx(*this);
    std::ofstream out = OpenForWriting(AmbFile);
    NAmbAll = 0;
    // The ionosphere drifts with time, so the allowed step grows with the
    // square root of the gap; at the nominal 1 s step it is dL40 alone.
    auto cut = [&](long double dt, long double dL4) {
        const long double dL4Max = std::sqrt(std::fabs(dt - 1.0L)) * ddL4 + dL40;
        return dt > MaxTimeGap || std::fabs(dL4) > dL4Max;
    };
    for (long s = 0; s < satList.NRow(); ++s)
        ScreenSequential(*this, idx, L4, satList(s), Elev, MinElev, MinObsAmb, cut, out, AmbFile,
                         NAmbAll);
    Close(out, AmbFile);
}

void RINEXData::ScreenCL1(const matrix<long double>& Elev, long double MinElev, long MinObsAmb,
                          long double lam1Mult, long& NAmbAll, long double MaxTimeGap) const
{
    CheckScreenInput(*this, Elev);
    const SatEpochIndex idx(*this);
    std::ofstream out = OpenForWriting(AmbFile);
    NAmbAll = 0;
    for (long s = 0; s < satList.NRow(); ++s) {
        const short sat = satList(s);
        const long double lambda = L1Wavelength(sat);
        if (std::fabs(lambda) < RINEXScreenns::MinWavelength) continue;
        // Code minus phase holds twice the ionosphere and the code noise; a
        // slip moves it by whole wavelengths, so the limit is counted in
        // them and does not grow with the gap.
        const long double limit = lam1Mult * lambda;
        auto cut = [&](long double dt, long double dCL1) {
            return dt > MaxTimeGap || std::fabs(dCL1) > limit;
        };
        ScreenSequential(*this, idx, CL1, sat, Elev, MinElev, MinObsAmb, cut, out, AmbFile, NAmbAll);
    }
    Close(out, AmbFile);
}

bool RINEXData::FirstSatObsL4(const SatEpochIndex& idx, short sat, long& iEpoch,
                              const matrix<long double>& Elev, long double MinElev) const
{
    for (; iEpoch < nepochall; ++iEpoch)
        if (SeriesRecord(idx, L4, sat, iEpoch, Elev, MinElev) >= 0) return true;
    return false;
}

long RINEXData::LastSatObsL4(const SatEpochIndex& idx, short sat, long iStart, long double MaxTimeGap,
                             const matrix<long double>& Elev, long double MinElev) const
{
    for (long i = iStart + 1; i < nepochall; ++i) {
        // The gap is one of the file, not of the satellite: a stretch
        // already ends at any epoch the satellite misses.
        if (epoch(i) - epoch(i - 1) > MaxTimeGap) return i - 1;
        if (SeriesRecord(idx, L4, sat, i, Elev, MinElev) < 0) return i - 1;
    }
    return nepochall - 1;
}

bool RINEXData::FindContStart(const SatEpochIndex& idx, short sat, long& arcStart, long iEnd,
                              long double dVL4Max, long double dL4Max, const matrix<long double>& Elev,
                              long double MinElev) const
{
    for (long i = arcStart; i + 2 <= iEnd; ++i) {
        const long k1 = SeriesRecord(idx, L4, sat, i, Elev, MinElev);
        const long k2 = SeriesRecord(idx, L4, sat, i + 1, Elev, MinElev);
        const long k3 = SeriesRecord(idx, L4, sat, i + 2, Elev, MinElev);
        if (k1 < 0 || k2 < 0 || k3 < 0) continue;
        // Residuals of the straight line through three equally weighted
        // points, referred to the middle one to keep the numbers small.
        const long double o1 = L4(k1).obs - L4(k2).obs;
        const long double o3 = L4(k3).obs - L4(k2).obs;
        const long double a = (o3 - o1) / 2.0L;
        const long double b = (o1 + o3) / 3.0L;
        const long double v1 = -a - b - o1;
        const long double v2 = -b;
        const long double v3 = a - b - o3;
        if (std::fabs(v1) <= dVL4Max && std::fabs(v2) <= dVL4Max && std::fabs(v3) <= dVL4Max
            && std::fabs(o1) <= dL4Max && std::fabs(o3) <= dL4Max) {
            arcStart = i;
            return true;
        }
    }
    return false;
}

bool RINEXData::FindCSlipL4(const SatEpochIndex& idx, short sat, long arcStart, long iEnd, long& arcEnd,
                            long double dAL4Max, const matrix<long double>& Elev, long double MinElev) const
{
    for (long i = arcStart; i + 2 <= iEnd; ++i) {
        const long k1 = SeriesRecord(idx, L4, sat, i, Elev, MinElev);
        const long k2 = SeriesRecord(idx, L4, sat, i + 1, Elev, MinElev);
        const long k3 = SeriesRecord(idx, L4, sat, i + 2, Elev, MinElev);
        if (k1 < 0 || k2 < 0 || k3 < 0) continue;
        const long double o2 = L4(k2).obs - L4(k1).obs;
        const long double o3 = L4(k3).obs - L4(k1).obs;
        // A trend of any slope has no second difference; a slip has one.
        if (std::fabs(o3 - 2.0L * o2) > dAL4Max) {
            arcEnd = i + 1;
            return true;
        }
    }
    arcEnd = iEnd;
    return false;
}

void RINEXData::ScreenL4Linear(const matrix<long double>& Elev, long double MinElev,
                               long MinObsAmb, long double dL40, long double ddL4,
                               long double MaxTimeGap, long& NAmbAll) const
{
    CheckScreenInput(*this, Elev);
    const SatEpochIndex idx(*this);
    std::ofstream out = OpenForWriting(AmbFile);
    NAmbAll = 0;
    // One set of limits for the longest gap an arc may hold, for all
    // systems alike: s·ddL4 is the ionospheric change over such a gap.
    const long double s = std::sqrt(MaxTimeGap > 0.0L ? MaxTimeGap : 0.0L);
    const long double dL4Max = s * ddL4 + dL40;
    const long double dVL4Max = s * ddL4 / 2.0L + dL40 / 6.0L;
    const long double dAL4Max = s * ddL4 + dL40 / 3.0L;

    for (long isat = 0; isat < satList.NRow(); ++isat) {
        const short sat = satList(isat);
        long iStart = 0;
        while (FirstSatObsL4(idx, sat, iStart, Elev, MinElev)) {
            if (iStart > nepochall - MinObsAmb) break;
            const long iEnd = LastSatObsL4(idx, sat, iStart, MaxTimeGap, Elev, MinElev);
            const long nobs = iEnd - iStart + 1;
            if (nobs >= MinObsAmb) {
                long arcStart = iStart;
                while (FindContStart(idx, sat, arcStart, iEnd, dVL4Max, dL4Max, Elev, MinElev)) {
                    long arcEnd = 0;
                    const bool slip = FindCSlipL4(idx, sat, arcStart, iEnd, arcEnd, dAL4Max, Elev, MinElev);
                    const long nobsArc = arcEnd - arcStart + 1;
                    if (nobsArc >= MinObsAmb) {
                        ++NAmbAll;
                        Write(out, AmbFile, sat, arcStart, idx.FirstOfEpoch(arcStart), arcEnd, nobsArc);
                    }
                    if (!slip) break;
                    arcStart = arcEnd + 1;
                    if (arcEnd > iEnd - MinObsAmb) break;
                }
            }
            if (iEnd >= nepochall - 1) break;
            iStart = iEnd + 1;
        }
    }
    Close(out, AmbFile);
}

void RINEXData::ScreenMW(long double RMS, long MinObsAmb, const matrix<long double>& E,
                         long& NAmbAll, const matrix<long double>* sinE) const
{
    namespace ns = RINEXScreenns;
    CheckScreenInput(*this, E);
    if (AmbFile.empty()) RINEXDataError("ARC SCREENING: AMBIGUITY FILE NAME NOT SET!");
    // The sine is odd: that of |E| is the magnitude of that of E.
    const bool sines = sinE != nullptr && sinE->NRow() >= E.NRow();

    // Size the arc list by what the file really holds before allocating, so
    // that a wrong count cannot ask for memory the file does not back.
    std::vector<AmbRecord> arcs;
    {
        std::ifstream in(AmbFile, std::ios::binary | std::ios::ate);
        if (!in) RINEXDataError("AMBIGUITY FILE " + AmbFile + " CAN NOT BE OPENED FOR READING!");
        const std::streamoff bytes = in.tellg();
        if (NAmbAll < 0 || bytes < static_cast<std::streamoff>(NAmbAll) * AmbRecordns::Size)
            RINEXDataError("AMBIGUITY FILE " + AmbFile + " HOLDS FEWER THAN "
                           + std::to_string(NAmbAll) + " ARCS!");
        in.seekg(0);
        arcs.resize(static_cast<std::size_t>(NAmbAll));
        for (AmbRecord& a : arcs)
            if (!ReadAmbRecord(in, a))
                RINEXDataError("AMBIGUITY FILE " + AmbFile + " CAN NOT BE READ!");
    }
    // An arc must lie inside the store and start on its epoch's block, or
    // its walk would read records of other epochs or none at all.
    const std::vector<long> blockStart = EpochFirstRecords(*this);
    for (const AmbRecord& a : arcs)
        if (a.iStart < 0 || a.iEnd >= nepochall || a.iStart > a.iEnd
            || a.ioStart != blockStart[a.iStart])
            RINEXDataError("AMBIGUITY FILE " + AmbFile + " HOLDS AN ARC OUTSIDE THE DATA!");

    std::ofstream out = OpenForWriting(AmbFile);
    long written = 0;
    const bool haveMW = MW.NRow() >= nsatall;
    std::vector<MWValue> vals;

    for (const AmbRecord& a : arcs) {
        // Weighted scatter of MW about its first value, which keeps the sums
        // small: MW itself is many metres of ambiguity.
        long double N = 0.0L, t = 0.0L, f = 0.0L, m0 = 0.0L;
        long n = 0;
        vals.clear();
        for (long i = a.iStart; i <= a.iEnd; ++i) {
            for (long k = blockStart[i]; k < blockStart[i + 1]; ++k) {
                if (sat(k) != a.sat || !haveMW || MW(k).IsNull()) continue;
                const long double mw = MW(k).obs;
                if (n == 0) m0 = mw;
                const long double p =
                    std::fabs(E(k)) < ns::MWLowElev
                        ? 2.0L * (sines ? std::fabs((*sinE)(k)) : trig::Sin(std::fabs(E(k)))) : 1.0L;
                N += p;
                t += (mw - m0) * p;
                f += (mw - m0) * (mw - m0) * p;
                ++n;
                vals.push_back({mw, i});
            }
        }
        bool quiet = n < 2 || !(N > 0.0L);
        if (!quiet) {
            const long double mean = t / N;
            // Round-off can push the sum of squares a hair below zero.
            const long double var = (f - mean * t) / static_cast<long double>(n - 1);
            const long double rms = std::sqrt(var > 0.0L ? var : 0.0L);
            quiet = rms <= RMS;
        }
        if (quiet) {
            Write(out, AmbFile, a.sat, a.iStart, a.ioStart, a.iEnd, a.nobs);
            ++written;
            continue;
        }

        // Split: follow the running mean and sigma; a point far off that its
        // neighbour agrees with is a jump, one its neighbour does not follow
        // is an outlier and stays in the part.
        const long nv = static_cast<long>(vals.size());
        long count = 1, first = 0, last = 0;
        long double avg = vals[0].mw, sig2 = ns::MWSigma0 * ns::MWSigma0;
        auto closePart = [&]() {
            --count;
            if (count >= MinObsAmb) {
                Write(out, AmbFile, a.sat, vals[first].epoch, blockStart[vals[first].epoch],
                      vals[last].epoch, count);
                ++written;
            }
        };
        auto startPart = [&](long j) {
            count = 1;
            avg = vals[j].mw;
            sig2 = ns::MWSigma0 * ns::MWSigma0;
            first = last = j;
        };
        for (long j = 1; j <= nv - 2; ++j) {
            const long double lim = ns::MWOffSigmas * std::sqrt(sig2);
            const long double dif = vals[j].mw - avg;
            if (std::fabs(dif) <= lim) {
                ++count;
                avg += dif / count;
                sig2 += (dif * dif - sig2) / count;
                last = j;
            } else if (lim > std::fabs(vals[j + 1].mw - avg)) {
                last = j;
            } else if (std::fabs(vals[j].mw - vals[j + 1].mw) < ns::MWJumpAgree) {
                closePart();
                startPart(j);
            } else {
                ++j;
                closePart();
                startPart(j);
            }
        }
        closePart();
    }
    Close(out, AmbFile);
    NAmbAll = written;
}
