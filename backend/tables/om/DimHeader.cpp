#include "backend/tables/om/DimHeader.h"

#include <algorithm>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Exception.h"

namespace {

[[noreturn]] void RefuseSubscript(unsigned long subscript, unsigned long limit) {
  throw OMSException("OmDimHeader::OmDimHeader() -- subscript <= limit",
                     static_cast<double>(subscript), static_cast<double>(limit));
}

}  // namespace

OmDimHeader::OmDimHeader(const OmDimension* dim, OmMemoryRegion* region_)
    : region(region_),
      visibleLevels(region),
      maxVisibleLevels(0),
      leafSubscripts(region),
      leafPositions(region),
      dimension(dim),
      changes(dim->Changes()) {
  const unsigned long n = dim->NumCategories();
  if (n == 0) {
    return;
  }
  if (n <= kLargestSubscript) {
    leafSubscripts.reserve(n);
    visibleLevels.reserve(n);
  }
  CollectNodes(dim->Root());

  long largest = static_cast<long>(n) - 1;
  for (const int subscript : leafSubscripts) {
    largest = std::max<long>(largest, subscript);
  }
  const unsigned long limit = std::max(kLargestSubscript, 4 * leafSubscripts.size());
  if (static_cast<unsigned long>(largest) > limit) {
    RefuseSubscript(static_cast<unsigned long>(largest), limit);
  }
  leafPositions.resize(static_cast<unsigned long>(largest) + 1, -1);
  for (unsigned long p = 0; p != leafSubscripts.size(); ++p) {
    if (leafSubscripts[p] >= 0) {
      leafPositions[static_cast<unsigned long>(leafSubscripts[p])] = static_cast<int>(p);
    }
  }
}

OmDimHeader::~OmDimHeader() = default;

// Walks the tree depth first. Keeps the path from the root in a vector of its own: the nodes' links
// to their parents may be stale, and trees may be deeper than the stack.
void OmDimHeader::CollectNodes(ConstNode node) {
  std::vector<Step> way{{node, 0}};
  while (!way.empty()) {
    Step& step = way.back();
    if (!step.node->IsGroup()) {
      AddLeaf(way);
      way.pop_back();
    } else if (step.next == step.node.Count()) {
      way.pop_back();
    } else {
      const ConstNode child = step.node[step.next++];
      way.push_back({child, 0});
    }
  }
}

void OmDimHeader::AddLeaf(const std::vector<Step>& way) {
  Path& path = nodePaths.emplace_back(region);
  path.reserve(way.size());
  int levels = 0;
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    const ConstNode& node = *path.push_back(step->node);
    if (!node->Hide()) {
      ++levels;
    }
    // A group that hides its labels, and all below it, has no label levels, on purpose: the row and
    // column headings end a list of labels there.
    if (node->IsGroup() && node->HideLabels()) {
      levels = 0;
    }
  }
  maxVisibleLevels = std::max(maxVisibleLevels, levels);

  const unsigned long subscript = way.back().node->Subscript();
  const auto low = static_cast<int>(subscript);
  if (low >= 0 && subscript >> 32 != 0) {
    // As an int it would be the subscript of another leaf.
    RefuseSubscript(subscript, std::max(kLargestSubscript, 4UL * dimension->NumCategories()));
  }
  leafSubscripts.push_back(low);
  visibleLevels.push_back(static_cast<unsigned short>(levels));
}

unsigned short OmDimHeader::VisibleLevels(std::vector<bool> include) const {
  OM_HARDEN(include.size() >= visibleLevels.size(), "OmDimHeader::VisibleLevels");
  unsigned short levels = 0;
  for (unsigned long p = 0; levels < maxVisibleLevels && p < visibleLevels.size(); ++p) {
    if (include[p]) {
      levels = std::max(levels, visibleLevels[p]);
    }
  }
  return levels;
}
