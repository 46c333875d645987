// Points coloured by the class of a third column: classes of boundary values,
// round class ranges from the data, the colour bar's texts and its boxes as
// drawn, and `subsurf plot xy --colour` with a colour-map file in and out.
#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/drawing/palette.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/class_colouring.h"
#include "plot/colour_bar.h"
#include "plot/crossplot.h"
#include "plot/fitted_line.h"
#include "plot/plot_drawing.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

ss::PlotRecord pointsPlot(std::size_t n) {
  ss::CrossplotData data;
  for (std::size_t i = 0; i < n; ++i) {
    data.x.push_back(static_cast<float>(i));
    data.y.push_back(static_cast<float>(i % 7));
  }
  ss::AxisRequest x, y;
  x.column = "x";
  y.column = "y";
  return ss::makeCrossplot(data, x, y, "", "set");
}

std::array<int, 3> rgbOf(int index) {
  const ss::drawing::Rgb c = ss::drawing::paletteColour(index);
  return {static_cast<int>(std::lround(c.r * 255)), static_cast<int>(std::lround(c.g * 255)),
          static_cast<int>(std::lround(c.b * 255))};
}

}  // namespace

TEST(ClassColouring, ClassesFromTheDataHaveRoundBounds) {
  ss::ColourMap map;
  ASSERT_TRUE(ss::colourMapForValues({0.002f, 0.3f, 0.597f, ss::kRealNull}, 6, false, map).isOk());
  EXPECT_EQ(map.bounds, (std::vector<float>{0, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f}));
  EXPECT_EQ(map.colours, (std::vector<int>{48, 57, 38, 78, 88, 2}));
  EXPECT_FLOAT_EQ(map.dmin, 0.002f);
  EXPECT_FLOAT_EQ(map.dmax, 0.597f);
  ASSERT_TRUE(ss::colourMapForValues({13, 87}, 5, false, map).isOk());
  EXPECT_EQ(map.bounds, (std::vector<float>{0, 20, 40, 60, 80, 100}));
  ASSERT_TRUE(ss::colourMapForValues({-3.2f, 41}, 5, false, map).isOk());
  EXPECT_EQ(map.bounds.front(), -20.0f);
  EXPECT_EQ(map.bounds.back(), 80.0f);
  ASSERT_TRUE(ss::colourMapForValues({3, 470, -1}, 3, true, map).isOk());
  EXPECT_EQ(map.bounds, (std::vector<float>{1, 10, 100, 1000}));
  ASSERT_TRUE(ss::colourMapForValues({7, 7}, 2, false, map).isOk());  // one value: a range from it
  EXPECT_EQ(map.bounds, (std::vector<float>{7, 7.5f, 8}));
  ASSERT_TRUE(ss::colourMapForValues({0.1f}, 10, false, map).isOk());
  EXPECT_EQ(map.colours.size(), 10u);  // past the table the colours are kept
  EXPECT_EQ(ss::colourMapForValues({ss::kRealNull, NAN}, 5, false, map).message(), "No value to colour the points by");
  EXPECT_EQ(ss::colourMapForValues({0, -2}, 5, true, map).message(), "Invalid value for log scale");
}

