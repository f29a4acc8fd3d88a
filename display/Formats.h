// om::TableFormats, how the parts of a table look: the resolved formats of its areas, and the
// styles of its cells.
//
//   const om::TableFormats formats(table);
//   const om::AreaFormat& labels = formats.Of(om::TableArea::kRowLabels, row);
//   const OmCellProperties* style = formats.CellStyle(view, row, column);
//   const om::AreaFormat all = om::Styled(formats.Of(om::TableArea::kData, row), style);
//
// A table and its front ends have to agree on the meaning of each area. The default is
// kDefaultAreas; a product with other areas passes an AreaMap.

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

// The parts of a table that can have a format. A value that the format of a part does not set comes
// from the format of kTable.
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

// The FormatArea of each part, in the order of TableArea.
using AreaMap = std::array<FormatArea::Area, kTableAreas>;
inline constexpr AreaMap kDefaultAreas = {
    FormatArea::kArea0, FormatArea::kArea1, FormatArea::kArea2,
    FormatArea::kArea3, FormatArea::kArea4, FormatArea::kArea5,
    FormatArea::kArea6, FormatArea::kArea7, FormatArea::kArea8};

// The values are the integers of FormatArea, with -1 for "not set".
enum class FontStyle : signed char { kUnset = -1, kPlain, kBold, kItalic, kBoldItalic };
enum class Horizontal : signed char { kUnset = -1, kLeft, kCenter, kRight, kDecimal, kMixed };
enum class Vertical : signed char { kUnset = -1, kTop, kCenter, kBottom };

// A resolved format. A value that is not set is empty, 0 or kUnset; the front end chooses it. An
// integer of a FormatArea that has no enumerator here counts as not set.
struct AreaFormat {
  std::string fontName;
  float fontSize = 0;  // in points
  FontStyle fontStyle = FontStyle::kUnset;
  bool underline = false;
  Horizontal horizontal = Horizontal::kUnset;
  Vertical vertical = Vertical::kUnset;
  // "#rrggbb", or any other text that the producer of the table wrote.
  std::string textColor;
  std::string backgroundColor;
  // In points: those of the part if it has a format, else of kTable if that has one, else -1.
  int marginLeft = -1;
  int marginRight = -1;
  int marginTop = -1;
  int marginBottom = -1;
  int decimalOffset = -1;  // of decimal alignment, in points from the right edge

  [[nodiscard]] bool operator==(const AreaFormat&) const = default;
};

// The formats of a table as they were when this was constructed; only the cells' styles are read
// from the table later. Copyable. The table has to outlive it.
class OM_DISPLAY_API TableFormats {
 public:
  explicit TableFormats(const OmPivotTable& table, const AreaMap& areas = kDefaultAreas);

  // Returns the format of a part. In row labels and data, odd rows have the alternate colours if
  // the area uses them.
  [[nodiscard]] const AreaFormat& Of(TableArea area, Place row = 0) const;
  // Returns whether odd rows of an area have alternate colours.
  [[nodiscard]] bool Alternates(TableArea area) const;
  // Returns whether the table has any format at all.
  [[nodiscard]] bool Any() const noexcept { return any; }

  // Returns the style of a cell, or null. It is the style that the metadata of the cell names or,
  // if there is no cell, the one that the table stores for the empty place.
  [[nodiscard]] const OmCellProperties* CellStyle(const TableView& view, Place row,
                                                  Place column) const;
  // Returns the style that the metadata of a text names, or null.
  [[nodiscard]] const OmCellProperties* CellStyle(const OmCellText& cell) const;

  // Returns the key of an empty place in OmPivotTable::getEmptyCellStyles(): its subscripts as one
  // number in mixed radix over OmPivotTable::SizeVector(), the first dimension most significant.
  [[nodiscard]] static unsigned long long EmptyCellNumber(const OmPivotTable& table,
                                                          const std::vector<int>& subscripts);

 private:
  const OmPivotTable* table;
  std::array<AreaFormat, kTableAreas> plain;
  std::array<AreaFormat, kTableAreas> alternate;
  std::array<bool, kTableAreas> alternates = {};
  bool any = false;
};

// Returns `format` overridden by what a cell's style sets. A null style changes nothing.
[[nodiscard]] OM_DISPLAY_API AreaFormat Styled(const AreaFormat& format,
                                               const OmCellProperties* style);

}  // namespace om

#endif
