#include "orbits/GPSbEph.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "geodesy/CoordinateTransforms.h"
#include "geodesy/TimeConverse.h"
#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "numerics/InputFile.h"
#include "numerics/Trigonometry.h"
#include "numerics/cfilef.h"
#include "orbits/Rinex3Navigation.h"

using fieldtext::CopyTrimmedField;
using fieldtext::FortranNumber;
using fieldtext::HoldsLabel;
using fieldtext::MantissaExponent;

namespace {

// Next line that holds more than blanks, without its carriage return; a
// blank line carries no field of a record.
bool NextLine(std::istream& in, std::string& line)
{
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") != std::string::npos) return true;
    }
    return false;
}

// "G05" or "E11" as reports write a satellite of the shared numbering.
std::string SatName(int st)
{
    char s[16];
    std::snprintf(s, sizeof s, "%c%02d", st > 200 ? 'E' : 'G', st > 200 ? st - 200 : st);
    return s;
}

// Satellite number of a record's first field: a system letter (G, E) and
// the PRN, or a bare number already in the shared numbering; -1 for a
// field of no known system, 0 for one that is no number.
int SatelliteField(std::istream& is)
{
    is >> std::ws;
    int base = 0;
    const int c = is.peek();
    if (std::isalpha(c)) {
        is.get();
        if (c == 'G') base = 0;
        else if (c == 'E') base = 200;
        else return -1;
    }
    int prn = 0;
    if (!(is >> prn)) return 0;
    if (base > 0 || c == 'G') return (prn >= 1 && prn <= 99) ? base + prn : -1;
    return ((prn >= 1 && prn <= 99) || (prn >= 201 && prn <= 299)) ? prn : -1;
}

}  // namespace

void GPSbEphError(const std::string& text) { ProgramErrorCout("GPSbEph", text); }
void GPSbEphWarning(const std::string& text) { ProgramWarningCout("GPSbEph", text); }
void GPSbEphDataError(const std::string& text) { ProgramErrorCout("GPSbEphData", text); }
void GPSbEphDataWarning(const std::string& text) { ProgramWarningCout("GPSbEphData", text); }
void GPSbEphHeaderError(const std::string& text) { ProgramErrorCout("GPSbEphHeader", text); }
void GPSbEphHeaderWarning(const std::string& text) { ProgramWarningCout("GPSbEphHeader", text); }

GPSbEphHeader::GPSbEphHeader()
    : version(0.0f), a0(0.0L), a1(0.0L), T(0), W(0), leaps(0), alfa{}, beta{}
{
    type[0] = pgm[0] = runby[0] = date[0] = '\0';
}

std::istream& operator>>(std::istream& in, GPSbEphHeader& h)
{
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() > GPSbEphns::HeaderLineSize) line.resize(GPSbEphns::HeaderLineSize);
        if (HoldsLabel(line, "END OF HEADER")) return in;
        if (HoldsLabel(line, "RINEX VERSION / TYPE")) {
            h.version = static_cast<float>(FortranNumber(line, 0, 9));
            CopyTrimmedField(line, 20, 19, h.type, sizeof h.type);
        } else if (HoldsLabel(line, "PGM / RUN BY / DATE")) {
            CopyTrimmedField(line, 0, 20, h.pgm, sizeof h.pgm);
            CopyTrimmedField(line, 20, 20, h.runby, sizeof h.runby);
            CopyTrimmedField(line, 40, 20, h.date, sizeof h.date);
        } else if (HoldsLabel(line, "ION ALPHA") || HoldsLabel(line, "ION BETA")) {
            long double* c = HoldsLabel(line, "ION ALPHA") ? h.alfa : h.beta;
            for (std::size_t i = 0; i < 4; ++i) c[i] = MantissaExponent(line, 12 * i + 2, 8, 12 * i + 11);
        } else if (HoldsLabel(line, "DELTA-UTC: A0,A1,T,W")) {
            h.a0 = MantissaExponent(line, 3, 15, 19);
            h.a1 = MantissaExponent(line, 22, 15, 38);
            h.T = std::lround(FortranNumber(line, 41, 9));
            h.W = std::lround(FortranNumber(line, 50, 9));
        } else if (HoldsLabel(line, "LEAP SECONDS")) {
            h.leaps = static_cast<short>(std::lround(FortranNumber(line, 0, 6)));
        } else if (HoldsLabel(line, "COMMENT")) {
            continue;
        } else {
            GPSbEphHeaderWarning((line.size() > 60 ? line.substr(60) : std::string())
                                 + " -> UNKNOWN HEADER LABEL");
        }
    }
    GPSbEphHeaderError("NO END OF HEADER IN GPS NAVIGATION FILE!");
}

