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

using namespace dimension_model;

struct Dimension : testing::Test {
  Node Add(const Node& above, const char* label, bool group = false) {
    return dimension.AddNewChild(above, OmStringCell(label), 6, group);
  }

  OmMemoryRegion region{false};
  OmDimension dimension{Root(), &region};
  const Node root = dimension.Root();
};

TEST_F(Dimension, BehavesLikeItsTwin) {
  Play<DimensionModel>(60, 300);
}

TEST_F(Dimension, NodesWriteThemselves) {
  for (const char* label : {"b", "a"}) {
    dimension.Child(root, OmStringCell(label), kNone, true);
  }
  const Node group = root[1];
  group->SortOrder(1);
  group->HideLabels(true);
  dimension.AddNewChild(group, OmStringCell("x"), 5000000000, false)->SortOrder(0);
  // A node without a label or anything else.
  dimension.OmVectorTree::Child(group, OmDimensionNode(OmDimensionNode(nullptr)));
  testing::internal::CaptureStdout();
  root.Print();
  const std::string yes = "Subscript: -1, Group: yes, hide: no, hideLabels: ";
  const std::string no = ", Group: no, hide: no, hideLabels: no";
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            yes + "no, Children: 1, 0, Text: root\n  " + yes + "no, Text: b\n  " + yes +
                "yes, Sort: down, Children: 0, Text: a\n    Subscript: 705032704" + no +
                ", Sort: up, Text: x\n    Subscript: -1" + no + "\n");
}

TEST_F(Dimension, CountsWhatItShows) {
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 0u);
  Add(root, "a");
  Add(root, "b");
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 1u);  // one leaf stands for all
  for (int i = 0; i != 3; ++i) {
    const Node group = Add(root, "g", true);
    group->Hide(i == 2);                  // no leaf: it has one below, which counts
    Add(group, "c", i == 2)->Hide(true);  // hidden, and the leaf of its parent in either case
  }
  std::vector<unsigned long> counts(dimension.getMaximumDepth(), 0);
  dimension.getGroupCountsByLevel(root, counts);
  EXPECT_EQ(counts, (std::vector<unsigned long>{0, 3, 3}));
  while (root.HasChild()) {
    Node last = root.Back();
    dimension.Delete(last);
  }
  EXPECT_EQ(dimension.NumCategories(), 1u);
  try {
    dimension.Child(Add(root, "c"), OmStringCell("d"), 1, false);
    FAIL();
  } catch (const OMSException& error) {
    EXPECT_STREQ(error.what(),
                 "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0");
  }
}

TEST_F(Dimension, LabelsKeepTheTrackerOfTheirTable) {
  icuTracker tracker(true, "en");
  icuTracker strange(true, "xx");
  dimension.Name()->setICUTracker(&tracker);
  OmDimensionNode node(OmStringCell("a"), 0, true, nullptr);
  node.Text()->setICUTracker(&strange);
  node.ChildIndex().push_back(7);  // of where the node comes from
  const Node group = dimension.Child(root, node);
  EXPECT_EQ(group->ChildIndex().size(), 0u);
  Node child = Add(group, "b");
  dimension.insertCategory(OmStringCell("c"), child, group, false);
  child = root[0].Back();
  dimension.insertChild(OmStringCell("d"), {&child});
  for (const OmDimension::ConstNode at : {root, root[0], root[0][0], root[0][1], root[0][1][0]}) {
    EXPECT_EQ(at->Text()->getICUTracker(), &tracker) << at->Text()->Text();
  }
  EXPECT_EQ(OmDimension(dimension, nullptr).Root()[0][1]->Text()->getICUTracker(), nullptr);
}

TEST_F(Dimension, AFailedDissolvingKeepsTheSubscript) {
  Node group = Add(root, "g", true);
  for (int i = 0; i < 8; ++i) {
    Add(group, "x");
  }
  region.Limit(region.BytesInUse());
  EXPECT_THROW(dimension.removeChild(group), std::bad_alloc);
  EXPECT_EQ(group->Subscript(), 6u);
}

TEST_F(Dimension, DepthNeedsLittleStack) {
  Node node = root;
  for (int i = 0; i != 10000; ++i) {
    dimension.Child(node, OmStringCell("g"), kNone, true);
    Add(node, "c");
    node = node.Begin();  // the next level hangs from the first of two children
  }
  dimension.Relocate(true);
  OmDimension copy(dimension, nullptr);
  EXPECT_EQ(copy.getMaximumDepth(), 10001u);
  EXPECT_EQ(copy.getMaxVisibleGroupCount(), 2u);
  EXPECT_EQ(copy.Counterpart(node)->Text()->Text(), "g");
  testing::internal::CaptureStdout();
  copy.Root().Print();
  EXPECT_GT(testing::internal::GetCapturedStdout().size(), 10000u * 10000u);
  copy.addChild(dimension, nullptr);
  Node first = copy.Root()[0];
  Node last = copy.Root()[2];
  copy.moveChild(first, &last, true);
  first = copy.Root()[0];
  copy.removeChild(first);
  EXPECT_EQ(copy.Root().Count(), 4u);
}

}  // namespace
