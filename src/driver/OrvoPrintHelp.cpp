#include "driver/OrvoPrintHelp.h"

#include <iomanip>
#include <iostream>
#include <string>

namespace {

// Width of the rules that frame the program name.
constexpr int HelpRuleWidth = 74;
// Column in which an option's description starts.
constexpr int OptionWidth = 15;

// The text is kept readable here in UTF-8 and leaves the program in the
// Windows-1250 code page its users' consoles expect; only the Slovene
// letters with a caron occur in it.
std::string ToCp1250(const std::string& utf8)
{
    struct Letter {
        unsigned char lead, trail, cp1250;
    };
    static const Letter letters[] = {{0xC4, 0x8D, 0xE8}, {0xC4, 0x8C, 0xC8},
                                     {0xC5, 0xA1, 0x9A}, {0xC5, 0xA0, 0x8A},
                                     {0xC5, 0xBE, 0x9E}, {0xC5, 0xBD, 0x8E}};
    std::string out;
    out.reserve(utf8.size());
    for (size_t i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        bool replaced = false;
        if (i + 1 < utf8.size())
            for (const Letter& l : letters)
                if (c == l.lead && static_cast<unsigned char>(utf8[i + 1]) == l.trail) {
                    out += static_cast<char>(l.cp1250);
                    ++i;
                    replaced = true;
                    break;
                }
        if (!replaced) out += utf8[i];
    }
    return out;
}

void Line(const std::string& text) { std::cerr << ToCp1250(text) << "\n"; }

// One option paragraph: the option in its column, the description lines
// aligned behind it, a blank line.
void Option(const std::string& option, const std::string& first, const std::string& second = "")
{
    std::cerr << std::left << std::setw(OptionWidth) << option << std::right
              << ToCp1250(first) << "\n";
    if (!second.empty()) std::cerr << std::string(OptionWidth, ' ') << ToCp1250(second) << "\n";
    std::cerr << "\n";
}

}  // namespace

