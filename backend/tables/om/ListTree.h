// ListTree, an ordered tree that is stored as one doubly linked list.
//
// The entries are in document order, each with its level; the subtree of an entry is the run of
// deeper entries directly behind it. Every operation scans forward over that run and costs time
// proportional to its length. The values are opaque: the tree neither copies nor deletes what they
// point to; they must be default-constructible and assignable. Arguments are not checked in a
// release build.

#ifndef BACKEND_TABLES_OM_LISTTREE_H
#define BACKEND_TABLES_OM_LISTTREE_H

#include <algorithm>
#include <iterator>
#include <list>
#include <memory>
#include <type_traits>

#include "backend/tables/om/Assert.h"

// One entry: a value and its depth, 0 for the root.
template <typename T>
class ListTreeData {
 public:
  ListTreeData(int level_, const T& data_) : data(data_), level(level_) {}

  [[nodiscard]] T& Data() noexcept { return data; }
  [[nodiscard]] int& Level() noexcept { return level; }

 private:
  T data;
  int level;
};

// Invariants: the first entry is the root, at level 0; an entry is at most one level deeper than
// the entry before it.
//
// An iterator, and a node that contains it, is valid until its own entry is removed.
template <typename T>
class ListTree {
 public:
  using iterator = typename std::list<ListTreeData<T>>::iterator;
  class Node;

  explicit ListTree(const T& root) { list.emplace_back(0, root); }

  [[nodiscard]] std::list<ListTreeData<T>>& List() noexcept { return list; }
  // Returns the node of the first entry.
  [[nodiscard]] Node Root();

  // Returns the first entry behind `it` that is not deeper than `level`, or the end. With the
  // entry's own level, this is the position just past its subtree. If `it` is the end, returns the
  // end.
  [[nodiscard]] iterator SearchForward(iterator it, int level);

  // Makes the children of `n` its following siblings: every descendant moves up one level and keeps
  // its position in the list.
  void Flatten(Node& n);
  // Removes only the entry of `n`; its children take its place. Afterwards `n` is at the end.
  void Erase(Node& n);
  // Removes the entry of `n` and its subtree.
  void Prune(const Node& n);

 protected:
  // Returns the list position of a node.
  [[nodiscard]] static iterator Place(const Node& n) { return n.iter; }
  // Moves a node whose entry was removed to the end, so that a hardened build notices its use. It
  // keeps its level.
  static void Leave(Node& n) { n.iter = n.tree->list.end(); }

 private:
  // Unused entries, allocated several at a time. A copy of the tree does not copy them.
  struct Spare {
    Spare() = default;
    Spare(const Spare&) {}
    Spare& operator=(const Spare&) { return *this; }
    std::list<ListTreeData<T>> entries;
  };

  std::list<ListTreeData<T>> list;
  Spare spare;
};

// A cursor on an entry, or on the end of the list.
//
// It stores the level that its entry had when the cursor was made and navigates by that level
// alone, so it is stale after the entry's level changes. This is on purpose: Amputate and
// OmOutputTree::Prune depend on it. Assignment copies position and level; comparison ignores the
// level.
template <typename T>
class ListTree<T>::Node {
 public:
  // The level is 0 at the end.
  Node(ListTree<T>& tree_, iterator it)
      : tree(&tree_), level(it == tree_.List().end() ? 0 : it->Level()), iter(it) {}

  [[nodiscard]] int Level() const noexcept { return level; }
  [[nodiscard]] ListTree<T>& Tree() const noexcept { return *tree; }
  [[nodiscard]] T& operator*() const;
  [[nodiscard]] bool IsLeaf() const;
  [[nodiscard]] bool HasChild() const { return !IsLeaf(); }
  [[nodiscard]] bool operator==(const Node& other) const { return iter == other.iter; }
  [[nodiscard]] bool operator!=(const Node& other) const { return iter != other.iter; }

