// OMSException, the one exception type of the library.

#ifndef BACKEND_TABLES_OM_EXCEPTION_H
#define BACKEND_TABLES_OM_EXCEPTION_H

#include <exception>
#include <string>

#include "backend/tables/om/Export.h"

// Reports a broken precondition of a public operation: a fixed message that names the operation and
// the condition that has to hold, and up to two numbers that show the offending values.
//
// The library throws it and never catches it. Constructing one fails only if there is no memory for
// the texts.
class OM_API OMSException : public std::exception {
 public:
  // Copies `message`; both values are 0.
  explicit OMSException(const char* message);
  OMSException(const char* message, double value1, double value2);
  OMSException(const OMSException& other);
  OMSException& operator=(const OMSException& other) = delete;
  ~OMSException() override;

  // Returns "<message>, value 1 == <V1>, value 2 == <V2>", the values in general notation with
  // six significant digits. The text lives as long as the exception.
  const char* what() const noexcept override;

 private:
  std::string message;
  double value1;
  double value2;
  std::string text;  // result of what(); composed in the constructor, which can still fail
};

#endif
