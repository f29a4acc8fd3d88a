#include "backend/tables/om/OutputTree.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <utility>

#if defined(OM_HARDENING) && OM_HARDENING && defined(__GLIBC__)
#include <pthread.h>
#endif

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

// Gives this file access to the list position of a node.
struct Places : ListTree<OmOutputPart*> {
  using ListTree<OmOutputPart*>::Place;
};

#if defined(OM_HARDENING) && OM_HARDENING

// Whether an object is on the stack of this thread; false if that is unknown.
bool IsOnStack([[maybe_unused]] const void* object) noexcept {
#if defined(__GLIBC__)
  struct Stack {
    Stack() noexcept {
      pthread_attr_t attributes;
      if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstack(&attributes, &low, &size);
        pthread_attr_destroy(&attributes);
      }
    }
    void* low = nullptr;
    unsigned long size = 0;
  };
  static thread_local const Stack stack;
  const auto* const low = static_cast<const char*>(stack.low);
  const auto* const byte = static_cast<const char*>(object);
  return !std::less<>()(byte, low) && std::less<>()(byte, low + stack.size);
#else
  return false;
#endif
}

// Checks the items of the entries from `first` to `last`, which are about to be deleted. Allocates
// with malloc, because the destructor of a tree must not call operator new. Checks nothing if there
// is no memory.
void CheckItems(std::list<ListTreeData<OmOutputPart*>>& list, Places::iterator first,
                Places::iterator last) {
  struct Free {
    void operator()(void* block) const noexcept { std::free(block); }
  };
  const auto n = static_cast<unsigned long>(std::distance(first, last));
  const std::unique_ptr<const OmOutputPart*[], Free> items(
      static_cast<const OmOutputPart**>(std::malloc((n + 1) * sizeof(OmOutputPart*))));
  if (items == nullptr) {
    return;
  }
  const OmOutputPart** const begin = items.get();
  const OmOutputPart** end = begin;
  for (auto entry = first; entry != last; ++entry) {
    if (entry->Data() != nullptr) {
      OM_HARDEN(!IsOnStack(entry->Data()), "OmOutputTree -- an item that was not made with new");
      *end++ = entry->Data();
    }
  }
  std::sort(begin, end, std::less<>());
  OM_HARDEN(std::adjacent_find(begin, end) == end, "OmOutputTree -- an item in two entries");
  const auto goes = [&](ListTreeData<OmOutputPart*>& entry) {
    return std::binary_search(begin, end, entry.Data(), std::less<>());
  };
  OM_HARDEN(std::none_of(list.begin(), first, goes) && std::none_of(last, list.end(), goes),
            "OmOutputTree -- an item in an entry that stays");
}

#else

void CheckItems(std::list<ListTreeData<OmOutputPart*>>&, Places::iterator, Places::iterator) {}

#endif

// The text block and its future list entry. The constructor makes all allocations, before anything
// is deleted.
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
  // An item has no title only after a failed SetTitle.
  const OmStringCell none("");
  const OmCellText* const title = (*node)->Title();
  Replacement block(title != nullptr ? *title : none, message);
  const auto place = Places::Place(node);
  CheckItems(node.Tree().List(), place, std::next(place));
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

// The entry is made before the heading: without memory for the entry, nothing would delete the
// heading.
OmOutputTree::OmOutputTree() : ListTree<OmOutputPart*>(nullptr) {
  List().front().Data() = new OmHeading(OmStringCell("Output", nullptr, true));
}

OmOutputTree::~OmOutputTree() {
  CheckItems(List(), List().begin(), List().end());
  for (ListTreeData<OmOutputPart*>& entry : List()) {
    try {
      delete entry.Data();
    } catch (...) {
      // Ignored, so that the rest of the document is deleted too.
    }
  }
}

// Has the result of pruning each child of `n` in turn and then `n`, without recursion and without
// an allocation. The first entries of a subtree are removed first, so the entry in front of a
// removed one is its parent.
//
// Cursors navigate by the level that they were made with: `n` by its own, a cursor over siblings by
// that of the first sibling. Therefore each following sibling gets the level of the first one; it
// is removed next anyway.
void OmOutputTree::Prune(Node& n) {
  const iterator top = Place(n);
  OM_HARDEN(top != List().end(), "OmOutputTree::Prune");
  CheckItems(List(), top, SearchForward(top, n.Level()));
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
      Leave(n);
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
  OM_HARDEN(Place(n) != List().end(), "OmOutputTree::Erase");
  CheckItems(List(), Place(n), std::next(Place(n)));
  DeletePart(*n);
  ListTree<OmOutputPart*>::Erase(n);
}

ListTree<OmOutputPart*>::Node Amputate(ListTree<OmOutputPart*>::Node node, const OmCellText* title,
                                       const std::string& message) {
  return node.Level() > 1 ? ReplaceItem(node, message) : ReplaceContent(node, title, message);
}
