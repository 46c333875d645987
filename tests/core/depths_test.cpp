// Depths: the file-name grammar, the row count of an edited tray, and carrying
// depths forward over a run of trays. Expected values are worked out from the
// rules in 32-bit reals.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/core_session.h"
#include "host/dataset.h"
#include "host/messages.h"
#include "subsurf/core.h"
#include "subsurf/host_dataset.h"

namespace subsurf {
namespace {

// ---------------------------------------------------------------------------
// The file-name grammar.

struct NameCase {
  const char* name;
  float top;
  float base;
};

TEST(DepthGrammar, NamesOfTheDocumentedForms) {
  const NameCase cases[] = {
      {"TRAY_1234_5-1236_0.jpg", 1234.5f, 1236.0f},  // one decimal after "_", suffix after
      {"1234-1236", 1234.0f, 1236.0f},               // four digits, nothing else
      {"12345-12347", 12345.0f, 12347.0f},           // five digits
      {"1234_25-1236_05.jpg", 1234.25f, 1236.05f},   // two decimals
      {"C12345_5-12350_5.jpg", 12345.5f, 12350.5f},  // five digits with a decimal
      {"T1234.5-1236.5", 1234.5f, 1236.5f},          // "." as the decimal mark
      {"/data/well-7/box3-2/TRAY_1234_5-1236_0.jpg", 1234.5f, 1236.0f},  // hyphens in folders
      {"C:\\cores\\A1234_5-1236_05.bmp", 1234.5f, 1236.05f},
  };
  for (const NameCase& c : cases) {
    const ParsedDepths d = CoreSession::parseDepths(c.name);
    EXPECT_EQ(d.status, 0) << c.name;
    EXPECT_FLOAT_EQ(d.top, c.top) << c.name;
    EXPECT_FLOAT_EQ(d.base, c.base) << c.name;
  }
}

TEST(DepthGrammar, NoIntervalGivesStatusOne) {
  for (const char* name : {"TRAY_1234.jpg", "-1234_5.jpg", "", "-"}) {
    const ParsedDepths d = CoreSession::parseDepths(name);
    EXPECT_EQ(d.status, 1) << name;
    EXPECT_TRUE(isNull(d.top)) << name;
  }
}

TEST(DepthGrammar, UnreadableFieldsAddUpInTheStatus) {
  // Letters inside the digits: the top cannot be read (five and four digits both fail).
  EXPECT_EQ(CoreSession::parseDepths("12a4_5-1236_0").status, kDepthReadFailure);
  // Neither number readable.
  EXPECT_EQ(CoreSession::parseDepths("ab-cd").status, 2 * kDepthReadFailure);
  // Nothing after the hyphen.
  EXPECT_EQ(CoreSession::parseDepths("1234-").status, kDepthReadFailure);
  // A four-digit base directly followed by the suffix: the suffix's "." is
  // taken for a decimal mark and "jp" / "j" are no digits.
  EXPECT_EQ(CoreSession::parseDepths("TRAY_1234-1236.jpg").status, kDepthReadFailure);
  // A decimal digit that is a letter.
  EXPECT_EQ(CoreSession::parseDepths("1234_x-1236").status, kDepthReadFailure);
}

TEST(DepthGrammar, BlanksInsideAFieldCountForNothing) {
  const ParsedDepths inside = CoreSession::parseDepths("12 4_5-1236_0");
  EXPECT_EQ(inside.status, 0);
  EXPECT_FLOAT_EQ(inside.top, 124.5f);
  // A blank-padded name field: the blanks after the base read as nothing.
  std::string padded = "TRAY_1234_5-1236_0";
  padded.resize(260, ' ');
  const ParsedDepths d = CoreSession::parseDepths(padded);
  EXPECT_EQ(d.status, 0);
  EXPECT_FLOAT_EQ(d.base, 1236.0f);
}

TEST(DepthGrammar, ExportWritesTopBaseAndLengthOnlyOnSuccess) {
  int table = 0;
  DS_NEW("grammar         ", &table);
  ASSERT_NE(table, 0);
  const char part[] = "data            ";
  const int record = 3, other = 7;
  const float marker = 42.0f;
  int status = -1;
  DS_SETR(&table, part, &record, &other, &marker, &status);

  std::string name = "TRAY_1234_5-1236_0.jpg";
  name.resize(260, ' ');
  const int length = 260;
  COR_PARSEDEPTHS(name.c_str(), &table, &record, &status, &length);
  EXPECT_EQ(status, 0);
  float v = 0.0f;
  const int c4 = 4, c5 = 5, c30 = 30;
  DS_GETR(&table, part, &record, &c4, &v, &status);
  EXPECT_FLOAT_EQ(v, 1234.5f);
  DS_GETR(&table, part, &record, &c5, &v, &status);
  EXPECT_FLOAT_EQ(v, 1236.0f);
  DS_GETR(&table, part, &record, &c30, &v, &status);
  EXPECT_FLOAT_EQ(v, 1.5f);
  DS_GETR(&table, part, &record, &other, &v, &status);
  EXPECT_EQ(v, 42.0f);

  const int record2 = 4;
  const std::string bad = "12a4_5-1236_0";
  const int badLength = static_cast<int>(bad.size());
  COR_PARSEDEPTHS(bad.c_str(), &table, &record2, &status, &badLength);
  EXPECT_EQ(status, kDepthReadFailure);
  DS_GETR(&table, part, &record2, &c4, &v, &status);
  EXPECT_TRUE(isNull(v));
  DS_RELEASE(&table, &status);
}

// ---------------------------------------------------------------------------
// Sessions of trays for the rules below.

class TrayTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(s.init());
    host::clearRecorded();
    table = std::make_unique<Dataset>("cor_images");
    s.setRefreshHook([this](std::string_view w) { refreshed.emplace_back(w); });
  }
  void TearDown() override { host::clearRecorded(); }

