#include "platform/cells/Number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

static_assert(sizeof(OmNumber) <= 40, "a number fits a region block of 40 bytes");

OmCellText* OmNumber::Clone(OmMemoryRegion* region) const {
  return hasMeta() ? new (region) OmNumber(*this, region)
                   : Whole(new (region) OmNumber(value, format, region));
}

unsigned long OmNumber::Kind() const noexcept {
  return 1;
}

std::string OmNumber::Text() const {
  return Text(value, format);
}

void OmNumber::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

OmCellText::Key OmNumber::OrderKey(std::string&) const {
  return {true, value, {}, Kind(), {}};
}

std::string OmNumber::Text(double value, const Qualtex_Format& format) {
  if (std::isnan(value)) {
    return ".";
  }
  // A sign, the digits of the largest number, a point and as many decimals as a format can have.
  constexpr int kDecimals = std::numeric_limits<unsigned char>::max();
  char digits[2 + std::numeric_limits<double>::max_exponent10 + 1 + kDecimals];
  const char* first = std::begin(digits);
  const char* const last = std::to_chars(std::begin(digits), std::end(digits), value,
                                         std::chars_format::fixed, format.Decimals())
                               .ptr;
  // A number that is rounded to zero has no sign.
  if (*first == '-' &&
      std::all_of(first + 1, last, [](char digit) { return digit == '0' || digit == '.'; })) {
    ++first;
  }
  return {first, last};
}
