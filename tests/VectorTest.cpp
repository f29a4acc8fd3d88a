#include "backend/tables/om/Vector.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/Choices.h"
#include "tests/support/VectorModel.h"

namespace {

TEST(Vector, RoomFollowsTheRule) {
  OmMemoryRegion region(false);
  {
    OmVector<int> v(&region);
    EXPECT_EQ(region.LiveBlocks(), 0u);
    const unsigned long rooms[] = {4, 4, 4, 4, 8, 8, 8, 8, 16};
    for (int i = 0; i != 9; ++i) {
      v.push_back(i);
      EXPECT_EQ(v.capacity(), rooms[i]);
      EXPECT_EQ(OmVector<int>::NextSize(static_cast<unsigned long>(i)), rooms[i]);
    }
    v.resize(21, 7);
    EXPECT_EQ(v.capacity(), 21u);
    EXPECT_EQ(v[8] * 10 + v.back(), 87);
    v.resize(5, 0);
    v.reserve(21);
    EXPECT_EQ(v.capacity(), 21u);

    const OmVector<int> copy(v, nullptr);
    EXPECT_EQ(copy.capacity(), 5u);
    EXPECT_EQ(copy.Region(), OmMemoryRegion::DefaultHeap());
    v.clear();
    EXPECT_EQ(v.begin(), nullptr);
    EXPECT_EQ(region.LiveBlocks(), 0u);
    EXPECT_EQ(v.Region(), &region);

    v.reserve(5);
    for (int i = 0; i != 6; ++i) {
      v.insert(v.begin(), i);
    }
    EXPECT_EQ(v.capacity(), 8u);
    v.erase(v.end());  // drops the last one
    EXPECT_EQ(std::vector<int>(v.begin(), v.end()), (std::vector<int>{5, 4, 3, 2, 1}));
    v.erase(v.begin(), v.begin());
    EXPECT_EQ(v.size(), 5u);

    const OmVector<char> bytes("a\0b", 3, &region);
    EXPECT_EQ(bytes.capacity(), 3u);
    EXPECT_EQ(bytes[2], 'b');
    EXPECT_THROW(OmVector<int>(-1, 0, &region), std::bad_alloc);
    EXPECT_THROW(v.reserve(~0UL / 2), std::bad_alloc);
    EXPECT_EQ(v[4], 1);
  }
  EXPECT_EQ(region.LiveBlocks(), 0u);
}

TEST(Vector, BehavesLikeAStandardVector) {
  Play<VectorModel>(10, 2000);
}

}  // namespace
