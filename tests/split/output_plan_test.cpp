// Output names worked out before a run: rows that would share a file stop the
// run or are told apart; the manifest lists what was written, loadable by any
// CSV reader.
#include <gtest/gtest.h>

#include "core/output_plan.h"
#include "core/split_manifest.h"
#include "split/split_test_support.h"

namespace subsurf::split::testing {
namespace {

class OutputPlanTest : public SplitTest {
 protected:
  std::string photo(const std::string& name) {
    const std::string path = dir.file(name);
    makePhoto(path, 300, 200);
    return path;
  }
  std::vector<PhotoJob> jobs() {
    std::vector<PhotoJob> list;
    int place = 0;
    for (CoreImage* image : session.images()) list.push_back(makePhotoJob(*image, ++place, options));
    return list;
  }
  static std::vector<std::string> namesOf(const std::vector<PhotoOutcome>& outcomes) {
    std::vector<std::string> names;
    for (const auto& o : outcomes)
      for (const auto& r : o.rows) names.push_back(r.outputName.substr(fileNameStart(r.outputName)));
    return names;
  }
};

TEST_F(OutputPlanTest, PhotosSharingTheirStubCollideAndAreNamedBoth) {
  addTray(session, photo("RC671_0332.25-0337.19_m_Dry.png"), 300, 200, 2, 332.25f, 0.5f);
  addTray(session, photo("RC671_0332.25-0337.19_m_Wet.png"), 300, 200, 2, 332.25f, 0.5f);
  std::vector<PhotoJob> list = jobs();
  const OutputPlan plan = planOutputs(list, options, false);
  ASSERT_EQ(plan.collisions.size(), 2u);
  EXPECT_EQ(plan.collisions[0],
            "RC671_0332.25-0337.19_m_Dry.png Core 1 and RC671_0332.25-0337.19_m_Wet.png Core 1 would both be "
            "written to " + outFile("RC671_0332_WL_00332_25-00332_75.bmp"));
  EXPECT_TRUE(plan.renamed.empty());
  for (const PhotoJob& job : list)
    for (const RowJob& row : job.rows) EXPECT_TRUE(row.outputName.empty());  // left as they were
}

TEST_F(OutputPlanTest, UniqueNamesTakeWhatTellsThePhotosApart) {
  addTray(session, photo("RC671_0332.25-0337.19_m_Dry.png"), 300, 200, 2, 332.25f, 0.5f);
  addTray(session, photo("RC671_0332.25-0337.19_m_Wet.png"), 300, 200, 2, 332.25f, 0.5f);
  std::vector<PhotoJob> list = jobs();
  const OutputPlan plan = planOutputs(list, options, true);
  EXPECT_TRUE(plan.ok());
  ASSERT_EQ(plan.renamed.size(), 4u);
  EXPECT_EQ(plan.renamed[0], "RC671_0332.25-0337.19_m_Dry.png Core 1: " + outFile("RC671_0332_WL_00332_25-00332_75.bmp") +
                                 " is shared with another row; written as RC671_0332_WL_00332_25-00332_75_Dry.bmp");
  std::vector<PhotoOutcome> outcomes;
  for (const PhotoJob& job : list) outcomes.push_back(splitPhoto(job, options));
  EXPECT_EQ(namesOf(outcomes), (std::vector<std::string>{
                                   "RC671_0332_WL_00332_25-00332_75_Dry.bmp", "RC671_0332_WL_00332_75-00333_25_Dry.bmp",
                                   "RC671_0332_WL_00332_25-00332_75_Wet.bmp", "RC671_0332_WL_00332_75-00333_25_Wet.bmp"}));
  EXPECT_EQ(filesIn(out).size(), 4u);  // four distinct files, none overwritten
}

TEST_F(OutputPlanTest, RowsOfOnePhotoWithTheSameDepthsAreNumbered) {
  CoreImage& image = addTray(session, photo("T1.png"), 300, 200, 3, 1000.0f, 1.0f);
  setRowDepths(image, 3, 1000.0f, 1001.0f);  // the same as row 1
  std::vector<PhotoJob> list = jobs();
  OutputPlan plan = planOutputs(list, options, false);
  ASSERT_EQ(plan.collisions.size(), 1u);
  EXPECT_EQ(plan.collisions[0], "T1.png Core 1 and T1.png Core 3 would both be written to " +
                                    outFile("T1_WL_01000_00-01001_00.bmp"));
  plan = planOutputs(list, options, true);
  ASSERT_EQ(plan.renamed.size(), 1u);
  EXPECT_EQ(list[0].rows[0].outputName, "");  // the first keeps its name
  EXPECT_EQ(list[0].rows[2].outputName, outFile("T1_WL_01000_00-01001_00_2.bmp"));
}

TEST_F(OutputPlanTest, NamesDifferingOnlyInCaseCollide) {
  addTray(session, photo("tray.png"), 300, 200, 1, 1000.0f, 1.0f);
  addTray(session, photo("TRAY.png"), 300, 200, 1, 1000.0f, 1.0f);
  std::vector<PhotoJob> list = jobs();
  EXPECT_EQ(planOutputs(list, options, false).collisions.size(), 1u);
  planOutputs(list, options, true);
  EXPECT_EQ(list[0].rows[0].outputName, "");
  EXPECT_EQ(list[1].rows[0].outputName, outFile("TRAY_WL_01000_00-01001_00_2.bmp"));
}

TEST_F(OutputPlanTest, RowsWithoutDepthsHaveNoName) {
  CoreImage& a = addTray(session, photo("A.png"), 300, 200, 1, 1000.0f, 1.0f);
  CoreImage& b = addTray(session, photo("A.jpg"), 300, 200, 1, 1000.0f, 1.0f);
  setRowDepths(a, 1, kRealNull, kRealNull);
  setRowDepths(b, 1, kRealNull, kRealNull);
  std::vector<PhotoJob> list = jobs();
  EXPECT_TRUE(planOutputs(list, options, false).ok());
}

TEST_F(OutputPlanTest, CsvFieldsAreQuotedOnlyWhenTheyMustBe) {
  EXPECT_EQ(csvField("K-DD-51"), "K-DD-51");
  EXPECT_EQ(csvField("S_DD_203_BOX(11) 29,3 - 32,6.jpg"), "\"S_DD_203_BOX(11) 29,3 - 32,6.jpg\"");
  EXPECT_EQ(csvField("say \"m\""), "\"say \"\"m\"\"\"");
  EXPECT_EQ(csvField("two\nlines"), "\"two\nlines\"");
  EXPECT_EQ(csvField(" lead"), "\" lead\"");
  EXPECT_EQ(csvField(""), "");
}

TEST_F(OutputPlanTest, ManifestListsTheRowsWrittenRelativeToItsFolder) {
  addTray(session, photo("S_DD_203_BOX(11) 29,3 - 32,6.png"), 300, 200, 2, 29.3f, 1.65f);
  std::vector<PhotoJob> list = jobs();
  std::vector<PhotoOutcome> outcomes{splitPhoto(list[0], options)};
  ManifestOptions manifest;
  manifest.path = outFile("manifest.csv");
  manifest.unitOf = [](int) { return std::string("m"); };
  const std::vector<std::string> lines = manifestLines(list, outcomes, options, manifest);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "hole,photo,row,top,base,unit,light,file,width,height");
  EXPECT_EQ(lines[1],
            "S_DD_203,\"../S_DD_203_BOX(11) 29,3 - 32,6.png\",1,29.30,30.95,m,WL,"
            "\"S_DD_203_BOX(11) 29,3 - 32,6_WL_00029_30-00030_95.bmp\",300,100");
  EXPECT_EQ(lines[2].substr(0, lines[2].find(",m,")), "S_DD_203,\"../S_DD_203_BOX(11) 29,3 - 32,6.png\",2,30.95,32.60");

  // A hole given for the run wins; the file ends its lines with CR LF.
  manifest.hole = "BH 7, west";
  ASSERT_TRUE(writeManifest(manifest, manifestLines(list, outcomes, options, manifest)));
  const std::vector<std::string> written = readLines(manifest.path);
  ASSERT_EQ(written.size(), 3u);
  EXPECT_EQ(written[0], "hole,photo,row,top,base,unit,light,file,width,height\r");
  EXPECT_EQ(written[1].rfind("\"BH 7, west\",\"../S_DD_203", 0), 0u) << written[1];
  EXPECT_EQ(filesIn(out).size(), 3u);  // two rows and the manifest; no temporary file left
}

}  // namespace
}  // namespace subsurf::split::testing
