#include "platform/support/Converter.h"

#include <iconv.h>

#include <cerrno>
#include <cstring>
#include <new>

struct QualtexMBConverter {
  iconv_t descriptor;
};

namespace {

const iconv_t kUnknown = reinterpret_cast<iconv_t>(-1);

// Letters and digits with the punctuation of registered names. Empty names, which mean the
// process's own encoding, and suffixes that ask for losses are not among them.
bool IsCodePageName(const char* name) {
  const auto isLetterOrDigit = [](char c) {
    return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z') || ('0' <= c && c <= '9');
  };
  if (name == nullptr || !isLetterOrDigit(*name)) {
    return false;
  }
  while (isLetterOrDigit(*name) || (*name != '\0' && std::strchr("_-.:()+", *name) != nullptr)) {
    ++name;
  }
  return *name == '\0';
}

// Converts `text` into `room` bytes at `to`, with what brings the code page back to its initial
// state. Returns false where a character was lost, and where the room is too small, which errno
// tells.
bool ConvertInto(iconv_t descriptor, const std::string& text, char*& to, std::size_t room) {
  // A conversion that ended half-way left the descriptor in the middle of a character.
  iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  auto* from = const_cast<char*>(text.data());
  std::size_t bytes = text.size();
  errno = 0;
  return iconv(descriptor, &from, &bytes, &to, &room) == 0 &&
         iconv(descriptor, nullptr, nullptr, &to, &room) == 0;
}

}  // namespace

QualtexMBConverter* QualtexMBConverterNew_A(const char* codePage) noexcept {
  if (!IsCodePageName(codePage)) {
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
    // All at once, from the start again where the room was too small: only a whole conversion tells
    // whether anything was lost.
    std::string converted(text.size() + 16, '\0');
    char* to = converted.data();
    while (!ConvertInto(converter->descriptor, text, to, converted.size())) {
      if (errno != E2BIG) {
        return 1;
      }
      converted.resize(2 * converted.size());
      to = converted.data();
    }
    converted.resize(static_cast<std::size_t>(to - converted.data()));
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
