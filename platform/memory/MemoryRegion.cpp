#include "platform/memory/MemoryRegion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "backend/tables/om/Assert.h"

#if defined(__SANITIZE_ADDRESS__)
#define OM_SEES_ADDRESSES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OM_SEES_ADDRESSES 1
#endif
#endif

#ifdef OM_SEES_ADDRESSES
#include <sanitizer/asan_interface.h>
// For the few functions that read and write what is poisoned to everyone else. Never inlined,
// because their callers are checked.
#define OM_UNPOISONED __attribute__((noinline, no_sanitize("address")))
#else
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define OM_UNPOISONED inline
#include <sys/mman.h>
#endif

static_assert(sizeof(void*) == 8 && sizeof(unsigned long) == 8);

struct OmMemoryRegion::Lock {
  std::mutex mutex;
};

// Stands at the start of a chunk. The first tag follows, so that the block behind that is aligned.
struct OmMemoryRegion::Chunk {
  Chunk* next;
};

// Stands at the start of pages that read as zeros until somebody writes there.
struct OmMemoryRegion::Span {
  Span* next;
  unsigned long bytes;
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

// The default heap with its lock: one object that needs no memory, so that it cannot fail.
struct OmMemoryRegion::Heap {
  Lock lock;
  OmMemoryRegion region{&lock};
};

namespace {

constexpr unsigned long kTagBytes = 8;
constexpr unsigned long kStep = 16;
constexpr unsigned long kLastFineStride = 272;
constexpr unsigned int kFineClasses = 17;
// The other kinds of blocks: large, from the system's allocator; of zeros, from a chunk of
// untouched pages; of zeros, with pages of its own; of zeros, inside a small block. The first sets
// all bits.
constexpr unsigned int kLargeClass = 0x3fff;
constexpr unsigned int kZeroedClass = 0x3ffe;
constexpr unsigned int kMappedClass = 0x3ffd;
constexpr unsigned int kInsideClass = 0x3ffc;
constexpr unsigned long kFirstChunk = 1024;
constexpr unsigned long kLastDoubling = 64UL << 10;
// What all chunks of a region come to when it is no longer small.
constexpr unsigned long kLeastReusing = 16UL << 10;
constexpr unsigned long kPage = 4096;
// Spans are aligned to it, for systems that give huge pages unasked. To ask costs more than it
// gives where a host has to find the memory first: 8.6 us for each 4 KiB was measured, against 1.5
// us.
constexpr unsigned long kHugePage = 2UL << 20;
constexpr unsigned long kFirstSpan = 4UL << 20;
constexpr unsigned long kLastSpan = 1UL << 30;
// Blocks of zeros from this size on have pages of their own, which go back with the block.
constexpr unsigned long kLeastMapped = 1UL << 20;
constexpr unsigned long kFirstZeroChunk = 64UL << 10;
constexpr unsigned long kLastZeroChunk = 16UL << 20;
// How many released blocks of zeros are looked at for one that will do.
constexpr int kMostLooks = 16;
constexpr unsigned long kNoLimit = ~0UL;
// Left out of each chunk, so that it fills whole pages together with the system's own header.
constexpr unsigned long kSystemHeader = 16;
constexpr unsigned long kLargestBlock = 1UL << 39;
// Where something watches over every block, nothing is done without it.
#if defined(OM_SEES_ADDRESSES) || (defined(OM_HARDENING) && OM_HARDENING)
constexpr bool kChecked = true;
#else
constexpr bool kChecked = false;
#endif
#ifdef OM_SEES_ADDRESSES
constexpr bool kChunksOnly = true;
#else
constexpr bool kChunksOnly = false;
#endif
// What all chunks of a region come to when it goes on in spans, and when coarse blocks get their
// own.
constexpr unsigned long kLeastForSpans = kChunksOnly ? ~0UL : 2 * kLastDoubling;
constexpr unsigned long kLeastApart = kChunksOnly ? ~0UL : 4 * kLastDoubling;
// Bytes behind each block that belong to nobody. A sanitizer sees a read that goes past the block
// even where the block fills its class.
#ifdef OM_SEES_ADDRESSES
constexpr unsigned long kRedZone = 16;
#else
constexpr unsigned long kRedZone = 0;
#endif

// Bytes from one block of the class to the next. From 336 on they stand 16 above a round number, so
// that 2^n pointers and the tag fit without waste.
constexpr unsigned long StrideOf(unsigned int sizeClass) {
  if (sizeClass < kFineClasses) {
    return (sizeClass + 1) * kStep;
  }
  const unsigned int coarse = sizeClass - kFineClasses;
  return ((5UL + coarse % 4) << (6 + coarse / 4)) + kStep;
}

// The class with the smallest stride that is not below `stride`, a multiple of 16.
constexpr unsigned int ClassOf(unsigned long stride) {
  if (stride <= kLastFineStride) {
    return static_cast<unsigned int>(stride / kStep) - 1;
  }
  const unsigned long top = stride - kStep - 1;
  const auto doubling = static_cast<unsigned int>(std::bit_width(top)) - 1;
  const auto quarter = static_cast<unsigned int>(top >> (doubling - 2)) & 3U;
  return kFineClasses + (doubling - 8) * 4 + quarter;
}

constexpr unsigned int kAllClasses = 41;
constexpr unsigned long kLargestStride = StrideOf(kAllClasses - 1);
constexpr unsigned long kLargestSmall = kLargestStride - kTagBytes - kRedZone;

constexpr bool ClassesAgree() {
  unsigned long previous = 0;
  for (unsigned int c = 0; c < kAllClasses; ++c) {
    const unsigned long stride = StrideOf(c);
    if (stride % kStep != 0 || stride <= previous || ClassOf(stride) != c ||
        ClassOf(previous + kStep) != c) {
      return false;
    }
    previous = stride;
  }
  return previous == 16 * 1024 + kStep;
}
static_assert(ClassesAgree());

// StrideOf, ready made.
constexpr auto kStrides = [] {
  std::array<unsigned short, kAllClasses> strides{};
  for (unsigned int c = 0; c < kAllClasses; ++c) {
    strides[c] = static_cast<unsigned short>(StrideOf(c));
  }
  return strides;
}();

constexpr unsigned long RoundUp(unsigned long n, unsigned long step) {
  return (n + step - 1) / step * step;
}

// What stands in front of a large block.
constexpr unsigned long kFrontBytes = 48;

// The class of a block of `bytes` bytes, which are at most kLargestSmall.
constexpr unsigned int SmallClassFor(unsigned long bytes) {
  return ClassOf(RoundUp(bytes + kTagBytes + kRedZone, kStep));
}

unsigned long Address(const char* at) {
  return reinterpret_cast<unsigned long>(at);
}

// A tag holds the owner in its upper 48 bits and the size class below. Where hardening is on, the
// top bit of the class marks a block that is released.
[[maybe_unused]] constexpr unsigned long kReleased = 0x8000;
// Marks a released block that had marks, and is zeros behind its front.
constexpr unsigned long kClean = 0x4000;

unsigned long TagFor(OmMemoryRegion* owner, unsigned int sizeClass) {
  return reinterpret_cast<unsigned long>(owner) << 16 | sizeClass;
}

OmMemoryRegion* OwnerIn(unsigned long tag) {
  return reinterpret_cast<OmMemoryRegion*>(tag >> 16);
}

unsigned int ClassIn(unsigned long tag) {
  return static_cast<unsigned int>(tag & kLargeClass);
}

OM_UNPOISONED unsigned long TagOf(const void* block) {
  return static_cast<const unsigned long*>(block)[-1];
}
OM_UNPOISONED void SetTag(void* block, unsigned long tag) {
  static_cast<unsigned long*>(block)[-1] = tag;
}
OM_UNPOISONED void* NextFree(const void* block) {
  return *static_cast<void* const*>(block);
}
OM_UNPOISONED void SetNextFree(void* block, void* next) {
  *static_cast<void**>(block) = next;
}

// Tells a released block from a live one, where hardening is on.
inline void MarkReleased([[maybe_unused]] void* block, [[maybe_unused]] bool released) {
#if defined(OM_HARDENING) && OM_HARDENING
  const unsigned long tag = TagOf(block);
  SetTag(block, released ? tag | kReleased : tag & ~kReleased);
#endif
}

// Bytes that the marks of a block take, a multiple of 16.
constexpr unsigned long MarksBytes(unsigned long bytes) {
  // As many for all small blocks, so that they stand at one place in any of them.
  return RoundUp(std::max(bytes, kLargestSmall), 128 * OmMemoryRegion::kMarkedBytes) /
         OmMemoryRegion::kMarkedBytes / 8;
}

// Bytes in front of a block of `bytes` bytes that has marks.
constexpr unsigned long AroundMarked(unsigned long bytes) {
  return MarksBytes(bytes) + kFrontBytes;
}

// Takes pages from the system that nobody has touched and that read as zeros. A leak checker
// follows pointers through the ordinary heap only.
void* TakePages(unsigned long bytes) {
#ifdef OM_SEES_ADDRESSES
  void* const pages = std::calloc(1, bytes);
  if (pages == nullptr) {
    throw std::bad_alloc();
  }
#else
  void* const pages =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    throw std::bad_alloc();
  }
#endif
  return pages;
}

void ReturnPages(void* pages, [[maybe_unused]] unsigned long bytes) noexcept {
#ifdef OM_SEES_ADDRESSES
  std::free(pages);
#else
  munmap(pages, bytes);
#endif
}

}  // namespace

