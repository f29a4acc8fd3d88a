#include "platform/cells/CellMetaData.h"

#include <algorithm>

OmCellMetaData::OmCellMetaData(OmMemoryRegion* region) : footnotes(region) {}

OmCellMetaData::OmCellMetaData(const OmCellMetaData& other) : OmCellMetaData(other, nullptr) {}

OmCellMetaData::OmCellMetaData(const OmCellMetaData& other, OmMemoryRegion* region)
    : footnotes(other.footnotes, region), style(other.style) {}

OmCellMetaData& OmCellMetaData::operator=(const OmCellMetaData& other) {
  if (this != &other) {
    footnotes.reserve(other.footnotes.size());
    footnotes.erase(footnotes.begin(), footnotes.end());
    for (const int footnote : other.footnotes) {
      footnotes.push_back(footnote);
    }
    style = other.style;
  }
  return *this;
}

OmCellMetaData::~OmCellMetaData() = default;

bool OmCellMetaData::operator==(const OmCellMetaData& other) const noexcept {
  return style == other.style && std::equal(footnotes.begin(), footnotes.end(),
                                            other.footnotes.begin(), other.footnotes.end());
}
