#pragma once
// Shared by the staging and correction tests: a context owned with its
// observation objects, and cut variants of the real observation file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "driver/gCPosC.h"
#include "observations/RINEX.h"
#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

namespace stagingtest {

const std::string kSet = "esbc-2020-177/";
inline std::string Obs() { return orvotest::Data(kSet + "esbc1770.20o"); }
inline std::string Sp3() { return orvotest::Data(kSet + "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3"); }
inline std::string Clk() { return orvotest::Data(kSet + "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK"); }

/// Owns what a context refers to, built in the order main builds it.
struct Context {
    RINEXHeader rnxh;
    RINEXData rnxd{rnxh};
    RINEX rnx{rnxh, rnxd};
    gCPosC gc{rnxh, rnxd, rnx};
};

inline void SetName(char* member, const std::string& name)
{
    ASSERT_LT(name.size(), static_cast<size_t>(gCPosCns::FileNameSize));
    std::strcpy(member, name.c_str());
}

using orvotest::Capture;

/// Chooses the records of one epoch to keep from its satellite fields
/// ("G05", "E11", ...).
using Selector = std::function<std::vector<bool>(const std::vector<std::string>&)>;

inline std::vector<bool> KeepAll(const std::vector<std::string>& sats)
{
    return std::vector<bool>(sats.size(), true);
}

/// Writes into the scratch folder a RINEX file cut from the real one: its
/// header (with `replaceFrom` replaced by `replaceTo` in the header, when
/// given), then `nEpochs` epochs from epoch `first`, each with the records
/// that `keep` chooses. Returns the path.
inline std::string CutObs(const std::string& name, long first, long nEpochs,
                          const Selector& keep = KeepAll, const std::string& replaceFrom = "",
                          const std::string& replaceTo = "")
{
    std::ifstream in(Obs());
    std::ostringstream out;
    std::string line;
    int nTypes = 0;
    while (std::getline(in, line)) {
        if (line.find("# / TYPES OF OBSERV") != std::string::npos && nTypes == 0)
            nTypes = std::atoi(line.substr(0, 6).c_str());
        if (!replaceFrom.empty()) {
            const size_t p = line.find(replaceFrom);
            if (p != std::string::npos && p < 60) line.replace(p, replaceFrom.size(), replaceTo);
        }
        out << line << "\n";
        if (line.find("END OF HEADER") != std::string::npos) break;
    }
    const int linesPerRecord = (nTypes + 4) / 5;
    for (long e = 0; e < first + nEpochs && std::getline(in, line); ++e) {
        const std::string head = line.substr(0, 29);
        const int n = std::atoi(line.substr(29, 3).c_str());
        std::vector<std::string> sats;
        for (int s = 0; s < n; ++s) {
            if (s > 0 && s % 12 == 0) std::getline(in, line);
            sats.push_back(line.substr(32 + 3 * (s % 12), 3));
        }
        std::vector<std::string> records(n);
        for (int s = 0; s < n; ++s)
            for (int l = 0; l < linesPerRecord; ++l) {
                std::getline(in, line);
                records[s] += line + "\n";
            }
        if (e < first) continue;
        const std::vector<bool> k = keep(sats);
        std::vector<int> idx;
        for (int s = 0; s < n; ++s)
            if (k[s]) idx.push_back(s);
        char count[8];
        std::snprintf(count, sizeof count, "%3d", static_cast<int>(idx.size()));
        out << head << count;
        for (size_t s = 0; s < idx.size(); ++s) {
            if (s > 0 && s % 12 == 0) out << "\n" << std::string(32, ' ');
            out << sats[idx[s]];
        }
        out << "\n";
        for (int s : idx) out << records[s];
    }
    return orvotest::WriteTemp(name, out.str());
}

}  // namespace stagingtest
