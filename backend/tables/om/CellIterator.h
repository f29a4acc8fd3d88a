// The iterators over the stored cells of a pivot table.
//
//   for (OmPivotTable::ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) …
//
// Cells come with ascending subscripts, the first dimension's fastest. Only stored cells are
// visited. The start does not go back, on purpose: if the first way down the store ends at nothing
// but nulls (a null was stored, or all cells were deleted before a dimension was added), the walk
// is over at once, although other cells may exist. OmPivotTable::NextCell finds those too.

#ifndef BACKEND_TABLES_OM_CELLITERATOR_H
#define BACKEND_TABLES_OM_CELLITERATOR_H

#include <memory>
#include <vector>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/PivotTable.h"

// Valid while the cells of its table are not changed; a hardened build ends the process at the
// first use after that.
//
// A copy is independent. Assignment shares the cursor instead, on purpose: after a = b, advancing
// one advances both. The last iterator that shares a cursor destroys it.
class OM_API OmPivotTable::Iterator {
 public:
  // The place of a walk.
  struct OM_PRIVATE Data;

  // An iterator at the end.
  Iterator();
  // Takes ownership of `cursor`.
  explicit Iterator(Data* cursor);
  Iterator(const Iterator& other);
  Iterator& operator=(const Iterator& other) noexcept;
  ~Iterator();

  // Returns the current cell, or null at the end.
  [[nodiscard]] OmCellText* Cell() const noexcept;
  // Returns the subscripts of the current cell, as OmPivotTable::Cell takes them.
  [[nodiscard]] std::vector<int> Index() const;
  // Moves to the next cell. At the end it stays there.
  Iterator& operator++();

 private:
  std::shared_ptr<Data> cursor;
};

// Entry k of the levels belongs to dimension k: the last one to the root, entry 0 to the bottom
// vectors.
struct OM_PRIVATE OmPivotTable::Iterator::Data {
  struct Level {
    unsigned long index = 0;          // of the current element, which is the current subscript;
                                      // in the bottom vector `next` is ahead of it
    int size = 0;                     // categories of the dimension when the walk started
    PointerVector* vector = nullptr;  // on the current path
  };

  Data() = default;
  explicit Data(const OmPivotTable::Data& table_);

  [[nodiscard]] OmCellText* Cell() const noexcept;
  [[nodiscard]] std::vector<int> Index() const;
  // Moves to the next cell, which as a rule stands beside this one, or to the end.
  void Next();
  OM_API void Advance();
  void Stand(void* element) noexcept;
  [[nodiscard]] OM_API bool IsValid() const noexcept;

  std::vector<Level> levels;
  OmCellText* cell = nullptr;                 // null at the end
  const OmPivotTable::Data* table = nullptr;  // null if there is none
  unsigned long changes = 0;                  // of the table's cells when the walk started
  // What follows the current cell in its vector; null at the end of the walk.
  void* const* next = nullptr;
  void* const* end = nullptr;
};

// As Iterator, over the cells of a const table.
class OM_API OmPivotTable::ConstIterator {
 public:
  ConstIterator();
  explicit ConstIterator(Iterator::Data* cursor);
  ConstIterator(const ConstIterator& other);
  ConstIterator& operator=(const ConstIterator& other) noexcept;
  ~ConstIterator();

  [[nodiscard]] const OmCellText* Cell() const noexcept;
  [[nodiscard]] std::vector<int> Index() const;
  ConstIterator& operator++();

 private:
  std::shared_ptr<Iterator::Data> cursor;
};

inline OmCellText* OmPivotTable::Iterator::Data::Cell() const noexcept {
  OM_HARDEN(IsValid(), "OmPivotTable::Iterator::Cell");
  return cell;
}

inline void OmPivotTable::Iterator::Data::Next() {
#if !defined(OM_HARDENING) || !OM_HARDENING
  if (next != end && *next != nullptr) {
    cell = static_cast<OmCellText*>(*next++);
    return;
  }
#endif
  Advance();
}

inline OmCellText* OmPivotTable::Iterator::Cell() const noexcept {
  return cursor->Cell();
}

inline OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
  cursor->Next();
  return *this;
}

inline const OmCellText* OmPivotTable::ConstIterator::Cell() const noexcept {
  return cursor->Cell();
}

inline OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator++() {
  cursor->Next();
  return *this;
}

#endif
