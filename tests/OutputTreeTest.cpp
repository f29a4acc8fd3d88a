// The list tree against a plain tree, and the ownership of an output document.

#include "backend/tables/om/OutputTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "backend/tables/om/Heading.h"
#include "backend/tables/om/TextBlock.h"
#include "platform/cells/StringCell.h"
#include "platform/memory/MemoryRegion.h"
#include "tests/support/Allocations.h"
#include "tests/support/Choices.h"
#include "tests/support/ListModel.h"

namespace {

using PartNode = ListTree<OmOutputPart*>::Node;

TEST(ListTree, FollowsAPlainTree) {
  Play<ListModel>(20, 150);
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
  EXPECT_EQ(6U, tree.List().size());
}

// An item that tells when it is deleted.
class Logged : public OmOutputPart {
 public:
  Logged(int id_, std::vector<int>& log_)
      : OmOutputPart(OmStringCell(std::to_string(id_))), id(id_), log(log_) {}
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

std::vector<std::string> Outline(ListTree<OmOutputPart*>& tree) {
  std::vector<std::string> lines;
  for (auto& entry : tree.List()) {
    const auto* const block = dynamic_cast<OmTextBlock*>(entry.Data());
    lines.push_back(std::to_string(entry.Level()) + " " +
                    (entry.Data() != nullptr ? entry.Data()->Title()->Text() : "null") +
                    (block != nullptr ? " " + block->Text() : ""));
  }
  return lines;
}

// The recursion whose result OmOutputTree::Prune has to give, over the ids of the items.
void PruneByRecursion(ListTree<int>& tree, const ListTree<int>::Node& n, std::vector<int>& log) {
  const auto end = n.End();
  for (auto child = n.Begin(); child != end;) {
    auto next = child;
    ++next;
    PruneByRecursion(tree, child, log);
    child = next;
  }
  log.push_back(*n);
  tree.Prune(n);
}

TEST(OutputTree, PrunesAsTheRecursionDoes) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::vector<int> expected;
    std::vector<int> log;
    ListTree<int> model(0);
    auto tree = std::make_unique<OmOutputTree>();
    // Levels may jump, so that siblings of unequal levels and stale cursors occur.
    for (int id = 1, level = 1; id <= 30; ++id, level += 2 - static_cast<int>(random() % 4)) {
      level = level < 1 ? 1 : level;
      model.List().emplace_back(level, id);
      tree->List().emplace_back(level, new Logged(id, log));
    }
    const std::size_t index = 1 + random() % 30;
    const auto modelNode = NodeAt(model, index);
    PartNode node = NodeAt<OmOutputPart*>(*tree, index);
    const int level = node.Level() + 1 - static_cast<int>(random() % 3);
    std::next(model.List().begin(), static_cast<std::ptrdiff_t>(index))->Level() = level;
    std::next(tree->List().begin(), static_cast<std::ptrdiff_t>(index))->Level() = level;
    PruneByRecursion(model, modelNode, expected);
    tree->Prune(node);
    ASSERT_EQ(expected, log);
    for (auto& entry : model.List()) {
      expected.push_back(entry.Data());
    }
    expected.erase(std::find(expected.begin(), expected.end(), 0));
    tree.reset();
    ASSERT_EQ(expected, log) << "the rest in document order";
  }
}

TEST(OutputTree, StartsWithItsRoot) {
  OmOutputTree tree;
  const PartNode root = NodeAt<OmOutputPart*>(tree, 0);
  const auto& title = dynamic_cast<const OmStringCell&>(*(*root)->Title());
  EXPECT_EQ("Output", title.Text());
  EXPECT_TRUE(title.Flag() && dynamic_cast<OmHeading*>(*root) != nullptr);
  EXPECT_TRUE(root.IsLeaf() && root.Begin() == root.End() && tree.List().size() == 1);
}