  // Iterating from Begin() to End() with ++ visits exactly the children. Begin() of a leaf equals
  // its End(). The level of End() is this node's level plus one, whatever entry is there.
  [[nodiscard]] Node Begin() const;
  [[nodiscard]] Node End() const;
  // Moves to the next sibling, past the subtree. The level does not change.
  Node& operator++();

  // Appends `value` as the last child and returns its node.
  Node Child(const T& value);
  // Appends the object of `value` and takes ownership of it, for a tree that owns its values, as
  // the output tree does. If the call fails, `value` is unchanged.
  template <typename Value>
  Node Child(std::unique_ptr<Value>&& value) {
    static_assert(std::is_convertible_v<Value*, T>, "the tree holds pointers to a base of it");
    const Node node = Child(static_cast<T>(value.get()));
    static_cast<void>(value.release());  // the tree owns it now
    return node;
  }

 private:
  friend class ListTree<T>;

  // Ends the process if the node is at the end, in a hardened build only.
  void CheckEntry([[maybe_unused]] const char* operation) const {
    OM_HARDEN(iter != tree->list.end(), operation);
  }

  ListTree<T>* tree;
  int level;
  iterator iter;
};

template <typename T>
typename ListTree<T>::Node ListTree<T>::Root() {
  return Node(*this, list.begin());
}

template <typename T>
typename ListTree<T>::iterator ListTree<T>::SearchForward(iterator it, int level) {
  if (it != list.end()) {
    do {
      ++it;
    } while (it != list.end() && it->Level() > level);
  }
  return it;
}

template <typename T>
void ListTree<T>::Flatten(Node& n) {
  if (n.iter == list.end()) {
    return;
  }
  // The entry's level is used here, not the level that the cursor stores.
  const int level = n.iter->Level();
  for (iterator it = std::next(n.iter); it != list.end() && it->Level() > level; ++it) {
    --it->Level();
  }
}

template <typename T>
void ListTree<T>::Erase(Node& n) {
  Flatten(n);
  if (n.iter != list.end()) {
    list.erase(n.iter);
    Leave(n);
  }
}

template <typename T>
void ListTree<T>::Prune(const Node& n) {
  list.erase(n.iter, SearchForward(n.iter, n.level));
}

template <typename T>
T& ListTree<T>::Node::operator*() const {
  CheckEntry("ListTree::Node::operator*");
  return iter->Data();
}

template <typename T>
bool ListTree<T>::Node::IsLeaf() const {
  CheckEntry("ListTree::Node::IsLeaf");
  const iterator next = std::next(iter);
  return next == tree->list.end() || next->Level() <= level;
}

template <typename T>
typename ListTree<T>::Node ListTree<T>::Node::Begin() const {
  CheckEntry("ListTree::Node::Begin");
  return Node(*tree, std::next(iter));
}

template <typename T>
typename ListTree<T>::Node ListTree<T>::Node::End() const {
  Node end(*tree, tree->SearchForward(iter, level));
  end.level = level + 1;
  return end;
}

template <typename T>
typename ListTree<T>::Node& ListTree<T>::Node::operator++() {
  iter = tree->SearchForward(iter, level);
  return *this;
}

template <typename T>
typename ListTree<T>::Node ListTree<T>::Node::Child(const T& value) {
  CheckEntry("ListTree::Node::Child");
  std::list<ListTreeData<T>>& unused = tree->spare.entries;
  const ListTreeData<T> made(level + 1, value);
  if (unused.empty()) {
    // A scan over a long list is limited by memory latency, so entries are allocated side by side.
    // Allocated one by one, each entry would lie behind its item.
    const unsigned long several = std::min<unsigned long>(tree->list.size() / 8, 511);
    unused.push_back(made);
    try {
      unused.resize(several + 1, ListTreeData<T>(0, T()));
    } catch (...) {
      // One is enough.
    }
  }
  const iterator entry = unused.begin();
  *entry = made;
  tree->list.splice(tree->SearchForward(iter, level), unused, entry);
  return Node(*tree, entry);
}

#endif
