#include "numerics/cstringf.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

// The text length, 0 for a null pointer, so that the guards below can test
// positions against it.
int Length(const char* s) { return s ? static_cast<int>(std::strlen(s)) : 0; }

bool IsWhite(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Finds the start and length of the iw-th word; false when there is none.
bool FindWord(const char* niz, int iw, int& start, int& len)
{
    if (!niz || iw < 1) return false;
    int count = 0;
    int i = 0;
    while (niz[i] != '\0') {
        while (niz[i] != '\0' && IsWhite(niz[i])) ++i;
        if (niz[i] == '\0') break;
        const int s = i;
        while (niz[i] != '\0' && !IsWhite(niz[i])) ++i;
        if (++count == iw) {
            start = s;
            len = i - s;
            return true;
        }
    }
    return false;
}

// Shared body of the two sciNotation forms. Widths below 0 are clamped: a
// negative field width in the built pattern would turn into the left-adjust
// flag and a negative precision is not a precision at all.
void SciNotationLD(long double x, int nn, int nd, int ne, char* snum)
{
    if (!snum) return;
    if (nd < 0) nd = 0;
    if (ne < 0) ne = 0;
    int wBase = nn - ne - 1;
    if (wBase < 0) wBase = 0;

    // Below 1e-15 the logarithm says nothing useful: the number prints as 0.
    constexpr long double ZeroThres = 1e-15L;
    long double base = 0.0L;
    int expo = 0;
    if (!std::isfinite(x)) {
        base = x;
    } else if (std::fabs(x) >= ZeroThres) {
        expo = static_cast<int>(std::floor(std::log10(std::fabs(x))));
        base = x / std::pow(10.0L, static_cast<long double>(expo));
        // A logarithm that is not correctly rounded can land a hair below
        // the integer at a power of ten and leave a base of 10.
        if (std::fabs(base) >= 10.0L) {
            ++expo;
            base = x / std::pow(10.0L, static_cast<long double>(expo));
        }
    }

    char pattern[64];
    std::snprintf(pattern, sizeof pattern, "%%%d.%dLfe%%+0%dd", wBase, nd, ne);
    // The pattern is built from numbers only, so it holds exactly one long
    // double and one int conversion.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#endif
    std::sprintf(snum, pattern, base, expo);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

}  // namespace

void substr(const char* str1, int pos, int dol, char* str2)
{
    if (!str2) return;
    str2[0] = '\0';
    if (!str1 || pos < 0 || dol <= 0 || pos > Length(str1)) return;
    int i = 0;
    for (; i < dol && str1[pos + i] != '\0'; ++i) str2[i] = str1[pos + i];
    str2[i] = '\0';
}

void substr(const char* str1, int pos, char* str2)
{
    if (!str2) return;
    str2[0] = '\0';
    if (!str1 || pos < 0 || pos > Length(str1)) return;
    int i = 0;
    for (; str1[pos + i] != '\0'; ++i) str2[i] = str1[pos + i];
    str2[i] = '\0';
}

int indexLast(const char* str, char c)
{
    if (!str) return -1;
    const int n = Length(str);
    if (c == '\0') return n;
    for (int i = n - 1; i >= 0; --i)
        if (str[i] == c) return i;
    return -1;
}

void strcopy(char* str, char c, int nx)
{
    if (!str) return;
    int i = 0;
    for (; i < nx; ++i) str[i] = c;
    str[i] = '\0';
}

void strng(char* niz, char znak, int nznak) { strcopy(niz, znak, nznak); }

void fillstr(char* cstr, int finlen, char c)
{
    if (!cstr) return;
    if (finlen < 0) finlen = 0;
    for (int i = Length(cstr); i < finlen; ++i) cstr[i] = c;
    cstr[finlen] = '\0';
}

void trimr(char* niz)
{
    if (!niz) return;
    int n = Length(niz);
    while (n > 0 && niz[n - 1] == ' ') --n;
    niz[n] = '\0';
}

void triml(char* niz)
{
    if (!niz) return;
    int lead = 0;
    while (niz[lead] == ' ') ++lead;
    if (lead == 0) return;
    // Moves the terminator too; source and target overlap, hence memmove.
    std::memmove(niz, niz + lead, static_cast<std::size_t>(Length(niz + lead)) + 1);
}

void trim(char* niz)
{
    trimr(niz);
    triml(niz);
}

int cwords(const char* niz)
{
    if (!niz) return 0;
    int count = 0;
    bool inWord = false;
    for (int i = 0; niz[i] != '\0'; ++i) {
        const bool white = IsWhite(niz[i]);
        if (!white && !inWord) ++count;
        inWord = !white;
    }
    return count;
}

void gword(const char* niz, int iw, char* wrd)
{
    if (!wrd) return;
    int start = 0, len = 0;
    // wrd may be niz itself: the word starts at or after its own copy target,
    // so a forward copy is safe.
    if (!FindWord(niz, iw, start, len)) {
        wrd[0] = '\0';
        return;
    }
    for (int i = 0; i < len; ++i) wrd[i] = niz[start + i];
    wrd[len] = '\0';
}

void creplace(char* niz, char orig, char rep)
{
    if (!niz) return;
    for (int i = 0; niz[i] != '\0'; ++i)
        if (niz[i] == orig) {
            niz[i] = rep;
            // Writing a terminator ends the text here.
            if (rep == '\0') return;
        }
}

void creplace(char* niz, char orig, char rep, int n)
{
    if (!niz) return;
    for (int i = 0; i < n && niz[i] != '\0'; ++i)
        if (niz[i] == orig) {
            niz[i] = rep;
            if (rep == '\0') return;
        }
}

void sreplace(char* nizOrig, const char* ssOrig, const char* ssRep)
{
    if (!nizOrig || !ssOrig || !ssRep) return;
    const int nPat = Length(ssOrig);
    const int nText = Length(nizOrig);
    // An empty pattern would match everywhere and never advance.
    if (nPat == 0 || nPat != Length(ssRep) || nText < nPat) return;
    for (int i = 0; i + nPat <= nText;) {
        if (std::strncmp(nizOrig + i, ssOrig, static_cast<std::size_t>(nPat)) == 0) {
            std::memcpy(nizOrig + i, ssRep, static_cast<std::size_t>(nPat));
            i += nPat;
        } else {
            ++i;
        }
    }
}

void sciNotation(double x, int nn, int nd, int ne, char* snum)
{
    SciNotationLD(static_cast<long double>(x), nn, nd, ne, snum);
}

void sciNotation(long double x, int nn, int nd, int ne, char* snum)
{
    SciNotationLD(x, nn, nd, ne, snum);
}

void instr(char* niz, int ix, const char* iniz)
{
    if (!niz || !iniz || ix < 0) return;
    const int n = Length(niz);
    for (int i = 0; ix + i < n && iniz[i] != '\0'; ++i) niz[ix + i] = iniz[i];
}

void slower(char* niz)
{
    if (!niz) return;
    for (int i = 0; niz[i] != '\0'; ++i)
        niz[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(niz[i])));
}

void supper(char* niz)
{
    if (!niz) return;
    for (int i = 0; niz[i] != '\0'; ++i)
        niz[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(niz[i])));
}