GPSbEphData::GPSbEphData() : nsatall(0), isSet(false) {}

void GPSbEphData::SetNRecords(unsigned long n)
{
    nsatall = n;
    mjdo.Resize(static_cast<long>(n), 1, mjd());
    sat.Resize(static_cast<long>(n), 1, 0);
    data.Resize(static_cast<long>(n), GPSbEphns::NParameters, 0.0L);
    isSet = true;
}

GPSbEph::GPSbEph()
    : Relativity(0.0L), nsatall(0), GMz(3.986005e14L), OMEGAz(7.2921151467e-5L),
      RelK(-4.442807633e-10L)
{
    navig[0] = '\0';
}

void GPSbEph::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(navig))
        GPSbEphError("GPS NAVIGATION FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(navig, file);
}

long GPSbEph::CountNav(const std::string& content)
{
    std::istringstream in(content);
    GPSbEphHeader h;
    in >> h;
    // A partial last record counts as one, so that the reading pass meets
    // it and names the cut.
    long lines = 0;
    std::string line;
    while (NextLine(in, line)) ++lines;
    return (lines + GPSbEphns::NLinesRecord - 1) / GPSbEphns::NLinesRecord;
}

void GPSbEph::ReadFile()
{
    if (!FileExists(navig)) GPSbEphError("GPS NAVIGATION FILE CAN NOT BE OPENED!");
    const std::string content = ReadInputFile(navig, "GPSbEph");
    if (IsRinex3Navigation(content)) {
        ReadRinex3(content);
    } else {
        nsatall = CountNav(content);
        gdata.SetNRecords(static_cast<unsigned long>(nsatall));
        std::istringstream in(content);
        in >> ghead;
        ReadRecords(in);
    }
    gdata.satList = UniqList(gdata.sat);
    CheckTimeOrder();
}

void GPSbEph::ReadRinex3(const std::string& content)
{
    const Rinex3NavHeader h = ReadRinex3NavHeader(content, navig, "GPSbEph");
    const std::vector<Rinex3NavRecord> recs = ReadRinex3NavRecords(content, navig, system, "GPSbEph");
    CopyRinex3NavHeader(h, ghead);
    ghead.a0 = h.a0;
    ghead.a1 = h.a1;
    ghead.T = h.T;
    ghead.W = h.W;
    std::copy(h.alfa, h.alfa + 4, ghead.alfa);
    std::copy(h.beta, h.beta + 4, ghead.beta);
    nsatall = static_cast<long>(recs.size());
    gdata.SetNRecords(recs.size());
    for (std::size_t r = 0; r < recs.size(); ++r) {
        const long i = static_cast<long>(r);
        gdata.sat(i) = recs[r].sat;
        gdata.mjdo(i) = ymdhms2mjd(recs[r].toc);
        for (int j = 0; j < GPSbEphns::NParameters; ++j) gdata.data(i, j) = recs[r].values[static_cast<std::size_t>(j)];
    }
}

