// Test entry point: messages are recorded but not printed, so test output stays readable.
#include <gtest/gtest.h>

#include "host/messages.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  subsurf::host::setQuiet(true);
  return RUN_ALL_TESTS();
}
