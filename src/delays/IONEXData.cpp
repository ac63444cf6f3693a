#include "delays/IONEXData.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "geodesy/TimeConverse.h"
#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"

namespace {

const long double Pi = 3.14159265358979323846264338327950288L;
const int PerLine = 16;  // map values per line (16I5)
const int Width = 5;

// Lines of the map part, counted from the file's start for the messages.
struct Lines {
    std::istream& in;
    const std::string& file;
    long n;
    std::string line;

    [[noreturn]] void Fail(const std::string& text) const
    {
        ProgramError("Orvo", "IONEX file [" + file + "] line " + std::to_string(n) + ": " + text);
    }
    bool Next()
    {
        if (!std::getline(in, line)) return false;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        ++n;
        return true;
    }
    // The next line, which must hold label: the maps have a fixed sequence
    // of records, and any other line means a cut or differently laid out file.
    void Expect(const std::string& label)
    {
        if (!Next()) Fail("file ends where \"" + label + "\" is expected");
        if (line.find(label) == std::string::npos) Fail("\"" + label + "\" expected");
    }
};

// One map (all heights) of kind "TEC" or "RMS" into store at epoch e; the
// opening line is already in hand.
void ReadMap(Lines& r, IONEXData& d, const std::string& kind, TEC& store, long e, long double scale)
{
    if (r.line.find("START OF " + kind + " MAP") == std::string::npos)
        r.Fail("\"START OF " + kind + " MAP\" expected");
    r.Expect("EPOCH OF CURRENT MAP");
    int y, mo, dd, h, mi;
    double s;
    if (std::sscanf(r.line.c_str(), " %d %d %d %d %d %lf", &y, &mo, &dd, &h, &mi, &s) != 6 || y < 0 || mo < 0
        || dd < 0 || h < 0 || mi < 0)
        r.Fail("epoch of the map not read");
    const mjd t = ymdhms2mjd(ymdhms(y, mo, dd, h, mi, s));
    if (kind == "TEC") d.EPH(e) = t;
    // The time index takes the maps as spaced by INTERVAL from the first.
    const long double off = (t - d.EPH(0)) - e * static_cast<long double>(d.Header().interval);
    if (std::fabs(off) > 1e-3L) r.Fail("map epoch not at the spacing of INTERVAL from the first map");

    for (long hh = 0; hh < d.nhgt; ++hh)
        for (long row = 0; row < d.nlat; ++row) {
            r.Expect("LAT/LON1/LON2/DLON/H");
            // Rows run from LAT1 to LAT2; index 0 is LAT2.
            const long b = d.nlat - 1 - row;
            for (long lon = 0; lon < d.nlon; ++lon) {
                const std::size_t col = static_cast<std::size_t>(lon % PerLine) * Width;
                if (col == 0 && !r.Next()) r.Fail("file ends inside a map row");
                if (r.line.size() < col + Width) r.Fail("map row cut before value " + std::to_string(lon + 1));
                store(e, hh, b, lon) = std::strtol(r.line.substr(col, Width).c_str(), nullptr, 10) * scale;
            }
        }
    r.Expect("END OF " + kind + " MAP");
}

// Lower node i1 and fraction f of position q (in nodes) on an axis of n
// nodes: up to one node before the start counts as the first cell, the last
// node as the last cell, so both are extrapolated or closed from inside.
void Cell(long double q, long n, const std::string& what, const std::string& ix, long& i1, long double& f)
{
    const std::string head = what + " FOR IONOSPHERE DELAY INPROPER [" + ix;
    // Compared before the cast, which a huge or undefined q would overflow.
    if (!(q > -2.0L)) ProgramError("Orvo", head + "1<-1]!");
    if (q >= n) ProgramError("Orvo", head + "1]!");
    i1 = static_cast<long>(q);
    if (i1 == -1) i1 = 0;
    if (i1 == n - 1) i1 = n - 2;
    if (i1 + 1 > n - 1) ProgramError("Orvo", head + "2]!");
    f = q - i1;
}

long double Wrap180(long double la)
{
    while (la > 180.0L) la -= 360.0L;
    while (la < -180.0L) la += 360.0L;
    return la;
}

}  // namespace

void IONEXData::SetDimensions()
{
    const IONEXHeader& h = *ihead;
    auto nodes = [this](long double a, long double b, long double step, const char* what) {
        const long double q = (b - a) / step + IONEXns::GridSlack;
        // Bilinear cells need two nodes a side; the bound keeps the cast defined.
        if (!(q >= 1.0L && q < static_cast<long double>(TECns::MaxElements)))
            ProgramError("Orvo", "IONEX file [" + file + "]: " + what + " grid of fewer than two nodes");
        return static_cast<long>(q) + 1;
    };
    neph = h.nMaps;
    nhgt = std::fabs(h.dhgt) < 0.0001L ? 1 : nodes(h.hgt1, h.hgt2, h.dhgt, "height");
    nlat = nodes(h.lat1, h.lat2, h.dlat, "latitude");
    nlon = nodes(h.lon1, h.lon2, h.dlon, "longitude");
    if (neph < 2) ProgramError("Orvo", "IONEX file [" + file + "]: fewer than two maps");
    if (h.interval <= 0) ProgramError("Orvo", "IONEX file [" + file + "]: INTERVAL missing or not positive");
}

