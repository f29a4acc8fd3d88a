// Vectors, dimensions with the vector trees that they are, and list trees with the documents that
// own their items.

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/Vector.h"
#include "platform/cells/CellTexts.h"
#include "platform/cells/StringCell.h"
#include "tests/support/Allocations.h"
#include "tests/support/Choices.h"
#include "tests/support/DimensionModel.h"
#include "tests/support/DocumentModel.h"
#include "tests/support/VectorModel.h"

namespace {

TEST(Vector, BehavesLikeAStandardVector) {
  Play<VectorModel>(10, 2000);
}

TEST(Vector, TakesBytesAndHasItsBounds) {
  OmMemoryRegion region(false);
  OmVector<char> v("a\0b", 3, &region);
  EXPECT_EQ(v[1] + v[2], 'b');
  EXPECT_EQ(v.capacity(), 3u);
  EXPECT_EQ(OmVector<char>("", 0, &region).size(), 0u);
  EXPECT_THROW(OmVector<int>(-1, 0, &region), std::bad_alloc);
  EXPECT_THROW(v.reserve(~0UL / 2), std::bad_alloc);
  v.erase(v.end());  // drops the last one
  EXPECT_EQ(v.size(), 2u);
}

using namespace dimension_model;

struct Dimension : testing::Test {
  Node Add(const Node& above, const std::string& label, bool group = false) {
    return dimension.AddNewChild(above, OmStringCell(label), 6, group);
  }
  // Adds categories, each with one of the same label below.
  void AddPairs(const std::string& labels) {
    for (const char label : labels) {
      Add(Add(root, {label}), {label});
    }
  }
  // Returns the labels below a record, each with those below it in brackets.
  std::string Labels(const Node& node) {
    std::string text;
    for (Node child = node.Begin(); child != node.End(); ++child) {
      text += child->Text()->Text() + (child.HasChild() ? "(" + Labels(child) + ")" : "");
    }
    return text;
  }

