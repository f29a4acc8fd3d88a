// What a view knows about its table: the three axes, and which places have cells. Copies of a view
// share it and never change it.

#ifndef DISPLAY_VIEWMODELDATA_H
#define DISPLAY_VIEWMODELDATA_H

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "display/ShownAxisData.h"
#include "display/TableView.h"

namespace om {

// The sites that show a cell, by layer. All lists are ascending.
struct FilledSites {
  // A list of sites for each of `layers`, one after the other.
  struct Lists {
    std::vector<unsigned long> starts;  // one more than there are layers
    std::vector<Site> sites;
  };

  std::vector<Site> layers;
  Lists rows;
  Lists columns;
};

struct ViewModel {
  ViewModel(OmPivotTable& table_, const ViewOptions& options_);
  ViewModel(const ViewModel&) = delete;
  ViewModel& operator=(const ViewModel&) = delete;

  [[nodiscard]] bool SkipsAny() const noexcept {
    return options.skipEmptyRows || options.skipEmptyColumns || options.skipEmptyLayers;
  }
  [[nodiscard]] Place Layers() const noexcept {
    return options.skipEmptyLayers ? filled.layers.size() : layers.Sites();
  }
  [[nodiscard]] Site LayerSite(Place layer) const {
    return options.skipEmptyLayers ? filled.layers[layer] : layer;
  }
  [[nodiscard]] AxisInLayer RowsOf(Site layer) const {
    return options.skipEmptyRows ? Listed(rows, filled.rows, layer) : AxisInLayer(rows);
  }
  [[nodiscard]] AxisInLayer ColumnsOf(Site layer) const {
    return options.skipEmptyColumns ? Listed(columns, filled.columns, layer) : AxisInLayer(columns);
  }
  // Returns the cell that the subscripts address, or null; null also if one is negative.
  [[nodiscard]] OmCellText* Cell(const std::vector<int>& subscripts) const;
  // Calls `visit` for every stored cell.
  void WalkCells(
      const std::function<void(const std::vector<int>& subscripts, OmCellText& cell)>& visit) const;
  // Returns the place of some subscripts as sites, also in empty rows, columns and layers.
  [[nodiscard]] Location Locate(const std::vector<int>& subscripts, bool layersOnly) const;
  // Replaces the sites of a location by places. Sets its absence to kEmpty if one of them is left
  // out.
  void Number(Location& location, bool layersOnly) const;

  OmPivotTable* table;
  ViewOptions options;
  ShownAxis layers;
  ShownAxis rows;
  ShownAxis columns;
  // For each dimension of the table, the axis entry whose category determines the subscript: the
  // last of its entries in layers, rows and columns. Null if it is on no axis.
  std::vector<const ShownAxis::Dimension*> deciding;
  bool anyWithout = false;  // whether a category is without a subscript
  FilledSites filled;
  std::uint64_t fingerprint;

 private:
  void FindFilled();
  [[nodiscard]] AxisInLayer Listed(const ShownAxis& axis, const FilledSites::Lists& lists,
                                   Site layer) const;
};

// Finds all sites at which a stored cell is shown, also those that are left out as empty. There are
// several if several categories have the same subscript, and if the axes list a dimension again in
// an entry that does not determine the subscript.
class CellSites {
 public:
  explicit CellSites(const ViewModel& model_) : model(model_) {}

  // Returns whether the cell is shown at all. If so, it is shown at every combination of the three
  // lists.
  bool Find(const std::vector<int>& subscripts);
  [[nodiscard]] const std::vector<Site>& Layers() const noexcept { return layers; }
  [[nodiscard]] const std::vector<Site>& Rows() const noexcept { return rows; }
  [[nodiscard]] const std::vector<Site>& Columns() const noexcept { return columns; }

 private:
  // Returns whether there are any.
  bool FindOn(const ShownAxis& axis, const std::vector<int>& subscripts, std::vector<Site>& sites);

  const ViewModel& model;
  std::vector<Site> layers;
  std::vector<Site> rows;
  std::vector<Site> columns;
  std::vector<Site> more;
};

// Returns a hash of everything that IsOutdated() detects.
[[nodiscard]] std::uint64_t Fingerprint(OmPivotTable& table);

// A view: a model, and the current layer.
struct TableView::Data {
  Data(OmPivotTable& table, const ViewOptions& options);

  // Switches to the layer that the table stores, or else to the first, if there is any.
  void Start();
  void SwitchLayer(Place to);
  // Writes the cells of a part of the current layer, row by row.
  void ReadCells(PlaceRange rowRange, PlaceRange columnRange,
                 std::vector<OmCellText*>& cells) const;
  [[nodiscard]] std::optional<Place> TableLayer() const;
  [[nodiscard]] static const ViewModel& Model(const TableView& view) noexcept {
    return *view._my->model;
  }
  [[nodiscard]] static const AxisInLayer& Rows(const TableView& view) noexcept {
    return view._my->rows;
  }
  [[nodiscard]] static const AxisInLayer& Columns(const TableView& view) noexcept {
    return view._my->columns;
  }

  std::shared_ptr<const ViewModel> model;
  Place layer = 0;
  std::vector<int> subscripts;  // of the current layer's categories, 0 for the other dimensions
  AxisInLayer rows;             // without places if there is no layer
  AxisInLayer columns;
};

}  // namespace om

#endif
