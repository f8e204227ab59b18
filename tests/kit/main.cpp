#include <gtest/gtest.h>

#include <cstdio>

#include "kit/random.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  std::printf("Random regions from seed %u (TEVCV_SEED=%u repeats this run)\n", kit::seed(), kit::seed());
  return RUN_ALL_TESTS();
}
