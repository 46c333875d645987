// slabber straighten run as a user runs it, on a tray photographed at a known
// angle: the straight copy, the session pointed at it, the rows cut from it
// against the rows of the same tray photographed square on, the messages for
// bad corners, and the files it must never touch.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>

#include "core/core_session.h"
#include "core/row_detection.h"
#include "core/session_files.h"
#include "core/tray_straightening.h"
#include "host/drawing/perspective_tray.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "support/run_program.h"

namespace subsurf {
namespace {

namespace fs = std::filesystem;
using testing::CommandRun;

// Mean absolute difference (grey levels, all channels) between `a` and `b`
// moved by (dx, dy), over a's interior (a margin of 6 pixels left out).
double meanDifference(const image::Raster& a, const image::Raster& b, int dx, int dy) {
  double sum = 0;
  long n = 0;
  for (int y = 6; y < a.height() - 6; ++y)
    for (int x = 6; x < a.width() - 6; ++x) {
      const int bx = x + dx, by = y + dy;
      if (bx < 0 || by < 0 || bx >= b.width() || by >= b.height()) continue;
      const std::uint8_t* p = a.view().pixel(x, y);
      const std::uint8_t* q = b.view().pixel(bx, by);
      for (int k = 0; k < 3; ++k) sum += std::abs(p[k] - q[k]);
      n += 3;
    }
  return n ? sum / n : 1e9;
}

// The part `box` of `picture` resampled to width x height.
image::Raster resampled(const image::Raster& picture, const image::PixelBox& box, int width, int height) {
  image::Homography toSource;
  const std::array<image::PlanePoint, 4> out{image::PlanePoint{0, 0}, {double(width), 0},
                                             {double(width), double(height)}, {0, double(height)}};
  const std::array<image::PlanePoint, 4> in{
      image::PlanePoint{double(box.left), double(box.top)}, {double(box.right()), double(box.top)},
      {double(box.right()), double(box.bottom())}, {double(box.left), double(box.bottom())}};
  image::Homography::fromQuads(out, in, toSource);
  image::Raster r(width, height);
  const std::uint8_t black[3] = {0, 0, 0};
  image::warpPicture(picture.view(), toSource, r, black);
  return r;
}

class StraightenCliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    program = testing::builtProgram("slabber");
    ASSERT_TRUE(fs::exists(program)) << program << " has not been built";
    spec = drawing::perspectiveTraySpec(21, 1500, 1000, 500.0, "W-1");
    spec.keystone = 0.18;  // a steep angle, far side on the left
    spec.farSide = drawing::FarSide::Left;
    spec.rotationDegrees = -4.5;
    tray = drawing::renderPerspectiveTray(spec);
    name = drawing::sampleTrayFileName(tray.flat.top, tray.flat.base);
    name = name.substr(0, name.size() - 4) + ".png";  // lossless, so the comparison sees geometry only
    ASSERT_TRUE(image::writeImage(tray.photo.view(), dir.file(name), image::ImageFormat::Png));
  }

  CommandRun slabber(const std::string& args) {
    return testing::runCommand("cd '" + dir.path() + "' && SUBSURF_USERLIB='" + dir.file("userlib") + "' '" +
                               program + "' " + args);
  }

  std::string cornersArgument(const std::array<image::PlanePoint, 4>& c) const {
    return fmt::format("{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f},{:.2f}", c[0].x, c[0].y, c[1].x, c[1].y,
                       c[2].x, c[2].y, c[3].x, c[3].y);
  }

  std::string stem() const { return name.substr(0, name.size() - 4); }

  testing::TempDir dir;
  std::string program;
  drawing::PerspectiveTraySpec spec;
  drawing::PerspectiveTray tray;
  std::string name;
};

