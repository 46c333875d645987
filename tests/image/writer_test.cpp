// Writing row images: every format read back, names chosen from suffixes,
// and failures that leave no file behind.
#include "host/image/image_writer.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

#include <thread>

#include "host/image/atomic_output.h"
#include "host/image/bmp.h"
#include "host/image/cgm.h"
#include "host/image/image_messages.h"
#include "image_test_support.h"

namespace subsurf::image {
namespace {

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

using namespace testing;

TEST(FormatForFileName, ReadsTheSuffixWhateverItsCase) {
  EXPECT_EQ(formatForFileName("ROW.BMP"), ImageFormat::Bmp);
  EXPECT_EQ(formatForFileName("row.jpeg"), ImageFormat::Jpeg);
  EXPECT_EQ(formatForFileName("row.tiff"), ImageFormat::Tiff);
  EXPECT_EQ(formatForFileName("row.gif"), std::nullopt);
  EXPECT_EQ(formatForFileName("row"), std::nullopt);
  // A dot in a folder name is not a suffix.
  EXPECT_EQ(formatForFileName("trays.bmp/row"), std::nullopt);
  EXPECT_EQ(formatForFileName("c:\\trays.bmp\\row"), std::nullopt);
  for (ImageFormat f : {ImageFormat::Bmp, ImageFormat::Cgm, ImageFormat::Png, ImageFormat::Jpeg, ImageFormat::Tiff}) {
    EXPECT_EQ(formatForFileName("x" + std::string(formatSuffix(f))), f);
  }
}

class WriterTest : public ImageTest {
 protected:
  void SetUp() override {
    ImageTest::SetUp();
    original = patternRaster(48, 36);
    photoPath = dir.file("tray.png");
    saveWithVips(original, photoPath);
    ASSERT_TRUE(Photo::load(photoPath, photo));
  }
  Raster readBack(const std::string& path, ImageFormat format) {
    Raster r;
    if (format == ImageFormat::Bmp) {
      EXPECT_TRUE(readBmp(path, r));
    } else if (format == ImageFormat::Cgm) {
      EXPECT_TRUE(readCgmCellArray(path, r));
    } else {
      r = fromVips(vips::VImage::new_from_file(path.c_str()));
    }
    return r;
  }
  Raster original;
  std::string photoPath;
  Photo photo;
};

TEST_F(WriterTest, CutRowsRoundTripThroughEveryLosslessFormat) {
  CutSpec spec{{4, 6, 30, 9}};
  for (int turns : {0, 1, 3}) {
    spec.quarterTurns = turns;
    Raster expected;
    ASSERT_TRUE(photo.cut(spec, expected));
    for (ImageFormat f : {ImageFormat::Bmp, ImageFormat::Cgm, ImageFormat::Png, ImageFormat::Tiff}) {
      SCOPED_TRACE(std::string(formatSuffix(f)) + " turns " + std::to_string(turns));
      const std::string out = dir.file("row" + std::to_string(turns) + std::string(formatSuffix(f)));
      ASSERT_TRUE(cutToFile(photo, spec, out, f));
      EXPECT_TRUE(samePixels(expected, readBack(out, f)));
    }
  }
}

TEST_F(WriterTest, JpegRowIsCloseToTheCut) {
  Raster smooth(64, 32);
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 64; ++x) {
      smooth.pixel(x, y)[0] = static_cast<std::uint8_t>(x * 4);
      smooth.pixel(x, y)[1] = static_cast<std::uint8_t>(y * 8);
      smooth.pixel(x, y)[2] = 90;
    }
  const std::string out = dir.file("row.jpg");
  WriteOptions options;
  options.jpegQuality = 97;
  ASSERT_TRUE(writeImage(smooth.view(), out, ImageFormat::Jpeg, options));
  EXPECT_LT(meanAbsDifference(smooth, readBack(out, ImageFormat::Jpeg)), 2.0);
}

TEST_F(WriterTest, ViewsIntoWiderPicturesAreWrittenRowByRow) {
  // A view with a stride wider than its rows, as a crop of a photo is.
  const PixelBox box{10, 5, 7, 4};
  RasterView view{original.pixel(box.left, box.top), box.width, box.height, original.stride()};
  for (ImageFormat f : {ImageFormat::Bmp, ImageFormat::Cgm, ImageFormat::Png}) {
    SCOPED_TRACE(std::string(formatSuffix(f)));
    const std::string out = dir.file("view" + std::string(formatSuffix(f)));
    ASSERT_TRUE(writeImage(view, out, f));
    EXPECT_TRUE(samePixels(region(original, box), readBack(out, f)));
  }
}

TEST_F(WriterTest, AnExistingImageIsReplacedWholeAndNothingElseIsLeft) {
  const std::string out = dir.file("row.bmp");
  ASSERT_TRUE(cutToFile(photo, {{0, 0, 12, 12}}, out, ImageFormat::Bmp));
  ASSERT_TRUE(cutToFile(photo, {{0, 0, 10, 10}}, out, ImageFormat::Bmp));
  EXPECT_EQ(readBack(out, ImageFormat::Bmp).width(), 10);
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{"row.bmp", "tray.png"}));
}

