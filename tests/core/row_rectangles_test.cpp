// Row rectangles given as pixel boxes: parsing "x,y,w,h", reading box files
// other programs write, the checks before anything changes, and the row
// depths laid out again when the number of rows changes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/row_rectangles.h"
#include "host/messages.h"
#include "support/temp_dir.h"

namespace subsurf {
namespace {

using subsurf::testing::TempDir;

TEST(BoxText, ParsesFourNumbersRoundingFractions) {
  PixelBox b;
  std::string problem;
  ASSERT_TRUE(parseBox(" 10, 20 ,300,40", b, problem)) << problem;
  EXPECT_EQ(boxText(b), "10,20,300,40");
  ASSERT_TRUE(parseBox("10.4,20.5,299.6,-0.4", b, problem)) << problem;
  EXPECT_EQ(boxText(b), "10,21,300,0");
}

TEST(BoxText, RefusesWhatIsNotFourNumbers) {
  PixelBox b{1, 2, 3, 4};
  std::string problem;
  EXPECT_FALSE(parseBox("1,2,3", b, problem));
  EXPECT_EQ(problem, "\"1,2,3\" is not x,y,w,h (four numbers of pixels)");
  EXPECT_FALSE(parseBox("1,2,3,4,5", b, problem));
  EXPECT_FALSE(parseBox("1,2,x,4", b, problem));
  EXPECT_EQ(problem, "\"1,2,x,4\" is not x,y,w,h: \"x\" is not a number of pixels");
  EXPECT_FALSE(parseBox("1,,3,4", b, problem));
  EXPECT_EQ(problem, "\"1,,3,4\" is not x,y,w,h: \"\" is not a number of pixels");
  EXPECT_FALSE(parseBox("1,2,3,1e30", b, problem));  // no pixel count overflows an int
  EXPECT_FALSE(parseBox("1,2,3,nan", b, problem));
  EXPECT_EQ(boxText(b), "1,2,3,4");  // untouched on failure
}

class BoxFiles : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }
  std::vector<std::string> messages() const { return host::recordedMessages(); }
  TempDir dir;
};

TEST_F(BoxFiles, JsonArraysObjectsAndWrappedLists) {
  std::vector<PixelBox> boxes;
  ASSERT_TRUE(readBoxes(dir.write("a.json", "[[1,2,3,4], {\"x\":5,\"y\":6,\"width\":7,\"height\":8}, {\"x\":9,\"y\":10,\"w\":11,\"h\":12.6}]"), boxes));
  ASSERT_EQ(boxes.size(), 3u);
  EXPECT_EQ(boxText(boxes[0]), "1,2,3,4");
  EXPECT_EQ(boxText(boxes[1]), "5,6,7,8");
  EXPECT_EQ(boxText(boxes[2]), "9,10,11,13");
  ASSERT_TRUE(readBoxes(dir.write("b.JSON", "{\"rows\": [[0,0,10,10]]}"), boxes));
  ASSERT_EQ(boxes.size(), 1u);
  ASSERT_TRUE(readBoxes(dir.write("c.json", "{\"rectangles\": [[0,0,10,10],[0,10,10,10]]}"), boxes));
  EXPECT_EQ(boxes.size(), 2u);
}

TEST_F(BoxFiles, BadJsonNamesTheFileAndTheBox) {
  std::vector<PixelBox> boxes{{1, 1, 1, 1}};
  const std::string bad = dir.write("bad.json", "[[1,2,3,4], [1,2,\"3\",4]]");
  EXPECT_FALSE(readBoxes(bad, boxes));
  const std::string broken = dir.write("broken.json", "[[1,2,3,4]");
  EXPECT_FALSE(readBoxes(broken, boxes));
  const std::string scalar = dir.write("scalar.json", "42");
  EXPECT_FALSE(readBoxes(scalar, boxes));
  const std::string empty = dir.write("empty.json", "[]");
  EXPECT_FALSE(readBoxes(empty, boxes));
  ASSERT_EQ(messages().size(), 4u);
  EXPECT_EQ(messages()[0], bad + ": box 2 is not [x, y, w, h] or {\"x\", \"y\", \"width\", \"height\"}: [1,2,\"3\",4]");
  EXPECT_EQ(messages()[1], broken + ": not a JSON document");
  EXPECT_EQ(messages()[2], scalar + ": expected a list of boxes [x, y, w, h] or {\"x\", \"y\", \"width\", \"height\"}");
  EXPECT_EQ(messages()[3], empty + ": holds no boxes");
  ASSERT_EQ(boxes.size(), 1u);  // untouched
}

