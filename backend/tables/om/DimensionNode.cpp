#include "backend/tables/om/DimensionNode.h"

#include <iostream>
#include <string>

namespace {

const char* YesOrNo(bool value) {
  return value ? "yes" : "no";
}

}  // namespace

OmDimensionNode::OmDimensionNode(OmMemoryRegion* region) : text(nullptr), childIndex(region) {}

OmDimensionNode::OmDimensionNode(const OmCellText& text_, unsigned long subscript_, bool group_,
                                 OmMemoryRegion* region)
    : text(text_.Clone(region)), subscript(subscript_), childIndex(region), group(group_) {}

OmDimensionNode::OmDimensionNode(const OmDimensionNode& other, OmMemoryRegion* region)
    : text(other.Text() != nullptr ? other.Text()->Clone(region) : nullptr),
      subscript(other.subscript),
      childIndex(other.childIndex, region),
      sortOrder(other.sortOrder),
      group(other.group),
      hide(other.hide),
      hideLabels(other.hideLabels) {}

OmDimensionNode::OmDimensionNode(const OmDimensionNode& other)
    : OmDimensionNode(other, other.childIndex.Region()) {
  if (other.Text() != nullptr && other.Text()->getICUTracker() != nullptr) {
    text->setICUTracker(other.Text()->getICUTracker());
  }
}

bool OmDimensionNode::operator<(const OmDimensionNode& other) const {
  return group != other.group ? group : *text < *other.text;
}

bool OmDimensionNode::operator==(const OmDimensionNode& other) const {
  return group == other.group && subscript == other.subscript && *text == *other.text;
}

void OmDimensionNode::Print(unsigned int level) const {
  for (unsigned int i = 0; i != level; ++i) {
    std::cout << "  ";
  }
  // Only the low 32 bits, so that a missing subscript shows as -1. Numbers are converted to strings
  // first, so that the flags of the stream do not change them.
  std::cout << "Subscript: " << std::to_string(static_cast<int>(subscript))
            << ", Group: " << YesOrNo(group) << ", hide: " << YesOrNo(hide)
            << ", hideLabels: " << YesOrNo(hideLabels);
  if (sortOrder == 0) {
    std::cout << ", Sort: up";
  } else if (sortOrder == 1) {
    std::cout << ", Sort: down";
  }
  const char* separator = ", Children: ";
  for (const int child : childIndex) {
    std::cout << separator << std::to_string(child);
    separator = ", ";
  }
  if (text.get() != nullptr) {
    std::cout << ", Text: ";
    text->Print(0);
  }
  std::cout << std::endl;
}
