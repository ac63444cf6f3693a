#pragma once
// All epochs and observations of one RINEX 2 observation file, held flat:
// record r (0 .. nsatall-1) runs in file order, the records of epoch i are
// the nsat(i) behind those of epoch i-1, and every observation matrix is
// indexed by r. Nothing is ever removed; a rejected value is set to 0.
#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"
#include "numerics/matrix.h"
#include "observations/RINEXHeader.h"
#include "observations/SatelliteSystem.h"
#include "observations/gnssobs.h"

namespace RINEXns {
/// Entries of the satellite scratch list: numbers stay below it because
/// the largest base is 600 (letters outside the table) and PRNs below 100.
inline constexpr int ScratchSatellites = 700;
/// Clock terms (s) a code pseudorange may carry beyond the geometric range:
/// the receiver clock within 1 ms (steered, or held there by millisecond
/// jumps) and the satellite clock within 2 ms (the GLONASS tau_n field
/// spans 1.95 ms, GPS af0 0.98 ms). Atmosphere and hardware delays, below a
/// kilometre, are covered by the rounding of the orbit shells.
inline constexpr long double CodeClockAllowance_s = 3.0e-3L;
}  // namespace RINEXns

/// Makes m a column of n null observations, constructing fresh storage
/// null rather than writing it twice.
template <class T>
void NullColumn(matrix<T>& m, long n)
{
    if (m.NRow() == n && m.NCol() == 1) m.Resize(n, 1, T());
    else m.Resize(n, 1);
}

/// Shortest and longest code pseudorange (m) that a satellite of system sys
/// can give a receiver between RINEXns::MinReceiverRadius_m and
/// MaxReceiverRadius_m from the geocentre: from the top of the receiver
/// shell to the lowest point of the system's orbits straight overhead, and
/// the longest line from the receiver shell to the highest point of its
/// orbits that the Earth (radius MinReceiverRadius_m) does not block; both
/// widened by RINEXns::CodeClockAllowance_s of light time. SysNone (BeiDou,
/// SBAS, QZSS and unknown letters) spans every GNSS orbit.
void CodeRangeLimits(SatSystem sys, long double& min_m, long double& max_m);

class SatEpochIndex;

class RINEXData {
public:
    long nepochall;           // epochs
    long nsatall;             // satellite records over all epochs
    matrix<mjd> epoch;        // per epoch
    matrix<char> flag;        // per epoch: epoch flag as in the file
    matrix<short> nsat;       // per epoch: satellite count
    matrix<short> sat;        // per record: satellite number
    matrix<short> satList;    // distinct satellite numbers, ascending
    std::string AmbFile;
    matrix<long double> TCorr;  // per epoch: receiver clock offset, s
    bool IfTimeCorr;

    matrix<gnssobs> C1, P1, C2, P2, C3R, C5, C6, C7, C8;
    matrix<gnssobs> L1, L2, L3R, L5, L6, L7, L8;
    matrix<gnssobsshort> D1, D2, D3R, D5, D6, D7, D8;
    matrix<gnssobsshort> S1, S2, S3R, S5, S6, S7, S8;
    matrix<gnssobs> PC1, PC3, PP3, L3, L4, MW, PC4, PP4, CL1, CLI;

    matrix<short> IsEpochOKG, IsEpochOKR;
    long NBadEphSat, NBadEphObs, NOKEph;

    RINEXHeader& rhead;       // must outlive this object
    mjd obslast;              // epoch of the last epoch line read
    long istart, iend, satstart;  // the writer's epoch range and first record
    long nComment;            // data-section lines outside records that are no epoch lines
    std::map<short, long> CodeOutsideRange;  // per satellite: code values cleared on reading
    std::map<short, long> RepeatedRecords;   // per satellite: records cleared as listed twice in an epoch

    /// Empty data bound to header h.
    explicit RINEXData(RINEXHeader& h);
    /// Drops every epoch, record and matrix.
    void Reset();

