#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "backend/tables/om/CellTextOrder.h"
#include "platform/cells/CellTexts.h"
#include "platform/memory/MemoryRegion.h"
#include "platform/support/IcuTracker.h"

namespace {

using Cell = std::unique_ptr<OmCellText>;

Qualtex_Format Decimals(int decimals) {
  return {Qualtex_Format::kFixed, 8, decimals};
}

OmComposite* Compose(const std::vector<OmCellText*>& children) {
  auto* const composite = new OmComposite;
  for (OmCellText* child : children) {
    composite->Tree().Child(composite->Tree().Root(), child);
  }
  return composite;
}

// A cell of every kind, in ascending order.
std::vector<Cell> Ascending() {
  const double none = std::nan("");
  const double huge = std::numeric_limits<double>::infinity();
  std::vector<Cell> cells;
  for (OmCellText* cell :
       std::initializer_list<OmCellText*>{new OmNumber(none),
                                          new OmNumDataValue(none, ""),
                                          new OmNumDataValue(none, "missing"),
                                          new OmNumber(-huge),
                                          new OmNumber(-1.5),
                                          new OmNumber(0),
                                          new OmNumDataValue(0, "no"),
                                          new OmNumDataValue(1, "yes"),
                                          new OmNumber(2),
                                          new OmNumber(huge),
                                          new OmStringCell(""),
                                          new OmComposite,
                                          new OmStringCell("10"),
                                          new OmStringCell("9"),
                                          new OmStringCell("a"),
                                          new OmStringCellUTF8("a"),
                                          new OmVariable("a", ""),
                                          new OmVariable("x", "a"),
                                          new OmStringDataValue("a", ""),
                                          new OmStringDataValue("b", "a"),
                                          Compose({new OmStringCell("a")}),
                                          new OmStringCell(std::string("a\0", 2)),
                                          new OmStringCell("ab"),
                                          Compose({new OmStringCell("a"), new OmStringCell("b")}),
                                          Compose({new OmStringCell("ab")}),
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
  const std::string zeros(255, '0');
  const struct {
    Cell cell;
    std::string text;
  } rows[] = {
      {Cell(new OmNumber(1234.5)), "1234.50"},
      {Cell(new OmNumber(2.5, Decimals(0))), "2"},
      {Cell(new OmNumber(-0.004)), "0.00"},
      {Cell(new OmNumber(-0.006)), "-0.01"},
      {Cell(new OmNumber(std::nan(""))), "."},
      {Cell(new OmNumber(-std::numeric_limits<double>::infinity())), "-inf"},
      {Cell(new OmNumber(-std::ldexp(1, 1000), Decimals(255))),
       "-" + OmNumber(std::ldexp(1, 1000), Decimals(0)).Text() + "." + zeros},
      {Cell(new OmStringCell(std::string("a\0b", 3))), std::string("a\0b", 3)},
      {Cell(new OmStringCellUTF8("")), ""},
      {Cell(new OmVariable("age", "Age in years")), "Age in years"},
      {Cell(new OmVariable("age", "")), "age"},
      {Cell(new OmNumDataValue(1, "male", Decimals(0))), "male"},
      {Cell(new OmNumDataValue(1, "", Decimals(0))), "1"},
      {Cell(new OmStringDataValue("m", "male")), "male"},
      {Cell(new OmStringDataValue("m", "")), "m"},
      {Cell(Compose(
           {new OmStringCell("N = "), new OmNumber(3), nullptr, Compose({new OmStringCell("!")})})),
       "N = 3.00!"},
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
  void Visit(OmNumber&) override { name = "number"; }
  void Visit(OmStringCell&) override { name = "string"; }
  void Visit(OmStringCellUTF8&) override { name = "utf8"; }
  void Visit(OmVariable&) override { name = "variable"; }
  void Visit(OmNumDataValue&) override { name = "numeric value"; }
  void Visit(OmStringDataValue&) override { name = "string value"; }
  void Visit(OmComposite&) override { name = "composite"; }
  std::string name;
};

std::string NameOf(OmCellText& cell) {
  Namer namer;
  cell.Accept(namer);
  return namer.name;
}

TEST(Cells, TakeACloneWholeFromItsRegion) {
  OmMemoryRegion region(false);
  const unsigned long heap = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  {
    icuTracker tracker(true, "en");
    for (const Cell& cell : Ascending()) {
      SCOPED_TRACE(NameOf(*cell) + " " + cell->Text());
      cell->setICUTracker(&tracker);
      // A cell and its characters are one block; a composite adds one, and one for each part.
      const auto* const composite = dynamic_cast<const OmComposite*>(cell.get());
      const unsigned long parts = composite != nullptr ? composite->Tree().Size() : 0;
      const unsigned long blocks = parts == 0 ? 1 : 2 + parts;
      for (const unsigned long metaBlocks : {0UL, 1UL, 2UL}) {
        if (metaBlocks != 0) {
          cell->setMeta(Meta(7, metaBlocks == 2 ? 100 : 0));
        }
        const unsigned long before = OmMemoryRegion::DefaultHeap()->LiveBlocks();
        const Cell clone(cell->Clone(&region));
        EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), before);
        EXPECT_EQ(region.LiveBlocks(), blocks + metaBlocks);
        EXPECT_TRUE(*clone == *cell);
        EXPECT_EQ(NameOf(*clone), NameOf(*cell));
        EXPECT_EQ(clone->Text(), cell->Text());
        EXPECT_EQ(clone->getICUTracker(), nullptr);
        EXPECT_EQ(cell->getICUTracker(), &tracker);
        ASSERT_EQ(clone->hasMeta(), metaBlocks != 0);
        EXPECT_TRUE(metaBlocks == 0 || clone->getMeta() == cell->getMeta());
        // Metadata that comes later is charged to the region too.
        clone->setMeta(Meta(1, 1));
        EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), before);
      }
      EXPECT_EQ(region.BytesInUse(), 0U);
    }
    const Cell flagged(OmStringCell("f", &region, true).Clone(nullptr));
    EXPECT_TRUE(static_cast<OmStringCell&>(*flagged).Flag());
    EXPECT_EQ(region.BytesInUse(), 0U);
  }
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), heap);
}

