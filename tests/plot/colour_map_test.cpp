// Colour maps: the default colour table row by row, classes and ranges, the
// attributes by name, and the colour-map file (order, round trip, damage,
// failed writes), through the engine and the C routines.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "plot/colour_map.h"
#include "subsurf/plot_colour_map.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

std::vector<int> defaultsFor(int n) {
  ss::ColourMap map;
  EXPECT_TRUE(ss::allocateClasses(map, n).isOk());
  return map.colours;
}

ss::ColourMap everyFieldSet() {
  ss::ColourMap map;
  EXPECT_TRUE(ss::allocateClasses(map, 3).isOk());
  map.min = 0.05f;
  map.max = 0.35f;
  map.dmin = 0.0123f;
  map.dmax = ss::kRealNull;
  map.ifsc = 1;
  map.icat = 0;
  map.imap = 2;
  map.c0 = 7;
  map.c1 = 9;
  map.bounds = {0.05f, 0.1f, 0.2f, 0.35f};
  map.colours = {11, 22, 33};
  map.names = {"Tight", "Fair, good", ""};
  map.pins = {0.15f, 1e-30f};
  return map;
}

std::string attribute(const ss::ColourMap& map, const char* name) {
  std::string value;
  EXPECT_TRUE(ss::colourMapAttribute(map, name, value).isOk()) << name;
  return value;
}

}  // namespace

TEST(ColourMapColours, DefaultTableRowByRow) {
  EXPECT_EQ(defaultsFor(1), (std::vector<int>{4}));
  EXPECT_EQ(defaultsFor(2), (std::vector<int>{4, 2}));
  EXPECT_EQ(defaultsFor(3), (std::vector<int>{4, 38, 2}));
  EXPECT_EQ(defaultsFor(4), (std::vector<int>{4, 6, 38, 2}));
  EXPECT_EQ(defaultsFor(5), (std::vector<int>{48, 57, 38, 78, 2}));
  EXPECT_EQ(defaultsFor(6), (std::vector<int>{48, 57, 38, 78, 88, 2}));
  EXPECT_EQ(defaultsFor(7), (std::vector<int>{48, 57, 38, 79, 88, 67, 4}));
  EXPECT_EQ(defaultsFor(8), (std::vector<int>{19, 48, 57, 38, 78, 88, 67, 27}));
  EXPECT_EQ(defaultsFor(9), (std::vector<int>{19, 48, 98, 57, 36, 78, 88, 68, 27}));
}

TEST(ColourMapColours, CountsOutsideTheTableChangeNothing) {
  ss::ColourMap map;
  ASSERT_TRUE(ss::allocateClasses(map, 10).isOk());
  map.colours.assign(10, 5);
  ss::setDefaultColours(map);
  EXPECT_EQ(map.colours, std::vector<int>(10, 5));
  ss::ColourMap empty;
  ss::setDefaultColours(empty);
  EXPECT_TRUE(empty.colours.empty());
  // Through the routine.
  ZW_CM* cm = nullptr;
  ZW_CMINIT(&cm);
  int n = 10, status = -1;
  ZW_CMALLOC(&cm, &n, &status);
  ASSERT_EQ(status, 0);
  int before[10], after[10], count = 0;
  const int capacity = 10;
  ZW_CMGETCOLS(&cm, before, &capacity, &count);
  ZW_CMSETCOLS(&cm);
  ZW_CMGETCOLS(&cm, after, &capacity, &count);
  EXPECT_EQ(count, 10);
  EXPECT_EQ(std::vector<int>(before, before + 10), std::vector<int>(after, after + 10));
  n = 7;
  ZW_CMALLOC(&cm, &n, &status);
  ZW_CMSETCOLS(&cm);
  ZW_CMGETCOLS(&cm, after, &capacity, &count);
  EXPECT_EQ(std::vector<int>(after, after + count), (std::vector<int>{48, 57, 38, 79, 88, 67, 4}));
  ZW_CMDEL(&cm);
  EXPECT_EQ(cm, nullptr);
}

