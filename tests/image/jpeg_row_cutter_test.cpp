// Cutting rows out of a JPEG in one streaming pass: the files must be the very
// files the general way (decode with libvips, then cut) writes, byte for byte,
// for every kind of JPEG a camera or scanner produces and every box a session
// can hold; and damaged photographs must leave nothing behind.
#include "host/image/jpeg_row_cutter.h"

#include <gtest/gtest.h>

#include "host/image/bmp.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "image_test_support.h"

namespace subsurf::image {
namespace {

using namespace testing;

// A photograph with fine detail and smooth colour changes: sharp edges show
// any error in chroma upsampling, noise shows any offset or wrong block.
Raster trayLikeRaster(int width, int height) {
  Raster r(width, height);
  std::mt19937 random(7);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      std::uint8_t* p = r.pixel(x, y);
      const bool core = (y / 23) % 2 == 0 && (x / 31) % 5 != 0;
      p[0] = static_cast<std::uint8_t>(core ? 150 + (x * 3) % 90 : 30 + random() % 40);
      p[1] = static_cast<std::uint8_t>(core ? 90 + (y * 5) % 70 : random() % 255);
      p[2] = static_cast<std::uint8_t>((x * y) % 256);
    }
  return r;
}

struct JpegKind {
  const char* name;
  VipsForeignSubsample subsample;
  bool progressive;
};

class JpegRowCutterTest : public ImageTest, public ::testing::WithParamInterface<JpegKind> {
 protected:
  // Odd sizes, so that the last blocks on the right and at the bottom are partial.
  static constexpr int kWidth = 203;
  static constexpr int kHeight = 157;

  void SetUp() override {
    ImageTest::SetUp();
    photoPath = dir.file("tray.jpg");
    toVips(trayLikeRaster(kWidth, kHeight))
        .jpegsave(photoPath.c_str(), vips::VImage::option()
                                         ->set("Q", 85)
                                         ->set("subsample_mode", GetParam().subsample)
                                         ->set("interlace", GetParam().progressive));
  }

  // The same boxes written the general way and by the cutter; every pair of
  // files must be identical.
  void expectSameFilesAsTheGeneralWay(const std::vector<PixelBox>& boxes) {
    Photo photo;
    ASSERT_TRUE(Photo::load(photoPath, photo));
    std::vector<JpegRowCut> cuts;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
      CutSpec spec;
      spec.box = boxes[i];
      const std::string general = dir.file("general_" + std::to_string(i) + ".bmp");
      ASSERT_TRUE(cutToFile(photo, spec, general, ImageFormat::Bmp));
      cuts.push_back({clipBox(boxes[i], kWidth, kHeight), dir.file("streamed_" + std::to_string(i) + ".bmp")});
    }
    JpegRowCutter cutter;
    ASSERT_TRUE(cutter.open(photoPath));
    EXPECT_EQ(cutter.width(), kWidth);
    EXPECT_EQ(cutter.height(), kHeight);
    std::vector<Status> results;
    ASSERT_TRUE(cutter.cutToBmp(cuts, results));
    ASSERT_EQ(results.size(), boxes.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
      ASSERT_TRUE(results[i]) << results[i].message();
      const std::string general = dir.file("general_" + std::to_string(i) + ".bmp");
      EXPECT_EQ(fileBytes(cuts[i].path), fileBytes(general)) << "box " << i;
      Raster streamedPixels, generalPixels;
      ASSERT_TRUE(readBmp(cuts[i].path, streamedPixels));
      ASSERT_TRUE(readBmp(general, generalPixels));
      EXPECT_TRUE(samePixels(streamedPixels, generalPixels)) << "box " << i;
    }
  }

  std::string photoPath;
};

TEST_P(JpegRowCutterTest, RowsOfATrayInOnePass) {
  // Five rows with gaps between them and a frame around, as on a core tray.
  expectSameFilesAsTheGeneralWay(
      {{9, 5, 185, 27}, {9, 35, 185, 27}, {9, 66, 185, 28}, {9, 98, 185, 27}, {9, 129, 185, 25}});
}

TEST_P(JpegRowCutterTest, BoxesAtThePhotographsEdges) {
  expectSameFilesAsTheGeneralWay({{0, 0, kWidth, kHeight},          // the whole photograph
                                  {0, 0, 17, 9},                    // top-left corner
                                  {kWidth - 13, kHeight - 11, 13, 11},  // bottom-right corner
                                  {kWidth - 1, 0, 1, kHeight},      // the last column
                                  {0, kHeight - 1, kWidth, 1}});    // the last scanline
}

TEST_P(JpegRowCutterTest, OddWidthsOffsetsAndOverlaps) {
  // Widths whose rows need padding in a BMP, boxes starting inside a block,
  // boxes that share scanlines and one inside another.
  expectSameFilesAsTheGeneralWay(
      {{3, 7, 1, 1}, {21, 13, 61, 33}, {50, 20, 2, 70}, {33, 40, 101, 3}, {100, 1, 95, 150}, {101, 2, 93, 148}});
}

