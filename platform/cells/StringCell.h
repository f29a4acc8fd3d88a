// OmStringCell, a plain text.

#ifndef PLATFORM_CELLS_STRINGCELL_H
#define PLATFORM_CELLS_STRINGCELL_H

#include <string>
#include <string_view>

#include "platform/cells/CellChars.h"
#include "platform/cells/CellText.h"

// The flag is stored and copied for the producer of the text; nothing here reads it.
class OM_PLATFORM_API OmStringCell : public OmCellText {
 public:
  explicit OmStringCell(std::string_view text, OmMemoryRegion* region = nullptr,
                        bool flag_ = false);
  ~OmStringCell() override;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] bool Flag() const noexcept { return flag; }

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  OmStringCell(const OmStringCell& other, OmMemoryRegion* region);

  bool flag;
  OmCellChars chars;
};

#endif
