#include "backend/tables/om/OutputTree.h"

#include <iterator>
#include <list>
#include <memory>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/TextBlock.h"
#include "platform/cells/StringCell.h"

namespace {

using Node = ListTree<OmOutputPart*>::Node;

// Clears the entry first, so that a destructor that throws leaves no dangling pointer behind.
void DeletePart(OmOutputPart*& slot) {
  delete std::exchange(slot, nullptr);
}

// Lets this file see the place that a node stands on.
struct Places : ListTree<OmOutputPart*> {
  using ListTree<OmOutputPart*>::Place;
};

// The text block with the entry that it will have. Everything that can fail for want of memory
// comes before anything is deleted.
class Replacement {
 public:
  Replacement(const OmCellText& title, const std::string& message)
      : entry(1, ListTreeData<OmOutputPart*>(0, nullptr)),
        block(std::make_unique<OmTextBlock>(title, message)) {}

  // Appends the block as the last child of `node` and returns its node. The tree then owns it.
  Node Append(const Node& node) {
    ListTree<OmOutputPart*>& tree = node.Tree();
    const auto place = entry.begin();
    place->Level() = node.Level() + 1;
    place->Data() = block.release();
    tree.List().splice(tree.SearchForward(Places::Place(node), node.Level()), entry);
    return {tree, place};
  }

 private:
  std::list<ListTreeData<OmOutputPart*>> entry;
  std::unique_ptr<OmTextBlock> block;
};

Node ReplaceItem(Node node, const std::string& message) {
  OM_HARDEN(*node != nullptr, "Amputate");
  // An item has no title only where setting one failed.
  const OmStringCell none("");
  const OmCellText* const title = (*node)->Title();
  Replacement block(title != nullptr ? *title : none, message);
  DeletePart(*node);
  block.Append(node);
  node.Tree().Flatten(node);
  Node result = node;
  ++result;
  static_cast<OmOutputTree&>(node.Tree()).Erase(node);
  return result;
}

Node ReplaceContent(Node node, const OmCellText* title, const std::string& message) {
  OM_HARDEN(title != nullptr, "Amputate");
  Replacement block(*title, message);
  while (node.HasChild()) {
    Node child = node.Begin();
    static_cast<OmOutputTree&>(node.Tree()).Prune(child);
  }
  return block.Append(node);
}

}  // namespace

// The heading follows the entry, because nobody would delete it if there were no memory for the
// entry.
OmOutputTree::OmOutputTree() : ListTree<OmOutputPart*>(nullptr) {
  List().front().Data() = new OmHeading(OmStringCell("Output", nullptr, true));
}

OmOutputTree::~OmOutputTree() {
  for (ListTreeData<OmOutputPart*>& entry : List()) {
    try {
      delete entry.Data();
    } catch (...) {
      // The rest of the document is deleted all the same.
    }
  }
}

// The same as pruning each child of `n` in turn and then `n`, written without recursion and without
// an allocation. What stands first in a subtree is removed before what follows it, so the entry in
// front of a removed one is its parent.
//
// Cursors navigate by the level that they were made with: `n` by its own, and the cursor that runs
// over siblings by that of the first one. The entries are on their way out, so a sibling is given
// that level.
void OmOutputTree::Prune(Node& n) {
  const iterator top = Place(n);
  OM_HARDEN(top != List().end(), "OmOutputTree::Prune");
  const auto level = [&](iterator it) { return it == top ? n.Level() : it->Level(); };
  iterator it = top;
  for (;;) {
    const iterator next = std::next(it);
    if (next != List().end() && next->Level() > level(it)) {
      it = next;
      continue;
    }
    DeletePart(it->Data());
    if (it == top) {
      List().erase(it);
      return;
    }
    const iterator parent = std::prev(it);
    const int siblings = it->Level();
    List().erase(it);
    it = parent;
    if (next != List().end() && next->Level() > level(parent)) {
      next->Level() = siblings;
      it = next;
    }
  }
}

void OmOutputTree::Erase(Node& n) {
  DeletePart(*n);
  ListTree<OmOutputPart*>::Erase(n);
}

ListTree<OmOutputPart*>::Node Amputate(ListTree<OmOutputPart*>::Node node, const OmCellText* title,
                                       const std::string& message) {
  return node.Level() > 1 ? ReplaceItem(node, message) : ReplaceContent(node, title, message);
}
