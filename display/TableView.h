// om::TableView, which answers the questions of a front end about a pivot table: which layers there
// are, which labels and cells a part of the current layer shows, how far the labels span, and where
// the cell of some subscripts is.
//
//   om::TableView view(table);
//   for (bool more = view.FirstLayer(); more; more = view.NextLayer()) {
//     const om::Window all = view.Read({0, view.Rows()}, {0, view.Columns()});
//     …
//   }
//
// Constructing a view costs a walk over the categories and, if empty places are left out, one over
// the stored cells. The cost of a window depends on what it shows, not on the size of the table.

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

// What a view shows. A row, column or layer is empty if the view shows no cell in it. A row or
// column may be empty in one layer and not in another.
struct ViewOptions {
  bool skipEmptyRows = false;
  bool skipEmptyColumns = false;
  bool skipEmptyLayers = false;
  // Keeps the places of hidden categories, without a label. A hidden group loses only its label in
  // both cases; its categories stay.
  bool keepHidden = false;
  // Puts the names of the row dimensions into the corner. If false, they are a level of row labels.
  // The names of the other dimensions are always a level of labels.
  bool namesInCorner = true;

  [[nodiscard]] bool operator==(const ViewOptions&) const = default;
};

// One label of a row or column heading, or a blank that fills the space that no label covers.
// Places are rows or columns; levels count from the outermost column of row labels, or row of
// column labels. Together the labels of a heading cover every place and level once.
//
// Neighbouring places share a label if their categories in all outer dimensions are equal. A label
// also covers the next levels of its dimension if none of its places has a label there.
struct Label {
  ConstNode node;                    // names no record in a blank
  const OmCellText* text = nullptr;  // null in a blank, and for a node without a text
  int dimension = -1;                // of the table
  unsigned int level = 0;            // within the dimension, 0 for the outermost label shown
  unsigned int firstLevel = 0;       // within the heading
  unsigned int levels = 1;
  Place first = 0;  // the extent in the layer, even if a window shows only a part
  Place places = 0;
  bool before = false;  // it begins before the window
  bool behind = false;  // it continues behind the window

  [[nodiscard]] bool IsBlank() const noexcept { return node.record == nullptr; }
};

// One text over the columns of row labels. Together they cover every such column once.
struct CornerLabel {
  const OmCellText* text = nullptr;  // null if there is no text
  int dimension = -1;                // whose name it is; -1 for the table's own corner text
  unsigned int firstLevel = 0;
  unsigned int levels = 1;
};

// A category of a layer dimension with its labels, the name of the dimension first.
struct LayerCategory {
  int dimension = -1;
  int subscript = -1;  // negative if the category has none
  ConstNode category;
  std::vector<ConstNode> labels;  // none of them hidden; a node may be without a text
};

// What a part of a layer shows. Row labels are ordered by place, column labels by level, `cells`
// row by row; a cell is null if there is none.
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

// Why a view has no place for some subscripts.
enum class Absence : unsigned char {
  kNone,           // there is a place
  kNoSubscript,    // one of them is negative
  kNoLeaf,         // no category has one of them, or it is not 0 and its dimension is on no axis
  kHidden,         // a category is hidden and left out
  kSeveralLeaves,  // several shown categories have one of them
  kEmpty,          // the layer, or the row or column in it, is empty and left out
};

// The place of some subscripts, or why there is none.
struct Location {
  Absence absence = Absence::kNone;
  int dimension = -1;  // the dimension that is the reason; -1 if there is not exactly one
  Place layer = 0;
  Place row = 0;
  Place column = 0;

  [[nodiscard]] explicit operator bool() const noexcept { return absence == Absence::kNone; }
};

// One table as it is shown, one layer at a time.
//
// The table has to outlive the view. After a change of its structure or its axes, the view must not
// be used before Renew(); IsOutdated() detects such changes. What is hidden and what is empty is
// determined when the view is constructed; cells are read at each call. A copy is cheap: it shares
// the data about the table, and has a current layer of its own. Const members change nothing, so
// several threads may call them at once as long as nobody changes the table.
//
// A dimension on no axis has subscript 0. If a dimension is on several axes, its category on the
// columns is used before that on the rows, and that on the rows before that on the layers. If an
// axis lists it more than once, the innermost category is used.
//
// Errors: std::out_of_range for a layer, row, column or dimension that does not exist, and
// std::invalid_argument for other invalid arguments; what() is a sentence. After any failed call
// the view is unchanged.
class OM_DISPLAY_API TableView {
 public:
  struct OM_PRIVATE Data;