// Fills with zeros what is marked, and clears the marks.
void OmMemoryRegion::Clear(Large& front) noexcept {
  char* const block = reinterpret_cast<char*>(&front + 1);
  for (unsigned long at = 0; at < front.bytes; at += kMarkedBytes) {
    const unsigned long i = at / kMarkedBytes;
    if ((front.marks[i / 64] >> i % 64 & 1) != 0) {
      std::memset(block + at, 0, std::min(kMarkedBytes, front.bytes - at));
    }
  }
  std::memset(front.marks, 0, MarksBytes(front.bytes));
}

// What a block that the region gives back by itself takes from the system.
unsigned long OmMemoryRegion::Whole(const Large& front) noexcept {
  const unsigned long whole = sizeof(Large) + front.bytes;
  return front.marks == nullptr ? whole : RoundUp(MarksBytes(front.bytes) + whole, kPage);
}

void OmMemoryRegion::GiveBack(Large* front) noexcept {
  if (front->marks == nullptr) {
    ::operator delete(front);
  } else {
    ReturnPages(front->marks, Whole(*front));
  }
}

OmMemoryRegion::OmMemoryRegion(bool shared) : OmMemoryRegion(shared ? new Lock : nullptr) {}

OmMemoryRegion::OmMemoryRegion(Lock* lock_) noexcept
    : lock(lock_), plain(lock_ == nullptr && !kChecked) {
  static_assert(kClassBits == kLargeClass && kClasses == kAllClasses &&
                kMostFine == kLastFineStride - kTagBytes);
  static_assert(sizeof(Large) == kFrontBytes && kFrontBytes % 16 == 0);
  OM_HARDEN(OwnerIn(TagFor(this, 0)) == this, "OmMemoryRegion::OmMemoryRegion");
  // Of a size that the compiler knows it would clear them by an instruction that takes 30 cycles to
  // begin.
  unsigned long bytes = sizeof(freeLists);
  asm("" : "+r"(bytes));
  std::memset(freeLists, 0, bytes);
}

