#include <gtest/gtest.h>

#include "crash_guard.h"

int main(int argc, char** argv) {
  test::EndOnCrash();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
