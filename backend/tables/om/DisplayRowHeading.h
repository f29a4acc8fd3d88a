// OmDisplayRowHeading, the labels to the left of a displayed pivot table: how many rows there are,
// how many columns of labels they need, the nodes whose labels stand there, and the corner above
// them.
//
// Building one costs a walk over the stored cells with skipEmpty, and little without. A column of
// labels at once costs far less than every row.

#ifndef BACKEND_TABLES_OM_DISPLAYROWHEADING_H
#define BACKEND_TABLES_OM_DISPLAYROWHEADING_H

#include <deque>
#include <vector>

#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"

class OmCellText;

// Built from a layer heading, which has to outlive it. Which rows there are is settled when it is
// built, and how wide labels are when the layer heading is built; what is hidden is read with the
// labels. With skipEmpty only rows that hold a cell are numbered: in the layer of the last
// successful switch if the table is dense, in any layer if it is sparse (IsSparse), on purpose.
//
// The dimension that the table's axis lists first varies fastest, so axis dimension 0 of the
// heading is the outermost, the axis's last. Each takes VisibleWidth() columns of labels, side by
// side. A row number is never negative, and with skipEmpty below NRows(). Without skipEmpty a
// number past the last row is read as a place that has no category of the outermost dimension, nor
// of an empty one: labels there are null, and subscripts stay.
class OM_API OmDisplayRowHeading {
 public:
  using ConstNode = OmDisplayLayerHeading::ConstNode;
  struct OM_PRIVATE Data;

  // With `dimNamesInCorner` the names of the dimensions stand in the corner instead of over the
  // rows. Throws OMSException where an axis that is read names a dimension that the table has not.
  OmDisplayRowHeading(OmDisplayLayerHeading& layer, bool skipEmpty, bool dimNamesInCorner);
  OmDisplayRowHeading(const OmDisplayRowHeading&) = delete;
  OmDisplayRowHeading& operator=(const OmDisplayRowHeading&) = delete;
  ~OmDisplayRowHeading();

  [[nodiscard]] unsigned int NRows() const noexcept;
  // Returns the number of columns of labels.
  [[nodiscard]] unsigned int NColumns() const noexcept;
  // Returns the columns of labels of axis dimension `k`, which has to be one.
  [[nodiscard]] unsigned short VisibleWidth(int k) const;
  [[nodiscard]] unsigned int NDimensions() const noexcept;
  // Returns the table's dimension at axis dimension `k`. Reading at or past the end lengthens the
  // list up to `k`, on purpose: the result is -1, and NDimensions() grows.
  [[nodiscard]] int getDimensionIndex(int k) const;
  [[nodiscard]] bool DimNamesInCorner() const noexcept;
  [[nodiscard]] bool SkipEmpty() const noexcept;
  [[nodiscard]] OmPivotTable& Table() const noexcept;
  // Returns the texts over the columns of labels, null where there is none: the names of the
  // dimensions, or else the table's corner text in the first column.
  [[nodiscard]] std::vector<const OmCellText*> CornerText() const;
  // Returns the places of the rows; without skipEmpty all of them, a list made on first use.
  [[nodiscard]] const std::vector<unsigned long long>& getNonEmptyRows() const;

  // Returns the labels of a row, left to right; null where a dimension shows fewer.
  [[nodiscard]] std::deque<ConstNode*> Row(int r) const;
  // Returns for each entry of a row the axis dimension that it belongs to.
  [[nodiscard]] std::vector<int> LabelDimensions() const;
  // Returns the category of each axis dimension, hidden or not.
  [[nodiscard]] std::deque<ConstNode*> RowCategories(int r) const;
  // Returns entry `c` of every row.
  [[nodiscard]] std::deque<ConstNode*> Column(int c) const;
  // Appends the root and the category of each axis dimension, but for a category that is the root
  // itself. Past the list of non-empty rows, `r` is taken as a place.
  void DimCatNodes(int r, std::vector<ConstNode*>& dimNodes,
                   std::vector<ConstNode*>& catNodes) const;
  // Appends all nodes from each such root to the category, hidden ones too.
  void DimAllNodes(int r, std::vector<ConstNode*>& out) const;
  // Writes the subscripts of the row's categories, and leaves the entries of all other dimensions;
  // the vector gets one entry per dimension.
  void Fill(std::vector<int>& subscripts, int r) const;

 private:
  Data* data;
};

// Returns the labels of one dimension in one row, root first, cut or filled with nulls to `levels`
// entries. Hidden nodes are left out; a group that hides labels ends them, also where it is hidden,
// on purpose. `path` is a leaf's, never null.
[[nodiscard]] OM_API std::vector<OmDisplayRowHeading::ConstNode*> CategoryDisplay(
    OmVector<OmDisplayRowHeading::ConstNode>* path, unsigned int levels, bool dimNamesInCorner);

// Returns the leaf of a path.
[[nodiscard]] OM_API std::vector<OmDisplayRowHeading::ConstNode*> Category(
    OmVector<OmDisplayRowHeading::ConstNode>* path);

#endif
