#include "platform/cells/StringDataValue.h"

OmStringDataValue::OmStringDataValue(std::string_view value, std::string_view label,
                                     OmMemoryRegion* region)
    : OmCellText(region), chars(value, label, region) {}

OmStringDataValue::OmStringDataValue(const OmStringDataValue& other, OmMemoryRegion* region)
    : OmCellText(other, region), chars(other.chars, other.chars.Size()) {}

OmStringDataValue::~OmStringDataValue() = default;

OmCellText* OmStringDataValue::Clone(OmMemoryRegion* region) const {
  return Whole(new (region, chars.Size()) OmStringDataValue(*this, region));
}

unsigned long OmStringDataValue::Kind() const noexcept {
  return 6;
}

std::string OmStringDataValue::Text() const {
  return std::string(Label().empty() ? Value() : Label());
}

void OmStringDataValue::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

OmCellText::Key OmStringDataValue::OrderKey(std::string&) const {
  return {false, 0, Label().empty() ? Value() : Label(), Kind(), Value()};
}
