#pragma once
// The troposphere selector: one object of every zenith-delay model and
// mapping function, and the two codes that choose among them.
//
// Calling order: SetTropModel, SetMappFunction, SetFile, ReadFile, SetPoint,
// SetAtmParams once per site; then per observation GetZenithDelay before
// GetMappFunction (the GPT2 mapping takes its coefficients from the GPT2
// zenith delay of the same epoch).
#include "delays/gMF_Chao.h"
#include "delays/gMF_Davis.h"
#include "delays/gMF_Marini.h"
#include "delays/gMF_Niell.h"
#include "delays/gMF_UNB3.h"
#include "delays/gMF_VMF1.h"
#include "delays/gTM_GPT.h"
#include "delays/gTM_GPT2.h"
#include "delays/gTM_Hopfield.h"
#include "delays/gTM_Saastamoinen.h"
#include "delays/gTM_VMF1.h"
#include "delays/gTropDelay.h"
#include "geodesy/flh.h"
#include "geodesy/mjd.h"

class gTropModel {
public:
    short TropM = 0;  // 0 Saastamoinen, 1 Hopfield, 2 GPT, 3 GPT2, 4 VMF1 series
    short MappF = 0;  // 0 Niell, 1 Chao, 2 Davis, 3 Marini, 4 UNB3, 5 VMF1, 6 GPT2+VMF1
    short IntT = 0;   // VMF1 series interpolation: 0 linear, 1 cubic
    gTM_Hopfield tHopf;
    gTM_Saastamoinen tSaas;
    gTM_VMF1 tVmf1;
    gTM_GPT tGPT;
    gTM_GPT2 tGPT2;
    gMF_Chao mChao;
    gMF_Davis mDavis;
    gMF_Marini mMarini;
    gMF_UNB3 mUnb3;
    gMF_Niell mNiell;
    gMF_VMF1 mVmf1;

    /// Chooses the zenith-delay model (0 to 4); any other code warns and
    /// chooses Saastamoinen (0).
    void SetTropModel(short model);

    /// Chooses the mapping function (0 to 6); any other code warns and
    /// chooses Niell (0).
    void SetMappFunction(short mapping);

    /// Chooses the interpolation of the VMF1 series (0 linear, 1 cubic) for
    /// both VMF1 classes; any other code warns and chooses linear.
    void SetInterpType(short type);

    /// Gives the file name to the chosen consumers of its kind: a GPT2 grid
    /// (first character '%') to the GPT2 model (model 3, or mapping 6 with
    /// any model), any other file to the VMF1 series of model 4 and mapping
    /// 5. A file that does not open goes to all chosen consumers, so that
    /// ReadFile reports it; so does any file when no VMF1 series is chosen.
    void SetFile(const char* name);

    /// Reads the file of each consumer chosen as for SetFile.
    void ReadFile();

    /// Looks up the point (marker) name in the VMF1 series of model 4 and
    /// mapping 5; a missing series warns.
    void SetPoint(const char* name);

    /// Site setup of the chosen model and mapping function from the geodetic
    /// position pos (radians, metres). Mapping 6 with another model than
    /// GPT2 sets up the GPT2 grid for its coefficients as well.
    void SetAtmParams(const flh& pos);

    /// Writes the zenith hydrostatic and wet delays (m) of the chosen model
    /// at pos and epoch eph to td.tdry and td.twet; with no valid model both
    /// become 0.
    void GetZenithDelay(gTropDelay& td, const flh& pos, const mjd& eph);

    /// Writes the hydrostatic and wet mapping values of the chosen function
    /// for elevation E (radians) to td.mfdry and td.mfwet; with no valid
    /// function td is left as it is. Mapping 6 uses the coefficients of the
    /// last GPT2 zenith delay, so with model 3 GetZenithDelay must run first
    /// for the epoch; with another model they are computed here.
    void GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                         long double E);
    /// As above, with the sine of E, which Niell's function reads alone.
    void GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph, long double E, long double sinE);

    /// Writes the chosen model's name ("Saastamoinen", "Hopfield", "GPT",
    /// "GPT2", "VIENNA") to name, which must hold 40 characters.
    void GetTropModel(char* name) const;

    /// Writes the chosen mapping function's name ("Niell", "Chao", "Davis",
    /// "Marini", "UNB3", "VMF1", "GPT2") to name, which must hold 45
    /// characters.
    void GetTropMappF(char* name) const;

private:
    // Mapping 6 needs the grid even when the delays come from another model.
    bool GPT2ForMapping() const { return MappF == 6 && TropM != 3; }
};
