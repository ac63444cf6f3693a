#pragma once
// Shared by the conditioning and epoch-check tests: cuts of the real
// observation files at epoch boundaries, GLONASS channels from the real
// side file, small made-up record stores, and stream capture.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "geodesy/mjd.h"
#include "observations/GLC.h"
#include "observations/GLONASSc.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

namespace condtest {

const std::string kEsbc = "esbc-2020-177/esbc1770.20o";
const std::string kEsbcFreq = "esbc-2020-177/esbc1770.20o.glofrq";
const std::string kZimm = "zimm-2015-235/ZIMM2350.15O";

/// One millisecond of receiver clock as range, m.
constexpr long double MSm = 299792.458L;
constexpr long double C = 299792458.0L;

/// The first nEpochs epochs of a real file, written once per process into
/// the scratch folder. An epoch line of these files begins with a blank and
/// the two-digit year, so the cut falls before the epoch line that opens
/// epoch nEpochs + 1 and no record is cut short.
inline std::string CutFile(const std::string& rel, int nEpochs)
{
    const std::string name = "cut_" + std::to_string(nEpochs) + "_"
                             + rel.substr(rel.find('/') + 1);
    const std::string path = orvotest::TempDir() + "/" + name;
    if (!orvotest::ReadFile(path).empty()) return path;
    std::ifstream in(orvotest::Data(rel));
    std::string line, out, yearPrefix;
    bool header = true;
    int epochs = 0;
    while (std::getline(in, line)) {
        if (header) {
            out += line + "\n";
            if (line.find("END OF HEADER") != std::string::npos) header = false;
            if (line.find("TIME OF FIRST OBS") != std::string::npos)
                yearPrefix = " " + line.substr(4, 2) + " ";
            continue;
        }
        const bool epochLine = line.size() > 32 && line.compare(0, 4, yearPrefix) == 0
                               && line[18] == '.';
        if (epochLine && ++epochs > nEpochs) break;
        out += line + "\n";
    }
    return orvotest::WriteTemp(name, out);
}

/// Header and data of a file read by the program's reader.
struct Loaded {
    RINEXHeader h;
    RINEXData d{h};
    RINEX rnx{h, d};
    explicit Loaded(const std::string& path)
    {
        rnx.SetFile(path);
        rnx.ReadFile();
    }
};

/// Fills the GLONASS tables from the real side file ("R01 1" per line).
inline void SetGlonassChannels()
{
    std::ifstream in(orvotest::Data(kEsbcFreq));
    std::string slot;
    long double k = 0;
    while (in >> slot >> k)
        GLONASSc::SetFrequency(k, static_cast<short>(std::stoi(slot.substr(1)) - 1));
}

/// Keeps the program-wide GLONASS tables and GLC coefficients as they were
/// before a test and gives them back afterwards.
class GlobalsGuard {
public:
    GlobalsGuard()
        : freq_(GLONASSc::freq), lamb_(GLONASSc::lamb), wl_(GLONASSc::lambWL),
          nl_(GLONASSc::lambNL), al_(GLONASSc::alphaG),
          glc_{GLC::LCion1, GLC::LCion2, GLC::LCwl1, GLC::LCwl2, GLC::LCnl1, GLC::LCnl2,
               GLC::lamb1,  GLC::lamb2,  GLC::lamb5, GLC::lamb3, GLC::lamb8, GLC::alpha}
    {
        ClearGlonass();
    }
    ~GlobalsGuard()
    {
        GLONASSc::freq = freq_;
        GLONASSc::lamb = lamb_;
        GLONASSc::lambWL = wl_;
        GLONASSc::lambNL = nl_;
        GLONASSc::alphaG = al_;
        long double* g[] = {&GLC::LCion1, &GLC::LCion2, &GLC::LCwl1, &GLC::LCwl2,
                            &GLC::LCnl1,  &GLC::LCnl2,  &GLC::lamb1, &GLC::lamb2,
                            &GLC::lamb5,  &GLC::lamb3,  &GLC::lamb8, &GLC::alpha};
        for (int i = 0; i < 12; ++i) *g[i] = glc_[i];
    }
    /// Every GLONASS row back to the never-set state.
    static void ClearGlonass()
    {
        GLONASSc::freq.Resize(GLONASSc::NSlots, 2, 0.0L);
        GLONASSc::lamb.Resize(GLONASSc::NSlots, 2, 0.0L);
        GLONASSc::lambWL.Resize(GLONASSc::NSlots, 1, 0.0L);
        GLONASSc::lambNL.Resize(GLONASSc::NSlots, 1, 0.0L);
        GLONASSc::alphaG.Resize(GLONASSc::NSlots, 2, 0.0L);
    }

private:
    matrix<long double> freq_, lamb_, wl_, nl_, al_;
    long double glc_[12];
};

/// A made-up record store: epochs 30 s apart from 2020-06-25 00:00, the
/// satellites of each epoch as given, every listed type sized and zero.
struct Synthetic {
    RINEXHeader h;
    RINEXData d{h};
    Synthetic(const std::vector<std::vector<short>>& epochs,
              const std::vector<unsigned short>& types)
    {
        long ns = 0;
        for (const auto& e : epochs) ns += static_cast<long>(e.size());
        const long ne = static_cast<long>(epochs.size());
        d.SetNRecords(ne, ns);
        d.epoch.Resize(ne, 1);
        d.flag.Resize(ne, 1, '0');
        d.nsat.Resize(ne, 1);
        d.sat.Resize(ns, 1);
        long r = 0;
        for (long i = 0; i < ne; ++i) {
            d.epoch(i) = mjd(59025, 30.0L * i);
            d.nsat(i) = static_cast<short>(epochs[i].size());
            for (short s : epochs[i]) d.sat(r++) = s;
        }
        std::vector<short> all;
        for (long k = 0; k < ns; ++k) all.push_back(d.sat(k));
        std::sort(all.begin(), all.end());
        all.erase(std::unique(all.begin(), all.end()), all.end());
        d.satList.Resize(static_cast<long>(all.size()), 1);
        for (std::size_t k = 0; k < all.size(); ++k) d.satList(static_cast<long>(k)) = all[k];
        for (unsigned short t : types) {
            *h.PresenceFlag(t) = true;
            if (matrix<gnssobs>* m = d.ObsMatrix(t)) m->Resize(ns, 1, gnssobs());
        }
        d.iend = ne;
    }
};

using orvotest::Capture;

/// Number of times pattern occurs in text.
inline int Occurrences(const std::string& text, const std::string& pattern)
{
    int n = 0;
    for (std::size_t p = text.find(pattern); p != std::string::npos;
         p = text.find(pattern, p + 1))
        n++;
    return n;
}

}  // namespace condtest
