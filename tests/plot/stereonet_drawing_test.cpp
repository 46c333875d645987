// Stereonets as drawn, measured on the raster: the rim is a circle on square,
// wide and tall pages, and the labels stay clear of the frame.
#include <gtest/gtest.h>

#include <cairo.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "plot/plot_drawing.h"
#include "plot/stereonet_plot.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

struct Page {
  int width, height;  // pixels
  double dpi;
};
// Square, wide and tall; the last a small page (102 mm wide), where labels
// sized in millimetres take much of the net's window.
constexpr Page kPages[] = {{576, 576, 96}, {1600, 900, 96}, {600, 1000, 96}, {600, 1000, 150}};

// Dark pixels (any channel below 160) of a PNG, row by row.
struct Ink {
  int width = 0, height = 0;
  std::vector<bool> dark;
  bool at(int x, int y) const { return dark[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]; }
};

Ink readInk(const std::string& png) {
  Ink ink;
  cairo_surface_t* img = cairo_image_surface_create_from_png(png.c_str());
  EXPECT_EQ(cairo_surface_status(img), CAIRO_STATUS_SUCCESS) << png;
  cairo_surface_flush(img);
  ink.width = cairo_image_surface_get_width(img);
  ink.height = cairo_image_surface_get_height(img);
  for (int y = 0; y < ink.height; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(img) + y * cairo_image_surface_get_stride(img));
    for (int x = 0; x < ink.width; ++x) {
      const std::uint32_t p = row[x];
      ink.dark.push_back(((p >> 16) & 0xFF) < 160 || ((p >> 8) & 0xFF) < 160 || (p & 0xFF) < 160);
    }
  }
  cairo_surface_destroy(img);
  return ink;
}

// Left, top, right, bottom of the dark pixels inside the given bounds (inclusive); left > right when none.
struct Box {
  int left, top, right, bottom;
};
Box inkBox(const Ink& ink, int x0, int y0, int x1, int y1) {
  Box b{ink.width, ink.height, -1, -1};
  for (int y = y0; y <= y1; ++y)
    for (int x = x0; x <= x1; ++x)
      if (ink.at(x, y)) b = {std::min(b.left, x), std::min(b.top, y), std::max(b.right, x), std::max(b.bottom, y)};
  return b;
}

ss::PlotRecord fractureNet(bool rose) {
  // Two sets of planes, so that the mean and its statistics are written at the top right.
  std::vector<float> dips, azimuths;
  std::vector<std::string> sets, kinds;
  for (int k = 0; k < 40; ++k) {
    dips.push_back(static_cast<float>(k % 2 ? 70 + k % 7 : 20 + k % 5));
    azimuths.push_back(static_cast<float>(k % 2 ? 110 + 3 * (k % 9) : 250 + 2 * (k % 11)));
    sets.push_back(k % 2 ? "J1" : "Bedding");
    kinds.push_back(k % 3 ? "open" : "sealed");
  }
  ss::StereonetRequest request;
  request.rose = rose;
  request.contours = !rose;
  request.setName = "well A";
  ss::StereonetData data{dips, azimuths, sets, kinds};
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  EXPECT_TRUE(ss::makeStereonetPlot(data, request, plot, summary).isOk());
  return plot;
}

std::string pageName(const Page& page, bool rose) {
  return std::to_string(page.width) + "x" + std::to_string(page.height) + "-" + std::to_string(static_cast<int>(page.dpi)) +
         (rose ? "-rose" : "") + ".png";
}

std::string drawOn(const ss::PlotRecord& plot, const Page& page, const std::string& path) {
  ss::DrawOptions o;
  o.kind = ss::drawing::OutputKind::Png;
  o.path = path;
  o.dpi = page.dpi;
  o.widthMm = page.width * 25.4 / page.dpi;
  o.heightMm = page.height * 25.4 / page.dpi;
  EXPECT_TRUE(ss::drawPlot(plot, o).isOk()) << path;
  return path;
}

}  // namespace

