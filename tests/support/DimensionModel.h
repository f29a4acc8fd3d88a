// A dimension, its tree, its indexes and its counts beside a twin.

#ifndef TESTS_SUPPORT_DIMENSIONMODEL_H
#define TESTS_SUPPORT_DIMENSIONMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Exception.h"
#include "platform/cells/StringCell.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/Choices.h"
#include "tests/support/Show.h"
#include "tests/support/Walkers.h"

namespace dimension_model {

using Node = OmDimension::Node;
constexpr unsigned long kNone = OmDimensionNode::kNoSubscript;

// A record that never moves, changed by the naive form of each operation with copies and searches.
// The dimension has to give the same answer without them.
struct Twin {
  Twin(const std::string& label_, unsigned long subscript_, bool group_)
      : label(label_), subscript(subscript_), group(group_) {}
  Twin(const Twin& other, Twin* parent_ = nullptr)
      : Twin(other.label, other.subscript, other.group) {
    hide = other.hide;
    index = other.index;
    parent = parent_;
    for (const Twin& kid : other.kids) {
      kids.emplace_back(kid, this);
    }
  }
  bool operator<(const Twin& other) const {
    return group != other.group ? group : label < other.label;
  }
  bool operator==(const Twin& other) const {
    return group == other.group && subscript == other.subscript && label == other.label;
  }

  // Returns what is listed, this record and all below it.
  std::vector<Twin*> All(std::vector<Twin*> all = {}) {
    all.push_back(this);
    for (Twin& kid : kids) {
      all = kid.All(std::move(all));
    }
    return all;
  }
  bool IsAbove(const Twin* other) const {
    return other != nullptr && (other == this || IsAbove(other->parent));
  }
  long Index() {
    const auto begin = parent->kids.begin();
    return std::distance(begin, std::find_if(begin, parent->kids.end(),
                                             [this](const Twin& kid) { return &kid == this; }));
  }
  // The child at a position, or null.
  Twin* At(long i) {
    return i < static_cast<long>(kids.size()) ? &*std::next(kids.begin(), i) : nullptr;
  }
  Twin* After() { return parent->At(Index() + 1); }
  // Adds a copy in front of the first child that equals `before`, or at the end.
  void Add(const Twin& child, const Twin* before = nullptr) {
    const auto place = std::find_if(kids.begin(), kids.end(), [before](const Twin& kid) {
      return before != nullptr && kid == *before;
    });
    kids.emplace(place, child, this);
  }
  void Delete() { parent->kids.erase(std::next(parent->kids.begin(), Index())); }
  void Move(Twin* to, const Twin* before) {
    const Twin copy(*this);
    Delete();
    to->Add(copy, before == this ? &copy : before);
  }
  static void Swap(Twin* a, Twin* b) {
    if (b->After() == a) {
      std::swap(a, b);
    }
    const bool neighbours = a->After() == b;
    const Twin* const afterB = b->After();
    const Twin* const afterA = neighbours ? afterB : a->After();
    const Twin copies[] = {*(neighbours ? b : a), *(neighbours ? a : b)};
    Twin* const parents[] = {a->parent, b->parent};
    a->Delete();
    b->Delete();
    parents[0]->Add(copies[0], afterB);
    parents[1]->Add(copies[1], afterA);
  }
  unsigned int MaxSubscript() const {
    unsigned int largest = 0;
    for (const Twin& kid : kids) {
      largest = std::max(largest,
                         kid.group ? kid.MaxSubscript() : static_cast<unsigned int>(kid.subscript));
    }
    return largest;
  }
  std::string Show() const {
    std::string shown = "(" + Fields(label + "~", static_cast<long>(subscript), group, hide, false,
                                     2, ListOf(index));
    for (const Twin& kid : kids) {
      shown += kid.Show();
    }
    return shown + ")";
  }

  std::string label;
  unsigned long subscript;
  bool group;
  bool hide = false;
  std::vector<int> index;
  Twin* parent = nullptr;
  std::list<Twin> kids;
};

inline OmDimensionNode Root() {
  return OmDimensionNode(OmStringCell("root"), kNone, true, nullptr);
}

// Returns the record that stands where `twin` does.
inline Node Find(OmDimension& dimension, Twin* twin) {
  return twin->parent != nullptr
             ? Find(dimension, twin->parent)[static_cast<unsigned long>(twin->Index())]
             : dimension.Root();
}

class DimensionModel {
 public:
  explicit DimensionModel(Choices& random_) : random(random_) {
    dimension.Name()->setICUTracker(&tracker);
  }

  void Step() {
    const std::vector<Twin*> all = root.All();
    Twin* const a = all[random() % all.size()];
    Twin* const b = all[random() % all.size()];
    // Few, so that equal siblings happen.
    const Twin made({static_cast<char>('a' + random() % 8)}, random() % 4, random.OneIn(3));
    Node node = Find(dimension, a);
    Node other = Find(dimension, b);
    if (all.size() < 60 && random.OneIn(2)) {
      Grow(a, b, made, node, other);
    } else if (a != &root) {
      Restructure(a, b, made, node, other);
    }
    ASSERT_EQ(Show(dimension), Fields(categories, root.Show()));
    Verify(dimension);
  }

