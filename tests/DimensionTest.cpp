#include "backend/tables/om/Dimension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <string>
#include <vector>

#include "backend/tables/om/Exception.h"
#include "platform/cells/CellTexts.h"
#include "platform/support/IcuTracker.h"

namespace {

using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;
constexpr unsigned long kNone = OmDimensionNode::kNoSubscript;

// The plain twin of a record.
struct Twin {
  std::string label;
  unsigned long subscript = kNone;
  bool group = false;
  bool hide = false;
  std::vector<int> index = {};
  std::list<Twin> kids = {};
  Twin* parent = nullptr;
  bool sorted = true;  // whether `index` is what a search relies on

  bool Less(const Twin& other) const { return group != other.group ? group : label < other.label; }
  bool Equal(const Twin& other) const {
    return group == other.group && subscript == other.subscript && label == other.label;
  }
};

Twin* Link(Twin& twin) {
  for (Twin& kid : twin.kids) {
    kid.parent = &twin;
    Link(kid);
  }
  return &twin;
}

std::list<Twin>::iterator Place(const Twin* twin) {
  std::list<Twin>& kids = twin->parent->kids;
  return std::find_if(kids.begin(), kids.end(), [twin](const Twin& kid) { return &kid == twin; });
}

void Collect(Twin& twin, std::vector<Twin*>& all) {
  all.push_back(&twin);
  for (Twin& kid : twin.kids) {
    Collect(kid, all);
  }
}

Node Find(OmDimension& dimension, const Twin* twin) {
  if (twin->parent == nullptr) {
    return dimension.Root();
  }
  const auto index = std::distance(twin->parent->kids.begin(), Place(twin));
  return Find(dimension, twin->parent)[static_cast<unsigned long>(index)];
}

void ExpectSame(ConstNode node, const Twin& twin) {
  EXPECT_EQ(node->Text()->Text(), twin.label);
  EXPECT_EQ(node->Subscript(), twin.subscript);
  EXPECT_EQ(node->IsGroup(), twin.group);
  EXPECT_EQ(node->Hide(), twin.hide);
  const OmVector<int>& index = node->ChildIndex();
  EXPECT_EQ(std::vector<int>(index.begin(), index.end()), twin.index);
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
    largest =
        std::max(largest, kid.group ? MaxSubscript(kid) : static_cast<unsigned int>(kid.subscript));
  }
  return largest;
}

OmDimensionNode Root(OmMemoryRegion* region = nullptr) {
  return OmDimensionNode(OmStringCell("root"), kNone, true, region);
}

class DimensionModel {
 public:
  explicit DimensionModel(unsigned seed)
      : random(seed), dimension(Root(), &region), root{"root", kNone, true} {}

  void Step() {
    std::vector<Twin*> all;
    Collect(root, all);
    Twin* const a = all[random() % all.size()];
    Twin* const b = all[random() % all.size()];
    Node nodeA = Find(dimension, a);
    Node nodeB = Find(dimension, b);
    const Twin made{std::string(1, static_cast<char>('a' + random() % 8)), random() % 50,
                    random() % 3 == 0};
    const OmStringCell text(made.label);
    switch (random() % (all.size() < 60 ? 10 : 5)) {
      case 0:
        Delete(a, nodeA);
        break;
      case 1:
        Dissolve(a, nodeA);
        break;
      case 2:
        Move(a, b, nodeA, nodeB);
        break;
      case 3:
        a->hide = !a->hide;
        nodeA->Hide(a->hide);
        break;
      case 4:
        EXPECT_TRUE(!a->sorted ||
                    dimension.FindChild(nodeA, text, made.group) == Position(a, made));
        break;
      case 5:
        InsertCategory(a, nodeA, text);
        break;
      case 6:
        Group(a, text);
        break;
      case 7:
        dimension.AddNewChild(nodeA, text, made.subscript, made.group);
        a->sorted = false;
        a->index.push_back(static_cast<int>(a->index.size()));
        Append(a, made);
        break;
      default:
        Child(a, nodeA, text, made);
    }
    Link(root);
    ASSERT_NO_FATAL_FAILURE(ExpectSame(dimension.Root(), root));
    ASSERT_EQ(dimension.NumCategories(), categories);
  }

  std::mt19937 random;
  OmMemoryRegion region{false};
  OmDimension dimension;
  Twin root;
  unsigned int categories = 0;

 private:
  static int Position(const Twin* above, const Twin& probe) {
    int position = 0;
    for (const Twin& kid : above->kids) {
      if (!kid.Less(probe) && !probe.Less(kid)) {
        return position;
      }
      ++position;
    }
    return -1;
  }

  void Append(Twin* above, const Twin& made) {
    above->kids.push_back(made);
    categories += made.group ? 0 : 1;
  }

