// Layout previews and sample tray photographs.
#include <gtest/gtest.h>

#include "host/drawing/preview.h"
#include "host/drawing/sample_tray.h"
#include "host/image/image_writer.h"
#include "image_test_support.h"

namespace subsurf::drawing {
namespace {

using namespace image;
using namespace image::testing;

class PreviewTest : public ImageTest {
 protected:
  // A plain grey photograph, so that anything drawn stands out.
  std::string greyPhoto(int width, int height, const std::string& name) {
    Raster r(width, height);
    std::fill(r.bytes().begin(), r.bytes().end(), 128);
    const std::string path = dir.file(name);
    saveWithVips(r, path);
    return path;
  }
  Raster readPng(const std::string& path) {
    return fromVips(vips::VImage::new_from_file(path.c_str()).extract_band(0, vips::VImage::option()->set("n", 3)));
  }
};

bool isColour(const std::uint8_t* p, const double rgb[3]) {
  for (int i = 0; i < 3; ++i)
    if (std::abs(p[i] - rgb[i] * 255.0) > 2.0) return false;
  return true;
}

TEST_F(PreviewTest, ReducesTheLongerSideAndDrawsOutlinesWhereTheRowsAre) {
  const std::string photo = greyPhoto(3200, 2000, "tray.png");
  PreviewOutline row;
  row.index = 1;
  row.label = "1234.50-1235.50";
  row.points = {{400, 1000}, {2800, 1000}, {2800, 1600}, {400, 1600}};
  const std::string png = dir.file("preview.png");
  PreviewOptions options;
  options.longestSide = 1600;
  options.lineWidth = 4;
  ASSERT_TRUE(drawPreview(photo, {row}, png, options));

  const Raster out = readPng(png);
  ASSERT_EQ(out.width(), 1600);
  ASSERT_EQ(out.height(), 1000);
  double colour[3];
  previewColour(1, colour);
  // Halfway along the bottom edge (photo y 1600 -> preview y 800) and the right
  // edge (photo x 2800 -> preview x 1400) the line has the outline's colour.
  EXPECT_TRUE(isColour(out.pixel(800, 800), colour));
  EXPECT_TRUE(isColour(out.pixel(1400, 650), colour));
  // Inside and outside the outline the photo shows through untouched.
  EXPECT_EQ(out.pixel(800, 700)[0], 128);
  EXPECT_EQ(out.pixel(100, 100)[0], 128);
  // The label sits just inside the top-left corner on a dark box.
  const std::uint8_t* box = out.pixel(210, 510);
  EXPECT_LT(box[0], 60);
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{"preview.png", "tray.png"}));
}

TEST_F(PreviewTest, StraightenedRowsAreDrawnInAColumnBesideThePhoto) {
  const std::string photo = greyPhoto(800, 400, "angled.png");
  PreviewOutline slanted;
  slanted.index = 2;
  slanted.points = {{100, 100}, {700, 60}, {720, 160}, {90, 200}};
  PreviewOptions options;
  options.lineWidth = 4;
  options.fontSize = 12;
  PreviewRowImage straightened;
  straightened.index = 2;
  straightened.label = "1235.50-1236.50";
  straightened.pixels = Raster(400, 50);
  for (int y = 0; y < 50; ++y)
    for (int x = 0; x < 400; ++x) {
      std::uint8_t* p = straightened.pixels.pixel(x, y);
      p[0] = 200, p[1] = 30, p[2] = 30;
    }
  options.straightenedRows.push_back(std::move(straightened));
  const std::string png = dir.file("preview.png");
  ASSERT_TRUE(drawPreview(photo, {slanted}, png, options));

  const Raster out = readPng(png);
  // The column is half as wide as the photo, beside it.
  ASSERT_EQ(out.width(), 1200);
  ASSERT_EQ(out.height(), 400);
  EXPECT_EQ(out.pixel(400, 300)[0], 128);  // the photo, left as it was below the outline
  // The row image under its label (a margin of 6 and a label 21 high), scaled
  // to the column less its margins: 388 x 48.5.
  const std::uint8_t* row = out.pixel(1000, 27 + 24);
  EXPECT_EQ(row[0], 200);
  EXPECT_EQ(row[1], 30);
  const std::uint8_t* below = out.pixel(1000, 200);  // the column's dark ground
  EXPECT_LT(below[0], 60);
  EXPECT_EQ(below[0], below[2]);
  // The slanted outline is drawn as it is: on its sloping top side, not on its box.
  double colour[3];
  previewColour(2, colour);
  EXPECT_TRUE(isColour(out.pixel(400, 80), colour));
  EXPECT_EQ(out.pixel(700, 190)[0], 128);  // inside the box round it, below the outline
}

