// The list tree and the ownership of an output document.

#include "backend/tables/om/OutputTree.h"

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "backend/tables/om/Heading.h"
#include "platform/cells/StringCell.h"
#include "tests/support/Choices.h"
#include "tests/support/DocumentModel.h"

namespace {

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
  EXPECT_EQ(4U, tree.List().size());
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

TEST(OutputTree, OwnsItsItemsWhenDestructorsThrow) {
  std::vector<int> log;
  {
    OmOutputTree tree;
    auto root = NodeAt<OmOutputPart*>(tree, 0);
    const auto& title = dynamic_cast<const OmStringCell&>(*(*root)->Title());
    EXPECT_TRUE(title.Flag() && dynamic_cast<OmHeading*>(*root) != nullptr);
    auto first = root.Child(new Logged(1, log));
    first.Child(new Logged(2, log));
    auto bad = first.Child(new Logged(-3, log));
    first.Child(new Logged(4, log));
    root.Child(nullptr);
    root.Child(new Logged(-5, log));
    root.Child(new Logged(6, log));
    EXPECT_THROW(tree.Prune(first), std::runtime_error);
    EXPECT_EQ(nullptr, *bad);
    EXPECT_EQ((std::vector<int>{2, -3}), log);
    tree.Erase(bad);
    tree.Erase(first);
    EXPECT_EQ(5U, tree.List().size());
  }
  EXPECT_EQ((std::vector<int>{2, -3, 1, 4, -5, 6}), log);
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
    auto tree = std::make_unique<OmOutputTree>();
    for (const int level : row.levels) {
      const int id = static_cast<int>(tree->List().size());
      tree->List().emplace_back(id == 2 ? row.cursor : level, new Logged(id, log));
    }
    auto node = NodeAt<OmOutputPart*>(*tree, 2);
    std::next(tree->List().begin(), 2)->Level() = row.levels[1];
    tree->Prune(node);
    tree.reset();
    EXPECT_EQ(row.deleted, log) << "the rest in document order";
  }
}

TEST(OutputTree, HoldsDeepDocuments) {
  OmOutputTree tree;
  for (int round = 0; round < 2; ++round) {
    auto node = NodeAt<OmOutputPart*>(tree, 0);
    while (node.Level() < 10000) {
      node = node.Child(new OmHeading(OmStringCell("deep")));
    }
    if (round == 0) {
      auto top = NodeAt<OmOutputPart*>(tree, 1);
      tree.Prune(top);
      EXPECT_EQ(1U, tree.List().size());
    }
  }
}

}  // namespace
