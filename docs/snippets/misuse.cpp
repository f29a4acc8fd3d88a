// A mistake that docs/errors.md shows. Compiled with the hardening checks, whatever the library was
// built with.

#include "backend/tables/om/Vector.h"

int main() {
  OmVector<int> numbers(nullptr);
  // [index]
  numbers.push_back(1);
  return numbers[1];  // there is no second element
  // [index]
}
