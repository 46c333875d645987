// Definitions files written by the tests: sections, faults, and each rule of the
// conversion on units made to show it.
#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/messages.h"
#include "support/temp_dir.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

using ::testing::ElementsAre;

class DefinitionsFile : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }
  Status load(const std::string& text) {
    path_ = dir_.write("units.def", text);
    return reg.load(path_);
  }
  std::string at(int line, const std::string& what) const { return path_ + ", line " + std::to_string(line) + ": " + what; }
  static std::vector<std::string> messages() { return host::recordedMessages(); }

  testing::TempDir dir_;
  std::string path_;
  UnitsRegistry reg;
};

TEST_F(DefinitionsFile, SectionsAreKnownByAFragmentOfTheirHeader) {
  // Comments and blank lines are skipped; the first letter's case does not
  // matter; a header naming units is a units section even with "eries" in it.
  ASSERT_TRUE(load("# comment\n**dimensions of things\n1,length\n\n"
                   "**Series units\n1,m,metre,1,1,1\n2,ft,feet,1,1,0.3048\n"
                   "**series\n0,depth,1,1,2,2,m,ft,m\n"
                   "**entries\n1,1,0,0\n2,2,0,1\n")
                  .isOk());
  EXPECT_TRUE(messages().empty());
  EXPECT_EQ(reg.seriesName(0), "depth");
  EXPECT_EQ(reg.unitOtherName(0, 2), "feet");
  EXPECT_EQ(reg.listedUnitCount(0), 1);
  int err = 99;
  EXPECT_DOUBLE_EQ(reg.convert(100.0, 0, 2, 1, err), 30.48);

  // "eries" is looked for before "ntries": these entry rows are read as series rows.
  host::clearRecorded();
  EXPECT_TRUE(load("**Dimensions\n1,length\n**Units\n1,m,metre,1,1,1\n**Series\n0,depth,1,1,1,1,m,m,m\n"
                   "**Series entries\n1,1,0,0\n")
                  .isOk());
  EXPECT_THAT(messages(), ElementsAre(at(8, "bad last entry - row skipped"),
                                      path_ + ": series depth uses undefined entry 1 - it is left without units"));
}

TEST_F(DefinitionsFile, UnreadableOrEmptyFileLeavesTheRegistryEmpty) {
  ASSERT_TRUE(load("**Dimensions\n1,length\n**Units\n1,m,metre,1,1,1\n**Series\n0,depth,1,1,1,1,m,m,m\n**Entries\n1,1\n")
                  .isOk());
  const std::string missing = dir_.file("nowhere.def");
  const Status s = reg.load(missing);
  EXPECT_EQ(s.message(), "Cannot read units definitions file " + missing);
  // Every query answers as for no series.
  EXPECT_FALSE(reg.loaded());
  EXPECT_EQ(reg.lastSeries(), -1);
  EXPECT_EQ(reg.unitCount(0), 0);
  EXPECT_EQ(reg.seriesName(0), "");
  EXPECT_EQ(reg.findUnit(0, "m"), 0);
  EXPECT_EQ(reg.defaultUnit(0, 4), -32768);
  int err = 0;
  EXPECT_EQ(reg.convert(3.5, 0, 1, 2, err), 3.5);
  EXPECT_EQ(err, 1);

  EXPECT_EQ(load("**Dimensions\n1,length\n**Units\n1,m,metre,1,1,1\n").message(),
            "Units definitions file " + path_ + " defines no unit series");
  EXPECT_TRUE(reg.units().empty());
}

