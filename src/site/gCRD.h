#pragma once
// Station coordinate catalogue (-ac): a fixed-column text table of
// positions with linear velocities and their reference epochs, from which
// the a-priori marker position of the observed station is taken, together
// with the constraint sections that such a file can carry and a writer of
// the same layout.
//
// Columns from 0: ID 0-3 (a blank in column 3 ends the table), marker name
// 5-24, marker number 26-85 (blank matches any number), from 87 on
// "X Y Z VX VY VZ yyyy-mm-dd hh:mm:ss" in m and m/yr. '#' in column 0 marks
// a comment; the table ends at the first empty line or blank ID column.
#include <fstream>
#include <string>

#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "geodesy/ymdhms.h"
#include "numerics/matrix.h"

namespace gCRDns {
/// First column of the free-form numeric part of a data line.
constexpr int NumPos = 87;
/// Smallest sigma (m) an absolute constraint keeps: a zero would give an
/// infinite weight.
constexpr long double MinAbsSigma = 0.00001L;
/// Smallest sigma (m) of the relative, height and horizontal constraints.
constexpr long double MinRelSigma = 1e-7L;
/// Sigmas below this magnitude (m) count as absent.
constexpr long double SigmaThres = 1e-10L;
}  // namespace gCRDns

class gCRD {
public:
    /// No file, nothing found, writer closed.
    gCRD();

    /// Stores the catalogue name. A name that does not exist ends the run
    /// with "COORDINATE FILE DOES NOT EXIST!"; a null name or one of 256
    /// characters or more ends it as well.
    void SetFile(const char* name);

    /// Position (m, Cartesian) of station mname at epoch eph: the first
    /// data line whose marker name column starts with mname (case-sensitive)
    /// and whose marker number column is blank or equals mnumber, moved
    /// linearly with its velocity over the difference of decimal years
    /// (ymdhms::GetYearDec) from its reference date to eph. Without such a
    /// line, or for an empty mname, the result is 0, 0, 0 and IsSite()
    /// false. A catalogue that does not open ends the run with "COORDINATE
    /// FILE CAN NOT BE OPENED!", a matched line without its 12 valid fields
    /// with "PROBLEM READING COORDINATE LINE FOR STATION mname!".
    xyz GetCRD(const char* mname, const char* mnumber, const mjd& eph);
    /// As above, also giving the line's velocity (m/yr) in vel (0 when the
    /// station is not listed).
    xyz GetCRD(const char* mname, const char* mnumber, const mjd& eph, xyz& vel);
    /// Position (m) of the first line whose name column starts with mname,
    /// for catalogues holding only X Y Z; the number column is not looked
    /// at and comment lines before the table may have a blank column 3.
    /// Failures as above; fewer than 3 numbers is a bad line.
    xyz GetCRD(const char* mname);
    /// Whether the last GetCRD found its station.
    bool IsSite() const { return IsSiteB; }

    /// The whole table: names (columns 5-24, trimmed), positions (m),
    /// velocities (m/yr) and reference epochs, one row per data line; the
    /// result is the number of lines, 0 when the file does not open. No
    /// file set ends the run with "COORDINATE FILE IS NOT SET!", a bad line
    /// with the error of GetCRD naming that line's station.
    long ReadCRDs(matrix<std::string>& PT, matrix<xyz>& POS, matrix<xyz>& VEL, matrix<mjd>& EPH);

    /// Constraint sections: the rows behind the first comment line holding
    /// conStr (and the comment lines that follow it), up to the end of file,
    /// an empty line or a blank column 3. Each returns the number of rows
    /// (0 without the file or the heading) and sizes its matrices to it.
    /// Names at columns 5-24 (second station 26-45), sigmas (m) in 15-column
    /// fields; a field that is not a number reads 0, and a sigma whose
    /// magnitude is below 1e-10 takes the smallest value of its kind.
    /// Stations held to the minimum-constraint datum.
    long ReadMINConst(matrix<std::string>& PT, const char* conStr);
    /// Absolute constraints: SIG n by 3, sigmas of X Y Z at 26, 41, 56.
    long ReadABSConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr);
    /// Relative constraints: PT n by 2, SIG n by 3 at 47, 62, 77.
    long ReadRELConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr);
    /// Height difference constraints: PT n by 2, SIG n by 1 at 47.
    long ReadDHConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr);
    /// Horizontal (north, east) constraints: PT n by 2, SIG n by 2 at 47, 62.
    long ReadDNEConst(matrix<std::string>& PT, matrix<long double>& SIG, const char* conStr);
    /// Fixed stations.
    long ReadFixedStat(matrix<std::string>& PT, const char* conStr);

    /// Opens the catalogue name for writing and writes the two heading
    /// lines; false when it does not open.
    bool OpenOutputFile(const char* name);
    /// Writes the next numbered line: name (cut to 20 characters), number
    /// (cut to 60), position pos (m, 4 decimals), velocity vel (m/yr, 4
    /// decimals) and epoch t rounded to the whole second. False when the
    /// stream failed or the running number would pass 9999, the largest
    /// that the ID column holds.
    bool PrintGPoint(const char* mname, const char* mnumber, const xyz& pos, const xyz& vel, const mjd& t);
    /// Closes the written catalogue.
    void CloseOutputFile();

private:
    long ReadCRDs_Count();
    void ReadCRDs_Read(matrix<std::string>& PT, matrix<xyz>& POS, matrix<xyz>& VEL, matrix<mjd>& EPH);
    bool ParseFull(const std::string& line, xyz& pos, xyz& vel, mjd& ref);
    xyz Find(const char* mname, const char* mnumber, const mjd* eph, xyz* vel);
    long Section(const char* conStr, int nNames, const int* sigPos, int nSig, long double minSig,
                 matrix<std::string>& PT, matrix<long double>* SIG);

    char file[256];
    bool IsSiteB;
    std::ofstream CRDOutput;
    long icrd;
    ymdhms dm;
};

/// A-priori marker position (m) of the observed station: the catalogue's
/// position at eph when acrd lists mname/mnumber, else rinexPos after the
/// warning "SITE NAME NOT LISTED IN APRIORI COORDINATE FILE - USING RINEX
/// VALUES!" on the error stream.
xyz AprioriPosition(gCRD& acrd, const char* mname, const char* mnumber, const mjd& eph, const xyz& rinexPos);
