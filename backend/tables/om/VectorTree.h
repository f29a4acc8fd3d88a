// OmVectorTree, the ordered tree whose records hold their children by value, and its handles Node
// and ConstNode.
//
// All records live in blocks of one region, siblings side by side, so a walk over children is a
// walk over an array. A record is moved as bytes whenever its siblings grow or shift. The operation
// that moved it corrects the links from its children to it; Delete is the one exception. Appending
// costs amortised constant time, and a pass over the grandchildren when a block grows. Every other
// change costs one move of the siblings and one pass over the records below their parent. No
// operation recurses: copying, printing and Counterpart allocate a stack on the ordinary heap and
// release it. Handles are not kept valid: after a change of structure, handles on the siblings
// concerned, and on their children, may refer to other records.

#ifndef BACKEND_TABLES_OM_VECTORTREE_H
#define BACKEND_TABLES_OM_VECTORTREE_H

#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Vector.h"

template <typename T>
class OmVectorTree;

// One record of a tree: a payload, the child records and a link to the record that holds this one.
//
// T must be movable as bytes, like every element of an OmVector. A payload is copied by T's copy
// constructor, which chooses the region. If an operation fails, the record is unchanged.
//
// Invariant: for every child `c`, c.parent == this. Delete of the tree and the plain copy
// constructor leave records that break it, until Relocate restores it.
template <typename T>
class OmVectorTreeData {
 public:
  using Payload = T;

  // Has the payload T(nullptr), to be replaced.
  explicit OmVectorTreeData(OmMemoryRegion* region);
  OmVectorTreeData(const T& data_, OmVectorTreeData* parent_, OmMemoryRegion* region);
  // Copies the record with all records below it, each in the region of its original. The links
  // still lead to the originals, on purpose: addChild moves the copy to its place and relocates it
  // there.
  OmVectorTreeData(const OmVectorTreeData& other);
  // Copies the record with all records below it into `region`, with correct links.
  OmVectorTreeData(const OmVectorTreeData& other, OmVectorTreeData* parent_,
                   OmMemoryRegion* region);
  OmVectorTreeData& operator=(const OmVectorTreeData&) = delete;
  // Destroys the records below, depth first and children in order, then the payload.
  ~OmVectorTreeData();

  [[nodiscard]] T& Data() noexcept { return data; }
  [[nodiscard]] const T& Data() const noexcept { return data; }
  [[nodiscard]] OmVector<OmVectorTreeData>& Children() noexcept { return children; }
  [[nodiscard]] const OmVector<OmVectorTreeData>& Children() const noexcept { return children; }
  [[nodiscard]] OmVectorTreeData* Parent() const noexcept { return parent; }
  void Parent(OmVectorTreeData* p) noexcept { parent = p; }
  [[nodiscard]] unsigned long Size() const noexcept { return children.size(); }
  // Unchecked in a release build.
  [[nodiscard]] OmVectorTreeData& operator[](unsigned int i) { return children[i]; }
  [[nodiscard]] const OmVectorTreeData& operator[](unsigned int i) const { return children[i]; }
  [[nodiscard]] OmMemoryRegion* Region() const noexcept { return children.Region(); }

  // Appends a leaf.
  void Child(const T& data_);
  // Inserts a copy of `child`, with all records below it, in front of the first child whose payload
  // equals *before; at the end if there is none, or if `before` is null.
  void addChild(const OmVectorTreeData& child, const T* before);
  // Sets the links of the children to this record, and with `recursive` those of all records below.
  void Relocate(bool recursive) noexcept;
  // Returns the next record in pre-order below `top`, which is this record or an ancestor; null
  // after the last one. Follows the links up to `top`, and sets those of the children of this
  // record first.
  [[nodiscard]] OmVectorTreeData* Next(const OmVectorTreeData* top) noexcept;

 private:
  friend class OmVectorTree<T>;

