#include "observations/RINEX.h"
#include "numerics/FieldText.h"
#include "numerics/InputFile.h"
#include "numerics/ProgramError.h"
#include "observations/CompactRinex.h"
#include "observations/Rinex3Observation.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>

namespace {

// Every second is an observation line only when a record has more than
// five types; the first pass reads at most two lines of a record.
constexpr int FieldsPerLine = 5;
constexpr int SatsPerLine = 12;
// The epoch line is long enough to carry a clock offset (columns 68-79).
constexpr std::size_t ClockOffsetLength = 69;
// The satellite count of an epoch line: columns 29 to 31.
constexpr std::size_t CountColumn = 29, CountWidth = 3;
// An interval this close to a whole second is a rounded time tag.
constexpr float IntervalRoundTol_s = 0.005f;

}  // namespace

RINEX::RINEX(RINEXHeader& h, RINEXData& d)
    : rhead(h), rdata(d), nepoch(0), nobsall(0), IsTimeCorr(false) {}

void RINEX::RINEXError(const std::string& text)
{
    std::cout << "\n#### RINEX: Error -> " << text << " ####\n"
              << "     Exiting RINEX ... \n\n";
    std::cout.flush();
    ErrorExit(1);
}

void RINEX::RINEXWarning(const std::string& text) { ProgramWarningCout("RINEX", text); }

void RINEX::SetFile(const std::string& file)
{
    rinexfile = file;
    std::ifstream test(file);
    if (!test.is_open()) RINEXError("RINEX FILE CAN NOT BE OPENED!");
}

bool RINEX::LoadContent()
{
    content.clear();
    content.shrink_to_fit();
    inMemory = false;
    std::string first;
    {
        std::ifstream test(rinexfile, std::ios::binary);
        if (!test.is_open()) RINEXError("RINEX FILE CAN NOT BE OPENED!");
        std::getline(test, first);
    }
    // A plain RINEX 2 file is read from the disk, twice; anything else is
    // first made RINEX 2 text in memory, whatever the file is called.
    const bool gzip = IsGzipFile(rinexfile);
    // The label alone tells Compact RINEX: a version the decoder does not
    // know is its framed error, not a RINEX 2 file without epochs.
    if (!gzip && !HasCompactRinexLabel(first) && !IsRinex3Observation(first, rinexfile)) return false;
    std::string text = ReadInputFile(rinexfile, "RINEX");
    // The station's usual file needs neither the RINEX 3 nor the RINEX 2 text.
    if (IsCompactRinex3Observation(text, rinexfile)) {
        ReadCompactRinex3(text, rinexfile, rhead, rdata);
        return true;
    }
    if (HasCompactRinexLabel(text)) text = DecodeCompactRinex(text, rinexfile);
    if (IsRinex3Observation(text, rinexfile)) text = Rinex3ToRinex2(text, rinexfile);
    content = std::move(text);
    inMemory = true;
    return false;
}

std::unique_ptr<std::istream> RINEX::OpenContent() const
{
    if (inMemory) return std::make_unique<TextStream>(content);
    auto file = std::make_unique<std::ifstream>(rinexfile);
    if (!file->is_open()) RINEXError("RINEX FILE CAN NOT BE OPENED!");
    return file;
}

