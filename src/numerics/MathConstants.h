#pragma once
// Mathematical and physical constants shared by every subsystem, in long
// double.

/// π to more digits than long double holds.
inline constexpr long double Pi = 3.14159265358979323846264338327950288L;

/// Degrees to radians: the factor of an angle read from a file or an option.
inline constexpr long double Deg2Rad = Pi / 180.0L;

/// Radians to degrees: the factor of an angle handed to a model or a file
/// that works in degrees.
inline constexpr long double Rad2Deg = 180.0L / Pi;

/// Speed of light in vacuum (m/s), exact by the definition of the metre.
inline constexpr long double SpeedOfLight_mps = 299792458.0L;
/// Its reciprocal (s/m): a product costs a fraction of a division.
inline constexpr long double PerSpeedOfLight_spm = 1.0L / SpeedOfLight_mps;
