// OmDisplayLayerHeading, the entry to the display of a pivot table: it flattens the dimensions,
// numbers the layers and selects one. The row and column headings are built from it.
//
//   OmDisplayLayerHeading layers(table, true);
//   layers.SwitchLayer(0);
//   OmDisplayRowHeading rows(layers, true, true);
//   OmDisplayColumnHeading columns(layers, true);
//   std::vector<int> subscripts;
//   layers.Fill(subscripts), rows.Fill(subscripts, r), columns.Fill(subscripts, c);
//   const OmCellText* cell = table.Cell(subscripts);
//
// Constructing one costs a walk over the categories and, with skipEmpty, over the cells. It
// allocates memory for each category and its path to the root, and for each subscript up to the
// largest of a dimension.

#ifndef BACKEND_TABLES_OM_DISPLAYLAYERHEADING_H
#define BACKEND_TABLES_OM_DISPLAYLAYERHEADING_H

#include <deque>
#include <vector>

#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/VectorTree.h"

class OmPivotTable;
class OmPointerVector;

// Numbers the combinations of the categories of the layer dimensions; with skipEmpty only those
// that have a cell. The dimension that the table's axis lists first varies fastest, so layer
// dimension 0 of the heading is the axis's last.
//
// The combinations of the dimensions of an axis are counted in 64 bits; if there are more, the
// number wraps.
//
// The cells and the structure of the dimensions must not change while the heading exists. Labels
// and hidden flags may change: they are read at each call. The number of label levels is fixed when
// this heading is constructed, also for the row and column headings: a label that is hidden later
// leaves its column or row of labels empty. If a dimension was edited (OmDimension::Changes), the
// headings return nothing for it and do not fill in its subscript; a hardened build ends the
// process. Row and column headings must be destroyed before the layer heading that they were
// constructed from. Returned nodes are valid as long as the layer heading. A table and its headings
// are used by one thread at a time, const operations included.
class OM_API OmDisplayLayerHeading {
 public:
  using ConstNode = OmVectorTree<OmDimensionNode>::ConstNode;
  struct OM_PRIVATE Data;

  // No layer is current afterwards. Throws OMSException if an axis that it reads names a dimension
  // that the table does not have, and if a subscript is above the limit of OmDimHeader
  // (kLargestSubscript).
  OmDisplayLayerHeading(OmPivotTable& table, bool skipEmpty);
  OmDisplayLayerHeading(const OmDisplayLayerHeading&) = delete;
  OmDisplayLayerHeading& operator=(const OmDisplayLayerHeading&) = delete;
  ~OmDisplayLayerHeading();

  [[nodiscard]] unsigned int NDimensions() const noexcept;
  // Returns the index in the table of layer dimension `i`. At or past the end, appends -1 to the
  // list up to `i` and returns -1, so that NDimensions() grows; on purpose, existing front ends
  // depend on it.
  [[nodiscard]] int getDimensionIndex(int i) const;
  // Returns the largest number of label levels of layer dimension `i`, which must be below
  // NDimensions(). Reads the list as getDimensionIndex does.
  [[nodiscard]] int VisibleWidth(int i) const;
  // Returns the number of layers, which may exceed the range of int.
  [[nodiscard]] unsigned long long NLayers() const noexcept;
  // Returns the places of the layers; without skipEmpty all of them, a list of 8 bytes per layer
  // that is made on first use.
  [[nodiscard]] const std::vector<unsigned long long>& getNonEmptyLayers() const;
  // Returns the number of the current layer, or -1. After restoreLayer() it may be a number without
  // a layer: then no layer is current.
  [[nodiscard]] int getLayer() const noexcept;
  [[nodiscard]] std::vector<int> getCurrentCellIndex() const;
  [[nodiscard]] OmPivotTable& Table() const noexcept;
  [[nodiscard]] bool SkipEmpty() const noexcept;

  // Writes the subscripts of the current layer's categories and does not change the entries of
  // other dimensions. Resizes the vector to one entry per dimension. Does nothing if no layer is
  // current.
  void Fill(std::vector<int>& subscripts) const;
  // Sets the two pointers to the root and the category of layer dimension `i` in the current layer.
  // Changes neither if no layer is current, if there is no such dimension, or if the category is
  // the root itself.
  void DimCatNodes(int i, ConstNode*& dimNode, ConstNode*& catNode) const;
  // Appends all nodes from the root to that category, hidden ones too, under the same conditions.
  void DimAllNodes(int i, std::vector<ConstNode*>& out) const;
  // Returns the labels over that category from the root down, null for a hidden node. A visible
  // group that hides labels ends the list; a hidden one does not, on purpose: row labels differ
  // here, and om::TableView shows the same difference.
  [[nodiscard]] std::deque<ConstNode*> Nodes(int i) const;

  // Makes layer `n` current and returns true. If there is no such layer, returns false and changes
  // nothing, except that after -1 no layer is current.
  bool SwitchLayer(int n);
  // The same with the number after the current one; if no layer is current, that is layer 0.
  bool NextLayer();
  // The same with the last number. Returns false and changes nothing if that is beyond the range of
  // int. Without layers, none is current afterwards.
  bool LastLayer();
  // Makes the layer number that the table stores the current one, and returns it; if there is no
  // such layer, none is current. Fill() uses the number at once, but getCurrentCellIndex() does not
  // change, on purpose: the next SwitchLayer updates it.
  int restoreLayer() const;

 private:
  friend class OmDisplayRowHeading;

  // Returns the root of a table's cell store, or null.
  static const OmPointerVector* Store(const OmPivotTable& table) noexcept;

  Data* data;
};

// Returns whether a table has fewer cells than one percent (rounded) of the product of its
// dimensions' sizes. Counts the cells that the iterators visit, on purpose: a table in which a null
// that was stored first hides them is sparse, and the search for its cells finds none.
[[nodiscard]] OM_API bool IsSparse(OmPivotTable& table);

#endif
