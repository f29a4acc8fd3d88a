// OmDimHeader, the flattened form of one dimension that the display headings read: its categories
// in display order, the nodes that stand over each, and the way back from a subscript to a
// category.
//
// Building one costs a path of nodes per category, and 4 bytes for each number up to the largest
// subscript. The nodes point into the dimension, which must
// not change while the header lives.

#ifndef BACKEND_TABLES_OM_DIMHEADER_H
#define BACKEND_TABLES_OM_DIMHEADER_H

#include <deque>
#include <vector>

#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"
#include "backend/tables/om/VectorTree.h"

class OmDimension;

// Built once and only read afterwards; owned by the layer heading.
//
// Display order is the order of the tree, whatever the subscripts. nodePaths, visibleLevels and
// leafSubscripts have one entry per leaf. leafPositions[leafSubscripts[p]] == p, but for a leaf
// whose subscript a later one carries too, and for a leaf whose subscript is negative as an int:
// that one is listed and has no entry in leafPositions.
class OM_API OmDimHeader : public OmRegionManaged {
 public:
  using ConstNode = OmVectorTree<OmDimensionNode>::ConstNode;
  // A leaf and all that stands over it, leaf first, root last.
  using Path = OmVector<ConstNode>;

  // The largest subscript that every header takes. One of a dimension with more categories than a
  // quarter of that takes subscripts up to four times their number.
  static constexpr unsigned long kLargestSubscript = 1UL << 28;

  // Throws OMSException with the subscript and the limit where a category has a subscript above the
  // limit, or the dimension has room for one: NumCategories() is one more than the largest.
  OmDimHeader(const OmDimension* dim, OmMemoryRegion* region);
  OmDimHeader(const OmDimHeader&) = delete;
  OmDimHeader& operator=(const OmDimHeader&) = delete;
  ~OmDimHeader();

  // Returns the largest number of label levels among the leaves that `include` marks by their
  // position. There has to be a mark for every leaf.
  [[nodiscard]] unsigned short VisibleLevels(std::vector<bool> include) const;

  OmMemoryRegion* region;
  std::deque<Path> nodePaths;
  OmVector<unsigned short> visibleLevels;  // label levels shown above and including the leaf
  int maxVisibleLevels;                    // the largest of these; 0 where there is no leaf
  OmVector<int> leafSubscripts;
  OmVector<int> leafPositions;  // by subscript; -1 where no leaf carries it

 private:
  // A node on the way down, and which of its children comes next.
  struct Step {
    ConstNode node;
    unsigned long next;
  };

  void CollectNodes(ConstNode node);
  void AddLeaf(const std::vector<Step>& way);
};

#endif
