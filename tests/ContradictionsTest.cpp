// What is wrong with tables, dimensions and documents: one contradiction at a time in tables that
// have none, and all at once.

#include "backend/tables/om/Contradictions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "tests/support/LayoutCheck.h"
#include "tests/support/Show.h"

namespace {

using om::Contradictions;
using om::Finding;
using Kind = Finding::Kind;
using enum Finding::Kind;
using Kinds = std::set<Kind>;
using Node = OmDimension::Node;
using Axis = PuppetVector<short>;
using Outline = OmOutputTree::Node;

constexpr unsigned long kNone = OmDimensionNode::kNoSubscript;
const OmStringCell kText("text");

Kinds KindsOf(const std::vector<Finding>& findings) {
  Kinds kinds;
  std::transform(findings.begin(), findings.end(), std::inserter(kinds, kinds.end()),
                 [](const Finding& finding) { return finding.kind; });
  return kinds;
}

std::string Lines(const std::vector<Finding>& findings) {
  std::ostringstream lines;
  for (const Finding& finding : findings) {
    lines << finding << '\n';
  }
  return lines.str();
}

// Whether a leaf of every dimension has the subscript of a cell.
bool IsAddressed(const layout_model::LayoutModel& model, const std::vector<int>& cell) {
  return std::equal(model.leaves.begin(), model.leaves.end(), cell.begin(),
                    [](const auto& leaves, int subscript) {
                      return std::any_of(leaves.begin(), leaves.end(), [&](const auto& path) {
                        return path.back()->Subscript() == static_cast<unsigned int>(subscript);
                      });
                    });
}

// A table without a contradiction, of at least two dimensions of two or more categories each and
// with cells, and what the plants do to it.
struct Garden {
  explicit Garden(Choices& random_) : random(random_) {
    for (int d = 0; d != n; ++d) {
      Plant(*table.AddDimension(OmStringCell("d" + std::to_string(d))), 2 + random.Below(5));
      Axis& axis = *axes[static_cast<unsigned long>(random.Below(3))];
      axis.insert(axis.begin() + random.Below(static_cast<int>(axis.size()) + 1),
                  static_cast<short>(d));
    }
    for (int cells = 1 + random.Below(9); cells != 0; --cells) {
      table.Cell(Cell(), kText);
    }
    Subscripts last = Cell();
    last.back() = 1;
    table.Cell(last, kText);
    table.Footnote(OmFootnote(&kText, nullptr, nullptr), true);
    table.EndTable();
  }

  using Subscripts = std::vector<int>;

  void Plant(OmDimension& planted, int count) {
    std::vector<unsigned long> subscripts(static_cast<unsigned long>(count));
    std::iota(subscripts.begin(), subscripts.end(), 0UL);
    for (int i = count; i != 1; --i) {
      std::swap(subscripts[static_cast<unsigned long>(i - 1)],
                subscripts[static_cast<unsigned long>(random.Below(i))]);
    }
    Node at = planted.Root();
    while (!subscripts.empty()) {
      const bool group = random.OneIn(4);
      const Node child = planted.AddNewChild(at, kText, group ? kNone : subscripts.back(), group);
      child->Hide(random.OneIn(4));
      child->HideLabels(random.OneIn(4));
      at = group ? child : random.OneIn(3) ? planted.Root() : at;
      subscripts.resize(subscripts.size() - (group ? 0 : 1));
    }
  }
  Subscripts Cell() {
    Subscripts cell = table.SizeVector();
    for (int& subscript : cell) {
      subscript = random.Below(subscript);
    }
    return cell;
  }
  // The leaf of the dimension that a subscript belongs to.
  Node Leaf(unsigned long subscript) {
    Node found = dimension->Root();
    const std::function<void(Node)> look = [&](Node node) {
      found = !node->IsGroup() && node->Subscript() == subscript ? node : found;
      for (Node child = node.Begin(); child != node.End(); ++child) {
        look(child);
      }
    };
    look(found);
    return found;
  }
  void Delete(unsigned long subscript) {
    Node leaf = Leaf(subscript);
    dimension->Delete(leaf);
    dimension->Relocate(true);
  }
  Axis& Listing() {
    return **std::find_if(std::begin(axes), std::end(axes), [this](const Axis* axis) {
      return std::count(axis->begin(), axis->end(), which) != 0;
    });
  }

