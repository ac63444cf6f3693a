#pragma once
// The normal equations of the static adjustment, summed epoch by epoch with
// the epoch clock reduced, and the lookups of a design row's columns.
#include <vector>

#include "geodesy/mjd.h"
#include "numerics/LargeMemory.h"
#include "numerics/MathConstants.h"
#include "numerics/matrix.h"

namespace ProcStaticns {
/// Speed of light (m/s).
constexpr long double C_mps = SpeedOfLight_mps;
/// Squared ratio f1/f2 of GPS L1/L2 (1575.42/1227.60 MHz): scales the L1
/// ionosphere delay to L2.
constexpr long double AlphaGPS = 1.64694444444444476616L;
/// Squared ratio f1/f7 of Galileo E1/E5b (1575.42/1207.14 MHz).
constexpr long double AlphaGAL = 1.70324619362252249744L;
/// An epoch whose summed weight is at or below this adds no reduction term:
/// it has no accepted equation (weights are of order 1e-4 and up).
constexpr long double ElimMinWeight = 1e-12L;
/// An unknown whose reduced diagonal is below this has no observations; it
/// is fixed by a unit diagonal instead of making the system singular.
constexpr long double UndefDiag = 1e-6L;
/// An epoch whose summed weight is below this gets no clock solution.
constexpr long double ClockMinWeight = 1e-5L;
/// Slots of a design row: 3 coordinates, system bias, code bias,
/// ambiguity, 2 delay, 2 north and 2 east gradient nodes.
constexpr int NSlots = 12;
/// Largest distance (m) between the a-priori position and the estimate for
/// which the site models, computed once at the a-priori position, still
/// hold: moving the a-priori of a real day (ESBC) along its parallel by
/// 100 km moved the estimate by 0.14 m, about 1.4 mm per km, so 100 m costs
/// some 0.1 mm.
constexpr long double MaxAprioriOffset_m = 100.0L;
}  // namespace ProcStaticns

/// The normal equations of the static adjustment, one epoch at a time,
/// with the epoch clock (coefficient -1 in every row) reduced as the epoch
/// ends. The rows of an epoch share their coordinate, delay and gradient
/// columns, and a row's entries there are a few values of its record
/// (direction cosines, mapping values) times factors of the epoch (the
/// linear node weights): each record's accepted equations are summed once
/// into a small block per system, which is spread over the unknowns when
/// the epoch ends. Only an equation's own column (code bias, ambiguity)
/// costs a row update of its own.
class EpochNormals {
public:
    /// Values of a record that its row entries in the shared slots are
    /// made of: 3 direction cosines, the system bias's -1, the wet delay
    /// mapping and the north and east gradient mappings, each with the sign
    /// of its row entry.
    static constexpr int NShared = 7;

    /// Sums for nUnk global unknowns (columns of N, t and the clock row).
    explicit EpochNormals(long nUnk);

    /// Starts an epoch. Over the ProcStaticns::NSlots slots of a design row,
    /// iB gives the epoch's columns of slots 0-2 and 6-11 (-1 for none) and
    /// factor the number that turns the record value of a slot into its
    /// row entry (1 for the coordinates, the node weights for delay and
    /// gradients). Slots 3-5 are set per record and per equation. A column
    /// outside N stops the run.
    void Begin(const long* iB, const long double* factor);

    /// Adds the shared part of a record of system sys (0 GPS, 1 GLONASS,
    /// 2 Galileo) with system bias column sysCol (-1 for none): record
    /// values g (NShared), summed weight p and summed weight times
    /// misclosure pf of its accepted equations (misclosure computed minus
    /// observed, m).
    void AddRecord(int sys, long sysCol, const long double* g, long double p, long double pf);

    /// Adds the terms of an equation's own unknown col (code bias or
    /// ambiguity, coefficient -1) to N (upper triangle) and t: its diagonal
    /// and its products with the record's shared row entries (record values
    /// g as for AddRecord, system bias column sysCol), misclosure f (m) and
    /// weight p.
    void AddOwn(matrix<long double>& N, matrix<long double>& t, long col, long sysCol, const long double* g,
                long double f, long double p);

