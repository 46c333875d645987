// Reading depth intervals from photograph names as a person reads them: a
// table of names written in the styles of real drilling programmes, each with
// the interval a geologist reads in it or the exact refusal.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "core/name_depths.h"

namespace subsurf {
namespace {

struct ReadCase {
  const char* name;
  float top;
  float base;
};

// Names whose interval is read. Expected depths are the numbers as written.
const ReadCase kRead[] = {
    // the fixed-width style sessions have always used
    {"TRAY_1234_5-1236_0.jpg", 1234.5f, 1236.0f},
    {"1234-1236", 1234.0f, 1236.0f},
    {"12345-12347.bmp", 12345.0f, 12347.0f},
    {"1234_25-1236_05.jpg", 1234.25f, 1236.05f},
    {"T1234.5-1236.5", 1234.5f, 1236.5f},
    // hole and box before the interval, hyphens in the hole name
    {"K-DD-51_BOX(04) 9.0-12.00.JPG", 9.0f, 12.0f},
    {"K-DD-51_BOX(05) 12.00-15.00.JPG", 12.0f, 15.0f},
    {"K-DD-52_BOX (23) 66.0-69.0JPG.JPG", 66.0f, 69.0f},
    {"K-DD-52_BOX (24) 69.0-72.0jpg", 69.0f, 72.0f},
    {"U-DD-170_BOX (27) 75.20-77.95.JPG.JPG", 75.2f, 77.95f},
    {"U-DD-170_BOX (28) 77.95-80.70.jpg.jpg", 77.95f, 80.7f},
    // comma decimals, blanks round the hyphen
    {"S_DD_203_BOX(11) 29,3 - 32,6.jpg", 29.3f, 32.6f},
    {"S_DD_203_BOX(12) 32,6 -35,9.jpg", 32.6f, 35.9f},
    {"S_DD_203_BOX(13) 35,9- 39,2.JPG", 35.9f, 39.2f},
    {"BH2_tray_5_(145,60-148,90).jpg", 145.6f, 148.9f},
    // "m" after the numbers, tray words glued to their numbers
    {"DD26ZOP-006_Dry_Tray22_82.50-86.00m.jpg", 82.5f, 86.0f},
    {"DD26ZOP-006_Wet_Tray23_86.00-89.50m.jpg", 86.0f, 89.5f},
    {"DDH001_Bx001-004_0000.0m-0016.0m_Dry.jpg", 0.0f, 16.0f},
    {"DDH001_Bx005-008_0016.0m-0031.5m_Wet.jpg", 16.0f, 31.5f},
    {"H 45.0m - 48.5m.jpeg", 45.0f, 48.5f},
    {"hole9_12m-15m.png", 12.0f, 15.0f},
    // an interval in parentheses wins over hole and box numbers
    {"826_6001-1_(0.00-3.00)_W_1788890262148.jpg", 0.0f, 3.0f},
    {"826_6001-2_(3.00-6.10)_D_1788890262149.jpg", 3.0f, 6.1f},
    {"x (1.0-2.0) 3.0-4.0.jpg", 1.0f, 2.0f},
    {"BOX 7 ( 21.5 - 24.0 ).tif", 21.5f, 24.0f},
    // leading zeros, zero-padded widths, suffixes after the interval
    {"RC671_815.48-820.62_m_WET.JPG", 815.48f, 820.62f},
    {"RC671_0332.25-0337.19_m_Dry.JPG", 332.25f, 337.19f},
    {"RC671_0332.25-0337.19_m_Wet.JPG", 332.25f, 337.19f},
    {"Hole7 Box3 12.5-14.7 UV.tif", 12.5f, 14.7f},
    {"core 100.5-103.2m.png", 100.5f, 103.2f},
    {"100-103.jpg", 100.0f, 103.0f},
    {"1-4.jpg", 1.0f, 4.0f},
    {"0.0-2.5.jpeg", 0.0f, 2.5f},
    {"BH1 99990-99999.jpg", 99990.0f, 99999.0f},
    {"Tray 12 82.50-86.00.jpg", 82.5f, 86.0f},
    {"GT-14_B3_12.345-15.678.jpg", 12.345f, 15.678f},
    {"WELL_A_1502_5-1505_0_UV.bmp", 1502.5f, 1505.0f},
    {"x 1.0-2.0 1.00-2.00.jpg", 1.0f, 2.0f},  // the same interval twice
    {"/photos/2019-05/K-DD-51_BOX(06) 15.00-18.00.JPG", 15.0f, 18.0f},  // folders do not count
    {"-1.0-2.0.jpg", 1.0f, 2.0f},
    {"Box 3 10,25-13,50m.JPG", 10.25f, 13.5f},
};

struct RefusedCase {
  const char* name;
  const char* problem;
};

// Names that give no depths, with what the user is told.
const RefusedCase kRefused[] = {
    {"tray_two.jpg", "tray_two.jpg: no depth interval in the name"},
    {"IMG_4481.JPG", "IMG_4481.JPG: no depth interval in the name"},
    {"K-DD-51_BOX(04).JPG", "K-DD-51_BOX(04).JPG: no depth interval in the name"},
    {"H1 2019-05-03 box 4.jpg", "H1 2019-05-03 box 4.jpg: no depth interval in the name"},
    {"DDH001_Bx001-004_Dry.jpg", "DDH001_Bx001-004_Dry.jpg: no depth interval in the name"},
    {"826_6001-1_W_1788890262148.jpg",
     "826_6001-1_W_1788890262148.jpg: found \"6001-1\" but the top is not above the base; left without depths"},
    {"X_12.5-13.5cm.jpg", "X_12.5-13.5cm.jpg: no depth interval in the name"},
    {"x_118.7-]21.5.jpg",
     "x_118.7-]21.5.jpg: found \"118.7-]21.5\" but \"]\" stands between the hyphen and the base; left without depths"},
    {"BOX 5 126.129.00.jpg",
     "BOX 5 126.129.00.jpg: found \"126.129.00\" but a number with two decimal marks (is the hyphen between top and "
     "base missing?); left without depths"},
    {"BOX 5 123.00-126.129.00.jpg",
     "BOX 5 123.00-126.129.00.jpg: found \"123.00-126.129.00\" but the base \"126.129.00\" has two decimal marks; "
     "left without depths"},
    {"TRAY_1236_0-1234_5.jpg",
     "TRAY_1236_0-1234_5.jpg: found \"1236_0-1234_5\" but the top is not above the base; left without depths"},
    {"X 12.5 - 11.0.jpg", "X 12.5 - 11.0.jpg: found \"12.5 - 11.0\" but the top is not above the base; left without depths"},
    {"X 12.5-12.5.jpg", "X 12.5-12.5.jpg: found \"12.5-12.5\" but the top is not above the base; left without depths"},
    {"x 1.0-2.0 3.0-4.0.jpg",
     "x 1.0-2.0 3.0-4.0.jpg: found \"1.0-2.0\" but the name also holds the interval \"3.0-4.0\"; left without depths"},
    {"B 123456-123460.jpg",
     "B 123456-123460.jpg: found \"123456-123460\" but the top \"123456\" has more than five digits before the decimal "
     "mark; left without depths"},
    {"B 12-123460.jpg",
     "B 12-123460.jpg: found \"12-123460\" but the base \"123460\" has more than five digits before the decimal mark; "
     "left without depths"},
    {"BH1 99999-100000.jpg",
     "BH1 99999-100000.jpg: found \"99999-100000\" but the base \"100000\" has more than five digits before the "
     "decimal mark; left without depths"},
    {"12.1234-13.0.jpg",
     "12.1234-13.0.jpg: found \"12.1234-13.0\" but the top \"12.1234\" has more than three decimals; left without "
     "depths"},
    {"1234_5-1236.jpg",
     "1234_5-1236.jpg: found \"1234_5-1236\" but only one of its numbers has \"_\" for a decimal mark, so it reads two "
     "ways; left without depths"},
    {"A_12_10-13.jpg",
     "A_12_10-13.jpg: found \"12_10-13\" but only one of its numbers has \"_\" for a decimal mark, so it reads two "
     "ways; left without depths"},
    {"DDH-01-05.jpg",
     "DDH-01-05.jpg: found \"01-05\" but it is joined by a hyphen to \"DDH\" before it, as in a hole or box name; left "
     "without depths"},
    {"BOX-12.0-15.0.jpg",
     "BOX-12.0-15.0.jpg: found \"12.0-15.0\" but it is joined by a hyphen to \"BOX\" before it, as in a hole or box "
     "name; left without depths"},
    {"Tray 3 12.5- ~14.0.jpg",
     "Tray 3 12.5- ~14.0.jpg: found \"12.5- ~14.0\" but \"~\" stands between the hyphen and the base; left without "
     "depths"},
    {"K-DD-51_BOX(04) 9.0-12.00.JPG 12.00-15.00.jpg",
     "K-DD-51_BOX(04) 9.0-12.00.JPG 12.00-15.00.jpg: found \"9.0-12.00\" but the name also holds the interval "
     "\"12.00-15.00\"; left without depths"},
};

TEST(NameDepths, ReadsTheIntervalAPersonReads) {
  for (const ReadCase& c : kRead) {
    const NameDepths r = readNameDepths(c.name);
    EXPECT_TRUE(r.read()) << c.name << ": " << nameDepthsProblem(c.name, r);
    EXPECT_FLOAT_EQ(r.top, c.top) << c.name;
    EXPECT_FLOAT_EQ(r.base, c.base) << c.name;
  }
}

TEST(NameDepths, RefusesWhatItCannotTrustSayingWhy) {
  for (const RefusedCase& c : kRefused) {
    const NameDepths r = readNameDepths(c.name);
    EXPECT_FALSE(r.read()) << c.name << " read as " << r.top << "-" << r.base;
    EXPECT_TRUE(isNull(r.top) && isNull(r.base)) << c.name;
    EXPECT_EQ(nameDepthsProblem(c.name, r), c.problem);
  }
}

TEST(NameDepths, TheTableIsLargeEnoughToMeanSomething) {
  EXPECT_GE(std::size(kRead) + std::size(kRefused), 60u);
}

TEST(NameDepths, AFixedWidthReadingThatDisagreesWithThePersonIsRefused) {
  // Blanks count for nothing in the fixed-width fields, so "1 234_5" reads
  // there as 1234.5; a person reads 234.5. Neither is taken.
  const NameDepths r = readNameDepths("Q 1 234_5-1236_0.jpg");
  EXPECT_EQ(r.result, NameDepthResult::Refused);
  EXPECT_EQ(nameDepthsProblem("Q 1 234_5-1236_0.jpg", r),
            "Q 1 234_5-1236_0.jpg: found \"234_5-1236_0\" but the fixed-width reading gives 1234.50-1236.00 instead; "
            "left without depths");
  // Where both agree the interval is read.
  const NameDepths agreed = readNameDepths("TRAY_A 1234_5-1236_0.jpg");
  ASSERT_TRUE(agreed.read());
  EXPECT_FLOAT_EQ(agreed.top, 1234.5f);
  EXPECT_FLOAT_EQ(agreed.base, 1236.0f);
}

TEST(NameDepths, SuffixesDoubledOrGluedAreDropped) {
  EXPECT_EQ(withoutImageSuffixes("K-DD-52_BOX (23) 66.0-69.0JPG.JPG"), "K-DD-52_BOX (23) 66.0-69.0");
  EXPECT_EQ(withoutImageSuffixes("U-DD-170_BOX (27) 75.20-77.95.JPG.JPG"), "U-DD-170_BOX (27) 75.20-77.95");
  EXPECT_EQ(withoutImageSuffixes("/a/b.c/tray.tiff"), "tray");
  EXPECT_EQ(withoutImageSuffixes("notes.txt"), "notes.txt");
  EXPECT_EQ(withoutImageSuffixes("jpg"), "jpg");
}

TEST(NameDepths, HoleIsWhatStandsBeforeTheBoxOrInterval) {
  EXPECT_EQ(holeFromName("K-DD-51_BOX(04) 9.0-12.00.JPG"), "K-DD-51");
  EXPECT_EQ(holeFromName("S_DD_203_BOX(11) 29,3 - 32,6.jpg"), "S_DD_203");
  EXPECT_EQ(holeFromName("DD26ZOP-006_Dry_Tray22_82.50-86.00m.jpg"), "DD26ZOP-006");
  EXPECT_EQ(holeFromName("DDH001_Bx001-004_0000.0m-0016.0m_Dry.jpg"), "DDH001");
  EXPECT_EQ(holeFromName("826_6001-1_(0.00-3.00)_W_1788890262148.jpg"), "826_6001-1");
  EXPECT_EQ(holeFromName("RC671_0332.25-0337.19_m_Dry.JPG"), "RC671");
  EXPECT_EQ(holeFromName("/x/Hole7 Box3 12.5-14.7 UV.tif"), "Hole7");
  EXPECT_EQ(holeFromName("TRAY_1234_5-1236_0.jpg"), "");
  EXPECT_EQ(holeFromName("IMG_4481.JPG"), "IMG_4481");
}

TEST(NameDepths, AnyNameGivesAnIntervalWithTopAboveBaseOrSaysWhy) {
  // Names built from the characters intervals are made of, in every mix: a
  // reading is either a proper interval or a refusal that names its text.
  const std::string alphabet = "0123456789.,_- ()mMBx[]";
  std::mt19937 random(12);
  for (int n = 0; n < 20000; ++n) {
    std::string name;
    const int length = static_cast<int>(random() % 24);
    for (int k = 0; k < length; ++k) name += alphabet[random() % alphabet.size()];
    name += random() % 2 ? ".jpg" : "JPG.JPG";
    const NameDepths r = readNameDepths(name);
    if (r.read()) {
      EXPECT_TRUE(std::isfinite(r.top) && std::isfinite(r.base)) << name;
      EXPECT_LT(r.top, r.base) << name;
    } else if (r.result == NameDepthResult::Refused) {
      EXPECT_FALSE(r.found.empty()) << name;
      EXPECT_FALSE(r.reason.empty()) << name;
      EXPECT_NE(name.find(r.found), std::string::npos) << name;
    } else {
      EXPECT_EQ(nameDepthsProblem(name, r), name + ": no depth interval in the name");
    }
  }
}

}  // namespace
}  // namespace subsurf
