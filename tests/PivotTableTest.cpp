// The pivot table: titles, dimensions and axes, the cell store and its iterators, footnotes,
// trackers, area formats and the dump.

#include "backend/tables/om/PivotTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <thread>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/OutputTree.h"
#include "platform/cells/CellMetaData.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/Choices.h"
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

TEST_F(PivotTable, StartsWithItsDefaults) {
  EXPECT_TRUE(table.Show() && table.showCaption() && table.backendOwns() && table.fastTable());
  EXPECT_FALSE(table.RotateRowLabels() || table.RotateColumnLabels() || table.IsScratched() ||
               table.hasMarkers() || table.getLabelsOnly() || table.getImputed() ||
               table.HasSplits() || table.HasRemovedFootnotes());
  for (const int number :
       {table.OptionNumber(), table.MinColumnWidth(), table.MaxColumnWidth(), table.MinRowWidth(),
        table.MaxRowWidth(), table.getLayerLoc(), table.getStartColor(), table.getEndColor()}) {
    EXPECT_EQ(number, -1);
  }
  EXPECT_EQ(table.TableId(), -1);
  EXPECT_EQ(table.getNumCells() + table.getLang() + table.getVariableMode() + table.getValueMode(),
            0);
  EXPECT_TRUE(table.CornerText() == nullptr && table.Caption() == nullptr &&
              table.GetTableTitle() == nullptr && table.getICUTracker() == nullptr);
  EXPECT_EQ(table.TemplateName()->Text(), "Template");

  for (const char* name : {"Warnings", "Notes", "warnings", "Notes "}) {
    const OmPivotTable named(OmStringCell("t"), OmStringCell(name), true);
    EXPECT_EQ(named.IsWarnings(), name == std::string("Warnings"));
    EXPECT_EQ(named.IsNotes(), name == std::string("Notes"));
    EXPECT_TRUE(named.HasSplits());
  }
  table.addMiscProperty("");
  table.addMiscProperty("a");
  table.addMiscProperty("b");
  EXPECT_EQ(table.getMiscProperties(), "a,b");
}

// Every pair of a setter and a getter, with values that no other pair has.
TEST_F(PivotTable, KeepsEveryPropertyApart) {
  using Table = OmPivotTable;
  const struct {
    void (Table::*set)(int) noexcept;
    int (Table::*get)() const noexcept;
  } numbers[] = {{&Table::OptionNumber, &Table::OptionNumber},
                 {&Table::MinColumnWidth, &Table::MinColumnWidth},
                 {&Table::MaxColumnWidth, &Table::MaxColumnWidth},
                 {&Table::MinRowWidth, &Table::MinRowWidth},
                 {&Table::MaxRowWidth, &Table::MaxRowWidth},
                 {&Table::setLayerLoc, &Table::getLayerLoc},
                 {&Table::setLang, &Table::getLang},
                 {&Table::setVariableMode, &Table::getVariableMode},
                 {&Table::setValueMode, &Table::getValueMode},
                 {&Table::setStartColor, &Table::getStartColor},
                 {&Table::setEndColor, &Table::getEndColor}};
  int value = 100;
  for (const auto& number : numbers) {
    (table.*number.set)(value++);
  }
  value = 100;
  for (const auto& number : numbers) {
    EXPECT_EQ((table.*number.get)(), value++);
  }
  const struct {
    void (Table::*set)(bool) noexcept;
    bool (Table::*get)() const noexcept;
  } flags[] = {{&Table::Show, &Table::Show},
               {&Table::RotateRowLabels, &Table::RotateRowLabels},
               {&Table::RotateColumnLabels, &Table::RotateColumnLabels},
               {&Table::showCaption, &Table::showCaption},
               {&Table::setBackendOwns, &Table::backendOwns},
               {&Table::setFastTable, &Table::fastTable},
               {&Table::setLabelsOnly, &Table::getLabelsOnly},
               {&Table::setImputed, &Table::getImputed},
               {&Table::Scratch, &Table::IsScratched},
               {&Table::RemovedFootnotes, &Table::HasRemovedFootnotes}};
  for (const auto& flag : flags) {
    for (const auto& other : flags) {
      (table.*other.set)(&other == &flag);
    }
    for (const auto& other : flags) {
      EXPECT_EQ((table.*other.get)(), &other == &flag);
    }
  }
  table.TableLocale("locale");
  table.setBorderInfo("border");
  table.setTableLookInfo("look");
  table.setTablePropertiesInfo("properties");
  EXPECT_EQ(table.TableLocale() + table.getBorderInfo() + table.getTableLookInfo() +
                table.getTablePropertiesInfo(),
            "localeborderlookproperties");
  table.setTableCustomWidths({1});
  table.setTableCustomHeights({2});
  EXPECT_EQ(table.getTableCustomWidths()[0] + 10 * table.getTableCustomHeights()[0], 21U);
}

