#include "backend/tables/om/OutputPart.h"

#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Format.h"  // every source of plain items has its copy of the default
#include "platform/cells/CellText.h"

OmOutputPart::OmOutputPart(const OmCellText& title_) : title(title_.Clone()) {}

OmOutputPart::~OmOutputPart() noexcept(false) {
  delete std::exchange(title, nullptr);
}

void OmOutputPart::SetTitle(const OmCellText& title_) {
  OM_HARDEN(&title_ != title, "OmOutputPart::SetTitle");
  delete std::exchange(title, nullptr);
  title = title_.Clone();
}

// The overloads with a body stand with the kinds that they know: Heading.cpp and TextBlock.cpp.
OmOutputPart::Visitor::~Visitor() = default;
