#include "backend/tables/om/Dimension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/tables/om/Exception.h"
#include "platform/cells/CellTexts.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/Choices.h"
#include "tests/support/DimensionModel.h"

namespace {

using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;
constexpr unsigned long kNone = OmDimensionNode::kNoSubscript;

using dimension_model::DimensionModel;
using dimension_model::Root;

TEST(Dimension, BehavesLikeItsTwin) {
  Play<DimensionModel>(40, 300);
}

TEST(Dimension, NodesWriteThemselves) {
  OmDimension dimension(Root(), nullptr);
  for (const char* label : {"b", "c", "a"}) {
    dimension.Child(dimension.Root(), OmStringCell(label), kNone, true);
  }
  const Node group = dimension.Root()[2];
  group->SortOrder(1);
  group->HideLabels(true);
  dimension.AddNewChild(group, OmStringCell("x"), 5000000000, false)->SortOrder(0);
  // A node without a label or anything else.
  dimension.OmVectorTree::Child(group, OmDimensionNode(OmDimensionNode(nullptr)));
  testing::internal::CaptureStdout();
  dimension.Root().Print();
  const std::string shown = testing::internal::GetCapturedStdout();
  const std::string yes = "Subscript: -1, Group: yes, hide: no, hideLabels: ";
  const std::string no = ", Group: no, hide: no, hideLabels: no";
  EXPECT_EQ(shown, yes + "no, Children: 2, 0, 1, Text: root\n  " + yes + "no, Text: b\n  " + yes +
                       "no, Text: c\n  " + yes +
                       "yes, Sort: down, Children: 0, Text: a\n"
                       "    Subscript: 705032704" +
                       no + ", Sort: up, Text: x\n    Subscript: -1" + no + "\n");
}

TEST(Dimension, CountsWhatItShows) {
  OmDimension dimension(Root(), nullptr);
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 0u);
  const auto add = [&](const Node& above, bool group) {
    return dimension.AddNewChild(above, OmStringCell("n"), 6, group);
  };
  add(dimension.Root(), false);
  add(dimension.Root(), false);
  EXPECT_EQ(dimension.getMaximumDepth(), 2u);
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 1u);  // one leaf stands for all
  for (int i = 0; i != 3; ++i) {
    const Node group = add(dimension.Root(), true);
    group->Hide(i == 2);             // no leaf: it has one below, which counts
    add(group, i == 2)->Hide(true);  // hidden, and the leaf of its parent in either case
  }
  std::vector<unsigned long> counts(dimension.getMaximumDepth(), 0);
  dimension.getGroupCountsByLevel(dimension.Root(), counts);
  EXPECT_EQ(counts, (std::vector<unsigned long>{0, 3, 3}));
  while (dimension.Root().HasChild()) {
    Node last = dimension.Root().Back();
    dimension.Delete(last);
  }
  EXPECT_EQ(dimension.NumCategories(), 1u);
  try {
    const Node category = dimension.AddNewChild(dimension.Root(), OmStringCell("c"), 0, false);
    dimension.Child(category, OmStringCell("d"), 1, false);
    FAIL();
  } catch (const OMSException& error) {
    EXPECT_STREQ(error.what(),
                 "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0");
  }
}

TEST(Dimension, LabelsKeepTheTrackerOfTheirTable) {
  icuTracker tracker(true, "en");
  icuTracker strange(true, "xx");
  OmDimension dimension(Root(), nullptr);
  dimension.Name()->setICUTracker(&tracker);
  OmDimensionNode node(OmStringCell("a"), 0, true, nullptr);
  node.Text()->setICUTracker(&strange);
  node.ChildIndex().push_back(7);  // of where the node comes from
  const Node group = dimension.Child(dimension.Root(), node);
  EXPECT_EQ(group->ChildIndex().size(), 0u);
  Node child = dimension.AddNewChild(group, OmStringCell("b"), 1, false);
  dimension.insertCategory(OmStringCell("c"), child, group, false);
  Node last = dimension.Root()[0].Back();
  child = dimension.Root()[0][0];
  dimension.moveChild(child, &last, true);
  child = dimension.Root()[0][0];
  dimension.insertChild(OmStringCell("d"), {&child});
  for (ConstNode at = dimension.Root();; at = at[0]) {
    EXPECT_EQ(at->Text()->getICUTracker(), &tracker) << at->Text()->Text();
    if (at.IsLeaf()) {
      break;
    }
  }
  EXPECT_EQ(OmDimension(dimension, nullptr).Root()[0][1]->Text()->getICUTracker(), nullptr);
}

// An index that outlives its children leads nowhere, and never to records that are gone.
TEST(Dimension, SearchesSurviveAnOutdatedIndex) {
  OmDimension dimension(Root(), nullptr);
  for (const char* label : {"e", "d", "c", "b", "a"}) {
    dimension.Child(dimension.Root(), OmStringCell(label), 0, false);
  }
  Node b = dimension.Root()[3];
  Node c = dimension.Root()[2];
  Node d = dimension.Root()[1];
  dimension.insertChild(OmStringCell("g"), {&d, &c, &b});
  for (const char* label : {"a", "c", "e", "f"}) {
    const int position = dimension.FindChild(dimension.Root(), OmStringCell(label), false);
    EXPECT_TRUE(position >= -1 && position < 3);
    EXPECT_FALSE(dimension.Child(dimension.Root(), OmStringCell(label), 0, false).IsRoot());
  }
}

TEST(Dimension, AFailedDissolvingKeepsTheSubscript) {
  OmMemoryRegion region(false);
  OmDimension dimension(Root(), &region);
  Node group = dimension.AddNewChild(dimension.Root(), OmStringCell("g"), 5, true);
  for (int i = 0; i < 8; ++i) {
    dimension.AddNewChild(group, OmStringCell("x"), 0, false);
  }
  region.Limit(region.BytesInUse());
  EXPECT_THROW(dimension.removeChild(group), std::bad_alloc);
  EXPECT_EQ(group->Subscript(), 5u);
}

TEST(Dimension, DepthNeedsLittleStack) {
  OmDimension dimension(Root(), nullptr);
  Node node = dimension.Root();
  for (int i = 0; i != 10000; ++i) {
    node = dimension.Child(node, OmStringCell("g"), kNone, true);
  }
  dimension.AddNewChild(node, OmStringCell("c"), 3, false);
  OmDimension copy(dimension, nullptr);
  EXPECT_EQ(copy.getMaximumDepth(), 10002u);
  EXPECT_EQ(copy.getMaxVisibleGroupCount(), 1u);
  EXPECT_EQ(copy.Counterpart(node).Count(), 1u);
  testing::internal::CaptureStdout();
  copy.Root().Print();
  EXPECT_GT(testing::internal::GetCapturedStdout().size(), 10000u * 10000u);
  Node group = copy.Root()[0];
  copy.removeChild(group);
  node = copy.Counterpart(node).Parent();
  copy.Delete(node);
  EXPECT_EQ(copy.NumCategories(), 1u);
}

}  // namespace
