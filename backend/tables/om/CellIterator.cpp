#include "backend/tables/om/CellIterator.h"

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTableData.h"

// Entry k of the levels belongs to dimension k: the last one to the root, entry 0 to the bottom
// vectors.
struct OmPivotTable::Iterator::Data {
  struct Level {
    unsigned long index = 0;          // of the current element, which is the current subscript
    int size = 0;                     // categories of the dimension when the walk started
    PointerVector* vector = nullptr;  // on the current path
  };

  Data() = default;
  explicit Data(const OmPivotTable::Data& table_);
  // Copies the place of the walk. Nobody holds the copy yet.
  Data(const Data& other)
      : levels(other.levels), cell(other.cell), table(other.table), changes(other.changes) {}
  Data& operator=(const Data&) = delete;

  // Moves to the next cell, or to the end.
  void Next();
  [[nodiscard]] std::vector<int> Index() const;

  static Data* Hold(Data* cursor) noexcept;
  static void LetGo(Data* cursor) noexcept;

  std::vector<Level> levels;
  OmCellText* cell = nullptr;                 // null at the end
  const OmPivotTable::Data* table = nullptr;  // null if there is none
  unsigned long changes = 0;                  // of the table's cells when the walk started
  unsigned long holders = 0;                  // iterators that share this cursor
};

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
  cell = static_cast<OmCellText*>(element);
}

// Goes up from a vector that has no further element, and down again through one that has.
void OmPivotTable::Iterator::Data::Next() {
  if (cell == nullptr) {
    return;
  }
  OM_HARDEN(table->changes == changes, "OmPivotTable::Iterator::operator++");
  // As a rule the next cell stands beside this one.
  Level& bottom = levels.front();
  if (const unsigned long next = bottom.index + 1;
      next < bottom.vector->size() && bottom.vector->Holds(next)) {
    bottom.index = next;
    cell = static_cast<OmCellText*>((*bottom.vector)[next]);
    return;
  }
  cell = nullptr;
  unsigned long k = 0;
  unsigned long start = levels[0].index + 1;
  while (k != levels.size()) {
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
      cell = static_cast<OmCellText*>(element);
      return;
    }
    --k;
    levels[k].vector = static_cast<PointerVector*>(element);
    start = 0;
  }
}

std::vector<int> OmPivotTable::Iterator::Data::Index() const {
  std::vector<int> index;
  index.reserve(levels.size());
  for (const Level& level : levels) {
    index.push_back(static_cast<int>(level.index));
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

OmCellText* OmPivotTable::Iterator::Cell() const noexcept {
  return cursor->cell;
}

OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
  cursor->Next();
  return *this;
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

const OmCellText* OmPivotTable::ConstIterator::Cell() const noexcept {
  return cursor->cell;
}

OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator++() {
  cursor->Next();
  return *this;
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
