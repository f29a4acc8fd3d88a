#include "backend/tables/om/OutputPart.h"

#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Format.h"  // every source of plain items has its copy of the default
#include "platform/cells/CellText.h"

namespace {

// Hands on what an item says of its kind.
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
  // The items have one virtual function that tells their kind, and it is for items that may be
  // changed. It only passes the item on.
  const_cast<OmOutputPart*>(this)->Accept(reader);
}

// The overloads with a body stand with the kinds that they know: Heading.cpp and TextBlock.cpp.
OmOutputPart::Visitor::~Visitor() = default;
OmOutputPart::ConstVisitor::~ConstVisitor() = default;