  OmMemoryRegion region{false};
  OmDimension dimension{Root(), &region};
  const Node root = dimension.Root();
};

TEST_F(Dimension, BehavesLikeItsTwin) {
  Play<DimensionModel>(30, 300);
}

TEST_F(Dimension, NeedsNoMemoryToMoveAndKeepsAGroupThatFails) {
  AddPairs("abcdg");
  Node group = root[4];
  for (int i = 0; i != 4; ++i) {
    Add(group, "x");
  }
  Node b = root[1];
  Node d = root[3];
  region.Limit(region.BytesInUse());
  dimension.OmVectorTree::moveChild(b, nullptr, &d);
  b = root[0];
  dimension.OmVectorTree::moveChild(b, nullptr, nullptr);
  dimension.swapChildren(b, b);
  group = root[2];
  EXPECT_THROW(dimension.removeChild(group), std::bad_alloc);
  EXPECT_EQ(group->Subscript(), 6u);
  EXPECT_EQ(Labels(root), "c(c)d(db(b))g(gxxxx)a(a)");
  region.Limit(~0UL);
  // Nothing to put under a group, nothing to dissolve, nowhere to go.
  dimension.insertChild(OmStringCell("y"), {});
  Node leaf = root[3][0];
  dimension.removeChild(leaf);
  Node top = root;
  dimension.OmVectorTree::removeChild(top);
  top.Renumber();
  root->Hide(true);
  leaf = root[0];
  dimension.moveChild(leaf, nullptr, false);
  EXPECT_EQ(Labels(root), "d(db(b))g(gxxxx)a(a)c(c)");
  OmVectorTree<double> numbers(0, nullptr);
  numbers.Child(numbers.Root(), 1);
  auto equal = numbers.Child(numbers.Root(), 1);
  numbers.Child(equal, 2);
  for (const double number : {1.0, std::nan("")}) {  // equals a leaf, and nothing at all
    *equal = number;
    numbers.removeChild(equal);
    EXPECT_EQ(*equal[0], 2);
  }
}

// Deleting leaves the links below the moved siblings as they were. What is moved afterwards, by
// handles whose own links are right, has to arrive all the same.
TEST_F(Dimension, StaleLinksMisleadNothing) {
  AddPairs("abcd");
  Node first = root[0];
  dimension.Delete(first);
  Node into = root[0];
  for (Node moved : {root[2], root[1]}) {
    dimension.OmVectorTree::moveChild(moved, nullptr, &into);
    into = root[0][0];
  }
  EXPECT_EQ(Labels(root), "b(b(c(c))d(d))");
  Verify(dimension);

  AddPairs("efg");
  first = root[0];
  dimension.Delete(first);
  Add(root[0], "1");
  Add(root[0], "2");
  Node a = root[0][1];
  Node b = Add(root[1], "3");
  dimension.swapChildren(a, b);
  dimension.Relocate(true);  // the links below the last were no concern of the swap
  EXPECT_EQ(Labels(root), "e(e21)f(f3)g(g)");
  Verify(dimension);
}

TEST_F(Dimension, TheEndAppendsInFrontOfItAndAfterIt) {
  for (const bool before : {true, false}) {
    dimension.OmVectorTree::InsertChild(*root, root.End(), root, before);
    EXPECT_EQ(root.Back()->Text()->Text(), "root");
    AddPairs("a");
  }
  EXPECT_EQ(Labels(root), "roota(a)roota(a)");
  Verify(dimension);
}

// In one pass, whose gaps are side by side and apart, at the ends and between.
TEST_F(Dimension, GroupsManySiblingsInTheirOrder) {
  const auto isTaken = [](unsigned long i) { return i % 5 == 0 || i % 7 < 2; };
  std::string grouped, rest;
  for (unsigned long i = 0; i != 20000; ++i) {
    const char label = static_cast<char>('a' + i % 26);
    AddPairs({label});
    (isTaken(i) ? grouped : rest) += std::string{label, '(', label, ')'};
  }
  std::vector<Node> taken;
  for (unsigned long i = 0; i != 20000; ++i) {
    if (isTaken(i)) {
      taken.push_back(root[i]);
    }
  }
  std::vector<Node*> nodes;
  for (Node& node : taken) {
    nodes.push_back(&node);
  }
  dimension.insertChild(OmStringCell("group"), nodes);
  EXPECT_EQ(Labels(root), "group(" + grouped + ")" + rest);
  Verify(dimension);
}

// Less keeps references: what would dangle does not compile. A Node would become a temporary.
template <typename Parent, typename Probe>
constexpr bool kMakesLess = std::is_constructible_v<OmDimension::Less, Parent, Probe>;
using ConstNode = OmDimension::ConstNode;
static_assert(kMakesLess<const ConstNode&, const OmDimensionNode&>);
static_assert(kMakesLess<ConstNode&, OmDimensionNode&>);
static_assert(!kMakesLess<ConstNode, const OmDimensionNode&>);
static_assert(!kMakesLess<const ConstNode&, OmDimensionNode>);
static_assert(!kMakesLess<ConstNode, OmDimensionNode>);
static_assert(!kMakesLess<Node&, const OmDimensionNode&>);

TEST_F(Dimension, HandlesSayWhereTheyStand) {
  AddPairs("abca");
  EXPECT_EQ(root.findIdx(*root[3]), 0);
  EXPECT_EQ(root.findIdx(*root), -1);
  Node node = root.Begin();
  EXPECT_EQ(node++, root[0]);
  EXPECT_EQ((++node) - root.Begin(), 2u);
  EXPECT_EQ(node--, root[2]);
  EXPECT_EQ(Node(node.record, 7), root[1]);
  EXPECT_TRUE(OmDimension::ConstNode(node.record, 0).IsRoot());
  node.level = 9;
  node.Renumber();
  EXPECT_EQ(node.Level(), 9u);  // its parent's handle counts down from the same depth
  OmVectorTreeData<OmDimensionNode> stray(*root, &dimension, nullptr);
  EXPECT_DEATH((void)Node(&stray, 1).Counterpart(dimension),
               "backend/tables/om/VectorTree:384: Counterpart: Assertion `0 <= offset && offset < "
               "vec.size\\(\\)' failed");
}

TEST_F(Dimension, NodesWriteWhatTheyHave) {
  const OddStream odd;
  testing::internal::CaptureStdout();
  OmDimensionNode(nullptr).Print(0);
  OmDimensionNode node(OmStringCell("x"), 5000000000, false, nullptr);
  node.ChildIndex().push_back(1234);
  for (const int order : {2, 0, 1}) {
    node.SortOrder(order);
    node.Print(1);
  }
  const std::string no = ", Group: no, hide: no, hideLabels: no";
  const std::string x = "  Subscript: 705032704" + no;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Subscript: -1" + no + "\n" + x + ", Children: 1234, Text: x\n" + x +
                ", Sort: up, Children: 1234, Text: x\n" + x +
                ", Sort: down, Children: 1234, Text: x\n");
}

