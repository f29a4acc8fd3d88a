#include "backend/tables/om/Dimension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "backend/tables/om/Exception.h"
#include "platform/cells/CellTexts.h"
#include "platform/support/IcuTracker.h"
#include "tests/support/TreeTwin.h"

namespace {

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

void ExpectSame(ConstNode node, const Twin& twin) {
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

unsigned int MaxSubscript(const Twin& twin) {
  unsigned int largest = 0;
  for (const Twin& kid : twin.kids) {
    largest = std::max(largest, kid.value.group ? MaxSubscript(kid)
                                                : static_cast<unsigned int>(kid.value.subscript));
  }
  return largest;
}

OmDimensionNode Root() {
  return OmDimensionNode(OmStringCell("root"), kNone, true, nullptr);
}

class DimensionModel {
 public:
  explicit DimensionModel(unsigned seed)
      : random(seed), dimension(Root(), &region), root(Category{"root", kNone, true}) {}

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
  }

  std::mt19937 random;
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

TEST(Dimension, BehavesLikeItsTwin) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(seed);
  for (unsigned run = 0; run != 40; ++run) {
    const unsigned long elsewhere = OmMemoryRegion::DefaultHeap()->LiveBlocks();
    OmMemoryRegion other(false);
    {
      DimensionModel model(seed + run);
      for (int step = 0; step != 300; ++step) {
        ASSERT_NO_FATAL_FAILURE(model.Step()) << "run " << run << ", step " << step;
      }
      // All that it holds is charged to its region, and a copy is of the same shape.
      EXPECT_EQ(OmMemoryRegion::DefaultHeap()->LiveBlocks(), elsewhere);
      const unsigned long blocks = model.region.LiveBlocks();
      OmDimension copy(model.dimension, &other);
      EXPECT_EQ(model.region.LiveBlocks(), blocks);
      ExpectSame(copy.Root(), model.root);
      EXPECT_EQ(copy.NumCategories(), model.categories);
    }
    EXPECT_EQ(other.LiveBlocks(), 0u);
  }
}

TEST(Dimension, NodesOrderAndWriteThemselves) {
  const auto node = [](const char* label, unsigned long subscript, bool group) {
    return OmDimensionNode(OmStringCell(label), subscript, group, nullptr);
  };
  EXPECT_TRUE(node("z", 1, true) < node("a", 1, false));
  EXPECT_FALSE(node("a", 1, false) < node("z", 1, true));
  EXPECT_TRUE(node("a", 2, false) < node("b", 1, false));
  EXPECT_FALSE(node("a", 1, false) < node("a", 2, false));
  EXPECT_FALSE(node("a", 1, false) == node("a", 2, false));
  EXPECT_TRUE(node("a", 1, false) == node("a", 1, false));
  EXPECT_FALSE(OmDimensionNode(node("a", 1, false)) == node("a", 1, true));

  OmDimension dimension(Root(), nullptr);
  for (const char* label : {"b", "a", "c"}) {
    dimension.Child(dimension.Root(), OmStringCell(label), 0, false);
  }
  const Node group = dimension.Child(dimension.Root(), OmStringCell("g"), kNone, true);
  group->SortOrder(1);
  group->HideLabels(true);
  dimension.AddNewChild(group, OmStringCell("x"), 5000000000, false)->SortOrder(0);
  // A node without a label or anything else.
  dimension.OmVectorTree::Child(group, OmDimensionNode(OmDimensionNode(nullptr)));
  testing::internal::CaptureStdout();
  dimension.Root().Print();
  const std::string shown = testing::internal::GetCapturedStdout();
  const std::string no = ", Group: no, hide: no, hideLabels: no";
  EXPECT_EQ(shown,
            "Subscript: -1, Group: yes, hide: no, hideLabels: no, Children: 3, 1, 0, 2, "
            "Text: root\n"
            "  Subscript: 0" +
                no +
                ", Text: b\n"
                "  Subscript: 0" +
                no +
                ", Text: a\n"
                "  Subscript: 0" +
                no +
                ", Text: c\n"
                "  Subscript: -1, Group: yes, hide: no, hideLabels: yes, Sort: down, "
                "Children: 0, Text: g\n"
                "    Subscript: 705032704" +
                no +
                ", Sort: up, Text: x\n"
                "    Subscript: -1" +
                no + "\n");
}

TEST(Dimension, CountsWhatItShows) {
  OmDimension dimension(Root(), nullptr);
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 0u);
  const auto add = [&](const Node& above, bool group) {
    return dimension.AddNewChild(above, OmStringCell("n"), 6, group);
  };
  add(dimension.Root(), false);
  add(dimension.Root(), false);
  EXPECT_EQ(dimension.getMaximumDepth(), 2u);
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 1u);  // one leaf stands for all
  for (int i = 0; i != 3; ++i) {
    const Node group = add(dimension.Root(), true);
    group->Hide(i == 2);             // no leaf: it has one below, which counts
    add(group, i == 2)->Hide(true);  // hidden, and the leaf of its parent in either case
  }
  std::vector<unsigned long> counts(dimension.getMaximumDepth(), 0);
  dimension.getGroupCountsByLevel(dimension.Root(), counts);
  EXPECT_EQ(counts, (std::vector<unsigned long>{0, 3, 3}));
  Node first = dimension.Root()[0];
  EXPECT_EQ(dimension.insertCategory(OmStringCell("i"), first, dimension.Root(), true).Subscript(),
            7u);
  while (dimension.Root().HasChild()) {
    Node last = dimension.Root().Back();
    dimension.Delete(last);
  }
  EXPECT_EQ(dimension.NumCategories(), 1u);
  try {
    const Node category = dimension.AddNewChild(dimension.Root(), OmStringCell("c"), 0, false);
    dimension.Child(category, OmStringCell("d"), 1, false);
    FAIL();
  } catch (const OMSException& error) {
    EXPECT_STREQ(error.what(),
                 "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0");
  }
}

