// The two strengths of checks that end the process.
//
// OM_ASSERT guards the named internal invariants. It is always on. Its source, line, function and
// condition are fixed texts: they name the invariant to whoever reads a crash report, and do not
// move with the code.
//
// OM_HARDEN guards preconditions that are otherwise trusted: what a caller must not do and what no
// release build looks at. It is on where OM_HARDENING is defined (Debug, tests, sanitizer builds)
// and costs nothing elsewhere. No defined behaviour changes with it.
//
// Everything here is inline, so that both libraries and header-only users can do without the
// other's symbols.

#ifndef BACKEND_TABLES_OM_ASSERT_H
#define BACKEND_TABLES_OM_ASSERT_H

#include <cstdio>
#include <cstdlib>

// Reports a failed check on the standard error, as "source:line: function: Assertion `condition'
// failed.", and ends the process. A line of 0 means that the check has no line, and leaves it out.
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

// Ends the process with the operation and the condition that its caller broke. `operation` is a
// text such as "OmVector::operator[]".
#if defined(OM_HARDENING) && OM_HARDENING
#define OM_HARDEN(condition, operation) \
  ((condition) ? static_cast<void>(0) : OmAssertFailed(#condition, __FILE__, __LINE__, operation))
#else
#define OM_HARDEN(condition, operation) static_cast<void>(0)
#endif

#endif
