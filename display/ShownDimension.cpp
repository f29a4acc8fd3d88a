#include <algorithm>

#include "backend/tables/om/Dimension.h"
#include "display/ShownDimensionData.h"

namespace om {

// A node of the path from the root, and its effect on the labels below it.
struct ShownDimension::Step {
  ConstNode node;
  unsigned int next = 0;       // child
  unsigned int label = kNone;  // the innermost one at or above the node
  bool own = false;            // that label is the node's
  bool ended = false;          // there are no labels at and below the node
};

ShownDimension::ShownDimension(const OmDimension& dimension, bool keepHidden, Role role)
    : root(dimension.Root().record) {
  // If NumCategories() is 0, nothing is shown, whatever the tree contains, as in OmDimHeader.
  if (dimension.NumCategories() != 0) {
    Walk(dimension, keepHidden, role);
  }
  leaves.shrink_to_fit();
  labels.shrink_to_fit();
  bare.shrink_to_fit();
  for (const LabelNode& blank : labels) {
    if (blank.record == nullptr && blank.parent != kNone) {
      LabelNode& parent = labels[blank.parent];
      parent.below =
          parent.first == blank.first && parent.last == blank.last ? Below::kNothing : Below::kSome;
    }
  }
  for (unsigned int leaf = 0; leaf != leaves.size(); ++leaf) {
    levels = std::max(levels, LevelsOf(leaf));
  }
  Index();
}

// Walks the tree depth first. The path from the root is a vector, because trees may be deeper than
// the stack. Each of its nodes is settled once, at its first leaf, so that depth costs nothing per
// leaf.
void ShownDimension::Walk(const OmDimension& dimension, bool keepHidden, Role role) {
  std::vector<Step> way(1);
  way[0].node = dimension.Root();
  unsigned long settled = 0;
  const auto settle = [&](unsigned long i) {
    Step& step = way[i];
    const OmDimensionNode& node = *step.node;
    step.label = i == 0 ? kNone : way[i - 1].label;
    step.ended = (i != 0 && way[i - 1].ended) ||
                 (node.IsGroup() && node.HideLabels() && !(role == Role::kLayers && node.Hide()));
    step.own = !step.ended && !node.Hide() && !(i == 0 && role == Role::kCornerNamed);
    if (step.own) {
      const auto first = static_cast<unsigned int>(leaves.size());
      const unsigned int level = step.label == kNone ? 0 : labels[step.label].level + 1;
      labels.push_back({step.node.record, step.node.level, step.label, first, first + 1, level,
                        node.IsGroup() ? Below::kLabels : Below::kNothing});
      step.label = static_cast<unsigned int>(labels.size() - 1);
    }
  };
  while (!way.empty()) {
    Step& step = way.back();
    const OmDimensionNode& node = *step.node;
    if (!node.IsGroup()) {
      if (keepHidden || !node.Hide()) {
        for (; settled != way.size(); ++settled) {
          settle(settled);
        }
        AddLeaf(way.back());
      } else if (static_cast<int>(node.Subscript()) >= 0) {
        hidden.push_back(static_cast<int>(node.Subscript()));
      }
    } else if (step.next != step.node.Count()) {
      const ConstNode child = step.node[step.next++];
      way.emplace_back().node = child;
      continue;
    }
    if (settled == way.size()) {
      --settled;
      if (step.own) {
        labels[step.label].last = static_cast<unsigned int>(leaves.size());
      }
    }
    way.pop_back();
  }
}

void ShownDimension::AddLeaf(const Step& step) {
  const auto leaf = static_cast<unsigned int>(leaves.size());
  unsigned int label = step.label;
  if (!step.own) {
    bare.push_back({leaf, step.node.level, step.node.record});
    const unsigned int parent = step.label;
    label = leaf == 0 ? kNone : leaves.back().label;
    if (label != kNone && labels[label].record == nullptr && labels[label].parent == parent) {
      labels[label].last = leaf + 1;
    } else {
      const unsigned int level = parent == kNone ? 0 : labels[parent].level + 1;
      labels.push_back({nullptr, 0, parent, leaf, leaf + 1, level, Below::kNothing});
      label = static_cast<unsigned int>(labels.size() - 1);
    }
  }
  leaves.push_back({static_cast<int>(step.node->Subscript()), label});
}

void ShownDimension::Index() {
  const auto with = std::count_if(leaves.begin(), leaves.end(),
                                  [](const Leaf& leaf) { return leaf.subscript >= 0; });
  bySubscript.reserve(static_cast<unsigned long>(with));
  bool ordered = true;
  for (unsigned int leaf = 0; leaf != leaves.size(); ++leaf) {
    if (leaves[leaf].subscript >= 0) {
      ordered = ordered && (bySubscript.empty() ||
                            leaves[bySubscript.back()].subscript < leaves[leaf].subscript);
      bySubscript.push_back(leaf);
    }
  }
  if (!ordered) {
    std::sort(bySubscript.begin(), bySubscript.end(), [this](unsigned int a, unsigned int b) {
      return std::pair(leaves[a].subscript, a) < std::pair(leaves[b].subscript, b);
    });
  }
  std::sort(hidden.begin(), hidden.end());
  hidden.shrink_to_fit();
}

ConstNode ShownDimension::Category(unsigned int leaf) const noexcept {
  const LabelNode& label = labels[leaves[leaf].label];
  if (label.record != nullptr) {
    return {label.record, label.depth};
  }
  const auto found =
      std::lower_bound(bare.begin(), bare.end(), leaf,
                       [](const Bare& other, unsigned int wanted) { return other.leaf < wanted; });
  return {found->record, found->depth};
}

std::vector<ConstNode> ShownDimension::LabelsOf(unsigned int leaf) const {
  std::vector<ConstNode> found;
  for (unsigned int i = leaves[leaf].label; i != kNone; i = labels[i].parent) {
    if (labels[i].record != nullptr) {
      found.emplace_back(labels[i].record, labels[i].depth);
    }
  }
  std::reverse(found.begin(), found.end());
  return found;
}

std::pair<unsigned int, unsigned int> ShownDimension::Find(int subscript) const noexcept {
  if (subscript < 0) {
    return {0, 0};
  }
  const auto at = [this](unsigned long i) { return leaves[bySubscript[i]].subscript; };
  const unsigned long size = bySubscript.size();
  // Usually the subscripts are 0, 1, 2, …, each once.
  auto first = static_cast<unsigned long>(subscript);
  if (first >= size || at(first) != subscript || (first != 0 && at(first - 1) == subscript)) {
    first = static_cast<unsigned long>(
        std::lower_bound(bySubscript.begin(), bySubscript.end(), subscript,
                         [this](unsigned int leaf, int s) { return leaves[leaf].subscript < s; }) -
        bySubscript.begin());
  }
  unsigned long last = first;
  while (last != size && at(last) == subscript) {
    ++last;
  }
  return {static_cast<unsigned int>(first), static_cast<unsigned int>(last)};
}

bool ShownDimension::IsHidden(int subscript) const noexcept {
  return std::binary_search(hidden.begin(), hidden.end(), subscript);
}

}  // namespace om