TEST_F(PivotTable, TitlesAreCopiesAndNullAfterAFailedCopy) {
  const OmStringCell text("text");
  const BrittleText brittle(0);
  table.CornerText(&text);
  table.Caption(&text);
  table.SetTableTitle(text);
  EXPECT_NE(table.CornerText(), &text);
  EXPECT_EQ(table.CornerText()->Text() + table.Caption()->Text() + table.TableTitle()->Text(),
            "texttexttext");
  EXPECT_THROW(table.CornerText(&brittle), std::runtime_error);
  EXPECT_THROW(table.SetTableTitle(brittle), std::runtime_error);
  table.Caption(nullptr);
  EXPECT_TRUE(table.CornerText() == nullptr && table.TableTitle() == nullptr &&
              table.Caption() == nullptr);
  table.SetTableTitle(text);
  EXPECT_EQ(table.GetTableTitle()->Text(), "text");
}

TEST_F(PivotTable, ReportsEveryBrokenPreconditionWithItsNumbers) {
  const OmDimension* const a = AddDimension(table, "a", 2);
  AddDimension(table, "b", 2);
  OmPivotTable empty(OmStringCell("t"), OmStringCell("t"), false);
  const OmStringCell x("x");
  const struct {
    std::function<void()> call;
    const char* message;
  } rows[] = {
      {[&] {
         OmDimension copy(*a, nullptr);
         copy.Child(copy.Root().Begin(), x, 0, false);
       },
       "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0"},
      {[&] { (void)table.Size(-1); },
       "OmPivotTable::Size() -- which < 0, value 1 == -1, value 2 == 0"},
      {[&] { (void)table.Size(3); },
       "OmPivotTable::Size() -- which < NDimensions(), value 1 == 3, value 2 == 2"},
      {[&] { (void)table.Dimension(-7); },
       "OmPivotTable::Dimension() -- which < 0, value 1 == -7, value 2 == 0"},
      {[&] { (void)std::as_const(table).Dimension(2); },
       "OmPivotTable::Dimension() -- which < NDimensions(), value 1 == 2, value 2 == 2"},
      {[&] { (void)table.Cell({0}); },
       "OmPivotTable::Cell() -- nind != _my->_dimensions.size(), value 1 == 1, value 2 == 2"},
      {[&] {
         table.Cell({0, 0, 0}, x);
       },
       "OmPivotTable::Cell() -- nind != _my->_dimensions.size(), value 1 == 3, value 2 == 2"},
      {[&] { empty.Cell({}, x); },
       "OmPivotTable::Cell() -- nind != _my->_dimensions.size(), value 1 == 0, value 2 == 0"},
      {[&] {
         (void)table.Cell({0, -1});
       },
       "OmPivotTable::Cell() -- subscript < 0, value 1 == 1.84467e+19, value 2 == 0"},
      {[&] {
         table.Cell({-2, -1}, x);
       },
       "OmPivotTable::Cell() -- subscript < 0, value 1 == 1.84467e+19, value 2 == 0"},
      {[&] { table.CopyDimensions(empty); },
       "OmPivotTable::CopyDimensions() -- _my->_dimensions.size() != 0, value 1 == 2, value 2 == "
       "0"},
      {[&] { table.EndTable(); },
       "OmPivotTable::Data::ReindexAxis() -- ndim != nCount, value 1 == 2, value 2 == 0"},
      {[] { throw OMSException("X", 1.5, 1e7); }, "X, value 1 == 1.5, value 2 == 1e+07"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Message(row.call), row.message);
  }
  EXPECT_EQ(empty.Cell({}), nullptr);
  EXPECT_EQ(table.getNumCells(), 2) << "calls that throw count too";
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
    const auto fill = [](PuppetVector<short>& axis, const std::vector<short>& entries) {
      for (const short entry : entries) {
        axis.push_back(entry);
      }
    };
    fill(t.Rows(), c.rows);
    fill(t.Columns(), c.columns);
    fill(t.Layers(), c.layers);
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
  OmPointerVector v(&region);
  const struct {
    unsigned long slot, size, capacity;
  } rows[] = {{100, 101, 101}, {3, 101, 101}, {101, 102, 128}, {256, 257, 512}, {1026, 1027, 1027}};
  for (const auto& row : rows) {
    v.GrowTo(row.slot);
    EXPECT_EQ(v.size(), row.size);
    EXPECT_EQ(v.capacity(), row.capacity);
  }
  OmPointerVector small(&region);
  small.GrowTo(0);
  EXPECT_EQ(small.capacity(), 4U);
  small.GrowTo(5);
  EXPECT_EQ(small.capacity(), 8U);
  EXPECT_EQ(FindNonZero(small, 0), 6U);
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
  // A vector of nothing but nulls further on is passed over.
  table.Cell({2, 2}, nullptr);
  table.Cell({1, 4}, OmStringCell("y"));
  EXPECT_EQ(Cells(table), "0,1=x 1,4=y");
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
  AddDimension(table, "a", 3);
  for (int i = 0; i < 3; ++i) {
    table.Cell({i}, OmNumber(i));
  }
  OmPivotTable::Iterator end;
  auto a = std::make_unique<OmPivotTable::Iterator>(table.FirstCell());
  auto b = std::make_unique<OmPivotTable::Iterator>();
  EXPECT_EQ(b->Cell(), nullptr);
  *b = *a;
  OmPivotTable::Iterator copy(*a);
  ++*a;
  EXPECT_EQ(b->Index(), Subscripts{1});
  EXPECT_EQ(copy.Index(), Subscripts{0});
  a.reset();
  ++*b;
  ++*b;
  ++*b;
  EXPECT_EQ(b->Cell(), nullptr);
  ++ ++end;
  EXPECT_EQ(end.Cell(), nullptr);
}

