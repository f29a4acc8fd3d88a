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

// The layout straight from the table's trees and cells, without any of the headings' own parts.
class LayoutModel {
 public:
  explicit LayoutModel(OmPivotTable& table_)
      : table(table_),
        rows(Reversed(table.Rows())),
        columns(Reversed(table.Columns())),
        layers(Reversed(table.Layers())),
        leaves(table_.NDimensions()) {
    for (unsigned long d = 0; d != leaves.size(); ++d) {
      sizes.push_back(static_cast<Place>(table.Size(static_cast<int>(d))));
      if (sizes[d] != 0) {
        Collect(d, {}, table.Dimension(static_cast<int>(d))->Root());
      }
    }
    for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
      cells.push_back(cell.Index());
    }
    sparse = cells.size() < (Product(table.SizeVector()) + 50) / 100;
  }

  Places AllPlaces(const Dims& dims) const {
    const auto times = [&](Place count, unsigned long d) { return count * sizes[d]; };
    Places places(std::accumulate(dims.begin(), dims.end(), Place{1}, times));
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
    const std::vector<Payloads> stand = Leaves(dims, place);
    for (unsigned long k = 0; k != dims.size(); ++k) {
      int& subscript = subscripts[dims[k]];
      subscript = stand[k].empty() ? subscript : Subscript(stand[k]);
    }
    return std::find(stand.begin(), stand.end(), Payloads()) == stand.end();
  }

  Places NonEmpty(const Dims& head, const Dims& others, Subscripts current) const {
    std::set<Place> places;
    for (const Subscripts& cell : sparse ? cells : std::vector<Subscripts>()) {
      Place place = 0;
      bool known = true;
      for (const unsigned long d : head) {
        // Of the leaves that carry the subscript the last.
        Place p = leaves[d].size();
        while (p != 0 && Subscript(leaves[d][p - 1]) != cell[d]) {
          --p;
        }
        known = known && p != 0;
        place = place * sizes[d] + p - 1;
      }
      if (known && Fill(head, place, current)) {
        places.insert(place);
      }
    }
    // Any cell, whatever its subscripts in the other dimensions.
    Dims all(head);
    all.insert(all.end(), others.begin(), others.end());
    const Place inner = AllPlaces(others).size();
    bool shows = false;
    for (const Place place : sparse ? Places() : AllPlaces(all)) {
      shows = place % inner == 0 ? Fill(head, place / inner, current) : shows;
      Place rest = place;
      for (unsigned long k = others.size(); k-- != 0; rest /= sizes[others[k]]) {
        current[others[k]] = static_cast<int>(rest % sizes[others[k]]);
      }
      if (shows &&
          std::count_if(current.begin(), current.end(), [](int s) { return s < 0; }) == 0 &&
          table.Cell(current) != nullptr) {
        places.insert(place / inner);
      }
    }
    return {places.begin(), places.end()};
  }

  // The labels of a leaf, those above the label-hiding group nearest the root; in a layer hidden
  // ones are null, and hide no labels.
  static Payloads Labels(const Payloads& path, bool corner, bool layer = false) {
    Payloads labels;
    for (const OmDimensionNode* const node : path) {
      if (node->IsGroup() && node->HideLabels() && !(layer && node->Hide())) {
        break;
      }
      if ((layer || !node->Hide()) && !(corner && node == path[0])) {
        labels.push_back(node->Hide() ? nullptr : node);
      }
    }
    return labels;
  }

  // The width of a dimension over the leaves of some places, or over all where there are none.
  unsigned long Width(const Dims& dims, unsigned long k, const Places& places, bool corner) const {
    const std::vector<Payloads>& all = leaves[dims[k]];
    unsigned long width = 0;
    for (const Place place : places) {
      width = std::max(width, Labels(Leaves(dims, place)[k], false).size());
    }
    for (const Payloads& path : places.empty() ? all : std::vector<Payloads>()) {
      width = std::max(width, Labels(path, false).size());
    }
    return corner && width != 0 && !all.empty() && !all[0][0]->Hide() ? width - 1 : width;
  }

  OmPivotTable& table;
  Dims rows, columns, layers;
  std::vector<std::vector<Payloads>> leaves;  // by dimension, in display order
  Places sizes;                               // by dimension
  std::vector<Subscripts> cells;              // that the iterators visit
  bool sparse;

 private:
  static Dims Reversed(const PuppetVector<short>& axis) {
    Dims dims(axis.begin(), axis.end());
    std::reverse(dims.begin(), dims.end());
    return dims;
  }

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
  std::vector<unsigned long> widths;
  for (unsigned long k = 0; k != dims.size(); ++k) {
    widths.push_back(model.Width(dims, k, places, corner));
    ASSERT_EQ(heading.VisibleWidth(static_cast<int>(k)), widths[k]);
    ASSERT_EQ(heading.getDimensionIndex(static_cast<int>(k)), static_cast<int>(dims[k]));
  }
  if (!heading.SkipEmpty()) {
    places = model.AllPlaces(dims);
  }
  ASSERT_EQ(heading.NRows(), places.size());
  ASSERT_EQ(heading.getNonEmptyRows(), places);
  ASSERT_EQ(heading.NColumns(), std::accumulate(widths.begin(), widths.end(), 0UL));
  std::vector<int> dimensionsOfLabels;
  for (unsigned long k = 0; k != dims.size(); ++k) {
    dimensionsOfLabels.insert(dimensionsOfLabels.end(), widths[k], static_cast<int>(k));
  }
  ASSERT_EQ(heading.LabelDimensions(), dimensionsOfLabels);

  std::vector<Payloads> across(heading.NColumns(), Payloads(places.size()));
  for (unsigned long i = 0; i != places.size(); ++i) {
    const unsigned long r = corner ? i : places.size() - 1 - i;
    const int row = static_cast<int>(r);
    Payloads labels, categories, roots, leaves, all;
    for (const Payloads& path : model.Leaves(dims, places[r])) {
      Payloads shown = LayoutModel::Labels(path, corner);
      shown.resize(widths[categories.size()], nullptr);
      labels.insert(labels.end(), shown.begin(), shown.end());
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
    ASSERT_EQ(PayloadsOf(heading.Row(row)), labels) << "a second time";
    Subscripts subscripts(2, 77), expected(2, 77);
    heading.Fill(subscripts, row);
    model.Fill(dims, places[r], expected);
    ASSERT_EQ(subscripts, expected);
  }
  for (unsigned long c = 0; c != across.size(); ++c) {
    ASSERT_EQ(PayloadsOf(heading.Column(static_cast<int>(c))), across[c]);
  }

  if constexpr (std::is_same_v<Heading, OmDisplayRowHeading>) {
    std::vector<const OmCellText*> names(corner || !places.empty() ? heading.NColumns() : 0);
    bool found = false;
    unsigned long at = 0;
    for (unsigned long k = 0; corner && k != dims.size(); at += widths[k++]) {
      if (widths[k] != 0 && !model.leaves[dims[k]][0][0]->Hide()) {
        names[at] = model.leaves[dims[k]][0][0]->Text();
        found = true;
      }
    }
    if (!places.empty() && !found && !names.empty()) {
      names[0] = model.table.CornerText();
    }
    ASSERT_EQ(heading.CornerText(), names);
  }
}

