// A vector and its room beside a standard vector and the rule for it.

#ifndef TESTS_SUPPORT_VECTORMODEL_H
#define TESTS_SUPPORT_VECTORMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <new>
#include <vector>

#include "backend/tables/om/Vector.h"
#include "tests/support/Choices.h"
#include "tests/support/Walkers.h"

// An element that knows how many of it there are and notices when it is destroyed twice or read
// after its end.
struct Counted {
  Counted(int value_) : value(value_) { ++live; }
  Counted(const Counted& other) : Counted(other.value) { EXPECT_EQ(other.mark, kAlive); }
  Counted& operator=(const Counted&) = delete;
  ~Counted() {
    EXPECT_EQ(mark, kAlive);
    mark = 0;
    --live;
    ended.push_back(value);
  }
  bool operator==(int other) const { return value == other; }

  static constexpr unsigned kAlive = 0x600dcafe;
  static inline long live = 0;
  static inline std::vector<int> ended;

  int value;
  unsigned mark = kAlive;
};

class VectorModel {
 public:
  explicit VectorModel(Choices& random_) : random(random_) {}

  void Step() {
    const int step = ++count;
    const int size = static_cast<int>(twin.size());
    const int at = random.Below(size + 1);
    const int to = at + random.Below(size - at + 1) % 4;
    const auto place = static_cast<unsigned long>(at);
    switch (random() % 8) {
      case 0:
      case 1:
      case 2: {
        const Counted fresh(step);
        v.push_back(at != size ? v[place] : fresh);  // its own element
        twin.push_back(at != size ? twin[place] : step);
        break;
      }
      case 3:
        EXPECT_EQ(v.insert(v.begin() + at, Counted(step))->value, step);
        twin.insert(twin.begin() + at, step);
        break;
      case 4:
      case 5:
        to - at == 1 ? v.erase(v.begin() + at) : v.erase(v.begin() + at, v.begin() + to);
        twin.erase(twin.begin() + at, twin.begin() + to);
        break;
      case 6:
        v.resize(place + 8, step);
        twin.resize(place + 8, step);
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
    ExpectTwin(v);
    ASSERT_EQ(v.capacity(), room);
    ASSERT_EQ(Counted::live - alive, static_cast<long>(twin.size()));
    ASSERT_EQ(region.LiveBlocks(), room != 0 ? 1u : 0u);
  }

  void End() {
    const OmVector<Counted> copy(v, nullptr);
    ExpectTwin(copy);
    EXPECT_EQ(copy.capacity(), twin.size());
    EXPECT_EQ(copy.Region(), OmMemoryRegion::DefaultHeap());
    Counted::ended.clear();
    v.destroy_elements();
    EXPECT_EQ(Counted::ended, twin);
    for (Counted& element : v) {
      new (&element) Counted(0);
    }
  }

 private:
  void ExpectTwin(const OmVector<Counted>& vector) {
    ASSERT_TRUE(std::equal(vector.begin(), vector.end(), twin.begin(), twin.end()));
  }

  Choices& random;
  long alive = Counted::live;
  int count = 0;
  OmMemoryRegion region{false};
  OmVector<Counted> v{&region};
  std::vector<int> twin;
  unsigned long room = 0;
};

#endif
