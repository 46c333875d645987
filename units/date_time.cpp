#include "units/date_time.h"

#include <fmt/format.h>

#include <cctype>
#include <cmath>

#include "host/fixed_text.h"
#include "host/nulls.h"

namespace subsurf {
namespace {

constexpr std::array<const char*, 12> kMonthNames = {"January", "February", "March",     "April",
                                                     "May",     "June",     "July",      "August",
                                                     "September", "October", "November", "December"};

long floorDiv(long a, long b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0)) ? 1 : 0); }

std::string upper(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

bool isLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isSeparator(char c) { return c == '/' || c == '-' || c == '.' || c == '\\' || c == ' ' || c == ':'; }

bool isKnownField(const std::string& lower) {
  static const char* const kFields[] = {"yyyy", "yy", "mon", "month", "mm", "dd",
                                        "hr",   "min", "sec", "ss",   "ss.sss"};
  for (const char* f : kFields)
    if (lower == f) return true;
  return false;
}

bool isTimeField(const std::string& lower) {
  return lower == "hr" || lower == "min" || lower == "sec" || lower == "ss" || lower == "ss.sss";
}

// A part of the text being read: a run of digits or of letters, with the
// character that came just before it (0 at the start or right after another part).
struct Token {
  std::string text;
  bool number = false;
  char before = 0;
};

bool tokenize(std::string_view text, std::vector<Token>& tokens) {
  char sep = 0;
  bool bad = false;
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (isDigit(c) || isLetter(c)) {
      const bool number = isDigit(c);
      std::size_t j = i;
      while (j < text.size() && (number ? isDigit(text[j]) : isLetter(text[j]))) ++j;
      tokens.push_back(Token{std::string(text.substr(i, j - i)), number, sep});
      sep = 0;
      i = j;
    } else {
      if (!isSeparator(c) && c != '\t') bad = true;
      if (c != ' ' && c != '\t') sep = c;
      else if (sep == 0) sep = ' ';
      ++i;
    }
  }
  return !bad;
}

int monthOfName(const std::string& word) {
  if (word.size() < 3) return 0;
  const std::string u = upper(word);
  for (int m = 1; m <= 12; ++m) {
    const std::string full = upper(kMonthNames[static_cast<std::size_t>(m - 1)]);
    // The first three letters decide; a longer word must be the start of the full name.
    if (u.compare(0, 3, full, 0, 3) == 0 && full.compare(0, u.size(), u) == 0) return m;
  }
  return 0;
}

bool toNumber(const Token& t, long& out) {
  if (!t.number || t.text.size() > 9) return false;
  out = std::stol(t.text);
  return true;
}

struct Parsed {
  BrokenDate date;
  bool haveYear = false;
  int errors = 0;
};

// Reads the text's parts into date fields, item by item of the mask.
Parsed readByMask(std::string_view text, std::string_view mask, bool wantDate, long maxHour) {
  Parsed p;
  std::vector<Token> tokens;
  if (!tokenize(text, tokens)) ++p.errors;
  std::size_t next = 0;
  for (const MaskItem& item : splitMask(mask)) {
    if (!item.field) continue;
    const std::string f = lowerCase(item.text);
    if (next >= tokens.size()) {
      if (!isTimeField(f) && wantDate) ++p.errors;  // date parts may not be left out
      continue;
    }
    const Token& t = tokens[next++];
    long n = 0;
    if (f == "yyyy" || f == "yy") {
      if (!toNumber(t, n)) { ++p.errors; continue; }
      if (t.text.size() <= 2) n += n < 50 ? 2000 : 1900;
      p.date.year = static_cast<int>(n);
      p.haveYear = true;
    } else if (f == "mon" || f == "month" || f == "mm") {
      const int m = t.number ? (toNumber(t, n) ? static_cast<int>(n) : 0) : monthOfName(t.text);
      if (m < 1 || m > 12) { ++p.errors; continue; }
      p.date.month = m;
    } else if (f == "dd") {
      if (!toNumber(t, n) || n < 1 || n > 31) { ++p.errors; continue; }
      p.date.day = static_cast<int>(n);
    } else if (f == "hr") {
      if (!toNumber(t, n) || n > maxHour) { ++p.errors; continue; }
      p.date.hour = static_cast<int>(n);
    } else if (f == "min") {
      if (!toNumber(t, n) || n > 59) { ++p.errors; continue; }
      p.date.minute = static_cast<int>(n);
    } else {  // seconds, with an optional fraction after "."
      if (!toNumber(t, n) || n > 59) { ++p.errors; continue; }
      p.date.second = static_cast<int>(n);
      if (next < tokens.size() && tokens[next].number && tokens[next].before == '.') {
        std::string digits = tokens[next++].text.substr(0, 3);
        while (digits.size() < 3) digits += '0';
        p.date.millisecond = std::stoi(digits);
      }
    }
  }
  p.errors += static_cast<int>(tokens.size() - std::min(next, tokens.size()));
  if (tokens.empty()) p.errors = 1;  // nothing to read is one fault, not one per item
  return p;
}

