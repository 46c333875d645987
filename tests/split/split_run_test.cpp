// A whole run over a session: the questions before it, the table of clipping
// depths in session order, photographs that fail among ones that do not, and
// the exported routines.
#include <gtest/gtest.h>

#include "subsurf/split.h"
#include "host/fixed_text.h"
#include "split/split_test_support.h"

namespace subsurf::split::testing {
namespace {

class SplitRun : public SplitTest {
 protected:
  void SetUp() override {
    SplitTest::SetUp();
    options.writeReport = true;
    options.reportFile = outFile("clipping_depths.csv");
  }
  std::string photo(const std::string& name) {
    const std::string path = dir.file(name);
    makePhoto(path, 300, 200);
    return path;
  }
  bool asked(std::string_view text) {
    for (const auto& q : host::recordedQuestions())
      if (q == text) return true;
    return false;
  }
  bool shown(std::string_view text) {
    for (const auto& m : host::recordedMessages())
      if (m == text) return true;
    return false;
  }
};

TEST_F(SplitRun, EmptySessionOrNothingInUse) {
  EXPECT_EQ(processSession(session, options), 1);
  EXPECT_TRUE(shown("No images found"));
  EXPECT_FALSE(fs::exists(options.reportFile));

  host::clearRecorded();
  CoreImage& left = addTray(session, photo("T1.png"), 300, 200, 2, 1000.0f, 1.0f);
  setInteger(left.intSetting(kIntUse), 0);
  EXPECT_EQ(processSession(session, options), 1);
  EXPECT_TRUE(shown("No images found"));
  EXPECT_TRUE(filesIn(out).empty());
}

TEST_F(SplitRun, ReportInSessionOrderWithAFailedPhotograph) {
  const std::string t1 = photo("T1.png"), t3 = photo("T3.png");
  const std::string t2 = dir.file("T2.png");  // never made
  addTray(session, t1, 300, 200, 2, 1000.0f, 1.0f);
  addTray(session, t2, 300, 200, 2, 1002.0f, 1.0f);
  addTray(session, t3, 300, 200, 2, 1004.0f, 1.0f);
  std::vector<PhotoOutcome> outcomes;
  EXPECT_EQ(processSession(session, options, &outcomes), 1);
  ASSERT_EQ(outcomes.size(), 3u);
  EXPECT_EQ(outcomes[1].status, 1);
  EXPECT_EQ(readLines(options.reportFile),
            (std::vector<std::string>{
                " Table of clipping depths,",
                "Top Depth, Top Shift, Bottom Depth, Bottom Shift, Comments, Graphics File Name",
                "Source Image, " + t1,
                "  1000.000, 0,   1001.000, 0, , " + outFile("T1_WL_01000_00-01001_00.bmp"),
                "  1001.000, 0,   1002.000, 0, , " + outFile("T1_WL_01001_00-01002_00.bmp"),
                "Source Image, " + t2,
                "Source Image, " + t3,
                "  1004.000, 0,   1005.000, 0, , " + outFile("T3_WL_01004_00-01005_00.bmp"),
                "  1005.000, 0,   1006.000, 0, , " + outFile("T3_WL_01005_00-01006_00.bmp"),
            }));
  const RunTotals t = totalsOf(outcomes);
  EXPECT_EQ(t.photos, 3);
  EXPECT_EQ(t.photosFailed, 1);
  EXPECT_EQ(t.rows, 6);
  EXPECT_EQ(t.rowsWritten, 4);
  EXPECT_EQ(t.rowsFailed, 2);
  EXPECT_TRUE(shown(t2 + ": the photograph could not be read; 2 rows not written"));
}

TEST_F(SplitRun, EverythingWrittenReturnsZeroAndNoReportWhenOff) {
  CoreImage& image = addTray(session, photo("T1.png"), 300, 200, 3, 1000.0f, 1.0f);
  // Rows are cut by their own depths: a tray without top and base is not "missing depths".
  image.realSetting(kRealTop).V = kRealNull;
  image.realSetting(kRealBase).V = kRealNull;
  options.writeReport = false;
  EXPECT_EQ(processSession(session, options), 0);
  EXPECT_EQ(filesIn(out).size(), 3u);
  EXPECT_FALSE(fs::exists(options.reportFile));
  EXPECT_TRUE(host::recordedQuestions().empty());
}

TEST_F(SplitRun, MissingDepthsAskedAndDeclined) {
  addTray(session, photo("T1.png"), 300, 200, 2, 1000.0f, 1.0f);
  CoreImage& second = addTray(session, photo("T2.png"), 300, 200, 2, 1002.0f, 1.0f);
  second.realSetting(rowTopSetting(2)).V = kRealNull;
  host::queueAnswer(false);
  std::vector<PhotoOutcome> outcomes;
  EXPECT_EQ(processSession(session, options, &outcomes), 1);
  EXPECT_EQ(host::recordedQuestions(), (std::vector<std::string>{
                                           "Some depth ranges are missing. Do you want to derive this information "
                                           "from the first image?"}));
  EXPECT_EQ(outcomes[1].rows[1].result, RowResult::NoDepths);
  EXPECT_TRUE(shown("Core table not complete for one or more rectangles"));
  EXPECT_EQ(filesIn(out).size(), 4u);  // three rows and the table
}

TEST_F(SplitRun, MissingRectanglesAndDepthsDerivedFromTheFirstImage) {
  addTray(session, photo("T1.png"), 300, 200, 5, 1000.0f, 1.0f);
  CoreImage& bare = *session.newImage();
  bare.setSourceFile(photo("T2.png"));
  setInteger(bare.intSetting(kIntUV), 0);
  host::queueAnswer(true);
  EXPECT_EQ(processSession(session, options), 0);
  EXPECT_TRUE(asked(kAskDeriveDepthsAndRectangles));
  // The second tray follows the first: 1005 to 1010 in five rows of 1 m.
  EXPECT_EQ(CoreSession::rectangleCount(bare), 5);
  for (int k = 0; k < 5; ++k) {
    const std::string name =
        "T2_WL_0100" + std::to_string(5 + k) + "_00-010" + (k == 4 ? std::string("10") : "0" + std::to_string(6 + k)) + "_00.bmp";
    EXPECT_TRUE(fs::exists(outFile(name))) << name;
  }
}

TEST_F(SplitRun, DuplicateNamesAreReported) {
  const std::string t1 = photo("T1.png");
  addTray(session, t1, 300, 200, 1, 1000.0f, 1.0f);
  addTray(session, t1, 300, 200, 1, 1000.0f, 1.0f);
  processSession(session, options);
  EXPECT_TRUE(shown("T1.png (image 1) Core 1 and T1.png (image 2) Core 1 would both be written to " +
                    outFile("T1_WL_01000_00-01001_00.bmp")));
}

TEST_F(SplitRun, ProgressStartsWithProcessingImages) {
  addTray(session, photo("T1.png"), 300, 200, 1, 1000.0f, 1.0f);
  std::vector<std::string> seen;
  options.progress = [&](int, int, std::string_view text) { seen.emplace_back(text); };
  processSession(session, options);
  EXPECT_EQ(seen, (std::vector<std::string>{"Processing images...", "Processing image: T1: Core 1"}));
}

TEST_F(SplitRun, ReportThatCannotBeWrittenIsAFailure) {
  addTray(session, photo("T1.png"), 300, 200, 1, 1000.0f, 1.0f);
  image::testing::writeBytes(dir.file("blocker"), {0});
  options.reportFile = dir.file("blocker") + "/table.csv";
  EXPECT_EQ(processSession(session, options), 1);
  EXPECT_TRUE(shown(options.reportFile + ": the folder for the table of clipping depths cannot be made"));
  EXPECT_EQ(filesIn(out).size(), 1u);  // the row itself was written
}

TEST_F(SplitRun, ReportLeavesNoTemporaryFile) {
  addTray(session, photo("T1.png"), 300, 200, 2, 1000.0f, 1.0f);
  EXPECT_EQ(processSession(session, options), 0);
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{"T1_WL_01000_00-01001_00.bmp", "T1_WL_01001_00-01002_00.bmp",
                                                    "clipping_depths.csv"}));
}

