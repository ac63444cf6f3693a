#include "driver/ParseArguments.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <string>

#include "driver/OrvoPrintHelp.h"
#include "driver/ProgramRun.h"
#include "geodesy/TimeConverse.h"
#include "numerics/ProgramError.h"

namespace {

const char* const Prog = "Orvo";
// Every option echo of the log starts with this text.
const char* const EchoHead = "Orvo::GetFiles():         ";
// Longest file name a context member holds, terminator not counted.
constexpr size_t MaxName = gCPosCns::FileNameSize - 1;

// Character i of `a`, or the terminator for any position behind its end, so
// that selector tests never read past a short argument.
char At(const char* a, size_t i)
{
    const size_t n = std::strlen(a);
    return i < n ? a[i] : '\0';
}

// Text of `a` from position npos on; empty when npos lies behind the end.
std::string Tail(const char* a, int npos)
{
    if (npos < 0) return a;
    const size_t n = std::strlen(a);
    return static_cast<size_t>(npos) < n ? std::string(a + npos) : std::string();
}

// Up to len characters of `a` from position pos (fewer at its end).
std::string Cut(const char* a, size_t pos, size_t len)
{
    const size_t n = std::strlen(a);
    return pos < n ? std::string(a + pos, std::min(len, n - pos)) : std::string();
}

bool Contains(const char* a, const char* word) { return std::strstr(a, word) != nullptr; }

char ToUpper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

// Position `pos` holds `sel` in either case.
bool Either(const char* a, size_t pos, char sel)
{
    const char c = At(a, pos);
    return c == sel || c == ToUpper(sel);
}

// "each" rule: every selector position in either case.
bool Each(const char* a, const char* sel)
{
    for (size_t i = 0; sel[i] != '\0'; ++i)
        if (!Either(a, i + 1, sel[i])) return false;
    return true;
}

// "pair" rule on positions 1 and 2: both lower case as in `sel`, or both
// upper case.
bool Pair(const char* a, const char* sel)
{
    const char c1 = At(a, 1), c2 = At(a, 2);
    return (c1 == sel[0] && c2 == sel[1]) ||
           (c1 == ToUpper(sel[0]) && c2 == ToUpper(sel[1]));
}

void Echo(bool verbose, const std::string& text)
{
    if (verbose) std::cerr << EchoHead << text << "\n";
}

template <typename T>
void EchoValue(bool verbose, const char* text, T value, const char* end)
{
    if (verbose) std::cerr << EchoHead << text << value << end << "\n";
}

void File(const char* a, char (&file)[gCPosCns::FileNameSize], bool& isFile, bool verbose,
          int npos, const char* label)
{
    GetFileName(a, file, isFile, verbose, npos, (std::string(EchoHead) + label).c_str());
}

// -tm: the model word first found in the order of the table, then the
// mapping word; a missing mapping word ends the run.
void ParseTropoModel(gCPosC& gc, const char* a)
{
    struct Word {
        const char* upper;
        const char* capital;
        const char* lower;
        short code;
        const char* echo;
    };
    // GPT2 before GPT: the shorter word is part of the longer one.
    static const Word models[] = {
        {"SAAST", "Saast", "saast", 0, "Troposphere model: SAASTAMOINEN!"},
        {"HOPF", "Hopf", "hopf", 1, "Troposphere model: HOPFILED!"},
        {"VIENNA", "Vienna", "vienna", 4, "Troposphere model: VIENNA MODEL!"},
        {"GPT2", "Gpt2", "gpt2", 3, "Troposphere model: GPT2 MODEL!"},
        {"GPT", "Gpt", "gpt", 2, "Troposphere model: GPT MODEL!"}};
    static const Word mappings[] = {
        {"NIELL", "Niell", "niell", 0, "Troposphere mapping function: NIELL!"},
        {"CHAO", "Chao", "chao", 1, "Troposphere mapping function: CHAO!"},
        {"DAVIS", "Davis", "davis", 2, "Troposphere mapping function: DAVIS!"},
        {"MARINI", "Marini", "marini", 3, "Troposphere mapping function: MARINI!"},
        {"UNB3", "Unb3", "unb3", 4, "Troposphere mapping function: UNB3!"},
        {"VMF1", "Vmf1", "vmf1", 5, "Troposphere mapping function: VMF1!"},
        {"GLPT2", "Glpt2", "glpt2", 6, "Troposphere mapping function: GPT2!"}};
    auto found = [a](const Word& w) {
        return Contains(a, w.upper) || Contains(a, w.capital) || Contains(a, w.lower);
    };
    for (const Word& w : models)
        if (found(w)) {
            gc.TrpModel = w.code;
            Echo(gc.verbose, w.echo);
            break;
        }
    bool mapped = false;
    for (const Word& w : mappings)
        if (found(w)) {
            gc.TrpMappFun = w.code;
            Echo(gc.verbose, w.echo);
            mapped = true;
            break;
        }
    if (!mapped)
        ProgramError(Prog,
                     "TROPOSPHERE MODEL NOT SET CORRECTLY [ use "
                     "-tm[SAAST|HOPF|VIENNA|GPT|GPT2],[NIELL|CHAO|DAVIS|MARINI|UNB3|VMF1|GLPT2] ]!");
    gc.isTrpModel = true;
}

// -cd: the day a daily file must cover, echoed as yyyy-mm-dd.
void ParseCheckDay(gCPosC& gc, const char* a)
{
    ymdhms day;
    ParseYMD(a, day, 3);
    gc.DateChkDaily = ymdhms2mjd(day);
    gc.isDateChkDaily = true;
    if (gc.verbose) {
        char text[32];
        std::snprintf(text, sizeof text, "%04u-%02u-%02u", unsigned(day.GetYear()),
                      unsigned(day.GetMonth()), unsigned(day.GetDay()));
        EchoValue(true, "Checking GNSS data for correct epochs (check daily): ", text, "!");
    }
}

// One argument of the second pass, tested against the options in their fixed
// order; the first that matches takes it.
void ApplyOption(gCPosC& gc, const char* a)
{
    const bool v = gc.verbose;
    if (Each(a, "r")) {
        File(a, gc.rnxfile, gc.isRnx, v, 2, "RINEX file name: ");
    } else if (Each(a, "e")) {
        if (Either(a, 2, 'g'))
            File(a, gc.gnavfile, gc.isGPSnav, v, 3, "GPS navigation file: ");
        else if (Either(a, 2, 'r'))
            File(a, gc.rnavfile, gc.isGLNnav, v, 3, "GLONASS navigation file: ");
        else if (Either(a, 2, 'e'))
            File(a, gc.enavfile, gc.isGALnav, v, 3, "GALILEO navigation file: ");
        else if (Either(a, 2, 'p'))
            File(a, gc.sp3file, gc.isPEph, v, 3, "MULTI-GNSS precise ephemeris file: ");
        else if (Either(a, 2, 'c'))
            File(a, gc.pclkfile, gc.isPclk, v, 3,
                 "MULTI-GNSS precise satellite clock file: ");
        else if (Either(a, 2, 'o'))
            File(a, gc.ptidefile, gc.isPTide, v, 3, "Earth rotation parameters: ");
        else
            ProgramError(Prog, "EPHEMERIS/PRECISE CLOCKS/ERP FILE NOT SET CORRECTLY [ use "
                               "-e[p|g|r|e|c|o]FILENAME ]!");
    } else if (Pair(a, "cs")) {
        const std::string value = Tail(a, 3);
        if (value.find_first_of("Gg") != std::string::npos) gc.isGPS = true;
        if (value.find_first_of("Rr") != std::string::npos) gc.isGLN = true;
        if (value.find_first_of("Ee") != std::string::npos) gc.isGAL = true;
        Echo(v, std::string("Selection of satellite systems to use:") +
                    (gc.isGPS ? " GPS" : "") + (gc.isGLN ? " GLONASS" : "") +
                    (gc.isGAL ? " GALILEO" : ""));
    } else if (Pair(a, "ic")) {
        File(a, gc.clkFName, gc.isClkErr, v, 3, "Apriori receiver clock error file: ");
    } else if (Pair(a, "sx")) {
        File(a, gc.scrxfile, gc.isSCrx, v, 3, "Satellite problem file: ");
    } else if (Pair(a, "mp")) {
        if (At(a, 3) == '1')
            File(a, gc.mp1file, gc.isMP1, v, 4, "Multipath on P1 file: ");
        else if (At(a, 3) == '2')
            File(a, gc.mp2file, gc.isMP2, v, 4, "Multipath on P2 file: ");
        else
            ProgramWarning(Prog, "MULTIPATH FILE NOT SET CORRECTLY [ use -mp[1|2]FILENAME ]!");
    } else if (Each(a, "i")) {
        if (Either(a, 2, 'k'))
            File(a, gc.ionkfile, gc.isKlob, v, 3, "Klobuchar ionosphere file name: ");
        else if (Either(a, 2, 'i'))
            File(a, gc.ionxfile, gc.isIonx, v, 3, "IONEX ionosphere file name: ");
        else if (Either(a, 2, 'm'))
            File(a, gc.myionfile, gc.isMyion, v, 3,
                 "MyIono (Meskal.exe) ionosphere file name: ");
        else
            ProgramWarning(Prog,
                           "IONOSPHERE FILE NOT SET CORRECTLY [ use -i[k|i|m]FILENAME ]!");
    } else if (Pair(a, "pv")) {
        File(a, gc.atxfile, gc.isAtx, v, 3, "ANTEX - antenna phase variation file name: ");
    } else if (Pair(a, "cb")) {
        if (At(a, 3) == '1')
            File(a, gc.dcbp1p2file, gc.isP1P2, v, 4,
                 "Differential Code Bias (DCB) file - P1P2: ");
        else if (At(a, 3) == '2')
            File(a, gc.dcbp1c1file, gc.isP1C1, v, 4,
                 "Differential Code Bias (DCB) file - P1C1: ");
        else if (At(a, 3) == '3')
            File(a, gc.dcbp2c2file, gc.isP2C2, v, 4,
                 "Differential Code Bias (DCB) file - P2C2: ");
        else if (Either(a, 3, 'm'))
            File(a, gc.mydbcfile, gc.isMyDCB, v, 4,
                 "Differential Code Bias (DCB) file - Meskal result: ");
        else
            ProgramWarning(Prog, "DIFFERENTIAL CODE BIAS (DCB) FILE NOT SET CORRECTLY [ use "
                                 "-cb[1|2|3,m]FILENAME ]!");
    } else if (Pair(a, "ct")) {
        File(a, gc.rctrackfile, gc.isRCodTrc, v, 3, "Receiver Code Tracking type file name: ");
    } else if (Pair(a, "gf")) {
        File(a, gc.glnfreqch, gc.isGLNfrch, v, 3, "GLONASS frequency channel file: ");
    } else if (Pair(a, "cx")) {
        const std::string value = Tail(a, 3);
        if (value.find("GPS") != std::string::npos) gc.isGPSxdcb = true;
        if (value.find("GLN") != std::string::npos) gc.isGLNxdcb = true;
        if (value.find("GAL") != std::string::npos) gc.isGALxdcb = true;
        Echo(v, std::string("Estimation of DCB biases:") + (gc.isGPSxdcb ? " GPS" : "") +
                    (gc.isGLNxdcb ? " GLONASS" : "") + (gc.isGALxdcb ? " GALILEO" : ""));
    } else if (Pair(a, "ca")) {
        gc.CorrAmbig = false;
        Echo(v, "DO NOT try to correct improper cycle slips determination!");
    } else if (Pair(a, "sm")) {
        gc.splitMidnightAmbs = true;
        Echo(v, "Split midnight ambiguities (when merged clk files are being used)!");
    } else if (Pair(a, "md")) {
        gc.isMinDailyObs = true;
        gc.MinDailyObs = ParseDouble(a, 3);
        EchoValue(v, "Minimum daily number of data [%]: ", gc.MinDailyObs, "");
    } else if (Pair(a, "ti")) {
        gc.ifEstTropo = true;
        gc.TropoInterval = ParseHMS(a, 3);
        EchoValue(v, "Tropospheric delay estimation time interval: ", gc.TropoInterval, " s!");
        // The shift follows a "d"; an upper-case "D" wins when both stand.
        const char* shift = std::strchr(a, 'D');
        if (!shift) shift = std::strchr(a, 'd');
        if (shift) {
            gc.TropoShift = ParseHMS(shift + 1, 0);
            EchoValue(v, "Tropospheric delay estimation time shift: ", gc.TropoShift, " s!");
        }
    } else if (Pair(a, "tg")) {
        gc.ifEstTropoGrad = true;
        Echo(v, "Tropospheric gradient parameters estimation: YES");
        const char* count = std::strchr(a, 'I');
        if (!count) count = std::strchr(a, 'i');
        if (count) {
            gc.nTropoGradInt = ParseInteger(count + 1, 0);
            if (gc.nTropoGradInt == 0)
                Echo(v, "Number of troposphere gradient intervals: Determined with ZTD unknowns");
            else
                EchoValue(v, "Number of troposphere gradient intervals: ", gc.nTropoGradInt, "");
        }
    } else if (Pair(a, "ac")) {
        File(a, gc.aprcrdfile, gc.isAprCrd, v, 3, "Apriori coordinate file name: ");
    } else if (Pair(a, "gp")) {
        if (At(a, 3) == 'k')
            File(a, gc.gnuplotKin, gc.isGNUPlotKin, v, 4,
                 "GNUPlot input file with kinematic coordinates: ");
        else if (At(a, 3) == 's')
            File(a, gc.gnuplotStat, gc.isGNUPlotStat, v, 4,
                 "GNUPlot input file with static coordinates: ");
        else
            ProgramError(Prog, "GNUPLOT FILE NOT SET CORRECTLY [ use -gp[k|s]FILENAME ]!");
    } else if (Pair(a, "sp")) {
        File(a, gc.skyplotfile, gc.isSkyPlot, v, 3, "Output file for sky plot: ");
    } else if (Pair(a, "pc")) {
        File(a, gc.prcorrfile, gc.isPRCorr, v, 3, "Output file pseudo-range corrections: ");
    } else if (Pair(a, "cf")) {
        File(a, gc.clkfile, gc.isClkFile, v, 3, "Clock correction output file: ");
    } else if (Pair(a, "od")) {
        File(a, gc.estdcbfile, gc.isOutDCBFile, v, 3, "Estimated DCB values output file: ");
    } else if (Pair(a, "os")) {
        File(a, gc.sinexfile, gc.isSinexFile, v, 3, "SINEX solution output file: ");
    } else if (Either(a, 1, 'o') && At(a, 2) == 't') {
        File(a, gc.esttropfile, gc.isOutTropFile, v, 3,
             "Estimated troposphere delays output file: ");
    } else if (Either(a, 1, 'o') && At(a, 2) == 'T') {
        File(a, gc.esttropephfile, gc.isOutTropEphFile, v, 3,
             "Estimated epoch troposphere delays output file: ");
    } else if (Each(a, "l")) {
        ParseObservationList(a, gc.ifC1, gc.ifP1, gc.ifP2, gc.ifPc3, gc.ifPp3, gc.ifL3, v);
    } else if (Pair(a, "tm")) {
        ParseTropoModel(gc, a);
    } else if (Each(a, "vm")) {
        File(a, gc.vmf1file, gc.isVMF1file, v, 3,
             "VMF1 and/or VIENNA troposphere model data: ");
    } else if (Either(a, 1, 'g') && At(a, 2) == '2') {
        File(a, gc.gpt2file, gc.isGPT2file, v, 3,
             "GPT2 troposphere model (delay and/or mapping function) data: ");
    } else if (Each(a, "x")) {
        ParseEstimationType(a, gc.ifEstKin, gc.ifEstSta, v);
    } else if (Either(a, 1, 'p') && At(a, 2) == 'W') {
        if (!Contains(a, "cosz") && !Contains(a, "COSZ"))
            ProgramError(Prog, "WEIGHTING OF OBSERVATIONS NOT SET CORRECTLY [ use -p[COSZ] ]!");
        gc.obsP = gCPosC::COSZ;
        Echo(v, "Weighting of observations: YES (COS(Z) model)!");
    } else if (Pair(a, "me")) {
        gc.MinElevation = ParseFloat(a, 3);
        gc.isMinElev = true;
        EchoValue(v, "Minimum elevation angle: ", gc.MinElevation, "!");
    } else if (Pair(a, "ao")) {
        gc.AzmOffAtx = ParseFloat(a, 3);
        gc.isAzmOffAtx = true;
        EchoValue(v, "Azimuth offset for antex calibration data: ", gc.AzmOffAtx, "!");
    } else if (Pair(a, "tc")) {
        ParseSigPpm(a, gc.ThresL40, gc.dThresL4, 3);
        gc.isThresL4 = true;
        // The method letter stands behind the numbers; "c" wins over "l".
        const std::string value = Tail(a, 3);
        if (value.find_first_of("cC") != std::string::npos)
            gc.isL4ScreenConst = true;
        else if (value.find_first_of("lL") != std::string::npos)
            gc.isL4ScreenConst = false;
        if (v) {
            std::cerr << EchoHead << "Threshold values for L4 screening: " << gc.ThresL40
                      << " +sqrt(t)* " << gc.dThresL4 << " m!\n";
            Echo(v, std::string("L4 screening method: ") +
                        (gc.isL4ScreenConst ? "CONSTANT" : "LINEAR"));
        }
    } else if (Pair(a, "bt")) {
        gc.isThresBlunder = true;
        gc.ThresBlunder = ParseFloat(a, 3);
        EchoValue(v, "Threshold for phase/code outlier detection (residual vector v): ",
                  gc.ThresBlunder, "!");
    } else if (Pair(a, "ft")) {
        gc.MaxfDiff = ParseFloat(a, 3);
        gc.isMaxfDiff = true;
        EchoValue(v, "Threshold for blunder detection (misclosure vector f): ", gc.MaxfDiff,
                  "!");
    } else if (Pair(a, "st")) {
        gc.isSolidTide = false;
        Echo(v, "Do not use Solid Earth Tide model [scientific purposes only!!]!");
    } else if (Pair(a, "pf")) {
        gc.doCopyFilterC = true;
        Echo(v, "Copy/filter C1|P1 and C2|P2 code GNSS observations!");
    } else if (Pair(a, "bq")) {
        File(a, gc.otidefile, gc.isOTide, v, 3, "Ocean tide loading file (BLQ format): ");
    } else if (Pair(a, "fp")) {
        File(a, gc.resfile, gc.isresfile, v, 3, "Residual output file: ");
    } else if (Pair(a, "cd")) {
        ParseCheckDay(gc, a);
    } else if (Pair(a, "mi")) {
        gc.MaxIter = ParseInteger(a, 3);
        EchoValue(v, "Maximum number of iteration: ", gc.MaxIter, "!");
    } else if (Pair(a, "mt")) {
        gc.IterThres = ParseDouble(a, 3);
        EchoValue(v, "Iteration process threshold: ", gc.IterThres, "!");
    } else if (Contains(a, "Help") || Contains(a, "HELP") || Contains(a, "help")) {
        gc.isHelp = true;
    } else if (Pair(a, "wo")) {
        File(a, gc.CoutFile, gc.isCoutFile, v, 3, "COUT redirection file: ");
    } else if (Pair(a, "we")) {
        File(a, gc.CerrFile, gc.isCerrFile, v, 3, "CERR redirection file: ");
    } else if (Either(a, 1, 'v')) {
        // Verbose mode was taken in the first pass.
    } else {
        ProgramWarning(Prog, std::string("UNKNOWN PARAMETHER: ") + a);
    }
}

// Hands one standard stream to a file for the rest of the run. A file that
// does not open ends the run while the stream still reaches the terminal.
void Redirect(std::ofstream& file, const char* name, std::ostream& stream, const char* what)
{
    if (file.is_open()) file.close();
    file.open(name, std::ios::out | std::ios::trunc);
    if (!file.is_open())
        ProgramError(Prog, std::string(what) + " REDIRECTION FILE CAN NOT BE OPENED: " + name);
    stream.rdbuf(file.rdbuf());
}

}  // namespace

