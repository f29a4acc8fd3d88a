// The memory region of these tests. A program's definition takes the place of a shared library's.
// Each block is the system's own, so a sanitizer sees its end, and one of those that the tests
// count; fresh and released storage is filled with patterns; what is released twice, or never came
// from a region, ends the process.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/exhaustion/Exhaustion.h"

namespace {

// What stands before a block.
struct Front {
  unsigned long bytes;
  unsigned long unused;
  void* block;  // null once it is released; beyond what the system writes into its free blocks
  unsigned long tag;  // the owner, where the library looks for it, and a class without marks
};

}  // namespace

// Not plain, so that nothing is taken past this file.
OmMemoryRegion::OmMemoryRegion(bool) : lock(nullptr), plain(false) {}

OmMemoryRegion::~OmMemoryRegion() {
  exhaustion::lost += given.blocks;
}

void* OmMemoryRegion::Take(unsigned long bytes, bool) {
  auto* const front = static_cast<Front*>(::operator new(sizeof(Front) + bytes));
  *front = {bytes, 0, front + 1, reinterpret_cast<unsigned long>(this) << 16};
  given.Add(bytes);
  return std::memset(front->block, 0xa5, bytes);
}

void* OmMemoryRegion::AllocateZeroed(unsigned long bytes) {
  return std::memset(Allocate(bytes), 0, bytes);
}

void OmMemoryRegion::ReleaseAny(void* block) noexcept {
  Front* const front = static_cast<Front*>(block) - 1;
  if (front->block != block) {
    std::fputs("a block was released that no region has given out\n", stderr);
    std::abort();
  }
  reinterpret_cast<OmMemoryRegion*>(front->tag >> 16)->given.Take(front->bytes);
  std::memset(block, 0xdd, front->bytes);
  front->block = nullptr;
  ::operator delete(front);
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  alignas(OmMemoryRegion) static char storage[sizeof(OmMemoryRegion)];
  static auto* const heap = new (storage) OmMemoryRegion(true);
  return heap;
}

void OmMemoryRegion::WorkingRelease(bool) noexcept {}
