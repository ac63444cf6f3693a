#pragma once
// Zenith delays and mapping values of one observation: what the troposphere
// selector hands to the observation corrections.
#include <ostream>

class gTropDelay {
public:
    long double tdry = 0.0L;   // zenith hydrostatic delay, m
    long double twet = 0.0L;   // zenith wet delay, m
    long double mfdry = 1.0L;  // hydrostatic mapping value
    long double mfwet = 1.0L;  // wet mapping value

    /// Zenith hydrostatic delay (m).
    long double ZenithDelayDry() const { return tdry; }
    /// Zenith wet delay (m).
    long double ZenithDelayWet() const { return twet; }
    /// Hydrostatic mapping value (slant over zenith delay, dimensionless).
    long double MappFunDry() const { return mfdry; }
    /// Wet mapping value; also the partial of the slant delay by the zenith
    /// wet delay.
    long double MappFunWet() const { return mfwet; }
    /// Slant hydrostatic delay (m), tdry*mfdry.
    long double DelayDry() const { return tdry * mfdry; }
    /// Slant wet delay (m), twet*mfwet.
    long double DelayWet() const { return twet * mfwet; }
    /// Total slant delay (m).
    long double Delay() const { return DelayDry() + DelayWet(); }
};

/// Writes mfdry (16.12), " x ", tdry (6.5), then mfwet and twet alike, in
/// fixed notation; the stream's format settings are restored afterwards.
std::ostream& operator<<(std::ostream& out, const gTropDelay& td);
