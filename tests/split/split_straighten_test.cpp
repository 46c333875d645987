// Free-cornered rows of a tray photographed at an angle: a flat tray is drawn,
// seen through a known projective transform (as a camera held at an angle
// sees it), and the rows cut from that picture by their corners must match
// the rows of the flat tray.
#include <gtest/gtest.h>

#include <cmath>

#include <fmt/format.h>

#include "core/free_corners.h"
#include "host/image/projective.h"
#include "split/split_test_support.h"

namespace subsurf::split::testing {
namespace {

using image::Homography;
using image::PlanePoint;

constexpr int kFlatWidth = 600, kFlatHeight = 400;
constexpr int kRows = 4;
constexpr int kRowLeft = 10, kRowRight = 590;
int rowTop(int k) { return 20 + (k - 1) * 95; }  // rows of 80 pixels with dividers of 15
int rowBottom(int k) { return rowTop(k) + 80; }

// A flat tray: smooth core texture (as a photograph of rock is at the scale
// of a pixel) that differs from row to row, grey dividers between rows.
Raster flatTray() {
  Raster r(kFlatWidth, kFlatHeight);
  for (int y = 0; y < kFlatHeight; ++y)
    for (int x = 0; x < kFlatWidth; ++x) {
      std::uint8_t* p = r.pixel(x, y);
      int row = 0;
      for (int k = 1; k <= kRows; ++k)
        if (y >= rowTop(k) && y < rowBottom(k)) row = k;
      if (row == 0) {
        p[0] = p[1] = p[2] = 90;
        continue;
      }
      const double t = x / 23.0 + row * 1.7, u = y / 17.0;
      p[0] = static_cast<std::uint8_t>(std::lround(128 + 70 * std::sin(t) * std::cos(u)));
      p[1] = static_cast<std::uint8_t>(std::lround(40 + 30 * row + 40 * std::cos(t * 0.7 + u)));
      p[2] = static_cast<std::uint8_t>(std::lround(120 + 80 * std::sin(u * 1.3 - t * 0.4)));
    }
  return r;
}

// The camera's view: the flat tray's corners seen as a keystone.
const std::array<PlanePoint, 4> kFlatFrame{PlanePoint{0, 0}, {kFlatWidth, 0}, {kFlatWidth, kFlatHeight}, {0, kFlatHeight}};
const std::array<PlanePoint, 4> kSeenFrame{PlanePoint{70, 45}, {655, 90}, {690, 480}, {30, 430}};
constexpr int kPhotoWidth = 720, kPhotoHeight = 520;

class SplitStraightened : public SplitTest {
 protected:
  void SetUp() override {
    SplitTest::SetUp();
    flat = flatTray();
    ASSERT_TRUE(Homography::fromQuads(kFlatFrame, kSeenFrame, flatToPhoto));
    Homography photoToFlat;
    ASSERT_TRUE(flatToPhoto.inverse(photoToFlat));
    Raster photo(kPhotoWidth, kPhotoHeight);
    const std::uint8_t bench[3] = {200, 190, 170};
    image::warpPicture(flat.view(), photoToFlat, photo, bench);
    photoPath = dir.file("T1.png");
    image::testing::saveWithVips(photo, photoPath);
    image = &addTray(session, photoPath, kPhotoWidth, kPhotoHeight, kRows, 1000.0f, 1.0f);
    // Each row's corners where the camera sees them, to the nearest pixel as
    // a user would click them.
    for (int k = 1; k <= kRows; ++k) {
      FreeCorners c;
      const PlanePoint flatCorners[4] = {PlanePoint{kRowLeft, double(rowTop(k))}, {kRowRight, double(rowTop(k))},
                                         {kRowRight, double(rowBottom(k))}, {kRowLeft, double(rowBottom(k))}};
      for (std::size_t i = 0; i < 4; ++i) {
        const PlanePoint seen = flatToPhoto.apply(flatCorners[i]);
        c.x[i] = static_cast<int>(std::lround(seen.x));
        c.y[i] = static_cast<int>(std::lround(seen.y));
      }
      ASSERT_EQ(cornersProblem(c, k, kPhotoWidth, kPhotoHeight), "");
      setFreeCorners(session, *session.rectangleAt(*image, k), c);
    }
  }

  PhotoOutcome run() { return splitPhoto(makePhotoJob(*image, 1, options), options); }

  // Row k of the flat tray resampled to width x height (the flat row's
  // corners onto those of the row image), over columns [from, to) of it.
  Raster flatRow(int k, int width, int height, double from = kRowLeft, double to = kRowRight) const {
    const std::array<PlanePoint, 4> out{PlanePoint{0, 0}, {double(width), 0}, {double(width), double(height)},
                                        {0, double(height)}};
    const std::array<PlanePoint, 4> in{PlanePoint{from, double(rowTop(k))}, {to, double(rowTop(k))},
                                       {to, double(rowBottom(k))}, {from, double(rowBottom(k))}};
    Homography h;
    EXPECT_TRUE(Homography::fromQuads(out, in, h));
    Raster r(width, height);
    const std::uint8_t black[3] = {0, 0, 0};
    image::warpPicture(flat.view(), h, r, black);
    return r;
  }