TEST(ClassColouring, BoundaryValuesTakeTheClassAboveAndTheTopBoundTheLast) {
  ss::ColourMap map;
  ASSERT_TRUE(ss::colourMapForValues({0.0f, 0.6f}, 6, false, map).isOk());
  ss::PlotRecord plot = pointsPlot(10);
  const std::vector<float> colour = {0.0f, 0.1f, 0.3f, 0.0999999f, 0.6f, 0.59999f, -0.001f, 0.61f, ss::kRealNull, NAN};
  ss::ClassCounts counts;
  ASSERT_TRUE(ss::colourPointsByClass(plot, colour, map, "vsh (frac)", counts).isOk());
  EXPECT_EQ(counts.perClass, (std::vector<long>{2, 1, 0, 1, 0, 2}));
  EXPECT_EQ(counts.below, 1);
  EXPECT_EQ(counts.above, 1);
  EXPECT_EQ(counts.noValue, 2);
  // The first set keeps every point and the axes, drawing no markers; then
  // grey for no value and one set per filled class in class order. Points
  // outside the classes are not drawn (cm_c0 and cm_c1 are 0).
  ASSERT_EQ(plot.sets.size(), 6u);
  EXPECT_EQ(plot.sets[0].sym, 0);
  EXPECT_EQ(plot.sets[0].data[0].size(), 10u);
  ASSERT_EQ(plot.sets[0].data[3].size(), 10u);
  EXPECT_EQ(plot.sets[0].data[3][7], 0.61f);
  EXPECT_EQ(plot.sets[0].labels[3], "vsh (frac)");
  EXPECT_EQ(plot.sets[0].scales[3].MAX, 0.6f);
  const std::vector<std::string> names = {"no value", "0 - 0.1", "0.1 - 0.2", "0.3 - 0.4", "0.5 - 0.6"};
  const std::vector<int> colours = {ss::kNoValueColour, 48, 57, 78, 2};
  const std::vector<std::vector<float>> xs = {{8, 9}, {0, 3}, {1}, {2}, {4, 5}};
  for (std::size_t k = 0; k < names.size(); ++k) {
    const ss::PlotSet& s = plot.sets[k + 1];
    EXPECT_EQ(s.name, names[k]);
    EXPECT_EQ(s.syrgb, rgbOf(colours[k])) << names[k];
    EXPECT_EQ(s.data[0], xs[k]) << names[k];
    EXPECT_EQ(s.scales[0].MIN, plot.sets[0].scales[0].MIN);
    EXPECT_EQ(s.legend, 0);
  }
  ASSERT_TRUE(plot.colourBar.has_value());
  EXPECT_EQ(plot.colourBar->noValue, 2);
  // A fitted line fits every point and is black among the class colours.
  ss::FittedLine fit;
  ASSERT_TRUE(ss::addFittedLine(plot, ss::RegressionMethod::YOnX, ss::RegressionForm::Line, std::nullopt, fit).isOk());
  EXPECT_EQ(fit.fit.points, 10);
  EXPECT_EQ(plot.sets[0].lines.at(1).COLOUR, 1);

  // Colours for the outside classes draw those points too.
  map.c0 = 7;
  map.c1 = 8;
  ss::PlotRecord again = pointsPlot(10);
  ASSERT_TRUE(ss::colourPointsByClass(again, colour, map, "vsh", counts).isOk());
  ASSERT_EQ(again.sets.size(), 8u);
  EXPECT_EQ(again.sets[2].name, "below");
  EXPECT_EQ(again.sets[2].data[0], std::vector<float>{6});
  EXPECT_EQ(again.sets[7].name, "above");
  EXPECT_EQ(again.sets[7].syrgb, rgbOf(8));

  ss::PlotRecord wrong = pointsPlot(3);
  EXPECT_EQ(ss::colourPointsByClass(wrong, {1, 2}, map, "vsh", counts).message(), "2 colour values for 3 points");
  map.bounds[2] = -5;
  EXPECT_EQ(ss::colourPointsByClass(wrong, {1, 2, 3}, map, "vsh", counts).message(),
            "Colour-map class 2 runs from 0.1 down to -5");
}

TEST(ColourBar, TextsOfContinuousAndCategoricalMaps) {
  ss::ColourBar bar;
  ASSERT_TRUE(ss::colourMapForValues({0.0f, 0.6f}, 3, false, bar.map).isOk());
  bar.title = ss::colourBarTitle("vsh", "frac");
  bar.noValue = 4;
  ss::ColourBarTexts t = ss::colourBarTexts(bar);
  EXPECT_EQ(t.title, "vsh (frac)");
  EXPECT_EQ(t.bounds, (std::vector<std::string>{"0", "0.2", "0.4", "0.6"}));
  EXPECT_EQ(t.names, (std::vector<std::string>{"", "", ""}));
  EXPECT_EQ(t.footer, "No value: 4");
  EXPECT_EQ(ss::classLabel(bar.map, 2), "0.2 - 0.4");

  bar.map.names = {"clean", "  ", "shale  "};
  bar.map.icat = 1;
  bar.noValue = 0;
  bar.title = ss::colourBarTitle("facies", "");
  t = ss::colourBarTexts(bar);
  EXPECT_EQ(t.title, "facies");
  EXPECT_TRUE(t.bounds.empty());
  EXPECT_EQ(t.names, (std::vector<std::string>{"clean", "2", "shale"}));
  EXPECT_EQ(t.footer, "");
  EXPECT_EQ(ss::classLabel(bar.map, 1), "clean");
  EXPECT_EQ(ss::classLabel(bar.map, 2), "2");
}

// The bar as drawn: some column of pixels right of the data area meets the
// class colours in class order from the bottom up.
TEST(ColourBar, DrawnBesideThePlotWithClassOneAtTheBottom) {
  ss::ColourMap map;
  ASSERT_TRUE(ss::colourMapForValues({0.0f, 1.0f}, 4, false, map).isOk());
  ss::PlotRecord plot = pointsPlot(40);
  std::vector<float> colour;
  for (int i = 0; i < 40; ++i) colour.push_back(static_cast<float>(i) / 39.0f);
  ss::ClassCounts counts;
  ASSERT_TRUE(ss::colourPointsByClass(plot, colour, map, "v", counts).isOk());
  ss::testing::TempDir tmp;
  ss::DrawOptions options;
  options.kind = ss::drawing::OutputKind::Png;
  options.path = tmp.file("bar.png");
  options.dpi = 100;
  options.widthMm = 160;
  options.heightMm = 100;
  ASSERT_TRUE(ss::drawPlot(plot, options).isOk());
  cairo_surface_t* image = cairo_image_surface_create_from_png(options.path.c_str());
  ASSERT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
  const int w = cairo_image_surface_get_width(image), h = cairo_image_surface_get_height(image);
  const int stride = cairo_image_surface_get_stride(image);
  const unsigned char* px = cairo_image_surface_get_data(image);
  std::vector<std::array<int, 3>> wanted;
  for (int c : map.colours) wanted.push_back(rgbOf(c));
  int found = -1;
  for (int x = w / 2; x < w && found < 0; ++x) {
    std::vector<std::array<int, 3>> seen;
    for (int y = h - 1; y >= 0; --y) {
      const auto* p = reinterpret_cast<const std::uint32_t*>(px + y * stride) + x;
      const std::array<int, 3> rgb = {static_cast<int>((*p >> 16) & 255), static_cast<int>((*p >> 8) & 255),
                                      static_cast<int>(*p & 255)};
      if (std::find(wanted.begin(), wanted.end(), rgb) != wanted.end() && (seen.empty() || seen.back() != rgb))
        seen.push_back(rgb);
    }
    if (seen == wanted) found = x;
  }
  cairo_surface_destroy(image);
  EXPECT_GT(found, w * 3 / 4) << "no column shows the four class colours bottom to top";
}

