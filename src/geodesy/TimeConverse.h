#pragma once
// Conversions between the three time classes. None applies leap seconds: a
// result keeps the time scale of its input, and a caller who needs another
// scale adds LeapSecond() itself. Calendar dates follow the Gregorian rule
// over the whole range of ymdhms (1901-2199).
#include "geodesy/GPSws.h"
#include "geodesy/LeapSecond.h"
#include "geodesy/mjd.h"
#include "geodesy/ymdhms.h"

/// True for a Gregorian leap year; year 0 is taken as common.
bool LeapYear(long y);

/// Splits a second of day s (s, >= 0) into hour, minute and second; see
/// ymdhms::Sec2HMS for the carries (the hour may reach 24) and the checks.
void Sec2HMS(long double s, unsigned short& hr, unsigned short& mn, long double& sec);

/// Calendar epoch of t. A day before 1901-01-01 (MJD 15385) ends the run
/// with ymdhms "YEAR not valid", as does one after 2199.
ymdhms mjd2ymdhms(const mjd& t);
/// MJD epoch of t. An hour beyond 23 carries into the next days, and a time
/// within 1e-10 s of midnight is 0h of the next day.
mjd ymdhms2mjd(const ymdhms& t);
/// GPS week and second of t. A day before the GPS origin (MJD 44244) ends
/// the run with GPSws "WEEK not valid".
GPSws mjd2GPSws(const mjd& t);
/// MJD epoch of t.
mjd GPSws2mjd(const GPSws& t);
/// GPS week and second of t; ends the run like mjd2GPSws before the origin.
/// An hour beyond 23 carries into the next days.
GPSws ymdhms2GPSws(const ymdhms& t);
/// Calendar epoch of t; a second within 1e-5 s of 60 carries into the
/// minute and a minute of 60 into the hour (which may then reach 24).
ymdhms GPSws2ymdhms(const GPSws& t);