TEST_F(PreviewTest, LabelTextIsWrittenInTheOutlineColour) {
  const std::string photo = greyPhoto(800, 600, "tray.png");
  PreviewOutline row;
  row.index = 2;
  row.label = "1235.50-1236.50";
  row.points = {{100, 100}, {700, 100}, {700, 300}, {100, 300}};
  PreviewOptions options;
  options.fontSize = 24;
  const std::string png = dir.file("preview.png");
  ASSERT_TRUE(drawPreview(photo, {row}, png, options));
  const Raster out = readPng(png);
  ASSERT_EQ(out.width(), 800);  // smaller than the longest side: not enlarged
  double colour[3];
  previewColour(2, colour);
  int textPixels = 0;
  for (int y = 105; y < 150; ++y)
    for (int x = 105; x < 450; ++x) textPixels += isColour(out.pixel(x, y), colour) ? 1 : 0;
  EXPECT_GT(textPixels, 100);
}

TEST_F(PreviewTest, DecodedPhotoAndFileGiveTheSamePreview) {
  // From a file the preview is reduced while decoding; from a decoded photo
  // it is reduced in memory. The pictures agree up to resampling.
  Raster smooth(2000, 1000);
  for (int y = 0; y < 1000; ++y)
    for (int x = 0; x < 2000; ++x) {
      smooth.pixel(x, y)[0] = static_cast<std::uint8_t>(x / 8);
      smooth.pixel(x, y)[1] = static_cast<std::uint8_t>(y / 4);
      smooth.pixel(x, y)[2] = 60;
    }
  const PreviewOutline row{{{10, 10}, {1990, 10}, {1990, 480}, {10, 480}}, "1.00-2.00", 3};
  for (const char* name : {"tray.png", "tray.bmp"}) {
    SCOPED_TRACE(name);
    const std::string photo = dir.file(name);
    ASSERT_TRUE(writeImage(smooth.view(), photo, *formatForFileName(name)));
    Photo decoded;
    ASSERT_TRUE(Photo::load(photo, decoded));
    ASSERT_TRUE(drawPreview(decoded, {row}, dir.file("a.png")));
    ASSERT_TRUE(drawPreview(photo, {row}, dir.file("b.png")));
    const Raster a = readPng(dir.file("a.png"));
    const Raster b = readPng(dir.file("b.png"));
    ASSERT_EQ(a.width(), 1600);
    ASSERT_EQ(a.height(), 800);
    EXPECT_LT(meanAbsDifference(a, b), 2.0);
  }
}

TEST_F(PreviewTest, FailuresNameTheFileAtFault) {
  const std::string missing = dir.file("missing.jpg");
  EXPECT_EQ(drawPreview(missing, {}, dir.file("p.png")).message(), "Error loading: " + missing + " (file not found)");
  const std::string photo = greyPhoto(100, 100, "tray.png");
  const std::string png = dir.file("nowhere/p.png");
  EXPECT_EQ(drawPreview(photo, {}, png).message(),
            png + "\nConversion failed. (cannot create the file: No such file or directory)");
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"tray.png"});
}

