// Reading definitions files written by the tests: sections, faults and the
// conversion rules, each on a file made to show it.
#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/messages.h"
#include "support/temp_dir.h"
#include "units/units_registry.h"
#include "units_test_support.h"

namespace subsurf {
namespace {

using ::testing::ElementsAre;
using testing::TempDir;

class DefinitionsFile : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }

  // Writes the text as a definitions file and loads it into reg.
  Status load(const std::string& text) {
    path_ = dir_.write("units.def", text);
    return reg.load(path_);
  }
  std::string at(int line, const std::string& what) const {
    return path_ + ", line " + std::to_string(line) + ": " + what;
  }
  static std::vector<std::string> messages() { return host::recordedMessages(); }

  TempDir dir_;
  std::string path_;
  UnitsRegistry reg;
};

const char* const kSmallFile =
    "# a comment\n"
    "**Dimensions\n"
    "1,length\n"
    "\n"
    "**Units\n"
    "1,m,metre,1,1,1\n"
    "2,ft,feet,1,1,0.3048\n"
    "**Series\n"
    "0,depth,1,1,2,2,m,ft,m\n"
    "**Entries\n"
    "1,1,0,0\n"
    "2,2,0,1\n";

TEST_F(DefinitionsFile, CommentsAndBlankLinesAreSkipped) {
  ASSERT_TRUE(load(kSmallFile).isOk());
  EXPECT_TRUE(messages().empty());
  EXPECT_EQ(reg.lastSeries(), 0);
  EXPECT_EQ(reg.seriesName(0), "depth");
  EXPECT_EQ(reg.unitCount(0), 2);
  EXPECT_EQ(reg.listedUnitCount(0), 1);
  EXPECT_EQ(reg.unitOtherName(0, 2), "feet");
  int err = 99;
  EXPECT_TRUE(testing::closeTo(reg.convert(100.0, 0, 2, 1, err), 30.48));
}

TEST_F(DefinitionsFile, SectionsAreKnownByAFragmentOfTheirHeader) {
  // The first letter's case does not matter, and a header naming units wins
  // over the series fragment it also holds.
  ASSERT_TRUE(load("**dimensions of things\n1,length\n"
                   "**Series units\n1,m,metre,1,1,1\n"
                   "**series\n0,depth,1,1,1,1,m,m,m\n"
                   "**entries\n1,1,0,0\n")
                  .isOk());
  EXPECT_TRUE(messages().empty());
  EXPECT_EQ(reg.unitName(0, 1), "m");
}

TEST_F(DefinitionsFile, ASeriesEntriesHeaderIsASeriesSection) {
  // "eries" is looked for before "ntries", so the entries rows below are read
  // as series rows, and rejected as such.
  const Status s = load("**Dimensions\n1,length\n**Units\n1,m,metre,1,1,1\n"
                        "**Series\n0,depth,1,1,1,1,m,m,m\n"
                        "**Series entries\n1,1,0,0\n");
  EXPECT_THAT(messages(), ElementsAre(at(8, "bad last entry - row skipped"),
                                      path_ + ": series depth uses undefined entry 1 - it is left without units"));
  EXPECT_TRUE(s.isOk());
  EXPECT_EQ(reg.unitCount(0), 0);
}

TEST_F(DefinitionsFile, MissingFileLeavesTheRegistryEmpty) {
  ASSERT_TRUE(load(kSmallFile).isOk());
  const std::string missing = dir_.file("nowhere.def");
  const Status s = reg.load(missing);
  EXPECT_FALSE(s.isOk());
  EXPECT_EQ(s.message(), "Cannot read units definitions file " + missing);

  // Every query answers as for no series.
  EXPECT_FALSE(reg.loaded());
  EXPECT_EQ(reg.lastSeries(), -1);
  EXPECT_FALSE(reg.validSeries(0));
  EXPECT_EQ(reg.unitCount(0), 0);
  EXPECT_EQ(reg.listedUnitCount(0), 0);
  EXPECT_EQ(reg.seriesName(0), "");
  EXPECT_EQ(reg.findSeries("depth"), -1);
  EXPECT_EQ(reg.guessSeries("m"), -1);
  EXPECT_EQ(reg.findUnit(0, "m"), 0);
  EXPECT_EQ(reg.unitName(0, 1), "");
  EXPECT_EQ(reg.defaultUnit(0, 1), -32768);
  EXPECT_EQ(reg.defaultUnit(0, 4), -32768);
  EXPECT_TRUE(reg.listedUnitNames(0).empty());
  int err = 0;
  EXPECT_EQ(reg.convert(3.5, 0, 1, 2, err), 3.5);
  EXPECT_EQ(err, 1);
  EXPECT_TRUE(reg.sqlScript().size() > 0);  // the schema, with no rows
}

