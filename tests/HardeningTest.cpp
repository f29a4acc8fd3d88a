// Every precondition that is trusted otherwise: breaking it ends a hardened process with the
// operation and the condition. What the calls break is held against the checks in the sources.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"
#include "tests/exhaustion/Rows.h"
#include "tests/support/Tables.h"

namespace {

const OmStringCell kText("text");
const OmDimensionNode kBare(nullptr);

// What the calls are made on; each is made in a process of its own.
struct Objects {
  Objects() {
    for (const char* name : {"a", "b", "c"}) {
      AddDimension(table, name, 3);
    }
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    table.Cell({0, 0, 0}, kText);
    table.Cell({1, 1, 1}, kText);
    layers = std::make_unique<OmDisplayLayerHeading>(table, false);
    v.resize(4, 0);
    dimension.AddNewChild(dimension.AddNewChild(dimension.Root(), kText, ~0UL, true), kText, 0,
                          false);
    dimension.AddNewChild(dimension.Root(), kText, 1, false);
    group = dimension.Root()[0];
    below = group[0];
    leaf = dimension.Root()[1];
  }
  // The dimension as a child of itself, which holds no such child.
  OmDimension& Looped() {
    dimension.Parent(&dimension);
    return dimension;
  }
  // A record whose parent moved when the record before it was deleted, and that nobody relocated.
  OmDimension::Node& Moved() {
    dimension.AddNewChild(dimension.AddNewChild(leaf, kText, 2, false), kText, 3, false);
    dimension.Delete(group);
    return below = dimension.Root()[0][0];
  }
  // An item in two entries.
  OmOutputTree::Node Twice() {
    auto* const item = new OmHeading(kText);
    root.Child(item);
    return root.Child(item);
  }
  OmOutputTree::Node& Pruned() {
    end = root.Child(nullptr);
    tree.Prune(end);
    return end;
  }
  OmDisplayRowHeading Rows(bool skipEmpty) { return {*layers, skipEmpty, false}; }

