#include "platform/memory/MemoryRegion.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <mutex>
#include <new>

#include "backend/tables/om/Assert.h"

static_assert(sizeof(void*) == 8 && sizeof(unsigned long) == 8);

// There are two kinds of blocks. The word in front of either is its tag, with the owner in the
// upper 48 bits and below it the kind:
// - a class block, carved from a chunk: the size class, and kZero while it is free and zero;
// - a block of its own, allocated from the system by itself: kOwn. A Front stands before it.

struct OmMemoryRegion::Lock {
  std::mutex mutex;
};

// Locks a region that is shared.
class OmMemoryRegion::Guard {
 public:
  explicit Guard(Lock* lock_) : lock(lock_) {
    if (lock != nullptr) {
      lock->mutex.lock();
    }
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard() {
    if (lock != nullptr) {
      lock->mutex.unlock();
    }
  }

 private:
  Lock* lock;
};

// The default heap with its lock: one object that allocates nothing, so that it cannot fail.
struct OmMemoryRegion::Heap {
  Lock lock;
  OmMemoryRegion region{&lock};
};

// Stands at the start of a chunk. The first tag follows it.
struct alignas(16) OmMemoryRegion::Chunk {
  Chunk* next;
  unsigned long pageBytes;  // 0 if the chunk is from the heap
};

// Stands before a block of its own, in the same allocation. The tag comes last, as before every
// block.
struct alignas(16) OmMemoryRegion::Front {
  Front* previous;
  Front* next;
  unsigned long bytes;
  unsigned long tag;
};

namespace {

// Whether every block is an allocation of its own from the system's heap.
#if defined(OM_OWN_BLOCKS) || (defined(OM_HARDENING) && OM_HARDENING) || \
    defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kOwnBlocks = true;
#else
constexpr bool kOwnBlocks = false;
#endif

constexpr unsigned long kTagBytes = 8;
constexpr unsigned long kStep = 16;
constexpr unsigned long kZero = 0x100;
constexpr unsigned long kOwn = 0xfff;
constexpr unsigned long kReleased = 0x1000;
constexpr unsigned long kNoLimit = ~0UL;
constexpr unsigned long kLargestBlock = 1UL << 39;

constexpr unsigned long kFirstChunk = 1024;
constexpr unsigned long kLastHeapChunk = 64UL << 10;
constexpr unsigned long kLastPageChunk = 16UL << 20;
constexpr unsigned long kPage = 4096;
// Left out of each chunk, so that it fills whole pages together with the system's own record.
constexpr unsigned long kSystemHeader = 16;
// From so many bytes on, coarse blocks have chunks of their own.
constexpr unsigned long kLeastApart = 256UL << 10;

constexpr unsigned int kFine = 17;
constexpr unsigned int kAll = 65;

// Returns the bytes from one block of the class to the next, the tag included. Coarse ones stand 16
// above a round number, so that 2^n words, the tag and one word more fit without waste.
constexpr unsigned long StrideOf(unsigned int sizeClass) {
  if (sizeClass < kFine) {
    return (sizeClass + 1) * kStep;
  }
  const unsigned int coarse = sizeClass - kFine;
  return ((5UL + coarse % 4) << (6 + coarse / 4)) + kStep;
}

constexpr auto kSizes = [] {
  std::array<unsigned int, kAll> sizes{};
  for (unsigned int c = 0; c < kAll; ++c) {
    sizes[c] = static_cast<unsigned int>(StrideOf(c) - kTagBytes);
  }
  return sizes;
}();
constexpr unsigned long kMostFine = kSizes[kFine - 1];
constexpr unsigned long kLargestClass = kSizes[kAll - 1];

// Returns the smallest class for `bytes` bytes, which are at most kLargestClass.
constexpr unsigned int ClassFor(unsigned long bytes) {
  if (bytes <= kMostFine) {
    return static_cast<unsigned int>((bytes + kStep - kTagBytes - 1) / kStep);
  }
  const unsigned long top = bytes - kTagBytes - 1;
  const auto doubling = static_cast<unsigned int>(std::bit_width(top)) - 1;
  const auto quarter = static_cast<unsigned int>(top >> (doubling - 2)) & 3U;
  return kFine + (doubling - 8) * 4 + quarter;
}

constexpr bool ClassesAgree() {
  for (unsigned int c = 0; c < kAll; ++c) {
    if (StrideOf(c) % kStep != 0 || ClassFor(kSizes[c]) != c ||
        (c + 1 < kAll && ClassFor(kSizes[c] + 1) != c + 1)) {
      return false;
    }
  }
  return true;
}
static_assert(ClassesAgree());

constexpr unsigned long RoundUp(unsigned long n, unsigned long step) {
  return (n + step - 1) / step * step;
}

unsigned long& Tag(void* block) {
  return static_cast<unsigned long*>(block)[-1];
}

void*& NextFree(void* block) {
  return *static_cast<void**>(block);
}

unsigned long TagFor(const OmMemoryRegion* owner, unsigned long kind) {
  return reinterpret_cast<unsigned long>(owner) << 16 | kind;
}

OmMemoryRegion* OwnerOf(void* block) {
  return reinterpret_cast<OmMemoryRegion*>(Tag(block) >> 16);
}

// Returns pages that read as zeros and occupy no memory before somebody writes to them.
void* MapPages(unsigned long bytes) {
  void* const pages =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    throw std::bad_alloc();
  }
  return pages;
}

}  // namespace

