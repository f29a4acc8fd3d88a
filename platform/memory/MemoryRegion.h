// OmMemoryRegion, the arena that all of a table's memory is charged to.
//
// A region carves blocks from chunks, uses released blocks again, and gives the chunks back to the
// system when it is destroyed. The first chunk comes with the first block and has 1 KiB; later ones
// are larger. A block costs its size and 8 bytes, rounded up to a multiple of 16. Blocks above 1
// MiB have pages of their own, which go back when they are released. Allocating and releasing cost
// constant time. With a sanitizer or the hardening checks, every block is an allocation of its own
// from the system, so that tools see where it begins and ends.

#ifndef PLATFORM_MEMORY_MEMORYREGION_H
#define PLATFORM_MEMORY_MEMORYREGION_H

#include <mutex>

#include "platform/Export.h"

struct OmOwnBlock;

// A region constructed with `shared` true may be used by several threads at once. Any other locks
// nothing: one thread at a time uses it or releases its blocks. The destructor frees every block,
// without running any destructor of what is in it.
class OM_PLATFORM_API OmMemoryRegion {
 public:
  explicit OmMemoryRegion(bool shared) noexcept;
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;
  ~OmMemoryRegion();

  // Returns a block of at least `bytes` bytes (0 included), aligned to 16 bytes; never null. Throws
  // std::bad_alloc if the system has no memory, if the limit is reached, or if `bytes` is above 512
  // GiB. The region is then as it was.
  [[nodiscard]] void* Allocate(unsigned long bytes);
  // As Allocate, and every byte is zero. The pages of a block above 1 MiB occupy no memory before
  // somebody writes to them, unless every block is an allocation of its own.
  [[nodiscard]] void* AllocateZeroed(unsigned long bytes) { return AllocateAny(bytes, true); }

  // Returns a block to its region, which the block knows and which must still exist. Ignores null.
  // Ends the process if the block was released before and is not in use again. Of that, a hardened
  // build knows the last 1024 blocks that the process released, others no block above 1 MiB.
  static void Release(void* block) noexcept;
  // As Release, for a block from AllocateZeroed whose bytes are all zero again: AllocateZeroed may
  // return it without writing to it. What Allocate returned may have other bytes behind its end.
  static void ReleaseZeroed(void* block) noexcept { ReleaseAny(block, true); }

  // Returns the default region. It is shared, and exists until the process ends.
  static OmMemoryRegion* DefaultHeap() noexcept;
  // Returns `region`, or the default heap if it is null.
  static OmMemoryRegion* SelectHeap(OmMemoryRegion* region) noexcept {
    return region != nullptr ? region : DefaultHeap();
  }

  // With false, says that the region is about to be destroyed: a block that is released from then
  // on is only counted, and not used again. Allocate works as before. With true, the region works
  // as usual again; what was released in between stays held until the region is destroyed.
  void WorkingRelease(bool working) noexcept;
  // Makes Allocate fail if it would bring BytesInUse() above `bytes`. A new region has no limit,
  // which is the largest number.
  void Limit(unsigned long bytes) noexcept;

  // Bytes of the blocks that are allocated and not released, with what they are larger than asked
  // for: up to 15 bytes, or three times the size if used again. Costs a walk over the released
  // blocks, like LiveBlocks(): allocating and releasing small blocks count nothing.
  unsigned long BytesInUse() const noexcept;
  // Bytes that the region holds from the system, free blocks and its own records included. Pages
  // that no block has reached yet do not count.
  unsigned long BytesHeld() const noexcept;
  // Number of blocks that are allocated and not released.
  unsigned long LiveBlocks() const noexcept;

 private:
  struct Chunk;
  struct Free;

  // The rest of a chunk, from which blocks are carved.
  struct Rest {
    unsigned long Bytes() const noexcept { return static_cast<unsigned long>(end - bump); }
    char* bump = nullptr;
    char* end = nullptr;
    bool zero = false;  // if nobody has written to its pages
  };

  struct Tally {
    unsigned long blocks = 0;
    unsigned long bytes = 0;  // the sum of their sizes
  };

