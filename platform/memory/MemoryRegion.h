// OmMemoryRegion, the arena that all of a table's memory is charged to.
//
// Blocks come from chunks that a region takes from the system and gives back as a whole when it is
// destroyed. A released block is used again by its own region. A block tells its owner, so
// releasing needs no region. The region is lean while it is small: it takes nothing before the
// first block, 1 KiB then, and as much again as it holds whenever that is used up, 4 MiB at most. A
// block costs 8 bytes more than its size class. Blocks above 16 KiB are taken from the system one
// by one. A chunk is given back only with its region.

#ifndef PLATFORM_MEMORY_MEMORYREGION_H
#define PLATFORM_MEMORY_MEMORYREGION_H

#include "platform/Export.h"

// A region built with `shared` false belongs to one thread at a time and takes no lock; one built
// with true may be used by several threads at once. Destroying a region frees everything that it
// still holds, without running any destructor of what lives in it.
//
// Invariants: `bump` and `bumpEnd` delimit the unused rest of one chunk; each block on freeLists[c]
// is of class c and counted neither in `bytesInUse` nor in `liveBlocks`; `bytesHeld` is the sum of
// all chunks and large blocks.
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

  // Returns a block to the region that it came from, which the block itself knows. Null is ignored.
  static void Release(void* block) noexcept;

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
  // given (its size class, no header).
  unsigned long BytesInUse() const noexcept;
  // Bytes that the region holds from the system, its free blocks and headers included.
  unsigned long BytesHeld() const noexcept;
  // Number of blocks that are allocated and not released.
  unsigned long LiveBlocks() const noexcept;

 private:
  struct Chunk;
  struct Heap;
  struct Large;
  struct Lock;
  class Guard;

  // 17 classes in steps of 16 bytes, then four for each of six doublings.
  static constexpr unsigned int kClasses = 41;

  explicit OmMemoryRegion(Lock* lock_) noexcept;

  void* Take(unsigned long bytes);
  void* TakeWithCare(unsigned long bytes);
  void* TakeFromChunk(unsigned long bytes, unsigned int sizeClass);
  void* Count(void* block, unsigned long bytes, unsigned int sizeClass) noexcept;
  void* TakeLarge(unsigned long bytes);
  void AddChunk(unsigned long stride);
  void RetireChunk() noexcept;
  void Return(void* block, unsigned long tag) noexcept;
  void ReturnLarge(void* block) noexcept;
  void PushFree(void* block, unsigned int sizeClass) noexcept;

  Lock* lock;  // null unless the region is shared
  unsigned long liveBlocks = 0;
  unsigned long bytesInUse = 0;
  bool working = true;
  bool plain;  // neither shared nor limited: nothing stands before Take
  char* bump = nullptr;
  char* bumpEnd = nullptr;
  unsigned long bytesHeld = 0;
  unsigned long limit = ~0UL;
  unsigned long chunkBytes = 0;  // what all chunks cost the system; decides the size of the next
  Chunk* chunks = nullptr;
  Large* large = nullptr;
  void* freeLists[kClasses] = {};
};

#endif
