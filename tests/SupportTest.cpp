#include <gtest/gtest.h>

#include <string>

#include "platform/support/Converter.h"

namespace {

TEST(Converter, ConvertsOrFails) {
  std::string many;
  std::string manyEuros;
  for (int i = 0; i < 5000; ++i) {
    many += "\xe2\x82\xac";
    manyEuros += '\x80';
  }
  const struct {
    const char* codePage;
    std::string text;
    bool fails;
    std::string converted;
  } rows[] = {
      {"ISO-8859-1", "", false, ""},
      {"ISO-8859-1",
       "Gr\xc3\xbc\xc3\x9f"
       "e",
       false,
       "Gr\xfc\xdf"
       "e"},
      {"ISO-8859-1", std::string("a\0b", 3), false, std::string("a\0b", 3)},
      {"CP1252", many, false, manyEuros},
      {"UTF-8", "\xf0\x9f\x98\x80", false, "\xf0\x9f\x98\x80"},
      // Grows, and ends in the initial state.
      {"UTF-32LE", "ab", false, std::string("a\0\0\0b\0\0\0", 8)},
      {"ISO-2022-JP", "\xe3\x81\x82", false, "\x1b$B$\"\x1b(B"},
      // Not in the code page.
      {"ISO-8859-1", "1 \xe2\x82\xac", true, ""},
      {"ASCII//TRANSLIT", "\xe2\x82\xac", true, ""},
      {"UCS-2LE//TRANSLIT", "\xf0\x9f\x98\x80" + std::string(1000, 'a'), true, ""},
      {"UTF-16LE//IGNORE", "\xff" + std::string(1000, 'a'), true, ""},
      {"/", "a", true, ""},
      // No UTF-8: a cut sequence, a stray byte, an overlong form, half a surrogate pair.
      {"CP1252", "a\xe2\x82", true, ""},
      {"CP1252", "\x80", true, ""},
      {"UTF-16LE", "\xc0\xaf", true, ""},
      {"UTF-16LE", "\xed\xa0\x80", true, ""},
      // No such code page.
      {"no such page", "a", true, ""},
      {"", "a", true, ""},
      {nullptr, "a", true, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << (row.codePage != nullptr ? row.codePage : "null") << ": " << row.text);
    QualtexMBConverter* const converter = QualtexMBConverterNew_A(row.codePage);
    std::string out = "before";
    // Twice: a failure leaves nothing behind in the converter.
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(QualtexMBU8ToGeneric(converter, out, row.text) != 0, row.fails);
      EXPECT_EQ(out, row.fails ? "before" : row.converted);
    }
    if (converter != nullptr) {
      std::string same = "x";
      EXPECT_EQ(QualtexMBU8ToGeneric(converter, same, same), 0);
    }
    QualtexMBConverterDelete_A(converter);
  }
}

}  // namespace
