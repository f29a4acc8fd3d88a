#include "display/TableView.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "backend/tables/MultiBase.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"
#include "display/ViewModelData.h"

namespace om {

namespace {

[[noreturn]] void ThrowNoSuch(const char* what, Place n, Place count) {
  throw std::out_of_range("There is no " + std::string(what) + " " + std::to_string(n) +
                          ": there are " + std::to_string(count) + ", numbered from 0.");
}

void CheckPlace(const char* what, Place n, Place count) {
  if (n >= count) {
    ThrowNoSuch(what, n, count);
  }
}

void CheckRange(const char* what, PlaceRange range, Place count) {
  if (range.first > range.last) {
    throw std::invalid_argument("A range of " + std::string(what) + "s ends at " +
                                std::to_string(range.last) + ", in front of its start at " +
                                std::to_string(range.first) + ".");
  }
  if (range.last > count) {
    ThrowNoSuch(what, range.last - 1, count);
  }
}

void CheckSubscripts(const std::vector<int>& subscripts, unsigned long dimensions) {
  if (subscripts.size() != dimensions) {
    throw std::invalid_argument("There are " + std::to_string(subscripts.size()) +
                                " subscripts for a table of " + std::to_string(dimensions) +
                                " dimensions.");
  }
}

LayerCategory CategoryOf(const ShownAxis::Dimension& dimension, unsigned int leaf) {
  return {dimension.index, dimension.shown.Leaves()[leaf].subscript, dimension.shown.Category(leaf),
          dimension.shown.LabelsOf(leaf)};
}

}  // namespace

TableView::Data::Data(OmPivotTable& table, const ViewOptions& options)
    : model(std::make_shared<const ViewModel>(table, options)) {}

void TableView::Data::Start() {
  if (model->Layers() != 0) {
    SwitchLayer(TableLayer().value_or(0));
  } else {
    rows = AxisInLayer(model->rows, nullptr, 0);
    columns = AxisInLayer(model->columns, nullptr, 0);
  }
}

void TableView::Data::SwitchLayer(Place to) {
  const Site site = model->LayerSite(to);
  Digits digits;
  model->layers.SetDigits(site, digits);
  std::vector<int> at(model->deciding.size(), 0);
  model->layers.Fill(digits, at);
  AxisInLayer newRows = model->RowsOf(site);
  AxisInLayer newColumns = model->ColumnsOf(site);
  layer = to;
  subscripts.swap(at);
  std::swap(rows, newRows);
  std::swap(columns, newColumns);
}

// The table's number counts every combination of categories, by the sizes of the dimensions, as a
// layer heading without skipEmpty does.
std::optional<Place> TableView::Data::TableLayer() const {
  const OmPivotTable& table = *model->table;
  if (table.getLayerLoc() < 0) {
    return std::nullopt;
  }
  std::vector<unsigned int> sizes;
  for (const ShownAxis::Dimension& dimension : model->layers.Dimensions()) {
    sizes.push_back(static_cast<unsigned int>(table.Size(dimension.index)));
    if (sizes.back() == 0) {
      return std::nullopt;
    }
  }
  const auto number = static_cast<unsigned int>(table.getLayerLoc());
  const std::vector<unsigned int> positions = MultiBase(sizes).Digits(number);
  if (positions.empty() && number != 0) {
    return std::nullopt;
  }
  Location location;
  for (unsigned long k = 0; k != positions.size(); ++k) {
    const ShownAxis::Dimension& dimension = model->layers.Dimensions()[k];
    const OmDimHeader header(table.Dimension(dimension.index), nullptr);
    if (positions[k] >= header.nodePaths.size() || positions[k] >= sizes[k]) {
      return std::nullopt;
    }
    const auto count = static_cast<unsigned int>(dimension.shown.Leaves().size());
    unsigned int leaf = 0;
    while (leaf != count && dimension.shown.Category(leaf) != header.nodePaths[positions[k]][0]) {
      ++leaf;
    }
    if (leaf == count) {
      return std::nullopt;
    }
    location.layer += leaf * dimension.inner;
  }
  model->Number(location, true);
  return location ? std::optional(location.layer) : std::nullopt;
}

void TableView::Data::ReadCells(PlaceRange rowRange, PlaceRange columnRange,
                                std::vector<OmCellText*>& cells) const {
  std::size_t count = 0;
  if (__builtin_mul_overflow(rowRange.Size(), columnRange.Size(), &count)) {
    throw std::length_error("The window has more than 2^64 cells.");
  }
  cells.resize(count);
  const std::vector<ShownAxis::Dimension>& across = columns.Axis().Dimensions();
  // The subscripts of each column of the window, one after the other.
  std::vector<int> columnSubscripts;
  std::vector<int> at(subscripts);
  Digits digits;
  for (Place column = columnRange.first; column != columnRange.last && count != 0; ++column) {
    columns.Axis().SetDigits(columns.SiteAt(column), digits);
    for (unsigned long k = 0; k != across.size(); ++k) {
      columnSubscripts.push_back(across[k].shown.Leaves()[digits[k]].subscript);
    }
  }
  OmCellText** next = cells.data();
  for (Place row = rowRange.first; row != rowRange.last && count != 0; ++row) {
    rows.Axis().SetDigits(rows.SiteAt(row), digits);
    rows.Axis().Fill(digits, at);
    const int* subscript = columnSubscripts.data();
    for (Place column = columnRange.first; column != columnRange.last; ++column) {
      for (const ShownAxis::Dimension& dimension : across) {
        at[static_cast<unsigned long>(dimension.index)] = *subscript++;
      }
      *next++ = model->Cell(at);
    }
  }
}

TableView::TableView(OmPivotTable& table, const ViewOptions& options)
    : _my(std::make_unique<Data>(table, options)) {
  _my->Start();
}

TableView::TableView(const TableView& other) : _my(std::make_unique<Data>(*other._my)) {}

TableView& TableView::operator=(const TableView& other) {
  if (this != &other) {
    _my = std::make_unique<Data>(*other._my);
  }
  return *this;
}

TableView::~TableView() = default;

OmPivotTable& TableView::Table() const noexcept {
  return *_my->model->table;
}

const ViewOptions& TableView::Options() const noexcept {
  return _my->model->options;
}

const OmCellText* TableView::Title() const noexcept {
  const OmCellText* const own = Table().GetTableTitle();
  return own != nullptr ? own : Table().Title();
}

const OmCellText* TableView::Caption() const noexcept {
  return Table().showCaption() ? Table().Caption() : nullptr;
}

bool TableView::IsOutdated() const {
  return Fingerprint(Table()) != _my->model->fingerprint;
}

void TableView::Renew() {
  Renew(Options());
}

void TableView::Renew(const ViewOptions& options) {
  auto fresh = std::make_unique<Data>(Table(), options);
  // By its subscripts, because the nodes of the old model may be destroyed.
  const std::vector<int>& stood = _my->subscripts;
  Location location;
  location.absence = Absence::kNoLeaf;
  if (stood.size() == fresh->model->deciding.size()) {
    location = fresh->model->Locate(stood, true);
    fresh->model->Number(location, true);
  }
  if (location) {
    fresh->SwitchLayer(location.layer);
  } else {
    fresh->Start();
  }
  _my = std::move(fresh);
}

Place TableView::Layers() const noexcept {
  return _my->model->Layers();
}

Place TableView::Layer() const noexcept {
  return _my->layer;
}

std::optional<Place> TableView::TableLayer() const {
  return _my->TableLayer();
}

void TableView::SwitchLayer(Place layer) {
  CheckPlace("layer", layer, Layers());
  _my->SwitchLayer(layer);
}

Absence TableView::SwitchToLayerOf(const std::vector<int>& subscripts) {
  CheckSubscripts(subscripts, _my->model->deciding.size());
  Location location = _my->model->Locate(subscripts, true);
  _my->model->Number(location, true);
  if (location) {
    _my->SwitchLayer(location.layer);
  }
  return location.absence;
}

bool TableView::FirstLayer() {
  if (Layers() == 0) {
    return false;
  }
  _my->SwitchLayer(0);
  return true;
}

bool TableView::NextLayer() {
  if (Layers() == 0 || Layer() + 1 == Layers()) {
    return false;
  }
  _my->SwitchLayer(Layer() + 1);
  return true;
}

std::vector<LayerCategory> TableView::LayerLabels() const {
  return Layers() == 0 ? std::vector<LayerCategory>() : LayerLabels(Layer());
}

std::vector<LayerCategory> TableView::LayerLabels(Place layer) const {
  CheckPlace("layer", layer, Layers());
  const ShownAxis& axis = _my->model->layers;
  Digits digits;
  axis.SetDigits(_my->model->LayerSite(layer), digits);
  std::vector<LayerCategory> labels;
  for (unsigned long k = 0; k != digits.size(); ++k) {
    labels.push_back(CategoryOf(axis.Dimensions()[k], digits[k]));
  }
  return labels;
}

std::vector<int> TableView::LayerDimensions() const {
  std::vector<int> dimensions;
  for (const ShownAxis::Dimension& dimension : _my->model->layers.Dimensions()) {
    dimensions.push_back(dimension.index);
  }
  return dimensions;
}

std::vector<LayerCategory> TableView::LayerCategories(unsigned int k) const {
  const std::vector<ShownAxis::Dimension>& dimensions = _my->model->layers.Dimensions();
  CheckPlace("layer dimension", k, dimensions.size());
  std::vector<LayerCategory> categories;
  for (unsigned int leaf = 0; leaf != dimensions[k].shown.Leaves().size(); ++leaf) {
    categories.push_back(CategoryOf(dimensions[k], leaf));
  }
  return categories;
}

Place TableView::Rows() const noexcept {
  return _my->rows.Places();
}

Place TableView::Columns() const noexcept {
  return _my->columns.Places();
}

unsigned int TableView::RowLevels() const noexcept {
  return _my->rows.Levels();
}

unsigned int TableView::ColumnLevels() const noexcept {
  return _my->columns.Levels();
}

std::vector<CornerLabel> TableView::Corner() const {
  const AxisInLayer& rows = _my->rows;
  std::vector<CornerLabel> corner;
  bool found = false;
  for (unsigned long k = 0; k != rows.Axis().Dimensions().size(); ++k) {
    if (rows.LevelsOf(k) == 0) {
      continue;
    }
    const ShownAxis::Dimension& dimension = rows.Axis().Dimensions()[k];
    const OmDimensionNode& root = dimension.shown.Root()->Data();
    const bool named = Options().namesInCorner && !root.Hide() && root.Text() != nullptr;
    corner.push_back(
        {named ? root.Text() : nullptr, dimension.index, rows.FirstLevelOf(k), rows.LevelsOf(k)});
    found = found || named;
  }
  if (!found && !corner.empty() && Rows() != 0) {
    corner = {{std::as_const(Table()).CornerText(), -1, 0, RowLevels()}};
  }
  return corner;
}

OmCellText* TableView::Cell(Place row, Place column) const {
  return _my->model->Cell(Subscripts(row, column));
}

std::vector<int> TableView::Subscripts(Place row, Place column) const {
  CheckPlace("row", row, Rows());
  CheckPlace("column", column, Columns());
  std::vector<int> subscripts(_my->subscripts);
  Digits digits;
  for (const auto& [axis, place] : {std::pair(&_my->rows, row), std::pair(&_my->columns, column)}) {
    axis->Axis().SetDigits(axis->SiteAt(place), digits);
    axis->Axis().Fill(digits, subscripts);
  }
  return subscripts;
}

Location TableView::Locate(const std::vector<int>& subscripts) const {
  CheckSubscripts(subscripts, _my->model->deciding.size());
  Location location = _my->model->Locate(subscripts, false);
  _my->model->Number(location, false);
  return location;
}

std::vector<Label> TableView::RowLabels(PlaceRange rows) const {
  CheckRange("row", rows, Rows());
  std::vector<Label> labels;
  _my->rows.Labels(rows, labels);
  return labels;
}

std::vector<Label> TableView::ColumnLabels(PlaceRange columns) const {
  CheckRange("column", columns, Columns());
  std::vector<Label> labels;
  _my->columns.Labels(columns, labels);
  std::stable_sort(labels.begin(), labels.end(),
                   [](const Label& a, const Label& b) { return a.firstLevel < b.firstLevel; });
  return labels;
}

std::vector<ConstNode> TableView::RowCategories(Place row) const {
  CheckPlace("row", row, Rows());
  return _my->rows.Axis().Categories(_my->rows.SiteAt(row));
}

std::vector<ConstNode> TableView::ColumnCategories(Place column) const {
  CheckPlace("column", column, Columns());
  return _my->columns.Axis().Categories(_my->columns.SiteAt(column));
}

Window TableView::Read(PlaceRange rows, PlaceRange columns) const {
  Window window;
  Read(rows, columns, window);
  return window;
}

void TableView::Read(PlaceRange rows, PlaceRange columns, Window& window) const {
  CheckRange("row", rows, Rows());
  CheckRange("column", columns, Columns());
  Window read;
  read.rows = rows;
  read.columns = columns;
  read.rowLabels.swap(window.rowLabels);
  read.columnLabels.swap(window.columnLabels);
  read.cells.swap(window.cells);
  window = Window();
  read.rowLabels.clear();
  read.columnLabels.clear();
  _my->rows.Labels(rows, read.rowLabels);
  _my->columns.Labels(columns, read.columnLabels);
  std::stable_sort(read.columnLabels.begin(), read.columnLabels.end(),
                   [](const Label& a, const Label& b) { return a.firstLevel < b.firstLevel; });
  _my->ReadCells(rows, columns, read.cells);
  window = std::move(read);
}

}  // namespace om
