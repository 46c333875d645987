// The core session's lists: ids, places, deletion, reordering, the working
// list, the selection stack, vertices, task flags, image defaults, bands and
// templates, through the engine and through the C interface.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/core_session.h"
#include "host/fixed_text.h"
#include "subsurf/core.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

class SessionTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(s.init()); }

  std::vector<int> ids() {
    std::vector<int> out;
    for (CoreImage* p : s.images()) out.push_back(p->id);
    return out;
  }
  static std::vector<int> rectangleIds(CoreImage& image) {
    std::vector<int> out;
    for (CoreRectangle* r : CoreSession::rectangles(image)) out.push_back(r->id);
    return out;
  }

  CoreSession s;
};

// ---------------------------------------------------------------------------
// Images: ids and places.

TEST_F(SessionTest, ImageIdsGrowAndTheLargestIsGivenAgainAfterItsDeletion) {
  s.newImage();
  s.newImage();
  s.newImage();
  EXPECT_EQ(s.deleteImageById(2), 0);
  s.newImage();
  EXPECT_EQ(ids(), (std::vector<int>{1, 3, 4}));
  EXPECT_EQ(s.deleteImageById(4), 0);
  EXPECT_EQ(s.newImage()->id, 4);
}

TEST_F(SessionTest, PlacesCountFromTheRootAndLookupsThatMissLeaveTheCurrentImage) {
  EXPECT_EQ(s.imageCount(), 0);
  EXPECT_EQ(s.selectImageByPlace(0), 0);
  EXPECT_EQ(s.currentImage(), s.root());
  EXPECT_EQ(s.currentImage()->id, 0);
  int index = -5;
  EXPECT_EQ(s.currentImageIndex(index), 0);
  EXPECT_EQ(index, 0);

  s.newImage();
  CoreImage* second = s.newImage();
  s.newImage();
  ASSERT_EQ(s.selectImageByPlace(2), 0);
  EXPECT_EQ(s.selectImageByPlace(4), 1);
  EXPECT_EQ(s.selectImageByPlace(-1), 1);
  EXPECT_EQ(s.selectImageById(7), 1);
  EXPECT_EQ(s.deleteImageById(7), 1);
  EXPECT_EQ(s.deleteImageByPlace(4), 1);
  EXPECT_EQ(s.currentImage(), second);
  EXPECT_EQ(s.imageCount(), 3);

  s.selectImageById(3);
  EXPECT_EQ(s.currentImageIndex(index), 0);
  EXPECT_EQ(index, 3);
  s.setCurrent(nullptr);
  EXPECT_EQ(s.currentImageIndex(index), 1);
}

// ---------------------------------------------------------------------------
// Images: deletion.

TEST_F(SessionTest, DeletionMakesTheSuccessorCurrentElseThePredecessorElseNone) {
  CoreImage* a = s.newImage();
  s.newImage();
  CoreImage* c = s.newImage();
  EXPECT_EQ(s.deleteImageById(2), 0);
  EXPECT_EQ(s.currentImage(), c);  // successor
  EXPECT_EQ(s.deleteImageById(3), 0);
  EXPECT_EQ(s.currentImage(), a);  // last image gone: predecessor
  EXPECT_EQ(s.deleteImageById(1), 0);
  EXPECT_EQ(s.currentImage(), nullptr);  // the root never becomes current this way
  EXPECT_EQ(s.imageCount(), 0);
}

TEST_F(SessionTest, DeletingByPlaceTakesTheRectanglesAndSelectsTheNextImagesFirstRectangle) {
  CoreImage* a = s.newImage();
  CoreImage* b = s.newImage();
  for (int i = 0; i < 4; ++i) s.newRectangle(*a);
  CoreRectangle* firstOfB = s.newRectangle(*b);
  s.newRectangle(*b);
  EXPECT_EQ(s.deleteImageByPlace(1), 0);
  EXPECT_EQ(s.imageCount(), 1);
  EXPECT_EQ(s.currentImage(), b);
  EXPECT_EQ(s.currentRectangle(), firstOfB);
}

TEST_F(SessionTest, DeletedRecordsCannotComeBackThroughTheSelectionStack) {
  CoreImage* a = s.newImage();
  CoreRectangle* r = s.newRectangle(*a);
  s.setCurrent(a, r);
  s.saveSelection();
  s.deleteImageById(1);
  s.restoreSelection();
  EXPECT_EQ(s.currentImage(), nullptr);
  EXPECT_EQ(s.currentRectangle(), nullptr);
}

