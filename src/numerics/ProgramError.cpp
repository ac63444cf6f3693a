#include "numerics/ProgramError.h"

#include <cstdlib>
#include <iostream>
#include <ostream>

namespace {

ErrorExitHandler exitHandler = nullptr;

[[noreturn]] void ErrorTo(std::ostream& os, const std::string& prog, const std::string& text)
{
    os << "\n**** " << prog << ": Error -> " << text << " ****\n"
       << "     Exiting " << prog << " ... \n\n";
    // Both streams may hold report lines that explain the failure.
    std::cout.flush();
    std::cerr.flush();
    ErrorExit(1);
}

void WarningTo(std::ostream& os, const std::string& prog, const std::string& text)
{
    os << "\n#### " << prog << ": Warning -> " << text << " ####\n"
       << "     Continuing " << prog << " ... \n\n";
}

}  // namespace

void SetErrorExitHandler(ErrorExitHandler handler) { exitHandler = handler; }

void ErrorExit(int status)
{
    if (exitHandler != nullptr) exitHandler(status);
    std::exit(status);
}

void ClassErrorCout(const std::string& cls, const std::string& text)
{
    std::cout << "\n**** " << cls << ": Error -> " << text << " ****\n"
              << "     Exiting class " << cls << " ... \n";
    std::cout.flush();
    ErrorExit(1);
}

void ProgramError(const std::string& prog, const std::string& text) { ErrorTo(std::cerr, prog, text); }
void ProgramErrorCout(const std::string& prog, const std::string& text) { ErrorTo(std::cout, prog, text); }
void ProgramWarning(const std::string& prog, const std::string& text) { WarningTo(std::cerr, prog, text); }
void ProgramWarningCout(const std::string& prog, const std::string& text) { WarningTo(std::cout, prog, text); }