OmMemoryRegion::OmMemoryRegion(bool shared) : OmMemoryRegion(shared ? new Lock : nullptr) {}

OmMemoryRegion::OmMemoryRegion(Lock* lock_) noexcept : lock(lock_) {
  static_assert(kFineClasses == kFine && kClasses == kAll && kLargestFine == kMostFine);
  OM_ASSERT(TagFor(this, 0) >> 16 == reinterpret_cast<unsigned long>(this),
            "the address of a region has at most 48 bits", "platform/memory/MemoryRegion", 0,
            "OmMemoryRegion");
  Settle();
}

OmMemoryRegion::~OmMemoryRegion() {
  while (own != nullptr) {
    ReturnOwn(own);
  }
  while (chunks != nullptr) {
    Chunk* const chunk = chunks;
    chunks = chunk->next;
    if (chunk->pageBytes != 0) {
      munmap(chunk, chunk->pageBytes);
    } else {
      ::operator delete(chunk);
    }
  }
  delete lock;
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  // Never destroyed, because destructors of static objects may release blocks after any destructor
  // that could run here.
  alignas(Heap) static unsigned char storage[sizeof(Heap)];
  static OmMemoryRegion* const heap = &(new (storage) Heap)->region;
  return heap;
}

// Settles what the inline operations may do, which neither lock nor count against a limit.
void OmMemoryRegion::Settle() noexcept {
  plain = lock == nullptr && working && limit == kNoLimit && !kOwnBlocks;
}

void* OmMemoryRegion::AllocateAny(unsigned long bytes) {
  const Guard guard(lock);
  if (kOwnBlocks || bytes > kLargestClass) {
    return AllocateOwn(bytes, false);
  }
  bool isZero = false;
  return Get(ClassFor(bytes), isZero);
}

void* OmMemoryRegion::AllocateZeroed(unsigned long bytes) {
  const Guard guard(lock);
  if (kOwnBlocks || bytes > kLargestClass) {
    return AllocateOwn(bytes, true);
  }
  bool isZero = false;
  const unsigned int sizeClass = ClassFor(bytes);
  void* const block = Get(sizeClass, isZero);
  // The whole block, because whoever gets it after ReleaseZeroed() may need more of it.
  return isZero ? block : std::memset(block, 0, kSizes[sizeClass]);
}

void OmMemoryRegion::ReleaseAny(void* block, bool isZero) noexcept {
  if (block != nullptr) {
    OwnerOf(block)->Return(block, isZero);
  }
}

void OmMemoryRegion::WorkingRelease(bool working_) noexcept {
  const Guard guard(lock);
  working = working_;
  Settle();
}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  const Guard guard(lock);
  counted = InUse().bytes;
  limit = bytes;
  Settle();
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  const Guard guard(lock);
  return InUse().bytes;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  const Guard guard(lock);
  return bytesHeld - (fine.zero ? fine.Bytes() : 0) - (coarse.zero ? coarse.Bytes() : 0);
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  const Guard guard(lock);
  return InUse().blocks;
}

OmMemoryRegion::Tally OmMemoryRegion::InUse() const noexcept {
  Tally tally = used;
  for (unsigned int c = 0; c != kClasses; ++c) {
    for (void* block = freeLists[c]; block != nullptr; block = NextFree(block)) {
      tally.Subtract(kSizes[c]);
    }
  }
  return tally;
}

void OmMemoryRegion::CheckLimit(unsigned long bytes) const {
  if (limit != kNoLimit && (counted > limit || bytes > limit - counted)) {
    throw std::bad_alloc();
  }
}

// --- Class blocks -------------------------------------------------------------------------------

// Allocates a block, and sets `isZero` if every byte of it is zero.
inline void* OmMemoryRegion::Get(unsigned int sizeClass, bool& isZero) {
  const unsigned long bytes = kSizes[sizeClass];
  CheckLimit(bytes);
  void* block = freeLists[sizeClass];
  if (block != nullptr) {
    freeLists[sizeClass] = NextFree(block);
    isZero = (Tag(block) & kZero) != 0;
    if (isZero) {
      NextFree(block) = nullptr;
    }
  } else {
    Rest& rest = sizeClass < kFineClasses || bytesHeld < kLeastApart ? fine : coarse;
    if (rest.Bytes() < bytes + kTagBytes) {
      AddChunk(rest, bytes + kTagBytes);
    }
    block = Carve(rest, sizeClass);
    isZero = rest.zero;
  }
  Tag(block) = TagFor(this, sizeClass);
  counted += bytes;
  return block;
}