    /// Sets the counts that the data pass allocates for.
    void SetNRecords(long ne, long ns) { nepochall = ne; nsatall = ns; }
    /// Says whether epoch lines carry a receiver clock offset.
    void SetTimeCorr(bool b) { IfTimeCorr = b; }
    /// Sizes the per-epoch vectors and the matrix of every type the header
    /// lists, all zero. A count of 0 stops the run with RINEXDataError.
    void SetData();
    /// SetData without the observation matrices, for a reader that has
    /// filled those already.
    void SetEpochData();

    long GetNEpoch() const { return nepochall; }
    long GetNObs() const { return nsatall; }
    long GetNSat() const { return satList.NRow(); }
    short GetSat(long i) const { return satList(i); }
    mjd GetMJD(long i) const { return epoch(i); }
    short GetObsSat(long i) const { return sat(i); }
    short GetEphNSat(long i) const { return nsat(i); }
    void SetAmbFile(const std::string& name) { AmbFile = name; }

    /// The code or phase matrix of an observed type, null for Doppler,
    /// signal strength and unknown types.
    matrix<gnssobs>* ObsMatrix(unsigned short type);
    const matrix<gnssobs>* ObsMatrix(unsigned short type) const;
    /// The Doppler or signal-strength matrix of a type, null otherwise, and
    /// null for all while they are not kept.
    matrix<gnssobsshort>* ShortMatrix(unsigned short type);
    const matrix<gnssobsshort>* ShortMatrix(unsigned short type) const;
    /// True for a Doppler or signal-strength type.
    static bool IsAuxiliary(unsigned short type);
    /// True for a code or phase of a band the processing does not combine:
    /// GLONASS G3, E5a/L5, E6 and E5 AltBOC (C3R L3R C5 L5 C6 L6 C8 L8).
    static bool IsUnprocessedBand(unsigned short type);
    /// The code or phase matrix a reader fills for a type: that of
    /// ObsMatrix, null for a band not processed while auxiliary data are
    /// not kept.
    matrix<gnssobs>* StoredMatrix(unsigned short type);
    const matrix<gnssobs>* StoredMatrix(unsigned short type) const;
    /// Whether the readers store Doppler, signal strength and the codes and
    /// phases of the bands not processed (the default), or only check their
    /// fields: no processing stage reads them, and a day of them is 25 MB
    /// to fill and parse.
    void KeepAuxiliary(bool keep) { keepAuxiliary_ = keep; }

    // Conditioning in memory (RINEXDataConditioning.cpp): clock-jump and
    // time-tag repairs, linear combinations, presence of a system's data.

    /// Finds receiver clock steps of whole milliseconds from the jump of
    /// code minus phase (C1, P2 against L1, L2) between neighbouring epochs
    /// of GPS and GLONASS satellites, and shifts L1 and L2 of GPS and
    /// GLONASS behind each step by the accumulated step (cycles), so that
    /// phase follows code. Codes stay as they are. nMSJumps returns the
    /// number of steps found. GLONASS satellites without a frequency channel
    /// are neither used nor shifted; a GLONASS record at a step's own epoch
    /// is not shifted.
    void CorrMSJumps(long& nMSJumps);
    /// Single-frequency form of CorrMSJumps on C1 and L1: a step is taken
    /// when more than one satellite pair sees the same whole number of
    /// milliseconds (within 1e-5 ms); L1 and L2 of GPS and GLONASS from that
    /// epoch on are shifted. nMSJumps returns the number of changes of the
    /// accumulated step.
    void CorrMSJumpsSF(long& nMSJumps);
    /// Moves every epoch to the nearest multiple of the header interval and
    /// adds the shift times c (m) to the non-null C1, P1, P2 and C5 of that
    /// epoch. Does nothing without a positive interval.
    void Corr4ClockError();
    /// Folds runs of equal epochs into their first epoch, which takes the
    /// satellite counts of the whole run; epoch, flag, nsat (and TCorr)
    /// shrink, nepochall and iend fall, the records stay as they are.
    void CorrRNX_Leap0Red();