void RINEX::CountRec()
{
    const std::unique_ptr<std::istream> stream = OpenContent();
    std::istream& in = *stream;
    std::string line;
    long lineNo = 0;
    long longLine = 0;
    // A line beyond the 99-character buffer ends the reading as the end of
    // the file would.
    auto next = [&](std::string& l) {
        if (longLine > 0) return false;
        const RINEXLineState st = ReadRINEXLine(in, l);
        if (st == RINEXLineState::End) return false;
        lineNo++;
        if (st == RINEXLineState::TooLong) {
            longLine = lineNo;
            return false;
        }
        return true;
    };
    auto longLineText = [&]() {
        return rinexfile + ": LINE " + std::to_string(longLine) + " LONGER THAN 99 CHARACTERS";
    };
    auto stopCut = [&](long epochLine) {
        if (longLine > 0) RINEXError(longLineText());
        RINEXError(rinexfile + ": FILE ENDS INSIDE THE EPOCH OF LINE " + std::to_string(epochLine));
    };

    int ntypes = 0;
    while (next(line)) {
        if (line.find("END OF HEADER") != std::string::npos) break;
        // A continuation line holds blanks in columns 0-5 and so sets 0.
        if (line.find("# / TYPES OF OBSERV") != std::string::npos)
            ntypes = std::atoi(RINEXField(line, 0, 6).c_str());
    }

    nepoch = 0;
    nobsall = 0;
    IsTimeCorr = false;
    while (next(line)) {
        if (!IsFirstObsLine(line)) continue;
        const long epochLine = lineNo;
        int yr, mon, day, hh, mm, count;
        long double sec;
        ParseFirstObsLine(line, yr, mon, day, hh, mm, sec, count);
        // Read as a number from column 30, a count with text in it would
        // turn the epoch's records into passed-over lines.
        long whole = 0;
        const std::string countText = fieldtext::TrimmedField(line, CountColumn, CountWidth);
        if (count < 0 || count > RINEXns::MaxEpochSatellites || (!countText.empty() && !fieldtext::ToLong(countText, whole)))
            RINEXError(rinexfile + ": SATELLITE COUNT OF EPOCH NOT VALID -> line: "
                       + std::to_string(lineNo));
        nepoch++;
        if (nepoch == 1 && line.size() > ClockOffsetLength) IsTimeCorr = true;
        if (count > SatsPerLine && !next(line)) stopCut(epochLine);
        nobsall += static_cast<unsigned long>(count);
        for (int s = 0; s < count; s++) {
            if (!next(line)) stopCut(epochLine);
            // A missing second line is caught by the data pass, which reads
            // every line of the record.
            if (ntypes > FieldsPerLine && !next(line)) break;
        }
    }
    if (longLine > 0) {
        // Before any epoch (a RINEX 3 file, whose records run past column
        // 99) the data reader reports the empty file; after one, the rest of
        // the file would be lost without a word.
        if (nepoch > 0) RINEXError(longLineText() + ": THE EPOCHS AFTER IT WOULD BE LOST");
        RINEXWarning(longLineText() + ": READING ENDS THERE");
    }
}

void RINEX::ReadFile()
{
    rdata.Reset();
    rhead.Reset();
    rhead.source = rinexfile;
    if (!LoadContent()) {
        CountRec();
        rdata.SetNRecords(static_cast<long>(nepoch), static_cast<long>(nobsall));
        rdata.SetTimeCorr(IsTimeCorr);
        {
            const std::unique_ptr<std::istream> stream = OpenContent();
            *stream >> rhead;
            *stream >> rdata;
        }
        // The translated text has served: the record store holds it all.
        content.clear();
        content.shrink_to_fit();
    }

    rhead.obsfirst = rdata.epoch(0);
    rhead.obslast = rdata.obslast;
    if (rhead.obsfirstts.empty()) rhead.obsfirstts = "GPS";
    if (rhead.obslastts.empty()) rhead.obslastts = "GPS";
    const float whole = std::round(rhead.interval);
    if (std::fabs(rhead.interval - whole) < IntervalRoundTol_s) rhead.interval = whole;
    rdata.ReportRejected();
}

void RINEX::PrintFile() { std::cout << rhead << rdata; }

void RINEX::PrintFile(const std::string& name)
{
    std::ofstream out(name);
    if (!out.is_open()) RINEXError("FILE " + name + " CAN NOT BE OPENED FOR WRITING");
    out << rhead << rdata;
}

void RINEX::copyC2toP2()
{
    if (!rhead.iP2 && rhead.iC2) {
        rdata.P2 = rdata.C2;
        rhead.iP2 = true;
    }
}

void RINEX::copyP1toC1()
{
    if (rhead.iP1 && !rhead.iC1) {
        rdata.C1 = rdata.P1;
        rhead.iC1 = true;
    }
}