OmMemoryRegion::~OmMemoryRegion() {
  while (chunks != nullptr) {
    Chunk* const next = chunks->next;
    ::operator delete(chunks);
    chunks = next;
  }
  while (large != nullptr) {
    Large* const next = large->next;
    GiveBack(large);
    large = next;
  }
  while (spans != nullptr) {
    Span* const next = spans->next;
    ReturnPages(spans, spans->bytes);
    spans = next;
  }
  delete lock;
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  // Never destroyed: what static objects hold is released after the last destructor that could run
  // here.
  alignas(Heap) static unsigned char storage[sizeof(Heap)];
  static OmMemoryRegion* const heap = &(new (storage) Heap)->region;
  return heap;
}

void* OmMemoryRegion::AllocateZeroed(unsigned long bytes) {
  return Take(bytes, true);
}

void OmMemoryRegion::ReleaseAny(void* block) noexcept {
  unsigned long tag = TagOf(block);
  if (ClassIn(tag) == kInsideClass) {
    OM_HARDEN((tag & kReleased) == 0, "OmMemoryRegion::Release");
    MarkReleased(block, true);
    Large& front = *(static_cast<Large*>(block) - 1);
    block = front.inside;
    tag = TagOf(block);
    if (!OwnerIn(tag)->leaving) {
      // Cheaper now, by the marks, than all of it when it is used again.
      Clear(front);
      SetTag(block, tag | kClean);
    }
  }
  OmMemoryRegion* const owner = OwnerIn(tag);
  if (owner->plain) {
    owner->Return(block, tag);
  } else if (const unsigned int sizeClass = ClassIn(tag);
             owner->leaving && sizeClass < kAllClasses) {
    // It goes with its chunk.
    owner->given.Take(kStrides[sizeClass] - kTagBytes);
  } else {
    owner->ReturnWithCare(block, tag);
  }
}