  Choices& random;
  int n = 2 + random.Below(3);
  OmPivotTable table{kText, kText, false};
  Axis* axes[3] = {&table.Rows(), &table.Columns(), &table.Layers()};
  // Where something is planted, once the table is there.
  short which = static_cast<short>(random.Below(n));
  OmDimension* dimension = nullptr;
  unsigned long size = 0;  // its categories
  unsigned long some = 0;  // one of its subscripts, not the last
};

// What is shown is right with these, and with no other kind.
const Kinds kLeftovers{kSubscriptGap, kCellWithoutLeaf};
// A leaf that has another subscript leaves that one to nobody.
const Kinds& kMoved = kLeftovers;

// The planting of a contradiction, and what may follow from it.
struct Plant {
  Kind kind;
  Kinds follow;
  void (*into)(Garden&);
};

const Plant kPlants[] = {
    {kRecordBelowCategory,
     {kPlaceWithoutLeaf},
     [](Garden& g) { g.dimension->AddNewChild(g.Leaf(g.some), kText, g.size, g.random.OneIn(2)); }},
    {kNoSubscript, kMoved,
     [](Garden& g) { g.Leaf(g.some)->Subscript(g.random.OneIn(2) ? kNone : 1UL << 31); }},
    {kSubscriptAboveLimit, kMoved,
     [](Garden& g) {
       g.Leaf(g.some)->Subscript(g.random.OneIn(2) ? OmDimHeader::kLargestSubscript + 1
                                                   : 1UL << 32);
     }},
    {kSubscriptBeyondSize, kMoved,
     [](Garden& g) {
       g.Leaf(g.some)->Subscript(g.random.OneIn(2) ? g.size : OmDimHeader::kLargestSubscript);
     }},
    {kSharedSubscript, kMoved, [](Garden& g) { g.Leaf(g.some)->Subscript(g.size - 1); }},
    {kSubscriptGap, {kPlaceWithoutLeaf, kCellWithoutLeaf}, [](Garden& g) { g.Delete(g.some); }},
    {kPlaceWithoutLeaf,
     {kNoLeafForCells, kCellWithoutLeaf},
     [](Garden& g) {
       for (unsigned long s = g.size; s-- != 0;) {
         g.Delete(s);
       }
     }},
    {kLeafWithoutPlace,
     {kSharedSubscript},
     [](Garden& g) { g.dimension->addChild(*g.Leaf(g.some).record, nullptr); }},
    {kOnNoAxis,
     {},
     [](Garden& g) {
       Axis& axis = g.Listing();
       axis.erase(std::find(axis.begin(), axis.end(), g.which));
     }},
    {kOnSeveralAxes,
     {},
     [](Garden& g) { (&g.Listing() == g.axes[0] ? g.axes[1] : g.axes[0])->push_back(g.which); }},
    {kRepeatedOnAxis, {}, [](Garden& g) { g.Listing().push_back(g.which); }},
    {kPlaceholder, {}, [](Garden& g) { g.Listing().push_back(-1); }},
    {kUnknownDimension,
     {},
     [](Garden& g) {
       g.Listing().push_back(g.random.OneIn(2) ? static_cast<short>(g.n) : short{-2});
     }},
    {kTooManyPlaces,
     {kRepeatedOnAxis},
     [](Garden& g) {
       for (int i = 0; i != 64; ++i) {
         g.Listing().push_back(g.which);
       }
     }},
    {kTooManyLayers,
     {kRepeatedOnAxis, kOnSeveralAxes},
     [](Garden& g) {
       for (unsigned long places = 1; places <= 1UL << 31; places *= g.size) {
         g.table.Layers().push_back(g.which);
       }
     }},
    {kCellWithoutLeaf,
     {},
     [](Garden& g) {
       std::vector<int> cell = g.Cell();
       cell[static_cast<unsigned long>(g.which)] = static_cast<int>(g.size);
       g.table.Cell(cell, kText);
     }},
    {kNoLeafForCells,
     {kCellWithoutLeaf},
     [](Garden& g) {
       g.table.AddDimension(kText);
       g.table.Rows().push_back(static_cast<short>(g.n));
     }},
    {kHiddenCells,
     {},
     [](Garden& g) {
       std::vector<int> first(static_cast<unsigned long>(g.n), 0);
       for (; first[0] != g.table.Size(0); ++first[0]) {
         g.table.Cell(first, nullptr);
       }
     }},
    {kFootnoteWithoutText,
     {},
     [](Garden& g) {
       const BrittleText brittle(1);
       const OmFootnote note(&brittle, nullptr, nullptr);
       EXPECT_THROW(g.table.Footnote(note, true), std::runtime_error);
     }},
};

// Every step plants each contradiction into a table of its own.
class ContradictionModel {
 public:
  explicit ContradictionModel(Choices& random_) : random(random_) {}

