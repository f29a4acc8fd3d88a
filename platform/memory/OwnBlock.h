// OmOwnBlock, a block of a region that is an allocation of its own from the system. Private to the
// region, and not installed.

#ifndef PLATFORM_MEMORY_OWNBLOCK_H
#define PLATFORM_MEMORY_OWNBLOCK_H

// Stands before the block, in the same allocation, in a list of its region's. The tag comes last,
// because a region looks for it in the word before any block.
struct alignas(16) OmOwnBlock {
  // Whether all blocks of a region are such ones, from the system's heap, so that tools see where
  // each begins and ends. Otherwise they are for large blocks, and have pages of their own.
  static const bool kAll;

  // Allocates a block in front of `list`. Its bytes are zero if `zeroed`, else unspecified. Throws
  // std::bad_alloc if the system has no memory, or for more than 512 GiB.
  static OmOwnBlock* Allocate(OmOwnBlock*& list, unsigned long bytes, unsigned long tag,
                              bool zeroed);
  // Takes a block out of `list` and gives its memory back, at once or, in hardened builds, after a
  // while in which its tag is 0.
  static void Release(OmOwnBlock*& list, OmOwnBlock* block) noexcept;

  // Returns the bytes that a block of `bytes` takes from the system.
  static unsigned long Whole(unsigned long bytes) noexcept { return sizeof(OmOwnBlock) + bytes; }

  OmOwnBlock* previous;
  OmOwnBlock* next;
  unsigned long bytes;
  unsigned long tag;
};

// Returns pages that read as zeros and occupy no memory before somebody writes to them. Throws
// std::bad_alloc.
void* OmMapPages(unsigned long bytes);

#endif
