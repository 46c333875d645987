// Dates and times: the day-number arithmetic against the C++ calendar, masks,
// text in and out, rounding and adding, and the exported routines.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/dates.h"
#include "units/date_time.h"

using namespace subsurf;

namespace {

constexpr double kDay = 86400.0;

// The value of a date written as text, through the exported reader.
double read(const std::string& text, const std::string& mask, int* errorsOut = nullptr) {
  char t[32], m[32];
  setFixed(t, 32, text);
  setFixed(m, 32, mask);
  double v = 0;
  int errors = -1;
  X_DATECI(t, m, &v, &errors);
  if (errorsOut) *errorsOut = errors;
  return v;
}

std::string write(double value, const std::string& mask) {
  char t[32], m[32];
  setFixed(m, 32, mask);
  X_DATEIC(&value, m, t);
  return fixedText(t, 32);
}

double dateOf(int y, int mo, int d, int h = 0, int mi = 0, int s = 0, int ms = 0) {
  const short parts[7] = {static_cast<short>(y), static_cast<short>(mo), static_cast<short>(d),
                          static_cast<short>(h), static_cast<short>(mi), static_cast<short>(s),
                          static_cast<short>(ms)};
  double v = 0;
  X_DATEIF(parts, &v);
  return v;
}

}  // namespace

// ---- Day numbers -------------------------------------------------------------

TEST(DayNumbers, KnownDays) {
  EXPECT_EQ(dayNumber(1846, 7, 30), 0);
  EXPECT_EQ(dayNumber(1970, 1, 1), 45080);
  EXPECT_EQ(dayNumber(2000, 2, 29), 56096);
  EXPECT_EQ(dayNumber(2000, 3, 1), 56097);
  EXPECT_EQ(dateOf(1970, 1, 1), 45080 * kDay);
  EXPECT_EQ(dateOf(2000, 3, 1, 16, 0), 4846838400.0);
  EXPECT_EQ(dateOf(1970, 1, 1, 1, 2, 3, 500), 45080 * kDay + 3723.5);
}

TEST(DayNumbers, AgreeWithTheCalendarEveryDayFrom1600To2400BothWays) {
  using namespace std::chrono;
  const sys_days epoch = year{1846} / July / 30;
  const sys_days first = year{1600} / March / 1, last = year{2400} / December / 31;
  long checked = 0;
  for (sys_days day = first; day <= last; day += days{1}) {
    const year_month_day ymd{day};
    const long expected = (day - epoch).count();
    const int y = int(ymd.year()), m = int(unsigned(ymd.month())), d = int(unsigned(ymd.day()));
    ASSERT_EQ(dayNumber(y, m, d), expected) << y << "-" << m << "-" << d;
    short parts[7];
    const double v = expected * kDay + 43200.0;
    X_DATEFI(&v, parts);
    ASSERT_EQ(parts[0], y);
    ASSERT_EQ(parts[1], m);
    ASSERT_EQ(parts[2], d);
    ASSERT_EQ(parts[3], 12);
    ++checked;
  }
  EXPECT_EQ(checked, (last - first).count() + 1);
}

// The truncating divisions count the leap day of 1600 once too few for January and
// February 1600: those days sit one later, so 1600-02-29 shares 1600-03-01's number.
TEST(DayNumbers, JanuaryAndFebruary1600KeepTheTruncatingShift) {
  using namespace std::chrono;
  const sys_days epoch = year{1846} / July / 30;
  EXPECT_EQ(dayNumber(1600, 2, 29), dayNumber(1600, 3, 1));
  EXPECT_EQ(dayNumber(1600, 1, 1), (sys_days{year{1600} / January / 1} - epoch).count() + 1);
  EXPECT_EQ(dayNumber(1600, 2, 28), dayNumber(1600, 2, 27) + 1);
}

TEST(DayNumbers, BrokenDateRoundsMillisecondsAndHandlesNegativeValues) {
  const BrokenDate d = brokenDate(dateOf(1999, 12, 31, 23, 59, 59) + 0.9996);
  EXPECT_EQ(d.year, 2000);
  EXPECT_EQ(d.month, 1);
  EXPECT_EQ(d.day, 1);
  EXPECT_EQ(d.hour, 0);
  const BrokenDate before = brokenDate(-1.0);
  EXPECT_EQ(before.year, 1846);
  EXPECT_EQ(before.month, 7);
  EXPECT_EQ(before.day, 29);
  EXPECT_EQ(before.hour, 23);
  EXPECT_EQ(before.second, 59);
  const BrokenDate none = brokenDate(kDoubleNull);
  EXPECT_EQ(none.year, 0);
  EXPECT_EQ(none.month, 0);
}

