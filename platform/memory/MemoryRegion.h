// OmMemoryRegion, the arena that all of a table's memory is charged to.
//
// A region carves blocks from chunks, uses released blocks again, and gives every chunk back to the
// system when it is destroyed, not before. It allocates nothing before the first block; chunks of
// 1 KiB follow, and larger ones as it grows. A block costs its size and 8 bytes, rounded up to a
// multiple of 16. Blocks above 1 MiB have pages of their own, which go back to the system when the
// block is released. Allocating and releasing cost constant time.
//
// Where a sanitizer or the hardening checks are on, every block is an allocation of its own from
// the system, so that tools see its bounds and its end.

#ifndef PLATFORM_MEMORY_MEMORYREGION_H
#define PLATFORM_MEMORY_MEMORYREGION_H

#include "platform/Export.h"

// A region built with `shared` false belongs to one thread at a time and locks nothing; one built
// with true may be used by several threads at once. Destroying a region frees every block that it
// still holds, without running any destructor of what lives in it.
class OM_PLATFORM_API OmMemoryRegion {
 public:
  explicit OmMemoryRegion(bool shared);
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;
  ~OmMemoryRegion();

  // Returns a block of at least `bytes` bytes (0 included), aligned to 16 bytes; never null. Throws
  // std::bad_alloc if the system has no memory, if the limit is reached, or if `bytes` is above 512
  // GiB. The region is then as it was.
  [[nodiscard]] void* Allocate(unsigned long bytes);
  // As Allocate, and every byte is zero. Large blocks come from pages that nobody has written to,
  // so only the pages that the owner writes to occupy memory.
  [[nodiscard]] void* AllocateZeroed(unsigned long bytes);

  // Returns a block to the region that it came from, which the block itself knows. Null is ignored.
  // Ends the process if the block was released before and is not in use again; of blocks above 1
  // MiB only the hardened build knows.
  static void Release(void* block) noexcept;
  // As Release, for a block whose bytes are all zero: AllocateZeroed may return it again without
  // writing to it.
  static void ReleaseZeroed(void* block) noexcept;

  // Returns the process-wide default region, which several threads may use at once. It lives until
  // the process ends.
  static OmMemoryRegion* DefaultHeap() noexcept;
  // Returns `region`, or the default heap if it is null. Defined in backend/tables/om/Vector.h.
  static OmMemoryRegion* SelectHeap(OmMemoryRegion* region) noexcept;

  // With false, says that the region is about to be destroyed: from then on Release only counts,
  // and released blocks are not used again. With true, the region works as usual again; what was
  // released in between stays held until the region is destroyed.
  void WorkingRelease(bool working) noexcept;
  // Makes Allocate fail if it would bring BytesInUse() above `bytes`. A new region has no limit,
  // which is the largest number.
  void Limit(unsigned long bytes) noexcept;

  // Bytes of the blocks that are allocated and not released, each with its size class. Costs a walk
  // over the released blocks, like LiveBlocks(): allocating and releasing small blocks count
  // nothing.
  unsigned long BytesInUse() const noexcept;
  // Bytes that the region holds from the system, free blocks and its own records included. Pages
  // that no block has reached yet do not count.
  unsigned long BytesHeld() const noexcept;
  // Number of blocks that are allocated and not released.
  unsigned long LiveBlocks() const noexcept;

 private:
  struct Lock;
  struct Heap;
  class Guard;
  struct Chunk;
  struct Front;
  struct Free;

  // The rest of a chunk, from which blocks are carved. `zero` if it is in pages that nobody has
  // written to.
  struct Rest {
    [[nodiscard]] unsigned long Bytes() const noexcept {
      return static_cast<unsigned long>(end - bump);
    }
    char* bump = nullptr;
    char* end = nullptr;
    bool zero = false;
  };

