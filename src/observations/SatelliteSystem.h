#pragma once
// The satellite number that every stage shares: the PRN plus a system base,
// GPS 0 (PRN up to 99), GLONASS 100 (slot + 100, 101 to 199), Galileo 200
// (201 to 299). Every test of a system goes through these ranges.

/// The systems in the order of their per-system tables (counters, weights,
/// inter-system bias columns); SysNone for a number outside every range.
enum SatSystem { SysGPS = 0, SysGLN = 1, SysGAL = 2, SysNone = 3 };

/// System of satellite number sat; SysNone below 0, at 100 and 200, and
/// above 299.
inline SatSystem SystemOf(short sat)
{
    if (sat >= 0 && sat <= 99) return SysGPS;
    if (sat >= 101 && sat <= 199) return SysGLN;
    if (sat >= 201 && sat <= 299) return SysGAL;
    return SysNone;
}

/// The report letter of sat's system: 'G', 'R', 'E'; ' ' for SysNone.
inline char SystemLetter(short sat)
{
    switch (SystemOf(sat)) {
    case SysGPS: return 'G';
    case SysGLN: return 'R';
    case SysGAL: return 'E';
    default: return ' ';
    }
}

/// The PRN (or GLONASS slot) of sat: the number less its system base.
inline int SystemPRN(short sat)
{
    switch (SystemOf(sat)) {
    case SysGLN: return sat - 100;
    case SysGAL: return sat - 200;
    default: return sat;
    }
}
