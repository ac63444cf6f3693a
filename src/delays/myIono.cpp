#include "delays/myIono.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "numerics/ProgramError.h"

namespace {

bool Next(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

long double Num(const std::string& line, std::size_t pos) { return std::strtold(line.c_str() + pos, nullptr); }

// Comments and blank lines (a file's trailing one) hold no record.
bool NoRecord(const std::string& line) { return line.find_first_not_of(" \t") == std::string::npos || line[0] == '#'; }

}  // namespace

myIono::myIono() : neph(0), myIonoType(-1), IonoIx(-1), interval(-1.0L), DeltaT(0.0L) { file[0] = '\0'; }

void myIono::SetFile(const char* name)
{
    if (name == nullptr || std::strlen(name) >= sizeof(file))
        ProgramError("Orvo", "myIONO FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    std::strcpy(file, name);
}

void myIono::ReadFile()
{
    std::ifstream in(file);
    std::string line;
    if (!in || !Next(in, line)) ProgramError("Orvo", "myIONO FILE CAN NOT BE READ!");
    auto fail = [this](long n, const std::string& text) {
        ProgramError("Orvo", std::string("myIONO FILE ") + file + " line " + std::to_string(n) + ": " + text);
    };
    if (line.find("EPOCH BY EPOCH") != std::string::npos)
        myIonoType = 1;
    else if (line.find("LINEAR") != std::string::npos)
        myIonoType = 0;
    else
        fail(1, "type is neither LINEAR nor EPOCH BY EPOCH");
    // A record must reach the start of its last field: a cut line would
    // otherwise read its missing numbers as 0.
    const std::size_t minLength = myIonoType == 0 ? 56 : 31;

    neph = 0;
    while (Next(in, line))
        if (!NoRecord(line)) ++neph;
    if (neph < 1) fail(1, "no records");
    const long nval = myIonoType == 0 ? 2 : 1;
    VAL.Resize(neph, nval, 0.0L);
    RMS.Resize(neph, nval, 0.0L);
    eph.Resize(neph);

    in.clear();
    in.seekg(0);
    Next(in, line);
    long n = 1, i = 0;
    while (i < neph && Next(in, line)) {
        ++n;
        if (NoRecord(line)) continue;
        if (line.size() < minLength) fail(n, "record cut");
        eph(i) = mjd(std::strtoul(line.c_str(), nullptr, 10), Num(line, 8));
        VAL(i, 0) = Num(line, 16);
        RMS(i, 0) = Num(line, 30);
        if (myIonoType == 0) VAL(i, 1) = Num(line, 39), RMS(i, 1) = Num(line, 55);
        if (i > 0) {
            const long double d = eph(i) - eph(i - 1);
            if (!(d > 0.0L)) fail(n, "epoch not later than the one before");
            if (i == 1 || d < interval) interval = d;
        }
        ++i;
    }
    // One record has no spacing; the end warnings then count from 0.
    if (neph == 1) interval = 0.0L;
    IonoIx = -1;
}

void myIono::SetIonoIndex(mjd& reph) { SetIonoIndex(reph, 0); }

void myIono::SetIonoIndex(mjd& reph, long ix)
{
    if (neph < 1) ProgramError("Orvo", "myIONO FILE CAN NOT BE READ!");
    const long last = neph - 1;
    long i = ix < 0 ? 0 : (ix > last ? last : ix);
    // The last record not later than reph (0 before the series).
    while (i > 0 && reph - eph(i) < 0.0L) --i;
    while (i < last && reph - eph(i + 1) >= 0.0L) ++i;

    const long double before = eph(0) - reph, after = reph - eph(last);
    if (myIonoType == 0) {
        if (before > myIonons::EarlyLinear_s)
            ProgramWarning("Orvo", "IONO INDEX SET TO ZERO (0) - INPUT EPOCH PRIOR TO FIRST IONO EPOCH (<900s)");
        if (after > interval + myIonons::EarlyLinear_s)
            ProgramWarning("Orvo",
                           "IONO INDEX SET TO LAST (neph-1) - INPUT EPOCH LATER THAN LAST IONO EPOCH (>INTERVAL+900s)");
    } else {
        if (before > myIonons::OutsideSpacings * interval)
            ProgramWarning("Orvo",
                           "IONO INDEX SET TO ZERO (0) - INPUT EPOCH PRIOR TO FIRST IONO EPOCH (<3*INTERVALs)");
        if (after > myIonons::OutsideSpacings * interval)
            ProgramWarning("Orvo",
                           "IONO INDEX SET TO LAST (neph-1) - INPUT EPOCH LATER THAN LAST IONO EPOCH (>3*INTERVALs)");
        // Between two records: the nearer, a tie to the later; a record
        // within 0.1 s is taken as it stands.
        if (i < last) {
            const long double d0 = reph - eph(i), d1 = eph(i + 1) - reph;
            if (!(d0 < myIonons::SameEpoch_s) && (d1 < myIonons::SameEpoch_s || d1 <= d0)) ++i;
        }
    }
    IonoIx = i;
}

void myIono::GetIonoDelay(mjd& reph, long double& delay)
{
    if (IonoIx < 0) SetIonoIndex(reph);
    if (myIonoType == 0) {
        DeltaT = (reph - eph(IonoIx)) / 3600.0L;
        delay = VAL(IonoIx, 0) + VAL(IonoIx, 1) * DeltaT;
    } else {
        delay = VAL(IonoIx, 0);
    }
}
