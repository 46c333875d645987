// `slabber split` and `slabber preview`, run as a user runs them, on a session
// file of small pattern photographs. Needs the slabber program built in the
// same build tree; the tests are skipped when it is not there.
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "core/free_corners.h"
#include "core/row_layout.h"
#include "core/session_files.h"
#include "split/split_test_support.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace subsurf::split::testing {
namespace {

using subsurf::testing::CommandRun;

std::string program() { return subsurf::testing::builtProgram("slabber"); }

class SlabberCommand : public SplitTest {
 protected:
  void SetUp() override {
    if (!fs::exists(program())) GTEST_SKIP() << program() << " is not built";
    SplitTest::SetUp();
    for (int i = 1; i <= 3; ++i) {
      photos.push_back(dir.file("T" + std::to_string(i) + ".png"));
      patterns.push_back(makePhoto(photos.back(), 300, 200));
      addTray(session, photos.back(), 300, 200, 5, 1000.0f + 5.0f * static_cast<float>(i - 1), 1.0f);
    }
    sessionFile = dir.file("s.slbs");
    save();
  }
  void save() { ASSERT_TRUE(saveSession(session, sessionOptions, sessionFile)); }

  CommandRun run(const std::string& args) { return subsurf::testing::runCommand(program() + " " + args); }
  // The row image names of tray i (from 1), worked out from the layout:
  // rows of 1 m from 1000 + 5 (i - 1).
  std::vector<std::string> trayNames(int i, const std::string& suffix = ".bmp") {
    std::vector<std::string> names;
    for (int k = 0; k < 5; ++k) {
      const int top = 1000 + 5 * (i - 1) + k;
      names.push_back("T" + std::to_string(i) + "_WL_0" + std::to_string(top) + "_00-0" + std::to_string(top + 1) +
                      "_00" + suffix);
    }
    return names;
  }
  std::vector<std::string> allNames(const std::string& suffix = ".bmp") {
    std::vector<std::string> names;
    for (int i = 1; i <= 3; ++i)
      for (const auto& n : trayNames(i, suffix)) names.push_back(n);
    return names;
  }

  std::vector<std::string> photos;
  std::vector<Raster> patterns;
  SessionOptions sessionOptions;
  std::string sessionFile;
};

TEST_F(SlabberCommand, SplitWritesRowsTableAndSummary) {
  const std::string table = outFile("t.csv");
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --report " + table + " --jobs 1");
  EXPECT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = allNames();
  expected.push_back("manifest.csv");
  expected.push_back("t.csv");
  EXPECT_EQ(filesIn(out), expected);
  EXPECT_EQ(r.out, "Split of " + sessionFile +
                       "\n"
                       "  photos:        3\n"
                       "  rows:          15 written of 15\n"
                       "  files written: 17 (the table of clipping depths: " + table + ")\n"
                       "  manifest:      " + outFile("manifest.csv") + "\n"
                       "  warnings:      0\n"
                       "  depths: 0 read from names, 3 typed or imported, 0 carried, 0 without depths\n");
  const auto lines = readLines(table);
  ASSERT_EQ(lines.size(), 2u + 3u * 6u);
  EXPECT_EQ(lines[0], " Table of clipping depths,");
  EXPECT_EQ(lines[2], "Source Image, " + photos[0]);
  EXPECT_EQ(lines[9], "  1005.000, 0,   1006.000, 0, , " + outFile("T2_WL_01005_00-01006_00.bmp"));
  EXPECT_EQ(lines[19], "  1014.000, 0,   1015.000, 0, , " + outFile("T3_WL_01014_00-01015_00.bmp"));
  EXPECT_TRUE(samePixels(readRow(outFile("T3_WL_01012_00-01013_00.bmp")), region(patterns[2], {0, 80, 300, 40})));
}

TEST_F(SlabberCommand, RowsTheFinderDoubtsWaitForAPersonBeforeTheyAreCut) {
  // Tray 2's rows as the finder leaves them when it is unsure.
  RowDetection unsure;
  unsure.confidence = 0.42;
  unsure.doubt = "found 4 rows, expected 5";
  layDetectedRows(session, *session.imageAt(2), unsure, 300, 200);
  save();
  CommandRun r = run("split " + sessionFile + " --out " + out + " --jobs 1");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err.rfind("slabber: T2.png: not cut, its rows need checking (check the rows 0.42: found 4 rows, expected "
                        "5); correct them, or accept them with: slabber rows " + sessionFile + " --image 2 --checked\n",
                        0),
            0u)
      << r.err;
  EXPECT_NE(r.out.find("  held for checking: 1 photo, not cut\n"), std::string::npos) << r.out;
  std::vector<std::string> expected = trayNames(1);
  for (const auto& n : trayNames(3)) expected.push_back(n);
  expected.push_back("manifest.csv");
  EXPECT_EQ(filesIn(out), expected);

