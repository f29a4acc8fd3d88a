#include "backend/tables/om/Exception.h"

#include <charconv>

namespace {

// Appends `value` in general notation with six significant digits, whatever the locale.
void AppendNumber(std::string& text, double value) {
  char digits[32];
  const auto end =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6);
  text.append(digits, end.ptr);
}

std::string Compose(const std::string& message, double value1, double value2) {
  std::string text = message + ", value 1 == ";
  AppendNumber(text, value1);
  text += ", value 2 == ";
  AppendNumber(text, value2);
  return text;
}

}  // namespace

OMSException::OMSException(const char* message_) : OMSException(message_, 0, 0) {}

OMSException::OMSException(const char* message_, double value1_, double value2_)
    : message(message_), value1(value1_), value2(value2_), text(Compose(message, value1, value2)) {}

OMSException::OMSException(const OMSException& other) = default;

OMSException::~OMSException() = default;

const char* OMSException::what() const noexcept {
  return text.c_str();
}
