// A reading the finder calls sure is cut without a person looking at it, so
// it must be right. These photographs of the generated varied set were once
// read wrong and called sure; each is drawn again from its seed, written and
// read back as `slabber detect` reads a photograph.
#include <gtest/gtest.h>

#include <string>

#include "core/row_detection.h"
#include "host/drawing/varied_tray.h"
#include "host/image/image_writer.h"
#include "host/image/reduced_photo.h"
#include "support/temp_dir.h"

namespace subsurf {
namespace {

struct SetPhoto {
  std::uint64_t setSeed;  // make_sample_trays --varied --seed
  int index;              // the photograph's place in the set, from 0
  double top;             // its tray's top depth
};

// The photograph as make_sample_trays --varied draws it (2400 x 1600, JPEG
// quality 85), and the rows found on it.
RowDetection readPhoto(const drawing::VariedTray& tray, int expected) {
  testing::TempDir dir;
  const std::string path = dir.file("tray.jpg");
  image::WriteOptions options;
  options.jpegQuality = 85;
  EXPECT_TRUE(image::writeImage(tray.pixels.view(), path, image::ImageFormat::Jpeg, options));
  image::Raster reduced;
  image::PixelSize full;
  EXPECT_TRUE(image::loadReducedPhoto(path, RowDetector::kWorkingSize, reduced, full));
  return RowDetector().detect(reduced.view(), full.width, full.height, expected);
}

drawing::VariedTraySpec specOf(const SetPhoto& photo) {
  return drawing::variedTraySpec(photo.setSeed * 1000 + static_cast<std::uint64_t>(photo.index), 2400, 1600,
                                 photo.top, "SUBSURF-1");
}

void expectRightOrUnsure(const SetPhoto& photo, bool mustBeRight) {
  const drawing::VariedTraySpec spec = specOf(photo);
  const drawing::VariedTray tray = drawing::renderVariedTray(spec);
  SCOPED_TRACE(drawing::describeSpec(spec));
  for (int expected : {0, static_cast<int>(tray.rows.size())}) {
    SCOPED_TRACE(expected);
    const RowDetection found = readPhoto(tray, expected);
    bool right = found.rows.size() == tray.rows.size();
    for (std::size_t k = 0; right && k < tray.rows.size(); ++k) {
      const image::PixelBox& b = tray.rows[k].box;
      const DetectedRow want{double(b.left), double(b.top), double(b.right()), double(b.bottom()), false};
      right = intersectionOverUnion(found.rows[k], want) >= 0.8;
    }
    EXPECT_TRUE(right || !found.sure()) << "found " << found.rows.size() << " rows of " << tray.rows.size()
                                        << ", wrong, at confidence " << found.confidence;
    if (mustBeRight) {
      EXPECT_TRUE(right) << "found " << found.rows.size() << " rows: " << found.doubt;
    }
  }
}

// Three rows, the middle compartment empty: the two rows of core were taken
// for a tray of two compartments twice as deep, each reaching over the empty
// one, at confidence 1. A row of core fills most of its compartment; bands
// less than half as deep as the lattice's pitch are not its rows.
TEST(SureRows, AnEmptyCompartmentBetweenTwoRowsIsNotTakenForOneDeepTray) {
  expectRightOrUnsure({5, 10, 1296.5}, true);
}

// Seven rows running down the photograph, read as eight at confidence 0.86:
// halfway between two of the rows found lay the walls of a compartment, as
// clear as the walls of the rows themselves. Such a reading is named for a
// person to check.
TEST(SureRows, WallsOfACompartmentHalfwayBetweenTwoRowsFoundMakeTheReadingUnsure) {
  const SetPhoto photo{5, 27, 1390.5};
  expectRightOrUnsure(photo, false);
  const RowDetection found = readPhoto(drawing::renderVariedTray(specOf(photo)), 0);
  EXPECT_EQ(found.doubt, "a compartment may lie between two rows");
  EXPECT_LT(found.confidence, RowDetector::kConfidenceThreshold);
}

}  // namespace
}  // namespace subsurf
