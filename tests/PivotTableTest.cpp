// The pivot table: titles, dimensions and axes, the cell store and its iterators, footnotes,
// trackers, area formats and the dump.

#include "backend/tables/om/PivotTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <thread>
#include <utility>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/Footnote.h"
#include "platform/cells/CellMetaData.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/Choices.h"
#include "tests/support/Show.h"
#include "tests/support/StoreModel.h"
#include "tests/support/Tables.h"

namespace {

using Subscripts = std::vector<int>;

class PivotTable : public testing::Test {
 protected:
  std::string Message(const std::function<void()>& call) {
    try {
      call();
    } catch (const OMSException& error) {
      return error.what();
    }
    return "nothing thrown";
  }

  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

// Every pair of a setter and a getter, with values that no other pair has.
TEST_F(PivotTable, StartsWithItsDefaultsAndKeepsEveryPropertyApart) {
  using Table = OmPivotTable;
  const struct {
    void (Table::*set)(int) noexcept;
    int (Table::*get)() const noexcept;
    int initial;
  } numbers[] = {{&Table::OptionNumber, &Table::OptionNumber, -1},
                 {&Table::MinColumnWidth, &Table::MinColumnWidth, -1},
                 {&Table::MaxColumnWidth, &Table::MaxColumnWidth, -1},
                 {&Table::MinRowWidth, &Table::MinRowWidth, -1},
                 {&Table::MaxRowWidth, &Table::MaxRowWidth, -1},
                 {&Table::setLayerLoc, &Table::getLayerLoc, -1},
                 {&Table::setLang, &Table::getLang, 0},
                 {&Table::setVariableMode, &Table::getVariableMode, 0},
                 {&Table::setValueMode, &Table::getValueMode, 0},
                 {&Table::setStartColor, &Table::getStartColor, -1},
                 {&Table::setEndColor, &Table::getEndColor, -1}};
  int value = 100;
  for (const auto& number : numbers) {
    EXPECT_EQ((table.*number.get)(), number.initial);
    (table.*number.set)(value++);
  }
  value = 100;
  for (const auto& number : numbers) {
    EXPECT_EQ((table.*number.get)(), value++);
  }
  const struct {
    void (Table::*set)(bool) noexcept;
    bool (Table::*get)() const noexcept;
    bool initial;
  } flags[] = {{&Table::Show, &Table::Show, true},
               {&Table::RotateRowLabels, &Table::RotateRowLabels, false},
               {&Table::RotateColumnLabels, &Table::RotateColumnLabels, false},
               {&Table::showCaption, &Table::showCaption, true},
               {&Table::setBackendOwns, &Table::backendOwns, true},
               {&Table::setFastTable, &Table::fastTable, true},
               {&Table::setLabelsOnly, &Table::getLabelsOnly, false},
               {&Table::setImputed, &Table::getImputed, false},
               {&Table::Scratch, &Table::IsScratched, false},
               {&Table::RemovedFootnotes, &Table::HasRemovedFootnotes, false}};
  for (const auto& flag : flags) {
    EXPECT_EQ((table.*flag.get)(), flag.initial);
    (table.*flag.set)(false);
  }
  for (const auto& flag : flags) {
    (table.*flag.set)(true);
    for (const auto& other : flags) {
      EXPECT_EQ((table.*other.get)(), &other == &flag);
    }
    (table.*flag.set)(false);
  }
  EXPECT_TRUE(table.TableId() == -1 && !table.hasMarkers() && !table.HasSplits());
  for (const char* name : {"Warnings", "Notes", "warnings", "Notes "}) {
    const OmPivotTable named(OmStringCell("t"), OmStringCell(name), true);
    EXPECT_EQ(named.IsWarnings(), name == std::string("Warnings"));
    EXPECT_EQ(named.IsNotes(), name == std::string("Notes"));
    EXPECT_TRUE(named.HasSplits());
  }
  for (const char* property : {"", "a", "b"}) {
    table.addMiscProperty(property);
  }
  EXPECT_EQ(table.getMiscProperties(), "a,b");
}

TEST_F(PivotTable, TitlesAreCopiesAndNullAfterAFailedCopy) {
  const OmStringCell text("text");
  EXPECT_TRUE(table.CornerText() == nullptr && table.Caption() == nullptr &&
              table.GetTableTitle() == nullptr);
  table.CornerText(&text);
  table.Caption(&text);
  table.SetTableTitle(text);
  EXPECT_NE(table.CornerText(), &text);
  EXPECT_EQ(Show(table.CornerText()) + Show(table.Caption()) + Show(table.TableTitle()),
            "texttexttext");
  EXPECT_THROW(table.SetTableTitle(BrittleText(0)), std::runtime_error);
  table.Caption(nullptr);
  EXPECT_TRUE(table.TableTitle() == nullptr && table.Caption() == nullptr);
}

TEST_F(PivotTable, ReportsEveryBrokenPreconditionWithItsNumbers) {
  AddDimension(table, "a", 2);
  AddDimension(table, "b", 2);
  OmPivotTable empty(OmStringCell("t"), OmStringCell("t"), false);
  const OmStringCell x("x");
  const Subscripts few{0}, none{}, negative{0, -1}, bothNegative{-2, -1};
  const struct {
    std::function<void()> call;
    const char* message;
  } rows[] = {
      {[&] { (void)table.Size(-1); }, "Size() -- which < 0, value 1 == -1, value 2 == 0"},
      {[&] { (void)table.Size(3); }, "Size() -- which < NDimensions(), value 1 == 3, value 2 == 2"},
      {[&] { (void)table.Dimension(-7); }, "Dimension() -- which < 0, value 1 == -7, value 2 == 0"},
      {[&] { (void)std::as_const(table).Dimension(2); },
       "Dimension() -- which < NDimensions(), value 1 == 2, value 2 == 2"},
      {[&] { (void)table.Cell(few); },
       "Cell() -- nind != _my->_dimensions.size(), value 1 == 1, value 2 == 2"},
      {[&] { empty.Cell(none, x); },
       "Cell() -- nind != _my->_dimensions.size(), value 1 == 0, value 2 == 0"},
      {[&] { (void)table.Cell(negative); },
       "Cell() -- subscript < 0, value 1 == 1.84467e+19, value 2 == 0"},
      {[&] { table.Cell(bothNegative, x); },
       "Cell() -- subscript < 0, value 1 == 1.84467e+19, value 2 == 0"},
      {[&] { table.CopyDimensions(empty); },
       "CopyDimensions() -- _my->_dimensions.size() != 0, value 1 == 2, value 2 == 0"},
      {[&] { table.EndTable(); },
       "Data::ReindexAxis() -- ndim != nCount, value 1 == 2, value 2 == 0"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Message(row.call), std::string("OmPivotTable::") + row.message);
  }
  EXPECT_EQ(empty.Cell({}), nullptr);
  EXPECT_EQ(table.getNumCells(), 1) << "calls that throw count too";
  EXPECT_EQ(Cells(table), "");
}

TEST_F(PivotTable, EndTableDropsPlaceholdersOnlyToMendAMismatch) {
  const struct {
    std::vector<short> rows, columns, layers;
    bool ends;
    unsigned long rowsAfter;
  } cases[] = {
      {{0, -1}, {1}, {2}, true, 1},
      {{-1, 0}, {}, {}, false, 1},
      {{0, 0}, {1}, {}, true, 2},
      {{0, -1}, {1}, {}, true, 2},
      {{-1, 0, -1, 1, 2}, {-1}, {-1}, true, 3},
  };
  for (const auto& c : cases) {
    OmPivotTable t(OmStringCell("t"), OmStringCell("t"), false);
    for (const char* name : {"a", "b", "c"}) {
      AddDimension(t, name, 1);
    }
    const std::pair<PuppetVector<short>&, const std::vector<short>&> axes[] = {
        {t.Rows(), c.rows}, {t.Columns(), c.columns}, {t.Layers(), c.layers}};
    for (const auto& [axis, entries] : axes) {
      for (const short entry : entries) {
        axis.push_back(entry);
      }
    }
    EXPECT_EQ(Message([&] { t.EndTable(); }) == "nothing thrown", c.ends);
    EXPECT_EQ(t.Rows().size(), c.rowsAfter);
  }
}

TEST_F(PivotTable, DimensionsAreFoundCopiedAndUndoneAsAWhole) {
  AddDimension(table, "a", 2);
  table.Cell({0}, OmStringCell("x"));
  table.Cell({3}, OmStringCell("y"));
  const BrittleText brittle(1);  // the root's own copy works, the one in the tree fails
  EXPECT_THROW(table.AddDimension(brittle), std::runtime_error);
  EXPECT_EQ(table.NDimensions(), 1U);
  EXPECT_EQ(Cells(table), "0=x 3=y");

  OmDimension* const b = AddDimension(table, "b", 3);
  AddDimension(table, "a", 4);
  EXPECT_EQ(Cells(table), "0,0,0=x 3,0,0=y");
  EXPECT_EQ(table.FindDimension(OmStringCell("a")), 0);
  EXPECT_EQ(table.FindDimension(OmStringCell("b")), 1);
  EXPECT_EQ(table.FindDimension(OmStringCell("c")), -1);
  EXPECT_EQ(b->Root()->Subscript(), 1U);
  EXPECT_EQ(table.SizeVector(), (Subscripts{2, 3, 4}));

  OmPivotTable other(OmStringCell("t"), OmStringCell("t"), false);
  b->Root()->Subscript(9);
  other.CopyDimensions(table);
  EXPECT_EQ(other.SizeVector(), table.SizeVector());
  EXPECT_EQ(other.Dimension(1)->Root()->Subscript(), 9U) << "roots are not renumbered";
  EXPECT_EQ(other.AddDimension(*b)->Root()->Subscript(), 3U);
  EXPECT_EQ(Cells(other), "");
}

TEST_F(PivotTable, CellLimitCountsCallsAndScratches) {
  BackendSettings settings;
  settings.setMaxCells(2);
  table.setBackendSettings(settings);
  AddDimension(table, "a", 9);
  EXPECT_THROW(table.Cell({-1}, OmNumber(0)), OMSException);
  EXPECT_TRUE(table.Cell({0}, nullptr));
  EXPECT_TRUE(table.Cell({0}, OmNumber(2)));
  EXPECT_FALSE(table.IsScratched());
  EXPECT_FALSE(table.Cell({-1}, OmNumber(3))) << "the limit comes before any other check";
  EXPECT_FALSE(table.Cell({0}, OmNumber(4)));
  EXPECT_TRUE(table.IsScratched());
  EXPECT_EQ(table.getNumCells(), 5);
  EXPECT_EQ(Cells(table), "0=2.00");
}

TEST_F(PivotTable, ReplacedCellsHandOnTheirMetadata) {
  AddDimension(table, "a", 1);
  OmStringCell cell("old");
  OmCellMetaData meta;
  meta.Style(7);
  cell.setMeta(meta);
  table.Cell({0}, cell);
  table.Cell({0}, OmStringCell("new"));
  ASSERT_TRUE(table.Cell({0})->hasMeta());
  EXPECT_EQ(table.Cell({0})->getMeta().Style(), 7);
  EXPECT_THROW(table.Cell({0}, BrittleText(0)), std::runtime_error);
  EXPECT_EQ(table.Cell({0}), nullptr);
  table.Cell({0}, OmStringCell("again"));
  EXPECT_FALSE(table.Cell({0})->hasMeta());
}

TEST(PointerVector, GrowsAsIfAppendedOneByOne) {
  OmMemoryRegion region(false);
  const struct {
    std::vector<unsigned long> slots;
    unsigned long size, capacity;
  } rows[] = {{{0}, 1, 4},
              {{0, 5}, 6, 8},
              {{100, 3}, 101, 101},
              {{100, 101}, 102, 128},
              {{100, 101, 256}, 257, 512},
              {{100, 101, 256, 1026}, 1027, 1027}};
  for (const auto& row : rows) {
    OmPointerVector v(&region);
    for (const unsigned long slot : row.slots) {
      v.GrowTo(slot);
    }
    EXPECT_EQ(v.size(), row.size);
    EXPECT_EQ(v.capacity(), row.capacity);
    EXPECT_EQ(FindNonZero(v, 0), row.size);
  }
}

TEST_F(PivotTable, WalkStartsAtTheEndBehindAStoredNull) {
  AddDimension(table, "a", 3);
  AddDimension(table, "b", 3);
  table.Cell({0, 0}, nullptr);
  table.Cell({0, 1}, OmStringCell("x"));
  EXPECT_EQ(Cells(table), "");
  EXPECT_EQ(table.Cell({0, 1})->Text(), "x");
  table.deleteCell({0, 0});
  EXPECT_EQ(Cells(table), "0,1=x");
}

TEST_F(PivotTable, DeletingTheOnlyCellFreesItsPathButTheRoot) {
  OmMemoryRegion* const region = AddDimension(table, "a", 1)->Region();
  AddDimension(table, "b", 1);
  AddDimension(table, "c", 1);
  table.Cell({0, 0, 1}, nullptr);
  table.deleteCell({0, 0, 1});
  const unsigned long blocks = region->LiveBlocks();
  table.Cell({2, 2, 1}, OmNumber(0));
  EXPECT_EQ(region->LiveBlocks(), blocks + 5) << "two vectors with an array each, and the cell";
  table.deleteCell({2, 2, 1});
  EXPECT_EQ(region->LiveBlocks(), blocks);
  table.deleteCell({2, 2, 1});
  EXPECT_EQ(table.Cell({2, 2, 1}), nullptr);
}

TEST_F(PivotTable, IteratorsShareACursorAndGoInAnyOrder) {
  AddDimension(table, "a", 2);
  table.Cell({0}, OmNumber(0));
  table.Cell({1}, OmNumber(1));
  auto a = std::make_unique<OmPivotTable::Iterator>(table.FirstCell());
  OmPivotTable::Iterator b;
  EXPECT_EQ((++b).Cell(), nullptr);
  b = *a;
  OmPivotTable::Iterator copy(*a);
  ++*a;
  EXPECT_EQ(b.Index(), Subscripts{1});
  EXPECT_EQ(copy.Index(), Subscripts{0});
  a.reset();
  EXPECT_EQ((++ ++b).Cell(), nullptr);
}

TEST_F(PivotTable, StoreAgreesWithAMap) {
  Play<StoreModel>(40, 300);
}

TEST_F(PivotTable, FootnotesAgreeWithAList) {
  Play<FootnoteModel>(20, 200);
}

TEST_F(PivotTable, FootnotesSurviveAFailedCopyAndTheirOwnList) {
  const OmStringCell b("b");
  const BrittleText brittle(1);
  EXPECT_THROW(table.Footnote(OmFootnote(&brittle, nullptr, nullptr), false), std::runtime_error);
  EXPECT_EQ(table.Footnote(OmFootnote(&b, &b, nullptr), false), 1) << "the failed entry stays";
  // An entry of the list may be handed back, while the list grows.
  for (int i = 2; i < 20; ++i) {
    EXPECT_EQ(table.Footnote(table.Footnotes()[1], true), i);
  }
  EXPECT_EQ(table.Footnote(table.Footnotes()[1], false), 1);
  EXPECT_EQ(Show(table.Footnotes()[1].Marker()) + Show(table.Footnotes()[19].Text()), "bb");
}

TEST_F(PivotTable, TrackersReachEveryTextButTheStatedOnes) {
  const OmStringCell text("text");
  const auto fill = [&](const char* suffix) {
    OmDimension* const dimension = AddDimension(table, std::string("d") + suffix, 1);
    table.CornerText(&text);
    table.Caption(&text);
    table.SetTableTitle(text);
    const OmStringCell note(std::string("note") + suffix);
    table.Footnote(OmFootnote(&note, &text, nullptr), false);
    return dimension;
  };
  const auto expectOn = [](const icuTracker* tracker, std::vector<const OmCellText*> texts) {
    for (const OmCellText* reached : texts) {
      EXPECT_EQ(reached->getICUTracker(), tracker) << reached->Text();
    }
  };
  EXPECT_EQ(table.getICUTracker(), nullptr);
  OmDimension* const before = fill("before");
  table.Cell({0}, text);
  BackendSettings settings;
  settings.setFastTables(true);
  settings.setUnicode(false);
  settings.setLocale("en");
  table.setBackendSettings(settings);
  icuTracker* const tracker = table.getICUTracker();
  ASSERT_TRUE(tracker != nullptr && table.getU8Tracker() != tracker);
  EXPECT_TRUE(table.getU8Tracker()->Unicode() && !tracker->Unicode());
  expectOn(tracker, {table.Title(), table.TemplateName(), table.TableTitle(), before->Name(),
                     before->Root().Begin()->Text(), table.Footnotes()[0].Text(),
                     table.Footnotes()[0].Marker()});
  expectOn(nullptr, {table.CornerText(), table.Caption(), table.Cell({0})});

  OmDimension* const after = fill("after");
  OmComposite composite;
  OmCellText* const part = text.Clone();
  OmCellText* nothing = nullptr;
  composite.Tree().Child(composite.Tree().Child(composite.Tree().Root(), nothing), part);
  table.Cell({0, 0}, composite);
  table.Cell({1, 0}, OmNumber(1));
  const OmDimension* const copied = table.AddDimension(*before);
  settings.setFastTables(false);
  table.setBackendSettings(settings);
  EXPECT_TRUE(table.getICUTracker() == tracker && !table.fastTable());
  EXPECT_EQ(table.getU8Tracker()->Locale(), "en");
  auto& stored = dynamic_cast<OmComposite&>(*table.Cell({0, 0, 0}));
  expectOn(tracker, {table.CornerText(), table.Caption(), after->Name(), table.TableTitle(),
                     table.Footnotes()[1].Text(), table.Footnotes()[1].Marker(), copied->Name(),
                     &stored, *stored.Tree().Root().Begin().Begin()});
  expectOn(nullptr, {table.Cell({1, 0, 0})});  // numbers carry no text

  OmPivotTable unicode(OmStringCell("t"), OmStringCell("t"), false);
  settings.setFastTables(true);
  settings.setUnicode(true);
  unicode.setBackendSettings(settings);
  EXPECT_EQ(unicode.getU8Tracker(), unicode.getICUTracker());
}

TEST_F(PivotTable, AreaFormatsAreOwnedOnePerArea) {
  const auto format = [](int area, int style) {
    auto* const f = new FormatArea(static_cast<FormatArea::Area>(area));
    f->setFontStyle(style);
    return f;
  };
  table.setAreaFormat(nullptr);
  table.setAreaFormat(format(3, 1));
  table.setAreaFormat(format(3, 2));
  table.setAreaFormat(format(9, 3));
  FormatArea* const beyond = format(9, 4);
  table.setAreaFormat(beyond);
  table.setAreaFormat(beyond);  // no lookup finds it, so nothing deletes it
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(3))->getFontStyle(), 2);
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(9)), nullptr);
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(0)), nullptr);
}