  CoreImage* tray(int uv, const char* file = "") {
    CoreImage* img = s.newImage();
    img->intSetting(kIntUV).V = uv;
    img->setSourceFile(file);
    return img;
  }
  float cell(int record, int column) {
    float v = 0.0f;
    table->part("data").getReal(record, column, v);
    return v;
  }
  static float row(const CoreImage* img, int r, bool top) {
    return img->realValue(top ? rowTopSetting(r) : rowBaseSetting(r));
  }
  static void setTray(CoreImage* img, float top, float base, int cores, float coreLength) {
    img->realSetting(kRealTop).V = top;
    img->realSetting(kRealBase).V = base;
    img->intSetting(kIntCoreNumber).V = cores;
    img->realSetting(kRealCoreLength).V = coreLength;
  }

  CoreSession s;
  std::unique_ptr<Dataset> table;
  std::vector<std::string> refreshed;
};

// ---------------------------------------------------------------------------
// Row count of an edited tray.

TEST_F(TrayTest, EditedDepthsGiveTrayLengthAndRowCount) {
  CoreImage* img = tray(0);
  img->realSetting(kRealCoreLength).V = 1.0f;
  EXPECT_EQ(s.editTrayDepth(1, kColTop, 1000.0f, table.get()), 1);  // base still unset
  EXPECT_EQ(s.editTrayDepth(1, kColBase, 1005.0f, table.get()), 0);
  EXPECT_FLOAT_EQ(img->realValue(kRealTrayLength), 5.0f);
  EXPECT_EQ(img->intValue(kIntCoreNumber), 5);  // trunc(4.99 / 1) + 1
  EXPECT_EQ(cell(1, kColBase), 1005.0f);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(TrayTest, MoreThanTenRowsWarnsUnlessTheImageIsLongCore) {
  CoreImage* img = tray(0);
  setTray(img, 1000.0f, 1000.0f, 3, 0.4f);
  EXPECT_EQ(s.editTrayDepth(1, kColBase, 1005.0f, table.get()), 1);  // trunc(4.99 / 0.4) + 1 = 13
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{"Warning - more than 10 cores in tray!"});
  EXPECT_EQ(img->intValue(kIntCoreNumber), 3);
  EXPECT_FLOAT_EQ(cell(1, kColTrayLength), 5.0f);  // the image was written back to the table
  EXPECT_EQ(refreshed, std::vector<std::string>{"cor_split"});

  host::clearRecorded();
  img->intSetting(kIntReverse).V = 2;
  EXPECT_EQ(s.editTrayDepth(1, kColBase, 1005.0f, table.get()), 0);
  EXPECT_EQ(img->intValue(kIntCoreNumber), 13);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(TrayTest, TopBelowBaseIsAnError) {
  CoreImage* img = tray(0);
  setTray(img, 1005.0f, 1005.0f, 4, 1.0f);
  EXPECT_EQ(s.editTrayDepth(1, kColBase, 1000.0f, table.get()), 1);  // trunc(-5.01) + 1 = -4
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{"Error - Top depth >= Base Depth!"});
  EXPECT_EQ(img->intValue(kIntCoreNumber), 4);
}

