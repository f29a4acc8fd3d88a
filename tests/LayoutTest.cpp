// The display headings: over random tables against LayoutModel, and the cases that have a rule of
// their own.

#include <gtest/gtest.h>

#include <limits>

#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/Exception.h"
#include "platform/cells/CellTexts.h"
#include "tests/support/Allocations.h"
#include "tests/support/Choices.h"
#include "tests/support/LayoutCheck.h"
#include "tests/support/Tables.h"

namespace {

using namespace layout_model;

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

TEST_F(Layout, HoldsTheModelOfRandomTables) {
  Play<LayoutPlay>(1000, 1);
}

TEST_F(Layout, HeaderGivesPositionsAndCutsPaths) {
  OmDimension* const dimension = Add("d", 0, table.Rows());
  const Node group = dimension->AddNewChild(dimension->Root(), OmStringCell("group"), kNone, true);
  dimension->AddNewChild(group, OmStringCell("a"), 5, false);  // beyond the count
  dimension->AddNewChild(group, OmStringCell("b"), kNone, false);
  const OmDimHeader header(dimension, nullptr);
  EXPECT_EQ(Subscripts(header.leafPositions.begin(), header.leafPositions.end()),
            (Subscripts{-1, -1, -1, -1, -1, 0}));
  EXPECT_EQ(OmDimHeader(AddDimension(table, "e", 0), nullptr).leafPositions.size(), 0U);
  OmDimHeader::Path path(header.nodePaths[0]);
  EXPECT_EQ(Texts(PayloadsOf(CategoryDisplay(&path, 2, false))), "d group ");
  EXPECT_EQ(Texts(PayloadsOf(CategoryDisplay(&path, 4, true))), "group a - - ");
  EXPECT_EQ(Texts(PayloadsOf(Category(&path))), "a ");
}

TEST_F(Layout, IsSparseBelowOnePercentOfFiftyPlacesAndMore) {
  OmDimension* const dimension = Add("a", 49, table.Rows());
  EXPECT_FALSE(IsSparse(table));
  dimension->AddNewChild(dimension->Root(), OmStringCell("b"), 49, false);
  EXPECT_TRUE(IsSparse(table));
  Set({3});
  EXPECT_FALSE(IsSparse(table));
  table.Cell({60}, nullptr);
  EXPECT_FALSE(IsSparse(table));
}

TEST_F(Layout, TellsPlacesWhoseNumberWraps) {
  Add("a", 256, table.Rows());
  for (int i = 0; i < 7; ++i) {
    table.Rows().push_back(0);  // 2 to the 64th places
  }
  Set({5});
  OmDisplayLayerHeading layers(table, false);
  ASSERT_TRUE(IsSparse(table));
  EXPECT_EQ(OmDisplayRowHeading(layers, true, false).getNonEmptyRows(), Places{0x0505050505050505});
  EXPECT_EQ(OmDisplayRowHeading(layers, false, false).NRows(), 0U);
}

// The root of a dimension may be its only leaf, whose path has a single node.
TEST_F(Layout, LeavesOutputsAloneForARootThatIsALeaf) {
  OmDimension lone(OmDimensionNode(OmStringCell("lone"), 0, false, nullptr), nullptr);
  OmDimension::Node none = lone.AddNewChild(lone.Root(), OmStringCell("x"), 3, false);
  lone.Delete(none);  // the count is 1 now
  table.AddDimension(lone);
  table.Rows().push_back(0);
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, false, false);
  std::vector<OmDisplayRowHeading::ConstNode*> dims, cats, all;
  rows.DimCatNodes(0, dims, cats);
  rows.DimAllNodes(0, all);
  EXPECT_TRUE(dims.empty() && cats.empty() && all.empty());
  EXPECT_EQ(rows.Row(0).size(), 1U);
}

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

TEST_F(Layout, SwitchesAndRestoresLayers) {
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

  EXPECT_TRUE(layers.LastLayer());
  layers.DimCatNodes(1, dim, cat);
  EXPECT_EQ(Texts(PayloadsOf(std::vector<ConstNode*>{dim, cat})), "a a0 ");
  EXPECT_FALSE(layers.SwitchLayer(-2));
  EXPECT_EQ(layers.getLayer(), 1);

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
  EXPECT_EQ(layers.NDimensions() + 10 * rows.NDimensions() + 100 * columns.NDimensions(), 523U);
  // Nothing else follows.
  Subscripts subscripts;
  layers.Fill(subscripts);
  rows.Fill(subscripts, 0);
  columns.Fill(subscripts, 1);
  EXPECT_EQ(subscripts, (Subscripts{0, 1, 0}));
  std::vector<ConstNode*> nodes;
  layers.DimAllNodes(1, nodes);
  layers.DimAllNodes(-1, nodes);
  EXPECT_TRUE(layers.Nodes(2).empty() && nodes.empty());
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

TEST_F(Layout, KeepsItsLayerWhereASwitchFails) {
  for (const char* name : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}) {
    Add(name, 2, table.Layers());  // more than the heading has room for beforehand
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
