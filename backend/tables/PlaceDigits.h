// PlaceDigits, which reads single digits of the places that MultiBase numbers.

#ifndef BACKEND_TABLES_PLACEDIGITS_H
#define BACKEND_TABLES_PLACEDIGITS_H

#include <algorithm>
#include <vector>

// Gives the digits of MultiBase one at a time, without an allocation. It differs in one point: a
// base of 0 counts as 1 here, and ends no process.
class PlaceDigits {
 public:
  // Has no digits.
  PlaceDigits() = default;
  // `bases` holds the radix of each digit, the most significant first.
  explicit PlaceDigits(const std::vector<unsigned int>& bases) : digits(bases.size()) {
    unsigned long long weight = 1;
    for (unsigned long k = bases.size(); k-- != 0;) {
      const unsigned int base = std::max(bases[k], 1U);
      digits[k] = {weight, base, fits};
      fits = !__builtin_mul_overflow(weight, base, &weight) && fits;
    }
  }

  // Returns whether every place has a number, that is whether their count fits 64 bits.
  [[nodiscard]] bool Fits() const noexcept { return fits; }
  // Returns what digit `k` counts for in the number of a place, modulo 2 to the 64th.
  [[nodiscard]] unsigned long long Weight(unsigned long k) const { return digits[k].weight; }
  // Returns digit `k` of a place. The first one is not reduced: it is at or beyond its base where
  // the place is beyond the last.
  [[nodiscard]] unsigned int Digit(unsigned long long place, unsigned long k) const {
    const One& digit = digits[k];
    if (!digit.fits) {
      return 0;  // it counts for more than any number
    }
    const unsigned long long quotient = digit.weight == 1 ? place : place / digit.weight;
    return static_cast<unsigned int>(k == 0 ? quotient : quotient % digit.base);
  }

 private:
  struct One {
    unsigned long long weight;
    unsigned int base;
    bool fits;  // whether the weight fits 64 bits
  };

  std::vector<One> digits;
  bool fits = true;
};

#endif
