// Places items in a document.

#ifndef EXAMPLES_REPORT_DOCUMENTPARTS_H
#define EXAMPLES_REPORT_DOCUMENTPARTS_H

#include <memory>

#include "backend/tables/om/OutputTree.h"

namespace report {

using TreeNode = ListTree<OmOutputPart*>::Node;

// Hands `part` over to the tree behind `parent`, as the last child of `parent`. Returns its node.
inline TreeNode Place(TreeNode parent, std::unique_ptr<OmOutputPart> part) {
  const TreeNode node = parent.Child(part.get());
  static_cast<void>(part.release());
  return node;
}

}  // namespace report

#endif
