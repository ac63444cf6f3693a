#include "observations/RINEXData.h"
#include "numerics/ProgramError.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <vector>

#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/FieldText.h"
#include "observations/GPSc.h"

namespace {

constexpr int SatsPerLine = 12;       // satellites on an epoch line
constexpr std::size_t SatTextCol = 32;
constexpr std::size_t SatTextWidth = 36;
constexpr int FieldsPerLine = 5;      // 16-column fields on an observation line
constexpr int FieldWidth = 16;
constexpr std::size_t ValueWidth = 14;  // F14.3 ahead of the LLI and signal strength
constexpr std::size_t ObsLineWidth = FieldsPerLine * FieldWidth;

bool Space(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool Digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool DigitOrSpace(char c) { return Digit(c) || Space(c); }

void PadTo(std::string& s, std::size_t width)
{
    if (s.size() < width) s.append(width - s.size(), ' ');
}

std::string AtLine(long line) { return " -> line: " + std::to_string(line); }

// Reads the next line of a record. The record was announced by its epoch
// line, so the end of the stream here means a cut file.
void RecordLine(std::istream& in, std::string& line, long& lineNo, long epochLine)
{
    const RINEXLineState st = ReadRINEXLine(in, line);
    if (st == RINEXLineState::End)
        RINEXData::RINEXDataError("RINEX FILE ENDS INSIDE THE EPOCH OF LINE "
                                  + std::to_string(epochLine));
    lineNo++;
    if (st == RINEXLineState::TooLong)
        RINEXData::RINEXDataError("LINE LONGER THAN 99 CHARACTERS" + AtLine(lineNo));
}

// A last line without its line end was cut while written or copied. Ending
// inside the 14 value columns of a field it would read as a number short of
// its last digits (metres or cycles off by powers of ten), so it stops the run.
void StopIfCutInValue(const std::string& line, long lineNo)
{
    const std::size_t part = line.size() % FieldWidth;
    if (part == 0 || part >= ValueWidth) return;
    if (line.find_first_not_of(' ', line.size() - part) == std::string::npos) return;
    RINEXData::RINEXDataError("RINEX FILE ENDS INSIDE AN OBSERVATION VALUE" + AtLine(lineNo));
}

// Geocentric distances (m) between which the satellites of a system move,
// by SatSystem. GPS: 26 560 km with eccentricities below 0.02. GLONASS:
// 25 510 km, below 0.01. Galileo: 29 600 km, and E14, E18 left in orbits
// of 23 700 to 32 400 km. Any other letter: from that perigee to the apogee
// of the QZSS orbits (42 164 km, eccentricity 0.075: 45 300 km), which also
// covers BeiDou and SBAS satellites at 42 164 km.
constexpr long double OrbitShell_m[][2] = {
    {26.00e6L, 27.10e6L}, {25.25e6L, 25.80e6L}, {23.50e6L, 32.50e6L}, {23.50e6L, 45.50e6L}};

bool IsCode(unsigned short t)
{
    switch (t) {
    case RINEXObs::C1: case RINEXObs::P1: case RINEXObs::C2: case RINEXObs::P2: case RINEXObs::C3R:
    case RINEXObs::C5: case RINEXObs::C6: case RINEXObs::C7: case RINEXObs::C8: return true;
    default: return false;
    }
}



std::string In(const RINEXHeader& h) { return h.source.empty() ? std::string() : h.source + ": "; }

void PrintRejected(const std::map<short, long>& bySat, const char* title, const std::string& what,
                   const char* unit)
{
    if (bySat.empty()) return;
    std::cout << title << "\n";
    const long total = PrintSatelliteCounts(bySat);
    RINEXData::RINEXDataWarning(what + " - " + std::to_string(total) + " " + unit + " NOT USED!");
}

}  // namespace

void CodeRangeLimits(SatSystem sys, long double& min_m, long double& max_m)
{
    const int i = sys >= SysGPS && sys <= SysGAL ? sys : SysNone;
    const long double lowR = RINEXns::MinReceiverRadius_m, highR = RINEXns::MaxReceiverRadius_m;
    const long double clock_m = RINEXns::CodeClockAllowance_s * GPSc::c;
    min_m = OrbitShell_m[i][0] - highR - clock_m;
    // The two tangent legs of a line that grazes the Earth at radius lowR.
    const auto leg = [lowR](long double r) { return std::sqrt((r - lowR) * (r + lowR)); };
    max_m = leg(highR) + leg(OrbitShell_m[i][1]) + clock_m;
}

RINEXData::RINEXData(RINEXHeader& h) : rhead(h) { Reset(); }

void RINEXData::Reset()
{
    nepochall = 0;
    nsatall = 0;
    epoch = matrix<mjd>();
    flag = matrix<char>();
    nsat = matrix<short>();
    sat = matrix<short>();
    satList = matrix<short>();
    AmbFile.clear();
    TCorr = matrix<long double>();
    IfTimeCorr = false;
    for (unsigned short t = 0; t < RINEXObs::Unknown; t++) {
        if (matrix<gnssobs>* m = ObsMatrix(t)) *m = matrix<gnssobs>();
        if (matrix<gnssobsshort>* m = AuxiliaryMatrix(t)) *m = matrix<gnssobsshort>();
    }
    PC1 = PC3 = PP3 = L3 = L4 = MW = PC4 = PP4 = CL1 = CLI = matrix<gnssobs>();
    IsEpochOKG = matrix<short>();
    IsEpochOKR = matrix<short>();
    NBadEphSat = NBadEphObs = NOKEph = 0;
    obslast = mjd();
    istart = iend = satstart = 0;
    nComment = 0;
    CodeOutsideRange.clear();
    RepeatedRecords.clear();
}

void RINEXData::ReportRejected() const
{
    PrintRejected(CodeOutsideRange, "  Code observations outside the range of any GNSS satellite (not used):",
                  "CODE OBSERVATIONS OUTSIDE THE RANGE OF ANY GNSS SATELLITE", "OBSERVATIONS");
    PrintRejected(RepeatedRecords, "  Satellites listed twice in one epoch (records not used):",
                  "SATELLITES LISTED TWICE IN ONE EPOCH", "RECORDS");
}

matrix<gnssobs>* RINEXData::ObsMatrix(unsigned short t)
{
    switch (t) {
    case RINEXObs::C1: return &C1;   case RINEXObs::P1: return &P1;
    case RINEXObs::C2: return &C2;   case RINEXObs::P2: return &P2;
    case RINEXObs::C3R: return &C3R; case RINEXObs::C5: return &C5;
    case RINEXObs::C6: return &C6;   case RINEXObs::C7: return &C7;
    case RINEXObs::C8: return &C8;
    case RINEXObs::L1: return &L1;   case RINEXObs::L2: return &L2;
    case RINEXObs::L3R: return &L3R; case RINEXObs::L5: return &L5;
    case RINEXObs::L6: return &L6;   case RINEXObs::L7: return &L7;
    case RINEXObs::L8: return &L8;
    default: return nullptr;
    }
}

const matrix<gnssobs>* RINEXData::ObsMatrix(unsigned short t) const
{
    return const_cast<RINEXData*>(this)->ObsMatrix(t);
}

matrix<gnssobsshort>* RINEXData::ShortMatrix(unsigned short t)
{
    return keepAuxiliary_ ? AuxiliaryMatrix(t) : nullptr;
}

bool RINEXData::IsUnprocessedBand(unsigned short t)
{
    switch (t) {
    case RINEXObs::C3R: case RINEXObs::L3R: case RINEXObs::C5: case RINEXObs::L5:
    case RINEXObs::C6: case RINEXObs::L6: case RINEXObs::C8: case RINEXObs::L8: return true;
    default: return false;
    }
}

matrix<gnssobs>* RINEXData::StoredMatrix(unsigned short t)
{
    return keepAuxiliary_ || !IsUnprocessedBand(t) ? ObsMatrix(t) : nullptr;
}

const matrix<gnssobs>* RINEXData::StoredMatrix(unsigned short t) const
{
    return const_cast<RINEXData*>(this)->StoredMatrix(t);
}

bool RINEXData::IsAuxiliary(unsigned short t)
{
    const std::string code = RINEXHeader::GetObsString(t);  // "??" for none
    return code[0] == 'D' || code[0] == 'S';
}

matrix<gnssobsshort>* RINEXData::AuxiliaryMatrix(unsigned short t)
{
    switch (t) {
    case RINEXObs::D1: return &D1;   case RINEXObs::D2: return &D2;
    case RINEXObs::D3R: return &D3R; case RINEXObs::D5: return &D5;
    case RINEXObs::D6: return &D6;   case RINEXObs::D7: return &D7;
    case RINEXObs::D8: return &D8;
    case RINEXObs::S1: return &S1;   case RINEXObs::S2: return &S2;
    case RINEXObs::S3R: return &S3R; case RINEXObs::S5: return &S5;
    case RINEXObs::S6: return &S6;   case RINEXObs::S7: return &S7;
    case RINEXObs::S8: return &S8;
    default: return nullptr;
    }
}

const matrix<gnssobsshort>* RINEXData::ShortMatrix(unsigned short t) const
{
    return const_cast<RINEXData*>(this)->ShortMatrix(t);
}

void RINEXData::RINEXDataError(const std::string& text)
{
    std::cout << "\n#### RINEXData: Error -> " << text << " ####\n"
              << "     Exiting RINEXData ... \n\n";
    std::cout.flush();
    ErrorExit(1);
}

void RINEXData::RINEXDataWarning(const std::string& text) { ProgramWarningCout("RINEXData", text); }

void RINEXData::SetEpochData()
{
    if (nepochall <= 0) RINEXDataError("NUMBER OF EPOCH IN RINEX FILE NOT DETERMINED!");
    epoch.Resize(nepochall, 1, mjd());
    flag.Resize(nepochall, 1, ' ');
    nsat.Resize(nepochall, 1, 0);
    if (IfTimeCorr) TCorr.Resize(nepochall, 1, 0.0L);
    if (nsatall <= 0) RINEXDataError("NUMBER OF OBSERVATIONS IN RINEX FILE NOT DETERMINED!");
    sat.Resize(nsatall, 1, 0);
}

void RINEXData::SetData()
{
    SetEpochData();
    // Fresh storage is constructed null already; writing it again would
    // touch the day's largest arrays twice.
    for (long k = 0; k < rhead.nobs; k++) {
        if (matrix<gnssobs>* m = StoredMatrix(rhead.obs(k))) NullColumn(*m, nsatall);
        if (matrix<gnssobsshort>* m = ShortMatrix(rhead.obs(k))) NullColumn(*m, nsatall);
    }
}

short RINEXSatNumber(const char* f)
{
    short base;
    switch (f[0]) {
    case 'G': case ' ': base = 0; break;
    case 'R': base = 100; break;
    case 'E': base = 200; break;
    case 'C': base = 300; break;
    case 'S': base = 400; break;
    case 'J': base = 500; break;
    default: base = 600; break;
    }
    const short tens = Digit(f[1]) ? static_cast<short>(f[1] - '0') : 0;
    const short units = Digit(f[2]) ? static_cast<short>(f[2] - '0') : 0;
    return static_cast<short>(base + 10 * tens + units);
}

char RINEXSatLetter(short s)
{
    static const char letters[] = {'G', 'R', 'E', 'C', 'S', 'J'};
    const int b = s / 100;
    return (b >= 0 && b < 6) ? letters[b] : 'X';
}

std::string RINEXSatName(short sn)
{
    const int prn = sn >= 0 ? sn % 100 : 0;
    return std::string(1, RINEXSatLetter(sn)) + static_cast<char>('0' + prn / 10) + static_cast<char>('0' + prn % 10);
}

long PrintSatelliteCounts(const std::map<short, long>& bySat)
{
    long total = 0;
    for (const auto& [sat, n] : bySat) {
        std::cout << "    Satellite: " << RINEXSatName(sat) << "    #OBS: " << std::setw(8) << n << "\n";
        total += n;
    }
    std::cout << "\n";
    return total;
}

bool IsFirstObsLine(const std::string& line)
{
    if (line.size() <= 32) return false;
    const char* l = line.c_str();
    if (!Space(l[0])) return false;
    // Year, month, day, hour, minute: a digit pair whose tens may be blank,
    // each followed by white space.
    for (int col = 1; col <= 13; col += 3)
        if (!DigitOrSpace(l[col]) || !Digit(l[col + 1]) || !Space(l[col + 2])) return false;
    if (!DigitOrSpace(l[16]) || !DigitOrSpace(l[17]) || l[18] != '.') return false;
    for (int col = 19; col <= 25; col++)
        if (!Digit(l[col])) return false;
    return true;
}

void ParseFirstObsLine(const std::string& line, int& yr, int& mon, int& day, int& hh,
                       int& mm, long double& sec, int& nobs)
{
    const char* l = line.c_str();
    yr = std::atoi(l);
    yr += yr <= 79 ? 2000 : 1900;
    mon = std::atoi(l + 4);
    day = std::atoi(l + 7);
    hh = std::atoi(l + 10);
    mm = std::atoi(l + 13);
    sec = std::strtold(l + 16, nullptr);
    nobs = line.size() > 30 ? std::atoi(l + 30) : 0;
}

void FillObsLine(std::string& line, int n)
{
    const std::size_t width = n > 0 ? static_cast<std::size_t>(n) * FieldWidth : 0;
    if (line.size() < width) line.append(width - line.size(), ' ');
    else line.resize(width);
}

RecordStoreFill::RecordStoreFill(RINEXData& d) : d_(d), ntypes_(d.rhead.nobs)
{
    // The header reader allows no more types than the record buffer holds;
    // a header filled by hand is held to the same bound.
    if (ntypes_ > RINEXns::MaxObsTypes || (ntypes_ > 0 && d.rhead.obs.NRow() < ntypes_))
        RINEXData::RINEXDataError("OBSERVATION TYPES OF THE HEADER NOT VALID");
    for (int k = 0; k < ntypes_; k++) {
        const unsigned short type = d.rhead.obs(k);
        colObs_[k] = d.StoredMatrix(type);
        colShort_[k] = d.ShortMatrix(type);
        // Every code, phase, Doppler and signal-strength field is checked,
        // stored or not.
        colChecked_[k] = d.ObsMatrix(type) || RINEXData::IsAuxiliary(type);
        // A code not stored has no value to range-check.
        colCode_[k] = IsCode(type) && colObs_[k];
    }
    for (int s = SysGPS; s <= SysNone; s++) CodeRangeLimits(static_cast<SatSystem>(s), codeMin_[s], codeMax_[s]);
    std::fill(metIn_, metIn_ + RINEXns::ScratchSatellites, -1L);
}

void RecordStoreFill::Epoch(const ymdhms& t, char flag, int count, long double clock_s, long line)
{
    if (count < 0 || count > RINEXns::MaxEpochSatellites)
        RINEXData::RINEXDataError("SATELLITE COUNT OF EPOCH NOT VALID" + AtLine(line));
    if (++i_ >= d_.nepochall) RINEXData::RINEXDataError("MORE EPOCHS THAN COUNTED IN RINEX FILE" + AtLine(line));
    d_.epoch(i_) = ymdhms2mjd(t);
    d_.nsat(i_) = static_cast<short>(count);
    d_.flag(i_) = flag;
    d_.obslast = d_.epoch(i_);
    if (d_.IfTimeCorr) d_.TCorr(i_) = clock_s;
    // The smallest step of the second of day is the sampling; a step
    // across midnight is large and changes nothing.
    RINEXHeader& h = d_.rhead;
    if (i_ > 0) {
        const long double step = std::fabs(d_.epoch(i_).GetSecond() - d_.epoch(i_ - 1).GetSecond());
        if (h.interval < 0.0f || h.interval > step) h.interval = static_cast<float>(step);
    }
    r0_ = r_;
    count_ = count;
    dropped_.assign(static_cast<std::size_t>(count), 0);
}

long RecordStoreFill::Record(short sn, long line)
{
    if (r_ >= d_.nsatall) RINEXData::RINEXDataError("MORE RECORDS THAN COUNTED IN RINEX FILE" + AtLine(line));
    d_.sat(r_) = sn;
    scratch_[sn] = sn;
    if (metIn_[sn] != i_) {
        metIn_[sn] = i_;
        firstOf_[sn] = static_cast<int>(r_ - r0_);
    }
    return r_++;
}

void RecordStoreFill::CheckCodes(long r)
{
    const short sn = d_.sat(r);
    const SatSystem sys = SystemOf(sn);
    for (int k = 0; k < ntypes_; k++) {
        if (!colCode_[k]) continue;
        gnssobs& o = (*colObs_[k])(r);
        // No satellite of the system can be this near or far: a broken
        // field, which would pull the position by kilometres.
        if (!o.IsNull() && (o.obs < codeMin_[sys] || o.obs > codeMax_[sys])) {
            o = gnssobs();
            d_.CodeOutsideRange[sn]++;
        }
    }
}

void RecordStoreFill::ClearRecord(long r)
{
    for (int k = 0; k < ntypes_; k++) {
        if (colObs_[k]) (*colObs_[k])(r) = gnssobs();
        else if (colShort_[k]) (*colShort_[k])(r) = gnssobsshort();
    }
}

void RecordStoreFill::EndEpoch(const std::function<bool(int, int)>& same)
{
    // A satellite listed twice: an exact copy (a merge that wrote the
    // record twice) is dropped; of two different records nothing tells
    // which is the satellite's, so both go.
    for (int s = 0; s < count_; s++) {
        const short sn = d_.sat(r0_ + s);
        const int first = firstOf_[sn];
        if (first == s) continue;
        const bool copy = same(first, s);  // before either is cleared
        ClearRecord(r0_ + s);
        d_.RepeatedRecords[sn]++;
        if (!copy && !dropped_[first]) {
            ClearRecord(r0_ + first);
            dropped_[first] = 1;
            d_.RepeatedRecords[sn]++;
        }
    }
}

void RecordStoreFill::Finish()
{
    if (i_ + 1 != d_.nepochall || r_ != d_.nsatall)
        RINEXData::RINEXDataError("EPOCHS OR RECORDS OF RINEX FILE DO NOT AGREE WITH THEIR COUNT");
    long nlist = 0;
    for (int k = 1; k < RINEXns::ScratchSatellites; k++)
        if (scratch_[k] != 0) nlist++;
    if (nlist > 0) {
        d_.satList.Resize(nlist);
        long j = 0;
        for (int k = 1; k < RINEXns::ScratchSatellites; k++)
            if (scratch_[k] != 0) d_.satList(j++) = scratch_[k];
    } else {
        d_.satList = matrix<short>();
    }
    d_.istart = 0;
    d_.satstart = 0;
    d_.iend = d_.nepochall;

    // Later stages count on C1 wherever P1 was observed.
    RINEXHeader& h = d_.rhead;
    if (h.iP1 && !h.iC1) {
        d_.C1 = d_.P1;
        h.iC1 = true;
    }
}

std::istream& operator>>(std::istream& in, RINEXData& d)
{
    d.SetData();
    RINEXHeader& h = d.rhead;
    RecordStoreFill fill(d);
    const int ntypes = h.nobs;
    const int linesPerRecord = (ntypes + FieldsPerLine - 1) / FieldsPerLine;

    // The record texts of the epoch being read, for the test of copies.
    std::vector<std::string> texts;
    std::string line, satText, obsText, piece;
    obsText.reserve(ObsLineWidth * static_cast<std::size_t>(linesPerRecord));
    long lineNo = h.nlines;

    for (;;) {
        const RINEXLineState st = ReadRINEXLine(in, line);
        if (st == RINEXLineState::End) break;
        lineNo++;
        if (st == RINEXLineState::TooLong)
            RINEXData::RINEXDataError("LINE LONGER THAN 99 CHARACTERS" + AtLine(lineNo));
        if (!IsFirstObsLine(line)) {
            d.nComment++;
            continue;
        }
        const long epochLine = lineNo;
        int yr, mon, day, hh, mm, count;
        long double sec;
        ParseFirstObsLine(line, yr, mon, day, hh, mm, sec, count);
        long double offset = 0.0L;
        if (d.IfTimeCorr) {
            const std::string clock = fieldtext::TrimmedField(line, 68, 12);
            if (!clock.empty() && !fieldtext::ToLongDouble(clock, offset))
                RINEXData::RINEXDataError(In(h) + "RECEIVER CLOCK OFFSET \"" + clock + "\" IS NOT A NUMBER" + AtLine(lineNo));
        }
        const ymdhms t(static_cast<unsigned short>(yr), static_cast<unsigned short>(mon),
                       static_cast<unsigned short>(day), static_cast<unsigned short>(hh),
                       static_cast<unsigned short>(mm), sec);
        fill.Epoch(t, line[28], count, offset, lineNo);

        satText = RINEXField(line, SatTextCol,
                             std::min<std::size_t>(3 * static_cast<std::size_t>(count), SatTextWidth));
        PadTo(satText, std::min<std::size_t>(3 * static_cast<std::size_t>(count), SatTextWidth));
        const int ncont = count / SatsPerLine - (count % SatsPerLine == 0 ? 1 : 0);
        for (int c = 0; c < ncont; c++) {
            RecordLine(in, line, lineNo, epochLine);
            piece = RINEXField(line, SatTextCol, SatTextWidth);
            const std::size_t last = piece.find_last_not_of(' ');
            piece.resize(last == std::string::npos ? 0 : last + 1);
            satText += piece;
        }
        // A list shorter than its count (an event record read as an epoch)
        // reads as blank entries, which are GPS number 0.
        PadTo(satText, 3 * static_cast<std::size_t>(count));

        if (texts.size() < static_cast<std::size_t>(count)) texts.resize(count);
        for (int s = 0; s < count; s++) {
            const short sn = RINEXSatNumber(satText.c_str() + 3 * s);
            const long r = fill.Record(sn, lineNo);
            obsText.clear();
            const long recordLine = lineNo + 1;
            for (int l = 0; l < linesPerRecord; l++) {
                RecordLine(in, line, lineNo, epochLine);
                if (in.eof()) StopIfCutInValue(line, lineNo);
                FillObsLine(line, FieldsPerLine);
                obsText += line;
            }
            const char* fields = obsText.c_str();
            for (int k = 0; k < ntypes; k++) {
                const char* f = fields + FieldWidth * k;
                matrix<gnssobs>* obs = fill.Obs(k);
                matrix<gnssobsshort>* shrt = fill.Short(k);
                // A type not kept is still checked.
                if (!fill.Checked(k)) continue;
                if (!fieldtext::IsNumberOrBlank(f, ValueWidth) || !IsFlagText(f[ValueWidth]) || !IsFlagText(f[ValueWidth + 1]))
                    RINEXData::RINEXDataError(In(h) + RINEXHeader::GetObsString(h.obs(k)) + " OF " + RINEXSatName(sn)
                                              + " IS NOT A NUMBER: \"" + std::string(f, FieldWidth) + "\""
                                              + AtLine(recordLine + k / FieldsPerLine));
                if (shrt) (*shrt)(r) >> f;
                else if (obs) (*obs)(r) >> f;
            }
            fill.CheckCodes(r);
            texts[s].swap(obsText);  // obsText is cleared before the next record
        }
        fill.EndEpoch([&](int first, int later) { return texts[first] == texts[later]; });
    }
    fill.Finish();
    return in;
}

std::ostream& operator<<(std::ostream& out, const RINEXData& d)
{
    const std::ios::fmtflags flags = out.flags();
    const std::streamsize prec = out.precision();
    const char fill = out.fill();
    const short ptype = ymdhmsns::PrintType;
    ymdhmsns::PrintType = 1;
    out << std::fixed << std::right << std::setfill(' ');

    const RINEXHeader& h = d.rhead;
    long r = d.satstart;
    for (long i = d.istart; i < d.iend; i++) {
        out << mjd2ymdhms(d.epoch(i)) << std::setw(3) << d.flag(i) << std::setw(3) << d.nsat(i);
        const int n = d.nsat(i);
        for (int s = 0; s < n || s == 0; s += SatsPerLine) {
            const int inLine = std::min(SatsPerLine, n - s);
            if (s > 0) out << std::string(SatTextCol, ' ');
            for (int k = 0; k < inLine; k++) {
                const short sn = d.sat(r + s + k);
                out << RINEXSatLetter(sn) << std::setfill('0') << std::setw(2)
                    << (sn >= 0 ? sn % 100 : 0) << std::setfill(' ');
            }
            // The reader takes the clock offset from columns 68-79 of the
            // first line, so a short first line is padded to reach them.
            if (d.IfTimeCorr && (s == 0 || inLine == SatsPerLine)) {
                out << std::string(3 * static_cast<std::size_t>(SatsPerLine - inLine), ' ')
                    << std::setw(12) << std::setprecision(9) << d.TCorr(i);
            }
            out << '\n';
            if (n == 0) break;
        }
        for (int s = 0; s < n; s++, r++) {
            for (int k = 0; k < h.nobs; k++) {
                if (k > 0 && k % FieldsPerLine == 0) out << '\n';
                const unsigned short type = h.obs(k);
                // A band not kept is written blank, as Doppler and signal
                // strength not kept are.
                if (const matrix<gnssobs>* m = d.StoredMatrix(type)) {
                    const gnssobs& o = (*m)(r);
                    if (std::fabs(o.obs) > 0.00001L)
                        out << std::setw(14) << std::setprecision(3) << o.obs
                            << static_cast<char>('0' + o.lli) << static_cast<char>('0' + o.ss);
                    else
                        out << std::setw(14) << "0.000" << "  ";
                } else if (const matrix<gnssobsshort>* m = d.ShortMatrix(type)) {
                    const gnssobsshort& o = (*m)(r);
                    if (std::fabs(o.obs) > 0.00001L)
                        out << std::setw(14) << std::setprecision(3) << o.obs << "  ";
                    else
                        out << std::setw(14) << 0 << "  ";
                } else {
                    out << std::string(FieldWidth, ' ');
                }
            }
            if (h.nobs > 0) out << '\n';
        }
    }
    ymdhmsns::PrintType = ptype;
    out.flags(flags);
    out.precision(prec);
    out.fill(fill);
    return out;
}