  // Blocks are carved in units of 16 bytes, the tag included. Released ones are listed by size: a
  // list for each size up to 16 units, then two for each of twelve doublings.
  static constexpr unsigned long kUnit = 16;
  static constexpr unsigned long kFineUnits = 16;
  static constexpr unsigned long kLists = kFineUnits + 2 * 12;
  static constexpr unsigned long kTagBytes = 8;
  static constexpr unsigned long kOwn = 0xffff;  // for the units, in the tag of an OmOwnBlock

  static unsigned long UnitsFor(unsigned long bytes) { return (bytes + kTagBytes + 15) / kUnit; }
  static unsigned long& Tag(void* block) { return static_cast<unsigned long*>(block)[-1]; }
  static void*& NextFree(void* block) { return *static_cast<void**>(block); }
  static OmMemoryRegion* OwnerOf(void* block) {
    return reinterpret_cast<OmMemoryRegion*>(Tag(block) >> 16);
  }
  // Returns the bytes of a carved block that is in use.
  static unsigned long SizeOf(void* block) { return (Tag(block) & kOwn) * kUnit - kTagBytes; }
  unsigned long TagFor(unsigned long units) const {
    return reinterpret_cast<unsigned long>(this) << 16 | units;
  }

  void* AllocateAny(unsigned long bytes, bool zeroed);
  static void ReleaseAny(void* block, bool isZero) noexcept;
  void* GetSmall(unsigned long units) noexcept;
  void* Get(unsigned long units, bool& isZero);
  void* FindFree(unsigned long units, bool& isZero) noexcept;
  void PushFree(void* block, unsigned long units, bool isZero) noexcept;
  void* Carve(Rest& rest, unsigned long units) noexcept;
  void AddChunk(Rest& rest, unsigned long units);
  void CheckLimit(unsigned long bytes) const;
  std::unique_lock<std::mutex> Lock() const;
  void Settle() noexcept;
  Tally InUse() const noexcept;

  bool shared;
  bool working = true;
  bool plain = false;  // neither shared, limited, about to be destroyed nor all OmOwnBlocks
  Rest fine;
  Rest coarse;                // see AddChunk
  Tally used;                 // all blocks but released ones of their own; see InUse
  unsigned long counted = 0;  // bytes in use, if there is a limit
  unsigned long limit = ~0UL;
  unsigned long bytesHeld = 0;  // all of `fine` and `coarse` included
  Chunk* chunks = nullptr;
  OmOwnBlock* own = nullptr;
  void* freeLists[kLists] = {};  // released blocks, linked by their first word
  mutable std::mutex mutex;      // locked by a shared region only
};

// Inline for small blocks, of which a table has one for each cell.
inline void* OmMemoryRegion::Allocate(unsigned long bytes) {
  if (bytes <= kFineUnits * kUnit - kTagBytes && plain) {
    if (void* const block = GetSmall(UnitsFor(bytes)); block != nullptr) {
      return block;
    }
  }
  return AllocateAny(bytes, false);
}

// Returns a block of at most kFineUnits, or null if that takes a new chunk.
inline void* OmMemoryRegion::GetSmall(unsigned long units) noexcept {
  void*& list = freeLists[units - 1];
  if (void* const block = list; block != nullptr) {
    list = NextFree(block);
    Tag(block) = TagFor(units);
    return block;
  }
  return units * kUnit <= fine.Bytes() ? Carve(fine, units) : nullptr;
}

inline void* OmMemoryRegion::Carve(Rest& rest, unsigned long units) noexcept {
  void* const block = rest.bump + kTagBytes;
  Tag(block) = TagFor(units);
  rest.bump += units * kUnit;
  ++used.blocks;
  return block;
}

inline void OmMemoryRegion::Release(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  const unsigned long list = (Tag(block) & kOwn) - 1;
  if (auto* const owner = OwnerOf(block); list < kFineUnits && owner->plain) {
    Tag(block) = 0;
    NextFree(block) = owner->freeLists[list];
    owner->freeLists[list] = block;
    return;
  }
  ReleaseAny(block, false);
}

#endif