  // A record outside any tree. `held` is false after its bytes were moved into a tree: then it is
  // not destroyed here.
  class Loose {
   public:
    Loose() noexcept {}
    Loose(const Loose&) = delete;
    Loose& operator=(const Loose&) = delete;
    ~Loose() {
      if (held) {
        record.~OmVectorTreeData();
      }
    }

    union {
      OmVectorTreeData record;
    };
    bool held = false;
  };

  static void CopyChildren(const OmVectorTreeData& from, OmVectorTreeData& to, bool relink);
  static void MoveBytes(OmVectorTreeData* to, const OmVectorTreeData* from,
                        unsigned long n) noexcept;
  void DestroyBelow() noexcept;
  [[nodiscard]] bool Holds(const OmVectorTreeData* record) const noexcept;
  [[nodiscard]] bool IsAbove(const OmVectorTreeData* record) const;
  [[nodiscard]] unsigned long Index(const OmVectorTreeData* child) const noexcept;
  [[nodiscard]] unsigned long Find(const T& data_, unsigned long n) const;
  void MakeRoom(unsigned long n);
  template <typename... Args>
  OmVectorTreeData* Append(Args&&... args);
  OmVectorTreeData* Adopt(OmVectorTreeData* record) noexcept;
  void CloseGap(OmVectorTreeData* gap) noexcept;
  template <typename Node>
  void CloseGaps(const std::vector<Node*>& nodes) noexcept;
  void MoveWithin(unsigned long from, unsigned long to) noexcept;
  static OmVectorTreeData* Transfer(OmVectorTreeData* record, OmVectorTreeData* to);
  void Dissolve(unsigned long index);
  void SwapWithin(unsigned long a, unsigned long b);

  T data;
  OmVector<OmVectorTreeData> children;
  OmVectorTreeData* parent;
};

// The tree; the object is itself the root record.
//
// An operation that searches for a payload uses the first sibling that is equal. Handles passed in
// must name records of this tree. If an operation fails, the tree is unchanged, except if a
// comparison of payloads throws: then the records concerned may have other positions among their
// siblings. A tree is used by one thread at a time.
template <typename T>
class OmVectorTree : public OmVectorTreeData<T> {
 public:
  template <typename Record>
  class Handle;
  using Node = Handle<OmVectorTreeData<T>>;
  using ConstNode = Handle<const OmVectorTreeData<T>>;

  OmVectorTree(const T& rootData, OmMemoryRegion* region);
  OmVectorTree(const OmVectorTree&) = delete;
  OmVectorTree& operator=(const OmVectorTree&) = delete;

  [[nodiscard]] Node Root() noexcept { return Node(this, 0); }
  [[nodiscard]] ConstNode Root() const noexcept { return ConstNode(this, 0); }

  // Appends a leaf and returns its handle.
  Node Child(const Node& parent_, const T& data_);
  // Destroys a record other than the root, with all records below it. The siblings that move into
  // the gap are not relocated, on purpose: a caller that deletes several siblings relocates once.
  // Until it calls Relocate(true) on the parent, the children of these siblings have links to the
  // old places, and an operation that reads the parent of such a child works on the wrong record; a
  // hardened build ends the process then. Afterwards `node` is the next sibling.
  void Delete(Node& node);
  // Moves a record in front of the first child of before->Parent() that equals *before. If `before`
  // is null, to the end of the children of *newParent, or of its own parent if that is null too. If
  // `before` is the record itself, to the end. The new parent must not be the record or below it.
  void moveChild(Node& node, Node* before, Node* newParent);
  // Exchanges the positions of two siblings. Records of different parents stay with their parents,
  // on purpose: each moves in front of the first child of its own parent that equals the sibling
  // after the other record; usually there is none, and it moves to the end. Neither record may be
  // below the other.
  void swapChildren(Node& a, Node& b);
  // Adds a leaf in front of `sibling`, or after it if `before` is false. If `sibling` is the end of
  // the children, appends.
  void InsertChild(const T& data_, Node sibling, Node parent_, bool before);
  // Puts `nodes`, siblings in ascending order, under a new record at the place of the first.
  void InsertChild(const T& data_, std::vector<Node*> nodes);
  // Replaces a record by its children and destroys it. Does nothing for the root, and if the record
  // or the first sibling that equals it is a leaf. Afterwards `node` is the sibling that followed
  // the record.
  void removeChild(Node& node);
};

