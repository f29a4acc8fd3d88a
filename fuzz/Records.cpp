#include "fuzz/Records.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "examples/report/CsvReader.h"
#include "platform/cells/StringCell.h"

namespace {

std::vector<std::string> ReadMapInfo(const std::string& record) {
  std::vector<std::string> texts(4, "old");
  unsigned long at = 2;
  const bool reversed = record.size() >= at && record.substr(0, at) != std::string("\1\0", 2);
  for (std::string& text : texts) {
    const unsigned long width = &text - texts.data() == 0 || &text - texts.data() == 2 ? 4 : 2;
    if (at + width > record.size()) {
      return texts;
    }
    unsigned long length = 0;
    for (unsigned long i = 0; i != width; ++i) {
      const unsigned long byte = static_cast<unsigned char>(record[at + i]);
      length += byte << (8 * (reversed ? width - 1 - i : i));
    }
    at += width;
    if (length > record.size() - at) {
      return texts;
    }
    text = record.substr(at, length);
    at += length;
  }
  return texts;
}

bool IsUtf8(std::string text) {
  const iconv_t converter = iconv_open("UTF-32", "UTF-8");
  std::vector<char> out(4 * text.size() + 8);
  char* from = text.data();
  char* to = out.data();
  std::size_t left = text.size();
  std::size_t room = out.size();
  const bool valid = iconv(converter, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
  iconv_close(converter);
  return valid;
}

using Record = std::vector<std::string>;

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}
bool IsEnd(char c) {
  return c == '\n' || c == '\r';
}

// A reader that looks at the whole text at once. Ends where the text breaks the rules, and tells
// so.
class CsvTwin {
 public:
  explicit CsvTwin(const std::string& text_) : text(text_) {
    broken = text.find('\0') != std::string::npos;
    at = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (!broken && SkipToRecord()) {
      Record record;
      do {
        record.push_back(Field());
      } while (!broken && at < text.size() && text[at++] == ',');
      std::string all;
      for (const std::string& field : record) {
        all += field;
      }
      broken = broken || !IsUtf8(all);
      if (!broken) {
        records.push_back(record);
      }
    }
  }

  std::vector<Record> records;
  bool broken;

 private:
  void SkipBlanks() {
    while (at < text.size() && IsBlank(text[at])) {
      ++at;
    }
  }
  bool SkipToRecord() {
    while (at < text.size() && (IsBlank(text[at]) || IsEnd(text[at]))) {
      ++at;
    }
    return at < text.size();
  }
  // Reads a field and stops at the comma or the line end behind it.
  std::string Field() {
    SkipBlanks();
    std::string field;
    if (at == text.size() || text[at] != '"') {
      while (at < text.size() && text[at] != ',' && !IsEnd(text[at])) {
        broken = broken || text[at] == '"';
        field += text[at++];
      }
      while (!field.empty() && IsBlank(field.back())) {
        field.pop_back();
      }
      return field;
    }
    for (++at; at < text.size(); ++at) {
      if (text[at] == '"' && (at + 1 == text.size() || text[at + 1] != '"')) {
        ++at;
        SkipBlanks();
        broken = at < text.size() && text[at] != ',' && !IsEnd(text[at]);
        return field;
      }
      at += text[at] == '"' ? 1 : 0;
      field += text[at];
    }
    broken = true;  // the quotes do not end
    return field;
  }

  const std::string& text;
  unsigned long at;
};

}  // namespace

void CheckMapInfo(const unsigned char* data, unsigned long size) {
  const std::string record(reinterpret_cast<const char*>(data), size);
  const auto half = static_cast<unsigned int>(size / 2);
  OmChart chart(OmStringCell("chart"), "", 1);
  chart.SetMapInfo(record.data(), half);
  chart.SetMapInfo(record.data() + half, static_cast<unsigned int>(size) - half);
  std::vector<std::string> texts(4, "old");
  chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
  EXPECT_EQ(texts, ReadMapInfo(record));
  EXPECT_EQ(chart.hasMap(), size != 0);
}

void CheckCsv(const unsigned char* data, unsigned long size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const int file = memfd_create("csv", 0);
  ASSERT_EQ(write(file, data, size), static_cast<long>(size));
  lseek(file, 0, SEEK_SET);
  std::vector<Record> records;
  bool broken = false;
  try {
    report::ReadCsv(
        "/proc/self/fd/" + std::to_string(file),
        [&](const report::CsvRecord& record) {
          records.emplace_back(record.fields.begin(), record.fields.end());
        },
        [](std::uint64_t, std::uint64_t) {});
  } catch (const report::InputError&) {
    broken = true;
  }
  close(file);
  const CsvTwin twin(text);
  EXPECT_EQ(broken, twin.broken);
  EXPECT_EQ(records, twin.records);
}
