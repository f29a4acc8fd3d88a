#include "examples/report/HtmlText.h"

#include <cstdint>
#include <cstdio>

namespace report {

namespace {

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F;
}

}  // namespace

std::string Escape(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size() + text.size() / 8);
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      case '\r':
        break;  // a line feed alone ends a line
      default:
        if (IsControl(c)) {
          escaped += "\xEF\xBF\xBD";
        } else {
          escaped += c;
        }
    }
  }
  return escaped;
}

std::string JsonString(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (IsControl(c) || c == '\n' || c == '\t' || c == '<' || c == '>' || c == '&') {
      char code[8];
      std::snprintf(code, sizeof(code), "\\u%04x", static_cast<unsigned>(c));
      quoted += code;
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string Number(double value) {
  char text[40];
  std::snprintf(text, sizeof(text), "%.10g", value);
  return text;
}

std::string Base64(std::string_view bytes) {
  static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = i; k < i + 3; ++k) {
      group = (group << 8) | (k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0U);
    }
    for (unsigned k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? kDigits[(group >> (18 - 6 * k)) & 63] : '=';
    }
  }
  return text;
}

std::string ByteCount(std::size_t bytes) {
  if (bytes < 1000) {
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  }
  const bool mega = bytes >= 1000000;
  char text[40];
  std::snprintf(text, sizeof(text), "%.1f %s", static_cast<double>(bytes) / (mega ? 1e6 : 1e3),
                mega ? "MB" : "KB");
  return text;
}

}  // namespace report