// A record and its depth: 0 for the root, one more than the parent's otherwise. Records do not
// store their depth; only the handle does. ConstNode is the handle on a record that is only read.
//
// A handle owns nothing and checks nothing in a release build. It is valid until a sibling of its
// record is added, moved or removed. The handle past the last child of a record equals the End() of
// that record.
template <typename T>
template <typename Record>
class OmVectorTree<T>::Handle {
 public:
  using Payload = std::conditional_t<std::is_const_v<Record>, const T, T>;

  // Names no record.
  Handle() noexcept : record(nullptr), level(0) {}
  Handle(Record* record_, unsigned int level_) noexcept : record(record_), level(level_) {}
  // A Node is a ConstNode.
  template <typename Other>
  requires std::is_same_v<const Other, Record> &&
      (!std::is_same_v<Other, Record>)Handle(const Handle<Other>& other) noexcept
      : record(other.record), level(other.level) {}

  [[nodiscard]] Payload& operator*() const {
    OM_HARDEN(record != nullptr, "OmVectorTree::Node::operator*");
    return record->Data();
  }
  [[nodiscard]] Payload* operator->() const { return &**this; }
  // Ignores the depth.
  [[nodiscard]] bool operator==(const Handle& other) const noexcept {
    return record == other.record;
  }
  // Returns the number of siblings from `other` to this one. With Begin() of the parent as `other`,
  // this is the position.
  [[nodiscard]] unsigned int operator-(const Handle& other) const noexcept {
    return static_cast<unsigned int>(record - other.record);
  }
  [[nodiscard]] unsigned int Count() const noexcept {
    return static_cast<unsigned int>(record->Size());
  }
  [[nodiscard]] bool HasChild() const noexcept { return record->Size() != 0; }
  [[nodiscard]] bool IsLeaf() const noexcept { return !HasChild(); }
  // Tests the depth, not the link to the parent.
  [[nodiscard]] bool IsRoot() const noexcept { return level == 0; }
  [[nodiscard]] unsigned int Level() const noexcept { return level; }
  // Returns the position of the first child that equals `data`, or -1.
  [[nodiscard]] int findIdx(const T& data) const {
    const unsigned long index = record->Find(data, record->Size());
    return index != record->Size() ? static_cast<int>(index) : -1;
  }

  [[nodiscard]] Handle Begin() const noexcept {
    return Handle(record->Children().begin(), level + 1);
  }
  [[nodiscard]] Handle End() const noexcept { return Handle(record->Children().end(), level + 1); }
  [[nodiscard]] Handle Back() const { return (*this)[record->Size() - 1]; }
  [[nodiscard]] Handle operator[](unsigned long i) const {
    return Handle(&record->Children()[i], level + 1);
  }
  [[nodiscard]] Handle Parent() const {
    OM_HARDEN(record->Parent() != nullptr, "OmVectorTree::Node::Parent");
    return Handle(record->Parent(), level - 1);
  }
  // Returns the first child that equals `data`, or End().
  [[nodiscard]] Handle find(const T& data) const {
    return Handle(record->Children().begin() + record->Find(data, record->Size()), level + 1);
  }
  // Returns the record of `other` at the same path of child positions, which must exist there. Ends
  // the process if this record is not one of its parent's children.
  [[nodiscard]] Handle Counterpart(OmVectorTree& other) const requires(!std::is_const_v<Record>);

  Handle& operator++() noexcept {
    ++record;
    return *this;
  }
  Handle operator++(int) noexcept { return Handle(record++, level); }
  Handle& operator--() noexcept {
    --record;
    return *this;
  }
  Handle operator--(int) noexcept { return Handle(record--, level); }
  // Sets the depth of this handle to one more than its parent's depth. Other handles do not change,
  // and no operation of the tree depends on this.
  void Renumber() noexcept {
    if (!IsRoot()) {
      level = Parent().level + 1;
    }
  }

