#include "geodesy/flh.h"

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string>

#include "geodesy/FixedField.h"
#include "geodesy/xyz.h"
#include "numerics/AngleConversion.h"
#include "numerics/ProgramError.h"

using geodesyio::PutFixed;

namespace {

struct AngleFormat {
    int unit, ndecFL, ndecH, widthFL, widthH;
};

AngleFormat FlhFormat()
{
    return {flhns::Unit, flhns::NDecFL, flhns::NDecH, flhns::WidthFL, flhns::WidthH};
}

AngleFormat FlhtFormat()
{
    return {flhtns::Unit, flhtns::NDecFL, flhtns::NDecH, flhtns::WidthFL, flhtns::WidthH};
}

void PutPosition(std::ostream& os, const flh& p, const AngleFormat& fm)
{
    switch (fm.unit) {
    case 0:
        PutFixed(os, p.f, fm.widthFL, fm.ndecFL);
        PutFixed(os, p.l, fm.widthFL, fm.ndecFL);
        break;
    case 1:
        PutFixed(os, rad2deg(p.f), fm.widthFL, fm.ndecFL);
        PutFixed(os, rad2deg(p.l), fm.widthFL, fm.ndecFL);
        break;
    case 2:
        PutFixed(os, rad2gon(p.f), fm.widthFL, fm.ndecFL);
        PutFixed(os, rad2gon(p.l), fm.widthFL, fm.ndecFL);
        break;
    case 3:
        PutFixed(os, rad2dms(p.f), fm.widthFL, fm.ndecFL);
        PutFixed(os, rad2dms(p.l), fm.widthFL, fm.ndecFL);
        break;
    case 4:
        os << std::setw(fm.widthFL) << dms2dms(rad2dms(p.f), fm.ndecFL)
           << std::setw(fm.widthFL) << dms2dms(rad2dms(p.l), fm.ndecFL);
        break;
    case 5:
        // The map form: easting first, to a tenth of an arcsecond (3 m).
        os << std::setw(11) << dms2dms(rad2dms(p.l), 1) << " "
           << std::setw(11) << dms2dms(rad2dms(p.f), 1) << " ";
        PutFixed(os, p.h, 7, 1);
        return;
    default:
        ProgramError("Orvo", "flh: unknown print form " + std::to_string(fm.unit));
    }
    PutFixed(os, p.h, fm.widthH, fm.ndecH);
}

// Degree, minute, second of one angle; the sign of the degree, minus zero
// included, governs the whole angle.
long double ReadDms(std::istream& is)
{
    long double d = 0.0L, m = 0.0L, s = 0.0L;
    is >> d >> m >> s;
    const long double mag = std::fabs(d) + m / 60.0L + s / 3600.0L;
    return deg2rad(std::signbit(d) ? -mag : mag);
}

// Reads f, l, h in form unit; false when the stream failed.
bool GetPosition(std::istream& is, int unit, long double& f, long double& l, long double& h)
{
    switch (unit) {
    case 0:
        is >> f >> l >> h;
        break;
    case 1:
        is >> f >> l >> h;
        f = deg2rad(f);
        l = deg2rad(l);
        break;
    case 3:
        is >> f >> l >> h;
        f = dms2rad(f);
        l = dms2rad(l);
        break;
    case 4:
        f = ReadDms(is);
        l = ReadDms(is);
        is >> h;
        break;
    default:
        ProgramError("Orvo", "flh: no input in form " + std::to_string(unit));
    }
    return static_cast<bool>(is);
}

}  // namespace

flh::flh(long double f_rad, long double l_rad, long double h_m) : f(f_rad), l(l_rad), h(h_m)
{
    TestPos();
}

flh::flh(const flh& p) : f(p.f), l(p.l), h(p.h)
{
    TestPos();
}

flh& flh::operator=(const flh& p)
{
    f = p.f; l = p.l; h = p.h;
    TestPos();
    return *this;
}

void flh::Set(long double f_rad, long double l_rad, long double h_m)
{
    f = f_rad; l = l_rad; h = h_m;
    TestPos();
}

void flh::SetF(long double f_rad) { f = f_rad; TestFi(); }
void flh::SetL(long double l_rad) { l = l_rad; TestLa(); }

void flh::CheckFi(const char* cls) const
{
    // Written so that NaN fails as well.
    if (!(f >= -90.0L && f <= 90.0L)) ClassErrorCout(cls, "LATITUDE not valid");
}