    /// Graphic combination (C1 + lamb1·L1)/2 (m) for GPS, GLONASS with a
    /// channel, and Galileo; iCLI set when C1 and L1 exist.
    void SetLC_CLI();
    /// Code minus phase C1 - lamb1·L1 (m), systems as SetLC_CLI; iCL1.
    void SetLC_CL1();
    /// P1 - C1 (m) for every record; iPC1.
    void SetLC_PC1();
    /// Ionosphere-free code from P1, P2 (GPS, GLONASS) and P1, C7
    /// (Galileo), m; iPP3.
    void SetLC_PP3();
    /// Ionosphere-free code from C1, P2 (GPS, GLONASS) and C1, C7
    /// (Galileo), m; iPC3.
    void SetLC_PC3();
    /// Ionosphere-free phase from L1, L2 (GPS, GLONASS with a channel) and
    /// L1, L7 (Galileo), m; iL3.
    void SetLC_L3();
    /// Geometry-free code P2 - C1 (GPS, GLONASS) and C7 - C1 (Galileo), m;
    /// iPC4.
    void SetLC_PC4();
    /// Geometry-free code P2 - P1 (GPS, GLONASS), m; iPP4.
    void SetLC_PP4();
    /// Geometry-free phase lamb1·L1 - lamb2·L2 (GPS, GLONASS with a
    /// channel) and L1, L7 (Galileo), m; iL4.
    void SetLC_L4();
    /// Melbourne-Wübbena (m) from L1, L2/L7, the first code (C1 when UseC1,
    /// else P1) and P2/C7. iMW is cleared and nothing is formed when the
    /// header lacks one of these.
    void SetLC_MW(bool UseC1);

    /// True when the file holds GPS satellites (up to 99) and more than 10 %
    /// of all records are theirs.
    bool HasGPSObs() const;
    /// As HasGPSObs for GLONASS (101..199).
    bool HasGLONASSObs() const;
    /// As HasGPSObs for Galileo (201..299).
    bool HasGALILEOObs() const;

    // Arc screening (RINEXDataScreening.cpp): cuts each satellite's phase
    // into arcs with one ambiguity and keeps them in the binary file AmbFile
    // (AmbRecord, 18 bytes an arc), satellites in satList order, each by
    // time. A record belongs to a satellite's series when its sat is the
    // satellite, the screened combination is not null and Elev (rad, one
    // per record) is above MinElev (rad; equal is out). An arc is kept when
    // it holds at least MinObsAmb observations; shorter ones are dropped
    // without a trace. An unset AmbFile name, a file that cannot be written
    // or read back, elevations that do not cover every record, or epoch
    // counts that disagree with nsatall stop the run with RINEXDataError.

    /// Cuts on L4 between consecutive accepted records: an arc ends when the
    /// time since the last accepted epoch exceeds MaxTimeGap (s) or |dL4|
    /// exceeds sqrt(|dt - 1 s|)·ddL4 + dL40 (dL40 in m, ddL4 in m/sqrt(s)),
    /// so a slowly drifting ionosphere over a long gap is not taken for a
    /// slip. Creates AmbFile; NAmbAll returns the number of arcs written.
    void ScreenL4(const matrix<long double>& Elev, long double MinElev, long MinObsAmb,
                  long double dL40, long double ddL4, long double MaxTimeGap,
                  long& NAmbAll) const;
    /// Cuts on L4 by fitting three consecutive epochs at a time, so that a
    /// steady trend of any slope passes and only a jump of the second
    /// difference above sqrt(MaxTimeGap)·ddL4 + dL40/3 (m) ends an arc;
    /// unbroken stretches end at file gaps above MaxTimeGap (s) and at
    /// epochs without the satellite. Arguments and file as ScreenL4.
    void ScreenL4Linear(const matrix<long double>& Elev, long double MinElev, long MinObsAmb,
                        long double dL40, long double ddL4, long double MaxTimeGap,
                        long& NAmbAll) const;
    /// Re-reads the NAmbAll arcs of AmbFile and rewrites it: an arc whose
    /// Melbourne-Wuebbena scatter (weighted RMS, weight 2·sin|E| below 30
    /// degrees, E in rad per record) exceeds RMS (m) is split at jumps that
    /// two neighbouring values agree on, a lone outlier leaves it whole.
    /// Arcs without MW values pass unchanged. NAmbAll returns the number of
    /// arcs written; each split part records one observation fewer than it
    /// accepted.
    /// sinE, where it holds a row per record, gives sin E.
    void ScreenMW(long double RMS, long MinObsAmb, const matrix<long double>& E,
                  long& NAmbAll, const matrix<long double>* sinE = nullptr) const;
    /// Single-frequency cut on code minus phase CL1: an arc ends when the
    /// time since the last accepted epoch exceeds MaxTimeGap (s) or |dCL1|
    /// exceeds lam1Mult L1 wavelengths. Satellites whose L1 wavelength is
    /// below 0.01 m (Galileo, GLONASS without channel) are passed over.
    /// Creates AmbFile; NAmbAll returns the number of arcs written.
    void ScreenCL1(const matrix<long double>& Elev, long double MinElev, long MinObsAmb,
                   long double lam1Mult, long& NAmbAll, long double MaxTimeGap) const;

