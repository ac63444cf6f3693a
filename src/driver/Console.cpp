#include "driver/Console.h"

#include <cstdio>
#include <iomanip>
#include <iostream>

#include "driver/ProgramRun.h"
#include "numerics/CppCas.h"

namespace {

// Width of every full rule of the report.
constexpr int RuleWidth = 110;

void Blanks(int nblank)
{
    if (nblank > 0) std::cout << std::string(static_cast<size_t>(nblank), ' ');
}

int Length(const std::string& text) { return static_cast<int>(text.size()); }

}  // namespace

void PrintChar(char chr, int n, int nblank)
{
    Blanks(nblank);
    if (n > 0)
        std::cout << std::setfill(chr) << std::setw(n) << "" << std::setfill(' ') << "\n";
    std::cout << std::setfill(' ');
}

void PrintCharNoEndl(char chr, int n)
{
    if (n > 0) std::cout << std::string(static_cast<size_t>(n), chr);
}

void PrintChar(char chr, int n, std::fstream& out)
{
    if (n > 0) out << std::string(static_cast<size_t>(n), chr) << "\n";
}

void ProgramTitle()
{
    CppCas clock;
    const std::string date = std::string("DATE: ") + clock.Ascii();

    std::cout.setf(std::ios::fixed, std::ios::floatfield);
    PrintChar('_', RuleWidth, 0);
    PrintChar('*', RuleWidth, 0);
    std::cout << "          PROGRAM:            " << std::left << std::setw(35)
              << POut::ProgramName << std::right << std::setw(45)
              << POut::ProgramDescription << "\n";
    std::cout << "          RELEASE:            " << std::left << std::setw(35)
              << POut::Release << std::right << std::setw(45) << date << "\n";
    PrintChar('_', RuleWidth, 0);
    PrintChar('*', RuleWidth, 0);
    std::cout << "\n\n";
}

void ProgramSubTitle(const std::string& text, int nblank)
{
    PrintChar('=', RuleWidth, nblank);
    Blanks(nblank);
    std::cout << text << "\n";
    PrintChar('=', RuleWidth, nblank);
    std::cout << "\n";
}

void ProgramSubSubTitle(const std::string& text, int nblank)
{
    Blanks(nblank);
    std::cout << text << "\n";
    PrintChar('=', Length(text), nblank);
    std::cout << "\n";
}

void ProgramSubSubTitleOver(const std::string& text, int nblank)
{
    PrintChar('=', Length(text), nblank);
    Blanks(nblank);
    std::cout << text << "\n";
    PrintChar('=', Length(text), nblank);
    std::cout << "\n";
}

void ProgramSubSubSubTitle(const std::string& text) { ProgramSubSubSubTitle(text, 0); }

void ProgramSubSubSubTitle(const std::string& text, int nblank)
{
    Blanks(nblank);
    std::cout << text << "\n";
    PrintChar('-', Length(text), nblank);
    std::cout << "\n";
}

void ProgramCerrPrint(const std::string& pgm, const std::string& fun,
                      const std::string& prt)
{
    const std::ios::fmtflags flags = std::cerr.flags();
    std::cerr << std::left << std::setw(10) << pgm << "::" << std::setw(15) << fun
              << ":" << prt << "\n";
    std::cerr.flags(flags);
}
