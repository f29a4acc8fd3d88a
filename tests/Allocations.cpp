#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<long> live{0};
thread_local long remaining = -1;
thread_local bool failsOnce = false;
thread_local long refused = 0;
thread_local long asked = 0;

}  // namespace

void allocations::FailAfter(long n, bool once) {
  remaining = n;
  failsOnce = once;
  refused = 0;
}

bool allocations::Refuse() {
  ++asked;
  if (remaining == 0) {
    ++refused;
    remaining = failsOnce ? -1 : 0;
    return true;
  }
  remaining -= remaining > 0 ? 1 : 0;
  return false;
}

long allocations::Refused() {
  return refused;
}

long allocations::Asked() {
  return asked;
}

long allocations::Live() {
  return live;
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  void* const block = allocations::Refuse() ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
  live += block != nullptr ? 1 : 0;
  return block;
}

void* operator new(std::size_t bytes) {
  void* const block = operator new(bytes, std::nothrow);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void operator delete(void* block) noexcept {
  live -= block != nullptr ? 1 : 0;
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}