  void Step() {
    for (const Plant& plant : kPlants) {
      Garden garden(random);
      ASSERT_EQ(Lines(Contradictions(garden.table)), "");
      garden.dimension = garden.table.Dimension(garden.which);
      garden.size = garden.dimension->NumCategories();
      garden.some = static_cast<unsigned long>(random.Below(static_cast<int>(garden.size) - 1));
      plant.into(garden);

      const std::vector<Finding> findings = Contradictions(garden.table);
      SCOPED_TRACE(Lines(findings));
      const Kinds kinds = KindsOf(findings);
      ASSERT_TRUE(kinds.contains(plant.kind)) << static_cast<int>(plant.kind);
      for (const Finding& finding : findings) {
        ASSERT_TRUE(finding.kind == plant.kind || plant.follow.contains(finding.kind));
        ASSERT_EQ(finding.weight == Finding::Weight::kLeftover, kLeftovers.contains(finding.kind));
        ASSERT_TRUE(finding.dimension == -1 || finding.dimension == garden.which ||
                    finding.kind == kNoLeafForCells || finding.kind == kCellWithoutLeaf);
        ASSERT_TRUE(finding.cell.empty() || garden.table.Cell(finding.cell) != nullptr);
        ASSERT_TRUE(finding.count == 1 || finding.kind != kTooManyPlaces);
      }
      const layout_model::LayoutModel model(garden.table);
      unsigned long long lost = 0;
      for (std::vector<int> cell; garden.table.NextCell(cell) != nullptr;) {
        lost += IsAddressed(model, cell) ? 0 : 1;
      }
      const auto told = std::find_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.kind == kCellWithoutLeaf;
      });
      ASSERT_EQ(told != findings.end() ? told->count : 0, lost);
      // The same list again, and what is found in a dimension alone is part of it.
      ASSERT_EQ(Contradictions(garden.table), findings);
      std::vector<Finding> alone = Contradictions(*garden.dimension);
      for (Finding& finding : alone) {
        finding.dimension = garden.which;
        ASSERT_EQ(finding.sentence.find("the dimension \"d"), 0U);
        finding.sentence.replace(0, 13, "dimension " + std::to_string(garden.which));
      }
      ASSERT_TRUE(
          std::includes(findings.begin(), findings.end(), alone.begin(), alone.end(),
                        [](const Finding& a, const Finding& b) { return a.kind < b.kind; }));
    }
  }
  void End() {}

 private:
  Choices& random;
};

TEST(Contradictions, ArePlantedOneAtATime) {
  Play<ContradictionModel>(100, 1);
}

// Findings with their fields.
std::string Whole(const std::vector<Finding>& findings) {
  std::ostringstream whole;
  for (const Finding& finding : findings) {
    whole << finding.entry << ' ' << finding.dimension << ' ' << static_cast<int>(finding.axis)
          << ' ' << finding.index << ' ' << finding.subscript << " (" << ListOf(finding.cell)
          << ") " << finding.count << ' ' << finding << '\n';
  }
  return whole.str();
}

