// A region that takes every block from the system and keeps them in a list.

#ifndef PLATFORM_MEMORY_MEMORYREGION_H
#define PLATFORM_MEMORY_MEMORYREGION_H

// [region]
class OmMemoryRegion {
 public:
  explicit OmMemoryRegion(bool shared);
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;
  ~OmMemoryRegion();

  void* Allocate(unsigned long bytes);
  static void Release(void* block) noexcept;
  static OmMemoryRegion* DefaultHeap() noexcept;
  static OmMemoryRegion* SelectHeap(OmMemoryRegion* region) noexcept {
    return region != nullptr ? region : DefaultHeap();
  }
  void WorkingRelease(bool) noexcept {}

  struct Link {
    Link* previous;
    Link* next;
  };

 private:
  Link blocks{&blocks, &blocks};
};
// [region]

#endif
