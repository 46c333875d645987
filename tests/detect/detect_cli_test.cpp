// slabber detect and new --detect-rows run as a user runs them, on generated
// tray photographs: the rows laid, the summary, the exit status, the session
// saved, the split that follows and the warning on an unsure photo's preview.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/drawing/sample_tray.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "support/run_program.h"

namespace subsurf {
namespace {

namespace fs = std::filesystem;
using testing::CommandRun;

class DetectCliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    program = testing::builtProgram("slabber");
    ASSERT_TRUE(fs::exists(program)) << program << " has not been built";
    double top = 1234.5;
    for (int i = 0; i < 2; ++i) {
      drawing::SampleTraySpec spec;
      spec.width = 960;
      spec.height = 640;
      spec.rows = 5;
      spec.topDepth = top;
      spec.seed = 70 + i;
      const drawing::SampleTray tray = drawing::renderSampleTray(spec);
      names.push_back(drawing::sampleTrayFileName(tray.top, tray.base));
      ASSERT_TRUE(image::writeImage(tray.pixels.view(), dir.file(names.back()), image::ImageFormat::Jpeg));
      top = tray.base;
    }
  }

  CommandRun slabber(const std::string& args) {
    return testing::runCommand("cd '" + dir.path() + "' && SUBSURF_USERLIB='" + dir.file("userlib") + "' '" +
                               program + "' " + args);
  }

  testing::TempDir dir;
  std::string program;
  std::vector<std::string> names;
};

TEST_F(DetectCliTest, NewLaysTheRowsFoundAndTheSplitCutsThemAll) {
  const CommandRun made = slabber("new s.slbs TRAY_*.jpg --depths-from-names --detect-rows");
  ASSERT_EQ(made.status, 0) << made.out << made.err;
  EXPECT_NE(made.out.find("s.slbs: 2 images, 10 rows\n"), std::string::npos) << made.out;
  EXPECT_NE(made.out.find("    1 " + names[0] + ": 5 rows across, confidence "), std::string::npos) << made.out;
  EXPECT_NE(made.out.find("  photos: 2, rows laid: 10\n"), std::string::npos) << made.out;
  EXPECT_EQ(made.out.find("check the rows of"), std::string::npos) << made.out;

  const CommandRun shown = slabber("show s.slbs --rows");
  EXPECT_NE(shown.out.find("row  5: 1238.50 - 1239.50"), std::string::npos) << shown.out;

  const CommandRun split = slabber("split s.slbs --out rows --format jpg --no");
  EXPECT_EQ(split.status, 0) << split.out << split.err;
  EXPECT_NE(split.out.find("rows:          10 written of 10"), std::string::npos) << split.out;
  EXPECT_TRUE(fs::exists(dir.file("rows/TRAY_1234_5-1239_5_WL_01238_50-01239_50.jpg")));
}

TEST_F(DetectCliTest, AnUnexpectedCountNamesThePhotoForCheckingAndWarnsOnItsPreview) {
  ASSERT_EQ(slabber("new s.slbs TRAY_*.jpg --rows 2").status, 0);
  const CommandRun run = slabber("detect s.slbs --image 2 --cores 4");
  EXPECT_EQ(run.status, 1) << run.out << run.err;
  EXPECT_NE(run.out.find("Rows found in s.slbs\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("  photos: 1, rows laid: 5\n"), std::string::npos) << run.out;
  const std::string line = "check the rows of " + names[1] + " (confidence ";
  const std::size_t at = run.out.find(line);
  ASSERT_NE(at, std::string::npos) << run.out;
  EXPECT_EQ(run.out.substr(run.out.find(':', at + line.size())), ": found 5 rows, expected 4)\n");

  // The session was saved with the rows found on image 2 only.
  const CommandRun shown = slabber("show s.slbs");
  EXPECT_NE(shown.out.find(names[0] + "  WL"), std::string::npos);
  EXPECT_NE(shown.out.find("          2\n"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("          5\n"), std::string::npos) << shown.out;

  ASSERT_EQ(slabber("preview s.slbs --out previews").status, 0);
  const std::string stub = names[1].substr(0, names[1].size() - 4);
  image::Photo sure, unsure;
  ASSERT_TRUE(image::Photo::load(dir.file("previews/" + stub + "_preview.png"), unsure));
  ASSERT_TRUE(image::Photo::load(dir.file("previews/" + names[0].substr(0, names[0].size() - 4) + "_preview.png"), sure));
  image::Raster corner, plain;
  ASSERT_TRUE(unsure.cut({{2, 2, 1, 1}}, corner));
  ASSERT_TRUE(sure.cut({{2, 2, 1, 1}}, plain));
  EXPECT_GT(corner.pixel(0, 0)[0], 170);  // the red warning band
  EXPECT_LT(corner.pixel(0, 0)[1], 60);
  EXPECT_LT(plain.pixel(0, 0)[0], 170);   // the table, where the rows were not in doubt
}

TEST_F(DetectCliTest, AnImageNotInTheSessionIsRefusedAndNothingChanges) {
  ASSERT_EQ(slabber("new s.slbs TRAY_*.jpg --rows 2").status, 0);
  const std::string before = testing::TempDir::read(dir.file("s.slbs"));
  const CommandRun run = slabber("detect s.slbs --image 3");
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("Image 3 is not in s.slbs (it holds 2 images)"), std::string::npos) << run.err;
  EXPECT_EQ(testing::TempDir::read(dir.file("s.slbs")), before);
  const CommandRun missing = slabber("detect none.slbs");
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.err.find("none.slbs: no such session file"), std::string::npos) << missing.err;
}

TEST_F(DetectCliTest, DetectRowsCannotBeCombinedWithBandsOrATemplate) {
  const CommandRun run = slabber("new s.slbs TRAY_*.jpg --rows 3 --detect-rows");
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("--rows excludes --detect-rows"), std::string::npos) << run.err;
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));
}

}  // namespace
}  // namespace subsurf
