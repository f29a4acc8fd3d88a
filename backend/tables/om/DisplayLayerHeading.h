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
// Building one costs a walk over the categories, and over the cells where empty layers are left
// out. It takes memory for each category, for its path to the root, and for each subscript up to
// the largest of a dimension.

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
// that hold a cell. The dimension that the table's axis lists first varies fastest, so layer
// dimension 0 of the heading is the axis's last.
//
// The combinations of the dimensions of an axis are counted in 64 bits; where there are more, the
// number wraps.
//
// The table and its dimensions must not change while the heading lives, except for what is hidden.
// How many levels of labels there are is settled when this heading is built, for the row and column
// headings too: a label that is hidden later leaves its column or row of labels.
// The headings built from it have to go first. Nodes that are handed out live as long as the layer
// heading. One thread at a time uses a table and its headings, for const operations too.
class OM_API OmDisplayLayerHeading {
 public:
  using ConstNode = OmVectorTree<OmDimensionNode>::ConstNode;
  struct OM_PRIVATE Data;

  // No layer is current afterwards. Throws OMSException where an axis that is read names a
  // dimension that the table has not, and where a category has a subscript that is far beyond what
  // can be meant (OmDimHeader::kLargestSubscript).
  OmDisplayLayerHeading(OmPivotTable& table, bool skipEmpty);
  OmDisplayLayerHeading(const OmDisplayLayerHeading&) = delete;
  OmDisplayLayerHeading& operator=(const OmDisplayLayerHeading&) = delete;
  ~OmDisplayLayerHeading();

  [[nodiscard]] unsigned int NDimensions() const noexcept;
  // Returns the table's dimension at layer dimension `i`. Reading at or past the end lengthens the
  // list up to `i`, on purpose: the result is -1, and NDimensions() grows.
  [[nodiscard]] int getDimensionIndex(int i) const;
  // Returns the largest number of label levels of layer dimension `i`, which has to be below
  // NDimensions(). Reads the list as getDimensionIndex does.
  [[nodiscard]] int VisibleWidth(int i) const;
  // Returns how many layers are numbered, which may be more than an int counts.
  [[nodiscard]] unsigned long long NLayers() const noexcept;
  // Returns the places of the layers; without skipEmpty all of them, a list of 8 bytes a layer that
  // is made on first use.
  [[nodiscard]] const std::vector<unsigned long long>& getNonEmptyLayers() const;
  // Returns the number of the current layer, or -1. A number that was restored may be that of no
  // layer: then none is current.
  [[nodiscard]] int getLayer() const noexcept;
  [[nodiscard]] std::vector<int> getCurrentCellIndex() const;
  [[nodiscard]] OmPivotTable& Table() const noexcept;
  [[nodiscard]] bool SkipEmpty() const noexcept;

  // Writes the subscripts of the current layer's categories, and leaves the entries of all other
  // dimensions; the vector gets one entry per dimension. Does nothing where no layer is current.
  void Fill(std::vector<int>& subscripts) const;
  // Gives the root and the category of layer dimension `i` in the current layer. Leaves both where
  // no layer is current, where there is no such dimension, or where the category is the root
  // itself.
  void DimCatNodes(int i, ConstNode*& dimNode, ConstNode*& catNode) const;
  // Appends all nodes from the root to that category, hidden ones too, under the same conditions.
  void DimAllNodes(int i, std::vector<ConstNode*>& out) const;
  // Returns the labels over that category from the root down, null for a hidden node. A visible
  // group that hides labels ends them; a hidden one does not, on purpose (row labels differ here).
  [[nodiscard]] std::deque<ConstNode*> Nodes(int i) const;

  // Makes layer `n` current and returns true. Where there is no such layer nothing changes, but for
  // -1: no layer is current then.
  bool SwitchLayer(int n);
  bool NextLayer();
  bool LastLayer();
  // Takes over the layer number that the table stores, and returns it, also where there is no such
  // layer; then none is current. getCurrentCellIndex() stays as it was until the next switch, on
  // purpose; Fill() follows the number at once.
  int restoreLayer() const;

 private:
  friend class OmDisplayRowHeading;

  // Returns the root of a table's cell store, or null.
  static const OmPointerVector* Store(const OmPivotTable& table) noexcept;

  Data* data;
};

// Tells whether a table holds less than one percent (rounded) of the cells that it has room for.
[[nodiscard]] OM_API bool IsSparse(OmPivotTable& table);

#endif
