// Pieces of a plot drawn into its window: where the pixels land (and where
// they must not), agreement with a whole drawing of the plot, the legend box
// that IZW_LEGOVER tests, and status 1 when there is nothing to draw.
#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "host/drawing/canvas.h"
#include "host/drawing/palette.h"
#include "host/fixed_text.h"
#include "plot/plot_drawing.h"
#include "plot/plot_tree.h"
#include "plot/plot_windows.h"
#include "subsurf/plot.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

constexpr int kWindow = 7;
constexpr int kWidth = 480, kHeight = 360;
constexpr double kDpi = 96.0;
constexpr double kPxPerMm = kDpi / 25.4;

struct Ink {
  int count = 0;
  int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;
  double cx() const { return (left + right) / 2.0; }
  double cy() const { return (top + bottom) / 2.0; }
};

std::uint32_t pixel(cairo_surface_t* s, int x, int y) {
  cairo_surface_flush(s);
  const unsigned char* row = cairo_image_surface_get_data(s) + y * cairo_image_surface_get_stride(s);
  std::uint32_t v;
  std::memcpy(&v, row + 4 * x, 4);
  return v;
}

// Every pixel that is not opaque white.
Ink inkOf(cairo_surface_t* s) {
  Ink ink;
  const int w = cairo_image_surface_get_width(s), h = cairo_image_surface_get_height(s);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      if (pixel(s, x, y) != 0xFFFFFFFFu) {
        ++ink.count;
        ink.left = std::min(ink.left, x);
        ink.right = std::max(ink.right, x);
        ink.top = std::min(ink.top, y);
        ink.bottom = std::max(ink.bottom, y);
      }
  return ink;
}

// True when the pixel is the palette colour (within rounding).
bool isColour(std::uint32_t v, int index) {
  const ss::drawing::Rgb c = ss::drawing::paletteColour(index);
  auto near = [](int got, double want) { return std::abs(got - static_cast<int>(std::lround(want * 255))) <= 2; };
  return near((v >> 16) & 0xFF, c.r) && near((v >> 8) & 0xFF, c.g) && near(v & 0xFF, c.b);
}

class PlotWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZW_ZPINIT();
    image_ = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight);
    clear();
    ASSERT_TRUE(ss::plotWindows().bind(kWindow, image_, kDpi));
    ss::plotTree().current()->windowId = kWindow;
    ss::PlotSet* set = ss::plotTree().currentSet();
    for (int axis = 0; axis < 2; ++axis) {
      ZW_SCALE& s = set->scales[static_cast<std::size_t>(axis)];
      s.TYPE = 1;
      s.MODE = 1;
      s.MIN = 0;
      s.MAX = 10;
    }
  }
  void TearDown() override {
    ss::plotWindows().releaseAll();
    cairo_surface_destroy(image_);
  }

  void clear() {
    cairo_t* cr = cairo_create(image_);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_destroy(cr);
  }

  static void addSymbol(float x, float y, int colour = 3) {
    int status = 1;
    ZW_SYMBADD(&status);
    ASSERT_EQ(status, 0);
    ZW_SYMB s;
    ZW_SYMBGET(&s, &status);
    s.X = x;
    s.Y = y;
    s.STYLE = 1;
    s.COLOUR = colour;
    s.SIZE = 3.0f;
    s.FILL = 1;
    ZW_SYMBDEF(&s, &status);
    ASSERT_EQ(status, 0);
  }

  // The centre of a lone symbol drawn at (x, y), in window pixels.
  Ink symbolAt(float x, float y) {
    clear();
    ss::plotTree().currentSet()->symbols.clear();
    addSymbol(x, y);
    int status = 1;
    ZW_SYMBDRAW(&status);
    EXPECT_EQ(status, 0);
    return inkOf(image_);
  }

  cairo_surface_t* image_ = nullptr;
};

