// OmStringCellUTF8, a plain text in UTF-8, whatever the encoding of the back end.

#ifndef PLATFORM_CELLS_STRINGCELLUTF8_H
#define PLATFORM_CELLS_STRINGCELLUTF8_H

#include <string>
#include <string_view>

#include "platform/cells/CellChars.h"
#include "platform/cells/CellText.h"

class OM_PLATFORM_API OmStringCellUTF8 : public OmCellText {
 public:
  explicit OmStringCellUTF8(std::string_view text, OmMemoryRegion* region = nullptr);
  ~OmStringCellUTF8() override;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  OmStringCellUTF8(const OmStringCellUTF8& other, OmMemoryRegion* region);

  OmCellChars chars;
};

#endif
