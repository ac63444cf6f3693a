#pragma once
// The command line: the only source of configuration. An option is one
// argument, a hyphen, one to three selector characters at fixed positions and
// the value glued on behind them; an argument never takes the next one.
#include "driver/gCPosC.h"
#include "geodesy/ymdhms.h"

/// Copies the text of `arg` from position `npos` to its end into `file` (empty
/// when `npos` lies behind the end). A name longer than 255 characters ends
/// the run with a framed error rather than being cut to another name.
void ParseFileName(const char* arg, char (&file)[gCPosCns::FileNameSize], int npos);

/// ParseFileName, then sets `isFile`; with `verbose` writes `printString`,
/// the name and "!" as a line on the error stream.
void GetFileName(const char* arg, char (&file)[gCPosCns::FileNameSize], bool& isFile,
                 bool verbose, int npos, const char* printString);

/// atof of the text of `arg` from `npos`, rounded to float; 0 for no number.
float ParseFloat(const char* arg, int npos);

/// atof of the text of `arg` from `npos`; 0 for no number.
double ParseDouble(const char* arg, int npos);

/// Integer of the text of `arg` from `npos` as atoi reads it; 0 for no
/// number, and a number beyond int clamped to the nearest int limit.
int ParseInteger(const char* arg, int npos);

/// Date "yyyy?mm?dd" from `npos` (any separator characters) into `dat` with
/// the time of day 00:00:00; an invalid field ends the run through ymdhms.
void ParseYMD(const char* arg, ymdhms& dat, int npos);

/// Epoch "yyyy?mm?dd?hh?mm?ss.s" from `npos`: as ParseYMD, then hour, minute
/// and the rest as second; an invalid field ends the run through ymdhms.
void ParseDate(const char* arg, ymdhms& dat, int npos);

/// Duration "h:m:s" from `npos`, in seconds; fields that are not there count
/// as 0.
long double ParseHMS(const char* arg, int npos);

/// Two numbers from `pos`: the first is a run of digits and full stops (one
/// leading sign allowed), the character behind it is skipped, the rest is the
/// second; both by atof.
void ParseSigPpm(const char* arg, long double& sig, long double& ppm, int pos);

/// "KIN"/"kin" anywhere in `arg` sets `ifEstKin`, "STA"/"sta" sets
/// `ifEstSta`; neither flag is cleared. With `verbose` echoes the choice.
void ParseEstimationType(const char* arg, bool& ifEstKin, bool& ifEstSta, bool verbose);

/// Observation types named anywhere in `arg`: "C1", "P1", "P2", "Pc3" (P3
/// from C1), "Pp3" (P3 from P1), "L3", each also in lower case; sets the
/// matching flags and clears none. With `verbose` echoes the list.
void ParseObservationList(const char* arg, bool& iC1, bool& iP1, bool& iP2, bool& iPc3,
                          bool& iPp3, bool& iL3, bool verbose);

/// First stage of a run: redirects the output streams under -wo/-we, starts
/// the run timer, fills `gc` from the options and prints the help, clearing
/// RunProg, when there is nothing to run. Ends the run with a framed error
/// on a malformed -e, -gp, -tm or -pW option.
void ParseArguments(gCPosC& gc, int nargc, const char** cargv);