TEST_F(PivotTable, StoreAgreesWithAMap) {
  Play<StoreModel>(40, 300);
}

TEST_F(PivotTable, FootnotesAgreeWithAList) {
  Play<FootnoteModel>(20, 200);
}

TEST_F(PivotTable, FootnotesAreKeptOncePerText) {
  const OmStringCell a("a");
  const OmStringCell x("x");
  const auto note = [&](const OmCellText& text, const OmCellText* marker, int uses,
                        bool alwaysNew) {
    OmFootnote footnote(&text, marker, nullptr);
    footnote.UseCount(uses);
    return table.Footnote(footnote, alwaysNew);
  };
  EXPECT_EQ(note(a, &x, 5, false), 0);
  EXPECT_EQ(table.Footnotes()[0].UseCount(), 1);
  EXPECT_EQ(table.Footnotes()[0].Marker()->Text(), "x");
  EXPECT_EQ(note(a, nullptr, 0, false), 0);
  EXPECT_EQ(table.Footnotes()[0].Marker(), nullptr);
  EXPECT_EQ(table.Footnotes()[0].UseCount(), 2);
  EXPECT_EQ(note(a, nullptr, -3, true), 1);
  EXPECT_EQ(table.Footnotes()[1].UseCount(), -3);
  EXPECT_THROW(note(BrittleText(1), nullptr, 0, false), std::runtime_error);
  EXPECT_EQ(note(OmStringCell("b"), nullptr, -1, false), 3) << "the failed entry stays";
  EXPECT_EQ(note(OmStringCell("b"), &x, 0, false), 3);
  EXPECT_EQ(table.Footnotes()[3].UseCount(), 0);
  // An entry of the list may be handed back, while the list grows.
  for (int i = 4; i < 20; ++i) {
    EXPECT_EQ(table.Footnote(table.Footnotes()[3], true), i);
  }
  EXPECT_EQ(table.Footnote(table.Footnotes()[3], false), 3);
  EXPECT_EQ(table.Footnotes()[3].Marker()->Text(), "x");
  EXPECT_EQ(table.Footnotes()[19].Text()->Text(), "b");
}

