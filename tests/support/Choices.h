// Models: each holds an object of the library beside its plain twin. It is made from choices, of a
// seeded generator in a test or the bytes of an input in a fuzzer; Step() makes one change to both
// and compares them, End() is the last look at both.

#ifndef TESTS_SUPPORT_CHOICES_H
#define TESTS_SUPPORT_CHOICES_H

#include <gtest/gtest.h>

#include <random>
#include <string>

class Choices {
 public:
  explicit Choices(unsigned int seed) : random(seed) {}
  // Every choice takes a byte, and is 0 behind the last one.
  Choices(const unsigned char* bytes_, unsigned long size_) : bytes(bytes_), size(size_) {}

  unsigned int operator()() {
    return bytes == nullptr ? static_cast<unsigned int>(random()) : next < size ? bytes[next++] : 0;
  }
  // A number below `n`; no choice where there is none.
  int Below(int n) { return n <= 1 ? 0 : static_cast<int>((*this)() % static_cast<unsigned>(n)); }
  bool OneIn(int n) { return Below(n) == 0; }
  // Whether the bytes are used up.
  [[nodiscard]] bool Done() const { return next >= size; }

 private:
  std::mt19937 random;
  const unsigned char* bytes = nullptr;
  unsigned long size = 0;
  unsigned long next = 0;
};

template <typename Model>
void Play(unsigned int runs, unsigned int steps) {
  const unsigned int first = std::random_device{}();
  for (unsigned int seed = first; seed != first + runs; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Choices choices(seed);
    Model model(choices);
    for (unsigned int step = 0; step != steps; ++step) {
      ASSERT_NO_FATAL_FAILURE(model.Step()) << "step " << step;
    }
    ASSERT_NO_FATAL_FAILURE(model.End());
  }
}

#endif