// What waits counts as released already. A shared region, where nothing waits, is only read here,
// without the lock.
void OmMemoryRegion::EndPostponed() const noexcept {
  if (postponed != nullptr) {
    Postponed& waiting = *std::exchange(postponed, nullptr);
    for (void*& object : waiting.objects) {
      if (object != nullptr) {
        waiting.end(std::exchange(object, nullptr));
      }
    }
  }
}

void OmMemoryRegion::WorkingRelease(bool working_) noexcept {
  EndPostponed();
  const Guard guard(lock);
  working = working_;
  SettlePlain();
}

void OmMemoryRegion::Limit(unsigned long bytes) noexcept {
  EndPostponed();
  const Guard guard(lock);
  if (limit == kNoLimit) {
    counted = InUse().bytes;
  }
  limit = bytes;
  SettlePlain();
}

// A shared region is never plain, which is read without the lock.
void OmMemoryRegion::SettlePlain() noexcept {
  if (lock == nullptr) {
    const bool simple = limit == kNoLimit && !kChecked;
    plain = working && simple;
    leaving = !working && simple;
    Open();
  }
}

// Settles what TryAllocate, which takes no lock, may do in a region that is not shared.
inline void OmMemoryRegion::Open() noexcept {
  reuses = plain && chunkBytes >= kLeastReusing;
  open = plain && !reuses ? Address(fine.end) : 0;
}

unsigned long OmMemoryRegion::BytesInUse() const noexcept {
  EndPostponed();
  const Guard guard(lock);
  return InUse().bytes;
}

unsigned long OmMemoryRegion::BytesHeld() const noexcept {
  EndPostponed();
  const Guard guard(lock);
  return bytesHeld;
}

unsigned long OmMemoryRegion::LiveBlocks() const noexcept {
  EndPostponed();
  const Guard guard(lock);
  return InUse().blocks;
}