TEST(StereonetDrawing, TheRimIsACircleOnSquareWideAndTallPages) {
  ss::testing::TempDir dir;
  for (bool rose : {false, true})
    for (const Page& page : kPages) {
      // Only the rim: no title, frame, labels, data or other lines.
      ss::PlotRecord plot = fractureNet(rose);
      plot.fields.title.clear();
      plot.annotation.plotbox = 0;
      plot.sets.resize(1);
      ss::PlotSet& net = plot.sets.front();
      const ss::LineElement rim = net.lines.at(1);
      ASSERT_EQ(rim.x.size(), 360u);
      net.lines.clear();
      net.lines.add(rim);
      net.texts.clear();
      net.symbols.clear();
      net.data[0].clear();
      net.data[1].clear();
      const std::string name = pageName(page, rose);
      const Ink ink = readInk(drawOn(plot, page, dir.file(name)));
      ASSERT_EQ(ink.width, page.width);
      ASSERT_EQ(ink.height, page.height);
      const Box b = inkBox(ink, 0, 0, ink.width - 1, ink.height - 1);
      ASSERT_LE(b.left, b.right) << name;
      const int across = b.right - b.left + 1, down = b.bottom - b.top + 1;
      EXPECT_NEAR(across, down, 1) << name;
      // As large as the shorter side allows (the rim at 90 of 100 units, inside the margins), and centred across the page.
      const int shorter = std::min(page.width, page.height);
      EXPECT_GT(down, shorter * 0.7) << name;
      EXPECT_LT(down, shorter * 0.9) << name;
      EXPECT_NEAR((b.left + b.right) / 2.0, page.width / 2.0, 2.0) << name;
    }
}

TEST(StereonetDrawing, LabelsStayInsideTheFrame) {
  ss::testing::TempDir dir;
  for (bool rose : {false, true})
    for (const Page& page : kPages) {
      // The frame and the labels (texts and the keys' markers) alone.
      ss::PlotRecord plot = fractureNet(rose);
      plot.fields.title.clear();
      for (ss::PlotSet& set : plot.sets) {
        set.lines.clear();
        set.sym = 0;
      }
      const std::string name = pageName(page, rose);
      const Ink ink = readInk(drawOn(plot, page, dir.file(name)));
      // The frame's sides: columns and rows dark over half the page's height or width.
      std::vector<int> columns, rows;
      for (int x = 0; x < ink.width; ++x) {
        int n = 0;
        for (int y = 0; y < ink.height; ++y) n += ink.at(x, y) ? 1 : 0;
        if (n > ink.height / 2) columns.push_back(x);
      }
      for (int y = 0; y < ink.height; ++y) {
        int n = 0;
        for (int x = 0; x < ink.width; ++x) n += ink.at(x, y) ? 1 : 0;
        if (n > ink.width / 2) rows.push_back(y);
      }
      ASSERT_GE(columns.size(), 2u) << name;
      ASSERT_GE(rows.size(), 2u) << name;
      // The inner edge of each side.
      auto innerEdges = [](const std::vector<int>& lines, int& low, int& high) {
        low = lines.front();
        while (low + 1 <= lines.back() && std::find(lines.begin(), lines.end(), low + 1) != lines.end()) ++low;
        high = lines.back();
        while (high - 1 >= lines.front() && std::find(lines.begin(), lines.end(), high - 1) != lines.end()) --high;
      };
      int left = 0, right = 0, top = 0, bottom = 0;
      innerEdges(columns, left, right);
      innerEdges(rows, top, bottom);
      ASSERT_LT(left + 100, right) << name;
      ASSERT_LT(top + 100, bottom) << name;
      // The frame is square too.
      EXPECT_NEAR(right - left, bottom - top, 1) << name;
      const Box labels = inkBox(ink, left + 1, top + 1, right - 1, bottom - 1);
      ASSERT_LE(labels.left, labels.right) << name;
      // At least one clear pixel between the labels and each side of the frame:
      // a label that ran into the frame would be cut by it.
      EXPECT_GE(labels.left, left + 2) << name;
      EXPECT_LE(labels.right, right - 2) << name;
      EXPECT_GE(labels.top, top + 2) << name;
      EXPECT_LE(labels.bottom, bottom - 2) << name;
      // The net's right-aligned labels (the mean) reach near the right side.
      if (!rose) {
        EXPECT_GT(labels.right, right - (right - left) / 8) << name;
      }
    }
}
