#include "observations/RINEXHeader.h"
#include "numerics/ProgramError.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>

#include "geodesy/TimeConverse.h"
#include "geodesy/ymdhms.h"
#include "numerics/CppCas.h"
#include "numerics/FieldText.h"

namespace {

const char* const ObsCodes[RINEXObs::Unknown] = {
    "C1", "P1", "L1", "S1", "D1", "C2", "P2", "L2", "S2", "D2",
    "C3", "L3", "S3", "D3", "C5", "L5", "D5", "S5", "C6", "L6",
    "D6", "S6", "C7", "L7", "D7", "S7", "C8", "L8", "D8", "S8"};

// Codes per "# / TYPES OF OBSERV" line, and the width of its code text
// (columns 6 to 59).
constexpr int TypesPerLine = 9;
constexpr std::size_t TypeTextWidth = 54;
// Where a header record's label begins.
constexpr std::size_t LabelColumn = 60;

// Blanks only (character 32), as the fixed-column fields are padded.
std::string Trimmed(const std::string& s)
{
    const std::size_t b = s.find_first_not_of(' ');
    if (b == std::string::npos) return std::string();
    const std::size_t e = s.find_last_not_of(' ');
    return s.substr(b, e - b + 1);
}

std::string Padded(std::string s, std::size_t width)
{
    if (s.size() < width) s.append(width - s.size(), ' ');
    return s;
}

// Left-adjusted text in exactly width columns: the writer's fields must not
// push the label off column 60.
std::string LeftIn(const std::string& s, std::size_t width)
{
    return Padded(s.substr(0, width), width);
}

bool Has(const std::string& line, const char* label)
{
    return line.find(label) != std::string::npos;
}

// The text that names the file in a message, empty for a stream.
std::string In(const RINEXHeader& h) { return h.source.empty() ? std::string() : h.source + ": "; }

// A numeric field of a header record. A blank field reads 0, as the format
// allows. In a record whose label stands at column 60 anything else must be
// a finite number, so that "nan" or a shifted column ends the run on its
// line rather than turning up later as a wrong position or interval. A
// label met elsewhere is comment text that happens to hold it: its columns
// are read as always, by the atof rule.
struct Fields {
    const RINEXHeader& h;
    const std::string& line;
    const char* label;
    bool strict;
    Fields(const RINEXHeader& hd, const std::string& l, const char* lab)
        : h(hd), line(l), label(lab), strict(l.size() > LabelColumn && l.compare(LabelColumn, std::strlen(lab), lab) == 0) {}

