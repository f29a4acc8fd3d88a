// A mistake that docs/errors.md shows. Compiled with the hardening checks, and with the sources
// that it needs rather than a library, which may be built without them.

#include "backend/tables/om/Vector.h"

int main() {
  OmVector<int> numbers(nullptr);
  // [index]
  numbers.push_back(1);
  return numbers[1];  // there is no second element
  // [index]
}