// Lets `work` fail at every allocation in `region` in turn.
template <typename Work>
void Exhaust(OmMemoryRegion& region, const Work& work) {
  const unsigned long before = region.BytesInUse();
  for (unsigned long limit = before, failures = 0;; limit += 8) {
    region.Limit(limit);
    try {
      work();
      EXPECT_GT(failures, 0U);
      break;
    } catch (const std::bad_alloc&) {
      ++failures;
      ASSERT_EQ(region.BytesInUse(), before) << limit;
    }
  }
  region.Limit(std::numeric_limits<unsigned long>::max());
}

TEST(Cells, LeaveNothingBehindWhereMemoryEnds) {
  OmMemoryRegion region(false);
  for (const Cell& cell : Ascending()) {
    cell->setMeta(Meta(1, 3));
    Exhaust(region, [&] { delete cell->Clone(&region); });
    EXPECT_EQ(region.LiveBlocks(), 0U);
  }
  const Cell nested(
      Compose({new OmStringCell("a"), Compose({new OmVariable("b", "c"), new OmNumber(1)}),
               new OmNumber(2)}));
  nested->setMeta(Meta(2, 2));
  Exhaust(region, [&] { delete nested->Clone(&region); });
  Exhaust(region, [&] { const OmVariable onStack("name", "label", &region); });
  Exhaust(region, [&] { delete new (&region) OmStringCell("a text of some length", &region); });
  // The old metadata stays until the new is complete.
  OmNumber number(1, kDefaultFormat, &region);
  number.setMeta(Meta(3, 1));
  Exhaust(region, [&] {
    EXPECT_EQ(number.getMeta().Style(), 3);
    number.setMeta(Meta(4, 10));
  });
  number.setMeta(number.getMeta());
  EXPECT_TRUE(number.getMeta() == Meta(4, 10));
  OmCellMetaData meta(&region);
  Exhaust(region, [&] { meta = number.getMeta(); });
  EXPECT_TRUE(meta == Meta(4, 10));
  meta = Meta(5, 0);
  EXPECT_TRUE(meta == Meta(5, 0));
}

TEST(Cells, CopyAndDestroyDeepComposites) {
  OmMemoryRegion region(false);
  constexpr int kLevels = 10000;
  OmComposite deep;
  auto node = deep.Tree().Root();
  for (int i = 0; i < kLevels; ++i) {
    OmCellText* part = new OmStringCell("x");
    node = deep.Tree().Child(node, part);
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
