// The walkers: one for each family of classes, holding everything that its invariants say. Tests
// call them after each step, and so do the fuzzers.

#ifndef TESTS_SUPPORT_WALKERS_H
#define TESTS_SUPPORT_WALKERS_H

#include <gtest/gtest.h>

#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/ListTree.h"
#include "backend/tables/om/PivotTable.h"
#include "platform/cells/CellText.h"

// The three pointers are null together or not at all, and in order.
template <typename T>
void Verify(const OmVector<T>& vector) {
  EXPECT_NE(vector.Region(), nullptr);
  EXPECT_EQ(vector.begin() == nullptr, vector.capacity() == 0);
  EXPECT_EQ(vector.end() - vector.begin(), static_cast<long>(vector.size()));
  EXPECT_LE(vector.size(), vector.capacity());
}

// Every link leads to the record that holds the child, every record is in the region of the root,
// and the vectors are whole. Written as a loop, for trees deeper than the stack.
template <typename T>
void VerifyTree(const OmVectorTreeData<T>& root) {
  std::vector<const OmVectorTreeData<T>*> todo{&root};
  while (!todo.empty()) {
    const OmVectorTreeData<T>& record = *todo.back();
    todo.pop_back();
    Verify(record.Children());
    EXPECT_EQ(record.Region(), root.Region());
    for (const OmVectorTreeData<T>& child : record.Children()) {
      EXPECT_EQ(child.Parent(), &record);
      todo.push_back(&child);
    }
  }
}

// Every index is in the region of the dimension, and the handles count the depth.
inline void Verify(const OmDimension& dimension) {
  VerifyTree<OmDimensionNode>(dimension);
  std::vector<OmDimension::ConstNode> todo{dimension.Root()};
  while (!todo.empty()) {
    const OmDimension::ConstNode node = todo.back();
    todo.pop_back();
    EXPECT_NE(node->Text(), nullptr);
    EXPECT_EQ(node->ChildIndex().Region(), dimension.Region());
    Verify(node->ChildIndex());
    for (auto child = node.Begin(); child != node.End(); ++child) {
      EXPECT_EQ(child.Level(), node.Level() + 1);
      todo.push_back(child);
    }
  }
}

// Levels start with 0 and rise by one at most.
template <typename T>
void Verify(ListTree<T>& tree) {
  int last = -1;
  for (ListTreeData<T>& entry : tree.List()) {
    EXPECT_GE(entry.Level(), last == -1 ? 0 : 1);
    EXPECT_LE(entry.Level(), last + 1);
    last = entry.Level();
  }
}

// Every vector is whole, and what stands at the bottom is a text.
inline void VerifyStore(const OmPointerVector* v, unsigned long levels) {
  if (v == nullptr) {
    return;
  }
  Verify(*v);
  for (void* const element : *v) {
    if (element != nullptr && levels > 1) {
      VerifyStore(static_cast<const OmPointerVector*>(element), levels - 1);
    } else if (element != nullptr) {
      EXPECT_FALSE(static_cast<OmCellText*>(element)->Text().empty());
    }
  }
}

// The dimensions are whole and in one region, the walk over the cells ascends and agrees with
// access by subscripts, and the texts that have to be there are.
inline void Verify(OmPivotTable& table) {
  EXPECT_NE(table.TemplateName(), nullptr);
  EXPECT_EQ(table.SizeVector().size(), table.NDimensions());
  for (int d = 0; d != static_cast<int>(table.NDimensions()); ++d) {
    const OmDimension& dimension = *table.Dimension(d);
    Verify(dimension);
    EXPECT_EQ(dimension.Region(), table.Footnotes().Region());
    EXPECT_EQ(table.Size(d), static_cast<int>(dimension.NumCategories()));
  }
  Verify(table.Footnotes());
  std::vector<int> last;
  for (OmPivotTable::Iterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
    const std::vector<int> index = cell.Index();
    EXPECT_EQ(table.Cell(index), cell.Cell());
    std::vector<int> key(index.rbegin(), index.rend());
    EXPECT_TRUE(last.empty() || last < key);
    last.swap(key);
  }
}

// The two maps of a header agree with its leaves.
inline void Verify(const OmDimHeader& header) {
  EXPECT_EQ(header.nodePaths.size(), header.leafSubscripts.size());
  EXPECT_EQ(header.visibleLevels.size(), header.leafSubscripts.size());
  for (unsigned long p = 0; p != header.nodePaths.size(); ++p) {
    Verify(header.nodePaths[p]);
    EXPECT_LE(header.visibleLevels[p], header.maxVisibleLevels);
    const auto subscript = static_cast<unsigned int>(header.leafSubscripts[p]);
    if (header.leafSubscripts[p] >= 0) {
      // A later leaf may carry the same subscript.
      const int position = header.leafPositions[subscript];
      EXPECT_GE(position, static_cast<int>(p));
      EXPECT_EQ(header.leafSubscripts[static_cast<unsigned long>(position)],
                header.leafSubscripts[p]);
    }
  }
}

#endif