  // Writes the record and all records below it, a line each, in pre-order, to the standard output.
  void Print() const requires requires(const T& data, unsigned int depth) { data.Print(depth); }
  {
    std::vector<Handle> todo{*this};
    while (!todo.empty()) {
      const Handle node = todo.back();
      todo.pop_back();
      node->Print(node.level);
      for (Handle child = node.End(); child != node.Begin();) {
        todo.push_back(--child);
      }
    }
  }

  Record* record;
  unsigned int level;
};

template <typename T>
OmVectorTreeData<T>::OmVectorTreeData(OmMemoryRegion* region)
    : data(nullptr), children(region), parent(nullptr) {}

template <typename T>
OmVectorTreeData<T>::OmVectorTreeData(const T& data_, OmVectorTreeData* parent_,
                                      OmMemoryRegion* region)
    : data(data_), children(region), parent(parent_) {}

// If one of these two copies throws, the destructor destroys what it has copied so far: the object
// counts as constructed when the delegated constructor has returned.
template <typename T>
OmVectorTreeData<T>::OmVectorTreeData(const OmVectorTreeData& other)
    : OmVectorTreeData(other.data, other.parent, other.Region()) {
  CopyChildren(other, *this, false);
}

template <typename T>
OmVectorTreeData<T>::OmVectorTreeData(const OmVectorTreeData& other, OmVectorTreeData* parent_,
                                      OmMemoryRegion* region)
    : OmVectorTreeData(other.data, parent_, region) {
  CopyChildren(other, *this, true);
}

template <typename T>
OmVectorTreeData<T>::~OmVectorTreeData() {
  if (Size() != 0) {
    DestroyBelow();
  }
}

// Copies the records below `from` to below `to`, which has none. With `relink` the copies are in
// the region of `to` and have correct links; otherwise they have the regions and links of the
// originals. Exactly the needed room is reserved, so no record moves while those below it are
// copied.
template <typename T>
void OmVectorTreeData<T>::CopyChildren(const OmVectorTreeData& from, OmVectorTreeData& to,
                                       bool relink) {
  if (from.Size() == 0) {
    return;
  }
  // Records whose children are still to be copied, with their copies.
  std::vector<std::pair<const OmVectorTreeData*, OmVectorTreeData*>> todo{{&from, &to}};
  while (!todo.empty()) {
    const auto [source, copy] = todo.back();
    todo.pop_back();
    copy->children.reserve(source->Size());
    for (const OmVectorTreeData& child : source->children) {
      copy->children.Emplace(child.data, relink ? copy : child.parent,
                             relink ? to.Region() : child.Region());
      if (child.Size() != 0) {
        todo.push_back({&child, &copy->children.back()});
      }
    }
  }
}

template <typename T>
void OmVectorTreeData<T>::MoveBytes(OmVectorTreeData* to, const OmVectorTreeData* from,
                                    unsigned long n) noexcept {
  if (n != 0) {
    std::memmove(static_cast<void*>(to), from, n * sizeof(OmVectorTreeData));
  }
}

// Destroys in the order of the plain recursion, without a stack: it returns to a parent by the
// link, which it sets on the way down because Delete may have left it wrong.
template <typename T>
void OmVectorTreeData<T>::DestroyBelow() noexcept {
  OmVectorTreeData* above = this;
  OmVectorTreeData* next = children.begin();
  for (;;) {
    if (next == above->children.end()) {
      // All children are destroyed. With none left, the destructor of `above` does not call this
      // function.
      above->children.last = above->children.first;
      if (above == this) {
        return;
      }
      next = above;
      above = next->parent;
    } else if (next->Size() != 0) {
      next->parent = above;
      above = next;
      next = above->children.begin();
      continue;
    }
    next->~OmVectorTreeData();
    ++next;
  }
}

template <typename T>
bool OmVectorTreeData<T>::Holds(const OmVectorTreeData* record) const noexcept {
  return children.begin() <= record && record < children.end();
}

