// Shaping the current line: reference lines across the set's window, boxes,
// curves, lines from data and vectors, and plot files without a screen.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/nulls.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"
#include "support/temp_dir.h"

namespace {

struct Points {
  std::vector<float> x, y;
};

class LineShapesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZW_ZPINIT();
    setWindow(0, 10, 100, 200);
    int status = 1;
    ZW_LINEADD(&status);
    ASSERT_EQ(status, 0);
  }

  static void setWindow(float xmin, float xmax, float ymin, float ymax) {
    for (int axis : {ZW_AXIS_X, ZW_AXIS_Y}) {
      ZW_SCALE s;
      int status = 1;
      ZW_ZPSGETSCALE(&axis, &s, &status);
      ASSERT_EQ(status, 0);
      s.MODE = 1;  // manual: the limits stay as given
      s.MIN = axis == ZW_AXIS_X ? xmin : ymin;
      s.MAX = axis == ZW_AXIS_X ? xmax : ymax;
      ZW_ZPSSETSCALE(&axis, &s, &status);
      ASSERT_EQ(status, 0);
    }
  }

  static Points points() {
    Points p;
    int n = 0;
    const int none = 0;
    ZW_LINEGETPTS(nullptr, nullptr, &none, &n);
    p.x.resize(static_cast<std::size_t>(n));
    p.y.resize(static_cast<std::size_t>(n));
    const int capacity = n;
    ZW_LINEGETPTS(p.x.data(), p.y.data(), &capacity, &n);
    return p;
  }

  static int closed() {
    ZW_LINE rec;
    int status = 1;
    ZW_LINEGET(&rec, &status);
    return rec.CLOSED;
  }
};

