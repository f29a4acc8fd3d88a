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
  if (cell == nullptr) {
    return;
  }
  OM_HARDEN(table->changes == changes, "OmPivotTable::Iterator::operator++");
  unsigned long k = 0;
  unsigned long start = static_cast<unsigned long>(next - levels[0].vector->begin());
  levels[0].index = start - 1;
  void* element = nullptr;
  while (k != levels.size()) {
    Level& level = levels[k];
    const unsigned long index = level.vector->Find(start);
    if (index == level.vector->size()) {
      ++k;
      start = k != levels.size() ? levels[k].index + 1 : 0;
      continue;
    }
    level.index = index;
    element = (*level.vector)[index];
    if (k == 0) {
      break;
    }
    --k;
    levels[k].vector = static_cast<PointerVector*>(element);
    start = 0;
  }
  Stand(k == 0 ? element : nullptr);
}

std::vector<int> OmPivotTable::Iterator::Data::Index() const {
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

OmPivotTable::Iterator::Data* OmPivotTable::Iterator::Data::Hold(Data* cursor) noexcept {
  OM_HARDEN(cursor != nullptr, "OmPivotTable::Iterator::Iterator");
  ++cursor->holders;
  return cursor;
}

void OmPivotTable::Iterator::Data::LetGo(Data* cursor) noexcept {
  if (--cursor->holders == 0) {
    delete cursor;
  }
}

OmPivotTable::Iterator::Iterator() : Iterator(new Data) {}

OmPivotTable::Iterator::Iterator(Data* cursor_) noexcept : cursor(Data::Hold(cursor_)) {}

OmPivotTable::Iterator::Iterator(const Iterator& other) : Iterator(new Data(*other.cursor)) {}

// The cursor is shared, not copied, on purpose.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): holding comes before letting go
OmPivotTable::Iterator& OmPivotTable::Iterator::operator=(const Iterator& other) noexcept {
  Data* const old = cursor;
  cursor = Data::Hold(other.cursor);
  Data::LetGo(old);
  return *this;
}

OmPivotTable::Iterator::~Iterator() {
  Data::LetGo(cursor);
}

std::vector<int> OmPivotTable::Iterator::Index() const {
  return cursor->Index();
}

OmPivotTable::ConstIterator::ConstIterator() : ConstIterator(new Iterator::Data) {}

OmPivotTable::ConstIterator::ConstIterator(Iterator::Data* cursor_) noexcept
    : cursor(Iterator::Data::Hold(cursor_)) {}

OmPivotTable::ConstIterator::ConstIterator(const ConstIterator& other)
    : ConstIterator(new Iterator::Data(*other.cursor)) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): holding comes before letting go
OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator=(
    const ConstIterator& other) noexcept {
  Iterator::Data* const old = cursor;
  cursor = Iterator::Data::Hold(other.cursor);
  Iterator::Data::LetGo(old);
  return *this;
}

OmPivotTable::ConstIterator::~ConstIterator() {
  Iterator::Data::LetGo(cursor);
}

std::vector<int> OmPivotTable::ConstIterator::Index() const {
  return cursor->Index();
}

OmPivotTable::Iterator OmPivotTable::FirstCell() {
  return Iterator(new Iterator::Data(*_my));
}

OmPivotTable::ConstIterator OmPivotTable::FirstCell() const {
  return ConstIterator(new Iterator::Data(*_my));
}
