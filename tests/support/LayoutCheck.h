// The three headings of random tables, with every flag and random hiding, held to LayoutModel.

#ifndef TESTS_SUPPORT_LAYOUTCHECK_H
#define TESTS_SUPPORT_LAYOUTCHECK_H

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "tests/support/Choices.h"
#include "tests/support/LayoutModel.h"
#include "tests/support/Tables.h"

namespace layout_model {

using ConstNode = OmDisplayLayerHeading::ConstNode;
using Node = OmVectorTree<OmDimensionNode>::Node;
using Nodes = std::deque<ConstNode*>;
using Dims = LayoutModel::Dims;
using Payloads = LayoutModel::Payloads;
using Places = std::vector<unsigned long long>;
using Subscripts = std::vector<int>;

constexpr unsigned long kNone = ~0UL;

inline const OmDimensionNode* PayloadOf(const ConstNode* node) {
  return node != nullptr ? &**node : nullptr;
}
inline const OmDimensionNode* PayloadOf(const ConstNode& node) {
  return &*node;
}

template <typename List>
Payloads PayloadsOf(const List& nodes) {
  Payloads payloads;
  for (const auto& node : nodes) {
    payloads.push_back(PayloadOf(node));
  }
  return payloads;
}

class RandomTable {
 public:
  explicit RandomTable(Choices& random_) : random(random_) {
    const bool many = OneIn(30), large = OneIn(3);
    const int n = many ? 10 : OneIn(10) ? 0 : 1 + Below(4);
    for (int d = 0; d != n; ++d) {
      AddDimension(many ? 2 : large ? 16 : 8);
    }
    StoreCells();
    if (n != 0 && OneIn(4)) {
      AddDimension(4);  // the cells are now those of its subscript 0
    }
    FillAxes();
    table.setLayerLoc(Below(12) - 2);
    table.CornerText(Below(2) == 0 ? nullptr : &corner);
  }

  int Below(int n) { return random.Below(n); }
  bool OneIn(int n) { return random.OneIn(n); }

  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};

 private:
  void AddDimension(int most) {
    OmDimension& dimension = *table.AddDimension(OmStringCell("root"));
    dimension.Root()->Hide(OneIn(3));
    dimension.Root()->HideLabels(OneIn(12));
    subscriptStyle = Below(6);
    Grow(dimension, dimension.Root(), OneIn(20) ? 0 : 1 + Below(most), 0);
    // Deleting leaves links that are stale, and counts that differ from the number of leaves.
    for (int i = OneIn(3) ? Below(3) : 0; i != 0 && dimension.Root().Count() != 0; --i) {
      Node victim = dimension.Root()[static_cast<unsigned long>(
          Below(static_cast<int>(dimension.Root().Count())))];
      dimension.Delete(victim);
    }
  }

  void Grow(OmDimension& dimension, const Node& parent, int n, int depth) {
    for (int i = 0; i != n; ++i) {
      const bool group = depth < 4 && OneIn(4);
      Node child = dimension.AddNewChild(parent, OmStringCell("x"),
                                         group ? kNone : Subscript(dimension), group);
      child->Hide(OneIn(5));
      child->HideLabels(OneIn(8));
      if (group) {
        Grow(dimension, child, Below(4), depth + 1);
      }
    }
  }

  // In order, in order with some gone astray, or at random with repeats and numbers beyond the
  // count.
  unsigned long Subscript(const OmDimension& dimension) {
    const unsigned long next = dimension.NumCategories();
    if (subscriptStyle < 3 && (subscriptStyle == 0 || !OneIn(4))) {
      return next;
    }
    const int most = subscriptStyle == 3 ? 2 : static_cast<int>(next) + 3;
    return OneIn(15) ? kNone : static_cast<unsigned long>(Below(most));
  }

  void FillAxes() {
    std::vector<short> order(table.NDimensions());
    std::iota(order.begin(), order.end(), static_cast<short>(0));
    for (int i = static_cast<int>(order.size()); i > 1; --i) {
      std::swap(order[static_cast<unsigned long>(i - 1)],
                order[static_cast<unsigned long>(Below(i))]);
    }
    PuppetVector<short>* const axes[] = {&table.Rows(), &table.Columns(), &table.Layers()};
    for (const short d : order) {
      // Now and then on no axis, or on two, or twice on one.
      for (int times = OneIn(10) ? Below(3) : 1; times != 0; --times) {
        axes[Below(3)]->push_back(d);
      }
    }
  }