TEST(Contradictions, AreListedInTheirOrderWithEveryField) {
  OmOutputTree tree;
  Outline root(tree, tree.List().begin());
  auto* const table = new OmPivotTable(OmStringCell("Two\nlines"), kText, false);
  root.Child(new OmHeading(kText)).Child(table);
  AddDimension(*table, "a", 3);
  OmDimension* const b = AddDimension(*table, "b", 4);
  table->AddDimension(kText);
  Node first = table->Dimension(0)->Root()[0];
  table->Dimension(0)->Delete(first);
  b->Root()[0]->Subscript(1);
  b->Root()[2]->Subscript(9);
  b->Root()[3]->Subscript(300000000);
  b->addChild(*b->Root()[1].record, nullptr);
  b->AddNewChild(b->Root()[1], kText, 0, true);
  b->AddNewChild(b->Root(), kText, kNone, false);
  for (const int d : {1, -1, 1, 3, -1}) {
    table->Columns().push_back(static_cast<short>(d));
  }
  table->Layers().push_back(1);
  table->Cell({0, 0, 0}, nullptr);
  table->Cell({1, 1, 1}, kText);
  table->Cell({2, 7, 1}, kText);
  const BrittleText brittle(1);
  EXPECT_THROW(table->Footnote(OmFootnote(&brittle, nullptr, nullptr), true), std::runtime_error);

  EXPECT_EQ(
      Whole(Contradictions(*table)),
      R"(-1 1 0 -1 1 () 1 shown wrongly: dimension 1 "b": 1 record stands below categories and are never shown
-1 1 0 -1 -1 () 1 shown wrongly: dimension 1 "b": 1 leaf has no subscript, and no cells
-1 1 0 -1 300000000 () 1 shown wrongly: dimension 1 "b": subscript 300000000 is above 268435456, so that no heading can be built
-1 1 0 -1 9 () 1 shown wrongly: dimension 1 "b": subscript 9 is beyond the 5 places
-1 1 0 -1 1 () 1 shown wrongly: dimension 1 "b": subscript 1 is given to more than one leaf: they show the same cells
-1 0 0 -1 0 () 1 leftover: dimension 0 "a": subscript 0 is given to no leaf
-1 1 0 -1 0 () 299999998 leftover: dimension 1 "b": subscript 0 (and 299999997 more) is given to no leaf
-1 0 0 -1 -1 () 1 shown wrongly: dimension 0 "a": 3 places for 2 leaves: the rest show no label and another place's cells
-1 1 0 -1 -1 () 1 shown wrongly: dimension 1 "b": 5 places for 6 leaves: the rest are never shown
-1 0 0 -1 -1 () 1 shown wrongly: dimension 0 "a": on no axis
-1 2 0 -1 -1 () 1 shown wrongly: dimension 2 "text": on no axis
-1 1 2 -1 -1 () 2 shown wrongly: dimension 1 "b": on the columns and the layers
-1 1 2 -1 -1 () 2 shown wrongly: dimension 1 "b": 2 times on the columns
-1 -1 2 1 -1 () 2 shown wrongly: the columns: a placeholder stands at entry 1 (and 1 more)
-1 -1 2 3 -1 () 1 shown wrongly: the columns: no dimension is named at entry 3
-1 2 0 -1 1 (1,1,1,) 2 leftover: dimension 2 "text": 2 cells are stored where no leaf has the subscript, the first at (1, 1, 1)
-1 2 0 -1 -1 (1,1,1,) 2 shown wrongly: dimension 2 "text": no leaf, so that none of 2 cells is shown
-1 -1 0 -1 -1 (1,1,1,) 2 shown wrongly: a null that was stored first hides all 2 cells from the iterators, the first at (1, 1, 1)
-1 -1 0 0 -1 () 1 shown wrongly: footnote 0: no text
)");

  // Entries of a document, and an item at two of them.
  Outline heading = root.Begin();
  heading.Child(table);
  heading.Child(nullptr);
  tree.List().back().Level() = 4;
  root.Child(nullptr);
  tree.List().back().Level() = 0;
  std::vector<Finding> findings = Contradictions(tree);
  ASSERT_EQ(findings.size(), 22U);
  findings.erase(findings.begin(), findings.begin() + 18);
  EXPECT_EQ(Whole(findings),
            R"(2 -1 0 0 -1 () 1 shown wrongly: entry 2 "Two lines": footnote 0: no text
3 -1 0 2 -1 () 1 shown wrongly: entry 3 "Two lines": placed already at entry 2
4 -1 0 -1 -1 () 1 shown wrongly: entry 4: level 4 behind an entry of level 2
5 -1 0 -1 -1 () 1 shown wrongly: entry 5: beside the root, where no walk from the root comes
)");
  std::next(tree.List().begin(), 3)->Data() = nullptr;
  EXPECT_NE(findings, Contradictions(tree));
  tree.List().front().Level() = -1;
  findings = Contradictions(tree);
  findings.resize(1);
  EXPECT_EQ(Whole(findings),
            "0 -1 0 -1 -1 () 1 shown wrongly: entry 0 \"Output\": level -1 at the root\n");

  // A dimension alone, whose root is a category without a label.
  EXPECT_EQ(Whole(Contradictions(OmDimension(OmDimensionNode(nullptr), nullptr))),
            R"(-1 -1 0 -1 -1 () 1 shown wrongly: the dimension: the root has no label
-1 -1 0 -1 -1 () 1 shown wrongly: the dimension: 1 leaf has no subscript, and no cells
-1 -1 0 -1 -1 () 1 shown wrongly: the dimension: 0 places for 1 leaf: the rest are never shown
)");
}

// The walk costs no stack.
TEST(Contradictions, AreFoundInDeepDimensions) {
  OmMemoryRegion region(false);
  OmDimension dimension(OmDimensionNode(kText, kNone, true, nullptr), &region);
  Node at = dimension.Root();
  for (int level = 0; level != 200000; ++level) {
    at = dimension.AddNewChild(at, kText, kNone, true);
  }
  dimension.AddNewChild(at, kText, 1, false);
  EXPECT_EQ(KindsOf(Contradictions(dimension)), Kinds({kSubscriptBeyondSize, kSubscriptGap}));
}

}  // namespace