TEST(ColourCommand, ColourMapFileRoundTripAndBadOptions) {
  const std::string program = ss::testing::builtProgram("subsurf");
  if (!std::filesystem::exists(program)) GTEST_SKIP() << "the subsurf program is not built";
  ss::testing::TempDir tmp;
  const std::string csv =
      tmp.write("w.csv", "phi[frac],k[mD],vsh[frac]\n0.1,1,0\n0.2,10,0.2\n0.25,20,0.45\n0.3,50,\n0.15,5,0.6\n0.3,80,x9\n");
  const std::string good = tmp.write("good.csv", "phi,k,vsh\n0.1,1,0\n0.2,10,0.2\n0.25,20,0.45\n0.3,50,\n0.15,5,0.6\n");
  ss::ColourMap map;
  ASSERT_TRUE(ss::colourMapForValues({0.0f, 0.6f}, 3, false, map).isOk());
  map.names = {"clean", "shaly", "shale"};
  const std::string in = tmp.file("in.zcm"), out = tmp.file("out.zcm");
  ASSERT_TRUE(ss::writeColourMapFile(map, in).isOk());

  auto r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot xy " + good + " --x phi --y k --colour vsh --colour-map " + in + " --save-colour-map " + out +
      " --out " + tmp.file("c.png") + " --json"));
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  const auto& c = j["colour"];
  EXPECT_EQ(c["column"], "vsh");
  EXPECT_EQ(c["no_value"], 1);
  ASSERT_EQ(c["classes"].size(), 3u);
  EXPECT_EQ(c["classes"][0]["label"], "clean");
  EXPECT_EQ(c["classes"][0]["points"], 1);
  EXPECT_EQ(c["classes"][1]["points"], 1);  // 0.2 is on the bound: the class above
  EXPECT_EQ(c["classes"][2]["points"], 2);  // 0.6 is the top bound: the last class
  EXPECT_EQ(c["classes"][2]["upper"], 0.6);
  EXPECT_EQ(c["classes"][1]["colour"], 38);
  ss::ColourMap back;
  ASSERT_TRUE(ss::readColourMapFile(out, back).isOk());
  EXPECT_EQ(back.bounds, map.bounds);
  EXPECT_EQ(back.names, map.names);
  EXPECT_EQ(back.colours, map.colours);

  // Without --json the left-out colour values are reported.
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot xy " + good + " --x phi --y k --colour vsh --classes 2 --out " + tmp.file("d.png")));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("1 of 5 points have no value of \"vsh\"; they are drawn grey"), std::string::npos) << r.err;

  const auto fails = [&](const std::string& args, const std::string& message) {
    const auto run = ss::testing::withoutSuppressionReport(ss::testing::runCommand(program + " plot xy " + args));
    EXPECT_EQ(run.status, 2) << args;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
  };
  fails(csv + " --x phi --y k --colour vsh --json", "line 7, column 3 (\"vsh\"): \"x9\" is not a number");
  fails(good + " --x phi --y k --colour vshale --json", "no column \"vshale\"");
  fails(good + " --x phi --y k --classes 3 --json", "give --colour COL too");
  fails(good + " --x phi --y k --colour vsh --classes 10 --json", "--classes: Value 10 not in range 1 to 9");
  fails(good + " --x phi --y k --colour vsh --classes 3 --colour-map " + in + " --json", "not both");
  fails(good + " --x phi --y k --colour vsh --colour-scale cubic --json", "--colour-scale \"cubic\" is not linear or log");
  const std::string blank = tmp.write("blank.csv", "phi,k,vsh\n0.1,1,\n0.2,2,-9.9e20\n");
  fails(blank + " --x phi --y k --colour vsh --json", "column \"vsh\": No value to colour the points by");
  fails(good + " --x phi --y k --colour vsh --colour-map " + tmp.file("none.zcm") + " --json", "none.zcm");
}