    long double Real(std::size_t pos, std::size_t len) const
    {
        if (!strict) return std::strtold(RINEXField(line, pos, len).c_str(), nullptr);
        const std::string f = fieldtext::TrimmedField(line, pos, len);
        long double v = 0.0L;
        if (!f.empty() && !fieldtext::ToLongDouble(f, v)) Fail(f);
        return v;
    }
    // Fields of six columns or fewer, so any whole number fits an int.
    int Whole(std::size_t pos, std::size_t len) const
    {
        if (!strict) return std::atoi(RINEXField(line, pos, len).c_str());
        const std::string f = fieldtext::TrimmedField(line, pos, len);
        long v = 0;
        if (!f.empty() && !fieldtext::ToLong(f, v)) Fail(f);
        return static_cast<int>(v);
    }
    [[noreturn]] void Fail(const std::string& f) const
    {
        RINEXHeader::RINEXHeaderError(In(h) + "\"" + f + "\" IN " + label + " IS NOT A NUMBER", h.nlines);
    }
};

char CharAt(const std::string& line, std::size_t pos)
{
    return pos < line.size() ? line[pos] : ' ';
}

// TIME OF FIRST/LAST OBS: six calendar fields; an invalid date stops the
// run through ymdhms, as for every other time the program reads.
mjd ObsTime(const Fields& f, std::string& timeSystem)
{
    const std::string& line = f.line;
    const ymdhms t(static_cast<unsigned short>(f.Whole(0, 6)), static_cast<unsigned short>(f.Whole(6, 6)),
                   static_cast<unsigned short>(f.Whole(12, 6)), static_cast<unsigned short>(f.Whole(18, 6)),
                   static_cast<unsigned short>(f.Whole(24, 6)), f.Real(30, 13));
    timeSystem = Trimmed(RINEXField(line, 48, 3));
    return ymdhms2mjd(t);
}

std::string Integer(long double v) { return std::to_string(static_cast<long>(v)); }

// A position given in the header is where every model starts from; one
// outside the shell of receivers on or above the Earth is a broken field,
// not a site. A position on the Earth but far from the site is left to the
// adjustment.
void CheckPosition(const Fields& f, const xyz& x)
{
    const long double r = std::hypot(x.GetX(), x.GetY(), x.GetZ());
    if (!f.strict || r < RINEXns::NoPosition_m) return;
    if (r < RINEXns::MinReceiverRadius_m || r > RINEXns::MaxReceiverRadius_m)
        RINEXHeader::RINEXHeaderError(In(f.h) + "APPROX POSITION XYZ IS NOT ON THE EARTH (GEOCENTRIC DISTANCE OUTSIDE "
                                          + Integer(RINEXns::MinReceiverRadius_m / 1000.0L) + " TO "
                                          + Integer(RINEXns::MaxReceiverRadius_m / 1000.0L) + " KM)", f.h.nlines);
}

// The eccentricity moves the antenna from its mark: beyond any monument it
// is a broken field, and every model would be computed somewhere else.
void CheckEccentricity(const Fields& f, const neu& d)
{
    if (!f.strict) return;
    if (std::fabs(d.GetU()) > RINEXns::MaxAntennaHeight_m || std::fabs(d.GetE()) > RINEXns::MaxAntennaOffset_m
        || std::fabs(d.GetN()) > RINEXns::MaxAntennaOffset_m)
        RINEXHeader::RINEXHeaderError(In(f.h) + "ANTENNA: DELTA H/E/N BEYOND ANY MONUMENT (|H| ABOVE "
                                          + Integer(RINEXns::MaxAntennaHeight_m) + " M OR |E|, |N| ABOVE "
                                          + Integer(RINEXns::MaxAntennaOffset_m) + " M)", f.h.nlines);
}

void ReadObsTypes(std::istream& in, RINEXHeader& h, const std::string& first)
{
    const int n = Fields(h, first, "# / TYPES OF OBSERV").Whole(0, 6);
    if (n < 0 || n > RINEXns::MaxObsTypes)
        RINEXHeader::RINEXHeaderError("NUMBER OF OBSERVATION TYPES NOT VALID (0 TO "
                                      + std::to_string(RINEXns::MaxObsTypes) + ")", h.nlines);
    std::string text = Padded(RINEXField(first, 6, TypeTextWidth), TypeTextWidth);
    const int ncont = n / TypesPerLine - (n % TypesPerLine == 0 ? 1 : 0);
    std::string line;
    for (int i = 0; i < ncont; i++) {
        const RINEXLineState st = ReadRINEXLine(in, line);
        if (st == RINEXLineState::End) break;
        h.nlines++;
        if (st == RINEXLineState::TooLong) {
            in.setstate(std::ios::failbit);
            break;
        }
        text += Padded(RINEXField(line, 6, TypeTextWidth), TypeTextWidth);
    }
    text = Padded(text, 6 * static_cast<std::size_t>(n));

    // A second type list replaces the first; flags of the old list would
    // promise matrices that are never sized.
    for (unsigned short t = 0; t < RINEXObs::Unknown; t++) *h.PresenceFlag(t) = false;
    h.nobs = static_cast<unsigned short>(n);
    if (n == 0) {
        h.obs = matrix<unsigned short>();
        return;
    }
    h.obs.Resize(n);
    for (int k = 0; k < n; k++) {
        const unsigned short type = RINEXHeader::GetObsType(text.substr(6 * k + 4, 2));
        h.obs(k) = type;
        if (bool* flag = h.PresenceFlag(type)) *flag = true;
    }
}

// GLONASS SLOT / FRQ #: up to eight entries a line, slot at columns 5-7
// + 7j, channel at 9-10 + 7j; every line carries its label, so the count
// of the first one is not needed. A label met in comment text gives none.
void ReadGlonassChannels(const Fields& f, RINEXHeader& h)
{
    if (!f.strict) return;
    for (std::size_t j = 0; j < 8; j++) {
        std::string sat = RINEXField(f.line, 4 + 7 * j, 3);
        if (fieldtext::TrimmedField(sat, 0, 3).empty()) continue;
        if (sat.size() == 3 && sat[1] == ' ') sat[1] = '0';
        long slot = 0;
        if (sat.size() != 3 || sat[0] != 'R' || !fieldtext::ToLong(sat.substr(1), slot) || slot < 1
            || slot >= RINEXns::GlonassSlots)
            RINEXHeader::RINEXHeaderError(In(h) + "GLONASS SLOT \"" + sat + "\" NOT VALID", h.nlines);
        const std::string k = fieldtext::TrimmedField(f.line, 8 + 7 * j, 2);
        const int channel = f.Whole(8 + 7 * j, 2);
        if (k.empty() || channel < RINEXns::MinGlonassChannel || channel > RINEXns::MaxGlonassChannel)
            RINEXHeader::RINEXHeaderError(In(h) + "GLONASS CHANNEL \"" + k + "\" OF " + sat + " NOT VALID (-7 TO 6)",
                                          h.nlines);
        if (h.glonassChannel[slot] == RINEXns::NoGlonassChannel) h.nGlonassChannels++;
        h.glonassChannel[slot] = static_cast<short>(channel);
    }
}

void Warn(const char* label, long line)
{
    RINEXHeader::RINEXHeaderWarning(std::string("ADDITIONAL \"") + label + "\" HEADER LINE", line);
}

}  // namespace

