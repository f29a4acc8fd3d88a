#include "backend/tables/MultiBase.h"

#include <algorithm>
#include <limits>

#include "backend/tables/om/Assert.h"

namespace {

constexpr char kSource[] = "backend/tables/MultiBase";

}  // namespace

MultiBase::MultiBase(const std::vector<unsigned int>& bases_) : bases(bases_) {}

unsigned int MultiBase::Size() const noexcept {
  return static_cast<unsigned int>(bases.size());
}

std::vector<unsigned int> MultiBase::Bases() const {
  return bases;
}

std::vector<unsigned int> MultiBase::Digits(unsigned long long value) const {
  std::vector<unsigned int> digits(bases.size());
  Digits(value, digits.data());
  return digits;
}

void MultiBase::Digits(unsigned long long value, unsigned int* digits) const {
  if (bases.empty()) {
    return;
  }
  unsigned long i = bases.size() - 1;
  for (; i != 0 && value != 0; --i) {
    const unsigned int b = bases[i];
    OM_ASSERT(b > 0, "b>0", kSource, 0, "Digits");
    if (value <= std::numeric_limits<unsigned int>::max()) {
      // A division of 32 bits costs less than half of one of 64.
      const auto rest = static_cast<unsigned int>(value);
      digits[i] = rest % b;
      value = rest / b;
    } else {
      digits[i] = static_cast<unsigned int>(value % b);
      value /= b;
    }
  }
  // Where the walk came to the first base, its digit takes all that is left, unreduced on purpose.
  digits[i] = static_cast<unsigned int>(value);
  std::fill_n(digits, i, 0U);
}

unsigned long long MultiBase::Value(const std::vector<unsigned int>& digits) const {
  OM_ASSERT(!digits.empty() && digits.size() == bases.size(), "digit == end && i == size", kSource,
            0, "Value");
  unsigned long long value = digits[0];
  for (unsigned long i = 1; i != digits.size(); ++i) {
    value = value * bases[i] + digits[i];
  }
  return value;
}

template <typename Container>
unsigned long long Product(const Container& elements) {
  unsigned long long product = 1;
  for (const auto element : elements) {
    product *= static_cast<unsigned long long>(element);
  }
  return product;
}

template OM_API unsigned long long Product(const std::vector<unsigned int>& elements);
template OM_API unsigned long long Product(const std::vector<int>& elements);
