// OmOutputTree, the output document: an outline of output items under a root heading, and Amputate,
// which puts a message in the place of an item that failed.

#ifndef BACKEND_TABLES_OM_OUTPUTTREE_H
#define BACKEND_TABLES_OM_OUTPUTTREE_H

#include <string>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/ListTree.h"
#include "backend/tables/om/OutputPart.h"

// Owns the items of its entries and deletes them through their virtual destructors. An entry may
// hold null. No operation recurses, however deep the outline is.
//
// So an item must be made with `new`, and be in one entry of one tree only. Before it deletes
// items, a hardened build checks that none of them is in two entries of this tree or on the stack
// of the thread.
//
// Prune and Erase do not catch exceptions of item destructors. The entry of that item is null then,
// and the entries that were not yet removed stay in the tree.
class OM_API OmOutputTree : public ListTree<OmOutputPart*> {
 public:
  // Holds the root entry, an OmHeading with the title "Output".
  OmOutputTree();
  OmOutputTree(const OmOutputTree&) = delete;
  OmOutputTree& operator=(const OmOutputTree&) = delete;
  // Deletes parents before their children. What an item's destructor throws is ignored.
  ~OmOutputTree();

  // Removes `n` with its subtree and deletes their items, children before their parent, in document
  // order. Afterwards `n` is at the end. Other nodes on removed entries must not be used.
  void Prune(Node& n);
  // Deletes the item of `n` and removes its entry; its children take its place. Afterwards `n` is
  // at the end.
  void Erase(Node& n);
};

// Replaces the item at `node`, or everything below it, by a text block with the text `message`. The
// tree has to be an OmOutputTree. Node::Level() decides:
//
// Level 2 or deeper: the item is deleted and its entry removed. Its children and, after them, the
// text block take its place. The block has the item's title; `title` is not used. Returns the node
// of the first of those children, or of the block if there are none.
//
// Level 0 or 1, the root and the items directly below it: the item stays, everything below it is
// deleted, and the text block with the title `*title` becomes its only child. Returns the node of
// the block.
//
// If memory runs out, the tree is unchanged. If a destructor throws, nothing leaks: the tree keeps
// what was not yet deleted, and the entry of a deleted item is null.
OM_API ListTree<OmOutputPart*>::Node Amputate(ListTree<OmOutputPart*>::Node node,
                                              const OmCellText* title, const std::string& message);

#endif