  // A person accepts them as they are: now they are cut.
  r = run("rows " + sessionFile + " --image 2 --checked");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, sessionFile + ": the rows of image 2 are marked as checked (were: check the rows 0.42: found 4 "
                                 "rows, expected 5)\n");
  r = run("split " + sessionFile + " --out " + out + " --jobs 1");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err.find("not cut"), std::string::npos) << r.err;
  EXPECT_EQ(filesIn(out).size(), 16u);

  // Rows placed by a person count as checked too.
  ASSERT_TRUE(readSession(session, sessionOptions, sessionFile));
  layDetectedRows(session, *session.imageAt(3), unsure, 300, 200);
  save();
  EXPECT_EQ(run("rows " + sessionFile + " --image 3 --set 0,0,300,40 --set 0,40,300,40").status, 0);
  r = run("split " + sessionFile + " --out " + dir.file("again") + " --jobs 1");
  EXPECT_EQ(r.status, 0) << r.err << r.out;
}

TEST_F(SlabberCommand, SameOutputsWhateverTheJobCount) {
  const std::string a = dir.file("a"), b = dir.file("b");
  ASSERT_EQ(run("split " + sessionFile + " --out " + a + " --report " + a + "/t.csv --jobs 1").status, 0);
  ASSERT_EQ(run("split " + sessionFile + " --out " + b + " --report " + b + "/t.csv --jobs 3").status, 0);
  ASSERT_EQ(filesIn(a), filesIn(b));
  for (const auto& name : filesIn(a)) {
    if (name == "t.csv") continue;
    EXPECT_EQ(image::testing::fileBytes(a + "/" + name), image::testing::fileBytes(b + "/" + name)) << name;
  }
  auto la = readLines(a + "/t.csv"), lb = readLines(b + "/t.csv");
  ASSERT_EQ(la.size(), lb.size());
  for (std::size_t i = 0; i < la.size(); ++i) {
    std::string x = la[i];
    if (const auto p = x.find(a + "/"); p != std::string::npos) x.replace(p, a.size(), b);
    EXPECT_EQ(x, lb[i]);
  }
}

TEST_F(SlabberCommand, SessionReportAndMetafileOptions) {
  sessionOptions.cgms = 1;
  sessionOptions.doReport = 1;
  sessionOptions.reportRoot = "depths";
  sessionOptions.reportOption = 2;
  save();
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --no-manifest");
  EXPECT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = allNames(".cgm");
  expected.push_back("depths.csv");
  EXPECT_EQ(filesIn(out), expected);
  EXPECT_EQ(readLines(outFile("depths.csv"))[3], "  1000.000,   1001.000, " + outFile("T1_WL_01000_00-01001_00.cgm"));
  EXPECT_TRUE(samePixels(readRow(outFile("T1_WL_01000_00-01001_00.cgm")), region(patterns[0], {0, 0, 300, 40})));
}

TEST_F(SlabberCommand, FormatChosenOnTheCommandLine) {
  sessionOptions.cgms = 1;
  save();
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --format png --no-manifest");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(filesIn(out), allNames(".png"));
  EXPECT_NE(r.out.find("  files written: 15\n  (no table of clipping depths: the session does not ask for one; "
                       "give --report FILE)\n"),
            std::string::npos)
      << r.out;
}