    /// Prints, for each kind of value the reader cleared, a section on the
    /// output stream (a title, one line per satellite with its count) and a
    /// framed warning with the total; nothing when nothing was cleared.
    void ReportRejected() const;

    /// Prints "#### RINEXData: Error -> text ####" framed on the output
    /// stream and exits with status 1.
    [[noreturn]] static void RINEXDataError(const std::string& text);
    /// Prints the framed warning on the output stream and returns.
    static void RINEXDataWarning(const std::string& text);

private:
    bool keepAuxiliary_ = true;
    // The Doppler or signal-strength matrix of a type, kept or not.
    matrix<gnssobsshort>* AuxiliaryMatrix(unsigned short type);
    // Steps of ScreenL4Linear. Elev and MinElev define the series as above,
    // idx finds sat's record in an epoch.

    // From epoch iEpoch on, the first epoch holding a record of sat's L4
    // series; false when none is left.
    bool FirstSatObsL4(const SatEpochIndex& idx, short sat, long& iEpoch, const matrix<long double>& Elev,
                       long double MinElev) const;
    // Last epoch of the unbroken stretch that begins at iStart: before a
    // file gap above MaxTimeGap or an epoch without the series, else the
    // file's last epoch.
    long LastSatObsL4(const SatEpochIndex& idx, short sat, long iStart, long double MaxTimeGap,
                      const matrix<long double>& Elev, long double MinElev) const;
    // Moves arcStart to the first of three consecutive epochs up to iEnd
    // whose L4 fits a straight line within dVL4Max and steps within dL4Max
    // (m); false when no triple fits.
    bool FindContStart(const SatEpochIndex& idx, short sat, long& arcStart, long iEnd, long double dVL4Max,
                       long double dL4Max, const matrix<long double>& Elev, long double MinElev) const;
    // Ends the arc begun at arcStart: at the epoch before the first second
    // difference of L4 above dAL4Max (m), returning true, or at iEnd,
    // returning false.
    bool FindCSlipL4(const SatEpochIndex& idx, short sat, long arcStart, long iEnd, long& arcEnd,
                     long double dAL4Max, const matrix<long double>& Elev, long double MinElev) const;
};

/// Satellite number of a three-character satellite field (letter, tens or
/// blank, units): G or blank 0, R 100, E 200, C 300, S 400; J gets 500 and
/// any other letter 600, outside every system the program processes. A
/// digit position holding no digit counts 0.
short RINEXSatNumber(const char* field);
/// The letter of a satellite number, the inverse of RINEXSatNumber ('X'
/// for 600 and above).
char RINEXSatLetter(short sat);
/// "G05" for satellite number 5, "R12" for 112: letter and two digits.
std::string RINEXSatName(short sat);
/// The report lines of a per-satellite count, one "    Satellite: G05
/// #OBS:        3" line per satellite in number order, then a blank line, on
/// the output stream; returns the sum of the counts.
long PrintSatelliteCounts(const std::map<short, long>& bySat);

/// True for a RINEX 2 epoch line: blank column 0, date and time digits in
/// their columns (tens may be blank), a full stop at 18, seven digits at 19
/// to 25, and more than 32 characters.
bool IsFirstObsLine(const std::string& line);
/// Reads year (two digits: up to 79 is 20yy, 80 and above 19yy), month,
/// day, hour, minute, seconds and the satellite count from an epoch line;
/// each number starts at its column and stops at the first character that
/// does not fit. The caller has tested the line with IsFirstObsLine.
void ParseFirstObsLine(const std::string& line, int& yr, int& mon, int& day, int& hh,
                       int& mm, long double& sec, int& nobs);
