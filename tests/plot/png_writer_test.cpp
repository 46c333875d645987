// PNG pages written whole: every pixel comes back from a standard reader, an
// opaque page as RGB and a page with transparency as RGBA.
#include <gtest/gtest.h>

#include <cairo.h>

#include <cstdint>
#include <string>

#include "host/drawing/png_writer.h"
#include "support/temp_dir.h"

namespace {

namespace dr = subsurf::drawing;

// A page with a gradient, flat runs and (unless opaque) partial alpha, at an
// odd width so rows do not fill whole words.
cairo_surface_t* page(int w, int h, bool opaque) {
  cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
  cairo_surface_flush(s);
  unsigned char* data = cairo_image_surface_get_data(s);
  const int stride = cairo_image_surface_get_stride(s);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const std::uint32_t a = opaque ? 255 : static_cast<std::uint32_t>((x * 7 + y * 3) % 256);
      const std::uint32_t r = (x * 255 / w) * a / 255, g = (y < h / 2 ? 255 : 0) * a / 255, b = ((x + y) % 2 ? 200 : 10) * a / 255;
      reinterpret_cast<std::uint32_t*>(data + y * stride)[x] = (a << 24) | (r << 16) | (g << 8) | b;
    }
  cairo_surface_mark_dirty(s);
  return s;
}


std::string written(cairo_surface_t* s) {
  std::string out;
  EXPECT_TRUE(dr::writePng(s, [&](std::string_view b) { out.append(b); }).isOk());
  return out;
}

void expectSamePixels(cairo_surface_t* want, const std::string& path) {
  cairo_surface_t* got = cairo_image_surface_create_from_png(path.c_str());
  ASSERT_EQ(cairo_surface_status(got), CAIRO_STATUS_SUCCESS);
  const int w = cairo_image_surface_get_width(want), h = cairo_image_surface_get_height(want);
  ASSERT_EQ(cairo_image_surface_get_width(got), w);
  ASSERT_EQ(cairo_image_surface_get_height(got), h);
  cairo_surface_flush(got);
  int differing = 0;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const auto p = [&](cairo_surface_t* s) {
        return reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(s) +
                                                       y * cairo_image_surface_get_stride(s))[x];
      };
      const std::uint32_t a = p(want), b = p(got);
      // Undoing and redoing premultiplication may move a channel by one step.
      for (int shift = 0; shift < 32; shift += 8) {
        const int d = static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF);
        if (d > 1 || d < -1) ++differing;
      }
      if ((a >> 24) != (b >> 24)) ++differing;
    }
  EXPECT_EQ(differing, 0);
  cairo_surface_destroy(got);
}

TEST(PngWriter, OpaquePagesAreRgbAndComeBackPixelForPixel) {
  subsurf::testing::TempDir dir;
  cairo_surface_t* s = page(301, 77, true);
  const std::string bytes = written(s);
  ASSERT_GT(bytes.size(), 33u);
  EXPECT_EQ(bytes.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
  EXPECT_EQ(bytes.substr(12, 4), "IHDR");
  EXPECT_EQ(bytes[25], 2);  // colour type RGB
  EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND");
  expectSamePixels(s, dir.write("opaque.png", bytes));
  cairo_surface_destroy(s);
}

TEST(PngWriter, TransparentPagesKeepTheirAlpha) {
  subsurf::testing::TempDir dir;
  cairo_surface_t* s = page(129, 40, false);
  const std::string bytes = written(s);
  EXPECT_EQ(bytes[25], 6);  // colour type RGBA
  expectSamePixels(s, dir.write("alpha.png", bytes));
  cairo_surface_destroy(s);
}

TEST(PngWriter, AnEmptySurfaceIsRefused) {
  cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0);
  bool called = false;
  EXPECT_EQ(dr::writePng(s, [&](std::string_view) { called = true; }).message(), "no picture to write");
  EXPECT_FALSE(called);
  cairo_surface_destroy(s);
}

}  // namespace
