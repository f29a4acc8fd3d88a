// om::TableView, what a front end asks of a pivot table: which layers there are, what stands at a
// place of the current one, which labels span what, and where the cell of some subscripts stands.
//
//   om::TableView view(table);
//   for (bool more = view.FirstLayer(); more; more = view.NextLayer()) {
//     const om::Window all = view.Read({0, view.Rows()}, {0, view.Columns()});
//     …
//   }
//
// Making a view costs a walk over the categories, and where empty places are left out one over the
// stored cells. A window costs what it shows, whatever the size of the table.

#ifndef DISPLAY_TABLEVIEW_H
#define DISPLAY_TABLEVIEW_H

#include <memory>
#include <optional>
#include <vector>

#include "backend/tables/om/DimensionNode.h"
#include "backend/tables/om/VectorTree.h"
#include "display/Export.h"

class OmCellText;
class OmPivotTable;

namespace om {

// The number of a row, a column or a layer as they are shown, from 0.
using Place = unsigned long long;
using ConstNode = OmVectorTree<OmDimensionNode>::ConstNode;

// The places from `first` up to and without `last`.
struct PlaceRange {
  Place first = 0;
  Place last = 0;

  [[nodiscard]] Place Size() const noexcept { return last - first; }
  [[nodiscard]] bool operator==(const PlaceRange&) const = default;
};

// What a view shows. A row, column or layer is empty where the view shows no cell there: rows and
// columns are judged in each layer by itself.
struct ViewOptions {
  bool skipEmptyRows = false;
  bool skipEmptyColumns = false;
  bool skipEmptyLayers = false;
  // Keeps the places of hidden categories, without a label. A hidden group loses its label alone,
  // either way; its categories stay.
  bool keepHidden = false;
  // Puts the names of the row dimensions into the corner, or else over their labels as a level of
  // its own. Those of the other dimensions always stand over the labels.
  bool namesInCorner = true;

  [[nodiscard]] bool operator==(const ViewOptions&) const = default;
};

// One label of a row or column heading, or a blank where no label reaches. Places are rows or
// columns; levels count from the outermost column of row labels, or row of column labels. Together
// the labels of a heading cover every place and level once.
//
// Neighbours share a label where all categories of the outer dimensions are equal. A label reaches
// over the levels of its dimension behind it where none of its places has a label.
struct Label {
  ConstNode node;                    // names no record in a blank
  const OmCellText* text = nullptr;  // null in a blank, and for a node without a text
  int dimension = -1;                // of the table
  unsigned int level = 0;            // within the dimension, 0 for the outermost label shown
  unsigned int firstLevel = 0;       // within the heading
  unsigned int levels = 1;
  Place first = 0;  // the extent in the whole layer, also where a window shows only a part
  Place places = 0;
  bool before = false;  // it begins before the window
  bool behind = false;  // it goes on behind the window

  [[nodiscard]] bool IsBlank() const noexcept { return node.record == nullptr; }
};

// One text over the columns of row labels. Together they cover every such column once.
struct CornerLabel {
  const OmCellText* text = nullptr;  // null where nothing is said
  int dimension = -1;                // whose name it is; -1 for the table's own corner text
  unsigned int firstLevel = 0;
  unsigned int levels = 1;
};

// A category of a layer dimension with its labels, the name of the dimension first.
struct LayerCategory {
  int dimension = -1;
  int subscript = -1;  // negative where the category has none
  ConstNode category;
  std::vector<ConstNode> labels;  // none of them hidden; a node may be without a text
};

// What a part of a layer shows. Row labels come place by place, column labels level by level, as
// one reads them; `cells` row by row, null where there is no cell.
struct Window {
  PlaceRange rows;
  PlaceRange columns;
  std::vector<Label> rowLabels;
  std::vector<Label> columnLabels;
  std::vector<OmCellText*> cells;

  // Returns the cell of a row and column of the layer, which have to be within the window.
  [[nodiscard]] OmCellText* Cell(Place row, Place column) const {
    return cells[(row - rows.first) * columns.Size() + column - columns.first];
  }
};

// Why some subscripts stand nowhere in a view.
enum class Absence : unsigned char {
  kNone,         // they stand somewhere
  kNoSubscript,  // one of them is negative
  kNoLeaf,       // no category carries one of them, or the dimension is on no axis and it is not 0
  kHidden,       // a category is hidden and left out
  kSeveralLeaves,  // several categories that are shown carry one of them
  kEmpty,          // the layer, or the row or column in it, is empty and left out
};

// Where some subscripts stand, or why they stand nowhere.
struct Location {
  Absence absence = Absence::kNone;
  int dimension = -1;  // that is to blame; -1 where that is none, or not one alone
  Place layer = 0;
  Place row = 0;
  Place column = 0;

