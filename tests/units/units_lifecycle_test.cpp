// The registry's life: empty until X_INIT has read the definitions file. The
// test programs call X_INIT at start as every program does, so the state before
// it is looked at in a second run of this program started without it.
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/nulls.h"
#include "subsurf/units.h"
#include "support/run_program.h"

namespace subsurf {
namespace {

constexpr const char* kNoInit = "SUBSURF_TEST_NO_X_INIT";

// Runs only in the second run (see below); skipped in an ordinary one.
TEST(UnitsBeforeInit, EveryQueryAnswersAsForNoSeries) {
  if (std::getenv(kNoInit) == nullptr) GTEST_SKIP() << "runs in a program started without X_INIT";
  int last = 99, n = 99, listed = 99, value = 0, iser = 99, iun = 99, err = 0;
  const int zero = 0, one = 1, two = 2, dimension = 4;
  char series[20], unit[16];
  X_NSER(&last);
  EXPECT_EQ(last, -1);
  X_NSERUNITS(&zero, &n);
  EXPECT_EQ(n, 0);
  X_GETNULIST(&zero, &listed);
  EXPECT_EQ(listed, 0);
  X_GETCSER(&zero, series);
  EXPECT_EQ(std::string(series, 20), std::string(20, ' '));
  X_GETCUN(&zero, &one, unit);
  EXPECT_EQ(std::string(unit, 16), std::string(16, ' '));
  X_GETSDEF(&zero, &dimension, &value);
  EXPECT_EQ(value, -32768);
  X_GETISER("depth               ", &iser);
  EXPECT_EQ(iser, -1);
  X_GUESSISER("ft              ", &iser);
  EXPECT_EQ(iser, -1);
  X_GETIUN(&zero, "ft              ", &iun);
  EXPECT_LT(iun, 1);
  const float v = 12.5f;
  EXPECT_EQ(X_SICONV(&v, &zero, &one, &two, &err), 12.5f);
  EXPECT_EQ(err, 1);

  X_INIT();
  X_NSER(&last);
  EXPECT_GE(last, 20);
  X_GETISER("depth               ", &iser);
  EXPECT_GE(iser, 0);
}

TEST(UnitsLifecycle, NothingIsLoadedBeforeXInit) {
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  const testing::CommandRun run = testing::runCommand(std::string(kNoInit) + "=1 " + self +
                                                      " --gtest_filter=UnitsBeforeInit.EveryQueryAnswersAsForNoSeries");
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_NE(run.out.find("[  PASSED  ] 1 test."), std::string::npos) << run.out;
}

}  // namespace
}  // namespace subsurf