// Whether `record` is this record or below it. Searches downwards, because links may be stale, and
// allocates a stack, because trees may be deep: so call it before anything is changed.
template <typename T>
bool OmVectorTreeData<T>::IsAbove(const OmVectorTreeData* record) const {
  std::vector<const OmVectorTreeData*> todo{this};
  while (record != this && !todo.empty()) {
    const OmVectorTreeData* const above = todo.back();
    todo.pop_back();
    if (above->Holds(record)) {
      return true;
    }
    for (const OmVectorTreeData& child : above->children) {
      if (child.Size() != 0) {
        todo.push_back(&child);
      }
    }
  }
  return record == this;
}

template <typename T>
unsigned long OmVectorTreeData<T>::Index(const OmVectorTreeData* child) const noexcept {
  return static_cast<unsigned long>(child - children.begin());
}

// Returns the position of the first of the first `n` children that equals `data_`, or `n`.
template <typename T>
unsigned long OmVectorTreeData<T>::Find(const T& data_, unsigned long n) const {
  unsigned long index = 0;
  while (index != n && !(children[index].data == data_)) {
    ++index;
  }
  return index;
}

// Reserves room for `n` more children, so that adding them cannot fail.
template <typename T>
void OmVectorTreeData<T>::MakeRoom(unsigned long n) {
  if (children.capacity() - Size() >= n) {
    return;
  }
  children.reserve(children.NextSize(Size() + n - 1));
  for (OmVectorTreeData& child : children) {
    child.Relocate(false);
  }
}

// Appends a record constructed from `args`, which may refer to records of this tree.
template <typename T>
template <typename... Args>
OmVectorTreeData<T>* OmVectorTreeData<T>::Append(Args&&... args) {
  const OmVectorTreeData* const begin = children.begin();
  OmVectorTreeData* const record = children.Emplace(std::forward<Args>(args)...);
  if (children.begin() != begin) {
    // The children moved, so the links to them are stale. Their own links are correct, because this
    // record did not move.
    for (OmVectorTreeData& child : children) {
      child.Relocate(false);
    }
  }
  return record;
}

// Moves the bytes of a record to the end of the children. There must be room.
template <typename T>
OmVectorTreeData<T>* OmVectorTreeData<T>::Adopt(OmVectorTreeData* record) noexcept {
  OmVectorTreeData* const child = children.last++;
  MoveBytes(child, record, 1);
  child->parent = this;
  child->Relocate(false);
  return child;
}

// Closes the gap of a child whose bytes were moved away.
template <typename T>
void OmVectorTreeData<T>::CloseGap(OmVectorTreeData* gap) noexcept {
  MoveBytes(gap, gap + 1, static_cast<unsigned long>(children.end() - (gap + 1)));
  --children.last;
  for (OmVectorTreeData* child = gap; child != children.end(); ++child) {
    child->Relocate(false);
  }
}

// Closes the gaps of children whose bytes were moved away, in one pass. `nodes` is ascending; a
// child moves forward by the number of gaps before it.
template <typename T>
template <typename Node>
void OmVectorTreeData<T>::CloseGaps(const std::vector<Node*>& nodes) noexcept {
  OmVectorTreeData* place = nodes.front()->record;
  for (unsigned long i = 0; i != nodes.size(); ++i) {
    const OmVectorTreeData* const from = nodes[i]->record + 1;
    const OmVectorTreeData* const to =
        i + 1 != nodes.size() ? nodes[i + 1]->record : children.end();
    const auto n = static_cast<unsigned long>(to - from);
    MoveBytes(place, from, n);
    place += n;
  }
  children.last = place;
  for (OmVectorTreeData* child = nodes.front()->record; child != place; ++child) {
    child->Relocate(false);
  }
}

