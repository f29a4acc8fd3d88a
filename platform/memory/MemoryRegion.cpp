#include "platform/memory/MemoryRegion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <mutex>
#include <new>

#include "backend/tables/om/Assert.h"

#if defined(__SANITIZE_ADDRESS__)
#define OM_SEES_ADDRESSES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OM_SEES_ADDRESSES 1
#endif
#endif

#ifdef OM_SEES_ADDRESSES
#include <sanitizer/asan_interface.h>
// For the few functions that read and write what is poisoned to everyone else. Never inlined,
// because their callers are checked.
#define OM_UNPOISONED __attribute__((noinline, no_sanitize("address")))
#else
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define OM_UNPOISONED inline
#endif

static_assert(sizeof(void*) == 8 && sizeof(unsigned long) == 8);

struct OmMemoryRegion::Lock {
  std::mutex mutex;
};

// Stands at the start of a chunk. The first tag follows, so that the block behind that is aligned.
struct OmMemoryRegion::Chunk {
  Chunk* next;
};

// Stands in front of a large block. The tag comes last, where every block has it.
struct OmMemoryRegion::Large {
  Large* previous;
  Large* next;
  unsigned long bytes;
  unsigned long tag;
};

// Locks a region that is shared.
class OmMemoryRegion::Guard {
 public:
  explicit Guard(Lock* lock_) : lock(lock_) {
    if (lock != nullptr) {
      lock->mutex.lock();
    }
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard() {
    if (lock != nullptr) {
      lock->mutex.unlock();
    }
  }

 private:
  Lock* lock;
};

// The default heap with its lock: one object that needs no memory, so that it cannot fail.
struct OmMemoryRegion::Heap {
  Lock lock;
  OmMemoryRegion region{&lock};
};

namespace {

constexpr unsigned long kTagBytes = 8;
constexpr unsigned long kStep = 16;
constexpr unsigned long kLastFineStride = 272;
constexpr unsigned int kFineClasses = 17;
constexpr unsigned int kLargeClass = 0x7fff;
constexpr unsigned long kFirstChunk = 1024;
constexpr unsigned long kLastChunk = 4UL << 20;
// Left out of each chunk, so that it fills whole pages together with the system's own header.
constexpr unsigned long kSystemHeader = 16;
constexpr unsigned long kLargestBlock = 1UL << 39;
// Bytes behind each block that belong to nobody. A sanitizer sees a read that goes past the block
// even where the block fills its class.
#ifdef OM_SEES_ADDRESSES
constexpr unsigned long kRedZone = 16;
#else
constexpr unsigned long kRedZone = 0;
#endif

// Bytes from one block of the class to the next. From 336 on they stand 16 above a round number, so
// that 2^n pointers and the tag fit without waste.
constexpr unsigned long StrideOf(unsigned int sizeClass) {
  if (sizeClass < kFineClasses) {
    return (sizeClass + 1) * kStep;
  }
  const unsigned int coarse = sizeClass - kFineClasses;
  return ((5UL + coarse % 4) << (6 + coarse / 4)) + kStep;
}

// The class with the smallest stride that is not below `stride`, a multiple of 16.
constexpr unsigned int ClassOf(unsigned long stride) {
  if (stride <= kLastFineStride) {
    return static_cast<unsigned int>(stride / kStep) - 1;
  }
  const unsigned long top = stride - kStep - 1;
  const auto doubling = static_cast<unsigned int>(std::bit_width(top)) - 1;
  const auto quarter = static_cast<unsigned int>(top >> (doubling - 2)) & 3U;
  return kFineClasses + (doubling - 8) * 4 + quarter;
}

constexpr unsigned int kAllClasses = 41;
constexpr unsigned long kLargestStride = StrideOf(kAllClasses - 1);
constexpr unsigned long kLargestSmall = kLargestStride - kTagBytes - kRedZone;

constexpr bool ClassesAgree() {
  unsigned long previous = 0;
  for (unsigned int c = 0; c < kAllClasses; ++c) {
    const unsigned long stride = StrideOf(c);
    if (stride % kStep != 0 || stride <= previous || ClassOf(stride) != c ||
        ClassOf(previous + kStep) != c) {
      return false;
    }
    previous = stride;
  }
  return previous == 16 * 1024 + kStep;
}
static_assert(ClassesAgree());

// StrideOf, ready made.
constexpr auto kStrides = [] {
  std::array<unsigned short, kAllClasses> strides{};
  for (unsigned int c = 0; c < kAllClasses; ++c) {
    strides[c] = static_cast<unsigned short>(StrideOf(c));
  }
  return strides;
}();

constexpr unsigned long RoundUp(unsigned long n, unsigned long step) {
  return (n + step - 1) / step * step;
}

// The class of a block of `bytes` bytes, which are at most kLargestSmall.
constexpr unsigned int SmallClassFor(unsigned long bytes) {
  return ClassOf(RoundUp(bytes + kTagBytes + kRedZone, kStep));
}

// A tag holds the owner in its upper 48 bits and the size class below. Where hardening is on, the
// top bit of the class marks a block that is released.
[[maybe_unused]] constexpr unsigned long kReleased = 0x8000;

unsigned long TagFor(OmMemoryRegion* owner, unsigned int sizeClass) {
  return reinterpret_cast<unsigned long>(owner) << 16 | sizeClass;
}

OmMemoryRegion* OwnerIn(unsigned long tag) {
  return reinterpret_cast<OmMemoryRegion*>(tag >> 16);
}

unsigned int ClassIn(unsigned long tag) {
  return static_cast<unsigned int>(tag & 0x7fff);
}

OM_UNPOISONED unsigned long TagOf(const void* block) {
  return static_cast<const unsigned long*>(block)[-1];
}
OM_UNPOISONED void SetTag(void* block, unsigned long tag) {
  static_cast<unsigned long*>(block)[-1] = tag;
}
OM_UNPOISONED void* NextFree(const void* block) {
  return *static_cast<void* const*>(block);
}
OM_UNPOISONED void SetNextFree(void* block, void* next) {
  *static_cast<void**>(block) = next;
}

// Tells a released block from a live one, where hardening is on.
inline void MarkReleased([[maybe_unused]] void* block, [[maybe_unused]] bool released) {
#if defined(OM_HARDENING) && OM_HARDENING
  const unsigned long tag = TagOf(block);
  SetTag(block, released ? tag | kReleased : tag & ~kReleased);
#endif
}

}  // namespace

OmMemoryRegion::OmMemoryRegion(bool shared) : OmMemoryRegion(shared ? new Lock : nullptr) {}

OmMemoryRegion::OmMemoryRegion(Lock* lock_) noexcept : lock(lock_), plain(lock_ == nullptr) {
  OM_HARDEN(OwnerIn(TagFor(this, 0)) == this, "OmMemoryRegion::OmMemoryRegion");
}

OmMemoryRegion::~OmMemoryRegion() {
  while (chunks != nullptr) {
    Chunk* const next = chunks->next;
    ::operator delete(chunks);
    chunks = next;
  }
  while (large != nullptr) {
    Large* const next = large->next;
    ::operator delete(large);
    large = next;
  }
  delete lock;
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  // Never destroyed: what static objects hold is released after the last destructor that could run
  // here.
  alignas(Heap) static unsigned char storage[sizeof(Heap)];
  static OmMemoryRegion* const heap = &(new (storage) Heap)->region;
  return heap;
}

void* OmMemoryRegion::Allocate(unsigned long bytes) {
  return plain ? Take(bytes) : TakeWithCare(bytes);
}

void OmMemoryRegion::Release(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  const unsigned long tag = TagOf(block);
  OmMemoryRegion* const owner = OwnerIn(tag);
  if (owner->lock == nullptr) {
    owner->Return(block, tag);
    return;
  }
  const Guard guard(owner->lock);
  owner->Return(block, tag);
}

void OmMemoryRegion::WorkingRelease(bool working_) noexcept {
  const Guard guard(lock);
  working = working_;
}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  const Guard guard(lock);
  limit = bytes;
  if (lock == nullptr) {  // a shared region is never plain, which Allocate reads without the lock
    plain = limit == ~0UL;
  }
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  const Guard guard(lock);
  return bytesInUse;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  const Guard guard(lock);
  return bytesHeld;
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  const Guard guard(lock);
  return liveBlocks;
}

