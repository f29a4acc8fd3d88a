// The life of a whole document beside a plain outline: items of several kinds come and go, tables
// among them are filled, and what fails is replaced by a message.

#ifndef TESTS_SUPPORT_DOCUMENTMODEL_H
#define TESTS_SUPPORT_DOCUMENTMODEL_H

#include <gtest/gtest.h>

#include <list>
#include <map>
#include <string>
#include <vector>

#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "tests/support/Choices.h"
#include "tests/support/StoreModel.h"

class DocumentModel {
 public:
  explicit DocumentModel(Choices& random_) : random(random_) { List(outline, 0); }

  void Step() {
    const Place place = places[static_cast<unsigned long>(random.Below(Count()))];
    Node node(tree, std::next(tree.List().begin(), place.index));
    const int operation = random.Below(8);
    if (operation <= 1) {
      if (place.level != 0) {
        if (operation == 1) {
          place.siblings->splice(place.item, place.item->children);
        }
        operation == 0 ? tree.Prune(node) : tree.Erase(node);
        place.siblings->erase(place.item);
      }
    } else if (operation == 2) {
      Replace(node, place);
    } else if (operation <= 4) {
      FillTable(node, *place.item);
    } else {
      Add(node, *place.item);
    }
    places.clear();
    List(outline, 0);
    Compare();
  }
  void End() {}

 private:
  using Node = ListTree<OmOutputPart*>::Node;
  struct Item {
    std::string title;
    std::string text;  // of a block
    bool table = false;
    std::map<int, std::string> cells;  // of a table
    std::list<Item> children;
  };
  struct Place {
    std::list<Item>* siblings;
    std::list<Item>::iterator item;
    int level;
    int index;
  };

  [[nodiscard]] int Count() const { return static_cast<int>(places.size()); }

  void List(std::list<Item>& siblings, int level) {
    for (auto item = siblings.begin(); item != siblings.end(); ++item) {
      places.push_back({&siblings, item, level, Count()});
      List(item->children, level + 1);
    }
  }

  void Add(Node node, Item& item) {
    const std::string title = "item " + std::to_string(++count);
    const OmStringCell cell(title);
    const int kind = random.Below(3);
    item.children.push_back({title, kind == 1 ? title : "", kind == 2, {}, {}});
    if (kind == 2) {
      auto table = std::make_unique<OmPivotTable>(cell, cell, false);
      AddDimension(*table, "d", 4);
      node.Child(table.release());
    } else if (kind == 1) {
      node.Child(new OmTextBlock(cell, title));
    } else {
      node.Child(new OmHeading(cell));
    }
  }

  void Replace(const Node& node, const Place& place) {
    const std::string message = "message " + std::to_string(++count);
    const OmStringCell title("title");
    const Node result = Amputate(node, &title, message);
    Item& item = *place.item;
    if (place.level > 1) {
      item.children.push_back({item.title, message, false, {}, {}});
      ASSERT_EQ((*result)->Title()->Text(), item.children.front().title);
      place.siblings->splice(place.item, item.children);
      place.siblings->erase(place.item);
    } else {
      item.children.assign(1, {"title", message, false, {}, {}});
      ASSERT_EQ((*result)->Title()->Text(), "title");
    }
  }

  void FillTable(const Node& node, Item& item) {
    if (item.table) {
      const int subscript = random.Below(6);
      const std::string text = std::to_string(++count);
      static_cast<OmPivotTable&>(**node).Cell({subscript}, OmStringCell(text));
      item.cells[subscript] = text;
    }
  }

  void Compare() {
    ASSERT_EQ(places.size(), tree.List().size());
    auto place = places.begin();
    for (ListTreeData<OmOutputPart*>& entry : tree.List()) {
      const Item& item = *place->item;
      ASSERT_EQ(entry.Level(), place->level);
      ASSERT_EQ(entry.Data()->Title()->Text(), item.title);
      if (auto* const block = dynamic_cast<OmTextBlock*>(entry.Data())) {
        ASSERT_EQ(block->Text(), item.text);
      } else if (auto* const table = dynamic_cast<OmPivotTable*>(entry.Data())) {
        std::string cells;
        for (const auto& [subscript, text] : item.cells) {
          cells += (cells.empty() ? "" : " ") + std::to_string(subscript) + "=" + text;
        }
        ASSERT_EQ(Cells(*table), cells);
      }
      ++place;
    }
    Verify(tree);
  }

  Choices& random;
  int count = 0;
  OmOutputTree tree;
  std::list<Item> outline{Item{"Output", "", false, {}, {}}};
  std::vector<Place> places;
};

#endif
