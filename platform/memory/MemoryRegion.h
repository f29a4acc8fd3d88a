// OmMemoryRegion, the arena that all of a table's memory is charged to.
//
// Blocks come from chunks that a region takes from the system and gives back as a whole when it is
// destroyed. A released block is used again by its own region. A block tells its owner, so
// releasing needs no region. The region is lean while it is small: it takes nothing before the
// first block, then 1 KiB, and as much again as it holds whenever that is used up; above 128 KiB 64
// KiB at a time. As long as it is small it uses released blocks only when a chunk is used up. From
// 256 KiB on, blocks above 264 bytes have chunks of their own, so that small ones stand close to
// each other. A block costs 8 bytes more than its size class, one with marks some 100. Blocks above
// 16 KiB are taken from the system one by one; those of zeros come from chunks of their own up to 1
// MiB. A chunk is given back only with its region.

#ifndef PLATFORM_MEMORY_MEMORYREGION_H
#define PLATFORM_MEMORY_MEMORYREGION_H

#include "platform/Export.h"

// A region built with `shared` false belongs to one thread at a time and takes no lock; one built
// with true may be used by several threads at once. Destroying a region frees everything that it
// still holds, without running any destructor of what lives in it.
//
// Taking and releasing a small block count nothing, which would cost more than all the rest: what
// is alive is told from what was carved from chunks, less what the free lists hold.
//
// Invariants: each block on freeLists[c] is of class c; a block that was ever given out is alive,
// or on a free list, or no longer counted; `bytesHeld` is the sum of all chunks, large blocks and
// blocks of zeros.
class OM_PLATFORM_API OmMemoryRegion {
 public:
  explicit OmMemoryRegion(bool shared);
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;
  ~OmMemoryRegion();

  // Returns a block of at least `bytes` bytes (0 included), aligned to 16 bytes. Never null: throws
  // std::bad_alloc where there is no memory, where the limit is reached, or where `bytes` is beyond
  // what a block can hold (512 GiB). The region is then as it was.
  [[nodiscard]] void* Allocate(unsigned long bytes);

  // Returns such a block where it is at hand, as small blocks mostly are, and null elsewhere.
  [[nodiscard]] void* TryAllocate(unsigned long bytes) noexcept;

  // As Allocate, and every byte is zero. Blocks above kMostUnmarked come from pages that nobody has
  // touched, in a region that is not small, and have marks: a bit for each kMarkedBytes of it,
  // which the owner sets where it writes. Whoever looks for what was written need not look at the
  // rest, and the system gives no memory for it.
  [[nodiscard]] void* AllocateZeroed(unsigned long bytes);
  // Returns the marks of a live block, the first bit of the first word for its first bytes, or null
  // for a block that has none.
  [[nodiscard]] static unsigned long* Marks(void* block) noexcept;
  static constexpr unsigned long kMarkedBytes = 64;
  // Blocks up to this size have no marks.
  static constexpr unsigned long kMostUnmarked = 1024;

  // Returns a block to the region that it came from, which the block itself knows. Null is ignored.
  static void Release(void* block) noexcept;

  // Objects that are to be destroyed and released, and wait for their memory to come.
  struct Postponed {
    static constexpr unsigned long kObjects = 16;
    explicit Postponed(void (*end_)(void* object)) : end(end_) {}
    void (*end)(void* object);     // destroys and releases an object
    void* objects[kObjects] = {};  // in a ring; some null
    unsigned long next = 0;        // counts on; where the next one goes, by kObjects
  };
  // Takes an object of this region that is to be destroyed and released, and asks for its memory.
  // Returns, for the caller to do that to, the one that has waited in `waiting` longest, or null.
  // Those that wait are ended before the region tells what it holds, works otherwise or takes more
  // from the system; where it is destroyed first, they go with it as they stand. `waiting` is the
  // same at every call and lives as long as the region. A region that is shared, limited, on its
  // way out or watched, or holds blocks of more than 16 KiB, returns the object itself.
  [[nodiscard]] void* Postpone(Postponed& waiting, void* object) noexcept;

  // Returns the process-wide default region, which several threads may use at once. It lives until
  // the process ends.
  static OmMemoryRegion* DefaultHeap() noexcept;

  // Returns `region`, or the default heap where it is null. Defined in backend/tables/om/Vector.h.
  static OmMemoryRegion* SelectHeap(OmMemoryRegion* region) noexcept;