TEST(DefaultReportFile, RootNameAndFolder) {
  SplitOptions o;
  o.naming.outputFolder = "/out";
  EXPECT_EQ(defaultReportFile(o, "/beside"), "/out/clipping_depths.csv");
  o.naming.rootName = "WELL7";
  EXPECT_EQ(defaultReportFile(o, "/beside"), "/out/clipping_depths.csv");
  o.naming.useRootName = true;
  EXPECT_EQ(defaultReportFile(o, "/beside"), "/out/WELL7.csv");
  o.naming.outputBesidePhoto = true;
  EXPECT_EQ(defaultReportFile(o, "/beside/"), "/beside/WELL7.csv");
}

TEST(ReportFileFor, BareNamesGoBesideTheRowsWithCsvAdded) {
  SplitOptions o;
  o.naming.outputFolder = "/out";
  EXPECT_EQ(reportFileFor(o, "/s"), "/out/clipping_depths.csv");
  o.reportFile = "depths";
  EXPECT_EQ(reportFileFor(o, "/s"), "/out/depths.csv");
  o.reportFile = "depths.txt  ";
  EXPECT_EQ(reportFileFor(o, "/s"), "/out/depths.txt");
  o.reportFile = "/tables/well7";
  EXPECT_EQ(reportFileFor(o, "/s"), "/tables/well7.csv");
  o.reportFile = "sub.d/well7";  // a dot in a folder is not a suffix
  EXPECT_EQ(reportFileFor(o, "/s"), "sub.d/well7.csv");
  o.reportFile = "depths";
  o.naming.outputBesidePhoto = true;
  EXPECT_EQ(reportFileFor(o, "/s"), "/s/depths.csv");
}

