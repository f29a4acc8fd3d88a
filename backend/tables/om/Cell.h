// om::Cell, a short way to make a cell text from a string or a number:
//
//   using om::Cell;
//   OmDimension* fate = table.AddDimension(Cell("Fate"));
//   fate->Child(fate->Root(), Cell("Saved"), 0, false);
//   table.Cell({0}, Cell(203));
//
// Functions with a cell-text parameter do not accept plain strings and numbers, on purpose: a
// literal 0 is also a null pointer, and setting a cell to null clears it.

#ifndef BACKEND_TABLES_OM_CELL_H
#define BACKEND_TABLES_OM_CELL_H

#include <string_view>
#include <type_traits>

#include "platform/cells/Number.h"
#include "platform/cells/StringCell.h"

namespace om {

// What a string cell can be made of. A null pointer is no text.
template <typename Text>
concept PlainText =
    std::is_convertible_v<const Text&, std::string_view> && !std::is_null_pointer_v<Text>;

// What a number can be made of. bool and the character types are not numbers.
template <typename Value>
concept PlainNumber =
    std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool> && !std::is_same_v<Value, char> &&
    !std::is_same_v<Value, wchar_t> && !std::is_same_v<Value, char8_t> &&
    !std::is_same_v<Value, char16_t> && !std::is_same_v<Value, char32_t>;

// Returns a string cell. `text` is UTF-8, and is copied.
template <PlainText Text>
[[nodiscard]] OmStringCell Cell(const Text& text) {
  return OmStringCell(text);
}

// Returns a number without a format of its own. An integer beyond 2^53 is rounded to a double.
template <PlainNumber Value>
[[nodiscard]] OmNumber Cell(Value value) {
  return OmNumber(static_cast<double>(value));
}

}  // namespace om

#endif
