#pragma once
// The static solution as a SINEX 2.02 file: station, equipment, the three
// coordinates with their covariance, for combination and archive software.
#include <string>
#include <vector>

#include "driver/gCPosC.h"
#include "geodesy/mjd.h"

namespace sinexns {
/// Agency code of the files Orvo writes (creating and providing agency).
inline const std::string Agency = "ORV";
/// The time field "not given" (open start or end).
inline const std::string NoEpoch = "00:000:00000";
}  // namespace sinexns

/// SINEX time field YY:DDD:SSSSS of epoch t (time scale of t, GPS time for
/// observation epochs), the second of day rounded to whole seconds (86400
/// stays, as the format allows). A year outside 1951-2050, which the
/// two-digit year cannot hold, ends the run with the framed error.
std::string SinexEpoch(const mjd& t);

/// Four-character site code: the first four characters of markerName in
/// upper case, blanks inside as "_"; a blank marker name takes the first
/// four of the file name obsFile (RINEX names start with the site code). A
/// code shorter than four is padded with "_".
std::string SinexSiteCode(const std::string& markerName, const std::string& obsFile);

/// The DOMES number of markerNumber (five digits, M or S, three digits,
/// blanks around ignored), or nine "-" when it is none.
std::string SinexDomes(const std::string& markerNumber);

/// Header line "%=SNX 2.02 ..." by agency, with creation, data start and
/// end times (SinexEpoch texts), nEstimates parameters, unconstrained
/// (code 2), station contents (S), technique P.
std::string SinexHeaderLine(const std::string& agency, const std::string& created,
                            const std::string& start, const std::string& end, long nEstimates);

/// SITE/ID data line of site with its DOMES number, a description (cut to
/// 22 characters), longitude (rad, any turn, printed east 0-360),
/// latitude (rad) as degrees, minutes, seconds with 0.1" and height (m, F7.1).
std::string SinexSiteIdLine(const std::string& site, const std::string& domes,
                            const std::string& description, long double lon_rad,
                            long double lat_rad, long double h_m);

/// The first 41 columns shared by SITE/RECEIVER, SITE/ANTENNA,
/// SITE/ECCENTRICITY and SOLUTION/EPOCHS: site, point "A", solution id soln
/// (right-justified in 4), technique P, start and end time texts.
std::string SinexSiteLine(const std::string& site, const std::string& soln,
                          const std::string& start, const std::string& end);

/// SOLUTION/ESTIMATE data line: parameter index, type (e.g. "STAX"), site,
/// solution id, reference time text, unit (e.g. "m"), constraint code 2,
/// value as E21.15 and its standard deviation as E11.6 (both in unit).
std::string SinexEstimateLine(long index, const std::string& type, const std::string& site,
                              const std::string& soln, const std::string& refEpoch,
                              const std::string& unit, long double value, long double sigma);

/// SOLUTION/MATRIX_ESTIMATE data line: row, first column and one to three
/// elements (E21.14) of that row from that column on. More than three
/// elements, or none, end the run with the framed error.
std::string SinexMatrixLine(long row, long col, const std::vector<long double>& elements);

/// With isSinexFile and a static solution writes sinexfile: header,
/// FILE/REFERENCE, SITE/ID, SITE/RECEIVER, SITE/ANTENNA,
/// SITE/ECCENTRICITY (UNE from the RINEX antenna deltas), SOLUTION/EPOCHS
/// (first, last and middle epoch RefEpoch), SOLUTION/ESTIMATE of RecPosEst
/// (STAX, STAY, STAZ at RefEpoch, m) with the report's precisions
/// sqrt(QxxAll(i,i) * s0apost), and SOLUTION/MATRIX_ESTIMATE L COVA,
/// QxxAll(0..2, 0..2) * s0apost (m^2). The whole text is formed before the
/// file is opened, so an error leaves no file; a file that does not open
/// ends the run with the framed error.
void WriteSinex(const gCPosC& gc, const mjd& RefEpoch);