OmMemoryRegion::Tally OmMemoryRegion::InUse() const noexcept {
  Tally tally = given;
  tally.blocks += carved;
  tally.bytes += settled + Address(fine.bump) + Address(coarse.bump) - carved * kTagBytes;
  for (unsigned int c = 0; c != kClasses; ++c) {
    for (const void* block = freeLists[c]; block != nullptr; block = NextFree(block)) {
      tally.Take(kStrides[c] - kTagBytes);
    }
  }
  return tally;
}

// --- Small blocks -------------------------------------------------------------------------------

void* OmMemoryRegion::Take(unsigned long bytes, bool zeroed) {
  if (!plain) {
    return TakeWithCare(bytes, zeroed);
  }
  EndPostponed();
  return zeroed ? TakeZeroed(bytes) : TakeAny(bytes);
}

// Takes a block of a region that is shared, limited, on its way out or watched.
void* OmMemoryRegion::TakeWithCare(unsigned long bytes, bool zeroed) {
  const Guard guard(lock);
  const bool marked = zeroed && bytes > kMostUnmarked && bytes <= kLargestSmall;
  const unsigned long whole = marked ? AroundMarked(bytes) + bytes : bytes;
  const unsigned long size =
      whole > kLargestSmall ? bytes : kStrides[SmallClassFor(whole)] - kTagBytes;
  if (limit != kNoLimit && (counted > limit || size > limit - counted)) {
    throw std::bad_alloc();
  }
  void* const block = zeroed ? TakeZeroed(bytes) : TakeAny(bytes);
  counted += SizeOf(block, TagOf(block));
  return block;
}

inline void* OmMemoryRegion::TakeAny(unsigned long bytes) {
  if (bytes > kLargestSmall) {
    return TakeLarge(bytes);
  }
  const unsigned int sizeClass = SmallClassFor(bytes);
  void* const block = freeLists[sizeClass];
  if (block == nullptr) {
    return TakeFromChunk(bytes, sizeClass);
  }
  freeLists[sizeClass] = NextFree(block);
  if (plain && sizeClass < kFineClasses) {
    // As a rule the chunk is used up.
    reuses = true;
    open = 0;
  }
  SetTag(block, TagFor(this, sizeClass));
  ASAN_UNPOISON_MEMORY_REGION(block, bytes);
  return block;
}

void* OmMemoryRegion::TakeFromChunk([[maybe_unused]] unsigned long bytes, unsigned int sizeClass) {
  const unsigned long stride = kStrides[sizeClass];
  // Nothing is written to `fine` in a shared region, where TryAllocate reads it without the lock.
  const bool isApart = sizeClass >= kFineClasses && chunkBytes >= kLeastApart;
  Rest& rest = isApart || lock != nullptr ? coarse : fine;
  if (rest.Bytes() < stride) {
    AddChunk(rest, stride);
    if (lock == nullptr) {
      Open();
    }
  }
  void* const block = Carve(rest, sizeClass);
  ASAN_UNPOISON_MEMORY_REGION(block, bytes);
  return block;
}

inline void* OmMemoryRegion::Carve(Rest& rest, unsigned int sizeClass) noexcept {
  void* const block = rest.bump + kTagBytes;
  rest.bump += kStrides[sizeClass];
  SetTag(block, TagFor(this, sizeClass));
  ++carved;
  return block;
}

// Takes as much again as all chunks are, or what one block needs where that is more. Where all are
// a lot, goes on in a span.
void OmMemoryRegion::AddChunk(Rest& rest, unsigned long stride) {
  constexpr unsigned long kAround = sizeof(Chunk) + kTagBytes;
  if (rest.end != rest.spanEnd) {
    Extend(rest);
    return;
  }
  if (chunkBytes >= kLeastForSpans) {
    AddSpan(rest);
    return;
  }
  const unsigned long usual = std::clamp(std::bit_floor(chunkBytes), kFirstChunk, kLastDoubling);
  const unsigned long whole =
      std::max(usual, RoundUp(stride + kAround + kSystemHeader, kFirstChunk));
  const unsigned long bytes = whole - kSystemHeader;
  auto* const chunk = static_cast<Chunk*>(::operator new(bytes));

  Retire(rest);
  chunk->next = chunks;
  chunks = chunk;
  chunkBytes += whole;
  bytesHeld += bytes;
  rest.bump = reinterpret_cast<char*>(chunk + 1);
  settled -= Address(rest.bump);
  rest.end = rest.spanEnd = rest.bump + (bytes - kAround) / kStep * kStep;
  ASAN_POISON_MEMORY_REGION(rest.bump, bytes - sizeof(Chunk));
}

