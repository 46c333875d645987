// The stereonet entry points that build a net, more data, a rose and a key
// into the current plot of the plot tree, and what they refuse.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"
#include "subsurf/plot_stereonet.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

class StereonetExports : public ::testing::Test {
 protected:
  void SetUp() override {
    ZW_ZPINIT();
    ss::host::clearRecorded();
  }
  ss::PlotRecord& plot() { return *ss::plotTree().current(); }
  std::vector<std::string> texts(int set = 0) {
    std::vector<std::string> out;
    const ss::PlotSet& s = plot().sets[static_cast<std::size_t>(set)];
    for (int k = 1; k <= s.texts.count(); ++k) out.push_back(ss::fixedText(s.texts.at(k).TEXT));
    return out;
  }
  std::string field40(const std::string& text) {
    std::string f(40, ' ');
    std::memcpy(f.data(), text.data(), text.size());
    return f;
  }
};

}  // namespace

TEST_F(StereonetExports, NetThenMoreDataThenKeyThenDrawn) {
  const std::vector<float> dips = {30, 60, 95}, az = {90, 200, 0};
  const int p = 3, n = 3, poles = 1, planes = 1;
  int status = -1;
  ZW_DRAWSTEREO(&p, &n, dips.data(), az.data(), &poles, &planes, &status);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(plot().setCount(), 1);
  EXPECT_EQ(plot().sets[0].pointCount(), 2);  // the dip of 95 is left out
  EXPECT_EQ(plot().sets[0].lines.count(), 3 + 2);  // rim, centre cross, two great circles
  EXPECT_EQ(texts()[2], "Observations: 2");
  EXPECT_EQ(texts()[3], "Equal area 90-0-90");

  const std::vector<float> more = {10}, moreAz = {45};
  const int one = 1, colour = 7, shape = 3, lines = 0;
  const std::string name = field40("Faults");
  ZW_DRAWSTEREOXY(&p, &one, more.data(), moreAz.data(), &lines, &colour, &shape, name.c_str(), &status);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(plot().setCount(), 2);
  EXPECT_EQ(plot().currentSet, 2);
  EXPECT_EQ(plot().sets[1].name, "Faults");
  EXPECT_EQ(plot().sets[1].sym, 3);
  EXPECT_EQ(plot().sets[1].scales[0].MIN, -100.0f);
  EXPECT_NEAR(plot().sets[1].data[0][0], 90 * std::sqrt(1 - std::sin(10 * M_PI / 180)) * std::sin(M_PI / 4), 1e-3);

  const std::string colours = field40("J1") + field40("J2"), symbols = field40("open");
  const int two = 2;
  ZW_DRAWSTEREOLABEL(&two, colours.c_str(), &one, symbols.c_str(), &status);
  ASSERT_EQ(status, 0);
  const auto t = texts();
  EXPECT_NE(std::find(t.begin(), t.end(), "Colours:"), t.end());
  EXPECT_NE(std::find(t.begin(), t.end(), "J2"), t.end());
  EXPECT_NE(std::find(t.begin(), t.end(), "Symbols:"), t.end());

  ss::testing::TempDir dir;
  std::string file = dir.file("net.png");
  file.resize(260, ' ');
  const float dpi = 50;
  plot().layout.pagex = plot().layout.pagey = 120;
  ZW_ZP* current = nullptr;
  ZW_ZPDRAW(&current, file.c_str(), &dpi, &status);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(std::filesystem::exists(dir.file("net.png")));
}

TEST_F(StereonetExports, RoseInPlaceOfTheNet) {
  const std::vector<float> az = {5, 15, 25, 185, ss::kRealNull};
  const int n = 5;
  const float width = 20, start = 5;
  int status = -1;
  ZW_DRAWSTEREOROSE(&n, az.data(), &width, &start, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(texts()[1], "Frequency: 0 to 2");  // 5 and 15 share the class 5..25, 25 opens the next
  EXPECT_EQ(texts()[2], "Observations: 4");
  const float badWidth = 7;
  ZW_DRAWSTEREOROSE(&n, az.data(), &badWidth, &start, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedMessages().back(), "A rose class width of 7 degrees does not divide 360");
}

TEST_F(StereonetExports, RefusedWithTheReasonShown) {
  const std::vector<float> dips = {100}, az = {0};
  const int p = 3, n = 1, zero = 0, bad = 5;
  int status = -1;
  ZW_DRAWSTEREO(&p, &n, dips.data(), az.data(), &zero, &zero, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedMessages().back(), "No valid data points!");
  ZW_DRAWSTEREOXY(&bad, &n, dips.data(), az.data(), &zero, &zero, &zero, nullptr, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedMessages().back(), "Projection 5 is not equal-angle (2) or equal-area (3)");
  ZW_DRAWSTEREO(&p, nullptr, nullptr, nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(plot().setCount(), 1);  // the plot keeps what it had
  EXPECT_EQ(plot().sets[0].texts.count(), 0);
}