inline void* OmMemoryRegion::Carve(Rest& rest, unsigned int sizeClass) noexcept {
  void* const block = rest.bump + kTagBytes;
  rest.bump += kSizes[sizeClass] + kTagBytes;
  used.Add(kSizes[sizeClass]);
  return block;
}

inline void OmMemoryRegion::PushFree(void* block, unsigned int sizeClass, bool isZero) noexcept {
  // Not worth a thought for fine ones, whose tag is then that of a live block.
  Tag(block) = TagFor(this, sizeClass | (isZero && sizeClass >= kFineClasses ? kZero : 0));
  NextFree(block) = freeLists[sizeClass];
  freeLists[sizeClass] = block;
}

inline void OmMemoryRegion::Return(void* block, bool isZero) noexcept {
  const Guard guard(lock);
  const unsigned long kind = Tag(block) & kKindBits;
  if (kind >= kClasses) {
    Front* const front = static_cast<Front*>(block) - 1;
    OM_HARDEN(kind == kOwn, "OmMemoryRegion::Release");
    counted -= front->bytes;
    used.Subtract(front->bytes);
    if (working || kOwnBlocks) {
      ReturnOwn(front);
    }
    return;
  }
  counted -= kSizes[kind];
  if (working) {
    PushFree(block, static_cast<unsigned int>(kind), isZero);
  } else {
    used.Subtract(kSizes[kind]);
  }
}

// Begins a new chunk with room for `stride` bytes: from the heap as long as the region is small,
// else of pages, which occupy no memory before blocks reach them. As large as all that the region
// holds, within bounds. Coarse blocks get chunks of their own in a large region, so that its cells
// lie close to each other, in the order in which they were made.
void OmMemoryRegion::AddChunk(Rest& rest, unsigned long stride) {
  constexpr unsigned long kAround = sizeof(Chunk) + kTagBytes;
  const bool isPages = bytesHeld >= kLeastApart || stride > kLastHeapChunk - kAround;
  const unsigned long usual =
      isPages ? std::clamp(std::bit_floor(bytesHeld), kLeastApart, kLastPageChunk)
              : std::clamp(std::bit_floor(bytesHeld), kFirstChunk, kLastHeapChunk);
  const unsigned long whole =
      RoundUp(std::max(usual, stride + kAround + kSystemHeader), isPages ? kPage : kFirstChunk);
  const unsigned long bytes = isPages ? whole : whole - kSystemHeader;
  void* const memory = isPages ? MapPages(bytes) : ::operator new(bytes);
  Retire(rest);
  chunks = new (memory) Chunk{chunks, isPages ? bytes : 0};
  bytesHeld += bytes;
  // So that a block, which follows its tag, is aligned.
  rest.bump = reinterpret_cast<char*>(chunks) + kAround;
  rest.end = reinterpret_cast<char*>(chunks) + bytes;
  rest.zero = isPages;
}

// Puts what is left of a chunk on the free lists.
void OmMemoryRegion::Retire(Rest& rest) noexcept {
  while (rest.Bytes() >= kStep) {
    unsigned int sizeClass = ClassFor(std::min(rest.Bytes() - kTagBytes, kLargestClass));
    if (kSizes[sizeClass] + kTagBytes > rest.Bytes()) {
      --sizeClass;
    }
    PushFree(Carve(rest, sizeClass), sizeClass, rest.zero);
  }
}

// --- Blocks of their own ------------------------------------------------------------------------

void* OmMemoryRegion::AllocateOwn(unsigned long bytes, bool zeroed) {
  if (bytes > kLargestBlock) {
    throw std::bad_alloc();
  }
  CheckLimit(bytes);
  const unsigned long whole = sizeof(Front) + bytes;
  void* const memory = kOwnBlocks ? ::operator new(whole) : MapPages(RoundUp(whole, kPage));
  own = new (memory) Front{nullptr, own, bytes, TagFor(this, kOwn)};
  if (own->next != nullptr) {
    own->next->previous = own;
  }
  counted += bytes;
  used.Add(bytes);
  bytesHeld += whole;
  if (kOwnBlocks) {
    // A pattern, so that nobody relies on what fresh memory holds.
    std::memset(own + 1, zeroed ? 0 : 0xa5, bytes);
  }
  return own + 1;
}

void OmMemoryRegion::ReturnOwn(Front* front) noexcept {
  (front->previous != nullptr ? front->previous->next : own) = front->next;
  if (front->next != nullptr) {
    front->next->previous = front->previous;
  }
  const unsigned long whole = sizeof(Front) + front->bytes;
  bytesHeld -= whole;
  if (kOwnBlocks) {
    // Recognised if it is released twice before somebody else gets the memory.
    front->tag = TagFor(this, kReleased);
    ::operator delete(front);
  } else {
    munmap(front, RoundUp(whole, kPage));
  }
}
