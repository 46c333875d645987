// Axis scales: the limits of an axis found from data, the fallback limits of
// each scale type, the names of scale types and range modes, the month and
// probability labels, and the mapping between values and axis positions.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "subsurf/plot.h"
#include "subsurf/units.h"

namespace subsurf {

enum ScaleType { kLinear = 1, kLog, kSquare, kSqrt, kRecip, kNorm, kStan, kProb };
enum RangeMode { kManual = 1, kAuto, kAutoRound, kP99P1, kP95P5, kP90P10 };

// "Manual  Auto    Auto-rndP99-P1  P95-P5  P90-P10 Linear  Log     ..." : range
// modes then scale types, eight characters each, as the dialogs offer them.
inline constexpr std::string_view kScaleNames =
    "Manual  Auto    Auto-rndP99-P1  P95-P5  P90-P10 "
    "Linear  Log     Square  Sqrt    Recip.  Norm    Stan    Prob    ";
inline constexpr std::string_view kMonthLabels = "JanFebMarAprMayJunJulAugSepOctNovDec";
inline constexpr std::string_view kProbabilityLabels = "9995908070605040302010 5 1";
inline constexpr int kProbabilityLabelCount = 13;

std::string rangeModeName(int mode);  // "" outside 1..6
std::string scaleTypeName(int type);  // "" outside 1..8
std::string monthLabel(int month);    // 1..12, "" otherwise
std::string probabilityLabel(int index);  // 0..12, "" otherwise
// The percent that probability label index stands for (99 .. 1).
int probabilityLabelValue(int index);

struct Limits {
  float min, max;
};
Limits fallbackLimits(int scaleType);
// The limits an empty vector gets (0..1; 0.1..10 on a log axis).
Limits emptyVectorLimits(int scaleType);

// Sets the scale's limits from the values by its range mode (the scale's
// type and mode are first clamped into their ranges).
void setAxisLimits(std::span<const float> values, ZW_SCALE& scale);

// As setAxisLimits, after converting the vector into the scale's unit when the
// scale names one and the vector's unit is known and different.
void setAxisLimits(const DT_RVEC& vector, ZW_SCALE& scale);

// The 1-2-5 step for a count n.
int step125(int n);

// Position of a value on the axis as a fraction of its length (0 at MIN, 1 at
// MAX); NaN for a value the scale cannot show (0 or less on a log axis, ...).
double axisFraction(const ZW_SCALE& scale, double value);
// The value at a fraction of the axis (the inverse of axisFraction).
double axisValue(const ZW_SCALE& scale, double fraction);
// The scale as it can be drawn: a limit the type cannot show (0 or less on a
// Log axis, 0 on a Recip. axis, 0 or 100 and beyond on a Norm axis) is moved
// to where it can, from the other limit: a thousandth of it (Log), a hundredth
// of it (Recip.), 0.1 or 99.9 (Norm). A scale that still cannot be drawn gets
// its type's fallback limits.
ZW_SCALE drawableScale(const ZW_SCALE& scale);

// The scale type's transform of a value, increasing with the value where the
// type allows, and its inverse.
double scaleTransform(int type, double value);
double scaleInverse(int type, double t);

}  // namespace subsurf
