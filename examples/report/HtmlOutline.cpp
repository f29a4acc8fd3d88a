#include "examples/report/HtmlOutline.h"

#include <algorithm>
#include <ostream>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/TextBlock.h"
#include "examples/report/HtmlText.h"
#include "platform/cells/CellText.h"

namespace report {

namespace {

std::string TitleOf(OmOutputPart& part) {
  return part.Title() != nullptr ? part.Title()->Text() : std::string();
}

}  // namespace

HtmlOutline::HtmlOutline(OmOutputTree& document) {
  for (ListTreeData<OmOutputPart*>& entry : document.List()) {
    level = std::min(entry.Level(), kMaxLevel);
    if (entry.Data() != nullptr) {
      entry.Data()->Accept(*this);
    }
  }
}

void HtmlOutline::Add(OmOutputPart& part, const char* kind, std::string title) {
  const std::string id = "item" + std::to_string(entries.size() + 1);
  entries.push_back({&part, level, kind, title.empty() ? kind : std::move(title), id});
}

void HtmlOutline::Visit(OmPivotTable& part) {
  if (part.Show()) {
    Add(part, "table", TitleOf(part));
  }
}

void HtmlOutline::Visit(OmHeading& part) {
  Add(part, "heading", TitleOf(part));
}

void HtmlOutline::Visit(OmTextBlock& part) {
  Add(part, "text", TitleOf(part));
}

void HtmlOutline::Visit(OmPageTitle& part) {
  Add(part, "page", part.Text());
}

void HtmlOutline::Visit(OmChart& part) {
  Add(part, "chart", TitleOf(part));
}

void HtmlOutline::Visit(OmDendrix& part) {
  Add(part, "tree", TitleOf(part));
}

void HtmlOutline::Visit(OmModel& part) {
  Add(part, "model", TitleOf(part));
}

void HtmlOutline::Visit(OmInteractive& part) {
  Add(part, "interactive", TitleOf(part));
}

void HtmlOutline::Write(std::ostream& out) const {
  out << "<nav class=outline aria-label=Outline>\n<details open><summary>Contents</summary>\n";
  int depth = -1;  // of the lists that are open
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Entry& entry = entries[i];
    for (; depth > entry.level; --depth) {
      out << "</li></ul>\n";
    }
    if (depth == entry.level) {
      out << "</li>\n";
    }
    for (; depth < entry.level; ++depth) {
      out << (depth + 1 < entry.level ? "<ul><li>" : "<ul>\n");
    }
    const std::string title = Escape(entry.title);
    out << "<li>";
    if (i + 1 < entries.size() && entries[i + 1].level > entry.level) {
      out << "<button type=button class=toggle aria-expanded=true aria-label=\"Items below "
          << title << "\"></button>";
    }
    out << "<a href=\"#" << entry.id << "\" class=\"kind " << entry.kind << "\">" << title
        << "</a>";
  }
  for (; depth >= 0; --depth) {
    out << "</li></ul>\n";
  }
  out << "</details>\n</nav>\n";
}

}  // namespace report