// Moves the end of a chunk that is in a span on.
void OmMemoryRegion::Extend(Rest& rest) noexcept {
  rest.end += kLastDoubling;
  chunkBytes += kLastDoubling;
  bytesHeld += kLastDoubling;
}

// Begins a span, pages as many as all chunks are, which cost nothing before they are reached, or
// fewer where the system has not that many. The chunk is extended in it from then on.
void OmMemoryRegion::AddSpan(Rest& rest) {
  unsigned long bytes = std::clamp(RoundUp(chunkBytes, kHugePage), kFirstSpan, kLastSpan);
  char* pages = nullptr;
  while (pages == nullptr) {
    try {
      pages = static_cast<char*>(TakePages(bytes + kHugePage));
    } catch (const std::bad_alloc&) {
      if (bytes == kFirstSpan) {
        throw;
      }
      bytes = std::max(RoundUp(bytes / 2, kHugePage), kFirstSpan);
    }
  }
  const unsigned long before = -reinterpret_cast<unsigned long>(pages) % kHugePage;
  char* const start = pages + before;
  if (before != 0) {
    ReturnPages(pages, before);
  }
  ReturnPages(start + bytes, kHugePage - before);
  Retire(rest);
  rest.bump = start + sizeof(Span) + kTagBytes;
  settled -= Address(rest.bump);
  // A tag would fit between where blocks end and the next page.
  rest.end = start - kTagBytes;
  rest.spanEnd = rest.end + bytes;
  Extend(rest);
  spans = new (start) Span{spans, bytes};
}

// Leaves what is unused of a chunk to the free lists. It is less than the block that did not fit.
inline void OmMemoryRegion::Retire(Rest& rest) noexcept {
  while (rest.Bytes() > kLastFineStride) {
    unsigned int sizeClass = ClassOf(rest.Bytes());
    if (kStrides[sizeClass] > rest.Bytes()) {
      --sizeClass;
    }
    PushFree(Carve(rest, sizeClass), sizeClass);
  }
  if (rest.Bytes() != 0) {
    const unsigned int sizeClass = ClassOf(rest.Bytes());
    PushFree(Carve(rest, sizeClass), sizeClass);
  }
  settled += Address(rest.bump);
}

inline void OmMemoryRegion::PushFree(void* block, unsigned int sizeClass) noexcept {
  MarkReleased(block, true);
  SetNextFree(block, freeLists[sizeClass]);
  freeLists[sizeClass] = block;
}

inline void OmMemoryRegion::Return(void* block, unsigned long tag) noexcept {
  OM_HARDEN((tag & kReleased) == 0, "OmMemoryRegion::Release");
  const unsigned int sizeClass = ClassIn(tag);
  OM_HARDEN(sizeClass < kAllClasses || sizeClass >= kMappedClass, "OmMemoryRegion::Release");
  if (sizeClass >= kMappedClass) {
    ReturnLarge(static_cast<Large*>(block) - 1);
    return;
  }
  ASAN_POISON_MEMORY_REGION(block, kStrides[sizeClass] - kTagBytes);
  PushFree(block, sizeClass);
}

