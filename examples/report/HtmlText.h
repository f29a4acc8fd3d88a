// Text on its way into a page: what is data never becomes markup.

#ifndef EXAMPLES_REPORT_HTMLTEXT_H
#define EXAMPLES_REPORT_HTMLTEXT_H

#include <string>
#include <string_view>

namespace report {

// Returns `text` for the content of an element or a quoted attribute, of a page as of an XML
// document. A control character that neither may hold becomes U+FFFD.
[[nodiscard]] std::string Escape(std::string_view text);

// Returns `text` as a quoted JSON string, which is also safe within a script element.
[[nodiscard]] std::string JsonString(std::string_view text);

// Returns a number with up to ten digits that count, as JSON and XML write it.
[[nodiscard]] std::string Number(double value);

[[nodiscard]] std::string Base64(std::string_view bytes);

// Returns "812 bytes", "1.4 KB" or "3.0 MB".
[[nodiscard]] std::string ByteCount(std::size_t bytes);

}  // namespace report

#endif