TEST_F(PivotTable, DumpsToTheLetter) {
  table.SetTableTitle(OmStringCell("T"));
  OmDimension* const d = table.AddDimension(OmStringCell("D"));
  const OmDimension::Node group = d->Child(d->Root(), OmStringCell("G"), ~0UL, true);
  d->Child(group, OmStringCell("b"), 1, false)->Hide(true);
  d->Child(d->Root()[0], OmStringCell("a"), 0, false)->HideLabels(true);
  d->Root()->SortOrder(1);
  d->Root()[0]->SortOrder(0);
  const OmStringCell note("note");
  table.Cell({1}, OmStringCell("cell"));
  table.CornerText(&note);
  table.Caption(&note);
  table.Footnote(OmFootnote(&note, nullptr, nullptr), false);
  testing::internal::CaptureStdout();
  table.Print();
  EXPECT_EQ(
      testing::internal::GetCapturedStdout(),
      "Starting table T\n"
      "Subscript: 0, Group: yes, hide: no, hideLabels: no, Sort: down, Children: 0, Text: D\n"
      "  Subscript: -1, Group: yes, hide: no, hideLabels: no, Sort: up, Children: 1, 0, Text: G\n"
      "    Subscript: 1, Group: no, hide: yes, hideLabels: no, Text: b\n"
      "    Subscript: 0, Group: no, hide: no, hideLabels: yes, Text: a\n"
      "Cells\ncell\n  Corner Text: note\n  Caption: note\n  Footnotes\n      note\n"
      "Done with table T\n");

  OmMemoryRegion region(false);
  OmPointerVector bottom(&region);
  OmStringCell cell("x");
  bottom.push_back(nullptr);
  bottom.push_back(&cell);
  std::ostringstream expected;
  expected << static_cast<void*>(&bottom) << "\n    [0] " << static_cast<void*>(nullptr)
           << "\n    [1] " << static_cast<void*>(&cell) << " - x\n";
  testing::internal::CaptureStdout();
  table.PrintCells(&bottom, 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected.str());
}

