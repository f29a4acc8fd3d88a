#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "backend/tables/om/CellTextOrder.h"
#include "platform/cells/CellTexts.h"
#include "platform/memory/MemoryRegion.h"
#include "platform/support/IcuTracker.h"

namespace {

using Cell = std::unique_ptr<OmCellText>;
using Texts = std::vector<OmCellText*>;
using namespace std::string_literals;

constexpr double kHuge = std::numeric_limits<double>::infinity();

Qualtex_Format Decimals(int decimals) {
  return {Qualtex_Format::kFixed, 8, decimals};
}

OmComposite* Compose(const Texts& children) {
  auto* const composite = new OmComposite;
  for (OmCellText* child : children) {
    composite->Tree().Child(composite->Tree().Root(), child);
  }
  return composite;
}

OmStringCell* S(const std::string& text) {
  return new OmStringCell(text);
}

// A cell of every kind, in ascending order.
std::vector<Cell> Ascending() {
  const double none = std::nan("");
  std::vector<Cell> cells;
  for (OmCellText* cell : Texts{new OmNumber(none),
                                new OmNumDataValue(none, ""),
                                new OmNumDataValue(none, "missing"),
                                new OmNumber(-kHuge),
                                new OmNumber(-1.5),
                                new OmNumber(0),
                                new OmNumDataValue(0, "no"),
                                new OmNumDataValue(1, "yes"),
                                new OmNumber(2),
                                new OmNumber(kHuge),
                                S(""),
                                new OmComposite,
                                S("10"),
                                S("9"),
                                S("a"),
                                new OmStringCellUTF8("a"),
                                new OmVariable("a", ""),
                                new OmVariable("x", "a"),
                                new OmStringDataValue("a", ""),
                                new OmStringDataValue("b", "a"),
                                Compose({S("a")}),
                                S("a\0"s),
                                S("ab"),
                                Compose({S("a"), S("b")}),
                                Compose({S("ab")}),
                                new OmStringCellUTF8("\xc3\xa4")}) {
    cells.emplace_back(cell);
  }
  return cells;
}

OmCellMetaData Meta(int style, int footnotes) {
  OmCellMetaData meta;
  meta.Style(style);
  for (int i = 0; i < footnotes; ++i) {
    meta.Footnotes().push_back(i);
  }
  return meta;
}

TEST(Cells, TellTheirText) {
  const double large = std::ldexp(1, 1000);
  const struct {
    Cell cell;
    std::string text;
  } rows[] = {
      {Cell(new OmNumber(1234.5)), "1234.50"},
      {Cell(new OmNumber(2.5, Decimals(0))), "2"},
      {Cell(new OmNumber(-0.004)), "0.00"},
      {Cell(new OmNumber(-0.006)), "-0.01"},
      {Cell(new OmNumber(std::nan(""))), "."},
      {Cell(new OmNumber(-kHuge)), "-inf"},
      {Cell(new OmNumber(-large, Decimals(255))),
       "-" + OmNumber(large, Decimals(0)).Text() + "." + std::string(255, '0')},
      {Cell(S("a\0b"s)), "a\0b"s},
      {Cell(new OmStringCellUTF8("")), ""},
      {Cell(new OmVariable("age", "Age in years")), "Age in years"},
      {Cell(new OmVariable("age", "")), "age"},
      {Cell(new OmNumDataValue(1, "male", Decimals(0))), "male"},
      {Cell(new OmNumDataValue(1, "", Decimals(0))), "1"},
      {Cell(new OmStringDataValue("m", "male")), "male"},
      {Cell(new OmStringDataValue("m", "")), "m"},
      {Cell(Compose({S("N = "), new OmNumber(3), nullptr, Compose({S("!")})})), "N = 3.00!"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.cell->Text(), row.text);
    testing::internal::CaptureStdout();
    row.cell->Print(2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "    " + row.text);
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
  EXPECT_TRUE(OmNumber(1, Decimals(0)) == OmNumber(1, Decimals(3)));
  EXPECT_TRUE(OmNumber(0.0) == OmNumber(-0.0));
  EXPECT_TRUE(OmStringCell("a", nullptr, true) == OmStringCell("a"));
  EXPECT_FALSE(OmVariable("a", "label") == OmVariable("b", "label"));
}

// Names the kind that a cell is visited as.
class Namer : public OmCellText::Visitor {
 public:
  explicit Namer(OmCellText& cell) { cell.Accept(*this); }
  void Visit(OmNumber&) override { name = "number"; }
  void Visit(OmStringCell&) override { name = "string"; }
  void Visit(OmStringCellUTF8&) override { name = "utf8"; }
  void Visit(OmVariable&) override { name = "variable"; }
  void Visit(OmNumDataValue&) override { name = "numeric value"; }
  void Visit(OmStringDataValue&) override { name = "string value"; }
  void Visit(OmComposite&) override { name = "composite"; }
  std::string name;
};

TEST(Cells, TakeACloneWholeFromItsRegion) {
  OmMemoryRegion region(false);
  icuTracker tracker(true, "en");
  const OmMemoryRegion& heap = *OmMemoryRegion::DefaultHeap();
  for (const Cell& cell : Ascending()) {
    SCOPED_TRACE(Namer(*cell).name + " " + cell->Text());
    cell->setICUTracker(&tracker);
    // A cell and its characters are one block; a composite adds one, and one for each part.
    const auto* const composite = dynamic_cast<const OmComposite*>(cell.get());
    const unsigned long parts = composite != nullptr ? composite->Tree().Size() : 0;
    const unsigned long blocks = parts == 0 ? 1 : 2 + parts;
    for (const unsigned long metaBlocks : {0UL, 1UL, 2UL}) {
      if (metaBlocks != 0) {
        cell->setMeta(Meta(7, metaBlocks == 2 ? 100 : 0));
      }
      const unsigned long before = heap.LiveBlocks();
      const Cell clone(cell->Clone(&region));
      EXPECT_EQ(region.LiveBlocks(), blocks + metaBlocks);
      EXPECT_TRUE(*clone == *cell);
      EXPECT_EQ(Namer(*clone).name, Namer(*cell).name);
      EXPECT_EQ(clone->Text(), cell->Text());
      EXPECT_EQ(clone->getICUTracker(), nullptr);
      EXPECT_EQ(cell->getICUTracker(), &tracker);
      ASSERT_EQ(clone->hasMeta(), metaBlocks != 0);
      EXPECT_TRUE(metaBlocks == 0 || clone->getMeta() == cell->getMeta());
      // Metadata that comes later is charged to the region too, and may be the cell's own.
      clone->setMeta(Meta(1, 1));
      clone->setMeta(clone->getMeta());
      EXPECT_TRUE(clone->getMeta() == Meta(1, 1));
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
  EXPECT_EQ(clone->Text(), std::string(kLevels, 'x'));
  EXPECT_TRUE(*clone == deep);
  delete *node;
  *node = nullptr;
  EXPECT_TRUE(deep < *clone);
  EXPECT_EQ(region.LiveBlocks(), 1UL + 2 * kLevels);
}

}  // namespace
