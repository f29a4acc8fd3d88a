#include "backend/tables/om/Vector.h"

#include <gtest/gtest.h>

#include "tests/support/Choices.h"
#include "tests/support/VectorModel.h"

namespace {

TEST(Vector, BehavesLikeAStandardVector) {
  Play<VectorModel>(10, 2000);
}

TEST(Vector, TakesBytesAndHasItsBounds) {
  OmMemoryRegion region(false);
  OmVector<char> v("a\0b", 3, &region);
  EXPECT_EQ(v[1] + v[2], 'b');
  EXPECT_EQ(v.capacity(), 3u);
  EXPECT_THROW(OmVector<int>(-1, 0, &region), std::bad_alloc);
  EXPECT_THROW(v.reserve(~0UL / 2), std::bad_alloc);
  v.erase(v.end());  // drops the last one
  EXPECT_EQ(v.size(), 2u);
  EXPECT_EQ(v.back(), 0);
}

}  // namespace