std::istream& operator>>(std::istream& in, IONEXData& d)
{
    d.SetDimensions();
    d.EPH.Resize(d.neph);
    d.TECVAL.Resize(d.neph, d.nhgt, d.nlat, d.nlon);
    d.TECRMS.Resize(d.neph, d.nhgt, d.nlat, d.nlon);
    const long double scale = std::pow(10.0L, d.Header().exponent);
    Lines r{in, d.file, d.line0, ""};
    for (long e = 0; e < d.neph; ++e) {
        if (!r.Next()) r.Fail("file ends before TEC map " + std::to_string(e + 1));
        ReadMap(r, d, "TEC", d.TECVAL, e, scale);
    }
    // RMS maps are optional in the format; other blocks before them are
    // passed over.
    d.hasRMS = false;
    while (r.Next())
        if (r.line.find("START OF RMS MAP") != std::string::npos) {
            for (long e = 0; e < d.neph; ++e) {
                if (e > 0 && !r.Next()) r.Fail("file ends before RMS map " + std::to_string(e + 1));
                ReadMap(r, d, "RMS", d.TECRMS, e, scale);
            }
            d.hasRMS = true;
            break;
        }
    return in;
}

void IONEXData::LonCell(long double la, long& i1, long double& f) const
{
    const IONEXHeader& h = *ihead;
    if (std::fabs(la - h.lon1) < IONEXns::LonEnd_deg) {
        i1 = 0, f = 0.0L;
        return;
    }
    if (std::fabs(la - h.lon2) < IONEXns::LonEnd_deg) {
        i1 = nlon - 2, f = 1.0L;
        return;
    }
    const long double q = (la - h.lon1) / h.dlon;
    if (!(q > -1.0L) || q >= nlon) ProgramError("Orvo", "LONGITUDE FOR IONOSPHERE DELAY INPROPER [iL1]!");
    i1 = static_cast<long>(q);
    if (i1 + 1 > nlon - 1) ProgramError("Orvo", "LONGITUDE FOR IONOSPHERE DELAY INPROPER [iL2]!");
    f = q - i1;
}

long double IONEXData::Bilinear(const TEC& m, long e, long b1, long double db, long double la) const
{
    long l1;
    long double dl;
    LonCell(la, l1, dl);
    return m(e, 0, b1, l1) * (1 - dl) * (1 - db) + m(e, 0, b1, l1 + 1) * dl * (1 - db)
           + m(e, 0, b1 + 1, l1) * (1 - dl) * db + m(e, 0, b1 + 1, l1 + 1) * dl * db;
}

long double IONEXData::CalcIonDelay(long double& secd, long double& beta, long double& la, long double& elev,
                                    int& Unit, int& Type, int& tecv)
{
    const IONEXHeader& h = *ihead;
    if (Type < 0 || Type > 2) {
        ProgramWarning("Orvo", "IONEX DELAY TYPE INCORRECT - USING TYPE 3!");
        Type = 2;
    }
    if (tecv != 0 && !hasRMS) ProgramError("Orvo", "IONEX file [" + file + "] has no RMS maps");
    const TEC& m = tecv == 0 ? TECVAL : TECRMS;

    long t1, b1;
    long double dsec, db;
    const long double ds = secd - EPH(0).GetSecond();
    Cell(ds / h.interval, neph, "SECONDS OF DAY", "iT", t1, dsec);
    dsec = (ds - t1 * static_cast<long double>(h.interval)) / h.interval;
    Cell((beta - h.lat2) / -h.dlat, nlat, "LATITUDE", "iB", b1, db);

    long double v;
    if (Type == 0) {
        long l1;
        long double dl;
        LonCell(la, l1, dl);
        v = m(dsec >= 0.5L ? t1 + 1 : t1, 0, db >= 0.5L ? b1 + 1 : b1, dl >= 0.5L ? l1 + 1 : l1);
    } else {
        // Type 2: each map is looked up where the point was, relative to the
        // Sun, at that map's epoch.
        const long double rot = 360.0L * h.interval / 86400.0L;
        const long double v1 = Bilinear(m, t1, b1, db, Type == 1 ? la : Wrap180(la + dsec * rot));
        const long double v2 = Bilinear(m, t1 + 1, b1, db, Type == 1 ? la : Wrap180(la - (1 - dsec) * rot));
        v = (1 - dsec) * v1 + dsec * v2;
    }

    // Single-layer obliquity at the shell height hgt1.
    const long double sinz = trig::Cos(elev * Pi / 180.0L) * h.BaseR / (h.hgt1 + h.BaseR);
    v /= std::sqrt(1.0L - sinz * sinz);
    return Unit == 0 ? v * IONEXns::TECU2m_L1 : v;
}
