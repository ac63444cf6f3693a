#include "delays/AntennaPCV.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/ProgramError.h"

using namespace AntennaPCVns;

namespace {

bool Has(const std::string& line, const char* label) { return line.find(label) != std::string::npos; }

// Columns [pos, pos + len) as far as the line holds them.
std::string Field(const std::string& line, std::size_t pos, std::size_t len)
{
    return pos < line.size() ? line.substr(pos, len) : std::string();
}

// A field that does not convert reads 0, as a blank one does.
long double Num(const std::string& line, std::size_t pos, std::size_t len)
{
    return std::strtold(Field(line, pos, len).c_str(), nullptr);
}

// Grid row `row` of m (nZen values from column 8, 8 wide, millimetres) into
// metres. A field without a digit means the row, and so the record, is cut.
void ReadRow(const std::string& line, matrix<long double>& m, long row, long nZen,
             const std::string& file, long lineNo)
{
    for (long k = 0; k < nZen; ++k) {
        const std::string f = Field(line, static_cast<std::size_t>(8 + 8 * k), 8);
        bool digit = false;
        for (char c : f) digit = digit || std::isdigit(static_cast<unsigned char>(c));
        if (!digit)
            AntexFail(file, lineNo, "FEWER THAN " + std::to_string(nZen)
                                        + " GRID VALUES (RECORD CUT INSIDE ITS GRID)!");
        m(row * nZen + k) = std::strtold(f.c_str(), nullptr) / 1000.0L;
    }
}

// A receiver calibration measured on two GPS carriers stands for the other
// constellations' carriers of similar wavelength.
void TakeOver(neu& pc, matrix<long double>& zen, matrix<long double>& azi, const neu& pcFrom,
              const matrix<long double>& zenFrom, const matrix<long double>& aziFrom, bool withAzi)
{
    if (zen.Length() > 1) return;
    pc = pcFrom;
    zen = zenFrom;
    if (withAzi) azi = aziFrom;
}

}  // namespace

bool AntexLine(std::istream& in, std::string& line, const std::string& file, long& lineNo)
{
    if (!std::getline(in, line)) return false;
    ++lineNo;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() > LineSize) AntexFail(file, lineNo, "LINE LONGER THAN 511 CHARACTERS!");
    return true;
}

void AntexFail(const std::string& file, long lineNo, const std::string& text)
{
    ProgramError("Orvo", "ANTEX FILE " + file + ": line " + std::to_string(lineNo) + ": " + text);
}

AntennaPCV::AntennaPCV()
    : SatID(0), PCVType(NoType), dazi(0.0L), zen1(0.0L), zen2(0.0L), dzen(0.0L), nZen(0), nAzi(0),
      nFreq(0), ixZen(IX_OUT_BELOW), ixAzm(IX_OUT_BELOW), hasAzimuthPCV(false),
      ValidFrom(44250, 0.0L), ValidTo(85000, 0.0L)
{
    AntennaName[0] = '\0';
    AntennaSerial[0] = '\0';
}