  void StoreCells() {
    int room = 1;
    for (const int size : table.SizeVector()) {
      room *= size + 1;
    }
    int n = table.NDimensions() == 0 ? 0 : OneIn(2) ? 1 + Below(6) : Below(2 + room / 3);
    for (const int nulls = OneIn(4) ? 1 : 20; n != 0; --n) {
      Subscripts subscripts;
      for (const int size : table.SizeVector()) {
        subscripts.push_back(Below(size + (OneIn(8) ? 3 : 1)));
      }
      if (OneIn(nulls * 10)) {
        table.Cell(subscripts, nullptr);
      } else {
        table.Cell(subscripts, OmNumber(n));
      }
    }
  }

  Choices& random;
  int subscriptStyle = 0;
  OmStringCell corner{"corner"};
};

// Holds one row or column heading to the model. `Adapter` tells rows and columns alike.
template <typename Adapter>
void CheckHeading(const LayoutModel& model, const OmDisplayLayerHeading& layers,
                  const Adapter& heading, const Dims& dims, const Dims& others, bool skipEmpty,
                  bool corner) {
  Places places;
  if (skipEmpty) {
    places = model.NonEmpty(dims, others, layers.getCurrentCellIndex());
  }
  const std::vector<int> widths = model.Widths(dims, places, corner);
  if (!skipEmpty) {
    places = model.AllPlaces(dims);
  }
  ASSERT_EQ(heading.Count(), places.size());
  ASSERT_EQ(heading.ListedPlaces(), places);
  ASSERT_EQ(heading.Width(),
            static_cast<unsigned int>(std::accumulate(widths.begin(), widths.end(), 0)));
  for (unsigned long k = 0; k != dims.size(); ++k) {
    ASSERT_EQ(heading.WidthOf(static_cast<int>(k)), widths[k]);
    ASSERT_EQ(heading.DimensionAt(static_cast<int>(k)), dims[k]);
  }

  std::vector<Payloads> across(heading.Width(), Payloads(places.size()));
  for (unsigned long i = 0; i != places.size(); ++i) {
    const unsigned long r = corner ? i : places.size() - 1 - i;
    const int row = static_cast<int>(r);
    const Payloads labels = model.Labels(dims, places[r], widths, corner);
    ASSERT_EQ(PayloadsOf(heading.Labels(row)), labels);
    for (unsigned long c = 0; c != labels.size(); ++c) {
      across[c][r] = labels[c];
    }

    Payloads categories, roots, leaves, all;
    for (const LayoutModel::Leaf* leaf : model.Leaves(dims, places[r])) {
      categories.push_back(leaf == nullptr ? nullptr : leaf->path.back());
      if (leaf != nullptr && leaf->path.size() > 1) {
        roots.push_back(leaf->path.front());
        leaves.push_back(leaf->path.back());
        all.insert(all.end(), leaf->path.begin(), leaf->path.end());
      }
    }
    ASSERT_EQ(PayloadsOf(heading.Categories(row)), categories);
    std::vector<ConstNode*> dimNodes, catNodes, allNodes;
    heading.get().DimCatNodes(row, dimNodes, catNodes);
    heading.get().DimAllNodes(row, allNodes);
    ASSERT_EQ(PayloadsOf(dimNodes), roots);
    ASSERT_EQ(PayloadsOf(catNodes), leaves);
    ASSERT_EQ(PayloadsOf(allNodes), all);

    Subscripts subscripts(2, 77), expected(2, 77);
    heading.get().Fill(subscripts, row);
    model.Fill(dims, places[r], expected);
    ASSERT_EQ(subscripts, expected);
  }
  for (unsigned int c = 0; c != heading.Width(); ++c) {
    ASSERT_EQ(PayloadsOf(heading.Across(static_cast<int>(c))), across[c]);
  }
}

struct AsRows : std::reference_wrapper<const OmDisplayRowHeading> {
  using reference_wrapper::reference_wrapper;
  unsigned int Count() const { return get().NRows(); }
  unsigned int Width() const { return get().NColumns(); }
  int WidthOf(int k) const { return get().VisibleWidth(k); }
  int DimensionAt(int k) const { return get().getDimensionIndex(k); }
  const Places& ListedPlaces() const { return get().getNonEmptyRows(); }
  Nodes Labels(int r) const { return get().Row(r); }
  Nodes Categories(int r) const { return get().RowCategories(r); }
  Nodes Across(int c) const { return get().Column(c); }
};

struct AsColumns : std::reference_wrapper<const OmDisplayColumnHeading> {
  using reference_wrapper::reference_wrapper;
  unsigned int Count() const { return get().NColumns(); }
  unsigned int Width() const { return get().NRows(); }
  int WidthOf(int k) const { return get().VisibleHeight(k); }
  int DimensionAt(int k) const { return get().getDimensionIndex(k); }
  const Places& ListedPlaces() const { return get().getNonEmptyColumns(); }
  Nodes Labels(int c) const { return get().Column(c); }
  Nodes Categories(int c) const { return get().ColumnCategories(c); }
  Nodes Across(int r) const { return get().Row(r); }
};