// Moves the child at `from` to `to`; those between move by one.
template <typename T>
void OmVectorTreeData<T>::MoveWithin(unsigned long from, unsigned long to) noexcept {
  if (from == to) {
    return;
  }
  OmVectorTreeData* const child = children.begin();
  alignas(OmVectorTreeData) unsigned char bytes[sizeof(OmVectorTreeData)];
  std::memcpy(bytes, child + from, sizeof(bytes));
  if (from < to) {
    MoveBytes(child + from, child + from + 1, to - from);
  } else {
    MoveBytes(child + to + 1, child + to, from - to);
  }
  std::memcpy(static_cast<void*>(child + to), bytes, sizeof(bytes));
  for (unsigned long i = from < to ? from : to; i <= (from < to ? to : from); ++i) {
    child[i].Relocate(false);
  }
}

// Moves a record to the end of the children of `to`, which is not its parent, and returns its new
// address. The old parent may be a child of `to` or the reverse, so either may move: the parents
// are read from the links, which are correct after each step.
template <typename T>
OmVectorTreeData<T>* OmVectorTreeData<T>::Transfer(OmVectorTreeData* record, OmVectorTreeData* to) {
  to->MakeRoom(1);
  OmVectorTreeData* const from = record->parent;
  OmVectorTreeData* const place = to->Adopt(record);
  from->CloseGap(record);
  from->Relocate(true);
  return place;
}

// Replaces the child at `index` by its own children, of which there is at least one.
template <typename T>
void OmVectorTreeData<T>::Dissolve(unsigned long index) {
  const unsigned long count = children[index].Size();
  MakeRoom(count);  // before anything is moved
  OmVectorTreeData* const place = children.begin() + index;
  Loose group;
  MoveBytes(&group.record, place, 1);
  group.held = true;
  MoveBytes(place + count, place + 1, Size() - index - 1);
  MoveBytes(place, group.record.children.begin(), count);
  group.record.children.last = group.record.children.first;
  children.last += count - 1;
}

// Exchanges two children: each moves in front of the first child that equals the sibling after the
// other one. With equal siblings this may be an earlier one, as in every search of the tree.
template <typename T>
void OmVectorTreeData<T>::SwapWithin(unsigned long a, unsigned long b) {
  const unsigned long rest = Size() - 2;
  // The position of the child that follows `i`, counted without `a` and `b`.
  const auto following = [a, b](unsigned long i, unsigned long other) {
    const unsigned long next = i + 1 != other ? i + 1 : i + 2;
    return next - (a < next ? 1 : 0) - (b < next ? 1 : 0);
  };
  const unsigned long afterA = following(a, b);
  unsigned long afterB = following(b, a);

  // Move both to the end, in the order in which they are inserted again.
  const bool bFirst = b == a + 1;
  const unsigned long one = bFirst ? b : a;
  const unsigned long two = bFirst ? a : b;
  MoveWithin(one, rest + 1);
  MoveWithin(one < two ? two - 1 : two, rest + 1);

  const unsigned long placeOne = afterB != rest ? Find(children[afterB].data, rest) : rest;
  MoveWithin(rest, placeOne);
  if (afterA == rest) {
    return;  // no sibling followed `a`, so the second record stays at the end
  }
  const unsigned long sibling = afterA < placeOne ? afterA : afterA + 1;
  MoveWithin(rest + 1, Find(children[sibling].data, rest + 1));
}

template <typename T>
void OmVectorTreeData<T>::Child(const T& data_) {
  Append(data_, this, Region());
}

template <typename T>
void OmVectorTreeData<T>::addChild(const OmVectorTreeData& child, const T* before) {
  const unsigned long place = before != nullptr ? Find(*before, Size()) : Size();
  OmVectorTreeData* const copy = Append(child);
  copy->parent = this;
  copy->Relocate(true);
  MoveWithin(Size() - 1, place);
}

template <typename T>
void OmVectorTreeData<T>::Relocate(bool recursive) noexcept {
  for (OmVectorTreeData& child : children) {
    child.parent = this;
  }
  for (OmVectorTreeData* record = recursive ? Next(this) : nullptr; record != nullptr;
       record = record->Next(this)) {
  }
}

