#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "backend/tables/om/CellTextOrder.h"
#include "platform/cells/CellTexts.h"
#include "platform/memory/MemoryRegion.h"
#include "platform/support/IcuTracker.h"

namespace {

using Cell = std::unique_ptr<OmCellText>;
using Texts = std::vector<OmCellText*>;
using std::string;
using namespace std::string_literals;

constexpr double kHuge = std::numeric_limits<double>::infinity();
const double kNone = std::nan("");
const Qualtex_Format kWhole(Qualtex_Format::kFixed, 8, 0);

OmCellText* S(const string& text) {
  return new OmStringCell(text);
}
OmCellText* Compose(const Texts& children) {
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
  const auto metaOf = [](int style, int footnotes) {
    OmCellMetaData meta;
    meta.Style(style);
    for (int i = 0; i < footnotes; ++i) {
      meta.Footnotes().push_back(i);
    }
    return meta;
  };
  for (const Cell& cell : Ascending()) {
    SCOPED_TRACE(cell->Text());
    cell->setICUTracker(&tracker);
    // A cell and its characters are one block; a composite adds one, and one for each part.
    const auto* const composite = dynamic_cast<const OmComposite*>(cell.get());
    const unsigned long parts = composite != nullptr ? composite->Tree().Size() : 0;
    const unsigned long blocks = parts == 0 ? 1 : 2 + parts;
    for (const unsigned long metaBlocks : {0UL, 1UL, 2UL}) {
      if (metaBlocks != 0) {
        cell->setMeta(metaOf(7, metaBlocks == 2 ? 100 : 0));
      }
      const unsigned long before = heap.LiveBlocks();
      const Cell clone(cell->Clone(&region));
      EXPECT_EQ(region.LiveBlocks(), blocks + metaBlocks);
      EXPECT_TRUE(*clone == *cell && typeid(*clone) == typeid(*cell));
      EXPECT_EQ(clone->Text(), cell->Text());
      EXPECT_EQ(clone->getICUTracker(), nullptr);
      EXPECT_EQ(cell->getICUTracker(), &tracker);
      ASSERT_EQ(clone->hasMeta(), metaBlocks != 0);
      EXPECT_TRUE(metaBlocks == 0 || clone->getMeta() == cell->getMeta());
      // Metadata that comes later is charged to the region too, and may be the cell's own.
      clone->setMeta(metaOf(1, 1));
      clone->setMeta(clone->getMeta());
      EXPECT_TRUE(clone->getMeta() == metaOf(1, 1));
      EXPECT_EQ(heap.LiveBlocks(), before);
    }
    EXPECT_EQ(region.BytesInUse(), 0U);
  }
  const Cell flagged(OmStringCell("f", &region, true).Clone(nullptr));
  EXPECT_TRUE(static_cast<OmStringCell&>(*flagged).Flag());
  EXPECT_EQ(region.BytesInUse(), 0U);
}

TEST(Cells, CopyAndDestroyDeepComposites) {
  OmMemoryRegion region(false);
  constexpr int kLevels = 10000;
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
}

}  // namespace
