// A list tree beside a plain one.

#ifndef TESTS_SUPPORT_LISTMODEL_H
#define TESTS_SUPPORT_LISTMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "backend/tables/om/ListTree.h"
#include "tests/support/Choices.h"
#include "tests/support/Walkers.h"

template <typename T>
typename ListTree<T>::Node NodeAt(ListTree<T>& tree, std::size_t index) {
  return {tree, std::next(tree.List().begin(), static_cast<std::ptrdiff_t>(index))};
}

// Compares all below `node` with the twin. Lists the values' parents in document order.
inline void Compare(const ListTree<int>::Node& node, int level,
                    std::map<int, std::vector<int>>& twin, std::vector<int>& parents) {
  ASSERT_EQ(level, node.Level());
  ASSERT_EQ(level + 1, node.End().Level());
  ASSERT_EQ(twin[*node].empty(), node.IsLeaf());
  auto child = node.Begin();
  for (const int value : twin[*node]) {
    ASSERT_EQ(value, *child);
    parents.push_back(*node);
    ASSERT_NO_FATAL_FAILURE(Compare(child, level + 1, twin, parents));
    ++child;
  }
  ASSERT_TRUE(child == node.End());
}

class ListModel {
 public:
  explicit ListModel(Choices& random_) : random(random_) {}

  void Step() {
    const int step = ++count;
    const auto index = static_cast<std::size_t>(random.Below(static_cast<int>(parents.size())));
    auto node = NodeAt(tree, index);
    const int value = *node;
    const auto operation = index == 0 ? 9 : random() % 10;
    if (operation <= 2) {
      auto& siblings = twin[parents[index]];
      auto place = std::find(siblings.begin(), siblings.end(), value);
      if (operation != 0) {
        const auto children = std::exchange(twin[value], {});
        place = siblings.insert(place + 1, children.begin(), children.end()) - 1;
      }
      operation == 0 ? tree.Prune(node) : operation == 1 ? tree.Erase(node) : tree.Flatten(node);
      if (operation != 2) {
        siblings.erase(place);
      }
    } else {
      ASSERT_EQ(step, *node.Child(step));
      twin[value].push_back(step);
    }
    parents.assign(1, 0);
    ASSERT_NO_FATAL_FAILURE(Compare(NodeAt(tree, 0), 0, twin, parents));
    ASSERT_EQ(parents.size(), tree.List().size());
    Verify(tree);
  }
  void End() {}

 private:
  Choices& random;
  int count = 0;
  ListTree<int> tree{0};
  std::map<int, std::vector<int>> twin;  // the children of each value
  std::vector<int> parents{0};
};

#endif
