// Failure of the ordinary heap, for tests: every operator new of the test program passes through
// here, those of the libraries included. Regions take their chunks elsewhere and are not touched.

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
// Allocations that this thread made so far.
long Made();

// Runs `operation` with its allocation number `n` failing. Returns whether it failed with
// bad_alloc.
template <typename Operation>
bool FailsAt(long n, Operation operation) {
  try {
    FailAfter(n);
    operation();
    FailAfter(-1);
    return false;
  } catch (const std::bad_alloc&) {
    FailAfter(-1);
    return true;
  }
}

}  // namespace allocations

#endif
