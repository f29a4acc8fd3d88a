// Text as a terminal shows it: its width in columns, its lines, and what must not reach a terminal.

#ifndef EXAMPLES_REPORT_DISPLAYTEXT_H
#define EXAMPLES_REPORT_DISPLAYTEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace report {

[[nodiscard]] bool IsUtf8(std::string_view text) noexcept;

// Selects the character set that DisplayWidth needs. Called once, at the start of the program.
void SelectCharacterSet();

// Returns the columns that `text`, which is valid UTF-8, takes on a terminal.
[[nodiscard]] int DisplayWidth(std::string_view text);

// Returns the lines of `text`, broken at its line breaks and, where a line is wider than `width`,
// at blanks (within a word where the word alone is wider). A control character becomes a blank, so
// that data cannot steer the terminal. At least one line.
[[nodiscard]] std::vector<std::string> BreakLines(std::string_view text, int width);

}  // namespace report

#endif
