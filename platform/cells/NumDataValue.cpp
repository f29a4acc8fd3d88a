#include "platform/cells/NumDataValue.h"

#include "platform/cells/Number.h"

OmNumDataValue::OmNumDataValue(double value_, std::string_view label, const Qualtex_Format& format_,
                               OmMemoryRegion* region)
    : OmCellText(region), value(value_), format(format_), chars(label, {}, region) {}

OmNumDataValue::OmNumDataValue(const OmNumDataValue& other, OmMemoryRegion* region)
    : OmCellText(other, region),
      value(other.value),
      format(other.format),
      chars(other.chars, other.chars.Size()) {}

OmNumDataValue::~OmNumDataValue() = default;

OmCellText* OmNumDataValue::Clone(OmMemoryRegion* region) const {
  return Whole(new (region, chars.Size()) OmNumDataValue(*this, region));
}

unsigned long OmNumDataValue::Kind() const noexcept {
  return 5;
}

std::string OmNumDataValue::Text() const {
  return Label().empty() ? OmNumber::Text(value, format) : std::string(Label());
}

void OmNumDataValue::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

OmCellText::Key OmNumDataValue::OrderKey(std::string&) const {
  return {true, value, {}, Kind(), Label()};
}
