#include "delays/gTM_GPT2.h"

#include "delays/stdAtm.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// Node coordinates are printed to 0.1 degree or better; 0.001 degree
// separates "same" from "next" by two orders of magnitude on any grid of
// practical spacing.
constexpr long double NodeTol_deg = 0.001L;

const std::string kCorrupt = "GRID DATA FILE FOR GPT2 TROPOSHPERE MODEL CORRUPTED ";

// A line with nothing but white space carries no node (e.g. a final blank
// line) and is passed over.
bool IsBlank(const std::string& s)
{
    for (char ch : s)
        if (!std::isspace(static_cast<unsigned char>(ch))) return false;
    return true;
}

bool ReadNonBlank(std::ifstream& in, std::string& line)
{
    while (std::getline(in, line))
        if (!IsBlank(line)) return true;
    return false;
}

// As above, counting the file's lines in lineNo.
bool ReadNonBlank(std::ifstream& in, std::string& line, long& lineNo)
{
    while (std::getline(in, line)) {
        ++lineNo;
        if (!IsBlank(line)) return true;
    }
    return false;
}

bool TwoNumbers(const std::string& line, long double& F, long double& L)
{
    return std::sscanf(line.c_str(), "%Lf %Lf", &F, &L) == 2;
}

// Grid index of coordinate x on the lattice min + k*step, or -1 when x lies
// off the lattice or outside 0..count-1.
long LatticeIndex(long double x, long double min, long double step, long count)
{
    const long k = std::lround((x - min) / step);
    if (k < 0 || k >= count || std::fabs(min + k * step - x) > NodeTol_deg) return -1;
    return k;
}

}  // namespace

gTM_GPT2::gTM_GPT2() { file[0] = '\0'; }

void gTM_GPT2::SetFile(const char* name)
{
    std::strncpy(file, name ? name : "", sizeof(file) - 1);
    file[sizeof(file) - 1] = '\0';
}

void gTM_GPT2::ReadFile()
{
    CheckData();
    ReadData();
}

void gTM_GPT2::Fail(long lineNo, const std::string& what) const
{
    ProgramError("Orvo", kCorrupt + "(FILE " + std::string(file) + " LINE " + std::to_string(lineNo) + ": " + what
                             + ")!");
}

void gTM_GPT2::CheckNode(long double F, long double L, long lineNo) const
{
    // Beyond these no node of a global grid can lie; they also keep the
    // counts below (span / step) far inside a long.
    if (!std::isfinite(F) || !std::isfinite(L) || std::fabs(F) > 90.0L || std::fabs(L) > 360.0L)
        Fail(lineNo, "NODE COORDINATES NOT FINITE OR OFF THE GLOBE");
}

void gTM_GPT2::CheckStep(long double step, long lineNo) const
{
    if (!(step >= gTM_GPT2ns::MinStep_deg)) Fail(lineNo, "GRID STEP BELOW 0.01 DEGREES");
}

