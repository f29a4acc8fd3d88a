// Every kind of cell text.

#ifndef PLATFORM_CELLS_CELLTEXTS_H
#define PLATFORM_CELLS_CELLTEXTS_H

#include "backend/tables/om/Format.h"
#include "backend/tables/om/VectorTree.h"
#include "platform/cells/CellText.h"

class OmStringCell : public OmCellText {
 public:
  explicit OmStringCell(std::string value_, OmMemoryRegion* = nullptr, bool = false)
      : OmCellText(std::move(value_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 1; }
  void Accept(Visitor& visitor) override;
};

class OmStringCellUTF8 : public OmCellText {
 public:
  explicit OmStringCellUTF8(std::string value_) : OmCellText(std::move(value_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 2; }
  void Accept(Visitor& visitor) override;
};

class OmNumber : public OmCellText {
 public:
  explicit OmNumber(double value_, const Qualtex_Format& format_ = kDefaultFormat);
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 3; }
  void Accept(Visitor& visitor) override;

 private:
  double value;
  Qualtex_Format format;
};

class OmVariable : public OmCellText {
 public:
  explicit OmVariable(std::string value_) : OmCellText(std::move(value_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 4; }
  void Accept(Visitor& visitor) override;
};

class OmNumDataValue : public OmCellText {
 public:
  explicit OmNumDataValue(std::string value_) : OmCellText(std::move(value_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 5; }
  void Accept(Visitor& visitor) override;
};

class OmStringDataValue : public OmCellText {
 public:
  explicit OmStringDataValue(std::string value_) : OmCellText(std::move(value_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 6; }
  void Accept(Visitor& visitor) override;
};

// Its tree stays empty: nothing on this platform composes texts.
class OmComposite : public OmCellText {
 public:
  OmComposite() : OmCellText("") {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  unsigned long Kind() const noexcept override { return 7; }
  void Accept(Visitor& visitor) override;
  const OmVectorTree<OmCellText*>& Tree() const noexcept { return tree; }
  OmVectorTree<OmCellText*>& Tree() noexcept { return tree; }

 private:
  OmVectorTree<OmCellText*> tree{nullptr, nullptr};
};

#endif
