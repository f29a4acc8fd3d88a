// Failure of the ordinary heap: every operator new of the test program passes through here, those
// of the libraries and the chunks of regions included.

#ifndef TESTS_SUPPORT_ALLOCATIONS_H
#define TESTS_SUPPORT_ALLOCATIONS_H

#include <atomic>
#include <new>

namespace allocations {

inline std::atomic<long> live{0};
inline thread_local long remaining = -1;
inline thread_local bool failsOnce = false;
inline thread_local long refused = 0;
inline thread_local long asked = 0;

// Lets the next `n` allocations succeed and the one after them fail. Negative: no limit. With
// `once`, those behind the failed one succeed again.
inline void FailAfter(long n, bool once = false) {
  remaining = n;
  failsOnce = once;
  refused = 0;
}
// Counts an allocation that is about to be made, and tells whether it has to fail.
inline bool Refuse() {
  ++asked;
  if (remaining != 0) {
    remaining -= remaining > 0 ? 1 : 0;
    return false;
  }
  ++refused;
  remaining = failsOnce ? -1 : 0;
  return true;
}
// Allocations that were refused since FailAfter, asked for so far, and not given back.
inline long Refused() {
  return refused;
}
inline long Asked() {
  return asked;
}
inline long Live() {
  return live;
}

// Returns whether `operation` fails with bad_alloc where its allocation number `n` fails.
template <typename Operation>
bool FailsAt(long n, Operation operation) {
  FailAfter(n);
  bool failed = false;
  try {
    operation();
  } catch (const std::bad_alloc&) {
    failed = true;
  }
  FailAfter(-1);
  return failed;
}

}  // namespace allocations

#endif
