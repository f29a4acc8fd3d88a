// Converts UTF-8 text into a named code page.
//
// A conversion holds every character or fails; nothing is put in a character's place. No function
// here throws. A converter is used by one thread at a time.

#ifndef PLATFORM_SUPPORT_CONVERTER_H
#define PLATFORM_SUPPORT_CONVERTER_H

#include <string>

#include "platform/Export.h"

struct QualtexMBConverter;

extern "C" {

// Returns a converter into `codePage`, or null where that is unknown. A name takes no suffix: there
// is no asking for substitutes.
OM_PLATFORM_API QualtexMBConverter* QualtexMBConverterNew_A(const char* codePage) noexcept;

// Replaces `out` by `text` in the converter's code page and returns 0. Returns another value, and
// leaves `out` as it is, where the converter is null, `text` is no UTF-8, the code page lacks a
// character or there is no memory. `out` may be `text`.
OM_PLATFORM_API int QualtexMBU8ToGeneric(QualtexMBConverter* converter, std::string& out,
                                         const std::string& text) noexcept;

// Null is ignored.
OM_PLATFORM_API void QualtexMBConverterDelete_A(QualtexMBConverter* converter) noexcept;

}  // extern "C"

#endif
