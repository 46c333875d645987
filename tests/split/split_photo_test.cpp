// Cutting one photograph: file names, report lines and the pixels of every row
// image, in every orientation, with shortening and scaling, and each way a
// photograph or row can fail.

#include <gtest/gtest.h>

#include "split/split_test_support.h"

namespace subsurf::split::testing {
namespace {

class SplitPhoto : public SplitTest {
 protected:
  // T1.png, 300 x 200, five bands of 40 pixels, rows 1000-1001 ... 1004-1005.
  void SetUp() override {
    SplitTest::SetUp();
    photoPath = dir.file("T1.png");
    pattern = makePhoto(photoPath, 300, 200);
    image = &addTray(session, photoPath, 300, 200, 5, 1000.0f, 1.0f);
  }
  PhotoOutcome run() { return splitPhoto(makePhotoJob(*image, 1, options), options); }

  std::string photoPath;
  Raster pattern;
  CoreImage* image = nullptr;
};

TEST_F(SplitPhoto, EveryRowWrittenUnderItsDepthName) {
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.errorCount, 0);
  EXPECT_TRUE(o.messages.empty());
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{
                              "T1_WL_01000_00-01001_00.bmp", "T1_WL_01001_00-01002_00.bmp",
                              "T1_WL_01002_00-01003_00.bmp", "T1_WL_01003_00-01004_00.bmp",
                              "T1_WL_01004_00-01005_00.bmp"}));
  for (int k = 0; k < 5; ++k) {
    const std::string name = outFile("T1_WL_0100" + std::to_string(k) + "_00-0100" + std::to_string(k + 1) + "_00.bmp");
    EXPECT_TRUE(samePixels(readRow(name), region(pattern, {0, 40 * k, 300, 40}))) << name;
  }
  EXPECT_EQ(o.rowsWritten(), 5);
  EXPECT_EQ(o.rowsFailed(), 0);
}

TEST_F(SplitPhoto, ReportLinesStyleOne) {
  const PhotoOutcome o = run();
  EXPECT_EQ(o.reportLines, (std::vector<std::string>{
                               "Source Image, " + photoPath,
                               "  1000.000, 0,   1001.000, 0, , " + outFile("T1_WL_01000_00-01001_00.bmp"),
                               "  1001.000, 0,   1002.000, 0, , " + outFile("T1_WL_01001_00-01002_00.bmp"),
                               "  1002.000, 0,   1003.000, 0, , " + outFile("T1_WL_01002_00-01003_00.bmp"),
                               "  1003.000, 0,   1004.000, 0, , " + outFile("T1_WL_01003_00-01004_00.bmp"),
                               "  1004.000, 0,   1005.000, 0, , " + outFile("T1_WL_01004_00-01005_00.bmp"),
                           }));
}

TEST_F(SplitPhoto, ReportLinesOtherStyleAndThreeDecimals) {
  options.reportStyle = 2;
  options.naming.precisionOption = kPrecisionMillimetre;
  setRowDepths(*image, 1, 1000.125f, 1001.0625f);
  const PhotoOutcome o = run();
  ASSERT_EQ(o.reportLines.size(), 6u);
  EXPECT_EQ(o.reportLines[1], "  1000.125,   1001.063, " + outFile("T1_WL_01000_125-01001_063.bmp"));
  EXPECT_EQ(o.reportLines[2], "  1001.000,   1002.000, " + outFile("T1_WL_01001_000-01002_000.bmp"));
  EXPECT_TRUE(fs::exists(outFile("T1_WL_01000_125-01001_063.bmp")));
}

TEST_F(SplitPhoto, MetafilesHoldTheSamePixels) {
  options.naming.format = RowFormat::Cgm;
  const PhotoOutcome o = run();
  EXPECT_EQ(o.rowsWritten(), 5);
  const Raster row3 = readRow(outFile("T1_WL_01002_00-01003_00.cgm"));
  EXPECT_TRUE(samePixels(row3, region(pattern, {0, 80, 300, 40})));
  EXPECT_EQ(filesIn(out).size(), 5u);
}

