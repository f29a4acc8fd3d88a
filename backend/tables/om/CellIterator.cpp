#include "backend/tables/om/CellIterator.h"

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTableData.h"

// The cursor of a walk over the cell store. Entry k of the levels belongs to dimension k: the last
// one to the root, entry 0 to the bottom vectors.
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

  // Moves `level` to its next element and returns that, or null at the end of the walk.
  void* Increment(unsigned long level);
  void Advance();
  [[nodiscard]] std::vector<int> Index() const;

  static Data* Hold(Data* cursor) noexcept;
  static void LetGo(Data* cursor) noexcept;

  std::vector<Level> levels;
  OmCellText* cell = nullptr;
  const OmPivotTable::Data* table = nullptr;
  unsigned long changes = 0;  // of the table's cells when the walk started
  unsigned long holders = 0;  // iterators that share this cursor
};

OmPivotTable::Iterator::Data::Data(const OmPivotTable::Data& table_)
    : levels(table_._dimensions.size()), table(&table_), changes(table_.changes) {
  void* element = levels.empty() ? nullptr : table_.root;
  for (unsigned long k = levels.size(); k-- > 0 && element != nullptr;) {
    Level& level = levels[k];
    level.size = static_cast<int>(table_._dimensions[k]->NumCategories());
    level.vector = static_cast<PointerVector*>(element);
    // No way back where this finds only nulls: the walk is then over at its start, on purpose.
    const unsigned long index = FindNonZero(*level.vector, 0);
    element = nullptr;
    if (index < level.vector->size()) {
      level.index = index;
      element = (*level.vector)[index];
    }
  }
  cell = static_cast<OmCellText*>(element);
}

void* OmPivotTable::Iterator::Data::Increment(unsigned long level) {
  Level& my = levels[level];
  unsigned long index = FindNonZero(*my.vector, my.index + 1);
  while (index >= my.vector->size()) {
    if (level + 1 == levels.size()) {
      return nullptr;
    }
    auto* const next = static_cast<PointerVector*>(Increment(level + 1));
    if (next == nullptr) {
      return nullptr;
    }
    my.vector = next;
    index = FindNonZero(*next, 0);
  }
  my.index = index;
  return (*my.vector)[index];
}

void OmPivotTable::Iterator::Data::Advance() {
  if (cell != nullptr) {
    OM_HARDEN(table->changes == changes, "OmPivotTable::Iterator::operator++");
    cell = static_cast<OmCellText*>(Increment(0));
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

std::vector<int> OmPivotTable::Iterator::Index() const {
  return cursor->Index();
}

OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
  cursor->Advance();
  return *this;
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

std::vector<int> OmPivotTable::ConstIterator::Index() const {
  return cursor->Index();
}

OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator++() {
  cursor->Advance();
  return *this;
}

OmPivotTable::Iterator OmPivotTable::FirstCell() {
  return Iterator(new Iterator::Data(*_my));
}

OmPivotTable::ConstIterator OmPivotTable::FirstCell() const {
  return ConstIterator(new Iterator::Data(*_my));
}