TEST_F(StraightenCliTest, RowsCutFromTheStraightCopyMatchTheTrayPhotographedSquareOn) {
  const int rows = static_cast<int>(tray.flat.rows.size());
  ASSERT_EQ(slabber(fmt::format("new s.slbs {} --depths-from-names --cores {}", name, rows)).status, 0);
  // Corners given anticlockwise from the bottom-left: put in order by the command.
  const auto& c = tray.corners;
  const CommandRun run = slabber("straighten s.slbs --image 1 --corners " + cornersArgument({c[3], c[2], c[1], c[0]}));
  ASSERT_EQ(run.status, 0) << run.out << run.err;
  const std::string copy = stem() + "-straight.png";
  EXPECT_NE(run.out.find("Trays straightened in s.slbs\n    1 " + name + ": corners given "), std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find(" -> " + copy + " ("), std::string::npos) << run.out;

  image::Photo straight;
  ASSERT_TRUE(image::Photo::load(dir.file(copy), straight));
  auto length = [](image::PlanePoint a, image::PlanePoint b) { return std::hypot(b.x - a.x, b.y - a.y); };
  EXPECT_EQ(straight.width(), std::lround(std::max(length(c[0], c[1]), length(c[3], c[2]))));
  EXPECT_EQ(straight.height(), std::lround(std::max(length(c[1], c[2]), length(c[0], c[3]))));

  // The true rows, scaled from the flat tray's frame onto the straight copy.
  const image::PixelBox& frame = tray.flat.trayBox;
  const double sx = double(straight.width()) / frame.width, sy = double(straight.height()) / frame.height;
  std::string sets;
  for (const auto& row : tray.flat.rows) {
    const image::PixelBox& b = row.compartment;
    sets += fmt::format(" --set {},{},{},{}", std::lround((b.left - frame.left) * sx),
                        std::lround((b.top - frame.top) * sy), std::lround(b.width * sx), std::lround(b.height * sy));
  }
  ASSERT_EQ(slabber("rows s.slbs --image 1" + sets).status, 0);
  const CommandRun split = slabber("split s.slbs --out rows --format png --no");
  ASSERT_EQ(split.status, 0) << split.out << split.err;

  image::Raster flat = tray.flat.pixels;
  double worstShift = 0, meanResidual = 0, meanNeighbour = 0;
  for (int k = 0; k < rows; ++k) {
    const auto& row = tray.flat.rows[k];
    // Rows are named after the photograph, not its straight copy.
    const std::string file = dir.file(fmt::format("rows/{}_WL_{:05.0f}_{:02.0f}-{:05.0f}_{:02.0f}.png", stem(),
                                                  std::floor(row.top), 100 * (row.top - std::floor(row.top)),
                                                  std::floor(row.base), 100 * (row.base - std::floor(row.base))));
    image::Photo cutPhoto;
    ASSERT_TRUE(image::Photo::load(file, cutPhoto)) << file << "\n" << split.out;
    image::Raster cut;
    ASSERT_TRUE(cutPhoto.cut({{0, 0, cutPhoto.width(), cutPhoto.height()}}, cut));
    const image::Raster truth = resampled(flat, row.compartment, cut.width(), cut.height());
    // The shift that best lines the cut up with the truth: the pixel error.
    int bestX = 0, bestY = 0;
    double best = 1e9;
    for (int dy = -4; dy <= 4; ++dy)
      for (int dx = -4; dx <= 4; ++dx)
        if (const double d = meanDifference(cut, truth, dx, dy); d < best) best = d, bestX = dx, bestY = dy;
    worstShift = std::max({worstShift, std::fabs(bestX), std::fabs(bestY)});
    meanResidual += best / rows;
    const auto& other = tray.flat.rows[(k + 1) % rows];
    meanNeighbour += meanDifference(cut, resampled(flat, other.compartment, cut.width(), cut.height()), 0, 0) / rows;
  }
  // Each row lies within a pixel of where the square-on photograph has it:
  // the row boxes are whole pixels, so half a pixel of rounding each way.
  EXPECT_LE(worstShift, 1.0);
  // What is left is the blur of resampling twice (into the angled photo,
  // then out of it) on grainy rock: a few grey levels, far below the
  // difference between two different rows of core.
  EXPECT_LT(meanResidual, 8.0);
  EXPECT_GT(meanNeighbour, 3 * meanResidual);
  RecordProperty("mean_residual", fmt::format("{:.2f}", meanResidual));
  RecordProperty("mean_neighbour", fmt::format("{:.2f}", meanNeighbour));
}

// The names of everything a split writes in `folder`, sorted.
std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

