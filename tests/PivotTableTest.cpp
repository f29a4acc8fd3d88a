// The pivot table: titles, dimensions and axes, the cell store and its iterators, footnotes,
// trackers, area formats and the dump.

#include "backend/tables/om/PivotTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>
#include <thread>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/PointerVector.h"
#include "platform/dataio/BackendSettings.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/StoreModel.h"

namespace {

using Subscripts = std::vector<int>;
using Table = OmPivotTable;

const OmStringCell kText("text");
const BrittleText kBrittle(1);

class PivotTable : public testing::Test {
 protected:
  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

TEST_F(PivotTable, ReportsBrokenPreconditionsAndCountsEveryCell) {
  AddDimension(table, "a", 2);
  AddDimension(table, "b", 2);
  OmPivotTable empty(kText, kText, false);
  const Subscripts none, place{0, 0}, negative{0, -1};
  const auto expect = [](const std::string& message, const std::function<void()>& call) {
    EXPECT_EQ(Message(call), "OmPivotTable::" + message);
  };
  expect("Size() -- which < 0, value 1 == -1, value 2 == 0", [&] { (void)table.Size(-1); });
  expect("Dimension() -- which < 0, value 1 == -7, value 2 == 0",
         [&] { (void)table.Dimension(-7); });
  expect("Dimension() -- which < NDimensions(), value 1 == 2, value 2 == 2",
         [&] { (void)std::as_const(table).Dimension(2); });
  expect("Cell() -- nind != _my->_dimensions.size(), value 1 == 0, value 2 == 0",
         [&] { empty.Cell(none, kText); });
  expect("Cell() -- subscript < 0, value 1 == 1.84467e+19, value 2 == 0",
         [&] { (void)table.Cell(negative); });
  expect("CopyDimensions() -- _my->_dimensions.size() != 0, value 1 == 2, value 2 == 0",
         [&] { table.CopyDimensions(empty); });
  Subscripts one{1}, behind = negative;
  expect("NextCell() -- subscripts.size() == NDimensions(), value 1 == 1, value 2 == 2",
         [&] { (void)table.NextCell(one); });
  expect("NextCell() -- subscript >= 0, value 1 == 0, value 2 == 0",
         [&] { (void)table.NextCell(behind); });
  EXPECT_EQ(empty.Cell({}), nullptr);
  EXPECT_THROW(empty.Cell(place, kText), OMSException);
  empty.deleteCell(none);
  EXPECT_THROW((void)table.Cell(none), OMSException);

  BackendSettings settings;
  settings.setMaxCells(2);
  table.setBackendSettings(settings);
  EXPECT_THROW(table.Cell(negative, kText), OMSException);
  EXPECT_TRUE(table.Cell(place, nullptr) && table.Cell(place, kText) && !table.IsScratched());
  EXPECT_FALSE(table.Cell(negative, kText)) << "the limit comes before any other check";
  EXPECT_TRUE(table.IsScratched());
  EXPECT_EQ(table.getNumCells(), 4);
  EXPECT_EQ(Cells(table), "0,0=text");
  behind = {1 << 30, 0};
  EXPECT_EQ(table.NextCell(behind), nullptr);
  behind = {std::numeric_limits<int>::max(), std::numeric_limits<int>::max()};
  EXPECT_TRUE(table.NextCell(behind) == nullptr && behind.empty());
  EXPECT_TRUE(empty.NextCell(behind) == nullptr && behind.empty());
  settings.setMaxCells(9);
  table.setBackendSettings(settings);
  for (const Subscripts& wrong : {one, Subscripts{0, 0, 0}}) {
    EXPECT_THROW(table.Cell(wrong, kText), OMSException);
  }
  EXPECT_EQ(Cells(table), "0,0=text");
}

TEST_F(PivotTable, EndTableDropsPlaceholdersOnlyToMendAMismatch) {
  using Axis = std::vector<short>;
  const auto rowsAfter = [&](const Axis& rows, const Axis& columns, const Axis& layers) {
    OmPivotTable ended(kText, kText, false);
    for (const char* name : {"a", "b", "c"}) {
      AddDimension(ended, name, 1);
    }
    std::copy(rows.begin(), rows.end(), std::back_inserter(ended.Rows()));
    std::copy(columns.begin(), columns.end(), std::back_inserter(ended.Columns()));
    std::copy(layers.begin(), layers.end(), std::back_inserter(ended.Layers()));
    ended.EndTable();
    return ListOf(ended.Rows());
  };
  EXPECT_EQ(rowsAfter({0, -1}, {1}, {2}), "0,");
  EXPECT_EQ(rowsAfter({0, 0}, {1}, {}), "0,0,");
  EXPECT_EQ(rowsAfter({0, -1}, {1}, {}), "0,-1,");
  EXPECT_EQ(rowsAfter({-1, 0, -1, 1, 2}, {-1}, {-1}), "0,1,2,");
  EXPECT_THROW(rowsAfter({-1, 0}, {}, {}), OMSException);
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
  EXPECT_EQ(table.FindDimension(OmStringCell("c")), -1);

  OmPivotTable other(kText, kText, false);
  b->Root()->Subscript(9);
  other.CopyDimensions(table);
  EXPECT_EQ(other.SizeVector(), (Subscripts{2, 3, 4}));
  EXPECT_EQ(other.Dimension(1)->Root()->Subscript(), 9U) << "roots are not renumbered";
  EXPECT_EQ(other.AddDimension(*b)->Root()->Subscript(), 3U);
  EXPECT_EQ(Cells(other), "");
}

TEST(PointerVector, GrowsAsIfAppendedOneByOne) {
  OmMemoryRegion region(false);
  const auto room = [&](std::initializer_list<unsigned long> slots) {
    OmPointerVector v(&region);
    for (const unsigned long slot : slots) {
      v.GrowTo(slot);
    }
    EXPECT_EQ(FindNonZero(v, 0), v.size());
    v.Put(v.size() - 1, &region);
    EXPECT_EQ(v.back(), &region);
    return v.capacity();
  };
  EXPECT_THROW(OmPointerVector(&region).reserve(~0UL / 2), std::bad_alloc);
  EXPECT_EQ(room({0}), 4U);
  EXPECT_EQ(room({0, 5}), 8U);
  EXPECT_EQ(room({100, 3}), 101U);
  EXPECT_EQ(room({100, 101, 256}), 512U);
  EXPECT_EQ(room({100, 101, 256, 1026}), 1027U);
}

TEST_F(PivotTable, CellsHandOnTheirMetadataAndFreeTheirPathButTheRoot) {
  OmMemoryRegion* const region = AddDimension(table, "a", 1)->Region();
  AddDimension(table, "b", 1);
  AddDimension(table, "c", 1);
  const Subscripts place{2, 2, 1};
  table.Cell(place, nullptr);
  table.deleteCell(place);
  const unsigned long blocks = region->LiveBlocks();
  table.Cell(place, OmNumber(0));
  EXPECT_EQ(region->LiveBlocks(), blocks + 5) << "two vectors with an array each, and the cell";
  table.deleteCell(place);
  table.deleteCell(place);
  EXPECT_EQ(region->LiveBlocks(), blocks);
  // Fewer cells than wait for their end, and more.
  for (const int n : {1, 8, 300}) {
    for (int i = 0; i < n; ++i) {
      table.Cell({i % 3, i, 1}, OmNumber(i));
      if (i % 2 == 1) {
        table.Cell({i % 3, i, 1})->setMeta(OmCellMetaData());
      }
    }
    for (int i = 0; i < n; ++i) {
      table.deleteCell({i % 3, i, 1});
    }
    EXPECT_EQ(region->LiveBlocks(), blocks);
  }

  OmStringCell old("old");
  old.setMeta(OmCellMetaData());
  table.Cell(place, old);
  table.Cell(place, kText);
  EXPECT_EQ(Show(table.Cell(place)), "text{|-1||");
  EXPECT_THROW(table.Cell(place, BrittleText(0)), std::runtime_error);
  EXPECT_EQ(table.Cell(place), nullptr);
  table.Cell(place, kText);
  EXPECT_EQ(Show(table.Cell(place)), "text");

  // What a failed copy leaves can be deleted, so that a walk does not end there.
  OmPivotTable walked(kText, kText, false);
  AddDimension(walked, "a", 1);
  AddDimension(walked, "b", 2);
  EXPECT_THROW(walked.Cell({0, 0}, BrittleText(0)), std::runtime_error);
  walked.Cell({0, 1}, kText);
  walked.deleteCell({0, 0});
  EXPECT_EQ(walked.FirstCell().Index(), (Subscripts{0, 1}));
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
  EXPECT_EQ(b.Index(), Subscripts{1}) << "where it was last";
}

// On two threads, whose tables share nothing but the default heap.
TEST_F(PivotTable, StoresAgreeWithAMap) {
  const unsigned long blocks = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  std::thread other([] { Play<StoreModel>(100, 300); });
  Play<StoreModel>(100, 300);
  other.join();
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), blocks);
}

