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
  // Adds a copy in front of the first child with the value, or at the end.
  void Add(const TreeTwin& child, const std::optional<V>& before = std::nullopt) {
    const auto place = std::find_if(kids.begin(), kids.end(), [&before](const TreeTwin& kid) {
      return before && kid.value == *before;
    });
    kids.emplace(place, child, this);
  }
  void Delete() { parent->kids.erase(Place()); }

  void Group(const V& label, const Twins& taken) {
    if (taken.empty()) {
      return;
    }
    TreeTwin group(label);
    const auto place = taken.front()->Place();
    const bool goesFirst = place == kids.begin();
    const auto previous = goesFirst ? place : std::prev(place);
    for (TreeTwin* kid : taken) {
      group.Add(*kid);
    }
    for (TreeTwin* kid : taken) {
      kid->Delete();
    }
    const auto next = goesFirst ? kids.begin() : std::next(previous);
    Add(group, next != kids.end() ? std::optional<V>(next->value) : std::nullopt);
  }
  // Dissolves the first sibling that equals this one.
  void Dissolve() {
    if (parent == nullptr || kids.empty()) {
      return;
    }
    std::list<TreeTwin>& beside = parent->kids;
    const auto first = std::find_if(beside.begin(), beside.end(),
                                    [this](const TreeTwin& kid) { return kid.value == value; });
    if (!first->kids.empty()) {
      for (const TreeTwin& kid : first->kids) {
        beside.emplace(first, kid, parent);
      }
      beside.erase(first);
    }
  }
  void Move(TreeTwin* before, TreeTwin* newParent) {
    TreeTwin* const to = before != nullptr ? before->parent : newParent;
    const TreeTwin copy(*this);
    const std::optional<V> sibling =
        before != nullptr ? std::optional<V>(before->value) : std::nullopt;
    Delete();
    to->Add(copy, sibling);
  }
  static void Swap(TreeTwin* a, TreeTwin* b) {
    TreeTwin* const parentA = a->parent;
    TreeTwin* const parentB = b->parent;
    const TreeTwin copyA(*a);
    const TreeTwin copyB(*b);
    std::optional<V> afterA = a->After();
    std::optional<V> afterB = b->After();
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
