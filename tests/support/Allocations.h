// Failure of the ordinary heap, for tests: every operator new of the test program passes through
// here, those of the libraries and the chunks of regions included.

#ifndef TESTS_SUPPORT_ALLOCATIONS_H
#define TESTS_SUPPORT_ALLOCATIONS_H

#include <new>

namespace allocations {

// Lets the next `n` allocations of this thread succeed and the one after them fail. Negative: no
// limit. With `once`, those behind the failed one succeed again.
void FailAfter(long n, bool once = false);
// Counts an allocation of this thread that is about to be made, and tells whether it has to fail.
// For allocators other than operator new.
bool Refuse();
// Allocations that this thread was refused since FailAfter.
long Refused();
// Allocations that this thread asked for so far.
long Asked();
// Allocations that were made and not given back, over all threads.
long Live();

// Runs `operation` with its allocation number `n` failing. Returns whether it failed with
// bad_alloc.
template <typename Operation>
bool FailsAt(long n, Operation operation) {
  bool failed = false;
  FailAfter(n);
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
