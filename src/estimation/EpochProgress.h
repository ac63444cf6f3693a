#pragma once
// The per-cent display of an epoch walk on the error stream, shared by the
// passes over all epochs (static iterations, outlier check, kinematic).
#include <iomanip>
#include <iostream>

/// Shows i of n epochs in steps of 5 % behind the prefix the caller wrote;
/// does nothing unless on. Each step overwrites the last ("\b" six times).
class EpochProgress {
public:
    explicit EpochProgress(bool on) : on_(on) {}
    void Step(long i, long n)
    {
        if (!on_ || n <= 0) return;
        const int process = static_cast<int>(100.0f * static_cast<float>(i) / static_cast<float>(n));
        if (process % 5 == 0 && process != shown_) {
            std::cerr << "\b\b\b\b\b\b" << std::setw(4) << process << " %";
            shown_ = process;
        }
    }
    /// The closing 100 %, without a new line.
    void Close() const
    {
        if (on_) std::cerr << "\b\b\b\b\b\b" << std::setw(4) << 100 << " %";
    }

private:
    bool on_;
    int shown_ = -1;
};