// --- The exported routines on the process-wide session --------------------------

class SplitExports : public SplitTest {
 protected:
  void TearDown() override {
    coreSession().close();
    SplitTest::TearDown();
  }
  static std::string field(const std::string& text, std::size_t width) {
    std::string f = text;
    f.resize(width, ' ');
    return f;
  }
};

TEST_F(SplitExports, ProcessRowIntoAnOpenReport) {
  const std::string t1 = dir.file("T1.png");
  makePhoto(t1, 300, 200);
  CoreImage& image = addTray(coreSession(), t1, 300, 200, 2, 1000.0f, 1.0f, 1);
  image.realSetting(rowBaseSetting(2)).V = kRealNull;

  const std::string folder = field(out, 260), root = field("", 40), report = field(outFile("table.csv"), 260),
                    unit = field("", 16);
  const int outputOption = 1, useRoot = 0, cgms = 1, precision = 2, shorten = 1, doReport = 1, style = 2;
  const float reduction = 1.0f;
  COR_SETSPLITOPTIONS(folder.c_str(), &outputOption, root.c_str(), &useRoot, &cgms, &precision, &shorten, &doReport,
                      report.c_str(), &style, unit.c_str(), &reduction);
  int status = -1;
  COR_REPORTOPEN(report.c_str(), &status);
  EXPECT_EQ(status, 0);
  auto* handle = reinterpret_cast<::CoreImage*>(&image);
  COR_PROCESSROW(&handle, &status);
  EXPECT_EQ(status, 100);  // one row without depths
  COR_REPORTCLOSE(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readLines(outFile("table.csv")),
            (std::vector<std::string>{" Table of clipping depths,",
                                      "Top Depth, Top Shift, Bottom Depth, Bottom Shift, Comments, Graphics File Name",
                                      "Source Image, " + t1,
                                      "  1000.000,   1001.000, " + outFile("T1_UV_01000_000-01001_000.cgm")}));
  COR_REPORTCLOSE(&status);
  EXPECT_EQ(status, 1);  // nothing open
}

TEST_F(SplitExports, WholeRunWithTheToolOptions) {
  const std::string t1 = dir.file("T1.png");
  makePhoto(t1, 300, 200);
  addTray(coreSession(), t1, 300, 200, 2, 1000.0f, 1.0f);
  const std::string folder = field(out, 260), blank40 = field("", 40), report = field(outFile("t.csv"), 260),
                    unit = field("", 16);
  const int outputOption = 1, useRoot = 0, cgms = 0, precision = 1, shorten = 1, doReport = 1, style = 1;
  COR_SETSPLITOPTIONS(folder.c_str(), &outputOption, blank40.c_str(), &useRoot, &cgms, &precision, &shorten,
                      &doReport, report.c_str(), &style, unit.c_str(), nullptr);
  int status = -1;
  COR_PROCESS(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(filesIn(out), (std::vector<std::string>{"T1_WL_01000_00-01001_00.bmp", "T1_WL_01001_00-01002_00.bmp",
                                                    "t.csv"}));
}

}  // namespace
}  // namespace subsurf::split::testing
