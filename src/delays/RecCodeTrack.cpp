#include "delays/RecCodeTrack.h"

#include <cstring>
#include <fstream>

#include "numerics/FieldText.h"
#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

namespace {

std::string Trimmed(const char* s)
{
    return s == nullptr ? std::string() : fieldtext::TrimmedField(s, 0, std::strlen(s));
}

}  // namespace

RecCodeTrack::RecCodeTrack() { file[0] = '\0'; }

void RecCodeTrack::SetFile(const char* name)
{
    if (name == nullptr || std::strlen(name) >= sizeof(file) || !FileExists(name))
        ProgramError("Orvo", "RECEIVER LIST FILE CAN NOT BE OPENED (CODE TRACKING TECHNIQUE)!");
    std::strcpy(file, name);
}

void RecCodeTrack::Fail(long lineNo, const std::string& text) const
{
    ProgramError("Orvo", std::string("RECEIVER LIST FILE ") + file + ": line " + std::to_string(lineNo) + ": " + text);
}

bool RecCodeTrack::GetRecType(const char* receiver) const
{
    // An empty name is found in every line: it would take the list's first
    // line as the entry of a receiver that the header does not name.
    const std::string name = Trimmed(receiver);
    return !name.empty() && line.find(name) != std::string::npos;
}

bool RecCodeTrack::CheckRecName(const char* rnxRec)
{
    std::ifstream in(file);
    line.clear();
    long lineNo = 0;
    while (fieldtext::NextLine(in, line)) {
        ++lineNo;
        if (line.size() >= RecCodeTrackns::LineSize) Fail(lineNo, "LINE LONGER THAN 511 CHARACTERS!");
        if (GetRecType(rnxRec)) return true;
    }
    return false;
}

std::string RecCodeTrack::Code(const std::string& l, long lineNo) const
{
    if (l.size() < RecCodeTrackns::CodePos + 2) Fail(lineNo, "LINE ENDS BEFORE THE CODE (COLUMNS 30-31)!");
    return l.substr(RecCodeTrackns::CodePos, 2);
}

short RecCodeTrack::GetRecCodeTrack(const char* rnxRec)
{
    std::ifstream in(file);
    if (!FileExists(file) || !in) return P1P2;
    const std::string name = Trimmed(rnxRec);
    long lineNo = 0;
    bool found = false;
    while (!found && fieldtext::NextLine(in, line)) {
        ++lineNo;
        if (line.size() >= RecCodeTrackns::LineSize) Fail(lineNo, "LINE LONGER THAN 511 CHARACTERS!");
        found = GetRecType(rnxRec);
    }
    if (!found) {
        ProgramWarning("Orvo", "RECEIVER: " + name
                                   + " NOT LISTED IN RECEIVER TYPES LIST - SETTING CODE TRACKING TO P1P2 VALUE!");
        return P1P2;
    }
    const char nfreq = line.size() > RecCodeTrackns::NFreqPos ? line[RecCodeTrackns::NFreqPos] : ' ';
    if (nfreq != '1' && nfreq != '2') Fail(lineNo, "NUMBER OF FREQUENCIES (COLUMN 24) NOT 1 OR 2!");
    const std::string first = Code(line, lineNo);
    std::string second;
    if (nfreq == '2') {
        if (!fieldtext::NextLine(in, line)) Fail(lineNo, "FILE ENDS BEFORE THE SECOND FREQUENCY!");
        second = Code(line, ++lineNo);
    }
    // Each pair names one class; the order only matters for a list that
    // would satisfy two of them, and none can.
    int cls = -1;
    if (first == "C1" && second == "P2") cls = C1P2;
    if (first == "P1" && second == "P2") cls = P1P2;
    if (first == "C1" && second == "X2") cls = C1X2;
    if (cls < 0) {
        ProgramWarning("Orvo", "RECEIVER: " + name
                                   + " DETERMINATION OF CODE TRACKING NOT SUCCESFUL - SETTING TO P1P2 VALUE!");
        return P1P2;
    }
    return static_cast<short>(cls);
}
