#include "preprocessing/BroadcastSatellite.h"

#include "observations/SatelliteSystem.h"

bool BroadcastSatellite(gCPosC& gc, short sat, mjd& eph, xyzt& pos, long double& dist,
                        long double& relativity)
{
    xyz rec = gc.RecPosFC;
    mjd tindex = eph;
    switch (SystemOf(sat)) {
    case SysGPS:
        if (!gc.isGPSnav) return false;
        dist = gc.gpsnav.CalcSatPosition(static_cast<unsigned short>(sat), eph, tindex, rec, pos,
                                         nullptr, 0, 0);
        relativity = gc.gpsnav.GetRelativity();
        return true;
    case SysGAL:
        if (!gc.isGALnav) return false;
        dist = gc.galnav.CalcSatPosition(static_cast<unsigned short>(sat), eph, tindex, rec, pos,
                                         nullptr, 0, 0);
        relativity = gc.galnav.GetRelativity();
        return true;
    case SysGLN: {
        if (!gc.isGLNnav) return false;
        xyzt vel;
        dist = gc.glnnav.CalcSatPosition(static_cast<short>(sat - 100), eph, tindex, rec, pos, vel, 0);
        relativity = gc.glnnav.GetRelativity();
        return true;
    }
    default:
        return false;
    }
}
