#include "platform/memory/MemoryRegion.h"

#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "backend/tables/om/Assert.h"
#include "platform/memory/OwnBlock.h"

// There are two kinds of blocks. The word in front of either is its tag, with the owner in the
// upper 48 bits and below it:
// - of a block that was carved from a chunk: how many units it has, the tag included;
// - of a block that is an allocation of its own, which an OmOwnBlock stands before: kOwn.
// The tag of a released block is 0.

// Stands at the start of a chunk. The first tag follows it.
struct alignas(16) OmMemoryRegion::Chunk {
  Chunk* next;
  unsigned long pageBytes;  // 0 if the chunk is from the heap
};

// What stands in a released block of more than kFineUnits. Smaller ones hold the link alone.
struct OmMemoryRegion::Free {
  void* next;
  unsigned long units;
  unsigned long isZero;  // whether all that follows is zero
};

namespace {

constexpr unsigned long kNoLimit = ~0UL;
constexpr unsigned long kFirstChunk = 1024;
constexpr unsigned long kLastHeapChunk = 64UL << 10;
constexpr unsigned long kLastPageChunk = 16UL << 20;
constexpr unsigned long kPage = 4096;
constexpr unsigned long kSystemHeader = 16;  // of malloc, so that chunks fill whole pages with it
// A region that holds so much gets its chunks from pages, and large blocks have their own chunks.
constexpr unsigned long kLarge = 256UL << 10;
constexpr int kMostLooks = 16;  // at released blocks, for one that is large enough

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

}  // namespace

OmMemoryRegion::OmMemoryRegion(bool shared_) noexcept : shared(shared_) {
  static_assert(sizeof(void*) == 8 && sizeof(unsigned long) == 8 && kUnit == 16 &&
                kFineUnits == 16 && ListOf(kOwn - 1) + 1 == kLists);
  OM_ASSERT(TagFor(0) >> 16 == reinterpret_cast<unsigned long>(this),
            "the address of a region has at most 48 bits", "platform/memory/MemoryRegion", 0,
            "OmMemoryRegion");
  Settle();
}

OmMemoryRegion::~OmMemoryRegion() {
#ifndef OM_OWN_BLOCKS  // else what the region still holds is not freed, and so is seen as lost
  while (own != nullptr) {
    OmOwnBlock::Release(own, own);
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
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  // Never destroyed, because destructors of static objects may release blocks after any destructor
  // that could run here. Allocates nothing, so that it cannot fail.
  alignas(OmMemoryRegion) static unsigned char storage[sizeof(OmMemoryRegion)];
  static auto* const heap = new (storage) OmMemoryRegion(true);
  return heap;
}

std::unique_lock<std::mutex> OmMemoryRegion::Lock() const {
  return shared ? std::unique_lock(mutex) : std::unique_lock(mutex, std::defer_lock);
}

// Settles what the inline operations may do, which neither lock nor count against a limit. They
// read `plain` without the lock, so nothing is written to it in a shared region.
void OmMemoryRegion::Settle() noexcept {
  if (!shared) {
    plain = working && limit == kNoLimit && !OmOwnBlock::kAll;
  }
}

void* OmMemoryRegion::AllocateAny(unsigned long bytes, bool zeroed) {
  const auto lock = Lock();
  if (OmOwnBlock::kAll || bytes > (kOwn - 1) * kUnit - kTagBytes) {
    CheckLimit(bytes);
    OmOwnBlock::Allocate(own, bytes, TagFor(kOwn), zeroed);
    counted += bytes;
    bytesHeld += OmOwnBlock::Whole(bytes);
    ++used.blocks;
    used.bytes += bytes + kTagBytes;
    return own + 1;
  }
  bool isZero = false;
  void* const block = Get(UnitsFor(bytes), isZero);
  // All of the block, because whoever gets it after ReleaseZeroed() may need more of it.
  return isZero || !zeroed ? block : std::memset(block, 0, SizeOf(block));
}

void OmMemoryRegion::ReleaseAny(void* block, bool isZero) noexcept {
  if (block == nullptr) {
    return;
  }
  OM_ASSERT(Tag(block) != 0, "the block is in use", "platform/memory/MemoryRegion", 0,
            "OmMemoryRegion::Release");
  OmMemoryRegion& owner = *OwnerOf(block);
  const auto lock = owner.Lock();
  const unsigned long units = Tag(block) & kOwn;
  OmOwnBlock* const front = units == kOwn ? static_cast<OmOwnBlock*>(block) - 1 : nullptr;
  const unsigned long bytes = front != nullptr ? front->bytes : SizeOf(block);
  owner.counted -= bytes;
  if (front == nullptr && owner.working) {
    owner.PushFree(block, units, isZero);
    return;
  }
  --owner.used.blocks;
  owner.used.bytes -= bytes + kTagBytes;
  if (front == nullptr) {
    Tag(block) = 0;
  } else if (owner.working || OmOwnBlock::kAll) {
    owner.bytesHeld -= OmOwnBlock::Whole(bytes);
    OmOwnBlock::Release(owner.own, front);
  }
}

void OmMemoryRegion::WorkingRelease(bool working_) noexcept {
  const auto lock = Lock();
  working = working_;
  Settle();
}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  const auto lock = Lock();
  counted = InUse().bytes;
  limit = bytes;
  Settle();
}

