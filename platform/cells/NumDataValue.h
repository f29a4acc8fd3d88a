// OmNumDataValue, a value of a numeric variable with its label.

#ifndef PLATFORM_CELLS_NUMDATAVALUE_H
#define PLATFORM_CELLS_NUMDATAVALUE_H

#include <string>
#include <string_view>

#include "backend/tables/om/Format.h"
#include "platform/cells/CellChars.h"
#include "platform/cells/CellText.h"

// The text is the label, or the formatted value if the label is empty.
class OM_PLATFORM_API OmNumDataValue : public OmCellText {
 public:
  OmNumDataValue(double value_, std::string_view label,
                 const Qualtex_Format& format_ = kDefaultFormat, OmMemoryRegion* region = nullptr);
  ~OmNumDataValue() override;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] double Value() const noexcept { return value; }
  [[nodiscard]] std::string_view Label() const noexcept { return chars.First(); }
  [[nodiscard]] const Qualtex_Format& Format() const noexcept { return format; }

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  OmNumDataValue(const OmNumDataValue& other, OmMemoryRegion* region);

  double value;
  Qualtex_Format format;
  OmCellChars chars;
};

#endif