std::string monthText(int month, const std::string& item) {
  const std::string full = kMonthNames[static_cast<std::size_t>(month - 1)];
  const bool wantFull = lowerCase(item) == "month";
  std::string s = wantFull ? full : full.substr(0, 3);
  if (item == "MON" || item == "MONTH") s = upper(s);
  return s;
}

std::string formatParts(const BrokenDate& d, long hours, std::string_view mask) {
  std::string out;
  for (const MaskItem& item : splitMask(mask)) {
    if (!item.field) {
      out += item.text;
      continue;
    }
    const std::string f = lowerCase(item.text);
    if (f == "yyyy") out += fmt::format("{:04d}", d.year);
    else if (f == "yy") out += fmt::format("{:02d}", ((d.year % 100) + 100) % 100);
    else if (f == "mon" || f == "month") out += monthText(d.month, item.text);
    else if (f == "mm") out += fmt::format("{:02d}", d.month);
    else if (f == "dd") out += fmt::format("{:02d}", d.day);
    else if (f == "hr") out += fmt::format("{:02d}", hours);
    else if (f == "min") out += fmt::format("{:02d}", d.minute);
    else if (f == "ss.sss") out += fmt::format("{:02d}.{:03d}", d.second, d.millisecond);
    else out += fmt::format("{:02d}", d.second);
  }
  return out;
}

double unitSeconds(DateUnit unit) {
  switch (unit) {
    case DateUnit::Weeks: return 7 * kSecondsPerDay;
    case DateUnit::Days: return kSecondsPerDay;
    case DateUnit::Hours: return 3600.0;
    case DateUnit::Minutes: return 60.0;
    default: return 1.0;
  }
}

bool isCalendarUnit(DateUnit unit) { return unit == DateUnit::Years || unit == DateUnit::Months; }

}  // namespace

long dayNumber(int year, int month, int day) {
  // Counted from March so that the leap day ends the year; divisions truncate.
  const long m = ((month + 9) % 12) + 1;
  const long a = (13 * m - 1) / 5 - 2;
  const long d = (m - 1) * 28 + day + a;
  const long y = year - m / 11 - 1600;
  return 365 * y + y / 400 + y / 4 - y / 100 + d - 1 - 90000;
}

double dateValue(const BrokenDate& d) {
  return static_cast<double>(dayNumber(d.year, d.month, d.day)) * kSecondsPerDay +
         static_cast<double>((d.hour * 60L + d.minute) * 60L + d.second) + d.millisecond / 1000.0;
}

BrokenDate brokenDate(double value) {
  // Far beyond any calendar (the null value among them): no date.
  if (!std::isfinite(value) || std::fabs(value) > kLargestDateValue) return BrokenDate{0, 0, 0, 0, 0, 0, 0};
  const long long ms = std::llround(value * 1000.0);
  const long long msPerDay = 86400000LL;
  long long days = ms / msPerDay, rest = ms % msPerDay;
  if (rest < 0) {
    rest += msPerDay;
    --days;
  }
  // Days since 1600-03-01, in 400-year eras of 146097 days.
  const long z = static_cast<long>(days) + 90000;
  const long era = floorDiv(z, 146097);
  const long doe = z - era * 146097;
  const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long mp = (5 * doy + 2) / 153;
  BrokenDate d;
  d.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  d.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  d.year = static_cast<int>(yoe + era * 400 + 1600 + (d.month <= 2 ? 1 : 0));
  d.hour = static_cast<int>(rest / 3600000);
  d.minute = static_cast<int>(rest / 60000 % 60);
  d.second = static_cast<int>(rest / 1000 % 60);
  d.millisecond = static_cast<int>(rest % 1000);
  return d;
}

int daysInMonth(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[(month - 1) % 12];
}

std::string maskOfCode(int code) {
  switch (code) {
    case 1: return "yyyy";
    case 2: return "mon yyyy";
    case 3: return "dd mon yyyy";
    case 4: return "dd mon yyyy hr:min";
    case 5: return "dd mon yyyy hr:min:sec";
    case 6: return "dd mon yyyy hr:min:ss.sss";
    case 11: return "hr:min";
    case 12: return "hr:min:ss";
    case 13: return "hr:min:ss.sss";
    default: return {};
  }
}

std::vector<MaskItem> splitMask(std::string_view mask) {
  std::vector<MaskItem> items;
  for (std::size_t i = 0; i < mask.size();) {
    std::size_t j = i;
    while (j < mask.size() && isLetter(mask[j]) == isLetter(mask[i])) ++j;
    std::string text(mask.substr(i, j - i));
    if (lowerCase(text) == "ss" && lowerCase(mask.substr(j, 4)) == ".sss") {
      text = std::string(mask.substr(i, j + 4 - i));
      j += 4;
    }
    const bool field = isLetter(mask[i]) && isKnownField(lowerCase(text));
    if (!field && !items.empty() && !items.back().field) items.back().text += text;
    else items.push_back(MaskItem{text, field});
    i = j;
  }
  return items;
}

