// The display headings: over random tables against a model, and the cases that have a rule of their
// own. And the arithmetic below them.

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <set>

#include "backend/tables/IndexProjector.h"
#include "backend/tables/PlaceDigits.h"
#include "backend/tables/om/DimHeader.h"
#include "tests/support/LayoutCheck.h"

namespace {

using namespace layout_model;
using Digits = std::vector<unsigned int>;

class Layout : public testing::Test {
 protected:
  // Adds a dimension of `n` categories "<name>0", "<name>1", … and puts it on an axis.
  OmDimension* Add(const char* name, int n, PuppetVector<short>& axis) {
    axis.push_back(static_cast<short>(table.NDimensions()));
    return AddDimension(table, name, n);
  }

  OmPivotTable table{OmStringCell("title"), OmStringCell("Template"), false};
};

TEST_F(Layout, HoldsTheModelOfRandomTables) {
  Play<LayoutPlay>(1000, 1);
}

TEST_F(Layout, CutsAndFillsThePathsOfAHeader) {
  const OmDimHeader header(Add("d", 1, table.Rows()), nullptr);
  OmDimHeader::Path path(header.nodePaths[0]);
  EXPECT_EQ(CategoryDisplay(&path, 2, true), (std::vector<ConstNode*>{&path[0], nullptr}));
  EXPECT_EQ(CategoryDisplay(&path, 1, false), std::vector<ConstNode*>{&path[1]});
  EXPECT_EQ(Category(&path), std::vector<ConstNode*>{&path[0]});
  OmDimension* const deep = Add("deep", 2, table.Rows());
  deep->AddNewChild(deep->AddNewChild(deep->Root(), *path[0]->Text(), 0, true), *path[0]->Text(), 2,
                    false);
  const OmDimHeader levels(deep, nullptr);
  EXPECT_EQ(levels.VisibleLevels({false, true, false}), 2);
  EXPECT_EQ(levels.VisibleLevels({true, false, true}), 3);
  EXPECT_EQ(levels.VisibleLevels({false, false, false}), 0);
}

// A number beyond 64 bits loses what does not fit, and shows what the rest stands for.
TEST_F(Layout, TellsPlacesWhoseNumberWraps) {
  OmDimension* const dimension = Add("a", 300, table.Rows());
  for (int i = 0; i != 100; ++i) {
    Node first = dimension->Root()[0];
    dimension->Delete(first);
  }
  for (const int n : {9, 443, 449, 453, 509, 513, 566, 841, 961}) {
    Add("b", n, table.Columns());  // 5251 times 2 to the 64th and 242 places
  }
  Subscripts at(10, 0);
  for (const int row : {0, 250, 999}) {  // a leaf carries the second
    at[0] = row;
    table.Cell(at, OmNumber(1));
  }
  Place place = 150;
  for (int i = 0; i != 8; ++i) {
    table.Rows().push_back(0);
    place = place * 300 + 150;
  }
  OmDisplayLayerHeading layers(table, false);
  ASSERT_TRUE(IsSparse(table));
  const OmDisplayRowHeading rows(layers, true, false);
  EXPECT_EQ(rows.getNonEmptyRows(), Places{place});
  EXPECT_EQ((*rows.Row(0)[3])->Text()->Text(), "a124");
  for (unsigned int c = 0; c != rows.NColumns(); ++c) {
    EXPECT_EQ(rows.Column(static_cast<int>(c))[0], rows.Row(0)[c]);
  }
  const OmDisplayColumnHeading columns(layers, false);
  for (int level = 0; level != static_cast<int>(columns.NRows()); ++level) {
    for (int column = 0; column != 242; ++column) {
      EXPECT_EQ(columns.Row(level)[static_cast<unsigned long>(column)],
                columns.Column(column)[static_cast<unsigned long>(level)]);
    }
  }
  EXPECT_EQ(OmDisplayColumnHeading(layers, true).getNonEmptyColumns(), Places{0});
}

// More places than a bit each would hold, and vectors of the store so wide that it marks which
// parts of them hold anything.
TEST_F(Layout, FindsRowsInStoresOfAnyShape) {
  for (unsigned int shape = 0; shape != 8; ++shape) {
    const unsigned long rows = shape % 2 == 0 ? 1 : 3;           // dimensions there
    const unsigned long column = shape / 2 % 2 == 0 ? 0 : rows;  // the one beside them
    const int cells = shape / 4 == 0 ? 40 : 4000;
    OmPivotTable shaped(OmStringCell("title"), OmStringCell("Template"), false);
    for (unsigned long d = 0; d <= rows; ++d) {
      AddDimension(shaped, "d", d == column ? 20 : 5000);
      (d == column ? shaped.Columns() : shaped.Rows()).push_back(static_cast<short>(d));
    }
    std::set<Place> filled;
    for (int i = 0; i != cells; ++i) {
      std::mt19937 random(static_cast<unsigned int>(i % (cells / 2 + 1)));  // the same row twice
      Subscripts at(rows + 1, i % 20);
      Place place = 0;
      for (unsigned long d = rows + 1; d-- != 0;) {
        if (d != column) {
          at[d] = static_cast<int>(i % 9 == 0 ? random() % 5000 : 1000 + random() % 300);
          place = place * 5000 + static_cast<Place>(at[d]);
        }
      }
      shaped.Cell(at, OmNumber(1));
      filled.insert(place);
    }
    OmDisplayLayerHeading layers(shaped, false);
    ASSERT_EQ(IsSparse(shaped), rows == 3 || cells == 40);
    EXPECT_EQ(OmDisplayRowHeading(layers, true, false).getNonEmptyRows(),
              Places(filled.begin(), filled.end()));
  }
}

TEST_F(Layout, DropsPlacesWhereNoLeafStands) {
  OmDimension* const more = Add("more", 3, table.Rows());
  more->Root()[1]->Subscript(0);
  Node last = more->Root().Back();
  more->Delete(last);
  OmDimension* const fewer = Add("fewer", 9, table.Rows());
  Node first = fewer->Root()[0];
  fewer->Delete(first);
  Add("column", 300, table.Columns());  // makes the table sparse
  ASSERT_EQ(table.SizeVector(), (Subscripts{1, 9, 300}));
  table.Cell({0, 1, 0}, OmNumber(1));  // shows as place 0 + 1
  table.Cell({0, 8, 0}, OmNumber(1));  // and this as place 7 + 1, where no leaf stands
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, true, false);
  EXPECT_EQ(rows.getNonEmptyRows(), Places{1});
  std::vector<ConstNode*> nodes;
  rows.DimAllNodes(4, nodes);  // no row is listed there, so it is the place
  EXPECT_EQ((*nodes[1])->Text()->Text(), "fewer5");
}

