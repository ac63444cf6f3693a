#pragma once
// Working coefficients of the dual-frequency combinations. Every
// combination function reads these, so whoever forms a combination loads
// them for the satellite's constellation first (LoadSystem does that).
#include "observations/GALILEOc.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"

namespace GLC {

inline long double LCion1 = GPSc::LCion1;
inline long double LCion2 = GPSc::LCion2;
inline long double LCwl1 = GPSc::LCwl1;
inline long double LCwl2 = GPSc::LCwl2;
inline long double LCnl1 = GPSc::LCnl1;
inline long double LCnl2 = GPSc::LCnl2;
inline long double lamb1 = GPSc::lamb1;     // m
inline long double lamb2 = GPSc::lamb2;     // m
inline long double lamb5 = GPSc::lamb5;     // m
inline long double lamb3 = GLONASSc::lamb3; // m
inline long double lamb8 = GALILEOc::lamb8; // m
inline long double alpha = GPSc::alpha;

/// Loads the coefficients for satellite number sat (PRN plus system base):
/// GPS (0..99) and Galileo (201..299) from their constants, GLONASS
/// (101..199) from the channel-independent constants with lamb1, lamb2 from
/// row sat - 101 of GLONASSc::lamb. Returns false and changes nothing for
/// any other number, and for a GLONASS slot beyond R32 or whose row
/// SetFrequency has not filled (its zero wavelengths would divide by zero
/// downstream).
bool LoadSystem(short sat);

}  // namespace GLC