RINEXLineState ReadRINEXLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return RINEXLineState::End;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line.size() > RINEXns::MaxLineLength ? RINEXLineState::TooLong : RINEXLineState::Ok;
}

std::string RINEXField(const std::string& line, std::size_t pos, std::size_t len)
{
    if (pos >= line.size()) return std::string();
    return line.substr(pos, len);
}

RINEXHeader::RINEXHeader() { Reset(); }

void RINEXHeader::Reset()
{
    version = 0.0f;
    type = '\0';
    satsystems = ' ';
    pgm.clear(); runby.clear(); date.clear();
    mname.clear(); mnumber.clear();
    observer.clear(); agency.clear();
    recnumb.clear(); rectype.clear(); recversion.clear();
    antnumb.clear(); anttype.clear();
    X0 = xyz();
    xyz0read = false;
    Dp = neu();
    neuread = false;
    nobs = 0;
    obs = matrix<unsigned short>();
    wavelengthDefL1 = '1';
    wavelengthDefL2 = '1';
    interval = -1.0f;
    obsfirst = mjd();
    obslast = mjd();
    obsfirstts.clear();
    obslastts.clear();
    for (unsigned short t = 0; t < RINEXObs::Unknown; t++) *PresenceFlag(t) = false;
    iPC1 = iPC3 = iPP3 = iL3 = iL4 = iMW = iPC4 = iPP4 = iCL1 = iCLI = false;
    std::fill(glonassChannel, glonassChannel + RINEXns::GlonassSlots, RINEXns::NoGlonassChannel);
    nGlonassChannels = 0;
    nlines = 0;
}

bool* RINEXHeader::PresenceFlag(unsigned short t)
{
    switch (t) {
    case RINEXObs::C1: return &iC1;   case RINEXObs::P1: return &iP1;
    case RINEXObs::L1: return &iL1;   case RINEXObs::S1: return &iS1;
    case RINEXObs::D1: return &iD1;   case RINEXObs::C2: return &iC2;
    case RINEXObs::P2: return &iP2;   case RINEXObs::L2: return &iL2;
    case RINEXObs::S2: return &iS2;   case RINEXObs::D2: return &iD2;
    case RINEXObs::C3R: return &iC3R; case RINEXObs::L3R: return &iL3R;
    case RINEXObs::S3R: return &iS3R; case RINEXObs::D3R: return &iD3R;
    case RINEXObs::C5: return &iC5;   case RINEXObs::L5: return &iL5;
    case RINEXObs::D5: return &iD5;   case RINEXObs::S5: return &iS5;
    case RINEXObs::C6: return &iC6;   case RINEXObs::L6: return &iL6;
    case RINEXObs::D6: return &iD6;   case RINEXObs::S6: return &iS6;
    case RINEXObs::C7: return &iC7;   case RINEXObs::L7: return &iL7;
    case RINEXObs::D7: return &iD7;   case RINEXObs::S7: return &iS7;
    case RINEXObs::C8: return &iC8;   case RINEXObs::L8: return &iL8;
    case RINEXObs::D8: return &iD8;   case RINEXObs::S8: return &iS8;
    default: return nullptr;
    }
}

std::string RINEXHeader::GetObsString(unsigned short t)
{
    return t < RINEXObs::Unknown ? ObsCodes[t] : "??";
}