  [[nodiscard]] explicit operator bool() const noexcept { return absence == Absence::kNone; }
};

// One table as it is shown, one layer at a time.
//
// The table has to outlive the view. Its structure and its axes must not change while the view is
// used, until Renew(); IsOutdated() tells. What is hidden and what is empty is settled when the
// view is made; cells are read when they are asked for. A copy is cheap: it shares what was found
// out about the table, and has a current layer of its own. Const members change nothing, so several
// threads may call them at once as long as nobody changes the table.
//
// A dimension on no axis stands at subscript 0. Where a dimension is on several axes, the columns
// decide over the rows, the rows over the layers, and on one axis the innermost.
//
// Errors: std::out_of_range for a layer, row, column or dimension that there is none of, and
// std::invalid_argument for what makes no sense otherwise; what() is a sentence. After any failure
// the view is as it was.
class OM_DISPLAY_API TableView {
 public:
  struct OM_PRIVATE Data;

  // Stands at the layer that the table stores, or else at the first. Throws std::invalid_argument
  // where an axis names a dimension that the table has not, and std::length_error where an axis has
  // more than 2^63 places.
  explicit TableView(OmPivotTable& table, const ViewOptions& options = {});
  TableView(const TableView& other);
  TableView& operator=(const TableView& other);
  ~TableView();

  [[nodiscard]] OmPivotTable& Table() const noexcept;
  [[nodiscard]] const ViewOptions& Options() const noexcept;
  // The title of the table, or else of the item; null only after a failed SetTitle.
  [[nodiscard]] const OmCellText* Title() const noexcept;
  // Null where there is none, or where it is not to be shown.
  [[nodiscard]] const OmCellText* Caption() const noexcept;

  // Returns whether categories, labels, hidden flags, axes, footnotes or titles changed since the
  // view was made, or cells were set. It does not see a cell that was deleted, a label or title
  // that was altered in its place, and formats, which no view keeps. Costs a walk over the
  // categories.
  [[nodiscard]] bool IsOutdated() const;
  // Makes the view anew. It stands where it stood if that layer is still there, or else at the
  // layer where a new view would.
  void Renew();
  void Renew(const ViewOptions& options);

  // --- Layers -----------------------------------------------------------------------------------

  // Without layer dimensions there is one layer. The dimension that the axis lists first varies
  // fastest.
  [[nodiscard]] Place Layers() const noexcept;
  // Returns the number of the current layer; 0 where there is no layer.
  [[nodiscard]] Place Layer() const noexcept;
  // Returns the layer whose number the table stores, which counts all of its layers, or none where
  // it stores none or this view leaves it out.
  [[nodiscard]] std::optional<Place> TableLayer() const;
  void SwitchLayer(Place layer);
  // Switches to the layer of these categories; of one subscript per dimension, those of the layer
  // dimensions count. Returns why there is none, or kNone.
  Absence SwitchToLayerOf(const std::vector<int>& subscripts);
  // Return false, and change nothing, where there is no such layer.
  bool FirstLayer();
  bool NextLayer();
  // Returns the category of each layer dimension, outermost first.
  [[nodiscard]] std::vector<LayerCategory> LayerLabels() const;
  [[nodiscard]] std::vector<LayerCategory> LayerLabels(Place layer) const;
  // Returns the layer dimensions, outermost first.
  [[nodiscard]] std::vector<int> LayerDimensions() const;
  // Returns the categories to choose from, of the layer dimension at position `k` of that list.
  [[nodiscard]] std::vector<LayerCategory> LayerCategories(unsigned int k) const;

  // --- The grid of the current layer ------------------------------------------------------------

  // 0 where there is no layer.
  [[nodiscard]] Place Rows() const noexcept;
  [[nodiscard]] Place Columns() const noexcept;
  // Return the number of columns of row labels, and of rows of column labels.
  [[nodiscard]] unsigned int RowLevels() const noexcept;
  [[nodiscard]] unsigned int ColumnLevels() const noexcept;
  // Returns the names of the row dimensions where they are shown here, or else, where there are
  // rows, the table's corner text over all columns of row labels.
  [[nodiscard]] std::vector<CornerLabel> Corner() const;
  // Returns the cell, or null.
  [[nodiscard]] OmCellText* Cell(Place row, Place column) const;
  // Returns one subscript per dimension, as OmPivotTable::Cell takes them, but that a category
  // without a subscript gives a negative one: there is no cell.
  [[nodiscard]] std::vector<int> Subscripts(Place row, Place column) const;
  // Returns where some subscripts, one per dimension, stand; in any layer. A dimension on several
  // axes is looked for at the same category on each.
  [[nodiscard]] Location Locate(const std::vector<int>& subscripts) const;

  // Returns the labels that reach into a range of places.
  [[nodiscard]] std::vector<Label> RowLabels(PlaceRange rows) const;
  [[nodiscard]] std::vector<Label> ColumnLabels(PlaceRange columns) const;
  // Returns the category of each dimension of the axis at a place, outermost dimension first.
  [[nodiscard]] std::vector<ConstNode> RowCategories(Place row) const;
  [[nodiscard]] std::vector<ConstNode> ColumnCategories(Place column) const;
  [[nodiscard]] Window Read(PlaceRange rows, PlaceRange columns) const;
  // Reads into a window that was used before, which saves allocating its lists again. After a
  // failure the window holds nothing.
  void Read(PlaceRange rows, PlaceRange columns, Window& window) const;

 private:
  std::unique_ptr<Data> _my;
};

}  // namespace om

#endif
