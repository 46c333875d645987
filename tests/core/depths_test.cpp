// Depths: the file-name grammar, the row count of an edited tray, and carrying
// depths forward over a run of trays. Expected values are worked out from the
// rules in 32-bit reals.
#include <gtest/gtest.h>

#include <cmath>
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

// Status 0 with the depths read; 1 when the name holds no interval; one
// kDepthReadFailure for each field that cannot be read.
struct NameCase {
  std::string name;
  int status;
  float top = 0;
  float base = 0;
};

TEST(DepthGrammar, NamesGiveTopBaseAndStatus) {
  std::string padded = "TRAY_1234_5-1236_0";  // a blank-padded name field
  padded.resize(260, ' ');
  const NameCase cases[] = {
      {"TRAY_1234_5-1236_0.jpg", 0, 1234.5f, 1236.0f},  // one decimal after "_", suffix after
      {"1234-1236", 0, 1234.0f, 1236.0f},               // four digits, nothing else
      {"12345-12347", 0, 12345.0f, 12347.0f},           // five digits
      {"1234_25-1236_05.jpg", 0, 1234.25f, 1236.05f},   // two decimals
      {"C12345_5-12350_5.jpg", 0, 12345.5f, 12350.5f},  // five digits with a decimal
      {"T1234.5-1236.5", 0, 1234.5f, 1236.5f},          // "." as the decimal mark
      {"/data/well-7/box3-2/TRAY_1234_5-1236_0.jpg", 0, 1234.5f, 1236.0f},  // hyphens in folders
      {"C:\\cores\\A1234_5-1236_05.bmp", 0, 1234.5f, 1236.05f},
      {"12 4_5-1236_0", 0, 124.5f, 1236.0f},  // blanks inside a field count for nothing
      {padded, 0, 1234.5f, 1236.0f},
      {"TRAY_1234.jpg", 1},  // no interval
      {"-1234_5.jpg", 1},
      {"", 1},
      {"-", 1},
      {"12a4_5-1236_0", kDepthReadFailure},  // letters: five and four digits both fail
      {"ab-cd", 2 * kDepthReadFailure},
      {"1234-", kDepthReadFailure},
      // A four-digit base followed by the suffix: its "." is taken for a
      // decimal mark and "jp" / "j" are no digits.
      {"TRAY_1234-1236.jpg", kDepthReadFailure},
      {"1234_x-1236", kDepthReadFailure},  // a decimal digit that is a letter
  };
  for (const NameCase& c : cases) {
    SCOPED_TRACE("\"" + c.name + "\"");
    const ParsedDepths d = CoreSession::parseDepths(c.name);
    EXPECT_EQ(d.status, c.status);
    if (c.status == 0) {
      EXPECT_FLOAT_EQ(d.top, c.top);
      EXPECT_FLOAT_EQ(d.base, c.base);
    }
    if (c.status == 1) {
      EXPECT_TRUE(isNull(d.top));
    }
  }
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
  // `count` white-light trays, the first set as given and selected.
  std::vector<CoreImage*> run(int count, float top, float base, int cores, float coreLength) {
    std::vector<CoreImage*> t;
    for (int k = 0; k < count; ++k) t.push_back(tray(0));
    setTray(t[0], top, base, cores, coreLength);
    s.selectImageByPlace(1);
    return t;
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

// Editing one depth of a tray: the status, the row count left on the image,
// the tray length and the message. A reverse of 2 marks a long core.
struct EditCase {
  const char* what;
  float top, base, coreLength;
  int cores, reverse, column;
  float value;
  int status, coresAfter;
  float trayLength;  // NaN: not looked at
  const char* message;
  bool writtenBack = false;  // to the table, with a refresh of the split window
};

TEST_F(TrayTest, RowCountOfAnEditedTray) {
  const EditCase cases[] = {
      {"13 rows warn", 1000, 1000, 0.4f, 3, 0, kColBase, 1005, 1, 3, 5, "Warning - more than 10 cores in tray!", true},
      {"13 rows of long core", 1000, 1000, 0.4f, 3, 2, kColBase, 1005, 0, 13, 5, nullptr},
      {"top below base", 1005, 1005, 1, 4, 0, kColBase, 1000, 1, 4, NAN, "Error - Top depth >= Base Depth!"},
      {"top equals base: 1 row", 1000, 1000, 1, 4, 0, kColTop, 1000, 0, 1, NAN, nullptr},
      {"exactly 10 rows", 1000, 1000, 1, 4, 0, kColBase, 1010, 0, 10, 10, nullptr},
      {"core length 0.001", 1000, 1010, 0.001f, 10, 0, kColBase, 1003, 1, 10, 3, nullptr},
  };
  for (const EditCase& c : cases) {
    SCOPED_TRACE(c.what);
    host::clearRecorded();
    refreshed.clear();
    s.close();
    table = std::make_unique<Dataset>("cor_images");
    CoreImage* img = tray(0);
    setTray(img, c.top, c.base, c.cores, c.coreLength);
    if (c.reverse) img->intSetting(kIntReverse).V = c.reverse;
    EXPECT_EQ(s.editTrayDepth(1, c.column, c.value, table.get()), c.status);
    EXPECT_EQ(img->intValue(kIntCoreNumber), c.coresAfter);
    if (!std::isnan(c.trayLength)) {
      EXPECT_FLOAT_EQ(img->realValue(kRealTrayLength), c.trayLength);
    }
    EXPECT_EQ(host::recordedMessages(), c.message ? std::vector<std::string>{c.message} : std::vector<std::string>{});
    if (c.writtenBack) {
      EXPECT_FLOAT_EQ(cell(1, kColTrayLength), c.trayLength);
      EXPECT_EQ(refreshed, std::vector<std::string>{"cor_split"});
    }
  }
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

TEST_F(TrayTest, RunsThatDoNotStart) {
  tray(0);
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  s.selectImageByPlace(0);  // the root is not an image
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  EXPECT_EQ(host::recordedMessages(),
            (std::vector<std::string>{"Select a starting image!", "Select a starting image!"}));

  // A start without a base: nothing done, nothing said.
  host::clearRecorded();
  const auto t = run(2, 1000.0f, kRealNull, 5, 1.0f);
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  EXPECT_TRUE(isNull(t[1]->realValue(kRealTop)));
  EXPECT_FALSE(s.redrawRequested());
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(TrayTest, FollowingTraysTakeTheNextSpans) {
  const auto t = run(3, 1000.0f, 1005.0f, 5, 1.0f);
  CoreImage *first = t[0], *second = t[1], *third = t[2];
  first->realSetting(kRealDepthShift).V = 0.5f;
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
  const auto t = run(2, 1000.0f, 1005.0f, 5, kRealNull);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(t[0]->realValue(kRealTop), 1000.0f);
  EXPECT_EQ(row(t[0], 1, true), 1000.0f);
  EXPECT_EQ(row(t[0], 5, false), 1005.0f);
  EXPECT_EQ(t[1]->realValue(kRealTop), 1005.0f);  // j counts only trays after the start
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

TEST_F(TrayTest, UnsetCoreNumberIsAskedForNoChangesNothingYesUsesFive) {
  const auto t = run(2, 1000.0f, 1005.0f, kIntNull, 2.5f);
  host::queueAnswer(false);
  EXPECT_EQ(s.carryDepthsForward(table.get()), 1);
  EXPECT_EQ(host::recordedQuestions(), std::vector<std::string>{"#Cores not set, use 5?"});
  EXPECT_EQ(t[0]->intValue(kIntCoreNumber), kIntNull);
  EXPECT_TRUE(isNull(t[1]->realValue(kRealTop)));
  EXPECT_EQ(s.selectionDepth(), 0);

  host::clearRecorded();
  t[0]->intSetting(kIntCoreNumber).V = 0;  // zero counts as unset too
  host::queueAnswer(true);
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  EXPECT_EQ(host::recordedQuestions(), std::vector<std::string>{"#Cores not set, use 5?"});
  EXPECT_EQ(t[0]->intValue(kIntCoreNumber), 5);
  EXPECT_EQ(cell(1, kColCoreNumber), 5.0f);
  EXPECT_EQ(t[0]->realValue(kRealCoreLength), 1.0f);  // 5 m over 5 cores
  EXPECT_EQ(row(t[0], 2, true), 1001.0f);
  EXPECT_EQ(t[1]->realValue(kRealBase), 1010.0f);
}

TEST_F(TrayTest, TwelveCoresFillTheSettingsAfterRowTen) {
  const auto t = run(2, 1000.0f, 1012.0f, 12, 1.0f);
  t[0]->realSetting(kRealDepthShift).V = 0.5f;
  ASSERT_EQ(s.carryDepthsForward(table.get()), 0);
  CoreImage* second = t[1];
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
  CoreImage* first = run(1, 10.0f, 10.7f, 2, kRealNull)[0];
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
