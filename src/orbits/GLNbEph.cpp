#include "orbits/GLNbEph.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "geodesy/LeapSecond.h"
#include "geodesy/TimeConverse.h"
#include "numerics/FieldText.h"
#include "numerics/InputFile.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"
#include "orbits/Rinex3Navigation.h"

using fieldtext::CopyTrimmedField;
using fieldtext::FortranNumber;
using fieldtext::HoldsLabel;

void GLNbEphError(const std::string& text) { ProgramErrorCout("GLNbEph", text); }

void GLNbEphWarning(const std::string& text) { ProgramWarningCout("GLNbEph", text); }

GLNbEphHeader::GLNbEphHeader() : version(0.0f), TauC(0.0L), leaps(0)
{
    type[0] = pgm[0] = runby[0] = date[0] = '\0';
}

std::istream& operator>>(std::istream& in, GLNbEphHeader& h)
{
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() > GLNbEphns::HeaderLineSize) line.resize(GLNbEphns::HeaderLineSize);
        if (HoldsLabel(line, "END OF HEADER")) return in;
        if (HoldsLabel(line, "RINEX VERSION / TYPE")) {
            h.version = static_cast<float>(FortranNumber(line, 0, 9));
            CopyTrimmedField(line, 20, 19, h.type, sizeof h.type);
        } else if (HoldsLabel(line, "PGM / RUN BY / DATE")) {
            CopyTrimmedField(line, 0, 20, h.pgm, sizeof h.pgm);
            CopyTrimmedField(line, 20, 20, h.runby, sizeof h.runby);
            CopyTrimmedField(line, 40, 20, h.date, sizeof h.date);
        } else if (HoldsLabel(line, "CORR TO SYSTEM TIME")) {
            const long y = std::lround(FortranNumber(line, 0, 6));
            const long m = std::lround(FortranNumber(line, 6, 6));
            const long d = std::lround(FortranNumber(line, 12, 6));
            // ymdhms checks the date itself; the guard keeps a garbage value
            // from wrapping into the unsigned fields.
            if (y < 0 || y > 65535 || m < 0 || m > 65535 || d < 0 || d > 65535)
                GLNbEphError("CORR TO SYSTEM TIME: DATE NOT VALID!");
            h.RefTimeCorr.Set(static_cast<unsigned short>(y), static_cast<unsigned short>(m),
                              static_cast<unsigned short>(d), 0, 0, 0.0L);
            h.TauC = FortranNumber(line, 20, 16) * std::pow(10.0L, FortranNumber(line, 37, 3));
        } else if (HoldsLabel(line, "LEAP SECONDS")) {
            h.leaps = static_cast<short>(std::lround(FortranNumber(line, 0, 6)));
        } else if (HoldsLabel(line, "COMMENT")) {
            continue;
        } else {
            GLNbEphWarning((line.size() > 60 ? line.substr(60) : std::string())
                           + " -> UNKNOWN HEADER LABEL");
        }
    }
    GLNbEphError("NO END OF HEADER IN GLONASS NAVIGATION FILE!");
}

GLNbEphData::GLNbEphData() : nsatall(0), isSet(false) {}

void GLNbEphData::SetNRecords(long n)
{
    nsatall = n;
    mjdo.Resize(n, 1, mjd());
    sat.Resize(n, 1, 0);
    data.Resize(n, 15, 0.0L);
    isSet = true;
}

GLNbEph::GLNbEph()
    : diffinterval(30.0L), nsatall(0), GMz(3.9860044e14L), OMEGAz(7.292115e-5L),
      aE(6378136.0L), C20(-0.00108263L), Relativity(0.0L), x0(0), y0(0), z0(0), vx0(0), vy0(0),
      vz0(0), asx(0), asy(0), asz(0), Xp(6), Yp(6), D1(6), D2(6), D3(6), D4(6), tmp(6)
{
    navig[0] = '\0';
}

void GLNbEph::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(navig))
        GLNbEphError("GLONASS NAVIGATION FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(navig, file);
}

long GLNbEph::CountNav(const std::string& content)
{
    std::istringstream in(content);
    GLNbEphHeader h;
    in >> h;
    long n = 0;
    int s = 0;
    std::string line;
    while (in >> s) {
        std::getline(in, line);
        for (int i = 0; i < 3; ++i) std::getline(in, line);
        ++n;
    }
    return n;
}

