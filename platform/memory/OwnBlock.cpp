#include "platform/memory/OwnBlock.h"

#include <sys/mman.h>

#include <array>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) && !defined(__SANITIZE_ADDRESS__)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif

namespace {

#if defined(OM_HARDENING) && OM_HARDENING
constexpr bool kHardened = true;
#else
constexpr bool kHardened = false;
#endif

// Sanitizers and tests that count allocations (OM_OWN_BLOCKS) need to see each block freed.
#if defined(__SANITIZE_ADDRESS__) || defined(OM_OWN_BLOCKS)
constexpr bool kObserved = true;
#else
constexpr bool kObserved = false;
#endif

constexpr bool kAllOwn = kHardened || kObserved;
constexpr unsigned long kLargest = 1UL << 39;
constexpr unsigned long kPage = 4096;

constexpr unsigned long RoundUpToPages(unsigned long bytes) {
  return (bytes + kPage - 1) / kPage * kPage;
}

// Keeps a released block, so that a second release of it is recognised, and returns the one that
// was kept longest, or null. Of a large block only the ends go on to occupy memory.
[[maybe_unused]] void* Quarantine(OmOwnBlock* block) {
  const auto begin = RoundUpToPages(reinterpret_cast<unsigned long>(block + 1));
  const auto end = (reinterpret_cast<unsigned long>(block + 1) + block->bytes) / kPage * kPage;
  if (begin < end) {
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
  }
  static std::mutex mutex;
  static std::array<void*, 1024> ring{};
  static unsigned long next = 0;
  const std::lock_guard<std::mutex> guard(mutex);
  return std::exchange(ring[next++ % ring.size()], block);
}

}  // namespace

const bool OmOwnBlock::kAll = kAllOwn;

void* OmMapPages(unsigned long bytes) {
  void* const pages =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    throw std::bad_alloc();
  }
  return pages;
}

OmOwnBlock* OmOwnBlock::Allocate(OmOwnBlock*& list, unsigned long bytes, unsigned long tag,
                                 bool zeroed) {
  if (bytes > kLargest) {
    throw std::bad_alloc();
  }
  void* const memory =
      kAllOwn ? ::operator new(Whole(bytes)) : OmMapPages(RoundUpToPages(Whole(bytes)));
  list = new (memory) OmOwnBlock{nullptr, list, bytes, tag};
  if (list->next != nullptr) {
    list->next->previous = list;
  }
  if (kAllOwn) {
    // A pattern, so that nobody relies on what fresh memory holds.
    std::memset(list + 1, zeroed ? 0 : 0xa5, bytes);
  }
  return list;
}

void OmOwnBlock::Release(OmOwnBlock*& list, OmOwnBlock* block) noexcept {
  (block->previous != nullptr ? block->previous->next : list) = block->next;
  if (block->next != nullptr) {
    block->next->previous = block->previous;
  }
  block->tag = 0;
  if (!kAllOwn) {
    munmap(block, RoundUpToPages(Whole(block->bytes)));
  } else {
    ::operator delete(kObserved ? block : Quarantine(block));
  }
}
