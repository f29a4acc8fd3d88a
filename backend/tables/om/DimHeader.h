// OmDimHeader, the flattened form of one dimension that the display headings read: its categories
// in display order, the nodes above each, and the position of each subscript.
//
// A header needs a path of nodes per category, and 4 bytes for each number up to the largest
// subscript. The nodes point into the dimension, so the header is valid until the structure of the
// dimension changes.

#ifndef BACKEND_TABLES_OM_DIMHEADER_H
#define BACKEND_TABLES_OM_DIMHEADER_H

#include <deque>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"
#include "backend/tables/om/VectorTree.h"

// Built once and only read afterwards; owned by the layer heading.
//
// Display order is the order of the tree, whatever the subscripts. nodePaths, visibleLevels and
// leafSubscripts have one entry per leaf. leafPositions[leafSubscripts[p]] == p, with two
// exceptions: if several leaves have the same subscript, the position is that of the last one, and
// a leaf whose subscript is negative as an int has no entry in leafPositions.
class OM_API OmDimHeader : public OmRegionManaged {
 public:
  using ConstNode = OmVectorTree<OmDimensionNode>::ConstNode;
  // A leaf and its ancestors, leaf first, root last.
  using Path = OmVector<ConstNode>;

  // The largest subscript that every header accepts. A header of n categories accepts subscripts up
  // to 4 n if that is more.
  static constexpr unsigned long kLargestSubscript = 1UL << 28;

  // Throws OMSException with the subscript and the limit if a category has a subscript above the
  // limit, or if NumCategories() - 1 is above it.
  OmDimHeader(const OmDimension* dim, OmMemoryRegion* region);
  OmDimHeader(const OmDimHeader&) = delete;
  OmDimHeader& operator=(const OmDimHeader&) = delete;
  ~OmDimHeader();

  // Returns the largest number of label levels among the leaves that `include` marks by their
  // position. `include` needs an entry for every leaf.
  [[nodiscard]] unsigned short VisibleLevels(std::vector<bool> include) const;

  // Returns whether OmDimension::Changes() is what it was when the header was constructed. If it is
  // not, the nodes may be destroyed.
  [[nodiscard]] bool IsCurrent() const noexcept { return dimension->Changes() == changes; }

  OmMemoryRegion* region;
  std::deque<Path> nodePaths;
  OmVector<unsigned short> visibleLevels;  // label levels shown above and including the leaf
  int maxVisibleLevels;                    // the largest of these; 0 if there is no leaf
  OmVector<int> leafSubscripts;
  OmVector<int> leafPositions;  // by subscript; -1 if no leaf has it

 private:
  // A node of the path from the root, and the index of its next child.
  struct Step {
    ConstNode node;
    unsigned long next;
  };

  void CollectNodes(ConstNode node);
  void AddLeaf(const std::vector<Step>& way);

  const OmDimension* dimension;  // not owned
  unsigned long changes;         // of the dimension, when the header was constructed
};

#endif
