// OmDimensionNode, a category or group of a dimension, and OmCellTextPtr, which owns its label.

#ifndef BACKEND_TABLES_OM_DIMENSIONNODE_H
#define BACKEND_TABLES_OM_DIMENSIONNODE_H

#include "backend/tables/om/CellTextOrder.h"
#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"
#include "platform/cells/CellText.h"

// Owns a text, or is null. Dereferencing null is not checked in a release build.
class OmCellTextPtr {
 public:
  explicit OmCellTextPtr(OmCellText* p) noexcept : text(p) {}
  OmCellTextPtr(const OmCellTextPtr&) = delete;
  OmCellTextPtr& operator=(const OmCellTextPtr&) = delete;
  ~OmCellTextPtr() {
    delete text;
    text = nullptr;
  }

  [[nodiscard]] OmCellText* get() noexcept { return text; }
  [[nodiscard]] const OmCellText* get() const noexcept { return text; }
  [[nodiscard]] OmCellText* operator->() const {
    OM_HARDEN(text != nullptr, "OmCellTextPtr::operator->");
    return text;
  }
  [[nodiscard]] OmCellText& operator*() const {
    OM_HARDEN(text != nullptr, "OmCellTextPtr::operator*");
    return *text;
  }

 private:
  OmCellText* text;
};

// The payload of a dimension's records: the root with the dimension's name, groups with their
// labels, and the categories that cells are addressed by.
//
// A node owns its label; every copy clones it. A null region means the default heap. There is no
// assignment.
class OM_API OmDimensionNode {
 public:
  // Means no subscript; also written -1.
  static constexpr unsigned long kNoSubscript = ~0UL;
  // Marks a group that is being dissolved; also written -2.
  static constexpr unsigned long kDissolving = ~0UL - 1;

  // Has no label, no subscript and no flags, and is not sorted.
  explicit OmDimensionNode(OmMemoryRegion* region);
  // Clones `text_` into `region`.
  OmDimensionNode(const OmCellText& text_, unsigned long subscript_, bool group_,
                  OmMemoryRegion* region);
  // Copies into `region`; the label of the copy is tied to no tracker.
  OmDimensionNode(const OmDimensionNode& other, OmMemoryRegion* region);
  // Copies within the region of `other`, that is within one table: the label keeps its tracker.
  OmDimensionNode(const OmDimensionNode& other);
  OmDimensionNode& operator=(const OmDimensionNode&) = delete;
  ~OmDimensionNode() = default;

  // The label; may be null.
  [[nodiscard]] OmCellText* Text() noexcept { return text.get(); }
  [[nodiscard]] const OmCellText* Text() const noexcept { return text.get(); }
  // The number of a category in cell addresses.
  [[nodiscard]] unsigned long Subscript() const noexcept { return subscript; }
  void Subscript(unsigned long value) noexcept { subscript = value; }
  [[nodiscard]] bool IsGroup() const noexcept { return group; }
  [[nodiscard]] bool Hide() const noexcept { return hide; }
  void Hide(bool value) noexcept { hide = value; }
  [[nodiscard]] bool HideLabels() const noexcept { return hideLabels; }
  void HideLabels(bool value) noexcept { hideLabels = value; }
  // 0 ascending, 1 descending, 2 not sorted.
  [[nodiscard]] int SortOrder() const noexcept { return sortOrder; }
  void SortOrder(int value) noexcept { sortOrder = value; }
  // Positions of the record's children, sorted by their payloads, for searching. The children
  // themselves stay in the order in which they were added.
  [[nodiscard]] OmVector<int>& ChildIndex() noexcept { return childIndex; }
  [[nodiscard]] const OmVector<int>& ChildIndex() const noexcept { return childIndex; }

  // Orders groups before categories, then by label. Ignores the subscript. Neither label may be
  // null.
  [[nodiscard]] bool operator<(const OmDimensionNode& other) const;
  // Unlike the order, compares the subscript too, on purpose: two categories with the same label
  // are different nodes. Neither label may be null.
  [[nodiscard]] bool operator==(const OmDimensionNode& other) const;

  // Writes one line to the standard output, indented by two spaces per level.
  void Print(unsigned int level) const;

 private:
  OmCellTextPtr text;
  unsigned long subscript = kNoSubscript;
  OmVector<int> childIndex;
  int sortOrder = 2;
  bool group = false;
  bool hide = false;
  bool hideLabels = false;
};

#endif
