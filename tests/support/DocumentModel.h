// A document beside a plain list: items come and go, and what fails is replaced by a message.

#ifndef TESTS_SUPPORT_DOCUMENTMODEL_H
#define TESTS_SUPPORT_DOCUMENTMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "backend/tables/om/Contradictions.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "tests/support/Choices.h"

class DocumentModel {
 public:
  explicit DocumentModel(Choices& random_) : random(random_) {}

  void Step() {
    const int at = random.Below(static_cast<int>(twin.size()));
    const auto item = twin.begin() + at;
    const auto end = std::find_if(item + 1, twin.end(),
                                  [&](const Item& other) { return other.first <= item->first; });
    const int level = item->first;
    const auto raise = [&] { std::for_each(item + 1, end, [](Item& below) { --below.first; }); };
    Node node = NodeAt(at);
    const std::string text = std::to_string(++count);
    const OmStringCell title(text);
    switch (at == 0 ? 3 + random.Below(5) : random.Below(8)) {
      case 0:
        tree.Prune(node);
        twin.erase(item, end);
        break;
      case 1:
        tree.Erase(node);
        raise();
        twin.erase(item);
        break;
      case 2:
        tree.Flatten(node);
        raise();
        break;
      case 3: {
        const Node result = Amputate(node, &title, "!");
        ASSERT_TRUE(result == NodeAt(level > 1 ? at : at + 1));
        if (level > 1) {
          raise();
          std::rotate(item, item + 1, end);
          (end - 1)->first = level;
          (end - 1)->second += (end - 1)->second.back() == '!' ? "" : "!";
        } else {
          twin.insert(twin.erase(item + 1, end), {level + 1, text + "!"});
        }
        break;
      }
      default:
        ASSERT_EQ(node.Child(new OmHeading(title)).Level(), level + 1);
        twin.insert(end, {level + 1, text});
    }
    std::vector<Item> seen;
    Walk(NodeAt(0), seen);
    ASSERT_EQ(seen, twin);
    ASSERT_EQ(tree.List().size(), twin.size());
    ASSERT_TRUE(om::Contradictions(tree).empty());
  }
  void End() {}

 private:
  using Node = ListTree<OmOutputPart*>::Node;
  using Item = std::pair<int, std::string>;  // level and text

  Node NodeAt(int index) { return {tree, std::next(tree.List().begin(), index)}; }

  void Walk(const Node& node, std::vector<Item>& seen) {
    const auto* const block = dynamic_cast<OmTextBlock*>(*node);
    seen.push_back(
        {node.Level(), (*node)->Title()->Text() + (block != nullptr ? block->Text() : "")});
    EXPECT_EQ(node.End().Level(), node.Level() + 1);
    EXPECT_EQ(node.IsLeaf(), node.Begin() == node.End());
    for (Node child = node.Begin(); child != node.End(); ++child) {
      Walk(child, seen);
    }
  }

  Choices& random;
  int count = 0;
  OmOutputTree tree;
  std::vector<Item> twin{{0, "Output"}};
};

#endif