// Takes back a block of a region that is shared, limited or on its way out.
[[gnu::noinline]] void OmMemoryRegion::ReturnWithCare(void* block, unsigned long tag) noexcept {
  const Guard guard(lock);
  const unsigned long size = SizeOf(block, tag);
  counted -= size;
  if (working) {
    Return(block, tag);
    return;
  }
  // Neither used again nor given back before the region goes.
  OM_HARDEN((tag & kReleased) == 0, "OmMemoryRegion::Release");
  given.Take(size);
  MarkReleased(block, true);
  ASAN_POISON_MEMORY_REGION(block, size);
}

inline unsigned long OmMemoryRegion::SizeOf(void* block, unsigned long tag) noexcept {
  const Large* const front = static_cast<Large*>(block) - 1;
  const unsigned int sizeClass =
      ClassIn(tag) != kInsideClass ? ClassIn(tag) : ClassIn(TagOf(front->inside));
  return sizeClass < kAllClasses ? kStrides[sizeClass] - kTagBytes : front->bytes;
}

// --- Large blocks -------------------------------------------------------------------------------

void* OmMemoryRegion::TakeLarge(unsigned long bytes) {
  if (bytes > kLargestBlock) {
    throw std::bad_alloc();
  }
  auto* const front = static_cast<Large*>(::operator new(sizeof(Large) + bytes));
  front->marks = nullptr;
  Link(front, bytes, kLargeClass);
  return front + 1;
}

void* OmMemoryRegion::TakeZeroed(unsigned long bytes) {
  if (bytes <= kMostUnmarked) {
    return std::memset(TakeAny(bytes), 0, bytes);
  }
  if (bytes > kLargestBlock) {
    throw std::bad_alloc();
  }
  const unsigned long around = AroundMarked(bytes);
  if (around + bytes <= kLargestSmall) {
    return TakeInside(bytes);
  }
  if (bytes >= kLeastMapped) {
    auto* const pages = static_cast<char*>(TakePages(RoundUp(around + bytes, kPage)));
    Large* const front = reinterpret_cast<Large*>(pages + around) - 1;
    front->marks = reinterpret_cast<unsigned long*>(pages);
    Link(front, bytes, kMappedClass);
    ASAN_POISON_MEMORY_REGION(pages + around + bytes,
                              RoundUp(around + bytes, kPage) - around - bytes);
    return front + 1;
  }
  Large* front = FindZeroed(bytes);
  if (front == nullptr) {
    front = CarveZeroed(bytes);
  }
  given.Add(front->bytes);
  SetTag(front + 1, TagFor(this, kZeroedClass));
  ASAN_UNPOISON_MEMORY_REGION(front + 1, bytes);
  return front + 1;
}

// Carves a coarse block without rounding it up to a class, so that its end and the front of the
// next one share a page. It is of the class below, and what it is longer counts as not carved.
void* OmMemoryRegion::CarveExactly(unsigned long bytes) {
  const unsigned long stride = RoundUp(bytes + kTagBytes, kStep);
  if (coarse.Bytes() < stride) {
    AddChunk(coarse, stride);
  }
  unsigned int sizeClass = ClassOf(stride);
  if (kStrides[sizeClass] > stride) {
    --sizeClass;
  }
  void* const block = Carve(coarse, sizeClass);
  const unsigned long more = stride - kStrides[sizeClass];
  coarse.bump += more;
  settled -= more;
  return block;
}

