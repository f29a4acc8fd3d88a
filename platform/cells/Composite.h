// OmComposite, a cell text made of other texts, which are arranged as a tree.

#ifndef PLATFORM_CELLS_COMPOSITE_H
#define PLATFORM_CELLS_COMPOSITE_H

#include <string>

#include "backend/tables/om/VectorTree.h"
#include "platform/cells/CellText.h"

// The text is that of all parts joined, in pre-order. Composites whose texts are equal go by their
// parts and the depths of these.
//
// A composite owns the texts in its tree: what is deleted from the tree without being deleted
// itself passes to the caller. Each record has a text of its own or null; the root has null at
// first. Comparing composes the texts, which may find no memory. Nothing recurses, neither over the
// levels of a tree nor over composites in composites; one of a derived class counts as any other
// text.
class OM_PLATFORM_API OmComposite : public OmCellText {
 public:
  // The tree will live in `region`, null for the default heap. Its texts may live anywhere that
  // outlives the composite.
  explicit OmComposite(OmMemoryRegion* region = nullptr);
  ~OmComposite() override;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] short Compare(const OmCellText& other) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] const OmVectorTree<OmCellText*>& Tree() const noexcept { return tree; }
  [[nodiscard]] OmVectorTree<OmCellText*>& Tree() noexcept { return tree; }

 private:
  OmComposite(const OmComposite& other, OmMemoryRegion* region);

  OmVectorTree<OmCellText*> tree;
};

#endif
