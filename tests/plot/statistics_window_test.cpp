// The C entry points that draw statistics and colour maps into the current
// plot's window: ZW_DRAWHIST, ZW_DRAWBIN, ZW_CMDRAW and ZW_CMHIST draw exactly
// what the engine draws for the current set; ZW_CMTRIGS and ZW_CMEDIT change
// a colour map (the editor through recorded yes/no questions).
#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "host/drawing/canvas.h"
#include "host/drawing/palette.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "plot/bin_statistics.h"
#include "plot/binned_plot.h"
#include "plot/class_colouring.h"
#include "plot/colour_map.h"
#include "plot/histogram_plot.h"
#include "plot/plot_drawing.h"
#include "plot/plot_tree.h"
#include "plot/plot_windows.h"
#include "subsurf/plot.h"
#include "subsurf/plot_colour_map.h"
#include "subsurf/plot_statistics.h"

namespace ss = subsurf;

namespace {

constexpr int kWindow = 11;
constexpr int kWidth = 480, kHeight = 360;
constexpr double kDpi = 96.0;

cairo_surface_t* whiteImage() {
  cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight);
  cairo_t* cr = cairo_create(image);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  cairo_destroy(cr);
  return image;
}

bool samePixels(cairo_surface_t* a, cairo_surface_t* b) {
  cairo_surface_flush(a);
  cairo_surface_flush(b);
  const int stride = cairo_image_surface_get_stride(a);
  return stride == cairo_image_surface_get_stride(b) &&
         std::memcmp(cairo_image_surface_get_data(a), cairo_image_surface_get_data(b),
                     static_cast<std::size_t>(stride) * kHeight) == 0;
}

int inkCount(cairo_surface_t* s) {
  cairo_surface_flush(s);
  int count = 0;
  for (int y = 0; y < kHeight; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(s) +
                                                             y * cairo_image_surface_get_stride(s));
    for (int x = 0; x < kWidth; ++x) count += row[x] != 0xFFFFFFFFu ? 1 : 0;
  }
  return count;
}

class StatisticsWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZW_ZPINIT();
    ss::host::setQuiet(true);
    ss::host::clearRecorded();
    image_ = whiteImage();
    ASSERT_TRUE(ss::plotWindows().bind(kWindow, image_, kDpi));
    ss::PlotRecord* plot = ss::plotTree().current();
    plot->windowId = kWindow;
    plot->fields.title = "Plugs";
    ss::PlotSet* set = ss::plotTree().currentSet();
    set->name = "well A";
    set->labels = {"phi", "k", "", "vsh", ""};
    for (int i = 0; i < 100; ++i) {
      set->data[0].push_back(static_cast<float>(i));
      set->data[1].push_back(static_cast<float>((i * 37) % 50));
      set->data[3].push_back(static_cast<float>(i) / 99.0f);
    }
  }
  void TearDown() override {
    ss::plotWindows().releaseAll();
    cairo_surface_destroy(image_);
    ss::host::setQuiet(false);
  }

  // What the engine draws for plot on a window of the same size.
  static cairo_surface_t* engineDrawing(ss::PlotRecord& plot) {
    plot.layout = ss::plotTree().current()->layout;
    cairo_surface_t* image = whiteImage();
    ss::Status opened;
    auto canvas = ss::drawing::Canvas::onImage(image, kDpi, opened);
    ss::drawPlotOn(plot, *canvas);
    canvas.reset();
    return image;
  }

  cairo_surface_t* image_ = nullptr;
};

}  // namespace

