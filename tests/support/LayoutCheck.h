// The three headings of random tables, with every flag and random hiding, held to a second reading
// of the table's layout.

#ifndef TESTS_SUPPORT_LAYOUTCHECK_H
#define TESTS_SUPPORT_LAYOUTCHECK_H

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "backend/tables/MultiBase.h"
#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "tests/support/Choices.h"
#include "tests/support/Tables.h"

namespace layout_model {

using ConstNode = OmDisplayLayerHeading::ConstNode;
using Node = OmVectorTree<OmDimensionNode>::Node;
using Dims = std::vector<unsigned long>;
using Payloads = std::vector<const OmDimensionNode*>;
using Place = unsigned long long;
using Places = std::vector<Place>;
using Subscripts = std::vector<int>;

constexpr unsigned long kNone = ~0UL;

template <typename Nodes>
Payloads PayloadsOf(const Nodes& nodes) {
  Payloads payloads;
  for (const ConstNode* const node : nodes) {
    payloads.push_back(node != nullptr ? &**node : nullptr);
  }
  return payloads;
}

// The layout straight from the table's trees and cells: recursive, cell by cell, and without any of
// the headings' own parts.
class LayoutModel {
 public:
  explicit LayoutModel(OmPivotTable& table_) : table(table_), leaves(table_.NDimensions()) {
    for (unsigned long d = 0; d != leaves.size(); ++d) {
      sizes.push_back(static_cast<Place>(table.Size(static_cast<int>(d))));
      if (sizes[d] != 0) {
        Collect(d, {}, table.Dimension(static_cast<int>(d))->Root());
      }
    }
  }

  static Dims Reversed(const PuppetVector<short>& axis) {
    Dims dims(axis.begin(), axis.end());
    std::reverse(dims.begin(), dims.end());
    return dims;
  }

  Places AllPlaces(const Dims& dims) const {
    Place count = 1;
    for (const unsigned long d : dims) {
      count *= sizes[d];
    }
    Places places(count);
    std::iota(places.begin(), places.end(), Place{0});
    return places;
  }

  // The path to the leaf of each dimension at a place, root first; empty where none stands.
  std::vector<Payloads> Leaves(const Dims& dims, Place place) const {
    std::vector<Payloads> result(dims.size());
    for (unsigned long k = dims.size(); k-- != 0;) {
      const Place digit = k == 0 ? place : place % sizes[dims[k]];
      place = k == 0 ? 0 : place / sizes[dims[k]];
      if (digit < leaves[dims[k]].size()) {
        result[k] = leaves[dims[k]][digit];
      }
    }
    return result;
  }

  // Returns whether a leaf of every dimension stands at the place.
  bool Fill(const Dims& dims, Place place, Subscripts& subscripts) const {
    subscripts.resize(leaves.size(), 0);
    unsigned long k = 0;
    unsigned long found = 0;
    for (const Payloads& path : Leaves(dims, place)) {
      const unsigned long d = dims[k++];
      subscripts[d] = path.empty() ? subscripts[d] : Subscript(path);
      found += path.empty() ? 0 : 1;
    }
    return found == k;
  }

  Places NonEmpty(const Dims& head, const Dims& others, Subscripts current) const {
    std::set<Place> places;
    for (auto cell = table.FirstCell(); Sparse() && cell.Cell() != nullptr; ++cell) {
      Place place = 0;
      bool known = true;
      for (const unsigned long d : head) {
        // Of the leaves that carry the subscript the last.
        const auto leaf =
            std::find_if(leaves[d].rbegin(), leaves[d].rend(),
                         [&](const Payloads& path) { return Subscript(path) == cell.Index()[d]; });
        known = known && leaf != leaves[d].rend();
        place = place * sizes[d] + static_cast<Place>(leaves[d].rend() - leaf - 1);
      }
      if (known && Fill(head, place, current)) {
        places.insert(place);
      }
    }
    for (const Place place : Sparse() ? Places() : AllPlaces(head)) {
      if (Fill(head, place, current) && AnyCell(others, 0, current)) {
        places.insert(place);
      }
    }
    return {places.begin(), places.end()};
  }

  bool Sparse() const {
    Place total = 1;
    for (const Place size : sizes) {
      total *= size;
    }
    Place stored = 0;
    for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
      ++stored;
    }
    return stored < (total + 50) / 100;
  }

  // The visible nodes above the label-hiding group nearest the root.
  static Payloads Visible(const Payloads& path, bool corner) {
    Payloads visible;
    for (const OmDimensionNode* const node : path) {
      if (node->IsGroup() && node->HideLabels()) {
        break;
      }
      if (!node->Hide() && !(corner && node == path[0])) {
        visible.push_back(node);
      }
    }
    return visible;
  }

