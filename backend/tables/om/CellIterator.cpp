#include "backend/tables/om/CellIterator.h"

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTableData.h"

OmPivotTable::Iterator::Data::Data(const OmPivotTable::Data& table_)
    : levels(table_._dimensions.size()), table(&table_), changes(table_.changes) {
  void* element = levels.empty() ? nullptr : table_.root;
  for (unsigned long k = levels.size(); k-- > 0 && element != nullptr;) {
    Level& level = levels[k];
    level.size = static_cast<int>(table_._dimensions[k]->NumCategories());
    level.vector = static_cast<PointerVector*>(element);
    // No way back if this finds only nulls: the walk is then over at its start, on purpose.
    const unsigned long index = level.vector->Find(0);
    element = nullptr;
    if (index < level.vector->size()) {
      level.index = index;
      element = (*level.vector)[index];
    }
  }
  Stand(element);
}

// Makes `element`, which the levels lead to, the current cell; null ends the walk.
void OmPivotTable::Iterator::Data::Stand(void* element) noexcept {
  cell = static_cast<OmCellText*>(element);
  next = end = nullptr;
  if (cell != nullptr) {
    next = levels[0].vector->begin() + levels[0].index + 1;
    end = levels[0].vector->end();
  }
}

// Goes up from a vector that has no further element, and down again through one that has.
void OmPivotTable::Iterator::Data::Advance() {
  OM_HARDEN(IsValid(), "OmPivotTable::Iterator::operator++");
  if (cell == nullptr) {
    return;
  }
  auto start = static_cast<unsigned long>(next - levels[0].vector->begin());
  levels[0].index = start - 1;
  for (unsigned long k = 0; k != levels.size();) {
    Level& level = levels[k];
    const unsigned long index = level.vector->Find(start);
    if (index == level.vector->size()) {
      ++k;
      start = k != levels.size() ? levels[k].index + 1 : 0;
      continue;
    }
    level.index = index;
    void* const element = (*level.vector)[index];
    if (k == 0) {
      return Stand(element);
    }
    levels[--k].vector = static_cast<PointerVector*>(element);
    start = 0;
  }
  Stand(nullptr);
}

bool OmPivotTable::Iterator::Data::IsValid() const noexcept {
  return cell == nullptr || table->changes == changes;
}

std::vector<int> OmPivotTable::Iterator::Data::Index() const {
  OM_HARDEN(IsValid(), "OmPivotTable::Iterator::Index");
  std::vector<int> index;
  index.reserve(levels.size());
  for (const Level& level : levels) {
    index.push_back(static_cast<int>(level.index));
  }
  if (next != nullptr) {
    index[0] = static_cast<int>(next - levels[0].vector->begin()) - 1;
  }
  return index;
}

OmPivotTable::Iterator::Iterator() : cursor(std::make_shared<Data>()) {}

OmPivotTable::Iterator::Iterator(Data* cursor_) : cursor(cursor_) {
  OM_HARDEN(cursor != nullptr, "OmPivotTable::Iterator::Iterator");
}

OmPivotTable::Iterator::Iterator(const Iterator& other)
    : cursor(std::make_shared<Data>(*other.cursor)) {}

// Shares the cursor, on purpose.
OmPivotTable::Iterator& OmPivotTable::Iterator::operator=(const Iterator& other) noexcept = default;

OmPivotTable::Iterator::~Iterator() = default;

std::vector<int> OmPivotTable::Iterator::Index() const {
  return cursor->Index();
}

OmPivotTable::ConstIterator::ConstIterator() : cursor(std::make_shared<Iterator::Data>()) {}

OmPivotTable::ConstIterator::ConstIterator(Iterator::Data* cursor_) : cursor(cursor_) {
  OM_HARDEN(cursor != nullptr, "OmPivotTable::ConstIterator::ConstIterator");
}

OmPivotTable::ConstIterator::ConstIterator(const ConstIterator& other)
    : cursor(std::make_shared<Iterator::Data>(*other.cursor)) {}

OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator=(
    const ConstIterator& other) noexcept = default;

OmPivotTable::ConstIterator::~ConstIterator() = default;

std::vector<int> OmPivotTable::ConstIterator::Index() const {
  return cursor->Index();
}

OmPivotTable::Iterator OmPivotTable::FirstCell() {
  return Iterator(new Iterator::Data(*_my));
}

OmPivotTable::ConstIterator OmPivotTable::FirstCell() const {
  return ConstIterator(new Iterator::Data(*_my));
}
