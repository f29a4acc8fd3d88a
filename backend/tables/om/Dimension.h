// OmDimension, one dimension of a pivot table: the tree of its categories and groups.
//
// The root carries the dimension's name, inner records are groups, leaves are categories. A
// category's subscript is its place in cell addresses. Finding a child costs a binary search in its
// parent's index, adding one moves part of that index. Only Child, AddNewChild and Delete touch the
// indexes; who searches after other changes rebuilds the indexes or takes them as they are.

#ifndef BACKEND_TABLES_OM_DIMENSION_H
#define BACKEND_TABLES_OM_DIMENSION_H

#include <vector>

#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/VectorTree.h"

// A dimension keeps all that it holds in one region, which has to outlive it. Where a call fails,
// the dimension is as it was. Handles are those of the tree, and every change of structure may
// invalidate them. Labels that others take their tracker from must be there.
class OM_API OmDimension : public OmVectorTree<OmDimensionNode> {
 public:
  // Orders positions of children by their payloads, with -1 for a probe. A position that names no
  // child, as one in an outdated index may, comes after all others.
  class Less {
   public:
    // Keeps references to both, so neither may be a temporary. A Node is one here: it would be
    // turned into a ConstNode first.
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
  // Copies the whole tree into `region`. No label of the copy is tied to a tracker.
  OmDimension(const OmDimension& other, OmMemoryRegion* region);
  OmDimension(const OmDimension&) = delete;
  OmDimension& operator=(const OmDimension&) = delete;
  ~OmDimension() = default;

  // The size of cell addresses along this dimension: the categories that were added, or after
  // Delete one more than the largest subscript that is left.
  [[nodiscard]] unsigned int NumCategories() const noexcept { return numCategories; }
  // The label of the root.
  [[nodiscard]] OmCellText* Name() noexcept { return Data().Text(); }
  [[nodiscard]] const OmCellText* Name() const noexcept { return Data().Text(); }
  // Returns how often records were added, moved or deleted through this class, or might have been
  // where a call failed. Whoever keeps handles can tell by it that they are no longer good. What
  // goes past this class, to the base class or to a record, does not count.
  [[nodiscard]] unsigned long Changes() const noexcept { return changes; }
  // Returns the position of the child with that label and group flag, or -1.
  [[nodiscard]] int FindChild(ConstNode parent_, const OmCellText& text, bool group) const;
  // Returns the largest depth at or below `node`.
  [[nodiscard]] unsigned int getDepth(ConstNode node) const;
  // Returns the number of levels, the root's included.
  [[nodiscard]] unsigned int getMaximumDepth() const;
  // Adds to counts[depth], for every record below `node`: its visible groups, and at most one leaf
  // of each parent; a hidden group without children counts as a leaf. `counts` needs an entry a
  // level.
  void getGroupCountsByLevel(ConstNode node, std::vector<unsigned long>& counts) const;
  // Returns the largest such count of any level.
  [[nodiscard]] unsigned long getMaxVisibleGroupCount() const;

  // Returns the record at the same path as `node` of a dimension of the same shape.
  [[nodiscard]] Node Counterpart(Node& node);

  // Returns the child with the label and group flag of `node`, and appends a copy of `node` where
  // there is none; the subscript of a child that is there stays. A copy has no index and its
  // parent's tracker. Throws OMSException where `parent_` is not a group.
  Node Child(const Node& parent_, const OmDimensionNode& node);
  Node Child(const Node& parent_, const OmCellText& text, unsigned long subscript, bool group);
  // Appends a child without a search, at the end of the index too, and to any parent.
  Node AddNewChild(const Node& parent_, const OmCellText& text, unsigned long subscript,
                   bool group);
  // Destroys a record with all below it. Does not relocate, like the tree's Delete: call
  // Relocate(true) after it, before anything else below this parent is changed and before handles
  // are taken for that. Where the parent's index is not in the order of insertion, the entry that
  // goes is not the one of the record, on purpose. NumCategories() becomes 1 where no category is
  // left, on purpose too. Cells stay where they are.
  void Delete(Node& node);
  // Adds a category in front of `sibling` or after it, with one more than the largest subscript of
  // the categories below groups: records below a category do not count, of each subscript the low
  // 32 bits do, and one more than the largest of these is 0. The first one of a dimension gets 1,
  // on purpose. The copy that is returned lives in the region of the dimension, and must not
  // outlive it. Neither this nor what follows here changes an index: what Child and FindChild look
  // for afterwards they may not find, or find elsewhere.
  OmDimensionNode insertCategory(const OmCellText& text, Node sibling, Node parent_, bool before);
  // Puts `nodes`, siblings in ascending order, under a new group.
  void insertChild(const OmCellText& text, std::vector<Node*> nodes);
  // Puts the children of a group in its place. Its subscript becomes -2, by which it is found among
  // equal siblings; also where there is nothing to dissolve.
  void removeChild(Node& node);
  // Exchanges `node` and `target`, or moves `node` in front of `target`; without `target` to the
  // end of the children of its nearest visible ancestor, or of the root.
  void moveChild(Node& node, Node* target, bool swap);
  // The tree's own, counted; an inserted record is copied into the dimension's region.
  void swapChildren(Node& a, Node& b);
  void InsertChild(const OmDimensionNode& node, Node sibling, Node parent_, bool before);
  void InsertChild(const OmDimensionNode& node, std::vector<Node*> nodes);

 private:
  void CloneBelow(const ConstNode& source);
  [[nodiscard]] static unsigned int MaxSubscript(const ConstNode& node, const ConstNode& left);
  Node Append(const Node& parent_, OmDimensionNode& node, unsigned long place);

  unsigned int numCategories = 0;
  [[maybe_unused]] bool reservedFlag = false;  // not copied, and read by nobody
  unsigned long changes = 0;                   // not copied
};

#endif