// ---- Masks -------------------------------------------------------------------

TEST(DateMasks, CodesSetTheirMasksAndOtherCodesLeaveItAlone) {
  const std::pair<int, const char*> codes[] = {{1, "yyyy"},
                                               {2, "mon yyyy"},
                                               {3, "dd mon yyyy"},
                                               {4, "dd mon yyyy hr:min"},
                                               {5, "dd mon yyyy hr:min:sec"},
                                               {6, "dd mon yyyy hr:min:ss.sss"},
                                               {11, "hr:min"},
                                               {12, "hr:min:ss"},
                                               {13, "hr:min:ss.sss"}};
  DT_DSCA rec;
  DT_DATEDFLT(&rec);
  for (const auto& [code, mask] : codes) {
    DT_DATESETMASK(&rec, &code);
    EXPECT_EQ(fixedText(rec.SHORT), mask) << code;
  }
  for (int code : {0, 7, 10, 14, -1}) {
    DT_DATESETMASK(&rec, &code);
    EXPECT_EQ(fixedText(rec.SHORT), "hr:min:ss.sss") << code;
  }
}

TEST(DateMasks, DefaultComesFromTheDatefmtSettingElseTheBuiltInMask) {
  ::unsetenv("SUBSURF_DATEFMT");
  DT_DSCA rec;
  DT_DATEDFLT(&rec);
  EXPECT_EQ(fixedText(rec.SHORT), "dd.mon.yy hr:min");
  EXPECT_TRUE(isNull(rec.V));
  EXPECT_EQ(rec.SET, -1);
  EXPECT_EQ(rec.VU.ISER, -1);
  int mode = 0;
  X_DATE(&rec, &mode);
  EXPECT_EQ(fixedText(rec.CHU), "");  // an unset date shows nothing
  rec.V = dateOf(1987, 10, 19, 9, 5);
  X_DATE(&rec, &mode);
  EXPECT_EQ(fixedText(rec.CHU), "19.Oct.87 09:05");

  // The setting is read to 24 characters.
  ::setenv("SUBSURF_DATEFMT", "yyyy-mm-dd hr:min:sec      and more text", 1);
  DT_DATEDFLT(&rec);
  EXPECT_EQ(fixedText(rec.SHORT), "yyyy-mm-dd hr:min:sec");
  ::setenv("SUBSURF_DATEFMT", "   ", 1);
  DT_DATEDFLT(&rec);
  EXPECT_EQ(fixedText(rec.SHORT), "dd.mon.yy hr:min");
  ::unsetenv("SUBSURF_DATEFMT");

  DT_TIMEDFLT(&rec);
  EXPECT_EQ(fixedText(rec.SHORT), "hr:min");
}