TEST_F(SplitPhoto, ImageOverrideChoosesMetafilesUnlessTheRunChoseAFormat) {
  setInteger(image->intSetting(kIntOverride), 1);
  setInteger(image->intSetting(kIntCgm), 1);
  EXPECT_EQ(formatForImage(*image, options), RowFormat::Cgm);
  setInteger(image->intSetting(kIntCgm), 0);
  options.naming.format = RowFormat::Cgm;
  EXPECT_EQ(formatForImage(*image, options), RowFormat::Bmp);
  setInteger(image->intSetting(kIntOverride), 0);
  EXPECT_EQ(formatForImage(*image, options), RowFormat::Cgm);
  options.naming.format = RowFormat::Png;
  options.formatChosen = true;
  setInteger(image->intSetting(kIntOverride), 1);
  EXPECT_EQ(formatForImage(*image, options), RowFormat::Png);
}

TEST_F(SplitPhoto, PngRowsReadBackExactly) {
  options.naming.format = RowFormat::Png;
  options.formatChosen = true;
  run();
  const vips::VImage row = vips::VImage::new_from_file(outFile("T1_WL_01004_00-01005_00.png").c_str());
  EXPECT_TRUE(samePixels(image::testing::fromVips(row), region(pattern, {0, 160, 300, 40})));
}

TEST_F(SplitPhoto, UltravioletAndStubsHoldingTheTag) {
  setInteger(image->intSetting(kIntUV), 1);
  run();
  EXPECT_TRUE(fs::exists(outFile("T1_UV_01000_00-01001_00.bmp")));

  const std::string tagged = dir.file("T2_UV.png");
  makePhoto(tagged, 300, 200);
  CoreImage& uv = addTray(session, tagged, 300, 200, 1, 1000.0f, 1.0f, 1);
  splitPhoto(makePhotoJob(uv, 2, options), options);
  EXPECT_TRUE(fs::exists(outFile("T2_UV_01000_00-01001_00.bmp")));

  // A white-light photograph whose name says "WL" is not tagged again.
  const std::string white = dir.file("WL_T3.png");
  makePhoto(white, 300, 200);
  CoreImage& wl = addTray(session, white, 300, 200, 1, 1000.0f, 1.0f, 0);
  splitPhoto(makePhotoJob(wl, 3, options), options);
  EXPECT_TRUE(fs::exists(outFile("WL_T3_01000_00-01001_00.bmp")));
}

TEST_F(SplitPhoto, RootNameAndOutputBesideThePhotograph) {
  options.naming.useRootName = true;
  options.naming.rootName = "WELL7";
  run();
  EXPECT_TRUE(fs::exists(outFile("WELL7_WL_01000_00-01001_00.bmp")));

  options.naming.useRootName = false;
  options.naming.outputBesidePhoto = true;
  const PhotoOutcome o = run();
  EXPECT_TRUE(fs::exists(dir.file("T1_WL_01000_00-01001_00.bmp")));
  EXPECT_EQ(o.reportLines[1], "  1000.000, 0,   1001.000, 0, , " + dir.file("T1_WL_01000_00-01001_00.bmp"));
}

TEST_F(SplitPhoto, WindowsPathOfAPhotographThatExistsHere) {
  // A session saved on Windows with a relative path: found with "/" for "\".
  fs::create_directories(dir.file("trays"));
  makePhoto(dir.file("trays/T9.png"), 300, 200);
  std::string windowsStyle = dir.file("trays") + "\\T9.png";
  image->setSourceFile(windowsStyle);
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.reportLines[0], "Source Image, " + windowsStyle);
  EXPECT_TRUE(fs::exists(outFile("T9_WL_01000_00-01001_00.bmp")));
}

TEST_F(SplitPhoto, DepthsInTheReportUnit) {
  options.reportUnit = "ft";
  const PhotoOutcome o = run();
  // 1000 m = 3280.8399 ft, 1001 m = 3284.1207 ft.
  EXPECT_TRUE(fs::exists(outFile("T1_WL_03280_84-03284_12.bmp")));
  EXPECT_EQ(o.reportLines[1], "  3280.840, 0,   3284.121, 0, , " + outFile("T1_WL_03280_84-03284_12.bmp"));
  // The rows are whole: the core length is converted with the depths.
  EXPECT_EQ(readRow(outFile("T1_WL_03280_84-03284_12.bmp")).width(), 300);
}

// --- Orientation --------------------------------------------------------------

class SplitOrientation : public SplitPhoto {};

