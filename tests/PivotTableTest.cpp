// The pivot table: titles, dimensions and axes, the cell store and its iterators, footnotes,
// trackers, area formats and the dump.

#include "backend/tables/om/PivotTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <thread>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/StoreModel.h"

namespace {

using Subscripts = std::vector<int>;
using Table = OmPivotTable;

const OmStringCell kText("text");

class PivotTable : public testing::Test {
 protected:
  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

// Every setter reaches its own getter and no other.
template <typename T, unsigned long n>
void ExpectApart(OmPivotTable& table, void (OmPivotTable::*const (&set)[n])(T) noexcept,
                 T (OmPivotTable::*const (&get)[n])() const noexcept, const int (&initial)[n]) {
  for (unsigned long i = 0; i != n; ++i) {
    EXPECT_EQ((table.*get[i])(), static_cast<T>(initial[i])) << i;
    (table.*set[i])(static_cast<T>(0));
  }
  for (unsigned long i = 0; i != n; ++i) {
    (table.*set[i])(static_cast<T>(1));
    for (unsigned long k = 0; k != n; ++k) {
      EXPECT_EQ((table.*get[k])(), static_cast<T>(i == k)) << i << " " << k;
    }
    (table.*set[i])(static_cast<T>(0));
  }
}

TEST_F(PivotTable, StartsWithItsDefaultsAndKeepsEveryPropertyApart) {
  void (Table::*const setNumber[])(int) noexcept = {
      &Table::OptionNumber, &Table::MinColumnWidth, &Table::MaxColumnWidth, &Table::MinRowWidth,
      &Table::MaxRowWidth,  &Table::setLayerLoc,    &Table::setLang,        &Table::setVariableMode,
      &Table::setValueMode, &Table::setStartColor,  &Table::setEndColor};
  int (Table::*const getNumber[])() const noexcept = {
      &Table::OptionNumber, &Table::MinColumnWidth, &Table::MaxColumnWidth, &Table::MinRowWidth,
      &Table::MaxRowWidth,  &Table::getLayerLoc,    &Table::getLang,        &Table::getVariableMode,
      &Table::getValueMode, &Table::getStartColor,  &Table::getEndColor};
  ExpectApart(table, setNumber, getNumber, {-1, -1, -1, -1, -1, -1, 0, 0, 0, -1, -1});
  void (Table::*const setFlag[])(bool) noexcept = {&Table::Show,
                                                   &Table::RotateRowLabels,
                                                   &Table::RotateColumnLabels,
                                                   &Table::showCaption,
                                                   &Table::setBackendOwns,
                                                   &Table::setFastTable,
                                                   &Table::setLabelsOnly,
                                                   &Table::setImputed,
                                                   &Table::Scratch,
                                                   &Table::RemovedFootnotes};
  bool (Table::*const getFlag[])() const noexcept = {&Table::Show,
                                                     &Table::RotateRowLabels,
                                                     &Table::RotateColumnLabels,
                                                     &Table::showCaption,
                                                     &Table::backendOwns,
                                                     &Table::fastTable,
                                                     &Table::getLabelsOnly,
                                                     &Table::getImputed,
                                                     &Table::IsScratched,
                                                     &Table::HasRemovedFootnotes};
  ExpectApart(table, setFlag, getFlag, {1, 0, 0, 1, 1, 1, 0, 0, 0, 0});
  EXPECT_TRUE(table.TableId() == -1 && !table.hasMarkers() && !table.HasSplits());
  for (const std::string name : {"Warnings", "Notes", "warnings", "Notes "}) {
    const OmPivotTable named(kText, OmStringCell(name), true);
    EXPECT_EQ(named.IsWarnings(), name == "Warnings");
    EXPECT_EQ(named.IsNotes(), name == "Notes");
    EXPECT_TRUE(named.HasSplits());
  }
  for (const char* property : {"", "a", "b"}) {
    table.addMiscProperty(property);
  }
  EXPECT_EQ(table.getMiscProperties(), "a,b");
}

TEST_F(PivotTable, ReportsEveryBrokenPreconditionWithItsNumbers) {
  AddDimension(table, "a", 2);
  AddDimension(table, "b", 2);
  OmPivotTable empty(kText, kText, false);
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
      {[&] { empty.Cell(none, kText); },
       "Cell() -- nind != _my->_dimensions.size(), value 1 == 0, value 2 == 0"},
      {[&] { (void)table.Cell(negative); },
       "Cell() -- subscript < 0, value 1 == 1.84467e+19, value 2 == 0"},
      {[&] { table.Cell(bothNegative, kText); },
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
  for (const char* name : {"a", "b", "c"}) {
    AddDimension(table, name, 1);
  }
  const struct {
    std::vector<short> rows, columns, layers;
    const char* rowsAfter;  // null where the numbers cannot be mended
  } cases[] = {
      {{0, -1}, {1}, {2}, "0,"},
      {{-1, 0}, {}, {}, nullptr},
      {{0, 0}, {1}, {}, "0,0,"},
      {{0, -1}, {1}, {}, "0,-1,"},
      {{-1, 0, -1, 1, 2}, {-1}, {-1}, "0,1,2,"},
  };
  for (const auto& c : cases) {
    for (const auto& [axis, entries] : {std::pair(&table.Rows(), c.rows),
                                        {&table.Columns(), c.columns},
                                        {&table.Layers(), c.layers}}) {
      axis->clear();
      std::copy(entries.begin(), entries.end(), std::back_inserter(*axis));
    }
    if (c.rowsAfter == nullptr) {
      EXPECT_THROW(table.EndTable(), OMSException);
    } else {
      table.EndTable();
      EXPECT_EQ(ListOf(table.Rows()), c.rowsAfter);
    }
  }
}

TEST_F(PivotTable, DimensionsAreFoundCopiedAndUndoneAsAWhole) {
  AddDimension(table, "a", 2);
  table.Cell({0}, OmStringCell("x"));
  table.Cell({3}, OmStringCell("y"));
  // The root's own copy works, the one in the tree fails.
  EXPECT_THROW(table.AddDimension(BrittleText(1)), std::runtime_error);
  EXPECT_EQ(table.NDimensions(), 1U);
  EXPECT_EQ(Cells(table), "0=x 3=y");

  OmDimension* const b = AddDimension(table, "b", 3);
  AddDimension(table, "a", 4);
  EXPECT_EQ(Cells(table), "0,0,0=x 3,0,0=y");
  EXPECT_EQ(table.FindDimension(OmStringCell("a")), 0);
  EXPECT_EQ(table.FindDimension(OmStringCell("b")), 1);
  EXPECT_EQ(table.FindDimension(OmStringCell("c")), -1);
  EXPECT_EQ(b->Root()->Subscript(), 1U);

  OmPivotTable other(kText, kText, false);
  b->Root()->Subscript(9);
  other.CopyDimensions(table);
  EXPECT_EQ(other.SizeVector(), (Subscripts{2, 3, 4}));
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
  EXPECT_TRUE(table.IsScratched());
  EXPECT_EQ(table.getNumCells(), 4);
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
  EXPECT_EQ(Show(table.Cell({0})), "new{|7||");
  EXPECT_THROW(table.Cell({0}, BrittleText(0)), std::runtime_error);
  EXPECT_EQ(table.Cell({0}), nullptr);
  table.Cell({0}, OmStringCell("again"));
  EXPECT_EQ(Show(table.Cell({0})), "again");
}

TEST(PointerVector, GrowsAsIfAppendedOneByOne) {
  OmMemoryRegion region(false);
  const struct {
    std::vector<unsigned long> slots;
    unsigned long capacity;
  } rows[] = {{{0}, 4},
              {{0, 5}, 8},
              {{100, 3}, 101},
              {{100, 101}, 128},
              {{100, 101, 256}, 512},
              {{100, 101, 256, 1026}, 1027}};
  for (const auto& row : rows) {
    OmPointerVector v(&region);
    for (const unsigned long slot : row.slots) {
      v.GrowTo(slot);
    }
    EXPECT_EQ(v.capacity(), row.capacity);
    EXPECT_EQ(FindNonZero(v, 0), v.size());
  }
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
  table.deleteCell({2, 2, 1});
  EXPECT_EQ(region->LiveBlocks(), blocks);
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

// On two threads, whose tables share nothing but the default heap.
TEST_F(PivotTable, StoresAgreeWithAMap) {
  const unsigned long blocks = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  std::thread other([] { Play<StoreModel>(20, 300); });
  Play<StoreModel>(20, 300);
  other.join();
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), blocks);
}

TEST_F(PivotTable, FootnotesAgreeWithAList) {
  Play<FootnoteModel>(20, 200);
}

TEST_F(PivotTable, FootnotesSurviveAFailedCopyAndTheirOwnList) {
  const BrittleText brittle(1);
  EXPECT_THROW(table.Footnote(OmFootnote(&brittle, nullptr, nullptr), false), std::runtime_error);
  EXPECT_EQ(table.Footnote(OmFootnote(&kText, &kText, nullptr), false), 1) << "the entry stays";
  // An entry of the list may be handed back, while the list grows.
  for (int i = 2; i < 20; ++i) {
    EXPECT_EQ(table.Footnote(table.Footnotes()[1], true), i);
  }
  EXPECT_EQ(table.Footnote(table.Footnotes()[1], false), 1);
  EXPECT_EQ(Show(table.Footnotes()[1]) + Show(table.Footnotes()[19]), "text|text|2|text|text|1|");
}

// Texts with a tracker show with a "~".
TEST_F(PivotTable, KeepsTextsInItsRegionAndTracksAllButTheStatedOnes) {
  OmDimension* before = nullptr;
  OmDimension* last = nullptr;
  const OmFootnote note(&kText, &kText, nullptr);
  OmComposite composite;
  OmCellText* const part = kText.Clone();
  composite.Tree().Child(composite.Tree().Child(composite.Tree().Root(), nullptr), part);
  BackendSettings settings;
  settings.setFastTables(true);
  settings.setUnicode(false);
  settings.setLocale("en");
  const unsigned long blocks = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  const auto fill = [&] {
    last = table.AddDimension(kText);
    last->insertCategory(kText, last->Child(last->Root(), kText, 0, false), last->Root(), true);
    table.CornerText(&kText);
    table.Caption(&kText);
    table.SetTableTitle(kText);
    table.Footnote(note, true);
  };
  const auto shown = [&] {
    return Fields(Show(table.Title()), Show(table.TemplateName()), Show(table.TableTitle()),
                  Show(table.CornerText()), Show(table.Caption()), Show(last->Name()),
                  Show(last->Root()[0]->Text()), Show(table.Footnotes()));
  };
  fill();
  before = last;
  table.Cell({0}, kText);
  table.setBackendSettings(settings);
  EXPECT_EQ(shown(), "title~|Template~|text~|text|text|text~|text~|text~|text~|1| |");
  EXPECT_EQ(Show(table.Cell({0})), "text");
  icuTracker* const tracker = table.getICUTracker();
  EXPECT_EQ(table.Title()->getICUTracker(), tracker);
  EXPECT_TRUE(table.getU8Tracker()->Unicode() && !tracker->Unicode());

  fill();
  EXPECT_EQ(shown(),
            "title~|Template~|text~|text~|text~|text~|text~|text~|text~|1| text~|text~|1| |");
  table.Cell({0, 0}, composite);
  table.Cell({1, 0}, OmNumber(1));
  EXPECT_EQ(Show(table.AddDimension(*before)->Name()), "text~");
  const auto& stored = dynamic_cast<OmComposite&>(*table.Cell({0, 0, 0}));
  EXPECT_EQ((*stored.Tree().Root()[0][0])->getICUTracker(), tracker);
  EXPECT_EQ(Show(table.Cell({1, 0, 0})), "1.00") << "numbers carry no text";
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), blocks);

