// OmDisplayColumnHeading, the labels above a displayed pivot table: an OmDisplayRowHeading for the
// columns. Costs are those of the row heading.

#ifndef BACKEND_TABLES_OM_DISPLAYCOLUMNHEADING_H
#define BACKEND_TABLES_OM_DISPLAYCOLUMNHEADING_H

#include <deque>
#include <vector>

#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/Export.h"

// Like OmDisplayRowHeading, with columns for rows and rows of labels for columns of labels. The
// names of the dimensions stay in the heading, and there is no corner.
class OM_API OmDisplayColumnHeading {
 public:
  using ConstNode = OmDisplayLayerHeading::ConstNode;
  struct OM_PRIVATE Data;

  // Throws OMSException if an axis that it reads names a dimension that the table does not have.
  OmDisplayColumnHeading(OmDisplayLayerHeading& layer, bool skipEmpty);
  OmDisplayColumnHeading(const OmDisplayColumnHeading&) = delete;
  OmDisplayColumnHeading& operator=(const OmDisplayColumnHeading&) = delete;
  ~OmDisplayColumnHeading();

  [[nodiscard]] unsigned int NColumns() const noexcept;
  // Returns the number of rows of labels.
  [[nodiscard]] unsigned int NRows() const noexcept;
  // Returns the number of rows of labels of axis dimension `k`, which must exist.
  [[nodiscard]] unsigned short VisibleHeight(int k) const;
  [[nodiscard]] unsigned int NDimensions() const noexcept;
  // Reading at or past the end lengthens the list, as in the row heading.
  [[nodiscard]] int getDimensionIndex(int k) const;
  [[nodiscard]] bool SkipEmpty() const noexcept;
  [[nodiscard]] OmPivotTable& Table() const noexcept;
  // Returns the places of the columns; without skipEmpty all of them, a list made on first use.
  [[nodiscard]] const std::vector<unsigned long long>& getNonEmptyColumns() const;

  // Returns entry `r` of every column, left to right.
  [[nodiscard]] std::deque<ConstNode*> Row(int r) const;
  // Returns the labels of a column, top to bottom; null if a dimension has fewer labels there.
  [[nodiscard]] std::deque<ConstNode*> Column(int c) const;
  // Returns for each entry of a column the axis dimension that it belongs to.
  [[nodiscard]] std::vector<int> LabelDimensions() const;
  // Returns the category of each axis dimension, hidden or not.
  [[nodiscard]] std::deque<ConstNode*> ColumnCategories(int c) const;
  // Appends the root and the category of each axis dimension, except if the category is the root
  // itself. If `c` is beyond the list of non-empty columns, it is read as a place.
  void DimCatNodes(int c, std::vector<ConstNode*>& dimNodes,
                   std::vector<ConstNode*>& catNodes) const;
  // Appends all nodes from each such root to the category, hidden ones too.
  void DimAllNodes(int c, std::vector<ConstNode*>& out) const;
  // Writes the subscripts of the column's categories and does not change the entries of other
  // dimensions. Resizes the vector to one entry per dimension.
  void Fill(std::vector<int>& subscripts, int c) const;

 private:
  Data* data;
};

#endif