TEST_F(StraightenCliTest, RowsPreviewAndManifestOfTheStraightCopyAreNamedAsThoseOfThePhotoSquareOn) {
  const int rows = static_cast<int>(tray.flat.rows.size());
  // The same tray photographed square on, under the same name in its own folder.
  fs::create_directory(dir.file("flat"));
  ASSERT_TRUE(image::writeImage(tray.flat.pixels.view(), dir.file("flat/" + name), image::ImageFormat::Png));
  auto sets = [&](const image::PixelBox& frame, double sx, double sy) {
    std::string text;
    for (const auto& row : tray.flat.rows) {
      const image::PixelBox& b = row.compartment;
      text += fmt::format(" --set {},{},{},{}", std::lround((b.left - frame.left) * sx),
                          std::lround((b.top - frame.top) * sy), std::lround(b.width * sx), std::lround(b.height * sy));
    }
    return text;
  };
  ASSERT_EQ(slabber(fmt::format("new flat/s.slbs flat/{} --depths-from-names --cores {}", name, rows)).status, 0);
  ASSERT_EQ(slabber("rows flat/s.slbs --image 1" + sets(image::PixelBox{0, 0, 0, 0}, 1, 1)).status, 0);
  const CommandRun squareOn = slabber("split flat/s.slbs --out flat/rows --format png --no");
  ASSERT_EQ(squareOn.status, 0) << squareOn.out << squareOn.err;
  ASSERT_EQ(slabber("preview flat/s.slbs --out flat/preview").status, 0);

  ASSERT_EQ(slabber(fmt::format("new s.slbs {} --depths-from-names --cores {}", name, rows)).status, 0);
  const CommandRun straightened = slabber("straighten s.slbs --image 1 --corners " + cornersArgument(tray.corners));
  ASSERT_EQ(straightened.status, 0) << straightened.out << straightened.err;
  image::PixelSize size;
  ASSERT_TRUE(image::readPixelSize(dir.file(stem() + "-straight.png"), size));
  const image::PixelBox& frame = tray.flat.trayBox;
  ASSERT_EQ(slabber("rows s.slbs --image 1" + sets(frame, double(size.width) / frame.width,
                                                   double(size.height) / frame.height))
                .status,
            0);
  const CommandRun split = slabber("split s.slbs --out rows --format png --no");
  ASSERT_EQ(split.status, 0) << split.out << split.err;
  ASSERT_EQ(slabber("preview s.slbs --out preview").status, 0);

  const std::vector<std::string> names = namesIn(dir.file("rows"));
  EXPECT_EQ(names, namesIn(dir.file("flat/rows")));
  ASSERT_EQ(static_cast<int>(names.size()), rows + 2);  // with the table of clipping depths and the manifest
  const auto& first = tray.flat.rows.front();
  EXPECT_EQ(names.front(), fmt::format("{}_WL_{:05.0f}_{:02.0f}-{:05.0f}_{:02.0f}.png", stem(), std::floor(first.top),
                                       100 * (first.top - std::floor(first.top)), std::floor(first.base),
                                       100 * (first.base - std::floor(first.base))));
  EXPECT_EQ(namesIn(dir.file("preview")), std::vector<std::string>{stem() + "_preview.png"});
  EXPECT_EQ(namesIn(dir.file("flat/preview")), std::vector<std::string>{stem() + "_preview.png"});
  // The manifest names the photograph, as it does for the tray photographed square on.
  std::ifstream manifest(dir.file("rows/manifest.csv"));
  std::string header, line;
  ASSERT_TRUE(std::getline(manifest, header));
  ASSERT_TRUE(std::getline(manifest, line));
  EXPECT_EQ(line.substr(0, line.find(",1,")), ",../" + name) << line;
}

TEST_F(StraightenCliTest, ThePhotoAndItsStraightCopyInOneSessionWouldWriteTheSameRowsAndAreStopped) {
  ASSERT_EQ(slabber(fmt::format("new s.slbs {} {} --depths-from-names --cores 2", name, name)).status, 0);
  ASSERT_EQ(slabber("straighten s.slbs --image 2 --corners " + cornersArgument(tray.corners)).status, 0);
  for (int image = 1; image <= 2; ++image)
    ASSERT_EQ(slabber(fmt::format("rows s.slbs --image {} --set 100,100,300,80 --set 100,300,300,80", image)).status, 0);
  const CommandRun split = slabber("split s.slbs --out rows --format png --no");
  EXPECT_EQ(split.status, 2) << split.out << split.err;
  EXPECT_NE(split.err.find(fmt::format("slabber: {} Core 1 and {}-straight.png Core 1 would both be written to ", name,
                                       stem())),
            std::string::npos)
      << split.err;
  EXPECT_FALSE(fs::exists(dir.file("rows")) && !namesIn(dir.file("rows")).empty());
}