inline void CheckCorner(const LayoutModel& model, const OmDisplayRowHeading& heading,
                        const Dims& dims) {
  std::vector<const OmCellText*> expected;
  bool found = false;
  for (unsigned long k = 0; heading.DimNamesInCorner() && k != dims.size(); ++k) {
    const auto& leaves = model.leaves[static_cast<unsigned long>(dims[k])];
    if (!leaves.empty()) {
      const OmDimensionNode& root = *leaves[0].path[0];
      std::vector<const OmCellText*> names{root.Hide() ? nullptr : root.Text()};
      names.resize(heading.VisibleWidth(static_cast<int>(k)));
      found = found || (!names.empty() && names[0] != nullptr);
      expected.insert(expected.end(), names.begin(), names.end());
    }
  }
  if (heading.NRows() != 0 && !found) {
    expected.assign(heading.NColumns(), nullptr);
    if (!expected.empty()) {
      expected[0] = model.table.CornerText();
    }
  }
  ASSERT_EQ(heading.CornerText(), expected);
}

inline void CheckLayers(const LayoutModel& model, OmDisplayLayerHeading& layers, const Dims& dims,
                        const Dims& others, bool skipEmpty) {
  const std::vector<int> start(model.leaves.size(), 0);
  const Places places = skipEmpty ? model.NonEmpty(dims, others, start) : model.AllPlaces(dims);
  ASSERT_EQ(layers.getLayer(), -1);
  ASSERT_EQ(layers.LastLayer(), !places.empty());
  ASSERT_EQ(layers.getLayer(), static_cast<int>(places.size()) - 1);
  for (unsigned long i = 0; i != dims.size(); ++i) {
    ASSERT_EQ(layers.VisibleWidth(static_cast<int>(i)), model.Widths(dims, {}, false)[i]);
  }
  layers.SwitchLayer(-1);
  Subscripts current = layers.getCurrentCellIndex();
  for (unsigned long n = 0; n != places.size(); ++n) {
    ASSERT_TRUE(layers.NextLayer());
    model.Fill(dims, places[n], current);
    ASSERT_EQ(layers.getCurrentCellIndex(), current);
    Subscripts filled, expected;
    layers.Fill(filled);
    model.Fill(dims, places[n], expected);
    ASSERT_EQ(filled, expected);
    const auto stand = model.Leaves(dims, places[n]);
    for (unsigned long i = 0; i != dims.size(); ++i) {
      Payloads labels;
      for (const OmDimensionNode* node : stand[i] != nullptr ? stand[i]->path : Payloads()) {
        if (!node->Hide() && node->IsGroup() && node->HideLabels()) {
          break;
        }
        labels.push_back(node->Hide() ? nullptr : node);
      }
      ASSERT_EQ(PayloadsOf(layers.Nodes(static_cast<int>(i))), labels);
      std::vector<ConstNode*> all;
      layers.DimAllNodes(static_cast<int>(i), all);
      ASSERT_EQ(PayloadsOf(all),
                stand[i] != nullptr && stand[i]->path.size() > 1 ? stand[i]->path : Payloads());
    }
  }
  ASSERT_FALSE(layers.NextLayer());
}

inline void CheckTable(RandomTable& random) {
  OmPivotTable& table = random.table;
  const LayoutModel model(table);
  const Dims rows = LayoutModel::Reversed(table.Rows());
  const Dims columns = LayoutModel::Reversed(table.Columns());
  Dims others = columns;
  others.insert(others.end(), rows.begin(), rows.end());
  ASSERT_EQ(IsSparse(table), model.Sparse());
  for (const bool skipEmpty : {false, true}) {
    OmDisplayLayerHeading layers(table, random.OneIn(2));
    ASSERT_NO_FATAL_FAILURE(CheckLayers(model, layers, LayoutModel::Reversed(table.Layers()),
                                        others, layers.SkipEmpty()));
    layers.SwitchLayer(random.Below(4) - 1);
    const bool corner = random.OneIn(2);
    const OmDisplayRowHeading rowHeading(layers, skipEmpty, corner);
    ASSERT_NO_FATAL_FAILURE(
        CheckHeading(model, layers, AsRows(rowHeading), rows, columns, skipEmpty, corner));
    ASSERT_NO_FATAL_FAILURE(CheckCorner(model, rowHeading, rows));
    const OmDisplayColumnHeading columnHeading(layers, skipEmpty);
    ASSERT_NO_FATAL_FAILURE(
        CheckHeading(model, layers, AsColumns(columnHeading), columns, rows, skipEmpty, false));
  }
}

class LayoutPlay {
 public:
  explicit LayoutPlay(Choices& random_) : random(random_) {}

  void Step() {
    RandomTable table(random);
    CheckTable(table);
  }
  void End() {}

 private:
  Choices& random;
};

}  // namespace layout_model

#endif