TEST_F(PivotTable, FootnotesAgreeWithAListAndSurviveAFailedCopy) {
  Play<FootnoteModel>(20, 200);
  EXPECT_THROW(table.Footnote(OmFootnote(&kBrittle, nullptr, nullptr), false), std::runtime_error);
  EXPECT_EQ(table.Footnote(OmFootnote(&kText, &kText, nullptr), false), 1) << "the entry stays";
  // An entry of the list may be handed back, while the list grows.
  const OmVector<OmFootnote>& notes = std::as_const(table).Footnotes();
  for (int i = 2; i < 20; ++i) {
    EXPECT_EQ(table.Footnote(notes[1], true), i);
  }
  EXPECT_EQ(table.Footnote(notes[1], false), 1);
  EXPECT_EQ(Show(notes[1]) + Show(notes[19]), "text|text|2|text|text|1|");
}

TEST_F(PivotTable, FootnotesAreFoundAmongMany) {
  for (const bool again : {false, true}) {
    for (int i = 0; i < 20000; ++i) {
      const OmStringCell text(std::to_string(i * 7L % 20000));
      ASSERT_EQ(table.Footnote(OmFootnote(&text, nullptr, nullptr), false), i);
    }
    EXPECT_EQ(std::as_const(table).Footnotes()[9].UseCount(), again ? 2 : 1);
  }
}