TEST_F(SlabberCommand, RowsBesideThePhotographsFromTheUserSettings) {
  UserSettings user;
  user.outputOption = 2;
  ASSERT_TRUE(writeUserSettings(user, userSettingsFile()));
  const CommandRun r = run("split " + sessionFile);
  EXPECT_EQ(r.status, 0) << r.err;
  for (const auto& name : allNames()) EXPECT_TRUE(fs::exists(dir.file(name))) << name;
  EXPECT_TRUE(filesIn(out).empty());
}

TEST_F(SlabberCommand, FailedPhotographNamedRowByRow) {
  fs::remove(photos[1]);
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --jobs 2");
  EXPECT_EQ(r.status, 2);  // unreadable input; the other photos' rows are written all the same
  EXPECT_EQ(filesIn(out).size(), 11u);  // ten rows and the manifest
  EXPECT_EQ(readLines(outFile("manifest.csv")).size(), 11u);  // the rows written, under the header
  EXPECT_NE(r.err.find("slabber: Error loading: " + photos[1] + " (file not found)"), std::string::npos) << r.err;
  std::string rows = "Rows not written:\n";
  for (int k = 1; k <= 5; ++k) rows += "  " + photos[1] + " Core " + std::to_string(k) + ": the photograph could not be read\n";
  EXPECT_NE(r.out.find("  photos:        3 (1 could not be read)\n  rows:          10 written of 15\n"), std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find(rows), std::string::npos) << r.out;
}

TEST_F(SlabberCommand, OutputFolderThatCannotBeMade) {
  image::testing::writeBytes(dir.file("file"), {1});
  const CommandRun r = run("split " + sessionFile + " --out " + dir.file("file") + "/rows");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("slabber: Cannot make the output folder " + dir.file("file") + "/rows"), std::string::npos);
  EXPECT_NE(r.out.find("  rows:          0 written of 15\n"), std::string::npos) << r.out;
  EXPECT_EQ(filesIn(dir.path().string()).size(), 6u);  // 3 photos, the session, "file", "out"
}

TEST_F(SlabberCommand, MissingDepthsAnsweredFromTheCommandLine) {
  session.images()[1]->realSetting(rowTopSetting(3)).V = kRealNull;
  save();
  CommandRun r = run("split " + sessionFile + " --out " + out + " --no --no-manifest");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find(std::string(kAskDeriveDepths) + " [no]"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("slabber: Core table not complete for one or more rectangles"), std::string::npos);
  EXPECT_EQ(filesIn(out).size(), 14u);

  fs::remove_all(out);
  r = run("split " + sessionFile + " --out " + out + " --yes --no-manifest");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find(std::string(kAskDeriveDepths) + " [yes]"), std::string::npos) << r.err;
  EXPECT_EQ(filesIn(out), allNames());
}

TEST_F(SlabberCommand, BadArguments) {
  CommandRun r = run("split " + dir.file("none.slbs") + " --out " + out);
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: " + dir.file("none.slbs") + ": no such session file\n");

  r = run("split " + sessionFile);
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: The session names no output folder: give one with --out DIR\n");

  r = run("split " + sessionFile + " --out " + out + " --format gif");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: --format gif: not one of bmp, cgm, png, jpg, tif\n");

  EXPECT_EQ(run("split " + sessionFile + " --out " + out + " --yes --no").status, 2);
  EXPECT_EQ(run("split " + sessionFile + " --out " + out + " --jobs 0").status, 2);
  EXPECT_EQ(run("split").status, 2);
  EXPECT_TRUE(filesIn(out).empty());
}

TEST_F(SlabberCommand, SessionWithNothingToProcess) {
  for (CoreImage* image : session.images()) setInteger(image->intSetting(kIntUse), 0);
  save();
  const CommandRun r = run("split " + sessionFile + " --out " + out);
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("slabber: No images found\n"), std::string::npos) << r.err;
}

