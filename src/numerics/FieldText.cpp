#include "numerics/FieldText.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace fieldtext {

bool NextLine(std::istream& in, std::string& line)
{
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

std::string TrimmedField(const std::string& line, std::size_t pos, std::size_t len)
{
    if (pos >= line.size()) return "";
    const std::string f = line.substr(pos, len);
    const std::size_t a = f.find_first_not_of(" \t");
    if (a == std::string::npos) return "";
    return f.substr(a, f.find_last_not_of(" \t") - a + 1);
}

bool ToLong(const std::string& text, long& value)
{
    const std::size_t i = (!text.empty() && (text[0] == '-' || text[0] == '+')) ? 1 : 0;
    if (i == text.size()) return false;
    for (std::size_t j = i; j < text.size(); ++j)
        if (!std::isdigit(static_cast<unsigned char>(text[j]))) return false;
    errno = 0;
    value = std::strtol(text.c_str(), nullptr, 10);
    return errno == 0;
}

bool ToLongDouble(const std::string& text, long double& value)
{
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtold(text.c_str(), &end);
    return errno == 0 && end != text.c_str() && *end == '\0' && std::isfinite(value);
}

bool IsNumberOrBlank(const char* f, std::size_t n)
{
    std::size_t i = 0;
    while (i < n && f[i] == ' ') i++;
    if (i == n) return true;
    std::size_t j = i + (f[i] == '-' || f[i] == '+' ? 1 : 0), digits = 0;
    for (bool point = false; j < n && ((f[j] >= '0' && f[j] <= '9') || (f[j] == '.' && !point)); j++) {
        if (f[j] == '.') point = true;
        else digits++;
    }
    while (j < n && f[j] == ' ') j++;
    if (j == n && digits > 0) return true;
    long double v;
    return ToLongDouble(TrimmedField(std::string(f, n), 0, n), v);
}

void CopyTrimmedField(const std::string& line, std::size_t pos, std::size_t len, char* out, std::size_t n)
{
    const std::string f = TrimmedField(line, pos, len);
    std::strncpy(out, f.c_str(), n - 1);
    out[n - 1] = '\0';
}

long double FortranNumber(const std::string& line, std::size_t pos, std::size_t len)
{
    if (pos >= line.size()) return 0.0L;
    std::string f = line.substr(pos, len);
    for (char& ch : f)
        if (ch == 'D' || ch == 'd') ch = 'E';
    return std::strtold(f.c_str(), nullptr);
}

long double MantissaExponent(const std::string& line, std::size_t pos, std::size_t len, std::size_t epos)
{
    return FortranNumber(line, pos, len) * std::pow(10.0L, FortranNumber(line, epos, 3));
}

}  // namespace fieldtext
