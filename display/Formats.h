// om::TableFormats, how the parts of a table look: the formats of its areas, resolved, and the
// styles of its cells.
//
//   const om::TableFormats formats(table);
//   const om::AreaFormat& labels = formats.Of(om::TableArea::kRowLabels, row);
//   const OmCellProperties* style = formats.CellStyle(view, row, column);
//   const om::AreaFormat all = om::Styled(formats.Of(om::TableArea::kData, row), style);
//
// A table and its front ends have to agree on what each area stands for. The areas here are those
// that this library's writers take; a product with others says so in an AreaMap.

#ifndef DISPLAY_FORMATS_H
#define DISPLAY_FORMATS_H

#include <array>
#include <string>
#include <vector>

#include "backend/tables/om/FormatArea.h"
#include "display/Export.h"
#include "display/TableView.h"

class OmCellProperties;
class OmPivotTable;

namespace om {

// The parts of a table that may have a format each. What the format of a part leaves open, that of
// the whole table says.
enum class TableArea : unsigned char {
  kTable,
  kTitle,
  kLayers,
  kCorner,
  kColumnLabels,
  kRowLabels,
  kData,
  kCaption,
  kFootnotes
};
inline constexpr unsigned int kTableAreas = 9;

// Says which area of the library's formats stands for each part, in the order of TableArea.
using AreaMap = std::array<FormatArea::Area, kTableAreas>;
inline constexpr AreaMap kDefaultAreas = {
    FormatArea::kArea0, FormatArea::kArea1, FormatArea::kArea2,
    FormatArea::kArea3, FormatArea::kArea4, FormatArea::kArea5,
    FormatArea::kArea6, FormatArea::kArea7, FormatArea::kArea8};

// As the integers of FormatArea say them; kUnset is theirs too.
enum class FontStyle : signed char { kUnset = -1, kPlain, kBold, kItalic, kBoldItalic };
enum class Horizontal : signed char { kUnset = -1, kLeft, kCenter, kRight, kDecimal, kMixed };
enum class Vertical : signed char { kUnset = -1, kTop, kCenter, kBottom };

// A format with nothing left to look up. What nobody set is empty, 0 or kUnset, and up to the front
// end. An integer of a FormatArea that no name here stands for counts as not set.
struct AreaFormat {
  std::string fontName;
  float fontSize = 0;  // in points
  FontStyle fontStyle = FontStyle::kUnset;
  bool underline = false;
  Horizontal horizontal = Horizontal::kUnset;
  Vertical vertical = Vertical::kUnset;
  // "#rrggbb", or what else the producer of the table wrote.
  std::string textColor;
  std::string backgroundColor;
  // In points. Those of the part where it has a format, else of the whole table, else -1.
  int marginLeft = -1;
  int marginRight = -1;
  int marginTop = -1;
  int marginBottom = -1;
  int decimalOffset = -1;  // of decimal alignment, in points from the right edge

  [[nodiscard]] bool operator==(const AreaFormat&) const = default;
};

// The formats of a table as they were when this was made; of the table only the cells' styles are
// read later. It may be copied; the table has to outlive it.
class OM_DISPLAY_API TableFormats {
 public:
  explicit TableFormats(const OmPivotTable& table, const AreaMap& areas = kDefaultAreas);

  // Returns the format of a part, for `row` of those parts that follow rows. Every other row, from
  // row 1 on, has the alternate colours of an area that uses them.
  [[nodiscard]] const AreaFormat& Of(TableArea area, Place row = 0) const;
  // Returns whether rows take turns in an area.
  [[nodiscard]] bool Alternates(TableArea area) const;
  // Returns whether the table has any format at all.
  [[nodiscard]] bool Any() const noexcept { return any; }

  // Returns the style of a cell, or null: that which the metadata of the cell names, or where there
  // is no cell, that which the table keeps for the empty place.
  [[nodiscard]] const OmCellProperties* CellStyle(const TableView& view, Place row,
                                                  Place column) const;
  // Returns the style that the metadata of a text names, or null.
  [[nodiscard]] const OmCellProperties* CellStyle(const OmCellText& cell) const;

  // Returns the number by which a table keeps the style of an empty place: that of its subscripts
  // in mixed radix over OmPivotTable::SizeVector(), the first dimension's the most significant.
  [[nodiscard]] static unsigned long long EmptyCellNumber(const OmPivotTable& table,
                                                          const std::vector<int>& subscripts);

 private:
  const OmPivotTable* table;
  std::array<AreaFormat, kTableAreas> plain;
  std::array<AreaFormat, kTableAreas> alternate;
  std::array<bool, kTableAreas> alternates = {};
  bool any = false;
};

// Returns a format with what a cell's style sets put over it; null changes nothing.
[[nodiscard]] OM_DISPLAY_API AreaFormat Styled(const AreaFormat& format,
                                               const OmCellProperties* style);

}  // namespace om

#endif
