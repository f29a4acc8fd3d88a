#include "backend/tables/MultiBase.h"

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
  if (bases.empty()) {
    return digits;
  }
  unsigned long i = bases.size() - 1;
  for (; i != 0 && value != 0; --i) {
    OM_ASSERT(bases[i] > 0, "b>0", kSource, 0, "Digits");
    digits[i] = static_cast<unsigned int>(value % bases[i]);
    value /= bases[i];
  }
  // If the loop reached the first base, its digit is the remaining quotient, not reduced, on
  // purpose (see the header).
  digits[i] = static_cast<unsigned int>(value);
  return digits;
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
