#include "platform/memory/MemoryRegion.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "backend/tables/om/Assert.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) && !defined(__SANITIZE_ADDRESS__)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif

static_assert(sizeof(void*) == 8 && sizeof(unsigned long) == 8);

// There are two kinds of blocks. The word in front of either is its tag, with the owner in the
// upper 48 bits and below it:
// - of a block that was carved from a chunk: how many units it has, the tag included;
// - of a block of its own, allocated from the system by itself: kOwn. A Front stands before it.
// The tag of a released block is 0.

struct OmMemoryRegion::Lock {
  std::mutex mutex;
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

// The default heap with its lock: one object that allocates nothing, so that it cannot fail.
struct OmMemoryRegion::Heap {
  Lock lock;
  OmMemoryRegion region{&lock};
};

// Stands at the start of a chunk. The first tag follows it.
struct alignas(16) OmMemoryRegion::Chunk {
  Chunk* next;
  unsigned long pageBytes;  // 0 if the chunk is from the heap
};

// Stands before a block of its own, in the same allocation. The tag comes last, as before every
// block.
struct alignas(16) OmMemoryRegion::Front {
  Front* previous;
  Front* next;
  unsigned long bytes;
  unsigned long tag;
};

// What stands in a released block of more than kFineUnits. Smaller ones hold the link alone.
struct OmMemoryRegion::Free {
  void* next;
  unsigned long units;
  unsigned long isZero;  // whether all that follows is zero
};

namespace {

// Whether every block is an allocation of its own from the system's heap. OM_OWN_BLOCKS is for
// tests that count allocations: what a region still holds when it is destroyed is then not freed,
// and so is seen as lost.
#if defined(OM_OWN_BLOCKS) || (defined(OM_HARDENING) && OM_HARDENING) || \
    defined(__SANITIZE_ADDRESS__)
constexpr bool kOwnBlocks = true;
#else
constexpr bool kOwnBlocks = false;
#endif

// Whether a block of its own stays allocated for a while after its release, so that a second
// release is recognised. A sanitizer does that by itself, and so does who counts allocations.
#if defined(OM_HARDENING) && OM_HARDENING && !defined(OM_OWN_BLOCKS) && \
    !defined(__SANITIZE_ADDRESS__)
constexpr bool kQuarantine = true;
#else
constexpr bool kQuarantine = false;
#endif

// Keeps a released block, and returns the one that was kept longest, or null.
[[maybe_unused]] void* Quarantine(void* front) {
  static std::mutex mutex;
  static std::array<void*, 1024> ring{};
  static unsigned long next = 0;
  const std::lock_guard<std::mutex> guard(mutex);
  return std::exchange(ring[next++ % ring.size()], front);
}

constexpr unsigned long kTagBytes = 8;
constexpr unsigned long kMostUnits = 0xfffe;
constexpr unsigned long kOwn = 0xffff;
constexpr unsigned long kLargestCarved = kMostUnits * 16 - kTagBytes;
constexpr unsigned long kNoLimit = ~0UL;
constexpr unsigned long kLargestBlock = 1UL << 39;

constexpr unsigned long kFirstChunk = 1024;
constexpr unsigned long kLastHeapChunk = 64UL << 10;
constexpr unsigned long kLastPageChunk = 16UL << 20;
constexpr unsigned long kPage = 4096;
// Left out of each chunk, so that it fills whole pages together with the system's own record.
constexpr unsigned long kSystemHeader = 16;
// From so many bytes on, large blocks have chunks of their own.
constexpr unsigned long kLeastApart = 256UL << 10;
// How many released blocks are looked at for one that is large enough.
constexpr int kMostLooks = 16;

constexpr unsigned long UnitsFor(unsigned long bytes) {
  return (bytes + kTagBytes + 15) / 16;
}

// Returns the list of released blocks of `units` units.
constexpr unsigned long ListOf(unsigned long units) {
  if (units <= 16) {
    return units - 1;
  }
  const auto doubling = static_cast<unsigned long>(std::bit_width(units)) - 1;
  return 16 + 2 * (doubling - 4) + (units >> (doubling - 1) & 1);
}

constexpr unsigned long RoundUp(unsigned long n, unsigned long step) {
  return (n + step - 1) / step * step;
}

unsigned long& Tag(void* block) {
  return static_cast<unsigned long*>(block)[-1];
}

void*& NextFree(void* block) {
  return *static_cast<void**>(block);
}

unsigned long TagFor(const OmMemoryRegion* owner, unsigned long units) {
  return reinterpret_cast<unsigned long>(owner) << 16 | units;
}

// Returns the bytes of a carved block that is in use.
unsigned long SizeOf(void* block) {
  return (Tag(block) & kOwn) * 16 - kTagBytes;
}

OmMemoryRegion* OwnerOf(void* block) {
  return reinterpret_cast<OmMemoryRegion*>(Tag(block) >> 16);
}

// Returns pages that read as zeros and occupy no memory before somebody writes to them.
void* MapPages(unsigned long bytes) {
  void* const pages =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    throw std::bad_alloc();
  }
  return pages;
}

}  // namespace

