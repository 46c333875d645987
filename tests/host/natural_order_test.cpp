// Natural ordering of photograph names: numbers by value, letters without case.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/natural_order.h"

namespace subsurf {
namespace {

TEST(NaturalOrder, NumbersCompareByValue) {
  EXPECT_TRUE(naturalLess("BOX(2)", "BOX(12)"));
  EXPECT_FALSE(naturalLess("BOX(12)", "BOX(2)"));
  EXPECT_TRUE(naturalLess("tray 9.jpg", "tray 10.jpg"));
  EXPECT_TRUE(naturalLess("K-DD-51_BOX (9) 24.0-27.0.JPG", "K-DD-51_BOX (10) 27.0-30.0.JPG"));
  EXPECT_TRUE(naturalLess("T1_999.jpg", "T1_1000.jpg"));
}

TEST(NaturalOrder, CaseAndLeadingZerosOnlyBreakTies) {
  EXPECT_TRUE(naturalLess("box(2)", "BOX(3)"));
  EXPECT_TRUE(naturalLess("BOX(3)", "box(4)"));
  // Equal but for case or zeros: ordered by the plain text, never equal.
  EXPECT_NE(naturalLess("BOX(02)", "BOX(2)"), naturalLess("BOX(2)", "BOX(02)"));
  EXPECT_NE(naturalLess("box", "BOX"), naturalLess("BOX", "box"));
  EXPECT_FALSE(naturalLess("same", "same"));
}

TEST(NaturalOrder, ShorterPrefixComesFirst) {
  EXPECT_TRUE(naturalLess("tray", "tray1"));
  EXPECT_FALSE(naturalLess("tray1", "tray"));
  EXPECT_TRUE(naturalLess("", "a"));
}

TEST(NaturalOrder, SortsARealFolder) {
  std::vector<std::string> names = {"S_DD_203_BOX(11) 29,3 - 32,6.jpg", "S_DD_203_BOX(1) 0,0 - 3,1.jpg",
                                    "S_DD_203_BOX(100) 320,0 - 323,2.jpg", "S_DD_203_BOX(2) 3,1 - 6,2.jpg"};
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) { return naturalLess(a, b); });
  EXPECT_EQ(names, (std::vector<std::string>{"S_DD_203_BOX(1) 0,0 - 3,1.jpg", "S_DD_203_BOX(2) 3,1 - 6,2.jpg",
                                             "S_DD_203_BOX(11) 29,3 - 32,6.jpg",
                                             "S_DD_203_BOX(100) 320,0 - 323,2.jpg"}));
}

}  // namespace
}  // namespace subsurf