TEST_F(Layout, GrowsItsListsWhenReadPastTheirEnd) {
  Add("a", 2, table.Rows());
  Add("b", 2, table.Columns());
  Add("c", 2, table.Layers());
  table.Cell({0, 0, 0}, OmNumber(1));
  table.Cell({0, 0, 1}, OmNumber(1));
  OmDisplayLayerHeading layers(table, true);
  const OmDisplayRowHeading rows(layers, false, false);
  const OmDisplayColumnHeading columns(layers, false);
  layers.SwitchLayer(0);
  EXPECT_EQ(layers.getDimensionIndex(2), -1);
  EXPECT_EQ(rows.getDimensionIndex(1), -1);
  EXPECT_EQ(columns.getDimensionIndex(4), -1);
  EXPECT_EQ(layers.NDimensions() + 10 * rows.NDimensions() + 100 * columns.NDimensions(), 523U);
  // Nothing else follows.
  Subscripts subscripts;
  layers.Fill(subscripts);
  rows.Fill(subscripts, 0);
  columns.Fill(subscripts, 1);
  EXPECT_EQ(subscripts, (Subscripts{0, 1, 0}));
  EXPECT_TRUE(layers.Nodes(2).empty() && layers.Nodes(-1).empty());
  // A restored number is followed by Fill() at once, by the current subscripts at the next switch.
  table.setLayerLoc(1);
  EXPECT_EQ(layers.restoreLayer(), 1);
  layers.Fill(subscripts);
  EXPECT_EQ(subscripts, (Subscripts{0, 1, 1}));
  EXPECT_EQ(layers.getCurrentCellIndex(), (Subscripts{0, 0, 0}));
}

