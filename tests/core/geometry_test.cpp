// Photo-view coordinates and rectangle geometry: view ratios, conversions,
// point-in-view tests at their borders, side of line, clipping, outlines in
// window coordinates, point within an outline and corner dragging.
#include <gtest/gtest.h>

#include <vector>

#include "core/core_session.h"
#include "core/photo_view.h"
#include "subsurf/core.h"

namespace subsurf {
namespace {

// A photo window of 400 x 200 showing pixels 100..300 by 50..150 of the
// current image, with 2 world units per pixel in x and 0.5 in y. The visible
// part in world coordinates is then x 200..600, y 25..75; both ratios 0.5.
class ViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(s.init());
    image = s.newImage();
    ViewRecord& v = image->views[0];
    v.x1 = 100;
    v.x2 = 300;
    v.y1 = 50;
    v.y2 = 150;
    v.xScale = 2.0f;
    v.yScale = 0.5f;
    s.setCurrent(image);
    s.setViewNumber(1);
    s.setWindowSize(400, 200);
  }
  CoreRectangle* outline(const std::vector<int>& xs, const std::vector<int>& ys) {
    CoreRectangle* r = s.newRectangle(*image);
    CoreSession::setVertexCount(*r, static_cast<int>(xs.size()));
    r->polygon.px = xs;
    r->polygon.py = ys;
    s.updateWorld(*r);
    return r;
  }

  CoreSession s;
  CoreImage* image = nullptr;
};

TEST_F(ViewTest, RatiosAndConversionsBothWays) {
  EXPECT_FLOAT_EQ(viewRatioX(s), 0.5f);
  EXPECT_FLOAT_EQ(viewRatioY(s), 0.5f);
  float vx = 0, vy = 0;
  worldToWindow(s, 300.0f, 50.0f, vx, vy);  // (300 - 200) / 0.5, (50 - 25) / 0.5
  EXPECT_FLOAT_EQ(vx, 200.0f);
  EXPECT_FLOAT_EQ(vy, 50.0f);
  float wx = 0, wy = 0;
  windowToWorld(s, vx, vy, wx, wy);
  EXPECT_FLOAT_EQ(wx, 300.0f);
  EXPECT_FLOAT_EQ(wy, 50.0f);
}

TEST_F(ViewTest, ViewNumbersOutsideOneToTenAreTheIdentity) {
  for (int v : {0, 11}) {
    s.setViewNumber(v);
    EXPECT_EQ(viewRatioX(s), 1.0f) << v;
    EXPECT_EQ(viewRatioY(s), 1.0f) << v;
    float vx = 0, vy = 0;
    worldToWindow(s, 123.0f, 45.0f, vx, vy);
    EXPECT_EQ(vx, 123.0f);
    EXPECT_EQ(vy, 45.0f);
  }
}

// 1 inside, 2 on the border (level with it counts, however far away), 0 outside.
TEST_F(ViewTest, WorldAndPixelPointsAgainstTheVisiblePart) {
  EXPECT_EQ(pointInWindow(s, 400.0f, 50.0f), 1);
  EXPECT_EQ(pointInWindow(s, 200.0f, 50.0f), 2);
  EXPECT_EQ(pointInWindow(s, 600.0f, 50.0f), 2);
  EXPECT_EQ(pointInWindow(s, 400.0f, 75.0f), 2);
  EXPECT_EQ(pointInWindow(s, 200.0f, 1000.0f), 2);
  EXPECT_EQ(pointInWindow(s, 199.99f, 50.0f), 0);
  EXPECT_EQ(pointInWindow(s, 400.0f, 75.01f), 0);

  EXPECT_EQ(pixelInWindow(s, 200, 100), 1);
  EXPECT_EQ(pixelInWindow(s, 100, 9999), 2);
  EXPECT_EQ(pixelInWindow(s, -5, 150), 2);
  EXPECT_EQ(pixelInWindow(s, 301, 100), 0);
  EXPECT_EQ(pixelInWindow(s, 200, 49), 0);
}

