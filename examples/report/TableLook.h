// What the area formats of a table mean to this back end and its front ends, and the look that the
// back end gives its tables.

#ifndef EXAMPLES_REPORT_TABLELOOK_H
#define EXAMPLES_REPORT_TABLELOOK_H

#include "backend/tables/om/FormatArea.h"

class OmPivotTable;

namespace report {

// The areas of a table. A front end takes each area's format over that of the whole table.
namespace area {
inline constexpr auto kTable = FormatArea::kArea0;
inline constexpr auto kTitle = FormatArea::kArea1;
inline constexpr auto kLayers = FormatArea::kArea2;
inline constexpr auto kCorner = FormatArea::kArea3;
inline constexpr auto kColumnLabels = FormatArea::kArea4;
inline constexpr auto kRowLabels = FormatArea::kArea5;
inline constexpr auto kData = FormatArea::kArea6;
inline constexpr auto kCaption = FormatArea::kArea7;
inline constexpr auto kFootnotes = FormatArea::kArea8;
}  // namespace area

// Font sizes and margins are in points. A colour is "#rrggbb" or a name.
enum FontStyle : int { kPlain = 0, kBold = 1, kItalic = 2, kBoldItalic = 3 };
enum HorizontalAlignment : int { kLeft = 0, kCentre = 1, kRight = 2 };
enum VerticalAlignment : int { kTop = 0, kMiddle = 1, kBottom = 2 };

// Gives a table its area formats: warnings stand out, other tables have quiet labels, and the data
// are striped where the table has no groups of rows to read along.
void ApplyLook(OmPivotTable& table);

}  // namespace report

#endif
