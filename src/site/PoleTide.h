#pragma once
// Pole coordinates from an Earth rotation parameter file (IGS ERP, versions
// 1 and 2), the conventional mean pole, and the site displacement by the
// pole tide that their difference drives.
#include <cstddef>
#include <string>

#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "geodesy/neu.h"
#include "numerics/matrix.h"

namespace PoleTidens {
/// Distance (s) outside the file's epochs beyond which a request is warned:
/// one day of extrapolation still holds the pole to a milliarcsecond.
constexpr long double MaxOutside_s = 86400.0L;
/// A line longer than this after trimming is a record; shorter ones are the
/// end marks some producers leave.
constexpr std::size_t MinRecordLength = 5;
}  // namespace PoleTidens

class PoleTide {
public:
    /// Columns of VAL.
    enum Column { X = 0, Y = 1, UT1UTC = 2 };

    PoleTide();

    /// Stores the ERP file name; a missing name or one of 256 characters or
    /// more ends the run with the framed error.
    void SetFile(const char* name);

    /// Reads the ERP file: the version from the lines up to the column head
    /// ("MJD"), then every record below the units line: MJD, x, y (stored in
    /// arcseconds) and UT1-UTC (stored in seconds). A file that can't be
    /// opened, has no column head, no records, a record that does not parse
    /// or records out of time order ends the run with the framed error.
    void ReadFile();

    /// Number of records read.
    long GetNEpoch() const { return neph; }

    /// Stores the epoch t for SetMeanPole.
    void SetCalcEpoch(const mjd& t);

    /// Conventional mean pole xp, yp (arcseconds) at the stored epoch: the
    /// cubic up to 2010.0 and the line after it (IERS Conventions 2010,
    /// 7.1.4).
    void SetMeanPole();

    /// Pole tide displacement dpos (m, north, east, up) at epoch t of the
    /// site at pos (rad): the pole xi, yi interpolated linearly in the file
    /// (extrapolated outside it, warned beyond one day) less the mean pole
    /// of the last SetMeanPole (IERS Conventions 2010, 7.1.4).
    void GetPoleTide(const mjd& t, const flh& pos, neu& dpos);

    /// Mean pole x (arcseconds) of the last SetMeanPole.
    long double GetXp() const { return xp; }
    /// Mean pole y (arcseconds) of the last SetMeanPole.
    long double GetYp() const { return yp; }
    /// Pole x (arcseconds) of the last GetPoleTide.
    long double GetXi() const { return xi; }
    /// Pole y (arcseconds) of the last GetPoleTide.
    long double GetYi() const { return yi; }

private:
    // Reads up to and including the units line; returns the lines read.
    long SkipHeader(std::istream& in, bool setVersion);
    [[noreturn]] void Fail(const std::string& why) const;

    char file[256];
    long neph;
    short version;
    long nPoleTideData;
    long double PoleM;  // arcseconds per unit of the pole columns
    long double Tm;     // seconds per unit of the UT1-UTC column
    mjd CalcEph;
    mjd J2000;          // 2000-01-01 0h, the origin of the mean pole's years
    matrix<long double> VAL;
    matrix<mjd> eph;
    long double xpdata[4], ypdata[4];
    long double xp, yp, xi, yi;
};