  // All that it holds is charged to its region, and a copy is the same but for the tracker.
  void End() {
    EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), elsewhere);
    OmMemoryRegion other(false);
    OmDimension copy(dimension, &other);
    Verify(copy);
    std::string untracked = Show(dimension);
    std::erase(untracked, '~');
    EXPECT_EQ(Show(copy), untracked);
    for (Twin* const twin : root.All()) {
      EXPECT_EQ(Find(dimension, twin).Counterpart(copy), Find(copy, twin));
    }
  }

 private:
  void Append(Twin* above, const Twin& made, std::vector<int>::iterator place) {
    above->index.insert(place, static_cast<int>(above->index.size()));
    above->Add(made);
    categories += made.group ? 0 : 1;
  }

  void Grow(Twin* a, Twin* b, const Twin& made, const Node& node, const Node& other) {
    const OmStringCell text(made.label);
    const bool before = random.OneIn(2);
    std::vector<int>& index = a->index;
    if (random.OneIn(4)) {
      dimension.AddNewChild(node, text, made.subscript, made.group);
      Append(a, made, index.end());
    } else if (random.OneIn(4)) {
      // Also a record that is one of the children, or this very one.
      node.record->addChild(*other.record, before ? &*other : nullptr);
      a->Add(Twin(*b), before ? b : nullptr);
    } else if (!a->group) {
      EXPECT_THROW(dimension.Child(node, text, made.subscript, made.group), OMSException);
    } else {
      // An index may be outdated: what it names is nothing then, and behind everything.
      const auto place = std::lower_bound(
          index.begin(), index.end(), made,
          [a](int i, const Twin& probe) { return a->At(i) != nullptr && *a->At(i) < probe; });
      const Twin* const found = place != index.end() ? a->At(*place) : nullptr;
      const bool known = found != nullptr && !(made < *found);
      const int position = known ? *place : static_cast<int>(a->kids.size());
      EXPECT_EQ(dimension.FindChild(node, text, made.group), known ? position : -1);
      const Node child = dimension.Child(node, text, made.subscript, made.group);
      EXPECT_EQ(static_cast<int>(child - node.Begin()), position);
      if (!known) {
        Append(a, made, place);
      }
    }
  }

  void Restructure(Twin* a, Twin* b, const Twin& made, Node& node, Node& other) {
    const OmStringCell text(made.label);
    const bool before = random.OneIn(2);
    Twin* const above = a->parent;
    switch (random() % 8) {
      case 0:
        a->hide = !a->hide;
        node->Hide(a->hide);
        break;
      case 1:
        Delete(a, node);
        break;
      case 2: {
        const Twin category(made.label, root.MaxSubscript() + 1, false);
        EXPECT_EQ(dimension.insertCategory(text, node, node.Parent(), before).Subscript(),
                  category.subscript);
        above->Add(category, before ? a : a->After());
        ++categories;
        break;
      }
      case 3: {
        Twin group(made.label, kNone, true);
        std::vector<Twin*> taken;
        std::list<Node> nodes;
        std::vector<Node*> pointers;
        for (Twin& kid : above->kids) {
          if (&kid == a || random.OneIn(2)) {
            taken.push_back(&kid);
            pointers.push_back(&nodes.emplace_back(Find(dimension, &kid)));
            group.Add(kid);
          }
        }
        dimension.insertChild(text, pointers);
        const long place = taken.front()->Index();
        std::for_each(taken.begin(), taken.end(), [](Twin* kid) { kid->Delete(); });
        above->Add(group, above->At(place));
        break;
      }
      case 4: {
        if (before) {
          dimension.removeChild(node);
          a->subscript = OmDimensionNode::kDissolving;  // stays where nothing is dissolved
        } else {
          dimension.OmVectorTree::removeChild(node);
        }
        // The first sibling that equals it.
        const auto first = std::find(above->kids.begin(), above->kids.end(), *a);
        if (!a->kids.empty() && !first->kids.empty()) {
          for (const Twin& kid : first->kids) {
            above->kids.emplace(first, kid, above);
          }
          above->kids.erase(first);
        }
        break;
      }
      case 5:
        if (!a->IsAbove(b) && !b->IsAbove(a)) {
          dimension.moveChild(node, &other, true);
          Twin::Swap(a, b);
        }
        break;
      case 6:
        if (!a->IsAbove(b)) {
          dimension.OmVectorTree::moveChild(node, nullptr, &other);
          a->Move(b, nullptr);
        }
        break;
      default:
        if (b == &root) {
          Twin* to = above;
          while (to->hide && to != &root) {
            to = to->parent;
          }
          dimension.moveChild(node, nullptr, before);
          a->Move(to, nullptr);
        } else if (!a->IsAbove(b->parent)) {
          dimension.moveChild(node, &other, false);
          a->Move(b->parent, b);
        }
    }
  }

  void Delete(Twin* twin, Node& node) {
    std::vector<int>& index = twin->parent->index;
    const long position = twin->Index();
    dimension.Delete(node);
    dimension.Relocate(true);
    twin->Delete();
    for (unsigned long i = 0; i < index.size();) {
      if (index[i] == position) {
        // The place that the number of the position names, or the last.
        index.erase(index.begin() + std::min(position, static_cast<long>(index.size()) - 1));
      } else {
        index[i] -= index[i] > position ? 1 : 0;
        ++i;
      }
    }
    categories = root.MaxSubscript() + 1;
  }

  Choices& random;
  unsigned long elsewhere = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  OmMemoryRegion region{false};
  icuTracker tracker{true, "en"};  // every label has to take it over
  OmDimension dimension{Root(), &region};
  Twin root{"root", kNone, true};
  unsigned int categories = 0;
};

}  // namespace dimension_model

#endif