TEST_F(SessionTest, ResettingALinkedImageKeepsItsPlaceAndDropsItsRectangles) {
  s.newImage();
  CoreImage* b = s.newImage();
  s.newImage();
  b->intSetting(kIntUV).V = 1;
  CoreRectangle* r = s.newRectangle(*b);
  s.setCurrent(b, r);
  s.initImage(*b);
  EXPECT_EQ(ids(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(b->intValue(kIntUV), kIntNull);
  EXPECT_EQ(b->rectangles, nullptr);
  EXPECT_EQ(s.currentRectangle(), nullptr);
}

TEST_F(SessionTest, CloseDeletesEveryImageAndKeepsTheRoot) {
  for (int i = 0; i < 3; ++i) s.newRectangle(*s.newImage());
  s.close();
  EXPECT_EQ(s.imageCount(), 0);
  EXPECT_EQ(s.selectImageByPlace(0), 0);
  EXPECT_EQ(s.newImage()->id, 1);
}

// ---------------------------------------------------------------------------
// Images: reordering.

TEST_F(SessionTest, OrderPutsTheNamedImagesFirstSkipsUnknownIdsAndRestoresTheSelection) {
  for (int i = 0; i < 4; ++i) s.newImage();
  const int one[] = {3};
  EXPECT_EQ(s.orderImages(one, 1), 0);  // fewer than two ids: nothing changes
  EXPECT_EQ(ids(), (std::vector<int>{1, 2, 3, 4}));
  const int two[] = {3, 1};
  EXPECT_EQ(s.orderImages(two, 2), 0);
  EXPECT_EQ(ids(), (std::vector<int>{3, 1, 2, 4}));

  s.selectImageById(2);
  const int withUnknown[] = {4, 9, 2};
  EXPECT_EQ(s.orderImages(withUnknown, 3), 1);
  EXPECT_EQ(ids(), (std::vector<int>{4, 2, 3, 1}));
  EXPECT_EQ(s.currentImage()->id, 2);
  EXPECT_EQ(s.selectionDepth(), 0);
}

// ---------------------------------------------------------------------------
// Rectangles.

TEST_F(SessionTest, RectangleIdsStartAtOneAndFollowTheLargest) {
  CoreImage* img = s.newImage();
  EXPECT_EQ(s.newRectangle(*img)->id, 1);
  EXPECT_EQ(s.newRectangle(*img)->id, 2);
  EXPECT_EQ(s.newRectangle(*img)->id, 3);
  s.deleteRectangleById(*img, 3);
  EXPECT_EQ(s.newRectangle(*img)->id, 3);
  s.deleteRectangleById(*img, 1);
  EXPECT_EQ(s.newRectangle(*img)->id, 4);
  EXPECT_EQ(rectangleIds(*img), (std::vector<int>{2, 3, 4}));
}

TEST_F(SessionTest, RectangleByPlaceRefusesEmptyAndBrokenListsAndStopsAtTheLast) {
  CoreImage* img = s.newImage();
  EXPECT_EQ(s.selectRectangleByPlace(*img, 1), 1);
  EXPECT_EQ(s.currentRectangle(), nullptr);

  CoreRectangle* first = s.newRectangle(*img);
  s.newRectangle(*img);
  CoreRectangle* last = s.newRectangle(*img);
  EXPECT_EQ(s.selectRectangleByPlace(*img, 2), 0);
  EXPECT_EQ(s.currentRectangle()->id, 2);
  EXPECT_EQ(s.selectRectangleByPlace(*img, 7), 1);
  EXPECT_EQ(s.currentRectangle(), last);

  first->id = 101;  // an id no list hands out: the list is not to be trusted
  s.setCurrent(img, nullptr);
  EXPECT_EQ(s.selectRectangleByPlace(*img, 1), 1);
  EXPECT_EQ(s.currentRectangle(), nullptr);
}

TEST_F(SessionTest, RectangleDeletionMovesTheCurrentRectangle) {
  CoreImage* img = s.newImage();
  CoreRectangle* r1 = s.newRectangle(*img);
  s.newRectangle(*img);
  CoreRectangle* r3 = s.newRectangle(*img);
  EXPECT_EQ(s.deleteRectangleById(*img, 2), 0);
  EXPECT_EQ(s.currentRectangle(), r3);
  EXPECT_EQ(s.deleteRectangleById(*img, 3), 0);
  EXPECT_EQ(s.currentRectangle(), r1);
  EXPECT_EQ(s.deleteRectangleById(*img, 1), 0);
  EXPECT_EQ(s.currentRectangle(), nullptr);
  EXPECT_EQ(s.deleteRectangleById(*img, 1), 1);
  EXPECT_EQ(CoreSession::rectangleCount(*img), 0);
}

TEST_F(SessionTest, SelectedCountNeverCountsTheFinalWorkingRectangle) {
  CoreRectangle* a = s.newWorkingRectangle();
  CoreRectangle* b = s.newWorkingRectangle();
  CoreRectangle* c = s.newWorkingRectangle();
  c->status = 1;
  EXPECT_EQ(s.selectedWorkingCount(), 0);
  a->status = 1;
  b->status = 2;
  EXPECT_EQ(s.selectedWorkingCount(), 2);
  b->status = -1;
  EXPECT_EQ(s.selectedWorkingCount(), 1);
}

TEST_F(SessionTest, WorkingListDeletionByPlaceKeepsItsRoot) {
  s.newWorkingRectangle();
  CoreRectangle* b = s.newWorkingRectangle();
  s.newWorkingRectangle();
  EXPECT_EQ(s.deleteWorkingRectangle(0), 1);
  EXPECT_EQ(s.deleteWorkingRectangle(4), 1);
  EXPECT_EQ(s.deleteWorkingRectangle(1), 0);
  EXPECT_EQ(s.currentRectangle(), b);
  EXPECT_EQ(s.workingRoot()->next, b);
  EXPECT_EQ(s.deleteWorkingRectangle(2), 0);  // c, the last: its predecessor b
  EXPECT_EQ(s.currentRectangle(), b);
}

// ---------------------------------------------------------------------------
// Selection stack.

TEST_F(SessionTest, FourthSaveLosesTheDeepestSelection) {
  CoreImage* img[4];
  CoreRectangle* rect[4];
  for (int i = 0; i < 4; ++i) {
    img[i] = s.newImage();
    rect[i] = s.newRectangle(*img[i]);
    s.setCurrent(img[i], rect[i]);
    s.saveSelection();
  }
  EXPECT_EQ(s.selectionDepth(), 4);
  const CoreImage* expectedImage[4] = {img[3], img[2], img[1], img[1]};
  const CoreRectangle* expectedRect[4] = {rect[3], rect[2], rect[1], nullptr};
  for (int i = 0; i < 4; ++i) {
    s.restoreSelection();
    EXPECT_EQ(s.currentImage(), expectedImage[i]) << "restore " << i + 1;
    EXPECT_EQ(s.currentRectangle(), expectedRect[i]) << "restore " << i + 1;
  }
  EXPECT_EQ(s.selectionDepth(), 0);
}

TEST_F(SessionTest, SavingWithNothingCurrentKeepsTheSavedSelection) {
  CoreImage* a = s.newImage();
  s.setCurrent(a, nullptr);
  s.saveSelection();
  s.setCurrent(nullptr, nullptr);
  s.saveSelection();
  EXPECT_EQ(s.savedImage(1), a);
  EXPECT_EQ(s.savedImage(2), a);
  s.restoreSelection();
  EXPECT_EQ(s.currentImage(), a);
}

// ---------------------------------------------------------------------------
// Vertices and task flags.

TEST_F(SessionTest, AddVertexInsertsAfterKAndRecomputesWorldCoordinates) {
  CoreImage* img = s.newImage();
  img->views[0].xScale = 2.0f;
  img->views[0].yScale = 0.5f;
  s.setCurrent(img);
  CoreRectangle* r = s.newRectangle(*img);
  CoreSession::setVertexCount(*r, 4);
  r->polygon.px = {0, 10, 10, 0};
  r->polygon.py = {0, 0, 20, 20};
  s.addVertex(*r, 5, 30, 4);
  ASSERT_EQ(r->polygon.n, 5);
  EXPECT_EQ(r->polygon.px, (std::vector<int>{0, 10, 10, 0, 5}));
  EXPECT_EQ(r->polygon.py, (std::vector<int>{0, 0, 20, 20, 30}));
  EXPECT_EQ(r->polygon.wx, (std::vector<float>{0.0f, 20.0f, 20.0f, 0.0f, 10.0f}));
  EXPECT_EQ(r->polygon.wy, (std::vector<float>{0.0f, 0.0f, 10.0f, 10.0f, 15.0f}));
  EXPECT_EQ(r->polygon.wxSet, (std::vector<int>(5, 1)));

  s.addVertex(*r, 1, 1, 1);
  EXPECT_EQ(r->polygon.px, (std::vector<int>{0, 1, 10, 10, 0, 5}));
}

TEST_F(SessionTest, AddVertexNeedsTwoVerticesAndKWithinThem) {
  CoreImage* img = s.newImage();
  CoreRectangle* r = s.newRectangle(*img);
  CoreSession::setVertexCount(*r, 4);
  s.addVertex(*r, 5, 5, 0);
  s.addVertex(*r, 5, 5, 5);
  EXPECT_EQ(r->polygon.n, 4);
  CoreSession::setVertexCount(*r, 1);
  s.addVertex(*r, 5, 5, 1);
  EXPECT_EQ(r->polygon.n, 1);
}

TEST_F(SessionTest, TaskFlagsNeedACountOfOneOrMore) {
  const int flags[] = {7, 8, 9, 10, 11, 12};
  s.setTaskFlags(flags, 6);
  EXPECT_EQ(s.taskFlags(), (std::array<int, 5>{7, 8, 9, 10, 11}));
  s.setTaskFlags(flags, 0);
  EXPECT_EQ(s.taskFlags(), (std::array<int, 5>{7, 8, 9, 10, 11}));
  s.setTaskFlags(flags + 4, 2);
  EXPECT_EQ(s.taskFlags(), (std::array<int, 5>{11, 12, 0, 0, 0}));
}

// ---------------------------------------------------------------------------
// Image defaults.

TEST_F(SessionTest, NewImageSettingsAreNullLabelledAndInMetres) {
  CoreImage* img = s.newImage();
  const char* intLabels[] = {"UV", "Viewed", "Use", "Core Number", "Reverse",
                             "Override", "CGM", "Horizontal", "Pixel Width", "Pixel Height"};
  for (int k = 1; k <= kImageIntCount; ++k) {
    EXPECT_EQ(img->intValue(k), kIntNull) << k;
    EXPECT_EQ(fixedText(img->intSetting(k).LABEL), intLabels[k - 1]);
  }
  EXPECT_EQ(fixedText(img->realSetting(kRealTop).LABEL), "Top Depth");
  EXPECT_EQ(fixedText(img->realSetting(kRealTop).SHORT), "Top");
  EXPECT_EQ(fixedText(img->realSetting(kRealBase).LABEL), "Base Depth");
  EXPECT_EQ(fixedText(img->realSetting(kRealBase).SHORT), "Base");
  EXPECT_EQ(fixedText(img->realSetting(3).LABEL), "Core Length");
  EXPECT_EQ(fixedText(img->realSetting(4).LABEL), "Tray Length");
  EXPECT_EQ(fixedText(img->realSetting(rowTopSetting(1)).LABEL), "Row 1 Top");
  EXPECT_EQ(fixedText(img->realSetting(rowBaseSetting(10)).LABEL), "Row 10 Base");
  EXPECT_EQ(rowBaseSetting(10), 24);
  for (int k = 1; k <= kImageRealCount; ++k) {
    const DT_RSCA& r = img->realSetting(k);
    EXPECT_TRUE(isNull(r.V)) << k;
    EXPECT_EQ(fixedText(r.VU.CU), "m") << k;
    EXPECT_EQ(r.VU.ISER, unitsRegistry().findSeries("depth")) << k;
  }
  EXPECT_EQ(img->viewShown, -1);
  EXPECT_TRUE(isNull(img->angle));
  const ViewRecord& v = img->views[9];
  EXPECT_EQ(v.x1, -1);
  EXPECT_EQ(v.y2, -1);
  EXPECT_EQ(v.inUse, 0);
  EXPECT_TRUE(isNull(v.xScale));
  EXPECT_EQ(img->rectangles, nullptr);
}

TEST_F(SessionTest, RectanglePropertiesCarryTheirLabels) {
  CoreRectangle* r = s.newRectangle(*s.newImage());
  const char* labels[] = {"Status", "Components", "Type", "Area Sign (+ve/-ve)", "Colour", "Thickness"};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(fixedText(r->polygon.props[i].LABEL), labels[i]);
  EXPECT_EQ(r->status, 0);
  EXPECT_EQ(r->polygon.n, 0);
}

// ---------------------------------------------------------------------------
// Bands, templates and rows.

TEST_F(SessionTest, BandsTileThePhotoFromTheTop) {
  CoreImage* img = s.newImage();
  ASSERT_EQ(s.makeBands(*img, 3, 300, 100), 0);
  const std::vector<CoreRectangle*> rs = CoreSession::rectangles(*img);
  ASSERT_EQ(rs.size(), 3u);
  // 100 rows in three: 0..33, 33..66, 66..100.
  EXPECT_EQ(rs[0]->polygon.py, (std::vector<int>{0, 0, 33, 33}));
  EXPECT_EQ(rs[1]->polygon.py, (std::vector<int>{33, 33, 66, 66}));
  EXPECT_EQ(rs[2]->polygon.py, (std::vector<int>{66, 66, 100, 100}));
  EXPECT_EQ(rs[2]->polygon.px, (std::vector<int>{0, 300, 300, 0}));
  EXPECT_EQ(img->intValue(kIntPixelWidth), 300);
  EXPECT_EQ(s.makeBands(*img, 0, 300, 100), 1);
  EXPECT_EQ(CoreSession::rectangleCount(*img), 3);
}

TEST_F(SessionTest, TemplateRectanglesAreScaledToThePhoto) {
  CoreImage* drawn = s.newImage();
  CoreRectangle* r = s.newRectangle(*drawn);
  CoreSession::setVertexCount(*r, 4);
  r->polygon.px = {10, 90, 90, 10};
  r->polygon.py = {10, 10, 40, 40};
  RectangleTemplate t;
  CoreSession::templateFromImage(*drawn, t, 100, 50);

  CoreImage* target = s.newImage();
  s.newRectangle(*target);
  s.newRectangle(*target);
  s.applyTemplate(*target, t, 200, 100);
  const std::vector<CoreRectangle*> rs = CoreSession::rectangles(*target);
  ASSERT_EQ(rs.size(), 1u);
  EXPECT_EQ(rs[0]->id, 1);
  EXPECT_EQ(rs[0]->polygon.px, (std::vector<int>{20, 180, 180, 20}));
  EXPECT_EQ(rs[0]->polygon.py, (std::vector<int>{20, 20, 80, 80}));
}

TEST_F(SessionTest, RowDepthsFollowTheRectanglesInListOrder) {
  CoreImage* img = s.newImage();
  s.makeBands(*img, 2, 10, 10);
  img->realSetting(rowTopSetting(1)).V = 100.0f;
  img->realSetting(rowBaseSetting(1)).V = 101.0f;
  img->realSetting(rowTopSetting(2)).V = 101.0f;
  const std::vector<RowDepths> rows = s.rowDepths(*img);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].top, 100.0f);
  EXPECT_EQ(rows[0].base, 101.0f);
  EXPECT_EQ(rows[1].top, 101.0f);
  EXPECT_TRUE(isNull(rows[1].base));
  EXPECT_TRUE(isNull(CoreSession::rowDepth(*img, 14).top));
}