unsigned short RINEXHeader::GetObsType(const std::string& code)
{
    for (unsigned short t = 0; t < RINEXObs::Unknown; t++)
        if (code == ObsCodes[t]) return t;
    return RINEXObs::Unknown;
}

void RINEXHeader::RINEXHeaderWarning(const std::string& text, long line)
{
    ProgramWarningCout("RINEXHeader", text + " -> line: " + std::to_string(line));
}

void RINEXHeader::RINEXHeaderError(const std::string& text, long line)
{
    std::cout << "\n#### RINEXHeader: Error -> " << text << " -> line: " << line << " ####\n"
              << "     Exiting RINEXHeader ... \n\n";
    std::cout.flush();
    ErrorExit(1);
}

std::istream& operator>>(std::istream& in, RINEXHeader& h)
{
    h.Reset();
    std::string line;
    for (;;) {
        const RINEXLineState st = ReadRINEXLine(in, line);
        // A header without END OF HEADER ends with the stream, and so does
        // one with a line beyond the line buffer; the data reader then finds
        // no epochs and says so.
        if (st == RINEXLineState::End) break;
        h.nlines++;
        if (st == RINEXLineState::TooLong) {
            in.setstate(std::ios::failbit);
            break;
        }

        if (Has(line, "END OF HEADER")) {
            break;
        } else if (Has(line, "RINEX VERSION / TYPE")) {
            if (h.type != '\0') Warn("RINEX VERSION / TYPE", h.nlines);
            h.version = static_cast<float>(Fields(h, line, "RINEX VERSION / TYPE").Real(0, 9));
            h.type = CharAt(line, 20);
            h.satsystems = CharAt(line, 40);
        } else if (Has(line, "PGM / RUN BY / DATE")) {
            if (!h.pgm.empty()) Warn("PGM / RUN BY / DATE", h.nlines);
            h.pgm = Trimmed(RINEXField(line, 0, 20));
            h.runby = Trimmed(RINEXField(line, 20, 20));
            h.date = Trimmed(RINEXField(line, 40, 20));
        } else if (Has(line, "MARKER NAME")) {
            if (!h.mname.empty()) Warn("MARKER NAME", h.nlines);
            h.mname = Trimmed(RINEXField(line, 0, 60));
        } else if (Has(line, "MARKER NUMBER")) {
            if (!h.mnumber.empty()) Warn("MARKER NUMBER", h.nlines);
            h.mnumber = Trimmed(RINEXField(line, 0, 20));
        } else if (Has(line, "OBSERVER / AGENCY")) {
            if (!h.observer.empty()) Warn("OBSERVER / AGENCY", h.nlines);
            h.observer = Trimmed(RINEXField(line, 0, 20));
            h.agency = Trimmed(RINEXField(line, 20, 40));
        } else if (Has(line, "APPROX POSITION XYZ")) {
            if (h.xyz0read) Warn("APPROX POSITION XYZ", h.nlines);
            const Fields f(h, line, "APPROX POSITION XYZ");
            h.X0 = xyz(f.Real(0, 14), f.Real(14, 14), f.Real(28, 14));
            h.xyz0read = true;
            CheckPosition(f, h.X0);
        } else if (Has(line, "ANTENNA: DELTA H/E/N")) {
            if (h.neuread) Warn("ANTENNA: DELTA H/E/N", h.nlines);
            const Fields f(h, line, "ANTENNA: DELTA H/E/N");
            h.Dp = neu(f.Real(28, 14), f.Real(14, 14), f.Real(0, 14));
            h.neuread = true;
            CheckEccentricity(f, h.Dp);
        } else if (Has(line, "# / TYPES OF OBSERV")) {
            ReadObsTypes(in, h, line);
        } else if (Has(line, "REC # / TYPE / VERS")) {
            if (!h.rectype.empty()) Warn("REC # / TYPE / VERS", h.nlines);
            h.recnumb = Trimmed(RINEXField(line, 0, 20));
            h.rectype = Trimmed(RINEXField(line, 20, 20));
            h.recversion = Trimmed(RINEXField(line, 40, 20));
        } else if (Has(line, "ANT # / TYPE")) {
            if (!h.anttype.empty()) Warn("ANT # / TYPE", h.nlines);
            h.antnumb = RINEXField(line, 0, 20);
            h.anttype = RINEXField(line, 20, 20);
        } else if (Has(line, "INTERVAL")) {
            if (h.interval > 0.0f) Warn("INTERVAL", h.nlines);
            h.interval = static_cast<float>(Fields(h, line, "INTERVAL").Real(0, 10));
        } else if (Has(line, "TIME OF FIRST OBS")) {
            h.obsfirst = ObsTime(Fields(h, line, "TIME OF FIRST OBS"), h.obsfirstts);
        } else if (Has(line, "TIME OF LAST OBS")) {
            h.obslast = ObsTime(Fields(h, line, "TIME OF LAST OBS"), h.obslastts);
        } else if (Has(line, "WAVELENGTH FACT L1/2")) {
            h.wavelengthDefL1 = CharAt(line, 5);
            h.wavelengthDefL2 = CharAt(line, 11);
        } else if (Has(line, "GLONASS SLOT / FRQ #")) {
            ReadGlonassChannels(Fields(h, line, "GLONASS SLOT / FRQ #"), h);
        }
    }
    return in;
}

