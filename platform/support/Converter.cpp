#include "platform/support/Converter.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

namespace {

// A conversion of the system's library.
class Conversion {
 public:
  Conversion(const char* to, const char* from) noexcept : descriptor(iconv_open(to, from)) {}
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;
  ~Conversion() {
    if (IsOpen()) {
      iconv_close(descriptor);
    }
  }

  [[nodiscard]] bool IsOpen() const noexcept { return descriptor != reinterpret_cast<iconv_t>(-1); }

  // Replaces `out` by the converted `text`. Returns false if the system knows of a loss. It does
  // not know of each: it drops tag characters, and several tables have substitutes.
  bool Convert(std::string_view text, std::string& out) {
    // All at once, from the start again if the room was too small: only a conversion in one piece
    // reports whether anything was lost.
    out.assign(text.size() + 16, '\0');
    std::size_t room = out.size();
    while (!ConvertInto(text, out.data(), room)) {
      if (errno != E2BIG) {
        return false;
      }
      out.resize(2 * out.size());
      room = out.size();
    }
    out.resize(out.size() - room);
    return true;
  }

 private:
  // Converts into `room` bytes at `to`, with what brings the code page back to its initial state.
  // `room` becomes what is left of it.
  bool ConvertInto(std::string_view text, char* to, std::size_t& room) {
    // A conversion that failed half-way left the descriptor in the middle of a character.
    iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
    auto* from = const_cast<char*>(text.data());
    std::size_t bytes = text.size();
    errno = 0;
    return iconv(descriptor, &from, &bytes, &to, &room) == 0 &&
           iconv(descriptor, nullptr, nullptr, &to, &room) == 0;
  }

  iconv_t descriptor;
};

}  // namespace

struct QualtexMBConverter {
  explicit QualtexMBConverter(const char* codePage) noexcept
      : forth(codePage, "UTF-8"), back("UTF-8", codePage) {}

  Conversion forth, back;
};

namespace {

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

// Returns the bytes of the character that `text` starts with, or 0 if it starts with none. The
// system's own reader lets surrogates and numbers beyond Unicode through to pages of 4-byte units.
std::size_t CharacterSize(std::string_view text) {
  const auto byte = [text](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const unsigned lead = byte(0);
  if (lead < 0x80) {
    return text.empty() ? 0 : 1;
  }
  const std::size_t size = lead < 0xc2   ? 0
                           : lead < 0xe0 ? 2
                           : lead < 0xf0 ? 3
                           : lead < 0xf5 ? 4
                                         : 0;
  for (std::size_t i = 1; i < size; ++i) {
    if (byte(i) < 0x80 || byte(i) > 0xbf) {
      return 0;
    }
  }
  // Overlong forms, surrogates, and what is beyond the last code point.
  const unsigned second = byte(1);
  const bool excluded = (lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f) ||
                        (lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f);
  return excluded ? 0 : size;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = CharacterSize(text);
    if (size == 0) {
      return false;
    }
    text.remove_prefix(size);
  }
  return true;
}

// Characters that stand for one another: the shared places of Japanese pages, and the duplicates
// that Unicode itself calls the same characters and that the Vietnamese page reads back as one.
constexpr std::string_view kSame[][2] = {{"\\", "\u00a5"},
                                         {"~", "\u203e"},
                                         {"\u0340", "\u0300"},
                                         {"\u0341", "\u0301"},
                                         {"\u1fee", "\u0385"}};

bool AreSame(std::string_view a, std::string_view b) {
  return a == b || std::any_of(std::begin(kSame), std::end(kSame), [&](const auto& pair) {
           return (pair[0] == a && pair[1] == b) || (pair[0] == b && pair[1] == a);
         });
}

// Returns true if each character of `text` is held when it is converted alone. Then it is held
// among others, where it may come back composed with its neighbours.
bool HoldsEachAlone(QualtexMBConverter& converter, std::string_view text) {
  std::string there, back;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, CharacterSize(text));
    if (!converter.forth.Convert(character, there) || !converter.back.Convert(there, back) ||
        !AreSame(character, back)) {
      return false;
    }
    text.remove_prefix(character.size());
  }
  return true;
}

}  // namespace

QualtexMBConverter* QualtexMBConverterNew_A(const char* codePage) noexcept {
  if (!IsCodePageName(codePage)) {
    return nullptr;
  }
  auto* const converter = new (std::nothrow) QualtexMBConverter(codePage);
  if (converter != nullptr && !(converter->forth.IsOpen() && converter->back.IsOpen())) {
    delete converter;
    return nullptr;
  }
  return converter;
}

int QualtexMBU8ToGeneric(QualtexMBConverter* converter, std::string& out,
                         const std::string& text) noexcept {
  if (converter == nullptr || !IsUtf8(text)) {
    return 1;
  }
  try {
    std::string converted, back;
    const bool holds = converter->forth.Convert(text, converted) &&
                       ((converter->back.Convert(converted, back) && back == text) ||
                        HoldsEachAlone(*converter, text));
    if (!holds) {
      return 1;
    }
    out.swap(converted);
    return 0;
  } catch (...) {
    return 1;
  }
}

void QualtexMBConverterDelete_A(QualtexMBConverter* converter) noexcept {
  delete converter;
}
