// A vector tree beside its twin.

#ifndef TESTS_SUPPORT_TREEMODEL_H
#define TESTS_SUPPORT_TREEMODEL_H

#include <gtest/gtest.h>

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "backend/tables/om/VectorTree.h"
#include "tests/support/Choices.h"
#include "tests/support/Counted.h"
#include "tests/support/TreeTwin.h"
#include "tests/support/Walkers.h"

namespace tree_model {

using Tree = OmVectorTree<Counted>;
using Record = OmVectorTreeData<Counted>;
using Twin = TreeTwin<int>;

// Writes a record and all below it, and marks every link and every depth that is wrong.
inline std::string Show(Tree::ConstNode node) {
  std::string text = std::to_string(node->value);
  for (Tree::ConstNode child = node.Begin(); child != node.End(); ++child) {
    const bool right = child.record->Parent() == node.record && child.Parent() == node &&
                       child.Level() == node.Level() + 1;
    text += (child == node.Begin() ? "(" : " ") + std::string(right ? "" : "!") + Show(child);
  }
  return node.IsLeaf() ? text : text + ")";
}

inline std::string Show(const Twin& twin) {
  std::string text = std::to_string(twin.value);
  for (const Twin& kid : twin.kids) {
    text += (&kid == &twin.kids.front() ? "(" : " ") + Show(kid);
  }
  return twin.kids.empty() ? text : text + ")";
}

class TreeModel {
 public:
  explicit TreeModel(Choices& random_) : random(random_), tree(Counted(0), &region), root(0) {}

  void Step() {
    const Twin::Twins all = root.All();
    Twin* const a = all[random() % all.size()];
    Twin* const b = all[random() % all.size()];
    const int value = static_cast<int>(random() % 40);  // equal siblings happen
    if (all.size() < 60 && random() % 2 == 0) {
      Grow(a, b, value, random() % 2 == 0);
    } else {
      Restructure(a, b, value, random() % 2 == 0);
    }
    VerifyTree<Counted>(tree);
    ASSERT_EQ(Show(tree.Root()), Show(root));
  }

  void End() {
    Tree other(Counted(1), nullptr);
    const Record copy(tree, nullptr, &region);
    EXPECT_EQ(Show(Tree::ConstNode(&copy, 0)), Show(root));
    for (const Record& child : tree.Children()) {
      other.addChild(child, nullptr);
    }
    for (Twin* twin : root.All()) {
      EXPECT_EQ(FindNode(tree, twin).Counterpart(other), FindNode(other, twin));
    }
  }

  Choices& random;
  OmMemoryRegion region{false};
  Tree tree;
  Twin root;

 private:
  void Grow(Twin* a, Twin* b, int value, bool before) {
    const Tree::Node node = FindNode(tree, a);
    const Counted sibling(value);
    switch (random() % 3) {
      case 0:
        EXPECT_EQ(tree.Child(node, value)->value, value);
        a->Add(Twin(value));
        break;
      case 1:
        // Also a record that is one of the children, or this very one.
        node.record->addChild(*FindNode(tree, b).record, before ? &sibling : nullptr);
        a->Add(Twin(*b), before ? std::optional<int>(value) : std::nullopt);
        break;
      default:
        if (a != &root) {
          tree.InsertChild(value, node, node.Parent(), before);
          a->parent->Add(Twin(value), before ? a->value : a->After());
        }
    }
  }

  void Restructure(Twin* a, Twin* b, int value, bool before) {
    Tree::Node nodeA = FindNode(tree, a);
    Tree::Node nodeB = FindNode(tree, b);
    switch (random() % 5) {
      case 0:
        if (a != &root) {
          tree.Delete(nodeA);
          tree.Relocate(true);
          a->Delete();
        }
        break;
      case 1: {
        Twin::Twins taken;
        std::list<Tree::Node> nodes;
        std::vector<Tree::Node*> pointers;
        for (Twin& kid : a->kids) {
          if (random() % 2 == 0) {
            taken.push_back(&kid);
            pointers.push_back(&nodes.emplace_back(FindNode(tree, &kid)));
          }
        }
        tree.InsertChild(value, pointers);
        a->Group(value, taken);
        break;
      }
      case 2:
        tree.removeChild(nodeA);
        a->Dissolve();
        break;
      case 3:
        if (a != &root && !a->IsAbove(before ? b->parent : b) && !(before && b == &root)) {
          tree.moveChild(nodeA, before ? &nodeB : nullptr, &nodeB);
          a->Move(before ? b : nullptr, b);
        }
        break;
      default:
        if (!a->IsAbove(b) && !b->IsAbove(a)) {
          tree.swapChildren(nodeA, nodeB);
          Twin::Swap(a, b);
        }
    }
  }
};

}  // namespace tree_model

#endif
