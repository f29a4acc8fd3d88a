// The fuzzers over records that come from outside the process.

#ifndef FUZZ_RECORDS_H
#define FUZZ_RECORDS_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "examples/report/CsvReader.h"
#include "platform/cells/StringCell.h"
#include "platform/support/Converter.h"

// The map information of a chart, delivered in two chunks.
inline void CheckMapInfo(const unsigned char* data, unsigned long size) {
  const auto* const record = reinterpret_cast<const char*>(data);
  const auto half = static_cast<unsigned int>(size / 2);
  OmChart chart(OmStringCell("chart"), "", 1);
  chart.SetMapInfo(record, half);
  chart.SetMapInfo(record + half, static_cast<unsigned int>(size) - half);
  std::string texts[4];
  chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
  EXPECT_EQ(chart.hasMap(), size != 0);
  EXPECT_LE(texts[0].size() + texts[1].size() + texts[2].size() + texts[3].size(), size);
}

using CsvRecords = std::vector<std::vector<std::string>>;

// Reads the whole text at once, up to where it breaks the rules. Returns whether it keeps them.
inline bool ReadCsvText(const std::string& text, CsvRecords& records) {
  static const std::regex pattern(R"re([ \t]*(?:"((?:[^"]|"")*)"|([^",\r\n]*?))[ \t]*([,\r\n]))re");
  static const std::regex twoQuotes("\"\"");
  static QualtexMBConverter* const utf8 = QualtexMBConverterNew_A("UTF-32");
  if (text.find('\0') != std::string::npos) {
    return false;
  }
  unsigned long at = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  while ((at = text.find_first_not_of(" \t\r\n", at)) != std::string::npos) {
    std::vector<std::string> record;
    std::string all, converted;
    std::smatch field;
    do {
      if (!std::regex_search(text.begin() + static_cast<long>(at), text.end(), field, pattern,
                             std::regex_constants::match_continuous)) {
        return false;
      }
      record.push_back(std::regex_replace(field.str(1), twoQuotes, "\"") + field.str(2));
      all += record.back();
      at += field.str().size();
    } while (field.str(3) == ",");
    if (QualtexMBU8ToGeneric(utf8, converted, all) != 0) {
      return false;
    }
    records.push_back(record);
  }
  return true;
}

// The sample program's comma-separated files, beside a naive reader.
inline void CheckCsv(const unsigned char* data, unsigned long size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const int file = memfd_create("csv", 0);
  ASSERT_EQ(write(file, data, size), static_cast<long>(size));
  lseek(file, 0, SEEK_SET);
  CsvRecords records, expected;
  bool whole = true;
  try {
    report::ReadCsv(
        "/proc/self/fd/" + std::to_string(file),
        [&](const report::CsvRecord& record) {
          records.emplace_back(record.fields.begin(), record.fields.end());
        },
        [](std::uint64_t, std::uint64_t) {});
  } catch (const report::InputError&) {
    whole = false;
  }
  close(file);
  EXPECT_EQ(whole, ReadCsvText(text + "\n", expected));
  EXPECT_EQ(records, expected);
}

#endif