void GLNbEph::ReadFile()
{
    if (!FileExists(navig)) GLNbEphError("GLONASS NAVIGATION FILE CAN NOT BE OPENED!");
    const std::string content = ReadInputFile(navig, "GLNbEph");
    if (IsRinex3Navigation(content)) {
        ReadRinex3(content);
    } else {
        nsatall = CountNav(content);
        rdata.SetNRecords(nsatall);
        std::istringstream in(content);
        in >> rhead;
        ReadRecords(in);
    }
    rdata.satList = UniqList(rdata.sat);
}

void GLNbEph::ReadRinex3(const std::string& content)
{
    const Rinex3NavHeader h = ReadRinex3NavHeader(content, navig, "GLNbEph");
    const std::vector<Rinex3NavRecord> recs = ReadRinex3NavRecords(content, navig, 'R', "GLNbEph");
    CopyRinex3NavHeader(h, rhead);
    nsatall = static_cast<long>(recs.size());
    rdata.SetNRecords(nsatall);
    for (long r = 0; r < nsatall; ++r) {
        const Rinex3NavRecord& x = recs[static_cast<std::size_t>(r)];
        StoreRecord(r, x.sat - 100, x.toc, x.values.data(), std::string(navig) + ": LINE " + std::to_string(x.line));
    }
}

void GLNbEph::StoreRecord(long r, int slot, const ymdhms& utc, const long double* values, const std::string& where)
{
    using D = GLNbEphData;
    // Field, its bound and its name for the range check of each record.
    static const struct { int j; long double max; const char* name; } ranges[] = {
        {D::TAUN, GLNbEphns::MaxTauN_s, "CLOCK OFFSET"}, {D::GAMMAN, GLNbEphns::MaxGammaN, "FREQUENCY OFFSET"},
        {D::X0, GLNbEphns::MaxCoordinate_km, "X"}, {D::Y0, GLNbEphns::MaxCoordinate_km, "Y"},
        {D::Z0, GLNbEphns::MaxCoordinate_km, "Z"}, {D::XD0, GLNbEphns::MaxVelocity_kmps, "X VELOCITY"},
        {D::YD0, GLNbEphns::MaxVelocity_kmps, "Y VELOCITY"}, {D::ZD0, GLNbEphns::MaxVelocity_kmps, "Z VELOCITY"},
        {D::XDDS, GLNbEphns::MaxAcceleration_kmps2, "X ACCELERATION"},
        {D::YDDS, GLNbEphns::MaxAcceleration_kmps2, "Y ACCELERATION"},
        {D::ZDDS, GLNbEphns::MaxAcceleration_kmps2, "Z ACCELERATION"}};
    rdata.sat(r) = static_cast<short>(slot);
    if (std::fabs(utc.GetSecond()) > GLNbEphns::FullMinuteTol_s) {
        char w[120];
        std::snprintf(w, sizeof w,
                      "GLONASS EPHEMERIS DATA: SATELLITE R%02d EPOCH SECONDS %5.1lf [NOT "
                      "FULL MINUTES]",
                      slot, static_cast<double>(utc.GetSecond()));
        ProgramWarning("Orvo", w);
    }
    mjd m = ymdhms2mjd(utc);
    m += LeapSecond(m);
    rdata.mjdo(r) = m;
    for (int j = 0; j < 15; ++j) rdata.data(r, j) = values[j];
    for (const auto& f : ranges)
        if (!(std::fabs(rdata.data(r, f.j)) <= f.max))
            GLNbEphError(where + ": " + f.name + " OUTSIDE THE RANGE OF THE GLONASS ICD!");
}

bool GLNbEph::ReadParameter(std::istream& in, long double& value)
{
    std::string mantissa;
    char ch = 0;
    while (in.get(ch) && ch != 'D' && ch != 'E' && ch != 'e') mantissa += ch;
    if (!in) return false;
    char expo[4] = {0, 0, 0, 0};
    for (int i = 0; i < 3; ++i) {
        if (!in.get(ch)) return false;
        expo[i] = ch;
    }
    value = std::strtold(mantissa.c_str(), nullptr) * std::pow(10.0L, std::atoi(expo));
    return true;
}

