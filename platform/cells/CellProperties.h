// OmCellProperties, a style that cells are shown in. Tables keep a list of them, and the metadata
// of a cell names one by its index.

#ifndef PLATFORM_CELLS_CELLPROPERTIES_H
#define PLATFORM_CELLS_CELLPROPERTIES_H

#include <string>

// A plain record. The table's look determines what is not set.
class OmCellProperties {
 public:
  enum class Horizontal : unsigned char { kUnset, kLeft, kCenter, kRight, kDecimal, kMixed };
  enum class Vertical : unsigned char { kUnset, kTop, kCenter, kBottom };

  // A colour as 0xRRGGBB.
  static constexpr int kNoColor = -1;

  std::string fontFamily;  // empty if not set
  int fontSize = -1;       // in points; -1 if not set
  int textColor = kNoColor;
  int backgroundColor = kNoColor;
  int decimalOffset = -1;  // in points, from the right edge; -1 if not set
  Horizontal horizontal = Horizontal::kUnset;
  Vertical vertical = Vertical::kUnset;
  bool bold = false;
  bool italic = false;
  bool underline = false;

  [[nodiscard]] bool operator==(const OmCellProperties&) const = default;
};

#endif
