#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <sys/stat.h>

#include "TestSupport.h"
#include "numerics/cfilef.h"

using orvotest::Data;
using orvotest::TempDir;
using orvotest::WriteTemp;

TEST(FileExists, TrueForReadableFileFalseForMissingOrFolder)
{
    const std::string obs = Data("esbc-2020-177/esbc1770.20o");
    EXPECT_TRUE(FileExists(obs));
    EXPECT_TRUE(FileExists(obs.c_str()));
    EXPECT_FALSE(FileExists(TempDir() + "/no_such_file.20o"));
    EXPECT_FALSE(FileExists(""));
    EXPECT_FALSE(FileExists(static_cast<const char*>(nullptr)));
    // A folder opens on POSIX but is no input file.
    EXPECT_FALSE(FileExists(TempDir()));
}

TEST(RemFile, RemovesFileAndCountsMissingAsGone)
{
    const std::string path = WriteTemp("rem_me.b", "arc data");
    ASSERT_TRUE(FileExists(path));
    char name[256];
    std::strcpy(name, path.c_str());
    EXPECT_TRUE(RemFile(name));  // char* form
    EXPECT_FALSE(FileExists(path));
    EXPECT_TRUE(RemFile(path.c_str()));  // constant form, file already gone
    EXPECT_TRUE(RemFile((TempDir() + "/rem_me.b/inside").c_str()));  // path through a non-folder
}

TEST(RemFile, FalseWhenSomethingStaysBehind)
{
    // A folder with content cannot be removed: the name is still there.
    const std::string dir = TempDir() + "/rem_full_dir";
    mkdir(dir.c_str(), 0700);
    WriteTemp("rem_full_dir/keep.txt", "x");
    struct stat st;
    ASSERT_EQ(stat(dir.c_str(), &st), 0);
    ASSERT_TRUE(S_ISDIR(st.st_mode));
    EXPECT_FALSE(RemFile(dir.c_str()));
    EXPECT_EQ(stat(dir.c_str(), &st), 0);
}

TEST(PathSplit, BasenameAndDirnameAroundTheLastSeparator)
{
    char b[128], d[128];
    GetBasename("/data/esbc/esbc1770.20o", b, '/');
    GetDirname("/data/esbc/esbc1770.20o", d, '/');
    EXPECT_STREQ(b, "esbc1770.20o");
    EXPECT_STREQ(d, "/data/esbc");

    GetBasename("esbc1770.20o", b);
    GetDirname("esbc1770.20o", d);
    EXPECT_STREQ(b, "esbc1770.20o");  // no separator: all of it
    EXPECT_STREQ(d, "");              // and no folder

    GetBasename("out/", b);
    GetDirname("out/", d);
    EXPECT_STREQ(b, "");
    EXPECT_STREQ(d, "out");

    GetBasename("C:\\gnss\\igs.sp3", b, '\\');
    GetDirname("C:\\gnss\\igs.sp3", d, '\\');
    EXPECT_STREQ(b, "igs.sp3");
    EXPECT_STREQ(d, "C:\\gnss");

    // In place: the caller may split a name in its own buffer.
    char inplace[64] = "a/b/c.txt";
    GetDirname(inplace, inplace);
    EXPECT_STREQ(inplace, "a/b");
    GetBasename(inplace, inplace);
    EXPECT_STREQ(inplace, "b");
}