OmMemoryRegion::OmMemoryRegion(bool shared) : OmMemoryRegion(shared ? new Lock : nullptr) {}

OmMemoryRegion::OmMemoryRegion(Lock* lock_) noexcept : lock(lock_) {
  static_assert(kUnit == 16 && kFineUnits == 16 && kUnitBits == kOwn &&
                ListOf(kMostUnits) + 1 == kLists);
  OM_ASSERT(TagFor(this, 0) >> 16 == reinterpret_cast<unsigned long>(this),
            "the address of a region has at most 48 bits", "platform/memory/MemoryRegion", 0,
            "OmMemoryRegion");
  Settle();
}

OmMemoryRegion::~OmMemoryRegion() {
#ifndef OM_OWN_BLOCKS
  while (own != nullptr) {
    ReturnOwn(own);
  }
#endif
  while (chunks != nullptr) {
    Chunk* const chunk = chunks;
    chunks = chunk->next;
    if (chunk->pageBytes != 0) {
      munmap(chunk, chunk->pageBytes);
    } else {
      ::operator delete(chunk);
    }
  }
  delete lock;
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  // Never destroyed, because destructors of static objects may release blocks after any destructor
  // that could run here.
  alignas(Heap) static unsigned char storage[sizeof(Heap)];
  static OmMemoryRegion* const heap = &(new (storage) Heap)->region;
  return heap;
}

// Settles what the inline operations may do, which neither lock nor count against a limit.
void OmMemoryRegion::Settle() noexcept {
  plain = lock == nullptr && working && limit == kNoLimit && !kOwnBlocks;
}

void* OmMemoryRegion::AllocateAny(unsigned long bytes) {
  const Guard guard(lock);
  if (kOwnBlocks || bytes > kLargestCarved) {
    return AllocateOwn(bytes, false);
  }
  bool isZero = false;
  return Get(UnitsFor(bytes), isZero);
}

void* OmMemoryRegion::AllocateZeroed(unsigned long bytes) {
  const Guard guard(lock);
  if (kOwnBlocks || bytes > kLargestCarved) {
    return AllocateOwn(bytes, true);
  }
  bool isZero = false;
  void* const block = Get(UnitsFor(bytes), isZero);
  // All of the block, because whoever gets it after ReleaseZeroed() may need more of it.
  return isZero ? block : std::memset(block, 0, SizeOf(block));
}

void OmMemoryRegion::ReleaseAny(void* block, bool isZero) noexcept {
  if (block != nullptr) {
    OM_ASSERT(Tag(block) != 0, "the block is in use", "platform/memory/MemoryRegion", 0,
              "OmMemoryRegion::Release");
    OwnerOf(block)->Return(block, isZero);
  }
}

void OmMemoryRegion::WorkingRelease(bool working_) noexcept {
  const Guard guard(lock);
  working = working_;
  Settle();
}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  const Guard guard(lock);
  counted = InUse().bytes;
  limit = bytes;
  Settle();
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  const Guard guard(lock);
  return InUse().bytes;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  const Guard guard(lock);
  return bytesHeld - (fine.zero ? fine.Bytes() : 0) - (coarse.zero ? coarse.Bytes() : 0);
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  const Guard guard(lock);
  return InUse().blocks;
}

OmMemoryRegion::Tally OmMemoryRegion::InUse() const noexcept {
  Tally tally = used;
  for (unsigned long list = 0; list != kLists; ++list) {
    for (void* block = freeLists[list]; block != nullptr; block = NextFree(block)) {
      const unsigned long units =
          list < kFineUnits ? list + 1 : static_cast<const Free*>(block)->units;
      tally.Subtract(units * kUnit - kTagBytes);
    }
  }
  return tally;
}

void OmMemoryRegion::CheckLimit(unsigned long bytes) const {
  if (limit != kNoLimit && (counted > limit || bytes > limit - counted)) {
    throw std::bad_alloc();
  }
}

// --- Carved blocks ------------------------------------------------------------------------------

// Allocates a block, and sets `isZero` if every byte of it is zero.
inline void* OmMemoryRegion::Get(unsigned long units, bool& isZero) {
  CheckLimit(units * kUnit - kTagBytes);
  if (units <= kFineUnits) {
    if (void* const block = freeLists[units - 1]; block != nullptr) {
      freeLists[units - 1] = NextFree(block);
      Tag(block) = TagFor(this, units);
      counted += SizeOf(block);
      return block;
    }
  } else if (Free* const free = FindFree(units); free != nullptr) {
    isZero = free->isZero != 0;
    Tag(free) = TagFor(this, free->units);
    *free = {};
    counted += SizeOf(free);
    return free;
  }
  Rest& rest = units <= kFineUnits || bytesHeld < kLeastApart ? fine : coarse;
  if (rest.Bytes() < units * kUnit) {
    AddChunk(rest, units);
  }
  isZero = rest.zero;
  counted += units * kUnit - kTagBytes;
  return Carve(rest, units);
}