void GPSbEph::ReadRecords(std::istream& in)
{
    using namespace GPSbEphns;
    if (!gdata.isSet) GPSbEphDataError("NUMBER OF RECORDS not set!");
    std::string line;
    for (long r = 0; r < nsatall; ++r) {
        const std::string where = std::string(navig) + ": RECORD " + std::to_string(r + 1);
        // CountNav counted this line; only a file changed meanwhile lacks it.
        if (!NextLine(in, line)) GPSbEphError(where + ": FILE ENDS INSIDE THE RECORD!");
        std::istringstream is(line);
        const int s = SatelliteField(is);
        if (s <= 0)
            GPSbEphError(where + ": SATELLITE FIELD \"" + line.substr(0, 3)
                         + "\" OF NO GPS OR GALILEO SATELLITE!");
        gdata.sat(r) = static_cast<short>(s);
        ymdhms t;
        if (!(is >> t)) GPSbEphError(where + ": EPOCH CAN NOT BE READ!");
        gdata.mjdo(r) = ymdhms2mjd(t);
        // The epoch takes the place of one field on the first line.
        const std::size_t first = is.eof() ? line.size() : static_cast<std::size_t>(is.tellg());
        const std::size_t indent = first >= FieldWidth ? first - FieldWidth : 0;
        for (int j = 0; j < 3; ++j) gdata.data(r, j) = FortranNumber(line, first + FieldWidth * j, FieldWidth);
        for (int j = 3; j < NParameters; ++j) {
            if ((j - 3) % 4 == 0 && !NextLine(in, line))
                GPSbEphError(where + ": FILE ENDS INSIDE THE RECORD!");
            gdata.data(r, j) = FortranNumber(line, indent + FieldWidth * ((j - 3) % 4), FieldWidth);
        }
    }
}

void GPSbEph::CheckTimeOrder() const
{
    // Record choice walks each satellite's records in file order.
    matrix<mjd> last(300, 1, mjd());
    matrix<char> seen(300, 1, 0);
    for (long i = 0; i < nsatall; ++i) {
        const short s = gdata.sat(i);
        if (seen(s) != 0 && gdata.mjdo(i) < last(s))
            GPSbEphDataWarning("SAT: " + SatName(s) + " RECORD "
                               + std::to_string(i + 1) + " EARLIER THAN THE ONE BEFORE!");
        seen(s) = 1;
        last(s) = gdata.mjdo(i);
    }
}

long GPSbEph::GetDataIndex(short st, const mjd& t0) const
{
    long i0 = -1;
    for (long i = 0; i < nsatall; ++i) {
        if (gdata.sat(i) != st) continue;
        if (i0 < 0) {
            if (gdata.mjdo(i) > t0) return i;
            i0 = i;
            continue;
        }
        if (t0 >= gdata.mjdo(i0) && t0 <= gdata.mjdo(i))
            return (t0 - gdata.mjdo(i0) > gdata.mjdo(i) - t0) ? i : i0;
        i0 = i;
    }
    if (i0 < 0) GPSbEphError("SAT: " + SatName(st) + " IS NOT LISTED IN GPS NAVIGATION FILE!!!");
    return i0;
}