TEST_F(WriterTest, AFileThatIsNotAnImageOfTheKindIsLeftAlone) {
  for (ImageFormat f : {ImageFormat::Bmp, ImageFormat::Cgm, ImageFormat::Png, ImageFormat::Jpeg, ImageFormat::Tiff}) {
    const std::string suffix(formatSuffix(f));
    SCOPED_TRACE(suffix);
    const std::string out = dir.file("notes" + suffix);
    writeBytes(out, {'o', 'l', 'd'});
    Status s = cutToFile(photo, {{0, 0, 10, 10}}, out, f);
    ASSERT_FALSE(s);
    EXPECT_NE(s.message().find("(a file that is not a " + suffix.substr(1) +
                               " image is already there; it is left as it is)"),
              std::string::npos)
        << s.message();
    EXPECT_EQ(readAll(out), "old");
    // Once it is one of ours, it is replaced as any row image is.
    fs::remove(out);
    ASSERT_TRUE(cutToFile(photo, {{0, 0, 12, 12}}, out, f));
    EXPECT_TRUE(cutToFile(photo, {{0, 0, 10, 10}}, out, f));
  }
}

TEST_F(WriterTest, MissingFolderFailsWithTheBitmapMessages) {
  const std::string out = dir.file("no-such-folder/row.bmp");
  Status s = cutToFile(photo, {{0, 0, 10, 10}}, out, ImageFormat::Bmp);
  EXPECT_EQ(s.message(), out + " ... converting to BMP\nConversion failed. (cannot create the file: No such file or directory)");
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{s.message()});
  EXPECT_EQ(statusWord(s), 1);

  host::clearRecorded();
  const std::string cgm = dir.file("no-such-folder/row.cgm");
  EXPECT_EQ(writeImage(original.view(), cgm, ImageFormat::Cgm).message(),
            cgm + "\nConversion failed. (cannot create the file: No such file or directory)");
  const std::string png = dir.file("no-such-folder/row.png");
  EXPECT_EQ(writeImage(original.view(), png, ImageFormat::Png).message(),
            png + "\nConversion failed. (cannot create the file: No such file or directory)");
}

TEST_F(WriterTest, ReadOnlyFolderFailsAndLeavesNothing) {
  const fs::path locked = dir.path() / "locked";
  fs::create_directories(locked);
  fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
  if (::access(locked.c_str(), W_OK) == 0) {
    fs::permissions(locked, fs::perms::owner_all);
    GTEST_SKIP() << "running with rights that ignore folder permissions";
  }
  const std::string out = (locked / "row.bmp").string();
  Status s = cutToFile(photo, {{0, 0, 10, 10}}, out, ImageFormat::Bmp);
  fs::permissions(locked, fs::perms::owner_all);
  EXPECT_EQ(s.message(), out + " ... converting to BMP\nConversion failed. (cannot create the file: Permission denied)");
  EXPECT_TRUE(fs::is_empty(locked));
}

TEST_F(WriterTest, FailedRenameRemovesTheTemporaryFileAndKeepsTheOldImage) {
  for (ImageFormat f : {ImageFormat::Bmp, ImageFormat::Cgm, ImageFormat::Tiff}) {
    SCOPED_TRACE(std::string(formatSuffix(f)));
    const std::string target = dir.file("taken" + std::string(formatSuffix(f)));
    ASSERT_TRUE(cutToFile(photo, {{0, 0, 10, 10}}, target, f));
    const std::string old = readAll(target);
    failNextRenamesForTesting(2, EIO);  // the exchange, then the plain rename
    Status s = cutToFile(photo, {{0, 0, 12, 12}}, target, f);
    failNextRenamesForTesting(0, 0);
    ASSERT_FALSE(s);
    EXPECT_NE(s.message().find("Conversion failed. (cannot replace the file: Input/output error)"), std::string::npos)
        << s.message();
    EXPECT_EQ(readAll(target), old);
  }
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{"taken.bmp", "taken.cgm", "taken.tif", "tray.png"}));
}