  // A number of blocks and the sum of their sizes.
  struct Tally {
    void Add(unsigned long bytes_) noexcept { ++blocks, bytes += bytes_; }
    void Subtract(unsigned long bytes_) noexcept { --blocks, bytes -= bytes_; }
    unsigned long blocks = 0;
    unsigned long bytes = 0;
  };

  // Blocks are carved in units of 16 bytes, the tag included. Released ones are listed by size: a
  // list for each size up to 16 units, then two for each of twelve doublings.
  static constexpr unsigned long kUnit = 16;
  static constexpr unsigned long kFineUnits = 16;
  static constexpr unsigned long kLists = kFineUnits + 2 * 12;
  static constexpr unsigned long kUnitBits = 0xffff;  // of a tag

  explicit OmMemoryRegion(Lock* lock_) noexcept;

  void* AllocateAny(unsigned long bytes);
  static void ReleaseAny(void* block, bool isZero) noexcept;
  void Settle() noexcept;
  void CheckLimit(unsigned long bytes) const;
  [[nodiscard]] Tally InUse() const noexcept;
  void* Get(unsigned long units, bool& isZero);
  [[nodiscard]] Free* FindFree(unsigned long units) noexcept;
  void Return(void* block, bool isZero) noexcept;
  void* Carve(Rest& rest, unsigned long units) noexcept;
  void PushFree(void* block, unsigned long units, bool isZero) noexcept;
  void AddChunk(Rest& rest, unsigned long units);
  void* AllocateOwn(unsigned long bytes, bool zeroed);
  void ReturnOwn(Front* front) noexcept;

  Lock* lock;  // owned; null unless the region is shared
  bool working = true;
  bool plain = false;  // neither shared, limited, on its way out nor of own blocks
  Rest fine;
  Rest coarse;                // see AddChunk
  Tally used;                 // blocks that are allocated or on a free list
  unsigned long counted = 0;  // bytes in use, if there is a limit
  unsigned long limit = ~0UL;
  unsigned long bytesHeld = 0;  // all of `fine` and `coarse` included
  Chunk* chunks = nullptr;
  Front* own = nullptr;          // blocks that are allocations of their own
  void* freeLists[kLists] = {};  // released blocks, linked by their first word
};

// Inline for small blocks, of which a table has one for each cell.
inline void* OmMemoryRegion::Allocate(unsigned long bytes) {
  const unsigned long units = (bytes + 8 + kUnit - 1) / kUnit;
  if (bytes < kFineUnits * kUnit && units <= kFineUnits && plain) {
    if (void* const block = freeLists[units - 1]; block != nullptr) {
      freeLists[units - 1] = *static_cast<void**>(block);
      static_cast<unsigned long*>(block)[-1] = reinterpret_cast<unsigned long>(this) << 16 | units;
      return block;
    }
    if (units * kUnit <= fine.Bytes()) {
      return Carve(fine, units);
    }
  }
  return AllocateAny(bytes);
}

inline void* OmMemoryRegion::Carve(Rest& rest, unsigned long units) noexcept {
  auto* const tag = reinterpret_cast<unsigned long*>(rest.bump);
  *tag = reinterpret_cast<unsigned long>(this) << 16 | units;
  rest.bump += units * kUnit;
  used.Add(units * kUnit - sizeof(*tag));
  return tag + 1;
}

inline void OmMemoryRegion::Release(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  const unsigned long tag = static_cast<const unsigned long*>(block)[-1];
  auto* const owner = reinterpret_cast<OmMemoryRegion*>(tag >> 16);
  const unsigned long list = (tag & kUnitBits) - 1;
  if (list < kFineUnits && owner->plain) {
    static_cast<unsigned long*>(block)[-1] = 0;
    *static_cast<void**>(block) = owner->freeLists[list];
    owner->freeLists[list] = block;
    return;
  }
  ReleaseAny(block, false);
}

inline void OmMemoryRegion::ReleaseZeroed(void* block) noexcept {
  ReleaseAny(block, true);
}

#endif
