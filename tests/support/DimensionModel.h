// A dimension, its indexes and its counts beside a twin.

#ifndef TESTS_SUPPORT_DIMENSIONMODEL_H
#define TESTS_SUPPORT_DIMENSIONMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Exception.h"
#include "platform/cells/StringCell.h"
#include "tests/support/Choices.h"
#include "tests/support/TreeTwin.h"
#include "tests/support/Walkers.h"

namespace dimension_model {

using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;
constexpr unsigned long kNone = OmDimensionNode::kNoSubscript;

// What the twin of a record holds.
struct Category {
  bool operator<(const Category& other) const {
    return group != other.group ? group : label < other.label;
  }
  bool operator==(const Category& other) const {
    return group == other.group && subscript == other.subscript && label == other.label;
  }

  std::string label;
  unsigned long subscript = kNone;
  bool group = false;
  bool hide = false;
  std::vector<int> index = {};
  bool sorted = true;  // whether `index` is what a search relies on
};

using Twin = TreeTwin<Category>;

inline void ExpectSame(ConstNode node, const Twin& twin) {
  EXPECT_EQ(node->Text()->Text(), twin.value.label);
  EXPECT_EQ(node->Subscript(), twin.value.subscript);
  EXPECT_EQ(node->IsGroup(), twin.value.group);
  EXPECT_EQ(node->Hide(), twin.value.hide);
  const OmVector<int>& index = node->ChildIndex();
  EXPECT_EQ(std::vector<int>(index.begin(), index.end()), twin.value.index);
  ASSERT_EQ(node.Count(), twin.kids.size());
  ConstNode child = node.Begin();
  for (const Twin& kid : twin.kids) {
    EXPECT_EQ(child.Parent(), node);
    ExpectSame(child++, kid);
  }
}

inline unsigned int MaxSubscript(const Twin& twin) {
  unsigned int largest = 0;
  for (const Twin& kid : twin.kids) {
    largest = std::max(largest, kid.value.group ? MaxSubscript(kid)
                                                : static_cast<unsigned int>(kid.value.subscript));
  }
  return largest;
}

inline OmDimensionNode Root() {
  return OmDimensionNode(OmStringCell("root"), kNone, true, nullptr);
}

class DimensionModel {
 public:
  explicit DimensionModel(Choices& random_)
      : random(random_), dimension(Root(), &region), root(Category{"root", kNone, true}) {}

  void Step() {
    const Twin::Twins all = root.All();
    Twin* const a = all[random() % all.size()];
    Twin* const b = all[random() % all.size()];
    const Category made{std::string(1, static_cast<char>('a' + random() % 8)), random() % 50,
                        random() % 3 == 0};
    if (all.size() < 60 && random() % 2 == 0) {
      Grow(a, made, OmStringCell(made.label));
    } else {
      Restructure(a, b, made, OmStringCell(made.label));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(dimension.Root(), root));
    ASSERT_EQ(dimension.NumCategories(), categories);
    Verify(dimension);
  }

