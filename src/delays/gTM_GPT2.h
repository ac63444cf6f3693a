#pragma once
// GPT2: pressure, temperature, humidity, lapse rate and VMF1 coefficients
// from a global grid of mean values with annual and semi-annual terms
// (Lagler et al. 2013), feeding the Saastamoinen delays.
#include "delays/gTropDelay.h"
#include "delays/gpt2_grd.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"
#include "numerics/matrix.h"

#include <string>

namespace gTM_GPT2ns {
/// Smallest grid step (degrees): ten times the 0.001 degree that tells one
/// node coordinate from another, and finer than any published GPT2 grid
/// (1 and 5 degrees).
constexpr long double MinStep_deg = 0.01L;
}  // namespace gTM_GPT2ns

class gTM_GPT2 {
public:
    char file[1024];                // grid file name
    long nL = 0, nF = 0;            // grid columns (longitudes), rows (latitudes)
    long nLine = 0;                 // data lines counted by CheckData
    long double minF = 0.0L, maxF = 0.0L, minL = 0.0L, maxL = 0.0L;  // degrees
    long double dF = 0.0L, dL = 0.0L;  // grid steps, degrees, positive
    matrix<gpt2_grd> pG;            // pressure, Pa
    matrix<gpt2_grd> tG;            // temperature, K
    matrix<gpt2_grd> qG;            // specific humidity, kg/kg
    matrix<gpt2_grd> dtG;           // temperature lapse rate, K/m
    matrix<gpt2_grd> aWG;           // wet VMF1 coefficient
    matrix<gpt2_grd> aHG;           // hydrostatic VMF1 coefficient
    matrix<long double> hN;         // geoid undulation, m
    matrix<long double> hH;         // height of the grid point, m
    static constexpr long double gMean = 9.80665L;  // mean gravity, m/s^2
    static constexpr long double dMtr = 0.028965L;  // molar mass of dry air, kg/mol
    static constexpr long double Rg = 8.3143L;      // universal gas constant, J/(K mol)
    long double gPt = 1.0L;         // gravity factor of the site
    long double F1 = 0.0L, F2 = 0.0L, L1 = 0.0L, L2 = 0.0L;  // cell corners, degrees
    long double ptF = 0.0L, ptL = 0.0L;  // site latitude and longitude, degrees
    long double pth = 0.0L;              // site ellipsoidal height, m
    long IX[4][2] = {{0, 0}, {0, 0}, {0, 0}, {0, 0}};  // corners (row, column)
    long double aH = 0.0L, aW = 0.0L;   // VMF1 coefficients of the last epoch
    // Further results of the last epoch at the site.
    long double pres = 0.0L;  // pressure, hPa
    long double temp = 0.0L;  // temperature, degrees Celsius
    long double dT = 0.0L;    // temperature lapse rate, K/m
    long double e = 0.0L;     // water vapour pressure, hPa
    long double undu = 0.0L;  // geoid undulation, m

    gTM_GPT2();

    /// Sets the grid file name (cut to 1023 characters).
    void SetFile(const char* name);

    /// Reads the grid: CheckData, then ReadData.
    void ReadFile();

    /// First pass: finds the grid extent and steps from the node coordinates
    /// and checks that the lines fill a regular grid (nL*nF lines) covering
    /// all longitudes. A file that does not open or breaks this ends the run
    /// with a framed error; a node coordinate that is not finite or lies off
    /// the globe (|latitude| > 90, |longitude| > 360 degrees), and a step
    /// below MinStep_deg, with one naming the file and the line.
    void CheckData();

    /// Second pass: reads every node into its row (row 0 the smallest
    /// latitude) and column, whatever the order of lines in the file. A short
    /// line, a node off the grid or a node given twice ends the run with a
    /// framed error.
    void ReadData();

    /// Site setup from the latitude and longitude (radians) and ellipsoidal
    /// height (metres) of pos: picks the grid cell around the site (one row
    /// used twice beyond the outermost latitudes; the cell across the grid's
    /// longitude seam when the site lies in it). Ends the run with a framed
    /// error when no grid has been read.
    void SetAtmParams(const flh& pos);

    /// Writes the Saastamoinen zenith delays (m) to td.tdry and td.twet for
    /// the GPT2 pressure, temperature and humidity of the site at the day of
    /// eph (the day fraction is not used), and keeps aH, aW, pres, temp, dT,
    /// e, undu. Each corner's values are carried to the site height, then
    /// interpolated bilinearly. Lagler, Schindelegger, Boehm, Krasna &
    /// Nilsson (2013), Geophys. Res. Lett. 40, 1069-1073.
    void GetZenithDelay(gTropDelay& td, const mjd& eph);

    /// Hydrostatic VMF1 coefficient of the last GetZenithDelay.
    long double GetCoeffAH() const { return aH; }
    /// Wet VMF1 coefficient of the last GetZenithDelay.
    long double GetCoeffAW() const { return aW; }

    /// Interpolates the four corner values v (in the order of IX) to the
    /// site: linear in longitude when the two rows are one, otherwise
    /// bilinear, longitude first.
    long double GPT2Interpolate(const long double v[4]) const;

private:
    [[noreturn]] void Fail(long lineNo, const std::string& what) const;
    void CheckNode(long double F, long double L, long lineNo) const;
    void CheckStep(long double step, long lineNo) const;
};