// Texts with a tracker show with a "~".
TEST_F(PivotTable, KeepsTextsInItsRegionAndTracksAllButTheStatedOnes) {
  const OmFootnote note(&kText, &kText, nullptr);
  OmComposite composite;
  *composite.Tree().Root() = kText.Clone();
  OmCellText* const part = kText.Clone();
  composite.Tree().Child(composite.Tree().Child(composite.Tree().Root(), nullptr), part);
  const unsigned long blocks = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  const auto fill = [&] {
    OmDimension* const dimension = table.AddDimension(kText);
    const OmDimension::Node root = dimension->Root();
    dimension->insertCategory(kText, dimension->Child(root, kText, 0, false), root, true);
    table.CornerText(&kText);
    table.Caption(&kText);
    table.SetTableTitle(kText);
    table.Footnote(note, true);
  };
  const auto shown = [&](int d) {
    const auto root = table.Dimension(d)->Root();
    return Fields(Show(table.Title()), Show(table.TemplateName()), Show(table.TableTitle()),
                  Show(table.CornerText()), Show(table.Caption()), Show(root->Text()),
                  Show(root[0]->Text()), Show(table.Footnotes()));
  };
  fill();
  table.Cell({0}, kText);
  BackendSettings settings;
  settings.setFastTables(true);
  settings.setUnicode(false);
  settings.setLocale("en");
  table.setBackendSettings(settings);
  EXPECT_EQ(shown(0), "title~|Template~|text~|text|text|text~|text~|text~|text~|1| |");
  fill();
  EXPECT_EQ(shown(1),
            "title~|Template~|text~|text~|text~|text~|text~|text~|text~|1| text~|text~|1| |");
  table.Cell({1, 0}, composite);
  const auto& stored = dynamic_cast<OmComposite&>(*table.Cell({1, 0}));
  icuTracker* const tracker = table.getICUTracker();
  EXPECT_EQ((*stored.Tree().Root())->getICUTracker(), tracker);
  EXPECT_EQ((*stored.Tree().Root()[0][0])->getICUTracker(), tracker);
  EXPECT_EQ(Show(table.Cell({0, 0})), "text");
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), blocks);

  settings.setFastTables(false);
  table.setBackendSettings(settings);
  EXPECT_TRUE(table.getICUTracker() == tracker && !table.fastTable());
  EXPECT_TRUE(table.getU8Tracker()->Unicode() && !tracker->Unicode());
  EXPECT_EQ(table.getU8Tracker()->Locale(), "en");
  settings.setFastTables(true);
  settings.setUnicode(true);
  OmPivotTable unicode(kText, kText, false);
  // What a failure left without a text has nothing to tie.
  EXPECT_THROW(unicode.SetTitle(BrittleText(0)), std::runtime_error);
  EXPECT_THROW(unicode.Footnote(OmFootnote(&kBrittle, nullptr, nullptr), false),
               std::runtime_error);
  OmDimension& bare = *unicode.AddDimension(kText);
  bare.OmVectorTree::Child(bare.Root(), OmDimensionNode(nullptr));
  unicode.setBackendSettings(settings);
  const OmStringCellUTF8 utf8("utf8");
  const OmVariable variable("v", "");
  const OmNumDataValue numValue(1, "n");
  const OmStringDataValue stringValue("s", "");
  for (const OmCellText* const title :
       std::initializer_list<const OmCellText*>{&utf8, &variable, &numValue, &stringValue}) {
    unicode.SetTableTitle(*title);
    EXPECT_EQ(Show(unicode.TableTitle()), title->Text() + "~");
  }
  EXPECT_EQ(unicode.getU8Tracker(), unicode.getICUTracker());
}