  OmMemoryRegion region{false};
  OmVector<int> v{&region};
  OmIndexProjector projector;
  std::vector<unsigned long> counts{0};
  OmDimension dimension{OmDimensionNode(kText, ~0UL, true, nullptr), &region},
      nameless{kBare, &region};
  OmDimension::Node group, below, leaf, none, stray{&dimension, 1};
  OmPivotTable table{kText, kText, false};
  OmPivotTable::Iterator cell;
  std::unique_ptr<OmDisplayLayerHeading> layers;
  OmPointerVector* store = new (&region) OmPointerVector(&region);
  OmFootnote note{&kText, nullptr, nullptr}, bareNote{nullptr, nullptr, nullptr};
  OmOutputTree tree;
  OmOutputTree::Node root{tree, tree.List().begin()}, end{tree, tree.List().end()};
};

#if OM_HARDENING

struct Row {
  const char* call;
  void (*broken)(Objects& o);
};

// clang-format off
#define BROKEN(call) {#call, []([[maybe_unused]] Objects& o) { static_cast<void>(call); }}
// clang-format on

const Row kRows[] = {
    EACH(BROKEN, o.v[4], (o.v.clear(), o.v.back()), OmVector<int>::NextSize(~0UL),
         o.v.insert(o.v.end() + 1, 1), o.v.insert(o.v.begin(), o.v[1]),
         (o.v.resize(0, 0), o.v.erase(o.v.begin())), o.v.erase(o.v.begin() + 2, o.v.begin() + 1)),
    EACH(BROKEN, *o.none, o.dimension.Root().Parent(), o.Looped().OmVectorTree::Delete(o.stray),
         o.Looped().OmVectorTree::moveChild(o.stray, nullptr, nullptr),
         o.Looped().OmVectorTree::moveChild(o.leaf, &o.stray, nullptr),
         o.dimension.OmVectorTree::moveChild(o.group, nullptr, &o.below),
         o.Looped().swapChildren(o.leaf, o.stray), o.dimension.swapChildren(o.below, o.group),
         o.dimension.OmVectorTree::InsertChild(*o.leaf, o.below, o.dimension.Root(), true),
         o.dimension.insertChild(kText, {&o.leaf, &o.below}),
         o.dimension.insertChild(kText, {&o.leaf, &o.group})),
    EACH(BROKEN, o.dimension.OmVectorTree::Delete(o.Moved()),
         o.dimension.OmVectorTree::moveChild(o.Moved(), nullptr, nullptr),
         o.dimension.swapChildren(o.Moved(), o.leaf), o.dimension.insertChild(kText, {&o.Moved()}),
         o.dimension.OmVectorTree::removeChild(o.Moved())),
    EACH(BROKEN, (o.projector.Set({0, 1}), o.projector.Spread(std::vector<int>{1}, o.v)),
         (o.projector.Set({9}), o.projector.Spread(std::vector<int>{1}, o.v))),
    EACH(BROKEN, (o.Twice(), o.tree.Prune(o.root)), (o.end = o.Twice(), o.tree.Prune(o.end)),
         (o.root.Child(&o.table), o.tree.Prune(o.root)), o.tree.Erase(o.Pruned())),
    EACH(BROKEN, *o.Pruned(), o.end.IsLeaf(), o.end.Begin(), o.end.Child(nullptr),
         o.tree.Prune(o.end), Amputate(o.root.Child(nullptr).Child(nullptr), &kText, ""),
         Amputate(o.root, nullptr, ""), o.table.SetTitle(*o.table.Title()),
         OmChart(kText, "", 1).GetEditable(), o.note.Text(*o.note.Text()),
         o.bareNote == o.bareNote),
    EACH(BROKEN, o.dimension.getGroupCountsByLevel(o.dimension.Root(), o.counts),
         o.dimension.Child(o.dimension.Root(), kBare),
         o.nameless.AddNewChild(o.nameless.Root(), kText, 0, false),
         o.dimension.insertCategory(kText, o.dimension.Root().End(), o.dimension.Root(), true),
         (o.leaf = o.dimension.OmVectorTree::Child(o.dimension.Root(), kBare),
          o.dimension.insertChild(kText, {&o.leaf})),
         OmCellTextPtr(nullptr)->Text(), *o.leaf < kBare,
         OmDimHeader(o.table.Dimension(0), &o.region).VisibleLevels({true})),
    EACH(BROKEN, freeCellArray(new (&o.region) OmPointerVector(&o.region), 0), (*o.store)[0],
         o.store->Put(0, nullptr), o.store->Exchange(0, nullptr),
         (o.table.Caption(&kText), o.table.Caption(o.table.Caption())),
         o.table.Cell({0, 0, 0}, o.table.Cell({0, 0, 0})), o.table.deleteCell({0}),
         o.table.deleteCell({0, 0, -1}),
         (o.table.setAreaFormat(new FormatArea(FormatArea::kArea1)),
          o.table.setAreaFormat(o.table.getAreaFormat(FormatArea::kArea1))),
         o.table.AddDimension(o.nameless), o.table.Print(), o.table.PrintCells(nullptr, 0, 0),
         o.table.Footnote(o.bareNote, true), OmPivotTable::Iterator(nullptr),
         OmPivotTable::ConstIterator(nullptr),
         (o.cell = o.table.FirstCell(), o.table.Cell({2, 2, 2}, kText), ++o.cell),
         (o.cell = o.table.FirstCell(), o.table.deleteCell({0, 0, 0}), o.cell.Cell()),
         (o.cell = o.table.FirstCell(), o.table.deleteCell({0, 0, 0}), o.cell.Index())),
    EACH(BROKEN, o.layers->getDimensionIndex(-1), o.layers->VisibleWidth(7), o.Rows(false).Row(-1),
         o.Rows(true).Row(9), o.Rows(false).VisibleWidth(3), o.Rows(false).Column(9),
         OmDisplayColumnHeading(*o.layers, false).getDimensionIndex(-2),
         CategoryDisplay(nullptr, 1, false), Category(nullptr),
         (o.table.Dimension(0)->AddNewChild(o.table.Dimension(0)->Root(), kText, 3, false),
          o.Rows(false)),
         (o.table.Dimension(0)->Root()[1]->Subscript(9), o.Rows(false).Row(1))),
    EACH(BROKEN, kText.getMeta()),
};

// How checks begin that no caller can break: they stand behind another check of the table, or
// guard memory that was overwritten.
const char* const kBehindOthers[] = {
    "OmPivotTable::FindDimension: dimension->Name()",
    "OmPivotTable::setBackendSettings: dimension->Name()",
    "OmCellChars::OmCellChars: trailing",
    "OmCellStore::Verify: root->begin() <=",
    "OmCellStore::Verify: (*root)[i]",
    "OmCellStore::Verify: child->Region()",
};

// "operation: condition" of every check in the sources.
std::set<std::string> Checks() {
  const std::regex call(R"re(OM_HARDEN\(([^;]*?),\s*"([^"]*)"\);)re");
  std::set<std::string> checks;
  for (const char* folder : {"/backend", "/platform"}) {
    using Entries = std::filesystem::recursive_directory_iterator;
    for (const auto& entry : Entries(std::string(OM_SOURCE_DIR) + folder)) {
      std::ifstream file(entry.is_regular_file() ? entry.path() : "/dev/null");
      const std::string text((std::istreambuf_iterator<char>(file)), {});
      for (std::sregex_iterator i(text.begin(), text.end(), call); i != std::sregex_iterator();
           ++i) {
        checks.insert(std::regex_replace(i->str(2) + ": " + i->str(1), std::regex("\\s+"), " "));
      }
    }
  }
  return checks;
}

// Takes what a process says that a check has ended, as "operation: condition".
struct LastWords {
  using is_gtest_matcher = void;
  bool MatchAndExplain(const std::string& said, std::ostream*) const {
    std::smatch found;
    const bool ended =
        std::regex_search(said, found, std::regex(R"(:\d+: (.*): Assertion `(.*)' failed)"));
    check = ended ? found.str(1) + ": " + found.str(2) : "";
    return ended;
  }
  void DescribeTo(std::ostream* out) const { *out << "the words of a check"; }
  void DescribeNegationTo(std::ostream*) const {}

  std::string& check;
};

TEST(HardeningDeathTest, EveryCheckOfTheSourcesEndsTheProcess) {
  std::set<std::string> left = Checks();
  std::set<std::string> broken;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.call);
    std::string check;
    EXPECT_DEATH(
        {
          Objects objects;
          row.broken(objects);
        },
        LastWords{check});
    EXPECT_TRUE(broken.insert(check).second) << check << " is broken already";
    // The cursor of a list tree passes its operation on.
    EXPECT_TRUE(left.erase(check) == 1 || check.starts_with("ListTree::")) << check;
  }
  for (const char* const start : kBehindOthers) {
    const auto found = left.lower_bound(start);
    ASSERT_TRUE(found != left.end() && found->starts_with(start)) << start;
    left.erase(found);
  }
  EXPECT_EQ(left, std::set<std::string>());
}

#else

TEST(Hardening, OffAWrongNumberReachesNoForeignMemory) {
  Objects o;
  EXPECT_EQ(o.layers->getDimensionIndex(-1), -1);
  EXPECT_EQ(o.layers->VisibleWidth(7), 0);
  const OmDisplayRowHeading rows(*o.layers, true, false);
  EXPECT_EQ(rows.getDimensionIndex(-1), -1);
  EXPECT_EQ(rows.VisibleWidth(3), 0);
  EXPECT_EQ(rows.Column(99), std::deque<OmDisplayRowHeading::ConstNode*>(rows.NRows()));
  o.table.deleteCell({0});
  EXPECT_NE(o.table.Cell({0, 0, 0}), nullptr);
}

#endif

}  // namespace
