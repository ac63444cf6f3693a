#include "reporting/PrintResStatic.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>

#include "estimation/StoredTypes.h"
#include "numerics/MathConstants.h"
#include "numerics/ProgramError.h"

namespace {

// Little-endian bytes of an unsigned value of n bytes.
void PutUnsigned(std::ofstream& out, std::uint64_t v, int n)
{
    for (int i = 0; i < n; ++i) out.put(static_cast<char>((v >> (8 * i)) & 0xFF));
}

// The 80-bit extended value in the first 10 bytes, zeros in the last 6,
// whatever the compiler leaves there.
void PutLongDouble(std::ofstream& out, long double v)
{
    unsigned char b[16] = {};
    static_assert(sizeof(long double) >= 10, "80-bit extended long double expected");
    std::memcpy(b, &v, 10);
    out.write(reinterpret_cast<const char*>(b), 16);
}

}  // namespace

void PrintResStatic(gCPosC& gc)
{
    if (!gc.ifEstSta || !gc.isresfile) return;
    if (gc.verbose)
        std::cerr << "Orvo::PrintResStatic(): WRITING RESIDUALS OF STATIC SOLUTION -> " << gc.resfile << "\n";
    std::ofstream out(gc.resfile, std::ios::binary);
    if (!out) {
        ProgramWarning("Orvo", "RESIDUAL FILE CAN NOT BE OPENED - NO RESIDUALS WRITTEN!");
        return;
    }
    const RINEXData& d = gc.rnxd;
    PutUnsigned(out, static_cast<std::uint16_t>(d.GetNSat()), 2);
    for (long s = 0; s < d.GetNSat(); ++s) PutUnsigned(out, static_cast<std::uint16_t>(d.GetSat(s)), 2);

    const std::array<StoredType, 6> types = StoredTypes(gc);
    const long n = d.GetNObs();
    const bool geometry = gc.ELV.NRow() >= n && gc.AZM.NRow() >= n;
    long total = 0;
    for (long i = 0, k0 = 0; i < d.GetNEpoch(); k0 += d.nsat(i), ++i) {
        const long k1 = std::min(k0 + d.nsat(i), n);
        long nobs = 0;
        for (long k = k0; k < k1; ++k)
            for (const StoredType& t : types) nobs += t.on && t.used(k);
        if (nobs == 0 || !geometry) continue;
        PutUnsigned(out, d.epoch(i).GetMJDay(), 4);
        PutLongDouble(out, d.epoch(i).GetSecond());
        PutUnsigned(out, static_cast<std::uint32_t>(nobs), 4);
        for (long k = k0; k < k1; ++k)
            for (int t = 0; t < 6; ++t) {
                if (!types[t].on || !types[t].used(k)) continue;
                PutUnsigned(out, static_cast<std::uint16_t>(d.sat(k)), 2);
                PutUnsigned(out, static_cast<std::uint16_t>(t), 2);
                PutLongDouble(out, types[t].f(k));
                PutLongDouble(out, gc.ELV(k) * Rad2Deg);
                PutLongDouble(out, gc.AZM(k) * Rad2Deg);
                out.put(types[t].rejected(k) ? 1 : 0);
            }
        total += nobs;
    }
    out.close();
    if (gc.verbose) std::cerr << "Orvo::PrintResStatic(): " << total << " RESIDUALS!\n";
}
