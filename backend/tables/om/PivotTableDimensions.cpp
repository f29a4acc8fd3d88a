// The dimensions of a pivot table and its axes.

#include <memory>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/CellTextOrder.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"

namespace {

constexpr unsigned long kNoSubscript = ~0UL;

// Throws unless the table has a dimension `which`.
void CheckDimension(int which, unsigned long count, const char* negative, const char* beyond) {
  if (which < 0) {
    throw OMSException(negative, which, 0);
  }
  if (static_cast<unsigned long>(which) >= count) {
    throw OMSException(beyond, which, static_cast<double>(count));
  }
}

OmDimension* CheckedDimension(const OmVector<OmDimension*>& dimensions, int which) {
  CheckDimension(which, dimensions.size(), "OmPivotTable::Dimension() -- which < 0",
                 "OmPivotTable::Dimension() -- which < NDimensions()");
  return dimensions[static_cast<unsigned long>(which)];
}

// Removes the placeholders of an axis and keeps the order of the rest.
void RemovePlaceholders(PuppetVector<short>& axis) {
  for (auto entry = axis.begin(); entry != axis.end();) {
    entry = *entry == -1 ? axis.erase(entry) : entry + 1;
  }
}

// Adds a level to the cell store, and removes it again unless committed.
class RaisedStore {
 public:
  explicit RaisedStore(OmPivotTable::Data& table_) : table(table_) { table.AddCellDimension(); }
  RaisedStore(const RaisedStore&) = delete;
  RaisedStore& operator=(const RaisedStore&) = delete;
  ~RaisedStore() {
    if (!committed) {
      table.root = OmCellStore::Lower(table.root);
    }
  }
  void Commit() noexcept { committed = true; }

 private:
  OmPivotTable::Data& table;
  bool committed = false;
};

}  // namespace

void OmPivotTable::Data::AddCellDimension() {
  root = OmCellStore::Raise(root, &region);
  Changed();
}

OmDimension* OmPivotTable::Data::Add(std::unique_ptr<OmDimension> dimension) {
  OM_HARDEN(dimension->Name() != nullptr, "OmPivotTable::AddDimension");
  RaisedStore raised(*this);
  if (helper.Tracker() != nullptr) {
    dimension->Name()->Accept(helper);
  }
  _dimensions.push_back(dimension.get());
  raised.Commit();
  dimension->Root()->Subscript(_dimensions.size() - 1);
  return dimension.release();
}

std::vector<int> OmPivotTable::Data::SizeVector() const {
  std::vector<int> sizes;
  sizes.reserve(_dimensions.size());
  for (const OmDimension* const dimension : _dimensions) {
    sizes.push_back(static_cast<int>(dimension->NumCategories()));
  }
  return sizes;
}

void OmPivotTable::Data::ReindexAxis() {
  const unsigned long ndim = _dimensions.size();
  const auto count = [this] { return layers.size() + columns.size() + rows.size(); };
  // Placeholders are removed only to repair a mismatch, on purpose (see EndTable).
  if (ndim != count()) {
    RemovePlaceholders(layers);
    RemovePlaceholders(columns);
    RemovePlaceholders(rows);
  }
  if (ndim != count()) {
    throw OMSException("OmPivotTable::Data::ReindexAxis() -- ndim != nCount",
                       static_cast<double>(ndim), static_cast<double>(count()));
  }
}

OmDimension* OmPivotTable::AddDimension(const OmCellText& name) {
  const OmDimensionNode root(name, kNoSubscript, true, nullptr);
  return _my->Add(std::make_unique<OmDimension>(root, &_my->region));
}

OmDimension* OmPivotTable::AddDimension(const OmDimension& other) {
  return _my->Add(std::make_unique<OmDimension>(other, &_my->region));
}

void OmPivotTable::CopyDimensions(const OmPivotTable& other) {
  OmVector<OmDimension*>& dimensions = _my->_dimensions;
  if (dimensions.size() != 0) {
    throw OMSException("OmPivotTable::CopyDimensions() -- _my->_dimensions.size() != 0",
                       static_cast<double>(dimensions.size()), 0);
  }
  try {
    for (const OmDimension* const dimension : other._my->_dimensions) {
      auto copy = std::make_unique<OmDimension>(*dimension, &_my->region);
      dimensions.push_back(copy.get());
      static_cast<void>(copy.release());  // the list owns it now
      _my->AddCellDimension();
    }
  } catch (...) {
    // A table without dimensions has no cells, so the store has no level to remove.
    for (OmDimension* const dimension : dimensions) {
      delete dimension;
    }
    dimensions.clear();
    throw;
  }
}

int OmPivotTable::FindDimension(const OmCellText& name) const {
  int which = 0;
  for (OmDimension* const dimension : _my->_dimensions) {
    OM_HARDEN(dimension->Name() != nullptr, "OmPivotTable::FindDimension");
    if (*dimension->Name() == name) {
      return which;
    }
    ++which;
  }
  return -1;
}

OmDimension* OmPivotTable::Dimension(int which) {
  return CheckedDimension(_my->_dimensions, which);
}

const OmDimension* OmPivotTable::Dimension(int which) const {
  return CheckedDimension(_my->_dimensions, which);
}

unsigned long OmPivotTable::NDimensions() const noexcept {
  return _my->_dimensions.size();
}

int OmPivotTable::Size(int which) const {
  CheckDimension(which, _my->_dimensions.size(), "OmPivotTable::Size() -- which < 0",
                 "OmPivotTable::Size() -- which < NDimensions()");
  return static_cast<int>(_my->_dimensions[static_cast<unsigned long>(which)]->NumCategories());
}

std::vector<int> OmPivotTable::SizeVector() const {
  return _my->SizeVector();
}

PuppetVector<short>& OmPivotTable::Rows() noexcept {
  return _my->rows;
}

const PuppetVector<short>& OmPivotTable::Rows() const noexcept {
  return _my->rows;
}

PuppetVector<short>& OmPivotTable::Columns() noexcept {
  return _my->columns;
}

const PuppetVector<short>& OmPivotTable::Columns() const noexcept {
  return _my->columns;
}

PuppetVector<short>& OmPivotTable::Layers() noexcept {
  return _my->layers;
}

const PuppetVector<short>& OmPivotTable::Layers() const noexcept {
  return _my->layers;
}
