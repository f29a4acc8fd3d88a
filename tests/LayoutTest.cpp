// The display headings: over random tables against a model, and the cases that have a rule of their
// own. And the arithmetic below them.

#include <gtest/gtest.h>

#include <limits>

#include "backend/tables/IndexProjector.h"
#include "backend/tables/om/DimHeader.h"
#include "tests/support/Allocations.h"
#include "tests/support/LayoutCheck.h"

namespace {

using namespace layout_model;
using Digits = std::vector<unsigned int>;

class Layout : public testing::Test {
 protected:
  // Adds a dimension of `n` categories "<name>0", "<name>1", … and puts it on an axis.
  OmDimension* Add(const char* name, int n, PuppetVector<short>& axis) {
    axis.push_back(static_cast<short>(table.NDimensions()));
    return AddDimension(table, name, n);
  }

  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

TEST_F(Layout, HoldsTheModelOfRandomTables) {
  Play<LayoutPlay>(1000, 1);
}

TEST_F(Layout, HeaderGivesPositionsAndCutsPaths) {
  OmDimension* const dimension = Add("d", 0, table.Rows());
  const Node group = dimension->AddNewChild(dimension->Root(), OmStringCell("group"), kNone, true);
  dimension->AddNewChild(group, OmStringCell("a"), 3, false);  // beyond the count
  dimension->AddNewChild(group, OmStringCell("b"), kNone, false);
  const OmDimHeader header(dimension, nullptr);
  EXPECT_EQ(Subscripts(header.leafPositions.begin(), header.leafPositions.end()),
            (Subscripts{-1, -1, -1, 0}));
  OmDimHeader::Path path(header.nodePaths[0]);
  EXPECT_EQ(CategoryDisplay(&path, 4, true),
            (std::vector<ConstNode*>{&path[1], &path[0], nullptr, nullptr}));
  EXPECT_EQ(Category(&path), std::vector<ConstNode*>{&path[0]});
}

TEST_F(Layout, TellsPlacesWhoseNumberWraps) {
  Add("a", 256, table.Rows());
  for (int i = 0; i < 7; ++i) {
    table.Rows().push_back(0);  // 2 to the 64th places
  }
  table.Cell({5}, OmNumber(1));
  OmDisplayLayerHeading layers(table, false);
  ASSERT_TRUE(IsSparse(table));
  EXPECT_EQ(OmDisplayRowHeading(layers, true, false).getNonEmptyRows(), Places{0x0505050505050505});
  EXPECT_EQ(OmDisplayRowHeading(layers, false, false).NRows(), 0U);
}

TEST_F(Layout, ShowsRowsOfManyCategoriesInAnyOrder) {
  Add("inner", 600, table.Rows());
  Add("outer", 2, table.Rows());
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, false, true);
  for (int i = 0, r = 0; i != 1200; ++i, r = (r + 257) % 1200) {
    EXPECT_EQ(rows.Row(r), rows.RowCategories(r));
  }
}

TEST_F(Layout, GrowsItsListsWhenReadPastTheirEnd) {
  Add("a", 2, table.Rows());
  Add("b", 2, table.Columns());
  Add("c", 2, table.Layers());
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, false, false);
  const OmDisplayColumnHeading columns(layers, false);
  layers.SwitchLayer(1);
  EXPECT_EQ(layers.getDimensionIndex(2), -1);
  EXPECT_EQ(rows.getDimensionIndex(1), -1);
  EXPECT_EQ(columns.getDimensionIndex(4), -1);
  EXPECT_EQ(layers.NDimensions() + 10 * rows.NDimensions() + 100 * columns.NDimensions(), 523U);
  // Nothing else follows.
  Subscripts subscripts;
  layers.Fill(subscripts);
  rows.Fill(subscripts, 0);
  columns.Fill(subscripts, 1);
  EXPECT_EQ(subscripts, (Subscripts{0, 1, 1}));
  EXPECT_TRUE(layers.Nodes(2).empty() && layers.Nodes(-1).empty());
  table.setLayerLoc(std::numeric_limits<int>::max());
  layers.restoreLayer();
  EXPECT_FALSE(layers.NextLayer());
}

