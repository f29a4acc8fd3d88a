// The platform: regions, cells and converters.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

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

// Null without a sanitizer.
extern "C" [[gnu::weak]] void* FirstPoisoned(const void* begin, unsigned long bytes) __asm__(
    "__asan_region_is_poisoned");

// Whether a sanitizer, if there is one, would report this byte.
bool Poisoned(const void* at) {
  return FirstPoisoned == nullptr || FirstPoisoned(at, 1) != nullptr;
}

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
      // What stands behind a large block is up to the system's allocator.
      EXPECT_TRUE(Poisoned(block - 1) &&
                  (bytes > OmMemoryRegion::kMostUnmarked || Poisoned(block + bytes)))
          << bytes;
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
  OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
  EXPECT_EQ(heap, OmMemoryRegion::SelectHeap(nullptr));
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

TEST(Region, EndsWhatIsPostponedBeforeItTells) {
  static int ended;
  OmMemoryRegion region(false);
  OmMemoryRegion::Postponed waiting([](void* object) {
    ++ended;
    OmMemoryRegion::Release(object);
  });
  void* large = nullptr;
  const std::function<void()> asks[] = {
      [&] { EXPECT_EQ(region.LiveBlocks(), 0U); }, [&] { EXPECT_EQ(region.BytesInUse(), 0U); },
      [&] { EXPECT_NE(region.BytesHeld(), 0U); },  [&] { region.WorkingRelease(true); },
      [&] { large = region.Allocate(20000); },     [&] { region.Limit(~0UL); }};
  for (const auto& ask : asks) {
    ended = 0;
    void* objects[OmMemoryRegion::Postponed::kObjects + 1];
    std::generate(std::begin(objects), std::end(objects), [&] { return region.Allocate(40); });
    for (void* const next : objects) {
      if (void* const object = region.Postpone(waiting, next); object != nullptr) {
        waiting.end(object);
      }
    }
    // At once where something watches, and where the region has a large block.
    EXPECT_TRUE(ended == 1 || ended == 17) << ended;
    EXPECT_TRUE(large == nullptr || ended == 17);
    ask();
    EXPECT_EQ(ended, 17);
  }
  OmMemoryRegion::Release(large);
}

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
    EXPECT_TRUE(bytes <= given && given <= bytes + bytes / 4 + 48) << bytes;
    sum += given;
    // The redzones of a sanitizer build included.
    EXPECT_TRUE(sum < region.BytesHeld() && region.BytesHeld() < 2 * sum + 16384);
  }
  ExpectUse(region, blocks.size(), sum);
  std::for_each(blocks.begin(), blocks.end(), OmMemoryRegion::Release);
  OmMemoryRegion::Release(nullptr);
  ExpectUse(region, 0, 0);
}

// Whether a block comes again, at the latest when the chunk is used up.
bool ComesAgain(OmMemoryRegion& region, unsigned long bytes, const void* block) {
  std::vector<void*> others;
  void* next = region.Allocate(bytes);
  for (; next != block && others.size() != 500; next = region.Allocate(bytes)) {
    others.push_back(next);
  }
  std::for_each(others.begin(), others.end(), OmMemoryRegion::Release);
  return next == block;
}

TEST(Region, UsesReleasedBlocksAgainUntilItIsOnItsWayOut) {
  OmMemoryRegion region(false);
  for (const unsigned long bytes : {8UL, 40UL, 700UL, 16000UL}) {
    void* const block = region.Allocate(bytes);
    OmMemoryRegion::Release(block);
    EXPECT_TRUE(ComesAgain(region, bytes, block));
    region.WorkingRelease(false);
    OmMemoryRegion::Release(block);
    void* const other = region.Allocate(bytes);
    EXPECT_NE(other, block);
    EXPECT_TRUE(Poisoned(block));
    region.WorkingRelease(true);
    OmMemoryRegion::Release(other);
    EXPECT_TRUE(ComesAgain(region, bytes, other));
    OmMemoryRegion::Release(other);
  }
  void* const large = region.Allocate(100000);
  const unsigned long held = region.BytesHeld();
  OmMemoryRegion::Release(large);
  EXPECT_LE(region.BytesHeld() + 100000, held);
  void* const kept = region.Allocate(100000);
  region.WorkingRelease(false);
  OmMemoryRegion::Release(kept);
  ExpectUse(region, 0, 0);
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
  refuses({2000000, 20000, 101});
  void* const last = region.Allocate(40);
  refuses({60});
  ExpectUse(region, 2, 2 * inUse);
  EXPECT_EQ(region.BytesHeld(), held);
  region.Limit(0);  // below what is in use
  refuses({0});
  region.Limit(inUse + 100);
  for (int i = 0; i < 3; ++i) {
    OmMemoryRegion::Release(last);
    EXPECT_EQ(region.Allocate(40), last);
  }
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
      {Compose({S("N = "), new OmNumber(3), nullptr, Compose({S("!")})}), "N = 3.00!"},
  };
  for (const auto& [cell, text] : rows) {
    const Cell owner(cell);
    EXPECT_EQ(cell->Text(), text);
    testing::internal::CaptureStdout();
    cell->Print(2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "    " + text);
  }
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

// The text of a composite decides before its parts do, also where parts that are equal have texts
// of unequal lengths.
TEST(Cells, CompareCompositesInCompositesByTheirTexts) {
  const auto make = [](const std::vector<OmCellText*>& parts) {
    auto composite = std::make_unique<OmComposite>();
    for (OmCellText* const part : parts) {
      composite->Tree().Child(composite->Tree().Root(), part);
    }
    return composite;
  };
  const auto number = [](int decimals) {
    return new OmNumber(3, Qualtex_Format(Qualtex_Format::kFixed, 8, decimals));
  };
  const auto shorter = make({make({S("x")}).release(), S("yz")});
  const auto longer = make({make({S("xy")}).release(), S("z")});
  EXPECT_LT(shorter->Compare(*longer), 0);
  EXPECT_GT(longer->Compare(*shorter), 0);
  const auto whole = make({number(0), make({S(".00x")}).release()});
  const auto decimals = make({number(2), make({S("x")}).release()});
  EXPECT_EQ(whole->Text(), decimals->Text());
  EXPECT_LT(whole->Compare(*decimals), 0);
  EXPECT_GT(decimals->Compare(*whole), 0);
  const auto bare = make({make({}).release(), S("x")});
  const auto filled = make({make({make({}).release()}).release(), S("x")});
  EXPECT_LT(bare->Compare(*filled), 0);
  EXPECT_GT(filled->Compare(*bare), 0);
  EXPECT_EQ(filled->Compare(*Cell(filled->Clone())), 0);
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
}

}  // namespace