std::ostream& operator<<(std::ostream& out, const RINEXHeader& h)
{
    const std::ios::fmtflags flags = out.flags();
    const std::streamsize prec = out.precision();
    const short ptype = ymdhmsns::PrintType;
    out << std::fixed << std::right;

    out << std::setw(9) << std::setprecision(2) << h.version << std::string(11, ' ')
        << LeftIn(std::string(1, h.type), 20) << LeftIn(std::string(1, h.satsystems), 20)
        << "RINEX VERSION / TYPE\n";
    CppCas now;
    out << LeftIn("Orvo", 20) << LeftIn("POSITIONING-CENTRE", 20) << LeftIn(now.Ascii(), 20)
        << "PGM / RUN BY / DATE\n";
    out << LeftIn(h.mname, 60) << "MARKER NAME\n";
    out << LeftIn(h.mnumber, 20) << std::string(40, ' ') << "MARKER NUMBER\n";
    out << LeftIn(h.observer, 20) << LeftIn(h.agency, 40) << "OBSERVER / AGENCY\n";
    out << LeftIn(h.recnumb, 20) << LeftIn(h.rectype, 20) << LeftIn(h.recversion, 20)
        << "REC # / TYPE / VERS\n";
    out << LeftIn(h.antnumb, 20) << LeftIn(h.anttype, 20) << std::string(20, ' ')
        << "ANT # / TYPE\n";
    out << std::setprecision(4) << std::setw(14) << h.X0.GetX() << std::setw(14) << h.X0.GetY()
        << std::setw(14) << h.X0.GetZ() << std::string(18, ' ') << "APPROX POSITION XYZ\n";
    out << std::setw(14) << h.Dp.GetU() << std::setw(14) << h.Dp.GetE() << std::setw(14)
        << h.Dp.GetN() << std::string(18, ' ') << "ANTENNA: DELTA H/E/N\n";
    out << std::setw(6) << h.wavelengthDefL1 << std::setw(6) << h.wavelengthDefL2
        << std::string(48, ' ') << "WAVELENGTH FACT L1/2\n";

    out << std::setw(6) << h.nobs;
    for (int k = 0; k < h.nobs; k++) {
        if (k > 0 && k % TypesPerLine == 0) out << "# / TYPES OF OBSERV\n" << std::string(6, ' ');
        out << std::setw(6) << RINEXHeader::GetObsString(h.obs(k));
    }
    if (h.nobs % TypesPerLine != 0 || h.nobs == 0)
        out << std::string(6 * (TypesPerLine - h.nobs % TypesPerLine), ' ');
    out << "# / TYPES OF OBSERV\n";

    out << std::setw(10) << std::setprecision(3) << h.interval << std::string(50, ' ')
        << "INTERVAL\n";
    // A header that never saw a time holds MJD 0, which has no calendar
    // date in the range of ymdhms: such a line is left out.
    ymdhmsns::PrintType = 0;
    if (h.obsfirst.GetMJDay() > 0)
        out << mjd2ymdhms(h.obsfirst) << std::setw(8) << h.obsfirstts << std::string(9, ' ')
            << "TIME OF FIRST OBS\n";
    if (h.obslast.GetMJDay() > 0)
        out << mjd2ymdhms(h.obslast) << std::setw(8) << h.obslastts << std::string(9, ' ')
            << "TIME OF LAST OBS\n";
    ymdhmsns::PrintType = ptype;
    out << std::string(60, ' ') << "END OF HEADER\n";

    out.flags(flags);
    out.precision(prec);
    return out;
}
