#include "backend/tables/om/Footnote.h"

#include <memory>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/CellTextOrder.h"

namespace {

std::unique_ptr<OmCellText> CloneOrNull(const OmCellText* text, OmMemoryRegion* region) {
  return std::unique_ptr<OmCellText>(text != nullptr ? text->Clone(region) : nullptr);
}

// Deletes the old text before it clones the new one, so that both never exist at once.
void Replace(OmCellText*& slot, const OmCellText* text, OmMemoryRegion* region) {
  OM_HARDEN(text == nullptr || text != slot, "OmFootnote -- a text replaced by itself");
  delete std::exchange(slot, nullptr);
  slot = CloneOrNull(text, region).release();
}

}  // namespace

OmFootnote::OmFootnote(const OmCellText* text_, const OmCellText* marker_, OmMemoryRegion* region_)
    : OmFootnote(text_, marker_, region_, 0) {}

OmFootnote::OmFootnote(const OmFootnote& other)
    : OmFootnote(other.text, other.marker, other.region, other.useCount) {}

OmFootnote::OmFootnote(const OmCellText* text_, const OmCellText* marker_, OmMemoryRegion* region_,
                       int useCount_)
    : region(region_), text(nullptr), marker(nullptr), useCount(useCount_) {
  std::unique_ptr<OmCellText> ownText = CloneOrNull(text_, region);
  marker = CloneOrNull(marker_, region).release();
  text = ownText.release();
}

OmFootnote::~OmFootnote() {
  delete text;
  delete marker;
}

void OmFootnote::Text(const OmCellText& t) {
  Replace(text, &t, region);
}

void OmFootnote::Marker(const OmCellText* m) {
  Replace(marker, m, region);
}

bool OmFootnote::operator==(const OmFootnote& other) const {
  OM_HARDEN(text != nullptr && other.text != nullptr, "OmFootnote::operator==");
  return *text == *other.text;
}