TEST_F(DefinitionsFile, FileWithoutSeriesIsRefused) {
  const Status s = load("**Dimensions\n1,length\n**Units\n1,m,metre,1,1,1\n");
  EXPECT_FALSE(s.isOk());
  EXPECT_EQ(s.message(), "Units definitions file " + path_ + " defines no unit series");
  EXPECT_FALSE(reg.loaded());
  EXPECT_TRUE(reg.units().empty());
}

TEST_F(DefinitionsFile, MalformedUnitRowsAreReportedAndSkipped) {
  const Status s = load(
      "1,stray\n"                        // 1
      "**Dimensions\n"                   // 2
      "1,length\n"                       // 3
      "**Units\n"                        // 4
      "1,m,metre,1,1,1\n"                // 5
      "x,cm,centimetre,1,1,0.01\n"       // 6
      "3,km,kilometre,1,5,1000\n"        // 7
      "4,mm,millimetre,1,1,abc\n"        // 8
      "1,yd,yard,1,1,0.9144\n"           // 9
      "5,in,inch,1,2,0.0254\n"           // 10
      "6,mi,mile,one,1,1609.344\n"       // 11
      "2,ft,feet,1,1,0.3048\n"           // 12
      "**Bogus\n"                        // 13
      "anything at all\n"                // 14
      "**Series\n"                       // 15
      "0,length,1,1,3,3,m,ft,m\n"        // 16
      "**Entries\n"                      // 17
      "1,1,0,0\n"                        // 18
      "2,2,0,0\n"                        // 19
      "3,3,0,0\n");                      // 20
  EXPECT_TRUE(s.isOk());
  EXPECT_THAT(messages(), ElementsAre(at(1, "row outside a section - row skipped"),
                                      at(6, "bad unit_id - row skipped"),
                                      at(7, "bad unit_nc - row skipped"),
                                      at(8, "bad unit_c1 - row skipped"),
                                      at(9, "unit_id 1 defined twice - row skipped"),
                                      at(10, "bad unit_c2 - row skipped"),
                                      at(11, "bad unit_dim - row skipped"),
                                      at(13, "unknown section **Bogus - its rows are skipped"),
                                      path_ + ": entry 3 names undefined unit_id 3"));
  // The good rows are all there; the entry of the skipped unit is no unit.
  EXPECT_EQ(reg.unitName(0, 1), "m");
  EXPECT_EQ(reg.unitName(0, 2), "ft");
  EXPECT_EQ(reg.unitName(0, 3), "");
  EXPECT_EQ(reg.unitId(0, 3), 0);
  int err = 0;
  EXPECT_EQ(reg.convert(7.0, 0, 3, 1, err), 7.0);
  EXPECT_EQ(err, 1);
  EXPECT_TRUE(testing::closeTo(reg.convert(10.0, 0, 2, 1, err), 3.048));
}

TEST_F(DefinitionsFile, MalformedSeriesAndEntryRows) {
  const Status s = load(
      "**Dimensions\n"               // 1
      ",nameless\n"                  // 2
      "2,\n"                         // 3
      "**Units\n"                    // 4
      "1,m,metre,1,1,1\n"            // 5
      "**Series\n"                   // 6
      "0,depth,1,1,1,1,m,m,m\n"      // 7
      "1,,1,1,1,1,m,m,m\n"           // 8
      "2,length,1,1,0,1,m,m,m\n"     // 9
      "3,length,1,1,1,2,m,m,m\n"     // 10
      "4,area,1,2,2\n"               // 11
      "6,volume,1,1,1\n"             // 12
      "**Entries\n"                  // 13
      "1,1\n"                        // 14
      "2,m\n");                      // 15
  EXPECT_TRUE(s.isOk());
  EXPECT_THAT(messages(), ElementsAre(at(2, "bad dim_id - row skipped"),
                                      at(3, "bad dim_name - row skipped"),
                                      at(8, "bad ser_name - row skipped"),
                                      at(9, "bad unit count - row skipped"),
                                      at(10, "bad unit count - row skipped"),
                                      at(15, "bad unit_id - row skipped"),
                                      path_ + ": series area uses undefined entry 2 - it is left without units",
                                      path_ + ": series 5 is not defined"));
  // Optional columns: reserved and listing flag default to 0, the unit count to
  // the number of entries; a series that is only a gap answers as empty.
  EXPECT_EQ(reg.unitCount(0), 1);
  EXPECT_EQ(reg.listedUnitCount(0), 1);
  EXPECT_EQ(reg.unitCount(6), 1);
  EXPECT_EQ(reg.lastSeries(), 6);
  EXPECT_EQ(reg.seriesName(5), "");
  EXPECT_EQ(reg.unitCount(5), 0);
  EXPECT_EQ(reg.seriesName(1), "");
}