TEST_F(Layout, RefusesAxisEntriesThatNameNoDimension) {
  Add("a", 60, table.Rows());
  table.Cell({59}, OmNumber(1));
  for (PuppetVector<short>* const axis : {&table.Layers(), &table.Rows(), &table.Columns()}) {
    for (const int wrong : {-300, 1}) {
      axis->push_back(static_cast<short>(wrong));
      EXPECT_EQ(Message([&] {
                  OmDisplayLayerHeading layers(table, false);
                  OmDisplayRowHeading rows(layers, false, true);
                  OmDisplayColumnHeading columns(layers, false);
                }),
                "OmDisplayLayerHeading::Data::PlaceCalculator() -- 0 <= dim && dim < sizes.size(), "
                "value 1 == " +
                    std::to_string(wrong) + ", value 2 == 1");
      // The search for empty layers of a dense table reads every axis.
      EXPECT_THROW(OmDisplayLayerHeading(table, true), OMSException);
      axis->erase(axis->end() - 1);
    }
  }
}

TEST_F(Layout, KeepsItsLayerWhereASwitchFails) {
  for (int d = 0; d != 10; ++d) {
    Add("d", 2, table.Layers());  // more than the heading has room for beforehand
  }
  OmDisplayLayerHeading layers(table, false);
  ASSERT_TRUE(layers.SwitchLayer(0));
  EXPECT_TRUE(allocations::FailsAt(0, [&] { layers.LastLayer(); }));
  EXPECT_EQ(layers.getLayer(), 0);
  EXPECT_EQ(layers.getCurrentCellIndex(), Subscripts(10, 0));
}

TEST_F(Layout, ReachesTenThousandLevelsDown) {
  constexpr int kDepth = 10000;
  OmDimension* const dimension = Add("deep", 0, table.Rows());
  Node node = dimension->Root();
  for (int i = 1; i <= kDepth; ++i) {
    node = dimension->AddNewChild(node, OmStringCell("node"), 0, i != kDepth);
  }
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, false, true);
  EXPECT_EQ(rows.Row(0).back()->Level(), static_cast<unsigned int>(kDepth));
  EXPECT_EQ(rows.Column(kDepth - 1)[0], rows.Row(0).back());
}

TEST(MultiBase, KeepsItsEdges) {
  EXPECT_TRUE(MultiBase().Digits(5).empty());
  EXPECT_EQ(MultiBase({0, 5}).Digits(7), (Digits{1, 2}));  // the first base is never read
  EXPECT_EQ(MultiBase({0, 5}).Value({3, 9}), 24U);         // nor are digits held against bases
  EXPECT_EQ(MultiBase({2, 0, 3}).Digits(2), (Digits{0, 0, 2}));  // value used up before the zero
  EXPECT_EQ(Product(std::vector<int>{-1, 2}), 18446744073709551614ULL);
  EXPECT_EQ(Product(Digits{4294967295U, 4294967295U}), 18446744065119617025ULL);
  EXPECT_DEATH((void)MultiBase({2, 0, 3}).Digits(3),
               "backend/tables/MultiBase: Digits: Assertion `b>0' failed");
  for (const Digits& wrong : {Digits{}, Digits{1}, Digits{1, 1, 1}}) {
    EXPECT_DEATH((void)MultiBase({2, 5}).Value(wrong),
                 "MultiBase: Value: Assertion `digit == end && i == size' failed");
  }
}

TEST(IndexArithmetic, WritesWhereItHasToOnly) {
  OmIndexProjector projector;
  projector.Set({3, 0});
  Subscripts out{7, 7, 7, 7};
  projector.Spread(Digits{1, 2, 9}, out);
  EXPECT_EQ(out, (Subscripts{2, 7, 7, 1}));

  PuppetVector<short> axis(-1);
  EXPECT_EQ(std::as_const(axis)[4], -1);
  EXPECT_TRUE(axis.empty());
  axis[2] = 5;
  PuppetVector<short> other(9);
  other = axis;  // the default comes along
  EXPECT_EQ(other[3], -1);
  EXPECT_EQ(std::vector<short>(other.begin(), other.end()), (std::vector<short>{-1, -1, 5, -1}));
}

}  // namespace