TEST(SampleTrayName, DepthsToOneDecimalWithFourDigits) {
  EXPECT_EQ(sampleTrayFileName(1234.5, 1236.0), "TRAY_1234_5-1236_0.jpg");
  EXPECT_EQ(sampleTrayFileName(950.0, 955.0), "TRAY_0950_0-0955_0.jpg");
  EXPECT_EQ(sampleTrayFileName(1239.49999, 1244.45), "TRAY_1239_5-1244_5.jpg");
  EXPECT_EQ(sampleTrayFileName(0.0, 9999.9), "TRAY_0000_0-9999_9.jpg");
}

TEST(SampleTray, SameSeedSamePictureOtherSeedOtherPicture) {
  SampleTraySpec spec;
  spec.width = 480;
  spec.height = 320;
  spec.seed = 7;
  const SampleTray a = renderSampleTray(spec);
  const SampleTray b = renderSampleTray(spec);
  EXPECT_TRUE(samePixels(a.pixels, b.pixels));
  spec.seed = 8;
  const SampleTray c = renderSampleTray(spec);
  EXPECT_FALSE(samePixels(a.pixels, c.pixels));
}

TEST(SampleTray, RowsAreContiguousInDepthAndStackedInsideThePicture) {
  SampleTraySpec spec;
  spec.width = 600;
  spec.height = 400;
  spec.rows = 5;
  spec.topDepth = 1234.5;
  spec.rowLength = 1.0;
  const SampleTray tray = renderSampleTray(spec);
  ASSERT_EQ(tray.pixels.width(), 600);
  ASSERT_EQ(tray.pixels.height(), 400);
  EXPECT_DOUBLE_EQ(tray.top, 1234.5);
  EXPECT_DOUBLE_EQ(tray.base, 1239.5);
  ASSERT_EQ(tray.rows.size(), 5u);
  for (std::size_t i = 0; i < tray.rows.size(); ++i) {
    const SampleRow& r = tray.rows[i];
    SCOPED_TRACE(i);
    EXPECT_EQ(r.index, static_cast<int>(i) + 1);
    EXPECT_DOUBLE_EQ(r.top, 1234.5 + i);
    EXPECT_DOUBLE_EQ(r.base, 1235.5 + i);
    EXPECT_EQ(clipBox(r.box, 600, 400), r.box);  // wholly inside
    EXPECT_GT(r.box.width, 4 * r.box.height);     // a row is long and thin
    if (i > 0) {
      EXPECT_GT(r.box.top, tray.rows[i - 1].box.bottom());
    }
  }
}

TEST(SampleTray, CoreRowsDifferFromTheTrayAroundThem) {
  // The rectangles handed out must really hold the core: the middle of a row
  // is not wood-coloured everywhere, and the strip between rows is.
  SampleTraySpec spec;
  spec.width = 1200;
  spec.height = 800;
  const SampleTray tray = renderSampleTray(spec);
  auto woodLike = [](const std::uint8_t* p) { return p[0] > p[2] + 40 && p[0] > 100; };
  int rowWood = 0, rowPixels = 0;
  for (const SampleRow& r : tray.rows) {
    const int y = r.box.top + r.box.height / 2;
    for (int x = r.box.left; x < r.box.right(); ++x, ++rowPixels) rowWood += woodLike(tray.pixels.pixel(x, y));
  }
  EXPECT_LT(rowWood, rowPixels / 2);
  const int wallY = (tray.rows[0].box.bottom() + tray.rows[1].box.top) / 2;
  int wallWood = 0;
  for (int x = tray.rows[0].box.left; x < tray.rows[0].box.right(); ++x) wallWood += woodLike(tray.pixels.pixel(x, wallY));
  EXPECT_GT(wallWood, tray.rows[0].box.width * 3 / 4);
}

}  // namespace
}  // namespace subsurf::drawing
