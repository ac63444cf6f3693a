#pragma once
// The arc table of the context as every arc stage sees it: the a-priori L3
// ambiguities, its check before a walk, and the listing and the columns
// its report rows start with; one computation and one layout for the stage
// that cuts the arcs and those that join and screen them.
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "driver/gCPosC.h"
#include "numerics/LargeMemory.h"

/// Number of observations `count` and mean `mean_m` (m) of L3 minus the
/// solution's code (PC3 with ifPc3, else PP3 with ifPp3, else C1) of
/// satellite `sat` over epochs iStart .. iEnd, the records of epoch iStart
/// beginning at flat index ioStart. A record counts when its OKSAT is set
/// and both values are present. Epochs and records beyond the store, and
/// arrays that do not cover a record, count nothing; with no record
/// counted, `mean_m` is 0.
void ArcL3MinusCode(const gCPosC& gc, short sat, long iStart, long ioStart, long iEnd,
                    long& count, long double& mean_m);

/// Sets column 3 of AmbIndex and xAmb (m) of each of the nAmb arcs of gc
/// anew by ArcL3MinusCode over the arc's span. An arc left with no usable
/// observation gets count 0 and keeps its xAmb. A table shorter than nAmb
/// (rows of AmbIndex, AmbSat or xAmb, or fewer than 4 columns) ends the run
/// (status 1).
void RecomputeArcMeans(gCPosC& gc);

/// Prints the arc table of gc on the output stream under the column head
/// ID, PRN, START EPOCH, END EPOCH, L3 AMB [m] (4 decimals), an empty line
/// between satellites and one after the table; the stream's format is left
/// as it was. Rows beyond those the arrays hold are not printed.
void PrintAmbiguityTable(const gCPosC& gc);

/// Ends the run (status 1, framed error naming `stage`) when the arc table
/// cannot be walked safely: nAmb negative or beyond the rows of xAmb,
/// AmbIndex (4 columns) or AmbSat, an arc whose first or last epoch lies
/// outside the store or whose first epoch comes after its last, or a first
/// record (column 1) outside 0 .. nsatall. Returns quietly otherwise.
void CheckArcTable(const gCPosC& gc, const std::string& stage);

/// Writes `id` in 8 columns, three blanks, then the system letter and the
/// two-digit PRN (or GLONASS slot) of `sat`; no new line. The fill
/// character is a blank afterwards.
void PrintSatColumns(long id, short sat);

/// Writes the leading columns of one arc row on the output stream: `id` in
/// 8 columns, three blanks, the system letter and the two-digit PRN (or
/// GLONASS slot) of `sat`, then the epoch indices `firstEpoch` and
/// `lastEpoch` in 18 columns each; no new line. The fill character is a
/// blank afterwards.
void PrintArcColumns(long id, short sat, long firstEpoch, long lastEpoch);

/// Writes the screening columns of one arc row on the output stream and
/// ends the line: `n` in 10 columns; `value` in 20 columns with 4 decimals;
/// each of `sd` in 10 columns with 4 decimals; `nOut` in 10 columns and
/// nOut/n in per cent in 8 columns with 1 decimal and "%". With n = 0 the
/// columns read "-.----", "-.----" for each sd, "--", "-.-" and "%". Without
/// `haveValue` the value reads "-.----"; without `haveSd`, or with fewer
/// than two observations (no scatter), each sd does.
void PrintArcStats(long n, long nOut, bool haveValue, long double value, bool haveSd,
                   std::initializer_list<long double> sd);

/// Writes " (", nOut/n in per cent with 2 decimals and " %)" on the output
/// stream; " (-.-- %)" when n is not above 0.
void PrintPercent(long nOut, long n);

/// Writes sqrt(svv/dof/varianceFactor)·100, the precision (cm) of one
/// observation, with 2 decimals and " cm" on the output stream. Without
/// redundancy (dof not above 0) or with a factor not above 0 the precision
/// is undetermined and reads "-.-- cm".
void PrintPrecision_cm(long double svv, long dof, long double varianceFactor);

/// One record of an arc's satellite: its epoch index and its flat index.
struct SatRecord {
    long epoch, k;
};

/// The records of arc a's satellite within the arc's epochs, in time order.
/// The walk stops at the end of the record store; the caller has checked
/// the arc table (CheckArcTable).
std::vector<SatRecord> ArcRecords(const gCPosC& gc, long a);

/// The records of one satellite, in time order: a view into the store of
/// SatelliteRecords, valid while that lives.
class SatRecordSpan {
public:
    SatRecordSpan() = default;
    SatRecordSpan(const SatRecord* first, std::size_t n) : first_(first), n_(n) {}
    const SatRecord* begin() const { return first_; }
    const SatRecord* end() const { return first_ + n_; }
    std::size_t size() const { return n_; }
    bool empty() const { return n_ == 0; }
    const SatRecord& operator[](std::size_t i) const { return first_[i]; }
    const SatRecord& front() const { return first_[0]; }
    const SatRecord& back() const { return first_[n_ - 1]; }

private:
    const SatRecord* first_ = nullptr;
    std::size_t n_ = 0;
};

/// The records of every satellite of the store, in time order, by
/// satellite number, iterated as (number, records) pairs in ascending
/// number. All lists share one block of the store's size, so that a walk by
/// satellite costs no allocation per satellite and no page of its own.
class SatelliteRecords {
public:
    explicit SatelliteRecords(const RINEXData& d);
    // The lists point into the block: a copy would point into the original.
    SatelliteRecords(const SatelliteRecords&) = delete;
    SatelliteRecords& operator=(const SatelliteRecords&) = delete;

    std::map<short, SatRecordSpan>::const_iterator begin() const { return lists_.begin(); }
    std::map<short, SatRecordSpan>::const_iterator end() const { return lists_.end(); }
    /// The records of satellite sat; none for a satellite not in the store.
    SatRecordSpan operator[](short sat) const;

private:
    LargeVector<SatRecord> block_;
    std::map<short, SatRecordSpan> lists_;
};

/// The records of the store by satellite (SatelliteRecords): one walk
/// instead of one per satellite.
inline SatelliteRecords RecordsBySatellite(const RINEXData& d) { return SatelliteRecords(d); }
