#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "host/csv_row.h"
#include "host/nulls.h"

using subsurf::CsvRow;

namespace {

std::string roundTripText(const std::string& text) {
  CsvRow row;
  row.addText("key").addText(text).addInt(7);
  CsvRow back = CsvRow::parse(row.str());
  EXPECT_EQ(back.size(), 3u) << row.str();
  return back.field(2);
}

}  // namespace

TEST(CsvRowQuoting, TextsThatNeedQuotesRoundTrip) {
  for (const std::string text : {"plain", "a,b", "say \"hi\"", "\"", ",", "  indented key", "\ttab first",
                                 "trailing, comma,", "\"quoted\"", "x\"\"y"}) {
    EXPECT_EQ(roundTripText(text), text) << text;
  }
}

// Trailing blanks are trimmed, leading ones kept (quoted); an empty text is an
// empty quoted field; line breaks become blanks.
TEST(CsvRowQuoting, WrittenForms) {
  EXPECT_EQ(roundTripText("   Top Depth     "), "   Top Depth");
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"  key  "}, "\"  key\""}, {{"a", "", "b"}, "a,\"\",b"}, {{"two\nlines"}, "two lines"}};
  for (const auto& [texts, expected] : cases) {
    CsvRow row;
    for (const std::string& t : texts) row.addText(t);
    EXPECT_EQ(row.str(), expected);
  }
  CsvRow back = CsvRow::parse("a,\"\",b");
  ASSERT_EQ(back.size(), 3u);
  EXPECT_EQ(back.field(2), "");
  EXPECT_EQ(back.field(3), "b");
}

TEST(CsvRowParsing, UnquotedFieldsLoseSurroundingBlanks) {
  CsvRow row = CsvRow::parse(" version , 2.11a ,  4 ");
  ASSERT_EQ(row.size(), 3u);
  EXPECT_EQ(row.field(1), "version");
  EXPECT_EQ(row.field(2), "2.11a");
  int n = 0;
  EXPECT_EQ(row.integer(3, n), CsvRow::kOk);
  EXPECT_EQ(n, 4);
}

TEST(CsvRowParsing, WindowsLineEndAndBlankLine) {
  CsvRow row = CsvRow::parse("images,3\r");
  ASSERT_EQ(row.size(), 2u);
  EXPECT_EQ(row.field(2), "3");
  EXPECT_TRUE(CsvRow::parse("").empty());
  EXPECT_TRUE(CsvRow::parse("   ").empty());
}

TEST(CsvRowParsing, EmptyTrailingFieldsAreColumns) {
  CsvRow row = CsvRow::parse("a,,");
  EXPECT_EQ(row.size(), 3u);
  int v = 5;
  EXPECT_EQ(row.integer(2, v), CsvRow::kAbsent);
  EXPECT_EQ(v, 5);
}

TEST(CsvRowNumbers, StatusForAbsentAndUnreadableColumns) {
  CsvRow row = CsvRow::parse("key,12,1.5,abc,3x");
  int i = 0;
  float r = 0;
  double d = 0;
  EXPECT_EQ(row.integer(2, i), CsvRow::kOk);
  EXPECT_EQ(i, 12);
  EXPECT_EQ(row.integer(3, i), CsvRow::kUnreadable);  // not a whole number
  EXPECT_EQ(row.real(3, r), CsvRow::kOk);
  EXPECT_FLOAT_EQ(r, 1.5f);
  EXPECT_EQ(row.real8(4, d), CsvRow::kUnreadable);
  EXPECT_EQ(row.real8(5, d), CsvRow::kUnreadable);
  EXPECT_EQ(row.real8(6, d), CsvRow::kAbsent);
  EXPECT_EQ(row.real8(0, d), CsvRow::kAbsent);
  std::string t;
  EXPECT_EQ(row.text(9, t), CsvRow::kAbsent);
}

TEST(CsvRowNumbers, RealsRoundTripBitForBit) {
  const float floats[] = {0.0f, -0.0f, 1.0f / 3.0f, 1234.5f, 3.4e38f, 1.0e-38f, subsurf::kRealNull,
                          std::numeric_limits<float>::denorm_min(), 0.1f};
  CsvRow null;
  null.addReal(subsurf::kRealNull);
  EXPECT_EQ(null.str(), "-9.9e+20");  // the null is written as its value
  for (float f : floats) {
    CsvRow row;
    row.addReal(f);
    float back = 99.0f;
    ASSERT_EQ(CsvRow::parse(row.str()).real(1, back), CsvRow::kOk) << row.str();
    EXPECT_EQ(std::bit_cast<uint32_t>(back), std::bit_cast<uint32_t>(f)) << row.str();
  }
  const double doubles[] = {0.1, 1.0 / 3.0, subsurf::kDoubleNull, 6894.757293168, -1e300};
  for (double v : doubles) {
    CsvRow row;
    row.addReal8(v);
    double back = 0;
    ASSERT_EQ(CsvRow::parse(row.str()).real8(1, back), CsvRow::kOk);
    EXPECT_EQ(std::bit_cast<uint64_t>(back), std::bit_cast<uint64_t>(v));
  }
}
