// The list tree against a plain tree, and the ownership of an output document.

#include "backend/tables/om/OutputTree.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "backend/tables/om/Heading.h"
#include "backend/tables/om/TextBlock.h"
#include "platform/cells/StringCell.h"
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

// A document of items 1, 2, … on these levels, behind the root.
std::unique_ptr<OmOutputTree> Document(const std::vector<int>& levels, std::vector<int>& log) {
  auto tree = std::make_unique<OmOutputTree>();
  for (const int level : levels) {
    const int id = static_cast<int>(tree->List().size());
    tree->List().emplace_back(level, new Logged(id, log));
  }
  return tree;
}

TEST(OutputTree, PrunesChildrenFirst) {
  const struct {
    std::vector<int> levels;  // siblings may have unequal levels
    int cursor;               // the level that the cursor on item 2 keeps
    std::vector<int> deleted;
  } rows[] = {
      {{1, 1, 3, 2, 3, 2, 1}, 1, {3, 4, 5, 6, 2, 1, 7}},
      {{1, 2, 3, 3, 4, 2, 1}, 1, {3, 5, 4, 6, 2, 1, 7}},
      {{1, 2, 3, 4, 3, 2, 1}, 3, {2, 1, 3, 4, 5, 6, 7}},
  };
  for (const auto& row : rows) {
    std::vector<int> log;
    auto tree = Document(row.levels, log);
    int& level = std::next(tree->List().begin(), 2)->Level();
    level = row.cursor;
    PartNode node = NodeAt<OmOutputPart*>(*tree, 2);
    level = row.levels[1];
    tree->Prune(node);
    tree.reset();
    EXPECT_EQ(row.deleted, log) << "the rest in document order";
  }
}

TEST(Amputate, PutsAMessageInPlace) {
  const struct {
    std::size_t index;
    std::vector<int> deleted;
    std::vector<std::string> outline;
    std::size_t result;
  } rows[] = {
      {0, {3, 5, 4, 2, 6, 1}, {"0 Output", "1 T !"}, 1},
      {1, {3, 5, 4, 2, 6}, {"0 Output", "1 1", "2 T !"}, 2},
      {2, {2}, {"0 Output", "1 1", "2 3", "2 4", "3 5", "2 2 !", "2 6"}, 2},
      {5, {5}, {"0 Output", "1 1", "2 2", "3 3", "3 4", "4 5 !", "2 6"}, 5},
  };
  const OmStringCell title("T");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.index);
    std::vector<int> log;
    const auto tree = Document({1, 2, 3, 3, 4, 2}, log);
    const PartNode result = Amputate(NodeAt<OmOutputPart*>(*tree, row.index), &title, "!");
    EXPECT_EQ(row.deleted, log);
    EXPECT_EQ(row.outline, Outline(*tree));
    EXPECT_TRUE(result == NodeAt<OmOutputPart*>(*tree, row.result));
  }
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
