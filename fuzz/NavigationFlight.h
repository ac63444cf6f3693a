#pragma once
// The question the navigation targets ask of what was read: the first
// record's satellite a quarter of an hour after its epoch, seen from ESBC.
// Each reads its file as the program does for -eg/-ee (a Keplerian system,
// 'G' or 'E') or -er (GLONASS), with a framed error ending the input.
#include <string>

#include "FuzzSupport.h"
#include "orbits/GLNbEph.h"
#include "orbits/GPSbEph.h"

namespace orvofuzz {

inline const xyz& FlightReceiver()
{
    static const xyz rec(3582105.291L, 532589.731L, 5232754.805L);
    return rec;
}

/// Reads the file set on n and hands compute its first record's satellite
/// and the epoch a quarter of an hour after that record.
template <class Reader, class Compute>
void Fly(Reader& n, Compute compute)
{
    Run([&] {
        n.ReadFile();
        if (n.GetNSat() < 1) return;
        mjd t = n.GetMJD(0);
        t += 900.0L;
        mjd tindex = t;
        xyz rec = FlightReceiver();
        compute(t, tindex, rec);
    });
}

/// Reads path as the GPS or Galileo navigation file of system sys and
/// computes its first satellite.
inline void FlyKeplerian(const std::string& path, char sys)
{
    GPSbEph n;
    n.SetFile(path.c_str());
    n.SetSystem(sys);
    Fly(n, [&](mjd& t, mjd& tindex, xyz& rec) {
        xyzt pos;
        n.CalcSatPosition(static_cast<unsigned short>(n.GetData().sat(0)), t, tindex, rec, pos, nullptr, 0, 0);
    });
}

/// Reads path as the GLONASS navigation file and integrates its first
/// satellite.
inline void FlyGlonass(const std::string& path)
{
    GLNbEph n;
    n.SetFile(path.c_str());
    Fly(n, [&](mjd& t, mjd& tindex, xyz& rec) {
        xyzt pos, vel;
        n.CalcSatPosition(n.GetData().sat(0), t, tindex, rec, pos, vel, 0);
    });
}

}  // namespace orvofuzz
