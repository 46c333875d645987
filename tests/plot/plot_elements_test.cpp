// The element families of a plot set (symbols, text items, lines), bitmaps and
// legend rows through the C interface: one list mechanism behind all of them.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/nulls.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"
#include "support/temp_dir.h"

namespace {

std::string text(const char* field, std::size_t width) {
  std::string s(field, width);
  return s.substr(0, s.find_last_not_of(' ') + 1);
}

template <std::size_t N>
void put(char (&field)[N], const std::string& s) {
  std::memset(field, ' ', N);
  std::memcpy(field, s.data(), std::min(N, s.size()));
}

class PlotElementsTest : public ::testing::Test {
 protected:
  void SetUp() override { ZW_ZPINIT(); }

  void addSymbolAt(float x, float y) {
    int status = 1;
    ZW_SYMBADD(&status);
    ASSERT_EQ(status, 0);
    ZW_SYMB s;
    ZW_SYMBGET(&s, &status);
    s.X = x;
    s.Y = y;
    ZW_SYMBDEF(&s, &status);
    ASSERT_EQ(status, 0);
  }
  ZW_SYMB currentSymbol() {
    ZW_SYMB s{};
    int status = 1;
    ZW_SYMBGET(&s, &status);
    EXPECT_EQ(status, 0);
    return s;
  }
};

TEST_F(PlotElementsTest, DefaultsAreUnplacedAndStyled) {
  ZW_SYMB s;
  ZW_SYMBDFLT(&s);
  EXPECT_TRUE(subsurf::isNull(s.X));
  EXPECT_TRUE(subsurf::isNull(s.Y));
  EXPECT_EQ(s.STYLE, 1);
  EXPECT_EQ(s.FIXED, 0);
  EXPECT_EQ(text(s.LABEL, 40), "");
  ZW_LINE l;
  ZW_LINEDFLT(&l);
  EXPECT_EQ(l.NPTS, 0);
  EXPECT_EQ(l.STYLE, 1);
  ZW_TEXT t;
  ZW_TEXTDFLT(&t);
  EXPECT_EQ(t.ALIGN, 1);
  ZW_ZBM b;
  ZW_ZBMDFLT(&b);
  EXPECT_TRUE(subsurf::isNull(b.X1));
}

TEST_F(PlotElementsTest, AddedElementsAreAppendedWithFreshIdsAndCurrent) {
  addSymbolAt(1, 1);
  addSymbolAt(2, 2);
  addSymbolAt(3, 3);
  int n = 0;
  ZW_SYMBNSYM(&n);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(currentSymbol().ID, 3);
  EXPECT_EQ(currentSymbol().X, 3.0f);
  int status = -1, two = 2;
  ZW_SYMBSET(&two, &status);
  EXPECT_EQ(status, 0);
  ZW_SYMBDEL(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(currentSymbol().ID, 1);  // the one before the deleted one
  addSymbolAt(4, 4);
  EXPECT_EQ(currentSymbol().ID, 4);  // one above the largest id, not the count
}

TEST_F(PlotElementsTest, SelectingBeyondTheListKeepsTheCurrentOne) {
  addSymbolAt(1, 1);
  addSymbolAt(2, 2);
  int status = -1;
  for (int n : {0, 3, -2}) {
    ZW_SYMBSET(&n, &status);
    EXPECT_EQ(status, 1) << n;
    EXPECT_EQ(currentSymbol().ID, 2) << n;
  }
}

TEST_F(PlotElementsTest, DeletingFromAnEmptyListIsRefused) {
  int status = 0;
  ZW_TEXTDEL(&status);
  EXPECT_EQ(status, 1);
  ZW_TEXT t;
  ZW_TEXTGET(&t, &status);
  EXPECT_EQ(status, 1);
  ZW_TEXTADD(&status);
  ZW_TEXTDEL(&status);
  EXPECT_EQ(status, 0);
  int n = -1;
  ZW_TEXTNTXT(&n);
  EXPECT_EQ(n, 0);
}

TEST_F(PlotElementsTest, DefineKeepsTheIdAndDeleteAllEmpties) {
  int status = 0;
  ZW_TEXTADD(&status);
  ZW_TEXTADD(&status);
  ZW_TEXT t;
  ZW_TEXTDFLT(&t);
  t.ID = 99;
  put(t.TEXT, "Top Brent");
  t.X = 10;
  t.Y = 2500;
  ZW_TEXTDEF(&t, &status);
  ZW_TEXT got;
  ZW_TEXTGET(&got, &status);
  EXPECT_EQ(got.ID, 2);
  EXPECT_EQ(text(got.TEXT, 80), "Top Brent");
  EXPECT_EQ(got.Y, 2500.0f);
  ZW_TEXTDELALL();
  int n = -1;
  ZW_TEXTNTXT(&n);
  EXPECT_EQ(n, 0);
}

TEST_F(PlotElementsTest, ElementsBelongToTheCurrentSet) {
  addSymbolAt(1, 1);
  int status = 0, n = -1;
  ZW_ZPSADD(&status);
  ZW_SYMBNSYM(&n);
  EXPECT_EQ(n, 0);
  ZW_ZP* root = nullptr;
  ZW_ZPROOT(&root);
  int first = 1;
  ZW_ZPSSET(&root, &first, &status);
  ZW_SYMBNSYM(&n);
  EXPECT_EQ(n, 1);
}

TEST_F(PlotElementsTest, CopyAppendsTheCurrentElementToAnotherSet) {
  int status = 0;
  ZW_ZPSADD(&status);
  ZW_ZP* root = nullptr;
  ZW_ZPROOT(&root);
  int first = 1, second = 2, same = 0, none = 3;
  ZW_ZPSSET(&root, &first, &status);
  addSymbolAt(5, 6);
  ZW_SYMBCOPY(&second, &status);
  EXPECT_EQ(status, 0);
  ZW_SYMBCOPY(&same, &status);
  int n = 0;
  ZW_SYMBNSYM(&n);
  EXPECT_EQ(n, 2);
  ZW_SYMBCOPY(&none, &status);
  EXPECT_EQ(status, 1);
  ZW_ZPSSET(&root, &second, &status);
  EXPECT_EQ(currentSymbol().X, 5.0f);
  EXPECT_EQ(currentSymbol().ID, 1);
}

TEST_F(PlotElementsTest, NearestMoveAndFix) {
  addSymbolAt(0, 0);
  addSymbolAt(10, 10);
  addSymbolAt(3, 4);
  int place = 0;
  float d = 0, x = 4, y = 5;
  ZW_SYMBNEAREST(&x, &y, &place, &d);
  EXPECT_EQ(place, 3);
  EXPECT_FLOAT_EQ(d, std::sqrt(2.0f));
  int status = 0;
  float dx = 20, dy = -1;
  ZW_SYMBMOVE(&dx, &dy, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(currentSymbol().X, 23.0f);
  EXPECT_EQ(currentSymbol().Y, 3.0f);
  ZW_SCALE sx{}, sy{};
  int ax = ZW_AXIS_X, ay = ZW_AXIS_Y;
  ZW_ZPSGETSCALE(&ax, &sx, &status);
  ZW_ZPSGETSCALE(&ay, &sy, &status);
  sx.MIN = 0;
  sx.MAX = 12;
  sy.MIN = 5;  // the y maximum stays unset: no upper bound
  ZW_ZPSSETSCALE(&ax, &sx, &status);
  ZW_ZPSSETSCALE(&ay, &sy, &status);
  ZW_SYMBFIX(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(currentSymbol().X, 12.0f);
  EXPECT_EQ(currentSymbol().Y, 5.0f);
  EXPECT_EQ(currentSymbol().FIXED, 1);
  ZW_SYMBMOVE(&dx, &dy, &status);  // a fixed element stays where it is
  EXPECT_EQ(status, 1);
  EXPECT_EQ(currentSymbol().X, 12.0f);
}

TEST_F(PlotElementsTest, NearestOfAnEmptyListOrUnplacedElements) {
  int place = -1;
  float d = 0, x = 0, y = 0;
  ZW_SYMBNEAREST(&x, &y, &place, &d);
  EXPECT_EQ(place, 0);
  EXPECT_TRUE(subsurf::isNull(d));
  int status = 0;
  ZW_SYMBADD(&status);  // no position yet
  ZW_SYMBNEAREST(&x, &y, &place, &d);
  EXPECT_EQ(place, 0);
}

TEST_F(PlotElementsTest, LinesKeepTheirPointsThroughDefineAndMeasureToSegments) {
  int status = 0;
  ZW_LINEADD(&status);
  float x1 = 0, y1 = 0, x2 = 10, y2 = 0;
  ZW_LINEDEF1(&x1, &y1, &x2, &y2, &status);
  ZW_LINE l;
  ZW_LINEGET(&l, &status);
  EXPECT_EQ(l.NPTS, 2);
  l.COLOUR = 7;
  l.NPTS = 0;  // ignored: points are set by the point routines only
  ZW_LINEDEF(&l, &status);
  ZW_LINEGET(&l, &status);
  EXPECT_EQ(l.NPTS, 2);
  EXPECT_EQ(l.COLOUR, 7);
  ZW_LINEADD(&status);
  float bx1 = 20, by1 = 20, bx2 = 30, by2 = 40;
  ZW_BOXDEF(&bx1, &by1, &bx2, &by2, &status);
  ZW_LINEGET(&l, &status);
  EXPECT_EQ(l.NPTS, 5);
  EXPECT_EQ(l.CLOSED, 1);
  float xs[5], ys[5];
  int cap = 5, n = 0;
  ZW_LINEGETPTS(xs, ys, &cap, &n);
  EXPECT_EQ(std::vector<float>(xs, xs + 5), (std::vector<float>{20, 30, 30, 20, 20}));
  EXPECT_EQ(std::vector<float>(ys, ys + 5), (std::vector<float>{20, 20, 40, 40, 20}));
  int place = 0;
  float d = 0, px = 5, py = 3;  // above the middle of the first line's segment
  ZW_LINENEAREST(&px, &py, &place, &d);
  EXPECT_EQ(place, 1);
  EXPECT_FLOAT_EQ(d, 3.0f);
  float dx = 1, dy = 2;
  ZW_LINEMOVE(&dx, &dy, &status);
  ZW_LINEGETPTS(xs, ys, &cap, &n);
  EXPECT_EQ(xs[0], 21.0f);
  EXPECT_EQ(ys[2], 42.0f);
  ZW_ZP* root = nullptr;
  ZW_ZPROOT(&root);
  ZW_LINEDELZP(&root);
  ZW_LINENLIN(&n);
  EXPECT_EQ(n, 0);
}

TEST_F(PlotElementsTest, CopyDefinitionsToEverySet) {
  auto& tree = subsurf::plotTree();
  int status = 0;
  ZW_ZPSADD(&status);
  ZW_ZPSADD(&status);
  subsurf::PlotRecord* root = tree.root();
  root->sets[1].defs.iop[49] = 12;
  root->sets[1].defs.rop[5] = 2.5f;
  root->sets[1].defs.black = 1;
  root->sets[1].name = "source";
  int from = 2;
  ZW_ZPSCOPYDEFS(&from, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(root->currentSet, 3);  // the current set is kept
  for (const auto& set : root->sets) {
    EXPECT_EQ(set.defs, root->sets[1].defs);
  }
  EXPECT_EQ(root->sets[0].name, "");  // only definitions travel
  int beyond = 4;
  ZW_ZPSCOPYDEFS(&beyond, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(PlotElementsTest, BitmapsBySeq) {
  int status = 0, n = 0;
  ZW_ZBMADD(&status);
  ZW_ZBM b;
  ZW_ZBMGET(&b, &status);
  b.SEQ = 30;
  put(b.FILE, "core_01.png");
  ZW_ZBMDEF(&b, &status);
  ZW_ZBMADD(&status);
  ZW_ZBMNBM(&n);
  EXPECT_EQ(n, 2);
  int seq = 30;
  ZW_ZBMSEQSET(&seq, &status);
  EXPECT_EQ(status, 0);
  ZW_ZBMGET(&b, &status);
  EXPECT_EQ(text(b.FILE, 260), "core_01.png");
  seq = 31;
  ZW_ZBMSEQSET(&seq, &status);
  EXPECT_EQ(status, 1);
  ZW_ZBMDEL(&status);
  ZW_ZBMNBM(&n);
  EXPECT_EQ(n, 1);
  ZW_ZP* root = nullptr;
  ZW_ZPROOT(&root);
  ZW_ZBMDELZP(&root);
  ZW_ZBMNBM(&n);
  EXPECT_EQ(n, 0);
}

TEST_F(PlotElementsTest, LegendRowsOfEveryKind) {
  char label[40];
  int status = 0, is = -1;
  ZW_LEGIS(&is);
  EXPECT_EQ(is, 0);
  put(label, "Porosity");
  ZW_LEGADD(label, &status);
  int colour = 3, style = 2, kind = 7;
  float width = 0.5f;
  put(label, "Trend");
  ZW_LEGADDLINE(label, &colour, &style, &width, &status);
  ZW_LEGADDSHAD(label, &colour, &style, &status);
  ZW_LEGADDSYMB(label, &colour, &style, &width, &status);
  ZW_LEGADDPT(label, &colour, &style, &status);
  ZW_LEGADDF(label, &kind, &colour, &style, &status);
  EXPECT_EQ(status, 1);  // no such kind
  char name[40];
  put(name, "Well A");
  ZW_ZPSSETNAME(name);
  ZW_LEGADDZPS(&status);
  ZW_LEG rows[8];
  int cap = 8, n = 0;
  ZW_LEGGETALL(rows, &cap, &n);
  ASSERT_EQ(n, 6);
  std::vector<int> kinds;
  for (int k = 0; k < n; ++k) kinds.push_back(rows[k].KIND);
  EXPECT_EQ(kinds, (std::vector<int>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(text(rows[0].TEXT, 40), "Porosity");
  EXPECT_EQ(text(rows[5].TEXT, 40), "Well A");
  EXPECT_EQ(rows[1].SIZE, 0.5f);
  ZW_LEG row;
  int third = 3;
  ZW_LEGGET(&third, &row, &status);
  EXPECT_EQ(row.KIND, 3);
  third = 7;
  ZW_LEGGET(&third, &row, &status);
  EXPECT_EQ(status, 1);
  ZW_LEGIS(&is);
  EXPECT_EQ(is, 1);
  float fx = 1.5f, fy = 0.25f;
  ZW_LEGPOSITION(&fx, &fy);
  EXPECT_EQ(subsurf::plotTree().current()->legend.fx, 1.0f);
  EXPECT_EQ(subsurf::plotTree().current()->legend.fy, 0.25f);
  ZW_LEGDFLT();
  ZW_LEGIS(&is);
  EXPECT_EQ(is, 0);
  EXPECT_EQ(subsurf::plotTree().current()->legend.fx, 0.98f);
}

TEST_F(PlotElementsTest, ReinitEmptiesSetsButKeepsTheirDefinitions) {
  auto& tree = subsurf::plotTree();
  addSymbolAt(1, 2);
  int status = 0, ax = ZW_AXIS_X, one = 1;
  float v = 3;
  ZW_ZPSSETDATA(&ax, &one, &v, &status);
  ZW_ZBMADD(&status);
  char label[40];
  put(label, "row");
  ZW_LEGADD(label, &status);
  tree.root()->sets[0].defs.iop[0] = 4;
  ZW_ZP* root = tree.root();
  ZW_ZPREINIT(&root);
  int n = -1;
  ZW_SYMBNSYM(&n);
  EXPECT_EQ(n, 0);
  ZW_ZPNPTS(&root, &n);
  EXPECT_EQ(n, 0);
  ZW_ZBMNBM(&n);
  EXPECT_EQ(n, 0);
  ZW_LEGIS(&n);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(tree.root()->sets[0].defs.iop[0], 4);
}

}  // namespace

namespace {

TEST(PlotBlockDefaults, EachBlockGoesBackToItsDefaults) {
  ZW_ZPINIT();
  auto& tree = subsurf::plotTree();
  subsurf::PlotRecord* p = tree.current();
  p->fields.title = "x";
  p->fields.grlc1 = 7;
  p->annotation.texts[4] = {"centre"};
  p->layout.pagex = 100;
  subsurf::PlotSet& s = p->sets[0];
  s.sym = 5;
  s.defs.iop[3] = 9;
  s.labels[0] = "Depth";
  s.data[0] = {1, 2};
  int status = 0;
  ZW_SYMBADD(&status);
  ZW_ZPSDFLT();
  EXPECT_EQ(s.sym, subsurf::PlotSet().sym);
  EXPECT_EQ(s.defs, subsurf::PlotSet().defs);
  EXPECT_EQ(s.labels[0], "");
  EXPECT_EQ(s.data[0], (std::vector<float>{1, 2}));  // contents stay
  EXPECT_EQ(s.symbols.count(), 1);
  ZW_ZP* none = nullptr;
  ZW_ZPDFLT(&none);
  EXPECT_EQ(p->fields, subsurf::PlotFields());
  ZW_ANNINIT(&none);
  EXPECT_EQ(p->annotation, subsurf::defaultAnnotation());
  EXPECT_EQ(p->annotation.texts[0], std::vector<std::string>{"@user"});
  EXPECT_EQ(p->annotation.texts[2], std::vector<std::string>{"@date"});
  ZW_LAYDFLT(&none);
  EXPECT_EQ(p->layout, subsurf::Layout());
}

TEST(PlotBlockDefaults, DrawTheCurrentPlotThroughTheCInterface) {
  subsurf::testing::TempDir dir;
  ZW_ZPINIT();
  subsurf::host::clearRecorded();
  std::string name = dir.file("current.png");
  name.resize(260, ' ');
  const float dpi = 50;
  int status = -1;
  ZW_ZP* none = nullptr;
  ZW_ZPDRAW(&none, name.c_str(), &dpi, &status);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(std::filesystem::exists(dir.file("current.png")));
  std::string bad = dir.file("current.bmp");
  bad.resize(260, ' ');
  ZW_ZPDRAW(&none, bad.c_str(), &dpi, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(subsurf::host::recordedMessages(),
            std::vector<std::string>{dir.file("current.bmp") + ": the name must end in .svg, .png or .pdf"});
}

}  // namespace

namespace {

std::vector<float> pointsOf(bool xAxis) {
  float xs[32], ys[32];
  int cap = 32, n = 0;
  ZW_LINEGETPTS(xs, ys, &cap, &n);
  return xAxis ? std::vector<float>(xs, xs + n) : std::vector<float>(ys, ys + n);
}

class LineGeometry : public ::testing::Test {
 protected:
  void SetUp() override {
    ZW_ZPINIT();
    int status = 0, ax = ZW_AXIS_X, ay = ZW_AXIS_Y;
    ZW_SCALE s = subsurf::defaultScale();
    s.MIN = 0;
    s.MAX = 10;
    ZW_ZPSSETSCALE(&ax, &s, &status);
    s.MIN = 10;  // a reversed y axis: 10 at the bottom, 0 at the top
    s.MAX = 0;
    ZW_ZPSSETSCALE(&ay, &s, &status);
    ZW_LINEADD(&status);
  }
  void define(std::vector<float> x, std::vector<float> y) {
    const int n = static_cast<int>(x.size());
    int status = 1;
    ZW_LINEDEFPTS(&n, x.data(), y.data(), &status);
    ASSERT_EQ(status, 0);
  }
};

TEST_F(LineGeometry, TransformScalesAndShiftsButKeepsNulls) {
  define({1, subsurf::kRealNull, 3}, {2, 4, 6});
  const float a = 2, b = 1, c = -1, d = 10;
  int status = 1;
  ZW_LINETR(&a, &b, &c, &d, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(pointsOf(true), (std::vector<float>{3, subsurf::kRealNull, 7}));
  EXPECT_EQ(pointsOf(false), (std::vector<float>{8, 6, 4}));
  ZW_LINETRX(&a, &b, &status);
  EXPECT_EQ(pointsOf(true), (std::vector<float>{7, subsurf::kRealNull, 15}));
  EXPECT_EQ(pointsOf(false), (std::vector<float>{8, 6, 4}));
}

TEST_F(LineGeometry, ClipCutsAtTheEdgesAndSeparatesPieces) {
  // In, out across the right edge, back in, then wholly outside above.
  define({5, 15, 5, 5}, {5, 5, 8, 20});
  int status = 1;
  ZW_LINECLIP(&status);
  EXPECT_EQ(status, 0);
  const float N = subsurf::kRealNull;
  EXPECT_EQ(pointsOf(true), (std::vector<float>{5, 10, N, 10, 5, 5}));
  EXPECT_EQ(pointsOf(false), (std::vector<float>{5, 5, N, 6.5f, 8, 10}));
}

TEST_F(LineGeometry, ClipOfABoxCutsItsOutlineNotTheArea) {
  float x1 = -5, y1 = 5, x2 = 5, y2 = 15;
  int status = 1;
  ZW_BOXDEF(&x1, &y1, &x2, &y2, &status);
  ZW_LINECLIP(&status);
  ZW_LINE l;
  ZW_LINEGET(&l, &status);
  EXPECT_EQ(l.CLOSED, 0);
  // Of the outline only the bottom edge from x = 0 and the right edge up to
  // y = 10 lie inside; they join at the corner (5, 5).
  EXPECT_EQ(pointsOf(true), (std::vector<float>{0, 5, 5}));
  EXPECT_EQ(pointsOf(false), (std::vector<float>{5, 5, 10}));
  // Wholly outside: nothing is left.
  define({20, 30}, {1, 2});
  ZW_LINECLIP(&status);
  EXPECT_TRUE(pointsOf(true).empty());
}

}  // namespace