TEST_F(DefinitionsFile, MalformedRowsAreReportedAndSkipped) {
  EXPECT_TRUE(load("1,stray\n"                    // 1
                   "**Dimensions\n"               // 2
                   "1,length\n"                   // 3
                   "2,\n"                         // 4
                   "**Units\n"                    // 5
                   "1,m,metre,1,1,1\n"            // 6
                   "x,cm,centimetre,1,1,0.01\n"   // 7
                   "3,km,kilometre,1,5,1000\n"    // 8
                   "4,mm,millimetre,1,1,abc\n"    // 9
                   "1,yd,yard,1,1,0.9144\n"       // 10
                   "5,in,inch,1,2,0.0254\n"       // 11
                   "2,ft,feet,1,1,0.3048\n"       // 12
                   "**Bogus\n"                    // 13
                   "anything at all\n"            // 14
                   "**Series\n"                   // 15
                   "0,length,1,1,3,,m,ft,m\n"     // 16
                   "1,,1,1,1,1,m,m,m\n"           // 17
                   "2,area,1,1,1,2,m,m,m\n"       // 18
                   "3,volume,1,4,5\n"             // 19
                   "5,time,1,1,1\n"               // 20
                   "**Entries\n"                  // 21
                   "1,1\n"                        // 22
                   "2,2,0,0\n"                    // 23
                   "3,3,0,0\n"                    // 24
                   "4,m\n"                        // 25
                   "**Units\n"                    // 26
                   "6,nothing,,1,1,0\n"           // 27
                   "7,nil,,1,4,1,0,1,0.0\n"       // 28
                   "8,twice,,1,4,2,0,1,1\n")      // 29
                  .isOk());
  EXPECT_THAT(messages(), ElementsAre(at(1, "row outside a section - row skipped"),
                                      at(4, "bad dim_name - row skipped"),
                                      at(7, "bad unit_id - row skipped"),
                                      at(8, "bad unit_nc - row skipped"),
                                      at(9, "bad unit_c1 - row skipped"),
                                      at(10, "unit_id 1 defined twice - row skipped"),
                                      at(11, "bad unit_c2 - row skipped"),
                                      at(13, "unknown section **Bogus - its rows are skipped"),
                                      at(17, "bad ser_name - row skipped"),
                                      at(18, "bad unit count - row skipped"),
                                      at(25, "bad unit_id - row skipped"),
                                      at(27, "unit_c1 is zero - row skipped"),
                                      at(28, "unit_c4 is zero - row skipped"),
                                      path_ + ": entry 3 names undefined unit_id 3",
                                      path_ + ": series volume uses undefined entry 4 - it is left without units",
                                      path_ + ": series 4 is not defined"));
  // The good rows stand; the entry of the rejected unit is no unit.
  EXPECT_EQ(reg.unitName(0, 2), "ft");
  EXPECT_EQ(reg.unitId(0, 3), 0);
  int err = 0;
  EXPECT_EQ(reg.convert(7.0, 0, 3, 1, err), 7.0);
  EXPECT_EQ(err, 1);
  EXPECT_EQ(reg.unitCount(0), 3);  // an empty unit count is the number of entries
  EXPECT_EQ(reg.unitCount(3), 0);
  EXPECT_EQ(reg.seriesName(4), "");
  EXPECT_EQ(reg.unitCount(5), 1);
  EXPECT_EQ(reg.units()[7].name, "twice");  // a unit after the rejected ones stands
  EXPECT_EQ(reg.units()[5].nc, 0);
}

TEST_F(DefinitionsFile, TextColumnsAreCutToTheirFieldWidths) {
  ASSERT_TRUE(load("**Dimensions\n1,a dimension name longer than thirty-two characters\n"
                   "**Units\n1,abcdefghijklmnopqrst,other name longer than sixteen,1,1,1\n"
                   "**Series\n0,a series name longer than twenty,1,1,1,1,m,m,m\n**Entries\n1,1\n")
                  .isOk());
  EXPECT_EQ(reg.dimensions()[0].name, "a dimension name longer than thi");
  EXPECT_EQ(reg.unitName(0, 1), "abcdefghijklmnop");
  EXPECT_EQ(reg.unitOtherName(0, 1), "other name longe");
  EXPECT_EQ(reg.seriesName(0), "a series name longer");
  EXPECT_EQ(reg.findUnit(0, "ABCDEFGHIJKLMNOPqrst"), 1);  // a lookup compares the same 16 characters
}

// Units against the dimension's SI unit "base", by v = c4 * (c1 * (u + c2)) ^ c3.
const char* const kRulesFile =
    "**Dimensions\n1,thing\n"
    "**Units\n"
    "1,base,,1,1,1\n"
    "2,twice,,1,1,2\n"
    "3,shifted,,1,2,2,10\n"
    "4,recip,,1,3,4,0,-1\n"
    "5,inv,,1,4,1,0,-1,1\n"
    "6,zeroexp,,1,3,1,5,0\n"
    "7,squared,,1,4,1,0,2,1\n"
    "8,kilo,,1,4,1000,0,1,1\n"
    "**Series\n"
    "0,things,1,1,7,7,base,base,base\n"
    "1,quirk,1,8,9,2,base,base,base\n"
    "2,plain,1,10,11,2,base,base,base\n"
    "**Entries\n"
    "1,1\n2,2\n3,3\n4,4\n5,5\n6,6\n7,7\n8,8\n9,1\n10,8\n11,1\n";

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
  int direct(const char* from, const char* to, LinearConversion& c) const {
    int err = 99;
    c = reg.linearCoefficients(0, reg.findUnit(0, from), reg.findUnit(0, to), err);
    return err;
  }
};