void AntennaPCV::ReadFile(std::istream& in, const std::string& file, long& lineNo)
{
    std::string line;
    for (;;) {
        if (!AntexLine(in, line, file, lineNo))
            AntexFail(file, lineNo, "FILE ENDS INSIDE AN ANTENNA RECORD (NO END OF ANTENNA)!");
        if (Has(line, "END OF ANTENNA")) break;
        // Reading on would merge two records into one.
        if (Has(line, "START OF ANTENNA"))
            AntexFail(file, lineNo, "START OF ANTENNA INSIDE A RECORD (NO END OF ANTENNA)!");
        if (Has(line, "TYPE / SERIAL NO")) {
            ParseSerialType(line);
        } else if (Has(line, "DAZI") || Has(line, "ZEN1 / ZEN2 / DZEN")) {
            // Carriers already read hold the old grid; a look-up on the new
            // one would reach past them.
            if (nZen > 0) AntexFail(file, lineNo, "GRID CHANGED AFTER THE FIRST FREQUENCY!");
            if (Has(line, "DAZI")) {
                dazi = Num(line, 2, 6);
                hasAzimuthPCV = std::fabs(dazi) > 0.0001L;
            } else {
                zen1 = Num(line, 2, 6), zen2 = Num(line, 8, 6), dzen = Num(line, 14, 6);
            }
        } else if (Has(line, "# OF FREQUENCIES")) {
            nFreq = std::atoi(Field(line, 0, 6).c_str());
        } else if (Has(line, "VALID FROM") || Has(line, "VALID UNTIL")) {
            if (!ParseValid(line, Has(line, "VALID FROM") ? ValidFrom : ValidTo))
                AntexFail(file, lineNo, "VALIDITY EPOCH NOT VALID!");
        } else if (Has(line, "START OF FREQUENCY")) {
            const std::string f = Field(line, 3, 1) + Field(line, 5, 1);
            if (f == "G1") ReadPCVData(in, PC_G01, PVZEN_G01, PVAZI_G01, file, lineNo);
            if (f == "G2") ReadPCVData(in, PC_G02, PVZEN_G02, PVAZI_G02, file, lineNo);
            if (f == "R1") ReadPCVData(in, PC_R01, PVZEN_R01, PVAZI_R01, file, lineNo);
            if (f == "R2") ReadPCVData(in, PC_R02, PVZEN_R02, PVAZI_R02, file, lineNo);
            if (f == "E1") ReadPCVData(in, PC_E01, PVZEN_E01, PVAZI_E01, file, lineNo);
            if (f == "E7") ReadPCVData(in, PC_E07, PVZEN_E07, PVAZI_E07, file, lineNo);
        }
    }
    if (PCVType == 0) {
        TakeOver(PC_G02, PVZEN_G02, PVAZI_G02, PC_G01, PVZEN_G01, PVAZI_G01, hasAzimuthPCV);
        TakeOver(PC_R01, PVZEN_R01, PVAZI_R01, PC_G01, PVZEN_G01, PVAZI_G01, hasAzimuthPCV);
        TakeOver(PC_R02, PVZEN_R02, PVAZI_R02, PC_G02, PVZEN_G02, PVAZI_G02, hasAzimuthPCV);
        TakeOver(PC_E01, PVZEN_E01, PVAZI_E01, PC_G01, PVZEN_G01, PVAZI_G01, hasAzimuthPCV);
        TakeOver(PC_E07, PVZEN_E07, PVAZI_E07, PC_G02, PVZEN_G02, PVAZI_G02, hasAzimuthPCV);
    }
    if (PCVType < 0 || PCVType > MaxType)
        ProgramWarning("Orvo", "TYPE OF ANTENNA SENSOR NOT DEFINED [RECEIVER|GPS|GLONASS|GALILEO]!");
}

void AntennaPCV::ParseSerialType(const std::string& line)
{
    // Padded to their field so that "BLOCK II" does not match "BLOCK IIA".
    static const char* const Types[] = {"BLOCK I    ", "BLOCK II   ", "BLOCK IIA  ", "BLOCK IIR  ",
                                        "BLOCK IIR-A", "BLOCK IIR-B", "BLOCK IIR-M", "BLOCK IIF  ",
                                        "BLOCK IIIA ", "GLONASS    ", "GLONASS-M  ", "GLONASS-K  ",
                                        "GLONASS-K1 "};
    PCVType = 0;
    for (short t = 1; t < MaxType && PCVType == 0; ++t)
        if (Has(line, Types[t - 1])) PCVType = t;
    if (Has(line, "GALILEO")) PCVType = MaxType;
    const std::string type = Field(line, 0, 20), serial = Field(line, 20, 20);
    // An unknown block has unknown offsets: better no run than a wrong one.
    if (PCVType == 0 && Has(line, "BLOCK"))
        ProgramError("Orvo", "GPS SATELLITE TYPE >" + type
                                 + "< UNDETERMINED - NEW TYPE OF GPS SATELLITE?!? ");
    if (PCVType == 0 && Has(line, "GLONASS"))
        ProgramError("Orvo", "GLONASS SATELLITE TYPE >" + type
                                 + "< UNDETERMINED - NEW TYPE OF GPS SATELLITE?!? ");
    std::strcpy(AntennaName, type.c_str());
    std::strcpy(AntennaSerial, serial.c_str());
    const int prn = std::atoi(Field(line, 21, 2).c_str());
    const char sys = serial.empty() ? ' ' : serial[0];
    SatID = static_cast<short>(sys == 'G' ? prn : sys == 'R' ? prn + 100 : sys == 'E' ? prn + 200 : 0);
}

