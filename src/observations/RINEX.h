#pragma once
// A RINEX observation file: its name, header and data, read in two passes
// so that all storage is allocated once at its exact size. RINEX 2 is read
// as it stands; a gzip-compressed, Compact RINEX or RINEX 3/4 file is first
// translated into RINEX 2 text in memory.
#include <istream>
#include <memory>
#include <string>

#include "observations/RINEXData.h"
#include "observations/RINEXHeader.h"

class RINEX {
public:
    std::string rinexfile;
    RINEXHeader& rhead;
    RINEXData& rdata;
    unsigned long nepoch;    // epochs counted by the first pass
    unsigned long nobsall;   // satellite records counted by the first pass
    bool IsTimeCorr;         // the first epoch line carries a clock offset
    std::string content;     // RINEX 2 text made from another format
    bool inMemory = false;   // content, not the file, is read

    /// Joins header h and data d, which must outlive this object.
    RINEX(RINEXHeader& h, RINEXData& d);

    /// Stores the file name; a file that does not open for reading stops
    /// the run with "RINEX FILE CAN NOT BE OPENED!".
    void SetFile(const std::string& file);
    /// Reads the whole file: resets header and data, counts epochs and
    /// records, allocates, reads header and data. The first and last epoch
    /// of the data overrule the header's times, an empty time system
    /// becomes "GPS", and an interval within 0.005 s of a whole second is
    /// rounded to it.
    void ReadFile();
    /// Decides from the content, not the name, how the file is read: plain
    /// RINEX 2 from the disk; Compact RINEX 3.0 of a RINEX 3/4 file, plain or
    /// gzip, decoded straight into header and data (returns true); other
    /// gzip, Compact RINEX 1.0/3.0 and RINEX 3/4 (in any nesting of these)
    /// inflated, decoded and translated into RINEX 2 text kept in memory
    /// until ReadFile has read it. Their readers' framed errors name the
    /// file and the line.
    bool LoadContent();
    /// First pass: counts epochs (nepoch) and satellite records (nobsall)
    /// and sets IsTimeCorr from the first epoch line. An epoch cut by the
    /// end of the file or a satellite count outside 0..341 stops the run
    /// with RINEXError. A line longer than 99 characters ends the reading:
    /// after an epoch that stops the run with RINEXError, since the rest of
    /// the file would be lost; before any epoch (a RINEX 3 file) it warns,
    /// and the data reader reports that no epoch was found.
    void CountRec();

    /// Writes header and data as RINEX 2 to the output stream.
    void PrintFile();
    /// Writes header and data as RINEX 2 to the named file; a file that
    /// cannot be written stops the run with RINEXError.
    void PrintFile(const std::string& name);

    /// When P2 is not observed but C2 is, P2 becomes a copy of C2.
    void copyC2toP2();
    /// When P1 is observed but C1 is not, C1 becomes a copy of P1.
    void copyP1toC1();

    /// The content to read: the translated text or the file itself.
    std::unique_ptr<std::istream> OpenContent() const;
    /// Prints "#### RINEX: Error -> text ####" framed on the output stream
    /// and exits with status 1.
    [[noreturn]] static void RINEXError(const std::string& text);
    /// Prints the framed warning on the output stream and returns.
    static void RINEXWarning(const std::string& text);
};