TEST_F(SlabberCommand, PreviewPerPhotograph) {
  const std::string prev = dir.file("prev");
  const CommandRun r = run("preview " + sessionFile + " --out " + prev);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(filesIn(prev), (std::vector<std::string>{"T1_preview.png", "T2_preview.png", "T3_preview.png"}));
  EXPECT_NE(r.out.find("Previews written: 3 of 3\n"), std::string::npos);
  const vips::VImage p = vips::VImage::new_from_file((prev + "/T2_preview.png").c_str());
  EXPECT_EQ(p.width(), 300);
  EXPECT_EQ(p.height(), 200);
}

TEST_F(SlabberCommand, PreviewOfFreeCorneredRowsShowsThemStraightenedBeside) {
  // Row 2 of T2 given as a slanted quadrilateral; the others stay upright.
  setFreeCorners(session, *session.rectangleAt(*session.imageAt(2), 2), FreeCorners{{20, 280, 285, 15}, {45, 42, 78, 76}});
  save();
  const std::string prev = dir.file("prev");
  const CommandRun r = subsurf::testing::withoutSuppressionReport(run("preview " + sessionFile + " --out " + prev));
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");  // it lies within its band: no overlap is claimed
  const vips::VImage p2 = vips::VImage::new_from_file((prev + "/T2_preview.png").c_str());
  EXPECT_EQ(p2.width(), 300 + 200);  // the column of straightened rows, at least 200 wide
  EXPECT_EQ(p2.height(), 200);
  const vips::VImage p1 = vips::VImage::new_from_file((prev + "/T1_preview.png").c_str());
  EXPECT_EQ(p1.width(), 300);  // no free corners, no column
}

TEST_F(SlabberCommand, PreviewOfAMissingPhotograph) {
  fs::remove(photos[2]);
  const std::string prev = dir.file("prev");
  const CommandRun r = run("preview " + sessionFile + " --out " + prev);
  EXPECT_EQ(r.status, 2);  // unreadable input; the other previews are drawn
  EXPECT_EQ(filesIn(prev), (std::vector<std::string>{"T1_preview.png", "T2_preview.png"}));
  EXPECT_NE(r.err.find("slabber: Error loading: " + photos[2]), std::string::npos);
}

TEST_F(SlabberCommand, PhotosSharingAStubStopTheRunOrAreToldApart) {
  CoreSession pair;
  ASSERT_TRUE(pair.init());
  for (const char* light : {"Dry", "Wet"}) {
    const std::string p = dir.file(std::string("RC671_0332.25-0337.19_m_") + light + ".png");
    makePhoto(p, 300, 200);
    addTray(pair, p, 300, 200, 6, 332.25f, 0.8f);
  }
  const std::string pairFile = dir.file("pair.slbs");
  ASSERT_TRUE(saveSession(pair, sessionOptions, pairFile));
  pair.close();

  CommandRun r = run("split " + pairFile + " --out " + out);
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("slabber: RC671_0332.25-0337.19_m_Dry.png Core 1 and RC671_0332.25-0337.19_m_Wet.png Core 1 "
                       "would both be written to " + outFile("RC671_0332_WL_00332_25-00333_05.bmp") + "\n"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("slabber: Nothing written: give --unique to add a distinguishing part to such names\n"),
            std::string::npos);
  EXPECT_TRUE(filesIn(out).empty());

  r = run("split " + pairFile + " --out " + out + " --unique");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("  rows:          12 written of 12\n  files written: 13\n"), std::string::npos) << r.out;
  std::vector<std::string> files = filesIn(out);
  ASSERT_EQ(files.size(), 13u);
  EXPECT_EQ(files[0], "RC671_0332_WL_00332_25-00333_05_Dry.bmp");
  EXPECT_EQ(files[1], "RC671_0332_WL_00332_25-00333_05_Wet.bmp");
  EXPECT_EQ(files[12], "manifest.csv");
}

