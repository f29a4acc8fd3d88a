#include "backend/tables/om/VectorTree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Choices.h"
#include "tests/support/Counted.h"
#include "tests/support/TreeModel.h"

namespace {

using namespace tree_model;

TEST(VectorTree, BehavesLikeItsTwin) {
  Play<TreeModel>(20, 600);
}

TEST(VectorTree, MovingCopiesNothing) {
  Tree tree(Counted(0), nullptr);
  for (int i = 1; i != 5; ++i) {
    tree.Child(tree.Child(tree.Child(tree.Root(), i), i * 10), i * 100);
  }
  Tree::Node root = tree.Root();
  Tree::Node a = root[1];
  Tree::Node b = root[3];
  Counted::copiesLeft = 0;
  tree.moveChild(a, nullptr, &b);
  EXPECT_THROW(tree.InsertChild(Counted(9), root[0], root, true), std::bad_alloc);
  Counted::copiesLeft = -1;
  EXPECT_EQ(Show(root), "0(1(10(100)) 3(30(300)) 4(40(400) 2(20(200))))");
  Counted::ended.clear();
  for (Tree::Node child = root.Begin(); root.HasChild();) {
    tree.Delete(child);
  }
  EXPECT_EQ(Counted::ended, (std::vector<int>{100, 10, 1, 300, 30, 3, 400, 40, 200, 20, 2, 4}));
}

// Deleting leaves the links below the moved siblings as they were. What is moved afterwards, by
// handles whose own links are right, has to arrive all the same.
TEST(VectorTree, StaleLinksMisleadNothing) {
  for (const bool swap : {true, false}) {
    Tree tree(Counted(0), nullptr);
    for (int i = 1; i != 5; ++i) {
      tree.Child(tree.Child(tree.Root(), i), i * 10);
    }
    const Tree::Node root = tree.Root();
    Tree::Node first = root[0];
    tree.Delete(first);
    if (swap) {
      Tree::Node a = tree.Child(root[0], 21);
      tree.Child(root[0], 22);
      a = root[0][1];
      Tree::Node b = tree.Child(root[1], 31);
      tree.swapChildren(a, b);
      tree.Relocate(true);  // the links below the last were no concern of the swap
      EXPECT_EQ(Show(root), "0(2(20 22 21) 3(30 31) 4(40))");
      continue;
    }
    Tree::Node into = root[0];
    for (Tree::Node moved : {root[2], root[1]}) {
      tree.moveChild(moved, nullptr, &into);
      into = root[0][0];
    }
    EXPECT_EQ(Show(root), "0(2(20(3(30)) 4(40)))");
  }
}

TEST(VectorTree, HandlesSayWhereTheyStand) {
  Tree tree(Counted(0), nullptr);
  for (const int value : {5, 6, 6}) {
    tree.Child(tree.Root(), value);
  }
  const Tree::Node root = tree.Root();
  Tree::Node node = root.Begin();
  EXPECT_EQ(root.findIdx(6), 1);
  EXPECT_EQ(root.findIdx(7), -1);
  EXPECT_EQ((node++)->value * 10 + (*node).value, 56);
  EXPECT_EQ((++node) - root.Begin(), 2u);
  EXPECT_EQ(node--, root.Back());
  EXPECT_EQ(Tree::Node(node.record, 7), node);
  EXPECT_TRUE(Tree::ConstNode(node.record, 0).IsRoot());
  node.level = 9;
  node.Renumber();
  EXPECT_EQ(node.Level(), 9u);  // its parent's handle counts down from the same depth
  // Both halves of a pair are found again when one parent moves with the other's children.
  tree.Child(root[2], 60);
  tree.Child(root[2], 61);
  Tree::Node a = root[0];
  Tree::Node b = root[2][0];
  tree.swapChildren(a, b);
  tree.swapChildren(a, a);
  EXPECT_EQ(Show(tree.Root()), "0(6 6(61 60) 5)");
}

TEST(VectorTreeDeathTest, BrokenRulesEndTheProcess) {
  Tree tree(Counted(0), nullptr);
  Tree other(Counted(0), nullptr);
  tree.Child(tree.Child(tree.Root(), 1), 2);
  const Record stray(Counted(3), &tree, nullptr);
  EXPECT_DEATH((void)Tree::Node(const_cast<Record*>(&stray), 1).Counterpart(other),
               "backend/tables/om/VectorTree:384: Counterpart: Assertion `0 <= offset && offset < "
               "vec.size\\(\\)' failed");
}

TEST(VectorTree, DepthNeedsNoStack) {
  const long alive = Counted::live;
  {
    Tree tree(Counted(0), nullptr);
    Tree::Node node = tree.Root();
    for (int i = 1; i != 10001; ++i) {
      node = tree.Child(node, i);
      tree.Child(node, -i);  // the next level hangs from the first of two children
      node = node.Parent().Begin();
    }
    tree.Relocate(true);
    const Record plain(tree);
    Tree other(Counted(0), nullptr);
    other.addChild(tree, nullptr);
    other.addChild(tree[0], nullptr);
    Tree::Node first = other.Root()[0];
    Tree::Node second = other.Root()[1];
    other.swapChildren(first, second);
    EXPECT_EQ(node.Counterpart(tree), node);
    Tree::Node last = other.Root()[1];
    other.removeChild(last);
    EXPECT_EQ(other.Root().Count(), 2u);
    EXPECT_EQ(Counted::live - alive, 4 * 20000 + 3);
  }
  EXPECT_EQ(Counted::live, alive);
}

}  // namespace