inline void* OmMemoryRegion::Take(unsigned long bytes) {
  if (bytes > kLargestSmall) {
    return TakeLarge(bytes);
  }
  const unsigned int sizeClass = SmallClassFor(bytes);
  void* block = freeLists[sizeClass];
  if (block == nullptr) {
    return TakeFromChunk(bytes, sizeClass);
  }
  freeLists[sizeClass] = NextFree(block);
  MarkReleased(block, false);
  return Count(block, bytes, sizeClass);
}

inline void* OmMemoryRegion::Count(void* block, [[maybe_unused]] unsigned long bytes,
                                   unsigned int sizeClass) noexcept {
  ++liveBlocks;
  bytesInUse += kStrides[sizeClass] - kTagBytes;
  ASAN_UNPOISON_MEMORY_REGION(block, bytes);
  return block;
}

[[gnu::noinline]] void* OmMemoryRegion::TakeFromChunk(unsigned long bytes, unsigned int sizeClass) {
  const unsigned long stride = kStrides[sizeClass];
  if (static_cast<unsigned long>(bumpEnd - bump) < stride) {
    AddChunk(stride);
  }
  void* const block = bump + kTagBytes;
  bump += stride;
  SetTag(block, TagFor(this, sizeClass));
  return Count(block, bytes, sizeClass);
}

