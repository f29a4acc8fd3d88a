#include <gtest/gtest.h>

#include <string>

#include "platform/support/Converter.h"

namespace {

using namespace std::string_literals;

TEST(Converter, ConvertsOrFails) {
  const std::string many(1000, 'a');
  std::string euros;
  for (int i = 0; i < 5000; ++i) {
    euros += "\xe2\x82\xac";
  }
  const struct {
    const char* codePage;
    std::string text;
    bool fails;
    std::string converted;
  } rows[] = {
      {"ISO-8859-1", "", false, ""},
      {"ISO-8859-1", "a\0\xc3\xbc"s, false, "a\0\xfc"s},
      {"CP1252", euros, false, std::string(5000, '\x80')},
      {"UTF-8", "\xf0\x9f\x98\x80", false, "\xf0\x9f\x98\x80"},
      // Grows, and ends in the initial state.
      {"UTF-32LE", "ab", false, "a\0\0\0b\0\0\0"s},
      {"ISO-2022-JP", "\xe3\x81\x82", false, "\x1b$B$\"\x1b(B"},
      // Not in the code page, no UTF-8, no such code page.
      {"ISO-8859-1", "1 \xe2\x82\xac", true, ""},
      {"ASCII//TRANSLIT", "\xe2\x82\xac", true, ""},
      {"UCS-2LE//TRANSLIT", "\xf0\x9f\x98\x80" + many, true, ""},
      {"UTF-16LE//IGNORE", "\xff" + many, true, ""},
      {"CP1252", "a\xe2\x82", true, ""},
      {"CP1252", "\x80", true, ""},
      {"UTF-16LE", "\xc0\xaf", true, ""},
      {"UTF-16LE", "\xed\xa0\x80", true, ""},
      {"no such page", "a", true, ""},
      {"", "a", true, ""},
      {nullptr, "a", true, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    QualtexMBConverter* const converter = QualtexMBConverterNew_A(row.codePage);
    // Twice: a failure leaves nothing behind in the converter.
    for (int i = 0; i < 2; ++i) {
      std::string out = "before";
      EXPECT_EQ(QualtexMBU8ToGeneric(converter, out, row.text) != 0, row.fails);
      EXPECT_EQ(out, row.fails ? "before" : row.converted);
    }
    std::string same = "x";
    EXPECT_EQ(QualtexMBU8ToGeneric(converter, same, same) != 0, converter == nullptr);
    QualtexMBConverterDelete_A(converter);
  }
}

}  // namespace
