// Knows no code page.

#ifndef PLATFORM_SUPPORT_CONVERTER_H
#define PLATFORM_SUPPORT_CONVERTER_H

#include <string>

struct QualtexMBConverter;

extern "C" {
QualtexMBConverter* QualtexMBConverterNew_A(const char* codePage) noexcept;
int QualtexMBU8ToGeneric(QualtexMBConverter* converter, std::string& out,
                         const std::string& text) noexcept;
void QualtexMBConverterDelete_A(QualtexMBConverter* converter) noexcept;
}

#endif