  // With false, tells the region that it is on its way out: from then on releasing a block does no
  // more than it must, and blocks that are released are no longer used again. With true, the region
  // works as usual again; what was released in between stays held until the region is destroyed.
  void WorkingRelease(bool working) noexcept;

  // Makes Allocate fail where it would bring BytesInUse() above `bytes`. A new region has no limit,
  // which is the largest number.
  void Limit(unsigned long bytes) noexcept;

  // Bytes of the blocks that are allocated and not released, each counted with the size it was
  // given (its size class, no header; a block of zeros that is inside a small one may count as the
  // class below). Costs a walk over the released blocks, like LiveBlocks().
  unsigned long BytesInUse() const noexcept;
  // Bytes that the region holds from the system, its free blocks and headers included. Pages that
  // no block has reached yet do not count.
  unsigned long BytesHeld() const noexcept;
  // Number of blocks that are allocated and not released.
  unsigned long LiveBlocks() const noexcept;

 private:
  // Stands in front of a block that is large or has marks. The tag comes last, where every block
  // has it. The marks stand in front of this, so that they share its page.
  struct Large {
    unsigned long* marks;  // null where there are none
    void* inside;          // the small block that this is inside of, or null
    Large* previous;
    Large* next;
    unsigned long bytes;
    unsigned long tag;
  };
  struct Chunk;
  struct Heap;
  struct Lock;
  struct Span;
  class Guard;

  // A number of blocks and the sum of their sizes.
  struct Tally {
    void Add(unsigned long bytes_) noexcept { ++blocks, bytes += bytes_; }
    void Take(unsigned long bytes_) noexcept { --blocks, bytes -= bytes_; }
    unsigned long blocks = 0;
    unsigned long bytes = 0;
  };

  // The unused rest of a chunk.
  struct Rest {
    [[nodiscard]] unsigned long Bytes() const noexcept {
      return static_cast<unsigned long>(end - bump);
    }
    char* bump = nullptr;
    char* end = nullptr;
    char* spanEnd = nullptr;  // how far `end` may move; the same unless it is in a span
  };

  // 17 classes in steps of 16 bytes, then four for each of six doublings.
  static constexpr unsigned int kClasses = 41;
  // Where a tag tells the class.
  static constexpr unsigned long kClassBits = 0x3fff;
  // Blocks up to this size are of the first 17 classes, whose sizes are 8, 24, 40, …
  static constexpr unsigned long kMostFine = 264;

  explicit OmMemoryRegion(Lock* lock_) noexcept;

  static void ReleaseAny(void* block) noexcept;
  void EndPostponed() const noexcept;
  void* Take(unsigned long bytes, bool zeroed);
  void* TakeWithCare(unsigned long bytes, bool zeroed);
  void* TakeAny(unsigned long bytes);
  void* TakeFromChunk(unsigned long bytes, unsigned int sizeClass);
  void* TakeLarge(unsigned long bytes);
  void* TakeZeroed(unsigned long bytes);
  void* TakeInside(unsigned long bytes);
  void* CarveExactly(unsigned long bytes);
  Large* FindZeroed(unsigned long bytes) noexcept;
  Large* CarveZeroed(unsigned long bytes);
  void* Carve(Rest& rest, unsigned int sizeClass) noexcept;
  void AddChunk(Rest& rest, unsigned long stride);
  void Extend(Rest& rest) noexcept;
  void AddSpan(Rest& rest);
  void Retire(Rest& rest) noexcept;
  void Return(void* block, unsigned long tag) noexcept;
  void ReturnWithCare(void* block, unsigned long tag) noexcept;
  void ReturnLarge(Large* front) noexcept;
  void PushFree(void* block, unsigned int sizeClass) noexcept;
  void Link(Large* front, unsigned long bytes, unsigned int sizeClass) noexcept;
  void SettlePlain() noexcept;
  void Open() noexcept;
  static void Clear(Large& front) noexcept;
  [[nodiscard]] static unsigned long Whole(const Large& front) noexcept;
  static void GiveBack(Large* front) noexcept;
  [[nodiscard]] static unsigned long SizeOf(void* block, unsigned long tag) noexcept;
  [[nodiscard]] Tally InUse() const noexcept;

