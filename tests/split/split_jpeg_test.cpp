// Splitting upright JPEG trays into BMP rows, the case cut while decoding in
// one pass: the rows, the outcomes and the messages must be those of the
// general way (decode the whole photograph, then cut), including rows that
// reach past the photograph, rows that miss it and files that cannot be written.

#include <gtest/gtest.h>

#include "host/image/photo.h"
#include "split/split_test_support.h"

namespace subsurf::split::testing {
namespace {

class SplitJpeg : public SplitTest {
 protected:
  // T1.jpg, 300 x 200, five bands of 40 pixels, rows 1000-1001 ... 1004-1005.
  void SetUp() override {
    SplitTest::SetUp();
    photoPath = dir.file("T1.jpg");
    makePhoto(photoPath, 300, 200);
    image = &addTray(session, photoPath, 300, 200, 5, 1000.0f, 1.0f);
  }
  PhotoOutcome run() { return splitPhoto(makePhotoJob(*image, 1, options), options); }

  // The part of the photograph the general way gives for box.
  Raster generalCut(const PixelBox& box) {
    image::Photo photo;
    EXPECT_TRUE(image::Photo::load(photoPath, photo));
    image::CutSpec spec;
    spec.box = box;
    Raster r;
    EXPECT_TRUE(photo.cut(spec, r));
    return r;
  }
  static std::string rowName(int k) {
    return "T1_WL_0100" + std::to_string(k) + "_00-0100" + std::to_string(k + 1) + "_00.bmp";
  }

  std::string photoPath;
  CoreImage* image = nullptr;
};

TEST_F(SplitJpeg, RowsAreThoseOfTheGeneralWay) {
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.errorCount, 0);
  EXPECT_TRUE(o.messages.empty());
  ASSERT_EQ(o.rowsWritten(), 5);
  for (int k = 0; k < 5; ++k) {
    EXPECT_TRUE(samePixels(readRow(outFile(rowName(k))), generalCut({0, 40 * k, 300, 40}))) << k;
    EXPECT_EQ(o.rows[k].cut, (PixelBox{0, 40 * k, 300, 40}));
  }
  EXPECT_EQ(o.reportLines.size(), 6u);
}

TEST_F(SplitJpeg, ClippedMissingAndSkippedRowsAsTheGeneralWay) {
  setBoxes(session, *image, {{250, -10, 350, 30}, {400, 0, 500, 40}, {13, 61, 14, 62}, {-7, 150, 121, 205}});
  image->realSetting(rowBaseSetting(3)).V = kRealNull;
  const PhotoOutcome o = run();
  ASSERT_EQ(o.rows.size(), 4u);
  EXPECT_EQ(o.rows[0].result, RowResult::Written);
  EXPECT_EQ(o.rows[0].cut, (PixelBox{250, 0, 50, 30}));
  EXPECT_TRUE(samePixels(readRow(outFile(rowName(0))), generalCut({250, 0, 50, 30})));
  EXPECT_EQ(o.rows[1].result, RowResult::Outside);
  EXPECT_EQ(o.rows[2].result, RowResult::NoDepths);
  EXPECT_EQ(o.rows[3].result, RowResult::Written);
  EXPECT_TRUE(samePixels(readRow(outFile(rowName(3))), generalCut({0, 150, 121, 50})));
  EXPECT_EQ(o.errorCount, 101);
  EXPECT_EQ(o.messages, (std::vector<std::string>{
                            photoPath + ": Core 2: the rectangle (400, 0) to (500, 40) lies outside the 300 x 200 "
                                        "photograph, row skipped",
                            photoPath + ": Core 3: no top or base depth, row skipped",
                            "Core table not complete for one or more rectangles"}));
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{rowName(0), rowName(3)}));
}

TEST_F(SplitJpeg, TruncatedPhotographIsAnErrorLoadingAndLeavesNoFile) {
  auto bytes = image::testing::fileBytes(photoPath);
  bytes.resize(bytes.size() * 3 / 4);  // the damage lies below the top rows
  image::testing::writeBytes(photoPath, bytes);
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.rowsWritten(), 0);
  bool shown = false;
  for (const auto& m : host::recordedMessages()) shown = shown || m.rfind("Error loading: " + photoPath, 0) == 0;
  EXPECT_TRUE(shown);
  EXPECT_EQ(o.messages, (std::vector<std::string>{photoPath + ": the photograph could not be read; 5 rows not written"}));
  EXPECT_TRUE(filesIn(out).empty());
}

TEST_F(SplitJpeg, FullDiskFailsTheRowsThatDoNotFitAndLeavesNoPartialFile) {
  // As on a disk that fills up: files may not grow beyond 10000 bytes, so the
  // 300 x 40 rows (36054 bytes) fail and a 10 x 10 row (374 bytes) fits.
  setBoxes(session, *image, {{0, 0, 300, 40}, {0, 40, 10, 50}, {0, 80, 300, 120}});
  PhotoOutcome o;
  {
    FileSizeLimit limit(10000);
    ASSERT_TRUE(limit.active());
    o = run();
  }

  EXPECT_EQ(o.rows[0].result, RowResult::CutFailed);
  EXPECT_EQ(o.rows[1].result, RowResult::Written);
  EXPECT_EQ(o.rows[2].result, RowResult::CutFailed);
  EXPECT_EQ(o.errorCount, 2);
  EXPECT_EQ(o.messages[0], photoPath + ": Core 1: " + outFile(rowName(0)) + " not written");
  bool shown = false;
  for (const auto& m : host::recordedMessages())
    shown = shown || m.rfind(outFile(rowName(0)) + " ... converting to BMP\nConversion failed. (", 0) == 0;
  EXPECT_TRUE(shown);
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{rowName(1)}));
  EXPECT_TRUE(samePixels(readRow(outFile(rowName(1))), generalCut({0, 40, 10, 10})));
}

TEST_F(SplitJpeg, TurnedRowsAndMetafilesStillCut) {
  // A column down the photograph is turned; metafiles are written the general
  // way. Both must still give the general way's pixels.
  setBoxes(session, *image, {{0, 0, 300, 40}, {40, 0, 80, 200}});
  PhotoOutcome o = run();
  ASSERT_EQ(o.rowsWritten(), 2);
  EXPECT_TRUE(samePixels(readRow(outFile(rowName(0))), generalCut({0, 0, 300, 40})));
  EXPECT_TRUE(samePixels(readRow(outFile(rowName(1))), turnedClockwise(generalCut({40, 0, 40, 200}), 3)));

  options.naming.format = RowFormat::Cgm;
  options.formatChosen = true;
  setBoxes(session, *image, {{0, 0, 300, 40}});
  o = run();
  ASSERT_EQ(o.rowsWritten(), 1);
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01000_00-01001_00.cgm")), generalCut({0, 0, 300, 40})));
}

}  // namespace
}  // namespace subsurf::split::testing