void ParseFileName(const char* arg, char (&file)[gCPosCns::FileNameSize], int npos)
{
    const std::string name = Tail(arg, npos);
    // A cut name would silently point at another file.
    if (name.size() > MaxName)
        ProgramError(Prog, "FILE NAME LONGER THAN " + std::to_string(MaxName) +
                               " CHARACTERS: " + name);
    std::memcpy(file, name.c_str(), name.size() + 1);
}

void GetFileName(const char* arg, char (&file)[gCPosCns::FileNameSize], bool& isFile,
                 bool verbose, int npos, const char* printString)
{
    ParseFileName(arg, file, npos);
    isFile = true;
    if (verbose) std::cerr << printString << file << "!\n";
}

float ParseFloat(const char* arg, int npos)
{
    return static_cast<float>(std::atof(Tail(arg, npos).c_str()));
}

double ParseDouble(const char* arg, int npos) { return std::atof(Tail(arg, npos).c_str()); }

int ParseInteger(const char* arg, int npos)
{
    // atoi of a number beyond int is undefined; clamped, a huge count stays
    // huge and is refused by the checks of the option.
    const long v = std::strtol(Tail(arg, npos).c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(v, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

namespace {

// The date fields shared by ParseYMD and ParseDate. Each field has at most
// four digits, so atoi cannot overflow an unsigned short.
void DateFields(const char* arg, int npos, unsigned short& y, unsigned short& m,
                unsigned short& d)
{
    const size_t p = npos < 0 ? 0 : static_cast<size_t>(npos);
    y = static_cast<unsigned short>(std::atoi(Cut(arg, p, 4).c_str()));
    m = static_cast<unsigned short>(std::atoi(Cut(arg, p + 5, 2).c_str()));
    d = static_cast<unsigned short>(std::atoi(Cut(arg, p + 8, 2).c_str()));
}

}  // namespace

void ParseYMD(const char* arg, ymdhms& dat, int npos)
{
    unsigned short y, m, d;
    DateFields(arg, npos, y, m, d);
    dat.Set(y, m, d, 0, 0, 0.0L);
}

void ParseDate(const char* arg, ymdhms& dat, int npos)
{
    unsigned short y, m, d;
    DateFields(arg, npos, y, m, d);
    const size_t p = npos < 0 ? 0 : static_cast<size_t>(npos);
    const auto h = static_cast<unsigned short>(std::atoi(Cut(arg, p + 11, 2).c_str()));
    const auto mi = static_cast<unsigned short>(std::atoi(Cut(arg, p + 14, 2).c_str()));
    const long double s = std::strtold(Tail(arg, static_cast<int>(p + 17)).c_str(), nullptr);
    dat.Set(y, m, d, h, mi, s);
}

long double ParseHMS(const char* arg, int npos)
{
    int h = 0, m = 0;
    long double s = 0.0L;
    std::sscanf(Tail(arg, npos).c_str(), "%d:%d:%Lf", &h, &m, &s);
    return 3600.0L * h + 60.0L * m + s;
}

void ParseSigPpm(const char* arg, long double& sig, long double& ppm, int pos)
{
    const std::string text = Tail(arg, pos);
    size_t end = 0;
    if (end < text.size() && (text[end] == '-' || text[end] == '+')) ++end;
    while (end < text.size() && (std::isdigit(static_cast<unsigned char>(text[end])) ||
                                 text[end] == '.'))
        ++end;
    sig = std::atof(text.substr(0, end).c_str());
    ppm = end + 1 < text.size() ? std::atof(text.substr(end + 1).c_str()) : 0.0;
}

void ParseEstimationType(const char* arg, bool& ifEstKin, bool& ifEstSta, bool verbose)
{
    if (Contains(arg, "KIN") || Contains(arg, "kin")) ifEstKin = true;
    if (Contains(arg, "STA") || Contains(arg, "sta")) ifEstSta = true;
    Echo(verbose, std::string("Estimation type: ") + (ifEstSta ? " STATIC" : "") +
                      (ifEstKin ? " KINEMATIC" : ""));
}

void ParseObservationList(const char* arg, bool& iC1, bool& iP1, bool& iP2, bool& iPc3,
                          bool& iPp3, bool& iL3, bool verbose)
{
    if (Contains(arg, "C1") || Contains(arg, "c1")) iC1 = true;
    if (Contains(arg, "P1") || Contains(arg, "p1")) iP1 = true;
    if (Contains(arg, "P2") || Contains(arg, "p2")) iP2 = true;
    if (Contains(arg, "Pc3") || Contains(arg, "pc3")) iPc3 = true;
    if (Contains(arg, "Pp3") || Contains(arg, "pp3")) iPp3 = true;
    if (Contains(arg, "L3") || Contains(arg, "l3")) iL3 = true;
    Echo(verbose, std::string("Observation types: ") + (iC1 ? " C1" : "") + (iP1 ? " P1" : "") +
                      (iP2 ? " P2" : "") + (iPc3 ? " P3[C1]" : "") + (iPp3 ? " P3[P1]" : "") +
                      (iL3 ? " L3" : "") + "!");
}

void ParseArguments(gCPosC& gc, int nargc, const char** cargv)
{
    // First pass: only what must act before anything is printed. The
    // program's own name is left out: a path such as "/work/..." or
    // "/var/..." would otherwise read as -wo or as verbose mode.
    for (int i = 1; i < nargc; ++i) {
        const char* a = cargv[i];
        if (!a) continue;
        if (Either(a, 1, 'v')) gc.verbose = true;
        if (Pair(a, "wo")) {
            ParseFileName(a, gc.CoutFile, 3);
            gc.isCoutFile = true;
        }
        if (Pair(a, "we")) {
            ParseFileName(a, gc.CerrFile, 3);
            gc.isCerrFile = true;
        }
    }
    if (gc.isCerrFile && gc.CerrFile[0] == '\0') {
        ProgramWarning(Prog, "CERR REDIRECTION FILE SET WITHOUT FILENAME: CERR GOES TO TERMINAL!");
        gc.isCerrFile = false;
    }
    if (gc.isCoutFile && gc.CoutFile[0] == '\0') {
        ProgramWarning(Prog, "COUT REDIRECTION FILE SET WITHOUT FILENAME: COUT GOES TO TERMINAL!");
        gc.isCoutFile = false;
    }
    if (gc.isCoutFile && gc.isCerrFile && std::strcmp(gc.CoutFile, gc.CerrFile) == 0) {
        ProgramWarning(Prog, "COUT AND CERR REDIRECTION FILE SET EQUALLY: APPENDING .CERR TO "
                             "CERR FILENAME!");
        const char* const suffix = ".CERR";
        if (std::strlen(gc.CerrFile) + std::strlen(suffix) > MaxName)
            ProgramError(Prog, std::string("CERR REDIRECTION FILE NAME TOO LONG FOR .CERR: ") +
                                   gc.CerrFile);
        std::strcat(gc.CerrFile, suffix);
    }
    if (gc.isCerrFile) Redirect(cerrRedirect, gc.CerrFile, std::cerr, "CERR");
    if (gc.isCoutFile) Redirect(coutRedirect, gc.CoutFile, std::cout, "COUT");

    StartProg(gc.verbose, ": ***** (PRECISE) POINT POSITIONING - STARTING APPLICATION *****");
    if (gc.verbose) std::cerr << "Orvo::GetFiles(): PARSING INPUT PARAMETERS!\n";

    // Second pass: the options proper, the program name left out.
    for (int i = 1; i < nargc; ++i) {
        const char* a = cargv[i];
        if (!a) continue;
        if (a[0] != '-') {
            ProgramWarning(Prog, std::string(" - PARAMETHER MANDATORY ->  ") + a);
            continue;
        }
        ApplyOption(gc, a);
    }

    const int nopt = nargc - 1;
    if (nopt <= 0 || (gc.verbose && nopt == 1) || (gc.isHelp && nopt == 1) ||
        (gc.verbose && gc.isHelp && nopt <= 2)) {
        OrvoPrintHelp();
        gc.RunProg = false;
    }
}
