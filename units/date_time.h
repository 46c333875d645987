// Dates and times: seconds since 1846-07-30 00:00 (day number 0) on the
// proleptic Gregorian calendar, shown and read through mask texts such as
// "dd mon yyyy hr:min".
//
// Day numbers are computed with the suite's own truncating formula, which the
// files and databases of our users already hold; it agrees with the calendar
// from 1600-03-01 on. Before that date its truncating divisions shift the day
// number by one (1600-02-29 and 1600-03-01 share a day number), which we keep
// rather than renumber stored dates.
//
// Mask items (letters in any case; everything else is a literal separator):
//   yyyy  four-digit year            yy    two-digit year
//   mon   three-letter month (Jan)   month full month name (January)
//   mm    month number, two digits   dd    day, two digits
//   hr    hours, two digits          min   minutes, two digits
//   sec, ss  seconds, two digits     ss.sss seconds with milliseconds
// An upper-case "MON" or "MONTH" writes the name in upper case.
//
// Reading: the parts of a date are separated by "/", "-", ".", "\" or blanks,
// the parts of a time by ":"; items are matched to the mask in order. Month
// names are matched by their first three letters in any case; a month item also
// takes the month's number. A two-digit year 00..49 is 2000..2049 and 50..99 is
// 1950..1999; a year of three or more digits is taken as written. Missing time
// parts at the end read as 0; a missing date part, a stray part or a value out
// of range is an error.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace subsurf {

// Seven parts in this order: year, month (1..12), day, hour, minute, second, millisecond.
struct BrokenDate {
  int year = 0, month = 1, day = 1, hour = 0, minute = 0, second = 0, millisecond = 0;
};

inline constexpr double kSecondsPerDay = 86400.0;
// Values beyond this magnitude (some 30 million years; the null value among
// them) are no date: they format as an empty text and are never rounded or added to.
inline constexpr double kLargestDateValue = 1.0e15;
inline constexpr const char* kDefaultDateMask = "dd.mon.yy hr:min";
inline constexpr const char* kDefaultTimeMask = "hr:min";

// Day number of a calendar date (1970-01-01 is 45080).
long dayNumber(int year, int month, int day);
double dateValue(const BrokenDate& d);
// The date of a value; milliseconds are rounded to the nearest.
BrokenDate brokenDate(double value);
int daysInMonth(int year, int month);

// The mask of a DT_DATESETMASK code; empty for an unknown code.
std::string maskOfCode(int code);

// A mask split into items: each item is a field name ("yyyy", "mon", ...) or a
// literal text between fields.
struct MaskItem {
  std::string text;  // as written in the mask
  bool field = false;
};
std::vector<MaskItem> splitMask(std::string_view mask);

// Value to text under a mask; the null value gives an empty text.
std::string formatDate(double value, std::string_view mask);
// Text to value under a mask; errors counts the parts not understood (0 = read).
// The value is the double null when errors > 0.
double parseDate(std::string_view text, std::string_view mask, int& errors);

// Times of day: seconds from midnight, shown with the time items of a mask
// (hours run on past 23 for longer spans).
std::string formatTime(double seconds, std::string_view mask);
double parseTime(std::string_view text, std::string_view mask, int& errors);

// Steps of rounding and adding.
enum class DateUnit { Years = 1, Months = 2, Days = 3, Hours = 4, Minutes = 5, Seconds = 6, Weeks = 7 };
bool validDateUnit(int unit);
// "years", "month", "d", ... to a unit code; 0 when unknown.
int dateUnitByName(std::string_view name);

// Rounds down or up to a multiple of `step` units (step >= 1). Years and months
// are counted from year 1 and January; days, weeks and smaller from day 0.
double roundDateDown(double value, DateUnit unit, int step);
double roundDateUp(double value, DateUnit unit, int step);
// Adds whole steps; a day beyond the end of the month reached is cut to its last day.
double addDateSteps(double value, DateUnit unit, long steps);
// Adds a fractional number of steps: the whole steps as above, then the fraction
// of the following step's length (a month's fraction is of the month that follows).
double addDateSteps(double value, DateUnit unit, double steps);

}  // namespace subsurf
