// OmComposite, a cell text made of other texts, which are arranged as a tree.

#ifndef PLATFORM_CELLS_COMPOSITE_H
#define PLATFORM_CELLS_COMPOSITE_H

#include <string>

#include "backend/tables/om/VectorTree.h"
#include "platform/cells/CellText.h"

// The text is the texts of all parts, joined in pre-order. Composites whose texts are equal are
// ordered by their parts and the depths of these.
//
// A composite owns the texts in its tree. If a caller removes a record from the tree and does not
// delete its text, the caller owns the text. Each record has a text of its own or null; the root
// has null at first. Comparing composes the texts, so it may throw std::bad_alloc. Nothing recurses
// over the levels of a tree or over nested composites; a nested composite of a derived class is
// treated like any other text.
class OM_PLATFORM_API OmComposite : public OmCellText {
 public:
  // The tree is allocated in `region`, null for the default heap. Its texts may be in any region
  // that outlives the composite.
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