  void Child(Twin* above, const Node& node, const OmCellText& text, const Twin& made) {
    if (!above->group) {
      EXPECT_THROW(dimension.Child(node, text, made.subscript, made.group), OMSException);
      return;
    }
    if (!above->sorted) {
      return;  // where it ends up says nothing
    }
    const int known = Position(above, made);
    const Node child = dimension.Child(node, text, made.subscript, made.group);
    EXPECT_EQ(child - node.Begin(),
              known != -1 ? static_cast<unsigned int>(known) : node.Count() - 1);
    if (known == -1) {
      const auto place = std::find_if(above->index.begin(), above->index.end(), [&](int i) {
        return made.Less(*std::next(above->kids.begin(), i));
      });
      above->index.insert(place, static_cast<int>(above->index.size()));
      Append(above, made);
    }
  }

  void Delete(Twin* twin, Node& node) {
    if (twin == &root) {
      return;
    }
    Twin* const above = twin->parent;
    const auto position = std::distance(above->kids.begin(), Place(twin));
    dimension.Delete(node);
    dimension.Relocate(true);
    above->kids.erase(Place(twin));
    above->sorted = false;
    for (unsigned long i = 0; i < above->index.size();) {
      if (above->index[i] == position) {
        // The place that the number of the position names, or the last.
        const auto last = static_cast<long>(above->index.size()) - 1;
        above->index.erase(above->index.begin() + std::min(position, last));
      } else {
        above->index[i] -= above->index[i] > position ? 1 : 0;
        ++i;
      }
    }
    categories = MaxSubscript(root) + 1;
  }

  void InsertCategory(Twin* twin, const Node& node, const OmCellText& text) {
    if (twin == &root) {
      return;
    }
    const bool before = random() % 2 == 0;
    const auto sibling = before ? Place(twin) : std::next(Place(twin));
    std::list<Twin>& kids = twin->parent->kids;
    const auto first = std::find_if(kids.begin(), kids.end(), [&](const Twin& kid) {
      return sibling != kids.end() && kid.Equal(*sibling);
    });
    const Twin made{text.Text(), MaxSubscript(root) + 1};
    EXPECT_EQ(dimension.insertCategory(text, node, node.Parent(), before).Subscript(),
              made.subscript);
    twin->parent->sorted = false;
    kids.insert(first, made);
    ++categories;
  }

  // Groups all children but the first.
  void Group(Twin* above, const OmCellText& text) {
    std::vector<Node> nodes;
    for (Twin& kid : above->kids) {
      if (&kid != &above->kids.front()) {
        nodes.push_back(Find(dimension, &kid));
      }
    }
    std::vector<Node*> handles;
    for (Node& node : nodes) {
      handles.push_back(&node);
    }
    dimension.insertChild(text, handles);
    if (!nodes.empty()) {
      Twin group{text.Text(), kNone, true};
      group.sorted = above->sorted = false;
      group.kids.splice(group.kids.end(), above->kids, std::next(above->kids.begin()),
                        above->kids.end());
      above->kids.push_back(group);
    }
  }

  void Dissolve(Twin* twin, Node& node) {
    twin->subscript = kNone - 1;
    dimension.removeChild(node);
    if (twin == &root || twin->kids.empty()) {
      twin->subscript = kNone - 2;  // no other record is to be taken for this one later
      Find(dimension, twin)->Subscript(kNone - 2);
      return;
    }
    Twin* const above = twin->parent;
    const auto place = Place(twin);
    above->kids.splice(place, twin->kids);
    above->kids.erase(place);
    above->sorted = false;
  }

  void Move(Twin* a, Twin* b, Node& nodeA, Node& nodeB) {
    for (const Twin* above = b; above != nullptr; above = above->parent) {
      if (above == a) {
        return;
      }
    }
    if (a == &root) {
      return;
    }
    Twin* to = a->parent;
    auto place = to->kids.end();
    if (b == &root) {
      while (to->hide && to != &root) {
        to = to->parent;
      }
      dimension.moveChild(nodeA, nullptr, random() % 2 == 0);
      place = to->kids.end();
    } else {
      to = b->parent;
      dimension.moveChild(nodeA, &nodeB, false);
      place = std::find_if(to->kids.begin(), to->kids.end(),
                           [&](const Twin& kid) { return &kid != a && kid.Equal(*b); });
    }
    a->parent->sorted = to->sorted = false;
    to->kids.splice(place, a->parent->kids, Place(a));
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
      std::vector<Twin*> all;
      Collect(model.root, all);
      for (Twin* twin : all) {
        Node node = Find(model.dimension, twin);
        EXPECT_EQ(copy.Counterpart(node), Find(copy, twin));
      }
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
    group->Hide(i == 2);  // no leaf: it has one below, which counts
    add(group, false);
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
  const Node group = dimension.Child(dimension.Root(), node);
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