void gTM_GPT2::CheckData()
{
    const std::string name(file);
    if (name.empty())
        ProgramError("Orvo", "NO GPT2 TROPOSPHERE MODEL FILE GIVEN!");
    std::ifstream in(name);
    if (!in)
        ProgramError("Orvo", name + ": GPT2 TROPOSPHERE MODEL FILE CAN NOT BE OPENED!");
    std::string line;
    if (!std::getline(in, line))
        ProgramError("Orvo", kCorrupt + "(READING HEADER)!");
    long lineNo = 1;
    long double Fa, La, Fb, Lb;
    if (!ReadNonBlank(in, line, lineNo) || !TwoNumbers(line, Fa, La))
        ProgramError("Orvo", kCorrupt + "(READING 1. DATA LINE)!");
    CheckNode(Fa, La, lineNo);
    if (!ReadNonBlank(in, line, lineNo) || !TwoNumbers(line, Fb, Lb))
        ProgramError("Orvo", kCorrupt + "(READING 2. DATA LINE)!");
    CheckNode(Fb, Lb, lineNo);
    if (std::fabs(Fa - Fb) > 0.01L)
        ProgramError("Orvo", kCorrupt + "(LATITUDE 1 - 2)!");
    if (!(Lb > La))
        ProgramError("Orvo", kCorrupt + "(LONGITUDE 1 <= LONGITUDE 2)!");
    CheckStep(Lb - La, lineNo);

    minF = maxF = Fa;
    dF = 0.0L;
    minL = La;
    maxL = Lb;
    dL = Lb - La;
    nLine = 2;
    long double prevF = Fb, prevL = Lb;
    while (ReadNonBlank(in, line, lineNo)) {
        long double F, L;
        if (!TwoNumbers(line, F, L))
            ProgramError("Orvo", kCorrupt + "(READING " + std::to_string(nLine + 1)
                                     + ". DATA LINE)!");
        CheckNode(F, L, lineNo);
        if (std::fabs(F - prevF) < NodeTol_deg) {
            if (L > prevL && std::fabs(L - (prevL + dL)) > NodeTol_deg) {
                dL = L - prevL;
                CheckStep(dL, lineNo);
            }
            if (L < minL) minL = L;
            if (L > maxL) maxL = L;
        } else {
            // The step is kept positive whichever way the file runs, so that
            // row 0 is the smallest latitude.
            if (dF <= 0.0L || std::fabs(std::fabs(prevF - F) - dF) > NodeTol_deg) {
                dF = std::fabs(prevF - F);
                CheckStep(dF, lineNo);
            }
            if (F < minF) minF = F;
            if (F > maxF) maxF = F;
        }
        prevF = F;
        prevL = L;
        ++nLine;
    }

    // Coordinates on the globe and steps of MinStep_deg at least bound
    // both counts by 72001, so neither they nor their product can overflow.
    nL = std::lround((maxL - minL) / dL) + 1;
    nF = dF > 0.0L ? std::lround((maxF - minF) / dF) + 1 : 1;
    // Bilinear interpolation needs two rows at least, and the seam cell of
    // SetAtmParams is only right when the columns go round the Earth.
    if (nL * nF != nLine || nF < 2)
        ProgramError("Orvo", kCorrupt + "(#LONGITUDE, #LATITUDE)!");
    if (std::fabs(nL * dL - 360.0L) > NodeTol_deg)
        ProgramError("Orvo", kCorrupt + "(LONGITUDES DO NOT COVER 360 DEGREES)!");
}

void gTM_GPT2::ReadData()
{
    const std::string name(file);
    std::ifstream in(name);
    std::string line;
    if (!in || !std::getline(in, line))
        ProgramError("Orvo", kCorrupt + "(READING HEADER)!");
    pG.Resize(nF, nL);
    tG.Resize(nF, nL);
    qG.Resize(nF, nL);
    dtG.Resize(nF, nL);
    aWG.Resize(nF, nL);
    aHG.Resize(nF, nL);
    hN.Resize(nF, nL, 0.0L);
    hH.Resize(nF, nL, 0.0L);
    matrix<bool> seen(nF, nL, false);

    const long total = nF * nL;
    for (long k = 0; k < total; ++k) {
        const std::string where = "(READING " + std::to_string(k + 1) + ". DATA LINE)!";
        if (!ReadNonBlank(in, line)) ProgramError("Orvo", kCorrupt + where);
        std::istringstream ss(line);
        long double F = 0.0L, L = 0.0L, undul = 0.0L, height = 0.0L;
        gpt2_grd p, t, q, dt, ah, aw;
        ss >> F >> L;
        gpt2_grdns::scale = 1.0L;
        ss >> p >> t;
        gpt2_grdns::scale = 0.001L;
        ss >> q >> dt;
        ss >> undul >> height;
        ss >> ah >> aw;
        gpt2_grdns::scale = 1.0L;
        if (!ss) ProgramError("Orvo", kCorrupt + where);

        const long r = LatticeIndex(F, minF, dF, nF);
        const long c = LatticeIndex(L, minL, dL, nL);
        // A node off the lattice or given twice would leave another node
        // unread, and its cell would hold no data.
        if (r < 0 || c < 0 || seen(r, c))
            ProgramError("Orvo", kCorrupt + "(#LONGITUDE, #LATITUDE)!");
        seen(r, c) = true;
        pG(r, c) = p;
        tG(r, c) = t;
        qG(r, c) = q;
        dtG(r, c) = dt;
        hN(r, c) = undul;
        hH(r, c) = height;
        aHG(r, c) = ah;
        aWG(r, c) = aw;
    }
}