  // The current layer is the one that the table stores, or else the first. Throws
  // std::invalid_argument if an axis names a dimension that the table does not have, and
  // std::length_error if an axis has more than 2^63 places.
  explicit TableView(OmPivotTable& table, const ViewOptions& options = {});
  TableView(const TableView& other);
  TableView& operator=(const TableView& other);
  ~TableView();

  [[nodiscard]] OmPivotTable& Table() const noexcept;
  [[nodiscard]] const ViewOptions& Options() const noexcept;
  // The title of the table, or else of the item; null only after a failed SetTitle.
  [[nodiscard]] const OmCellText* Title() const noexcept;
  // Null if there is none, or if it is not to be shown.
  [[nodiscard]] const OmCellText* Caption() const noexcept;

  // Returns whether categories, labels, hidden flags, axes, footnotes or titles changed since the
  // view was made, or cells were set. It does not detect a cell that was deleted, a label or title
  // whose text object was altered in place, and changes of formats, which no view stores. Costs a
  // walk over the categories.
  [[nodiscard]] bool IsOutdated() const;
  // Reads the table again. The current layer stays the same if it still exists; otherwise it is
  // that of a new view.
  void Renew();
  void Renew(const ViewOptions& options);

  // --- Layers -----------------------------------------------------------------------------------

  // Without layer dimensions there is one layer. The dimension that the axis lists first varies
  // fastest.
  [[nodiscard]] Place Layers() const noexcept;
  // Returns the number of the current layer; 0 if there is no layer.
  [[nodiscard]] Place Layer() const noexcept;
  // Returns the layer that the table stores, or none if it stores none or this view leaves it out.
  // The table's number counts all of its layers, also those that this view leaves out.
  [[nodiscard]] std::optional<Place> TableLayer() const;
  void SwitchLayer(Place layer);
  // Switches to the layer of some subscripts, one per dimension; those of the layer dimensions are
  // used. Returns kNone, or why there is no such layer.
  Absence SwitchToLayerOf(const std::vector<int>& subscripts);
  // Return false, and change nothing, if there is no such layer.
  bool FirstLayer();
  bool NextLayer();
  // Returns the category of each layer dimension, outermost first.
  [[nodiscard]] std::vector<LayerCategory> LayerLabels() const;
  [[nodiscard]] std::vector<LayerCategory> LayerLabels(Place layer) const;
  // Returns the layer dimensions, outermost first.
  [[nodiscard]] std::vector<int> LayerDimensions() const;
  // Returns all categories of the layer dimension at position `k` of LayerDimensions().
  [[nodiscard]] std::vector<LayerCategory> LayerCategories(unsigned int k) const;

  // --- The grid of the current layer ------------------------------------------------------------

  // 0 if there is no layer.
  [[nodiscard]] Place Rows() const noexcept;
  [[nodiscard]] Place Columns() const noexcept;
  // Return the number of columns of row labels, and of rows of column labels.
  [[nodiscard]] unsigned int RowLevels() const noexcept;
  [[nodiscard]] unsigned int ColumnLevels() const noexcept;
  // Returns the names of the row dimensions if any is shown in the corner. Otherwise, if there are
  // rows, returns the table's corner text over all columns of row labels.
  [[nodiscard]] std::vector<CornerLabel> Corner() const;
  // Returns the cell, or null.
  [[nodiscard]] OmCellText* Cell(Place row, Place column) const;
  // Returns one subscript per dimension, for OmPivotTable::Cell. A category without a subscript has
  // a negative one here, and no cell.
  [[nodiscard]] std::vector<int> Subscripts(Place row, Place column) const;
  // Returns the place of some subscripts, one per dimension, in any layer. A dimension on several
  // axes has the same category on each.
  [[nodiscard]] Location Locate(const std::vector<int>& subscripts) const;

  // Return the labels that cover a place of a range.
  [[nodiscard]] std::vector<Label> RowLabels(PlaceRange rows) const;
  [[nodiscard]] std::vector<Label> ColumnLabels(PlaceRange columns) const;
  // Return the category of each dimension of the axis at a place, outermost dimension first.
  [[nodiscard]] std::vector<ConstNode> RowCategories(Place row) const;
  [[nodiscard]] std::vector<ConstNode> ColumnCategories(Place column) const;
  [[nodiscard]] Window Read(PlaceRange rows, PlaceRange columns) const;
  // Reads into an existing window, whose memory is used again. If this fails, the window is empty.
  void Read(PlaceRange rows, PlaceRange columns, Window& window) const;

 private:
  std::unique_ptr<Data> _my;
};

}  // namespace om

#endif
