#include "tests/support/Allocations.h"

#include <cstdlib>

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  void* const block = allocations::Refuse() ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
  allocations::live += block != nullptr ? 1 : 0;
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
  allocations::live -= block != nullptr ? 1 : 0;
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}