  // The width of each dimension over the leaves of some places, or over all where there are none.
  std::vector<unsigned long> Widths(const Dims& dims, const Places& places, bool corner) const {
    std::vector<unsigned long> widths(dims.size(), 0);
    for (unsigned long k = 0; k != dims.size(); ++k) {
      std::vector<Payloads> shown;
      for (const Place place : places) {
        shown.push_back(Leaves(dims, place)[k]);
      }
      const std::vector<Payloads>& all = leaves[dims[k]];
      for (const Payloads& path : places.empty() ? all : shown) {
        widths[k] = std::max(widths[k], Visible(path, false).size());
      }
      if (corner && widths[k] != 0 && !all.empty() && !all[0][0]->Hide()) {
        --widths[k];
      }
    }
    return widths;
  }

  OmPivotTable& table;
  std::vector<std::vector<Payloads>> leaves;  // by dimension, in display order
  Places sizes;                               // by dimension

 private:
  static int Subscript(const Payloads& path) { return static_cast<int>(path.back()->Subscript()); }

  void Collect(unsigned long d, Payloads path, OmVectorTree<OmDimensionNode>::ConstNode node) {
    path.push_back(&*node);
    if (!node->IsGroup()) {
      leaves[d].push_back(path);
    }
    for (auto child = node.Begin(); node->IsGroup() && child != node.End(); ++child) {
      Collect(d, path, child);
    }
  }

  // Tries every subscript of `others` from number k on.
  bool AnyCell(const Dims& others, unsigned long k, Subscripts& probe) const {
    if (k == others.size()) {
      return std::all_of(probe.begin(), probe.end(),
                         [](int subscript) { return subscript >= 0; }) &&
             table.Cell(probe) != nullptr;
    }
    bool found = false;
    for (Place s = 0; s != sizes[others[k]] && !found; ++s) {
      probe[others[k]] = static_cast<int>(s);
      found = AnyCell(others, k + 1, probe);
    }
    return found;
  }
};

// Has columns for rows.
struct TurnedHeading : OmDisplayColumnHeading {
  using Base = OmDisplayColumnHeading;
  using Base::Base;
  unsigned int NRows() const { return Base::NColumns(); }
  unsigned int NColumns() const { return Base::NRows(); }
  unsigned short VisibleWidth(int k) const { return Base::VisibleHeight(k); }
  const Places& getNonEmptyRows() const { return Base::getNonEmptyColumns(); }
  std::deque<ConstNode*> Row(int r) const { return Base::Column(r); }
  std::deque<ConstNode*> RowCategories(int r) const { return Base::ColumnCategories(r); }
  std::deque<ConstNode*> Column(int c) const { return Base::Row(c); }
};

template <typename Heading>
void CheckHeading(const LayoutModel& model, const OmDisplayLayerHeading& layers,
                  const Heading& heading, const Dims& dims, const Dims& others, bool corner) {
  Places places;
  if (heading.SkipEmpty()) {
    places = model.NonEmpty(dims, others, layers.getCurrentCellIndex());
  }
  const std::vector<unsigned long> widths = model.Widths(dims, places, corner);
  if (!heading.SkipEmpty()) {
    places = model.AllPlaces(dims);
  }
  ASSERT_EQ(heading.NRows(), places.size());
  ASSERT_EQ(heading.getNonEmptyRows(), places);
  ASSERT_EQ(heading.NColumns(), std::accumulate(widths.begin(), widths.end(), 0UL));
  for (unsigned long k = 0; k != dims.size(); ++k) {
    ASSERT_EQ(heading.VisibleWidth(static_cast<int>(k)), widths[k]);
    ASSERT_EQ(heading.getDimensionIndex(static_cast<int>(k)), static_cast<int>(dims[k]));
  }

  std::vector<Payloads> across(heading.NColumns(), Payloads(places.size()));
  for (unsigned long i = 0; i != places.size(); ++i) {
    const unsigned long r = corner ? i : places.size() - 1 - i;
    const int row = static_cast<int>(r);
    Payloads labels, categories, roots, leaves, all;
    for (const Payloads& path : model.Leaves(dims, places[r])) {
      const Payloads visible = LayoutModel::Visible(path, corner);
      labels.insert(labels.end(), visible.begin(), visible.end());
      labels.resize(labels.size() + widths[categories.size()] - visible.size(), nullptr);
      categories.push_back(path.empty() ? nullptr : path.back());
      if (path.size() > 1) {
        roots.push_back(path.front());
        leaves.push_back(path.back());
        all.insert(all.end(), path.begin(), path.end());
      }
    }
    ASSERT_EQ(PayloadsOf(heading.Row(row)), labels);
    ASSERT_EQ(PayloadsOf(heading.RowCategories(row)), categories);
    for (unsigned long c = 0; c != labels.size(); ++c) {
      across[c][r] = labels[c];
    }
    std::vector<ConstNode*> dimNodes, catNodes, allNodes;
    heading.DimCatNodes(row, dimNodes, catNodes);
    heading.DimAllNodes(row, allNodes);
    ASSERT_EQ(PayloadsOf(dimNodes), roots);
    ASSERT_EQ(PayloadsOf(catNodes), leaves);
    ASSERT_EQ(PayloadsOf(allNodes), all);
    Subscripts subscripts(2, 77), expected(2, 77);
    heading.Fill(subscripts, row);
    model.Fill(dims, places[r], expected);
    ASSERT_EQ(subscripts, expected);
  }
  for (unsigned long c = 0; c != across.size(); ++c) {
    ASSERT_EQ(PayloadsOf(heading.Column(static_cast<int>(c))), across[c]);
  }
}

