// OmNumber, a number with its display format.

#ifndef PLATFORM_CELLS_NUMBER_H
#define PLATFORM_CELLS_NUMBER_H

#include <string>

#include "backend/tables/om/Format.h"
#include "platform/cells/CellText.h"

// A number that is none (NaN) is missing, and its text is ".". The text of every other number is in
// fixed notation with the decimals of the format, whatever the locale.
class OM_PLATFORM_API OmNumber : public OmCellText {
 public:
  // Metadata, the only thing that a number holds outside itself, will live in `region`.
  explicit OmNumber(double value_, const Qualtex_Format& format_ = kDefaultFormat,
                    OmMemoryRegion* region = nullptr) noexcept
      : OmCellText(region), value(value_), format(format_) {}
  ~OmNumber() override = default;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] double Value() const noexcept { return value; }
  [[nodiscard]] const Qualtex_Format& Format() const noexcept { return format; }

  // Returns the text of a number without making one.
  [[nodiscard]] static std::string Text(double value, const Qualtex_Format& format);

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  OmNumber(const OmNumber& other, OmMemoryRegion* region)
      : OmCellText(other, region), value(other.value), format(other.format) {}

  double value;
  Qualtex_Format format;
};

#endif