TEST_F(BoxFiles, CsvSkipsNamesCommentsBlankLinesAndByteOrderMark) {
  std::vector<PixelBox> boxes;
  ASSERT_TRUE(readBoxes(dir.write("a.csv", "\xEF\xBB\xBFx,y,width,height\r\n# from the detector\n\n1,2,3,4\r\n 5, 6, 7, 8\n"),
                        boxes));
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxText(boxes[1]), "5,6,7,8");
}

TEST_F(BoxFiles, BadCsvNamesFileAndLine) {
  std::vector<PixelBox> boxes;
  const std::string few = dir.write("few.csv", "1,2,3,4\n\n5,6,7\n");
  EXPECT_FALSE(readBoxes(few, boxes));
  const std::string word = dir.write("word.csv", "1,2,3,4\nx,y,w,h\n");
  EXPECT_FALSE(readBoxes(word, boxes));
  const std::string other = dir.write("boxes.txt", "1,2,3,4\n");
  EXPECT_FALSE(readBoxes(other, boxes));
  EXPECT_FALSE(readBoxes(dir.file("absent.csv"), boxes));
  ASSERT_EQ(messages().size(), 4u);
  EXPECT_EQ(messages()[0], few + ", line 3: expected x,y,w,h, found 3 fields: 5,6,7");
  EXPECT_EQ(messages()[1], word + ", line 2: \"x\" is not a number of pixels");
  EXPECT_EQ(messages()[2], other + ": boxes are read from a .json or a .csv file");
  EXPECT_EQ(messages()[3], dir.file("absent.csv") + ": cannot be opened");
  EXPECT_TRUE(boxes.empty());
}

class SettingRows : public ::testing::Test {
 protected:
  void SetUp() override {
    host::clearRecorded();
    image = session.newImage();
    session.makeBands(*image, 5, 400, 300);
    setInteger(image->intSetting(kIntCoreNumber), 5);
  }
  void trayDepths(float top, float base) {
    setDepth(image->realSetting(kRealTop), top, "m");
    setDepth(image->realSetting(kRealBase), base, "m");
  }
  static std::vector<std::string> corners(const CoreRectangle& r) {
    std::vector<std::string> out;
    for (int i = 0; i < r.polygon.n; ++i) out.push_back(std::to_string(r.polygon.px[i]) + "," + std::to_string(r.polygon.py[i]));
    return out;
  }
  CoreSession session;
  CoreImage* image = nullptr;
};

TEST_F(SettingRows, BoxesBecomeClockwiseOutlinesAndTheCoreNumber) {
  RowRectangles rows(session);
  ASSERT_TRUE(rows.set(*image, {{10, 20, 100, 30}, {10, 60, 100, 30}}, 800, 600));
  ASSERT_EQ(CoreSession::rectangleCount(*image), 2);
  const std::vector<std::string> expected = {"10,20", "110,20", "110,50", "10,50"};
  EXPECT_EQ(corners(*session.rectangleAt(*image, 1)), expected);
  EXPECT_EQ(session.rectangleAt(*image, 1)->id, 1);
  EXPECT_EQ(session.rectangleAt(*image, 2)->id, 2);
  EXPECT_EQ(image->intValue(kIntCoreNumber), 2);
  EXPECT_EQ(image->intValue(kIntPixelWidth), 800);
  EXPECT_EQ(image->intValue(kIntPixelHeight), 600);
  EXPECT_FALSE(rows.relaidRows());  // no depths to lay out
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(SettingRows, RefusedBoxesChangeNothing) {
  RowRectangles rows(session);
  const struct {
    std::vector<PixelBox> boxes;
    std::string message;
  } cases[] = {
      {{}, "No rectangles given"},
      {{{0, 0, 10, 10}, {5, 5, 0, 10}}, "Rectangle 2 (5,5,0,10) has no width"},
      {{{5, 5, 10, -1}}, "Rectangle 1 (5,5,10,-1) has no height"},
      {{{-1, 0, 10, 10}}, "Rectangle 1 (-1,0,10,10) lies outside the photo (400 x 300 pixels)"},
      {{{0, -1, 10, 10}}, "Rectangle 1 (0,-1,10,10) lies outside the photo (400 x 300 pixels)"},
      {{{391, 0, 10, 10}}, "Rectangle 1 (391,0,10,10) lies outside the photo (400 x 300 pixels)"},
      {{{0, 291, 10, 10}}, "Rectangle 1 (0,291,10,10) lies outside the photo (400 x 300 pixels)"},
      {{{2147483000, 0, 2000, 10}}, "Rectangle 1 (2147483000,0,2000,10) lies outside the photo (400 x 300 pixels)"},
      {std::vector<PixelBox>(100, PixelBox{0, 0, 1, 1}), "A photo holds at most 99 rectangles (100 given)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    host::clearRecorded();
    EXPECT_FALSE(rows.set(*image, c.boxes, 400, 300));
    EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{c.message});
    EXPECT_EQ(CoreSession::rectangleCount(*image), 5);
    EXPECT_EQ(image->intValue(kIntCoreNumber), 5);
  }
  // Boxes reaching the photo's last column and row are on it.
  EXPECT_TRUE(rows.set(*image, {{390, 290, 10, 10}}, 400, 300));
  EXPECT_FALSE(rows.set(*image, {{0, 0, 10, 10}}, 0, 300));
  EXPECT_EQ(host::recordedMessages().back(), "The photo's size is not known");
}

TEST_F(SettingRows, MoreThanTenRowsWarnsUnlessLongCore) {
  RowRectangles rows(session);
  std::vector<PixelBox> eleven;
  for (int k = 0; k < 11; ++k) eleven.push_back({0, 20 * k, 400, 20});
  EXPECT_TRUE(rows.set(*image, eleven, 400, 300));
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{"Warning - more than 10 cores in tray!"});
  EXPECT_EQ(image->intValue(kIntCoreNumber), 11);
  host::clearRecorded();
  setInteger(image->intSetting(kIntReverse), 2);
  eleven.push_back({0, 220, 400, 20});
  EXPECT_TRUE(rows.set(*image, eleven, 400, 300));
  EXPECT_TRUE(host::recordedMessages().empty());
  EXPECT_EQ(image->intValue(kIntCoreNumber), 12);
}