TEST(Dimension, LabelsKeepTheTrackerOfTheirTable) {
  icuTracker tracker(true, "en");
  icuTracker strange(true, "xx");
  OmDimension dimension(Root(), nullptr);
  dimension.Name()->setICUTracker(&tracker);
  OmDimensionNode node(OmStringCell("a"), 0, true, nullptr);
  node.Text()->setICUTracker(&strange);
  node.ChildIndex().push_back(7);  // of where the node comes from
  const Node group = dimension.Child(dimension.Root(), node);
  EXPECT_EQ(group->ChildIndex().size(), 0u);
  Node child = dimension.AddNewChild(group, OmStringCell("b"), 1, false);
  dimension.insertCategory(OmStringCell("c"), child, group, false);
  Node last = dimension.Root()[0].Back();
  child = dimension.Root()[0][0];
  dimension.moveChild(child, &last, true);
  child = dimension.Root()[0][0];
  dimension.insertChild(OmStringCell("d"), {&child});
  for (ConstNode at = dimension.Root();; at = at[0]) {
    EXPECT_EQ(at->Text()->getICUTracker(), &tracker) << at->Text()->Text();
    if (at.IsLeaf()) {
      break;
    }
  }
  OmDimension copy(dimension, nullptr);
  EXPECT_EQ(copy.Name()->getICUTracker(), nullptr);
  EXPECT_EQ(copy.Root()[0][1]->Text()->getICUTracker(), nullptr);
}

// An index that outlives its children leads nowhere, and never to records that are gone.
TEST(Dimension, SearchesSurviveAnOutdatedIndex) {
  OmDimension dimension(Root(), nullptr);
  for (const char* label : {"e", "d", "c", "b", "a"}) {
    dimension.Child(dimension.Root(), OmStringCell(label), 0, false);
  }
  std::vector<Node> nodes;
  for (unsigned long i = 1; i != 5; ++i) {
    nodes.push_back(dimension.Root()[i]);
  }
  dimension.insertChild(OmStringCell("g"), {&nodes[0], &nodes[1], &nodes[2], &nodes[3]});
  for (const char* label : {"a", "c", "e", "f"}) {
    const int position = dimension.FindChild(dimension.Root(), OmStringCell(label), false);
    EXPECT_TRUE(position >= -1 && position < 2);
    EXPECT_FALSE(dimension.Child(dimension.Root(), OmStringCell(label), 0, false).IsRoot());
  }
}

TEST(Dimension, DepthNeedsLittleStack) {
  OmDimension dimension(Root(), nullptr);
  Node node = dimension.Root();
  for (int i = 0; i != 10000; ++i) {
    node = dimension.Child(node, OmStringCell("g"), kNone, true);
  }
  dimension.AddNewChild(node, OmStringCell("c"), 3, false);
  OmDimension copy(dimension, nullptr);
  EXPECT_EQ(copy.getMaximumDepth(), 10002u);
  EXPECT_EQ(copy.getMaxVisibleGroupCount(), 1u);
  EXPECT_EQ(copy.Counterpart(node).Count(), 1u);
  testing::internal::CaptureStdout();
  const ConstNode root = copy.Root();
  root.Print();
  EXPECT_GT(testing::internal::GetCapturedStdout().size(), 10000u * 10000u);
  Node group = copy.Root()[0];
  copy.removeChild(group);
  node = copy.Counterpart(node).Parent();
  copy.Delete(node);
  EXPECT_EQ(copy.NumCategories(), 1u);
}

}  // namespace
