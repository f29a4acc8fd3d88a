#include "backend/tables/om/TextBlock.h"

#include "backend/tables/om/Format.h"  // on purpose: sources of plain items have a copy of kDefaultFormat
#include "platform/cells/StringCell.h"

// Calls the virtual overload for text blocks, so that a visitor of text blocks receives page titles
// too.
void OmOutputPart::Visitor::Visit(OmPageTitle& part) {
  Visit(static_cast<OmTextBlock&>(part));
}

void OmOutputPart::ConstVisitor::Visit(const OmPageTitle& part) {
  Visit(static_cast<const OmTextBlock&>(part));
}

OmTextBlock::OmTextBlock(const OmCellText& title_, const std::string& text_)
    : OmOutputPart(title_), isLog(title_.Text() == "Log"), text(text_) {}

OmTextBlock::~OmTextBlock() = default;

void OmTextBlock::Accept(Visitor& v) {
  v.Visit(*this);
}

OmPageTitle::OmPageTitle(const std::string& text_)
    : OmTextBlock(OmStringCell("", nullptr, false), text_) {}

OmPageTitle::~OmPageTitle() = default;

void OmPageTitle::Accept(Visitor& v) {
  v.Visit(*this);
}