TEST(ColourMapClasses, EqualRangesAndTheClassOfAValue) {
  ss::ColourMap map = ss::defaultColourMap();
  ASSERT_EQ(map.classes(), 5);
  map.min = 0;
  map.max = 10;
  map.c0 = 1;
  map.c1 = 3;
  ASSERT_TRUE(ss::setClassRanges(map).isOk());
  EXPECT_EQ(map.bounds, (std::vector<float>{0, 2, 4, 6, 8, 10}));
  EXPECT_EQ(ss::classOf(map, 0.0f), 1);
  EXPECT_EQ(ss::classOf(map, 1.99f), 1);
  EXPECT_EQ(ss::classOf(map, 2.0f), 2);
  EXPECT_EQ(ss::classOf(map, 10.0f), 5);
  EXPECT_EQ(ss::classOf(map, -0.1f), 0);
  EXPECT_EQ(ss::classOf(map, 10.5f), 6);
  EXPECT_EQ(ss::classOf(map, ss::kRealNull), -1);
  EXPECT_EQ(ss::colourOf(map, 5.0f), 38);
  EXPECT_EQ(ss::colourOf(map, -1.0f), 1);
  EXPECT_EQ(ss::colourOf(map, 11.0f), 3);
  EXPECT_EQ(ss::colourOf(map, ss::kRealNull), 0);
  map.icat = 1;
  EXPECT_EQ(ss::classOf(map, 2.2f), 2);
  EXPECT_EQ(ss::classOf(map, 6.0f), 6);
}

TEST(ColourMapClasses, LogarithmicRangesAndRefusals) {
  ss::ColourMap map;
  ASSERT_TRUE(ss::allocateClasses(map, 3).isOk());
  map.min = 1;
  map.max = 1000;
  map.ifsc = 2;
  ASSERT_TRUE(ss::setClassRanges(map).isOk());
  EXPECT_FLOAT_EQ(map.bounds[1], 10.0f);
  EXPECT_FLOAT_EQ(map.bounds[2], 100.0f);
  map.min = 0;
  EXPECT_EQ(ss::setClassRanges(map).message(), "Invalid value for log scale");
  map.min = 5;
  map.max = 5;
  EXPECT_EQ(ss::setClassRanges(map).message(), "The colour-map range 5 to 5 is empty");
  EXPECT_EQ(ss::allocateClasses(map, 0).message(), "A colour map has 1 to 256 classes, not 0");
  EXPECT_EQ(ss::allocateClasses(map, 257).message(), "A colour map has 1 to 256 classes, not 257");
}

TEST(ColourMapClasses, CheckNamesTheFault) {
  ss::ColourMap map = ss::defaultColourMap();
  EXPECT_TRUE(ss::checkColourMap(map).isOk());
  map.bounds[2] = -1;
  EXPECT_EQ(ss::checkColourMap(map).message(), "Colour-map class 2 runs from 0.2 down to -1");
  map.bounds.pop_back();
  EXPECT_EQ(ss::checkColourMap(map).message(), "The colour map has 5 classes but 5 class bounds");
  EXPECT_EQ(ss::checkColourMap(ss::ColourMap{}).message(), "The colour map has no classes");
}

TEST(ColourMapAttributes, ReadAndWrittenByName) {
  ss::ColourMap map = everyFieldSet();
  EXPECT_EQ(attribute(map, "cm_min"), "0.05");
  EXPECT_EQ(attribute(map, "cm_max"), "0.35");
  EXPECT_EQ(attribute(map, "cm_dmin"), "0.0123");
  EXPECT_EQ(attribute(map, "cm_dmax"), "-9.9E+20");
  EXPECT_EQ(attribute(map, "cm_icat"), "0");
  EXPECT_EQ(attribute(map, "cm_ifsc"), "1");
  EXPECT_EQ(attribute(map, "cm_imap"), "2");
  EXPECT_EQ(attribute(map, "cm_c0"), "7");
  EXPECT_EQ(attribute(map, "cm_c1"), "9");
  EXPECT_EQ(attribute(map, "cm_nr"), "3");
  map.ich = 0;
  ASSERT_TRUE(ss::setColourMapAttribute(map, "cm_max", "2.5").isOk());
  EXPECT_EQ(map.max, 2.5f);
  EXPECT_EQ(attribute(map, "cm_ich"), "1");
  ASSERT_TRUE(ss::setColourMapAttribute(map, "cm_dmin", "-9.9E+20").isOk());
  EXPECT_TRUE(ss::isNull(map.dmin));
  ASSERT_TRUE(ss::setColourMapAttribute(map, "cm_nr", "7").isOk());
  EXPECT_EQ(map.colours, (std::vector<int>{48, 57, 38, 79, 88, 67, 4}));
  EXPECT_EQ(map.bounds.size(), 8u);
  EXPECT_EQ(ss::setColourMapAttribute(map, "cm_c0", "red").message(),
            "\"red\" is not a value for colour-map attribute cm_c0");
  EXPECT_EQ(ss::setColourMapAttribute(map, "cm_hue", "1").message(), "Unknown colour-map attribute cm_hue");
  std::string value;
  EXPECT_EQ(ss::colourMapAttribute(map, "cm_hue", value).message(), "Unknown colour-map attribute cm_hue");
}

