// Test entry point: messages are recorded but not printed, so test output stays
// readable. Test programs that link the units registry load it first, as every
// program does at start, unless SUBSURF_TEST_NO_X_INIT is set (a test that looks
// at the registry before its start runs its own program that way).
#include <gtest/gtest.h>

#include <cstdlib>

#include "host/messages.h"
#ifdef SUBSURF_TEST_STARTS_UNITS
#include "subsurf/units.h"
#endif

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  subsurf::host::setQuiet(true);
#ifdef SUBSURF_TEST_STARTS_UNITS
  if (std::getenv("SUBSURF_TEST_NO_X_INIT") == nullptr) X_INIT();
#endif
  return RUN_ALL_TESTS();
}
