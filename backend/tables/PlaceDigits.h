// PlaceDigits, which reads single digits of the places that MultiBase numbers.

#ifndef BACKEND_TABLES_PLACEDIGITS_H
#define BACKEND_TABLES_PLACEDIGITS_H

#include <algorithm>
#include <vector>

// Returns single digits of the places of a MultiBase with the same bases, without an allocation.
// One difference: a base of 0 counts as 1 here and does not end the process.
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

  // Returns whether the number of places fits 64 bits.
  [[nodiscard]] bool Fits() const noexcept { return fits; }
  // Returns the weight of digit `k`, the product of the bases behind it, modulo 2^64.
  [[nodiscard]] unsigned long long Weight(unsigned long k) const { return digits[k].weight; }
  // Returns digit `k` of a place. The first digit is not reduced modulo its base: a place beyond
  // the last one has a first digit at or beyond its base.
  [[nodiscard]] unsigned int Digit(unsigned long long place, unsigned long k) const {
    const One& digit = digits[k];
    if (!digit.fits) {
      return 0;  // its weight is larger than any place
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
