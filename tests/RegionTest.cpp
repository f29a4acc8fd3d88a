#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <thread>
#include <vector>

#include "backend/tables/om/Vector.h"
#include "platform/memory/MemoryRegion.h"

namespace {

// A block with the pattern that it was filled with.
struct Held {
  unsigned char* block;
  unsigned long bytes;
  unsigned char pattern;
};

Held Take(OmMemoryRegion& region, unsigned long bytes, unsigned char pattern) {
  auto* const block = static_cast<unsigned char*>(region.Allocate(bytes));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U) << bytes;
  std::memset(block, pattern, bytes);
  return {block, bytes, pattern};
}

// Checks that nobody else wrote into the block, and releases it.
void GiveBack(const Held& held) {
  EXPECT_EQ(std::count(held.block, held.block + held.bytes, held.pattern),
            static_cast<long>(held.bytes));
  OmMemoryRegion::Release(held.block);
}

// Random operations on the regions; the blocks that live must keep their contents.
void Churn(const std::vector<OmMemoryRegion*>& regions, unsigned int seed) {
  std::mt19937 random(seed);
  std::vector<Held> held;
  for (int step = 0; step < 20000; ++step) {
    if (held.empty() || random() % 100 < 52) {
      // Mostly small, now and then around the border to the large blocks or far beyond it.
      const unsigned long bytes =
          random() % 16 == 0 ? 16300 + random() % 200 : random() % (1UL << random() % 17);
      held.push_back(
          Take(*regions[random() % regions.size()], bytes, static_cast<unsigned char>(random())));
    } else {
      std::swap(held[random() % held.size()], held.back());
      GiveBack(held.back());
      held.pop_back();
    }
  }
  std::for_each(held.begin(), held.end(), GiveBack);
}

void ExpectUse(const OmMemoryRegion& region, unsigned long blocks, unsigned long bytes) {
  EXPECT_EQ(region.LiveBlocks(), blocks);
  EXPECT_EQ(region.BytesInUse(), bytes);
}

TEST(Region, KeepsBlocksApartAndCountsThem) {
  const unsigned int seed = std::random_device{}();
  SCOPED_TRACE(seed);
  OmMemoryRegion region(false);
  OmMemoryRegion shared(true);
  OmMemoryRegion* const heap = OmMemoryRegion::SelectHeap(nullptr);
  EXPECT_EQ(heap, OmMemoryRegion::DefaultHeap());
  const unsigned long live = heap->LiveBlocks();
  const unsigned long inUse = heap->BytesInUse();
  unsigned long held = 0;
  for (int i = 0; i < 2; ++i) {
    Churn({&region, &shared, heap}, seed);
    ExpectUse(region, 0, 0);
    ExpectUse(shared, 0, 0);
    ExpectUse(*heap, live, inUse);
    // All that was used is used again: the same work needs no more from the system.
    EXPECT_TRUE(i == 0 || held == region.BytesHeld());
    held = region.BytesHeld();
  }
}

// Blocks of zeros of all kinds, used again while others live: written where they are marked, they
// come back as zeros, and what is not marked is nobody's.
TEST(Region, GivesZerosAgainWhereItsOwnerMarked) {
  const unsigned int seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  OmMemoryRegion region(false);
  std::vector<Held> held;
  for (int step = 0; step < 600; ++step) {
    if (held.size() > 20) {
      std::swap(held[random() % held.size()], held.back());
      const unsigned long inUse = region.BytesInUse();
      OmMemoryRegion::Release(held.back().block);
      EXPECT_GE(inUse, region.BytesInUse() + held.back().bytes);
      held.pop_back();
    }
    const unsigned long bytes = random() % 8 == 0 ? random() % 3000000 : random() % 60000;
    auto* const block = static_cast<unsigned char*>(region.AllocateZeroed(bytes));
    ASSERT_EQ(std::count(block, block + bytes, 0), static_cast<long>(bytes)) << bytes;
    unsigned long* const marks = OmMemoryRegion::Marks(block);
    EXPECT_EQ(marks != nullptr, bytes > OmMemoryRegion::kMostUnmarked) << bytes;
    for (int i = 0; i < 50 && bytes != 0; ++i) {
      const unsigned long at = i == 0 ? bytes - 1 : random() % bytes;
      block[at] = 0xff;
      if (marks != nullptr) {
        marks[at / OmMemoryRegion::kMarkedBytes / 64] |= 1UL
                                                         << at / OmMemoryRegion::kMarkedBytes % 64;
      }
    }
    held.push_back({block, bytes, 0});
  }
  EXPECT_EQ(region.LiveBlocks(), held.size());
  EXPECT_EQ(OmMemoryRegion::Marks(region.Allocate(50000)), nullptr);
  region.Limit(region.BytesInUse() + 30000);
  EXPECT_THROW((void)region.AllocateZeroed(30001), std::bad_alloc);
  EXPECT_THROW((void)region.AllocateZeroed(2000000), std::bad_alloc);
}

