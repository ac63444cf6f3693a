#pragma once
// One calibration record of an ANTEX file: a receiver antenna (type, radome,
// serial) or a satellite antenna (satellite number, validity), with its
// phase centre offsets and variations per carrier. The variations lie on a
// zenith (nadir for satellites) by azimuth grid in degrees and are looked
// up by bilinear interpolation, the scheme the IGS uses to produce them
// (Rothacher & Schmid, ANTEX: The Antenna Exchange Format, version 1.4).
#include <istream>
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "numerics/matrix.h"

namespace AntennaPCVns {
/// Grid index of a look-up below the first node and above the last one.
constexpr long IX_OUT_BELOW = -1;
constexpr long IX_OUT_ABOVE = 99999;
/// Start value of PCVType: no TYPE / SERIAL NO line seen (65535 as 16 bits).
constexpr short NoType = -1;
/// Highest PCVType of the table (GALILEO).
constexpr short MaxType = 14;
/// Lines of the format hold at most 511 characters.
constexpr std::size_t LineSize = 511;
/// Grid values stand in 8 columns from column 8: a line of 511 characters
/// holds 62 of them, so a longer zenith row cannot be a row of this format.
constexpr long MaxZen = (static_cast<long>(LineSize) - 8) / 8;
/// Azimuth rows: a 0.1 degree step over 0..360 is ten times finer than any
/// published calibration, and bounds the allocation before a row is read.
constexpr long MaxAzi = 3601;
/// A grid must close on ZEN2 and on 360 degrees within this many steps, else
/// a look-up near the last node would reach past the grid; 1e-6 is far above
/// the round-off of text with one decimal and far below a real mismatch.
constexpr long double GridTol = 1e-6L;
}  // namespace AntennaPCVns

/// Reads the next line of an ANTEX file into line, without a carriage
/// return, and counts it in lineNo; false at the end of the file. A line
/// longer than 511 characters ends the run with the framed error naming file.
bool AntexLine(std::istream& in, std::string& line, const std::string& file, long& lineNo);

/// Ends the run with the framed error naming file and line lineNo.
[[noreturn]] void AntexFail(const std::string& file, long lineNo, const std::string& text);

class AntennaPCV {
public:
    short SatID;             ///< shared satellite number; 0 for a receiver antenna
    char AntennaName[21];    ///< columns 0-19 of the type line: type and radome
    char AntennaSerial[21];  ///< columns 20-39 of the type line
    short PCVType;           ///< 0 receiver, 1-13 GPS and GLONASS blocks, 14 Galileo
    long double dazi;        ///< azimuth step (deg); 0 without azimuth-dependent values
    long double zen1, zen2, dzen;  ///< first and last zenith angle and step (deg)
    long nZen, nAzi;         ///< grid sizes
    int nFreq;               ///< frequencies in the record
    long ixZen, ixAzm;       ///< cell of the last look-up, or IX_OUT_BELOW / IX_OUT_ABOVE
    bool hasAzimuthPCV;      ///< |dazi| > 0.0001
    mjd ValidFrom, ValidTo;  ///< validity, MJD 44250 to 85000 unless the record says
    neu PC_G01, PC_G02, PC_R01, PC_R02, PC_E01, PC_E07;  ///< offsets (m)
    /// Zenith-only variations (m), nZen values.
    matrix<long double> PVZEN_G01, PVZEN_G02, PVZEN_R01, PVZEN_R02, PVZEN_E01, PVZEN_E07;
    /// Variations (m), nAzi by nZen: row azimuth index, column zenith index.
    matrix<long double> PVAZI_G01, PVAZI_G02, PVAZI_R01, PVAZI_R02, PVAZI_E01, PVAZI_E07;

    /// Empty record: no type, no grid, the default validity.
    AntennaPCV();

    /// Reads one record from the line after START OF ANTENNA through END OF
    /// ANTENNA; file and lineNo name the place in messages. Frequencies other
    /// than G01, G02, R01, R02, E01, E07 are passed over. A receiver antenna
    /// then lends its G01 to an uncalibrated G02, R01, E01 and its G02 to
    /// R02, E07. A file ending inside the record, a second START OF ANTENNA,
    /// an invalid VALID FROM/UNTIL or a broken grid (see ReadPCVData) ends
    /// the run with the framed error naming file and line.
    void ReadFile(std::istream& in, const std::string& file, long& lineNo);

    /// Sets PCVType, SatID, AntennaName and AntennaSerial from a TYPE /
    /// SERIAL NO line. An unknown BLOCK or GLONASS type ends the run.
    void ParseSerialType(const std::string& line);

    /// Epoch t of a VALID FROM / VALID UNTIL line (year, month, day, hour,
    /// minute in 6 columns each, second from column 30); false, t untouched,
    /// when a field lies outside its calendar range.
    bool ParseValid(const std::string& line, mjd& t) const;

    /// Reads one carrier after its START OF FREQUENCY line: the offset from
    /// millimetres to pcneu (m), the NOAZI row into pcvzen (m) and, with
    /// azimuth-dependent values, the 360/dazi + 1 rows into pcvazi (m). A
    /// non-positive DZEN or DAZI, ZEN2 below ZEN1, a grid that does not close
    /// on ZEN2 or 360 degrees, more than MaxZen or MaxAzi nodes, or a record
    /// cut inside its grid end the run with the framed error.
    void ReadPCVData(std::istream& in, neu& pcneu, matrix<long double>& pcvzen,
                     matrix<long double>& pcvazi, const std::string& file, long& lineNo);

    /// Sets ixZen for zenith angle zen (deg).
    void SetIX(long double zen);
    /// Sets ixZen and ixAzm for zenith zen and azimuth azm (deg).
    void SetIX(long double zen, long double azm);

    /// Variations (m) for zenith zen and azimuth azm (deg) on the carriers
    /// that the record serves: GPS for PCVType 0-9, GLONASS for 0 and 10-13,
    /// Galileo for 0 and 14; the others, and carriers the record lacks, are
    /// 0. Outside the grid the edge values hold.
    void GetAntennaPCV(long double zen, long double azm, long double& pcvg1,
                       long double& pcvg2, long double& pcvr1, long double& pcvr2,
                       long double& pcve1, long double& pcve7);

    /// Zenith-only variation (m) from pvzen at zen (deg), after SetIX(zen):
    /// linear between nodes, the edge value outside; 0 for an array that
    /// does not have the record's grid.
    long double GetAntennaPCV_ZEN(long double zen, const matrix<long double>& pvzen) const;

    /// Variation (m) from pvazi at zen, azi (deg), after SetIX(zen, azi):
    /// bilinear inside the grid, linear along an edge outside it, the corner
    /// value outside both; 0 for an array that does not have the grid.
    long double GetAntennaPCV_AZI(long double zen, long double azi,
                                  const matrix<long double>& pvazi) const;
};