TEST_F(SlabberCommand, YesFillsOnlyTheDepthsThatAreMissing) {
  // Tray 3's depths were read, typed or imported and do not follow tray 1's;
  // tray 2 has none.
  CoreImage& second = *session.images()[1];
  second.realSetting(kRealTop).V = kRealNull;
  second.realSetting(kRealBase).V = kRealNull;
  for (int k = 1; k <= 5; ++k) setRowDepths(second, k, kRealNull, kRealNull);
  CoreImage& third = *session.images()[2];
  setDepth(third.realSetting(kRealTop), 2000.0f, "");
  setDepth(third.realSetting(kRealBase), 2005.0f, "");
  for (int k = 1; k <= 5; ++k) setRowDepths(third, k, 1999.0f + k, 2000.0f + k);
  save();
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --yes --no-manifest");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find(std::string(kAskDeriveDepths) + " [yes]"), std::string::npos) << r.err;
  EXPECT_NE(r.out.find("  carried:       T2.png\n"
                       "  depths: 0 read from names, 2 typed or imported, 1 carried, 0 without depths\n"),
            std::string::npos)
      << r.out;
  EXPECT_TRUE(fs::exists(outFile("T2_WL_01005_00-01006_00.bmp")));  // carried on from tray 1
  EXPECT_TRUE(fs::exists(outFile("T3_WL_02000_00-02001_00.bmp")));  // kept
  EXPECT_FALSE(fs::exists(outFile("T3_WL_01010_00-01011_00.bmp")));
}

TEST_F(SlabberCommand, ManifestLoadsInPythonsCsvModule) {
  if (std::system("python3 -c 'import csv' >/dev/null 2>&1") != 0) GTEST_SKIP() << "python3 does not run here";
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --manifest " + dir.file("m/rows.csv") +
                           " --hole 'BH 7, west'");
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string script = dir.file("load.py");
  {
    std::ofstream py(script);
    py << "import csv, sys\n"
          "rows = list(csv.DictReader(open(sys.argv[1], newline='')))\n"
          "print(len(rows), rows[0]['hole'], rows[0]['file'], rows[14]['top'], rows[14]['base'], rows[0]['width'])\n";
  }
  const CommandRun py = subsurf::testing::runCommand("python3 " + script + " " + dir.file("m/rows.csv"));
  ASSERT_EQ(py.status, 0) << py.err;
  EXPECT_EQ(py.out, "15 BH 7, west ../out/T1_WL_01000_00-01001_00.bmp 1014.00 1015.00 300\n");
}

TEST_F(SlabberCommand, LayoutWarningsComeBeforeCuttingInSplitAndPreview) {
  CoreImage& first = *session.images()[0];
  CoreRectangle& second = *session.rectangleAt(first, 2);
  second.polygon.py[0] = second.polygon.py[1] = 35;  // reaches 5 pixels into row 1
  CoreRectangle& fifth = *session.rectangleAt(first, 5);
  fifth.polygon.px[1] = fifth.polygon.px[2] = 320;  // past the right edge of the 300-pixel photo
  save();
  const std::string overlap = "slabber: T1.png: rows 1 and 2 overlap by 300 x 5 pixels\n";
  const std::string outside =
      "slabber: T1.png: row 5 (0, 160) to (320, 200) reaches outside the 300 x 200 photograph; it is clipped\n";
  CommandRun r = run("split " + sessionFile + " --out " + out + " --no-manifest");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find(overlap), std::string::npos) << r.err;
  EXPECT_NE(r.err.find(outside), std::string::npos) << r.err;
  EXPECT_LT(r.err.find(overlap), r.err.find("Processing images..."));
  EXPECT_NE(r.out.find("  warnings:      2\n"), std::string::npos) << r.out;

  r = run("preview " + sessionFile + " --out " + dir.file("check"));
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err.rfind(overlap + outside, 0), 0u) << r.err;  // (leak checkers may add their own lines)
}

}  // namespace
}  // namespace subsurf::split::testing
