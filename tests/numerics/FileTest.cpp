// The program's contact with its surroundings: files and paths, the framed
// messages and the clock.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>
#include <sys/stat.h>

#include "TestSupport.h"
#include "numerics/CppCas.h"
#include "numerics/ProgramError.h"
#include "numerics/InputFile.h"
#include "numerics/cfilef.h"

using orvotest::TempDir;

TEST(Files, ExistenceRemovalAndPathSplitting) {
    const std::string obs = orvotest::Data("esbc-2020-177/esbc1770.20o"), path = orvotest::WriteTemp("rem_me.b", "arc");
    EXPECT_TRUE(FileExists(obs) && FileExists(obs.c_str()) && FileExists(path));
    EXPECT_FALSE(FileExists(TempDir() + "/no_such_file.20o") || FileExists("") || FileExists(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(FileExists(TempDir()));  // a folder opens on POSIX but is no input file
    char name[256];
    std::strcpy(name, path.c_str());
    EXPECT_TRUE(RemFile(name));  // char* form
    EXPECT_FALSE(FileExists(path));
    EXPECT_TRUE(RemFile(path.c_str()));  // already gone counts as removed
    EXPECT_TRUE(RemFile((TempDir() + "/rem_me.b/inside").c_str()));  // through a non-folder
    // A folder with content cannot be removed: the name is still there.
    const std::string dir = TempDir() + "/rem_full_dir";
    mkdir(dir.c_str(), 0700);
    orvotest::WriteTemp("rem_full_dir/keep.txt", "x");
    struct stat st;
    EXPECT_FALSE(RemFile(dir.c_str()));
    EXPECT_EQ(stat(dir.c_str(), &st), 0);

    const struct { const char* path; char sep; const char *base, *dir; } cases[] = {
        {"/data/esbc/esbc1770.20o", '/', "esbc1770.20o", "/data/esbc"}, {"esbc1770.20o", '/', "esbc1770.20o", ""},
        {"out/", '/', "", "out"}, {"C:\\gnss\\igs.sp3", '\\', "igs.sp3", "C:\\gnss"}};
    for (const auto& c : cases) {
        char b[128], d[128];
        GetBasename(c.path, b, c.sep);
        GetDirname(c.path, d, c.sep);
        EXPECT_STREQ(b, c.base);
        EXPECT_STREQ(d, c.dir);
    }
    char inplace[64] = "a/b/c.txt";  // the caller may split a name in its own buffer
    GetDirname(inplace, inplace);
    GetBasename(inplace, inplace);
    EXPECT_STREQ(inplace, "b");
}

// The regexes are anchored at both ends: the frame, its blank lines and the
// trailing blank of the "Exiting" line are all part of the contract. Each
// statement silences the other stream, so only the intended one can match.
TEST(ProgramMessages, ErrorsAndWarningsFrameTheirTextOnTheirOwnStream) {
    const std::string frame = "^\n\\*\\*\\*\\* Orvo: Error -> NO EPOCHS \\*\\*\\*\\*\n     Exiting Orvo \\.\\.\\. \n\n$";
    EXPECT_EXIT({ std::cout.rdbuf(nullptr); ProgramError("Orvo", "NO EPOCHS"); }, ::testing::ExitedWithCode(1), frame);
    EXPECT_EXIT({ std::cout.rdbuf(std::cerr.rdbuf()); std::cerr.rdbuf(nullptr); ProgramErrorCout("Orvo", "NO EPOCHS"); },
                ::testing::ExitedWithCode(1), frame);
    const std::string warning = "\n#### Orvo: Warning -> UNKNOWN PARAMETHER: -zz ####\n     Continuing Orvo ... \n\n";
    orvotest::Capture err(std::cerr), out(std::cout);
    ProgramWarning("Orvo", "UNKNOWN PARAMETHER: -zz");
    EXPECT_EQ(err.Text(), warning);
    ProgramWarningCout("Orvo", "UNKNOWN PARAMETHER: -zz");
    EXPECT_EQ(out.Text(), warning);
    EXPECT_EQ(err.Text(), warning);
}

namespace {
struct HookedExit { int status; };
[[noreturn]] void ThrowStatus(int status) { throw HookedExit{status}; }
void ReturnAtOnce(int) {}
}  // namespace

// The fuzz targets end an input at the exit hook; every kind of framed error
// must pass through it with status 1, and a hook that returns or none at all
// must still end the process with that status.
TEST(ProgramMessages, EveryErrorEndsThroughTheExitHook) {
    const struct { const char* what; void (*fail)(); } errors[] = {
        {"ProgramError", [] { ProgramError("Orvo", "X"); }}, {"ProgramErrorCout", [] { ProgramErrorCout("Orvo", "X"); }},
        {"ClassErrorCout", [] { ClassErrorCout("mjd", "X"); }}};
    orvotest::Capture err(std::cerr), out(std::cout);
    SetErrorExitHandler(ThrowStatus);
    for (const auto& e : errors) {
        int status = 0;
        try { e.fail(); } catch (const HookedExit& x) { status = x.status; }
        EXPECT_EQ(status, 1) << e.what;
    }
    SetErrorExitHandler(nullptr);
    EXPECT_EXIT({ SetErrorExitHandler(ReturnAtOnce); ErrorExit(1); }, ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(ErrorExit(1), ::testing::ExitedWithCode(1), "");
}

TEST(CppCas, DateTextAgreesWithTheFieldsAndStopTimesARunningMeasurement) {
    CppCas cas;
    // The clock may tick between calls: take a reading whose text is the
    // same before and after the getters ran.
    for (int attempt = 0; attempt < 5; ++attempt) {
        const std::string before = cas.Ascii();
        const int y = cas.LetoDt(), mo0 = cas.MesecDt(), d = cas.DanDt(), h = cas.Ura(), mi = cas.Min(), s = cas.Sec();
        if (before != cas.Ascii()) continue;
        // The text holds the calendar month, the getter the 0-based one.
        char expected[32];
        std::snprintf(expected, sizeof expected, "%4d-%02d-%02d  %02d:%02d:%02d", y, mo0 + 1, d, h, mi, s);
        EXPECT_EQ(before, expected);
        EXPECT_TRUE(mo0 >= 0 && mo0 <= 11 && d >= 1 && d <= 31 && y >= 2020) << before;
        break;
    }
    EXPECT_DOUBLE_EQ(cas.Stop(), 0.0);  // nothing started
    cas.Start();
    // Pocakaj polls the processor clock that Stop reads, so the elapsed time
    // cannot fall short of the wait by more than one clock tick.
    cas.Pocakaj(0.02L);
    EXPECT_GE(cas.Stop(), 0.02 - 1.0 / CLOCKS_PER_SEC);
    EXPECT_DOUBLE_EQ(cas.Stop(), 0.0);  // the measurement ended with the first Stop
}

// gzip(1) is the independent compressor here: what it writes, the reader must
// give back byte for byte, also as two concatenated members; a cut or flipped
// stream is a framed error, never a shorter text.
TEST(Files, GzipInputInflatesWhatGzipWroteAndRefusesDamagedStreams) {
    const std::string text = orvotest::FirstLines(orvotest::Data("esbc-2020-177/esbc1770.20o"), 3000);
    const std::string plain = orvotest::WriteTemp("z.20o", text), gz = plain + ".gz";
    ASSERT_EQ(std::system(("gzip -c " + plain + " > " + gz).c_str()), 0);
    EXPECT_TRUE(IsGzipFile(gz));
    EXPECT_FALSE(IsGzipFile(plain) || IsGzipFile(TempDir() + "/none.gz"));
    EXPECT_EQ(ReadInputFile(gz, "Orvo"), text);
    EXPECT_EQ(ReadInputFile(plain, "Orvo"), text);
    const std::string packed = orvotest::ReadFile(gz);
    EXPECT_EQ(ReadInputFile(orvotest::WriteTemp("two.gz", packed + packed), "Orvo"), text + text);

    std::string flipped = packed;
    flipped[flipped.size() - 6] ^= 0x55;  // inside the CRC-32 of the trailer
    const struct { std::string name, bytes, message; } bad[] = {
        {"cut.gz", packed.substr(0, packed.size() / 2), "GZIP STREAM CUT BEFORE ITS END AT BYTE"},
        {"crc.gz", flipped, "CORRUPT GZIP STREAM AT BYTE"},
    };
    for (const auto& b : bad) {
        const std::string path = orvotest::WriteTemp(b.name, b.bytes);
        EXPECT_EXIT(ReadInputFile(path, "Orvo"), ::testing::ExitedWithCode(1), b.message) << b.name;
    }
    EXPECT_EXIT(ReadInputFile(TempDir() + "/none.gz", "Orvo"), ::testing::ExitedWithCode(1), "CAN NOT BE OPENED");
}

TEST(Files, TextStreamReadsLinesInPlaceAndEndsAsAFileDoes) {
    const std::string text = "line one\nline two\n\nlast without newline";
    TextStream in(text);
    std::string line;
    std::vector<std::string> got;
    while (std::getline(in, line)) got.push_back(line);
    EXPECT_EQ(got, (std::vector<std::string>{"line one", "line two", "", "last without newline"}));
    EXPECT_TRUE(in.eof());
    TextStream numbers("  12.5 x");
    long double v = 0.0L;
    std::string word;
    EXPECT_TRUE(numbers >> v >> word);
    EXPECT_EQ(word, "x");
    EXPECT_NEAR(static_cast<double>(v), 12.5, 0.0);
}
