// Converts UTF-8 text into a named code page.
//
// A conversion keeps every character or fails: it replaces none, even if the system's tables have a
// substitute or a look-alike. No function here throws. A converter is used by one thread at a time.

#ifndef PLATFORM_SUPPORT_CONVERTER_H
#define PLATFORM_SUPPORT_CONVERTER_H

#include <string>

#include "platform/Export.h"

struct QualtexMBConverter;

extern "C" {

// Returns a converter into `codePage`, to be deleted by the caller, or null if the page is unknown
// or there is no memory. A name may have no suffix, so substitutes cannot be requested. The library
// passes the result on to the other two functions without a check, so they are called with null as
// well.
OM_PLATFORM_API QualtexMBConverter* QualtexMBConverterNew_A(const char* codePage) noexcept;

// Replaces `out` by `text` in the converter's code page and returns 0. Returns another value, and
// leaves `out` as it is, if the converter is null, if `text` is not UTF-8, if the code page lacks a
// character, or if there is no memory. `out` may be `text`.
//
// A code page has a character if its bytes for the character mean this character and no other, with
// two exceptions. Pages that compose letters with their accents or points have the same bytes for
// the composed and the separate form. Japanese pages have one code for the backslash and the yen
// sign, and one for the tilde and the overline.
OM_PLATFORM_API int QualtexMBU8ToGeneric(QualtexMBConverter* converter, std::string& out,
                                         const std::string& text) noexcept;

// Deletes a converter; null is ignored.
OM_PLATFORM_API void QualtexMBConverterDelete_A(QualtexMBConverter* converter) noexcept;

}  // extern "C"

#endif
