#include "examples/report/DisplayText.h"

#include <wchar.h>

#include <clocale>
#include <cstdint>

namespace report {

namespace {

// Takes the first character of `text` off it. Returns U+FFFD for one that is not well formed; the
// text becomes shorter in any case.
char32_t TakeCharacter(std::string_view& text) noexcept {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (lead < 0x80) {
    return lead;
  }
  const int count = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < static_cast<std::size_t>(count)) {
    return 0xFFFD;
  }
  auto value = static_cast<char32_t>(lead & (0x3F >> count));
  for (int i = 0; i < count; ++i) {
    const auto next = static_cast<unsigned char>(text[static_cast<std::size_t>(i)]);
    if ((next & 0xC0) != 0x80) {
      return 0xFFFD;
    }
    value = (value << 6) | (next & 0x3F);
  }
  const bool overlong = (count == 2 && value < 0x800) || (count == 3 && value < 0x10000);
  if (overlong || (value >= 0xD800 && value < 0xE000) || value > 0x10FFFF) {
    return 0xFFFD;
  }
  text.remove_prefix(static_cast<std::size_t>(count));
  return value;
}

int CharacterWidth(char32_t character) {
  const int width = wcwidth(static_cast<wchar_t>(character));
  return width < 0 ? 1 : width;
}

// The controls of both blocks, and the marks that turn the direction of what follows.
bool IsControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029 ||
         (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// Appends one line of text, which holds no line break, in pieces that are no wider than `width`.
void BreakLine(std::string_view text, int width, std::vector<std::string>& lines) {
  std::string line;
  int lineWidth = 0;
  std::size_t blank = std::string::npos;  // the last place in `line` to break at
  while (!text.empty()) {
    const std::string_view before = text;
    const char32_t character = TakeCharacter(text);
    const bool control = IsControl(character);
    const int characterWidth = control ? 1 : CharacterWidth(character);
    const bool isBlank = control || character == ' ';
    bool begins = false;
    while (lineWidth + characterWidth > width && lineWidth > 0) {
      // What follows the last blank goes to the next line, and may be too wide there again.
      std::string next;
      if (!isBlank && blank != std::string::npos) {
        next = line.substr(blank + 1);
        line.resize(blank);
      }
      lines.push_back(line);
      line.swap(next);
      lineWidth = DisplayWidth(line);
      blank = std::string::npos;
      begins = line.empty();
    }
    if (begins && isBlank) {
      continue;  // the break stands for it
    }
    if (isBlank) {
      blank = line.size();
      line += ' ';
    } else {
      line += before.substr(0, before.size() - text.size());
    }
    lineWidth += characterWidth;
  }
  lines.push_back(line);
}

}  // namespace

bool IsUtf8(std::string_view text) noexcept {
  while (!text.empty()) {
    if (static_cast<unsigned char>(text[0]) < 0x80) {
      text.remove_prefix(1);  // as nearly all of what is read
      continue;
    }
    const bool replacement = text.compare(0, 3, "\xEF\xBF\xBD") == 0;
    if (TakeCharacter(text) == 0xFFFD && !replacement) {
      return false;
    }
  }
  return true;
}

void SelectCharacterSet() {
  // Only the classes of characters: numbers keep their decimal point.
  std::setlocale(LC_CTYPE, "C.UTF-8");
}

int DisplayWidth(std::string_view text) {
  int width = 0;
  while (!text.empty()) {
    width += CharacterWidth(TakeCharacter(text));
  }
  return width;
}

std::vector<std::string> BreakLines(std::string_view text, int width) {
  std::vector<std::string> lines;
  for (;;) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r') {
      line.remove_suffix(1);
    }
    BreakLine(line, width, lines);
    if (end == std::string_view::npos) {
      return lines;
    }
    text.remove_prefix(end + 1);
  }
}

}  // namespace report