TEST_F(LineShapesTest, ReferenceLinesSpanTheSetsWindow) {
  int status = 1;
  const float level = 150;
  ZW_LINEDEF2(&level, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(points().x, (std::vector<float>{0, 10}));
  EXPECT_EQ(points().y, (std::vector<float>{150, 150}));

  const float at = 4;
  ZW_LINEDEF3(&at, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(points().x, (std::vector<float>{4, 4}));
  EXPECT_EQ(points().y, (std::vector<float>{100, 200}));

  const float a = 100, b = 5;
  ZW_LINEDEF4(&a, &b, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(points().y, (std::vector<float>{100, 150}));
}

TEST_F(LineShapesTest, ALineThroughTwoPointsIsExtendedAndCutToTheWindow) {
  int status = 1;
  // y = 100 + 20 x leaves the window's top at x = 5.
  const float x1 = 1, y1 = 120, x2 = 2, y2 = 140;
  ZW_LINEDEF5(&x1, &y1, &x2, &y2, &status);
  ASSERT_EQ(status, 0);
  const Points p = points();
  ASSERT_EQ(p.x.size(), 2u);
  EXPECT_FLOAT_EQ(p.x[0], 0);
  EXPECT_FLOAT_EQ(p.y[0], 100);
  EXPECT_FLOAT_EQ(p.x[1], 5);
  EXPECT_FLOAT_EQ(p.y[1], 200);

  const float up1 = 3, up2 = 3;  // an upright line
  ZW_LINEDEF5(&up1, &y1, &up2, &y2, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(points().y, (std::vector<float>{100, 200}));

  ZW_LINEDEF5(&x1, &y1, &x1, &y1, &status);  // one point names no line
  EXPECT_EQ(status, 1);
  const float far1 = 0, far2 = 1, low = 0;  // a level line below the window
  ZW_LINEDEF5(&far1, &low, &far2, &low, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(LineShapesTest, ShapesNeedTheLimitsTheyUseAndACurrentLine) {
  setWindow(subsurf::kRealNull, 10, 100, 200);
  int status = 0;
  const float v = 1;
  ZW_LINEDEF2(&v, &status);
  EXPECT_EQ(status, 1);
  ZW_LINEDEF3(&v, &status);  // needs only y
  EXPECT_EQ(status, 0);
  ZW_BOXDEF2(&status);
  EXPECT_EQ(status, 1);

  ZW_LINEDELALL();
  ZW_LINEDEF3(&v, &status);
  EXPECT_EQ(status, 1);
  ZW_BOXDEF1(&v, &v, &v, &v, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(LineShapesTest, BoxesAreClosedOutlines) {
  int status = 1;
  const float xc = 5, yc = 150, hw = -2, hh = 10;  // a negative half-width counts by its size
  ZW_BOXDEF1(&xc, &yc, &hw, &hh, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(points().x, (std::vector<float>{3, 7, 7, 3, 3}));
  EXPECT_EQ(points().y, (std::vector<float>{140, 140, 160, 160, 140}));
  EXPECT_EQ(closed(), 1);

  ZW_BOXDEF2(&status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(points().x, (std::vector<float>{0, 10, 10, 0, 0}));
  EXPECT_EQ(points().y, (std::vector<float>{100, 100, 200, 200, 100}));
  EXPECT_EQ(closed(), 1);

  const float level = 150;  // a later open shape is no longer closed
  ZW_LINEDEF2(&level, &status);
  EXPECT_EQ(closed(), 0);
}

TEST_F(LineShapesTest, CurvesPassThroughTheirPointsAndKeepStraightRunsStraight) {
  const float x[] = {0, 1, 2, 3}, y[] = {0, 2, 4, 6};
  const int n = 4, steps = 4;
  int status = 1;
  ZW_LINEDEFCURVED(&n, x, y, &steps, &status);
  ASSERT_EQ(status, 0);
  const Points p = points();
  ASSERT_EQ(p.x.size(), 13u);  // 3 spans of 4 steps and the last point
  for (int k = 0; k < 4; ++k) {
    EXPECT_FLOAT_EQ(p.x[static_cast<std::size_t>(4 * k)], x[k]);
    EXPECT_FLOAT_EQ(p.y[static_cast<std::size_t>(4 * k)], y[k]);
  }
  for (std::size_t k = 0; k < p.x.size(); ++k) EXPECT_NEAR(p.y[k], 2 * p.x[k], 1e-5) << k;

  const float bent[] = {0, 1, 0};
  const int three = 3;
  ZW_LINEDEFCURVED(&three, x, bent, &steps, &status);
  ASSERT_EQ(status, 0);
  EXPECT_GT(points().y[2], 0.5f);  // the bend is rounded, not cut short
  EXPECT_LT(points().y[2], 1.0f);

  const int one = 1, zero = 0, tooMany = 101;
  ZW_LINEDEFCURVED(&one, x, y, &steps, &status);
  EXPECT_EQ(status, 1);
  ZW_LINEDEFCURVED(&n, x, y, &zero, &status);
  EXPECT_EQ(status, 1);
  ZW_LINEDEFCURVED(&n, x, y, &tooMany, &status);
  EXPECT_EQ(status, 1);
  const float gap[] = {0, subsurf::kRealNull, 4, 6};
  ZW_LINEDEFCURVED(&n, x, gap, &steps, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(points().x.size(), 9u);  // the bent curve stays
}

TEST_F(LineShapesTest, ALineMadeFromTheSetsDataBreaksAtUnknownValues) {
  int status = 0;
  ZW_LINEMAKE(&status);
  EXPECT_EQ(status, 1);  // no data yet

  subsurf::PlotSet* set = subsurf::plotTree().currentSet();
  set->data[0] = {1, 2, 3, 4};
  set->data[1] = {10, subsurf::kRealNull, 30, 40};
  ZW_LINEMAKE(&status);
  ASSERT_EQ(status, 0);
  int lines = 0;
  ZW_LINENLIN(&lines);
  EXPECT_EQ(lines, 2);
  const Points p = points();
  EXPECT_EQ(p.x, (std::vector<float>{1, subsurf::kRealNull, 3, 4}));
  EXPECT_EQ(p.y, (std::vector<float>{10, subsurf::kRealNull, 30, 40}));

  const float x[] = {5, 6}, y[] = {7, 8};
  const int n = 2, bad = -1;
  ZW_LINEMAKE1(&n, x, y, &status);
  ASSERT_EQ(status, 0);
  ZW_LINENLIN(&lines);
  EXPECT_EQ(lines, 3);
  EXPECT_EQ(points().y, (std::vector<float>{7, 8}));
  ZW_LINEMAKE1(&bad, x, y, &status);
  EXPECT_EQ(status, 1);
  ZW_LINENLIN(&lines);
  EXPECT_EQ(lines, 3);  // nothing added for a refused call
}

TEST_F(LineShapesTest, VectorsRoundTripAndShortVectorsSaySo) {
  float xs[] = {1, 2, 3}, ys[] = {4, 5, 6};
  DT_RVEC x{3, xs, {}}, y{3, ys, {}};
  int status = 1;
  ZW_LINECOPYFROMGVEC(&x, &y, &status);
  ASSERT_EQ(status, 0);

  float ox[3] = {}, oy[3] = {};
  DT_RVEC tx{3, ox, {}}, ty{3, oy, {}};
  ZW_LINECOPYTOGVEC(&tx, &ty, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(tx.N, 3);
  EXPECT_EQ(std::vector<float>(ox, ox + 3), (std::vector<float>{1, 2, 3}));
  EXPECT_EQ(std::vector<float>(oy, oy + 3), (std::vector<float>{4, 5, 6}));

  float sx[2] = {}, sy[2] = {};
  DT_RVEC shortX{2, sx, {}}, shortY{2, sy, {}};
  ZW_LINECOPYTOGVEC(&shortX, &shortY, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(shortX.N, 2);
  EXPECT_EQ(sy[1], 5);

  DT_RVEC uneven{2, xs, {}};
  ZW_LINECOPYFROMGVEC(&uneven, &y, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(points().x.size(), 3u);  // the line kept its points
}

TEST_F(LineShapesTest, ALineRecordRoundTripsAndDamageIsNamed) {
  const float x[] = {1.5f, 2, subsurf::kRealNull}, y[] = {-3, 4e6f, subsurf::kRealNull};
  const int n = 3;
  int status = 1;
  ZW_LINEDEFPTS(&n, x, y, &status);
  ZW_LINE rec;
  ZW_LINEGET(&rec, &status);
  rec.STYLE = 2;
  rec.COLOUR = 7;
  std::memset(rec.NAME, ' ', sizeof rec.NAME);
  std::memcpy(rec.NAME, "Trend, 1st", 10);
  ZW_LINEDEF(&rec, &status);

  char text[400];
  int capacity = 400, length = 0;
  ZW_LINEWRITE(text, &capacity, &length, &status);
  ASSERT_EQ(status, 0);
  const std::string record(text, static_cast<std::size_t>(length));
  EXPECT_EQ(record.substr(0, 5), "line,");
  EXPECT_EQ(std::string(text + length, 400 - static_cast<std::size_t>(length)), std::string(400 - static_cast<std::size_t>(length), ' '));

  ZW_LINEREAD(text, &length, &status);
  ASSERT_EQ(status, 0);
  int lines = 0;
  ZW_LINENLIN(&lines);
  ASSERT_EQ(lines, 2);
  ZW_LINE back;
  ZW_LINEGET(&back, &status);
  EXPECT_EQ(back.ID, 2);  // a read line gets a new id
  EXPECT_EQ(back.STYLE, 2);
  EXPECT_EQ(back.COLOUR, 7);
  EXPECT_EQ(std::string(back.NAME, 10), "Trend, 1st");
  EXPECT_EQ(points().x, (std::vector<float>{1.5f, 2, subsurf::kRealNull}));
  EXPECT_EQ(points().y, (std::vector<float>{-3, 4e6f, subsurf::kRealNull}));

  int tiny = 10;
  ZW_LINEWRITE(text, &tiny, &length, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(length, 0);

  subsurf::host::clearRecorded();
  const std::string notLine = "zps_name,Brent";
  const std::string badCount = "line,1,1,1,0.25,0,0,0,x,2,0,0";
  int len = static_cast<int>(notLine.size());
  ZW_LINEREAD(notLine.c_str(), &len, &status);
  EXPECT_EQ(status, 1);
  len = static_cast<int>(badCount.size());
  ZW_LINEREAD(badCount.c_str(), &len, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(subsurf::host::recordedMessages(),
            (std::vector<std::string>{"not a \"line\" record: \"zps_name\"",
                                      "\"line\": the count 2 in column 10 does not match the 2 values that follow"}));
  ZW_LINENLIN(&lines);
  EXPECT_EQ(lines, 2);
}

TEST(PlotFileWithoutScreen, FaultsComeBackAsTextAndAGoodFileRoundTrips) {
  ZW_ZPINIT();
  subsurf::testing::TempDir dir;
  char message[200];
  char file[260];
  auto name = [&](const std::string& path) {
    std::memset(file, ' ', sizeof file);
    std::memcpy(file, path.data(), path.size());
  };
  int status = 1;
  subsurf::plotTree().current()->fields.title = "Porosity";
  name(dir.file("a.zpl"));
  ZW_ZPWRITEDO(nullptr, file, message, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(std::string(message, 200), std::string(200, ' '));

  subsurf::plotTree().current()->fields.title = "changed";
  ZW_ZPREADDO(nullptr, file, message, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(subsurf::plotTree().current()->fields.title, "Porosity");

  const std::string damaged = dir.write("bad.zpl", "version,1\nzp_bogus,1\n");
  name(damaged);
  ZW_ZPREADDO(nullptr, file, message, &status);
  EXPECT_EQ(status, 1);
  std::string expected = damaged + ", line 2: unknown record \"zp_bogus\"";
  expected.resize(200, ' ');
  EXPECT_EQ(std::string(message, 200), expected);
  EXPECT_EQ(subsurf::plotTree().current()->fields.title, "Porosity");
}

// The shown and the returned forms report every fault with one text.
TEST(PlotFileWithoutScreen, ShownAndReturnedFaultsAreTheSameText) {
  ZW_ZPINIT();
  subsurf::testing::TempDir dir;
  char file[260];
  auto name = [&](const std::string& path) {
    std::memset(file, ' ', sizeof file);
    std::memcpy(file, path.data(), path.size());
  };
  auto returned = [](const char* message) {
    std::string m(message, 200);
    m.erase(m.find_last_not_of(' ') + 1);
    return m;
  };
  char message[200];
  int shownStatus = 0, returnedStatus = 0;

  name(dir.write("bad.zpl", "version,1\nzp_nds,x\n"));
  subsurf::host::clearRecorded();
  ZW_ZPREAD(nullptr, file, &shownStatus);
  ZW_ZPREADDO(nullptr, file, message, &returnedStatus);
  EXPECT_EQ(shownStatus, 1);
  EXPECT_EQ(returnedStatus, 1);
  EXPECT_EQ(subsurf::host::recordedMessages(),
            std::vector<std::string>{dir.file("bad.zpl") + ", line 2: column 2 is not a whole number"});
  EXPECT_EQ(returned(message), subsurf::host::recordedMessages().at(0));

  // A folder where the file should be: written by neither.
  name(dir.path());
  subsurf::host::clearRecorded();
  ZW_ZPWRITE(nullptr, file, &shownStatus);
  ZW_ZPWRITEDO(nullptr, file, message, &returnedStatus);
  EXPECT_EQ(shownStatus, 1);
  EXPECT_EQ(returnedStatus, 1);
  ASSERT_EQ(subsurf::host::recordedMessages().size(), 1u);
  EXPECT_FALSE(returned(message).empty());
  EXPECT_EQ(returned(message), subsurf::host::recordedMessages().at(0));

  // No plot at all: a removed only child leaves none current.
  ZW_ZP* root = nullptr;
  ZW_ZPCURRENT(&root);
  ZW_ZP* kid = nullptr;
  int seq = 0;
  ZW_ZPADDKID(&root, &kid, &seq);
  ZW_ZPREMOVE(&kid, &shownStatus);
  name(dir.file("none.zpl"));
  subsurf::host::clearRecorded();
  ZW_ZPWRITE(nullptr, file, &shownStatus);
  ZW_ZPWRITEDO(nullptr, file, message, &returnedStatus);
  EXPECT_EQ(shownStatus, 1);
  EXPECT_EQ(returnedStatus, 1);
  EXPECT_EQ(subsurf::host::recordedMessages(), std::vector<std::string>{"There is no plot to write"});
  EXPECT_EQ(returned(message), "There is no plot to write");
  ZW_ZPREADDO(nullptr, file, message, &returnedStatus);
  EXPECT_EQ(returned(message), "There is no plot to read into");
  ZW_ZPDEL(&kid);
}

}  // namespace
