// OmCellMetaData, what a table stores about one of its cells: the style that the cell is shown in
// and the footnotes that it refers to.

#ifndef PLATFORM_CELLS_CELLMETADATA_H
#define PLATFORM_CELLS_CELLMETADATA_H

#include "backend/tables/om/Vector.h"
#include "platform/Export.h"

// A small value. A copy into a region allocates from that region only; other copies use the default
// heap.
class OM_PLATFORM_API OmCellMetaData {
 public:
  // Has no style and no footnotes. Allocates from `region`, null for the default heap.
  explicit OmCellMetaData(OmMemoryRegion* region = nullptr);
  OmCellMetaData(const OmCellMetaData& other);
  OmCellMetaData(const OmCellMetaData& other, OmMemoryRegion* region);
  // Keeps its own region. If memory runs out, nothing changes.
  OmCellMetaData& operator=(const OmCellMetaData& other);
  ~OmCellMetaData();

  [[nodiscard]] OmMemoryRegion* Region() const noexcept { return footnotes.Region(); }
  // Index of the style among the table's cell styles; -1 if none is set.
  [[nodiscard]] int Style() const noexcept { return style; }
  void Style(int index) noexcept { style = index; }
  // Indices of the footnotes among the table's footnotes, in the order in which they are marked.
  [[nodiscard]] const OmVector<int>& Footnotes() const noexcept { return footnotes; }
  [[nodiscard]] OmVector<int>& Footnotes() noexcept { return footnotes; }

  [[nodiscard]] bool operator==(const OmCellMetaData& other) const noexcept;

 private:
  OmVector<int> footnotes;
  int style = -1;
};

#endif
