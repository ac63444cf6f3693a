#include "numerics/CppCas.h"

#include <cstdio>

struct tm CppCas::zeroTime = {};

CppCas::CppCas()
    : rawtime(0), startUra(0), stopUra(0), timeinfo(&zeroTime), casTece(false), ascii{}
{
    Update();
}

void CppCas::Update()
{
    std::time(&rawtime);
    struct tm* t = std::localtime(&rawtime);
    timeinfo = t ? t : &zeroTime;
}

const char* CppCas::Ascii()
{
    Update();
    // Fields out of their ranges (a year past 9999) would widen the text;
    // the wide buffer takes them and the copy keeps ascii terminated.
    char wide[80];
    std::snprintf(wide, sizeof wide, "%4d-%02d-%02d  %02d:%02d:%02d", timeinfo->tm_year + 1900,
                  timeinfo->tm_mon + 1, timeinfo->tm_mday, timeinfo->tm_hour, timeinfo->tm_min,
                  timeinfo->tm_sec);
    std::snprintf(ascii, sizeof ascii, "%.24s", wide);
    return ascii;
}

int CppCas::LetoDt() { Update(); return timeinfo->tm_year + 1900; }
int CppCas::MesecDt() { Update(); return timeinfo->tm_mon; }
int CppCas::DanDt() { Update(); return timeinfo->tm_mday; }
int CppCas::Ura() { Update(); return timeinfo->tm_hour; }
int CppCas::Min() { Update(); return timeinfo->tm_min; }
int CppCas::Sec() { Update(); return timeinfo->tm_sec; }

void CppCas::Start()
{
    casTece = true;
    startUra = std::clock();
}

double CppCas::Stop()
{
    if (!casTece) return 0.0;
    casTece = false;
    stopUra = std::clock();
    return static_cast<double>(stopUra - startUra) / CLOCKS_PER_SEC;
}

void CppCas::Pocakaj(long double s)
{
    const clock_t start = std::clock();
    // clock() gives -1 without a processor clock: polling it would never end.
    if (s <= 0.0L || start == static_cast<clock_t>(-1)) return;
    const long double ticks = s * static_cast<long double>(CLOCKS_PER_SEC);
    while (static_cast<long double>(std::clock() - start) < ticks) {
    }
}
