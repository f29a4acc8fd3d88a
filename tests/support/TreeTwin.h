// The plain twin of a vector tree: records that never move, changed by the naive form of each
// operation with copies and searches. The tree has to give the same answer without them.

#ifndef TESTS_SUPPORT_TREETWIN_H
#define TESTS_SUPPORT_TREETWIN_H

#include <algorithm>
#include <iterator>
#include <list>
#include <optional>
#include <vector>

template <typename V>
struct TreeTwin {
  using Twins = std::vector<TreeTwin*>;

  explicit TreeTwin(const V& value_) : value(value_) {}
  TreeTwin(const TreeTwin& other, TreeTwin* parent_) : value(other.value), parent(parent_) {
    for (const TreeTwin& kid : other.kids) {
      kids.emplace_back(kid, this);
    }
  }
  TreeTwin(const TreeTwin& other) : TreeTwin(other, nullptr) {}
  TreeTwin& operator=(const TreeTwin&) = delete;

  // This record and all below it.
  Twins All() {
    Twins all{this};
    for (TreeTwin& kid : kids) {
      const Twins below = kid.All();
      all.insert(all.end(), below.begin(), below.end());
    }
    return all;
  }
  bool IsAbove(const TreeTwin* other) const {
    return other != nullptr && (other == this || IsAbove(other->parent));
  }
  auto Place() {
    return std::find_if(parent->kids.begin(), parent->kids.end(),
                        [this](const TreeTwin& kid) { return &kid == this; });
  }
  unsigned long Index() {
    return static_cast<unsigned long>(std::distance(parent->kids.begin(), Place()));
  }
  // The value of the sibling that follows.
  std::optional<V> After() {
    const auto next = std::next(Place());
    return next != parent->kids.end() ? std::optional<V>(next->value) : std::nullopt;
  }
  auto First(const std::optional<V>& wanted) {
    return std::find_if(kids.begin(), kids.end(),
                        [&](const TreeTwin& kid) { return wanted && kid.value == *wanted; });
  }
  // Adds a copy in front of the first child with the value, or at the end.
  void Add(const TreeTwin& child, const std::optional<V>& before = std::nullopt) {
    kids.emplace(First(before), child, this);
  }
  void Delete() { parent->kids.erase(Place()); }

  void Group(const V& label, const Twins& taken) {
    if (taken.empty()) {
      return;
    }
    TreeTwin group(label);
    const auto place = static_cast<long>(taken.front()->Index());
    for (TreeTwin* kid : taken) {
      group.Add(*kid);
    }
    for (TreeTwin* kid : taken) {
      kid->Delete();
    }
    const auto next = std::next(kids.begin(), place);
    Add(group, next != kids.end() ? std::optional<V>(next->value) : std::nullopt);
  }
  // Dissolves the first sibling that equals this one.
  void Dissolve() {
    if (parent == nullptr || kids.empty()) {
      return;
    }
    TreeTwin* const above = parent;
    const auto first = above->First(value);
    if (!first->kids.empty()) {
      for (const TreeTwin& kid : first->kids) {
        above->kids.emplace(first, kid, above);
      }
      above->kids.erase(first);
    }
  }
  void Move(TreeTwin* before, TreeTwin* newParent) {
    const TreeTwin copy(*this);
    std::optional<V> sibling;
    if (before != nullptr) {
      newParent = before->parent;
      sibling = before->value;
    }
    Delete();
    newParent->Add(copy, sibling);
  }
  static void Swap(TreeTwin* a, TreeTwin* b) {
    TreeTwin* const parentA = a->parent;
    TreeTwin* const parentB = b->parent;
    const TreeTwin copyA(*a);
    const TreeTwin copyB(*b);
    const bool together = parentA == parentB;
    const bool follows = together && std::next(a->Place()) == b->Place();
    const bool leads = together && std::next(b->Place()) == a->Place();
    const std::optional<V> afterA = follows ? b->After() : a->After();
    const std::optional<V> afterB = leads ? a->After() : b->After();
    a->Delete();
    b->Delete();
    if (follows) {
      parentB->Add(copyB, afterA);
    }
    parentA->Add(copyA, afterB);
    if (!follows) {
      parentB->Add(copyB, afterA);
    }
  }

  V value;
  TreeTwin* parent = nullptr;
  std::list<TreeTwin> kids;
};

// Returns the record of `tree` that stands where `twin` does.
template <typename Tree, typename V>
typename Tree::Node FindNode(Tree& tree, TreeTwin<V>* twin) {
  return twin->parent != nullptr ? FindNode(tree, twin->parent)[twin->Index()] : tree.Root();
}

#endif
