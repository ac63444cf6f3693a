#include "preprocessing/BroadcastSatellite.h"

#include <cmath>

#include "observations/SatelliteSystem.h"

namespace {

// Position and clock from a Keplerian navigation file (GPS, Galileo).
bool Keplerian(GPSbEph& nav, short sat, mjd& eph, xyz& rec, xyzt& pos, long double& dist,
               long double& relativity)
{
    mjd tindex = eph;
    dist = nav.CalcSatPosition(static_cast<unsigned short>(sat), eph, tindex, rec, pos, nullptr, 0, 0);
    relativity = nav.GetRelativity();
    return std::fabs(nav.GetData().data(nav.GetLastIndex(), GPSbEphData::SVHEALTH)) < 0.5L;
}

}  // namespace

bool BroadcastSatellite(gCPosC& gc, short sat, mjd& eph, xyzt& pos, long double& dist,
                        long double& relativity, bool& usable)
{
    xyz rec = gc.RecPosFC;
    switch (SystemOf(sat)) {
    case SysGPS:
        if (!gc.isGPSnav) return false;
        usable = Keplerian(gc.gpsnav, sat, eph, rec, pos, dist, relativity);
        return true;
    case SysGAL:
        if (!gc.isGALnav) return false;
        usable = Keplerian(gc.galnav, sat, eph, rec, pos, dist, relativity);
        return true;
    case SysGLN: {
        if (!gc.isGLNnav) return false;
        const short slot = static_cast<short>(sat - 100);
        mjd tindex = eph;
        xyzt vel;
        dist = gc.glnnav.CalcSatPosition(slot, eph, tindex, rec, pos, vel, 0);
        relativity = gc.glnnav.GetRelativity();
        usable = dist > 0.0L
                 && std::fabs(gc.glnnav.GetData().data(gc.glnnav.GetLastIndex(), GLNbEphData::HEALTH)) < 0.5L;
        return true;
    }
    default:
        return false;
    }
}
