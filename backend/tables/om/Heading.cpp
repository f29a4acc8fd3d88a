#include "backend/tables/om/Heading.h"

#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Vector.h"
#include "platform/cells/CellText.h"

// Calls the virtual overload for headings, so that a visitor of headings receives procedures too.
void OmOutputPart::Visitor::Visit(OmProcedure& part) {
  Visit(static_cast<OmHeading&>(part));
}

void OmOutputPart::ConstVisitor::Visit(const OmProcedure& part) {
  Visit(static_cast<const OmHeading&>(part));
}

OmHeading::OmHeading(const OmCellText& title_)
    : OmOutputPart(title_), footnotes(new OmVector<OmFootnote>(nullptr)) {}

OmHeading::~OmHeading() {
  delete footnotes;
}

void OmHeading::Accept(Visitor& v) {
  v.Visit(*this);
}

OmProcedure::OmProcedure(const OmCellText& title_, const std::string& a, const std::string& b,
                         const std::string& c)
    : OmHeading(title_), outlineText(title_.Text()), textA(a), textB(b), textC(c) {}

OmProcedure::~OmProcedure() = default;

void OmProcedure::Accept(Visitor& v) {
  v.Visit(*this);
}

void OmProcedure::setOutlineText(const OmCellText& text) {
  outlineText = text.Text();
  SetTitle(text);
}
