// The cell store of a pivot table: a tree of pointer vectors, one level per dimension, that grows
// as subscripts arrive.
//
// The root is indexed by the last dimension's subscript, the bottom vectors by the first
// dimension's. Bottom vectors hold cells, the ones above hold vectors; null is a place where
// nothing is stored. A vector is one longer than the largest subscript that was ever set through
// it. One pointer step per dimension reaches a cell.
//
// Vectors and cells live in the table's memory region. Callers reach cells through OmPivotTable.

#ifndef BACKEND_TABLES_OM_CELLSTORE_H
#define BACKEND_TABLES_OM_CELLSTORE_H

#include <vector>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"

class OmCellText;

// A vector of one level of the store. The object and its elements come from one region.
class OM_API OmPointerVector : public OmRegionManaged, public OmVector<void*> {
 public:
  explicit OmPointerVector(OmMemoryRegion* region_) : OmVector<void*>(region_) {}

  // Appends nulls until there is a slot `s`, with the room that appending one by one would leave; a
  // jump beyond twice the room there is takes exactly what it needs.
  void GrowTo(unsigned long s);
};

// Returns the first index at or after `start` whose element is not null, or v.size().
OM_API unsigned long FindNonZero(const OmPointerVector& v, unsigned long start);

// Deletes the subtree of `depth` levels at `v`, the cells at its bottom included. Null is ignored.
OM_API void freeCellArray(OmPointerVector* v, int depth);

// The operations of a table on its store. `root` is the table's root vector, null until the first
// cell is set; `subscripts` has one element per dimension, none of them negative.
class OM_API OmCellStore {
 public:
  // Returns the slot at `subscripts`, which holds an OmCellText* or null, after making the path to
  // it in `region`. Where that fails, what was made stays in the tree, which remains whole.
  static void*& Slot(OmPointerVector*& root, const std::vector<int>& subscripts,
                     OmMemoryRegion* region);
  // Returns the cell at `subscripts`, or null. Makes nothing.
  [[nodiscard]] static OmCellText* Find(const OmPointerVector* root,
                                        const std::vector<int>& subscripts);
  // Deletes the cell at `subscripts` and every vector but the root that this leaves without an
  // element.
  static void Delete(OmPointerVector* root, const std::vector<int>& subscripts);
  // Puts a new root above `root`, which moves every cell to subscript 0 of one more dimension.
  [[nodiscard]] static OmPointerVector* Raise(OmPointerVector* root, OmMemoryRegion* region);
  // Undoes Raise: returns the root from before.
  [[nodiscard]] static OmPointerVector* Lower(OmPointerVector* root);
};

#endif
