#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <thread>
#include <vector>

#include "backend/tables/om/Vector.h"
#include "platform/memory/MemoryRegion.h"

namespace {

// A block with the pattern that fills it from some place on.
struct Held {
  unsigned char* block;
  unsigned long from;
  unsigned long bytes;
  unsigned char pattern;
};

// Random operations on two regions, one of which gives zeros: the blocks that live keep their
// contents, and what was written where it is marked comes back as zeros.
void Churn(OmMemoryRegion& region, OmMemoryRegion& zeros, unsigned int seed) {
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::vector<Held> held;
  for (int step = 0; step < 20000 || !held.empty(); ++step) {
    if (step < 20000 && (held.empty() || random() % 100 < 52)) {
      // Mostly small, now and then around the border to the large blocks or far beyond it.
      const unsigned long bytes = random() % 1000 == 0 ? random() % 3000000
                                  : random() % 16 == 0 ? 16300 + random() % 200
                                                       : random() % (1UL << random() % 17);
      const bool zeroed = random() % 2 == 0;
      auto* const block = static_cast<unsigned char*>(zeroed ? zeros.AllocateZeroed(bytes)
                                                             : region.Allocate(bytes));
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U) << bytes;
      EXPECT_TRUE(!zeroed || std::count(block, block + bytes, 0) == static_cast<long>(bytes));
      const unsigned long from = zeroed ? random() % (bytes + 1) : 0;
      held.push_back({block, from, bytes, static_cast<unsigned char>(random())});
      std::memset(block + from, held.back().pattern, bytes - from);
      unsigned long* const marks = OmMemoryRegion::Marks(block);
      EXPECT_EQ(marks != nullptr, zeroed && bytes > OmMemoryRegion::kMostUnmarked) << bytes;
      constexpr unsigned long kStep = OmMemoryRegion::kMarkedBytes;
      for (unsigned long i = from / kStep; marks != nullptr && i * kStep < bytes; ++i) {
        marks[i / 64] |= 1UL << i % 64;
      }
    } else {
      std::swap(held[random() % held.size()], held.back());
      const auto [block, from, bytes, pattern] = held.back();
      EXPECT_EQ(std::count(block + from, block + bytes, pattern), static_cast<long>(bytes - from));
      OmMemoryRegion::Release(block);
      held.pop_back();
    }
  }
}

void ExpectUse(const OmMemoryRegion& region, unsigned long blocks, unsigned long bytes) {
  EXPECT_EQ(region.LiveBlocks(), blocks);
  EXPECT_EQ(region.BytesInUse(), bytes);
}

TEST(Region, KeepsBlocksApartAndCountsThem) {
  const unsigned int seed = std::random_device{}();
  OmMemoryRegion region(false);
  OmMemoryRegion shared(true);
  OmMemoryRegion* const heap = OmMemoryRegion::SelectHeap(nullptr);
  EXPECT_EQ(heap, OmMemoryRegion::DefaultHeap());
  const unsigned long live = heap->LiveBlocks();
  const unsigned long inUse = heap->BytesInUse();
  unsigned long held = 0;
  for (int i = 0; i < 2; ++i) {
    Churn(region, shared, seed);
    ExpectUse(region, 0, 0);
    ExpectUse(shared, 0, 0);
    // All that was used is used again: the same work needs no more from the system.
    EXPECT_TRUE(i == 0 || held == region.BytesHeld());
    held = region.BytesHeld();
  }
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] { Churn(*heap, shared, seed + i); });
  }
  std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
  ExpectUse(shared, 0, 0);
  ExpectUse(*heap, live, inUse);
}

TEST(Region, IsLean) {
  static_assert(sizeof(OmMemoryRegion) <= 512);
  OmMemoryRegion region(false);
  EXPECT_EQ(region.BytesHeld(), 0U);
  std::vector<void*> blocks;
  for (int i = 0; i < 150; ++i) {
    blocks.push_back(region.Allocate(40));
    // The redzones of a sanitizer build included.
    EXPECT_LE(region.BytesHeld(), i == 0 ? 1024U : 16384U);
  }
  unsigned long sum = region.BytesInUse();
  for (unsigned long bytes = 0; bytes < 20000; bytes += bytes / 40 + 1) {
    blocks.push_back(region.Allocate(bytes));
    const unsigned long given = region.BytesInUse() - sum;
    EXPECT_GE(given, bytes);
    EXPECT_LE(given, bytes + bytes / 4 + 48) << bytes;
    sum += given;
  }
  ExpectUse(region, blocks.size(), sum);
  EXPECT_GT(region.BytesHeld(), sum);
  std::for_each(blocks.begin(), blocks.end(), OmMemoryRegion::Release);
  OmMemoryRegion::Release(nullptr);
  ExpectUse(region, 0, 0);
}

