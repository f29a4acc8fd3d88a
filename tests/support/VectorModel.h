// A vector beside a standard vector.

#ifndef TESTS_SUPPORT_VECTORMODEL_H
#define TESTS_SUPPORT_VECTORMODEL_H

#include <gtest/gtest.h>

#include <vector>

#include "backend/tables/om/Vector.h"
#include "tests/support/Choices.h"
#include "tests/support/Counted.h"
#include "tests/support/Walkers.h"

inline std::vector<int> Values(const OmVector<Counted>& vector) {
  std::vector<int> values;
  for (const Counted& element : vector) {
    values.push_back(element.value);
  }
  return values;
}

class VectorModel {
 public:
  explicit VectorModel(Choices& random_) : random(random_) {}

  void Step() {
    const int step = count++;
    const long at = random.Below(static_cast<int>(twin.size()) + 1);
    const auto place = static_cast<unsigned long>(at);
    switch (random() % 8) {
      case 0:
      case 1:
        EXPECT_EQ(v.push_back(step)->value, step);
        twin.push_back(step);
        break;
      case 2:
        EXPECT_EQ(v.insert(v.begin() + at, Counted(step))->value, step);
        twin.insert(twin.begin() + at, step);
        break;
      case 3:
        if (place != twin.size()) {
          v.push_back(v[place]);  // its own element
          twin.push_back(twin[place]);
        }
        break;
      case 4:
        if (place != twin.size()) {
          v.erase(v.begin() + at);
          twin.erase(twin.begin() + at);
        }
        break;
      case 5: {
        const long to = at + random.Below(static_cast<int>(twin.size() - place + 1)) % 4;
        v.erase(v.begin() + at, v.begin() + to);
        twin.erase(twin.begin() + at, twin.begin() + to);
        break;
      }
      case 6:
        v.resize(place + 8, step);
        twin.resize(place + 8, step);
        break;
      default:
        if (random() % 50 == 0) {
          v.clear();
          twin.clear();
        }
        v.reserve(place);
    }

    Verify(v);
    ASSERT_EQ(Values(v), twin);
    ASSERT_EQ(Counted::live - alive, static_cast<long>(twin.size()));
  }

  void End() {
    EXPECT_EQ(Values(OmVector<Counted>(v)), twin);
    Counted::ended.clear();
    v.destroy_elements();
    EXPECT_EQ(Counted::ended, twin);
    for (Counted& element : v) {
      new (&element) Counted(0);
    }
    v.clear();
    EXPECT_EQ(Counted::live, alive);
    EXPECT_EQ(region.LiveBlocks(), 0U);
  }

 private:
  Choices& random;
  long alive = Counted::live;
  int count = 0;
  OmMemoryRegion region{false};
  OmVector<Counted> v{&region};
  std::vector<int> twin;
};

#endif
