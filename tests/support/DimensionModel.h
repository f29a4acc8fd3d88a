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
#include "tests/support/Show.h"
#include "tests/support/TreeTwin.h"
#include "tests/support/Walkers.h"

namespace dimension_model {

using Node = OmDimension::Node;
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
};

using Twin = TreeTwin<Category>;

inline std::string Show(const Twin& twin) {
  const Category& value = twin.value;
  std::string shown = "(" + Fields(value.label, static_cast<long>(value.subscript), value.group,
                                   value.hide, false, 2, ListOf(value.index));
  for (const Twin& kid : twin.kids) {
    shown += Show(kid);
  }
  return shown + ")";
}

inline unsigned int MaxSubscript(const Twin& twin) {
  unsigned int largest = 0;
  for (const Twin& kid : twin.kids) {
    const auto subscript = static_cast<unsigned int>(kid.value.subscript);
    largest = std::max(largest, kid.value.group ? MaxSubscript(kid) : subscript);
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
    ASSERT_EQ(Show(dimension), Fields(categories, Show(root)));
    Verify(dimension);
  }

  // All that it holds is charged to its region, and a copy is of the same shape.
  void End() {
    EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), elsewhere);
    const unsigned long blocks = region.LiveBlocks();
    OmMemoryRegion other(false);
    EXPECT_EQ(Show(OmDimension(dimension, &other)), Show(dimension));
    EXPECT_EQ(region.LiveBlocks(), blocks);
    EXPECT_EQ(other.LiveBlocks(), 0u);
  }

 private:
  Choices& random;
  unsigned long elsewhere = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  OmMemoryRegion region{false};
  OmDimension dimension;
  Twin root;
  unsigned int categories = 0;

  static const Category& At(const Twin* above, int i) {
    return std::next(above->kids.begin(), i)->value;
  }
  // Whether the index of a record is what a search relies on.
  static bool Searchable(const Twin* above) {
    const std::vector<int>& index = above->value.index;
    const int size = static_cast<int>(above->kids.size());
    const auto wrong = [&](int i, int j) { return !(At(above, i) < At(above, j)); };
    return static_cast<int>(index.size()) == size &&
           std::all_of(index.begin(), index.end(), [&](int i) { return i < size; }) &&
           std::adjacent_find(index.begin(), index.end(), wrong) == index.end();
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
    } else if (a->value.group && Searchable(a)) {
      std::vector<int>& index = a->value.index;
      const auto place =
          std::find_if(index.begin(), index.end(), [&](int i) { return !(At(a, i) < made); });
      const int known = place == index.end() || made < At(a, *place) ? -1 : *place;
      EXPECT_EQ(dimension.FindChild(node, text, made.group), known);
      const Node child = dimension.Child(node, text, made.subscript, made.group);
      EXPECT_EQ(static_cast<int>(child - node.Begin()),
                known != -1 ? known : static_cast<int>(a->kids.size()));
      if (known == -1) {
        Append(a, made, place);
      }
    }
  }

  // What a tree does already is the matter of its own model.
  void Restructure(Twin* a, Twin* b, const Category& made, const OmCellText& text) {
    if (a == &root) {
      return;
    }
    Node node = FindNode(dimension, a);
    switch (random() % 6) {
      case 0:
        a->value.hide = !a->value.hide;
        node->Hide(a->value.hide);
        break;
      case 1:
        Delete(a, node);
        break;
      case 2: {
        const bool before = random() % 2 == 0;
        const Category category{made.label, MaxSubscript(root) + 1};
        EXPECT_EQ(dimension.insertCategory(text, node, node.Parent(), before).Subscript(),
                  category.subscript);
        a->parent->Add(Twin(category), before ? a->value : a->After());
        ++categories;
        break;
      }
      case 3:
        dimension.insertChild(text, {&node});
        a->parent->Group(Category{made.label, kNone, true}, {a});
        break;
      case 4:
        dimension.removeChild(node);
        a->value.subscript = kNone - 1;  // stays where nothing is dissolved
        a->Dissolve();
        break;
      default:
        Move(a, b, node);
    }
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

  void Move(Twin* a, Twin* b, Node& node) {
    if (b == &root) {
      Twin* to = a->parent;
      while (to->value.hide && to != &root) {
        to = to->parent;
      }
      dimension.moveChild(node, nullptr, random() % 2 == 0);
      a->Move(nullptr, to);
    } else if (!a->IsAbove(b->parent)) {
      Node sibling = FindNode(dimension, b);
      dimension.moveChild(node, &sibling, false);
      a->Move(b, nullptr);
    }
  }
};

}  // namespace dimension_model

#endif
