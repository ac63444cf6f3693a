#include "numerics/cfilef.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sys/stat.h>

bool FileExists(const char* f)
{
    if (!f) return false;
    // A folder opens for reading on POSIX systems but yields no lines; as an
    // input file it is as good as missing.
    struct stat st;
    if (stat(f, &st) == 0 && S_ISDIR(st.st_mode)) return false;
    std::ifstream in(f);
    return in.is_open();
}

bool FileExists(const std::string& f) { return FileExists(f.c_str()); }

bool RemFile(const char* file)
{
    if (!file) return false;
    if (std::remove(file) == 0) return true;
    // Nothing there to remove counts as success: the caller wants it gone.
    return errno == ENOENT || errno == ENOTDIR;
}

bool RemFile(char* file) { return RemFile(static_cast<const char*>(file)); }

void GetBasename(const char* file, char* bname, char sep)
{
    if (!bname) return;
    // bname may be file itself: read the name before writing anything.
    if (!file) {
        bname[0] = '\0';
        return;
    }
    const char* last = std::strrchr(file, sep);
    const char* from = last ? last + 1 : file;
    std::memmove(bname, from, std::strlen(from) + 1);
}

void GetDirname(const char* file, char* dname, char sep)
{
    if (!dname) return;
    if (!file) {
        dname[0] = '\0';
        return;
    }
    const char* last = std::strrchr(file, sep);
    if (!last) {
        dname[0] = '\0';
        return;
    }
    const std::size_t n = static_cast<std::size_t>(last - file);
    std::memmove(dname, file, n);
    dname[n] = '\0';
}
