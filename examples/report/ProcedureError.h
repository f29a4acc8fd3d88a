// ProcedureError, thrown where a procedure cannot go on with the data that it was given.

#ifndef EXAMPLES_REPORT_PROCEDUREERROR_H
#define EXAMPLES_REPORT_PROCEDUREERROR_H

#include <stdexcept>

namespace report {

// What has been placed in the document so far is replaced by the message; other procedures go on.
class ProcedureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace report

#endif
