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

TEST(VectorTree, AFailedCopyLeavesNoTrace) {
  OmMemoryRegion region(false);
  Tree tree(Counted(0), &region);
  for (int i = 1; i != 5; ++i) {  // the next child makes the four move
    const Tree::Node child = tree.Child(tree.Root(), i);
    tree.Child(tree.Child(child, i * 10), i * 100);
  }
  const std::string before = Show(tree.Root());
  const unsigned long blocks = region.LiveBlocks();
  const auto unchanged = [&] {
    EXPECT_EQ(Show(tree.Root()), before);
    EXPECT_EQ(region.LiveBlocks(), blocks);
  };
  const auto undo = [&] {
    tree.Delete(--tree.Root().End());
    tree.Relocate(true);
  };
  const Counted nine(9);
  EXPECT_EQ(Counted::Exhaust([&] { Record(tree, nullptr, &region); }, unchanged), 13);
  EXPECT_EQ(Counted::Exhaust([&] { const Record copy(tree); }, unchanged), 13);
  EXPECT_EQ(Counted::Exhaust([&] { tree.addChild(tree[1], nullptr); }, unchanged), 3);
  undo();
  Counted::Exhaust([&] { tree.Child(tree.Root(), nine); }, [] {});
  Tree::Node a = tree.Root()[1];
  Tree::Node b = tree.Root()[4];
  Counted::copiesLeft = 0;
  EXPECT_THROW(tree.InsertChild(nine, {&a, &b}), std::bad_alloc);
  EXPECT_THROW(tree.InsertChild(nine, a, tree.Root(), true), std::bad_alloc);
  // Moving copies nothing, so there is nothing to fail.
  tree.moveChild(a, nullptr, &b);
  Counted::copiesLeft = -1;
  EXPECT_EQ(Show(tree.Root()), "0(1(10(100)) 3(30(300)) 4(40(400)) 9(2(20(200))))");
  Counted::ended.clear();
  Tree::Node root = tree.Root();
  for (Tree::Node child = root.Begin(); root.HasChild();) {
    tree.Delete(child);
  }
  EXPECT_EQ(Counted::ended, (std::vector<int>{100, 10, 1, 300, 30, 3, 400, 40, 4, 200, 20, 2, 9}));
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
  EXPECT_EQ(root.find(7), root.End());
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
  EXPECT_EQ(Show(tree.Root()), "0(6 6(61 60) 5)");
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