TEST_F(Layout, HasNoCurrentLayerWhereTheRestoredNumberIsThatOfNone) {
  Add("a", 3, table.Layers());
  Add("b", 2, table.Layers());
  Add("c", 1, table.Rows());
  for (const bool skipEmpty : {false, true}) {
    table.Cell({0, 0, 0}, OmNumber(1));
    OmDisplayLayerHeading layers(table, skipEmpty);
    for (const int none : {-7, 6, 7, std::numeric_limits<int>::max()}) {
      table.setLayerLoc(none);
      EXPECT_EQ(layers.restoreLayer(), none);
      EXPECT_EQ(layers.getLayer(), none);
      Subscripts subscripts;
      layers.Fill(subscripts);
      EXPECT_TRUE(subscripts.empty() && layers.Nodes(0).empty() && layers.Nodes(1).empty());
      std::vector<ConstNode*> all;
      layers.DimAllNodes(1, all);
      EXPECT_TRUE(all.empty() && !layers.NextLayer());
    }
  }
}

TEST_F(Layout, AsksAnAxisWithAnEmptyDimensionPastItsRows) {
  Add("a", 3, table.Rows());
  Add("empty", 0, table.Rows());
  Add("b", 2, table.Rows());
  Add("none", 0, table.Layers());
  OmDisplayLayerHeading layers(table, false);
  table.setLayerLoc(5);
  layers.restoreLayer();
  EXPECT_TRUE(layers.Nodes(0).empty() && layers.NLayers() == 0);
  // Of place 13. An empty dimension counts for nothing, the outermost one has no such digit.
  const std::pair<const char*, Subscripts> expected[] = {
      {" - - a1", {1, 7, 7, 7}}, {" - b1 -", {7, 7, 1, 7}}, {" - a0 b1", {0, 7, 1, 7}}};
  for (const auto& [categories, subscripts] : expected) {
    const OmDisplayRowHeading rows(layers, false, false);
    EXPECT_EQ(rows.NRows(), 0U);
    std::string found;
    for (ConstNode* const node : rows.RowCategories(13)) {
      found += node != nullptr ? " " + (*node)->Text()->Text() : " -";
    }
    EXPECT_EQ(found, categories);
    Subscripts filled(4, 7);
    rows.Fill(filled, 13);
    EXPECT_EQ(filled, subscripts);
    std::vector<ConstNode*> roots, leaves, all;
    rows.DimCatNodes(13, roots, leaves);
    rows.DimAllNodes(13, all);
    EXPECT_EQ(all.size(), roots.size() + leaves.size());
    EXPECT_EQ(rows.Row(13).size(), rows.NColumns());
    std::rotate(table.Rows().begin(), table.Rows().begin() + 1, table.Rows().end());
  }
}

TEST_F(Layout, NamesTheCategoriesOfLayersFromTwoToThe31On) {
  for (const char* name : {"a", "b", "c"}) {
    Add(name, 2000, table.Layers());
  }
  table.Cell({1999, 0, 1999}, OmNumber(1));
  EXPECT_EQ(OmDisplayLayerHeading(table, false).NLayers(), 8000000000ULL);
  OmDisplayLayerHeading layers(table, true);
  EXPECT_EQ(layers.getNonEmptyLayers(), Places{7996001999});
  ASSERT_TRUE(layers.SwitchLayer(0));
  std::string labels;
  for (int i = 0; i != 3; ++i) {
    ConstNode *root = nullptr, *category = nullptr;
    layers.DimCatNodes(i, root, category);
    ASSERT_NE(category, nullptr);
    std::vector<ConstNode*> all;
    layers.DimAllNodes(i, all);
    EXPECT_EQ(PayloadsOf(layers.Nodes(i)), PayloadsOf(all));
    labels += (*category)->Text()->Text() + (*all.back())->Text()->Text() + " ";
  }
  EXPECT_EQ(labels, "c1999c1999 b0b0 a1999a1999 ");

  Add("d", 5, table.Layers());
  OmDisplayLayerHeading more(table, false);  // the last of 40000000000 is 1345294335 as an int
  ASSERT_TRUE(more.SwitchLayer(7));
  EXPECT_FALSE(more.LastLayer());
  EXPECT_EQ(more.getLayer(), 7);
}