inline void CheckCorner(const LayoutModel& model, const OmDisplayRowHeading& heading,
                        const Dims& dims) {
  const bool corner = heading.DimNamesInCorner();
  std::vector<const OmCellText*> expected(corner || heading.NRows() != 0 ? heading.NColumns() : 0);
  bool found = false;
  unsigned long at = 0;
  for (unsigned long k = 0; corner && k != dims.size(); ++k) {
    const unsigned long width = heading.VisibleWidth(static_cast<int>(k));
    if (width != 0 && !model.leaves[dims[k]][0][0]->Hide()) {
      expected[at] = model.leaves[dims[k]][0][0]->Text();
      found = true;
    }
    at += width;
  }
  if (heading.NRows() != 0 && !found && !expected.empty()) {
    expected[0] = model.table.CornerText();
  }
  ASSERT_EQ(heading.CornerText(), expected);
}

inline void CheckLayers(const LayoutModel& model, OmDisplayLayerHeading& layers, const Dims& dims,
                        const Dims& others) {
  Subscripts current(model.leaves.size(), 0);
  const Places places =
      layers.SkipEmpty() ? model.NonEmpty(dims, others, current) : model.AllPlaces(dims);
  const int n = static_cast<int>(places.size());
  ASSERT_EQ(layers.LastLayer(), n != 0);
  ASSERT_FALSE(layers.SwitchLayer(-2) || layers.SwitchLayer(n));
  ASSERT_EQ(layers.getLayer(), n - 1);
  for (unsigned long i = 0; i != dims.size(); ++i) {
    ASSERT_EQ(layers.VisibleWidth(static_cast<int>(i)), model.Widths(dims, {}, false)[i]);
  }
  ASSERT_FALSE(layers.SwitchLayer(-1));
  current = layers.getCurrentCellIndex();
  for (const Place place : places) {
    ASSERT_TRUE(layers.NextLayer());
    Subscripts filled, expected;
    layers.Fill(filled);
    model.Fill(dims, place, expected);
    ASSERT_EQ(filled, expected);
    model.Fill(dims, place, current);
    ASSERT_EQ(layers.getCurrentCellIndex(), current);
    const std::vector<Payloads> stand = model.Leaves(dims, place);
    for (unsigned long i = 0; i != dims.size(); ++i) {
      Payloads labels;
      for (const OmDimensionNode* const node : stand[i]) {
        if (!node->Hide() && node->IsGroup() && node->HideLabels()) {
          break;
        }
        labels.push_back(node->Hide() ? nullptr : node);
      }
      ASSERT_EQ(PayloadsOf(layers.Nodes(static_cast<int>(i))), labels);
      // The root and the category stay what they are where these are one.
      ConstNode* none = nullptr;
      std::vector<ConstNode*> all, ends(2, none);
      layers.DimAllNodes(static_cast<int>(i), all);
      layers.DimCatNodes(static_cast<int>(i), ends[0], ends[1]);
      const bool apart = stand[i].size() > 1;
      ASSERT_EQ(PayloadsOf(all), apart ? stand[i] : Payloads());
      ASSERT_EQ(PayloadsOf(ends),
                apart ? Payloads({stand[i].front(), stand[i].back()}) : Payloads(2, nullptr));
    }
  }
  ASSERT_FALSE(layers.NextLayer());

  // A restored number is followed by Fill() at once, by the current subscripts at the next switch.
  const int restored = layers.restoreLayer();
  ASSERT_EQ(layers.getLayer(), restored);
  ASSERT_EQ(layers.getCurrentCellIndex(), current);
  if (layers.SkipEmpty() || restored < n) {
    Subscripts filled, expected;
    layers.Fill(filled);
    if (restored >= 0 && restored < n) {
      model.Fill(dims, places[static_cast<unsigned long>(restored)], expected);
    }
    ASSERT_EQ(filled, expected);
  }
}

// Every step makes a table and holds its headings to the model.
class LayoutPlay {
 public:
  explicit LayoutPlay(Choices& random_) : random(random_) {}

