#include "driver/ProgramRun.h"

#include <cstdio>
#include <iostream>

#include "driver/Console.h"

CppCas ctm;
std::ofstream coutRedirect;
std::ofstream cerrRedirect;

namespace POut {
std::string ProgramName = "Orvo";
std::string ProgramDescription = "GNSS PRECISE POINT POSITIONING (CODE+PHASE)";
std::string Release = "07 FEB 2024";
}  // namespace POut

void StartProg(bool verbose, const char* line)
{
    ctm.Start();
    if (verbose)
        std::cerr << "\n" << "Orvo" << (line ? line : "") << "\n";
}

void EndProg(bool verbose, bool PrintCout)
{
    const double dt = ctm.Stop();
    if (PrintCout) {
        // 200 characters hold the fixed text and any elapsed time that a
        // double can print with 3 decimals short of 1e100 s.
        char text[200];
        std::snprintf(text, sizeof text,
                      "PROGRAM:     %s     ***** SUCCESFULLY ENDED [%0.3lf s] *****",
                      "Orvo", dt);
        ProgramSubTitle(text, 0);
    }
    if (verbose) {
        std::cerr.setf(std::ios::fixed, std::ios::floatfield);
        std::cerr.precision(3);
        std::cerr << "Orvo: ***** SUCCESFULLY ENDING PROGRAM [" << dt << " s] *****!"
                  << "\n\n\n";
    }
    std::cout.flush();
    std::cerr.flush();
}
