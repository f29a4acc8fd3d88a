// OmNumber, a number with its display format.

#ifndef PLATFORM_CELLS_NUMBER_H
#define PLATFORM_CELLS_NUMBER_H

#include <cmath>
#include <string>

#include "backend/tables/om/Format.h"
#include "platform/cells/CellText.h"

// NaN is a missing value, with the text ".". The text of every other number is in fixed notation
// with the decimals of the format, whatever the locale.
class OM_PLATFORM_API OmNumber : public OmCellText {
 public:
  // Has the default format, with no decimals if the number is an integer: 203 shows as "203", and
  // 2.5 as "2.50".
  explicit OmNumber(double value_) noexcept : OmNumber(value_, FormatOf(value_)) {}
  // Metadata, the only memory that a number owns, will be allocated in `region`.
  explicit OmNumber(double value_, const Qualtex_Format& format_,
                    OmMemoryRegion* region = nullptr) noexcept
      : OmCellText(region), value(value_), format(format_) {}
  ~OmNumber() override = default;

  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region = nullptr) const override;
  [[nodiscard]] unsigned long Kind() const noexcept override;
  [[nodiscard]] std::string Text() const override;
  using OmCellText::Accept;
  void Accept(Visitor& visitor) override;

  [[nodiscard]] double Value() const noexcept { return value; }
  [[nodiscard]] const Qualtex_Format& Format() const noexcept { return format; }

  // Returns the text of an OmNumber without constructing one.
  [[nodiscard]] static std::string Text(double value, const Qualtex_Format& format);

 protected:
  [[nodiscard]] Key OrderKey(std::string& composed) const override;

 private:
  // Returns the format of a number that was constructed without one. Inline and without a library
  // call, because it may run for every cell of a table.
  [[nodiscard]] static Qualtex_Format FormatOf(double value) noexcept {
    constexpr double kAllWhole = 9007199254740992;  // 2^53: no larger number has a fraction
    const bool small = value > -kAllWhole && value < kAllWhole;
    const bool whole =
        small ? static_cast<double>(static_cast<long long>(value)) == value : !std::isnan(value);
    return {kDefaultFormat.Type(), kDefaultFormat.Width(), whole ? 0 : kDefaultFormat.Decimals()};
  }
  OmNumber(const OmNumber& other, OmMemoryRegion* region)
      : OmCellText(other, region), value(other.value), format(other.format) {}

  double value;
  Qualtex_Format format;
};

#endif