  Lock* lock;  // null unless the region is shared
  bool plain;  // neither shared, limited, on its way out nor hardened: nothing has to be asked
  bool working = true;
  bool leaving = false;  // on its way out, and plain otherwise
  // Whether the region is plain, and small blocks are looked for among released ones before one is
  // carved. Not in a small region as long as the chunk lasts: it has so few that whether there is
  // one is hard to foretell.
  bool reuses = false;
  unsigned long open = 0;  // address of `fine.end` in a plain region that does not; 0 elsewhere
  Rest fine;               // for all blocks, but for coarse ones where these have their own
  Rest coarse;             // in spans of its own, so that small blocks stand close to each other;
                           // for all blocks of a shared region
  void* freeLists[kClasses];
  // Blocks carved from chunks. One number, so that taking a block writes no more than it must; what
  // they come to is told from how far the chunks are used.
  unsigned long carved = 0;
  unsigned long settled = 0;  // with the addresses in `fine` and `coarse`, bytes carved from chunks
  Tally given;                // large blocks, less small ones released on the way out
  unsigned long counted = 0;  // bytes in use where there is a limit
  unsigned long limit = ~0UL;
  unsigned long bytesHeld = 0;
  unsigned long chunkBytes = 0;  // what all chunks cost the system; decides the size of the next
  Chunk* chunks = nullptr;
  Large* large = nullptr;
  char* zeros = nullptr;  // the rest of a chunk of untouched pages
  char* zerosEnd = nullptr;
  Span* spans = nullptr;
  unsigned long zeroChunkBytes = 0;
  Large* freeZeroed = nullptr;             // released blocks from those chunks
  mutable Postponed* postponed = nullptr;  // where something may wait; never in a shared region
};

// Inline for what is done most, a small block of a size that was released before or is next in the
// chunk: to know the size when compiling makes it three times as fast.
inline void* OmMemoryRegion::TryAllocate(unsigned long bytes) noexcept {
  if (bytes > kMostFine) {
    return nullptr;
  }
  const unsigned long sizeClass = (bytes + 7) / 16;
  const unsigned long next = reinterpret_cast<unsigned long>(fine.bump) + (sizeClass + 1) * 16;
  if (next > open) {
    if (!reuses) {
      return nullptr;
    }
    void*& list = freeLists[sizeClass];
    if (void* const block = list; block != nullptr) {
      list = *static_cast<void**>(block);
      return block;
    }
    if (next > reinterpret_cast<unsigned long>(fine.end)) {
      return nullptr;
    }
  }
  auto* const tag = reinterpret_cast<unsigned long*>(fine.bump);
  *tag = reinterpret_cast<unsigned long>(this) << 16 | sizeClass;
  fine.bump = reinterpret_cast<char*>(next);
  ++carved;
  return tag + 1;
}

inline void* OmMemoryRegion::Allocate(unsigned long bytes) {
  void* const block = TryAllocate(bytes);
  return block != nullptr ? block : Take(bytes, false);
}

// Inline like Allocate. What stands in front of a block is poisoned where a sanitizer watches.
[[gnu::no_sanitize_address]] inline void OmMemoryRegion::Release(void* block) noexcept {
  if (block != nullptr) {
    const unsigned long tag = static_cast<const unsigned long*>(block)[-1];
    auto* const owner = reinterpret_cast<OmMemoryRegion*>(tag >> 16);
    const unsigned long sizeClass = tag & kClassBits;
    if (owner->plain && sizeClass < kClasses) {
      *static_cast<void**>(block) = owner->freeLists[sizeClass];
      owner->freeLists[sizeClass] = block;
      return;
    }
    ReleaseAny(block);
  }
}

inline void* OmMemoryRegion::Postpone(Postponed& waiting, void* object) noexcept {
  if (!plain || large != nullptr) {
    return object;
  }
  // Addresses, because there may be no object. It may lie across two lines of the cache.
  const auto address = reinterpret_cast<unsigned long>(object);
  __builtin_prefetch(reinterpret_cast<const void*>(address - sizeof(void*)), 1);
  __builtin_prefetch(reinterpret_cast<const void*>(address + 2 * sizeof(void*)), 1);
  postponed = &waiting;
  void*& place = waiting.objects[waiting.next++ % Postponed::kObjects];
  void* const longest = place;
  place = object;
  return longest;
}

[[gnu::no_sanitize_address]] inline unsigned long* OmMemoryRegion::Marks(void* block) noexcept {
  const Large* const front = static_cast<Large*>(block) - 1;
  return (front->tag & kClassBits) < kClasses ? nullptr : front->marks;
}

#endif