TEST_F(Dimension, CountsWhatItShowsAndWantsGroups) {
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 0u);
  Add(root, "a");
  Add(root, "b");
  EXPECT_EQ(dimension.getMaxVisibleGroupCount(), 1u);  // one leaf stands for all
  for (int i = 0; i != 3; ++i) {
    const Node group = Add(root, "g", true);
    group->Hide(i == 2);                  // no leaf: it has one below, which counts
    Add(group, "c", i == 2)->Hide(true);  // hidden, and the leaf of its parent in either case
  }
  std::vector<unsigned long> counts(dimension.getMaximumDepth(), 0);
  dimension.getGroupCountsByLevel(root, counts);
  EXPECT_EQ(counts, (std::vector<unsigned long>{0, 3, 3}));
  OmDimension other(Root(), &region);
  for (const char* const label : {"hidden", "shown"}) {
    other.Child(other.Root(), OmStringCell(label), 0, true)->Hide(*label == 'h');
    Node below = other.Child(other.Root(), OmStringCell(label), 0, true);
    other.Child(below, OmStringCell("leaf"), 0, false);
  }
  EXPECT_EQ(other.getMaxVisibleGroupCount(), 2u);  // the two leaves
  OmDimensionNode node(OmStringCell("a"), 0, false, nullptr);
  node.ChildIndex().push_back(7);  // of where the node comes from
  const Node child = dimension.Child(root, node);
  EXPECT_EQ(child->ChildIndex().size(), 0u);
  try {
    dimension.Child(child, node);
    FAIL();
  } catch (const OMSException& error) {
    EXPECT_STREQ(error.what(),
                 "OmDimension::Child -- parent is not group, value 1 == 0, value 2 == 0");
  }
}

TEST_F(Dimension, DepthNeedsLittleStack) {
  Node node = root;
  for (int i = 0; i != 10000; ++i) {
    dimension.Child(node, OmStringCell("g"), kNone, true);
    Add(node, "c");
    node = node.Begin();  // the next level hangs from the first of two children
  }
  dimension.Relocate(true);
  OmDimension copy(dimension, nullptr);
  EXPECT_EQ(copy.getMaximumDepth(), 10001u);
  EXPECT_EQ(copy.getMaxVisibleGroupCount(), 2u);
  EXPECT_EQ(copy.Counterpart(node)->Text()->Text(), "g");
  testing::internal::CaptureStdout();
  copy.Root().Print();
  EXPECT_GT(testing::internal::GetCapturedStdout().size(), 10000u * 10000u);
  copy.addChild(dimension, nullptr);
  Node first = copy.Root()[0];
  Node last = copy.Root()[2];
  copy.moveChild(first, &last, true);
  first = copy.Root()[0];
  copy.removeChild(first);
  EXPECT_EQ(copy.Root().Count(), 4u);
}

TEST_F(Dimension, DepthNeedsNoStack) {
  constexpr unsigned int kLevels = 300000;
  Node node = root;
  for (unsigned int i = 1; i != kLevels; ++i) {
    node = dimension.AddNewChild(node, OmStringCell("g"), kNone, true);
  }
  Add(node, "c");
  Node last = Add(node, "d");
  OmDimension copy(dimension, nullptr);
  Verify(copy);
  EXPECT_EQ(copy.getMaximumDepth(), kLevels + 1);
  EXPECT_EQ(copy.getMaxVisibleGroupCount(), 1u);
  EXPECT_EQ(copy.Counterpart(last)->Text()->Text(), "d");
  copy.addChild(dimension, nullptr);
  EXPECT_EQ(copy.getMaximumDepth(), kLevels + 2);
  dimension.Delete(last);
  EXPECT_EQ(node.Count(), 1u);
}

// What its search for the largest subscript takes is taken before anything is changed.
TEST_F(Dimension, DeletesNothingWhereMemoryRunsOut) {
  AddPairs("ab");
  const std::string before = Labels(root);
  Node first = root[0];
  EXPECT_TRUE(allocations::FailsAt(0, [&] { dimension.Delete(first); }));
  EXPECT_EQ(Labels(root), before);
}

