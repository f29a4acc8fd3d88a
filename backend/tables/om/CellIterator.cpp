#include "backend/tables/om/CellIterator.h"

#include <algorithm>
#include <bit>

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
    // No way back where this finds only nulls: the walk is then over at its start, on purpose.
    const unsigned long index = FindNonZero(*level.vector, 0);
    element = nullptr;
    if (index < level.vector->size()) {
      level.index = index;
      element = (*level.vector)[index];
    }
  }
  Stand(element);
}

void OmPivotTable::Iterator::Data::Stand(void* element) noexcept {
  cell = static_cast<OmCellText*>(element);
  next = end = nullptr;
  if (cell != nullptr) {
    const Level& bottom = levels.front();
    next = bottom.vector->begin() + bottom.index + 1;
    end = bottom.vector->end();
  }
}

unsigned long OmPivotTable::Iterator::Data::BottomIndex() const noexcept {
  const Level& bottom = levels.front();
  return next != nullptr ? static_cast<unsigned long>(next - bottom.vector->begin()) - 1
                         : bottom.index;
}

void* OmPivotTable::Iterator::Data::Increment(unsigned long level) {
  Level& my = levels[level];
  unsigned long index = FindNonZero(*my.vector, my.index + 1);
  while (index >= my.vector->size()) {
    if (level + 1 == levels.size()) {
      return nullptr;
    }
    const PointerVector* const from = levels[level + 1].vector;
    const unsigned long before = levels[level + 1].index;
    auto* const vector = static_cast<PointerVector*>(Increment(level + 1));
    if (vector == nullptr) {
      return nullptr;
    }
    my.vector = vector;
    if (level == 0) {
      const PointerVector& above = *levels[1].vector;
      above.AskForNext(from == &above ? before : ~0UL, levels[1].index);
    }
    index = FindNonZero(*vector, 0);
  }
  my.index = index;
  return (*my.vector)[index];
}

void OmPivotTable::Iterator::Data::LookFurther() noexcept {
  if (levels.size() < 2) {
    return;
  }
  const PointerVector& above = *levels[1].vector;
  const auto vector = [&above](unsigned long i) {
    return i < above.size() ? static_cast<const PointerVector*>(above.begin()[i]) : nullptr;
  };
  const unsigned long index = levels[1].index;
  if (aheadAbove != &above || aheadIndex < index) {
    aheadAbove = &above;
    aheadIndex = index;
    ahead = next;
    aheadEnd = levels[0].vector->end();
    for (long i = 0; i != kAhead && ahead != aheadEnd; ++i) {
      __builtin_prefetch(*ahead++);
    }
  } else if (aheadIndex < std::min(index + kVectorsAhead, above.size())) {
    ++aheadIndex;
    const PointerVector* const wanted = vector(aheadIndex);
    if (wanted != nullptr) {
      ahead = wanted->begin();
      aheadEnd = wanted->end();
      if (const unsigned long* marks = wanted->Marks(); marks != nullptr) {
        // Looking into empty stretches takes memory.
        unsigned long filled = 0;
        for (int marked = 64; marked == 64 && filled < wanted->size(); ++marks) {
          marked = std::countr_one(*marks);
          filled += static_cast<unsigned long>(marked) * PointerVector::kStretch;
        }
        aheadEnd = ahead + std::min(filled, wanted->size());
      }
    }
  }
  __builtin_prefetch(vector(aheadIndex + 2));
  if (const PointerVector* const later = vector(aheadIndex + 1); later != nullptr) {
    // An address, because there may be no room.
    const auto elements = reinterpret_cast<unsigned long>(later->begin());
    for (unsigned long i = 0; i < 512; i += 64) {
      __builtin_prefetch(reinterpret_cast<const void*>(elements + i));
    }
  }
}

void OmPivotTable::Iterator::Data::Advance() {
  if (cell != nullptr) {
    OM_HARDEN(table->changes == changes, "OmPivotTable::Iterator::operator++");
    levels.front().index = BottomIndex();
    Stand(Increment(0));
  }
}

std::vector<int> OmPivotTable::Iterator::Data::Index() const {
  std::vector<int> index;
  index.reserve(levels.size());
  for (const Level& level : levels) {
    index.push_back(static_cast<int>(&level == &levels.front() ? BottomIndex() : level.index));
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
