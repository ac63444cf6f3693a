#include "delays/TEC.h"

#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <new>
#include <string>

namespace {

// Reports of this class stand on the output stream beside those of the
// matrix family, in the same frame.
[[noreturn]] void Fail(const std::string& text, long i, long n)
{
    const std::string stars(60, '*');
    std::cout << "\n" << stars << "\nTEC::ERROR:\n\n\t" << text << std::setw(5) << i << " -> [" << std::setw(5) << 0
              << "," << std::setw(5) << n - 1 << "]\n\n"
              << stars << "\nExiting program...\n\n";
    std::cout.flush();
    std::cerr.flush();
    std::exit(1);
}

}  // namespace

TEC::TEC() : nEpoch(0), nHght(0), nLat(0), nLon(0), tec(nullptr) {}

TEC::TEC(long nEpoch, long nHght, long nLat, long nLon) : TEC() { Resize(nEpoch, nHght, nLat, nLon, 0.0L); }

TEC::TEC(long nEpoch, long nHght, long nLat, long nLon, long double value) : TEC()
{
    Resize(nEpoch, nHght, nLat, nLon, value);
}

TEC::TEC(const TEC& other) : TEC() { *this = other; }

TEC& TEC::operator=(const TEC& other)
{
    if (this == &other) return *this;
    Allocate(other.nEpoch, other.nHght, other.nLat, other.nLon);
    const long n = nEpoch * nHght * nLat * nLon;
    for (long k = 0; k < n; ++k) tec[k] = other.tec[k];
    return *this;
}

TEC::~TEC() { delete[] tec; }

void TEC::Allocate(long ne, long nh, long nla, long nlo)
{
    // Each factor is checked before the product so the product can't wrap.
    const long dims[4] = {ne, nh, nla, nlo};
    long n = 1;
    for (long d : dims) {
        if (d < 0 || (d > 0 && n > TECns::MaxElements / d))
            Fail("Operator:   Resize\nTEC dimension not valid: ", d, TECns::MaxElements);
        n *= d;
    }
    delete[] tec;
    tec = nullptr;
    nEpoch = nHght = nLat = nLon = 0;
    if (n > 0) {
        tec = new (std::nothrow) long double[static_cast<std::size_t>(n)];
        if (tec == nullptr) Fail("Operator:   Resize\nTEC allocation failed: ", n, TECns::MaxElements);
    }
    nEpoch = ne, nHght = nh, nLat = nla, nLon = nlo;
}

void TEC::Resize(long ne, long nh, long nla, long nlo) { Resize(ne, nh, nla, nlo, 0.0L); }

void TEC::Resize(long ne, long nh, long nla, long nlo, long double value)
{
    Allocate(ne, nh, nla, nlo);
    const long n = nEpoch * nHght * nLat * nLon;
    for (long k = 0; k < n; ++k) tec[k] = value;
}

long TEC::Index(long e, long h, long lat, long lon) const
{
    if (tec == nullptr) Fail("Operator:   ()\nTEC object is not set: ", 0, 0);
    if (e < 0 || e >= nEpoch) Fail("Operator:   ()\nEpoch index not in range: ", e, nEpoch);
    if (h < 0 || h >= nHght) Fail("Operator:   ()\nHeight index not in range: ", h, nHght);
    if (lat < 0 || lat >= nLat) Fail("Operator:   ()\nLatitude index not in range: ", lat, nLat);
    if (lon < 0 || lon >= nLon) Fail("Operator:   ()\nLongitude index not in range: ", lon, nLon);
    return (lon + nLon * h) + (lat + nLat * e) * nLon * nHght;
}

long double& TEC::operator()(long e, long h, long lat, long lon) { return tec[Index(e, h, lat, lon)]; }

const long double& TEC::operator()(long e, long h, long lat, long lon) const { return tec[Index(e, h, lat, lon)]; }
