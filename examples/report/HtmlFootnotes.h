// HtmlFootnotes renders the footnotes of one table: the markers that link, and the list below it.

#ifndef EXAMPLES_REPORT_HTMLFOOTNOTES_H
#define EXAMPLES_REPORT_HTMLFOOTNOTES_H

#include <iosfwd>
#include <string>

class OmCellText;
class OmPivotTable;

namespace report {

// The table has to outlive it.
class HtmlFootnotes {
 public:
  // `id` is the table's in the page.
  HtmlFootnotes(const OmPivotTable& table, const std::string& id);

  // Returns a text with the markers of its footnotes, as markup; nothing for null.
  [[nodiscard]] std::string Marked(const OmCellText* text) const;
  // Writes the list of all footnotes.
  void Write(std::ostream& out) const;

 private:
  // Returns the footnote's own marker, or one made from its place: a, b, …, then 27, 28, …
  [[nodiscard]] std::string Marker(unsigned long footnote) const;

  const OmPivotTable& table;
  std::string id;
};

}  // namespace report

#endif
