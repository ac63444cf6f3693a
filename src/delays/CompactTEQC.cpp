#include "delays/CompactTEQC.h"

#include <cctype>
#include <cstring>
#include <fstream>
#include <vector>

#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

using fieldtext::TrimmedField;

namespace {

bool Digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Satellite number of a slot " Xtu", 0 for a slot that breaks the layout.
unsigned short SlotNumber(const std::string& s)
{
    const int base = (s[1] == ' ' || s[1] == 'G') ? 0 : s[1] == 'R' ? 100 : s[1] == 'E' ? 200 : -1;
    if (s[0] != ' ' || base < 0 || !(s[2] == ' ' || Digit(s[2])) || !Digit(s[3])) return 0;
    const int num = (s[2] == ' ' ? 0 : 10 * (s[2] - '0')) + (s[3] - '0');
    return static_cast<unsigned short>(num == 0 ? 0 : base + num);
}

}  // namespace

CompactTEQC::CompactTEQC() : nobs(0), neph(0), version(0), interval(0.0L), startMJD(0.0L) { compfile[0] = '\0'; }

void CompactTEQC::SetFile(const char* name)
{
    if (name != nullptr && std::strlen(name) >= sizeof(compfile))
        ProgramError("Orvo", "TEQC COMPACT FILE NAME LONGER THAN 255 CHARACTERS!");
    if (name == nullptr || !FileExists(name)) ProgramError("Orvo", "TEQC COMPACT FILE DOES NOT EXISTS!");
    std::strcpy(compfile, name);
}

void CompactTEQC::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("TEQC COMPACT FILE ") + compfile + ": line " + std::to_string(lineNo) + ": "
                             + text);
}

bool CompactTEQC::Next(std::istream& in, std::string& l, long& lineNo) const
{
    if (!fieldtext::NextLine(in, l)) return false;
    ++lineNo;
    if (l.size() >= CompactTEQCns::LineSize) Fail(lineNo, "LINE LONGER THAN 255 CHARACTERS!");
    return true;
}

void CompactTEQC::ReadFile()
{
    std::ifstream in(compfile);
    if (!FileExists(compfile) || !in) ProgramError("Orvo", "TEQC COMPACT FILE DOES NOT EXISTS!");
    CheckData(in);
    SetData();
    in.clear();
    in.seekg(0);
    ReadData(in);
}

long CompactTEQC::ReadHeader(std::istream& in, bool keep)
{
    std::string l;
    long lineNo = 0;
    if (!Next(in, l, lineNo) || l.find("COMPACT2") == std::string::npos)
        ProgramError("Orvo", "TEQC COMPACT FILE IS NOT WRITTEN IN VERSION COMPACT2!");
    bool hasInterval = false, hasStart = false;
    while (!hasInterval || !hasStart) {
        if (!Next(in, l, lineNo)) Fail(lineNo, "NO T_SAMP OR NO START_TIME_MJD LINE!");
        long double x = 0.0L;
        if (l.find("T_SAMP") != std::string::npos) {
            if (!fieldtext::ToLongDouble(TrimmedField(l, CompactTEQCns::IntervalPos, l.size()), x) || x <= 0.0L
                || x > CompactTEQCns::MaxInterval)
                Fail(lineNo, "SAMPLING INTERVAL (COLUMN 7) NOT IN (0, 86400] s!");
            if (keep) interval = x;
            hasInterval = true;
        } else if (l.find("START_TIME_MJD") != std::string::npos) {
            if (!fieldtext::ToLongDouble(TrimmedField(l, CompactTEQCns::StartPos, l.size()), x) || x < 0.0L
                || x >= CompactTEQCns::LastDay + 1.0L)
                Fail(lineNo, "START TIME (MJD FROM COLUMN 15) NOT VALID!");
            if (keep) startMJD = x;
            hasStart = true;
        }
    }
    return lineNo;
}