TEST_F(PivotTable, TracksTextsAtAnyDepth) {
  constexpr int kLevels = 300000;
  OmDimension& dimension = *AddDimension(table, "d", 0);
  OmDimension::Node group = dimension.Root();
  OmComposite composite;
  auto record = composite.Tree().Root();
  for (int i = 0; i != kLevels; ++i) {
    group = dimension.AddNewChild(group, kText, ~0UL, true);
    record = composite.Tree().Child(record, i % 2 == 0 ? new OmStringCell("c") : nullptr);
  }
  composite.Tree().Child(record, new OmStringCell("last"));
  BackendSettings settings;
  settings.setFastTables(true);
  table.setBackendSettings(settings);
  EXPECT_EQ(group->Text()->getICUTracker(), table.getICUTracker());
  table.setHelper(composite);
  EXPECT_EQ((*record[0])->getICUTracker(), table.getICUTracker());
}

TEST_F(PivotTable, AreaFormatsAreOwnedOnePerArea) {
  const auto set = [&](int area, int style) {
    auto* const format = new FormatArea(static_cast<FormatArea::Area>(area));
    format->setFontStyle(style);
    table.setAreaFormat(format);
    return format;
  };
  set(3, 1);
  set(3, 2);
  set(9, 3);
  table.setAreaFormat(set(9, 4));  // no lookup finds it, so nothing deletes it
  table.setAreaFormat(nullptr);
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(3))->getFontStyle(), 2);
  EXPECT_EQ(table.getAreaFormat(static_cast<FormatArea::Area>(9)), nullptr);
}

TEST_F(PivotTable, DumpsToTheLetter) {
  const OmStringCell corner("corner"), caption("caption");
  AddDimension(table, "D", 0);
  table.SetTableTitle(OmStringCell("T"));
  table.CornerText(&corner);
  table.Caption(&caption);
  EXPECT_THROW(table.Footnote(OmFootnote(&kBrittle, nullptr, nullptr), false), std::runtime_error);
  table.Footnote(OmFootnote(&kText, nullptr, nullptr), false);
  OmMemoryRegion region(false);
  OmPointerVector bottom(&region);
  bottom.push_back(nullptr);
  bottom.push_back(table.CornerText());
  const OddStream odd;
  testing::internal::CaptureStdout();
  table.Print();
  table.PrintCells(&bottom, 0, 0);
  table.PrintCells(nullptr, 2, 7);
  std::ostringstream expected;
  expected << "Starting table T\n"
           << "Subscript: 0, Group: yes, hide: no, hideLabels: no, Text: D\n"
           << "Cells\n  Corner Text: corner\n  Caption: caption\n  Footnotes\n      \n      text\n"
           << "Done with table T\n"
           << static_cast<void*>(&bottom) << "\n    [0] " << static_cast<void*>(nullptr)
           << "\n    [1] " << bottom[1] << " - corner\n    [7]     [7] "
           << static_cast<void*>(nullptr) << "\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected.str());
  table.Caption(nullptr);
  EXPECT_EQ(table.Caption(), nullptr);
}

}  // namespace