  // The size of row k's image: as wide as the longer of its sides along the
  // row, as high as the longer of the other two.
  std::pair<int, int> rowSize(int k) {
    const Polygon& p = session.rectangleAt(*image, k)->polygon;
    auto side = [&](int a, int b) { return std::hypot(p.px[b] - p.px[a], p.py[b] - p.py[a]); };
    return {static_cast<int>(std::lround(std::max(side(0, 1), side(3, 2)))),
            static_cast<int>(std::lround(std::max(side(1, 2), side(0, 3))))};
  }

  static std::string rowName(int k) { return fmt::format("T1_WL_{:05}_00-{:05}_00.bmp", 999 + k, 1000 + k); }

  Raster flat;
  Homography flatToPhoto;
  std::string photoPath;
  CoreImage* image = nullptr;
};

// Mean absolute difference of the row images from the flat rows, per colour
// value (0 to 255). The bound: the photograph and the row are each resampled
// bilinearly, and each corner is placed to the nearest pixel (up to half a
// pixel off, which shifts the texture, whose steepest slope is about 5
// levels per pixel, by up to half a pixel at that corner). Together these
// stay well under 3 levels; a row cut from the wrong place, or not
// straightened, differs by tens of levels (checked below, so the bound
// cannot pass by accident).
constexpr double kMostMeanError = 3.0;

TEST_F(SplitStraightened, RowsCutFromTheAngledPhotoMatchTheFlatRows) {
  const PhotoOutcome outcome = run();
  ASSERT_EQ(outcome.rowsWritten(), kRows) << (outcome.messages.empty() ? "" : outcome.messages.front());
  for (int k = 1; k <= kRows; ++k) {
    SCOPED_TRACE(fmt::format("row {}", k));
    const Raster cut = readRow(outFile(rowName(k)));
    ASSERT_FALSE(cut.empty());
    const double error = image::testing::meanAbsDifference(cut, flatRow(k, cut.width(), cut.height()));
    EXPECT_LT(error, kMostMeanError);
    // The next row's pixels in the same place differ far more.
    const int other = k == kRows ? 1 : k + 1;
    EXPECT_GT(image::testing::meanAbsDifference(cut, flatRow(other, cut.width(), cut.height())), 5 * kMostMeanError);
  }
}

TEST_F(SplitStraightened, TheRowImageIsAsWideAsTheLongerLongSideAndAsHighAsTheLongerShortSide) {
  const PhotoOutcome outcome = run();
  ASSERT_EQ(outcome.rowsWritten(), kRows);
  for (int k = 1; k <= kRows; ++k) {
    const auto [width, height] = rowSize(k);
    const RowOutcome& row = outcome.rows[static_cast<std::size_t>(k - 1)];
    EXPECT_EQ(row.width, width) << "row " << k;
    EXPECT_EQ(row.height, height) << "row " << k;
    const Raster cut = readRow(outFile(rowName(k)));
    EXPECT_EQ(cut.width(), width);
    EXPECT_EQ(cut.height(), height);
  }
}

TEST_F(SplitStraightened, AShortRowIsCutToTheCorePresentAlongTheStraightenedRow) {
  setRowDepths(*image, 2, 1001.0f, 1001.5f);  // half a core length
  const PhotoOutcome outcome = run();
  ASSERT_EQ(outcome.rowsWritten(), kRows);
  const auto [width, height] = rowSize(2);
  const int kept = static_cast<int>(std::lround(width * 0.5));
  EXPECT_EQ(outcome.rows[1].width, kept);
  EXPECT_EQ(outcome.rows[1].height, height);
  const Raster cut = readRow(outFile("T1_WL_01001_00-01001_50.bmp"));
  const double middle = kRowLeft + double(kRowRight - kRowLeft) * kept / width;
  EXPECT_LT(image::testing::meanAbsDifference(cut, flatRow(2, cut.width(), cut.height(), kRowLeft, middle)),
            kMostMeanError);
}

TEST_F(SplitStraightened, RowsRunningDownThePhotoAreTurnedLikeUprightOnes) {
  // The same tray read as columns: each row image is the straightened row
  // turned a quarter anticlockwise, its top end at the left.
  setInteger(image->intSetting(kIntHorizontal), 0);
  const PhotoOutcome outcome = run();
  ASSERT_EQ(outcome.rowsWritten(), kRows);
  for (int k = 1; k <= kRows; ++k) {
    const Raster cut = readRow(outFile(rowName(k)));
    EXPECT_EQ(outcome.rows[static_cast<std::size_t>(k - 1)].quarterTurns, 3);
    const Raster upright = turnedClockwise(cut, 1);
    EXPECT_LT(image::testing::meanAbsDifference(upright, flatRow(k, upright.width(), upright.height())),
              kMostMeanError)
        << "row " << k;
  }
}

}  // namespace
}  // namespace subsurf::split::testing