template <typename T>
OmVectorTreeData<T>* OmVectorTreeData<T>::Next(const OmVectorTreeData* top) noexcept {
  Relocate(false);
  if (Size() != 0) {
    return children.begin();
  }
  OmVectorTreeData* record = this;
  while (record != top && record + 1 == record->parent->children.end()) {
    record = record->parent;
  }
  return record != top ? record + 1 : nullptr;
}

template <typename T>
OmVectorTree<T>::OmVectorTree(const T& rootData, OmMemoryRegion* region)
    : OmVectorTreeData<T>(rootData, nullptr, region) {
  static_assert(std::is_copy_constructible_v<T>, "a record holds a copy of its payload");
}

template <typename T>
typename OmVectorTree<T>::Node OmVectorTree<T>::Child(const Node& parent_, const T& data_) {
  parent_.record->Child(data_);
  return parent_.Back();
}

template <typename T>
void OmVectorTree<T>::Delete(Node& node) {
  OmVectorTreeData<T>* const above = node.Parent().record;
  OM_HARDEN(this->IsAbove(above), "OmVectorTree::Delete");  // fails if Relocate was not called
  OM_HARDEN(above->Holds(node.record), "OmVectorTree::Delete");
  above->children.erase(node.record);
}

template <typename T>
void OmVectorTree<T>::moveChild(Node& node, Node* before, Node* newParent) {
  OmVectorTreeData<T>* const from = node.Parent().record;
  OmVectorTreeData<T>* to = from;
  if (before != nullptr) {
    to = before->Parent().record;
  } else if (newParent != nullptr) {
    to = newParent->record;
  }
  OM_HARDEN(this->IsAbove(from) && this->IsAbove(to), "OmVectorTree::moveChild");
  OM_HARDEN(from->Holds(node.record), "OmVectorTree::moveChild");
  OM_HARDEN(before == nullptr || to->Holds(before->record), "OmVectorTree::moveChild");
  OM_HARDEN(!node.record->IsAbove(to), "OmVectorTree::moveChild");

  // The position of *before, which stays valid when the records move.
  unsigned long sibling = before != nullptr ? to->Index(before->record) : 0;
  unsigned long last = to->Size();
  if (to == from) {
    --last;
    const unsigned long index = from->Index(node.record);
    from->MoveWithin(index, last);
    if (index == sibling) {
      sibling = last;
    } else if (index < sibling) {
      --sibling;
    }
  } else {
    to = OmVectorTreeData<T>::Transfer(node.record, to)->parent;
  }
  if (before != nullptr) {
    to->MoveWithin(last, to->Find(to->children[sibling].data, last));
  }
  to->Relocate(true);
}

template <typename T>
void OmVectorTree<T>::swapChildren(Node& a, Node& b) {
  OmVectorTreeData<T>* const parentA = a.Parent().record;
  OmVectorTreeData<T>* const parentB = b.Parent().record;
  OM_HARDEN(this->IsAbove(parentA) && this->IsAbove(parentB), "OmVectorTree::swapChildren");
  OM_HARDEN(parentA->Holds(a.record) && parentB->Holds(b.record), "OmVectorTree::swapChildren");
  if (a == b) {
    return;
  }
  OM_HARDEN(!a.record->IsAbove(b.record) && !b.record->IsAbove(a.record),
            "OmVectorTree::swapChildren");
  const unsigned long indexA = parentA->Index(a.record);
  const unsigned long indexB = parentB->Index(b.record);
  if (parentA == parentB) {
    parentA->SwapWithin(indexA, indexB);
    parentA->Relocate(true);
    return;
  }

  // One parent may be a child of the other and move with it. The blocks of their children do not
  // move, and the links in them lead to the parents. They are set here first, because Delete may
  // have left them wrong.
  parentA->Relocate(false);
  parentB->Relocate(false);
  OmVectorTreeData<T>* const besideA = parentA->children.begin();
  OmVectorTreeData<T>* const besideB = parentB->children.begin();
  const unsigned long lastA = parentA->Size() - 1;
  const unsigned long lastB = parentB->Size() - 1;
  besideA->parent->MoveWithin(indexA, lastA);
  besideB->parent->MoveWithin(indexB, lastB);
  // At the old positions of the records are now the siblings that followed them.
  const unsigned long placeA =
      indexB != lastB ? besideA->parent->Find(besideB[indexB].data, lastA) : lastA;
  const unsigned long placeB =
      indexA != lastA ? besideB->parent->Find(besideA[indexA].data, lastB) : lastB;
  besideA->parent->MoveWithin(lastA, placeA);
  besideB->parent->MoveWithin(lastB, placeB);
  besideA->parent->Relocate(true);
  besideB->parent->Relocate(true);
}

