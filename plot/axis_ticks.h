// Ticks and their labels along an axis, chosen so that no two labels overlap.
//
// The caller says how long the axis is and how much room a label takes along
// it (its width on a horizontal axis, its height on a vertical one); the finest
// tick spacing whose labels all keep a gap between them wins.
//   * Linear, Square, Sqrt, Recip., Stan and Prob: majors on steps of 1, 2,
//     2.5 or 5 times a power of ten, with unlabelled minors between.
//   * Log: majors on powers of ten (every 1st, 2nd, 3rd, 5th or 10th decade
//     labelled), minors on 2..9 times them; less than two decades in view also
//     labels 2 and 5 times the powers.
//   * Norm: the cumulative-probability labels 99, 95, 90 ... 10, 5, 1 (and
//     99.9, 0.1 when the axis reaches them), the middle and the ends first.
//   * Dates (a scale whose unit is "date": seconds since 1846-07-30 00:00):
//     month starts labelled "Jan" .. "Dec", the year added at January and at
//     the first tick; every 2nd, 3rd or 6th month, or whole years, when months
//     would crowd.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "subsurf/plot.h"

namespace subsurf {

struct Tick {
  double value = 0.0;
  double fraction = 0.0;  // along the axis, 0 at MIN
  std::string label;      // empty for a minor tick
};

// Label extent along the axis, in the same unit as the axis length.
using LabelExtent = std::function<double(const std::string&)>;

std::vector<Tick> axisTicks(const ZW_SCALE& scale, double axisLength, const LabelExtent& extent, double gap);

// True when the scale is a date axis.
bool isDateScale(const ZW_SCALE& scale);

// A number as a tick label for ticks spaced step apart: as few decimals as the
// step needs, no "-0".
std::string tickLabel(double value, double step);

// Seconds since 1846-07-30 00:00 of the first day of a month (1..12).
double dateSeconds(int year, int month, int day);

}  // namespace subsurf