long CompactTEQC::Count(const std::string& l, long lineNo, long last, std::size_t& end) const
{
    const std::size_t a = l.find_first_not_of(' ');
    end = a == std::string::npos ? l.size() : a;
    if (end < l.size() && (l[end] == '-' || l[end] == '+')) ++end;
    while (end < l.size() && Digit(l[end])) ++end;
    long n = 0;
    if (a == std::string::npos || !fieldtext::ToLong(l.substr(a, end - a), n))
        Fail(lineNo, "RECORD DOES NOT START WITH A SATELLITE COUNT!");
    if (n < 0 && last <= 0) Fail(lineNo, "NEGATIVE SATELLITE COUNT BEFORE ANY SATELLITE LIST!");
    // Compared by division: a count of billions must not overflow the sum.
    if (n > 0 && static_cast<unsigned long>(n) > (l.size() - end) / CompactTEQCns::SlotLen)
        Fail(lineNo, "SATELLITE LIST SHORTER THAN ITS COUNT " + std::to_string(n) + "!");
    return n;
}

void CompactTEQC::CheckData(std::istream& in)
{
    long lineNo = ReadHeader(in, true), last = 0;
    version = 2;
    nobs = neph = 0;
    std::string l;
    std::size_t end = 0;
    while (Next(in, l, lineNo)) {
        const long raw = Count(l, lineNo, last, end);
        if (raw == 0) continue;
        if (raw > 0) last = raw;
        if (!Next(in, l, lineNo)) Fail(lineNo, "FILE ENDS BEFORE THE VALUES OF THE RECORD!");
        nobs += last;
        ++neph;
    }
}

void CompactTEQC::SetData()
{
    sat.Resize(nobs, 1, 0);
    obs.Resize(nobs, 1, 0.0L);
    slip.Resize(nobs, 1, false);
    nsat.Resize(neph, 1, 0);
    eph.Resize(neph, 1, mjd());
}

void CompactTEQC::ParseSat(const std::string& l, std::size_t from, long n, long k, long lineNo, bool scratch[])
{
    for (long j = 0; j < n; ++j) {
        const std::size_t at = from + CompactTEQCns::SlotLen * static_cast<std::size_t>(j);
        const unsigned short s = SlotNumber(l.substr(at, CompactTEQCns::SlotLen));
        if (s == 0) Fail(lineNo, "BROKEN SATELLITE SLOT AT COLUMN " + std::to_string(at + 1) + "!");
        sat(k + j) = s;
        scratch[s] = true;
    }
}

void CompactTEQC::ParseObsLine(const std::string& l, long n, long k, long lineNo)
{
    for (long i = 0; i < n; ++i) {
        const std::size_t at = CompactTEQCns::FieldLen * static_cast<std::size_t>(i);
        long double x = 0.0L;
        if (!fieldtext::ToLongDouble(TrimmedField(l, at, CompactTEQCns::FieldLen), x))
            Fail(lineNo, "VALUE AT COLUMN " + std::to_string(at + 1) + " IS NO NUMBER!");
        obs(k + i) = x;
        // An editor may have cut the blanks at the end of the line.
        slip(k + i) = l.size() <= at + CompactTEQCns::SlipPos || l[at + CompactTEQCns::SlipPos] == ' ';
    }
}

void CompactTEQC::ReadData(std::istream& in)
{
    long lineNo = ReadHeader(in, false), last = 0, k = 0, ie = 0, first = 0;
    bool scratch[CompactTEQCns::MaxSatNumber] = {false};
    mjd t;
    t = startMJD;
    std::string l;
    std::size_t end = 0;
    while (Next(in, l, lineNo)) {
        const long raw = Count(l, lineNo, last, end);
        if (raw != 0) {
            const long n = raw > 0 ? raw : last;
            if (ie >= neph || k + n > nobs) Fail(lineNo, "FILE LONGER THAN AT COUNTING!");
            if (raw > 0) {
                ParseSat(l, end, n, k, lineNo, scratch);
                first = k;
                last = raw;
            } else {
                for (long j = 0; j < n; ++j) sat(k + j) = sat(first + j);
            }
            eph(ie) = t;
            nsat(ie) = n;
            if (!Next(in, l, lineNo)) Fail(lineNo, "FILE ENDS BEFORE THE VALUES OF THE RECORD!");
            ParseObsLine(l, n, k, lineNo);
            k += n;
            ++ie;
        }
        t += interval;
    }
    // The file changed between the passes.
    if (ie < neph || k < nobs) Fail(lineNo, "FILE SHORTER THAN AT COUNTING!");
    long m = 0;
    for (bool s : scratch) m += s ? 1 : 0;
    satList.Resize(m, 1, 0);
    m = 0;
    for (int s = 1; s < CompactTEQCns::MaxSatNumber; ++s)
        if (scratch[s]) satList(m++) = static_cast<unsigned short>(s);
}
