// Our BMP writer and reader: file layout, round trips, and damaged files.
#include "host/image/bmp.h"

#include <gtest/gtest.h>

#include "host/image/image_writer.h"
#include "image_test_support.h"

namespace subsurf::image {
namespace {

using namespace testing;

std::uint32_t le32(const std::vector<std::uint8_t>& b, std::size_t at) {
  return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (std::uint32_t{b[at + 3]} << 24);
}
std::uint16_t le16(const std::vector<std::uint8_t>& b, std::size_t at) { return b[at] | (b[at + 1] << 8); }

class BmpTest : public ImageTest {};

TEST_F(BmpTest, HeaderDescribesABottomUp24BitPicture) {
  const Raster r = patternRaster(5, 3);
  const std::string path = dir.file("row.bmp");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Bmp));
  const auto b = fileBytes(path);
  ASSERT_EQ(b.size(), 54u + 16u * 3u);
  EXPECT_EQ(b[0], 'B');
  EXPECT_EQ(b[1], 'M');
  EXPECT_EQ(le32(b, 2), b.size());  // file size
  EXPECT_EQ(le32(b, 10), 54u);      // pixels start after both headers
  EXPECT_EQ(le32(b, 14), 40u);      // BITMAPINFOHEADER
  EXPECT_EQ(le32(b, 18), 5u);
  EXPECT_EQ(le32(b, 22), 3u);  // positive height: bottom row stored first
  EXPECT_EQ(le16(b, 26), 1u);
  EXPECT_EQ(le16(b, 28), 24u);
  EXPECT_EQ(le32(b, 30), 0u);
  EXPECT_EQ(le32(b, 34), 48u);
  // The first stored pixel is the bottom-left one, in blue-green-red order.
  const std::uint8_t* bottomLeft = r.pixel(0, 2);
  EXPECT_EQ(b[54], bottomLeft[2]);
  EXPECT_EQ(b[55], bottomLeft[1]);
  EXPECT_EQ(b[56], bottomLeft[0]);
  // The row's padding (15 bytes of pixels, 1 of padding) is zero.
  EXPECT_EQ(b[54 + 15], 0);
  // The last stored row is the top row.
  const std::uint8_t* topRight = r.pixel(4, 0);
  EXPECT_EQ(b[54 + 2 * 16 + 12], topRight[2]);
  EXPECT_EQ(b[54 + 2 * 16 + 14], topRight[0]);
}

TEST_F(BmpTest, RoundTripKeepsEveryPixelForAllPaddings) {
  for (int width : {1, 2, 3, 4, 5, 7, 641}) {
    SCOPED_TRACE(width);
    const Raster r = patternRaster(width, 9);
    const std::string path = dir.file("w" + std::to_string(width) + ".bmp");
    ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Bmp));
    Raster back;
    ASSERT_TRUE(readBmp(path, back));
    EXPECT_TRUE(samePixels(r, back));
  }
}

TEST_F(BmpTest, StripsLargerThanOneMegabyteJoinUp) {
  // Tall enough that the writer needs several strips.
  const Raster r = patternRaster(700, 1200);
  const std::string path = dir.file("tall.bmp");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Bmp));
  Raster back;
  ASSERT_TRUE(readBmp(path, back));
  EXPECT_TRUE(samePixels(r, back));
}

// Builds a BMP by hand, for forms our writer never makes.
std::vector<std::uint8_t> handMadeBmp(int width, int height, int bits, std::uint32_t compression,
                                      const std::vector<std::uint8_t>& extra, const std::vector<std::uint8_t>& rows) {
  std::vector<std::uint8_t> b(54, 0);
  auto put32 = [&](std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
  };
  b[0] = 'B';
  b[1] = 'M';
  put32(10, static_cast<std::uint32_t>(54 + extra.size()));
  put32(14, 40);
  put32(18, static_cast<std::uint32_t>(width));
  put32(22, static_cast<std::uint32_t>(height));
  b[26] = 1;
  b[28] = static_cast<std::uint8_t>(bits);
  put32(30, compression);
  b.insert(b.end(), extra.begin(), extra.end());
  b.insert(b.end(), rows.begin(), rows.end());
  put32(2, static_cast<std::uint32_t>(b.size()));
  return b;
}

// Whether `convert` is an ImageMagick that reads BMP files: it must turn a
// two-pixel bitmap made by hand into the same two pixels. A program of that
// name may be something else altogether, or built without BMP support.
std::string convertCannotReadBmp(const ScratchDir& dir) {
  if (std::system("command -v convert >/dev/null 2>&1") != 0) return "no program named convert";
  // Blue then red, bottom-up rows padded to four bytes, pixels stored as BGR.
  const std::vector<std::uint8_t> known = handMadeBmp(2, 1, 24, 0, {}, {255, 0, 0, 0, 0, 255, 0, 0});
  const std::string bmp = dir.file("known.bmp"), png = dir.file("known.png");
  writeBytes(bmp, known);
  if (std::system(("convert '" + bmp + "' -type TrueColor 'PNG24:" + png + "' >/dev/null 2>&1").c_str()) != 0)
    return "convert fails on a valid bitmap (not ImageMagick, or no BMP support)";
  try {
    const Raster r = fromVips(vips::VImage::new_from_file(png.c_str()).cast(VIPS_FORMAT_UCHAR));
    if (r.width() == 2 && r.height() == 1 && r.pixel(0, 0)[2] == 255 && r.pixel(1, 0)[0] == 255) return "";
  } catch (const vips::VError&) {
  }
  return "convert misreads a valid bitmap";
}

