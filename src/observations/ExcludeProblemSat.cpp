#include "observations/ExcludeProblemSat.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "driver/Console.h"
#include "numerics/ProgramError.h"

namespace {

const char* const Echo = "Orvo::ExcludeProblemSat(): ";

// Clears one observation when its type exists and it holds a value; true
// when it did.
bool Clear(bool listed, matrix<gnssobs>& m, long r)
{
    if (!listed || r >= m.Length() || m(r).IsNull()) return false;
    m(r) = gnssobs();
    return true;
}

}  // namespace

void ExcludeProblemSat(RINEXHeader& rnxh, RINEXData& rnxd, SatCRX& scrx, bool isSCrx,
                       bool verbose)
{
    if (!isSCrx) return;
    ProgramSubSubTitle("EXCLUDING PROBLEMATIC SATELLITES:", 0);
    if (verbose) std::cerr << Echo << "EXCLUDING PROBLEMATIC SATELLITES!\n";

    long nSats = 0, nObs = 0, nPhase = 0, nCode = 0;
    for (long k = 0; k < scrx.GetNSat(); ++k) {
        const short s = scrx.sat(k);
        const short problem = scrx.TypAct(k, SatCRX::PROBLEM);
        const bool phase = problem == 1 || problem == 3;
        const bool code = problem == 2 || problem == 3;
        long obs = 0, phs = 0, cod = 0;
        long r = 0;
        for (long i = 0; i < rnxd.nepochall && r < rnxd.nsatall; ++i) {
            const long end = std::min(r + static_cast<long>(rnxd.nsat(i)), rnxd.nsatall);
            const mjd& t = rnxd.epoch(i);
            if (t < scrx.eph(k, SatCRX::FROM) || t > scrx.eph(k, SatCRX::TO)) {
                r = end;
                continue;
            }
            for (; r < end; ++r) {
                if (rnxd.sat(r) != s) continue;
                if (!phase && !code) {
                    ProgramWarning("Orvo",
                                   "UNKNOWN PROBLEM FROM SATELLITE PROBLEM FILE - EXPECTED 1|2|3");
                    continue;
                }
                if (phase) {
                    const long n = Clear(rnxh.iL1, rnxd.L1, r) + Clear(rnxh.iL2, rnxd.L2, r);
                    phs += n;
                    obs += n;
                }
                if (code) {
                    const long n = Clear(rnxh.iC1, rnxd.C1, r) + Clear(rnxh.iP1, rnxd.P1, r)
                                   + Clear(rnxh.iP2, rnxd.P2, r);
                    cod += n;
                    obs += n;
                }
            }
        }
        if (obs == 0) continue;
        std::cout << "  SAT: " << std::setw(4) << s << "    #OBS: " << std::setw(6) << obs
                  << "    #PHS: " << std::setw(6) << phs << "    #COD: " << std::setw(6) << cod
                  << "\n";
        nSats++;
        nObs += obs;
        nPhase += phs;
        nCode += cod;
    }

    if (nSats > 0) std::cout << "\n";
    std::cout << "  Number of problematic satellites    : " << std::setw(6) << nSats << "\n"
              << "  Number of problematic observations  : " << std::setw(6) << nObs << "\n"
              << "                 PHASE observations   : " << std::setw(6) << nPhase << "\n"
              << "                 CODE observations    : " << std::setw(6) << nCode << "\n\n\n";
    if (verbose)
        std::cerr << Echo << "        Excluding: " << nSats << " sats  " << nObs << " obs  ->  "
                  << nPhase << " phase  " << nCode << " code\n";
}
