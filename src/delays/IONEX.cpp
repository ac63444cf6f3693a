#include "delays/IONEX.h"

#include <cstring>
#include <fstream>
#include <string>

#include "numerics/ProgramError.h"

IONEX::IONEX() : sattmp(0), idata(ihead) { ifile[0] = '\0'; }

IONEX::IONEX(const IONEX& other) : sattmp(other.sattmp), ihead(other.ihead), idata(other.idata)
{
    std::strcpy(ifile, other.ifile);
    idata.SetHeader(ihead);
}

IONEX& IONEX::operator=(const IONEX& other)
{
    if (this == &other) return *this;
    std::strcpy(ifile, other.ifile);
    sattmp = other.sattmp;
    ihead = other.ihead;
    idata = other.idata;
    idata.SetHeader(ihead);
    return *this;
}

void IONEX::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(ifile))
        ProgramError("Orvo", "IONEX FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(ifile, file);
}

// First pass over the header: the bias lines are counted so that the
// header pass can size its tables once; returns the header's line count.
long IONEX::CheckIFile()
{
    std::ifstream in(ifile);
    if (!in) ProgramError("Orvo", std::string("IONEX file can not be opened [") + ifile + "]!!!");
    std::string line;
    long n = 0;
    int nSat = 0, nStats = 0;
    while (std::getline(in, line)) {
        ++n;
        // The format opens with its version line: anything else is another
        // kind of file, told before a missing END OF HEADER is.
        if (n == 1 && (line.find("IONEX VERSION / TYPE") == std::string::npos
                       || line.substr(0, 40).find("IONOSPHERE MAPS", 20) == std::string::npos))
            ProgramError("Orvo", "FILE VERSION IS NOT \"IONOSPHERE MAPS\"!!");
        if (line.find("PRN / BIAS / RMS") != std::string::npos) ++nSat;
        if (line.find("STATION / BIAS / RMS") != std::string::npos) ++nStats;
        if (line.size() > 60 && line.compare(60, 13, "END OF HEADER") == 0) {
            ihead.SetNSat(nSat, nStats);
            return n;
        }
    }
    ProgramError("Orvo", "IONEX FILE HEADER ENDS BEFORE \"END OF HEADER\"!!");
}

void IONEX::ReadFile()
{
    const long headerLines = CheckIFile();
    std::ifstream in(ifile);
    if (!in) ProgramError("Orvo", std::string("IONEX file can not be opened [") + ifile + "]!!!");
    in >> ihead;
    idata.SetName(ifile, headerLines);
    in >> idata;
}

long double IONEX::GetDCB(unsigned short& sat)
{
    for (long i = 0; i < ihead.Sat.NRow(); ++i)
        if (ihead.Sat(i) == sat) return ihead.SatDCB(i, 0);
    return 0.0L;
}

long double IONEX::GetDCB(short& sat)
{
    if (sat < 0) return 0.0L;
    sattmp = static_cast<unsigned short>(sat);
    return GetDCB(sattmp);
}

long double IONEX::CalcIonDelay(long double& secd, long double& beta, long double& la, long double& elev, int& Unit,
                                int& Type, int& tecv)
{
    return idata.CalcIonDelay(secd, beta, la, elev, Unit, Type, tecv);
}