TEST(SideOfLine, LeftRightAndCollinear) {
  EXPECT_EQ(sideOfLine(0, 0, 10, 0, 5, 1), 1);
  EXPECT_EQ(sideOfLine(0, 0, 10, 0, 5, -1), -1);
  EXPECT_EQ(sideOfLine(0, 0, 10, 0, 20, 0), 0);
  EXPECT_EQ(sideOfLine(1, 1, 3, 3, 7, 7), 0);
  EXPECT_EQ(sideOfLine(10, 0, 0, 0, 5, 1), -1);  // the same point, the line reversed
}

TEST_F(ViewTest, SegmentsClippedToTheVisiblePart) {
  float ax = 400, ay = 50, bx = 800, by = 50;
  EXPECT_TRUE(clipToWindow(s, ax, ay, bx, by));
  EXPECT_FLOAT_EQ(ax, 400.0f);
  EXPECT_FLOAT_EQ(bx, 600.0f);

  ax = 100, ay = 50, bx = 700, by = 50;
  EXPECT_TRUE(clipToWindow(s, ax, ay, bx, by));
  EXPECT_FLOAT_EQ(ax, 200.0f);
  EXPECT_FLOAT_EQ(bx, 600.0f);

  // A diagonal leaving through the top: from (400, 50) to (400 + 100, 50 - 50).
  ax = 400, ay = 50, bx = 500, by = 0;
  EXPECT_TRUE(clipToWindow(s, ax, ay, bx, by));
  EXPECT_FLOAT_EQ(bx, 450.0f);
  EXPECT_FLOAT_EQ(by, 25.0f);

  ax = 0, ay = 0, bx = 100, by = 0;
  EXPECT_FALSE(clipToWindow(s, ax, ay, bx, by));
  EXPECT_EQ(bx, 100.0f);
}

// The exports work on the process session: with no image current its view is
// the identity over the whole window.
TEST(ViewExports, IdentityViewOverTheWindow) {
  int status = -1;
  COR_INIT(&status);
  const int width = 100, height = 50;
  MAP_SETWINSIZE(&width, &height);
  EXPECT_EQ(R_MAP_VRATX(), 1.0f);
  EXPECT_EQ(R_MAP_VRATY(), 1.0f);
  float ax = 50, ay = 10, bx = 150, by = 10;
  int visible = -1;
  MAP_WTOVLINE(&ax, &ay, &bx, &by, &visible);
  EXPECT_EQ(visible, 1);
  EXPECT_FLOAT_EQ(bx, 100.0f);
  ax = 150, bx = 200;
  MAP_WTOVLINE(&ax, &ay, &bx, &by, &visible);
  EXPECT_EQ(visible, 0);
  const float x = 100, y = 999;
  EXPECT_EQ(I_MAP_POINTINWIN(&x, &y), 2);
  const int px = 50, py = 25;
  EXPECT_EQ(I_MAP_IPOINTINWIN(&px, &py), 1);
  COR_CLOSE(&status);
}

// Outlines in a window that shows pixels 0..100 one to one.
class OutlineTest : public ViewTest {
 protected:
  void SetUp() override {
    ViewTest::SetUp();
    ViewRecord& v = image->views[0];
    v.x1 = 0;
    v.x2 = 100;
    v.y1 = 0;
    v.y2 = 100;
    v.xScale = 1.0f;
    v.yScale = 1.0f;
    s.setWindowSize(100, 100);
  }
  static std::vector<float> xs(const std::vector<WindowPoint>& p) {
    std::vector<float> out;
    for (const auto& w : p) out.push_back(w.x);
    return out;
  }
  static std::vector<float> ys(const std::vector<WindowPoint>& p) {
    std::vector<float> out;
    for (const auto& w : p) out.push_back(w.y);
    return out;
  }
};

