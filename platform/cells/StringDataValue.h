// OmStringDataValue, a value of a string variable with its label.

#ifndef PLATFORM_CELLS_STRINGDATAVALUE_H
#define PLATFORM_CELLS_STRINGDATAVALUE_H

#include <string>
#include <string_view>

#include "platform/cells/CellChars.h"
#include "platform/cells/CellText.h"

// The text is the label, or the value if the label is empty.
class OM_PLATFORM_API OmStringDataValue : public OmCellText {
 public:
  OmStringDataValue(std::string_view value, std::string_view label,
                    OmMemoryRegion* region = nullptr);
  ~OmStringDataValue() override;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] std::string_view Value() const noexcept { return chars.First(); }
  [[nodiscard]] std::string_view Label() const noexcept { return chars.Second(); }

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  OmStringDataValue(const OmStringDataValue& other, OmMemoryRegion* region);

  OmCellChars chars;
};

#endif