inline void CheckLayers(const LayoutModel& model, OmDisplayLayerHeading& layers) {
  const Dims& dims = model.layers;
  Dims others = model.rows;
  others.insert(others.end(), model.columns.begin(), model.columns.end());
  Subscripts current(model.leaves.size(), 0);
  const Places places =
      layers.SkipEmpty() ? model.NonEmpty(dims, others, current) : model.AllPlaces(dims);
  const int n = static_cast<int>(places.size());
  ASSERT_EQ(layers.NLayers(), places.size());
  ASSERT_EQ(layers.getNonEmptyLayers(), places);
  ASSERT_EQ(layers.LastLayer(), n != 0);
  ASSERT_FALSE(layers.SwitchLayer(-2) || layers.SwitchLayer(n));
  ASSERT_EQ(layers.getLayer(), n - 1);
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
    for (unsigned long k = 0; k != dims.size(); ++k) {
      const int i = static_cast<int>(k);
      const Payloads& path = stand[k];
      ASSERT_EQ(layers.VisibleWidth(i), model.Width(dims, k, {}, false));
      ASSERT_EQ(PayloadsOf(layers.Nodes(i)), LayoutModel::Labels(path, false, true));
      // A root that is the category changes nothing.
      std::vector<ConstNode*> all, ends(2, nullptr);
      layers.DimAllNodes(i, all);
      layers.DimCatNodes(i, ends[0], ends[1]);
      ASSERT_EQ(PayloadsOf(all), path.size() > 1 ? path : Payloads());
      ASSERT_EQ(PayloadsOf(ends),
                path.size() > 1 ? Payloads({path.front(), path.back()}) : Payloads(2));
    }
  }
  ASSERT_FALSE(layers.NextLayer());
}