TEST(Region, UsesReleasedBlocksAgainUntilItIsOnItsWayOut) {
  OmMemoryRegion region(false);
  for (const unsigned long bytes : {8UL, 40UL, 700UL, 16000UL}) {
    void* const block = region.Allocate(bytes);
    OmMemoryRegion::Release(block);
    EXPECT_EQ(region.Allocate(bytes), block);
    region.WorkingRelease(false);
    OmMemoryRegion::Release(block);
    void* const other = region.Allocate(bytes);
    EXPECT_NE(other, block);
    region.WorkingRelease(true);
    OmMemoryRegion::Release(other);
    EXPECT_EQ(region.Allocate(bytes), other);
    OmMemoryRegion::Release(other);
  }
  void* const large = region.Allocate(100000);
  void* const kept = region.Allocate(100000);
  const unsigned long held = region.BytesHeld();
  OmMemoryRegion::Release(large);
  EXPECT_LE(region.BytesHeld() + 100000, held);
  region.WorkingRelease(false);
  OmMemoryRegion::Release(kept);
  ExpectUse(region, 0, 0);
}

TEST(Region, RefusesWhatItCannotHold) {
  OmMemoryRegion region(false);
  (void)region.Allocate(40);
  const unsigned long inUse = region.BytesInUse();
  const unsigned long held = region.BytesHeld();
  const auto refuses = [&](unsigned long bytes) {
    EXPECT_THROW((void)region.Allocate(bytes), std::bad_alloc) << bytes;
    EXPECT_THROW((void)region.AllocateZeroed(bytes), std::bad_alloc) << bytes;
  };
  for (const unsigned long bytes : {~0UL, ~0UL - 7, ~0UL - 31, ~0UL / 2, (1UL << 39) + 1}) {
    refuses(bytes);
  }
  // The limit counts what is given, not what is asked for.
  region.Limit(inUse + 100);
  refuses(2000000);
  refuses(20000);
  refuses(101);
  void* const last = region.Allocate(40);
  refuses(60);
  ExpectUse(region, 2, 2 * inUse);
  EXPECT_EQ(region.BytesHeld(), held);
  region.Limit(0);  // below what is in use
  refuses(0);
  for (const unsigned long limit : {inUse + 100, ~0UL}) {
    region.Limit(limit);
    OmMemoryRegion::Release(last);
    EXPECT_EQ(region.Allocate(40), last);
  }
}

// What only a region's blocks point to is no leak, however the blocks are chained. A sanitizer
// build looks for leaks when the process ends.
TEST(Region, ShowsALeakCheckerWhatItsBlocksHold) {
  static auto* const region = new OmMemoryRegion(false);
  static void** head = nullptr;
  for (const unsigned long bytes : {16UL, 16UL, 50000UL, 3000UL, 100000UL}) {
    auto** const link = static_cast<void**>(region->Allocate(bytes));
    link[0] = head;
    link[1] = new int(7);
    head = link;
  }
  EXPECT_EQ(*static_cast<int*>(static_cast<void**>(*head)[1]), 7);
}

// Null without a sanitizer.
extern "C" [[gnu::weak]] void* FirstPoisoned(void* begin, unsigned long bytes) __asm__(
    "__asan_region_is_poisoned");

TEST(Region, ShowsASanitizerEveryBlockByItself) {
  if (FirstPoisoned == nullptr) {
    GTEST_SKIP();
  }
  OmMemoryRegion region(false);
  for (const unsigned long bytes : {24UL, 41UL, 5000UL, 16376UL, 30000UL}) {
    auto* const block = static_cast<char*>(region.Allocate(bytes));
    (void)region.Allocate(bytes);
    EXPECT_EQ(FirstPoisoned(block, bytes), nullptr) << bytes;
    EXPECT_EQ(FirstPoisoned(block + bytes, 1), block + bytes);
    EXPECT_EQ(FirstPoisoned(block - 1, 1), block - 1);
    OmMemoryRegion::Release(block);
    EXPECT_EQ(FirstPoisoned(block, 1), block);
  }
}

}  // namespace