    /// Ends the epoch: adds the shared sums to N and t (upper triangle) and
    /// the epoch clock's reduction term, upper triangle of N21^T N21 / N22
    /// and t2 N21 / N22, to Nt and tt, the latter only when the summed
    /// weight N22 exceeds ProcStaticns::ElimMinWeight. Gives N22 and t2 and
    /// appends the clock row's non-zero columns and values to cols and vals.
    /// The reduction terms of up to PendingEpochs epochs are held back and
    /// added together: Nt and tt are complete after Finish.
    void End(matrix<long double>& N, matrix<long double>& t, matrix<long double>& Nt,
             matrix<long double>& tt, long double& n22, long double& t2, LargeVector<long>& cols,
             LargeVector<long double>& vals);

    /// Adds the reduction terms held back to Nt and tt; all four arguments
    /// must be those given to End, the clock rows not cut since.
    void Finish(matrix<long double>& Nt, matrix<long double>& tt, const LargeVector<long>& cols,
                const LargeVector<long double>& vals);

    /// Epochs whose reduction terms End holds back at most.
    static constexpr int PendingEpochs = 16;

    /// With on false, AddOwn, End and Finish leave N and Nt as they are
    /// and form only t, tt, N22, t2 and the clock rows, bit for bit as
    /// they would with on true: for a step solved with the factors of a
    /// normal matrix summed before. Takes effect for the epochs begun
    /// after it, none of them held back.
    void SumMatrix(bool on);

private:
    // Slots of a design row that take record values, and which value each.
    static constexpr int NSharedSlots = 10;
    static constexpr int SharedSlot[NSharedSlots] = {0, 1, 2, 3, 6, 7, 8, 9, 10, 11};
    static constexpr int ValueOfSlot[NSharedSlots] = {0, 1, 2, 3, 4, 4, 5, 5, 6, 6};
    static constexpr int NSys = 3;

    // A column at or beyond nUnk, or a system smaller than nUnk, stops the
    // run with the framed report.
    void CheckColumn(long col) const;
    void CheckSystem(const matrix<long double>& N, const matrix<long double>& t) const;

    long nUnk_;
    bool matrix_ = true;
    long col_[NSharedSlots];
    long double factor_[NSharedSlots];
    long sysCol_[NSys];
    bool sysUsed_[NSys];
    // Per system: upper triangle of sum p g g^T, sums p g and pf g, summed
    // at the end of the epoch from its records.
    long double gg_[NSys][NShared][NShared];
    long double pg_[NSys][NShared], pfg_[NSys][NShared];
    // The epoch's records per system: g, p and pf. Each sum then runs in a
    // register over them, where adding every record to all 42 sums in
    // memory stored and loaded 42 extended numbers a record.
    struct Held {
        long double g[NShared], p, pf;
    };
    std::vector<Held> held_[NSys];
    void SumHeld(int sys);
    long double n22_, t2_;
    std::vector<long double> row21_;
    // The columns of row21_ this epoch touched, one bit each: the clock row
    // is read off them in ascending order, not off all nUnk columns.
    std::vector<unsigned long long> touched_;
    void Touch(long col) { touched_[static_cast<std::size_t>(col) >> 6] |= 1ULL << (col & 63); }

    // Reduction terms held back: per epoch its summed weight, t2 and the
    // range of its clock row in the caller's rows.
    struct Pending {
        long double n22, t2;
        std::size_t first, last;
    };
    Pending pend_[PendingEpochs];
    int nPend_ = 0;
    // The columns of the epochs held, ascending, each one's place among
    // them (-1 for none), and per place the epochs' row values and values
    // divided by N22, zero where an epoch has no such column.
    std::vector<long> union_, placeOf_;
    std::vector<long double> val_, scaled_;
};

/// Code bias column of satellite prn: walks the first nsat entries of
/// prnList; k becomes its position and ixdcb ixbSAT(k). Both are -1 when
/// the satellite is not listed, ixdcb also when it has no column.
void GetIndexSatDCB(short& prn, matrix<short>& prnList, matrix<long>& ixbSAT, long& nsat,
                    long& ixdcb, long& k);

/// Interval itro of the node list TI that holds the epoch ieph:
/// TI(itro) <= ieph < TI(itro + 1); -1 when ieph lies before the first or
/// at/after the last node.
void GetTropoIndex(mjd& ieph, matrix<mjd>& TI, long& itro);

