// Every kind of cell text.

#ifndef PLATFORM_CELLS_CELLTEXTS_H
#define PLATFORM_CELLS_CELLTEXTS_H

#include "backend/tables/om/Format.h"
#include "backend/tables/om/VectorTree.h"
#include "platform/cells/CellText.h"

template <typename Cell, unsigned long kind>
class OmCellTextOf : public OmCellText {
 public:
  explicit OmCellTextOf(std::string text_) : OmCellText(std::move(text_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override {
    return new (region) Cell(static_cast<const Cell&>(*this));
  }
  unsigned long Kind() const noexcept override { return kind; }
  void Accept(Visitor& visitor) override { visitor.Visit(static_cast<Cell&>(*this)); }
};

class OmStringCell : public OmCellTextOf<OmStringCell, 1> {
 public:
  explicit OmStringCell(std::string text_, OmMemoryRegion* = nullptr, bool = false)
      : OmCellTextOf(std::move(text_)) {}
};

class OmStringCellUTF8 : public OmCellTextOf<OmStringCellUTF8, 2> {
  using OmCellTextOf::OmCellTextOf;
};

class OmNumber : public OmCellTextOf<OmNumber, 3> {
 public:
  explicit OmNumber(double value, const Qualtex_Format& format = kDefaultFormat);
};

class OmVariable : public OmCellTextOf<OmVariable, 4> {
  using OmCellTextOf::OmCellTextOf;
};

class OmNumDataValue : public OmCellTextOf<OmNumDataValue, 5> {
  using OmCellTextOf::OmCellTextOf;
};

class OmStringDataValue : public OmCellTextOf<OmStringDataValue, 6> {
  using OmCellTextOf::OmCellTextOf;
};

// Its tree stays empty: nothing on this platform composes texts.
class OmComposite : public OmCellTextOf<OmComposite, 7> {
 public:
  OmComposite() : OmCellTextOf("") {}
  OmComposite(const OmComposite& other) : OmCellTextOf(other) {}
  const OmVectorTree<OmCellText*>& Tree() const noexcept { return tree; }
  OmVectorTree<OmCellText*>& Tree() noexcept { return tree; }

 private:
  OmVectorTree<OmCellText*> tree{nullptr, nullptr};
};

#endif
