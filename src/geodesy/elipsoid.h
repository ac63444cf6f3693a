#pragma once
// Reference ellipsoids of the satellite systems' frames.

/// Rotational ellipsoid: semi-major axis a (m) and flattening f, chosen
/// from a fixed table by Set. Until Set both are 0, which the coordinate
/// conversions refuse.
class elipsoid {
public:
    long double a;  ///< semi-major axis, metres
    long double f;  ///< flattening

    /// An ellipsoid not yet chosen (a = f = 0).
    elipsoid() : a(0.0L), f(0.0L) {}
    /// The ellipsoid elp of the table of Set.
    explicit elipsoid(int elp);

    /// Chooses 0 GRS 80, 1 WGS 84, 2 PZ-90, 3 Bessel 1841, 4 the sphere of
    /// radius 6371 km. Any other number stops the run with
    /// "Improper ELLIPSOID setting!".
    void Set(int elp);

    /// Semi-major axis (m).
    long double GetA() const { return a; }
    /// Flattening.
    long double GetF() const { return f; }
    /// Semi-minor axis a (1 - f) (m).
    long double GetB() const { return a * (1.0L - f); }
    /// First eccentricity sqrt(2f - f^2).
    long double GetE() const;
    /// Square of the first eccentricity, 2f - f^2.
    long double GetESQR() const { return 2.0L * f - f * f; }
    /// Second eccentricity sqrt(a^2 - b^2) / b = e / (1 - f).
    long double GetE2() const;
    /// Second flattening (a - b) / b = f / (1 - f).
    long double GetF2() const { return f / (1.0L - f); }
};
