// Dimensions, and the vector trees that they are.

#include "backend/tables/om/Dimension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/tables/om/Exception.h"
#include "platform/cells/CellTexts.h"
#include "tests/support/Choices.h"
#include "tests/support/DimensionModel.h"
#include "tests/support/VectorModel.h"

namespace {

using namespace dimension_model;

struct Dimension : testing::Test {
  Node Add(const Node& above, const std::string& label, bool group = false) {
    return dimension.AddNewChild(above, OmStringCell(label), 6, group);
  }
  // Adds categories, each with one of the same label below.
  void AddPairs(const std::string& labels) {
    for (const char label : labels) {
      Add(Add(root, {label}), {label});
    }
  }
  // Returns the labels below a record, each with those below it in brackets.
  std::string Labels(const Node& node) {
    std::string text;
    for (Node child = node.Begin(); child != node.End(); ++child) {
      text += child->Text()->Text() + (child.HasChild() ? "(" + Labels(child) + ")" : "");
    }
    return text;
  }

  OmMemoryRegion region{false};
  OmDimension dimension{Root(), &region};
  const Node root = dimension.Root();
};

TEST_F(Dimension, BehavesLikeItsTwin) {
  Play<DimensionModel>(30, 300);
}

TEST_F(Dimension, NeedsNoMemoryToMoveAndKeepsAGroupThatFails) {
  AddPairs("abcdg");
  Node group = root[4];
  for (int i = 0; i != 4; ++i) {
    Add(group, "x");
  }
  Node b = root[1];
  Node d = root[3];
  region.Limit(region.BytesInUse());
  dimension.OmVectorTree::moveChild(b, nullptr, &d);
  b = root[0];
  dimension.OmVectorTree::moveChild(b, nullptr, nullptr);
  dimension.swapChildren(b, b);
  group = root[2];
  EXPECT_THROW(dimension.removeChild(group), std::bad_alloc);
  EXPECT_EQ(group->Subscript(), 6u);
  EXPECT_EQ(Labels(root), "c(c)d(db(b))g(gxxxx)a(a)");
}

// Deleting leaves the links below the moved siblings as they were. What is moved afterwards, by
// handles whose own links are right, has to arrive all the same.
TEST_F(Dimension, StaleLinksMisleadNothing) {
  AddPairs("abcd");
  Node first = root[0];
  dimension.Delete(first);
  Node into = root[0];
  for (Node moved : {root[2], root[1]}) {
    dimension.OmVectorTree::moveChild(moved, nullptr, &into);
    into = root[0][0];
  }
  EXPECT_EQ(Labels(root), "b(b(c(c))d(d))");
  Verify(dimension);

  AddPairs("efg");
  first = root[0];
  dimension.Delete(first);
  Add(root[0], "1");
  Add(root[0], "2");
  Node a = root[0][1];
  Node b = Add(root[1], "3");
  dimension.swapChildren(a, b);
  dimension.Relocate(true);  // the links below the last were no concern of the swap
  EXPECT_EQ(Labels(root), "e(e21)f(f3)g(g)");
  Verify(dimension);
}

TEST_F(Dimension, HandlesSayWhereTheyStand) {
  AddPairs("abca");
  Node node = root.Begin();
  EXPECT_EQ(root.findIdx(*root[3]), 0);
  EXPECT_EQ(root.findIdx(*root), -1);
  EXPECT_EQ((node++)->Text()->Text(), "a");
  EXPECT_EQ(node->Text()->Text(), "b");
  EXPECT_EQ((++node) - root.Begin(), 2u);
  EXPECT_EQ(node--, root[2]);
  EXPECT_EQ(Node(node.record, 7), root[1]);
  EXPECT_TRUE(OmDimension::ConstNode(node.record, 0).IsRoot());
  node.level = 9;
  node.Renumber();
  EXPECT_EQ(node.Level(), 9u);  // its parent's handle counts down from the same depth
  OmVectorTreeData<OmDimensionNode> stray(*root, &dimension, nullptr);
  EXPECT_DEATH((void)Node(&stray, 1).Counterpart(dimension),
               "backend/tables/om/VectorTree:384: Counterpart: Assertion `0 <= offset && offset < "
               "vec.size\\(\\)' failed");
}

TEST(VectorTree, EndsChildrenFirstAndInOrder) {
  OmVectorTree<Counted> tree(Counted(0), nullptr);
  for (const int i : {1, 2}) {
    tree.Child(tree.Child(tree.Child(tree.Root(), i), i * 10), i * 100);
    tree.Child(tree.Root().Back(), i + 4);
  }
  Counted::ended.clear();
  tree.Children().clear();
  EXPECT_EQ(Counted::ended, (std::vector<int>{100, 10, 5, 1, 200, 20, 6, 2}));
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
}

TEST_F(Dimension, CopiesNoIndexAndWantsGroups) {
  OmDimensionNode node(OmStringCell("a"), 0, false, nullptr);
  node.ChildIndex().push_back(7);  // of where the node comes from
  const Node child = dimension.Child(root, node);
  EXPECT_EQ(child->ChildIndex().size(), 0u);
  try {
    dimension.Child(child, node);
    FAIL();
  } catch (const OMSException& error) {
    EXPECT_STREQ(error.what(),
                 "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0");
  }
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
