// MultiBase, the mixed radix in which a display heading numbers the combinations of several
// dimensions, and Product, the number of those combinations.

#ifndef BACKEND_TABLES_MULTIBASE_H
#define BACKEND_TABLES_MULTIBASE_H

#include <vector>

#include "backend/tables/om/Export.h"

// Converts between a place and its digits. With the bases (3, 4) the places 0 … 11 have the digits
// (0,0), (0,1), (0,2), (0,3), (1,0), … (2,3): the last digit varies fastest.
class OM_API MultiBase {
 public:
  // Has no bases: its only place is 0, which has no digits.
  MultiBase() = default;
  // `bases` holds the radix of each digit, the most significant first.
  explicit MultiBase(const std::vector<unsigned int>& bases);

  [[nodiscard]] unsigned int Size() const noexcept;
  [[nodiscard]] std::vector<unsigned int> Bases() const;

  // Returns the digits of a place. The first digit is never reduced modulo its base, on purpose: by
  // a first digit at or beyond its base om::TableView recognises a place that is too large.
  // Dividing by a base of 0 ends the process.
  [[nodiscard]] std::vector<unsigned int> Digits(unsigned long long value) const;
  // Returns the place that has these digits. A digit is not checked against its base. Ends the
  // process unless there are as many digits as bases, and at least one.
  [[nodiscard]] unsigned long long Value(const std::vector<unsigned int>& digits) const;

 private:
  std::vector<unsigned int> bases;
};

// Returns the product of the elements, 1 if there are none. Each element is converted to 64 bits
// with its sign; an overflow wraps.
template <typename Container>
unsigned long long Product(const Container& elements);

extern template OM_API unsigned long long Product(const std::vector<unsigned int>& elements);
extern template OM_API unsigned long long Product(const std::vector<int>& elements);

#endif
