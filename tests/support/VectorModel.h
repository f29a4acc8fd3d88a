// A vector and its room beside a standard vector and the rule for it.

#ifndef TESTS_SUPPORT_VECTORMODEL_H
#define TESTS_SUPPORT_VECTORMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <vector>

#include "backend/tables/om/Vector.h"
#include "tests/support/Choices.h"
#include "tests/support/Walkers.h"

class VectorModel {
 public:
  explicit VectorModel(Choices& random_) : random(random_) {}

  void Step() {
    const Element fresh(counted, counted.get() + ++count);
    const int size = static_cast<int>(twin.size());
    const int at = random.Below(size + 1);
    const int to = at + random.Below(size - at + 1) % 4;
    const auto place = static_cast<unsigned long>(at);
    switch (random() % 8) {
      case 0:
      case 1:
      case 2:
        v.push_back(at != size ? v[place] : fresh);  // its own element
        twin.push_back(at != size ? twin[place] : fresh);
        break;
      case 3:
        EXPECT_EQ(*v.insert(v.begin() + at, fresh), fresh);
        twin.insert(twin.begin() + at, fresh);
        break;
      case 4:
      case 5:
        to - at == 1 ? v.erase(v.begin() + at) : v.erase(v.begin() + at, v.begin() + to);
        twin.erase(twin.begin() + at, twin.begin() + to);
        break;
      case 6:
        v.resize(place + 8, fresh);
        twin.resize(place + 8, fresh);
        room = std::max(room, place + 8);
        break;
      default:
        if (random() % 50 == 0) {
          v.clear();
          twin.clear();
          room = 0;
        }
        v.reserve(place);
        room = std::max(room, place);
    }
    if (room < twin.size()) {
      room = std::max(4UL, std::bit_ceil(twin.size()));
    }
    Verify(v);
    ASSERT_TRUE(std::equal(v.begin(), v.end(), twin.begin(), twin.end()));
    ASSERT_EQ(v.capacity(), room);
    ASSERT_EQ(counted.use_count(), 2 + 2 * static_cast<long>(twin.size()));
    ASSERT_EQ(region.LiveBlocks(), room != 0 ? 1u : 0u);
  }

  void End() {
    const OmVector<Element> copy(v, nullptr);
    EXPECT_TRUE(std::equal(copy.begin(), copy.end(), twin.begin(), twin.end()));
    EXPECT_EQ(copy.capacity(), twin.size());
    EXPECT_EQ(copy.Region(), OmMemoryRegion::DefaultHeap());
    v.destroy_elements();
    EXPECT_EQ(counted.use_count(), 1 + 2 * static_cast<long>(twin.size()));
    std::for_each(v.begin(), v.end(), [](Element& gone) { new (&gone) Element; });
  }

 private:
  // Its address is its value, and all of them count as one.
  using Element = std::shared_ptr<char>;

  Choices& random;
  int count = 0;
  Element counted{new char[4000], std::default_delete<char[]>()};
  OmMemoryRegion region{false};
  OmVector<Element> v{&region};
  std::vector<Element> twin;
  unsigned long room = 0;
};

#endif
