// A split killed at any moment of a re-run leaves every row image either as
// it was or as the new run makes it, never missing and never part-written;
// the next run removes what the killed ones left behind. And rows are cut as
// their depths say, a row longer than a core length reaching past its
// rectangle.
#include <map>

#include "reliability/reliability_support.h"

namespace subsurf::reliability {
namespace {

using image::Raster;
using split::testing::addTray;
using split::testing::makePhoto;

class KilledSplit : public split::testing::SplitTest {
 protected:
  void SetUp() override {
    if (!fs::exists(slabber())) GTEST_SKIP() << slabber() << " is not built";
    SplitTest::SetUp();
    // Photographs large enough for a run to take a while, so kills land in
    // the middle of it.
    for (int i = 1; i <= 4; ++i) {
      photos.push_back(dir.file("K" + std::to_string(i) + ".png"));
      makePhoto(photos.back(), 1800, 1200);
      addTray(session, photos.back(), 1800, 1200, 6, 2000.0f + 6.0f * static_cast<float>(i - 1), 1.0f);
    }
    sessionFile = dir.file("k.slbs");
    SessionOptions options;
    ASSERT_TRUE(saveSession(session, options, sessionFile));
  }
  std::vector<std::string> splitArgs(const std::string& folder) {
    return {slabber(), "split", sessionFile, "--out", folder, "--jobs", "2", "--no"};
  }
  // Every file of a folder with its bytes.
  static std::map<std::string, std::string> contents(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const std::string& name : filesIn(folder)) files[name] = readAll(folder + "/" + name);
    return files;
  }
  // The photographs made anew with other pixels, so new rows differ from old.
  void changePhotos() {
    for (const std::string& p : photos) {
      Raster r = image::testing::patternRaster(1800, 1200);
      for (int y = 0; y < r.height(); ++y)
        for (int x = 0; x < r.width(); ++x) r.pixel(x, y)[1] ^= 0xFF;
      image::testing::saveWithVips(r, p);
    }
  }

  std::vector<std::string> photos;
  std::string sessionFile;
};

TEST_F(KilledSplit, EveryRowIsTheOldOrTheNewImageWhereverTheRunIsKilled) {
  ASSERT_EQ(runAndKill(splitArgs(out), std::chrono::seconds(60)).status, 0);
  const auto old = contents(out);
  ASSERT_EQ(old.size(), 25u);  // 24 rows and the manifest

  changePhotos();
  const std::string reference = dir.file("reference");
  const auto started = std::chrono::steady_clock::now();
  ASSERT_EQ(runAndKill(splitArgs(reference), std::chrono::seconds(60)).status, 0);
  const auto runTime = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started);
  const auto fresh = contents(reference);
  ASSERT_EQ(fresh.size(), 25u);

  int killedMidway = 0;
  constexpr int kKills = 16;
  for (int k = 0; k < kKills; ++k) {
    const auto delay = runTime * k / kKills;
    const Ending e = runAndKill(splitArgs(out), delay);
    if (e.signalled) ++killedMidway;
    for (const auto& [name, bytes] : old) {
      const std::string now = readAll(out + "/" + name);
      EXPECT_TRUE(now == bytes || now == fresh.at(name))
          << name << " after a kill at " << delay.count() << " us: " << now.size() << " bytes";
    }
    // Nothing but rows, their manifest and the killed run's temporaries.
    for (const std::string& name : filesIn(out))
      EXPECT_TRUE(old.count(name) == 1 || (name.front() == '.' && name.ends_with(".part"))) << name;
  }
  EXPECT_GE(killedMidway, kKills / 4) << "the runs finished before they could be killed";

  // A run to the end: every row new, and no temporary left of the killed ones.
  ASSERT_EQ(runAndKill(splitArgs(out), std::chrono::seconds(60)).status, 0);
  EXPECT_EQ(contents(out), fresh);
}

// ---------------------------------------------------------------------------

class RowLength : public split::testing::SplitTest {};

TEST_F(RowLength, ARowLongerThanACoreLengthIsCutLongerAndClippedToThePhotograph) {
  const std::string photo = dir.file("L.png");
  const Raster pattern = makePhoto(photo, 400, 100);
  CoreImage& image = *session.newImage();
  image.setSourceFile(photo);
  // One rectangle over the left half, a core length of 1 m.
  split::testing::setBoxes(session, image, {{0, 0, 200, 100}});
  setDepth(image.realSetting(kRealCoreLength), 1.0f, "");
  setInteger(image.intSetting(kIntHorizontal), 1);
  for (const auto& [base, width] : std::vector<std::pair<float, int>>{{1001.5f, 300}, {1003.0f, 400}, {1000.5f, 100}}) {
    SCOPED_TRACE(base);
    split::testing::setRowDepths(image, 1, 1000.0f, base);
    std::vector<split::PhotoOutcome> outcomes;
    EXPECT_EQ(split::processSession(session, options, &outcomes), 0);
    ASSERT_EQ(outcomes.size(), 1u);
    ASSERT_EQ(outcomes[0].rows.size(), 1u);
    const std::string name = outcomes[0].rows[0].outputName;
    const Raster row = split::testing::readRow(name);
    EXPECT_TRUE(image::testing::samePixels(row, image::testing::region(pattern, {0, 0, width, 100})));
    fs::remove(name);
  }
}

}  // namespace
}  // namespace subsurf::reliability
