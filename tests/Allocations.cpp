#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<long> live{0};
thread_local long made = 0;
thread_local long remaining = -1;

}  // namespace

void allocations::FailAfter(long n) {
  remaining = n;
}

long allocations::Live() {
  return live;
}

long allocations::Made() {
  return made;
}

void* operator new(std::size_t bytes) {
  if (remaining == 0) {
    throw std::bad_alloc();
  }
  remaining -= remaining > 0 ? 1 : 0;
  void* const block = std::malloc(bytes != 0 ? bytes : 1);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++made;
  ++live;
  return block;
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  try {
    return operator new(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* block) noexcept {
  live -= block != nullptr ? 1 : 0;
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}
