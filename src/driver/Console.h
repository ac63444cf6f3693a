#pragma once
// Layout of the report: rules, titles and the banner. All routines write to
// the output stream unless a stream is named.
#include <fstream>
#include <string>

/// Writes `nblank` blanks when `nblank` > 0, then, when `n` > 0, `chr` n
/// times and a new line. The fill character of the output stream is a
/// blank afterwards.
void PrintChar(char chr, int n, int nblank);

/// Writes `chr` n times without a new line; nothing when `n` is not above 0.
void PrintCharNoEndl(char chr, int n);

/// Writes `chr` n times and a new line into `out`; nothing when `n` is not
/// above 0.
void PrintChar(char chr, int n, std::fstream& out);

/// Prints the program banner: rules of 110 "_" and "*", the program name and
/// description, the release and the current local date, the rules again,
/// two empty lines. Switches the output stream to fixed notation.
void ProgramTitle();

/// Prints a rule of 110 "=", `text`, the rule again and an empty line; each
/// of the three lines is indented by `nblank` blanks.
void ProgramSubTitle(const std::string& text, int nblank);

/// Prints `text`, a rule of "=" as long as `text` and an empty line; the
/// first two lines are indented by `nblank` blanks.
void ProgramSubSubTitle(const std::string& text, int nblank);

/// Prints a rule of "=" as long as `text`, `text`, the rule again and an
/// empty line; the three lines are indented by `nblank` blanks.
void ProgramSubSubTitleOver(const std::string& text, int nblank);

/// Prints `text`, a rule of "-" as long as `text` and an empty line.
void ProgramSubSubSubTitle(const std::string& text);

/// As ProgramSubSubSubTitle(text), with the first two lines indented by
/// `nblank` blanks.
void ProgramSubSubSubTitle(const std::string& text, int nblank);

/// Writes one log line on the error stream: `pgm` left aligned in 10
/// columns, "::", `fun` left aligned in 15 columns, ":", `prt`, a new line.
/// The stream's format flags are left as they were.
void ProgramCerrPrint(const std::string& pgm, const std::string& fun,
                      const std::string& prt);