TEST_F(SplitOrientation, ColumnsDownThePhotoTurnTopToTheLeft) {
  setBoxes(session, *image, {{0, 0, 40, 200}, {40, 0, 80, 200}});
  const PhotoOutcome o = run();
  ASSERT_EQ(o.rowsWritten(), 2);
  const Raster col2 = readRow(outFile("T1_WL_01001_00-01002_00.bmp"));
  ASSERT_EQ(col2.width(), 200);
  ASSERT_EQ(col2.height(), 40);
  EXPECT_TRUE(samePixels(col2, turnedClockwise(region(pattern, {40, 0, 40, 200}), 3)));
  // The column's top (y = 0) is the row image's left edge; its right side
  // (x = 79) is the row image's top.
  EXPECT_EQ(0, std::memcmp(col2.pixel(0, 0), pattern.pixel(79, 0), 3));
  EXPECT_EQ(0, std::memcmp(col2.pixel(199, 0), pattern.pixel(79, 199), 3));
  EXPECT_EQ(0, std::memcmp(col2.pixel(0, 39), pattern.pixel(40, 0), 3));
  EXPECT_EQ(o.rows[1].quarterTurns, 3);
}

TEST_F(SplitOrientation, ReversedRowIsTurnedHalfWay) {
  setInteger(image->intSetting(kIntReverse), 1);
  run();
  const Raster row1 = readRow(outFile("T1_WL_01000_00-01001_00.bmp"));
  EXPECT_TRUE(samePixels(row1, turnedClockwise(region(pattern, {0, 0, 300, 40}), 2)));
  // Depth now increases from the right of the photo: its right end is on the left.
  EXPECT_EQ(0, std::memcmp(row1.pixel(0, 0), pattern.pixel(299, 39), 3));
}

TEST_F(SplitOrientation, ReversedColumnTurnsBottomToTheLeft) {
  setInteger(image->intSetting(kIntReverse), 1);
  setBoxes(session, *image, {{0, 0, 40, 200}});
  run();
  const Raster col = readRow(outFile("T1_WL_01000_00-01001_00.bmp"));
  EXPECT_TRUE(samePixels(col, turnedClockwise(region(pattern, {0, 0, 40, 200}), 1)));
  EXPECT_EQ(0, std::memcmp(col.pixel(0, 0), pattern.pixel(0, 199), 3));
}

TEST_F(SplitOrientation, HorizontalSettingBeatsTheShape) {
  setInteger(image->intSetting(kIntHorizontal), 1);
  setBoxes(session, *image, {{0, 0, 40, 200}});
  run();
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01000_00-01001_00.bmp")), region(pattern, {0, 0, 40, 200})));

  setInteger(image->intSetting(kIntHorizontal), 0);
  setBoxes(session, *image, {{0, 40, 300, 80}});
  run();
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01000_00-01001_00.bmp")),
                         turnedClockwise(region(pattern, {0, 40, 300, 40}), 3)));
}

TEST_F(SplitOrientation, HalfTurnAngleStraightensTheWholePhoto) {
  image->angle = 180.0f;
  run();
  // The photograph turned about its centre: its top band is the original's
  // bottom band upside down.
  const Raster row1 = readRow(outFile("T1_WL_01000_00-01001_00.bmp"));
  EXPECT_TRUE(samePixels(row1, turnedClockwise(region(pattern, {0, 160, 300, 40}), 2)));
}

// --- Shortening and scaling ------------------------------------------------------

class SplitExtent : public SplitPhoto {};

TEST_F(SplitExtent, HalfCoreRowCutToItsFirstHalf) {
  setRowDepths(*image, 1, 1000.0f, 1000.5f);
  run();
  const Raster row = readRow(outFile("T1_WL_01000_00-01000_50.bmp"));
  EXPECT_TRUE(samePixels(row, region(pattern, {0, 0, 150, 40})));
}

TEST_F(SplitExtent, HalfCoreReversedRowKeepsTheRightHalf) {
  setInteger(image->intSetting(kIntReverse), 1);
  setRowDepths(*image, 1, 1000.0f, 1000.5f);
  run();
  const Raster row = readRow(outFile("T1_WL_01000_00-01000_50.bmp"));
  EXPECT_TRUE(samePixels(row, turnedClockwise(region(pattern, {150, 0, 150, 40}), 2)));
}