TEST_P(JpegRowCutterTest, ClippedBoxesMatchTheGeneralWaysClipping) {
  // Boxes reaching past the photograph: the general way clips them itself,
  // the cutter is handed them clipped as the splitter does.
  expectSameFilesAsTheGeneralWay({{-10, -4, 40, 30}, {180, 140, 60, 60}, {-5, 60, kWidth + 10, 20}});
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegRowCutterTest,
                         ::testing::Values(JpegKind{"Chroma420", VIPS_FOREIGN_SUBSAMPLE_ON, false},
                                           JpegKind{"Chroma444", VIPS_FOREIGN_SUBSAMPLE_OFF, false},
                                           JpegKind{"Progressive420", VIPS_FOREIGN_SUBSAMPLE_ON, true}),
                         [](const auto& info) { return std::string(info.param.name); });

class JpegRowCutterRefuses : public ImageTest {};

TEST_F(JpegRowCutterRefuses, PhotographsItCannotTakeGoTheGeneralWay) {
  const Raster picture = trayLikeRaster(64, 48);
  const std::string png = dir.file("tray.png");
  saveWithVips(picture, png);
  const std::string turned = dir.file("turned.jpg");
  saveWithVips(picture, turned, 6);
  const std::string grey = dir.file("grey.jpg");
  toVips(picture).extract_band(1).jpegsave(grey.c_str());
  const std::string upright = dir.file("upright.jpg");
  saveWithVips(picture, upright, 1);

  JpegRowCutter cutter;
  EXPECT_FALSE(cutter.open(png));
  EXPECT_FALSE(cutter.open(turned));
  EXPECT_FALSE(cutter.open(grey));
  EXPECT_FALSE(cutter.open(dir.file("missing.jpg")));
  EXPECT_TRUE(cutter.open(upright));
}

TEST_F(JpegRowCutterRefuses, BoxOffThePhotographIsNotCut) {
  const std::string jpeg = dir.file("tray.jpg");
  saveWithVips(trayLikeRaster(64, 48), jpeg);
  JpegRowCutter cutter;
  ASSERT_TRUE(cutter.open(jpeg));
  std::vector<Status> results;
  EXPECT_FALSE(cutter.cutToBmp({{{50, 0, 20, 10}, dir.file("row.bmp")}}, results));
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{"tray.jpg"}));
}

TEST_F(JpegRowCutterRefuses, DamagedDataLeavesNoFileAndTheGeneralWaySaysWhy) {
  const std::string jpeg = dir.file("tray.jpg");
  saveWithVips(trayLikeRaster(160, 120), jpeg);
  auto bytes = fileBytes(jpeg);
  const std::size_t whole = bytes.size();
  for (const std::size_t keep : {whole * 2 / 3, whole - 3}) {
    SCOPED_TRACE(keep);
    bytes.resize(keep);
    const std::string cut = dir.file("cut.jpg");
    writeBytes(cut, bytes);
    JpegRowCutter cutter;
    ASSERT_TRUE(cutter.open(cut));  // the headers are whole
    std::vector<Status> results;
    // Rows near the top only: the damage lies below them, and still counts.
    EXPECT_FALSE(cutter.cutToBmp({{{0, 0, 160, 10}, dir.file("a.bmp")}, {{10, 12, 30, 10}, dir.file("b.bmp")}},
                                 results));
    EXPECT_EQ(dir.entries(), (std::vector<std::string>{"cut.jpg", "tray.jpg"}));
    // The general way refuses the same file, and its message is the one the user sees.
    Photo photo;
    const Status loaded = Photo::load(cut, photo);
    EXPECT_FALSE(loaded);
    EXPECT_EQ(loaded.message().rfind("Error loading: " + cut, 0), 0u) << loaded.message();
    bytes = fileBytes(jpeg);
  }
}

TEST_F(JpegRowCutterRefuses, FileThatCannotBeMadeFailsAloneOthersWritten) {
  const Raster picture = trayLikeRaster(64, 48);
  const std::string jpeg = dir.file("tray.jpg");
  saveWithVips(picture, jpeg);
  JpegRowCutter cutter;
  ASSERT_TRUE(cutter.open(jpeg));
  std::vector<Status> results;
  ASSERT_TRUE(cutter.cutToBmp({{{0, 0, 64, 20}, dir.file("no-such-folder/a.bmp")}, {{0, 20, 64, 20}, dir.file("b.bmp")}},
                              results));
  ASSERT_EQ(results.size(), 2u);
  EXPECT_FALSE(results[0]);
  EXPECT_EQ(results[0].message().rfind("cannot create the file", 0), 0u) << results[0].message();
  EXPECT_TRUE(results[1]) << results[1].message();
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{"b.bmp", "tray.jpg"}));
  Photo photo;
  ASSERT_TRUE(Photo::load(jpeg, photo));
  Raster expected, written;
  CutSpec spec;
  spec.box = {0, 20, 64, 20};
  ASSERT_TRUE(photo.cut(spec, expected));
  ASSERT_TRUE(readBmp(dir.file("b.bmp"), written));
  EXPECT_TRUE(samePixels(written, expected));
}

}  // namespace
}  // namespace subsurf::image