TEST_F(StatisticsWindowTest, HistogramIsTheEnginesOfTheCurrentSet) {
  int nclass = 4, npoints = 0, status = 1;
  ZW_DRAWHIST(&nclass, &npoints, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(nclass, 4);
  EXPECT_EQ(npoints, 100);
  ss::Histogram h;
  ASSERT_TRUE(ss::countHistogram(ss::plotTree().currentSet()->data[0], 4, h).isOk());
  ss::PlotRecord expected = ss::makeHistogramPlot(h, "phi", "", "Plugs", "well A");
  cairo_surface_t* engine = engineDrawing(expected);
  EXPECT_GT(inkCount(image_), 1000);
  EXPECT_TRUE(samePixels(image_, engine));
  cairo_surface_destroy(engine);

  nclass = 0;  // the default count
  ZW_DRAWHIST(&nclass, nullptr, &status);
  EXPECT_EQ(nclass, 8);  // Sturges: ceil(log2 100) + 1

  ss::plotTree().currentSet()->data[0].assign(3, ss::kRealNull);
  ZW_DRAWHIST(&nclass, &npoints, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedMessages().back(), "No valid data points!");
  ss::plotTree().current()->windowId = 0;
  ZW_DRAWHIST(&nclass, &npoints, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(StatisticsWindowTest, BinnedStatisticsByEdgesOrEqualBins) {
  const int nbins = 2;
  const float edges[] = {0, 50, 100};
  int status = 1;
  ZW_DRAWBIN(&nbins, edges, &status);
  ASSERT_EQ(status, 0);
  const ss::PlotSet& set = *ss::plotTree().currentSet();
  ss::BinStatistics table;
  ASSERT_TRUE(ss::binStatistics(set.data[0], set.data[1], std::vector<double>{0, 50, 100}, table).isOk());
  ss::BinnedPlotRequest request;
  request.byColumn = "phi";
  request.valueColumn = "k";
  request.title = "Plugs";
  request.setName = "well A";
  ss::PlotRecord expected = ss::makeBinnedPlot(table, request);
  cairo_surface_t* engine = engineDrawing(expected);
  EXPECT_GT(inkCount(image_), 1000);
  EXPECT_TRUE(samePixels(image_, engine));
  cairo_surface_destroy(engine);

  ZW_DRAWBIN(&nbins, nullptr, &status);  // two equal bins over 0..99
  EXPECT_EQ(status, 0);
  const float down[] = {100, 50, 0};
  ZW_DRAWBIN(&nbins, down, &status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(ss::host::recordedMessages().back().find("ascend"), std::string::npos)
      << ss::host::recordedMessages().back();
}

TEST_F(StatisticsWindowTest, ColourBarAndClassHistogramOfTheColourAxis) {
  ZW_CM* map = nullptr;
  ZW_CMINIT(&map);  // five classes over 0..1
  int status = 1;
  ZW_CMDRAW(&map, &status);
  ASSERT_EQ(status, 0);
  ASSERT_TRUE(ss::plotTree().current()->colourBar.has_value());
  EXPECT_EQ(ss::plotTree().current()->colourBar->title, "vsh");
  // The bar is the engine's bar of the plot, drawn alone.
  {
    cairo_surface_t* engine = whiteImage();
    ss::Status opened;
    auto canvas = ss::drawing::Canvas::onImage(engine, kDpi, opened);
    ss::PlotPieces pieces(*ss::plotTree().current(), *canvas);
    EXPECT_TRUE(pieces.colourBar());
    canvas.reset();
    EXPECT_TRUE(samePixels(image_, engine));
    EXPECT_GT(inkCount(image_), 500);
    cairo_surface_destroy(engine);
  }

  ZW_CMHIST(&map, &status);
  ASSERT_EQ(status, 0);
  ss::ClassCounts counts;
  ss::PlotRecord expected = ss::makeClassHistogram(*map, ss::plotTree().currentSet()->data[3], "vsh", counts);
  EXPECT_EQ(counts.perClass, (std::vector<long>{20, 20, 20, 20, 20}));
  cairo_surface_t* engine = engineDrawing(expected);
  EXPECT_TRUE(samePixels(image_, engine));
  cairo_surface_destroy(engine);

  map->bounds[3] = -1;  // not ascending
  ZW_CMHIST(&map, &status);
  EXPECT_EQ(status, 1);
  ZW_CMDRAW(&map, &status);
  EXPECT_EQ(status, 1);
  ZW_CMDEL(&map);
  ZW_CMDRAW(&map, &status);
  EXPECT_EQ(status, 1);
}

TEST(ColourMapEditing, TriggersDivideTheRangeAgain) {
  ZW_CM* map = nullptr;
  ZW_CMINIT(&map);
  int status = 1;
  char name[16], value[20];
  ss::setFixed(name, 16, "cm_max");
  ss::setFixed(value, 20, "10");
  ZW_CMSETATTS(&map, name, value, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(map->bounds.back(), 1.0f);  // setting the attribute alone divides nothing
  ZW_CMTRIGS(&map, name, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(map->bounds, (std::vector<float>{0, 2, 4, 6, 8, 10}));
  ss::setFixed(name, 16, "cm_nr");
  ss::setFixed(value, 20, "7");
  ZW_CMSETATTS(&map, name, value, &status);
  map->colours.assign(7, 1);
  ZW_CMTRIGS(&map, name, &status);
  EXPECT_EQ(map->colours, (std::vector<int>{48, 57, 38, 79, 88, 67, 4}));
  EXPECT_EQ(map->bounds.size(), 8u);
  ss::setFixed(name, 16, "cm_icat");
  ZW_CMTRIGS(&map, name, &status);
  EXPECT_EQ(status, 0);
  ss::host::setQuiet(true);
  ss::setFixed(name, 16, "cm_foo");
  ZW_CMTRIGS(&map, name, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedMessages().back(), "Unknown colour-map attribute cm_foo");
  ss::host::setQuiet(false);
  ZW_CMDEL(&map);
}

TEST(ColourMapEditing, EditorAsksItsQuestionsInOrder) {
  ss::host::setQuiet(true);
  ss::host::clearRecorded();
  ZW_CM* map = nullptr;
  ZW_CMINIT(&map);
  map->dmin = 2;
  map->dmax = 200;
  map->colours.assign(5, 1);
  for (bool yes : {true, true, true, true}) ss::host::queueAnswer(yes);
  int status = 1;
  ZW_CMEDIT(&map, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ss::host::recordedQuestions(),
            (std::vector<std::string>{"Colour map: 5 classes from 0 to 1. Change it?",
                                      "Set the class range to the data, 2 to 200?",
                                      "Divide the classes on a logarithmic scale?",
                                      "Give the 5 classes their default colours?"}));
  EXPECT_EQ(map->ifsc, 2);
  EXPECT_FLOAT_EQ(map->bounds.front(), 2.0f);
  EXPECT_FLOAT_EQ(map->bounds.back(), 200.0f);
  EXPECT_NEAR(map->bounds[1], 2 * std::pow(100.0, 0.2), 1e-4);
  EXPECT_EQ(map->colours, (std::vector<int>{48, 57, 38, 78, 2}));

  // Declined: nothing changes and nothing more is asked.
  ss::host::clearRecorded();
  const ss::ColourMap before = *map;
  ss::host::queueAnswer(false);
  ZW_CMEDIT(&map, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedQuestions().size(), 1u);
  EXPECT_EQ(map->bounds, before.bounds);

  // Already logarithmic, data range in use, ten classes: two questions.
  ss::host::clearRecorded();
  int ten = 10;
  ZW_CMALLOC(&map, &ten, &status);
  ss::host::queueAnswer(true);
  ss::host::queueAnswer(true);
  ZW_CMEDIT(&map, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ss::host::recordedQuestions(),
            (std::vector<std::string>{"Colour map: 10 classes from 2 to 200. Change it?",
                                      "Divide the classes by equal widths instead of logarithms?"}));
  EXPECT_EQ(map->ifsc, 1);
  EXPECT_FLOAT_EQ(map->bounds[1], 21.8f);
  ZW_CMDEL(&map);
  ss::host::setQuiet(false);
}
