#include "platform/cells/StringCellUTF8.h"

OmStringCellUTF8::OmStringCellUTF8(std::string_view text, OmMemoryRegion* region)
    : OmCellText(region), chars(text, {}, region) {}

OmStringCellUTF8::OmStringCellUTF8(const OmStringCellUTF8& other, OmMemoryRegion* region)
    : OmCellText(other, region), chars(other.chars, other.chars.Size()) {}

OmStringCellUTF8::~OmStringCellUTF8() = default;

OmCellText* OmStringCellUTF8::Clone(OmMemoryRegion* region) const {
  return Whole(new (region, chars.Size()) OmStringCellUTF8(*this, region));
}

unsigned long OmStringCellUTF8::Kind() const noexcept {
  return 3;
}

std::string OmStringCellUTF8::Text() const {
  return std::string(chars.First());
}

void OmStringCellUTF8::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

OmCellText::Key OmStringCellUTF8::OrderKey(std::string&) const {
  return {false, 0, chars.First(), Kind(), {}};
}
