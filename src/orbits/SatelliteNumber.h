#pragma once
// The shared satellite numbering as the precise product files write it: a
// system letter and a two-digit PRN.

/// Satellite number of PRN prn of the system with letter sys: G (or a blank,
/// the older files' GPS) adds 0, R 100, E 200, C 300, J 500. Any other
/// letter (I, S, ...) is a system the program does not process: -1, a
/// number no caller asks for, so that its records are passed over instead
/// of standing in for the GPS satellite of the same PRN.
inline short PreciseSatelliteNumber(char sys, int prn)
{
    switch (sys) {
    case 'G':
    case ' ': return static_cast<short>(prn);
    case 'R': return static_cast<short>(prn + 100);
    case 'E': return static_cast<short>(prn + 200);
    case 'C': return static_cast<short>(prn + 300);
    case 'J': return static_cast<short>(prn + 500);
    default: return -1;
    }
}