bool AntennaPCV::ParseValid(const std::string& line, mjd& t) const
{
    long f[5];
    for (int i = 0; i < 5; ++i) f[i] = std::atol(Field(line, 6 * static_cast<std::size_t>(i), 6).c_str());
    const long double sec = Num(line, 30, 13);
    if (f[0] < 1901 || f[0] > 2199 || f[1] < 1 || f[1] > 12 || f[3] < 0 || f[3] > 23 || f[4] < 0
        || f[4] > 59 || !(sec >= 0.0L && sec < 60.0L))
        return false;
    const int leap = ymdhms::LeapYear(f[0]) ? 1 : 0;
    if (f[2] < 1 || f[2] > month_day[leap][f[1]] - month_day[leap][f[1] - 1]) return false;
    t = ymdhms2mjd(ymdhms(static_cast<unsigned short>(f[0]), static_cast<unsigned short>(f[1]),
                          static_cast<unsigned short>(f[2]), static_cast<unsigned short>(f[3]),
                          static_cast<unsigned short>(f[4]), sec));
    return true;
}

void AntennaPCV::ReadPCVData(std::istream& in, neu& pcneu, matrix<long double>& pcvzen,
                             matrix<long double>& pcvazi, const std::string& file, long& lineNo)
{
    // The grid is checked before anything is allocated for it. The node
    // counts are rounded once the quotients are known to be whole: the
    // whole part alone would lose a node to round-off of a step like 0.1.
    if (!(dzen > 0.0L)) AntexFail(file, lineNo, "DZEN NOT POSITIVE!");
    if (hasAzimuthPCV && !(dazi > 0.0L)) AntexFail(file, lineNo, "DAZI NEGATIVE!");
    const long double qz = (zen2 - zen1) / dzen, qa = hasAzimuthPCV ? 360.0L / dazi : 0.0L;
    if (!(qz > -GridTol && qz < MaxZen - 0.5L))
        AntexFail(file, lineNo, "ZEN2 BELOW ZEN1 OR MORE THAN " + std::to_string(MaxZen) + " ZENITH NODES!");
    if (!(qa < MaxAzi - 0.5L))
        AntexFail(file, lineNo, "MORE THAN " + std::to_string(MaxAzi) + " AZIMUTH ROWS!");
    if (std::fabs(qz - std::round(qz)) > GridTol || std::fabs(qa - std::round(qa)) > GridTol)
        AntexFail(file, lineNo, "GRID DOES NOT CLOSE ON ZEN2 OR ON 360 DEGREES!");
    nZen = std::lround(qz) + 1;
    nAzi = hasAzimuthPCV ? std::lround(qa) + 1 : 0;

    std::string line;
    if (!AntexLine(in, line, file, lineNo) || !Has(line, "NORTH / EAST / UP"))
        AntexFail(file, lineNo, "NO NORTH / EAST / UP AFTER START OF FREQUENCY!");
    pcneu.Set(Num(line, 0, 10) / 1000.0L, Num(line, 10, 10) / 1000.0L, Num(line, 20, 10) / 1000.0L);
    if (!AntexLine(in, line, file, lineNo) || !Has(line, "NOAZI"))
        AntexFail(file, lineNo, "NO NOAZI ROW AFTER NORTH / EAST / UP!");
    pcvzen.Resize(nZen, 1, 0.0L);
    ReadRow(line, pcvzen, 0, nZen, file, lineNo);
    pcvazi.Resize(nAzi, nZen, 0.0L);
    for (long a = 0; a < nAzi; ++a) {
        if (!AntexLine(in, line, file, lineNo))
            AntexFail(file, lineNo, "FILE ENDS INSIDE AN AZIMUTH GRID!");
        ReadRow(line, pcvazi, a, nZen, file, lineNo);
    }
}

