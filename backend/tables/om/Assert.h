// The two kinds of checks that end the process.
//
// OM_ASSERT guards the named internal invariants. It is always on. Its source, line, function and
// condition are fixed texts, which identify the invariant in a crash report and do not change with
// the code.
//
// OM_HARDEN guards preconditions that a release build does not check. It is on if OM_HARDENING is
// defined and not 0 (Debug, tests, sanitizer builds) and costs nothing otherwise. It changes no
// defined behaviour.
//
// Everything here is inline, so that neither the libraries nor header-only users need a symbol of
// each other.

#ifndef BACKEND_TABLES_OM_ASSERT_H
#define BACKEND_TABLES_OM_ASSERT_H

#include <cstdio>
#include <cstdlib>

// Reports a failed check on the standard error, as "source:line: function: Assertion `condition'
// failed.", and ends the process. A line of 0 is left out of the message.
[[noreturn]] inline void OmAssertFailed(const char* condition, const char* source,
                                        unsigned int line, const char* function) {
  if (line != 0) {
    std::fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", source, line, function, condition);
  } else {
    std::fprintf(stderr, "%s: %s: Assertion `%s' failed.\n", source, function, condition);
  }
  std::abort();
}

// Ends the process with the given texts unless `holds` is true.
#define OM_ASSERT(holds, condition, source, line, function) \
  ((holds) ? static_cast<void>(0) : OmAssertFailed(condition, source, line, function))

// Ends the process with a message that names the operation and the broken condition. `operation` is
// a text such as "OmVector::operator[]".
#if defined(OM_HARDENING) && OM_HARDENING
#define OM_HARDEN(condition, operation) \
  ((condition) ? static_cast<void>(0) : OmAssertFailed(#condition, __FILE__, __LINE__, operation))
#else
#define OM_HARDEN(condition, operation) static_cast<void>(0)
#endif

#endif
