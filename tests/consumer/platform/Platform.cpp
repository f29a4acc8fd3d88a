#include <new>

#include "platform/memory/MemoryRegion.h"

OmMemoryRegion::OmMemoryRegion(bool) {}

OmMemoryRegion::~OmMemoryRegion() {
  while (blocks.next != &blocks) {
    Release(blocks.next + 1);
  }
}

void* OmMemoryRegion::Allocate(unsigned long bytes) {
  auto* const link = static_cast<Link*>(::operator new(sizeof(Link) + bytes));
  *link = {&blocks, blocks.next};
  blocks.next = blocks.next->previous = link;
  return link + 1;
}

// A block leaves the list by its neighbours, so it need not know its region.
void OmMemoryRegion::Release(void* block) noexcept {
  if (block != nullptr) {
    Link* const link = static_cast<Link*>(block) - 1;
    link->previous->next = link->next;
    link->next->previous = link->previous;
    ::operator delete(link);
  }
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  static OmMemoryRegion heap(true);
  return &heap;
}
