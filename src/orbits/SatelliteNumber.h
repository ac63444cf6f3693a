#pragma once
// The shared satellite numbering as the precise product files write it: a
// system letter and a two-digit PRN.

/// Satellite number of PRN prn of the system with letter sys: G adds 0,
/// R 100, E 200, C 300, J 500; any other letter adds nothing, so such a
/// satellite reads as the GPS satellite of the same PRN.
inline short PreciseSatelliteNumber(char sys, int prn)
{
    switch (sys) {
    case 'R': return static_cast<short>(prn + 100);
    case 'E': return static_cast<short>(prn + 200);
    case 'C': return static_cast<short>(prn + 300);
    case 'J': return static_cast<short>(prn + 500);
    default: return static_cast<short>(prn);
    }
}