void GPSbEph::CalcSatPosition(unsigned short st, mjd& t0, mjd& tindex, xyzt& pos,
                              long double* tgdout, unsigned short w, unsigned short)
{
    using namespace GPSbEphns;
    const long ix = ixLast = GetDataIndex(static_cast<short>(st), tindex);
    const matrix<long double>& d = gdata.data;
    const long double dt = t0 - gdata.mjdo(ix);
    if (std::fabs(dt) > ValidInterval_s)
        ProgramWarning("Orvo", "GPS BROADCAST EPHEMERIS: CALCULATION EPOCH NOT IN VALID INTERVAL "
                               "(2H) WITH RESPECT TO EPOCHS OF DATA!");
    if (w != 0 && std::fabs(dt) > StaleLimit_s) {
        const ymdhms e = mjd2ymdhms(t0);
        char s[160];
        std::snprintf(s, sizeof s, "SAT: %s [%4d-%02d-%02d %02d:%02d:%04.1lf] -> DT = %5.2lf h "
                      "PARAMETER TO BIG [>2h]", SatName(st).c_str(), e.GetYear(), e.GetMonth(),
                      e.GetDay(), e.GetHour(), e.GetMinute(), static_cast<double>(e.GetSecond()),
                      static_cast<double>(dt / 3600.0L));
        GPSbEphWarning(s);
    }
    const long double e = d(ix, GPSbEphData::E);
    // A zero or negative sqrt(A), or an orbit that is no ellipse, comes from
    // a foreign or damaged record and would give no number at all.
    if (!(d(ix, GPSbEphData::AS) > 0.0L) || !(e >= 0.0L && e < 1.0L))
        GPSbEphError("SAT: " + SatName(st) + " RECORD " + std::to_string(ix + 1)
                     + " HAS NO VALID ORBIT (SQRT(A), E)!");
    const long double a = d(ix, GPSbEphData::AS) * d(ix, GPSbEphData::AS);
    const long double rk = RelK * e * d(ix, GPSbEphData::AS);
    const long double n = std::sqrt(GMz / a) / a + d(ix, GPSbEphData::DN);
    const long double M = d(ix, GPSbEphData::M0) + n * dt;
    long double E0 = 0.0L, change = 1.0L;
    for (int count = 1; change > KeplerTol_rad; ++count) {
        if (count > MaxKeplerIter) GPSbEphError("TO MANY ITERATIONS (E)");
        const long double E1 = M + e * trig::Sin(E0);
        change = std::fabs(E1 - E0);
        E0 = E1;
    }
    const long double sinE = trig::Sin(E0), cosE = trig::Cos(E0);
    Relativity = -rk * sinE;
    const long double DT = d(ix, GPSbEphData::A0) + d(ix, GPSbEphData::A1) * dt
                           + d(ix, GPSbEphData::A2) * dt * dt + rk * sinE;
    if (tgdout != nullptr) *tgdout = d(ix, GPSbEphData::TGD);
    // True anomaly from the eccentric one, in its quadrant.
    long double u = d(ix, GPSbEphData::W) + Azimuth(0.0L, 0.0L, std::sqrt(1.0L - e * e) * sinE, cosE - e);
    const long double c2u = trig::Cos(2.0L * u), s2u = trig::Sin(2.0L * u);
    const long double du = d(ix, GPSbEphData::CUC) * c2u + d(ix, GPSbEphData::CUS) * s2u;
    const long double dr = d(ix, GPSbEphData::CRC) * c2u + d(ix, GPSbEphData::CRS) * s2u;
    const long double di = d(ix, GPSbEphData::CIC) * c2u + d(ix, GPSbEphData::CIS) * s2u;
    u += du;
    const long double r = a * (1.0L - e * cosE) + dr;
    const long double i = d(ix, GPSbEphData::I0) + di + d(ix, GPSbEphData::IDOT) * dt;
    const long double OM = d(ix, GPSbEphData::OMEGA) + (d(ix, GPSbEphData::OMEGADOT) - OMEGAz) * dt
                           - OMEGAz * d(ix, GPSbEphData::TOE);
    const long double xt = r * trig::Cos(u), yt = r * trig::Sin(u);
    pos = xyzt(xt * trig::Cos(OM) - yt * trig::Cos(i) * trig::Sin(OM),
               xt * trig::Sin(OM) + yt * trig::Cos(i) * trig::Cos(OM), yt * trig::Sin(i), DT);
}

long double GPSbEph::RotatedDistance(const xyz& prec, long double tau, const xyzt& psat)
{
    // The receiver turns with the Earth while the signal travels.
    ps = prec;
    ps.RotateZ(tau * OMEGAz);
    return std::hypot(ps.x - psat.x, ps.y - psat.y, ps.z - psat.z);
}

long double GPSbEph::CalcSatPosition(unsigned short sati, mjd& eph, mjd& tindex, xyz& prec,
                                     xyzt& psat, long double* tgd, unsigned short w,
                                     unsigned short iz)
{
    using GPSbEphns::C_mps;
    long double thres = 1.0L, deltat = -0.075L, dist = 0.0L;
    int iter = 0;
    while (thres > GPSbEphns::LightTimeTol_m) {
        if (++iter > GPSbEphns::MaxLightIter) {
            GPSbEphWarning("GPSbEph::CalcSatPosition():      TO MANY ITERATIONS: > 10!!");
            break;
        }
        ephr = eph;
        ephr += deltat;
        CalcSatPosition(sati, ephr, tindex, psat, tgd, w, iz);
        dist = RotatedDistance(prec, -deltat, psat);
        thres = std::fabs(deltat * C_mps + dist);
        deltat = -dist / C_mps;
    }
    ephr = eph;
    return dist;
}

long double GPSbEph::CalcSatPosition(unsigned short sati, mjd& eph, mjd& tindex, xyz& prec,
                                     xyzt& psat, gnssobs& P, long double* tgd, unsigned short w,
                                     unsigned short iz)
{
    const long double dt = P.obs / GPSbEphns::C_mps;
    ephr = eph;
    ephr += -dt;
    CalcSatPosition(sati, ephr, tindex, psat, tgd, w, iz);
    ephr = eph;
    return RotatedDistance(prec, dt, psat);
}
