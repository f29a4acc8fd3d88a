// OmOutputTree, the output document: an outline of output items under a root heading, and Amputate,
// which puts a message in the place of an item that failed.

#ifndef BACKEND_TABLES_OM_OUTPUTTREE_H
#define BACKEND_TABLES_OM_OUTPUTTREE_H

#include <string>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/ListTree.h"
#include "backend/tables/om/OutputPart.h"

// Owns the items of its entries and deletes them through their virtual destructors. An entry may
// hold null. The tree costs no stack in its depth.
//
// So an item is made with `new`, and stands in one entry of one tree. An item does not know where
// it stands: before it deletes items, a hardened build looks for those that two entries of this
// tree hold, and for those on the stack of the thread.
//
// Prune and Erase let an exception of an item's destructor pass. The entry of that item then holds
// null, and what was not yet removed stays in the tree.
class OM_API OmOutputTree : public ListTree<OmOutputPart*> {
 public:
  // Holds the root entry, an OmHeading with the title "Output".
  OmOutputTree();
  OmOutputTree(const OmOutputTree&) = delete;
  OmOutputTree& operator=(const OmOutputTree&) = delete;
  // Deletes parents before their children. What an item's destructor throws is ignored.
  ~OmOutputTree();

  // Removes `n` with its subtree and deletes their items, children before their parent, in document
  // order. Afterwards `n` stands at the end. Other nodes on what was removed must not be used.
  void Prune(Node& n);
  // Deletes the item of `n` and removes its entry; its children take its place. Afterwards `n`
  // stands at the end.
  void Erase(Node& n);
};

// Replaces what is at or below `node` by a text block that says `message`; the tree has to be an
// OmOutputTree. The level that the node keeps decides how:
//
// Below the top of the outline (level above 1), the item at the node is deleted and its entry goes.
// Its children and, behind them, the text block take its place. The block has the item's title, and
// `title` is not used. Returns the entry behind the node's: the first of those children, or the
// block.
//
// For the root and the items directly under it, the item stays, everything below it is deleted, and
// the text block becomes its only child, titled `*title`. Returns the block's node.
//
// Where memory runs out, the tree is as it was. Where a destructor throws, nothing leaks, and the
// tree holds what was not yet deleted; an item that was deleted leaves null in its entry.
OM_API ListTree<OmOutputPart*>::Node Amputate(ListTree<OmOutputPart*>::Node node,
                                              const OmCellText* title, const std::string& message);

#endif
