#include "delays/IONEXHeader.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "geodesy/TimeConverse.h"
#include "numerics/ProgramError.h"

namespace {

const char* const Warn = "IONEXHeader";

std::string Field(const std::string& line, std::size_t pos, std::size_t len)
{
    return pos < line.size() ? line.substr(pos, len) : std::string();
}

void Text(const std::string& line, std::size_t pos, std::size_t len, char* out, std::size_t n, bool trim = true)
{
    std::string s = Field(line, pos, len);
    if (trim) s.erase(s.find_last_not_of(' ') + 1), s.erase(0, s.find_first_not_of(' '));
    std::strncpy(out, s.c_str(), n - 1);
    out[n - 1] = '\0';
}

bool Next(std::istream& in, std::string& line)
{
    if (!std::getline(in, line))
        ProgramError("Orvo", "IONEX FILE HEADER ENDS BEFORE \"END OF HEADER\"!!");
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

void Epoch(const std::string& line, const char* label, mjd& t)
{
    int y, mo, d, h, mi;
    double s;
    if (std::sscanf(line.c_str(), " %d %d %d %d %d %lf", &y, &mo, &d, &h, &mi, &s) != 6 || y < 0 || mo < 0 || d < 0
        || h < 0 || mi < 0) {
        ProgramWarning(Warn, std::string(label) + " NOT READ: " + line);
        return;
    }
    t = ymdhms2mjd(ymdhms(y, mo, d, h, mi, s));
}

void Triple(const std::string& line, const char* label, long double& a, long double& b, long double& c)
{
    double v[3];
    if (std::sscanf(line.c_str(), " %lf %lf %lf ", &v[0], &v[1], &v[2]) != 3) {
        ProgramWarning(Warn, std::string(label) + " NOT READ: " + line);
        return;
    }
    a = v[0], b = v[1], c = v[2];
}

}  // namespace

void IONEXHeader::SetNSat(int n, int nStations)
{
    nSat = n, nStats = nStations;
    Sat.Resize(n, 1, 0);
    SatDCB.Resize(n, 2, 0.0L);
}

std::istream& operator>>(std::istream& in, IONEXHeader& h)
{
    std::string line;
    while (Next(in, line)) {
        const std::string label = Field(line, 60, 20);
        auto is = [&label](const char* l) { return label.compare(0, std::strlen(l), l) == 0; };
        const int n = std::atoi(line.c_str());
        if (is("END OF HEADER")) return in;
        if (line.find("DIFFERENTIAL CODE BIASES") != std::string::npos) break;
        if (is("IONEX VERSION / TYPE")) {
            h.version = std::strtof(Field(line, 0, 9).c_str(), nullptr);
            Text(line, 20, 19, h.type, sizeof h.type);
            if (std::strstr(h.type, "IONOSPHERE MAPS") == nullptr)
                ProgramError("Orvo", "FILE VERSION IS NOT \"IONOSPHERE MAPS\"!!");
        } else if (is("PGM / RUN BY / DATE")) {
            Text(line, 0, 20, h.pgm, sizeof h.pgm);
            Text(line, 20, 20, h.runby, sizeof h.runby);
            Text(line, 40, 20, h.date, sizeof h.date);
        } else if (is("EPOCH OF FIRST MAP")) {
            Epoch(line, "EPOCH OF FIRST MAP", h.firstEph);
        } else if (is("EPOCH OF LAST MAP")) {
            Epoch(line, "EPOCH OF LAST MAP", h.lastEph);
        } else if (is("INTERVAL")) {
            h.interval = n;
        } else if (is("# OF MAPS IN FILE")) {
            h.nMaps = n;
        } else if (is("MAPPING FUNCTION")) {
            Text(line, 2, 4, h.MapFun, sizeof h.MapFun, false);
        } else if (is("ELEVATION CUTOFF")) {
            h.ElevCutOff = std::strtof(line.c_str(), nullptr);
        } else if (is("BASE RADIUS")) {
            h.BaseR = std::strtold(line.c_str(), nullptr);
        } else if (is("MAP DIMENSION")) {
            h.MapDim = static_cast<short>(n);
        } else if (is("HGT1 / HGT2 / DHGT")) {
            Triple(line, "HGT1 / HGT2 / DHGT", h.hgt1, h.hgt2, h.dhgt);
        } else if (is("LAT1 / LAT2 / DLAT")) {
            Triple(line, "LAT1 / LAT2 / DLAT", h.lat1, h.lat2, h.dlat);
        } else if (is("LON1 / LON2 / DLON")) {
            Triple(line, "LON1 / LON2 / DLON", h.lon1, h.lon2, h.dlon);
        } else if (is("EXPONENT")) {
            h.exponent = n;
        } else if (is("OBSERVABLES USED")) {
            Text(line, 0, 60, h.ObsUsed, sizeof h.ObsUsed, false);
        } else if (!is("# OF STATIONS") && !is("# OF SATELLITES") && !is("COMMENT") && !is("DESCRIPTION")) {
            ProgramWarning(Warn, Field(line, 60, std::string::npos) + " -> UNKNOWN HEADER LABEL");
        }
    }

    // The bias block: satellite lines fill the counted slots in file order,
    // station lines and the block's closing line are passed over.
    int k = 0;
    while (Next(in, line) && Field(line, 60, 13) != "END OF HEADER") {
        if (line.find("PRN / BIAS / RMS") == std::string::npos || k >= h.nSat) continue;
        const char sys = Field(line, 3, 1).empty() ? ' ' : line[3];
        const int prn = std::atoi(Field(line, 4, 2).c_str());
        // Systems without a number range of their own keep 0, asked for by
        // no caller.
        const int base = sys == 'G' || sys == ' ' ? 0 : sys == 'R' ? 100 : sys == 'E' ? 200 : -1;
        h.Sat(k) = static_cast<unsigned short>(base < 0 ? 0 : base + prn);
        h.SatDCB(k, 0) = std::strtold(Field(line, 6, 10).c_str(), nullptr) * 1e-9L;
        h.SatDCB(k, 1) = std::strtold(Field(line, 16, 10).c_str(), nullptr) * 1e-9L;
        ++k;
    }
    return in;
}
