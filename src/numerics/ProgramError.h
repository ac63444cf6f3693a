#pragma once
// The one way the program reports: a framed line on the log (error stream)
// or on the result listing (output stream). An error ends the process with
// status 1 on the spot; a warning returns.
#include <string>

/// Called with the exit status when an error ends the run. The default ends
/// the process (std::exit); a handler that returns falls back to it. The
/// fuzz targets set one that throws, so an input ends without the process.
using ErrorExitHandler = void (*)(int status);
/// Sets the handler of ErrorExit; a null handler restores std::exit.
void SetErrorExitHandler(ErrorExitHandler handler);
/// Ends the run with status through the handler: the one exit of every
/// framed error of the program and of its file classes.
[[noreturn]] void ErrorExit(int status);

/// Prints the framed error on the error stream and exits with status 1.
[[noreturn]] void ProgramError(const std::string& prog, const std::string& text);
/// Prints the framed error on the output stream and exits with status 1.
[[noreturn]] void ProgramErrorCout(const std::string& prog, const std::string& text);
/// Prints a value class's own framed error (name `cls`) on the output stream
/// and exits with status 1: a time or position that fails its field test.
[[noreturn]] void ClassErrorCout(const std::string& cls, const std::string& text);
/// Prints the framed warning on the error stream and returns.
void ProgramWarning(const std::string& prog, const std::string& text);
/// Prints the framed warning on the output stream and returns.
void ProgramWarningCout(const std::string& prog, const std::string& text);