void GLNbEph::ReadRecords(std::istream& in)
{
    if (!rdata.isSet) GLNbEphError("NUMBER OF RECORDS not set!");
    std::string rest;
    for (long r = 0; r < nsatall; ++r) {
        const std::string where = std::string(navig) + ": RECORD " + std::to_string(r + 1);
        int s = 0;
        // The count saw this record start; a record whose values took more
        // lines than four has shifted every later one.
        if (!(in >> s)) GLNbEphError(where + ": RECORD LINES DO NOT HOLD 15 VALUES!");
        // Slots run 1..99 in the shared numbering (100 + slot).
        if (s < 1 || s > 99)
            GLNbEphError("RECORD " + std::to_string(r + 1) + ": SLOT NUMBER NOT IN 1..99!");
        ymdhms t;
        if (!(in >> t))
            GLNbEphError("RECORD " + std::to_string(r + 1) + ": EPOCH CAN NOT BE READ!");
        long double v[15] = {};
        for (long double& x : v)
            if (!ReadParameter(in, x))
                GLNbEphError("RECORD " + std::to_string(r + 1)
                             + ": FILE ENDS INSIDE THE RECORD!");
        StoreRecord(r, s, t, v, where);
        std::getline(in, rest);
    }
}

long GLNbEph::GetDataIndex(short st, const mjd& t0) const
{
    long i0 = -1;
    for (long i = 0; i < nsatall; ++i) {
        if (rdata.sat(i) != st) continue;
        if (i0 < 0) {
            if (rdata.mjdo(i) > t0) return i;
            i0 = i;
            continue;
        }
        if (t0 >= rdata.mjdo(i0) && t0 <= rdata.mjdo(i))
            return (t0 - rdata.mjdo(i0) > rdata.mjdo(i) - t0) ? i : i0;
        i0 = i;
    }
    if (i0 < 0) {
        char e[80];
        std::snprintf(e, sizeof e, "SAT: R%02d IS NOT LISTED IN GLONASS NAVIGATION FILE!!!", st);
        GLNbEphError(e);
    }
    return i0;
}

void GLNbEph::DiffEqTwoBody(const matrix<long double>& x, long double ax, long double ay,
                            long double az, matrix<long double>& y) const
{
    const long double r = std::sqrt(x(0) * x(0) + x(1) * x(1) + x(2) * x(2));
    const long double r2 = r * r;
    const long double gm_r3 = GMz / (r2 * r);
    // J2 term of the PZ-90 field: 1.5 C20 (GM/r^2)(aE/r)^2.
    const long double j2 = 1.5L * C20 * (GMz / r2) * (aE / r) * (aE / r);
    const long double z2 = x(2) * x(2) / r2;
    const long double w2 = OMEGAz * OMEGAz;
    y(0) = x(3);
    y(1) = x(4);
    y(2) = x(5);
    y(3) = -gm_r3 * x(0) + j2 * (x(0) / r) * (1.0L - 5.0L * z2) + ax + w2 * x(0)
           + 2.0L * OMEGAz * x(4);
    y(4) = -gm_r3 * x(1) + j2 * (x(1) / r) * (1.0L - 5.0L * z2) + ay + w2 * x(1)
           - 2.0L * OMEGAz * x(3);
    y(5) = -gm_r3 * x(2) + j2 * (x(2) / r) * (3.0L - 5.0L * z2) + az;
}

