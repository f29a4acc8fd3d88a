#include "platform/cells/Variable.h"

OmVariable::OmVariable(std::string_view name, std::string_view label, OmMemoryRegion* region)
    : OmCellText(region), chars(name, label, region) {}

OmVariable::OmVariable(const OmVariable& other, OmMemoryRegion* region)
    : OmCellText(other, region), chars(other.chars, other.chars.Size()) {}

OmVariable::~OmVariable() = default;

OmCellText* OmVariable::Clone(OmMemoryRegion* region) const {
  return Whole(new (region, chars.Size()) OmVariable(*this, region));
}

unsigned long OmVariable::Kind() const noexcept {
  return 4;
}

std::string OmVariable::Text() const {
  return std::string(Label().empty() ? Name() : Label());
}

void OmVariable::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

OmCellText::Key OmVariable::OrderKey(std::string&) const {
  return {false, 0, Label().empty() ? Name() : Label(), Kind(), Name()};
}
