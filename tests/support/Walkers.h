// The walkers: one for each family of classes, holding everything that its invariants say. Tests
// call them after each step, and so do the fuzzers.

#ifndef TESTS_SUPPORT_WALKERS_H
#define TESTS_SUPPORT_WALKERS_H

#include <gtest/gtest.h>

#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/ListTree.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PointerVector.h"
#include "platform/cells/CellText.h"

// The three pointers are null together or not at all, and in order.
template <typename T>
void Verify(const OmVector<T>& vector) {
  EXPECT_NE(vector.Region(), nullptr);
  EXPECT_EQ(vector.begin() == nullptr, vector.capacity() == 0);
  EXPECT_LE(vector.size(), vector.capacity());
}

// Every link leads to the record that holds the child, every record with its index is in the region
// of the root, and the vectors are whole. Written as a loop, for trees deeper than the stack.
template <typename T>
void VerifyTree(const OmVectorTreeData<T>& root) {
  std::vector<const OmVectorTreeData<T>*> todo{&root};
  while (!todo.empty()) {
    const OmVectorTreeData<T>& record = *todo.back();
    todo.pop_back();
    Verify(record.Children());
    EXPECT_EQ(record.Region(), root.Region());
    Verify(record.Data().ChildIndex());
    EXPECT_EQ(record.Data().ChildIndex().Region(), root.Region());
    for (const OmVectorTreeData<T>& child : record.Children()) {
      EXPECT_EQ(child.Parent(), &record);
      todo.push_back(&child);
    }
  }
}

inline void Verify(const OmDimension& dimension) {
  VerifyTree<OmDimensionNode>(dimension);
}

// Levels start with 0 and rise by one at most.
template <typename T>
void Verify(ListTree<T>& tree) {
  int most = 0;
  for (ListTreeData<T>& entry : tree.List()) {
    EXPECT_GE(entry.Level(), most == 0 ? 0 : 1);
    EXPECT_LE(entry.Level(), most);
    most = entry.Level() + 1;
  }
}

// The bitmap says which elements are not null, and nothing but null follows them.
inline void Verify(const OmPointerVector& v) {
  EXPECT_NE(v.Region(), nullptr);
  EXPECT_EQ(v.begin() == nullptr, v.capacity() == 0);
  unsigned long held = 0;
  for (unsigned long i = 0; i != v.capacity(); ++i) {
    void* const element = v.begin()[i];
    EXPECT_TRUE(i < v.size() || element == nullptr) << i;
    EXPECT_TRUE(i >= v.size() || v.IsSet(i) == (element != nullptr)) << i;
    EXPECT_TRUE(element == nullptr || FindNonZero(v, i) == i) << i;
    held += element != nullptr ? 1 : 0;
  }
  EXPECT_EQ(v.IsEmpty(), held == 0);
}

inline void VerifyStore(const OmPointerVector* v, unsigned long levels) {
  Verify(*v);
  for (unsigned long i = v->Find(0); i != v->size() && levels > 1; i = v->Find(i + 1)) {
    VerifyStore(static_cast<const OmPointerVector*>((*v)[i]), levels - 1);
  }
}

// The dimensions are whole and in the table's region.
inline void Verify(const OmPivotTable& table) {
  Verify(table.Footnotes());
  for (int d = 0; d != static_cast<int>(table.NDimensions()); ++d) {
    Verify(*table.Dimension(d));
    EXPECT_EQ(table.Dimension(d)->Region(), table.Footnotes().Region());
  }
}

#endif