TEST_F(WriterTest, AFolderOrPipeIsNeverReplacedByAnImage) {
  const fs::path folder = dir.path() / "taken.bmp";
  fs::create_directories(folder / "inside");
  Status s = cutToFile(photo, {{0, 0, 10, 10}}, folder.string(), ImageFormat::Bmp);
  ASSERT_FALSE(s);
  EXPECT_NE(s.message().find("(it is a folder)"), std::string::npos) << s.message();
  EXPECT_TRUE(fs::is_directory(folder / "inside"));
  const std::string fifo = dir.file("pipe.bmp");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  s = cutToFile(photo, {{0, 0, 10, 10}}, fifo, ImageFormat::Bmp);
  ASSERT_FALSE(s);
  EXPECT_NE(s.message().find("(not a regular file; it is left as it is)"), std::string::npos) << s.message();
  EXPECT_TRUE(fs::is_fifo(fifo));
}

TEST_F(WriterTest, CutOutsideThePhotoWritesNothing) {
  const std::string out = dir.file("row.bmp");
  Status s = cutToFile(photo, {{100, 100, 10, 10}}, out, ImageFormat::Bmp);
  EXPECT_EQ(s.message().rfind("Error converting: " + photoPath + " (", 0), 0u) << s.message();
  EXPECT_FALSE(fs::exists(out));
}

// A source that fails part-way, as a damaged photograph does when its pixels
// are computed.
class FailingRows : public RowSource {
 public:
  int width() const override { return 10; }
  int height() const override { return 2000; }
  Status readRows(int y0, int count, std::uint8_t* dst, std::size_t stride) override {
    if (y0 < 1000) return Status::error("the pixels ran out");
    for (int i = 0; i < count; ++i) std::memset(dst + i * stride, 7, 30);
    return Status::ok();
  }
};

TEST_F(WriterTest, FailureHalfWayThroughLeavesNoPartialFile) {
  for (ImageFormat f : {ImageFormat::Bmp, ImageFormat::Cgm}) {
    FailingRows rows;
    const std::string out = dir.file("half" + std::string(formatSuffix(f)));
    Status s = writeImage(rows, out, f);
    EXPECT_NE(s.message().find("Conversion failed. (the pixels ran out)"), std::string::npos) << s.message();
  }
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"tray.png"});
}

TEST_F(WriterTest, BmpTooLargeForItsSizeFieldsIsRefused) {
  class Huge : public RowSource {
   public:
    int width() const override { return 40000; }
    int height() const override { return 40000; }
    Status readRows(int, int, std::uint8_t*, std::size_t) override { return Status::error("not reached"); }
  } huge;
  const std::string out = dir.file("huge.bmp");
  EXPECT_EQ(writeImage(huge, out, ImageFormat::Bmp).message(),
            out + " ... converting to BMP\nConversion failed. (a picture of 40000 x 40000 pixels is too large for a BMP file)");
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"tray.png"});
}

TEST_F(WriterTest, AtomicOutputWithoutCommitLeavesNothing) {
  {
    AtomicOutput out(dir.file("abandoned.bmp"));
    ASSERT_TRUE(out.open());
    std::fputs("partial", out.stream());
    EXPECT_EQ(dir.entries().size(), 2u);  // the temporary file exists meanwhile
  }
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"tray.png"});
  AtomicOutput unnamed("");
  EXPECT_EQ(unnamed.open().message(), "no file name given");
}

}  // namespace
}  // namespace subsurf::image

namespace subsurf::image {
namespace {

using namespace testing;

class ParallelTest : public ImageTest {};

TEST_F(ParallelTest, PhotosAreCutOnSeveralThreadsAtOnce) {
  // The command-line programs split several photographs side by side.
  constexpr int kThreads = 4;
  std::vector<Raster> originals;
  for (int i = 0; i < kThreads; ++i) {
    originals.push_back(patternRaster(60 + i, 40 + i));
    saveWithVips(originals.back(), dir.file("tray" + std::to_string(i) + ".png"));
  }
  std::vector<int> good(kThreads, 0);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 5; ++round) {
        Photo photo;
        if (!Photo::load(dir.file("tray" + std::to_string(i) + ".png"), photo)) return;
        CutSpec spec{{2, 3, 30, 20}};
        spec.quarterTurns = round;
        const std::string out = dir.file("row" + std::to_string(i) + "-" + std::to_string(round) + ".bmp");
        if (!cutToFile(photo, spec, out, ImageFormat::Bmp)) return;
        Raster back;
        if (!readBmp(out, back)) return;
        if (samePixels(back, turnedClockwise(region(originals[i], {2, 3, 30, 20}), round))) ++good[i];
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(good, std::vector<int>(kThreads, 5));
  EXPECT_EQ(dir.entries().size(), static_cast<std::size_t>(kThreads * 6));  // photos and rows, no leftovers
}

}  // namespace
}  // namespace subsurf::image
