// Deleting leaves the links below the moved siblings as they were. What is moved afterwards, by
// handles whose own links are right, has to arrive all the same.

#include <gtest/gtest.h>

#include <string>

#include "backend/tables/om/Dimension.h"
#include "platform/cells/CellTexts.h"

namespace {

using Node = OmDimension::Node;

std::string Outline(const OmDimension::ConstNode& node) {
  std::string text = node->Text()->Text();
  for (auto child = node.Begin(); child != node.End(); ++child) {
    EXPECT_TRUE(child.Parent() == node) << text;
    text += "(" + Outline(child) + ")";
  }
  return text;
}

class StaleLinks : public testing::Test {
 protected:
  StaleLinks() {
    for (const char* name : {"A", "B", "C", "D"}) {
      const Node group = Add(dimension.Root(), name);
      Add(group, std::string(name) + "1");
    }
    Node first = Group(0);
    dimension.Delete(first);
  }
  Node Add(const Node& parent, const std::string& name) {
    return dimension.AddNewChild(parent, OmStringCell(name), 0, true);
  }
  Node Group(unsigned long i) { return dimension.Root()[i]; }
  std::string Whole() { return Outline(std::as_const(dimension).Root()); }

  OmDimension dimension{OmDimensionNode(OmStringCell("r"), 0, true, nullptr), nullptr};
};

TEST_F(StaleLinks, DoNotMisleadASwap) {
  Add(Group(0), "B2");
  Add(Group(0), "B3");
  Node c2 = Add(Group(1), "C2");
  Node b2 = Group(0)[1];
  dimension.moveChild(b2, &c2, true);
  dimension.Relocate(true);  // the links below D were no concern of the swap
  EXPECT_EQ(Whole(), "r(B(B1)(B3)(B2))(C(C1)(C2))(D(D1))");
}

TEST_F(StaleLinks, DoNotMisleadAMove) {
  Node last = Group(2);
  Node into = Group(0);
  dimension.OmVectorTree::moveChild(last, nullptr, &into);
  EXPECT_EQ(Whole(), "r(B(B1)(D(D1)))(C(C1))");
  Node c = Group(1);
  Node below = Group(0)[0];
  dimension.OmVectorTree::moveChild(c, nullptr, &below);
  EXPECT_EQ(Whole(), "r(B(B1(C(C1)))(D(D1)))");
}

TEST_F(StaleLinks, AFailedDissolvingKeepsTheSubscript) {
  OmMemoryRegion region(false);
  OmDimension limited(dimension, &region);
  Add(Group(0), "B2");
  Node group = limited.Root()[2];
  for (int i = 0; i < 8; ++i) {
    limited.AddNewChild(group, OmStringCell("x"), 0, false);
  }
  region.Limit(region.BytesInUse());
  EXPECT_THROW(limited.removeChild(group), std::bad_alloc);
  EXPECT_EQ(group->Subscript(), 0U);
  region.Limit(~0UL);
  limited.removeChild(group);
  EXPECT_EQ(limited.Root().Count(), 11U);
}

}  // namespace
