#include "tests/exhaustion/TestRegion.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <utility>

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

// What a region would hold in its own fields.
struct State {
  unsigned long blocks = 0;
  unsigned long bytes = 0;
  unsigned long limit = ~0UL;
};

template <typename Key, typename Value>
using Map = std::map<Key, Value, std::less<Key>, Uncounted<std::pair<const Key, Value>>>;

template <typename Key, typename Value>
Map<Key, Value>& All() {
  static auto& all = *new (std::malloc(sizeof(Map<Key, Value>))) Map<Key, Value>;
  return all;
}

Map<void*, Block>& Blocks() {
  return All<void*, Block>();
}

State& StateOf(const OmMemoryRegion* region) {
  return All<const OmMemoryRegion*, State>()[region];
}

long lost = 0;

}  // namespace

long regions::LiveBlocks() {
  return static_cast<long>(Blocks().size());
}

long regions::LostBlocks() {
  return lost;
}

// Not plain, so that nothing is taken past this file.
OmMemoryRegion::OmMemoryRegion(bool) : plain(false) {
  StateOf(this) = State();
}

OmMemoryRegion::~OmMemoryRegion() {
  lost += static_cast<long>(StateOf(this).blocks);
}

void* OmMemoryRegion::Take(unsigned long bytes, bool) {
  State& state = StateOf(this);
  if (allocations::Refuse() || bytes > 1UL << 39 || state.bytes + bytes > state.limit) {
    throw std::bad_alloc();
  }
  void* const block = std::malloc(bytes != 0 ? bytes : 1);
  std::memset(block, 0xa5, bytes);
  Blocks().emplace(block, Block{this, bytes});
  ++state.blocks;
  state.bytes += bytes;
  return block;
}

void* OmMemoryRegion::AllocateZeroed(unsigned long bytes) {
  return std::memset(Allocate(bytes), 0, bytes);
}

unsigned long* OmMemoryRegion::Marks(void*) noexcept {
  return nullptr;
}

void OmMemoryRegion::Release(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  const auto entry = Blocks().find(block);
  if (entry == Blocks().end()) {
    std::fputs("a block was released that no region has given out\n", stderr);
    std::abort();
  }
  const auto [owner, bytes] = entry->second;
  --StateOf(owner).blocks;
  StateOf(owner).bytes -= bytes;
  std::memset(block, 0xdd, bytes);
  Blocks().erase(entry);
  std::free(block);
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  static OmMemoryRegion& heap = *new (std::malloc(sizeof(OmMemoryRegion))) OmMemoryRegion(true);
  return &heap;
}

void OmMemoryRegion::WorkingRelease(bool) noexcept {}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  StateOf(this).limit = bytes;
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  return StateOf(this).bytes;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  return StateOf(this).bytes;
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  return StateOf(this).blocks;
}
