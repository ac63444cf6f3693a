#pragma once
// A small random stream of its own (splitmix64, Steele et al. 2014), so that
// one seed gives the same simulated files with every standard library.
#include <cmath>
#include <cstdint>

class SimRandom {
public:
    explicit SimRandom(std::uint64_t seed) : state(seed) {}
    /// Next 64 random bits.
    std::uint64_t Next()
    {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    /// Uniform in [lo, hi).
    long double Uniform(long double lo, long double hi)
    {
        const long double u = static_cast<long double>(Next() >> 11) * 0x1.0p-53L;
        return lo + (hi - lo) * u;
    }
    /// Whole number uniform in [lo, hi].
    long Integer(long lo, long hi)
    {
        const std::uint64_t span = static_cast<std::uint64_t>(hi - lo) + 1ULL;
        return lo + static_cast<long>(Next() % span);
    }
    /// Normal deviate of standard deviation sigma (Box-Muller); sigma 0
    /// gives exactly 0.
    long double Gauss(long double sigma)
    {
        if (!(sigma > 0.0L)) return 0.0L;
        // 1 - u keeps the logarithm's argument in (0, 1].
        const long double u1 = 1.0L - Uniform(0.0L, 1.0L);
        const long double u2 = Uniform(0.0L, 1.0L);
        return sigma * std::sqrt(-2.0L * std::log(u1)) * std::cos(2.0L * 3.14159265358979323846264338327950288L * u2);
    }

private:
    std::uint64_t state;
};
