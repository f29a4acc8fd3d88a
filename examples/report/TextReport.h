// TextReport, the front end that shows a document as text.

#ifndef EXAMPLES_REPORT_TEXTREPORT_H
#define EXAMPLES_REPORT_TEXTREPORT_H

#include <iosfwd>
#include <string>

#include "backend/tables/om/OutputPart.h"

class OmDisplayLayerHeading;
class OmOutputTree;

namespace report {

struct TextStyle {
  int width = 80;  // columns of the page
  bool ascii = false;
  bool skipEmpty = false;
};

// Writes every item of a document in document order, and each table once for every layer.
class TextReport : public OmOutputPart::Visitor {
 public:
  TextReport(std::ostream& out, const TextStyle& style);

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
  class LayerGrid;

  void Heading(const std::string& text, const char* line);
  void Paragraph(const std::string& text);
  void Picture(const char* kind, OmOutputPart& part);
  void TableTitle(OmPivotTable& table);
  void Layer(OmPivotTable& table, OmDisplayLayerHeading& layer);
  void Footnotes(const OmPivotTable& table);
  [[nodiscard]] std::string Marker(const OmPivotTable& table, int footnote) const;
  [[nodiscard]] std::string Markers(const OmPivotTable& table, const OmCellText& text) const;

  std::ostream& out;
  TextStyle style;
  int level = 0;  // of the item that is visited
};

}  // namespace report

#endif
