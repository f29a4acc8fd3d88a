#include "platform/support/Converter.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

namespace {

// An open conversion of iconv.
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

  // Replaces `out` by the converted `text`. Returns false if iconv reports a loss. It does not
  // report every loss: it drops tag characters, and several tables have substitutes.
  bool Convert(std::string_view text, std::string& out) {
    // In one call, and again from the start if the room was too small: only a conversion in one
    // call reports whether anything was lost.
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
  // Converts into `room` bytes at `to`, and appends the bytes that return to the initial shift
  // state. Reduces `room` to the bytes left.
  bool ConvertInto(std::string_view text, char* to, std::size_t& room) {
    // Resets the descriptor, which a failed conversion leaves in the middle of a character.
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

// Accepts letters, digits and the punctuation of registered names. Rejects the empty name, which
// means the encoding of the process, and suffixes that allow losses.
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

// Returns the number of bytes of the character at the start of `text`, or 0 if there is no valid
// one. iconv does not check this: it converts surrogates and numbers beyond Unicode into encodings
// with 4-byte units.
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
  // Overlong forms, surrogates, and values beyond the last code point.
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

// Pairs of characters that count as equal: the shared codes of Japanese pages, and pairs that are
// equivalent in Unicode and that the Vietnamese page converts back to one of them.
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

// Returns true if no character of `text` is lost when it is converted by itself. Then none is lost
// in the text either: there it may come back composed with its neighbours.
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