TEST_F(Layout, RefusesSubscriptsThatTakeGigabytes) {
  OmDimension* const dimension = Add("a", 4, table.Rows());
  const auto message = [&] { return Message([&] { OmDisplayLayerHeading(table, false); }); };
  const std::string refused = "OmDimHeader::OmDimHeader() -- subscript <= limit, value 1 == ";
  for (const auto& [subscript, text] : {std::pair(268435457UL, "2.68435e+08"),
                                        {500000000UL, "5e+08"},
                                        {2147483647UL, "2.14748e+09"},
                                        {(1UL << 40) + 1, "1.09951e+12"},  // 1 as an int
                                        {(1UL << 63) + 1, "9.22337e+18"}}) {
    dimension->Root()[2]->Subscript(subscript);
    EXPECT_EQ(message(), refused + text + ", value 2 == 2.68435e+08");
  }
  // A deletion makes that the size of the dimension, whatever the categories' subscripts are.
  dimension->Root()[2]->Subscript(500000000);
  Node first = dimension->Root()[0];
  dimension->Delete(first);
  dimension->Root()[1]->Subscript(0);
  EXPECT_EQ(message(), refused + "5e+08, value 2 == 2.68435e+08");
  dimension->Delete(first = dimension->Root()[0]);
  EXPECT_EQ(dimension->NumCategories(), 4U);
  for (const unsigned long negative : {~0UL, 2147483648UL, 4294967294UL}) {
    dimension->Root()[0]->Subscript(negative);  // as an int
    const OmDimHeader header(dimension, nullptr);
    EXPECT_EQ(header.leafPositions.size(), 4U);
    EXPECT_EQ(header.leafSubscripts[0], static_cast<int>(negative));
  }
}

TEST_F(Layout, IsSparseFromFiftyPlacesOnAndRefusesUnknownDimensions) {
  OmDimension* const dimension = Add("a", 49, table.Rows());
  EXPECT_FALSE(IsSparse(table));
  dimension->AddNewChild(dimension->Root(), OmStringCell("b"), 49, false);
  EXPECT_TRUE(IsSparse(table));
  table.Cell({49}, OmNumber(1));
  EXPECT_FALSE(IsSparse(table));
  for (const auto& [axis, wrong] :
       {std::pair(&table.Layers(), -300), {&table.Rows(), 1}, {&table.Columns(), -1}}) {
    axis->push_back(static_cast<short>(wrong));
    EXPECT_EQ(Message([&] {
                OmDisplayLayerHeading layers(table, false);
                OmDisplayRowHeading rows(layers, false, true);
                OmDisplayColumnHeading columns(layers, false);
              }),
              "OmDisplayLayerHeading::Data::PlaceCalculator() -- 0 <= dim && dim < sizes.size(), "
              "value 1 == " +
                  std::to_string(wrong) + ", value 2 == 1");
    // The search for empty layers of a dense table reads every axis.
    EXPECT_THROW(OmDisplayLayerHeading(table, true), OMSException);
    axis->erase(axis->end() - 1);
  }
}

// Whether the table is sparse is settled when the layer heading is built, whatever is stored later.
TEST_F(Layout, SearchesAsTheTableWasWhenTheLayersWereBuilt) {
  Add("a", 30, table.Rows());
  Add("b", 2, table.Layers());
  OmDisplayLayerHeading sparse(table, false);
  for (int i = 0; i != 30; ++i) {
    table.Cell({i, i % 2}, OmNumber(1));
  }
  OmDisplayLayerHeading dense(table, false);
  EXPECT_EQ(OmDisplayRowHeading(sparse, true, false).NRows(), 30U);  // of any layer
  EXPECT_EQ(OmDisplayRowHeading(dense, true, false).NRows(), 15U);   // of the current one
  for (int i = 0; i != 30; ++i) {
    table.deleteCell({i, i % 2});
  }
  EXPECT_EQ(table.StoredCells(), 0U);
  EXPECT_TRUE(IsSparse(table));
}