TEST_F(DefinitionsFile, TextColumnsAreCutToTheirFieldWidths) {
  ASSERT_TRUE(load("**Dimensions\n1,a dimension name longer than thirty-two characters\n"
                   "**Units\n1,abcdefghijklmnopqrst,other name longer than sixteen,1,1,1\n"
                   "**Series\n0,a series name longer than twenty,1,1,1,1,m,m,m\n"
                   "**Entries\n1,1,0,0\n")
                  .isOk());
  EXPECT_EQ(reg.dimensions()[0].name, "a dimension name longer than thi");
  EXPECT_EQ(reg.unitName(0, 1), "abcdefghijklmnop");
  EXPECT_EQ(reg.unitOtherName(0, 1), "other name longe");
  EXPECT_EQ(reg.seriesName(0), "a series name longer");
  // A lookup compares the same 16 characters.
  EXPECT_EQ(reg.findUnit(0, "ABCDEFGHIJKLMNOPqrst"), 1);
}

// Units made to show each rule of the conversion. The dimension's SI unit is
// "base"; the others are defined against it by v = c4 * (c1 * (u + c2)) ^ c3.
const char* const kRulesFile =
    "**Dimensions\n1,thing\n"
    "**Units\n"
    "1,base,,1,1,1\n"
    "2,twice,,1,1,2\n"
    "3,shifted,,1,2,2,10\n"
    "4,recip,,1,3,4,0,-1\n"
    "5,inv,,1,4,1,0,-1,1\n"
    "6,zeroc1,,1,2,0,5\n"
    "7,squared,,1,4,1,0,2,1\n"
    "8,kilo,,1,4,1000,0,1,1\n"
    "**Series\n"
    "0,things,1,1,7,7,base,base,base\n"
    "1,quirk,1,8,9,2,base,base,base\n"
    "2,plain,1,10,11,2,base,base,base\n"
    "**Entries\n"
    "1,1\n2,2\n3,3\n4,4\n5,5\n6,6\n7,7\n"
    "8,8\n9,1\n"
    "10,8\n11,1\n";

class ConversionRules : public DefinitionsFile {
 protected:
  void SetUp() override {
    DefinitionsFile::SetUp();
    ASSERT_TRUE(load(kRulesFile).isOk());
    ASSERT_TRUE(messages().empty()) << messages().front();
  }
  double convert(double v, const char* from, const char* to, int& err) const {
    return reg.convert(v, 0, reg.findUnit(0, from), reg.findUnit(0, to), err);
  }
  enum { kBase = 1, kTwice, kShifted, kRecip, kInv, kZeroC1, kSquared };
};

TEST_F(ConversionRules, ScaleAndOffsetConvertDirectly) {
  int err = 99;
  const LinearConversion c = reg.linearCoefficients(0, kShifted, kTwice, err);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(c.a, 1.0f);   // 2 / 2
  EXPECT_EQ(c.b, 10.0f);  // 10 * 2 / 2 - 0
  EXPECT_FALSE(c.reciprocal);
  EXPECT_EQ(convert(5.0, "shifted", "twice", err), 15.0);  // v = 2 * (5 + 10) = 30 = 2 * 15
  EXPECT_EQ(err, 0);
}

TEST_F(ConversionRules, DifferentExponentsWithoutOffsetsTakeTheReciprocalRule) {
  // twice (exponent 1) to recip (exponent -1): a = 1 / (4 * 2), y = 1 / (a x).
  int err = 99;
  const LinearConversion c = reg.linearCoefficients(0, kTwice, kRecip, err);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(c.a, 0.125f);
  EXPECT_TRUE(c.reciprocal);
  // The rule gives 8 / x; the route through SI would give 1 / (8 x) = 0.0625.
  EXPECT_EQ(convert(2.0, "twice", "recip", err), 4.0);
  EXPECT_EQ(err, 0);
  float f = 2.0f;
  reg.convert(&f, 1, 0, kTwice, kRecip, err);
  EXPECT_EQ(f, 4.0f);
}

