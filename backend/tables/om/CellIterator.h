// The iterators over the stored cells of a pivot table.
//
//   for (OmPivotTable::ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) …
//
// Cells come with ascending subscripts, the first dimension's fastest. Only stored cells are
// visited. The start does not go back: where the first way down the store ends at nothing but nulls
// (a null was stored there, or every cell was deleted before a dimension was added), the walk is
// over at once, although other cells may exist. That is on purpose.

#ifndef BACKEND_TABLES_OM_CELLITERATOR_H
#define BACKEND_TABLES_OM_CELLITERATOR_H

#include <vector>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/PivotTable.h"

// Valid while the cells of its table are not changed.
//
// A copy is independent. Assignment shares the cursor instead, on purpose: after a = b, advancing
// one advances both. Iterators that share a cursor may go in any order; the last one takes it
// along.
class OM_API OmPivotTable::Iterator {
 public:
  // The place of a walk.
  struct OM_PRIVATE Data;

  // An iterator at the end.
  Iterator();
  // Takes ownership of `cursor`.
  explicit Iterator(Data* cursor) noexcept;
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
  Data* cursor;
};

// As Iterator, over the cells of a const table.
class OM_API OmPivotTable::ConstIterator {
 public:
  ConstIterator();
  explicit ConstIterator(Iterator::Data* cursor) noexcept;
  ConstIterator(const ConstIterator& other);
  ConstIterator& operator=(const ConstIterator& other) noexcept;
  ~ConstIterator();

  [[nodiscard]] const OmCellText* Cell() const noexcept;
  [[nodiscard]] std::vector<int> Index() const;
  ConstIterator& operator++();

 private:
  Iterator::Data* cursor;
};

#endif