std::string formatDate(double value, std::string_view mask) {
  if (isNull(value) || !std::isfinite(value) || std::fabs(value) > kLargestDateValue) return {};
  const BrokenDate d = brokenDate(value);
  return formatParts(d, d.hour, mask);
}

double parseDate(std::string_view text, std::string_view mask, int& errors) {
  const Parsed p = readByMask(text, mask, true, 23);
  errors = p.errors;
  if (errors == 0 && !p.haveYear) errors = 1;
  if (errors == 0 && p.date.day > daysInMonth(p.date.year, p.date.month)) errors = 1;
  return errors == 0 ? dateValue(p.date) : kDoubleNull;
}

std::string formatTime(double seconds, std::string_view mask) {
  if (isNull(seconds) || !std::isfinite(seconds) || std::fabs(seconds) > kLargestDateValue) return {};
  const long long ms = std::llround(std::fabs(seconds) * 1000.0);
  BrokenDate d;
  d.minute = static_cast<int>(ms / 60000 % 60);
  d.second = static_cast<int>(ms / 1000 % 60);
  d.millisecond = static_cast<int>(ms % 1000);
  const std::string text = formatParts(d, static_cast<long>(ms / 3600000), mask);
  return seconds < 0 ? "-" + text : text;
}

double parseTime(std::string_view text, std::string_view mask, int& errors) {
  const Parsed p = readByMask(text, mask, false, 999999);
  errors = p.errors;
  if (errors > 0) return kDoubleNull;
  return (p.date.hour * 60.0 + p.date.minute) * 60.0 + p.date.second + p.date.millisecond / 1000.0;
}

bool validDateUnit(int unit) { return unit >= 1 && unit <= 7; }

int dateUnitByName(std::string_view name) {
  const std::string n = lowerCase(trimBlanks(name));
  struct Named { const char* name; const char* abbreviation; DateUnit unit; };
  static const Named kNames[] = {{"year", "y", DateUnit::Years},     {"month", "mo", DateUnit::Months},
                                 {"day", "d", DateUnit::Days},       {"hour", "h", DateUnit::Hours},
                                 {"minute", "min", DateUnit::Minutes}, {"second", "s", DateUnit::Seconds},
                                 {"week", "w", DateUnit::Weeks}};
  for (const Named& u : kNames) {
    if (n == u.name || n == std::string(u.name) + "s" || n == u.abbreviation) return static_cast<int>(u.unit);
  }
  return 0;
}

double roundDateDown(double value, DateUnit unit, int step) {
  if (std::fabs(value) > kLargestDateValue || step < 1) return value;
  if (!isCalendarUnit(unit)) {
    const double s = unitSeconds(unit) * step;
    return std::floor(value / s) * s;
  }
  BrokenDate d = brokenDate(value);
  if (unit == DateUnit::Years) {
    if ((d.year + step - 1) % step > 0) d.year = ((d.year - 1) / step) * step + 1;
    d.month = 1;
  } else {
    d.month = ((d.month - 1) / step) * step + 1;
  }
  d.day = 1;
  d.hour = d.minute = d.second = d.millisecond = 0;
  return dateValue(d);
}

double roundDateUp(double value, DateUnit unit, int step) {
  if (std::fabs(value) > kLargestDateValue || step < 1) return value;
  const double down = roundDateDown(value, unit, step);
  if (down == value) return value;
  return isCalendarUnit(unit) ? addDateSteps(down, unit, static_cast<long>(step))
                              : down + unitSeconds(unit) * step;
}

double addDateSteps(double value, DateUnit unit, long steps) {
  if (std::fabs(value) > kLargestDateValue) return value;
  if (!isCalendarUnit(unit)) return value + unitSeconds(unit) * static_cast<double>(steps);
  BrokenDate d = brokenDate(value);
  const long months = unit == DateUnit::Years ? steps * 12 : steps;
  const long total = d.year * 12L + (d.month - 1) + months;
  d.year = static_cast<int>(floorDiv(total, 12));
  d.month = static_cast<int>(total - d.year * 12L + 1);
  d.day = std::min(d.day, daysInMonth(d.year, d.month));
  return dateValue(d);
}

double addDateSteps(double value, DateUnit unit, double steps) {
  if (std::fabs(value) > kLargestDateValue || !std::isfinite(steps) || std::fabs(steps) > 1.0e9) return value;
  const double whole = std::floor(steps);
  const double fraction = steps - whole;
  const double from = addDateSteps(value, unit, static_cast<long>(whole));
  if (fraction == 0.0) return from;
  const double to = addDateSteps(value, unit, static_cast<long>(whole) + 1);
  return from + fraction * (to - from);
}

}  // namespace subsurf
