// What a tree promises beyond its structure, which the model of dimensions holds.

#include "backend/tables/om/VectorTree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Counted.h"

namespace {

using Tree = OmVectorTree<Counted>;
using Record = OmVectorTreeData<Counted>;

// Writes a record and all below it, and marks every link that is wrong.
std::string Show(Tree::ConstNode node) {
  std::string text = std::to_string(node->value);
  for (Tree::ConstNode child = node.Begin(); child != node.End(); ++child) {
    text += (child == node.Begin() ? "(" : " ") +
            std::string(child.record->Parent() == node.record ? "" : "!") + Show(child);
  }
  return node.IsLeaf() ? text : text + ")";
}

// 0(1(10) 2(20) 3(30) 4(40))
struct VectorTree : testing::Test {
  VectorTree() {
    for (int i = 1; i != 5; ++i) {
      tree.Child(tree.Child(root, i), i * 10);
    }
  }

  Tree tree{Counted(0), nullptr};
  const Tree::Node root = tree.Root();
};

TEST_F(VectorTree, MovingCopiesNothing) {
  Tree::Node a = root[1];
  Tree::Node b = root[3];
  Counted::copiesLeft = 0;
  tree.moveChild(a, nullptr, &b);
  a = root[0];
  tree.moveChild(a, nullptr, nullptr);
  tree.swapChildren(a, a);
  EXPECT_THROW(tree.InsertChild(Counted(9), root[0], root, true), std::bad_alloc);
  Counted::copiesLeft = -1;
  EXPECT_EQ(Show(root), "0(3(30) 4(40 2(20)) 1(10))");
  Counted::ended.clear();
  for (Tree::Node child = root.Begin(); root.HasChild();) {
    tree.Delete(child);
  }
  EXPECT_EQ(Counted::ended, (std::vector<int>{30, 3, 40, 20, 2, 4, 10, 1}));
}

// Deleting leaves the links below the moved siblings as they were. What is moved afterwards, by
// handles whose own links are right, has to arrive all the same.
TEST_F(VectorTree, StaleLinksMisleadNoMove) {
  Tree::Node first = root[0];
  tree.Delete(first);
  Tree::Node into = root[0];
  for (Tree::Node moved : {root[2], root[1]}) {
    tree.moveChild(moved, nullptr, &into);
    into = root[0][0];
  }
  EXPECT_EQ(Show(root), "0(2(20(3(30)) 4(40)))");
}

TEST_F(VectorTree, StaleLinksMisleadNoSwap) {
  Tree::Node first = root[0];
  tree.Delete(first);
  tree.Child(root[0], 21);
  tree.Child(root[0], 22);
  Tree::Node a = root[0][1];
  Tree::Node b = tree.Child(root[1], 31);
  tree.swapChildren(a, b);
  tree.Relocate(true);  // the links below the last were no concern of the swap
  EXPECT_EQ(Show(root), "0(2(20 22 21) 3(30 31) 4(40))");
}

TEST_F(VectorTree, HandlesSayWhereTheyStand) {
  tree.Child(root, 2);
  Tree::Node node = root.Begin();
  EXPECT_EQ(root.findIdx(2), 1);
  EXPECT_EQ(root.findIdx(7), -1);
  EXPECT_EQ((node++)->value * 10 + (*node).value, 12);
  EXPECT_EQ((++node) - root.Begin(), 2u);
  EXPECT_EQ(node--, root[2]);
  EXPECT_EQ(Tree::Node(node.record, 7), root[1]);
  EXPECT_TRUE(Tree::ConstNode(node.record, 0).IsRoot());
  node = Tree::Node(node.record, 9);
  node.Renumber();
  EXPECT_EQ(node.Level(), 9u);  // its parent's handle counts down from the same depth
}

TEST_F(VectorTree, CounterpartOfAStrayEndsTheProcess) {
  const Record stray(Counted(3), &tree, nullptr);
  EXPECT_DEATH((void)Tree::Node(const_cast<Record*>(&stray), 1).Counterpart(tree),
               "backend/tables/om/VectorTree:384: Counterpart: Assertion `0 <= offset && offset < "
               "vec.size\\(\\)' failed");
}

}  // namespace