TEST_F(SettingRows, ChangedRowCountLaysTheTrayOutAgain) {
  trayDepths(1000.0f, 1005.0f);
  for (int row = 1; row <= 5; ++row) {  // five 1 m rows, as carried forward
    setDepth(image->realSetting(rowTopSetting(row)), 999.0f + row, "m");
    setDepth(image->realSetting(rowBaseSetting(row)), 1000.0f + row, "m");
  }
  RowRectangles rows(session);
  ASSERT_TRUE(rows.set(*image, {{0, 0, 400, 100}, {0, 100, 400, 100}, {0, 200, 400, 100}, {0, 250, 400, 50}}, 400, 300));
  EXPECT_TRUE(rows.relaidRows());
  EXPECT_FLOAT_EQ(image->realValue(kRealCoreLength), 1.25f);
  EXPECT_FLOAT_EQ(image->realValue(kRealTrayLength), 5.0f);
  const std::vector<RowDepths> d = session.rowDepths(*image);
  ASSERT_EQ(d.size(), 4u);
  EXPECT_FLOAT_EQ(d[0].top, 1000.0f);
  EXPECT_FLOAT_EQ(d[1].top, 1001.25f);
  EXPECT_FLOAT_EQ(d[3].top, 1003.75f);
  EXPECT_FLOAT_EQ(d[3].base, 1005.0f);
  // Row 5 no longer exists: its depths are not left standing.
  EXPECT_TRUE(isNull(CoreSession::rowDepth(*image, 5).top));
  EXPECT_TRUE(isNull(CoreSession::rowDepth(*image, 5).base));

  // The same number of rows keeps the depths the rows have.
  setDepth(image->realSetting(rowTopSetting(1)), 1000.1f, "m");
  ASSERT_TRUE(rows.set(*image, {{0, 0, 40, 10}, {0, 10, 40, 10}, {0, 20, 40, 10}, {0, 30, 40, 10}}, 400, 300));
  EXPECT_FALSE(rows.relaidRows());
  EXPECT_FLOAT_EQ(CoreSession::rowDepth(*image, 1).top, 1000.1f);
}

TEST(LayOutTrayRows, NeedsTopAboveBaseAndACoreNumber) {
  CoreSession session;
  CoreImage* image = session.newImage();
  EXPECT_EQ(layOutTrayRows(*image), 1);
  setDepth(image->realSetting(kRealTop), 1005.0f, "m");
  setDepth(image->realSetting(kRealBase), 1000.0f, "m");
  setInteger(image->intSetting(kIntCoreNumber), 2);
  EXPECT_EQ(layOutTrayRows(*image), 1);
  EXPECT_TRUE(isNull(CoreSession::rowDepth(*image, 1).top));
  setDepth(image->realSetting(kRealBase), 1006.0f, "m");
  EXPECT_EQ(layOutTrayRows(*image), 0);
  EXPECT_FLOAT_EQ(CoreSession::rowDepth(*image, 2).top, 1005.5f);
  EXPECT_FLOAT_EQ(CoreSession::rowDepth(*image, 2).base, 1006.0f);
}

}  // namespace
}  // namespace subsurf
