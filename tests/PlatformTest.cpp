// The platform: regions, cells and converters.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include "backend/tables/om/Cell.h"
#include "backend/tables/om/CellTextOrder.h"
#include "backend/tables/om/Utility.h"
#include "backend/tables/om/Vector.h"
#include "platform/cells/CellTexts.h"
#include "platform/memory/MemoryRegion.h"
#include "platform/support/Converter.h"
#include "platform/support/IcuTracker.h"

namespace {

using Cell = std::unique_ptr<OmCellText>;
using std::string;
using namespace std::string_literals;

// A block with the pattern that fills it.
struct Held {
  unsigned char* block;
  unsigned long bytes;
  unsigned char pattern;
  bool zeroed;  // the pattern stands in its first half alone
};

// Random operations on two regions, one of which gives zeros: the blocks that live keep their
// contents, and a block that goes back as zeros is zero when it comes again.
void Churn(OmMemoryRegion& region, OmMemoryRegion& zeros, unsigned int seed) {
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::vector<Held> held;
  for (int step = 0; step < 20000 || !held.empty(); ++step) {
    if (step < 20000 && (held.empty() || random() % 100 < 52)) {
      // Mostly small, now and then large, around the border to blocks of their own or far beyond.
      const unsigned long bytes = random() % 1000 == 0  ? random() % 3000000
                                  : random() % 500 == 0 ? 1048400 + random() % 300
                                                        : random() % (1UL << random() % 17);
      const bool zeroed = random() % 2 == 0;
      auto* const block = static_cast<unsigned char*>(zeroed ? zeros.AllocateZeroed(bytes)
                                                             : region.Allocate(bytes));
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U) << bytes;
      EXPECT_TRUE(!zeroed || std::count(block, block + bytes, 0) == static_cast<long>(bytes));
      held.push_back(
          {block, zeroed ? bytes / 2 : bytes, static_cast<unsigned char>(random()), zeroed});
      std::memset(block, held.back().pattern, held.back().bytes);
    } else {
      std::swap(held[random() % held.size()], held.back());
      const auto [block, bytes, pattern, zeroed] = held.back();
      EXPECT_EQ(std::count(block, block + bytes, pattern), static_cast<long>(bytes));
      if (zeroed && random() % 2 == 0) {
        std::memset(block, 0, bytes);
        OmMemoryRegion::ReleaseZeroed(block);
      } else {
        OmMemoryRegion::Release(block);
      }
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
  OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
  EXPECT_EQ(heap, OmMemoryRegion::SelectHeap(nullptr));
  const unsigned long live = heap->LiveBlocks();
  const unsigned long inUse = heap->BytesInUse();
  unsigned long held = 0;
  for (int i = 0; i < 2; ++i) {
    Churn(region, shared, seed);
    ExpectUse(region, 0, 0);
    ExpectUse(shared, 0, 0);
    // What was used is used again: the same work needs hardly more from the system.
    EXPECT_TRUE(i == 0 || region.BytesHeld() <= held + held / 4);
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

// What decides whether an inline operation needs the lock is read without it.
TEST(Region, IsSetUpByOneThreadWhileAnotherUsesIt) {
  OmMemoryRegion shared(true);
  std::atomic<bool> done = false;
  std::thread other([&] {
    shared.Limit(~0UL);
    shared.WorkingRelease(true);
    done.store(true, std::memory_order_relaxed);  // orders nothing, so that a race shows
  });
  while (!done.load(std::memory_order_relaxed)) {
    std::this_thread::yield();
  }
  OmMemoryRegion::Release(shared.Allocate(8));
  other.join();
}

// Where every block is an allocation of its own, none is used again, and no size is rounded.
#if OM_HARDENING
constexpr bool kOwnBlocks = true;
#else
constexpr bool kOwnBlocks = false;
#endif

TEST(Region, IsLean) {
  static_assert(sizeof(OmMemoryRegion) <= 528);
  OmMemoryRegion region(false);
  EXPECT_EQ(region.BytesHeld(), 0U);
  std::vector<void*> blocks{region.Allocate(40)};
  EXPECT_LE(region.BytesHeld(), 1024U);
  unsigned long sum = region.BytesInUse();
  for (unsigned long bytes = 0; bytes < 20000; bytes += bytes / 40 + 1) {
    blocks.push_back(region.Allocate(bytes));
    const unsigned long given = region.BytesInUse() - sum;
    EXPECT_TRUE(bytes <= given && given < bytes + 16) << bytes;
    sum += given;
    EXPECT_TRUE(sum < region.BytesHeld() && region.BytesHeld() < sum + sum / 2 + 8192) << sum;
  }
  ExpectUse(region, blocks.size(), sum);
  std::for_each(blocks.begin(), blocks.end(), OmMemoryRegion::Release);
  OmMemoryRegion::Release(nullptr);
  ExpectUse(region, 0, 0);
}

TEST(Region, UsesReleasedBlocksAgainUntilItIsOnItsWayOut) {
  OmMemoryRegion region(false);
  for (const unsigned long bytes : {8UL, 40UL, 700UL, 16000UL}) {
    void* const block = region.Allocate(bytes);
    OmMemoryRegion::Release(block);
    void* const again = region.Allocate(bytes);
    EXPECT_EQ(again == block, !kOwnBlocks) << bytes;
    region.WorkingRelease(false);
    OmMemoryRegion::Release(again);
    void* const other = region.Allocate(bytes);
    EXPECT_NE(other, again);
    region.WorkingRelease(true);
    OmMemoryRegion::Release(other);
    ExpectUse(region, 0, 0);
  }
  void* const large = region.Allocate(2000000);
  const unsigned long held = region.BytesHeld();
  OmMemoryRegion::Release(large);
  EXPECT_LE(region.BytesHeld() + 2000000, held);
  void* const kept = region.Allocate(2000000);
  region.WorkingRelease(false);
  OmMemoryRegion::Release(kept);
  ExpectUse(region, 0, 0);
}

// A hardened build keeps the block for a while, but not its pages. A sanitizer keeps both.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) && !defined(__SANITIZE_ADDRESS__)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#ifndef __SANITIZE_ADDRESS__
TEST(Region, OccupiesNoMemoryWithAReleasedLargeBlock) {
  constexpr unsigned long kPage = 4096;
  OmMemoryRegion region(false);
  auto* const block = static_cast<char*>(region.Allocate(1000 * kPage));
  std::memset(block, 1, 1000 * kPage);
  void* const inside = block + 500 * kPage - reinterpret_cast<std::uintptr_t>(block) % kPage;
  unsigned char isResident = 0;
  EXPECT_TRUE(mincore(inside, kPage, &isResident) == 0 && (isResident & 1) != 0);
  OmMemoryRegion::Release(block);
  EXPECT_TRUE(mincore(inside, kPage, &isResident) != 0 || (isResident & 1) == 0);
}
#endif

TEST(RegionDeathTest, NamesABlockThatIsReleasedTwice) {
  OmMemoryRegion region(false);
  for (const unsigned long bytes : {8UL, 264UL, 5000UL, 100000UL}) {
    void* const block = region.Allocate(bytes);
    OmMemoryRegion::Release(block);
    // A sanitizer names it in its own words.
    EXPECT_DEATH(OmMemoryRegion::Release(block), "the block is in use|heap-use-after-free")
        << bytes;
    ExpectUse(region, 0, 0);
  }
}

TEST(Region, RefusesWhatItCannotHold) {
  OmMemoryRegion region(false);
  (void)region.Allocate(40);
  const unsigned long inUse = region.BytesInUse();
  const unsigned long held = region.BytesHeld();
  const auto refuses = [&](std::initializer_list<unsigned long> sizes) {
    for (const unsigned long bytes : sizes) {
      EXPECT_THROW((void)region.Allocate(bytes), std::bad_alloc) << bytes;
      EXPECT_THROW((void)region.AllocateZeroed(bytes), std::bad_alloc) << bytes;
    }
  };
  refuses({~0UL, ~0UL - 7, ~0UL - 31, ~0UL / 2, (1UL << 39) + 1});
  // The limit counts what is given, not what is asked for.
  region.Limit(inUse + 100);
  refuses({2000000, 20000, 121});
  void* const last = region.Allocate(40);
  refuses({61});
  ExpectUse(region, 2, 2 * inUse);
  EXPECT_TRUE(region.BytesHeld() == held || kOwnBlocks);
  region.Limit(0);  // below what is in use
  refuses({0});
  region.Limit(inUse + 100);
  OmMemoryRegion::Release(last);
  EXPECT_NO_THROW((void)region.Allocate(40));
  // Blocks of every size count until they are released, and again when they are reused.
  region.Limit(region.BytesInUse() + 5000000);
  for (const unsigned long bytes : {40UL, 700UL, 30000UL, 2000000UL}) {
    for (int round = 0; round != 300; ++round) {
      std::vector<void*> blocks;
      for (unsigned long sum = 0; sum + bytes < 4000000 && blocks.size() != 90; sum += bytes) {
        blocks.push_back(region.Allocate(bytes));
      }
      refuses({5000000 - bytes * blocks.size() + 1});
      std::for_each(blocks.begin(), blocks.end(), OmMemoryRegion::Release);
    }
  }
}

// The pages of the process, as the system counts them, in bytes.
unsigned long AddressSpace() {
  unsigned long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * 4096;
}

TEST(Region, GivesItsPagesBack) {
  const unsigned long before = AddressSpace();
  for (int round = 0; round != 100; ++round) {
    OmMemoryRegion region(false);
    OmMemoryRegion::Release(region.Allocate(3000000));
    (void)region.Allocate(3000000);
    for (int i = 0; i != 100; ++i) {
      (void)region.Allocate(30000);
    }
  }
  // A sanitizer keeps what was released.
  EXPECT_TRUE(AddressSpace() < before + 100000000 || kOwnBlocks);
}

constexpr double kHuge = std::numeric_limits<double>::infinity();
const double kNone = std::nan("");
const Qualtex_Format kWhole(Qualtex_Format::kFixed, 8, 0);

OmCellText* S(const string& text) {
  return new OmStringCell(text);
}
OmCellText* Compose(const std::vector<OmCellText*>& children) {
  auto* const composite = new OmComposite;
  for (OmCellText* child : children) {
    composite->Tree().Child(composite->Tree().Root(), child);
  }
  return composite;
}

template <typename... Kinds>
std::vector<Cell> Own(Kinds*... kinds) {
  std::vector<Cell> cells;
  (cells.emplace_back(kinds), ...);
  return cells;
}

// Cells of every kind.
std::vector<Cell> Ascending() {
  return Own(new OmNumber(kNone), new OmNumDataValue(kNone, ""),
             new OmNumDataValue(kNone, "missing"), new OmNumber(-kHuge), new OmNumber(-1.5),
             new OmNumber(0), new OmNumDataValue(0, "no"), new OmNumDataValue(1, "yes"),
             new OmNumber(2), new OmNumber(kHuge), S(""), new OmComposite, S("10"), S("9"), S("a"),
             new OmStringCellUTF8("a"), new OmVariable("a", ""), new OmVariable("x", "a"),
             new OmStringDataValue("a", ""), new OmStringDataValue("b", "a"), Compose({S("a")}),
             S("a\0"s), S("ab"), Compose({S("a"), S("b")}), Compose({S("ab")}),
             new OmStringCellUTF8("\xc3\xa4"));
}

TEST(Cells, TellTheirText) {
  const double large = std::ldexp(1, 1000);
  const std::pair<OmCellText*, string> rows[] = {
      {new OmNumber(1234.5), "1234.50"},
      {new OmNumber(203), "203"},
      {new OmNumber(-0.0), "0"},
      {new OmNumber(4503599627370495.5), "4503599627370495.50"},  // the last one with a fraction
      {new OmNumber(-large), "-" + OmNumber(large, kWhole).Text()},
      {new OmNumber(203, kDefaultFormat), "203.00"},
      {new OmNumber(2.5, kWhole), "2"},
      {new OmNumber(-0.004), "0.00"},
      {new OmNumber(-0.006), "-0.01"},
      {new OmNumber(kNone), "."},
      {new OmNumber(-kHuge), "-inf"},
      {new OmNumber(-large, {Qualtex_Format::kFixed, 8, 255}),
       "-" + OmNumber(large, kWhole).Text() + "." + string(255, '0')},
      {S("a\0b"s), "a\0b"s},
      {new OmStringCellUTF8(""), ""},
      {new OmVariable("age", "Age in years"), "Age in years"},
      {new OmVariable("age", ""), "age"},
      {new OmNumDataValue(1, "male", kWhole), "male"},
      {new OmNumDataValue(1, "", kWhole), "1"},
      {new OmStringDataValue("m", "male"), "male"},
      {new OmStringDataValue("m", ""), "m"},
      {Compose({S("N = "), new OmNumber(3), nullptr, Compose({S("!")})}), "N = 3!"},
  };
  for (const auto& [cell, text] : rows) {
    const Cell owner(cell);
    EXPECT_EQ(cell->Text(), text);
    testing::internal::CaptureStdout();
    cell->Print(2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "    " + text);
  }
}

template <typename Value>
concept MakesACell = requires(const Value& value) {
  om::Cell(value);
};

TEST(Cells, AreMadeInOneShortExpression) {
  EXPECT_EQ(om::Cell("text").Text() + om::Cell(string("s")).Text() + om::Cell(203).Text() +
                om::Cell(2.5F).Text() + om::Cell(~0UL >> 11).Text(),
            "texts2032.509007199254740991");
  static_assert(MakesACell<char[2]> && MakesACell<std::string_view> && MakesACell<short>);
  static_assert(!MakesACell<std::nullptr_t> && !MakesACell<char> && !MakesACell<bool> &&
                !MakesACell<OmStringCell>);
}

TEST(Cells, AreInOneTotalOrder) {
  const std::vector<Cell> cells = Ascending();
  for (unsigned long i = 0; i < cells.size(); ++i) {
    for (unsigned long j = 0; j < cells.size(); ++j) {
      const short order = cells[i]->Compare(*cells[j]);
      EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j)) << i << ' ' << j;
      EXPECT_EQ(*cells[i] == *cells[j], i == j) << i << ' ' << j;
    }
  }
  EXPECT_TRUE(OmNumber(1, kWhole) == OmNumber(1));
  EXPECT_TRUE(OmNumber(0.0) == OmNumber(-0.0));
  EXPECT_TRUE(OmStringCell("a", nullptr, true) == OmStringCell("a"));
  EXPECT_FALSE(OmVariable("a", "label") == OmVariable("b", "label"));
}

TEST(Cells, TakeACloneWholeFromItsRegion) {
  OmMemoryRegion region(false);
  icuTracker tracker(true, "en");
  const OmMemoryRegion& heap = *OmMemoryRegion::DefaultHeap();
  OmCellMetaData few, many;
  few.Style(7);
  many.Footnotes().resize(100, 3);
  for (const Cell& cell : Ascending()) {
    SCOPED_TRACE(cell->Text());
    cell->setICUTracker(&tracker);
    // A cell and its characters are one block; a composite adds one, and one for each part.
    const auto* const composite = dynamic_cast<const OmComposite*>(cell.get());
    const unsigned long parts = composite != nullptr ? composite->Tree().Size() : 0;
    const unsigned long blocks = parts == 0 ? 1 : 2 + parts;
    for (const unsigned long metaBlocks : {0UL, 1UL, 2UL}) {
      if (metaBlocks != 0) {
        cell->setMeta(metaBlocks == 1 ? few : many);
      }
      const unsigned long before = heap.LiveBlocks();
      const Cell clone(cell->Clone(&region));
      EXPECT_EQ(region.LiveBlocks(), blocks + metaBlocks);
      EXPECT_TRUE(*clone == *cell && clone->Kind() == cell->Kind());
      EXPECT_EQ(clone->Text(), cell->Text());
      EXPECT_TRUE(clone->getICUTracker() == nullptr && cell->getICUTracker() == &tracker);
      ASSERT_EQ(clone->hasMeta(), metaBlocks != 0);
      EXPECT_TRUE(metaBlocks == 0 || clone->getMeta() == cell->getMeta());
      // Metadata that comes later is charged to the region too, and may be the cell's own.
      clone->setMeta(many);
      clone->setMeta(clone->getMeta());
      EXPECT_TRUE(clone->getMeta() == many && !(many == few));
      EXPECT_EQ(heap.LiveBlocks(), before);
    }
    EXPECT_EQ(region.BytesInUse(), 0U);
  }
  const Cell flagged(OmStringCell("f", &region, true).Clone(nullptr));
  EXPECT_TRUE(static_cast<OmStringCell&>(*flagged).Flag());
  EXPECT_EQ(region.BytesInUse(), 0U);
}

TEST(Cells, CopySearchAndDestroyDeepComposites) {
  OmMemoryRegion region(false);
  constexpr int kLevels = 300000;
  OmComposite deep;
  auto node = deep.Tree().Root();
  for (int i = 0; i < kLevels; ++i) {
    node = deep.Tree().Child(node, S("x"));
  }
  const Cell clone(deep.Clone(&region));
  EXPECT_EQ(clone->Text(), string(kLevels, 'x'));
  EXPECT_TRUE(*clone == deep);
  delete *node;
  *node = nullptr;
  EXPECT_TRUE(deep < *clone);
  EXPECT_EQ(region.LiveBlocks(), 1UL + 2 * kLevels);
  *deep.Tree().Root() = new OmNumber(1);  // is not below
  EXPECT_EQ(OmUtility::GetFirstNumber(deep), nullptr);
  deep.Tree().Child(node, new OmNumber(2));
  deep.Tree().Child(deep.Tree().Root(), new OmNumber(3));
  EXPECT_EQ(OmUtility::GetFirstNumber(deep)->Value(), 2);
}

// Each composite holds "a", the one below it and "b".
TEST(Cells, HoldCompositesInCompositesWithoutStack) {
  constexpr int kLevels = 100000;
  OmCellText* inner = S("x");
  for (int i = 0; i < kLevels; ++i) {
    auto* const outer = new OmComposite;
    *outer->Tree().Root() = S("a");
    outer->Tree().Child(outer->Tree().Root(), inner);
    outer->Tree().Child(outer->Tree().Root(), S("b"));
    inner = outer;
  }
  const Cell deep(inner);
  OmMemoryRegion region(false);
  {
    const Cell clone(deep->Clone(&region));
    EXPECT_EQ(clone->Text(), string(kLevels, 'a') + "x" + string(kLevels, 'b'));
    EXPECT_EQ(clone->Compare(*deep), 0);
    OmComposite* lowest = static_cast<OmComposite*>(clone.get());
    while (auto* const below = dynamic_cast<OmComposite*>(*lowest->Tree().Root()[0])) {
      lowest = below;
    }
    lowest->Tree().Child(lowest->Tree().Root(), nullptr);
    EXPECT_TRUE(clone->Compare(*deep) > 0 && deep->Compare(*clone) < 0);
  }
  EXPECT_EQ(region.LiveBlocks(), 0U);
}

// Depth, text and kind of a record of a composite. One that holds a composite is followed by the
// records of that one and a mark for its end, which comes before every record.
struct Flat {
  auto operator<=>(const Flat&) const = default;
  bool record = false;
  int level = 0;
  bool hasText = false;
  string text{};
  bool nests = false;
};

void Flatten(const OmVectorTreeData<OmCellText*>& from, int level, std::vector<Flat>& out) {
  const OmCellText* const text = from.Data();
  const auto* const nested = dynamic_cast<const OmComposite*>(text);
  out.push_back(
      {true, level, text != nullptr, text != nullptr ? text->Text() : "", nested != nullptr});
  if (nested != nullptr) {
    Flatten(nested->Tree(), 0, out);
    out.push_back({});
  }
  for (const auto& child : from.Children()) {
    Flatten(child, level + 1, out);
  }
}

// A composite of the letters from `text`, in records and composites of any depth.
OmComposite* RandomComposite(std::mt19937& random, string& text, int depth) {
  auto* const composite = new OmComposite;
  auto at = composite->Tree().Root();
  for (int i = 0; i != 3; ++i) {
    const unsigned long n = std::min(text.size(), static_cast<unsigned long>(random() % 3));
    const unsigned int kind = random() % 4;
    OmCellText* part = nullptr;
    if (kind == 0 && depth != 0) {
      part = RandomComposite(random, text, depth - 1);
    } else if (kind != 1) {
      part = S(text.substr(0, n));
      text.erase(0, n);
    }
    auto child = composite->Tree().Child(at, part);
    at = random() % 2 == 0 ? child : composite->Tree().Root();
  }
  return composite;
}

TEST(Cells, OrderCompositesByTheirTextsAndThenByTheirParts) {
  std::mt19937 random(std::random_device{}());
  std::vector<Cell> cells;
  for (int i = 0; i != 150; ++i) {
    string text = "aab";
    cells.emplace_back(RandomComposite(random, text, 3));
  }
  for (const Cell& a : cells) {
    for (const Cell& b : cells) {
      std::vector<Flat> one, other;
      Flatten(static_cast<OmComposite&>(*a).Tree(), 0, one);
      Flatten(static_cast<OmComposite&>(*b).Tree(), 0, other);
      const auto expected = std::pair(a->Text(), one) <=> std::pair(b->Text(), other);
      const short order = a->Compare(*b);
      ASSERT_EQ((order > 0) - (order < 0), (expected > 0) - (expected < 0));
    }
    EXPECT_EQ(a->Compare(*Cell(a->Clone())), 0);
  }
}

TEST(Converter, ConvertsOrFails) {
  string euros = "\xe2\x82\xac";
  while (euros.size() < 10000) {
    euros += euros;
  }
  const string fails = "fails";
  const std::tuple<const char*, string, string> rows[] = {
      {"ISO-8859-1", "", ""},
      {"ISO-8859-1", "a\0\xc3\xbc"s, "a\0\xfc"s},
      {"CP1252", euros, string(euros.size() / 3, '\x80')},
      // Grows, and ends in the initial state.
      {"UTF-32LE", "ab", "a\0\0\0b\0\0\0"s},
      {"ISO-2022-JP", "\xe3\x81\x82", "\x1b$B$\"\x1b(B"},
      // Not in the code page, no UTF-8, no such code page.
      {"ISO-8859-1", "1 \xe2\x82\xac", fails},
      {"ASCII//TRANSLIT", "\xe2\x82\xac", fails},
      {"UCS-2LE//TRANSLIT", "\xf0\x9f\x98\x80" + euros, fails},
      {"UTF-16LE//IGNORE", "\xff" + euros, fails},
      {"CP1252", "a\xe2\x82", fails},
      {"UTF-16LE", "\xc0\xaf", fails},
      {"UTF-16LE", "\xed\xa0\x80", fails},
      {"UCS-4LE", "\xed\xa0\x80", fails},
      {"UTF-32LE", "\xf4\x90\x80\x80", fails},
      {"UCS-4BE", "\xf8\x88\x80\x80\x80", fails},
      {"UCS-4BE", "\xf4\x90\x80\x80", fails},
      {"UCS-4BE", "\xf0\x8f\xbf\xbf", fails},
      {"UCS-4BE", "\xe0\x9f\xbf", fails},
      {"UCS-2BE", "\u0080\u07ff\u0800\ud7ff\ue000", "\0\x80\x07\xff\x08\0\xd7\xff\xe0\0"s},
      {"UCS-4BE", "\U00010000\U0010ffff", "\0\1\0\0\0\x10\xff\xff"s},
      {"msz_7795.3", "a", "a"},
      {"MSZ_7795.3", "a", "a"},
      // The system's tables drop tags, and have substitutes, look-alikes and control characters.
      {"CP1252", "a\u00f3\U000e0061", fails},
      {"UTF-32LE", "\U000e0061", "\x61\0\x0e\0"s},
      {"IBM1388", "\u00a0", fails},
      {"IBM1371", "\\", fails},
      {"IBM9448", "\u0191", fails},
      {"IBM901", "\u203c", fails},
      {"ISO-2022-JP", "\x1b$B", fails},
      // Letters that are composed with what follows them. One that is missing is missed among them.
      {"CP1258", "a\u0301\u1ea5", "a\xec\xe2\xec"},
      {"CP1258", "a\u0301\U000e0061", fails},
      {"CP1255", "\u05e9\u05c1\ufb2a", "\xf9\xd1\xf9\xd1"},
      {"SHIFT_JIS", "\\~\u00a5\u203e\u3042", "\\~\\~\x82\xa0"},
      {"IBM939", "~", "\xa0"},
      {"EUC-JP", "\u00a5\uffe5", "\\\xa1\xef"},
      {"no such page", "a", fails},
      {"", "a", fails},
      {nullptr, "a", fails},
  };
  for (const auto& [codePage, text, converted] : rows) {
    SCOPED_TRACE(codePage != nullptr ? codePage : "null");
    QualtexMBConverter* const converter = QualtexMBConverterNew_A(codePage);
    // Twice: a failure leaves nothing behind in the converter. The texts may be one.
    for (string out : {fails, fails, "x"s}) {
      const bool same = out == "x";
      const int result = QualtexMBU8ToGeneric(converter, out, same ? out : text);
      EXPECT_EQ(result != 0, same ? converter == nullptr : converted == fails);
      EXPECT_TRUE(same || out == converted);
    }
    QualtexMBConverterDelete_A(converter);
  }
  // The failure comes after the code page has been switched over to its second alphabet.
  QualtexMBConverter* const converter = QualtexMBConverterNew_A("ISO-2022-JP");
  string out;
  EXPECT_NE(QualtexMBU8ToGeneric(converter, out, "\u3042\U000e0061"), 0);
  EXPECT_EQ(QualtexMBU8ToGeneric(converter, out, "\u3042"), 0);
  EXPECT_EQ(out, "\x1b$B$\"\x1b(B");
  QualtexMBConverterDelete_A(converter);
}

}  // namespace
