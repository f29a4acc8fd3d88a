#include "backend/tables/om/VectorTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <string>
#include <vector>

#include "tests/support/Counted.h"

namespace {

using Tree = OmVectorTree<Counted>;
using Record = OmVectorTreeData<Counted>;

// The plain twin: a record that never moves, changed by the naive form of each operation.
struct Twin {
  explicit Twin(int value_, Twin* parent_ = nullptr) : value(value_), parent(parent_) {}
  Twin(const Twin& other, Twin* parent_) : value(other.value), parent(parent_) {
    for (const Twin& kid : other.kids) {
      kids.emplace_back(kid, this);
    }
  }

  std::list<Twin>::iterator Place() {
    return std::find_if(parent->kids.begin(), parent->kids.end(),
                        [this](const Twin& kid) { return &kid == this; });
  }
  // The value of the sibling that follows, or none.
  std::vector<int> After() {
    const auto next = std::next(Place());
    return next != parent->kids.end() ? std::vector<int>{next->value} : std::vector<int>{};
  }
  // Adds a copy in front of the first child with the value, or at the end.
  void Add(const Twin& child, const std::vector<int>& before) {
    const auto place = std::find_if(kids.begin(), kids.end(), [&before](const Twin& kid) {
      return !before.empty() && kid.value == before.front();
    });
    kids.emplace(place, child, this);
  }
  void Delete() { parent->kids.erase(Place()); }
  bool IsAbove(const Twin* other) const {
    return other != nullptr && (other == this || IsAbove(other->parent));
  }

  int value;
  Twin* parent;
  std::list<Twin> kids;
};

void Collect(Twin& twin, std::vector<Twin*>& all) {
  all.push_back(&twin);
  for (Twin& kid : twin.kids) {
    Collect(kid, all);
  }
}

Tree::Node Find(Tree& tree, Twin* twin) {
  if (twin->parent == nullptr) {
    return tree.Root();
  }
  const auto index = std::distance(twin->parent->kids.begin(), twin->Place());
  return Find(tree, twin->parent)[static_cast<unsigned long>(index)];
}

// Writes a record and all below it, and marks every link and every depth that is wrong.
std::string Show(Tree::ConstNode node) {
  std::string text = std::to_string(node->value);
  for (Tree::ConstNode child = node.Begin(); child != node.End(); ++child) {
    const bool right = child.record->Parent() == node.record && child.Parent() == node &&
                       child.Level() == node.Level() + 1;
    text += (child == node.Begin() ? "(" : " ") + std::string(right ? "" : "!") + Show(child);
  }
  return node.IsLeaf() ? text : text + ")";
}

std::string Show(const Twin& twin) {
  std::string text = std::to_string(twin.value);
  for (const Twin& kid : twin.kids) {
    text += (&kid == &twin.kids.front() ? "(" : " ") + Show(kid);
  }
  return twin.kids.empty() ? text : text + ")";
}

void Swap(Twin* a, Twin* b) {
  Twin* const parentA = a->parent;
  Twin* const parentB = b->parent;
  const Twin copyA(*a, parentB);
  const Twin copyB(*b, parentA);
  std::vector<int> afterA = a->After();
  std::vector<int> afterB = b->After();
  const bool follows = parentA == parentB && std::next(a->Place()) == b->Place();
  if (follows) {
    afterA = afterB;
  } else if (parentA == parentB && std::next(b->Place()) == a->Place()) {
    afterB = afterA;
  }
  a->Delete();
  b->Delete();
  if (follows) {
    parentB->Add(copyB, afterA);
    parentA->Add(copyA, afterB);
  } else {
    parentA->Add(copyA, afterB);
    parentB->Add(copyB, afterA);
  }
}

class TreeModel {
 public:
  explicit TreeModel(unsigned seed) : random(seed), tree(Counted(0), &region), root(0) {}

  void Step() {
    std::vector<Twin*> all;
    Collect(root, all);
    Twin* const a = all[random() % all.size()];
    Twin* const b = all[random() % all.size()];
    Tree::Node nodeA = Find(tree, a);
    Tree::Node nodeB = Find(tree, b);
    const int value = static_cast<int>(random() % 40);  // equal siblings happen
    const bool flag = random() % 2 == 0;
    const bool small = all.size() < 60;
    switch (random() % 9) {
      case 0:
      case 1:
        if (small) {
          EXPECT_EQ(tree.Child(nodeA, value)->value, value);
          a->Add(Twin(value), {});
        }
        break;
      case 2:
        if (small) {
          // Also a record that is one of the children, or this very one.
          const Counted before(value);
          nodeA.record->addChild(*nodeB.record, flag ? &before : nullptr);
          const Twin copy(*b, nullptr);
          a->Add(copy, flag ? std::vector<int>{value} : std::vector<int>{});
        }
        break;
      case 3:
        if (a != &root) {
          tree.Delete(nodeA);
          a->parent->kids.erase(a->Place());
          tree.Relocate(true);
        }
        break;
      case 4:
        if (a != &root && small) {
          tree.InsertChild(value, nodeA, nodeA.Parent(), flag);
          a->parent->Add(Twin(value), flag ? std::vector<int>{a->value} : a->After());
        }
        break;
      case 5:
        Group(a, value);
        break;
      case 6:
        Dissolve(a, nodeA);
        break;
      case 7:
        Move(a, b, nodeA, nodeB, flag);
        break;
      default:
        if (a != b && !a->IsAbove(b) && !b->IsAbove(a)) {
          tree.swapChildren(nodeA, nodeB);
          Swap(a, b);
        }
    }
    ASSERT_EQ(Show(tree.Root()), Show(root));
  }

