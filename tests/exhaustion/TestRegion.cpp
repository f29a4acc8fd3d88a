#include "tests/exhaustion/TestRegion.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

#include "backend/tables/om/Vector.h"
#include "platform/memory/MemoryRegion.h"
#include "tests/support/Allocations.h"

namespace {

struct Block {
  OmMemoryRegion* owner;
  unsigned long bytes;
};

// Takes its storage past the ordinary heap, which these tests count.
template <typename T>
struct Uncounted {
  using value_type = T;
  Uncounted() = default;
  template <typename U>
  Uncounted(const Uncounted<U>&) {}
  T* allocate(unsigned long n) { return static_cast<T*>(std::malloc(n * sizeof(T))); }
  void deallocate(T* p, unsigned long) { std::free(p); }
  template <typename U>
  bool operator==(const Uncounted<U>&) const {
    return true;
  }
};

using Blocks = std::map<void*, Block, std::less<void*>, Uncounted<std::pair<void* const, Block>>>;

Blocks& AllBlocks() {
  static Blocks& blocks = *new (std::malloc(sizeof(Blocks))) Blocks;
  return blocks;
}

long lost = 0;

}  // namespace

long regions::LiveBlocks() {
  return static_cast<long>(AllBlocks().size());
}

long regions::LostBlocks() {
  return lost;
}

OmMemoryRegion::OmMemoryRegion(bool) : lock(nullptr), plain(true) {}

OmMemoryRegion::~OmMemoryRegion() {
  lost += static_cast<long>(liveBlocks);
}

void* OmMemoryRegion::Allocate(unsigned long bytes) {
  if (allocations::Refuse() || bytes > 1UL << 39 || bytesInUse + bytes > limit) {
    throw std::bad_alloc();
  }
  void* const block = std::malloc(bytes != 0 ? bytes : 1);
  std::memset(block, 0xa5, bytes);
  AllBlocks().emplace(block, Block{this, bytes});
  ++liveBlocks;
  bytesInUse += bytes;
  return block;
}

void OmMemoryRegion::Release(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  const auto entry = AllBlocks().find(block);
  if (entry == AllBlocks().end()) {
    std::fputs("a block was released that no region has given out\n", stderr);
    std::abort();
  }
  --entry->second.owner->liveBlocks;
  entry->second.owner->bytesInUse -= entry->second.bytes;
  std::memset(block, 0xdd, entry->second.bytes);
  AllBlocks().erase(entry);
  std::free(block);
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  static OmMemoryRegion& heap = *new (std::malloc(sizeof(OmMemoryRegion))) OmMemoryRegion(true);
  return &heap;
}

void OmMemoryRegion::WorkingRelease(bool working_) noexcept {
  working = working_;
}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  limit = bytes;
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  return bytesInUse;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  return bytesInUse;
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  return liveBlocks;
}