TEST_F(StraightenCliTest, TheSessionKeepsTheOriginalAndCornersAndStraighteningAgainStartsFromIt) {
  ASSERT_EQ(slabber(fmt::format("new s.slbs {} --depths-from-names --rows 3", name)).status, 0);
  const std::string original = testing::TempDir::read(dir.file(name));
  std::array<image::PlanePoint, 4> c = tray.corners;
  for (auto& p : c) p = {std::round(p.x), std::round(p.y)};
  const CommandRun first = slabber("straighten s.slbs --image 1 --corners " + cornersArgument(c));
  ASSERT_EQ(first.status, 0) << first.err;
  EXPECT_NE(first.out.find("      3 rectangles removed: lay the rows again on the straight tray\n"), std::string::npos)
      << first.out;
  const CommandRun shown = slabber("show s.slbs");
  EXPECT_NE(shown.out.find(stem() + "-straight.png"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find(fmt::format("     straightened from {}, tray corners {:g},{:g} {:g},{:g} ", name, c[0].x,
                                       c[0].y, c[1].x, c[1].y)),
            std::string::npos)
      << shown.out;

  // Again, with the corners a little inside: read from the original, the copy replaced.
  const std::array<image::PlanePoint, 4> inside{image::PlanePoint{c[0].x + 20, c[0].y + 20}, {c[1].x - 20, c[1].y + 20},
                                                {c[2].x - 20, c[2].y - 20}, {c[3].x + 20, c[3].y - 20}};
  const CommandRun again = slabber("straighten s.slbs --image 1 --corners " + cornersArgument(inside));
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_NE(again.out.find("    1 " + name + ": corners given "), std::string::npos) << again.out;
  EXPECT_EQ(again.out.find("rectangles removed"), std::string::npos) << again.out;
  EXPECT_EQ(testing::TempDir::read(dir.file(name)), original);  // never written to
  EXPECT_EQ(dir.list(), (std::vector<std::string>{stem() + "-straight.png", name, "s.slbs"}));
  image::Photo copy;
  ASSERT_TRUE(image::Photo::load(dir.file(stem() + "-straight.png"), copy));
  EXPECT_LT(copy.width(), std::lround(std::hypot(c[1].x - c[0].x, c[1].y - c[0].y)));
}

TEST_F(StraightenCliTest, AnotherFileAtTheCopysNameIsNeverReplaced) {
  ASSERT_EQ(slabber(fmt::format("new s.slbs {}", name)).status, 0);
  dir.write(stem() + "-straight.png", "someone's own picture");
  const std::string session = testing::TempDir::read(dir.file("s.slbs"));
  const CommandRun run = slabber("straighten s.slbs --image 1 --corners " + cornersArgument(tray.corners));
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find(stem() + "-straight.png already exists and is not this image's straightened copy; move it "
                                  "away first"),
            std::string::npos)
      << run.err;
  EXPECT_EQ(testing::TempDir::read(dir.file(stem() + "-straight.png")), "someone's own picture");
  EXPECT_EQ(testing::TempDir::read(dir.file("s.slbs")), session);
}