TEST(DateMasks, SplitIntoFieldsAndLiterals) {
  char mask[32], item[32];
  setFixed(mask, 32, "dd.mon.yy hr:min:ss.sss");
  int count = 0;
  X_DATEMASKCI(mask, &count);
  EXPECT_EQ(count, 11);
  // A blank literal reads back as a blank field.
  const char* expected[] = {"dd", ".", "mon", ".", "yy", "", "hr", ":", "min", ":", "ss.sss"};
  for (int k = 1; k <= count; ++k) {
    int isField = -1, status = -1;
    X_DATEMASKITEM(mask, &k, item, &isField, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(fixedText(item, 32), expected[k - 1]);
    EXPECT_EQ(isField, k % 2);
  }
  int beyond = 12, isField = 0, status = 0;
  X_DATEMASKITEM(mask, &beyond, item, &isField, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(fixedText(item, 32), "");
  // Words that are not fields stay literal text.
  const auto items = splitMask("day dd in yyyy");
  ASSERT_EQ(items.size(), 4u);
  EXPECT_EQ(items[0].text, "day ");
  EXPECT_FALSE(items[0].field);
  EXPECT_EQ(items[2].text, " in ");
  EXPECT_TRUE(items[3].field);
}

// ---- Text ----------------------------------------------------------------------

TEST(DateText, WrittenUnderEveryMaskItem) {
  const double v = dateOf(2003, 9, 7, 4, 8, 9, 45);
  EXPECT_EQ(write(v, "dd mon yyyy hr:min:ss.sss"), "07 Sep 2003 04:08:09.045");
  EXPECT_EQ(write(v, "dd month yyyy"), "07 September 2003");
  EXPECT_EQ(write(v, "DD MONTH YYYY"), "07 SEPTEMBER 2003");
  EXPECT_EQ(write(v, "dd-MON-yy"), "07-SEP-03");
  EXPECT_EQ(write(v, "yyyy/mm/dd hr:min:sec"), "2003/09/07 04:08:09");
  EXPECT_EQ(write(v, "mon yyyy"), "Sep 2003");
  EXPECT_EQ(write(v, "yyyy"), "2003");
  EXPECT_EQ(write(kDoubleNull, "dd mon yyyy"), "");
  for (int m = 1; m <= 12; ++m) {
    const std::string full = write(dateOf(2001, m, 1), "month");
    EXPECT_EQ(write(dateOf(2001, m, 1), "mon"), full.substr(0, 3));
  }
  EXPECT_EQ(write(dateOf(2001, 5, 1), "month"), "May");
  EXPECT_EQ(write(dateOf(2001, 12, 1), "month"), "December");
}

TEST(DateText, ReadWithEverySeparatorAndMonthForm) {
  const double expected = dateOf(1970, 1, 1);
  for (const char* text : {"01 Jan 1970", "01/JAN/1970", "1-jan-1970", "01.January.1970", "01\\Jan\\70",
                           "  01   JANUARY 70 ", "01.01.1970"}) {
    int errors = -1;
    EXPECT_EQ(read(text, "dd mon yyyy", &errors), expected) << text;
    EXPECT_EQ(errors, 0) << text;
  }
  EXPECT_EQ(read("01.Jan.70 00:00", "dd.mon.yy hr:min"), expected);
  EXPECT_EQ(read("29 Feb 2000 23:59:58.5", "dd mon yyyy hr:min:ss.sss"), dateOf(2000, 2, 29, 23, 59, 58, 500));
  EXPECT_EQ(read("29 Feb 2000 23:59:58.125", "dd mon yyyy hr:min:sec"), dateOf(2000, 2, 29, 23, 59, 58, 125));
  EXPECT_EQ(read("Mar 2000", "mon yyyy"), dateOf(2000, 3, 1));
  EXPECT_EQ(read("1846", "yyyy"), dateOf(1846, 1, 1));
}

TEST(DateText, TwoDigitYearsPivotAtFifty) {
  EXPECT_EQ(read("01 Jan 49", "dd mon yy"), dateOf(2049, 1, 1));
  EXPECT_EQ(read("01 Jan 50", "dd mon yy"), dateOf(1950, 1, 1));
  EXPECT_EQ(read("01 Jan 00", "dd mon yy"), dateOf(2000, 1, 1));
  EXPECT_EQ(read("01 Jan 1850", "dd mon yy"), dateOf(1850, 1, 1));  // four digits: as written
}

TEST(DateText, MissingTimePartsReadAsZero) {
  int errors = -1;
  EXPECT_EQ(read("05.May.21", "dd.mon.yy hr:min:ss", &errors), dateOf(2021, 5, 5));
  EXPECT_EQ(errors, 0);
  EXPECT_EQ(read("05.May.21 7", "dd.mon.yy hr:min", &errors), dateOf(2021, 5, 5, 7));
  EXPECT_EQ(errors, 0);
}

TEST(DateText, TextThatCannotBeReadGivesTheNullValueAndAnErrorCount) {
  const std::pair<const char*, int> bad[] = {
      {"", 1},                     // nothing at all
      {"31 Feb 2001", 1},          // no such day
      {"29 Feb 1900", 1},          // 1900 is not a leap year
      {"01 Foo 2001", 1},          // no such month
      {"01 13 2001", 1},           // month number out of range
      {"32 Jan 2001", 1},          // day out of range
      {"01 Jan", 1},               // the year is missing
      {"01 Jan 2001 24:00", 1},    // hour out of range
      {"01 Jan 2001 10:60", 1},    // minute out of range
      {"01 Jan 2001 10:00 xyz", 1},  // a stray part
      {"01 Jan 2001 @ 10:00", 1},  // not a separator
      {"aa bb cc", 3},
  };
  for (const auto& [text, count] : bad) {
    int errors = 0;
    const double v = read(text, "dd mon yyyy hr:min", &errors);
    EXPECT_TRUE(isNull(v)) << text;
    EXPECT_EQ(errors, count) << text;
  }
}

TEST(DateText, RecordTextReadInModeOneAndRewritten) {
  DT_DSCA rec;
  DT_DATEDFLT(&rec);
  const int code = 3, parse = 1;
  DT_DATESETMASK(&rec, &code);
  setFixed(rec.CHU, "1-march-2000");
  X_DATE(&rec, &parse);
  EXPECT_EQ(rec.V, dateOf(2000, 3, 1));
  EXPECT_EQ(fixedText(rec.CHU), "01 Mar 2000");
  // A record without a mask is shown under the default mask.
  blankFixed(rec.SHORT, sizeof rec.SHORT);
  const int show = 0;
  X_DATE(&rec, &show);
  EXPECT_EQ(fixedText(rec.CHU), "01.Mar.00 00:00");
  DT_DATESETMASK(&rec, &code);
  // Unreadable text: the null value, not 0, and an empty text.
  setFixed(rec.CHU, "the first of March");
  X_DATE(&rec, &parse);
  EXPECT_TRUE(isNull(rec.V));
  EXPECT_EQ(fixedText(rec.CHU), "");
}

TEST(DateText, RoundTripsEveryHourOfAYearUnderTheFullMask) {
  const std::string mask = "dd mon yyyy hr:min:ss.sss";
  for (double v = dateOf(2023, 12, 31); v < dateOf(2025, 1, 2); v += 3600.0 + 0.125) {
    int errors = -1;
    ASSERT_EQ(read(write(v, mask), mask, &errors), v) << write(v, mask);
    ASSERT_EQ(errors, 0);
  }
}

TEST(TimeText, WrittenReadAndBrokenDown) {
  char mask[32], text[32];
  setFixed(mask, 32, "hr:min:ss.sss");
  const double t = 13 * 3600 + 5 * 60 + 7.25;
  X_TIMEIC(&t, mask, text);
  EXPECT_EQ(fixedText(text, 32), "13:05:07.250");
  double back = 0;
  int errors = -1;
  X_TIMECI(text, mask, &back, &errors);
  EXPECT_EQ(back, t);
  EXPECT_EQ(errors, 0);
  setFixed(text, 32, "13:65");
  X_TIMECI(text, mask, &back, &errors);
  EXPECT_TRUE(isNull(back));
  EXPECT_EQ(errors, 1);
  const double none = kDoubleNull;
  X_TIMEIC(&none, mask, text);
  EXPECT_EQ(fixedText(text, 32), "");
  // Spans longer than a day keep counting hours.
  EXPECT_EQ(formatTime(30 * 3600 + 60, "hr:min"), "30:01");
  EXPECT_EQ(formatTime(-90, "hr:min:ss"), "-00:01:30");

  short parts[4] = {2, 30, 15, 500};
  double seconds = 0;
  X_TIMEIF(parts, &seconds);
  EXPECT_EQ(seconds, 9015.5);
  short out[4];
  X_TIMEFI(&seconds, out);
  EXPECT_EQ(out[0], 2);
  EXPECT_EQ(out[1], 30);
  EXPECT_EQ(out[2], 15);
  EXPECT_EQ(out[3], 500);
  float hours = 0;
  X_TIMEFR(&seconds, &hours);
  EXPECT_FLOAT_EQ(hours, static_cast<float>(9015.5 / 3600.0));
  X_TIMEFR(&none, &hours);
  EXPECT_TRUE(isNull(hours));
}

// ---- Rounding and adding -----------------------------------------------------

TEST(DateRounding, YearsAlignOnYearOneAndMonthsOnJanuary) {
  const double v = dateOf(2017, 8, 14, 10, 30);
  EXPECT_EQ(roundDateDown(v, DateUnit::Years, 1), dateOf(2017, 1, 1));
  EXPECT_EQ(roundDateDown(v, DateUnit::Years, 10), dateOf(2011, 1, 1));
  EXPECT_EQ(roundDateDown(dateOf(2011, 1, 1), DateUnit::Years, 10), dateOf(2011, 1, 1));
  EXPECT_EQ(roundDateDown(dateOf(2010, 6, 1), DateUnit::Years, 10), dateOf(2001, 1, 1));
  EXPECT_EQ(roundDateUp(v, DateUnit::Years, 10), dateOf(2021, 1, 1));
  EXPECT_EQ(roundDateDown(v, DateUnit::Months, 3), dateOf(2017, 7, 1));
  EXPECT_EQ(roundDateUp(v, DateUnit::Months, 3), dateOf(2017, 10, 1));
  EXPECT_EQ(roundDateUp(dateOf(2017, 11, 2), DateUnit::Months, 3), dateOf(2018, 1, 1));
  EXPECT_EQ(roundDateDown(v, DateUnit::Months, 1), dateOf(2017, 8, 1));
  EXPECT_EQ(roundDateUp(dateOf(2017, 8, 1), DateUnit::Months, 1), dateOf(2017, 8, 1));  // already aligned
}

TEST(DateRounding, DaysAndShorterStepsThroughTheExports) {
  double v = dateOf(2017, 8, 14, 10, 31, 20);
  int unit = 4, step = 6, status = -1;
  X_DATEROUNDDOWN(&v, &unit, &step, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(v, dateOf(2017, 8, 14, 6));
  v = dateOf(2017, 8, 14, 10, 31, 20);
  unit = 5, step = 15;
  X_DATEROUNDUP(&v, &unit, &step, &status);
  EXPECT_EQ(v, dateOf(2017, 8, 14, 10, 45));
  unit = 3, step = 1;
  X_DATEROUNDUP(&v, &unit, &step, &status);
  EXPECT_EQ(v, dateOf(2017, 8, 15));
  // An unknown unit, a step below 1 or a null value leave the value alone with status 1.
  for (auto [u, s] : {std::pair{0, 1}, std::pair{8, 1}, std::pair{3, 0}}) {
    double w = v;
    X_DATEROUNDDOWN(&w, &u, &s, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(w, v);
  }
  double none = kDoubleNull;
  X_DATEROUNDUP(&none, &unit, &step, &status);
  EXPECT_EQ(status, 1);
  EXPECT_TRUE(isNull(none));
}

TEST(DateAdding, MonthsAndYearsKeepTheDayOrCutItToTheMonthsEnd) {
  EXPECT_EQ(addDateSteps(dateOf(2000, 1, 31, 8), DateUnit::Months, 1L), dateOf(2000, 2, 29, 8));
  EXPECT_EQ(addDateSteps(dateOf(2000, 2, 29), DateUnit::Years, 1L), dateOf(2001, 2, 28));
  EXPECT_EQ(addDateSteps(dateOf(2000, 2, 29), DateUnit::Years, 4L), dateOf(2004, 2, 29));
  EXPECT_EQ(addDateSteps(dateOf(2000, 3, 15), DateUnit::Months, -15L), dateOf(1998, 12, 15));
  EXPECT_EQ(addDateSteps(dateOf(2000, 12, 31), DateUnit::Weeks, 1L), dateOf(2001, 1, 7));
  double v = dateOf(2000, 1, 1);
  int unit = 1, steps = 3, status = -1;
  X_DATEIADD(&v, &unit, &steps, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(v, dateOf(2003, 1, 1));
}

TEST(DateAdding, FractionsAreOfTheFollowingStep) {
  // Half of February 2001 (28 days) is 14 days; half a leap year 183 days.
  double v = dateOf(2001, 1, 15);
  int unit = 2, status = -1;
  double steps = 1.5;
  X_DATERADD(&v, &unit, &steps, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(v, dateOf(2001, 2, 15) + 14 * kDay);
  EXPECT_EQ(addDateSteps(dateOf(2000, 1, 1), DateUnit::Years, 0.5), dateOf(2000, 7, 2));
  EXPECT_EQ(addDateSteps(dateOf(2000, 1, 1), DateUnit::Hours, 1.25), dateOf(2000, 1, 1, 1, 15));
  EXPECT_EQ(addDateSteps(dateOf(2000, 3, 1), DateUnit::Months, -0.5), dateOf(2000, 2, 1) + 14.5 * kDay);
}

TEST(TimeRounding, OnlyDaysAndShorterUnits) {
  double t = 7 * 3600 + 50 * 60;
  int unit = 4, step = 1, status = -1;
  X_TIMEROUNDUP(&t, &unit, &step, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(t, 8 * 3600);
  unit = 5, step = 20;
  X_TIMEROUNDDOWN(&t, &unit, &step, &status);
  EXPECT_EQ(t, 8 * 3600);
  int whole = -90;
  X_TIMEIADD(&t, &unit, &whole, &status);
  EXPECT_EQ(t, 6.5 * 3600);
  double part = 0.5;
  unit = 4;
  X_TIMERADD(&t, &unit, &part, &status);
  EXPECT_EQ(t, 7 * 3600);
  for (int calendar : {1, 2}) {
    X_TIMEIADD(&t, &calendar, &whole, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(t, 7 * 3600);
  }
}

TEST(DateUnits, NamesAndAbbreviations) {
  EXPECT_EQ(dateUnitByName("years"), 1);
  EXPECT_EQ(dateUnitByName("Month"), 2);
  EXPECT_EQ(dateUnitByName("d"), 3);
  EXPECT_EQ(dateUnitByName("hours"), 4);
  EXPECT_EQ(dateUnitByName("min"), 5);
  EXPECT_EQ(dateUnitByName("s"), 6);
  EXPECT_EQ(dateUnitByName("weeks"), 7);
  EXPECT_EQ(dateUnitByName("fortnight"), 0);
}
