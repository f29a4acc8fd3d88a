#include "backend/tables/om/Dimension.h"

#include <algorithm>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Exception.h"

namespace {

// The result of a search in the index of a parent.
struct Found {
  unsigned long place;  // of the first entry that is not less than the probe
  int position;         // of the child that equals the probe, or -1
};

Found Search(const OmDimension::ConstNode& parent, const OmDimensionNode& probe) {
  const OmDimension::Less less(parent, probe);
  const OmVector<int>& index = parent->ChildIndex();
  const int* const entry = std::lower_bound(index.begin(), index.end(), -1, less);
  const bool same = entry != index.end() && !less(-1, *entry);
  return {static_cast<unsigned long>(entry - index.begin()), same ? *entry : -1};
}

// A label keeps its tracker within its table, and loses it on the way to another one.
OmDimensionNode CopyInto(OmMemoryRegion* region, const OmDimensionNode& node) {
  return node.ChildIndex().Region() == region ? OmDimensionNode(node)
                                              : OmDimensionNode(node, region);
}

}  // namespace

bool OmDimension::Less::operator()(int i, int j) const {
  const auto payload = [this](int position) -> const OmDimensionNode* {
    if (position == -1) {
      return &probe;
    }
    const auto index = static_cast<unsigned int>(position);
    return index < parent.Count() ? &*parent[index] : nullptr;
  };
  const OmDimensionNode* const a = payload(i);
  const OmDimensionNode* const b = payload(j);
  return a != nullptr && (b == nullptr || *a < *b);
}

OmDimension::OmDimension(const OmDimensionNode& root, OmMemoryRegion* region)
    : OmVectorTree<OmDimensionNode>(OmDimensionNode(root, region), region) {}

OmDimension::OmDimension(const OmDimension& other, OmMemoryRegion* region)
    : OmVectorTree<OmDimensionNode>(OmDimensionNode(*other.Root(), region), region),
      numCategories(other.numCategories) {
  CloneBelow(other.Root());
}

int OmDimension::FindChild(ConstNode parent_, const OmCellText& text, bool group) const {
  return Search(parent_, OmDimensionNode(text, 0, group, nullptr)).position;
}

unsigned int OmDimension::getDepth(ConstNode node) const {
  unsigned int depth = node.Level();
  for (std::vector<ConstNode> todo{node}; !todo.empty();) {
    const ConstNode above = todo.back();
    todo.pop_back();
    for (ConstNode child = above.Begin(); child != above.End(); ++child) {
      depth = std::max(depth, child.Level());
      if (child.HasChild()) {
        todo.push_back(child);
      }
    }
  }
  return depth;
}

unsigned int OmDimension::getMaximumDepth() const {
  return getDepth(Root()) + 1;
}

void OmDimension::getGroupCountsByLevel(ConstNode node, std::vector<unsigned long>& counts) const {
  for (std::vector<ConstNode> todo{node}; !todo.empty();) {
    const ConstNode above = todo.back();
    todo.pop_back();
    bool leafCounted = false;
    for (ConstNode child = above.Begin(); child != above.End(); ++child) {
      OM_HARDEN(child.Level() < counts.size(), "OmDimension::getGroupCountsByLevel");
      if (child->IsGroup() && !child->Hide()) {
        ++counts[child.Level()];
      } else if (!leafCounted && child.IsLeaf()) {
        ++counts[child.Level()];
        leafCounted = true;
      }
      if (child.HasChild()) {
        todo.push_back(child);
      }
    }
  }
}

unsigned long OmDimension::getMaxVisibleGroupCount() const {
  std::vector<unsigned long> counts(getMaximumDepth(), 0);
  getGroupCountsByLevel(Root(), counts);
  return *std::max_element(counts.begin(), counts.end());
}

OmDimension::Node OmDimension::Counterpart(Node& node) {
  return node.Counterpart(*this);
}

OmDimension::Node OmDimension::Child(const Node& parent_, const OmDimensionNode& node) {
  if (!parent_->IsGroup()) {
    throw OMSException("OmDimension::Child -- parent is not group");
  }
  OM_HARDEN(parent_->Text() != nullptr && node.Text() != nullptr, "OmDimension::Child");
  OmDimensionNode copy(node, Region());
  copy.Text()->setICUTracker(parent_->Text()->getICUTracker());
  copy.ChildIndex().clear();
  const Found found = Search(parent_, copy);
  if (found.position != -1) {
    return parent_[static_cast<unsigned long>(found.position)];
  }
  return Append(parent_, copy, found.place);
}

OmDimension::Node OmDimension::Child(const Node& parent_, const OmCellText& text,
                                     unsigned long subscript, bool group) {
  return Child(parent_, OmDimensionNode(text, subscript, group, nullptr));
}

OmDimension::Node OmDimension::AddNewChild(const Node& parent_, const OmCellText& text,
                                           unsigned long subscript, bool group) {
  OM_HARDEN(parent_->Text() != nullptr, "OmDimension::AddNewChild");
  OmDimensionNode node(text, subscript, group, Region());
  node.Text()->setICUTracker(parent_->Text()->getICUTracker());
  return Append(parent_, node, parent_->ChildIndex().size());
}

