#include "backend/tables/om/Utility.h"

#include <vector>

#include "platform/cells/Composite.h"
#include "platform/cells/Number.h"

OmNumber* OmUtility::GetFirstNumber(OmVectorTree<OmCellText*>::ConstNode node) {
  // A node of the path, and the index of its next child.
  struct Step {
    OmVectorTree<OmCellText*>::ConstNode node;
    unsigned int child;
  };
  std::vector<Step> way{{node, 0}};
  while (!way.empty()) {
    Step& step = way.back();
    if (step.child == step.node.Count()) {
      way.pop_back();
      continue;
    }
    const auto child = step.node[step.child++];
    if (auto* const number = dynamic_cast<OmNumber*>(*child)) {
      return number;
    }
    if (child.HasChild()) {
      way.push_back({child, 0});
    }
  }
  return nullptr;
}

OmNumber* OmUtility::GetFirstNumber(const OmComposite& composite) {
  return GetFirstNumber(composite.Tree().Root());
}
