#include "delays/gpt2_grd.h"

#include "numerics/ProgramError.h"

namespace gpt2_grdns {
long double scale = 1.0L;
}

long double& gpt2_grd::operator()(int i)
{
    if (i < 0 || i >= N)
        ProgramError("Orvo", "GRD::OPERATOR() INPUT INDEX NOT IN RAGNE!");
    return V[i];
}

long double gpt2_grd::operator()(int i) const
{
    if (i < 0 || i >= N)
        ProgramError("Orvo", "GRD::OPERATOR() INPUT INDEX NOT IN RAGNE!");
    return V[i];
}

long double gpt2_grd::Value(long double cosfy, long double sinfy,
                            long double coshy, long double sinhy) const
{
    return V[A0] + V[A1] * cosfy + V[B1] * sinfy + V[A2] * coshy + V[B2] * sinhy;
}

std::istream& operator>>(std::istream& in, gpt2_grd& g)
{
    for (int i = 0; i < gpt2_grd::N; ++i) {
        long double v = 0.0L;
        in >> v;
        g.V[i] = v * gpt2_grdns::scale;
    }
    return in;
}