  // All that it holds is charged to its region, and a copy is of the same shape.
  void End() {
    EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), elsewhere);
    const unsigned long blocks = region.LiveBlocks();
    OmMemoryRegion other(false);
    {
      OmDimension copy(dimension, &other);
      EXPECT_EQ(region.LiveBlocks(), blocks);
      ExpectSame(copy.Root(), root);
      EXPECT_EQ(copy.NumCategories(), categories);
    }
    EXPECT_EQ(other.LiveBlocks(), 0u);
  }

  Choices& random;
  unsigned long elsewhere = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  OmMemoryRegion region{false};
  OmDimension dimension;
  Twin root;
  unsigned int categories = 0;

 private:
  static int Position(const Twin* above, const Category& probe) {
    const auto found = std::find_if(above->kids.begin(), above->kids.end(), [&](const Twin& kid) {
      return !(kid.value < probe) && !(probe < kid.value);
    });
    return found == above->kids.end() ? -1
                                      : static_cast<int>(std::distance(above->kids.begin(), found));
  }

  void Append(Twin* above, const Category& made, std::vector<int>::iterator place) {
    above->value.index.insert(place, static_cast<int>(above->value.index.size()));
    above->Add(Twin(made));
    categories += made.group ? 0 : 1;
  }

  void Grow(Twin* a, const Category& made, const OmCellText& text) {
    const Node node = FindNode(dimension, a);
    if (!a->value.group) {
      EXPECT_THROW(dimension.Child(node, text, made.subscript, made.group), OMSException);
    }
    if (random() % 4 == 0) {
      dimension.AddNewChild(node, text, made.subscript, made.group);
      Append(a, made, a->value.index.end());
      a->value.sorted = false;
    } else if (a->value.group && a->value.sorted) {
      const int known = Position(a, made);
      EXPECT_EQ(dimension.FindChild(node, text, made.group), known);
      const Node child = dimension.Child(node, text, made.subscript, made.group);
      EXPECT_EQ(static_cast<int>(child - node.Begin()),
                known != -1 ? known : static_cast<int>(a->kids.size()));
      if (known == -1) {
        std::vector<int>& index = a->value.index;
        Append(a, made, std::find_if(index.begin(), index.end(), [&](int i) {
                 return made < std::next(a->kids.begin(), i)->value;
               }));
      }
    }
  }

  void Restructure(Twin* a, Twin* b, const Category& made, const OmCellText& text) {
    if (a == &root) {
      return;
    }
    Twin* const above = a->parent;
    Node nodeA = FindNode(dimension, a);
    Node nodeB = FindNode(dimension, b);
    switch (random() % 6) {
      case 0:
        a->value.hide = !a->value.hide;
        nodeA->Hide(a->value.hide);
        return;
      case 1:
        Delete(a, nodeA);
        break;
      case 2: {
        const bool before = random() % 2 == 0;
        const Category category{made.label, MaxSubscript(root) + 1};
        const OmDimensionNode node = dimension.insertCategory(text, nodeA, nodeA.Parent(), before);
        EXPECT_EQ(node.Subscript(), category.subscript);
        above->Add(Twin(category), before ? a->value : a->After());
        ++categories;
        break;
      }
      case 3: {
        const Twin::Twins taken = random() % 2 == 0 ? Twin::Twins{a} : Twin::Twins{};
        std::vector<Node> nodes = FindNodes(dimension, taken);
        dimension.insertChild(text, Pointers(nodes));
        above->Group(Category{made.label, kNone, true, false, {}, false}, taken);
        break;
      }
      case 4: {
        const unsigned long subscript = a->value.subscript;
        a->value.subscript = kNone - 1;
        dimension.removeChild(nodeA);
        if (a->kids.empty()) {
          EXPECT_EQ(nodeA->Subscript(), kNone - 1);
          nodeA->Subscript(a->value.subscript = subscript);  // lest it is taken for another one
          return;
        }
        a->Dissolve();
        break;
      }
      default:
        Move(a, b, nodeA, nodeB);
    }
    above->value.sorted = false;
  }

  void Delete(Twin* twin, Node& node) {
    std::vector<int>& index = twin->parent->value.index;
    const auto position = static_cast<int>(twin->Index());
    dimension.Delete(node);
    dimension.Relocate(true);
    twin->Delete();
    for (unsigned long i = 0; i < index.size();) {
      if (index[i] == position) {
        // The place that the number of the position names, or the last.
        index.erase(index.begin() + std::min<long>(position, static_cast<long>(index.size()) - 1));
      } else {
        index[i] -= index[i] > position ? 1 : 0;
        ++i;
      }
    }
    categories = MaxSubscript(root) + 1;
  }

  void Move(Twin* a, Twin* b, Node& nodeA, Node& nodeB) {
    if (b == &root) {
      Twin* to = a->parent;
      while (to->value.hide && to != &root) {
        to = to->parent;
      }
      to->value.sorted = false;
      dimension.moveChild(nodeA, nullptr, random() % 2 == 0);
      a->Move(nullptr, to);
    } else if (!a->IsAbove(b->parent)) {
      b->parent->value.sorted = false;
      dimension.moveChild(nodeA, &nodeB, false);
      a->Move(b, nullptr);
    }
  }
};

}  // namespace dimension_model

#endif
