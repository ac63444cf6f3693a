#pragma once
// What the site-model tests share: long double comparison, the framed
// error pattern and calendar epochs.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "geodesy/TimeConverse.h"
#include "geodesy/mjd.h"
#include "geodesy/xyz.h"
#include "geodesy/ymdhms.h"
#include "numerics/MathConstants.h"
#include "numerics/NearLD.h"

namespace sitetest {

/// The epoch y-m-d h:mi:s as the program carries it.
inline mjd Epoch(unsigned short y, unsigned short m, unsigned short d, unsigned short h = 0, unsigned short mi = 0)
{ return ymdhms2mjd(ymdhms(y, m, d, h, mi, 0.0L)); }

/// The framed error text followed by the pattern re.
inline std::string Framed(const std::string& re) { return "\\*\\*\\*\\* Orvo: Error -> " + re; }

}  // namespace sitetest
