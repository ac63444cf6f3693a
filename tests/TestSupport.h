#pragma once
// Helpers shared by the test suites: paths of the real data sets and
// scratch files cut from them.
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <vector>
#include <system_error>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace orvotest {

/// Repository root, where the tests run; the real data lie beside it.
inline std::string SourceDir() { return ORVO_SOURCE_DIR; }

/// Path of a file of the shared real data, e.g. Data("esbc-2020-177/esbc1770.20o").
inline std::string Data(const std::string& rel) { return SourceDir() + "/../shared/data/" + rel; }

/// Path of a file of the shared reference material.
inline std::string Reference(const std::string& rel) { return SourceDir() + "/../shared/reference/" + rel; }

/// The orvo executable built beside the tests.
inline std::string OrvoBinary() { return ORVO_BINARY; }

/// Removes the scratch folder when the process that made it ends. A death
/// test's child is a fork that exits through the same destructors, so only
/// the owning process may remove it.
struct ScratchFolder {
    std::string dir;
    pid_t owner = 0;
    ~ScratchFolder()
    {
        if (!dir.empty() && getpid() == owner) {
            std::error_code ec;
            std::filesystem::remove_all(dir, ec);
        }
    }
};

/// A scratch folder private to this test process, created on first use and
/// removed at its end.
inline std::string TempDir()
{
    static ScratchFolder scratch;
    if (scratch.dir.empty()) {
        char tmpl[] = "/tmp/orvo_test_XXXXXX";
        const char* d = mkdtemp(tmpl);
        if (d == nullptr) {
            std::fprintf(stderr, "orvotest: cannot create a scratch folder in /tmp\n");
            std::abort();
        }
        scratch.dir = d;
        scratch.owner = getpid();
    }
    return scratch.dir;
}

/// Writes text to a scratch file and returns its path.
inline std::string WriteTemp(const std::string& name, const std::string& text)
{
    const std::string path = TempDir() + "/" + name;
    std::ofstream out(path, std::ios::binary);
    out << text;
    return path;
}

/// The whole content of a file, empty when it does not open.
inline std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

/// The first n lines of a file, each with its newline.
inline std::string FirstLines(const std::string& path, int n)
{
    std::ifstream in(path, std::ios::binary);
    std::string line, out;
    for (int i = 0; i < n && std::getline(in, line); ++i) out += line + "\n";
    return out;
}

/// Everything written on a stream while the object lives; the stream's
/// format flags and precision are restored with its buffer, so a routine
/// under test that switches notation does not leak into the next test.
class Capture {
public:
    explicit Capture(std::ostream& s)
        : s_(s), old_(s.rdbuf(buf_.rdbuf())), flags_(s.flags()), prec_(s.precision()) {}
    ~Capture()
    {
        s_.rdbuf(old_);
        s_.flags(flags_);
        s_.precision(prec_);
    }
    std::string Text() const { return buf_.str(); }

private:
    std::ostream& s_;
    std::ostringstream buf_;
    std::streambuf* old_;
    std::ios_base::fmtflags flags_;
    std::streamsize prec_;
};

/// Chooses the records of one epoch to keep from its satellite fields ("G05", "E11", ...).
using Selector = std::function<std::vector<bool>(const std::vector<std::string>&)>;

inline std::vector<bool> KeepAll(const std::vector<std::string>& sats) { return std::vector<bool>(sats.size(), true); }

/// Writes into the scratch folder the header of the RINEX 2 file `src` (with `from` replaced by `to`
/// in the header) and its first `nEpochs` epochs, each with the records that `keep` chooses; with
/// `blankPhase` the L1 and L2 fields (third field of a record's first two lines) are blanked.
inline std::string CutObs(const std::string& src, const std::string& name, long nEpochs, const Selector& keep = KeepAll,
                          const std::string& from = "", const std::string& to = "", bool blankPhase = false) {
    std::ifstream in(src);
    std::string line, out;
    int nTypes = 0;
    while (std::getline(in, line)) {
        if (line.find("# / TYPES OF OBSERV") != std::string::npos && nTypes == 0) nTypes = std::atoi(line.substr(0, 6).c_str());
        const size_t p = from.empty() ? std::string::npos : line.find(from);
        if (p < 60) line.replace(p, from.size(), to);
        out += line + "\n";
        if (line.find("END OF HEADER") != std::string::npos) break;
    }
    for (long e = 0; e < nEpochs && std::getline(in, line); ++e) {
        const std::string head = line.substr(0, 29);
        const int n = std::atoi(line.substr(29, 3).c_str());
        std::vector<std::string> sats, records(n);
        for (int s = 0; s < n; ++s) {
            if (s > 0 && s % 12 == 0) std::getline(in, line);
            sats.push_back(line.substr(32 + 3 * (s % 12), 3));
        }
        for (int s = 0; s < n; ++s)
            for (int l = 0; l < (nTypes + 4) / 5 && std::getline(in, line); ++l) {
                if (blankPhase && l < 2)
                    line.resize(std::max<size_t>(line.size(), 48), ' '), line.replace(32, 16, 16, ' '),
                        line.erase(line.find_last_not_of(' ') + 1);
                records[s] += line + "\n";
            }
        const std::vector<bool> k = keep(sats);
        std::string list, body;
        int kept = 0;
        for (int s = 0; s < n; ++s)
            if (k[s]) list += (kept > 0 && kept % 12 == 0 ? "\n" + std::string(32, ' ') : "") + sats[s], body += records[s], ++kept;
        char count[12];
        std::snprintf(count, sizeof count, "%3d", kept);
        out += head + count + list + "\n" + body;
    }
    return WriteTemp(name, out);
}

}  // namespace orvotest