TEST_F(Layout, AsksForWhatIsHiddenWithTheLabels) {
  OmDimension* const inner = Add("inner", 600, table.Rows());
  OmDimension* const outer = Add("outer", 2, table.Rows());
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, false, false);
  for (const unsigned int hide : {0U, 1U, 0U, 2U, 0U, 3U}) {
    inner->Root()[1]->Hide(hide % 2 != 0);
    inner->Root()[599]->Hide(hide % 2 != 0);
    outer->Root()[0]->Hide(hide > 1);
    outer->Root()->HideLabels(hide > 1);
    for (const int r : {1, 2, 599, 600, 1199, 0}) {  // ends beside where it begins
      for (int c = 0; c != 4; ++c) {
        EXPECT_EQ(rows.Row(r)[static_cast<unsigned long>(c)],
                  rows.Column(c)[static_cast<unsigned long>(r)]);
      }
    }
  }
}

// The headings of a dimension and of another one, after each way to edit it.
TEST_F(Layout, ShowsNothingOfADimensionThatWasEditedSince) {
  using Edit = void (*)(OmDimension & d, Node * at);
  const OmStringCell text("new");
  static const OmDimensionNode node(text, 9, false, nullptr);
  const Edit edits[] = {
      [](OmDimension& d, Node*) { d.AddNewChild(d.Root(), *node.Text(), 9, false); },
      [](OmDimension& d, Node*) { d.Child(d.Root(), node); },
      [](OmDimension& d, Node* at) { d.Delete(at[0]); },
      [](OmDimension& d, Node* at) { d.insertCategory(*node.Text(), at[0], d.Root(), true); },
      [](OmDimension& d, Node* at) {
        d.insertChild(*node.Text(), {&at[0], &at[1]});
      },
      [](OmDimension& d, Node* at) { d.removeChild(at[2]); },
      [](OmDimension& d, Node* at) { d.moveChild(at[0], nullptr, false); },
      [](OmDimension& d, Node* at) { d.moveChild(at[1], &at[0], false); },
      [](OmDimension& d, Node* at) { d.moveChild(at[0], &at[1], true); },
      [](OmDimension& d, Node* at) { d.swapChildren(at[0], at[1]); },
      [](OmDimension& d, Node* at) { d.InsertChild(node, at[0], d.Root(), false); },
      [](OmDimension& d, Node* at) { d.InsertChild(node, {&at[0]}); },
  };
  for (const Edit edit : edits) {
    OmPivotTable edited(text, text, false);
    OmDimension* const d = AddDimension(edited, "a", 2);
    d->AddNewChild(d->AddNewChild(d->Root(), text, 0, true), text, 2, false);
    AddDimension(edited, "b", 2);
    edited.Rows().push_back(0);
    edited.Rows().push_back(1);
    OmDisplayLayerHeading layers(edited, false);
    const OmDisplayRowHeading rows(layers, false, false);
    Node at[] = {d->Root()[0], d->Root()[1], d->Root()[2]};
    at[0]->Hide(true);  // is no structure
    EXPECT_EQ(rows.Row(3)[3], nullptr);
    const unsigned long changes = d->Changes();
    edit(*d, at);
    EXPECT_GT(d->Changes(), changes);
#if OM_HARDENING
    EXPECT_DEATH((void)rows.Row(4), "Data::Header: Assertion `.*IsCurrent");
#else
    EXPECT_EQ(PayloadsOf(rows.Row(4)),
              (Payloads{&*edited.Dimension(1)->Root(), &*edited.Dimension(1)->Root()[1], nullptr,
                        nullptr, nullptr}));
    EXPECT_EQ(rows.Column(3), std::deque<ConstNode*>(rows.NRows()));
    Subscripts subscripts(2, 7);
    rows.Fill(subscripts, 4);
    EXPECT_EQ(subscripts, (Subscripts{7, 1}));
    EXPECT_EQ(OmDisplayRowHeading(layers, false, true).VisibleWidth(1), 0);
#endif
  }
}

