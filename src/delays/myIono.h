#pragma once
// Vertical ionospheric delay series of one site, as the Meskal tool writes
// it: either a value and rate per record, valid from its epoch on (LINEAR),
// or one value per epoch (EPOCH BY EPOCH). Values are metres on L1.
//
// File: the first line holds "LINEAR" or "EPOCH BY EPOCH"; a line starting
// with '#' is a comment; every other line is a record: MJD day (from column
// 1), second of day (from 9), value (from 17), RMS (from 31), and for LINEAR
// the rate per hour (from 40) and its RMS (from 56).
#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace myIonons {
/// Distance (s) before the first LINEAR record that is still served quietly.
constexpr long double EarlyLinear_s = 900.0L;
/// An epoch this close (s) to a record is that record's (epoch by epoch).
constexpr long double SameEpoch_s = 0.1L;
/// Distance in record spacings outside the series that is served quietly
/// (epoch by epoch).
constexpr long double OutsideSpacings = 3.0L;
}  // namespace myIonons

class myIono {
public:
    myIono();

    /// Stores the file name; a name of 256 characters or more ends the run
    /// with the framed error.
    void SetFile(const char* name);

    /// Reads the series. A file that does not open ends the run with
    /// "myIONO FILE CAN NOT BE READ!"; one of unknown type, without records,
    /// with a record cut before its last field or epochs out of time order
    /// ends it with a framed error naming the file and line.
    void ReadFile();

    /// Finds the record for epoch reph from the first one on (see the form
    /// with a start index).
    void SetIonoIndex(mjd& reph);
    /// Finds the record for epoch reph walking from index ix. LINEAR: the
    /// last record not later than reph (0 before the series). EPOCH BY EPOCH:
    /// the nearest record, a tie going to the later one. Before the first or
    /// after the last record the end record is taken, with a warning beyond
    /// 900 s before (LINEAR), spacing + 900 s after (LINEAR) or 3 spacings
    /// either side (EPOCH BY EPOCH).
    void SetIonoIndex(mjd& reph, long ix);

    /// Vertical delay (m) at epoch reph from the current record: value plus
    /// rate times the hours since the record (LINEAR), or the record's value.
    /// Without a current record the index is searched first.
    void GetIonoDelay(mjd& reph, long double& delay);

    /// Current record, -1 before the first search.
    long GetIonoIndex() const { return IonoIx; }
    /// Records of the series.
    long GetNEph() const { return neph; }
    /// 0 LINEAR, 1 EPOCH BY EPOCH, -1 not read.
    short GetType() const { return myIonoType; }
    /// Smallest spacing of neighbouring records (s), -1 not read.
    long double GetInterval() const { return interval; }

private:
    char file[256];
    long neph;
    short myIonoType;
    long IonoIx;
    long double interval;
    long double DeltaT;  // hours since the current record
    matrix<long double> VAL, RMS;
    matrix<mjd> eph;
};