// Everything that a table holds is in its region, and goes with it.
TEST(TableMemory, IsChargedToTheTablesRegion) {
  OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
  const unsigned long blocksBefore = heap->LiveBlocks();
  {
    const OmStringCell text(std::string(10000, 'x'));
    OmPivotTable table(OmStringCell("t"), OmStringCell("t"), false);
    OmDimension* const dimension = table.AddDimension(text);
    OmMemoryRegion* const region = dimension->Region();
    OmComposite composite;
    OmCellText* part = text.Clone();
    composite.Tree().Child(composite.Tree().Root(), part);
    const OmFootnote note(&text, &text, nullptr);
    OmDimension::Node leaf = dimension->Root();
    const struct {
      std::function<void()> call;
      unsigned long texts;
    } rows[] = {{[&] { table.CornerText(&text); }, 1},
                {[&] { table.Caption(&text); }, 1},
                {[&] { table.SetTableTitle(text); }, 1},
                {[&] { leaf = dimension->Child(dimension->Root(), text, 0, false); }, 1},
                {[&] { dimension->insertCategory(text, leaf, dimension->Root(), true); }, 1},
                {[&] { table.Cell({0}, text); }, 1},
                {[&] { table.Cell({1}, composite); }, 1},
                {[&] { table.Footnote(note, false); }, 2}};
    const unsigned long heapBytes = heap->BytesInUse();
    for (const auto& row : rows) {
      const unsigned long before = region->BytesInUse();
      row.call();
      EXPECT_GE(region->BytesInUse(), before + 10000 * row.texts);
      EXPECT_EQ(heap->BytesInUse(), heapBytes) << "row " << &row - rows;
    }
    const unsigned long full = region->BytesInUse();
    table.deleteCell({0});
    EXPECT_LT(region->BytesInUse(), full - 10000);
  }
  EXPECT_EQ(heap->LiveBlocks(), blocksBefore);
}

// Tables on different threads share nothing but the default heap.
TEST(TableMemory, TablesOnTwoThreadsDoNotDisturbEachOther) {
  const auto work = [] {
    for (int round = 0; round < 100; ++round) {
      OmPivotTable table(OmStringCell("t"), OmStringCell("t"), false);
      AddDimension(table, "d", 10);
      for (int k = 0; k < 10; ++k) {
        table.Cell({k}, OmNumber(k));
      }
    }
  };
  const unsigned long blocks = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), blocks);
}

}  // namespace
