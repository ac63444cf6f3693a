#pragma once
// The maps of an IONEX file (TEC and RMS) on their grid, and the
// interpolation that turns them into a slant ionospheric delay.
#include <istream>
#include <string>

#include "delays/IONEXHeader.h"
#include "delays/TEC.h"
#include "geodesy/mjd.h"
#include "numerics/matrix.h"

namespace IONEXns {
/// TEC units to metres of delay on GPS L1: 40.3e16 / f1^2, f1 = 1575.42 MHz.
constexpr long double TECU2m_L1 = 0.16237244751199470L;
/// A longitude this close to an end of the grid (deg) is taken as that end.
constexpr long double LonEnd_deg = 1e-6L;
/// Slack on a grid ratio (nodes) before its integer part is taken, so that
/// a ratio such as 70 that decimal steps make 69.99999999 keeps its node.
constexpr long double GridSlack = 1e-6L;
}  // namespace IONEXns

class IONEXData {
public:
    long neph = 0, nhgt = 0, nlat = 0, nlon = 0;  // maps, heights, rows, columns
    matrix<mjd> EPH;                              // epoch of each TEC map
    TEC TECVAL, TECRMS;                           // TECU; latitude row 0 is lat2
    bool hasRMS = false;                          // whether the file had RMS maps

    /// Maps laid out by the header h; h must outlive the object (IONEX owns both).
    explicit IONEXData(const IONEXHeader& h) : ihead(&h) {}
    /// Points the maps to the header h (after a copy of the owner).
    void SetHeader(const IONEXHeader& h) { ihead = &h; }
    /// The header the maps are laid out by.
    const IONEXHeader& Header() const { return *ihead; }
    /// Names the file in the messages of the reading, whose header has
    /// headerLines lines.
    void SetName(const std::string& name, long headerLines) { file = name, line0 = headerLines; }

    /// Map counts from the header: nMaps maps, and per height, latitude and
    /// longitude (end - start)/step + 1 nodes (one height for a step below
    /// 1e-4 km). A grid of fewer than two nodes in latitude or longitude, a
    /// zero step, fewer than two maps or an interval of 0 ends the run with
    /// the framed error.
    void SetDimensions();

    /// Slant delay at secd seconds of day, geocentric latitude beta_deg,
    /// longitude la_deg (-180..180) and elevation elev_deg, through a single
    /// layer at hgt1 above BaseR. Type 0 takes the nearest node and map,
    /// 1 interpolates bilinearly on both neighbouring maps and linearly in
    /// time, 2 does the same on maps rotated with the Sun (IONEX 1.0, eq. 3:
    /// longitude shifted by 360 deg per day of offset from each map's epoch).
    /// Type outside 0..2 is set to 2 with a warning. Unit 0 gives metres on
    /// L1, any other the TEC units; tecv 0 the TEC maps, any other the RMS
    /// maps. Positions on each axis are cut to whole nodes toward zero: an
    /// epoch two intervals or more before the first map or one interval or
    /// more past the last, a latitude two steps or more beyond LAT2 or one
    /// step or more beyond LAT1, or a longitude past LON2 or a step or more
    /// before LON1 ends the run with the framed error; short of that the nearest
    /// cell is extrapolated.
    long double CalcIonDelay(long double& secd, long double& beta_deg, long double& la_deg, long double& elev_deg,
                             int& Unit, int& Type, int& tecv);

private:
    long double Bilinear(const TEC& m, long e, long b1, long double db, long double la_deg) const;
    void LonCell(long double la_deg, long& i1, long double& f) const;
    friend std::istream& operator>>(std::istream& in, IONEXData& d);
    const IONEXHeader* ihead;
    std::string file;
    long line0 = 0;
};

/// Reads nMaps TEC maps and, when present, as many RMS maps behind them,
/// each value times 10^exponent. A map that is missing, cut, out of order or
/// laid out otherwise than the header says ends the run with the framed
/// error naming the line.
std::istream& operator>>(std::istream& in, IONEXData& d);
