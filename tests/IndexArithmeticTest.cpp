// Tests of the mixed radix, the projector and the list behind an axis.

#include <gtest/gtest.h>

#include <vector>

#include "backend/tables/IndexProjector.h"
#include "backend/tables/MultiBase.h"
#include "backend/tables/PuppetVector.h"

namespace {

using Digits = std::vector<unsigned int>;

TEST(MultiBase, KeepsItsEdges) {
  EXPECT_EQ(MultiBase({3, 5}).Value({1, 2}), 7U);
  EXPECT_TRUE(MultiBase().Digits(5).empty());
  EXPECT_EQ(MultiBase({2, 5}).Digits(10), (Digits{2, 0}));
  EXPECT_EQ(MultiBase({0, 5}).Digits(7), (Digits{1, 2}));  // the first base is never read
  EXPECT_EQ(MultiBase({0, 5}).Value({3, 9}), 24U);         // nor are digits held against bases
  EXPECT_EQ(MultiBase({2, 0, 3}).Digits(2), (Digits{0, 0, 2}));  // value used up before the zero
  EXPECT_EQ(Product(Digits{}), 1U);
  EXPECT_EQ(Product(std::vector<int>{-1, 2}), 18446744073709551614ULL);
  EXPECT_EQ(Product(Digits{4294967295U, 4294967295U}), 18446744065119617025ULL);

  EXPECT_DEATH((void)MultiBase({2, 0, 3}).Digits(3),
               "backend/tables/MultiBase: Digits: Assertion `b>0' failed");
  for (const Digits& wrong : {Digits{}, Digits{1}, Digits{1, 1, 1}}) {
    EXPECT_DEATH((void)MultiBase({2, 5}).Value(wrong),
                 "MultiBase: Value: Assertion `digit == end && i == size' failed");
  }
}

TEST(OmIndexProjector, WritesItsPositionsOnly) {
  OmIndexProjector projector;
  projector.Set({3, 0});
  std::vector<int> out{7, 7, 7, 7};
  projector.Spread(Digits{1, 2, 9}, out);
  EXPECT_EQ(out, (std::vector<int>{2, 7, 7, 1}));
  projector = OmIndexProjector();
  projector.Spread(Digits{}, out);
  EXPECT_EQ(out, (std::vector<int>{2, 7, 7, 1}));
}

TEST(PuppetVector, GrowsOnlyWhenWritten) {
  PuppetVector<short> axis(-1);
  const PuppetVector<short>& reader = axis;
  EXPECT_EQ(reader[4], -1);
  EXPECT_TRUE(axis.empty());
  axis[2] = 5;
  EXPECT_EQ(std::vector<short>(axis.begin(), axis.end()), (std::vector<short>{-1, -1, 5}));
  PuppetVector<short> other(9);
  other = axis;  // the default comes along
  EXPECT_EQ(other[3], -1);
  EXPECT_EQ(other.size(), 4U);
  axis.erase(axis.begin());
  EXPECT_EQ(reader[1], 5);
  EXPECT_EQ(axis.size(), 2U);
}

}  // namespace