// ---------------------------------------------------------------------------
// The C interface on the process-wide session.

class ExportsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    int status = -1;
    COR_INIT(&status);
    ASSERT_EQ(status, 0);
  }
  void TearDown() override {
    int status = 0;
    COR_CLOSE(&status);
  }
};

TEST_F(ExportsTest, ImagesAndRectanglesThroughOpaquePointers) {
  CoreImage* a = nullptr;
  CoreImage* b = nullptr;
  COR_IMNEW(&a);
  COR_IMNEW(&b);
  EXPECT_EQ(I_COR_IMID(&a), 1);
  EXPECT_EQ(I_COR_IMID(&b), 2);
  int count = 0;
  COR_IMNUM(&count);
  EXPECT_EQ(count, 2);

  CoreRectangle* r = nullptr;
  int id = 0;
  COR_PONEW(&b, &r, &id);
  EXPECT_EQ(id, 1);
  const int place = 1;
  int status = -1;
  COR_POSEQSET(&b, &place, &status);
  EXPECT_EQ(status, 0);
  CoreRectangle* current = nullptr;
  COR_POCURRENT(&current, &id);
  EXPECT_EQ(current, r);

  const int ids[] = {2, 1};
  const int n = 2;
  COR_IMORDER(ids, &n, &status);
  EXPECT_EQ(status, 0);
  const int first = 1;
  COR_IMSEQSET(&first, &status);
  CoreImage* cur = nullptr;
  COR_IMCURRENT(&cur, &id);
  EXPECT_EQ(cur, b);

  COR_IMSEQDEL(&first, &status);
  EXPECT_EQ(status, 0);
  COR_IMNUM(&count);
  EXPECT_EQ(count, 1);
}

TEST_F(ExportsTest, SharedCoordinatesTable) {
  const int expected[4][2] = {{2, 4}, {1, 3}, {4, 2}, {3, 1}};
  for (int v = 1; v <= 4; ++v) {
    int a = 0, b = 0;
    COR_POSHAREDCOORDS(&v, &a, &b);
    EXPECT_EQ(a, expected[v - 1][0]) << v;
    EXPECT_EQ(b, expected[v - 1][1]) << v;
  }
  for (int v : {0, 5}) {
    int a = 77, b = 88;
    COR_POSHAREDCOORDS(&v, &a, &b);
    EXPECT_EQ(a, 77);
    EXPECT_EQ(b, 88);
  }
}

}  // namespace
}  // namespace subsurf
