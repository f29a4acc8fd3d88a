#include "platform/support/Converter.h"

#include <iconv.h>

#include <cerrno>
#include <new>

struct QualtexMBConverter {
  iconv_t descriptor;
};

namespace {

const iconv_t kUnknown = reinterpret_cast<iconv_t>(-1);
constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

// Converts `bytes` bytes at `in` and appends them to `out`. A null `in` appends what brings the
// code page back to its initial state. Returns false where a character was lost.
bool Append(iconv_t descriptor, char* in, std::size_t bytes, std::string& out) {
  std::size_t used = out.size();
  for (;;) {
    out.resize(used + bytes + 16);
    char* to = out.data() + used;
    std::size_t room = out.size() - used;
    const std::size_t replaced =
        iconv(descriptor, in != nullptr ? &in : nullptr, &bytes, &to, &room);
    const bool full = replaced == kFailed && errno == E2BIG;
    used = out.size() - room;
    if (!full) {
      out.resize(used);
      return replaced == 0;
    }
  }
}

}  // namespace

QualtexMBConverter* QualtexMBConverterNew_A(const char* codePage) noexcept {
  // The empty name would be the process's own encoding, which is nobody's choice here.
  if (codePage == nullptr || *codePage == '\0') {
    return nullptr;
  }
  const iconv_t descriptor = iconv_open(codePage, "UTF-8");
  if (descriptor == kUnknown) {
    return nullptr;
  }
  auto* const converter = new (std::nothrow) QualtexMBConverter{descriptor};
  if (converter == nullptr) {
    iconv_close(descriptor);
  }
  return converter;
}

int QualtexMBU8ToGeneric(QualtexMBConverter* converter, std::string& out,
                         const std::string& text) noexcept {
  if (converter == nullptr) {
    return 1;
  }
  try {
    // A conversion that failed may have left the descriptor in the middle of a character.
    iconv(converter->descriptor, nullptr, nullptr, nullptr, nullptr);
    std::string converted;
    if (!Append(converter->descriptor, const_cast<char*>(text.data()), text.size(), converted) ||
        !Append(converter->descriptor, nullptr, 0, converted)) {
      return 1;
    }
    out.swap(converted);
    return 0;
  } catch (...) {
    return 1;
  }
}

void QualtexMBConverterDelete_A(QualtexMBConverter* converter) noexcept {
  if (converter != nullptr) {
    iconv_close(converter->descriptor);
    delete converter;
  }
}
