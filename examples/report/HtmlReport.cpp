#include "examples/report/HtmlReport.h"

#include <algorithm>
#include <ostream>
#include <string_view>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/TextBlock.h"
#include "examples/report/HtmlAssets.h"
#include "examples/report/HtmlFile.h"
#include "examples/report/HtmlOutline.h"
#include "examples/report/HtmlPayloads.h"
#include "examples/report/HtmlTable.h"
#include "examples/report/HtmlText.h"

namespace report {

namespace {

// Takes up the formats of a table.
class LookCollector : public OmOutputPart::Visitor {
 public:
  explicit LookCollector(HtmlLooks& looks_) : looks(looks_) {}

  using Visitor::Visit;

  void Visit(OmPivotTable& part) override { looks.Add(part); }
  void Visit(OmHeading&) override {}
  void Visit(OmTextBlock&) override {}
  void Visit(OmChart&) override {}
  void Visit(OmDendrix&) override {}
  void Visit(OmModel&) override {}
  void Visit(OmInteractive&) override {}

 private:
  HtmlLooks& looks;
};

// The page is named after its first page title, or else after the root.
std::string PageName(const std::vector<HtmlOutline::Entry>& entries) {
  const auto named = std::find_if(
      entries.begin(), entries.end(),
      [](const HtmlOutline::Entry& entry) { return std::string_view(entry.kind) == "page"; });
  if (named != entries.end()) {
    return named->title;
  }
  return entries.empty() ? "Output" : entries.front().title;
}

}  // namespace

HtmlReport::HtmlReport(std::ostream& out_, bool skipEmpty_) : out(out_), skipEmpty(skipEmpty_) {}

void HtmlReport::WriteHead(const std::string& pageName) {
  out << "<!DOCTYPE html>\n<html lang=en>\n<head>\n<meta charset=utf-8>\n"
         "<meta name=viewport content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=color-scheme content=\"light dark\">\n"
         // Nothing can be fetched, whatever the document holds.
         "<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; img-src data:; "
         "style-src 'unsafe-inline'; script-src 'unsafe-inline'; base-uri 'none'; "
         "form-action 'none'\">\n<title>"
      << Escape(pageName) << "</title>\n<style>\n"
      << kHtmlStyle << looks.Rules() << "</style>\n<noscript><style>\n"
      << kHtmlStyleWithoutScript << "</style></noscript>\n</head>\n";
}

void HtmlReport::Write(OmOutputTree& document) {
  const HtmlOutline outline(document);
  LookCollector collector(looks);
  for (const HtmlOutline::Entry& entry : outline.Entries()) {
    entry.part->Accept(collector);
  }
  WriteHead(PageName(outline.Entries()));
  out << "<body>\n<a class=skip-link href=\"#content\">Skip to the output</a>\n";
  outline.Write(out);
  out << "<main id=content tabindex=-1>\n";
  for (const HtmlOutline::Entry& entry : outline.Entries()) {
    level = entry.level;
    id = entry.id;
    title = entry.title;
    CloseSections(level);
    entry.part->Accept(*this);
    if (!out) {
      return;
    }
  }
  CloseSections(0);
  out << "</main>\n<script>\n" << kHtmlScript << "</script>\n</body>\n</html>\n";
}

// A section is as deep as its heading's level, the root's being the page itself.
void HtmlReport::CloseSections(int ending) {
  for (; openSections > 0 && openSections >= ending; --openSections) {
    out << "</section>\n";
  }
}

void HtmlReport::Visit(OmHeading&) {
  if (level == 0) {
    out << "<p class=root id=\"" << id << "\" tabindex=-1>" << Escape(title) << "</p>\n";
    return;
  }
  const int rank = std::min(level + 1, 6);
  for (; openSections < level; ++openSections) {
    out << "<section>\n";
  }
  out << "<h" << rank << " id=\"" << id << "\" tabindex=-1>" << Escape(title) << "</h" << rank
      << ">\n";
}

void HtmlReport::Visit(OmPageTitle& part) {
  out << "<h1 id=\"" << id << "\" tabindex=-1>" << Escape(part.Text()) << "</h1>\n";
}

void HtmlReport::Visit(OmTextBlock& part) {
  out << "<div class=\"block" << (part.IsLog() ? " log" : "") << "\" id=\"" << id
      << "\" tabindex=-1>\n<p class=title>" << Escape(title) << "</p>\n<p class=lines>"
      << Escape(part.Text());
  for (const std::string& line : part.Lines()) {
    out << '\n' << Escape(line);
  }
  out << "</p>\n</div>\n";
}

void HtmlReport::Visit(OmPivotTable& part) {
  WriteTable(out, part, {id, looks.ClassOf(part), skipEmpty});
}

void HtmlReport::Visit(OmChart& part) {
  WriteChart(out, part, title, id);
}

void HtmlReport::Visit(OmDendrix& part) {
  WriteTreeDiagram(out, part, title, id);
}

void HtmlReport::Visit(OmModel& part) {
  WriteModel(out, part, title, id);
}

void HtmlReport::Visit(OmInteractive& part) {
  WriteInteractive(out, part, title, id);
}

void WriteHtmlFile(OmOutputTree& document, bool skipEmpty, const std::string& path) {
  HtmlFile file(path);
  HtmlReport(file.Stream(), skipEmpty).Write(document);
  file.Commit();
}

}  // namespace report
