// A payload that knows how many of it there are, refuses to be copied on demand and notices when it
// is destroyed twice or read after its end.

#ifndef TESTS_SUPPORT_COUNTED_H
#define TESTS_SUPPORT_COUNTED_H

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <vector>

struct Counted {
  explicit Counted(std::nullptr_t) : Counted(0) {}
  Counted(int value_) : value(value_) { ++live; }
  Counted(const Counted& other) : value(other.value) {
    EXPECT_EQ(other.mark, kAlive);
    if (copiesLeft == 0) {
      throw std::bad_alloc();
    }
    --copiesLeft;
    ++live;
  }
  Counted& operator=(const Counted&) = delete;
  ~Counted() {
    EXPECT_EQ(mark, kAlive);
    mark = 0;
    --live;
    ended.push_back(value);
  }
  bool operator==(const Counted& other) const { return value == other.value; }

  static constexpr unsigned kAlive = 0x600dcafe;
  static inline long live = 0;
  static inline long copiesLeft = -1;  // negative: no limit
  static inline std::vector<int> ended;

  int value;
  unsigned mark = kAlive;
};

#endif