void GLNbEph::CalcSatPosition(short st, mjd& t0, mjd& tindex, xyzt& pos, xyzt& vel,
                              short warning)
{
    const long ix = ixLast = GetDataIndex(st, tindex);
    mjd mjdgln = rdata.mjdo(ix);
    mjdgln += rhead.TauC;
    const long double dt = t0 - mjdgln;
    const long double DT = rdata.data(ix, GLNbEphData::TAUN)
                           - rdata.data(ix, GLNbEphData::GAMMAN) * dt + rhead.TauC;
    if (warning != 0 && std::fabs(dt) > GLNbEphns::StaleLimit_s) {
        const ymdhms e = mjd2ymdhms(t0);
        char w[160];
        std::snprintf(w, sizeof w,
                      "SAT: G%02d [%4d-%02d-%02d %02d:%02d:%04.1lf] -> DT = %5.2lf' PARAMETER TO "
                      "BIG [>16']",
                      st, e.GetYear(), e.GetMonth(), e.GetDay(), e.GetHour(), e.GetMinute(),
                      static_cast<double>(e.GetSecond()), static_cast<double>(dt / 60.0L));
        GLNbEphWarning(w);
    }
    const matrix<long double>& d = rdata.data;
    x0 = d(ix, GLNbEphData::X0) * 1000.0L;
    y0 = d(ix, GLNbEphData::Y0) * 1000.0L;
    z0 = d(ix, GLNbEphData::Z0) * 1000.0L;
    vx0 = d(ix, GLNbEphData::XD0) * 1000.0L;
    vy0 = d(ix, GLNbEphData::YD0) * 1000.0L;
    vz0 = d(ix, GLNbEphData::ZD0) * 1000.0L;
    asx = d(ix, GLNbEphData::XDDS) * 1000.0L;
    asy = d(ix, GLNbEphData::YDDS) * 1000.0L;
    asz = d(ix, GLNbEphData::ZDDS) * 1000.0L;

    const long double sign = (dt < 0.0L) ? -1.0L : 1.0L;
    Xp(0) = x0; Xp(1) = y0; Xp(2) = z0;
    Xp(3) = vx0; Xp(4) = vy0; Xp(5) = vz0;
    for (long step = 0; step < GLNbEphns::MaxSteps; ++step) {
        const long double left = t0 - mjdgln;  // s, signed
        long double dts = sign * diffinterval;
        if (std::fabs(dts) > std::fabs(left)) dts = left;  // the short last step
        if (sign * left <= 0.0L || std::fabs(dts) < GLNbEphns::MinStep_s) break;
        DiffEqTwoBody(Xp, asx, asy, asz, D1);
        for (int k = 0; k < 6; ++k) tmp(k) = Xp(k) + D1(k) * dts / 2.0L;
        DiffEqTwoBody(tmp, asx, asy, asz, D2);
        for (int k = 0; k < 6; ++k) tmp(k) = Xp(k) + D2(k) * dts / 2.0L;
        DiffEqTwoBody(tmp, asx, asy, asz, D3);
        for (int k = 0; k < 6; ++k) tmp(k) = Xp(k) + D3(k) * dts;
        DiffEqTwoBody(tmp, asx, asy, asz, D4);
        for (int k = 0; k < 6; ++k)
            Xp(k) += D1(k) * dts / 6.0L + D2(k) * dts / 3.0L + D3(k) * dts / 3.0L
                     + D4(k) * dts / 6.0L;
        mjdgln += dts;
    }
    vel = xyzt(Xp(3), Xp(4), Xp(5), 0.0L);
    pos = xyzt(Xp(0), Xp(1), Xp(2), DT);
    const long double c2 = GLNbEphns::C_mps * GLNbEphns::C_mps;
    Relativity = 2.0L * (Xp(3) * Xp(0) + Xp(4) * Xp(1) + Xp(5) * Xp(2)) / c2;
    pos.dt -= Relativity;
}

long double GLNbEph::CalcSatPosition(short sati, mjd& eph, mjd& tindex, xyz& prec, xyzt& psat,
                                     xyzt& vsat, short warning)
{
    using GLNbEphns::C_mps;
    long double thres = 1.0L, deltat = -0.075L, dist = 0.0L;
    int iter = 0;
    while (thres > GLNbEphns::LightTimeTol_m) {
        if (++iter > GLNbEphns::MaxLightIter) {
            GLNbEphWarning("GLNbEph::CalcSatPosition():      TO MANY ITERATIONS: > 500!!");
            break;
        }
        ephr = eph;
        ephr += deltat;
        CalcSatPosition(sati, ephr, tindex, psat, vsat, warning);
        // The receiver turns with the Earth while the signal travels.
        ps = prec;
        ps.RotateZ(-deltat * OMEGAz);
        dist = std::sqrt((ps.x - psat.x) * (ps.x - psat.x) + (ps.y - psat.y) * (ps.y - psat.y)
                         + (ps.z - psat.z) * (ps.z - psat.z));
        thres = std::fabs(deltat * C_mps + dist);
        deltat = -dist / C_mps;
        if (!(-deltat <= GLNbEphns::MaxFlightTime_s)) {
            ephr = eph;
            return -1.0L;
        }
    }
    ephr = eph;
    return dist;
}

long double GLNbEph::CalcSatPosition(short sati, mjd& eph, mjd& tindex, xyz& prec, xyzt& psat,
                                     xyzt& vsat, gnssobs& P, short warning)
{
    const long double dt = P.obs / GLNbEphns::C_mps;
    ephr = eph;
    ephr += -dt;
    CalcSatPosition(sati, ephr, tindex, psat, vsat, warning);
    // Into the Earth-fixed frame of the reception epoch: the frame has
    // turned by OMEGAz dt since transmission.
    psat.RotateZ(-OMEGAz * dt);
    ephr = eph;
    return std::sqrt((prec.x - psat.x) * (prec.x - psat.x) + (prec.y - psat.y) * (prec.y - psat.y)
                     + (prec.z - psat.z) * (prec.z - psat.z));
}
