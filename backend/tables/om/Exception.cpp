#include "backend/tables/om/Exception.h"

#include <sstream>

namespace {

std::string Compose(const std::string& message, double value1, double value2) {
  std::ostringstream stream;
  stream << message << ", value 1 == " << value1 << ", value 2 == " << value2;
  return stream.str();
}

}  // namespace

OMSException::OMSException(const char* message_) : OMSException(message_, 0, 0) {}

OMSException::OMSException(const char* message_, double value1_, double value2_)
    : message(message_),
      value1(value1_),
      value2(value2_),
      text(Compose(message, value1, value2)) {}

OMSException::OMSException(const OMSException& other) = default;

OMSException::~OMSException() = default;

const char* OMSException::what() const noexcept {
  return text.c_str();
}
