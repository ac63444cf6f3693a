#include "delays/gTropModel.h"

#include "numerics/ProgramError.h"
#include "numerics/Trigonometry.h"

#include <cstring>
#include <fstream>

void gTropModel::SetTropModel(short model)
{
    if (model < 0 || model > 4) {
        ProgramWarning("Orvo", "TROPOSPHERE MODEL NOT SET CORRECTLY - USING DEFAULT: SAASTAMOINEN!");
        model = 0;
    }
    TropM = model;
}

void gTropModel::SetMappFunction(short mapping)
{
    if (mapping < 0 || mapping > 6) {
        ProgramWarning("Orvo", "TROPOSPHERE MAPPING FUNCTION NOT SET CORRECTLY - USING DEFAULT: NIELL!");
        mapping = 0;
    }
    MappF = mapping;
}

void gTropModel::SetInterpType(short type)
{
    if (type != 0 && type != 1) {
        ProgramWarning("Orvo", "INTERPOLATION ALGORITHM OF VMF1 DATA NOT SET CORRECTLY - USING DEFAULT: LINEAR!");
        type = 0;
    }
    IntT = type;
    gTMns::intType = type;
}

namespace {

// Which kind of file a name holds: a GPT2 grid starts with its '%' header
// line, a VMF1 series file with a comment or a series head.
enum class TropFile { Unknown, Grid, Series };

TropFile KindOf(const char* name)
{
    std::ifstream in(name ? name : "");
    char first = 0;
    if (!in || !in.get(first)) return TropFile::Unknown;
    return first == '%' ? TropFile::Grid : TropFile::Series;
}

}  // namespace

void gTropModel::SetFile(const char* name)
{
    // The one call serves both files, and one choice may need both (e.g.
    // VMF1 delays with GPT2 mapping): the file's own first line decides. A
    // file that does not open goes to every chosen consumer, whose reading
    // then reports it.
    const TropFile kind = KindOf(name);
    const bool series = kind != TropFile::Grid, grid = kind != TropFile::Series;
    const bool seriesWanted = TropM == 4 || MappF == 5;
    if (series && TropM == 4) tVmf1.SetFile(name);
    if (series && MappF == 5) mVmf1.SetFile(name);
    // A foreign file named for a GPT2-only choice would otherwise reach no
    // reader, and the run would stop claiming no grid file was given; the
    // grid reader's own checks name what is wrong with it.
    if ((grid || !seriesWanted) && (TropM == 3 || GPT2ForMapping())) tGPT2.SetFile(name);
}

void gTropModel::ReadFile()
{
    if (TropM == 4) tVmf1.ReadFile();
    if (TropM == 3 || GPT2ForMapping()) tGPT2.ReadFile();
    if (MappF == 5) mVmf1.ReadFile();
}

void gTropModel::SetPoint(const char* name)
{
    if (TropM == 4) tVmf1.SetPoint(name);
    if (MappF == 5) mVmf1.SetPoint(name);
}

void gTropModel::SetAtmParams(const flh& pos)
{
    switch (TropM) {
    case 0: tSaas.SetAtmParams(pos); break;
    case 1: tHopf.SetAtmParams(pos); break;
    case 2: tGPT.SetAtmParams(pos); break;
    case 3: tGPT2.SetAtmParams(pos); break;
    case 4: break;
    default: ProgramWarning("Orvo", "TROPOSHPERE MODEL NOT SELECTED!");
    }
    switch (MappF) {
    case 0: mNiell.SetAtmParams(pos); break;
    case 3: mMarini.SetAtmParams(pos); break;
    case 4: mUnb3.SetAtmParams(pos); break;
    case 1: case 2: case 5: break;
    case 6:
        if (GPT2ForMapping()) tGPT2.SetAtmParams(pos);
        break;
    default: ProgramWarning("Orvo", "TROPOSHPERE MAPPING FUNCTION NOT SELECTED!");
    }
}

void gTropModel::GetZenithDelay(gTropDelay& td, const flh& pos, const mjd& eph)
{
    switch (TropM) {
    case 0: tSaas.GetZenithDelay(td); break;
    case 1: tHopf.GetZenithDelay(td, pos); break;
    case 2: tGPT.GetZenithDelay(td, pos, eph); break;
    case 3: tGPT2.GetZenithDelay(td, eph); break;
    case 4: tVmf1.GetZenithDelay(td, eph); break;
    default:
        td.tdry = 0.0L;
        td.twet = 0.0L;
    }
}

void gTropModel::GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph,
                                 long double E)
{
    GetMappFunction(td, pos, eph, E, MappF == 0 ? trig::Sin(E) : 0.0L);
}

void gTropModel::GetMappFunction(gTropDelay& td, const flh& pos, const mjd& eph, long double E, long double sinE)
{
    switch (MappF) {
    case 0: mNiell.GetMappFunctionOfSine(td, pos, eph, sinE); break;
    case 1: mChao.GetMappFunction(td, E); break;
    case 2: mDavis.GetMappFunction(td, E); break;
    case 3: mMarini.GetMappFunction(td, E); break;
    case 4: mUnb3.GetMappFunction(td, E); break;
    case 5: mVmf1.GetMappFunction(td, pos, eph, E); break;
    case 6:
        if (GPT2ForMapping()) {
            // The zenith delays come from another model: evaluate the grid
            // for the coefficients only, leaving td's delays alone.
            gTropDelay scratch;
            tGPT2.GetZenithDelay(scratch, eph);
        }
        mVmf1.GetMappFunction(td, pos, eph, E, tGPT2.GetCoeffAH(), tGPT2.GetCoeffAW());
        break;
    default: break;
    }
}

void gTropModel::GetTropModel(char* name) const
{
    const char* s = " *** No troposphere model used";
    switch (TropM) {
    case 0: s = "Saastamoinen"; break;
    case 1: s = "Hopfield"; break;
    case 2: s = "GPT"; break;
    case 3: s = "GPT2"; break;
    case 4: s = "VIENNA"; break;
    default: break;
    }
    std::strcpy(name, s);
}

void gTropModel::GetTropMappF(char* name) const
{
    const char* s = " *** No troposphere mapping function used";
    switch (MappF) {
    case 0: s = "Niell"; break;
    case 1: s = "Chao"; break;
    case 2: s = "Davis"; break;
    case 3: s = "Marini"; break;
    case 4: s = "UNB3"; break;
    case 5: s = "VMF1"; break;
    case 6: s = "GPT2"; break;
    default: break;
    }
    std::strcpy(name, s);
}
