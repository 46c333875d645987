// Drawing plots: ticks whose labels never overlap, tick and annotation texts,
// the palette, pages written as SVG, PNG and PDF, and what lands on a page.
#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "host/drawing/canvas.h"
#include "host/drawing/palette.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/axis_ticks.h"
#include "plot/plot_drawing.h"
#include "support/temp_dir.h"

namespace ss = subsurf;
namespace dr = subsurf::drawing;

namespace {

ZW_SCALE scale(int type, float min, float max, const char* unit = "") {
  ZW_SCALE s = ss::defaultScale();
  s.TYPE = type;
  s.MODE = 1;
  s.MIN = min;
  s.MAX = max;
  ss::setFixed(s.UNIT, unit);
  return s;
}

// Labels 0.6 of a 3 mm height per character wide, as a sans face roughly is.
double width(const std::string& s) { return 1.8 * static_cast<double>(s.size()); }

std::vector<std::string> labels(const std::vector<ss::Tick>& ticks) {
  std::vector<std::string> out;
  for (const auto& t : ticks)
    if (!t.label.empty()) out.push_back(t.label);
  return out;
}

void expectNoOverlap(const std::vector<ss::Tick>& ticks, double length, double gap, const std::string& what) {
  std::vector<const ss::Tick*> l;
  for (const auto& t : ticks)
    if (!t.label.empty()) l.push_back(&t);
  std::sort(l.begin(), l.end(), [](auto a, auto b) { return a->fraction < b->fraction; });
  for (std::size_t k = 1; k < l.size(); ++k) {
    const double space = (l[k]->fraction - l[k - 1]->fraction) * length;
    EXPECT_GE(space + 1e-9, (width(l[k]->label) + width(l[k - 1]->label)) / 2 + gap)
        << what << ": " << l[k - 1]->label << " and " << l[k]->label;
  }
  for (const auto& t : ticks) {
    EXPECT_GE(t.fraction, 0.0) << what;
    EXPECT_LE(t.fraction, 1.0) << what;
  }
}

TEST(AxisTicks, LabelsNeverOverlapOnAnyTypeOrLength) {
  const std::vector<std::pair<float, float>> ranges = {{0, 1},      {0, 10},      {-3, 3},         {0.001f, 1000},
                                                       {1, 99},     {1234, 1297}, {-0.004f, 0.017f}, {2500, 2700},
                                                       {1e6, 9e7},  {0.1f, 0.2f}, {1, 1.0001f},    {-5e-7f, 5e-7f}};
  for (int type = 1; type <= 8; ++type)
    for (const auto& [lo, hi] : ranges)
      for (double length : {15.0, 40.0, 90.0, 250.0}) {
        const ZW_SCALE s = ss::drawableScale(scale(type, lo, hi));
        const auto ticks = ss::axisTicks(s, length, width, 2.0);
        expectNoOverlap(ticks, length, 2.0, ss::scaleTypeName(type) + " " + std::to_string(lo) + ".." +
                                                std::to_string(hi) + " on " + std::to_string(length));
        if (length >= 90) {
          EXPECT_GE(labels(ticks).size(), 2u) << type << " " << lo << ".." << hi;
        }
      }
}

TEST(AxisTicks, LinearStepsAreNiceAndFillTheAxis) {
  EXPECT_EQ(labels(ss::axisTicks(scale(1, 0, 10), 100, width, 2)),
            (std::vector<std::string>{"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}));
  EXPECT_EQ(labels(ss::axisTicks(scale(1, 0, 10), 30, width, 2)),
            (std::vector<std::string>{"0", "2", "4", "6", "8", "10"}));
  EXPECT_EQ(labels(ss::axisTicks(scale(1, 0, 10), 12, width, 2)), (std::vector<std::string>{"0", "5", "10"}));
  EXPECT_EQ(labels(ss::axisTicks(scale(1, 0, 0.3f), 60, width, 2)),
            (std::vector<std::string>{"0.00", "0.05", "0.10", "0.15", "0.20", "0.25", "0.30"}));
  EXPECT_EQ(labels(ss::axisTicks(scale(1, -1, 1), 60, width, 2)),
            (std::vector<std::string>{"-1.0", "-0.5", "0.0", "0.5", "1.0"}));
}

TEST(AxisTicks, LogAxesLabelDecades) {
  EXPECT_EQ(labels(ss::axisTicks(scale(2, 0.01f, 100), 100, width, 2)),
            (std::vector<std::string>{"0.01", "0.1", "1", "10", "100"}));
  // Crowded: every other decade.
  EXPECT_EQ(labels(ss::axisTicks(scale(2, 0.01f, 100), 22, width, 2)), (std::vector<std::string>{"0.01", "1", "100"}));
  // Beyond a million the labels turn to powers.
  EXPECT_EQ(labels(ss::axisTicks(scale(2, 1e6, 1e8), 100, width, 2)), (std::vector<std::string>{"1000000", "1e7", "1e8"}));
  // Within a decade the axis is labelled on round numbers.
  EXPECT_EQ(labels(ss::axisTicks(scale(2, 2500, 2700), 100, width, 2)),
            (std::vector<std::string>{"2500", "2520", "2540", "2560", "2580", "2600", "2620", "2640", "2660", "2680", "2700"}));
  // Less than two decades: 2 and 5 are labelled too.
  EXPECT_EQ(labels(ss::axisTicks(scale(2, 1, 10), 100, width, 2)), (std::vector<std::string>{"1", "2", "5", "10"}));
}

TEST(AxisTicks, NormAxisUsesProbabilityLabels) {
  const auto l = labels(ss::axisTicks(scale(6, 1, 99), 200, width, 2));
  EXPECT_EQ(l, (std::vector<std::string>{"1", "5", "10", "20", "30", "40", "50", "60", "70", "80", "90", "95", "99"}));
  // Short: the middle and the ends stay.
  EXPECT_EQ(labels(ss::axisTicks(scale(6, 1, 99), 15, width, 2)), (std::vector<std::string>{"1", "50", "99"}));
}

TEST(AxisTicks, DateAxesLabelMonthsAndYears) {
  EXPECT_EQ(ss::dateSeconds(1846, 7, 30), 0.0);
  EXPECT_EQ(ss::dateSeconds(1846, 7, 31), 86400.0);
  const ZW_SCALE months = scale(1, static_cast<float>(ss::dateSeconds(2024, 11, 10)),
                                static_cast<float>(ss::dateSeconds(2025, 3, 20)), "date");
  EXPECT_EQ(labels(ss::axisTicks(months, 120, width, 2)), (std::vector<std::string>{"Dec 2024", "Jan 2025", "Feb", "Mar"}));
  const ZW_SCALE years = scale(1, static_cast<float>(ss::dateSeconds(1990, 1, 1)),
                               static_cast<float>(ss::dateSeconds(2020, 1, 1)), "DATE");
  EXPECT_EQ(labels(ss::axisTicks(years, 100, width, 2)),
            (std::vector<std::string>{"1990", "1995", "2000", "2005", "2010", "2015", "2020"}));
}

TEST(AxisTicks, LabelsOfNumbers) {
  EXPECT_EQ(ss::tickLabel(0.25, 0.05), "0.25");
  EXPECT_EQ(ss::tickLabel(-0.0, 0.1), "0.0");
  EXPECT_EQ(ss::tickLabel(-1e-17, 0.5), "0.0");
  EXPECT_EQ(ss::tickLabel(1000, 250), "1000");
  EXPECT_EQ(ss::tickLabel(2.5, 2.5), "2.5");
  EXPECT_EQ(ss::tickLabel(5e7, 1e7), "5e+07");
  EXPECT_EQ(ss::tickLabel(3e-6, 1e-6), "3e-06");
}

TEST(DrawableScale, MovesLimitsATypeCannotShow) {
  ZW_SCALE s = ss::drawableScale(scale(2, 0, 100));
  EXPECT_FLOAT_EQ(s.MIN, 0.1f);
  s = ss::drawableScale(scale(5, 0, 12));
  EXPECT_FLOAT_EQ(s.MIN, 0.12f);
  s = ss::drawableScale(scale(6, 0, 100));
  EXPECT_FLOAT_EQ(s.MIN, 0.1f);
  EXPECT_FLOAT_EQ(s.MAX, 99.9f);
  s = ss::drawableScale(scale(5, -1, 1));  // a reciprocal axis cannot pass through 0
  EXPECT_FLOAT_EQ(s.MIN, 0.1f);
  EXPECT_FLOAT_EQ(s.MAX, 1.0f);
  s = ss::drawableScale(scale(1, ss::kRealNull, ss::kRealNull));
  EXPECT_FLOAT_EQ(s.MIN, 0.0f);
  EXPECT_FLOAT_EQ(s.MAX, 1.0f);
}

TEST(Annotation, PlaceholdersAreReplaced) {
  EXPECT_EQ(ss::annotationText("Drawn by @user on @date", "jo", "2026-11-23"), "Drawn by jo on 2026-11-23");
  EXPECT_EQ(ss::annotationText("@user@user @dat", "a", "d"), "aa @dat");
}

// ---- The palette -----------------------------------------------------------

// Colour seen with a deficiency (Machado, Oliveira and Fernandes 2009, severity 1).
struct Lab {
  double l, a, b;
};
double linear(double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); }
double gammaOf(double c) {
  c = std::clamp(c, 0.0, 1.0);
  return c <= 0.0031308 ? 12.92 * c : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
}
dr::Rgb simulate(const dr::Rgb& c, const double m[9]) {
  const double r = linear(c.r), g = linear(c.g), b = linear(c.b);
  return {gammaOf(m[0] * r + m[1] * g + m[2] * b), gammaOf(m[3] * r + m[4] * g + m[5] * b),
          gammaOf(m[6] * r + m[7] * g + m[8] * b)};
}
Lab toLab(const dr::Rgb& c) {
  const double r = linear(c.r), g = linear(c.g), b = linear(c.b);
  const double x = (0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.95047, y = 0.2126 * r + 0.7152 * g + 0.0722 * b,
               z = (0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.08883;
  auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
  return {116 * f(y) - 16, 500 * (f(x) - f(y)), 200 * (f(y) - f(z))};
}
double deltaE(const dr::Rgb& a, const dr::Rgb& b) {
  const Lab p = toLab(a), q = toLab(b);
  return std::hypot(p.l - q.l, p.a - q.a, p.b - q.b);
}

TEST(Palette, HasAHundredDistinctEntries) {
  std::set<std::string> seen;
  for (int k = 0; k < dr::kPaletteSize; ++k) seen.insert(dr::paletteHex(k).data());
  EXPECT_GE(dr::kPaletteSize, 100);
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(dr::kPaletteSize));
  EXPECT_STREQ(dr::paletteHex(0).data(), "#ffffff");
  EXPECT_STREQ(dr::paletteHex(1).data(), "#000000");
  EXPECT_STREQ(dr::paletteHex(2).data(), "#e69f00");
  // Indices beyond the table wrap into the colours, never to white or black.
  EXPECT_STREQ(dr::paletteHex(128).data(), dr::paletteHex(2).data());
  EXPECT_STREQ(dr::paletteHex(-1).data(), dr::paletteHex(125).data());
}

TEST(Palette, FirstColoursStayApartForCommonColourBlindness) {
  static constexpr double kNormal[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  static constexpr double kProtan[9] = {0.152286, 1.052583, -0.204868, 0.114503, 0.786281, 0.099216,
                                        -0.003882, -0.048116, 1.051998};
  static constexpr double kDeutan[9] = {0.367322, 0.860646, -0.227968, 0.280085, 0.672501, 0.047413,
                                        -0.011820, 0.042940, 0.968881};
  static constexpr double kTritan[9] = {1.255528, -0.076749, -0.178779, -0.078411, 0.930809, 0.147602,
                                        0.004733, 0.691367, 0.303900};
  for (const double* m : {kNormal, kProtan, kDeutan, kTritan}) {
    // The data colours 2..8, and black: each pair differs visibly (CIE76 above 12).
    for (int a = 1; a <= 8; ++a)
      for (int b = a + 1; b <= 8; ++b) {
        if (a == 1 && b == 1) continue;
        EXPECT_GT(deltaE(simulate(dr::paletteColour(a), m), simulate(dr::paletteColour(b), m)), 12.0)
            << a << " and " << b << (m == kNormal ? " (normal vision)" : m == kProtan ? " (protanopia)" : m == kDeutan ? " (deuteranopia)" : " (tritanopia)");
      }
  }
}

// ---- Pages -----------------------------------------------------------------

std::string head(const std::string& path, std::size_t n) {
  std::ifstream in(path, std::ios::binary);
  std::string s(n, '\0');
  in.read(s.data(), static_cast<std::streamsize>(n));
  s.resize(static_cast<std::size_t>(in.gcount()));
  return s;
}

TEST(Canvas, KindsFromFileNames) {
  dr::OutputKind k;
  EXPECT_TRUE(dr::outputKindOf("a/b/plot.SVG", k));
  EXPECT_EQ(k, dr::OutputKind::Svg);
  EXPECT_TRUE(dr::outputKindOf("plot.png", k));
  EXPECT_EQ(k, dr::OutputKind::Png);
  EXPECT_TRUE(dr::outputKindOf("plot.Pdf", k));
  EXPECT_EQ(k, dr::OutputKind::Pdf);
  EXPECT_FALSE(dr::outputKindOf("plot.jpg", k));
  EXPECT_FALSE(dr::outputKindOf("plot", k));
}

TEST(Canvas, EachKindWritesItsFormatAndPngFollowsTheDpi) {
  ss::testing::TempDir dir;
  const dr::PageSetup page{101.6, 50.8, 200};  // 4 x 2 inches
  for (auto [kind, name, magic] : {std::tuple{dr::OutputKind::Svg, "p.svg", std::string("<?xml")},
                                   std::tuple{dr::OutputKind::Pdf, "p.pdf", std::string("%PDF-")},
                                   std::tuple{dr::OutputKind::Png, "p.png", std::string("\x89PNG")}}) {
    ss::Status s;
    auto c = dr::Canvas::open(kind, dir.file(name), page, s);
    ASSERT_TRUE(c) << s.message();
    c->setColour(3);
    cairo_rectangle(c->cr(), 10, 10, 20, 20);
    cairo_fill(c->cr());
    EXPECT_FALSE(std::filesystem::exists(dir.file(name)));  // not before finish
    ASSERT_TRUE(c->finish().isOk());
    EXPECT_EQ(head(dir.file(name), magic.size()), magic) << name;
  }
  cairo_surface_t* png = cairo_image_surface_create_from_png(dir.file("p.png").c_str());
  EXPECT_EQ(cairo_image_surface_get_width(png), 800);
  EXPECT_EQ(cairo_image_surface_get_height(png), 400);
  // The square from (10, 10) mm is at 78.7 pixels and more.
  cairo_surface_flush(png);
  const auto* px = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(png) +
                                                          100 * cairo_image_surface_get_stride(png));
  EXPECT_EQ(px[100] & 0xFFFFFF, 0x56B4E9u);
  cairo_surface_destroy(png);
  const std::string svg = head(dir.file("p.svg"), 400);
  EXPECT_NE(svg.find("width=\"288pt\" height=\"144pt\""), std::string::npos) << svg;
}

TEST(Canvas, AnAbandonedPageLeavesTheOldFileWhole) {
  ss::testing::TempDir dir;
  const std::string path = dir.write("kept.svg", "old");
  {
    ss::Status s;
    auto c = dr::Canvas::open(dr::OutputKind::Svg, path, dr::PageSetup{}, s);
    ASSERT_TRUE(c);
    cairo_paint(c->cr());
  }
  EXPECT_EQ(head(path, 10), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST(Canvas, RefusesImpossiblePages) {
  ss::testing::TempDir dir;
  ss::Status s;
  EXPECT_FALSE(dr::Canvas::open(dr::OutputKind::Png, dir.file("a.png"), dr::PageSetup{297, 210, 5000}, s));
  EXPECT_EQ(s.message(), dir.file("a.png") + ": 5000 dots per inch on 297 x 210 mm is too large or too small a picture");
  EXPECT_FALSE(dr::Canvas::open(dr::OutputKind::Svg, dir.file("a.svg"), dr::PageSetup{0, 210, 100}, s));
  EXPECT_EQ(s.message(), dir.file("a.svg") + ": page size 0 x 210 mm is not drawable");
  EXPECT_FALSE(dr::Canvas::open(dr::OutputKind::Svg, dir.file("none/a.svg"), dr::PageSetup{}, s));
  EXPECT_FALSE(s.isOk());
  EXPECT_FALSE(std::filesystem::exists(dir.file("a.png")));
}

// A plot of one set whose markers are the only thing in its colour.
ss::PlotRecord onePointPlot(float x, float y) {
  ss::PlotRecord p;
  p.annotation.texts = {};
  p.fields.grlc1 = 0;
  p.sets.emplace_back();
  ss::PlotSet& s = p.sets.back();
  s.syrgb = {213, 94, 0};
  s.defs.iop[0] = 40;  // 4 mm markers
  s.data[0] = {x, ss::kRealNull, std::nanf(""), 1e30f};
  s.data[1] = {y, 5, 5, 5};
  s.scales[0] = scale(1, 0, 10);
  s.scales[1] = scale(1, 0, 10);
  return p;
}

int pixelsOfColour(const std::string& png, std::uint32_t rgb, int* meanX = nullptr) {
  cairo_surface_t* img = cairo_image_surface_create_from_png(png.c_str());
  // Pages are opaque: blending markers must not wear the alpha down.
  EXPECT_EQ(cairo_image_surface_get_format(img), CAIRO_FORMAT_RGB24) << png;
  cairo_surface_flush(img);
  const int w = cairo_image_surface_get_width(img), h = cairo_image_surface_get_height(img);
  int n = 0;
  long sumX = 0;
  for (int y = 0; y < h; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(img) + y * cairo_image_surface_get_stride(img));
    for (int x = 0; x < w; ++x)
      if ((row[x] & 0xFFFFFF) == rgb) ++n, sumX += x;
  }
  cairo_surface_destroy(img);
  if (meanX) *meanX = n ? static_cast<int>(sumX / n) : -1;
  return n;
}

TEST(DrawPlot, MarkersLandWhereTheirValuesSayAndBadValuesAreLeftOut) {
  ss::testing::TempDir dir;
  for (bool many : {false, true}) {  // drawn as paths, and stamped into the raster
    ss::PlotRecord left = onePointPlot(1, 5), right = onePointPlot(9, 5);
    if (many)
      for (auto* p : {&left, &right}) {
        p->sets[0].data[0].resize(1000, p->sets[0].data[0][0]);
        p->sets[0].data[1].resize(1000, 5);
      }
    ss::DrawOptions o;
    o.kind = dr::OutputKind::Png;
    o.dpi = 100;
    o.path = dir.file("left.png");
    ASSERT_TRUE(ss::drawPlot(left, o).isOk());
    o.path = dir.file("right.png");
    ASSERT_TRUE(ss::drawPlot(right, o).isOk());
    int lx = 0, rx = 0;
    const int ln = pixelsOfColour(dir.file("left.png"), 0xD55E00, &lx);
    const int rn = pixelsOfColour(dir.file("right.png"), 0xD55E00, &rx);
    // A 4 mm disc at 100 dpi covers about 194 pixels, most of them in the full colour.
    EXPECT_GT(ln, 100) << many;
    EXPECT_LT(ln, 260) << many;
    EXPECT_NEAR(rn, ln, 30) << many;
    EXPECT_GT(rx - lx, 500) << many;  // 8 of the 10 units of a 1170-pixel page's data area
  }
}

TEST(DrawPlot, WritesEveryKindAndTellsAMissingBitmap) {
  ss::testing::TempDir dir;
  ss::host::clearRecorded();
  ss::PlotRecord p = onePointPlot(3, 3);
  p.fields.title = "Title";
  p.sets[0].labels[0] = "Porosity";
  ss::setFixed(p.sets[0].scales[0].UNIT, "frac");
  ZW_ZBM b = ss::defaultBitmap();
  ss::setFixed(b.FILE, dir.file("missing.png"));
  p.bitmaps.add(b);
  for (const char* name : {"p.svg", "p.pdf", "p.png"}) {
    ss::DrawOptions o;
    ASSERT_TRUE(dr::outputKindOf(name, o.kind));
    o.path = dir.file(name);
    const ss::Status s = ss::drawPlot(p, o);
    EXPECT_TRUE(s.isOk()) << s.message();
    EXPECT_GT(std::filesystem::file_size(o.path), 1000u) << name;
  }
  const auto messages = ss::host::recordedMessages();
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_EQ(messages[0], "Cannot draw the bitmap " + dir.file("missing.png") + " (only PNG files are drawn)");
}

}  // namespace