template <typename T>
void OmVectorTree<T>::InsertChild(const T& data_, Node sibling, Node parent_, bool before) {
  OmVectorTreeData<T>* const record = parent_.record;
  if (!before && sibling != parent_.End()) {
    ++sibling;
  }
  const unsigned long last = record->Size();
  OM_HARDEN(sibling == parent_.End() || record->Holds(sibling.record), "OmVectorTree::InsertChild");
  const unsigned long place = sibling != parent_.End() ? record->Find(*sibling, last) : last;
  record->Append(data_, record, this->Region());
  record->MoveWithin(last, place);
  record->Relocate(true);
}

template <typename T>
void OmVectorTree<T>::InsertChild(const T& data_, std::vector<Node*> nodes) {
  if (nodes.empty()) {
    return;
  }
  OmVectorTreeData<T>* const above = nodes.front()->Parent().record;
  OM_HARDEN(this->IsAbove(above), "OmVectorTree::InsertChild");
  // Everything that can fail comes first.
  typename OmVectorTreeData<T>::Loose group;
  new (&group.record) OmVectorTreeData<T>(data_, above, this->Region());
  group.held = true;
  group.record.children.reserve(nodes.size());

  const unsigned long place = above->Index(nodes.front()->record);
  for (unsigned long i = 0; i != nodes.size(); ++i) {
    OM_HARDEN(above->Holds(nodes[i]->record), "OmVectorTree::InsertChild");
    OM_HARDEN(i == 0 || nodes[i - 1]->record < nodes[i]->record, "OmVectorTree::InsertChild");
    group.record.Adopt(nodes[i]->record);
  }
  above->CloseGaps(nodes);
  // The closed gaps leave room for the group.
  const unsigned long last = above->Size();
  above->Adopt(&group.record);
  group.held = false;
  above->MoveWithin(last, place != last ? above->Find(above->children[place].data, last) : last);
  above->Relocate(true);
}

template <typename T>
void OmVectorTree<T>::removeChild(Node& node) {
  if (node.IsRoot() || node.IsLeaf()) {
    return;
  }
  const Node above = node.Parent();
  OM_HARDEN(this->IsAbove(above.record), "OmVectorTree::removeChild");
  const int index = above.findIdx(*node);
  if (index < 0) {
    return;
  }
  const Node group = above[static_cast<unsigned long>(index)];
  const unsigned long count = group.Count();
  if (count == 0) {
    return;
  }
  above.record->Dissolve(static_cast<unsigned long>(index));
  above.record->Relocate(true);
  node = Node(above.record->children.begin() + index + count, node.level);
}

template <typename T>
template <typename Record>
typename OmVectorTree<T>::template Handle<Record> OmVectorTree<T>::Handle<Record>::Counterpart(
    OmVectorTree& other) const requires(!std::is_const_v<Record>) {
  std::vector<unsigned long> path;
  for (Handle node = *this; !node.IsRoot(); node = node.Parent()) {
    const Handle parent = node.Parent();
    const auto offset = static_cast<unsigned long>(node.record - parent.record->Children().begin());
    OM_ASSERT(offset < parent.record->Size(), "0 <= offset && offset < vec.size()",
              "backend/tables/om/VectorTree", 384, "Counterpart");
    path.push_back(offset);
  }
  Handle found = other.Root();
  for (auto offset = path.rbegin(); offset != path.rend(); ++offset) {
    found = found[*offset];
  }
  return found;
}

#endif