TEST_F(OutlineTest, OutlinesInWindowCoordinates) {
  const struct {
    const char* what;
    std::vector<int> px, py;
    std::vector<float> x, y;
  } cases[] = {
      {"visible: closed on its first vertex", {10, 40, 40, 10}, {20, 20, 60, 60}, {10, 40, 40, 10, 10},
       {20, 20, 60, 60, 20}},
      {"leaving the view: cut at its border", {50, 150, 150, 50}, {20, 20, 80, 80}, {50, 100, 100, 50, 50},
       {20, 20, 80, 80, 20}},
      // Edge 1 enters at x = 100; edge 2 is visible; edge 3 leaves at x = 100;
      // edge 4 lies beyond the view; the first vertex is not visible.
      {"starting outside: not closed", {150, 50, 50, 150}, {20, 20, 80, 80}, {100, 50, 50, 100}, {20, 20, 80, 80}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<WindowPoint> p = outlineToWindow(s, *outline(c.px, c.py));
    EXPECT_EQ(xs(p), c.x);
    EXPECT_EQ(ys(p), c.y);
  }
}

TEST_F(OutlineTest, PointWithinOutlines) {
  CoreRectangle* r = outline({10, 20, 20, 10}, {10, 10, 20, 20});
  EXPECT_TRUE(pointWithin(s, *r, 15, 15));
  EXPECT_TRUE(pointWithin(s, *r, 10, 15));  // on an edge
  EXPECT_TRUE(pointWithin(s, *r, 20, 20));  // a corner
  EXPECT_FALSE(pointWithin(s, *r, 25, 15));
  EXPECT_FALSE(pointWithin(s, *r, 15, 9.9f));
  CoreRectangle* reversed = outline({10, 10, 20, 20}, {10, 20, 20, 10});
  EXPECT_TRUE(pointWithin(s, *reversed, 15, 15));
  // An L: the notch is outside.
  CoreRectangle* l = outline({0, 20, 20, 10, 10, 0}, {0, 0, 10, 10, 20, 20});
  EXPECT_FALSE(pointWithin(s, *l, 15, 15));
  EXPECT_TRUE(pointWithin(s, *l, 5, 15));
  EXPECT_TRUE(pointWithin(s, *l, 15, 5));

  int within = -1;
  const float x = 15, y = 15;
  COR_POPTWITHIN(&r, &x, &y, &within);
  EXPECT_EQ(within, 1);
}

TEST_F(OutlineTest, DraggingACornerKeepsTheRectangle) {
  // Drawn from the top-left clockwise: 1-2 along the top.
  CoreRectangle* r = outline({10, 50, 50, 10}, {10, 10, 30, 30});
  EXPECT_EQ(s.moveCorner(*r, 3, 60, 40), 0);
  EXPECT_EQ(r->polygon.px, (std::vector<int>{10, 60, 60, 10}));
  EXPECT_EQ(r->polygon.py, (std::vector<int>{10, 10, 40, 40}));
  EXPECT_EQ(r->polygon.wx[1], 60.0f);

  // Drawn the other way round: 1-2 down the left side.
  CoreRectangle* q = outline({10, 10, 50, 50}, {10, 30, 30, 10});
  EXPECT_EQ(s.moveCorner(*q, 1, 5, 5), 0);
  EXPECT_EQ(q->polygon.px, (std::vector<int>{5, 5, 50, 50}));
  EXPECT_EQ(q->polygon.py, (std::vector<int>{5, 30, 30, 5}));

  EXPECT_EQ(s.moveCorner(*q, 5, 0, 0), 1);
  CoreRectangle* tri = outline({0, 10, 0}, {0, 0, 10});
  EXPECT_EQ(s.moveCorner(*tri, 1, 3, 3), 1);
  EXPECT_EQ(tri->polygon.px, (std::vector<int>{0, 10, 0}));
}

}  // namespace
}  // namespace subsurf