  settings.setFastTables(false);
  table.setBackendSettings(settings);
  EXPECT_TRUE(table.getICUTracker() == tracker && !table.fastTable());
  EXPECT_EQ(table.getU8Tracker()->Locale(), "en");
  OmPivotTable unicode(kText, kText, false);
  EXPECT_EQ(unicode.getICUTracker(), nullptr);
  settings.setFastTables(true);
  settings.setUnicode(true);
  unicode.setBackendSettings(settings);
  EXPECT_EQ(unicode.getU8Tracker(), unicode.getICUTracker());
}

TEST_F(PivotTable, AreaFormatsAreOwnedOnePerArea) {
  const auto set = [&](int area, int style) {
    auto* const format = new FormatArea(static_cast<FormatArea::Area>(area));
    format->setFontStyle(style);
    table.setAreaFormat(format);
    return format;
  };
  table.setAreaFormat(nullptr);
  set(3, 1);
  set(3, 2);
  set(9, 3);
  table.setAreaFormat(set(9, 4));  // no lookup finds it, so nothing deletes it
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(3))->getFontStyle(), 2);
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(9)), nullptr);
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(0)), nullptr);
}

TEST_F(PivotTable, DumpsToTheLetter) {
  const OmStringCell corner("corner"), caption("caption");
  AddDimension(table, "D", 0);
  table.SetTableTitle(OmStringCell("T"));
  table.CornerText(&corner);
  table.Caption(&caption);
  table.Footnote(OmFootnote(&kText, nullptr, nullptr), false);
  OmMemoryRegion region(false);
  OmPointerVector bottom(&region);
  bottom.push_back(nullptr);
  bottom.push_back(table.CornerText());
  testing::internal::CaptureStdout();
  table.Print();
  table.PrintCells(&bottom, 0, 0);
  std::ostringstream expected;
  expected << "Starting table T\n"
           << "Subscript: 0, Group: yes, hide: no, hideLabels: no, Text: D\n"
           << "Cells\n  Corner Text: corner\n  Caption: caption\n  Footnotes\n      text\n"
           << "Done with table T\n"
           << static_cast<void*>(&bottom) << "\n    [0] " << static_cast<void*>(nullptr)
           << "\n    [1] " << static_cast<void*>(table.CornerText()) << " - corner\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected.str());
  // The old text is gone before the new one fails.
  table.Caption(nullptr);
  EXPECT_THROW(table.SetTableTitle(BrittleText(0)), std::runtime_error);
  EXPECT_TRUE(table.Caption() == nullptr && table.TableTitle() == nullptr);
}

}  // namespace
