#include "examples/report/HtmlFootnotes.h"

#include <ostream>

#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/Vector.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/HtmlText.h"
#include "platform/cells/CellText.h"

namespace report {

HtmlFootnotes::HtmlFootnotes(const OmPivotTable& table_, const std::string& id_)
    : table(table_), id(id_) {}

std::string HtmlFootnotes::Marker(unsigned long footnote) const {
  const OmCellText* own = table.Footnotes()[footnote].Marker();
  if (own != nullptr) {
    return Escape(own->Text());
  }
  return footnote < 26 ? std::string(1, static_cast<char>('a' + footnote))
                       : std::to_string(footnote + 1);
}

std::string HtmlFootnotes::Marked(const OmCellText* text) const {
  if (text == nullptr) {
    return std::string();
  }
  std::string markup = Escape(text->Text());
  bool first = true;
  for (const int footnote : FootnotesOf(*text)) {
    const auto index = static_cast<unsigned long>(footnote);
    if (footnote < 0 || index >= table.Footnotes().size()) {
      continue;
    }
    const std::string marker = Marker(index);
    markup += first ? "<sup>" : "<sup>,";
    markup += "<a class=mark href=\"#" + id + "-note" + std::to_string(footnote) +
              "\" aria-label=\"Footnote " + marker + "\">" + marker + "</a></sup>";
    first = false;
  }
  return markup;
}

void HtmlFootnotes::Write(std::ostream& out) const {
  const OmVector<OmFootnote>& footnotes = table.Footnotes();
  bool open = false;
  for (unsigned long i = 0; i < footnotes.size(); ++i) {
    if (footnotes[i].Text() == nullptr) {
      continue;
    }
    out << (open ? "" : "<ol class=footnotes>\n");
    open = true;
    out << "<li id=\"" << id << "-note" << i << "\" tabindex=-1><span class=marker>" << Marker(i)
        << "</span> <span>" << Escape(footnotes[i].Text()->Text()) << " <a class=back href=\"#"
        << id << "\" aria-label=\"Back to where footnote " << Marker(i)
        << " is marked\">↩</a></span>\n";
  }
  out << (open ? "</ol>\n" : "");
}

}  // namespace report