TEST_F(PlotWindowTest, SymbolIsDrawnAtItsDataPositionAndNowhereElse) {
  const Ink at5 = symbolAt(5, 5);
  ASSERT_GT(at5.count, 0);
  // A 3 mm disc: about 11 pixels across at 96 dots per inch.
  EXPECT_NEAR(at5.right - at5.left + 1, 3.0 * kPxPerMm, 2.5);
  EXPECT_NEAR(at5.bottom - at5.top + 1, 3.0 * kPxPerMm, 2.5);
  EXPECT_TRUE(isColour(pixel(image_, static_cast<int>(at5.cx()), static_cast<int>(at5.cy())), 3));
  // The mapping is linear: equal steps in x give equal steps in pixels,
  // rightwards, on the same row; larger y is higher up.
  const Ink at7 = symbolAt(7, 5), at9 = symbolAt(9, 5), up = symbolAt(5, 8);
  EXPECT_GT(at7.cx() - at5.cx(), 20);
  EXPECT_NEAR(at9.cx() - at7.cx(), at7.cx() - at5.cx(), 1.0);
  EXPECT_NEAR(at7.cy(), at5.cy(), 0.5);
  EXPECT_LT(up.cy(), at5.cy() - 20);
  EXPECT_NEAR(up.cx(), at5.cx(), 0.5);
}

TEST_F(PlotWindowTest, SymbolOutsideTheAxesLeavesTheWindowUntouched) {
  const Ink outside = symbolAt(12, 5);
  EXPECT_EQ(outside.count, 0);
  // Partly outside: clipped at the data area, so less than a whole disc.
  const Ink whole = symbolAt(5, 5), edge = symbolAt(10, 5);
  EXPECT_GT(edge.count, 0);
  EXPECT_LT(edge.count, whole.count * 3 / 4);
}

TEST_F(PlotWindowTest, PiecesLandWhereTheWholeDrawingPutsThem) {
  const Ink at = symbolAt(3, 6);
  ss::testing::TempDir dir;
  ss::DrawOptions o;
  o.kind = ss::drawing::OutputKind::Png;
  o.path = dir.file("whole.png");
  o.dpi = kDpi;
  o.widthMm = kWidth / kPxPerMm;
  o.heightMm = kHeight / kPxPerMm;
  o.user = "tester";
  o.date = "2026-01-02";
  ASSERT_TRUE(ss::drawPlot(*ss::plotTree().current(), o));
  cairo_surface_t* whole = cairo_image_surface_create_from_png(o.path.c_str());
  ASSERT_EQ(cairo_surface_status(whole), CAIRO_STATUS_SUCCESS);
  ASSERT_EQ(cairo_image_surface_get_width(whole), kWidth);
  EXPECT_TRUE(isColour(pixel(whole, static_cast<int>(at.cx()), static_cast<int>(at.cy())), 3));
  // The same place one symbol's width away is not the symbol in either.
  const int away = static_cast<int>(at.cx() + 3.0 * kPxPerMm);
  EXPECT_FALSE(isColour(pixel(whole, away, static_cast<int>(at.cy())), 3));
  EXPECT_FALSE(isColour(pixel(image_, away, static_cast<int>(at.cy())), 3));
  cairo_surface_destroy(whole);
}

TEST_F(PlotWindowTest, OneSymbolOrAllOfTheSet) {
  const Ink left = symbolAt(2, 5), middle = symbolAt(5, 5), right = symbolAt(8, 5);
  clear();
  ss::plotTree().currentSet()->symbols.clear();
  addSymbol(2, 5);
  addSymbol(5, 5);
  addSymbol(8, 5);
  int status = 1, second = 2;
  ZW_SYMBSET(&second, &status);
  ASSERT_EQ(status, 0);
  ZW_SYMBDRAW(&status);
  EXPECT_EQ(status, 0);
  const Ink one = inkOf(image_);
  EXPECT_EQ(one.left, middle.left);
  EXPECT_EQ(one.right, middle.right);
  EXPECT_EQ(one.count, middle.count);
  clear();
  ZW_SYMBSDRAW(&status);
  EXPECT_EQ(status, 0);
  const Ink all = inkOf(image_);
  EXPECT_EQ(all.left, left.left);
  EXPECT_EQ(all.right, right.right);
  EXPECT_EQ(all.count, left.count + middle.count + right.count);
}

