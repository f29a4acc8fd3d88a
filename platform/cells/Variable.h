// OmVariable, a variable of the data by its name and its label.

#ifndef PLATFORM_CELLS_VARIABLE_H
#define PLATFORM_CELLS_VARIABLE_H

#include <string>
#include <string_view>

#include "platform/cells/CellChars.h"
#include "platform/cells/CellText.h"

// The text is the label, or the name if the label is empty.
class OM_PLATFORM_API OmVariable : public OmCellText {
 public:
  OmVariable(std::string_view name, std::string_view label, OmMemoryRegion* region = nullptr);
  ~OmVariable() override;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] std::string_view Name() const noexcept { return chars.First(); }
  [[nodiscard]] std::string_view Label() const noexcept { return chars.Second(); }

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  OmVariable(const OmVariable& other, OmMemoryRegion* region);

  OmCellChars chars;
};

#endif
