// Filling in trays without depths leaves the others alone, follows each
// light kind separately, and counts trays by where their depths came from.
#include <gtest/gtest.h>

#include "core/core_session.h"
#include "core/depth_sources.h"
#include "core/image_settings.h"

namespace subsurf {
namespace {

class DepthSources : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session.init()); }
  void TearDown() override { session.close(); }
  CoreImage& tray(const std::string& name, int uv) {
    CoreImage& image = *session.newImage();
    image.setSourceFile(name);
    setInteger(image.intSetting(kIntUV), uv);
    setInteger(image.intSetting(kIntCoreNumber), 2);
    return image;
  }
  CoreSession session;
};

TEST_F(DepthSources, CarriesWithinEachLightAndKeepsWhatWasGiven) {
  CoreImage& a = tray("A 10.0-12.0.jpg", 0);
  CoreImage& aUv = tray("A uv 10.0-12.0.jpg", 1);
  CoreImage& b = tray("B.jpg", 0);
  CoreImage& bUv = tray("B uv.jpg", 1);
  CoreImage& c = tray("C.jpg", 0);
  CoreImage& d = tray("D typed.jpg", 0);
  setTrayDepths(a, 10.0f, 12.0f, 0);
  setTrayDepths(aUv, 10.0f, 12.0f, 0);
  setTrayDepths(d, 50.0f, 53.0f, 3);

  const std::vector<CarriedTray> filled = carryIntoMissing(session);
  ASSERT_EQ(filled.size(), 3u);
  EXPECT_EQ(filled[0].place, 3);
  EXPECT_EQ(filled[0].from, 1);
  EXPECT_EQ(filled[1].place, 4);
  EXPECT_EQ(filled[1].from, 2);
  EXPECT_EQ(filled[2].place, 5);
  EXPECT_EQ(filled[2].from, 1);
  EXPECT_FLOAT_EQ(b.realValue(kRealTop), 12.0f);
  EXPECT_FLOAT_EQ(bUv.realValue(kRealTop), 12.0f);  // the UV run does not advance the white-light one
  EXPECT_FLOAT_EQ(c.realValue(kRealTop), 14.0f);
  EXPECT_FLOAT_EQ(c.realValue(kRealBase), 16.0f);
  EXPECT_FLOAT_EQ(CoreSession::rowDepth(c, 2).top, 15.0f);
  EXPECT_FLOAT_EQ(d.realValue(kRealTop), 50.0f);  // given: untouched
  EXPECT_EQ(d.intValue(kIntCoreNumber), 3);

  const DepthCounts counts = countDepths(session, filled);
  EXPECT_EQ(counts.text(), "depths: 2 read from names, 1 typed or imported, 3 carried, 0 without depths");
}

TEST_F(DepthSources, TraysBeforeAnyDepthsStayWithout) {
  tray("first.jpg", 0);
  CoreImage& second = tray("second 5.0-7.0.jpg", 0);
  setTrayDepths(second, 5.0f, 7.0f, 0);
  EXPECT_TRUE(carryIntoMissing(session).empty());
  EXPECT_EQ(countDepths(session).text(), "depths: 1 read from names, 0 typed or imported, 0 carried, 1 without depths");
}

TEST_F(DepthSources, MissingRowsAreLaidOutFromTheirOwnTrayOnly) {
  CoreImage& a = tray("A.jpg", 0);
  session.makeBands(a, 2, 100, 100);
  setTrayDepths(a, 10.0f, 12.0f, 2);
  setDepth(a.realSetting(rowTopSetting(1)), 10.2f, "m");  // typed by the user
  a.realSetting(rowTopSetting(2)).V = kRealNull;
  EXPECT_EQ(layOutRowsFromTrayDepths(session), 1);
  EXPECT_FLOAT_EQ(CoreSession::rowDepth(a, 1).top, 10.2f);
  EXPECT_FLOAT_EQ(CoreSession::rowDepth(a, 2).top, 11.0f);
  EXPECT_EQ(layOutRowsFromTrayDepths(session), 0);
}

}  // namespace
}  // namespace subsurf