// Appends a child and enters it in the parent's index at `place`.
OmDimension::Node OmDimension::Append(const Node& parent_, OmDimensionNode& node,
                                      unsigned long place) {
  ++changes;
  OmVector<int>& index = parent_->ChildIndex();
  const unsigned long position = index.size();
  // Reserve first, so that nothing can fail after the child was added.
  if (index.capacity() == position) {
    index.reserve(OmVector<int>::NextSize(position));
  }
  const Node child = OmVectorTree::Child(parent_, node);
  index.insert(index.begin() + place, static_cast<int>(position));
  if (!node.IsGroup()) {
    ++numCategories;
  }
  return child;
}

void OmDimension::Delete(Node& node) {
  ++changes;
  const Node above = node.Parent();
  const unsigned int pos = node - above.Begin();
  // Before anything is changed, because it allocates.
  const unsigned int largest = MaxSubscript(Root(), node);
  OmVectorTree::Delete(node);

  OmVector<int>& index = above->ChildIndex();
  for (unsigned long i = 0; i < index.size();) {
    const auto entry = static_cast<unsigned int>(index[i]);
    if (entry == pos) {
      // Erases the entry at `pos`, not the matching one at `i`, on purpose (see the header). In the
      // order of insertion they are the same.
      index.erase(index.begin() + std::min<unsigned long>(pos, index.size()));
      continue;
    }
    if (entry > pos) {
      --index[i];
    }
    ++i;
  }
  numCategories = largest + 1;
}

OmDimensionNode OmDimension::insertCategory(const OmCellText& text, Node sibling, Node parent_,
                                            bool before) {
  OM_HARDEN(sibling != parent_.End() && sibling->Text() != nullptr, "OmDimension::insertCategory");
  OmDimensionNode node(text, MaxSubscript(Root(), ConstNode()) + 1, false, Region());
  node.Text()->setICUTracker(sibling->Text()->getICUTracker());
  ++changes;
  OmVectorTree::InsertChild(node, sibling, parent_, before);
  ++numCategories;
  return node;
}

void OmDimension::insertChild(const OmCellText& text, std::vector<Node*> nodes) {
  OmDimensionNode node(text, OmDimensionNode::kNoSubscript, true, Region());
  if (!nodes.empty()) {
    OM_HARDEN((*nodes.front())->Text() != nullptr, "OmDimension::insertChild");
    node.Text()->setICUTracker((*nodes.front())->Text()->getICUTracker());
  }
  ++changes;
  OmVectorTree::InsertChild(node, std::move(nodes));
}

void OmDimension::removeChild(Node& node) {
  ++changes;
  const unsigned long subscript = node->Subscript();
  node->Subscript(OmDimensionNode::kDissolving);
  try {
    OmVectorTree::removeChild(node);
  } catch (...) {
    node->Subscript(subscript);
    throw;
  }
}

void OmDimension::moveChild(Node& node, Node* target, bool swap) {
  ++changes;
  if (target != nullptr && swap) {
    OmVectorTree::swapChildren(node, *target);
    return;
  }
  if (target != nullptr) {
    OmVectorTree::moveChild(node, target, nullptr);
    return;
  }
  Node reached = node.Parent();
  while (reached->Hide() && !reached.IsRoot()) {
    reached = reached.Parent();
  }
  OmVectorTree::moveChild(node, nullptr, &reached);
}

void OmDimension::swapChildren(Node& a, Node& b) {
  ++changes;
  OmVectorTree::swapChildren(a, b);
}

void OmDimension::InsertChild(const OmDimensionNode& node, Node sibling, Node parent_,
                              bool before) {
  ++changes;
  OmVectorTree::InsertChild(CopyInto(Region(), node), sibling, parent_, before);
}

void OmDimension::InsertChild(const OmDimensionNode& node, std::vector<Node*> nodes) {
  ++changes;
  OmVectorTree::InsertChild(CopyInto(Region(), node), std::move(nodes));
}

// The copied indexes stay correct, because the children are cloned in order.
void OmDimension::CloneBelow(const ConstNode& source) {
  // Records whose children are still to be cloned, with their clones.
  std::vector<std::pair<ConstNode, Node>> todo{{source, Root()}};
  while (!todo.empty()) {
    const auto [from, to] = todo.back();
    todo.pop_back();
    for (ConstNode child = from.Begin(); child != from.End(); ++child) {
      OmVectorTree::Child(to, OmDimensionNode(*child, Region()));
    }
    // These records do not move after this.
    for (unsigned long i = 0; i != from.Count(); ++i) {
      if (from[i].HasChild()) {
        todo.push_back({from[i], to[i]});
      }
    }
  }
}

// Returns the largest subscript of the categories below `node`, 0 if there are none. Ignores the
// subscripts of groups, and `left` with all records below it.
unsigned int OmDimension::MaxSubscript(const ConstNode& node, const ConstNode& left) {
  unsigned int largest = 0;
  for (std::vector<ConstNode> todo{node}; !todo.empty();) {
    const ConstNode above = todo.back();
    todo.pop_back();
    for (ConstNode child = above.Begin(); child != above.End(); ++child) {
      if (child == left) {
        continue;
      }
      if (child->IsGroup()) {
        todo.push_back(child);
      } else {
        largest = std::max(largest, static_cast<unsigned int>(child->Subscript()));
      }
    }
  }
  return largest;
}