void gTM_GPT2::SetAtmParams(const flh& pos)
{
    if (nF < 2 || nL < 2)
        ProgramError("Orvo", "GPT2 TROPOSPHERE MODEL: NO GRID DATA READ!");
    ptF = pos.f * 180.0L / Pi;
    ptL = pos.l * 180.0L / Pi;
    pth = pos.h;
    gPt = stdAtm::GravityFactor(pos.f, pos.h);

    // The program's longitudes run from -180 to 180 degrees, the grid's from
    // minL over 360 degrees: bring the site into [minL, minL + 360).
    while (ptL < minL) ptL += 360.0L;
    while (ptL >= minL + 360.0L) ptL -= 360.0L;

    long r1, r2;
    if (ptF < minF) {
        r1 = r2 = 0;
    } else if (ptF > maxF) {
        r1 = r2 = nF - 1;
    } else {
        r1 = static_cast<long>((ptF - minF) / dF);
        // On the outermost row itself there is no row above it to take.
        if (r1 >= nF - 1) r1 = nF - 1;
        r2 = (r1 == nF - 1) ? r1 : r1 + 1;
    }
    F1 = minF + dF * r1;
    F2 = minF + dF * r2;

    long c1 = static_cast<long>((ptL - minL) / dL);
    long c2;
    if (ptL <= maxL && c1 < nL - 1) {
        c2 = c1 + 1;
    } else {
        // Between the last and the first column, across the seam.
        c1 = nL - 1;
        c2 = 0;
    }
    L1 = minL + dL * c1;
    L2 = minL + dL * c2;
    if (c1 > c2) L2 = L1 + dL;

    IX[0][0] = r1;  IX[0][1] = c1;
    IX[1][0] = r1;  IX[1][1] = c2;
    IX[2][0] = r2;  IX[2][1] = c2;
    IX[3][0] = r2;  IX[3][1] = c1;
}

long double gTM_GPT2::GPT2Interpolate(const long double v[4]) const
{
    const long double p = (L2 - ptL) / (L2 - L1);
    const long double lower = p * v[0] + (1.0L - p) * v[1];
    if (IX[0][0] == IX[2][0]) return lower;
    const long double upper = p * v[3] + (1.0L - p) * v[2];
    const long double q = (F2 - ptF) / (F2 - F1);
    return q * lower + (1.0L - q) * upper;
}

void gTM_GPT2::GetZenithDelay(gTropDelay& td, const mjd& eph)
{
    // Days from J2000.0 (MJD 51544.5), the phase origin of the harmonics.
    const long double d = static_cast<long double>(eph.GetMJDay()) - 51544.5L;
    const long double cosfy = trig::Cos(2.0L * Pi * d / 365.25L);
    const long double sinfy = trig::Sin(2.0L * Pi * d / 365.25L);
    const long double coshy = trig::Cos(4.0L * Pi * d / 365.25L);
    const long double sinhy = trig::Sin(4.0L * Pi * d / 365.25L);

    long double pc[4], tc[4], qc[4], dtc[4], ahc[4], awc[4], nc[4];
    for (int k = 0; k < 4; ++k) {
        const long r = IX[k][0], c = IX[k][1];
        const long double hgt = pth - hN(r, c) - hH(r, c);
        const long double T0 = tG(r, c).Value(cosfy, sinfy, coshy, sinhy);
        const long double p0 = pG(r, c).Value(cosfy, sinfy, coshy, sinhy);
        const long double Q = qG(r, c).Value(cosfy, sinfy, coshy, sinhy);
        const long double dTc = dtG(r, c).Value(cosfy, sinfy, coshy, sinhy);
        tc[k] = T0 + dTc * hgt - 273.15L;
        // Virtual temperature accounts for the lighter moist air in the
        // barometric exponent.
        const long double vt = T0 * (1.0L + 0.6077L * Q);
        const long double cexp = gMean * dMtr / (Rg * vt);
        pc[k] = p0 * std::exp(-cexp * hgt) / 100.0L;
        qc[k] = Q;
        dtc[k] = dTc;
        ahc[k] = aHG(r, c).Value(cosfy, sinfy, coshy, sinhy);
        awc[k] = aWG(r, c).Value(cosfy, sinfy, coshy, sinhy);
        nc[k] = hN(r, c);
    }
    pres = GPT2Interpolate(pc);
    temp = GPT2Interpolate(tc);
    const long double Q = GPT2Interpolate(qc);
    dT = GPT2Interpolate(dtc);
    aH = GPT2Interpolate(ahc);
    aW = GPT2Interpolate(awc);
    undu = GPT2Interpolate(nc);
    e = Q * pres / (0.622L + 0.378L * Q);
    td.tdry = stdAtm::SaastamoinenDry(pres, gPt);
    td.twet = stdAtm::SaastamoinenWet(temp + 273.15L, e, gPt);
}