TEST_F(PlotWindowTest, TextIsCentredOnItsAnchor) {
  const Ink anchor = symbolAt(5, 5);
  clear();
  int status = 1;
  ZW_TEXTADD(&status);
  ASSERT_EQ(status, 0);
  ZW_TEXT t;
  ZW_TEXTGET(&t, &status);
  t.X = 5;
  t.Y = 5;
  t.HEIGHT = 4.0f;
  t.ANGLE = 0;
  t.COLOUR = 1;
  t.ALIGN = 2;
  ss::setFixed(t.TEXT, "HEH");
  ZW_TEXTDEF(&t, &status);
  ASSERT_EQ(status, 0);
  ZW_TEXTDRAW(&status);
  EXPECT_EQ(status, 0);
  const Ink text = inkOf(image_);
  ASSERT_GT(text.count, 0);
  EXPECT_NEAR(text.cx(), anchor.cx(), 2.0);
  EXPECT_NEAR(text.cy(), anchor.cy(), 2.0);
  EXPECT_NEAR(text.bottom - text.top + 1, 4.0 * kPxPerMm, 3.0);  // capitals: the text height
  EXPECT_GT(text.right - text.left, text.bottom - text.top);
  clear();
  ZW_TEXTSDRAW(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(inkOf(image_).count, text.count);
}

TEST_F(PlotWindowTest, LineRunsBetweenItsPoints) {
  const Ink from = symbolAt(1, 5), to = symbolAt(9, 5);
  clear();
  int status = 1;
  ZW_LINEADD(&status);
  ASSERT_EQ(status, 0);
  ss::LineElement* l = ss::plotTree().currentSet()->lines.current();
  ASSERT_NE(l, nullptr);
  l->x = {1, 9};
  l->y = {5, 5};
  l->STYLE = 1;
  l->COLOUR = 4;
  l->WIDTH = 0.5f;
  l->SYMBOL = 0;
  ZW_LINEDRAW(&status);
  EXPECT_EQ(status, 0);
  const Ink line = inkOf(image_);
  EXPECT_NEAR(line.left, from.cx(), 1.5);
  EXPECT_NEAR(line.right, to.cx(), 1.5);
  EXPECT_NEAR(line.cy(), from.cy(), 1.0);
  EXPECT_LE(line.bottom - line.top + 1, 0.5 * kPxPerMm + 2);
  EXPECT_TRUE(isColour(pixel(image_, static_cast<int>(line.cx()), static_cast<int>(std::lround(line.cy()))), 4));
  clear();
  ZW_LINESDRAW(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(inkOf(image_).count, line.count);
}

TEST_F(PlotWindowTest, LegendIsDrawnInsideTheBoxThatLegOverTests) {
  int status = 1;
  char text[40];
  ss::setFixed(text, "Sandstone");
  ZW_LEGADD(text, &status);
  ss::setFixed(text, "Shale");
  ZW_LEGADD(text, &status);
  ASSERT_EQ(status, 0);
  ZW_LEGDRAW(&status);
  EXPECT_EQ(status, 0);
  const Ink legend = inkOf(image_);
  ASSERT_GT(legend.count, 0);

  double left, top, width, height;
  {
    ss::Status opened;
    auto canvas = ss::drawing::Canvas::onImage(image_, kDpi, opened);
    ASSERT_TRUE(canvas);
    ss::PlotPieces pieces(*ss::plotTree().current(), *canvas);
    ASSERT_TRUE(pieces.legendBox(left, top, width, height));
  }
  const float x0 = static_cast<float>(left * kPxPerMm), y0 = static_cast<float>(top * kPxPerMm);
  const float x1 = static_cast<float>((left + width) * kPxPerMm), y1 = static_cast<float>((top + height) * kPxPerMm);
  // What was drawn fills the box (its frame stroke half a line outside).
  EXPECT_NEAR(legend.left, x0, 1.5);
  EXPECT_NEAR(legend.right, x1, 1.5);
  EXPECT_NEAR(legend.top, y0, 1.5);
  EXPECT_NEAR(legend.bottom, y1, 1.5);

  auto over = [](float x, float y) { return IZW_LEGOVER(&x, &y); };
  EXPECT_EQ(over((x0 + x1) / 2, (y0 + y1) / 2), 1);
  EXPECT_EQ(over(x0, y0), 1);  // edges belong to the box
  EXPECT_EQ(over(x1, y1), 1);
  EXPECT_EQ(over(x0 - 0.5f, (y0 + y1) / 2), 0);
  EXPECT_EQ(over(x1 + 0.5f, (y0 + y1) / 2), 0);
  EXPECT_EQ(over((x0 + x1) / 2, y0 - 0.5f), 0);
  EXPECT_EQ(over((x0 + x1) / 2, y1 + 0.5f), 0);
  EXPECT_EQ(IZW_LEGOVER(nullptr, &y0), 0);
}

TEST_F(PlotWindowTest, NothingToDrawIsStatusOne) {
  int status = 0;
  // No symbol, text or line yet: no current element.
  ZW_SYMBDRAW(&status);
  EXPECT_EQ(status, 1);
  status = 0;
  ZW_TEXTDRAW(&status);
  EXPECT_EQ(status, 1);
  status = 0;
  ZW_LINEDRAW(&status);
  EXPECT_EQ(status, 1);
  // A single unnamed set and no rows: no legend to draw or to be over.
  status = 0;
  ZW_LEGDRAW(&status);
  EXPECT_EQ(status, 1);
  float x = kWidth / 2.0f, y = kHeight / 2.0f;
  EXPECT_EQ(IZW_LEGOVER(&x, &y), 0);
  EXPECT_EQ(inkOf(image_).count, 0);

  // A plot without a window draws nowhere.
  addSymbol(5, 5);
  ss::plotTree().current()->windowId = 0;
  status = 0;
  ZW_SYMBDRAW(&status);
  EXPECT_EQ(status, 1);
  ZW_SYMBSDRAW(&status);
  EXPECT_EQ(status, 1);

  // No current plot (and so no current set).
  ZW_ZP* root = nullptr;
  ZW_ZPCURRENT(&root);
  ZW_ZP* kid = nullptr;
  int seq = 0;
  ZW_ZPADDKID(&root, &kid, &seq);
  ZW_ZPREMOVE(&kid, &status);
  ASSERT_EQ(status, 0);
  ZW_ZP* current = root;
  ZW_ZPCURRENT(&current);
  ASSERT_EQ(current, nullptr);
  int xAxis = ZW_AXIS_X;
  status = 0;
  ZW_AXDRAW(&xAxis, &status);
  EXPECT_EQ(status, 1);
  for (auto draw : {ZW_SYMBDRAW, ZW_SYMBSDRAW, ZW_TEXTDRAW, ZW_TEXTSDRAW, ZW_LINEDRAW, ZW_LINESDRAW, ZW_LEGDRAW}) {
    status = 0;
    draw(&status);
    EXPECT_EQ(status, 1);
  }
  EXPECT_EQ(IZW_LEGOVER(&x, &y), 0);
  ZW_ZPDEL(&kid);
}

TEST_F(PlotWindowTest, AxisIsDrawnOutsideTheDataAreaOnItsSide) {
  struct Area {
    double left, right, top, bottom;
  };
  // The data area from where symbols land, for the placements in force (the
  // axes' bands move it).
  auto place = [&](int xPlace, int yPlace) {
    int status = 1, x = ZW_AXIS_X, y = ZW_AXIS_Y;
    ZW_SETAXP(&x, &xPlace, &status);
    ZW_SETAXP(&y, &yPlace, &status);
    const Ink c = symbolAt(5, 5), right = symbolAt(7, 5), up = symbolAt(5, 7);
    const double perX = (right.cx() - c.cx()) / 2, perY = (c.cy() - up.cy()) / 2;
    return Area{c.cx() - 5 * perX, c.cx() + 5 * perX, c.cy() - 5 * perY, c.cy() + 5 * perY};
  };
  auto drawAxis = [&](int axis) {
    clear();
    int status = 1;
    ZW_AXDRAW(&axis, &status);
    EXPECT_EQ(status, 0);
    return inkOf(image_);
  };
  // Any grey within two pixels of (x, y): ticks are thin and anti-aliased, and
  // the area's edges, found from anti-aliased discs, to a pixel or two.
  auto inked = [&](double x, double y) {
    const int px = static_cast<int>(std::lround(x)), py = static_cast<int>(std::lround(y));
    for (int dy = -2; dy <= 2; ++dy)
      for (int dx = -2; dx <= 2; ++dx)
        if ((pixel(image_, px + dx, py + dy) & 0xFF) < 230) return true;
    return false;
  };
  Area a = place(1, 1);
  const Ink x = drawAxis(ZW_AXIS_X);
  ASSERT_GT(x.count, 0);
  EXPECT_GE(x.top, a.bottom - 1);  // ticks point out of the data area
  EXPECT_TRUE(inked(a.left, a.bottom + 2));  // the ticks at both limits
  EXPECT_TRUE(inked(a.right, a.bottom + 2));
  const Ink y = drawAxis(ZW_AXIS_Y);
  ASSERT_GT(y.count, 0);
  EXPECT_LE(y.right, a.left + 1);
  EXPECT_TRUE(inked(a.left - 2, a.bottom));
  EXPECT_TRUE(inked(a.left - 2, a.top));

  a = place(2, 2);  // the other sides
  const Ink xTop = drawAxis(ZW_AXIS_X);
  EXPECT_LE(xTop.bottom, a.top + 1);
  EXPECT_TRUE(inked(a.left, a.top - 2));
  const Ink yRight = drawAxis(ZW_AXIS_Y);
  EXPECT_GE(yRight.left, a.right - 1);
  EXPECT_TRUE(inked(a.right + 2, a.bottom));

  place(0, 1);
  EXPECT_EQ(drawAxis(ZW_AXIS_X).count, 0);  // hidden
  int axis = ZW_AXIS_Z, status = 0;
  ZW_AXDRAW(&axis, &status);
  EXPECT_EQ(status, 1);
  ZW_AXDRAW(nullptr, &status);
  EXPECT_EQ(status, 1);
}

TEST(PlotWindows, AnUnboundWindowIsMadeWhiteAtTheLayoutPage) {
  ZW_ZPINIT();
  ss::PlotRecord* plot = ss::plotTree().current();
  plot->windowId = 9;
  plot->layout.pagex = 100;
  plot->layout.pagey = 50;
  EXPECT_EQ(ss::plotWindows().find(9), nullptr);
  ss::PlotSet* set = ss::plotTree().currentSet();
  ZW_SCALE& sx = set->scales[0];
  sx.TYPE = 1, sx.MODE = 1, sx.MIN = 0, sx.MAX = 1;
  set->scales[1] = sx;
  int status = 1;
  ZW_SYMBADD(&status);
  ZW_SYMBDRAW(&status);
  EXPECT_EQ(status, 0);
  const ss::PlotWindow* w = ss::plotWindows().find(9);
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(cairo_image_surface_get_width(w->image), std::lround(100 * ss::kDefaultWindowDpi / 25.4));
  EXPECT_EQ(cairo_image_surface_get_height(w->image), std::lround(50 * ss::kDefaultWindowDpi / 25.4));
  EXPECT_EQ(pixel(w->image, 0, 0), 0xFFFFFFFFu);
  // A later bind replaces it; id 0 and a surface that is no image are refused.
  cairo_surface_t* other = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 20, 20);
  EXPECT_TRUE(ss::plotWindows().bind(9, other, 72));
  EXPECT_EQ(ss::plotWindows().find(9)->image, other);
  EXPECT_FALSE(ss::plotWindows().bind(0, other, 72));
  EXPECT_FALSE(ss::plotWindows().bind(3, nullptr, 72));
  EXPECT_FALSE(ss::plotWindows().bind(3, other, 5));
  EXPECT_EQ(ss::plotWindows().find(3), nullptr);
  ss::plotWindows().releaseAll();
  cairo_surface_destroy(other);
}

}  // namespace