template <typename T>
typename ListTree<T>::Node NodeAt(ListTree<T>& tree, int index) {
  return {tree, std::next(tree.List().begin(), index)};
}

TEST(OutputTree, FollowsAPlainOutline) {
  Play<DocumentModel>(20, 150);
}

TEST(ListTree, CursorsKeepTheirLevel) {
  ListTree<int> tree(0);
  auto root = NodeAt(tree, 0);
  auto heading = root.Child(1);
  auto item = heading.Child(2);
  item.Child(4);
  heading.Child(3);
  tree.Flatten(heading);
  // The stale level 2 makes a leaf of the item, and its child one of level 3 right behind it.
  EXPECT_TRUE(item.IsLeaf());
  EXPECT_EQ(3, item.Child(5).Level());
  // Flattening goes by the level of the entry instead, which is 1 now.
  tree.Flatten(item);
  EXPECT_EQ(1, NodeAt(tree, 4).Level());
  ListTree<int>::Node end(tree, tree.List().end());
  tree.Flatten(end);
  tree.Erase(end);
  tree.Prune(end);
  EXPECT_TRUE(++end == root.End());
  EXPECT_EQ(0, end.Level());
  tree.Prune(NodeAt(tree, 2));
  ListTree<int> copy(0);
  copy = ListTree<int>(tree);
  NodeAt(copy, 0).Child(6);
  EXPECT_EQ(4U + 5U, tree.List().size() + copy.List().size());
}

// An item that tells when it is deleted.
class Logged : public OmOutputPart {
 public:
  Logged(int id_, std::vector<int>& log_)
      : OmOutputPart(OmStringCell("logged")), id(id_), log(log_) {}
  ~Logged() noexcept(false) override {
    log.push_back(id);
    if (id < 0) {
      throw std::runtime_error("item");
    }
  }
  void Accept(Visitor&) override {}

 private:
  int id;
  std::vector<int>& log;
};

TEST(OutputTree, PrunesChildrenFirstAndKeepsWhatIsLeft) {
  const struct {
    std::vector<int> levels;  // of the items behind the root; siblings may have unequal ones
    int cursor;               // the level that the cursor on the second keeps
    std::vector<int> ids;     // null for 0; negative for an item whose destructor throws
    std::vector<int> deleted;
  } rows[] = {
      {{1, 1, 3, 2, 3, 2, 1}, 1, {1, 2, 3, 4, 5, 6, 7}, {3, 4, 5, 6, 2, 1, 7}},
      {{1, 2, 3, 4, 3, 2, 1}, 3, {1, 2, 3, 4, 5, 6, 7}, {2, 1, 3, 4, 5, 6, 7}},
      {{1, 1, 2, 2, 2, 1, 1, 1}, 1, {1, 2, 3, -4, 5, 0, -6, 7}, {3, -4, 1, 2, 5, -6, 7}},
  };
  for (const auto& row : rows) {
    std::vector<int> log;
    auto tree = std::make_unique<OmOutputTree>();
    for (unsigned long i = 0; i < row.ids.size(); ++i) {
      const int id = row.ids[i];
      tree->List().emplace_back(i == 1 ? row.cursor : row.levels[i],
                                id != 0 ? new Logged(id, log) : nullptr);
    }
    auto node = NodeAt<OmOutputPart*>(*tree, 2);
    std::next(tree->List().begin(), 2)->Level() = row.levels[1];
    try {
      tree->Prune(node);
      EXPECT_NE(row.ids[3], -4);
    } catch (const std::runtime_error&) {
      EXPECT_EQ(nullptr, *NodeAt<OmOutputPart*>(*tree, 3));
    }
    tree.reset();
    EXPECT_EQ(row.deleted, log) << "the rest in document order";
  }
}

TEST(OutputTree, HoldsDeepDocuments) {
  OmOutputTree tree;
  const auto& title = dynamic_cast<const OmStringCell&>(*tree.List().front().Data()->Title());
  EXPECT_TRUE(title.Flag() && dynamic_cast<OmHeading*>(tree.List().front().Data()) != nullptr);
  for (int round = 0; round < 2; ++round) {
    auto node = NodeAt<OmOutputPart*>(tree, 0);
    while (node.Level() < 10000) {
      node = node.Child(new OmHeading(OmStringCell("deep")));
    }
    node = NodeAt<OmOutputPart*>(tree, 1);
    if (round == 0) {
      tree.Prune(node);
    }
  }
}

}  // namespace
