#pragma once
// Wall-clock date for report headers and a processor-clock stopwatch for the
// run time of the program.
#include <ctime>

class CppCas {
public:
    time_t rawtime;       // calendar time of the last Update
    clock_t startUra;     // processor clock at Start
    clock_t stopUra;      // processor clock at Stop
    struct tm* timeinfo;  // local broken-down time of the last Update, never null
    bool casTece;         // a measurement runs
    char ascii[25];       // date text of the last Ascii call

    /// Reads the current time; no measurement runs.
    CppCas();

    /// Reads the current calendar time and its local broken-down form. When
    /// the system cannot give local time, all fields read as zero (1900-01-00).
    void Update();

    /// Updates and returns the local date and time as "YYYY-MM-DD  hh:mm:ss"
    /// (20 characters, calendar month 1 to 12). The text lives in the object
    /// until the next call.
    const char* Ascii();

    /// Updates and returns the full year, e.g. 2020.
    int LetoDt();
    /// Updates and returns the month, 0 (January) to 11, as the broken-down
    /// time gives it.
    int MesecDt();
    /// Updates and returns the day of the month, 1 to 31.
    int DanDt();
    /// Updates and returns the hour, 0 to 23.
    int Ura();
    /// Updates and returns the minute, 0 to 59.
    int Min();
    /// Updates and returns the second, 0 to 60 (leap second).
    int Sec();

    /// Starts a measurement on the processor clock.
    void Start();

    /// Ends a running measurement and returns its processor time in seconds;
    /// 0 when no measurement runs.
    double Stop();

    /// Waits s seconds by polling the processor clock; returns at once for s
    /// at or below 0 or when the system has no processor clock.
    void Pocakaj(long double s);

private:
    // Target of timeinfo when localtime fails, so the getters never follow a
    // null pointer.
    static struct tm zeroTime;
};
