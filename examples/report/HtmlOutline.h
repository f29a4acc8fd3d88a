// HtmlOutline lists the items of a document, and renders the list as the page's navigation.

#ifndef EXAMPLES_REPORT_HTMLOUTLINE_H
#define EXAMPLES_REPORT_HTMLOUTLINE_H

#include <iosfwd>
#include <string>
#include <vector>

#include "backend/tables/om/OutputPart.h"

class OmOutputTree;

namespace report {

// Items that are not shown have no entry.
class HtmlOutline : public OmOutputPart::Visitor {
 public:
  struct Entry {
    OmOutputPart* part;
    int level;         // a document deeper than kMaxLevel is flattened there
    const char* kind;  // one word
    std::string title;
    std::string id;
  };

  static constexpr int kMaxLevel = 32;

  explicit HtmlOutline(OmOutputTree& document);

  using Visitor::Visit;

  [[nodiscard]] const std::vector<Entry>& Entries() const noexcept { return entries; }
  void Write(std::ostream& out) const;

  void Visit(OmPivotTable& part) override;
  void Visit(OmHeading& part) override;
  void Visit(OmTextBlock& part) override;
  void Visit(OmPageTitle& part) override;
  void Visit(OmChart& part) override;
  void Visit(OmDendrix& part) override;
  void Visit(OmModel& part) override;
  void Visit(OmInteractive& part) override;

 private:
  void Add(OmOutputPart& part, const char* kind, std::string title);

  std::vector<Entry> entries;
  int level = 0;  // of the item that is visited
};

}  // namespace report

#endif