void AntennaPCV::SetIX(long double zen)
{
    // Written so that a NaN angle falls below the grid, not into a cell.
    if (!(zen >= zen1 + 0.001L)) ixZen = IX_OUT_BELOW;
    else if (zen > zen2 - 0.001L) ixZen = IX_OUT_ABOVE;
    else ixZen = static_cast<long>(std::floor((zen - zen1) / dzen));
}

void AntennaPCV::SetIX(long double zen, long double azm)
{
    SetIX(zen);
    if (!(azm >= 0.001L)) ixAzm = IX_OUT_BELOW;
    else if (azm > 359.999L) ixAzm = IX_OUT_ABOVE;
    else ixAzm = static_cast<long>(std::floor(azm / dazi));
}

void AntennaPCV::GetAntennaPCV(long double zen, long double azm, long double& pcvg1,
                               long double& pcvg2, long double& pcvr1, long double& pcvr2,
                               long double& pcve1, long double& pcve7)
{
    pcvg1 = pcvg2 = pcvr1 = pcvr2 = pcve1 = pcve7 = 0.0L;
    if (nZen < 1) return;  // no carrier read, so no checked grid either
    if (hasAzimuthPCV) SetIX(zen, azm);
    else SetIX(zen);
    const auto pcv = [&](const matrix<long double>& z, const matrix<long double>& a) {
        return hasAzimuthPCV ? GetAntennaPCV_AZI(zen, azm, a) : GetAntennaPCV_ZEN(zen, z);
    };
    if (PCVType >= 0 && PCVType <= 9) pcvg1 = pcv(PVZEN_G01, PVAZI_G01), pcvg2 = pcv(PVZEN_G02, PVAZI_G02);
    if (PCVType == 0 || (PCVType >= 10 && PCVType <= 13))
        pcvr1 = pcv(PVZEN_R01, PVAZI_R01), pcvr2 = pcv(PVZEN_R02, PVAZI_R02);
    if (PCVType == 0 || PCVType == MaxType) pcve1 = pcv(PVZEN_E01, PVAZI_E01), pcve7 = pcv(PVZEN_E07, PVAZI_E07);
}

long double AntennaPCV::GetAntennaPCV_ZEN(long double zen, const matrix<long double>& pvzen) const
{
    if (nZen < 1 || pvzen.NRow() != nZen) return 0.0L;  // a carrier the record lacks
    if (ixZen == IX_OUT_BELOW) return pvzen(0);
    if (ixZen == IX_OUT_ABOVE) return pvzen(nZen - 1);
    const long double dz = (zen - zen1) / dzen - static_cast<long double>(ixZen);
    return pvzen(ixZen) + (pvzen(ixZen + 1) - pvzen(ixZen)) * dz;
}

long double AntennaPCV::GetAntennaPCV_AZI(long double zen, long double azi,
                                          const matrix<long double>& pvazi) const
{
    if (nAzi < 1 || pvazi.NRow() != nAzi || pvazi.NCol() != nZen) return 0.0L;
    // Outside the grid on an axis the edge node stands and that axis's
    // terms drop out: linear along the edge, the corner value outside both.
    const bool zIn = ixZen != IX_OUT_BELOW && ixZen != IX_OUT_ABOVE;
    const bool aIn = ixAzm != IX_OUT_BELOW && ixAzm != IX_OUT_ABOVE;
    const long z = zIn ? ixZen : (ixZen == IX_OUT_BELOW ? 0 : nZen - 1);
    const long a = aIn ? ixAzm : (ixAzm == IX_OUT_BELOW ? 0 : nAzi - 1);
    const long double dz = zIn ? (zen - zen1) / dzen - static_cast<long double>(z) : 0.0L;
    const long double da = aIn ? azi / dazi - static_cast<long double>(a) : 0.0L;
    const long double f = pvazi(a, z);
    const long double a1 = zIn ? pvazi(a, z + 1) - f : 0.0L;
    const long double a2 = aIn ? pvazi(a + 1, z) - f : 0.0L;
    const long double a3 = zIn && aIn ? f + pvazi(a + 1, z + 1) - pvazi(a, z + 1) - pvazi(a + 1, z) : 0.0L;
    return f + a1 * dz + a2 * da + a3 * da * dz;
}