void OrvoPrintHelp()
{
    const std::string rule(HelpRuleWidth, '=');
    Line("");
    Line(rule);
    Line("PROGRAM: Orvo.exe");
    Line("NAMEN:   Program za oceno absolutnih koordinat točk GNSS.");
    Line(rule);
    Line("");

    Line("UPORABA:");
    Line("========");
    Line("Program Orvo.exe je konzolni program za oceno položaja točke na osnovi");
    Line("opazovanj GNSS (GPS, GLONASS, Galileo), opravljenih na eni sami točki.");
    Line("Poleg koordinat lahko program oceni tudi relativne kodne zakasnitve");
    Line("(GPS, GLONASS) in parametre troposferske refrakcije. Program poženemo");
    Line("iz ukazne vrstice ali pa iz paketne datoteke. Paketna datoteka je");
    Line("navadna besedilna datoteka, ki jo shranimo");
    Line("s končnico *.bat (angl. batch file), kamor vnesemo ukaze za DOS.");
    Line("");

    Line("Program se uporablja na sledeči način:");
    Line("Orvo.exe  -cs[G|R|E]-rRINEX -acAPR_CRD -e[p|g|r|e|c|o]EFEM_DAT -ecPREC_CLK");
    Line("          -eoERP_FILE -sxSAT_PROBLEM -pvATX_DAT -gp[k|s]PLOT_DAT -cfPOP_URE");
    Line("          -lOPAZ -tmMODEL,ZENTROPR -xSTA,KIN -pUTEZI -meMIN_VIS_KOT");
    Line("          -cx[GPS,GLN,GAL] -btGROB_POG -ftGROBI_POG_F -miMAXITER -mtITER_PRAG");
    Line("          -v -c  > REZULTATI.TXT");
    Line("");
    Line("");
    Line("Rezultati se vedno izpisejo v izhodno v datoteko.");
    Line("");

    Line("PARAMETRI:");
    Line("==========");
    Line("");
    Option("-cs", "Izbira satelitskih sistemov: G - GPS, R - GLONASS, E - Galileo",
           "(privzeto vsi trije sistemi). (-csGRE)");
    Option("-r", "Datoteka z opazovanji v formatu RINEX 2 - obvezen parameter.",
           "(-rwtzr0100.10o)");
    Option("-ac", "Datoteka s približnimi koordinatami točk (privzeto koordinate",
           "iz glave datoteke RINEX). (-acAPRCRD.txt)");
    Option("-ep", "Precizne efemeride satelitov (SP3); imajo prednost pred",
           "navigacijskimi datotekami. (-epIGS15660.SP3)");
    Option("-eg", "Navigacijska datoteka GPS, RINEX 2, 3 ali 4, tudi gzip. (-egbrdc1200.12n)");
    Option("-er", "Navigacijska datoteka GLONASS, RINEX 2, 3 ali 4, tudi gzip. (-erbrdc1200.12g)");
    Option("-ee", "Navigacijska datoteka Galileo, RINEX 3 ali 4 (I/NAV), tudi gzip. (-eeBRDC00IGS_R_20201770000_01D_MN.rnx.gz)");
    Option("-ec", "Precizni popravki ur satelitov (RINEX CLK). (-ecIGS15660.CLK)");
    Option("-eo", "Parametri rotacije Zemlje (ERP) za plimovanje pola.",
           "(-eoIGS15667.ERP)");
    Option("-ic", "Apriori popravki ure sprejemnika. (-icGRAZ_2015_005.CLK)");
    Option("-i", "Model ionosfere: -ik Klobuchar, -ii IONEX, -im MyIono; največ",
           "eden hkrati (privzeto brez modela). (-iiCODG1200.12I)");
    Option("-sx", "Datoteka s problematičnimi sateliti, ki se izločijo iz obdelave.",
           "(-sxSAT_2009.CRX)");
    Option("-pv", "Kalibracije faznih centrov anten (ANTEX). (-pvigs08.atx)");
    Option("-l", "Opazovanja v izravnavi: C1, P1, P2, Pc3 (P3 iz C1), Pp3 (P3 iz",
           "P1), L3 (privzeto samo C1). (-lC1,P1,P2,Pc3,Pp3,L3)");
    Option("-tm", "Model troposfere SAAST|HOPF|VIENNA|GPT|GPT2 in preslikovalna funkcija",
           "NIELL|CHAO|DAVIS|MARINI|UNB3|VMF1|GLPT2. (-tmSAAST,NIELL)");
    Option("-ti", "Ocena zenitne zakasnitve troposfere v intervalu h:m:s, za črko d",
           "še časovni zamik (privzeto 0). (-ti01:00:00, -ti01:00:00d00:30:00)");
    Option("-tg", "Ocena gradientov troposfere; za črko i število intervalov",
           "(privzeto 1, 0 pomeni enako kot zakasnitve). (-tgi2)");
    Option("-x", "Vrsta rešitve: STA statična, KIN kinematična (privzeto STA).",
           "(-xSTA,KIN)");
    Option("-cx", "Ocena kodnih zakasnitev satelitov za sisteme GPS, GLN, GAL",
           "(privzeto brez). (-cxGPS,GLN)");
    Option("-tx", "Ni v uporabi: program ga zavrne kot neznan parameter.");
    Option("-cf", "Izhodna datoteka z ocenjenimi popravki ure sprejemnika.",
           "(-cfGSR12300.01CLK)");
    Option("-os", "Izhodna datoteka SINEX 2.02 s statičnimi koordinatami in njihovo",
           "kovariančno matriko; agencija ORV. (-osESBC1770.SNX)");
    Option("-gp", "Datoteka za GNUPlot: -gpk kinematične, -gps statične koordinate.",
           "(-gpkKIN.dat)");
    Option("-p", "Uteževanje opazovanj z modelom COS(Z); vključeno tudi brez",
           "parametra. (-pWCOSZ)");
    Option("-me", "Najmanjši višinski kot satelitov v stopinjah (privzeto 10).",
           "(-me10)");
    Option("-bt", "Prag za grobe pogreške v popravkih v, večkratnik STD (privzeto",
           "4, brez parametra se ne preverja). (-bt3.00)");
    Option("-ft", "Prag za grobe pogreške v vektorju odstopanj f v metrih (privzeto",
           "500, brez parametra se ne preverja). (-ft20.00)");
    Option("-v", "Izpis poteka obdelave na izhod za napake. (-v)");
    Line("-help          Izpise datoteko s pomocjo na ekran (to vsebino).");
    Line("");
    Line("");
}
