// The sample program's reader of comma-separated files, against a naive one.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "examples/report/CsvReader.h"
#include "examples/report/DisplayText.h"
#include "fuzz/Targets.h"

namespace {

// Has the whole text before it. Reading ends where the text breaks the rules; then `broken` is
// true.
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

void CheckCsv(const std::string& text) {
  const int file = memfd_create("csv", 0);
  ASSERT_EQ(write(file, text.data(), text.size()), static_cast<long>(text.size()));
  lseek(file, 0, SEEK_SET);
  std::vector<std::vector<std::string>> records;
  bool broken = false;
  try {
    report::ReadCsv(
        "/proc/self/fd/" + std::to_string(file),
        [&](const auto& record) {
          records.emplace_back(record.fields.begin(), record.fields.end());
        },
        [](auto, auto) {});
  } catch (const report::InputError&) {
    broken = true;
  }
  close(file);
  const CsvTwin twin(text);
  EXPECT_EQ(broken, twin.broken);
  EXPECT_EQ(records, twin.records);
}

const Fuzzer csv("csv", CheckCsv);

}  // namespace