void OmMemoryRegion::CheckLimit(unsigned long bytes) const {
  if (limit != kNoLimit && (counted > limit || bytes > limit - counted)) {
    throw std::bad_alloc();
  }
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  const auto lock = Lock();
  return InUse().bytes;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  const auto lock = Lock();
  return bytesHeld - (fine.zero ? fine.Bytes() : 0) - (coarse.zero ? coarse.Bytes() : 0);
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  const auto lock = Lock();
  return InUse().blocks;
}

// Subtracts what is free from `used`, which counts the rests of the chunks and the tags too: so
// carving a block changes one number only.
OmMemoryRegion::Tally OmMemoryRegion::InUse() const noexcept {
  Tally tally = used;
  tally.bytes -= (fine.Bytes() / kUnit + coarse.Bytes() / kUnit) * kUnit;
  for (unsigned long list = 0; list != kLists; ++list) {
    for (void* block = freeLists[list]; block != nullptr; block = NextFree(block)) {
      tally.bytes -= kUnit * (list < kFineUnits ? list + 1 : static_cast<Free*>(block)->units);
      --tally.blocks;
    }
  }
  tally.bytes -= tally.blocks * kTagBytes;
  return tally;
}

// Allocates a carved block, and sets `isZero` if every byte of it is known to be zero.
inline void* OmMemoryRegion::Get(unsigned long units, bool& isZero) {
  CheckLimit(units * kUnit - kTagBytes);
  const bool small = units <= kFineUnits;
  void* block = small ? GetSmall(units) : FindFree(units, isZero);
  if (block == nullptr) {
    Rest& rest = small || bytesHeld < kLarge ? fine : coarse;
    if (rest.Bytes() < units * kUnit) {
      AddChunk(rest, units);
    }
    isZero = rest.zero;
    block = Carve(rest, units);
  }
  counted += SizeOf(block);
  return block;
}

// Removes a released block of at least `units` units, and fewer than three times as many, from its
// list, and returns it, or null if none is found soon.
void* OmMemoryRegion::FindFree(unsigned long units, bool& isZero) noexcept {
  const unsigned long first = ListOf(units);
  int looks = kMostLooks;
  for (unsigned long list = first; list < std::min(first + 3, kLists); ++list) {
    void** place = &freeLists[list];
    for (; *place != nullptr && looks != 0; --looks) {
      auto* const free = static_cast<Free*>(*place);
      if (free->units >= units &&
          (limit == kNoLimit || free->units * kUnit - kTagBytes <= limit - counted)) {
        *place = free->next;
        isZero = free->isZero != 0;
        Tag(free) = TagFor(free->units);
        *free = {};
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

// Begins a new chunk with room for `units` units: from the heap while the region is small, else of
// pages. The rest of the old one becomes a released block. In a large region, blocks of more than
// kFineUnits have chunks of their own: so its cells are side by side, in the order of allocation.
void OmMemoryRegion::AddChunk(Rest& rest, unsigned long units) {
  // Behind the record, a word aligns the block that follows the first tag.
  constexpr unsigned long kAround = sizeof(Chunk) + kTagBytes;
  const unsigned long least = units * kUnit + kAround;
  const bool isPages = bytesHeld >= kLarge || least > kLastHeapChunk;
  const unsigned long bytes =
      isPages ? RoundUp(std::max(std::clamp(bytesHeld, kLarge, kLastPageChunk), least), kPage)
              : RoundUp(std::max(std::clamp(bytesHeld / 4, kFirstChunk, kLastHeapChunk),
                                 least + kSystemHeader),
                        kFirstChunk) -
                    kSystemHeader;
  void* const memory = isPages ? OmMapPages(bytes) : ::operator new(bytes);
  if (const unsigned long left = rest.Bytes() / kUnit; left != 0) {
    PushFree(Carve(rest, left), left, rest.zero);
  }
  chunks = new (memory) Chunk{chunks, isPages ? bytes : 0};
  bytesHeld += bytes;
  used.bytes += (bytes - kAround) / kUnit * kUnit;
  rest.bump = reinterpret_cast<char*>(chunks) + kAround;
  rest.end = reinterpret_cast<char*>(chunks) + bytes;
  rest.zero = isPages;
}