TEST_F(PivotTable, TrackersReachEveryTextButTheStatedOnes) {
  const OmStringCell text("text");
  const auto fill = [&](const char* suffix) {
    OmDimension* const dimension = AddDimension(table, std::string("d") + suffix, 1);
    const OmDimension::Node group = dimension->AddNewChild(dimension->Root(), text, ~0UL, true);
    dimension->AddNewChild(group, text, 1, false);
    table.CornerText(&text);
    table.Caption(&text);
    const OmStringCell note(std::string("note") + suffix);
    table.Footnote(OmFootnote(&note, &text, nullptr), false);
    return dimension;
  };
  OmDimension* const before = fill("before");
  table.Cell({0}, text);
  table.SetTableTitle(text);
  EXPECT_EQ(table.Cell({0})->getICUTracker(), nullptr);

  BackendSettings settings;
  settings.setFastTables(true);
  settings.setUnicode(false);
  settings.setLocale("en");
  table.setBackendSettings(settings);
  icuTracker* const tracker = table.getICUTracker();
  ASSERT_NE(tracker, nullptr);
  ASSERT_NE(table.getU8Tracker(), tracker);
  EXPECT_TRUE(table.getU8Tracker()->Unicode() && !tracker->Unicode());
  for (const OmCellText* reached : {table.Title(), table.TemplateName(), table.TableTitle(),
                                    before->Name(), before->Root().Begin()->Text(),
                                    table.Footnotes()[0].Text(), table.Footnotes()[0].Marker()}) {
    EXPECT_EQ(reached->getICUTracker(), tracker);
  }
  for (const OmCellText* passed : {table.CornerText(), table.Caption(), table.Cell({0})}) {
    EXPECT_EQ(passed->getICUTracker(), nullptr);
  }

  OmDimension* const after = fill("after");
  OmComposite composite;
  OmCellText* const part = text.Clone();
  OmCellText* nothing = nullptr;
  composite.Tree().Child(composite.Tree().Child(composite.Tree().Root(), nothing), part);
  table.Cell({0, 0}, composite);
  table.Cell({1, 0}, OmNumber(1));
  table.SetTableTitle(text);
  OmDimension* const copied = table.AddDimension(*before);
  settings.setFastTables(false);
  table.setBackendSettings(settings);
  EXPECT_EQ(table.getICUTracker(), tracker);
  EXPECT_FALSE(table.fastTable());
  EXPECT_EQ(table.getU8Tracker()->Locale(), "en");
  settings.setFastTables(true);
  auto* const stored = dynamic_cast<OmComposite*>(table.Cell({0, 0, 0}));
  ASSERT_NE(stored, nullptr);
  for (const OmCellText* reached :
       {table.CornerText(), table.Caption(), after->Name(), table.Footnotes()[1].Text(),
        table.Footnotes()[1].Marker(), table.TableTitle(), copied->Name(), table.Cell({0, 0, 0}),
        *stored->Tree().Root().Begin().Begin()}) {
    EXPECT_EQ(reached->getICUTracker(), tracker);
  }
  EXPECT_EQ(table.Cell({1, 0, 0})->getICUTracker(), nullptr) << "numbers carry no text";

  OmPivotTable unicode(OmStringCell("t"), OmStringCell("t"), false);
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
  testing::internal::CaptureStdout();
  table.Print();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Starting table T\nCells\nDone with table T\n");

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
  expected.str("");
  expected << "    [3]     [3] " << static_cast<void*>(&cell) << " - x\n";
  testing::internal::CaptureStdout();
  table.PrintCells(static_cast<OmPointerVector*>(static_cast<void*>(&cell)), 2, 3);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected.str());
}

// Everything that a table holds is in its region, and goes with it.
TEST(TableMemory, IsChargedToTheTablesRegion) {
  OmMemoryRegion* const heap = OmMemoryRegion::DefaultHeap();
  const unsigned long blocksBefore = heap->LiveBlocks();
  {
    const std::string big(10000, 'x');
    const OmStringCell text(big);
    OmPivotTable table(OmStringCell("t"), OmStringCell("t"), false);
    OmDimension* const dimension = table.AddDimension(text);
    OmMemoryRegion* const region = dimension->Region();
    const unsigned long heapBytes = heap->BytesInUse();
    unsigned long used = region->BytesInUse();
    const auto grewBy = [&](unsigned long bytes) {
      const unsigned long before = used;
      used = region->BytesInUse();
      EXPECT_GE(used, before + bytes);
      EXPECT_EQ(heap->BytesInUse(), heapBytes);
    };
    table.CornerText(&text);
    table.Caption(&text);
    table.SetTableTitle(text);
    grewBy(30000);
    const OmDimension::Node group = dimension->Child(dimension->Root(), text, ~0UL, true);
    const OmDimension::Node leaf = dimension->Child(group, text, 0, false);
    dimension->insertCategory(text, leaf, dimension->Root()[0], true);
    grewBy(30000);
    table.Cell({0}, text);
    OmComposite composite;
    OmCellText* part = text.Clone();
    composite.Tree().Child(composite.Tree().Root(), part);
    const unsigned long withComposite = heap->BytesInUse();
    table.Cell({1}, composite);
    EXPECT_EQ(heap->BytesInUse(), withComposite);
    EXPECT_GE(region->BytesInUse(), used + 20000);
    used = region->BytesInUse();
    {
      const OmFootnote note(&text, &text, region);
      table.Footnote(note, false);
    }
    EXPECT_GE(region->BytesInUse(), used + 20000);
    table.deleteCell({0});
    EXPECT_LT(region->BytesInUse(), used + 20000);
  }
  EXPECT_EQ(heap->LiveBlocks(), blocksBefore);
}

// Documents on different threads share nothing but the default heap.
TEST(TableMemory, DocumentsOnTwoThreadsDoNotDisturbEachOther) {
  const auto work = [] {
    for (int round = 0; round < 20; ++round) {
      OmOutputTree tree;
      ListTree<OmOutputPart*>::Node root(tree, tree.List().begin());
      for (int i = 0; i < 5; ++i) {
        auto* const table = new OmPivotTable(OmStringCell("t"), OmStringCell("t"), false);
        root.Child(table);
        AddDimension(*table, "d", 10);
        for (int k = 0; k < 10; ++k) {
          table->Cell({k}, OmNumber(k));
        }
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