// Takes a block of a region that is shared or limited. Not inlined, to keep Allocate small.
[[gnu::noinline]] void* OmMemoryRegion::TakeWithCare(unsigned long bytes) {
  const Guard guard(lock);
  const unsigned long given =
      bytes > kLargestSmall ? bytes : kStrides[SmallClassFor(bytes)] - kTagBytes;
  if (bytesInUse > limit || given > limit - bytesInUse) {
    throw std::bad_alloc();
  }
  return Take(bytes);
}

// Takes as much again as all chunks are, or what one block needs where that is more.
void OmMemoryRegion::AddChunk(unsigned long stride) {
  constexpr unsigned long kAround = sizeof(Chunk) + kTagBytes;
  const unsigned long usual =
      chunkBytes == 0 ? kFirstChunk : std::min(std::bit_floor(chunkBytes), kLastChunk);
  const unsigned long whole =
      std::max(usual, RoundUp(stride + kAround + kSystemHeader, kFirstChunk));
  const unsigned long bytes = whole - kSystemHeader;
  auto* const chunk = static_cast<Chunk*>(::operator new(bytes));

  RetireChunk();
  chunk->next = chunks;
  chunks = chunk;
  chunkBytes += whole;
  bytesHeld += bytes;
  bump = reinterpret_cast<char*>(chunk + 1);
  bumpEnd = bump + (bytes - kAround) / kStep * kStep;
  ASAN_POISON_MEMORY_REGION(bump, bytes - sizeof(Chunk));
}

// Leaves what is unused of the current chunk to the free lists. It is less than the block that did
// not fit.
void OmMemoryRegion::RetireChunk() noexcept {
  while (bump != bumpEnd) {
    const auto rest = static_cast<unsigned long>(bumpEnd - bump);
    unsigned int sizeClass = ClassOf(rest);
    if (kStrides[sizeClass] > rest) {
      --sizeClass;
    }
    void* const block = bump + kTagBytes;
    SetTag(block, TagFor(this, sizeClass));
    PushFree(block, sizeClass);
    bump += kStrides[sizeClass];
  }
}

inline void OmMemoryRegion::PushFree(void* block, unsigned int sizeClass) noexcept {
  MarkReleased(block, true);
  SetNextFree(block, freeLists[sizeClass]);
  freeLists[sizeClass] = block;
}

void* OmMemoryRegion::TakeLarge(unsigned long bytes) {
  if (bytes > kLargestBlock) {
    throw std::bad_alloc();
  }
  const unsigned long whole = sizeof(Large) + bytes;
  auto* const front = static_cast<Large*>(::operator new(whole));
  front->previous = nullptr;
  front->next = large;
  front->bytes = bytes;
  if (large != nullptr) {
    large->previous = front;
  }
  large = front;
  ++liveBlocks;
  bytesInUse += bytes;
  bytesHeld += whole;
  void* const block = front + 1;
  SetTag(block, TagFor(this, kLargeClass));
  ASAN_POISON_MEMORY_REGION(&front->tag, kTagBytes);
  return block;
}

inline void OmMemoryRegion::Return(void* block, unsigned long tag) noexcept {
  OM_HARDEN((tag & kReleased) == 0, "OmMemoryRegion::Release");
  const unsigned int sizeClass = ClassIn(tag);
  OM_HARDEN(sizeClass < kAllClasses || sizeClass == kLargeClass, "OmMemoryRegion::Release");
  --liveBlocks;
  if (sizeClass == kLargeClass) {
    ReturnLarge(block);
    return;
  }
  const unsigned long bytes = kStrides[sizeClass] - kTagBytes;
  bytesInUse -= bytes;
  ASAN_POISON_MEMORY_REGION(block, bytes);
  if (working) {
    PushFree(block, sizeClass);
  } else {
    MarkReleased(block, true);
  }
}

void OmMemoryRegion::ReturnLarge(void* block) noexcept {
  Large* const front = static_cast<Large*>(block) - 1;
  bytesInUse -= front->bytes;
  MarkReleased(block, true);
  if (!working) {
    // Stays on the list until the region is destroyed.
    ASAN_POISON_MEMORY_REGION(block, front->bytes);
    return;
  }
  bytesHeld -= sizeof(Large) + front->bytes;
  (front->previous != nullptr ? front->previous->next : large) = front->next;
  if (front->next != nullptr) {
    front->next->previous = front->previous;
  }
  ::operator delete(front);
}
