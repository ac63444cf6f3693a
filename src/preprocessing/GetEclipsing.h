#pragma once
// Satellites near the Sun-Earth line lose their nominal attitude: in the
// Earth's shadow the yaw is steered by nothing, near noon it turns faster
// than the satellite can follow. Their phase then carries an unknown
// wind-up and antenna offset, so it is removed.
#include "driver/gCPosC.h"

namespace GetEclipsingns {
/// Eclipsing observations further apart than this (s) belong to different
/// periods of the report.
inline constexpr long double PeriodGap_s = 900.0L;
/// A record whose Sun-Earth cosine lies this far below the threshold's is
/// outside it without the angle: beyond by 1e-12 rad or more (the arc
/// cosine's slope is at least 1), against errors of 1e-19 in either.
inline constexpr long double CosineMargin = 1e-12L;
}  // namespace GetEclipsingns

/// Angle (rad, 0 to pi/2) between the directions from a satellite at
/// satPos to the Sun at sunPos and to the geocentre, with the sign of the
/// cosine dropped: small both with the Sun behind the Earth and between
/// satellite and Earth.
long double SunEarthAngle(const xyz& satPos, const xyz& sunPos);

/// With gc.ifL3, clears L1, L2 (GPS, GLONASS) or L7 (Galileo), L3, L4 and
/// MW of every record with OKSAT whose SunEarthAngle is below
/// satEclipsThres (strictly); codes and arcs stay. Satellites with such
/// records, with their numbers of records, go into EclipsSat and
/// EclipsNObs (at most their rows), their count into NEclipsSat. Prints
/// the periods per satellite and the count on the output stream.
void GetEclipsing(gCPosC& gc);