TEST_F(TrayTest, RowCountBoundaries) {
  CoreImage* img = tray(0);
  // Equal top and base: trunc(-0.01 / 1) + 1 = 1 row, no error.
  setTray(img, 1000.0f, 1000.0f, 4, 1.0f);
  EXPECT_EQ(s.editTrayDepth(1, kColTop, 1000.0f, table.get()), 0);
  EXPECT_EQ(img->intValue(kIntCoreNumber), 1);
  // Exactly ten rows is no warning: trunc((10 - 0.01) / 1) + 1 = 10.
  EXPECT_EQ(s.editTrayDepth(1, kColBase, 1010.0f, table.get()), 0);
  EXPECT_EQ(img->intValue(kIntCoreNumber), 10);
  // A core length of 0.001 or less (or none) leaves the count alone.
  img->realSetting(kRealCoreLength).V = 0.001f;
  EXPECT_EQ(s.editTrayDepth(1, kColBase, 1003.0f, table.get()), 1);
  EXPECT_EQ(img->intValue(kIntCoreNumber), 10);
  EXPECT_FLOAT_EQ(img->realValue(kRealTrayLength), 3.0f);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(TrayTest, DialogDerivesTrayAndCoreLength) {
  CoreImage* img = tray(0);
  setTray(img, 1000.0f, kRealNull, 4, kRealNull);
  EXPECT_EQ(CoreSession::deriveTrayLengths(*img), 1);
  EXPECT_TRUE(isNull(img->realValue(kRealTrayLength)));
  img->realSetting(kRealBase).V = 1003.0f;
  EXPECT_EQ(CoreSession::deriveTrayLengths(*img), 0);
  EXPECT_EQ(img->realValue(kRealTrayLength), 3.0f);
  EXPECT_EQ(img->realValue(kRealCoreLength), 0.75f);
  EXPECT_EQ(img->realSetting(kRealCoreLength).SET, kScalarChanged);
  img->intSetting(kIntCoreNumber).V = kIntNull;  // no core number: the core length stays
  img->realSetting(kRealBase).V = 1004.0f;
  EXPECT_EQ(CoreSession::deriveTrayLengths(*img), 0);
  EXPECT_EQ(img->realValue(kRealTrayLength), 4.0f);
  EXPECT_EQ(img->realValue(kRealCoreLength), 0.75f);
}

// ---------------------------------------------------------------------------
// Carrying depths forward.

TEST_F(TrayTest, NoStartingImage) {
  tray(0);
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  s.selectImageByPlace(0);  // the root is not an image
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  EXPECT_EQ(host::recordedMessages(),
            (std::vector<std::string>{"Select a starting image!", "Select a starting image!"}));
}

TEST_F(TrayTest, FollowingTraysTakeTheNextSpans) {
  CoreImage* first = tray(0);
  CoreImage* second = tray(0);
  CoreImage* third = tray(0);
  setTray(first, 1000.0f, 1005.0f, 5, 1.0f);
  first->realSetting(kRealDepthShift).V = 0.5f;
  s.selectImageByPlace(1);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);

  // The starting tray had a core length, so the run starts after it.
  EXPECT_TRUE(isNull(row(first, 1, true)));
  EXPECT_EQ(second->realValue(kRealTop), 1005.0f);
  EXPECT_EQ(second->realValue(kRealBase), 1010.0f);
  EXPECT_EQ(third->realValue(kRealTop), 1010.0f);
  EXPECT_EQ(third->realValue(kRealBase), 1015.0f);
  EXPECT_EQ(third->realValue(kRealCoreLength), 1.0f);
  EXPECT_EQ(third->realValue(kRealTrayLength), 5.0f);
  EXPECT_EQ(third->realValue(kRealDepthShift), 0.5f);
  EXPECT_EQ(third->intValue(kIntCoreNumber), 5);
  EXPECT_EQ(third->trayLengthCopy.V, 5.0f);
  EXPECT_EQ(third->coreLengthCopy.V, 1.0f);
  EXPECT_EQ(third->realSetting(kRealTop).SET, kScalarChanged);
  for (int r = 1; r <= 5; ++r) {
    EXPECT_EQ(row(second, r, true), 1004.0f + r) << r;
    EXPECT_EQ(row(second, r, false), 1005.0f + r) << r;
  }
  EXPECT_TRUE(isNull(row(second, 6, true)));

  EXPECT_EQ(cell(3, kColTop), 1010.0f);
  EXPECT_EQ(cell(3, kColBase), 1015.0f);
  EXPECT_EQ(cell(3, kColCoreLength), 1.0f);
  EXPECT_EQ(cell(3, kColDepthShift), 0.5f);
  EXPECT_EQ(cell(3, kColCoreNumber), 5.0f);
  EXPECT_TRUE(isNull(cell(1, kColTop)));

  EXPECT_EQ(s.currentImage(), first);
  EXPECT_EQ(s.selectionDepth(), 0);
  EXPECT_TRUE(s.redrawRequested());
  EXPECT_EQ(refreshed, (std::vector<std::string>{"cor_split", "cor_split_1"}));
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(TrayTest, StartingTrayWithoutCoreLengthIsLaidOutToo) {
  CoreImage* first = tray(0);
  CoreImage* second = tray(0);
  setTray(first, 1000.0f, 1005.0f, 5, kRealNull);
  s.selectImageByPlace(1);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(first->realValue(kRealTop), 1000.0f);
  EXPECT_EQ(row(first, 1, true), 1000.0f);
  EXPECT_EQ(row(first, 5, false), 1005.0f);
  EXPECT_EQ(second->realValue(kRealTop), 1005.0f);  // j counts only trays after the start
}

TEST_F(TrayTest, TraysOfTheOtherLightAreLeftAlone) {
  CoreImage* wl1 = tray(0);
  CoreImage* uv1 = tray(1);
  CoreImage* wl2 = tray(0);
  CoreImage* uv2 = tray(1);
  setTray(wl1, 1000.0f, 1005.0f, 5, 1.0f);
  s.selectImageByPlace(1);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(wl2->realValue(kRealTop), 1005.0f);  // the UV tray between does not advance the count
  EXPECT_TRUE(isNull(uv1->realValue(kRealTop)));
  EXPECT_TRUE(isNull(uv2->realValue(kRealTop)));
  EXPECT_TRUE(isNull(cell(2, kColTop)));

  // A UV start carries over the UV trays only.
  setTray(uv1, 2000.0f, 2004.0f, 4, 1.0f);
  s.selectImageByPlace(2);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(uv2->realValue(kRealTop), 2004.0f);
  EXPECT_EQ(wl2->realValue(kRealTop), 1005.0f);
}

TEST_F(TrayTest, UnsetCoreNumberAnsweredNoChangesNothing) {
  CoreImage* first = tray(0);
  CoreImage* second = tray(0);
  setTray(first, 1000.0f, 1005.0f, kIntNull, 1.0f);
  s.selectImageByPlace(1);
  host::queueAnswer(false);
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  EXPECT_EQ(host::recordedQuestions(), std::vector<std::string>{"#Cores not set, use 5?"});
  EXPECT_EQ(first->intValue(kIntCoreNumber), kIntNull);
  EXPECT_TRUE(isNull(second->realValue(kRealTop)));
  EXPECT_EQ(s.selectionDepth(), 0);
}

TEST_F(TrayTest, UnsetCoreNumberAnsweredYesUsesFiveFromTheStartingTray) {
  CoreImage* first = tray(0);
  CoreImage* second = tray(0);
  setTray(first, 1000.0f, 1005.0f, 0, 2.5f);
  s.selectImageByPlace(1);
  host::queueAnswer(true);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(host::recordedQuestions(), std::vector<std::string>{"#Cores not set, use 5?"});
  EXPECT_EQ(first->intValue(kIntCoreNumber), 5);
  EXPECT_EQ(cell(1, kColCoreNumber), 5.0f);
  EXPECT_EQ(first->realValue(kRealCoreLength), 1.0f);  // 5 m over 5 cores
  EXPECT_EQ(row(first, 2, true), 1001.0f);
  EXPECT_EQ(second->realValue(kRealBase), 1010.0f);
}

TEST_F(TrayTest, TwelveCoresFillTheSettingsAfterRowTen) {
  CoreImage* first = tray(0);
  CoreImage* second = tray(0);
  setTray(first, 1000.0f, 1012.0f, 12, 1.0f);
  first->realSetting(kRealDepthShift).V = 0.5f;
  s.selectImageByPlace(1);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  // trunc(11.99 / 1) + 1 = 12 -> 11 -> 12 (the number of cores).
  EXPECT_EQ(second->intValue(kIntCoreNumber), 12);
  EXPECT_EQ(row(second, 10, true), 1021.0f);
  EXPECT_EQ(row(second, 10, false), 1022.0f);
  EXPECT_EQ(second->realValue(25), 1022.0f);  // row 11 top, over the depth shift
  EXPECT_EQ(second->realValue(26), 1023.0f);
  EXPECT_EQ(second->realValue(27), 1023.0f);  // row 12
  EXPECT_EQ(second->realValue(28), 1024.0f);
  EXPECT_TRUE(isNull(second->realValue(29)));
  EXPECT_EQ(cell(2, kColDepthShift), 0.5f);  // the table keeps the start's shift
}

TEST_F(TrayTest, LastRowIsClippedToTheTrayBase) {
  // 10.0 to 10.7 in two cores: in 32-bit reals the core length is 0.3499999
  // and the second row would end at 10.70000076, past the base 10.6999998.
  CoreImage* first = tray(0);
  setTray(first, 10.0f, 10.7f, 2, kRealNull);
  s.selectImageByPlace(1);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  const float coreLength = (10.7f - 10.0f) / 2.0f;
  EXPECT_EQ(first->intValue(kIntCoreNumber), 2);
  EXPECT_EQ(row(first, 1, false), 10.0f + coreLength);
  EXPECT_EQ(row(first, 2, true), 10.0f + coreLength);
  EXPECT_EQ(row(first, 2, false), 10.7f);
}

TEST_F(TrayTest, DepthsInFileNamesWinInTheTable) {
  CoreImage* first = tray(0, "/trays/TRAY_1000_0-1005_0.jpg");
  CoreImage* second = tray(0, "/trays/TRAY_2000_5-2005_5.jpg");
  CoreImage* third = tray(0, "/trays/TRAY_no_depths.jpg");
  setTray(first, 1000.0f, 1005.0f, 5, 1.0f);
  s.selectImageByPlace(1);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(second->realValue(kRealTop), 1005.0f);  // the image keeps the carried depths
  EXPECT_FLOAT_EQ(cell(2, kColTop), 2000.5f);
  EXPECT_FLOAT_EQ(cell(2, kColBase), 2005.5f);
  EXPECT_FLOAT_EQ(cell(2, kColLength), 5.0f);
  EXPECT_EQ(cell(3, kColTop), 1010.0f);  // no depths in the name: as carried
  EXPECT_EQ(third->realValue(kRealBase), 1015.0f);
}

TEST_F(TrayTest, StartWithoutDepthsDoesNothing) {
  CoreImage* first = tray(0);
  CoreImage* second = tray(0);
  setTray(first, 1000.0f, kRealNull, 5, 1.0f);
  s.selectImageByPlace(1);
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  EXPECT_TRUE(isNull(second->realValue(kRealTop)));
  EXPECT_FALSE(s.redrawRequested());
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(TrayTest, ExportRunsOnTheProcessSession) {
  int status = -1;
  COR_INIT(&status);
  CoreImage* a = nullptr;
  CoreImage* b = nullptr;
  COR_IMNEW(&a);
  COR_IMNEW(&b);
  CoreSession& cs = coreSession();
  setTray(cs.findImage(1), 100.0f, 103.0f, 3, 1.0f);
  const int place = 1;
  COR_IMSEQSET(&place, &status);
  int handle = 0;
  DS_NEW("setdepths       ", &handle);
  const int window = 0, event = 0;
  COR_SETDEPTHS(&window, &event, &handle);
  EXPECT_EQ(cs.findImage(2)->realValue(kRealBase), 106.0f);
  float v = 0.0f;
  const int record = 2, column = kColTop;
  DS_GETR(&handle, "data            ", &record, &column, &v, &status);
  EXPECT_EQ(v, 103.0f);
  DS_RELEASE(&handle, &status);
  COR_CLOSE(&status);
}

}  // namespace
}  // namespace subsurf