TEST_F(Layout, ReadsATableThatGrewMeanwhileWithoutItsNewDimension) {
  Add("a", 2, table.Rows());
  OmDisplayLayerHeading layers(table, false);
  Add("new", 3, table.Rows());
  for (const bool corner : {false, true}) {
    const OmDisplayRowHeading rows(layers, false, corner);
    EXPECT_EQ(rows.NRows(), 6U);
    const auto outermost = table.Rows()[1] == 1 ? 1 : 3;  // rows of one category of a
    for (int r = 0; r != 6; ++r) {
      EXPECT_EQ(rows.Row(r).back(),
                rows.Column(static_cast<int>(rows.NColumns()) - 1)[static_cast<unsigned long>(r)]);
      Subscripts subscripts;
      rows.Fill(subscripts, r);
      EXPECT_EQ(subscripts, Subscripts{r / outermost % 2});
    }
    EXPECT_THROW(OmDisplayRowHeading(layers, true, corner), OMSException);
    std::swap(table.Rows()[0], table.Rows()[1]);
  }
}

TEST_F(Layout, ReachesTenThousandLevelsDown) {
  constexpr int kDepth = 10000;
  OmDimension* const dimension = Add("deep", 0, table.Rows());
  Node node = dimension->Root();
  for (int i = 1; i <= kDepth; ++i) {
    node = dimension->AddNewChild(node, OmStringCell("node"), 0, i != kDepth);
  }
  OmDisplayLayerHeading layers(table, false);
  const OmDisplayRowHeading rows(layers, false, true);
  EXPECT_EQ(rows.Row(0).back()->Level(), static_cast<unsigned int>(kDepth));
  EXPECT_EQ(rows.Column(kDepth - 1)[0], rows.Row(0).back());
}

TEST(MultiBase, KeepsItsEdges) {
  EXPECT_TRUE(MultiBase().Digits(5).empty());
  EXPECT_EQ(MultiBase({5, 10}).Size(), 2U);
  EXPECT_EQ(MultiBase({5, 10}).Digits(1ULL << 33), (Digits{858993459, 2}));
  EXPECT_EQ(MultiBase({0, 5}).Digits(7), (Digits{1, 2}));  // the first base is never read
  EXPECT_EQ(MultiBase({0, 5}).Value({3, 9}), 24U);         // nor are digits held against bases
  EXPECT_EQ(MultiBase({2, 0, 3}).Digits(2), (Digits{0, 0, 2}));  // value used up before the zero
  EXPECT_EQ(Product(std::vector<int>{-1, 2}), 18446744073709551614ULL);
  EXPECT_DEATH((void)MultiBase({2, 0, 3}).Digits(3),
               "backend/tables/MultiBase: Digits: Assertion `b>0' failed");
  for (const Digits& wrong : {Digits{}, Digits{1}, Digits{1, 1, 1}}) {
    EXPECT_DEATH((void)MultiBase({2, 5}).Value(wrong),
                 "MultiBase: Value: Assertion `digit == end && i == size' failed");
  }
  // One digit at a time, also of places that nothing counts; a base of 0 counts as 1.
  std::mt19937 random(1);
  for (int i = 0; i != 1000; ++i) {
    Digits bases(1 + random() % 5);
    unsigned long long product = 1;
    bool fits = true;
    for (unsigned int& base : bases) {
      base = static_cast<unsigned int>(1 + random() % (1ULL << random() % 32));
      fits = !__builtin_mul_overflow(product, base, &product) && fits;
    }
    const PlaceDigits single(bases);
    ASSERT_EQ(single.Fits(), fits);
    const Place place = (static_cast<Place>(random()) << 32 | random()) >> random() % 64;
    const Digits digits = MultiBase(bases).Digits(place);
    Place value = 0;
    for (unsigned long k = 0; k != bases.size(); ++k) {
      ASSERT_EQ(single.Digit(place, k), digits[k]);
      value += digits[k] * single.Weight(k);
    }
    ASSERT_EQ(value, MultiBase(bases).Value(digits));
  }
  const PlaceDigits empty({4, 0, 3});
  EXPECT_EQ((Digits{empty.Digit(8, 0), empty.Digit(8, 1), empty.Digit(8, 2)}), (Digits{2, 0, 2}));
  OmIndexProjector projector;
  projector.Set({3, 0});
  Subscripts out{7, 7, 7, 7};
  projector.Spread(Digits{1, 2, 9}, out);
  EXPECT_EQ(out, (Subscripts{2, 7, 7, 1}));
  PuppetVector<short> none(-1);
  EXPECT_THROW(none[~0UL] = 0, std::length_error);
  EXPECT_TRUE(none.empty() && std::as_const(none)[9] == -1);
}

}  // namespace
