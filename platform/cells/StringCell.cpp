#include "platform/cells/StringCell.h"

OmStringCell::OmStringCell(std::string_view text, OmMemoryRegion* region, bool flag_)
    : OmCellText(region), flag(flag_), chars(text, {}, region) {}

OmStringCell::OmStringCell(const OmStringCell& other, OmMemoryRegion* region)
    : OmCellText(other, region), flag(other.flag), chars(other.chars, other.chars.Size()) {}

OmStringCell::~OmStringCell() = default;

OmCellText* OmStringCell::Clone(OmMemoryRegion* region) const {
  return Whole(new (region, chars.Size()) OmStringCell(*this, region));
}

unsigned long OmStringCell::Kind() const noexcept {
  return 2;
}

std::string OmStringCell::Text() const {
  return std::string(chars.First());
}

void OmStringCell::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

OmCellText::Key OmStringCell::OrderKey(std::string&) const {
  return {false, 0, chars.First(), Kind(), {}};
}
