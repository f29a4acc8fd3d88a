// The exhaustion test of one operation: allocation number 0, 1, 2, … fails until the operation
// completes, first alone and then with all that follow it.

#ifndef TESTS_EXHAUSTION_EXHAUSTION_H
#define TESTS_EXHAUSTION_EXHAUSTION_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/exhaustion/TestRegion.h"
#include "tests/support/Allocations.h"

// What holds after an operation failed. In every case the fixture can be read, verified and
// destroyed, and nothing is lost.
enum class After {
  kUnchanged,   // it is as before, and a second try gives what an undisturbed run gives
  kRepeatable,  // it may have changed, but a second try gives what an undisturbed run gives
  kReadable,    // what the failed call did stays
};

// A row of the table of operations. A fixture offers State(), all that can be read of it as text,
// and Verify(), its walker.
template <typename Fixture>
struct Operation {
  const char* name;
  void (*run)(Fixture&);
  After after = After::kUnchanged;
};

namespace exhaustion {

inline long operations = 0;
inline long points = 0;

template <typename Fixture>
void Check(Fixture& fixture, const Operation<Fixture>& operation, bool thrown,
           const std::string& before, const std::string& expected) {
  fixture.Verify();
  const std::string state = fixture.State();
  if (!thrown) {
    // An operation may cope with a refusal, and says so by what it promises.
    if (operation.after != After::kReadable) {
      EXPECT_EQ(state, expected);
    }
    return;
  }
  if (operation.after == After::kUnchanged) {
    EXPECT_EQ(state, before);
  }
  if (operation.after != After::kReadable) {
    operation.run(fixture);
    EXPECT_EQ(fixture.State(), expected) << "second try";
  }
}

// Returns whether an allocation was refused.
template <typename Fixture>
bool Try(const Operation<Fixture>& operation, long k, bool once, const std::string& before,
         const std::string& expected) {
  const long live = allocations::Live();
  const long blocks = regions::LiveBlocks();
  auto fixture = std::make_unique<Fixture>();
  bool thrown = false;
  allocations::FailAfter(k, once);
  try {
    operation.run(*fixture);
  } catch (const std::bad_alloc&) {
    thrown = true;
  }
  const bool refused = allocations::Refused() != 0;
  allocations::FailAfter(-1);
  EXPECT_TRUE(refused || !thrown) << "bad_alloc from nowhere";
  Check(*fixture, operation, thrown, before, expected);

  const long asked = allocations::Asked();
  allocations::FailAfter(0);
  fixture.reset();
  allocations::FailAfter(-1);
  EXPECT_EQ(allocations::Asked(), asked) << "destruction allocates";
  EXPECT_EQ(regions::LostBlocks(), 0);
  if (!Fixture::kLeavesRecords) {
    EXPECT_EQ(allocations::Live(), live);
    EXPECT_EQ(regions::LiveBlocks(), blocks);
  }
  return refused;
}

template <typename Fixture, unsigned long n>
void Run(const Operation<Fixture> (&rows)[n]) {
  for (const Operation<Fixture>& operation : rows) {
    SCOPED_TRACE(operation.name);
    std::string before;
    std::string expected;
    {
      Fixture fixture;
      fixture.Verify();
      before = fixture.State();
      operation.run(fixture);
      expected = fixture.State();
    }
    for (const bool once : {true, false}) {
      long k = 0;
      for (; Try(operation, k, once, before, expected); ++k) {
        if (testing::Test::HasFailure()) {
          FAIL() << "allocation " << k << (once ? " alone" : " and all that follow");
        }
      }
      points += k;
    }
    ++operations;
  }
}

}  // namespace exhaustion

// The base of fixtures.
struct ExhaustionFixture {
  // Whether something outlives the fixture on purpose.
  static constexpr bool kLeavesRecords = false;
};

#endif