TEST_F(ConversionRules, AnExponentBelowOneHalfGoesThroughSI) {
  int err = 99;
  reg.linearCoefficients(0, kRecip, kTwice, err);
  EXPECT_EQ(err, -1);
  // v = (4 * 2) ^ -1 = 0.125, in twice: 0.0625.
  EXPECT_EQ(convert(2.0, "recip", "twice", err), 0.0625);
  EXPECT_EQ(err, 0);
}

TEST_F(ConversionRules, NoDirectFormWithAFourthCoefficientOrWithOffsets) {
  int err = 99;
  reg.linearCoefficients(0, kBase, kInv, err);
  EXPECT_EQ(err, -1);
  reg.linearCoefficients(0, kShifted, kRecip, err);
  EXPECT_EQ(err, -1);
  EXPECT_EQ(convert(4.0, "base", "inv", err), 0.25);
  EXPECT_EQ(err, 0);
}

TEST_F(ConversionRules, ReciprocalOfZero) {
  int err = 0;
  const double y = convert(0.0, "twice", "recip", err);
  EXPECT_EQ(err, -1);
  EXPECT_TRUE(std::isinf(y));

  std::vector<double> v = {0.0, 2.0};
  reg.convert(v.data(), v.size(), 0, kTwice, kRecip, err);
  EXPECT_EQ(err, -1);
  EXPECT_EQ(v[1], 4.0);
}

TEST_F(ConversionRules, NegativeExponentOfAlmostNothingReturnsTheValue) {
  int err = 0;
  EXPECT_EQ(convert(1e-25, "inv", "base", err), 1e-25);
  EXPECT_EQ(err, 1);
  EXPECT_EQ(convert(4.0, "inv", "base", err), 0.25);
  EXPECT_EQ(err, 0);

  // In a vector the error is that of the failing value; the others convert.
  std::vector<double> v = {4.0, 1e-25, 0.5};
  reg.convert(v.data(), v.size(), 0, kInv, kBase, err);
  EXPECT_EQ(err, 1);
  EXPECT_EQ(v[0], 0.25);
  EXPECT_EQ(v[1], 1e-25);
  EXPECT_EQ(v[2], 2.0);
}

TEST_F(ConversionRules, ZeroCoefficientOfTheTargetSkipsOnlyThatStep) {
  // Undoing zeroc1: the division by 0 is left out, the offset still comes off.
  int err = 0;
  EXPECT_EQ(convert(12.0, "base", "zeroc1", err), 7.0);
  EXPECT_EQ(err, 1);
}

TEST_F(ConversionRules, PowersAreUndoneOnTheWayOut) {
  int err = 99;
  EXPECT_EQ(convert(9.0, "base", "squared", err), 3.0);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(convert(3.0, "squared", "base", err), 9.0);
  EXPECT_EQ(err, 0);
  // A negative value has no square root: that step is left out.
  EXPECT_EQ(convert(-9.0, "base", "squared", err), -9.0);
  EXPECT_EQ(err, 1);
}

TEST_F(ConversionRules, AUnitWhoseIdIsTheFirstEntryNumberIsTakenAsSI) {
  // In "quirk" the first entry is number 8 and unit 8 is kilo: its factor of
  // 1000 is not applied.
  int err = 99;
  EXPECT_EQ(reg.convert(2.0, 1, 1, 2, err), 2.0);
  EXPECT_EQ(err, 0);
  // In "plain" the first entry is number 10: kilo converts in full.
  EXPECT_EQ(reg.convert(2.0, 2, 1, 2, err), 2000.0);
  EXPECT_EQ(err, 0);
}

TEST_F(ConversionRules, ConversionByName) {
  int err = 99;
  EXPECT_EQ(reg.convertByName(5.0, 0, "SHIFTED", "twice", err), 15.0);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(reg.convertByName(5.0, 0, "", "twice", err), 5.0);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(reg.convertByName(5.0, 0, "twice", "   ", err), 5.0);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(reg.convertByName(5.0, 0, "thrice", "twice", err), 5.0);
  EXPECT_EQ(err, 1);
}

}  // namespace
}  // namespace subsurf
