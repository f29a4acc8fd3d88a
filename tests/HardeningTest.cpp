// Every precondition that is trusted otherwise: breaking it ends a hardened process with the
// operation and the condition. The table is held against the checks in the sources.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>

#include "backend/tables/IndexProjector.h"
#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/Chart.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"
#include "tests/support/Tables.h"

namespace {

using Node = OmDimension::Node;
using PartNode = ListTree<OmOutputPart*>::Node;

const OmStringCell kText("text");

// Objects for every row; a row runs in a process of its own.
struct Objects {
  Objects() {
    AddDimension(table, "a", 3);
    AddDimension(table, "b", 3);
    AddDimension(table, "c", 3);
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    table.Cell({0, 0, 0}, kText);
    table.Cell({1, 1, 1}, kText);
    layers = std::make_unique<OmDisplayLayerHeading>(table, false);
    for (int i = 0; i != 4; ++i) {
      v.push_back(i);
    }
    group = dimension.AddNewChild(dimension.Root(), kText, ~0UL, true);
    dimension.AddNewChild(group, kText, 0, false);
    dimension.AddNewChild(dimension.Root(), kText, 1, false);
    group = dimension.Root()[0];
    leaf = dimension.Root()[1];
  }
  PartNode End() { return PartNode(tree, tree.List().end()); }
  PartNode Root() { return PartNode(tree, tree.List().begin()); }
  OmPivotTable& Nameless() {
    table.AddDimension(nameless);
    return table;
  }

