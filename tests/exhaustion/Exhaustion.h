// The exhaustion test of one operation: allocation number 0, 1, 2, … fails until the operation
// completes, first alone and then with all that follow it.

#ifndef TESTS_EXHAUSTION_EXHAUSTION_H
#define TESTS_EXHAUSTION_EXHAUSTION_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/memory/MemoryRegion.h"
#include "tests/exhaustion/Rows.h"
#include "tests/support/Allocations.h"
#include "tests/support/Show.h"
#include "tests/support/Walkers.h"

// What holds after an operation failed. In every case the fixture can be read, verified and
// destroyed, and nothing is lost.
enum class After {
  kUnchanged,   // it is as before, and a second try gives what an undisturbed run gives
  kRepeatable,  // it may have changed, but a second try gives what an undisturbed run gives
  kReadable,    // what the failed call did stays
};

// Runs operations on a fixture `f`: each argument behind the fixture's class is one.
#define UNCHANGED(Fixture, ...) RUN_EACH(Fixture, kUnchanged, __VA_ARGS__)
#define REPEATABLE(Fixture, ...) RUN_EACH(Fixture, kRepeatable, __VA_ARGS__)
#define READABLE(Fixture, ...) RUN_EACH(Fixture, kReadable, __VA_ARGS__)
#define RUN_EACH(Fixture, after, ...) \
  exhaustion::Run<Fixture>(After::after, {EACH(OPERATION, __VA_ARGS__)})
// clang-format off
#define OPERATION(call) {#call, []([[maybe_unused]] auto& f) { static_cast<void>(call); }}
// clang-format on

// The base of fixtures. A fixture adds State(), all that can be read of it as text.
struct ExhaustionFixture {
  // Whether something outlives the fixture on purpose.
  static constexpr bool kLeavesRecords = false;
  void Verify() {}

  OmMemoryRegion region{false};
  // What the operation read.
  std::string seen;
};

// A temporary for an operation that takes a reference.
template <typename T>
T& Ref(T&& value) {
  return value;
}

namespace exhaustion {

inline long operations = 0;
inline long points = 0;

template <typename Fixture>
struct Operation {
  const char* name;
  void (*run)(Fixture&);
};

// Runs an operation with allocation `k` failing. Returns whether an allocation was refused.
template <typename Fixture>
bool Try(After after, void (*run)(Fixture&), long k, bool once, const std::string& before,
         const std::string& expected) {
  const long live = allocations::Live();
  auto fixture = std::make_unique<Fixture>();
  bool thrown = false;
  allocations::FailAfter(k, once);
  try {
    run(*fixture);
  } catch (const std::bad_alloc&) {
    thrown = true;
  }
  const bool refused = allocations::Refused() != 0;
  allocations::FailAfter(-1);
  EXPECT_TRUE(refused || !thrown) << "bad_alloc from nowhere";
  fixture->Verify();
  EXPECT_TRUE(fixture->State() + fixture->seen == before || !thrown || after != After::kUnchanged)
      << fixture->State() << "\nwas\n"
      << before;
  if (after != After::kReadable) {
    if (thrown) {
      run(*fixture);
    }
    // Without an exception the operation has coped with the refusal.
    EXPECT_EQ(fixture->State() + fixture->seen, expected) << (thrown ? "second try" : "");
  }

  const long asked = allocations::Asked();
  allocations::FailAfter(0);
  fixture.reset();
  allocations::FailAfter(-1);
  EXPECT_EQ(allocations::Asked(), asked) << "destruction allocates";
  EXPECT_TRUE(allocations::Live() == live || Fixture::kLeavesRecords) << "something is lost";
  return refused;
}

template <typename Fixture, unsigned long n>
void Run(After after, const Operation<Fixture> (&rows)[n]) {
  for (const auto& [name, run] : rows) {
    SCOPED_TRACE(name);
    auto fixture = std::make_unique<Fixture>();
    fixture->Verify();
    const std::string before = fixture->State();
    run(*fixture);
    const std::string expected = fixture->State() + fixture->seen;
    for (const bool once : {true, false}) {
      for (long k = 0; Try(after, run, k, once, before, expected); ++k, ++points) {
        if (testing::Test::HasFailure()) {
          FAIL() << "allocation " << k << (once ? " alone" : " and all that follow");
        }
      }
    }
    ++operations;
  }
}

}  // namespace exhaustion

#endif
