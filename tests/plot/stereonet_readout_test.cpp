// The read-out of a position on the net: exact texts at the centre, on the
// rim, in each quadrant and beyond the rim, for both nets, through the engine
// and the C entry point; positions of known lines read back.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "host/fixed_text.h"
#include "plot/stereonet_readout.h"
#include "subsurf/plot_stereonet.h"

namespace ss = subsurf;

namespace {

using Texts = std::array<std::string, 5>;

Texts readout(double x, double y, int projection) {
  ss::NetReadout r;
  EXPECT_TRUE(ss::readNetPosition(x, y, projection, r).isOk());
  return r.texts;
}

// The C entry point, each field cut to its trimmed text.
Texts exported(float x, float y, int projection, int& status) {
  char f[5][ZW_SETSMESS_WIDTH];
  ZW_SETSMESS(&projection, &x, &y, f[0], f[1], f[2], f[3], f[4], &status);
  Texts t;
  for (std::size_t k = 0; k < 5; ++k) t[k] = ss::fixedText(f[k], ZW_SETSMESS_WIDTH);
  return t;
}

}  // namespace

TEST(StereonetReadout, CentreAndRim) {
  for (int p : {ss::kEqualArea, ss::kEqualAngle}) {
    EXPECT_EQ(readout(0, 0, p), (Texts{"Radius = 0.0", "Angle = 0.0", "Dip = 90.0", "Az = 0.0", "Corresp. Point Dip = 0.0"}));
    EXPECT_EQ(readout(0, 90, p), (Texts{"Radius = 90.0", "Angle = 0.0", "Dip = 0.0", "Az = 0.0", "Corresp. Point Dip = 90.0"}));
    EXPECT_EQ(readout(-90, 0, p), (Texts{"Radius = 90.0", "Angle = 270.0", "Dip = 0.0", "Az = 270.0", "Corresp. Point Dip = 90.0"}));
  }
}

TEST(StereonetReadout, EachQuadrantOnBothNets) {
  // Radius 50 at bearings 36.87, 126.87, 216.87, 306.87 degrees. Equal area:
  // dip = asin(1 - (50/90)^2) = 43.74; equal angle: 90 - 2 atan(50/90) = 31.89.
  const std::array<std::pair<double, double>, 4> at = {{{30, 40}, {40, -30}, {-30, -40}, {-40, 30}}};
  const std::array<std::string, 4> bearing = {"36.9", "126.9", "216.9", "306.9"};
  for (std::size_t q = 0; q < 4; ++q) {
    EXPECT_EQ(readout(at[q].first, at[q].second, ss::kEqualArea),
              (Texts{"Radius = 50.0", "Angle = " + bearing[q], "Dip = 43.7", "Az = " + bearing[q],
                     "Corresp. Point Dip = 46.3"}));
    EXPECT_EQ(readout(at[q].first, at[q].second, ss::kEqualAngle),
              (Texts{"Radius = 50.0", "Angle = " + bearing[q], "Dip = 31.9", "Az = " + bearing[q],
                     "Corresp. Point Dip = 58.1"}));
  }
}

TEST(StereonetReadout, KnownLinesReadBackWhereTheyArePlotted) {
  for (int p : {ss::kEqualArea, ss::kEqualAngle})
    for (double plunge : {0.0, 12.5, 45.0, 77.0, 90.0})
      for (double trend : {0.0, 95.0, 181.0, 359.0}) {
        const ss::NetPoint at = ss::projectLine({plunge, trend}, p);
        ss::NetReadout r;
        ASSERT_TRUE(ss::readNetPosition(at.x, at.y, p, r).isOk());
        ASSERT_TRUE(r.onNet);
        EXPECT_NEAR(r.line.plunge, plunge, 1e-9) << p << " " << plunge << "/" << trend;
        if (plunge < 90) {
          EXPECT_NEAR(r.line.trend, trend, 1e-9) << p << " " << plunge << "/" << trend;
        }
        EXPECT_NEAR(r.correspondingDip, 90 - plunge, 1e-9);
      }
}

TEST(StereonetReadout, NorthByAHairIsNotThreeHundredAndSixty) {
  EXPECT_EQ(readout(-0.01, 80, ss::kEqualArea)[1], "Angle = 0.0");
  EXPECT_EQ(readout(-0.1, 80, ss::kEqualArea)[1], "Angle = 359.9");
  EXPECT_EQ(readout(-1e-9, -50, ss::kEqualArea)[3], "Az = 180.0");
}

TEST(StereonetReadout, BeyondTheRimAndRefused) {
  ss::NetReadout r;
  ASSERT_TRUE(ss::readNetPosition(100, 0, ss::kEqualArea, r).isOk());
  EXPECT_FALSE(r.onNet);
  EXPECT_EQ(r.texts, (Texts{"Radius = 100.0", "Angle = 90.0", "", "", ""}));
  EXPECT_EQ(ss::readNetPosition(1, 1, 4, r).message(), "Projection 4 is not equal-angle (2) or equal-area (3)");
  EXPECT_EQ(ss::readNetPosition(std::nan(""), 1, ss::kEqualArea, r).message(),
            "The position on the net is not a number");
}

TEST(StereonetReadout, ExportedFieldsAndStatus) {
  int status = -1;
  EXPECT_EQ(exported(40, -30, ss::kEqualArea, status),
            (Texts{"Radius = 50.0", "Angle = 126.9", "Dip = 43.7", "Az = 126.9", "Corresp. Point Dip = 46.3"}));
  EXPECT_EQ(status, 0);
  EXPECT_EQ(exported(0, -95, ss::kEqualAngle, status), (Texts{"Radius = 95.0", "Angle = 180.0", "", "", ""}));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(exported(0, 0, 7, status), (Texts{"", "", "", "", ""}));
  EXPECT_EQ(status, 1);
  // Fields are blank-padded to their width, and the caller may leave any out.
  char radius[ZW_SETSMESS_WIDTH + 1] = {};
  const int p = ss::kEqualArea;
  const float x = 0, y = 45;
  ZW_SETSMESS(&p, &x, &y, radius, nullptr, nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(std::string(radius), "Radius = 45.0" + std::string(ZW_SETSMESS_WIDTH - 13, ' '));
  EXPECT_EQ(status, 0);
  ZW_SETSMESS(nullptr, &x, &y, radius, nullptr, nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(std::string(radius), std::string(ZW_SETSMESS_WIDTH, ' '));
}
