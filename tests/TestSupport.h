#pragma once
// Helpers shared by the test suites: paths of the real data sets and
// scratch files cut from them.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
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

/// Copies the header and the first nEpochs epochs of a RINEX 2 observation
/// file to `name` in the scratch folder and returns its path; with
/// blankPhase the L1 and L2 fields (third field of the first and second line
/// of each record, the layout of the ESBC file) are blanked.
inline std::string CutObs(const std::string& src, const std::string& name, long nEpochs,
                          bool blankPhase = false)
{
    std::ifstream in(src);
    const std::string path = TempDir() + "/" + name;
    std::ofstream out(path);
    std::string line;
    int nTypes = 0;
    while (std::getline(in, line)) {
        out << line << "\n";
        if (line.find("# / TYPES OF OBSERV") != std::string::npos && line.size() > 6 &&
            line.substr(0, 6) != "      ")
            nTypes = std::atoi(line.substr(0, 6).c_str());
        if (line.find("END OF HEADER") != std::string::npos) break;
    }
    const int linesPerSat = (nTypes + 4) / 5;
    for (long ep = 0; ep < nEpochs && std::getline(in, line); ++ep) {
        out << line << "\n";
        const int nSat = line.size() >= 32 ? std::atoi(line.substr(29, 3).c_str()) : 0;
        for (int c = 0; c < (nSat - 1) / 12 && std::getline(in, line); ++c) out << line << "\n";
        for (int s = 0; s < nSat; ++s)
            for (int r = 0; r < linesPerSat && std::getline(in, line); ++r) {
                if (blankPhase && r < 2) {
                    line.resize(80, ' ');
                    line.replace(32, 16, 16, ' ');
                    line.erase(line.find_last_not_of(' ') + 1);
                }
                out << line << "\n";
            }
    }
    return path;
}

}  // namespace orvotest
