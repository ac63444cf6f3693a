#include "delays/antex.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "numerics/ProgramError.h"
#include "numerics/cfilef.h"

namespace {

bool Has(const std::string& line, const char* label) { return line.find(label) != std::string::npos; }

// A null text counts as the empty one.
const char* Text(const char* s) { return s != nullptr ? s : ""; }

const char* NotFound = " NOT FOUND IN ANTEX FILE - SETING ALL CALIBRATION PARAMETERS TO ZERO!";

}  // namespace

antex::antex()
    : version(0.0f), satsystem(' '), pvctype(' '), nAntenna(0), nGPSSat(0), nGLNSat(0), nGALSat(0),
      nRec(0), IxAnt(-1), ixZen(AntennaPCVns::IX_OUT_BELOW), ixAzm(AntennaPCVns::IX_OUT_BELOW)
{
    antfile[0] = '\0';
}

void antex::SetFile(const char* file)
{
    if (file == nullptr || std::strlen(file) >= sizeof(antfile))
        ProgramError("Orvo", "ANTEX FILE NAME MISSING OR LONGER THAN 255 CHARACTERS!");
    if (!FileExists(file)) ProgramError("Orvo", "ANTEX FILE DOES NOT EXISTS!");
    std::strcpy(antfile, file);
}

void antex::ReadFile()
{
    long lineNo = 0;
    std::ifstream in(antfile);
    if (!in) AntexFail(antfile, lineNo, "FILE CAN NOT BE OPENED!");
    ReadHeader(in, lineNo);
    CheckData(in, lineNo);
    AT_PCV.Resize(nAntenna, 1);
    in.clear();
    in.seekg(0);
    lineNo = 0;
    ReadHeader(in, lineNo);
    ReadData(in, lineNo);
    IxAnt = -1;
}

void antex::ReadHeader(std::istream& in, long& lineNo)
{
    std::string line;
    for (;;) {
        if (!AntexLine(in, line, antfile, lineNo)) AntexFail(antfile, lineNo, "NO END OF HEADER!");
        if (Has(line, "END OF HEADER")) return;
        if (Has(line, "ANTEX VERSION / SYST")) {
            version = static_cast<float>(std::atof(line.substr(0, 9).c_str()));
            satsystem = line.size() > 20 ? line[20] : ' ';
        }
        if (Has(line, "PCV TYPE / REFANT")) pvctype = line[0];
    }
}

void antex::CheckData(std::istream& in, long& lineNo)
{
    nAntenna = nGPSSat = nGLNSat = nGALSat = nRec = 0;
    std::string line;
    while (AntexLine(in, line, antfile, lineNo)) {
        if (!Has(line, "TYPE / SERIAL NO")) continue;
        ++nAntenna;
        if (Has(line, "BLOCK")) ++nGPSSat;
        else if (Has(line, "GLONASS")) ++nGLNSat;
        else if (Has(line, "GALILEO")) ++nGALSat;
        else ++nRec;
    }
}

void antex::ReadData(std::istream& in, long& lineNo)
{
    std::string line;
    for (long i = 0; i < nAntenna; ++i) {
        do {
            // A record that lost its START OF ANTENNA: without this end the
            // search would run past the end of the file for ever.
            if (!AntexLine(in, line, antfile, lineNo))
                AntexFail(antfile, lineNo, "ENDS AFTER " + std::to_string(i) + " OF "
                                               + std::to_string(nAntenna)
                                               + " RECORDS (FEWER START OF ANTENNA THAN TYPE / SERIAL NO)!");
        } while (!Has(line, "START OF ANTENNA"));
        AT_PCV(i).ReadFile(in, antfile, lineNo);
    }
}

long antex::Find(const char* ant, const char* ser, const mjd* eph) const
{
    for (long i = 0; i < nAntenna; ++i) {
        const AntennaPCV& p = AT_PCV(i);
        // A record without a type line has an empty name, found in any text.
        if (p.AntennaName[0] == '\0' || std::strstr(ant, p.AntennaName) == nullptr) continue;
        if (ser != nullptr && std::strstr(ser, p.AntennaSerial) == nullptr) continue;
        if (eph != nullptr && !(p.ValidFrom <= *eph && *eph <= p.ValidTo)) continue;
        return i;
    }
    return -1;
}

void antex::CheckName(const char* ant) const
{
    // RINEX and ANTEX both give type and radome in 20 columns; another
    // length means the caller cut or trimmed the name and would miss it.
    if (antexns::PrintWarns == 1 && std::strlen(ant) != 20)
        ProgramError("Orvo", "ANTENNA NAME MUST HAVE 20 CHARACTERS!");
}

bool antex::SetAntenna(const char* ant)
{
    ant = Text(ant);
    CheckName(ant);
    IxAnt = Find(ant, nullptr, nullptr);
    if (IxAnt < 0 && antexns::PrintWarns == 1)
        ProgramWarningCout("Orvo", std::string("ANTENNA: ") + ant + NotFound);
    return IxAnt >= 0;
}

bool antex::SetAntenna(const char* ant, const char* ser)
{
    CheckName(Text(ant));
    IxAnt = Find(Text(ant), Text(ser), nullptr);
    return IxAnt >= 0;
}

bool antex::SetAntenna(const char* ant, const char* ser, const mjd& eph)
{
    CheckName(Text(ant));
    IxAnt = Find(Text(ant), Text(ser), &eph);
    return IxAnt >= 0;
}

bool antex::SetSatellite(short prn, const mjd& eph)
{
    IxAnt = -1;
    // Number 0 is what records of other systems and receivers carry.
    for (long i = 0; i < nAntenna && IxAnt < 0 && prn != 0; ++i)
        if (AT_PCV(i).SatID == prn && AT_PCV(i).ValidFrom <= eph && eph <= AT_PCV(i).ValidTo) IxAnt = i;
    if (IxAnt < 0 && antexns::PrintWarns == 1)
        ProgramWarningCout("Orvo", "SATELLITE: " + std::to_string(prn) + NotFound);
    return IxAnt >= 0;
}

bool antex::IsBlockIIR() const
{
    return IxAnt >= 0 && AT_PCV(IxAnt).PCVType >= 4 && AT_PCV(IxAnt).PCVType <= 7;
}

void antex::GetAntennaOffset(neu& dpos, short freq) const
{
    dpos.Set(0.0L, 0.0L, 0.0L);
    if (freq < 0 || freq > 5) {
        ProgramWarningCout("Orvo", "FREQUENCY TYPE NOT PROPER (GETTING ANTENNA OFFSET)!");
        return;
    }
    if (IxAnt < 0) return;
    const AntennaPCV& p = AT_PCV(IxAnt);
    const neu* const pc[] = {&p.PC_G01, &p.PC_G02, &p.PC_R01, &p.PC_R02, &p.PC_E01, &p.PC_E07};
    dpos = *pc[freq];
}

void antex::GetAntennaPCV(long double zen_deg, long double azm_deg, long double& pcvg1,
                          long double& pcvg2, long double& pcvr1, long double& pcvr2,
                          long double& pcve1, long double& pcve7)
{
    pcvg1 = pcvg2 = pcvr1 = pcvr2 = pcve1 = pcve7 = 0.0L;
    if (IxAnt < 0) return;
    AntennaPCV& p = AT_PCV(IxAnt);
    p.GetAntennaPCV(zen_deg, azm_deg, pcvg1, pcvg2, pcvr1, pcvr2, pcve1, pcve7);
    ixZen = p.ixZen;
    ixAzm = p.ixAzm;
}
