// The row finder on generated tray photographs whose compartments are known:
// how many rows it finds, how closely their rectangles match, which way it
// says they run, and what it says when it is unsure.
#include <gtest/gtest.h>

#include <algorithm>

#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/row_detection.h"
#include "core/row_layout.h"
#include "host/drawing/sample_tray.h"
#include "host/drawing/varied_tray.h"
#include "tray_test_support.h"

namespace subsurf {
namespace {

// Every true compartment matched, in order, by the row found at its place.
void expectRowsMatch(const RowDetection& found, const std::vector<DetectedRow>& truth, double scale,
                     double leastIoU) {
  ASSERT_EQ(found.rows.size(), truth.size());
  for (std::size_t k = 0; k < truth.size(); ++k) {
    DetectedRow want = truth[k];
    want.left *= scale, want.right *= scale, want.top *= scale, want.bottom *= scale;
    EXPECT_GE(intersectionOverUnion(found.rows[k], want), leastIoU) << "row " << k + 1;
  }
}

DetectedRow rowOf(const image::PixelBox& b) {
  return {double(b.left), double(b.top), double(b.right()), double(b.bottom()), false};
}

std::vector<DetectedRow> compartments(const drawing::SampleTray& tray) {
  std::vector<DetectedRow> rows;
  for (const auto& r : tray.rows) rows.push_back(rowOf(r.compartment));
  return rows;
}

drawing::SampleTray flatTray(int rows, std::uint64_t seed, drawing::TrayMaterial material = drawing::TrayMaterial::Wood) {
  drawing::SampleTraySpec spec;
  spec.width = 800;
  spec.height = 533;
  spec.rows = rows;
  spec.seed = seed;
  spec.look.material = material;
  return drawing::renderSampleTray(spec);
}

TEST(RowDetection, FindsEveryCompartmentOfWoodenTraysOfOneToEightRowsAndDoubtsALoneRow) {
  for (int rows : {1, 3, 5, 8}) {
    SCOPED_TRACE(rows);
    const drawing::SampleTray tray = flatTray(rows, 40 + rows);
    const RowDetection found = RowDetector().detect(tray.pixels.view(), 800, 533, 0);
    EXPECT_TRUE(found.rowsAcross);
    if (rows == 1) {
      // A lone row has no neighbours to check its spacing against.
      EXPECT_LE(found.confidence, 0.8);
      EXPECT_FALSE(found.sure());
    } else {
      EXPECT_TRUE(found.sure()) << found.doubt << " " << found.confidence;
    }
    expectRowsMatch(found, compartments(tray), 1.0, 0.8);
  }
}

TEST(RowDetection, GivesRowsInThePhotographsOwnPixels) {
  // The finder reads a reduced copy; the rows come back in the full size.
  const drawing::SampleTray tray = flatTray(4, 9, drawing::TrayMaterial::Plastic);
  const RowDetection found = RowDetector().detect(tray.pixels.view(), 2400, 1599, 0);
  expectRowsMatch(found, compartments(tray), 3.0, 0.8);
  for (const DetectedRow& r : found.rows) {
    EXPECT_LE(r.right, 2400.0);
    EXPECT_LE(r.bottom, 1599.0);
  }
}

TEST(RowDetection, ReadsRowsRunningDownThePhotographLeftToRight) {
  drawing::VariedTraySpec spec = testing::squareOnTray(800, 533, 6, 5);
  spec.rowsDown = true;
  const drawing::VariedTray tray = drawing::renderVariedTray(spec);
  const RowDetection found = RowDetector().detect(tray.pixels.view(), 800, 533, 0);
  EXPECT_FALSE(found.rowsAcross);
  EXPECT_TRUE(found.sure()) << found.doubt;
  std::vector<DetectedRow> truth;
  for (const auto& r : tray.rows) truth.push_back(rowOf(r.box));
  expectRowsMatch(found, truth, 1.0, 0.8);
  for (std::size_t k = 1; k < found.rows.size(); ++k) EXPECT_GT(found.rows[k].left, found.rows[k - 1].left);
}

TEST(RowDetection, TakesInTheSlantOfATurnedCamera) {
  drawing::VariedTraySpec spec = testing::squareOnTray(800, 533, 5, 12);
  spec.rotationDegrees = 0.8;
  spec.lightFalloff = 0.3;
  const drawing::VariedTray tray = drawing::renderVariedTray(spec);
  const RowDetection found = RowDetector().detect(tray.pixels.view(), 800, 533, 0);
  std::vector<DetectedRow> truth;
  for (const auto& r : tray.rows) truth.push_back(rowOf(r.box));
  expectRowsMatch(found, truth, 1.0, 0.8);
}

TEST(RowDetection, ACountOtherThanExpectedIsReportedAndUnsure) {
  const drawing::SampleTray tray = flatTray(5, 3);
  const RowDetection sure = RowDetector().detect(tray.pixels.view(), 800, 533, 5);
  EXPECT_TRUE(sure.sure());
  EXPECT_EQ(sure.doubt, "");
  EXPECT_EQ(sure.expectedRows, 5);
  const RowDetection unsure = RowDetector().detect(tray.pixels.view(), 800, 533, 4);
  EXPECT_FALSE(unsure.sure());
  EXPECT_LT(unsure.confidence, RowDetector::kConfidenceThreshold);
  EXPECT_NEAR(unsure.confidence, sure.confidence / 3.0, 1e-9);
  EXPECT_EQ(unsure.doubt, "found 5 rows, expected 4");
  EXPECT_EQ(unsure.rows.size(), 5u);  // what was seen is still given
}

TEST(RowDetection, APictureWithoutRowsGivesNoneAndNoConfidence) {
  image::Raster grey(640, 480);
  std::fill(grey.bytes().begin(), grey.bytes().end(), std::uint8_t{120});
  const RowDetection found = RowDetector().detect(grey.view(), 640, 480, 0);
  EXPECT_TRUE(found.rows.empty());
  EXPECT_EQ(found.confidence, 0.0);
  EXPECT_FALSE(found.sure());
  EXPECT_EQ(found.doubt, "no rows of core stand out");

  const RowDetection none = RowDetector().detect(image::RasterView{}, 640, 480, 3);
  EXPECT_TRUE(none.rows.empty());
  EXPECT_EQ(none.doubt, "the photograph is empty");
  const RowDetection tiny = RowDetector().detect(grey.view(), 0, 480, 3);
  EXPECT_EQ(tiny.doubt, "the photograph is empty");
}

TEST(RowDetection, IntersectionOverUnion) {
  const DetectedRow a{0, 0, 10, 10, false};
  EXPECT_DOUBLE_EQ(intersectionOverUnion(a, a), 1.0);
  EXPECT_DOUBLE_EQ(intersectionOverUnion(a, {10, 0, 20, 10, false}), 0.0);  // touching edges share no area
  EXPECT_DOUBLE_EQ(intersectionOverUnion(a, {5, 0, 15, 10, false}), 50.0 / 150.0);
  EXPECT_DOUBLE_EQ(intersectionOverUnion(a, {2, 2, 8, 8, false}), 36.0 / 100.0);
  EXPECT_DOUBLE_EQ(intersectionOverUnion(a, {3, 3, 3, 9, false}), 0.0);  // no width
}

// ---------------------------------------------------------------------------
// Laying what was found on a core image.

TEST(RowLayout, LaysOneRectangleARowRoundFromTheTopLeftAndKeepsTheVerdict) {
  CoreSession session;
  session.init();
  CoreImage* image = session.newImage();
  RowDetection found;
  found.rowsAcross = false;
  found.confidence = 0.92;
  found.rows = {{10.4, 20.6, 110.5, 520.2, false}, {130, 20, 230, 520, true}};
  layDetectedRows(session, *image, found, 1000, 600);
  ASSERT_EQ(CoreSession::rectangleCount(*image), 2);
  const Polygon& first = CoreSession::rectangles(*image)[0]->polygon;
  ASSERT_EQ(first.n, 4);
  EXPECT_EQ(first.px, (std::vector<int>{10, 111, 111, 10}));
  EXPECT_EQ(first.py, (std::vector<int>{21, 21, 520, 520}));
  EXPECT_EQ(image->intValue(kIntHorizontal), 0);
  EXPECT_EQ(image->intValue(kIntCoreNumber), 2);
  EXPECT_EQ(image->intValue(kIntPixelWidth), 1000);
  EXPECT_EQ(image->intValue(kIntPixelHeight), 600);
  EXPECT_EQ(rowVerdict(*image), "rows found 0.92");
  EXPECT_FALSE(rowsNeedChecking(*image));
}

TEST(RowLayout, AnUnsureReadingIsMarkedAndNothingFoundKeepsTheRectangles) {
  CoreSession session;
  session.init();
  CoreImage* image = session.newImage();
  session.makeBands(*image, 3, 900, 600);
  setInteger(image->intSetting(kIntCoreNumber), 3);
  RowDetection found;
  found.confidence = 0.2;
  found.doubt = "no rows of core stand out";
  layDetectedRows(session, *image, found, 900, 600);
  EXPECT_EQ(CoreSession::rectangleCount(*image), 3);
  EXPECT_EQ(rowVerdict(*image), "check the rows 0.20: no rows of core stand out");
  EXPECT_TRUE(rowsNeedChecking(*image));

  found.rows = {{0, 0, 900, 300, false}, {0, 300, 900, 600, false}};
  found.confidence = 0.31;
  found.doubt = "found 2 rows, expected 3";
  layDetectedRows(session, *image, found, 900, 600);
  EXPECT_EQ(CoreSession::rectangleCount(*image), 2);
  EXPECT_EQ(image->intValue(kIntCoreNumber), 3);  // the count the user gave stays
  EXPECT_EQ(image->intValue(kIntHorizontal), 1);
  EXPECT_EQ(rowVerdict(*image), "check the rows 0.31: found 2 rows, expected 3");
}

}  // namespace
}  // namespace subsurf
