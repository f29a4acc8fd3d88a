// The display headings: over random tables against LayoutModel, and the cases that have a rule of
// their own.

#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/Exception.h"
#include "platform/cells/CellTexts.h"
#include "tests/support/Allocations.h"
#include "tests/support/LayoutModel.h"
#include "tests/support/Tables.h"

namespace {

using ConstNode = OmDisplayLayerHeading::ConstNode;
using Node = OmVectorTree<OmDimensionNode>::Node;
using Nodes = std::deque<ConstNode*>;
using Dims = LayoutModel::Dims;
using Payloads = LayoutModel::Payloads;
using Places = std::vector<unsigned long long>;
using Subscripts = std::vector<int>;

constexpr unsigned long kNone = ~0UL;

const OmDimensionNode* PayloadOf(const ConstNode* node) {
  return node != nullptr ? &**node : nullptr;
}
const OmDimensionNode* PayloadOf(const ConstNode& node) {
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

std::string Texts(const Payloads& payloads) {
  std::string text;
  for (const OmDimensionNode* node : payloads) {
    text += (node == nullptr ? "-" : node->Text()->Text()) + " ";
  }
  return text;
}

template <typename Call>
std::string Message(Call call) {
  try {
    call();
  } catch (const OMSException& error) {
    return error.what();
  }
  return "nothing thrown";
}

class Layout : public testing::Test {
 protected:
  // Adds a dimension of `n` categories "<name>0", "<name>1", … and puts it on an axis.
  OmDimension* Add(const char* name, int n, PuppetVector<short>& axis) {
    OmDimension* const dimension = AddDimension(table, name, n);
    axis.push_back(static_cast<short>(table.NDimensions() - 1));
    return dimension;
  }
  void Set(const Subscripts& subscripts) { table.Cell(subscripts, OmNumber(1)); }

  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

// --- Against the model --------------------------------------------------------------------------

class RandomTable {
 public:
  explicit RandomTable(unsigned int seed) : random(seed) {
    const bool many = OneIn(30), large = OneIn(3);
    const int n = many ? 10 : OneIn(10) ? 0 : 1 + Below(4);
    for (int d = 0; d != n; ++d) {
      AddDimension(many ? 2 : large ? 16 : 8);
    }
    FillAxes();
    StoreCells();
    table.setLayerLoc(Below(12) - 2);
    table.CornerText(Below(2) == 0 ? nullptr : &corner);
  }

  int Below(int n) { return static_cast<int>(random() % static_cast<unsigned int>(n)); }
  bool OneIn(int n) { return Below(n) == 0; }

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
    std::shuffle(order.begin(), order.end(), random);
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

  std::mt19937 random;
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

  std::vector<Payloads> across(heading.Width());
  for (unsigned long r = 0; r != places.size(); ++r) {
    const int row = static_cast<int>(r);
    const Payloads labels = model.Labels(dims, places[r], widths, corner);
    ASSERT_EQ(PayloadsOf(heading.Labels(row)), labels);
    for (unsigned long c = 0; c != labels.size(); ++c) {
      across[c].push_back(labels[c]);
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

void CheckCorner(const LayoutModel& model, const OmDisplayRowHeading& heading, const Dims& dims) {
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

void CheckLayers(const LayoutModel& model, OmDisplayLayerHeading& layers, const Dims& dims,
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

void CheckTable(RandomTable& random) {
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

TEST(LayoutModelTest, HoldsTheHeadingsOfRandomTables) {
  const unsigned int first = std::random_device{}();
  for (unsigned int seed = first; seed != first + 1000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomTable random(seed);
    ASSERT_NO_FATAL_FAILURE(CheckTable(random));
  }
}

// --- Rules of their own -------------------------------------------------------------------------

TEST_F(Layout, HeaderFlattensADimension) {
  OmDimension* const dimension = Add("d", 0, table.Rows());
  const auto add = [&](const Node& parent, const char* text, unsigned long subscript) {
    return dimension->AddNewChild(parent, OmStringCell(text), subscript, false);
  };
  add(dimension->Root(), "a", 5);  // beyond the count
  Node group = dimension->AddNewChild(dimension->Root(), OmStringCell("group"), kNone, true);
  add(group, "b", 1);
  add(group, "c", kNone)->Hide(true);
  add(group, "d", 1);  // takes the subscript over
  const OmDimHeader header(dimension, nullptr);
  const auto list = [](const auto& values) { return Subscripts(values.begin(), values.end()); };
  EXPECT_EQ(list(header.leafSubscripts), (Subscripts{5, 1, -1, 1}));
  EXPECT_EQ(list(header.leafPositions), (Subscripts{-1, 3, -1, -1, -1, 0}));
  EXPECT_EQ(list(header.visibleLevels), (Subscripts{2, 3, 2, 3}));
  EXPECT_EQ(header.maxVisibleLevels, 3);
  EXPECT_EQ(header.VisibleLevels({true, false, true, false}), 2);
  EXPECT_EQ(header.VisibleLevels({false, false, false, false}), 0);
  EXPECT_TRUE(OmDimHeader(AddDimension(table, "e", 0), nullptr).leafPositions.size() == 0);

  OmDimHeader::Path path(header.nodePaths[1]);
  EXPECT_EQ(Texts(PayloadsOf(path)), "b group d ");
  EXPECT_EQ(Texts(PayloadsOf(CategoryDisplay(&path, 2, false))), "d group ");
  EXPECT_EQ(Texts(PayloadsOf(CategoryDisplay(&path, 4, true))), "group b - - ");
  EXPECT_EQ(Texts(PayloadsOf(Category(&path))), "b ");
}

TEST_F(Layout, IsSparseBelowOnePercent) {
  Add("a", 10, table.Rows());
  Add("b", 10, table.Columns());
  EXPECT_TRUE(IsSparse(table));
  Set({3, 3});
  EXPECT_FALSE(IsSparse(table));
  table.Cell({0, 0}, nullptr);  // hides all cells from the walk
  EXPECT_TRUE(IsSparse(table));
}

// Deleting can leave more leaves than the count tells, or fewer.
TEST_F(Layout, CountsCellsOfLeavesBeyondTheCount) {
  OmDimension* const more = Add("more", 3, table.Rows());
  Node last = more->AddNewChild(more->Root(), OmStringCell("last"), 1, false);
  more->Root()[1]->Subscript(0);
  more->Root()[2]->Subscript(0);
  more->Delete(last);
  Add("column", 300, table.Columns());
  const auto rows = [&] {
    OmDisplayLayerHeading layers(table, false);
    return Places(OmDisplayRowHeading(layers, true, false).getNonEmptyRows());
  };
  ASSERT_EQ(more->NumCategories(), 1U);
  Set({0, 0});
  EXPECT_EQ(rows(), (Places{2}));  // of the last leaf with the subscript, past all places
  more->Root()[1]->Subscript(1);
  more->Root()[2]->Subscript(2);
  Set({1, 1});
  EXPECT_EQ(rows(), (Places{0, 1}));

  OmDimension* const fewer = Add("fewer", 9, table.Rows());
  for (int i = 0; i != 5; ++i) {
    Node gap = fewer->Root()[3];
    fewer->Delete(gap);
  }
  ASSERT_EQ(fewer->NumCategories(), 9U);
  Set({2, 0, 8});  // shows as place 3 + 2, where no leaf stands
  EXPECT_EQ(rows(), (Places{0, 1}));
}

TEST_F(Layout, NumbersAndSwitchesLayers) {
  Add("a", 2, table.Layers());
  Add("b", 3, table.Layers());
  Set({1, 0});
  Set({0, 2});
  OmDisplayLayerHeading layers(table, true);
  const auto current = [&] {
    Subscripts subscripts;
    layers.Fill(subscripts);
    return subscripts;
  };
  ConstNode* dim = nullptr;
  ConstNode* cat = nullptr;
  layers.DimCatNodes(0, dim, cat);
  EXPECT_TRUE(current().empty() && dim == nullptr && cat == nullptr);  // no layer is current

  // The dimension listed first varies fastest, and layer numbers leave no gaps.
  EXPECT_TRUE(layers.NextLayer());
  EXPECT_EQ(current(), (Subscripts{1, 0}));
  EXPECT_EQ(Texts(PayloadsOf(layers.Nodes(0))) + Texts(PayloadsOf(layers.Nodes(1))), "b b0 a a1 ");
  EXPECT_TRUE(layers.LastLayer());
  EXPECT_EQ(current(), (Subscripts{0, 2}));
  layers.DimCatNodes(1, dim, cat);
  EXPECT_EQ(Texts(PayloadsOf(std::vector<ConstNode*>{dim, cat})), "a a0 ");
  EXPECT_FALSE(layers.NextLayer());
  EXPECT_FALSE(layers.SwitchLayer(-2));
  EXPECT_EQ(layers.getLayer(), 1);
  EXPECT_FALSE(layers.SwitchLayer(-1));
  EXPECT_EQ(layers.getLayer(), -1);

  // A restored number is followed by Fill() at once, by the current subscripts at the next switch.
  table.setLayerLoc(0);
  EXPECT_EQ(layers.restoreLayer(), 0);
  EXPECT_EQ(current(), (Subscripts{1, 0}));
  EXPECT_EQ(layers.getCurrentCellIndex(), (Subscripts{0, 2}));
  for (const int none : {-7, 2, std::numeric_limits<int>::max()}) {
    table.setLayerLoc(none);
    EXPECT_EQ(layers.restoreLayer(), none);
    EXPECT_EQ(layers.getLayer(), none);
    EXPECT_TRUE(current().empty() && layers.Nodes(0).empty());
    EXPECT_FALSE(layers.NextLayer());
  }
}

TEST_F(Layout, GrowsItsListsWhenReadPastTheirEnd) {
  Add("a", 2, table.Rows());
  Add("b", 2, table.Columns());
  Add("c", 2, table.Layers());
  Set({0, 0, 0});
  OmDisplayLayerHeading layers(table, true);
  OmDisplayRowHeading rows(layers, true, false);
  OmDisplayColumnHeading columns(layers, false);
  layers.SwitchLayer(0);
  EXPECT_EQ(layers.getDimensionIndex(2), -1);
  EXPECT_EQ(rows.getDimensionIndex(1), -1);
  EXPECT_EQ(columns.getDimensionIndex(4), -1);
  EXPECT_EQ(layers.NDimensions(), 3U);
  EXPECT_EQ(rows.NDimensions(), 2U);
  EXPECT_EQ(columns.NDimensions(), 5U);

  // Nothing else follows.
  Subscripts subscripts;
  layers.Fill(subscripts);
  rows.Fill(subscripts, 0);
  columns.Fill(subscripts, 1);
  EXPECT_EQ(subscripts, (Subscripts{0, 1, 0}));
  EXPECT_TRUE(layers.Nodes(2).empty() && layers.NextLayer() == false);
  std::vector<ConstNode*> nodes;
  layers.DimAllNodes(1, nodes);
  layers.DimAllNodes(-1, nodes);
  EXPECT_TRUE(nodes.empty());
  EXPECT_EQ(Texts(PayloadsOf(rows.Row(0))), "a a0 ");
  EXPECT_EQ(Texts(PayloadsOf(columns.Row(1))), "b0 b1 ");
}

TEST_F(Layout, RefusesAxisEntriesThatNameNoDimension) {
  const std::string start =
      "OmDisplayLayerHeading::Data::PlaceCalculator() -- 0 <= dim && dim < sizes.size(), value 1 "
      "== ";
  Add("a", 60, table.Rows());
  Set({59});
  PuppetVector<short>* const axes[] = {&table.Layers(), &table.Rows(), &table.Columns()};
  for (PuppetVector<short>* const axis : axes) {
    for (const short wrong : {short{-1}, short{-300}, short{1}, short{32767}}) {
      axis->push_back(wrong);
      EXPECT_EQ(Message([&] {
                  OmDisplayLayerHeading layers(table, false);
                  OmDisplayRowHeading rows(layers, false, true);
                  OmDisplayColumnHeading columns(layers, false);
                }),
                start + std::to_string(wrong) + ", value 2 == 1");
      // The search for empty layers of a dense table reads every axis.
      EXPECT_NE(Message([&] { OmDisplayLayerHeading layers(table, true); }), "nothing thrown");
      axis->erase(axis->end() - 1);
    }
  }
  EXPECT_EQ(Message([&] { OmDisplayLayerHeading layers(table, true); }), "nothing thrown");
}

// A million and more places each way take no memory but for those that hold a cell.
TEST_F(Layout, FindsFewRowsAmongMany) {
  Add("a", 5000, table.Rows());
  Add("b", 5000, table.Rows());
  Add("c", 3, table.Columns());
  std::mt19937 random(1);
  std::set<unsigned long long> expected;
  for (int i = 0; i != 5000; ++i) {
    const auto a = static_cast<int>(random() % 50), b = static_cast<int>(random() % 100) * 50;
    Set({a, b, i % 3});
    expected.insert(static_cast<unsigned long long>(b) * 5000 + static_cast<unsigned long long>(a));
  }
  OmDisplayLayerHeading layers(table, true);
  OmDisplayRowHeading rows(layers, true, false);
  EXPECT_EQ(rows.getNonEmptyRows(), Places(expected.begin(), expected.end()));
  const Nodes last = rows.Column(3);
  for (const int r : {0, 1, static_cast<int>(rows.NRows()) - 1}) {
    EXPECT_EQ(last[static_cast<unsigned long>(r)], rows.Row(r)[3]);
  }
}

TEST_F(Layout, LosesNothingWhereMemoryRunsOut) {
  OmDimension* const dimension = Add("a", 3, table.Rows());
  dimension->AddNewChild(dimension->Root(), OmStringCell("beyond"), 700, false);
  for (const char* name : {"b", "c", "d", "e", "f", "g", "h", "i"}) {
    Add(name, 2, table.Rows());  // more dimensions than the headings have room for beforehand
  }
  Add("layer", 2, table.Layers());
  Set({1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
  const long before = allocations::Live();
  long n = 0;
  while (allocations::FailsAt(n, [&] {
    OmDisplayLayerHeading layers(table, true);
    layers.LastLayer();
    OmDisplayRowHeading rows(layers, true, true);
    OmDisplayColumnHeading columns(layers, false);
    (void)rows.Column(3);
    (void)columns.getNonEmptyColumns();
  })) {
    ASSERT_EQ(allocations::Live(), before) << "after failure " << n;
    ++n;
  }
  EXPECT_GT(n, 50);
  EXPECT_EQ(allocations::Live(), before);

  // A switch that fails leaves the layer as it was.
  for (int i = 0; i != 9; ++i) {
    table.Layers().push_back(static_cast<short>(i));
  }
  OmDisplayLayerHeading layers(table, false);
  ASSERT_TRUE(layers.SwitchLayer(0));
  EXPECT_TRUE(allocations::FailsAt(0, [&] { layers.LastLayer(); }));
  EXPECT_EQ(layers.getLayer(), 0);
  EXPECT_EQ(layers.getCurrentCellIndex(), Subscripts(10, 0));
}

TEST_F(Layout, ReachesTenThousandLevelsDown) {
  constexpr unsigned int kDepth = 10000;
  OmDimension* const dimension = Add("deep", 0, table.Rows());
  Node node = dimension->Root();
  for (unsigned int i = 1; i != kDepth; ++i) {
    node = dimension->AddNewChild(node, OmStringCell("group"), kNone, true);
  }
  dimension->AddNewChild(node, OmStringCell("leaf"), 0, false);
  Set({0});
  OmDisplayLayerHeading layers(table, true);
  OmDisplayRowHeading rows(layers, true, true);
  ASSERT_EQ(rows.NColumns(), kDepth);
  EXPECT_EQ(rows.Row(0).back()->Level(), kDepth);
  EXPECT_EQ(rows.Column(static_cast<int>(kDepth) - 1)[0], rows.Row(0).back());
  std::vector<ConstNode*> all;
  rows.DimAllNodes(0, all);
  EXPECT_EQ(all.size(), kDepth + 1UL);
}

}  // namespace