// Removes a released block of at least `units` units, and at most about twice as many, from its
// list, and returns it, or null if none is found soon.
OmMemoryRegion::Free* OmMemoryRegion::FindFree(unsigned long units) noexcept {
  const unsigned long first = ListOf(units);
  int looks = kMostLooks;
  for (unsigned long list = first; list < std::min(first + 3, kLists); ++list) {
    void** place = &freeLists[list];
    for (; *place != nullptr && looks != 0; --looks) {
      auto* const free = static_cast<Free*>(*place);
      if (free->units >= units &&
          (limit == kNoLimit || free->units * kUnit - kTagBytes <= limit - counted)) {
        *place = free->next;
        return free;
      }
      place = &free->next;
    }
  }
  return nullptr;
}

inline void OmMemoryRegion::PushFree(void* block, unsigned long units, bool isZero) noexcept {
  void*& list = freeLists[ListOf(units)];
  if (units > kFineUnits) {
    *static_cast<Free*>(block) = {list, units, static_cast<unsigned long>(isZero)};
  } else {
    NextFree(block) = list;
  }
  Tag(block) = 0;
  list = block;
}

void OmMemoryRegion::Return(void* block, bool isZero) noexcept {
  const Guard guard(lock);
  const unsigned long units = Tag(block) & kUnitBits;
  if (units == kOwn) {
    Front* const front = static_cast<Front*>(block) - 1;
    counted -= front->bytes;
    used.Subtract(front->bytes);
    if (working || kOwnBlocks) {
      ReturnOwn(front);
    }
    return;
  }
  counted -= SizeOf(block);
  if (working) {
    PushFree(block, units, isZero);
  } else {
    used.Subtract(SizeOf(block));
    Tag(block) = 0;
  }
}

// Begins a new chunk with room for `units` units: from the heap as long as the region is small,
// else of pages, which occupy no memory before blocks reach them. What is left of the old one
// becomes a released block. In a large region, blocks of more than kFineUnits have chunks of their
// own, so that its cells lie close to each other, in the order in which they were made.
void OmMemoryRegion::AddChunk(Rest& rest, unsigned long units) {
  // Behind the record, a word aligns the block that follows the first tag.
  constexpr unsigned long kAround = sizeof(Chunk) + kTagBytes;
  const unsigned long least = units * kUnit + kAround;
  const bool isPages = bytesHeld >= kLeastApart || least > kLastHeapChunk;
  const unsigned long whole =
      isPages ? RoundUp(std::max(std::clamp(bytesHeld, kLeastApart, kLastPageChunk), least), kPage)
              : RoundUp(std::max(std::clamp(bytesHeld / 4, kFirstChunk, kLastHeapChunk),
                                 least + kSystemHeader),
                        kFirstChunk);
  const unsigned long bytes = isPages ? whole : whole - kSystemHeader;
  void* const memory = isPages ? MapPages(bytes) : ::operator new(bytes);
  if (const unsigned long left = rest.Bytes() / kUnit; left != 0) {
    PushFree(Carve(rest, left), left, rest.zero);
  }
  chunks = new (memory) Chunk{chunks, isPages ? bytes : 0};
  bytesHeld += bytes;
  rest.bump = reinterpret_cast<char*>(chunks) + kAround;
  rest.end = reinterpret_cast<char*>(chunks) + bytes;
  rest.zero = isPages;
}

// --- Blocks of their own ------------------------------------------------------------------------

void* OmMemoryRegion::AllocateOwn(unsigned long bytes, bool zeroed) {
  if (bytes > kLargestBlock) {
    throw std::bad_alloc();
  }
  CheckLimit(bytes);
  const unsigned long whole = sizeof(Front) + bytes;
  void* const memory = kOwnBlocks ? ::operator new(whole) : MapPages(RoundUp(whole, kPage));
  own = new (memory) Front{nullptr, own, bytes, TagFor(this, kOwn)};
  if (own->next != nullptr) {
    own->next->previous = own;
  }
  counted += bytes;
  used.Add(bytes);
  bytesHeld += whole;
  if (kOwnBlocks) {
    // A pattern, so that nobody relies on what fresh memory holds.
    std::memset(own + 1, zeroed ? 0 : 0xa5, bytes);
  }
  return own + 1;
}

void OmMemoryRegion::ReturnOwn(Front* front) noexcept {
  (front->previous != nullptr ? front->previous->next : own) = front->next;
  if (front->next != nullptr) {
    front->next->previous = front->previous;
  }
  const unsigned long whole = sizeof(Front) + front->bytes;
  bytesHeld -= whole;
  front->tag = 0;
  if (!kOwnBlocks) {
    munmap(front, RoundUp(whole, kPage));
  } else if (kQuarantine) {
    ::operator delete(Quarantine(front));
  } else {
    ::operator delete(front);
  }
}
