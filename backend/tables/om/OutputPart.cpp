#include "backend/tables/om/OutputPart.h"

#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Format.h"  // on purpose: sources of plain items have a copy of kDefaultFormat
#include "platform/cells/CellText.h"

namespace {

// Passes an item on to a ConstVisitor.
class Reader : public OmOutputPart::Visitor {
 public:
  explicit Reader(OmOutputPart::ConstVisitor& to_) noexcept : to(to_) {}
  void Visit(OmPivotTable& part) override { to.Visit(part); }
  void Visit(OmProcedure& part) override { to.Visit(part); }
  void Visit(OmHeading& part) override { to.Visit(part); }
  void Visit(OmTextBlock& part) override { to.Visit(part); }
  void Visit(OmPageTitle& part) override { to.Visit(part); }
  void Visit(OmChart& part) override { to.Visit(part); }
  void Visit(OmDendrix& part) override { to.Visit(part); }
  void Visit(OmModel& part) override { to.Visit(part); }
  void Visit(OmInteractive& part) override { to.Visit(part); }

 private:
  OmOutputPart::ConstVisitor& to;
};

}  // namespace

OmOutputPart::OmOutputPart(const OmCellText& title_) : title(title_.Clone()) {}

OmOutputPart::~OmOutputPart() noexcept(false) {
  delete std::exchange(title, nullptr);
}

void OmOutputPart::SetTitle(const OmCellText& title_) {
  OM_HARDEN(&title_ != title, "OmOutputPart::SetTitle");
  delete std::exchange(title, nullptr);
  title = title_.Clone();
}

void OmOutputPart::Accept(ConstVisitor& v) const {
  Reader reader(v);
  // The only virtual function that dispatches on the kind takes a mutable item. It does not change
  // it.
  const_cast<OmOutputPart*>(this)->Accept(reader);
}

// The overloads with a default body are defined in Heading.cpp and TextBlock.cpp.
OmOutputPart::Visitor::~Visitor() = default;
OmOutputPart::ConstVisitor::~ConstVisitor() = default;