/// Pads line with blanks to 16·n characters and cuts it there.
void FillObsLine(std::string& line, int n);

/// Fills a record store sized by SetData epoch by epoch, as every
/// observation reader does whatever its text: the epoch's time, flag, count
/// and receiver clock offset, the header interval lowered to the smallest
/// step between epochs, codes outside CodeRangeLimits cleared and counted,
/// a satellite listed twice in an epoch settled, and at the end the list of
/// satellites and C1 from P1 where only P1 was observed. Errors stop the run
/// with RINEXData::RINEXDataError naming the line (of the reader's text).
class RecordStoreFill {
public:
    /// Binds to d, whose header types must be valid (at most
    /// RINEXns::MaxObsTypes) and whose storage SetData has sized.
    explicit RecordStoreFill(RINEXData& d);

    /// The code or phase matrix of header type k, null for others.
    matrix<gnssobs>* Obs(int k) const { return colObs_[k]; }
    /// The Doppler or signal-strength matrix of header type k, null for others.
    matrix<gnssobsshort>* Short(int k) const { return colShort_[k]; }
    /// Whether column k's fields are checked: a known type, kept or not.
    bool Checked(int k) const { return colChecked_[k]; }

    /// Starts the next epoch: time t, flag character, count records and the
    /// receiver clock offset (s, kept when the store carries offsets).
    void Epoch(const ymdhms& t, char flag, int count, long double clock_s, long line);
    /// Starts the next record of the epoch, of satellite sn; returns its
    /// index, where the reader then stores the values.
    long Record(short sn, long line);
    /// Clears and counts the codes of record r that no satellite of its
    /// system can give.
    void CheckCodes(long r);
    /// Ends the epoch. A satellite listed twice keeps its first record when
    /// same(first, later) says the later one (positions in the epoch) is an
    /// exact copy of it; otherwise both go.
    void EndEpoch(const std::function<bool(int, int)>& same);
    /// Ends the data: the counts must be used up exactly.
    void Finish();

private:
    void ClearRecord(long r);

    RINEXData& d_;
    int ntypes_;
    matrix<gnssobs>* colObs_[RINEXns::MaxObsTypes] = {};
    matrix<gnssobsshort>* colShort_[RINEXns::MaxObsTypes] = {};
    bool colChecked_[RINEXns::MaxObsTypes] = {};
    bool colCode_[RINEXns::MaxObsTypes] = {};
    long double codeMin_[SysNone + 1], codeMax_[SysNone + 1];
    short scratch_[RINEXns::ScratchSatellites] = {};
    // A satellite's first position in the epoch where it was last met.
    long metIn_[RINEXns::ScratchSatellites];
    int firstOf_[RINEXns::ScratchSatellites] = {};
    std::vector<char> dropped_;
    long i_ = -1;   // epoch
    long r_ = 0;    // next record
    long r0_ = 0;   // first record of the epoch
    int count_ = 0;
};

/// Reads the data section (the header must have been read from the same
/// stream) into the storage sized by SetNRecords. An epoch cut short by the
/// end of the stream, an over-long line, a satellite count outside 0..341,
/// records that disagree with the counts, or a value (or its loss-of-lock
/// and signal-strength digits, or the epoch's clock offset) that is neither
/// blank nor a finite number stop the run with RINEXDataError naming the
/// file and line. A code outside CodeRangeLimits is cleared and counted in
/// CodeOutsideRange. A satellite listed twice in an epoch keeps its first
/// record when the second is an exact copy; otherwise both are cleared; the
/// cleared records are counted in RepeatedRecords. Ends with C1 copied from
/// P1 when only P1 was observed.
std::istream& operator>>(std::istream& in, RINEXData& d);
/// Writes epochs istart to iend-1 from record satstart as RINEX 2 data.
std::ostream& operator<<(std::ostream& out, const RINEXData& d);