TEST_F(BmpTest, AnotherReaderAgreesWithOurFile) {
  // ImageMagick's converter is an independent reader (scripts/setup.sh
  // installs it); the test first checks that the program does the job.
  if (const std::string why = convertCannotReadBmp(dir); !why.empty()) GTEST_SKIP() << why;
  const Raster r = patternRaster(13, 6);
  const std::string path = dir.file("check.bmp");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Bmp));
  const std::string png = dir.file("check.png");
  ASSERT_EQ(std::system(("convert '" + path + "' -type TrueColor 'PNG24:" + png + "'").c_str()), 0);
  vips::VImage loaded = vips::VImage::new_from_file(png.c_str());
  EXPECT_TRUE(samePixels(r, fromVips(loaded.cast(VIPS_FORMAT_UCHAR))));
}


TEST_F(BmpTest, ReadsPaletteTopDownAndBitFieldForms) {
  {  // 8-bit palette, two colours, rows of 3 pixels padded to 4 bytes, bottom-up
    const std::vector<std::uint8_t> palette = {255, 0, 0, 0, /* blue */ 0, 255, 0, 0 /* green */};
    const std::vector<std::uint8_t> rows = {0, 1, 0, 0, /* bottom */ 1, 1, 0, 0 /* top */};
    const std::string path = dir.file("pal8.bmp");
    writeBytes(path, handMadeBmp(3, 2, 8, 0, palette, rows));
    Raster r;
    ASSERT_TRUE(readBmp(path, r));
    ASSERT_EQ(r.width(), 3);
    ASSERT_EQ(r.height(), 2);
    EXPECT_EQ(r.pixel(0, 1)[2], 255);  // bottom-left: palette entry 0, blue
    EXPECT_EQ(r.pixel(1, 1)[1], 255);  // bottom-middle: green
    EXPECT_EQ(r.pixel(0, 0)[1], 255);  // top-left: green
    EXPECT_EQ(r.pixel(0, 0)[2], 0);
  }
  {  // 1-bit, top-down (negative height)
    const std::vector<std::uint8_t> palette = {0, 0, 0, 0, 255, 255, 255, 0};
    const std::vector<std::uint8_t> rows = {0b10100000, 0, 0, 0, 0b01000000, 0, 0, 0};
    const std::string path = dir.file("mono.bmp");
    writeBytes(path, handMadeBmp(3, -2, 1, 0, palette, rows));
    Raster r;
    ASSERT_TRUE(readBmp(path, r));
    EXPECT_EQ(r.pixel(0, 0)[0], 255);
    EXPECT_EQ(r.pixel(1, 0)[0], 0);
    EXPECT_EQ(r.pixel(2, 0)[0], 255);
    EXPECT_EQ(r.pixel(1, 1)[0], 255);
  }
  {  // 32-bit with bit fields: red in the low byte
    const std::vector<std::uint8_t> masks = {0xff, 0, 0, 0, 0, 0xff, 0, 0, 0, 0, 0xff, 0};
    const std::vector<std::uint8_t> rows = {10, 20, 30, 0};
    const std::string path = dir.file("fields.bmp");
    writeBytes(path, handMadeBmp(1, 1, 32, 3, masks, rows));
    Raster r;
    ASSERT_TRUE(readBmp(path, r));
    EXPECT_EQ(r.pixel(0, 0)[0], 10);
    EXPECT_EQ(r.pixel(0, 0)[1], 20);
    EXPECT_EQ(r.pixel(0, 0)[2], 30);
  }
  {  // 16-bit 5-5-5: full red
    const std::vector<std::uint8_t> rows = {0x00, 0x7c, 0, 0};
    const std::string path = dir.file("rgb555.bmp");
    writeBytes(path, handMadeBmp(1, 1, 16, 0, {}, rows));
    Raster r;
    ASSERT_TRUE(readBmp(path, r));
    EXPECT_EQ(r.pixel(0, 0)[0], 255);
    EXPECT_EQ(r.pixel(0, 0)[1], 0);
  }
}

TEST_F(BmpTest, DamagedFilesAreRefusedWithAReason) {
  const Raster r = patternRaster(6, 4);
  const std::string good = dir.file("good.bmp");
  ASSERT_TRUE(writeImage(r.view(), good, ImageFormat::Bmp));
  auto bytes = fileBytes(good);
  BmpInfo info;

  auto truncated = bytes;
  truncated.resize(bytes.size() - 1);
  writeBytes(dir.file("short.bmp"), truncated);
  Status s = readBmpInfo(dir.file("short.bmp"), info);
  EXPECT_EQ(s.message(), "the file is truncated");

  writeBytes(dir.file("header.bmp"), std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 20));
  EXPECT_EQ(readBmpInfo(dir.file("header.bmp"), info).message(), "the file is truncated");

  auto rle = bytes;
  rle[30] = 1;  // run-length compression
  writeBytes(dir.file("rle.bmp"), rle);
  EXPECT_EQ(readBmpInfo(dir.file("rle.bmp"), info).message(), "unsupported BMP compression 1");

  auto zeroWidth = bytes;
  zeroWidth[18] = zeroWidth[19] = 0;
  writeBytes(dir.file("zero.bmp"), zeroWidth);
  EXPECT_EQ(readBmpInfo(dir.file("zero.bmp"), info).message(), "impossible BMP size 0 x 4");

  writeBytes(dir.file("text.bmp"), {'h', 'e', 'l', 'l', 'o'});
  EXPECT_EQ(readBmpInfo(dir.file("text.bmp"), info).message(), "not a BMP file");
  EXPECT_FALSE(looksLikeBmp(dir.file("text.bmp")));
  EXPECT_EQ(readBmpInfo(dir.file("missing.bmp"), info).message(), "file not found");
}

}  // namespace
}  // namespace subsurf::image
