#pragma once
// Vienna mapping function VMF1 with the height correction of Niell: the
// coefficients a come from a per-site series file or from a model (GPT2).
#include "delays/VMF1Series.h"
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"

class gMF_VMF1 : public VMF1Series {
public:
    long double bh, c0h, c11h, c10h, phh;  // hydrostatic b and c of VMF1
    long double adht, bdht, cdht;          // height correction, per km
    long double bw, cw;                    // wet b and c of VMF1

    gMF_VMF1();

    /// Finds the point's "ah"/"AH" and "aw"/"AW" series; for each one that is
    /// missing a warning names point and file, and its coefficient stays 0.
    void SetPoint(const char* name);

    /// As the six-argument form, with ah and aw interpolated from the series
    /// at eph.GetMJDDec().
    void GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                         long double E);

    /// Writes the VMF1 hydrostatic mapping value, with c from the latitude
    /// and day of year (southern constants and half a year of phase below
    /// the equator) and the Niell height correction for pos.h (metres), to
    /// td.mfdry, and the wet value to td.mfwet, for elevation E (radians)
    /// and the coefficients ah, aw. Boehm, Werl & Schuh (2006), J. Geophys.
    /// Res. 111, B02406 (routine vmf1_ht). Exactly 1 at the zenith; meant
    /// for 3 degrees <= E <= 90 degrees.
    void GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                         long double E, long double ah, long double aw);
};
