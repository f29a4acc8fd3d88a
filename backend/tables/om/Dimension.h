// OmDimension, one dimension of a pivot table: the tree of its categories and groups.
//
// The root carries the dimension's name, inner records are groups, leaves are categories. A
// category's subscript is its number in cell addresses. Finding a child costs a binary search in
// its parent's index, adding one moves part of that index. Only Child, AddNewChild and Delete
// update the indexes: after any other change a search may give a wrong result unless the caller
// rebuilds them.

#ifndef BACKEND_TABLES_OM_DIMENSION_H
#define BACKEND_TABLES_OM_DIMENSION_H

#include <vector>

#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/VectorTree.h"

// A dimension allocates everything in one region, which has to outlive it. If a call fails, the
// dimension is unchanged. Handles are those of the tree, and every change of structure may
// invalidate them. If a new label copies its tracker from another label, that label must not be
// null.
class OM_API OmDimension : public OmVectorTree<OmDimensionNode> {
 public:
  // Orders positions of children by their payloads; -1 stands for a probe. A position without a
  // child, possible in an outdated index, comes after all others.
  class Less {
   public:
    // Keeps references to both, so neither may be a temporary. A Node would be one, because it is
    // converted to a ConstNode.
    Less(const ConstNode& parent_, const OmDimensionNode& probe_) noexcept
        : parent(parent_), probe(probe_) {}
    Less(const ConstNode&& parent_, const OmDimensionNode& probe_) = delete;
    Less(const ConstNode& parent_, const OmDimensionNode&& probe_) = delete;
    Less(const ConstNode&& parent_, const OmDimensionNode&& probe_) = delete;
    [[nodiscard]] bool operator()(int i, int j) const;

   private:
    const ConstNode& parent;
    const OmDimensionNode& probe;
  };

  // Copies `root` into `region`. It has to be a group for Child to accept categories below it.
  OmDimension(const OmDimensionNode& root, OmMemoryRegion* region);
  // Copies the tree into `region`. No label of the copy is tied to a tracker.
  OmDimension(const OmDimension& other, OmMemoryRegion* region);
  OmDimension(const OmDimension&) = delete;
  OmDimension& operator=(const OmDimension&) = delete;
  ~OmDimension() = default;

  // The size of this dimension in cell addresses: the number of categories added or, after Delete,
  // one more than the largest subscript left.
  [[nodiscard]] unsigned int NumCategories() const noexcept { return numCategories; }
  // The label of the root.
  [[nodiscard]] OmCellText* Name() noexcept { return Data().Text(); }
  [[nodiscard]] const OmCellText* Name() const noexcept { return Data().Text(); }
  // Returns the number of calls of this class that added, moved or deleted records, failed calls
  // included. If it has changed, older handles may be invalid. Changes made through the base class
  // or a record are not counted.
  [[nodiscard]] unsigned long Changes() const noexcept { return changes; }
  // Returns the position of the child with that label and group flag, or -1.
  [[nodiscard]] int FindChild(ConstNode parent_, const OmCellText& text, bool group) const;
  // Returns the largest depth at or below `node`.
  [[nodiscard]] unsigned int getDepth(ConstNode node) const;
  // Returns the number of levels, the root's included.
  [[nodiscard]] unsigned int getMaximumDepth() const;
  // Adds to counts[depth] the visible groups below `node` at that depth, and at most one leaf of
  // each parent; a hidden group without children counts as a leaf. `counts` needs an entry for each
  // level.
  void getGroupCountsByLevel(ConstNode node, std::vector<unsigned long>& counts) const;
  // Returns the largest such count of any level.
  [[nodiscard]] unsigned long getMaxVisibleGroupCount() const;

  // Returns the record of this dimension at the same path as `node`, a record of a dimension of the
  // same shape.
  [[nodiscard]] Node Counterpart(Node& node);

  // Returns the child with the label and group flag of `node`; if there is none, appends a copy of
  // `node`. An existing child keeps its subscript. A copy has no index, and its label has the
  // tracker of its parent's label. Throws OMSException if `parent_` is not a group.
  Node Child(const Node& parent_, const OmDimensionNode& node);
  Node Child(const Node& parent_, const OmCellText& text, unsigned long subscript, bool group);
  // Appends a child without a search, also at the end of the index. `parent_` need not be a group.
  Node AddNewChild(const Node& parent_, const OmCellText& text, unsigned long subscript,
                   bool group);
  // Destroys a record with all records below it. Does not relocate, like the tree's Delete: call
  // Relocate(true) on the parent before anything else below it is changed, and before handles for
  // that are made. If the parent's index is not in the order of insertion, the wrong entry is
  // removed from it, on purpose: existing callers depend on the resulting order. If no category is
  // left, NumCategories() becomes 1, on purpose too. Cells are not moved.
  void Delete(Node& node);
  // Adds a category in front of `sibling`, or after it if `before` is false. Its subscript is one
  // more than the largest so far, computed in 32 bits with wrap-around; records below a category
  // are not counted. The first category of a dimension gets 1, on purpose: the search returns 0 if
  // there is none. The returned copy is in the region of the dimension, and must not outlive it.
  // Neither this function nor those below update an index: afterwards Child and FindChild may miss
  // a child or find another.
  OmDimensionNode insertCategory(const OmCellText& text, Node sibling, Node parent_, bool before);
  // Puts `nodes`, siblings in ascending order, under a new group.
  void insertChild(const OmCellText& text, std::vector<Node*> nodes);
  // Replaces a group by its children. First sets its subscript to -2, to find it among equal
  // siblings; it keeps -2 if nothing is replaced (the root, or a group without children).
  void removeChild(Node& node);
  // With `swap` exchanges `node` and `target`, otherwise moves `node` in front of `target`. If
  // `target` is null, moves it to the end of the children of its nearest visible ancestor, or of
  // the root.
  void moveChild(Node& node, Node* target, bool swap);
  // The operations of the tree, counted in Changes(). An inserted record is copied into the region
  // of the dimension.
  void swapChildren(Node& a, Node& b);
  void InsertChild(const OmDimensionNode& node, Node sibling, Node parent_, bool before);
  void InsertChild(const OmDimensionNode& node, std::vector<Node*> nodes);

 private:
  void CloneBelow(const ConstNode& source);
  [[nodiscard]] static unsigned int MaxSubscript(const ConstNode& node, const ConstNode& left);
  Node Append(const Node& parent_, OmDimensionNode& node, unsigned long place);

  unsigned int numCategories = 0;
  [[maybe_unused]] bool reservedFlag = false;  // not copied; nothing reads it
  unsigned long changes = 0;                   // not copied
};

#endif