  OmMemoryRegion region{false};
  OmVector<int> v{&region};
  OmDimension dimension{OmDimensionNode(kText, ~0UL, true, nullptr), &region};
  OmDimension nameless{OmDimensionNode(nullptr), &region};
  Node group;
  Node leaf;
  Node none;
  OmPivotTable table{kText, kText, false};
  std::unique_ptr<OmDisplayLayerHeading> layers;
  OmOutputTree tree;
};

#if OM_HARDENING

struct Row {
  const char* check;  // "operation: condition"
  void (*broken)(Objects& o);
};

const Row kRows[] = {
    {"OmVector::operator[]: i < size()", [](Objects& o) { (void)o.v[4]; }},
    {"OmVector::back: this->first != this->last",
     [](Objects& o) {
       o.v.clear();
       (void)o.v.back();
     }},
    {"OmVector::NextSize: n < ~(~0UL >> 1)", [](Objects&) { (void)OmVector<int>::NextSize(~0UL); }},
    {"OmVector::insert: this->first <= position && position <= this->last",
     [](Objects& o) { o.v.insert(o.v.end() + 1, 1); }},
    {"OmVector::insert: &value < this->first || this->last <= &value",
     [](Objects& o) { o.v.insert(o.v.begin(), o.v[1]); }},
    {"OmVector::erase: this->first != this->last && this->first <= position",
     [](Objects& o) {
       o.v.clear();
       o.v.erase(o.v.begin());
     }},
    {"OmVector::erase: this->first <= from && from <= to && to <= this->last",
     [](Objects& o) { o.v.erase(o.v.begin() + 2, o.v.begin() + 1); }},
    {"OmVectorTree::Node::operator*: record != nullptr", [](Objects& o) { (void)*o.none; }},
    {"OmVectorTree::Node::Parent: record->Parent() != nullptr",
     [](Objects& o) { (void)o.dimension.Root().Parent(); }},
    {"OmVectorTree::Delete: above->Holds(node.record)",
     [](Objects& o) {
       Node stray(&o.dimension, 1);
       o.dimension.Parent(&o.dimension);
       o.dimension.OmVectorTree::Delete(stray);
     }},
    {"OmVectorTree::moveChild: from->Holds(node.record)",
     [](Objects& o) {
       Node stray(&o.dimension, 1);
       o.dimension.Parent(&o.dimension);
       o.dimension.OmVectorTree::moveChild(stray, nullptr, nullptr);
     }},
    {"OmVectorTree::moveChild: before == nullptr || to->Holds(before->record)",
     [](Objects& o) {
       Node stray(&o.dimension, 1);
       o.dimension.Parent(&o.dimension);
       o.dimension.OmVectorTree::moveChild(o.leaf, &stray, nullptr);
     }},
    {"OmVectorTree::moveChild: !node.record->IsAbove(to)",
     [](Objects& o) {
       Node below = o.group[0];
       o.dimension.OmVectorTree::moveChild(o.group, nullptr, &below);
     }},
    {"OmVectorTree::swapChildren: parentA->Holds(a.record) && parentB->Holds(b.record)",
     [](Objects& o) {
       Node stray(&o.dimension, 1);
       o.dimension.Parent(&o.dimension);
       o.dimension.swapChildren(o.leaf, stray);
     }},
    {"OmVectorTree::swapChildren: !a.record->IsAbove(b.record) && !b.record->IsAbove(a.record)",
     [](Objects& o) {
       Node below = o.group[0];
       o.dimension.swapChildren(below, o.group);
     }},
    {"OmVectorTree::InsertChild: sibling == parent_.End() || record->Holds(sibling.record)",
     [](Objects& o) {
       o.dimension.OmVectorTree::InsertChild(*o.leaf, o.group[0], o.dimension.Root(), true);
     }},
    {"OmVectorTree::InsertChild: above->Holds(nodes[i]->record)",
     [](Objects& o) {
       Node below = o.group[0];
       o.dimension.insertChild(kText, {&o.leaf, &below});
     }},
    {"OmVectorTree::InsertChild: i == 0 || nodes[i - 1]->record < nodes[i]->record",
     [](Objects& o) {
       o.dimension.insertChild(kText, {&o.leaf, &o.group});
     }},
    {"OmIndexProjector::Spread: digits.size() >= positions.size()",
     [](Objects& o) {
       OmIndexProjector projector;
       projector.Set({0, 1});
       projector.Spread(std::vector<unsigned int>{1}, o.v);
     }},
    {"OmIndexProjector::Spread: position < out.size()",
     [](Objects& o) {
       OmIndexProjector projector;
       projector.Set({9});
       projector.Spread(std::vector<unsigned int>{1}, o.v);
     }},
    {"ListTree::Node::operator*: iter != tree->list.end()", [](Objects& o) { (void)*o.End(); }},
    {"ListTree::Node::IsLeaf: iter != tree->list.end()",
     [](Objects& o) { (void)o.End().IsLeaf(); }},
    {"ListTree::Node::Begin: iter != tree->list.end()", [](Objects& o) { (void)o.End().Begin(); }},
    {"ListTree::Node::Child: iter != tree->list.end()", [](Objects& o) { o.End().Child(nullptr); }},
    {"OmOutputTree::Prune: top != List().end()",
     [](Objects& o) {
       PartNode end = o.End();
       o.tree.Prune(end);
     }},
    {"Amputate: *node != nullptr",
     [](Objects& o) { (void)Amputate(o.Root().Child(nullptr).Child(nullptr), &kText, ""); }},
    {"Amputate: title != nullptr", [](Objects& o) { (void)Amputate(o.Root(), nullptr, ""); }},
    {"OmOutputPart::SetTitle: &title_ != title",
     [](Objects& o) { o.table.SetTitle(*o.table.Title()); }},
    {"OmChart::GetEditable: _my->done",
     [](Objects&) { (void)OmChart(kText, "", 1).GetEditable(); }},
    {"OmFootnote -- a text replaced by itself: text == nullptr || text != slot",
     [](Objects&) {
       OmFootnote note(&kText, nullptr, nullptr);
       note.Text(*note.Text());
     }},
    {"OmFootnote::operator==: text != nullptr && other.text != nullptr",
     [](Objects&) {
       const OmFootnote bare(nullptr, nullptr, nullptr);
       (void)(bare == bare);
     }},
    {"OmDimension::getGroupCountsByLevel: child.Level() < counts.size()",
     [](Objects& o) {
       std::vector<unsigned long> counts(1);
       o.dimension.getGroupCountsByLevel(o.dimension.Root(), counts);
     }},
    {"OmDimension::Child: parent_->Text() != nullptr && node.Text() != nullptr",
     [](Objects& o) { o.dimension.Child(o.dimension.Root(), OmDimensionNode(nullptr)); }},
    {"OmDimension::AddNewChild: parent_->Text() != nullptr",
     [](Objects& o) { o.nameless.AddNewChild(o.nameless.Root(), kText, 0, false); }},
    {"OmDimension::insertCategory: sibling != parent_.End() && sibling->Text() != nullptr",
     [](Objects& o) {
       const Node root = o.dimension.Root();
       (void)o.dimension.insertCategory(kText, root.End(), root, true);
     }},
    {"OmDimension::insertChild: (*nodes.front())->Text() != nullptr",
     [](Objects& o) {
       Node bare = o.dimension.OmVectorTree::Child(o.dimension.Root(), OmDimensionNode(nullptr));
       o.dimension.insertChild(kText, {&bare});
     }},
    {"OmCellTextPtr::operator->: text != nullptr",
     [](Objects&) { (void)OmCellTextPtr(nullptr)->Text(); }},
    {"OmCellTextPtr::operator*: text != nullptr",
     [](Objects& o) { (void)(*o.leaf < OmDimensionNode(nullptr)); }},
    {"OmDimHeader::VisibleLevels: include.size() >= visibleLevels.size()",
     [](Objects& o) { (void)OmDimHeader(o.table.Dimension(0), &o.region).VisibleLevels({true}); }},
    {"OmCellStore::Slot: !subscripts.empty()",
     [](Objects& o) {
       OmPointerVector* root = nullptr;
       OmCellStore::Slot(root, {}, &o.region);
     }},
    {"freeCellArray: depth > 0",
     [](Objects& o) { freeCellArray(new (&o.region) OmPointerVector(&o.region), 0); }},
    {"OmPivotTable -- a text replaced by itself: text == nullptr || text != held",
     [](Objects& o) {
       o.table.Caption(&kText);
       o.table.Caption(o.table.Caption());
     }},
    {"OmPivotTable::Cell: cell == nullptr || cell != old",
     [](Objects& o) {
       o.table.Cell({0, 0, 0}, o.table.Cell({0, 0, 0}));
     }},
    {"OmPivotTable::deleteCell: subscripts.size() == _my->_dimensions.size()",
     [](Objects& o) { o.table.deleteCell({0}); }},
    {"OmPivotTable::deleteCell: subscript >= 0",
     [](Objects& o) {
       o.table.deleteCell({0, 0, -1});
     }},
    {"OmPivotTable::setAreaFormat: format != old",
     [](Objects& o) {
       auto* const format = new FormatArea(FormatArea::kArea1);
       o.table.setAreaFormat(format);
       o.table.setAreaFormat(format);
     }},
    {"OmPivotTable::AddDimension: dimension->Name() != nullptr", [](Objects& o) { o.Nameless(); }},
    {"OmPivotTable::Print: _my->tableTitle != nullptr", [](Objects& o) { o.table.Print(); }},
    {"OmPivotTable::PrintCells: v != nullptr",
     [](Objects& o) { o.table.PrintCells(nullptr, 0, 0); }},
    {"OmPivotTable::Footnote: text != nullptr",
     [](Objects& o) { o.table.Footnote(OmFootnote(nullptr, nullptr, nullptr), true); }},
    {"OmPivotTable::Iterator::Iterator: cursor != nullptr",
     [](Objects&) { const OmPivotTable::Iterator none(nullptr); }},
    {"OmPivotTable::Iterator::operator++: table->changes == changes",
     [](Objects& o) {
       auto cell = o.table.FirstCell();
       o.table.Cell({2, 2, 2}, kText);
       ++cell;
     }},
    {"OmDisplayLayerHeading::getDimensionIndex: i >= 0",
     [](Objects& o) { (void)o.layers->getDimensionIndex(-1); }},
    {"OmDisplayLayerHeading::VisibleWidth: d >= 0",
     [](Objects& o) { (void)o.layers->VisibleWidth(7); }},
    {"OmDisplayRowHeading::Data::PlaceOf: r >= 0",
     [](Objects& o) { (void)OmDisplayRowHeading(*o.layers, false, false).Row(-1); }},
    {"OmDisplayRowHeading::Data::ListedPlaceOf: !skipEmpty || static_cast<unsigned long>(r) < "
     "nonEmptyPlaces.size()",
     [](Objects& o) { (void)OmDisplayRowHeading(*o.layers, true, false).Row(9); }},
    {"OmDisplayRowHeading::Data::VisibleLevels: i < levelsPerDim.size()",
     [](Objects& o) { (void)OmDisplayRowHeading(*o.layers, false, false).VisibleWidth(3); }},
    {"OmDisplayRowHeading::Data::DimensionIndex: k >= 0",
     [](Objects& o) { (void)OmDisplayColumnHeading(*o.layers, false).getDimensionIndex(-2); }},
    {"OmDisplayRowHeading::Data::Column: placeCount == 0 || (c >= 0 && static_cast<unsigned "
     "int>(c) < headingWidth)",
     [](Objects& o) { (void)OmDisplayRowHeading(*o.layers, false, false).Column(9); }},
    {"CategoryDisplay: path != nullptr && path->size() != 0",
     [](Objects&) { (void)CategoryDisplay(nullptr, 1, false); }},
    {"Category: path != nullptr && path->size() != 0", [](Objects&) { (void)Category(nullptr); }},
    {"OmCellText::getMeta: hasMeta()", [](Objects&) { (void)kText.getMeta(); }},
    {"OmMemoryRegion::Release: (tag & kReleased) == 0",
     [](Objects& o) {
       void* const block = o.region.Allocate(16);
       OmMemoryRegion::Release(block);
       OmMemoryRegion::Release(block);
     }},
};

// How checks begin that no caller can break: they stand behind another check of the table, guard
// memory that was overwritten, or take more layers than a table can have in a test.
const char* const kBehindOthers[] = {
    "OmPivotTable::FindDimension: dimension->Name()",
    "OmPivotTable::setBackendSettings: dimension->Name()",
    "OmCellChars::OmCellChars: trailing",
    "OmMemoryRegion::OmMemoryRegion: OwnerIn",
    "OmMemoryRegion::Release: sizeClass",
    "OmDisplayLayerHeading::FindNodes: place <=",
};

TEST(Hardening, TableHoldsEveryCheckOfTheSources) {
  std::set<std::string> listed;
  for (const Row& row : kRows) {
    listed.insert(row.check);
  }
  const std::filesystem::path root = OM_SOURCE_DIR;
  const std::regex call(R"re(OM_HARDEN\(([^;]*?),\s*"([^"]*)"\);)re");
  std::set<std::string> found;
  for (const char* folder : {"backend", "platform"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      if (!entry.is_regular_file()) {
        continue;
      }
      std::ifstream file(entry.path());
      const std::string text((std::istreambuf_iterator<char>(file)), {});
      for (auto i = std::sregex_iterator(text.begin(), text.end(), call);
           i != std::sregex_iterator(); ++i) {
        found.insert((*i)[2].str() + ": " +
                     std::regex_replace((*i)[1].str(), std::regex("\\s+"), " "));
      }
    }
  }
  EXPECT_GT(found.size(), 50U);
  for (const std::string& check : found) {
    const bool behind = std::any_of(std::begin(kBehindOthers), std::end(kBehindOthers),
                                    [&](const char* start) { return check.starts_with(start); });
    EXPECT_NE(listed.contains(check), behind) << check;
  }
  for (const std::string& check : listed) {
    // The cursor of a list tree passes its operation on.
    EXPECT_TRUE(found.contains(check) || check.starts_with("ListTree::")) << check;
  }
}

TEST(HardeningDeathTest, EveryBrokenConditionEndsTheProcess) {
  for (const Row& row : kRows) {
    const std::string check = row.check;
    const std::string::size_type colon = check.find(": ");
    const std::string message =
        check.substr(0, colon) + ": Assertion `" + check.substr(colon + 2) + "' failed";
    const std::regex special(R"re([\[\](){}.*+?|^$\\])re");
    EXPECT_DEATH(
        {
          Objects objects;
          row.broken(objects);
        },
        std::regex_replace(message, special, "\\$&"));
  }
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
  o.table.deleteCell({9, 9, 9});
  EXPECT_NE(o.table.Cell({0, 0, 0}), nullptr);
}

#endif

}  // namespace