void flh::CheckLa(const char* cls) const
{
    if (!(l >= -180.0L && l <= 180.0L)) ClassErrorCout(cls, "LONGITUDE not valid");
}

void flh::TestFi() const { CheckFi("flh"); }
void flh::TestLa() const { CheckLa("flh"); }
void flh::TestPos() const { TestFi(); TestLa(); }

flh& flh::operator+=(const flh& b)
{
    f += b.f; l += b.l; h += b.h;
    TestPos();
    return *this;
}

flh& flh::operator-=(const flh& b)
{
    f -= b.f; l -= b.l; h -= b.h;
    TestPos();
    return *this;
}

flht::flht(long double f_rad, long double l_rad, long double h_m, long double dt_s) : flh(), dt(dt_s)
{
    f = f_rad; l = l_rad; h = h_m;
    TestPos();
}

flht::flht(const flh& p, long double dt_s) : flh(), dt(dt_s)
{
    f = p.f; l = p.l; h = p.h;
    TestPos();
}

flht::flht(const flht& p) : flh(), dt(p.dt)
{
    f = p.f; l = p.l; h = p.h;
    TestPos();
}

flht& flht::operator=(const flht& p)
{
    f = p.f; l = p.l; h = p.h; dt = p.dt;
    TestPos();
    return *this;
}

flht& flht::operator=(const flh& p)
{
    f = p.f; l = p.l; h = p.h; dt = 0.0L;
    TestPos();
    return *this;
}

void flht::Set(long double f_rad, long double l_rad, long double h_m, long double dt_s)
{
    f = f_rad; l = l_rad; h = h_m; dt = dt_s;
    TestPos();
}

void flht::SetF(long double f_rad) { f = f_rad; TestFi(); }
void flht::SetL(long double l_rad) { l = l_rad; TestLa(); }
void flht::TestFi() const { CheckFi("flht"); }
void flht::TestLa() const { CheckLa("flht"); }
void flht::TestPos() const { TestFi(); TestLa(); }

flht& flht::operator+=(const flht& b)
{
    f += b.f; l += b.l; h += b.h; dt += b.dt;
    TestPos();
    return *this;
}

flht& flht::operator-=(const flht& b)
{
    f -= b.f; l -= b.l; h -= b.h; dt -= b.dt;
    TestPos();
    return *this;
}

flh operator+(const flh& a, const flh& b) { return flh(a.f + b.f, a.l + b.l, a.h + b.h); }
flh operator-(const flh& a, const flh& b) { return flh(a.f - b.f, a.l - b.l, a.h - b.h); }
flht operator+(const flht& a, const flht& b) { return flht(a.f + b.f, a.l + b.l, a.h + b.h, a.dt + b.dt); }
flht operator-(const flht& a, const flht& b) { return flht(a.f - b.f, a.l - b.l, a.h - b.h, a.dt - b.dt); }

bool operator==(const flh& a, const flh& b)
{
    return std::fabs(a.f - b.f) < xyzcmp::EqualTol && std::fabs(a.l - b.l) < xyzcmp::EqualTol
        && std::fabs(a.h - b.h) < xyzcmp::EqualTol;
}

bool operator==(const flht& a, const flht& b)
{
    return static_cast<const flh&>(a) == static_cast<const flh&>(b)
        && std::fabs(a.dt - b.dt) < xyzcmp::EqualTol;
}

bool operator!=(const flh& a, const flh& b) { return !(a == b); }
bool operator!=(const flht& a, const flht& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& os, const flh& p)
{
    PutPosition(os, p, FlhFormat());
    return os;
}

std::istream& operator>>(std::istream& is, flh& p)
{
    long double f = 0.0L, l = 0.0L, h = 0.0L;
    if (GetPosition(is, flhns::Unit, f, l, h)) p.Set(f, l, h);
    return is;
}

std::ostream& operator<<(std::ostream& os, const flht& p)
{
    PutPosition(os, p, FlhtFormat());
    PutFixed(os, p.dt * flhtns::UnitT, flhtns::WidthT, flhtns::NDecT);
    return os;
}

std::istream& operator>>(std::istream& is, flht& p)
{
    long double f = 0.0L, l = 0.0L, h = 0.0L, dt = 0.0L;
    if (GetPosition(is, flhtns::Unit, f, l, h) && (is >> dt))
        p.Set(f, l, h, dt / flhtns::UnitT);
    return is;
}
