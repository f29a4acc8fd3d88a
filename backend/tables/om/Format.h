// Qualtex_Format, the compact descriptor of a value's display format: type, width and decimals.

#ifndef BACKEND_TABLES_OM_FORMAT_H
#define BACKEND_TABLES_OM_FORMAT_H

// Four bytes. A width above 40 is cut to 40 unless the format is a string format at that moment; a
// later change of the type does not restore the old width.
class Qualtex_Format {
 public:
  // The values follow the product's format catalogue, which is not part of this library. The
  // library only distinguishes the two string types from the others; any byte may be stored.
  enum FormatType : unsigned char { kString = 1, kStringHex = 2, kFixed = 5 };

  // Keeps the low 16 bits of `width` and the low 8 bits of `decimals`.
  Qualtex_Format(FormatType type_, int width_, int decimals_) {
    // In this order: the rule for the width depends on the new type.
    Type(type_);
    Width(static_cast<unsigned short>(width_));
    Decimals(static_cast<unsigned char>(decimals_));
  }

  [[nodiscard]] FormatType Type() const noexcept { return type; }
  void Type(FormatType value) noexcept { type = value; }
  // Field width in characters.
  [[nodiscard]] unsigned short Width() const noexcept { return width; }
  void Width(unsigned short w) noexcept { width = w > 40 && !IsString() ? 40 : w; }
  // Number of decimal places.
  [[nodiscard]] unsigned char Decimals() const noexcept { return decimals; }
  void Decimals(unsigned char value) noexcept { decimals = value; }

  [[nodiscard]] bool IsString() const noexcept { return type == 1 || type == 2; }

 private:
  unsigned short width = 0;
  FormatType type = kString;
  unsigned char decimals = 0;
};

// The format of a value without a format of its own. Every source file has its own copy.
static const Qualtex_Format kDefaultFormat(Qualtex_Format::kFixed, 8, 2);

#endif