TEST_F(StraightenCliTest, BadCornersAreNamedAndNothingIsWritten) {
  ASSERT_EQ(slabber(fmt::format("new s.slbs {}", name)).status, 0);
  const std::string session = testing::TempDir::read(dir.file("s.slbs"));
  struct Case {
    std::string corners, message;
  };
  const Case cases[] = {
      {"10,10,500,10,500", "--corners needs 8 numbers (x1,y1,...,x4,y4), found 5"},
      {"", "--corners needs 8 numbers (x1,y1,...,x4,y4), found 0"},
      {"10,10,500,10,500,400,10,4OO", "--corners: \"4OO\" is not a number"},
      {"10,10,500,10,500,400,10,,", "--corners needs 8 numbers (x1,y1,...,x4,y4), found 9"},
      {"10,10,500,10,nan,400,10,400", "--corners: \"nan\" is not a number"},
      {"10,10,500,400,500,10,10,400", "--corners: the sides of the tray cross; give the corners in order round the tray"},
      {"10,10,1501,10,1400,900,10,900", "--corners: corner 2 (1501,10) is outside the photo (1500 x 1000 pixels)"},
      {"10,10,500,10,500,400,-0.5,400", "--corners: corner 4 (-0.5,400) is outside the photo (1500 x 1000 pixels)"},
      {"10,10,200,10,400,10,10,400", "--corners: corners 1, 2 and 3 lie on one line"},
      {"10,10,500,10,500,10,10,400", "--corners: corners 1, 2 and 3 lie on one line"},
      {"10,10,500,10,200,100,10,400", "--corners: the outline is not convex at corner 3 (200,100)"},
  };
  for (const Case& c : cases) {
    const CommandRun run = slabber("straighten s.slbs --image 1 --corners '" + c.corners + "'");
    EXPECT_EQ(run.status, 2) << c.corners;
    EXPECT_EQ(run.err, "slabber: " + c.message + "\n") << c.corners;
  }
  // The whole photo, corner to corner, is allowed.
  EXPECT_EQ(slabber("straighten s.slbs --image 1 --corners 0,0,1500,0,1500,1000,0,1000").status, 0);
  EXPECT_NE(testing::TempDir::read(dir.file("s.slbs")), session);
}

TEST_F(StraightenCliTest, JpegCopiesAreHighQualityWithFullColourResolution) {
  const std::string jpeg = stem() + ".jpg";
  ASSERT_TRUE(image::writeImage(tray.photo.view(), dir.file(jpeg), image::ImageFormat::Jpeg));
  ASSERT_EQ(slabber("new s.slbs " + jpeg).status, 0);
  ASSERT_EQ(slabber("straighten s.slbs --image 1 --corners " + cornersArgument(tray.corners)).status, 0);
  const std::string bytes = testing::TempDir::read(dir.file(stem() + "-straight.jpg"));
  // The frame header (baseline or progressive) lists each component with its
  // sampling factors: 1x1 for all three means no colour subsampling.
  std::size_t sof = bytes.find("\xFF\xC0");
  if (sof == std::string::npos) sof = bytes.find("\xFF\xC2");
  ASSERT_NE(sof, std::string::npos);
  ASSERT_EQ(static_cast<unsigned char>(bytes[sof + 9]), 3u);  // components
  for (int k = 0; k < 3; ++k) EXPECT_EQ(static_cast<unsigned char>(bytes[sof + 11 + 3 * k]), 0x11u) << "component " << k;
}

TEST_F(StraightenCliTest, AJpegCopySaysWhoseCopyItIsSoANewSessionMayReplaceIt) {
  const std::string jpeg = stem() + ".jpg", copy = stem() + "-straight.jpg";
  ASSERT_TRUE(image::writeImage(tray.photo.view(), dir.file(jpeg), image::ImageFormat::Jpeg));
  ASSERT_EQ(slabber("new s.slbs " + jpeg).status, 0);
  ASSERT_EQ(slabber("straighten s.slbs --image 1 --corners " + cornersArgument(tray.corners)).status, 0);
  EXPECT_EQ(image::readImageDescription(dir.file(copy)), "subsurf straightened copy of " + jpeg);

  // A new session over the same folder: the copy is passed over as a photo,
  // and straightening the original again replaces it.
  const CommandRun made = slabber("new t.slbs " + jpeg + " " + copy + " --straighten");
  EXPECT_EQ(made.status, 0) << made.out << made.err;
  EXPECT_NE(made.out.find("skipped " + copy + ": the straightened copy of " + jpeg + "\n"), std::string::npos)
      << made.out;
  EXPECT_NE(made.out.find("t.slbs: 1 image, 0 rows\n"), std::string::npos) << made.out;
  EXPECT_NE(made.out.find("    1 " + jpeg + ": corners found, confidence "), std::string::npos) << made.out;

  // A JPEG at the copy's name that is someone's own picture is not replaced
  // (a session whose image is not pointed at it).
  fs::remove(dir.file(copy));
  ASSERT_TRUE(image::writeImage(tray.flat.pixels.view(), dir.file(copy), image::ImageFormat::Jpeg));
  const std::string own = testing::TempDir::read(dir.file(copy));
  ASSERT_EQ(slabber("new u.slbs " + jpeg).status, 0);
  const CommandRun refused = slabber("straighten u.slbs --image 1 --corners " + cornersArgument(tray.corners));
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.err.find(copy + " already exists and is not this image's straightened copy"), std::string::npos)
      << refused.err;
  EXPECT_TRUE(testing::TempDir::read(dir.file(copy)) == own);
}