TEST_F(SplitExtent, ShorteningOffKeepsTheWholeRectangle) {
  options.shortenRows = false;
  setRowDepths(*image, 1, 1000.0f, 1000.5f);
  run();
  EXPECT_EQ(readRow(outFile("T1_WL_01000_00-01000_50.bmp")).width(), 300);
}

TEST_F(SplitExtent, DisplayReductionScalesTheRectangles) {
  image->displayReduction = 0.5f;
  setBoxes(session, *image, {{0, 0, 150, 20}, {0, 20, 150, 40}});
  run();
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01001_00-01002_00.bmp")), region(pattern, {0, 40, 300, 40})));
  // Without one of its own the image takes the run's.
  image->displayReduction = kRealNull;
  options.displayReduction = 0.5f;
  run();
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01000_00-01001_00.bmp")), region(pattern, {0, 0, 300, 40})));
}

TEST_F(SplitExtent, ShownProportionsStretchYOfAPortraitPhoto) {
  const std::string tall = dir.file("P.png");
  const Raster p = makePhoto(tall, 200, 300);
  CoreImage& portrait = addTray(session, tall, 200, 300, 1, 1000.0f, 1.0f);
  setBoxes(session, portrait, {{0, 0, 200, 80}});
  // Shown 200 x 240 (ratio 1.2, file 1.5): y stretched by 1.25.
  setInteger(portrait.intSetting(kIntPixelWidth), 200);
  setInteger(portrait.intSetting(kIntPixelHeight), 240);
  splitPhoto(makePhotoJob(portrait, 2, options), options);
  EXPECT_TRUE(samePixels(readRow(outFile("P_WL_01000_00-01001_00.bmp")), region(p, {0, 0, 200, 100})));
}

TEST_F(SplitExtent, RectanglePartlyOutsideIsClippedToThePhoto) {
  setBoxes(session, *image, {{250, 0, 350, 40}});
  const PhotoOutcome o = run();
  EXPECT_EQ(o.errorCount, 0);
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01000_00-01001_00.bmp")), region(pattern, {250, 0, 50, 40})));
}

// --- Failures ---------------------------------------------------------------------

class SplitFailure : public SplitPhoto {
 protected:
  bool recorded(const std::string& text) {
    for (const auto& m : host::recordedMessages())
      if (m == text) return true;
    return false;
  }
  bool recordedStart(const std::string& start) {
    for (const auto& m : host::recordedMessages())
      if (m.rfind(start, 0) == 0) return true;
    return false;
  }
};

TEST_F(SplitFailure, MissingPhotographNoRowWritten) {
  const std::string missing = dir.file("gone.png");
  image->setSourceFile(missing);
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.rowsWritten(), 0);
  ASSERT_EQ(o.rows.size(), 5u);
  for (const RowOutcome& r : o.rows) EXPECT_EQ(r.result, RowResult::NotReached);
  EXPECT_TRUE(recorded("Error loading: " + missing + " (file not found)"));
  EXPECT_EQ(o.messages, (std::vector<std::string>{missing + ": the photograph could not be read; 5 rows not written"}));
  EXPECT_EQ(o.reportLines, (std::vector<std::string>{"Source Image, " + missing}));
  EXPECT_TRUE(filesIn(out).empty());
}

TEST_F(SplitFailure, CorruptAndTruncatedPhotographs) {
  const std::string garbage = dir.file("garbage.jpg");
  image::testing::writeBytes(garbage, std::vector<std::uint8_t>(5000, 0x5a));
  image->setSourceFile(garbage);
  PhotoOutcome o = run();
  EXPECT_EQ(o.status, 1);
  EXPECT_TRUE(recordedStart("Error loading: " + garbage));

  const std::string jpeg = dir.file("cut.jpg");
  makePhoto(jpeg, 300, 200);
  auto bytes = image::testing::fileBytes(jpeg);
  bytes.resize(bytes.size() / 2);
  image::testing::writeBytes(jpeg, bytes);
  image->setSourceFile(jpeg);
  o = run();
  EXPECT_EQ(o.status, 1);
  EXPECT_TRUE(recordedStart("Error loading: " + jpeg));
  EXPECT_TRUE(filesIn(out).empty());
}