TEST(Region, CountsEveryBlockWithItsSizeClass) {
  OmMemoryRegion region(false);
  EXPECT_EQ(region.BytesHeld(), 0U);
  std::vector<void*> blocks;
  unsigned long sum = 0;
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

TEST(Region, IsLeanWhileItIsSmall) {
  OmMemoryRegion region(false);
  for (int i = 0; i < 150; ++i) {
    (void)region.Allocate(40);
    // The redzones of a sanitizer build included.
    EXPECT_LE(region.BytesHeld(), i == 0 ? 1024U : 16384U);
  }
  EXPECT_LE(sizeof(OmMemoryRegion), 512U);
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
  void* const block = region.Allocate(40);
  const unsigned long inUse = region.BytesInUse();
  const unsigned long held = region.BytesHeld();
  const auto refuses = [&](unsigned long bytes) {
    EXPECT_THROW((void)region.Allocate(bytes), std::bad_alloc) << bytes;
  };
  for (const unsigned long bytes : {~0UL, ~0UL - 7, ~0UL - 31, ~0UL / 2, (1UL << 39) + 1}) {
    refuses(bytes);
  }
  // The limit counts what is given, not what is asked for.
  region.Limit(inUse + 100);
  refuses(20000);
  refuses(101);
  void* const last = region.Allocate(40);
  refuses(60);
  EXPECT_EQ(region.LiveBlocks(), 2U);
  EXPECT_EQ(region.BytesHeld(), held);
  region.Limit(0);  // below what is in use
  refuses(0);
  region.Limit(inUse + 100);
  OmMemoryRegion::Release(last);
  EXPECT_EQ(region.Allocate(40), last);
  refuses(101);
  region.Limit(~0UL);
  OmMemoryRegion::Release(last);
  EXPECT_EQ(region.Allocate(40), last);
  OmMemoryRegion::Release(block);
}

TEST(Region, SharesTheDefaultHeapAmongThreads) {
  OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
  const unsigned long live = heap->LiveBlocks();
  const unsigned long inUse = heap->BytesInUse();
  std::vector<std::thread> threads;
  std::array<Held, 4> handed{};
  for (unsigned int i = 0; i < 4; ++i) {
    threads.emplace_back([&handed, heap, i] {
      Churn({heap}, i);
      handed[i] = Take(*heap, 100 * i, static_cast<unsigned char>(i));
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(heap->LiveBlocks(), live + 4);
  std::for_each(handed.begin(), handed.end(), GiveBack);  // by another thread than took them
  ExpectUse(*heap, live, inUse);
}

// What only a region's blocks point to is no leak, however the blocks are chained. A sanitizer
// build looks for leaks when the process ends.
TEST(Region, ShowsALeakCheckerWhatItsBlocksHold) {
  struct Link {
    Link* next;
    int* owned;
  };
  static auto* const region = new OmMemoryRegion(false);
  static Link* head = nullptr;
  for (const unsigned long bytes : {16UL, 16UL, 50000UL, 3000UL, 100000UL}) {
    head = new (region->Allocate(bytes)) Link{head, new int(7)};
  }
  EXPECT_EQ(*head->next->next->owned, 7);
}

#if defined(__SANITIZE_ADDRESS__)
#define OM_SEES_ADDRESSES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OM_SEES_ADDRESSES 1
#endif
#endif

#ifdef OM_SEES_ADDRESSES
TEST(RegionDeathTest, ShowsASanitizerEveryBlockByItself) {
  OmMemoryRegion region(false);
  for (const unsigned long bytes : {24UL, 41UL, 5000UL, 16376UL, 30000UL}) {
    auto* const block = static_cast<volatile char*>(region.Allocate(bytes));
    (void)region.Allocate(bytes);
    EXPECT_DEATH(block[bytes] = 1, "AddressSanitizer") << bytes;
    EXPECT_DEATH(block[-1] = 1, "AddressSanitizer") << bytes;
    OmMemoryRegion::Release(const_cast<char*>(block));
    EXPECT_DEATH(block[0] = 1, "AddressSanitizer") << bytes;
  }
}
#endif

}  // namespace
