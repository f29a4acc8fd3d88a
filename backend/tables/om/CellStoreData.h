// The cell store of a pivot table: a tree of pointer vectors, one level for each dimension, that
// grows as subscripts arrive.
//
// The root is indexed by the last dimension's subscript, the bottom vectors by the first
// dimension's. Bottom vectors hold cells, the ones above hold vectors; null is a slot in which
// nothing is stored. A vector is one longer than the largest subscript that was ever set through
// it. One pointer step for each dimension reaches a cell.
//
// Vectors and cells live in the table's memory region. Callers reach cells through OmPivotTable and
// do not include this header.

#ifndef BACKEND_TABLES_OM_CELLSTOREDATA_H
#define BACKEND_TABLES_OM_CELLSTOREDATA_H

#include <vector>

#include "backend/tables/om/PointerVector.h"

class OmCellText;

// The operations of a table on its store. `root` is the table's root vector, null until the first
// cell is set; `subscripts` has one element for each level of the store, and at least one.
class OmCellStore {
 public:
  // Returns the bottom vector on the way to `subscripts`, none of which is negative, with a slot
  // for the first of them; makes in `region` what is missing. If that fails, what was made stays in
  // the tree, which remains whole.
  [[nodiscard]] static OmPointerVector& Reach(OmPointerVector*& root,
                                              const std::vector<int>& subscripts,
                                              OmMemoryRegion& region);
  // Returns the vector of dimension `k` on the way to `subscripts`, or null if there is none, also
  // if a subscript is negative.
  [[nodiscard]] static OmPointerVector* VectorOf(OmPointerVector* root,
                                                 const std::vector<int>& subscripts,
                                                 unsigned long k) noexcept;
  // Deletes the cell at `subscripts`, and every vector but the root that this leaves empty. Returns
  // whether there was a cell.
  static bool Delete(OmPointerVector* root, const std::vector<int>& subscripts);
  // Puts a new root above `root`, which moves every cell to subscript 0 of one more dimension.
  [[nodiscard]] static OmPointerVector* Raise(OmPointerVector* root, OmMemoryRegion* region);
  // Undoes Raise: returns the root from before.
  [[nodiscard]] static OmPointerVector* Lower(OmPointerVector* root);
  // Checks, if hardening is on, that each vector of the store of `levels` levels at `root` is whole
  // and in the region of the one above.
  static void Verify(const OmPointerVector* root, unsigned long levels);

  // Returns whether a stored cell may go with the region of the store as it stands, without its
  // destructor. Cells of a platform that cannot say may not.
  template <typename Text>
  [[nodiscard]] static bool GoesWith(const Text& cell, const OmMemoryRegion* region) noexcept {
    if constexpr (requires { cell.GoesWith(region); }) {
      return cell.GoesWith(region);
    } else {
      return false;
    }
  }
  // Whether cells may go with their region at all. Not if hardening is on: it runs and checks every
  // destructor.
#if defined(OM_HARDENING) && OM_HARDENING
  static constexpr bool kCellsGo = false;
#else
  static constexpr bool kCellsGo = true;
#endif
};

inline OmPointerVector* OmCellStore::VectorOf(OmPointerVector* root,
                                              const std::vector<int>& subscripts,
                                              unsigned long k) noexcept {
  OmPointerVector* v = root;
  for (unsigned long i = subscripts.size() - 1; i != k && v != nullptr; --i) {
    v = static_cast<OmPointerVector*>(v->At(subscripts[i]));
  }
  return v;
}

#endif