  void Step() {
    OmPivotTable table(text, text, false);
    const bool many = OneIn(30), large = OneIn(3);
    const int n = many ? 10 : OneIn(10) ? 0 : 1 + Below(4);
    PuppetVector<short>* const axes[] = {&table.Rows(), &table.Columns(), &table.Layers()};
    for (int d = 0; d != n; ++d) {
      Plant(table, many ? 2 : large ? 16 : 8);
      // Now and then on no axis, or on two, or twice on one.
      for (int times = OneIn(10) ? Below(3) : 1; times != 0; --times) {
        PuppetVector<short>& axis = *axes[Below(3)];
        axis.insert(axis.begin() + Below(static_cast<int>(axis.size()) + 1), static_cast<short>(d));
      }
      if (d == n - 1 || (large && d == 0)) {  // dimensions that are added raise the cells
        StoreCells(table);
      }
    }
    table.setLayerLoc(Below(12) - 2);
    table.CornerText(OneIn(2) ? nullptr : &text);
    Check(table);
  }
  void End() {}

 private:
  int Below(int n) { return random.Below(n); }
  bool OneIn(int n) { return random.OneIn(n); }

  void Plant(OmPivotTable& table, int most) {
    const int hide = Below(3);
    const int kind = Below(12);  // a root may be a leaf itself
    const OmDimensionNode root(text, kNone, kind != 1, nullptr);
    OmDimension& dimension = *table.AddDimension(OmDimension(root, nullptr));
    dimension.Root()->Hide(hide == 0);
    dimension.Root()->HideLabels(kind == 0);
    Grow(dimension, dimension.Root(), OneIn(20) ? 0 : 1 + Below(most), Below(5), 0);
    // Deleting leaves links that are stale, and counts that differ from the number of leaves.
    for (int i = OneIn(3) ? Below(3) : 0; i != 0 && dimension.Root().HasChild(); --i) {
      Node victim = OneIn(3) ? dimension.Root().Back() : dimension.Root()[0];
      dimension.Delete(victim);
    }
  }

  // Subscripts come in order, or one `inAstray` at random: with repeats, beyond the count or none.
  void Grow(OmDimension& dimension, const Node& parent, int n, int inAstray, int depth) {
    for (; n != 0; --n) {
      const bool group = depth < 4 && OneIn(4);
      const auto next = static_cast<int>(dimension.NumCategories());
      const bool astray = inAstray != 0 && OneIn(inAstray);
      const int subscript = !astray ? next : OneIn(15) ? -1 : Below(inAstray == 1 ? 2 : next + 3);
      Node child = dimension.AddNewChild(
          parent, text, group ? kNone : static_cast<unsigned long>(subscript), group);
      child->Hide(OneIn(5));
      child->HideLabels(OneIn(8));
      Grow(dimension, child, group ? Below(4) : 0, inAstray, depth + 1);
    }
  }

  void StoreCells(OmPivotTable& table) {
    const std::vector<int> sizes = table.SizeVector();
    const auto most = static_cast<int>(Product(sizes));
    const int nulls = OneIn(4) ? 10 : 200;
    for (int n = OneIn(2) ? 1 + Below(6) : Below(2 + most / 2); n != 0; --n) {
      Subscripts subscripts;
      for (const int size : sizes) {
        subscripts.push_back(Below(size + (OneIn(8) ? 3 : 1)));
      }
      table.Cell(subscripts, OneIn(nulls) ? nullptr : &text);
    }
  }

  void Check(OmPivotTable& table) {
    const LayoutModel model(table);
    const Dims rows = LayoutModel::Reversed(table.Rows());
    const Dims columns = LayoutModel::Reversed(table.Columns());
    Dims both = columns;
    both.insert(both.end(), rows.begin(), rows.end());
    ASSERT_EQ(IsSparse(table), model.Sparse());
    for (const bool skipEmpty : {false, true}) {
      OmDisplayLayerHeading layers(table, OneIn(2));
      ASSERT_NO_FATAL_FAILURE(
          CheckLayers(model, layers, LayoutModel::Reversed(table.Layers()), both));
      layers.SwitchLayer(Below(4) - 1);
      const OmDisplayRowHeading heading(layers, skipEmpty, OneIn(2));
      ASSERT_NO_FATAL_FAILURE(
          CheckHeading(model, layers, heading, rows, columns, heading.DimNamesInCorner()));
      ASSERT_NO_FATAL_FAILURE(CheckCorner(model, heading, rows));
      const TurnedHeading turned(layers, skipEmpty);
      ASSERT_NO_FATAL_FAILURE(CheckHeading(model, layers, turned, columns, rows, false));
    }
  }

  Choices& random;
  const OmStringCell text{"text"};
};

}  // namespace layout_model

#endif
