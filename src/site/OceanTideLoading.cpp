#include "site/OceanTideLoading.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <ostream>
#include <string>

#include "geodesy/LeapSecond.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"
#include "numerics/spline.h"

namespace {

using otlns::NArg;
using otlns::NCons;
using otlns::NHarm;

// Doodson numbers of the BLQ columns M2 S2 N2 K2 K1 O1 P1 Q1 Mf Mm Ssa, one
// column each: these pick the constituents' rows out of the harmonic table.
constexpr int IDT[NArg][NCons] = {{2, 2, 2, 2, 1, 1, 1, 1, 0, 0, 0},
                                  {0, 2, -1, 2, 1, -1, 1, -2, 2, 1, 0},
                                  {0, -2, 0, 0, 0, 0, -2, 0, 0, 0, 2},
                                  {0, 0, 1, 0, 0, 0, 0, 1, 0, -1, 0},
                                  {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                                  {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}};

const char* const NotRead = "OCEAN TIDE LOADING FILE CAN NOT BE READ!";
const char* const Corrupted = "OCEAN TIDE LOADING FILE CORRUPTED!";
constexpr int BlockLines = 9;   // lines of a block after its name
constexpr int CommentLines = 3;

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

bool Holds(const std::string& line, const char* text) { return line.find(text) != std::string::npos; }
bool IsComment(const std::string& line) { return line.compare(0, 2, "$$") == 0; }
bool IsBlank(const std::string& line) { return line.find_first_not_of(" \t") == std::string::npos; }

std::string Trimmed(const std::string& s)
{
    const std::size_t a = s.find_first_not_of(" \t");
    return a == std::string::npos ? "" : s.substr(a, s.find_last_not_of(" \t") - a + 1);
}

// Passes the header; a file that ends in it has no table to read.
void SkipHeader(std::istream& in)
{
    std::string line;
    while (NextLine(in, line))
        if (Holds(line, "$$ END HEADER")) return;
    ProgramError("Orvo", NotRead);
}

// The trimmed name of the next block, passing the "$$" and blank lines
// between blocks (the service writes a "$$" before each name, trimmed files
// often don't); false at the end of the table.
bool NextName(std::istream& in, std::string& name)
{
    std::string line;
    while (NextLine(in, line)) {
        if (Holds(line, "$$ END TABLE")) return false;
        if (IsComment(line) || IsBlank(line)) continue;
        name = Trimmed(line);
        return true;
    }
    return false;
}

// The number in columns [pos, pos + len) of line, blanks around it allowed;
// a line that ends before pos + len, an empty field or trailing text ends
// the run, since reading on would shift the constituents.
long double Number(const std::string& line, std::size_t pos, std::size_t len)
{
    if (line.size() < pos + len) ProgramError("Orvo", Corrupted);
    const std::string f = line.substr(pos, len);
    char* end = nullptr;
    const long double v = std::strtold(f.c_str(), &end);
    if (end == f.c_str() || !IsBlank(end) || !std::isfinite(v))
        ProgramError("Orvo", Corrupted);
    return v;
}

}  // namespace

otlData::otlData() : AMP(NCons, 1, neu()), PHS(NCons, 1, neu()) { pt[0] = '\0'; }

std::ostream& operator<<(std::ostream& os, const otlData& d)
{
    char buf[128];
    std::snprintf(buf, sizeof buf, "%-38s lon/lat:  %10.4Lf%10.4Lf%10.3Lf",
                  (std::string("$$ ") + d.pt + ",").c_str(), d.gpos.l / Deg2Rad,
                  d.gpos.f / Deg2Rad, d.gpos.h);
    os << "$$\n  " << d.pt << "\n$$\n$$\n" << buf << "\n";
    const matrix<neu>* rows[2] = {&d.AMP, &d.PHS};
    for (int r = 0; r < 6; ++r) {
        std::string line = " ";
        for (int i = 0; i < NCons; ++i) {
            const neu& v = (*rows[r / 3])(i);
            const long double x = r % 3 == 0 ? v.u : r % 3 == 1 ? v.e : v.n;
            if (r < 3) {
                std::snprintf(buf, sizeof buf, "%7.5Lf", x);
                buf[0] = ' ';  // the format's ".00352": amplitudes stay below 1 m
            } else {
                std::snprintf(buf, sizeof buf, "%7.1Lf", -x);  // back to lags
            }
            line += buf;
        }
        os << line << "\n";
    }
    return os;
}

OceanTideLoading::OceanTideLoading()
    : nstation(0), ixOTide(-1), AMP(NCons, 1, 0.0L), PHS(NCons, 1, 0.0L), AZ(NHarm, 1, 0.0L),
      AW(NHarm, 1, 0.0L), AS(NHarm, 1, 0.0L), PZ(NHarm, 1, 0.0L), PW(NHarm, 1, 0.0L),
      PS(NHarm, 1, 0.0L), D{}, DD{}
{
    file[0] = '\0';
}

void OceanTideLoading::SetFile(const char* fname)
{
    if (fname == nullptr || std::strlen(fname) >= sizeof(file)) ProgramError("Orvo", NotRead);
    std::strcpy(file, fname);
}

void OceanTideLoading::ReadFile()
{
    std::ifstream in(file);
    // A folder opens on POSIX systems but gives no line: caught as a file
    // without END HEADER.
    if (!in) ProgramError("Orvo", NotRead);
    CheckData(in);
    in.clear();
    in.seekg(0);
    OTL.Resize(nstation, 1, otlData());
    ReadData(in);
    ixOTide = -1;
}

void OceanTideLoading::CheckData(std::istream& in)
{
    SkipHeader(in);
    nstation = 0;
    std::string name, line;
    while (NextName(in, name)) {
        int n = 0;
        while (n < BlockLines && NextLine(in, line) && !Holds(line, "$$ END TABLE")) ++n;
        if (n < BlockLines) {
            // A cut last block: the complete ones before it stay usable.
            char number[24];
            std::snprintf(number, sizeof number, "%3ld", nstation + 1);
            ProgramWarning("Orvo", std::string("PROBLEM READING BLQ FILE: STATION NUMBER ") + number
                                       + " [" + name + "]!");
            return;
        }
        ++nstation;
    }
}

void OceanTideLoading::ReadData(std::istream& in)
{
    SkipHeader(in);
    std::string name, line;
    for (long s = 0; s < nstation; ++s) {
        otlData& d = OTL(s);
        if (!NextName(in, name)) ProgramError("Orvo", Corrupted);
        std::snprintf(d.pt, sizeof d.pt, "%s", name.c_str());
        for (int c = 0; c < CommentLines; ++c)
            if (!NextLine(in, line) || !IsComment(line)) ProgramError("Orvo", Corrupted);
        using otlns::CoordWidth;
        const long double lon = Number(line, otlns::LonPos, CoordWidth);
        const long double lat = Number(line, otlns::LatPos, CoordWidth);
        const long double hgt = Number(line, otlns::HgtPos, std::max(line.size(), otlns::HgtPos + 1) - otlns::HgtPos);
        // Beyond these the position cannot be one, and flh would stop the run
        // with its own message on the radian value.
        if (std::fabs(lat) > 90.0L || std::fabs(lon) > 360.0L) ProgramError("Orvo", Corrupted);
        d.gpos.Set(lat * Deg2Rad, lon * Deg2Rad, hgt);
        for (int r = 0; r < 6; ++r) {
            if (!NextLine(in, line) || IsComment(line)) ProgramError("Orvo", Corrupted);
            for (int i = 0; i < NCons; ++i) {
                const long double x = Number(line, otlns::FieldWidth * i + 1, otlns::FieldWidth);
                neu& v = r < 3 ? d.AMP(i) : d.PHS(i);
                const long double val = r < 3 ? x : -x;  // lags become phases
                if (r % 3 == 0) v.u = val;
                else if (r % 3 == 1) v.e = val;
                else v.n = val;
            }
        }
    }
}

void OceanTideLoading::SetStation(const char* name)
{
    const char* n = name ? name : "";
    for (long i = 0; i < nstation; ++i)
        if (std::strcmp(OTL(i).pt, n) == 0) {
            ixOTide = i;
            return;
        }
    ixOTide = -1;
    ProgramWarning("Orvo", std::string("STATION NAME -") + n
                               + "- NOT LISTED IN BLQ FILE > SETTING ALL DISPLACEMENTS TO ZERO!");
}

// Doodson phases (degrees) and rates (cycles per day) from the fundamental
// arguments of Simon et al. (1994) in TT, as hardisp takes them.
void OceanTideLoading::SetDoodsonPhasFreq(const mjd& eph)
{
    const long double DELTA = LeapSecond(eph) + 19.0L + 32.184L;  // TT - UTC (s)
    const long double T = (static_cast<long double>(eph.GetMJDay()) - 51544.5L
                           + (eph.GetSecond() + DELTA) / 86400.0L) / 36525.0L;
    const long double T2 = T * T, T3 = T2 * T, T4 = T3 * T;
    const long double F1 = 134.96340251L + 477198.8675605L * T + 0.0088553333L * T2
                           + 0.0000143431L * T3 - 0.000000068L * T4;
    const long double F2 = 357.5291091806L + 35999.0502911389L * T - 0.0001536667L * T2
                           + 0.0000000378L * T3 - 0.0000000032L * T4;
    const long double F3 = 93.27209062L + 483202.0174577222L * T - 0.003542L * T2
                           - 0.0000002881L * T3 + 0.0000000012L * T4;
    const long double F4 = 297.8501954694L + 445267.1114469445L * T - 0.0017696111L * T2
                           + 0.0000018314L * T3 - 0.0000000088L * T4;
    const long double F5 = 125.04455501L - 1934.1362619722L * T + 0.0020756111L * T2
                           + 0.0000021394L * T3 - 0.0000000165L * T4;
    const long double FD1 = 0.0362916471L + 0.0000000013L * T;
    const long double FD2 = 0.0027377786L;
    const long double FD3 = 0.0367481951L - 0.0000000005L * T;
    const long double FD4 = 0.033863192L - 0.0000000003L * T;
    const long double FD5 = -0.0001470938L + 0.0000000003L * T;
    D[0] = eph.GetSecond() * 360.0L / 86400.0L - F4;
    D[1] = F3 + F5;
    D[2] = D[1] - F4;
    D[3] = D[1] - F1;
    D[4] = -F5;
    D[5] = D[2] - F2;
    DD[0] = 1.0L - FD4;
    DD[1] = FD3 + FD5;
    DD[2] = DD[1] - FD4;
    DD[3] = DD[1] - FD1;
    DD[4] = -FD5;
    DD[5] = DD[2] - FD2;
}

// Frequency (cycles per day) and phase (degrees, 0 to 360) of harmonic KK.
void OceanTideLoading::TDFRPH(int KK, long double& FREQ, long double& PHASE) const
{
    FREQ = 0.0L;
    PHASE = 0.0L;
    for (int i = 0; i < NArg; ++i) {
        FREQ += otlns::Harmonics[KK].IDD[i] * DD[i];
        PHASE += otlns::Harmonics[KK].IDD[i] * D[i];
    }
    PHASE = std::fmod(PHASE, 360.0L);
    if (PHASE < 0.0L) PHASE += 360.0L;
}

namespace {

// Real and imaginary admittance of one tidal band splined over frequency.
struct Band {
    matrix<long double> X, RE, IM, SRE, SIM;
    void Build(const matrix<long double>& RF, const matrix<long double>& RL,
               const matrix<long double>& AIM, long first, long n)
    {
        X.Resize(n, 1, 0.0L);
        RE.Resize(n, 1, 0.0L);
        IM.Resize(n, 1, 0.0L);
        for (long i = 0; i < n; ++i) {
            X(i) = RF(first + i);
            RE(i) = RL(first + i);
            IM(i) = AIM(first + i);
        }
        spline(X, RE, SRE);
        spline(X, IM, SIM);
    }
};

}  // namespace

// Amplitudes (m) and phases (degrees) of the 342 harmonics of one component
// from the constituents' amplitudes AMPIN (m) and phases PHIN (degrees):
// the admittance (BLQ value over the equilibrium amplitude) at the 11
// frequencies, splined within each band, times each harmonic's amplitude.
void OceanTideLoading::ADMINT(const matrix<long double>& AMPIN, const matrix<long double>& PHIN,
                              matrix<long double>& AMPOUT, matrix<long double>& POUT)
{
    long K = 0;
    long double rl[NCons], aim[NCons], rf[NCons], fr = 0.0L, ph = 0.0L;
    for (int LL = 0; LL < NCons; ++LL)
        for (int KK = 0; KK < NHarm; ++KK) {
            bool same = true;
            for (int i = 0; i < NArg; ++i) same = same && otlns::Harmonics[KK].IDD[i] == IDT[i][LL];
            if (!same) continue;
            const long double t = std::fabs(otlns::Harmonics[KK].TAMP);
            rl[K] = AMPIN(LL) * trig::Cos(PHIN(LL) * Deg2Rad) / t;
            aim[K] = AMPIN(LL) * trig::Sin(PHIN(LL) * Deg2Rad) / t;
            TDFRPH(KK, rf[K], ph);
            ++K;
            break;  // each constituent is one row of the table
        }
    matrix<long double> found(K, 1, 0.0L);
    for (long i = 0; i < K; ++i) found(i) = rf[i];
    RF = sort(found, IXRF);
    RL.Resize(K, 1, 0.0L);
    AIM.Resize(K, 1, 0.0L);
    for (long i = 0; i < K; ++i) {
        RL(i) = rl[IXRF(i)];
        AIM(i) = aim[IXRF(i)];
    }
    long NLP = 0, NDI = 0, NSD = 0;
    for (long i = 0; i < K; ++i) {
        if (RF(i) < 0.5L) ++NLP;
        if (RF(i) < 1.5L && RF(i) > 0.5L) ++NDI;
        if (RF(i) < 2.5L && RF(i) > 1.5L) ++NSD;
    }
    Band band[3];  // long-period, diurnal, semidiurnal: the first Doodson number
    if (NLP > 0) band[0].Build(RF, RL, AIM, 0, NLP);
    band[1].Build(RF, RL, AIM, NLP, NDI);
    band[2].Build(RF, RL, AIM, NLP + NDI, NSD);
    for (int KK = 0; KK < NHarm; ++KK) {
        const int b = otlns::Harmonics[KK].IDD[0];
        AMPOUT(KK) = 0.0L;
        POUT(KK) = 0.0L;
        if (b == 0 && NLP == 0) continue;
        TDFRPH(KK, fr, ph);
        // Cartwright-Tayler phases: the diurnal harmonics are sines of the
        // argument (90 degrees) and the long-period ones negative cosines.
        if (b == 0) ph += 180.0L;
        if (b == 1) ph += 90.0L;
        const long double RE = Evaluate(band[b].X, band[b].RE, fr, band[b].SRE);
        const long double AM = Evaluate(band[b].X, band[b].IM, fr, band[b].SIM);
        AMPOUT(KK) = otlns::Harmonics[KK].TAMP * std::sqrt(RE * RE + AM * AM);
        POUT(KK) = ph + std::atan2(AM, RE) / Deg2Rad;
        if (POUT(KK) > 180.0L) POUT(KK) -= 360.0L;
    }
}

// One component at the epoch: the sum of the harmonics' cosines, the first
// sample of hardisp's recursion.
long double OceanTideLoading::RECURS(const matrix<long double>& A, const matrix<long double>& P) const
{
    long double x = 0.0L;
    for (int i = 0; i < NHarm; ++i) x += A(i) * trig::Cos(P(i) * Deg2Rad);
    return x;
}

void OceanTideLoading::GetDisplacement(const mjd& eph, neu& DXOTL)
{
    DXOTL.Set(0.0L, 0.0L, 0.0L);
    if (ixOTide < 0) return;
    SetDoodsonPhasFreq(eph);
    const otlData& s = OTL(ixOTide);
    matrix<long double>* out[3][2] = {{&AZ, &PZ}, {&AW, &PW}, {&AS, &PS}};
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < NCons; ++i) {
            AMP(i) = c == 0 ? s.AMP(i).u : c == 1 ? s.AMP(i).e : s.AMP(i).n;
            PHS(i) = c == 0 ? s.PHS(i).u : c == 1 ? s.PHS(i).e : s.PHS(i).n;
        }
        ADMINT(AMP, PHS, *out[c][0], *out[c][1]);
    }
    DXOTL.Set(-RECURS(AS, PS), -RECURS(AW, PW), RECURS(AZ, PZ));
}
