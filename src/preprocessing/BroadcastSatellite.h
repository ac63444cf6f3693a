#pragma once
// The broadcast route to a satellite's state: the navigation file of its
// system, when one was given, answers for the correction stage and for the
// adjustment alike.
#include "driver/gCPosC.h"

/// When the navigation file of sat's system is present (isGPSnav, isGLNnav
/// with the slot sat - 100, isGALnav with the shared number): the
/// satellite's position at transmission for a signal received at eph by the
/// antenna at gc.RecPosFC (light time and the Earth's rotation iterated by
/// the file's class), its broadcast clock (s, relativity included) in
/// pos.dt, the geometric distance (m) in dist and the relativity term (s)
/// that the caller may take out in relativity; `usable` is false when the
/// record chosen for eph is marked unhealthy (its health field not 0), so
/// that the satellite is not used at that epoch. Returns true. Returns
/// false and changes nothing for a system without a navigation file. A
/// satellite that the file does not list ends the run with the file's
/// framed error.
bool BroadcastSatellite(gCPosC& gc, short sat, mjd& eph, xyzt& pos, long double& dist,
                        long double& relativity, bool& usable);