TEST_F(ConversionRules, ScaleAndOffsetConvertDirectlyAndByName) {
  LinearConversion c;
  EXPECT_EQ(direct("shifted", "twice", c), 0);
  EXPECT_EQ(c.a, 1.0f);   // 2 / 2
  EXPECT_EQ(c.b, 10.0f);  // 10 * 2 / 2 - 0
  int err = 99;
  EXPECT_EQ(convert(5.0, "shifted", "twice", err), 15.0);  // 2 * (5 + 10) = 2 * 15
  EXPECT_EQ(err, 0);
  err = 99;
  EXPECT_EQ(reg.convertByName(5.0, 0, "SHIFTED", "twice", err), 15.0);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(reg.convertByName(5.0, 0, "twice", "   ", err), 5.0);  // a blank name: no conversion
  EXPECT_EQ(err, 0);
  EXPECT_EQ(reg.convertByName(5.0, 0, "thrice", "twice", err), 5.0);
  EXPECT_EQ(err, 1);
}

TEST_F(ConversionRules, ReciprocalRuleAndItsLimits) {
  // twice (exponent 1) to recip (exponent -1): a = 1 / (4 * 2), then 1 / (a x).
  // Through SI it would be 1 / (8 x): 2 gives 4 by the rule, 0.0625 through SI.
  LinearConversion c;
  EXPECT_EQ(direct("twice", "recip", c), 0);
  EXPECT_EQ(c.a, 0.125f);
  EXPECT_TRUE(c.reciprocal);
  int err = 99;
  EXPECT_EQ(convert(2.0, "twice", "recip", err), 4.0);
  // From an exponent below 0.5, with an offset, or with a fourth coefficient: through SI.
  EXPECT_EQ(direct("recip", "twice", c), -1);
  EXPECT_EQ(convert(2.0, "recip", "twice", err), 0.0625);
  EXPECT_EQ(direct("shifted", "recip", c), -1);
  EXPECT_EQ(direct("base", "inv", c), -1);
  EXPECT_EQ(convert(4.0, "base", "inv", err), 0.25);
  EXPECT_EQ(err, 0);

  // The reciprocal of zero: err -1, the other values of a vector still convert.
  std::vector<double> v = {0.0, 2.0};
  reg.convert(v.data(), v.size(), 0, 2, 4, err);
  EXPECT_EQ(err, -1);
  EXPECT_TRUE(std::isinf(v[0]));
  EXPECT_EQ(v[1], 4.0);
}

TEST_F(ConversionRules, FaultsOnTheWayThroughSI) {
  // A negative exponent of almost nothing: the value comes back unchanged.
  std::vector<double> v = {4.0, 1e-25, 0.5};
  int err = 0;
  reg.convert(v.data(), v.size(), 0, 5, 1, err);
  EXPECT_EQ(err, 1);
  EXPECT_EQ(v, (std::vector<double>{0.25, 1e-25, 2.0}));
  // A zero exponent in the target: that step is left out, the offset still comes off.
  EXPECT_EQ(convert(12.0, "base", "zeroexp", err), 7.0);
  EXPECT_EQ(err, 1);
  // Powers are undone on the way out; a square root of a negative value is left out.
  EXPECT_EQ(convert(9.0, "base", "squared", err), 3.0);
  EXPECT_EQ(convert(3.0, "squared", "base", err), 9.0);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(convert(-9.0, "base", "squared", err), -9.0);
  EXPECT_EQ(err, 1);
}

TEST_F(ConversionRules, AUnitWhoseIdIsTheFirstEntryNumberIsTakenAsSI) {
  // In "quirk" the first entry is number 8 and so is kilo's id: its factor of
  // 1000 is not applied. In "plain" (first entry 10) it is.
  int err = 99;
  EXPECT_EQ(reg.convert(2.0, 1, 1, 2, err), 2.0);
  EXPECT_EQ(reg.convert(2.0, 2, 1, 2, err), 2000.0);
  EXPECT_EQ(err, 0);
}

}  // namespace
}  // namespace subsurf