  std::mt19937 random;
  OmMemoryRegion region{false};
  Tree tree;
  Twin root;

 private:
  void Group(Twin* above, int value) {
    std::vector<Tree::Node> nodes;
    std::list<Twin*> taken;
    for (Twin& kid : above->kids) {
      if (random() % 2 == 0) {
        taken.push_back(&kid);
        nodes.push_back(Find(tree, &kid));
      }
    }
    std::vector<Tree::Node*> handles;
    for (Tree::Node& node : nodes) {
      handles.push_back(&node);
    }
    tree.InsertChild(value, handles);
    if (taken.empty()) {
      return;
    }
    Twin group(value);
    auto place = taken.front()->Place();
    const bool goesFirst = place == above->kids.begin();
    std::list<Twin>::iterator previous = goesFirst ? place : std::prev(place);
    for (Twin* kid : taken) {
      group.Add(*kid, {});
    }
    for (Twin* kid : taken) {
      kid->Delete();
    }
    const auto next = goesFirst ? above->kids.begin() : std::next(previous);
    above->Add(group,
               next != above->kids.end() ? std::vector<int>{next->value} : std::vector<int>{});
  }

  void Dissolve(Twin* twin, Tree::Node node) {
    tree.removeChild(node);
    if (twin->parent == nullptr || twin->kids.empty()) {
      return;
    }
    std::list<Twin>& kids = twin->parent->kids;
    const auto first = std::find_if(kids.begin(), kids.end(),
                                    [twin](const Twin& kid) { return kid.value == twin->value; });
    if (first->kids.empty()) {
      return;
    }
    for (const Twin& kid : first->kids) {
      kids.emplace(first, kid, twin->parent);
    }
    const auto next = kids.erase(first);
    if (next != kids.end()) {
      EXPECT_EQ(node, Find(tree, &*next));
    }
  }

  void Move(Twin* a, Twin* b, Tree::Node& nodeA, Tree::Node& nodeB, bool before) {
    Twin* const to = before ? b->parent : b;
    if (a->parent == nullptr || to == nullptr || a->IsAbove(to)) {
      return;
    }
    tree.moveChild(nodeA, before ? &nodeB : nullptr, &nodeB);
    const Twin copy(*a, to);
    const std::vector<int> sibling = before ? std::vector<int>{b->value} : std::vector<int>{};
    a->Delete();
    to->Add(copy, sibling);
  }
};

TEST(VectorTree, BehavesLikeItsTwin) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(seed);
  const long alive = Counted::live;
  for (unsigned run = 0; run != 20; ++run) {
    TreeModel model(seed + run);
    for (int step = 0; step != 600; ++step) {
      ASSERT_NO_FATAL_FAILURE(model.Step()) << "run " << run << ", step " << step;
    }
    Tree other(Counted(1), nullptr);
    const Record copy(model.tree, nullptr, &model.region);
    EXPECT_EQ(Show(Tree::ConstNode(&copy, 0)), Show(model.root));
    for (const Record& child : model.tree.Children()) {
      other.addChild(child, nullptr);
    }
    std::vector<Twin*> all;
    Collect(model.root, all);
    for (Twin* twin : all) {
      EXPECT_EQ(Find(model.tree, twin).Counterpart(other), Find(other, twin));
    }
  }
  EXPECT_EQ(Counted::live, alive);
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
#if OM_HARDENING
  Tree::Node node = tree.Root()[0];
  Tree::Node below = node[0];
  EXPECT_DEATH(tree.moveChild(node, nullptr, &below), "OmVectorTree::moveChild");
  EXPECT_DEATH(tree.swapChildren(below, node), "OmVectorTree::swapChildren");
  EXPECT_DEATH((void)tree.Root().Parent(), "OmVectorTree::Node::Parent");
  EXPECT_DEATH((void)node[1], "OmVector::operator");
#endif
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