TEST_F(StraightenCliTest, WithoutCornersSureTraysAreStraightenedAndTheOthersNamedForAPerson) {
  // A second photograph of the bare table: no tray to find.
  image::Raster table(tray.photo.width(), tray.photo.height());
  for (int y = 0; y < table.height(); ++y)
    for (int x = 0; x < table.width(); ++x) drawing::tableColourAt(spec.tray, x, y, table.pixel(x, y));
  const std::string bare = "TRAY_0600_0-0601_0.png";
  ASSERT_TRUE(image::writeImage(table.view(), dir.file(bare), image::ImageFormat::Png));
  ASSERT_EQ(slabber("new s.slbs " + name + " " + bare + " --depths-from-names").status, 0);

  const CommandRun run = slabber("straighten s.slbs");
  EXPECT_EQ(run.status, 1) << run.out << run.err;
  EXPECT_NE(run.out.find("Trays straightened in s.slbs\n    1 " + name + ": corners found, confidence "),
            std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("    2 " + bare + ": tray corners unsure, confidence 0.00\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("  trays straightened: 1\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("check the tray corners of " + bare + " (confidence 0.00: no tray stands out from the table)\n"),
            std::string::npos)
      << run.out;
  EXPECT_FALSE(fs::exists(dir.file("TRAY_0600_0-0601_0-straight.png")));
  const CommandRun shown = slabber("show s.slbs");
  EXPECT_NE(shown.out.find("  1  " + stem() + "-straight.png"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("  2  " + bare), std::string::npos) << shown.out;

  // The corners found are those drawn, within a couple of pixels.
  const std::string corners = shown.out.substr(shown.out.find("tray corners ") + 13);
  TrayCorners found, want = tray.corners;
  std::string text = corners.substr(0, corners.find('\n'));
  std::replace(text.begin(), text.end(), ' ', ',');
  ASSERT_TRUE(parseTrayCorners(text, found)) << text;
  ASSERT_TRUE(orderTrayCorners(want, 1500, 1000));
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(found[i].x, want[i].x, 3.0) << i;
    EXPECT_NEAR(found[i].y, want[i].y, 3.0) << i;
  }

  // Run again: the straight tray is passed over, the bare table named again.
  const CommandRun again = slabber("straighten s.slbs");
  EXPECT_EQ(again.status, 1);
  EXPECT_NE(again.out.find("  trays straightened: 0, already straight: 1\n"), std::string::npos) << again.out;
}

TEST_F(StraightenCliTest, NewStraightensFindsTheRowsOnTheStraightTrayAndTheSplitCutsThem) {
  const CommandRun made = slabber("new s.slbs " + name + " --depths-from-names --straighten --detect-rows");
  ASSERT_EQ(made.status, 0) << made.out << made.err;
  EXPECT_NE(made.out.find("Trays straightened:\n    1 " + name + ": corners found, confidence "), std::string::npos)
      << made.out;
  const int rows = static_cast<int>(tray.flat.rows.size());
  EXPECT_NE(made.out.find(fmt::format("s.slbs: 1 image, {} rows\n", rows)), std::string::npos) << made.out;

  // Each row laid matches the true compartment, scaled onto the straight copy.
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, dir.file("s.slbs")));
  CoreImage& image = *session.imageAt(1);
  image::Photo straight;
  ASSERT_TRUE(image::Photo::load(image.sourceFile(), straight));
  const image::PixelBox& frame = tray.flat.trayBox;
  const double sx = double(straight.width()) / frame.width, sy = double(straight.height()) / frame.height;
  const std::vector<CoreRectangle*> laid = CoreSession::rectangles(image);
  ASSERT_EQ(static_cast<int>(laid.size()), rows);
  for (int k = 0; k < rows; ++k) {
    const image::PixelBox& b = tray.flat.rows[k].compartment;
    DetectedRow want{(b.left - frame.left) * sx, (b.top - frame.top) * sy, (b.right() - frame.left) * sx,
                     (b.bottom() - frame.top) * sy};
    const Polygon& p = laid[k]->polygon;
    DetectedRow got{double(std::min(p.px[0], p.px[2])), double(std::min(p.py[0], p.py[2])),
                    double(std::max(p.px[0], p.px[2])), double(std::max(p.py[0], p.py[2]))};
    EXPECT_GE(intersectionOverUnion(want, got), 0.8) << "row " << k + 1;
  }

  const CommandRun split = slabber("split s.slbs --out rows --format jpg --no");
  EXPECT_EQ(split.status, 0) << split.out << split.err;
  EXPECT_NE(split.out.find(fmt::format("rows:          {} written of {}", rows, rows)), std::string::npos) << split.out;
}