TEST_F(SplitFailure, RowWithoutDepthsSkippedOthersWritten) {
  image->realSetting(rowBaseSetting(2)).V = kRealNull;
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.errorCount, 100);
  EXPECT_EQ(o.rows[1].result, RowResult::NoDepths);
  EXPECT_EQ(o.rowsWritten(), 4);
  EXPECT_EQ(filesIn(out).size(), 4u);
  EXPECT_FALSE(fs::exists(outFile("T1_WL_01001_00-01002_00.bmp")));
  EXPECT_EQ(o.messages, (std::vector<std::string>{photoPath + ": Core 2: no top or base depth, row skipped",
                                                  "Core table not complete for one or more rectangles"}));
  EXPECT_EQ(o.reportLines.size(), 5u);  // the source line and four rows
}

TEST_F(SplitFailure, TrayWithoutDepthsIsNeverDecoded) {
  for (int k = 1; k <= 5; ++k) image->realSetting(rowTopSetting(k)).V = kRealNull;
  image->setSourceFile(dir.file("gone.png"));
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.errorCount, 500);
  EXPECT_FALSE(recordedStart("Error loading"));
}

TEST_F(SplitFailure, BaseAboveTopIsADepthFault) {
  setRowDepths(*image, 3, 1003.0f, 1002.0f);
  const PhotoOutcome o = run();
  EXPECT_EQ(o.rows[2].result, RowResult::NoCore);
  EXPECT_EQ(o.errorCount, 100);
  EXPECT_EQ(o.messages.front(), photoPath + ": Core 3: base depth 1002.000 is not below top depth 1003.000, row skipped");
  EXPECT_EQ(filesIn(out).size(), 4u);
}

TEST_F(SplitFailure, RectangleWhollyOutside) {
  setBoxes(session, *image, {{0, 0, 300, 40}, {400, 0, 500, 40}, {0, 80, 300, 120}});
  const PhotoOutcome o = run();
  EXPECT_EQ(o.rows[1].result, RowResult::Outside);
  EXPECT_EQ(o.errorCount, 1);
  EXPECT_EQ(o.messages, (std::vector<std::string>{
                            photoPath + ": Core 2: the rectangle (400, 0) to (500, 40) lies outside the 300 x 200 "
                                        "photograph, row skipped",
                            "Problems writing images "}));
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{"T1_WL_01000_00-01001_00.bmp", "T1_WL_01002_00-01003_00.bmp"}));
}

TEST_F(SplitFailure, OutputFolderThatCannotHoldFiles) {
  const std::string notAFolder = dir.file("plain-file");
  image::testing::writeBytes(notAFolder, {1, 2, 3});
  options.naming.outputFolder = notAFolder;
  const PhotoOutcome o = run();
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.rowsWritten(), 0);
  EXPECT_EQ(o.errorCount, 5);
  for (const RowOutcome& r : o.rows) EXPECT_EQ(r.result, RowResult::CutFailed);
  EXPECT_EQ(o.messages[0], photoPath + ": Core 1: " + notAFolder + "/T1_WL_01000_00-01001_00.bmp not written");
  EXPECT_EQ(o.messages.back(), "Problems writing images ");
  EXPECT_TRUE(recordedStart(notAFolder + "/T1_WL_01000_00-01001_00.bmp ... converting to BMP\nConversion failed."));
  EXPECT_EQ(filesIn(dir.path().string()), (std::vector<std::string>{"T1.png", "out", "plain-file"}));
}

TEST_F(SplitFailure, FullDiskLeavesNoPartialFile) {
  // Files may not grow beyond 10000 bytes while the rows are written, as on a
  // disk that fills up: the 300 x 40 rows (36054 bytes) fail, a 10 x 10 row
  // (374 bytes) fits.
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
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{"T1_WL_01001_00-01002_00.bmp"}));
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01001_00-01002_00.bmp")), region(pattern, {0, 40, 10, 10})));
}

TEST_F(SplitFailure, ProgressTextNamesStubAndCore) {
  std::vector<std::string> seen;
  options.progress = [&](int place, int row, std::string_view text) {
    seen.push_back(std::to_string(place) + "/" + std::to_string(row) + " " + std::string(text));
  };
  image->realSetting(rowTopSetting(4)).V = kRealNull;
  run();
  EXPECT_EQ(seen, (std::vector<std::string>{"1/1 Processing image: T1: Core 1", "1/2 Processing image: T1: Core 2",
                                            "1/3 Processing image: T1: Core 3", "1/5 Processing image: T1: Core 5"}));
}

}  // namespace
}  // namespace subsurf::split::testing
