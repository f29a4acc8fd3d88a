// Naive readers of what comes from outside the process: each has the whole text before it.

#ifndef FUZZ_TWINS_H
#define FUZZ_TWINS_H

#include <string>
#include <vector>

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

#endif
