// HtmlReport, the front end that shows a document as one page that stands alone.

#ifndef EXAMPLES_REPORT_HTMLREPORT_H
#define EXAMPLES_REPORT_HTMLREPORT_H

#include <iosfwd>
#include <string>

#include "backend/tables/om/OutputPart.h"
#include "examples/report/HtmlLooks.h"

class OmOutputTree;

namespace report {

// Writes every item in document order under nested headings, the outline beside it. The page loads
// nothing from anywhere: style, script and images are part of it. All data in it are text.
class HtmlReport : public OmOutputPart::Visitor {
 public:
  // `skipEmpty` tells how tables start.
  HtmlReport(std::ostream& out, bool skipEmpty);

  using Visitor::Visit;

  void Write(OmOutputTree& document);

  void Visit(OmPivotTable& part) override;
  void Visit(OmHeading& part) override;
  void Visit(OmTextBlock& part) override;
  void Visit(OmPageTitle& part) override;
  void Visit(OmChart& part) override;
  void Visit(OmDendrix& part) override;
  void Visit(OmModel& part) override;
  void Visit(OmInteractive& part) override;

 private:
  void WriteHead(const std::string& title);
  // Ends the sections of `ending` levels and deeper.
  void CloseSections(int ending);

  std::ostream& out;
  bool skipEmpty;
  HtmlLooks looks;
  int openSections = 0;
  // Of the item that is visited.
  int level = 0;
  std::string id;
  std::string title;
};

// Writes the page to a file, which appears whole or not at all. Throws OutputError.
void WriteHtmlFile(OmOutputTree& document, bool skipEmpty, const std::string& path);

}  // namespace report

#endif
