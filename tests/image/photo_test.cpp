// Reading photographs: formats, camera orientation, header sizes, colour
// forms, and the messages for photographs that cannot be read.
#include "host/image/photo.h"

#include <gtest/gtest.h>

#include "host/image/image_messages.h"
#include "host/image/image_writer.h"
#include "image_test_support.h"

namespace subsurf::image {
namespace {

using namespace testing;

class PhotoTest : public ImageTest {
 protected:
  // Loads and reads back the whole upright picture.
  Raster loadAll(const std::string& path) {
    Photo photo;
    Status s = Photo::load(path, photo);
    EXPECT_TRUE(s) << s.message();
    Raster all;
    if (s) {
      EXPECT_TRUE(photo.cut({{0, 0, photo.width(), photo.height()}}, all));
    }
    return all;
  }
};

TEST_F(PhotoTest, LosslessFormatsLoadPixelForPixel) {
  const Raster r = patternRaster(37, 23);
  for (const char* name : {"p.png", "p.tif", "p.bmp"}) {
    SCOPED_TRACE(name);
    const std::string path = dir.file(name);
    if (std::string(name) == "p.bmp") {
      ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Bmp));
    } else {
      saveWithVips(r, path);
    }
    EXPECT_TRUE(samePixels(r, loadAll(path)));
  }
}

TEST_F(PhotoTest, JpegLoadsCloseToTheOriginal) {
  // A smooth picture, as JPEG is meant for.
  Raster r(64, 48);
  for (int y = 0; y < 48; ++y)
    for (int x = 0; x < 64; ++x) {
      std::uint8_t* p = r.pixel(x, y);
      p[0] = static_cast<std::uint8_t>(x * 3);
      p[1] = static_cast<std::uint8_t>(y * 4);
      p[2] = 128;
    }
  const std::string path = dir.file("p.jpg");
  toVips(r).jpegsave(path.c_str(), vips::VImage::option()->set("Q", 95));
  const Raster back = loadAll(path);
  ASSERT_EQ(back.width(), 64);
  ASSERT_EQ(back.height(), 48);
  EXPECT_LT(meanAbsDifference(r, back), 2.0);
}

TEST_F(PhotoTest, CameraOrientationIsAppliedToPixelsAndSizes) {
  const Raster r = patternRaster(6, 4);
  struct Case {
    int orientation;
    int turns;      // clockwise quarter turns that make the picture upright
    bool mirrored;  // mirrored left-right after turning
  };
  // 4, 5 and 7 are the mirrored forms: a vertical mirror is a half turn and a
  // left-right mirror; 5 is the picture transposed, 7 transposed the other way.
  for (const Case c : {Case{1, 0, false}, Case{2, 0, true}, Case{3, 2, false}, Case{4, 2, true},
                       Case{5, 1, true}, Case{6, 1, false}, Case{7, 3, true}, Case{8, 3, false}}) {
    SCOPED_TRACE(c.orientation);
    const std::string path = dir.file("o" + std::to_string(c.orientation) + ".tif");
    saveWithVips(r, path, c.orientation);
    Raster expected = turnedClockwise(r, c.turns);
    if (c.mirrored) {
      Raster m = expected;
      for (int y = 0; y < m.height(); ++y)
        for (int x = 0; x < m.width(); ++x) std::memcpy(m.pixel(x, y), expected.pixel(m.width() - 1 - x, y), 3);
      expected = m;
    }
    Photo photo;
    ASSERT_TRUE(Photo::load(path, photo));
    EXPECT_EQ(photo.orientation(), c.orientation);
    EXPECT_EQ(photo.width(), expected.width());
    EXPECT_EQ(photo.height(), expected.height());
    EXPECT_TRUE(samePixels(expected, loadAll(path)));

    PixelSize size;
    ASSERT_TRUE(readPixelSize(path, size));
    EXPECT_EQ(size.width, expected.width());
    EXPECT_EQ(size.height, expected.height());
    int npixx = 0, npixy = 0;
    ASSERT_TRUE(readImageAttribute(path, "npixx", npixx));
    ASSERT_TRUE(readImageAttribute(path, "npixy", npixy));
    EXPECT_EQ(npixx, expected.width());
    EXPECT_EQ(npixy, expected.height());
  }
}

TEST_F(PhotoTest, JpegOrientationTagIsHonoured) {
  const Raster r = patternRaster(40, 20);
  const std::string path = dir.file("portrait.jpg");
  saveWithVips(r, path, 6);
  PixelSize size;
  ASSERT_TRUE(readPixelSize(path, size));
  EXPECT_EQ(size.width, 20);
  EXPECT_EQ(size.height, 40);
}

TEST_F(PhotoTest, UnknownAttributeNameIsAnError) {
  const std::string path = dir.file("p.png");
  saveWithVips(patternRaster(3, 3), path);
  int value = -1;
  Status s = readImageAttribute(path, "npixz", value);
  EXPECT_EQ(s.message(), "unknown image attribute \"npixz\"");
  EXPECT_EQ(value, 0);
}

