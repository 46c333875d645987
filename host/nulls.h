// Null values: how "no value" is held in integer, real and double fields.
//
// Files written by the suite store these values literally, so they must never
// change: the real null is -9.9e20 in single precision, and the double null is
// that same single-precision value widened (not -9.9e20 as a double), so a value
// copied from a real field to a double field stays recognisably null.
#pragma once

#include <cmath>

namespace subsurf {

inline constexpr float kRealNull = -9.9e20f;
inline constexpr double kDoubleNull = static_cast<double>(kRealNull);
// Negative and deliberately not -1, which many routines use for "not set".
inline constexpr int kIntNull = -2147483647;

// Values of this magnitude or more count as "no value" in minimum and maximum searches.
inline constexpr double kNoValueMagnitude = 9.0e19;
// Values above this magnitude are null marks and are never converted between units.
inline constexpr float kNeverConvertMagnitude = 9.0e20f;

inline bool isNull(float v) { return v == kRealNull; }
inline bool isNull(double v) { return v == kDoubleNull; }
inline bool isNull(int v) { return v == kIntNull; }

// True for any value that stands for "no value" in min/max searches (nulls included).
inline bool isNoValue(double v) { return !(std::fabs(v) < kNoValueMagnitude); }
// True for values that unit conversion passes through untouched.
inline bool isBeyondConversion(double v) { return std::fabs(v) > kNeverConvertMagnitude; }

}  // namespace subsurf
