#pragma once
// RINEX 3.02-3.05 and 4.00 observation files, translated into the RINEX 2.11
// text that the observation reader takes, so that the record store and its
// types stay what every stage knows.
#include <string>

class RINEXHeader;
class RINEXData;

/// True when text is a RINEX observation file of version 3 or 4: its first
/// line is "RINEX VERSION / TYPE" with type O and a version of 3 or more.
/// False for any other text (RINEX 2, Compact RINEX, navigation files). A
/// version other than 3.02, 3.03, 3.04, 3.05 or 4.00 ends the run with the
/// framed error "<path>: UNKNOWN RINEX VERSION x.yz".
bool IsRinex3Observation(const std::string& text, const std::string& path);

/// The RINEX 2.11 text of the same epochs: the header records that RINEX 2
/// knows (with GLONASS SLOT / FRQ #) carried over, "# / TYPES OF OBSERV" of
/// the RINEX 2 types chosen by the priority table of Rinex3Observation.cpp
/// (one RINEX 3 code per type and system for the whole file), epoch lines
/// and 16-column observation fields copied as text (F14.3, LLI, SSI, never
/// reformatted). BeiDou, QZSS, NavIC and SBAS records are left out with a
/// warning that counts them. A text that is no RINEX 3/4 observation file,
/// a broken header or record, or a cut epoch ends the run with a framed
/// error naming path and the line.
std::string Rinex3ToRinex2(const std::string& text, const std::string& path);

/// True when the header of the observation file at path (plain or gzip,
/// RINEX 2, 3, 4 or Compact RINEX) holds a "GLONASS SLOT / FRQ #" record
/// with at least one slot: the header then gives the GLONASS channels. False
/// for a file that does not open.
bool ObservationHeaderHasGlonassChannels(const std::string& path);

/// True when text is a Compact RINEX 3.0 file around a RINEX 3 or 4
/// observation file (whose version IsRinex3Observation checks).
bool IsCompactRinex3Observation(const std::string& text, const std::string& path);

/// Reads such a Compact RINEX text straight into h and d (both reset, h's
/// source set): the same header, types, records, warnings and checks as
/// decoding it, translating the RINEX 3 text with Rinex3ToRinex2 and reading
/// that with the RINEX 2 reader, without the two texts in between. Errors
/// name the line of the compact text where the texts' readers name theirs.
void ReadCompactRinex3(const std::string& text, const std::string& path, RINEXHeader& h, RINEXData& d);