TEST(ColourMapAttributes, ThroughTheRoutinesWithBlankPaddedFields) {
  ZW_CM* cm = nullptr;
  ZW_CMINIT(&cm);
  char name[16], value[20];
  int status = -1;
  ss::setFixed(name, 16, "cm_min");
  ss::setFixed(value, 20, "-4.5");
  ZW_CMSETATTS(&cm, name, value, &status);
  EXPECT_EQ(status, 0);
  ss::setFixed(value, 20, "");
  ZW_CMGETATTS(&cm, name, value, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(std::string(value, 20), "-4.5" + std::string(16, ' '));
  ss::host::clearRecorded();
  ss::setFixed(name, 16, "cm_nope");
  ZW_CMGETATTS(&cm, name, value, &status);
  EXPECT_EQ(status, 1);
  ASSERT_EQ(ss::host::recordedMessages().size(), 1u);
  EXPECT_EQ(ss::host::recordedMessages()[0], "Unknown colour-map attribute cm_nope");
  ZW_CM* copy = nullptr;
  ZW_CMCOPY(&cm, &copy, &status);
  ASSERT_EQ(status, 0);
  float v = -4.5f;
  // The bounds still divide 0..1 until the ranges are set again.
  EXPECT_EQ(IZW_CMGET(&copy, &v), 0);
  ZW_CMRANGES(&copy, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(IZW_CMGET(&copy, &v), 48);
  EXPECT_EQ(IZW_CMGET(&cm, &v), 0);
  int klass = -1, colour = -1;
  ZW_CMSET(&copy, &v, &klass, &colour);
  EXPECT_EQ(klass, 1);
  EXPECT_EQ(colour, 48);
  ZW_CMDEL(&copy);
  ZW_CMDEL(&cm);
}

TEST(ColourMapFile, RecordsInTheirOrder) {
  EXPECT_EQ(ss::colourMapFileText(everyFieldSet()),
            "vers,1\n"
            "lims,0.05,0.35,0.0123,-9.9e+20\n"
            "scale,1,0,2,7,9\n"
            "ranges,3,0.05,0.1,0.2,0.35\n"
            "cols,3,11,22,33\n"
            "names,3,Tight,\"Fair, good\",\"\"\n"
            "pins,2,0.15,1e-30\n");
}

TEST(ColourMapFile, WrittenAndReadBackFieldForField) {
  ss::testing::TempDir dir;
  const ss::ColourMap map = everyFieldSet();
  const std::string path = dir.file("porosity.zcm");
  ASSERT_TRUE(ss::writeColourMapFile(map, path).isOk());
  ss::ColourMap back;
  ASSERT_TRUE(ss::readColourMapFile(path, back).isOk());
  EXPECT_EQ(back.min, map.min);
  EXPECT_EQ(back.max, map.max);
  EXPECT_EQ(back.dmin, map.dmin);
  EXPECT_TRUE(ss::isNull(back.dmax));
  EXPECT_EQ(back.ifsc, map.ifsc);
  EXPECT_EQ(back.icat, map.icat);
  EXPECT_EQ(back.imap, map.imap);
  EXPECT_EQ(back.c0, map.c0);
  EXPECT_EQ(back.c1, map.c1);
  EXPECT_EQ(back.bounds, map.bounds);
  EXPECT_EQ(back.colours, map.colours);
  EXPECT_EQ(back.names, map.names);
  EXPECT_EQ(back.pins, map.pins);
  EXPECT_EQ(back.ich, 0);
  EXPECT_EQ(ss::colourMapFileText(back), ss::colourMapFileText(map));
}

TEST(ColourMapFile, RoutinesWriteAndReadThroughLogicalNames) {
  ss::testing::TempDir dir;
  ZW_CM* cm = nullptr;
  ZW_CMINIT(&cm);
  int n = 8, status = -1;
  ZW_CMALLOC(&cm, &n, &status);
  char file[260];
  ss::setFixed(file, 260, dir.file("eight.zcm"));
  ZW_CMWRITE(&cm, file, &status);
  ASSERT_EQ(status, 0);
  ZW_CM* back = nullptr;
  ZW_CMINIT(&back);
  ZW_CMREAD(&back, file, &status);
  ASSERT_EQ(status, 0);
  int colours[8], count = 0;
  const int capacity = 8;
  ZW_CMGETCOLS(&back, colours, &capacity, &count);
  EXPECT_EQ(std::vector<int>(colours, colours + count), (std::vector<int>{19, 48, 57, 38, 78, 88, 67, 27}));
  ZW_CMDEL(&cm);
  ZW_CMDEL(&back);
}

struct Damage {
  std::string name, from, to, message;
  int line;
};

class DamagedColourMapFile : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedColourMapFile, IsReportedWithItsLineAndChangesNothing) {
  const Damage& d = GetParam();
  ss::testing::TempDir dir;
  std::string text = ss::colourMapFileText(everyFieldSet());
  const std::size_t at = text.find(d.from);
  ASSERT_NE(at, std::string::npos) << d.from;
  text.replace(at, d.from.size(), d.to);
  const std::string path = dir.write("damaged.zcm", text);
  ss::ColourMap map = ss::defaultColourMap();
  const ss::Status s = ss::readColourMapFile(path, map);
  ASSERT_FALSE(s.isOk());
  EXPECT_EQ(s.message(), path + ", line " + std::to_string(d.line) + ": " + d.message);
  EXPECT_EQ(map.colours, ss::defaultColourMap().colours);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DamagedColourMapFile,
    ::testing::Values(
        Damage{"NoVersion", "vers,1", "lims,1", "not a colour-map file: it does not begin with \"vers\"", 1},
        Damage{"FutureVersion", "vers,1", "vers,2", "colour-map file version 2 is not one this program reads", 1},
        Damage{"OutOfOrder", "scale,1,0,2,7,9\n", "", "expected the record \"scale\" here", 3},
        Damage{"BadReal", "lims,0.05", "lims,low", "\"lims\": field 2 (\"low\") is not a number", 2},
        Damage{"BadColour", "cols,3,11,22", "cols,3,11,x", "\"cols\": field 4 (\"x\") is not a whole number", 5},
        Damage{"HugeCount", "ranges,3", "ranges,1000000000",
               "\"ranges\": the count \"1000000000\" is not a whole number from 1 to 256", 4},
        Damage{"ShortRanges", "0.2,0.35\n", "0.2\n", "\"ranges\": field 6 (\"\") is not a number", 4},
        Damage{"CountsDisagree", "names,3", "names,2", "\"names\": the count \"2\" is not the 3 classes of \"ranges\"",
               6},
        Damage{"TrailingRecord", "pins,2,0.15,1e-30\n", "pins,0\nextra,1\n", "unexpected record \"extra\" after \"pins\"",
               8}),
    [](const ::testing::TestParamInfo<Damage>& info) { return info.param.name; });

TEST(ColourMapFile, FailedOrRefusedWritesLeaveTheOldFileWhole) {
  ss::testing::TempDir dir;
  const std::string path = dir.write("kept.zcm", "old contents\n");
  ss::ColourMap bad = everyFieldSet();
  bad.bounds.pop_back();
  EXPECT_EQ(ss::writeColourMapFile(bad, path).message(), path + ": The colour map has 3 classes but 3 class bounds");
  EXPECT_FALSE(ss::writeColourMapFile(everyFieldSet(), dir.file("no/such/folder/c.zcm")).isOk());
  EXPECT_EQ(ss::testing::TempDir::read(path), "old contents\n");
  EXPECT_EQ(dir.list(), std::vector<std::string>{"kept.zcm"});
}
