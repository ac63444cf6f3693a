#pragma once
// The correction stage: frequency channels, then, once for the whole run,
// the geometry and model values of every observation record.
#include "driver/gCPosC.h"

namespace ApplyCorrectionsns {
/// 2GM/c^2 of the Earth (m), the scale of the relativistic path term
/// (IERS Conventions 2010, eq. 11.17).
constexpr long double Rel2Const = 0.00887005607823534297784L;
/// Added to tan(E) sin(E) in the gradient mapping function (Chen & Herring
/// 1997, J. Geophys. Res. 102(B9)), which keeps it finite at the horizon.
constexpr long double GradMappingC = 0.0032L;
/// Thin-shell model of a vertical ionosphere series: mean Earth radius and
/// shell height, km.
constexpr long double ShellRadius_km = 6371.0L;
constexpr long double ShellHeight_km = 450.0L;
/// Code biases of a satellite smaller than this in sum (m) are not applied.
constexpr long double MinCodeBias_m = 0.01L;
}  // namespace ApplyCorrectionsns

/// Fills the GLONASS frequency tables (GLONASSc) for every GLONASS
/// satellite of the observation file when GLONASS is processed and a
/// channel or navigation file was named or the header lists channels. The channel file (isGLNfrch) wins:
/// a satellite takes the channel that it gives at the first observation
/// epoch. Otherwise the first record of the slot in the GLONASS navigation
/// file gives it (column FRQNUM); without either, the GLONASS SLOT / FRQ #
/// records of the observation header (RINEX 3). The source is named on the
/// output stream. An unlisted satellite gets channel 0 with
/// a warning on the error stream naming the source it is missing from;
/// slots above 32 have no row in the tables and are skipped with a warning.
/// Each satellite and its channel are listed on the output stream.
void SetGlonassFrequency(gCPosC& gc);

/// Sizes the per-record arrays of gc (nsatall rows; MFGRAD two columns;
/// posSunUnit, SunMag nepochall rows; with isPRCorr the correction print
/// arrays) at their start values and, for every record of a processed
/// system, computes at the observation epoch corrected by the a-priori
/// receiver clock (isClkErr): the satellite position and clock at
/// transmission from the precise orbits (light time, Earth rotation),
/// whether orbit and clock exist (OKSAT), elevation and azimuth (rad) on
/// the system's ellipsoid,
/// the relativistic path term REL2 = 2GM/c^2 ln((rs + rr + d)/(rs + rr - d))
/// (m), the weight sin^2(E) with obsP COSZ, and with isTrpModel the slant
/// troposphere (dry only when the wet delay is estimated), the wet mapping
/// value and the gradient mapping values (Chen & Herring 1997), and with an
/// ionosphere model (Klobuchar, IONEX, own series) ION (m, first
/// frequency). The Sun and Moon of every epoch go to posSunUnit, SunMag and
/// the solid tide; the solid tide (SETIDE), pole tide (isPTide, PTIDE) and
/// ocean loading (isOTide, OTIDE) enter projected on the line of sight. A
/// system with a navigation file takes its satellites from it, usable while
/// the chosen record is healthy; otherwise the precise products decide, the
/// clock coming from the clock file alone when one is read (isPclk), else
/// from the orbit file. A record without orbit or clock keeps the start
/// values with OKSAT false; those beyond the orbit file, on its missing or
/// refused nodes, or without a clock are listed per satellite on the output
/// stream, each kind closed by a warning with its total. An orbit or clock
/// file whose span holds no observation epoch ends the run with the framed
/// error naming it and both spans, before anything is computed. With
/// isSkyPlot writes epoch, satellite, elevation and azimuth (degrees) per
/// record with an orbit to skyplotfile; a file that does not open ends the
/// run before anything is computed.
void CalculateAE(gCPosC& gc);

/// With a GPS navigation file (isGPSnav) or IONEX (isIonx), shifts the
/// non-null C1, P1 (by dtL1) and P2 (by dtL2) of every satellite in place by
/// its satellite code bias: the navigation group delay of the satellite's
/// first record (GPS only: dtL1 = -TGD c, dtL2 = (f1/f2)^2 dtL1), replaced
/// by the IONEX P1-P2 bias where IONEX is read (dtL1 = LCion2 DCB c, dtL2 =
/// LCion1 DCB c). A satellite whose two shifts sum to less than
/// MinCodeBias_m is left alone; GPS and GLONASS satellites of a system not
/// processed are skipped. Prints the source, then per satellite both
/// shifts (m) and the numbers of codes shifted. Bias files are not read.
void ApplyDCB(gCPosC& gc);

/// Runs SetGlonassFrequency, ApplyDCB, then CalculateAE.
void ApplyCorrections(gCPosC& gc);