TEST(OutputTree, ThrowingDestructorsLeaveTheRestOwned) {
  std::vector<int> log;
  {
    OmOutputTree tree;
    PartNode root = NodeAt<OmOutputPart*>(tree, 0);
    PartNode first = root.Child(new Logged(1, log));
    first.Child(new Logged(2, log));
    PartNode bad = first.Child(new Logged(-3, log));
    first.Child(new Logged(4, log));
    root.Child(nullptr);
    root.Child(new Logged(-5, log));
    root.Child(new Logged(6, log));
    EXPECT_THROW(tree.Prune(first), std::runtime_error);
    EXPECT_EQ((std::vector<int>{2, -3}), log);
    tree.Erase(bad);
    tree.Erase(first);
    EXPECT_EQ((std::vector<std::string>{"0 Output", "1 4", "1 null", "1 -5", "1 6"}),
              Outline(tree));
  }
  EXPECT_EQ((std::vector<int>{2, -3, 1, 4, -5, 6}), log);
}

// A heading with two items, the first of which has a leaf and an item with a leaf below it.
std::unique_ptr<OmOutputTree> SmallDocument(std::vector<int>& log) {
  auto tree = std::make_unique<OmOutputTree>();
  for (const auto& [id, level] : {std::pair(1, 1), {2, 2}, {3, 3}, {4, 3}, {5, 4}, {6, 2}}) {
    tree->List().emplace_back(level, nullptr);
    tree->List().back().Data() = new Logged(id, log);
  }
  return tree;
}

TEST(Amputate, PutsAMessageInPlace) {
  struct Row {
    std::size_t index;
    std::vector<int> deleted;
    std::vector<std::string> outline;
    std::size_t result;
  };
  const Row rows[] = {
      {0, {3, 5, 4, 2, 6, 1}, {"0 Output", "1 T !"}, 1},
      {1, {3, 5, 4, 2, 6}, {"0 Output", "1 1", "2 T !"}, 2},
      {2, {2}, {"0 Output", "1 1", "2 3", "2 4", "3 5", "2 2 !", "2 6"}, 2},
      {5, {5}, {"0 Output", "1 1", "2 2", "3 3", "3 4", "4 5 !", "2 6"}, 5},
  };
  const OmStringCell title("T");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.index);
    std::vector<int> log;
    const auto tree = SmallDocument(log);
    const PartNode result = Amputate(NodeAt<OmOutputPart*>(*tree, row.index), &title, "!");
    EXPECT_EQ(row.deleted, log);
    EXPECT_EQ(row.outline, Outline(*tree));
    EXPECT_TRUE(result == NodeAt<OmOutputPart*>(*tree, row.result));
  }
}

TEST(Amputate, LosesNothingWithoutMemory) {
  const OmStringCell title("a title");
  const std::string message(100, 'm');
  std::vector<int> log;
  Amputate(NodeAt<OmOutputPart*>(*SmallDocument(log), 5), &title, message);
  const long live = allocations::Live();
  const unsigned long texts = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  EXPECT_TRUE(allocations::FailsAt(0, [] { OmOutputTree tree; }));
  for (const std::size_t index : {1U, 2U, 5U}) {
    for (long n = 0, failed = 1; failed != 0; ++n) {
      log.clear();
      auto tree = SmallDocument(log);
      failed = allocations::FailsAt(
          n, [&] { Amputate(NodeAt<OmOutputPart*>(*tree, index), &title, message); });
      EXPECT_EQ(failed == 0, n >= 3) << "a block, its text, an entry";
      tree.reset();
      EXPECT_EQ(6U, log.size());
    }
  }
  EXPECT_EQ(live, allocations::Live());
  EXPECT_EQ(texts, OmMemoryRegion::DefaultHeap()->LiveBlocks());
}

TEST(OutputTree, HoldsDeepDocuments) {
  OmOutputTree tree;
  const auto build = [&] {
    PartNode node = NodeAt<OmOutputPart*>(tree, 0);
    while (node.Level() < 10000) {
      node = node.Child(new OmHeading(OmStringCell("deep")));
    }
  };
  build();
  PartNode top = NodeAt<OmOutputPart*>(tree, 1);
  tree.Prune(top);
  EXPECT_EQ(1U, tree.List().size());
  build();
}

}  // namespace
