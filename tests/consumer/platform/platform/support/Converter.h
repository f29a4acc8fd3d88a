// Knows no code page.

#ifndef PLATFORM_SUPPORT_CONVERTER_H
#define PLATFORM_SUPPORT_CONVERTER_H

#include <string>

struct QualtexMBConverter;

extern "C" {
inline QualtexMBConverter* QualtexMBConverterNew_A(const char*) noexcept {
  return nullptr;
}
inline int QualtexMBU8ToGeneric(QualtexMBConverter*, std::string&, const std::string&) noexcept {
  return 1;
}
inline void QualtexMBConverterDelete_A(QualtexMBConverter*) noexcept {}
}

#endif