// Every step makes a table and holds its headings to the model.
class LayoutPlay {
 public:
  explicit LayoutPlay(Choices& random_) : random(random_) {}
  virtual ~LayoutPlay() = default;

  // Fills a table without dimensions.
  void Fill(OmPivotTable& table) {
    const int n = OneIn(30) ? 10 : Below(6);
    const int most = n == 10 ? 3 : OneIn(3) ? 20 : 10;
    PuppetVector<short>* const axes[] = {&table.Rows(), &table.Columns(), &table.Layers()};
    for (int d = 0; d != n; ++d) {
      Plant(table, most);
      // Now and then on no axis, or on two, or twice on one.
      for (int times = OneIn(10) ? Below(3) : 1; times != 0; --times) {
        PuppetVector<short>& axis = *axes[Below(3)];
        axis.insert(axis.begin() + Below(static_cast<int>(axis.size()) + 1), static_cast<short>(d));
      }
      if (d == n - 1 || OneIn(4)) {  // dimensions that are added raise the cells
        StoreCells(table);
      }
    }
    table.CornerText(OneIn(2) ? nullptr : &text);
  }

  void Step() {
    OmPivotTable table(text, text, false);
    Fill(table);
    const LayoutModel model(table);
    ASSERT_EQ(IsSparse(table), model.sparse);
    for (const bool skipEmpty : {false, true}) {
      OmDisplayLayerHeading layers(table, OneIn(2));
      CheckLayers(model, layers);
      layers.SwitchLayer(Below(4) - 1);
      const OmDisplayRowHeading rows(layers, skipEmpty, OneIn(2));
      CheckHeading(model, layers, rows, model.rows, model.columns, rows.DimNamesInCorner());
      const TurnedHeading columns(layers, skipEmpty);
      CheckHeading(model, layers, columns, model.columns, model.rows, false);
      ASSERT_FALSE(testing::Test::HasFatalFailure());
    }
    Look(model);
  }
  void End() {}

 protected:
  // Looks at the table in further ways, when no heading lives any more.
  virtual void Look(const LayoutModel&) {}

 private:
  int Below(int n) { return random.Below(n); }
  bool OneIn(int n) { return random.OneIn(n); }

  void Plant(OmPivotTable& table, int most) {
    // A root may be a leaf itself.
    const OmDimensionNode root(text, kNone, Below(12) != 1, nullptr);
    OmDimension& dimension = *table.AddDimension(OmDimension(root, nullptr));
    dimension.Root()->Hide(OneIn(3));
    dimension.Root()->HideLabels(OneIn(12));
    // Subscripts come in order, or one in some at random: with repeats, beyond the count or none.
    const int inAstray = Below(5);
    Node at = dimension.Root();
    for (int n = OneIn(20) ? 0 : 1 + Below(most); n != 0; --n) {
      unsigned long subscript = dimension.NumCategories();
      if (inAstray != 0 && OneIn(inAstray)) {
        const int beyond = inAstray == 1 ? 2 : static_cast<int>(subscript) + 3;
        subscript = OneIn(15) ? kNone : static_cast<unsigned long>(Below(beyond));
      }
      const Node child = dimension.AddNewChild(at, text, subscript, OneIn(4));
      child->Hide(OneIn(5));
      child->HideLabels(OneIn(8));
      at = child->IsGroup() ? child : at.Level() != 0 && OneIn(3) ? at.Parent() : at;
    }
    // Deleting leaves links that are stale, and counts that differ from the number of leaves.
    for (int i = OneIn(2) ? Below(4) : 0; i != 0 && dimension.Root().HasChild(); --i) {
      Node victim = OneIn(3) ? dimension.Root().Back() : dimension.Root()[0];
      dimension.Delete(victim);
    }
  }

  void StoreCells(OmPivotTable& table) {
    const std::vector<int> sizes = table.SizeVector();
    const int nulls = OneIn(4) ? 10 : 200;
    const auto most = static_cast<int>(Product(sizes) / 2);
    for (int n = 1 + Below(OneIn(2) ? 6 : 1 + most); n != 0; --n) {
      Subscripts subscripts;
      for (const int size : sizes) {
        subscripts.push_back(Below(size + (OneIn(8) ? 3 : 1)));
      }
      table.Cell(subscripts, OneIn(nulls) ? nullptr : &text);
    }
  }

  Choices& random;
  const OmStringCell text{"text"};
};

}  // namespace layout_model

#endif
