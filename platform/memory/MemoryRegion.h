// OmMemoryRegion, the arena that all of a table's memory is charged to.
//
// Blocks come from chunks that a region takes from the system and gives back as a whole when it is
// destroyed. A released block is used again by its own region. A block tells its owner, so releasing
// needs no region. The region is lean while it is small and takes large blocks one by one.

#ifndef PLATFORM_MEMORY_MEMORYREGION_H
#define PLATFORM_MEMORY_MEMORYREGION_H

#include "platform/Export.h"

// A region built with `shared` false belongs to one thread at a time and takes no lock; one built with
// true may be used by several threads at once. Destroying a region frees everything that it still
// holds, without running any destructor of what lives in it.
class OM_PLATFORM_API OmMemoryRegion {
 public:
  explicit OmMemoryRegion(bool shared);
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;
  ~OmMemoryRegion();

  // Returns a block of at least `bytes` bytes (0 included), aligned to 16 bytes. Never null: throws
  // std::bad_alloc where there is no memory, or where `bytes` is beyond what a block can hold.
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
  // works as usual again.
  void WorkingRelease(bool working) noexcept;

  // Bytes of the blocks that are allocated and not released, each counted with the size it was given
  // (its size class, no header).
  unsigned long BytesInUse() const noexcept;
  // Bytes that the region holds from the system, its free blocks and headers included.
  unsigned long BytesHeld() const noexcept;
  // Number of blocks that are allocated and not released.
  unsigned long LiveBlocks() const noexcept;
};

#endif
