// Naive readers of what comes from outside the process: each has the whole text before it.

#ifndef FUZZ_TWINS_H
#define FUZZ_TWINS_H

#include <algorithm>
#include <string>
#include <vector>

#include "examples/report/DisplayText.h"

// Returns the four texts of a chart's map information, "old" where the record ends too early.
inline std::vector<std::string> ReadMapInfo(const std::string& record) {
  std::vector<std::string> texts(4, "old");
  const bool reversed = record.size() >= 2 && record.substr(0, 2) != std::string("\1\0", 2);
  unsigned long at = 2;
  for (unsigned long n = 0; n != 4; ++n) {
    const unsigned long width = n % 2 == 0 ? 4 : 2;
    if (at + width > record.size()) {
      break;
    }
    unsigned long length = 0;
    for (unsigned long i = 0; i != width; ++i) {
      const unsigned long byte = static_cast<unsigned char>(record[at + i]);
      length += byte << (8 * (reversed ? width - 1 - i : i));
    }
    at += width;
    if (length > record.size() - at) {
      break;
    }
    texts[n] = record.substr(at, length);
    at += length;
  }
  return texts;
}

// Comma-separated records. Reading ends where the text breaks the rules, which `broken` tells.
class CsvTwin {
 public:
  explicit CsvTwin(const std::string& text_) : text(text_) {
    broken = text.find('\0') != std::string::npos;
    at = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (!broken && Skip(" \t\r\n")) {
      std::vector<std::string> record;
      std::string all;
      do {
        record.push_back(Field());
        all += record.back();
      } while (!broken && at < text.size() && text[at++] == ',');
      broken = broken || !report::IsUtf8(all);
      if (!broken) {
        records.push_back(record);
      }
    }
  }

  std::vector<std::vector<std::string>> records;
  bool broken;

 private:
  // Returns false at the end of the text.
  bool Skip(const char* what) {
    at = std::min(text.find_first_not_of(what, at), text.size());
    return at != text.size();
  }
  // Reads a field and stops at the comma or the line end behind it.
  std::string Field() {
    if (!Skip(" \t") || text[at] != '"') {
      const unsigned long end = std::min(text.find_first_of(",\r\n", at), text.size());
      const std::string field = text.substr(at, end - at);
      at = end;
      broken = field.find('"') != std::string::npos;
      return field.substr(0, field.find_last_not_of(" \t") + 1);
    }
    std::string field;
    for (++at; at < text.size(); ++at) {
      if (text[at] == '"' && text[++at] != '"') {
        broken = Skip(" \t") && std::string(",\r\n").find(text[at]) == std::string::npos;
        return field;
      }
      field += text[at];
    }
    broken = true;  // the quotes do not end
    return field;
  }

  const std::string& text;
  unsigned long at;
};

#endif