// Takes a small block that is zeros already, where there is one: carved from the pages of a span,
// or, as far as it was used, released as such.
void* OmMemoryRegion::TakeInside(unsigned long bytes) {
  const unsigned long around = AroundMarked(bytes);
  const void* const listed = freeLists[SmallClassFor(around + bytes)];
  const bool isClean = listed != nullptr && (TagOf(listed) & kClean) != 0;
  const bool isFresh = listed == nullptr && chunkBytes >= kLeastApart;
  auto* const inside =
      static_cast<char*>(isFresh ? CarveExactly(around + bytes) : TakeAny(around + bytes));
  Large* const front = reinterpret_cast<Large*>(inside + around) - 1;
  if (isClean) {
    // The front is written anew. The link was in the first mark.
    std::memset(inside, 0, sizeof(void*));
    if (front->bytes < bytes) {
      std::memset(inside + around + front->bytes, 0, bytes - front->bytes);
    }
  } else if (!isFresh) {
    std::memset(inside, 0, around + bytes);
  }
  front->marks = reinterpret_cast<unsigned long*>(inside);
  front->inside = inside;
  front->bytes = bytes;
  SetTag(front + 1, TagFor(this, kInsideClass));
  ASAN_POISON_MEMORY_REGION(&front->tag, kTagBytes);
  return front + 1;
}

// Returns a released block of zeros, cleared, or null where there is none of about that size.
OmMemoryRegion::Large* OmMemoryRegion::FindZeroed(unsigned long bytes) noexcept {
  Large** place = &freeZeroed;
  for (int i = 0; i != kMostLooks && *place != nullptr; ++i) {
    Large* const front = *place;
    const bool allowed = limit == kNoLimit || front->bytes <= limit - counted;
    if (front->bytes >= bytes && front->bytes / 2 <= bytes && allowed) {
      *place = front->next;
      ASAN_UNPOISON_MEMORY_REGION(front + 1, front->bytes);
      Clear(*front);
      return front;
    }
    place = &front->next;
  }
  return nullptr;
}

OmMemoryRegion::Large* OmMemoryRegion::CarveZeroed(unsigned long bytes) {
  const unsigned long around = AroundMarked(bytes);
  const unsigned long whole = around + RoundUp(bytes + kRedZone, kStep);
  if (static_cast<unsigned long>(zerosEnd - zeros) < whole) {
    // As much again as all such chunks are, in pages that cost nothing before they are reached.
    const unsigned long chunk = RoundUp(
        std::max(std::clamp(zeroChunkBytes, kFirstZeroChunk, kLastZeroChunk), whole + sizeof(Span)),
        kPage);
    spans = new (TakePages(chunk)) Span{spans, chunk};
    zeroChunkBytes += chunk;
    zeros = reinterpret_cast<char*>(spans + 1);
    zerosEnd = reinterpret_cast<char*>(spans) + chunk;
  }
  Large* const front = reinterpret_cast<Large*>(zeros + around) - 1;
  front->marks = reinterpret_cast<unsigned long*>(zeros);
  zeros += whole;
  bytesHeld += whole;
  front->bytes = bytes;
  ASAN_POISON_MEMORY_REGION(&front->tag, kTagBytes);
  ASAN_POISON_MEMORY_REGION(zeros - kRedZone, kRedZone);
  return front;
}

void OmMemoryRegion::ReturnLarge(Large* front) noexcept {
  given.Take(front->bytes);
  MarkReleased(front + 1, true);
  if (ClassIn(TagOf(front + 1)) == kZeroedClass) {
    ASAN_POISON_MEMORY_REGION(front + 1, front->bytes);
    front->next = freeZeroed;
    freeZeroed = front;
    return;
  }
  bytesHeld -= Whole(*front);
  (front->previous != nullptr ? front->previous->next : large) = front->next;
  if (front->next != nullptr) {
    front->next->previous = front->previous;
  }
  GiveBack(front);
}

// Lists a new block that the region has to give back by itself.
void OmMemoryRegion::Link(Large* front, unsigned long bytes, unsigned int sizeClass) noexcept {
  front->previous = nullptr;
  front->next = large;
  front->bytes = bytes;
  if (large != nullptr) {
    large->previous = front;
  }
  large = front;
  SetTag(front + 1, TagFor(this, sizeClass));
  given.Add(bytes);
  bytesHeld += Whole(*front);
  ASAN_POISON_MEMORY_REGION(&front->tag, kTagBytes);
}
