#pragma once
// Start and end of a run: the run timer, the two redirection streams that
// must outlive every stage, and the strings of the program banner.
#include <fstream>
#include <string>

#include "numerics/CppCas.h"

/// Timer of the whole run, started by StartProg and read by EndProg.
extern CppCas ctm;
/// Files that take over the output and error streams under -wo and -we.
/// Global so that the replaced stream buffers stay valid to the process end.
extern std::ofstream coutRedirect;
extern std::ofstream cerrRedirect;

namespace POut {
/// Name, description and release shown by ProgramTitle; the settings report
/// may set them anew before printing the banner.
extern std::string ProgramName;
extern std::string ProgramDescription;
extern std::string Release;
}  // namespace POut

/// Starts the run timer `ctm`. With `verbose` writes an empty line, then
/// "Orvo" directly followed by `line`, then a new line on the error stream.
void StartProg(bool verbose, const char* line);

/// Stops the run timer and reports the elapsed processor time dt (s). With
/// `PrintCout` the closing title "PROGRAM:     Orvo     ***** SUCCESFULLY
/// ENDED [dt s] *****" goes to the output stream through ProgramSubTitle;
/// with `verbose` the closing line of the log goes to the error stream, dt
/// in fixed notation with 3 decimals.
void EndProg(bool verbose, bool PrintCout);