TEST_F(StraightenCliTest, NewNamesThePhotosWhoseCornersAreUnsureAndKeepsThemAsTheyAre) {
  image::Raster table(600, 400);
  for (int y = 0; y < 400; ++y)
    for (int x = 0; x < 600; ++x) drawing::tableColourAt(spec.tray, x, y, table.pixel(x, y));
  ASSERT_TRUE(image::writeImage(table.view(), dir.file("TRAY_0600_0-0601_0.png"), image::ImageFormat::Png));
  const CommandRun made = slabber("new s.slbs " + name + " TRAY_0600_0-0601_0.png --straighten --rows 2");
  EXPECT_EQ(made.status, 1) << made.out << made.err;
  EXPECT_NE(made.out.find("check the tray corners of TRAY_0600_0-0601_0.png (confidence 0.00: no tray stands out "
                          "from the table)\n"),
            std::string::npos)
      << made.out;
  // Bands laid on the straight copy of the one, on the photo itself of the other.
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, dir.file("s.slbs")));
  EXPECT_EQ(session.imageAt(1)->sourceFile(), dir.file(stem() + "-straight.png"));
  EXPECT_EQ(session.imageAt(2)->sourceFile(), dir.file("TRAY_0600_0-0601_0.png"));
  image::Photo straight;
  ASSERT_TRUE(image::Photo::load(dir.file(stem() + "-straight.png"), straight));
  const Polygon& band = session.imageAt(1)->rectangles->polygon;
  EXPECT_EQ(*std::max_element(band.px.begin(), band.px.end()), straight.width());
  const Polygon& plain = session.imageAt(2)->rectangles->polygon;
  EXPECT_EQ(*std::max_element(plain.px.begin(), plain.px.end()), 600);
}

TEST_F(StraightenCliTest, CornersAreForOnePhoto) {
  ASSERT_EQ(slabber("new s.slbs " + name).status, 0);
  const CommandRun run = slabber("straighten s.slbs --corners 0,0,10,0,10,10,0,10");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "slabber: --corners needs --image: the corners are those of one photo\n");
}

TEST_F(StraightenCliTest, ImagesAndSessionsThatAreNotThereAreRefused) {
  ASSERT_EQ(slabber(fmt::format("new s.slbs {}", name)).status, 0);
  const CommandRun image = slabber("straighten s.slbs --image 2 --corners 0,0,10,0,10,10,0,10");
  EXPECT_EQ(image.status, 2);
  EXPECT_EQ(image.err, "slabber: Image 2 is not in s.slbs (it holds 1 image)\n");
  const CommandRun session = slabber("straighten none.slbs --image 1 --corners 0,0,10,0,10,10,0,10");
  EXPECT_EQ(session.status, 2);
  EXPECT_EQ(session.err, "slabber: none.slbs: no such session file\n");
  fs::remove(dir.file(name));
  const CommandRun photo = slabber("straighten s.slbs --image 1 --corners 0,0,10,0,10,10,0,10");
  EXPECT_EQ(photo.status, 2);
  EXPECT_NE(photo.err.find("Error loading"), std::string::npos) << photo.err;
}

}  // namespace
}  // namespace subsurf