TEST_F(PhotoTest, GreyAlphaAndSixteenBitPicturesBecomeRgb8) {
  {  // grey: three equal bands
    vips::VImage grey = vips::VImage::black(4, 2).linear(1.0, 100.0).cast(VIPS_FORMAT_UCHAR);
    grey.pngsave(dir.file("grey.png").c_str());
    const Raster back = loadAll(dir.file("grey.png"));
    ASSERT_EQ(back.width(), 4);
    EXPECT_EQ(back.pixel(3, 1)[0], 100);
    EXPECT_EQ(back.pixel(3, 1)[1], 100);
    EXPECT_EQ(back.pixel(3, 1)[2], 100);
  }
  {  // transparent red over white stays white; opaque red stays red
    vips::VImage rgba = vips::VImage::black(2, 1, vips::VImage::option()->set("bands", 4))
                            .cast(VIPS_FORMAT_UCHAR)
                            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
                            .copy_memory();
    rgba.draw_rect({255, 0, 0, 255}, 0, 0, 1, 1);
    rgba.draw_rect({255, 0, 0, 0}, 1, 0, 1, 1);
    rgba.pngsave(dir.file("alpha.png").c_str());
    const Raster back = loadAll(dir.file("alpha.png"));
    ASSERT_EQ(back.width(), 2);
    EXPECT_EQ(back.pixel(0, 0)[0], 255);
    EXPECT_EQ(back.pixel(0, 0)[1], 0);
    EXPECT_EQ(back.pixel(1, 0)[1], 255);
  }
  {  // 16-bit RGB: 65535 is full intensity
    vips::VImage deep = vips::VImage::black(2, 2, vips::VImage::option()->set("bands", 3)).linear(1.0, 65535.0);
    deep = deep.cast(VIPS_FORMAT_USHORT).copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
    deep.tiffsave(dir.file("deep.tif").c_str());
    const Raster back = loadAll(dir.file("deep.tif"));
    ASSERT_EQ(back.width(), 2);
    EXPECT_EQ(back.pixel(1, 1)[0], 255);
  }
}

TEST_F(PhotoTest, UnreadablePhotographsAreNamedInTheMessage) {
  struct Case {
    std::string name;
    std::vector<std::uint8_t> bytes;
    std::string reason;  // expected reason, or empty to accept any
  };
  const std::string jpeg = dir.file("good.jpg");
  saveWithVips(patternRaster(300, 200), jpeg);
  auto cutJpeg = fileBytes(jpeg);
  cutJpeg.resize(cutJpeg.size() / 2);
  auto brokenBmp = std::vector<std::uint8_t>{'B', 'M', 1, 2, 3};

  const std::vector<Case> cases = {
      {"truncated.jpg", cutJpeg, ""},
      {"words.jpg", {'n', 'o', 't', ' ', 'a', ' ', 'p', 'h', 'o', 't', 'o'},
       "not a picture in a format that can be read"},
      {"empty.png", {}, "not a picture in a format that can be read"},
      {"short.bmp", brokenBmp, "the file is truncated"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = dir.file(c.name);
    writeBytes(path, c.bytes);
    host::clearRecorded();
    Photo photo;
    Status s = Photo::load(path, photo);
    ASSERT_FALSE(s);
    EXPECT_FALSE(photo.loaded());
    const std::string start = "Error loading: " + path + " (";
    EXPECT_EQ(s.message().rfind(start, 0), 0u) << s.message();
    if (!c.reason.empty()) {
      EXPECT_EQ(s.message(), start + c.reason + ")");
    }
    // The user saw the same text.
    ASSERT_EQ(host::recordedMessages().size(), 1u);
    EXPECT_EQ(host::recordedMessages()[0], s.message());
  }

  const std::string missing = dir.file("missing.jpg");
  Photo photo;
  EXPECT_EQ(Photo::load(missing, photo).message(), "Error loading: " + missing + " (file not found)");
  PixelSize size{5, 5};
  EXPECT_EQ(readPixelSize(missing, size).message(), "Error loading: " + missing + " (file not found)");
  EXPECT_EQ(size.width, 0);
  EXPECT_EQ(Photo::load(dir.path().string(), photo).message(),
            "Error loading: " + dir.path().string() + " (not a file)");
  EXPECT_EQ(statusWord(Photo::load(missing, photo)), 1);
}

TEST_F(PhotoTest, TruncatedJpegHeaderStillGivesItsSize) {
  // The size comes from the header alone: a file whose pixels are cut short
  // still reports its size, and only decoding fails.
  const std::string jpeg = dir.file("good.jpg");
  saveWithVips(patternRaster(300, 200), jpeg);
  auto bytes = fileBytes(jpeg);
  bytes.resize(bytes.size() * 3 / 4);
  writeBytes(dir.file("cut.jpg"), bytes);
  PixelSize size;
  ASSERT_TRUE(readPixelSize(dir.file("cut.jpg"), size));
  EXPECT_EQ(size.width, 300);
  Photo photo;
  EXPECT_FALSE(Photo::load(dir.file("cut.jpg"), photo));
}

}  // namespace
}  // namespace subsurf::image
