#include <cstdio>

#include "tests/exhaustion/Exhaustion.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  std::printf("%ld operations, %ld failed allocations\n", exhaustion::operations,
              exhaustion::points);
  return result;
}
