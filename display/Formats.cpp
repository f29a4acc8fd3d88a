#include "display/Formats.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "backend/tables/MultiBase.h"
#include "backend/tables/om/PivotTable.h"
#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellProperties.h"
#include "platform/cells/CellText.h"

namespace om {

namespace {

// Returns the enumerator of an integer from 0 to `last`, kUnset for any other.
template <typename Enumeration>
Enumeration Named(int value, Enumeration last) {
  return value >= 0 && value <= static_cast<int>(last) ? static_cast<Enumeration>(value)
                                                       : Enumeration::kUnset;
}

template <typename Enumeration>
void Put(Enumeration& to, Enumeration value) {
  to = value != Enumeration::kUnset ? value : to;
}

void Put(std::string& to, const std::string& value) {
  if (!value.empty()) {
    to = value;
  }
}

// Overrides `format` by what an area sets. Margins have no value for "not set", so those of the
// innermost area with a format are used.
void PutArea(AreaFormat& format, const FormatArea& area) {
  Put(format.fontName, area.getFontName());
  if (area.getFontSize() > 0) {
    format.fontSize = area.getFontSize();
  }
  Put(format.fontStyle, Named(area.getFontStyle(), FontStyle::kBoldItalic));
  format.underline = format.underline || area.getUnderline();
  Put(format.horizontal, Named(area.getHorizontalAlignment(), Horizontal::kMixed));
  Put(format.vertical, Named(area.getVerticalAlignment(), Vertical::kBottom));
  Put(format.textColor, area.getTextColor());
  Put(format.backgroundColor, area.getBackgroundColor());
  format.marginLeft = area.getMarginLeft();
  format.marginRight = area.getMarginRight();
  format.marginTop = area.getMarginTop();
  format.marginBottom = area.getMarginBottom();
}

std::string ColorText(int color) {
  char text[8];
  std::snprintf(text, sizeof(text), "#%06x", static_cast<unsigned int>(color) & 0xFFFFFFU);
  return text;
}

// Returns the style with that number, or null if there is none.
const OmCellProperties* StyleAt(const OmPivotTable& table, int number) {
  const std::vector<OmCellProperties>& styles = table.getCellStyles();
  const auto i = static_cast<unsigned long>(number);
  return number >= 0 && i < styles.size() ? &styles[i] : nullptr;
}

}  // namespace

TableFormats::TableFormats(const OmPivotTable& table_, const AreaMap& areas) : table(&table_) {
  AreaFormat whole;
  const FormatArea* const wholeArea = table->getAreaFormat(areas[0]);
  for (unsigned long i = 0; i != kTableAreas; ++i) {
    const FormatArea* const area = i == 0 ? wholeArea : table->getAreaFormat(areas[i]);
    AreaFormat& format = plain[i];
    format = whole;
    if (area != nullptr) {
      PutArea(format, *area);
      any = true;
    }
    if (i == 0) {
      whole = format;
    }
    // An area without alternate colours has those of the whole table.
    const FormatArea* rows = area != nullptr && area->getUseAltRowColors() ? area : wholeArea;
    const bool followsRows = i == static_cast<unsigned long>(TableArea::kRowLabels) ||
                             i == static_cast<unsigned long>(TableArea::kData);
    alternates[i] = followsRows && rows != nullptr && rows->getUseAltRowColors();
    alternate[i] = format;
    if (rows != nullptr && alternates[i]) {
      Put(alternate[i].textColor, rows->getAlternateTextColor());
      Put(alternate[i].backgroundColor, rows->getAlternateBackgroundColor());
    }
  }
}

const AreaFormat& TableFormats::Of(TableArea area, Place row) const {
  const auto i = static_cast<unsigned long>(area);
  return row % 2 == 0 ? plain.at(i) : alternate.at(i);
}

bool TableFormats::Alternates(TableArea area) const {
  return alternates.at(static_cast<unsigned long>(area));
}

const OmCellProperties* TableFormats::CellStyle(const TableView& view, Place row,
                                                Place column) const {
  if (const OmCellText* const cell = view.Cell(row, column); cell != nullptr) {
    return CellStyle(*cell);
  }
  if (table->getEmptyCellStyles().empty()) {
    return nullptr;
  }
  const std::vector<int> subscripts = view.Subscripts(row, column);
  if (std::any_of(subscripts.begin(), subscripts.end(), [](int s) { return s < 0; })) {
    return nullptr;
  }
  const auto found = table->getEmptyCellStyles().find(EmptyCellNumber(*table, subscripts));
  return found != table->getEmptyCellStyles().end() ? StyleAt(*table, found->second) : nullptr;
}

const OmCellProperties* TableFormats::CellStyle(const OmCellText& cell) const {
  return cell.hasMeta() ? StyleAt(*table, cell.getMeta().Style()) : nullptr;
}

unsigned long long TableFormats::EmptyCellNumber(const OmPivotTable& table,
                                                 const std::vector<int>& subscripts) {
  const std::vector<int> sizes = table.SizeVector();
  if (subscripts.size() != sizes.size() ||
      std::any_of(subscripts.begin(), subscripts.end(), [](int s) { return s < 0; })) {
    throw std::invalid_argument(
        "A place of the table has one subscript per dimension, none of them negative.");
  }
  const MultiBase base(std::vector<unsigned int>(sizes.begin(), sizes.end()));
  return subscripts.empty()
             ? 0
             : base.Value(std::vector<unsigned int>(subscripts.begin(), subscripts.end()));
}

AreaFormat Styled(const AreaFormat& format, const OmCellProperties* style) {
  AreaFormat styled(format);
  if (style == nullptr) {
    return styled;
  }
  Put(styled.fontName, style->fontFamily);
  if (style->fontSize > 0) {
    styled.fontSize = static_cast<float>(style->fontSize);
  }
  const bool bold = style->bold || format.fontStyle == FontStyle::kBold ||
                    format.fontStyle == FontStyle::kBoldItalic;
  const bool italic = style->italic || format.fontStyle == FontStyle::kItalic ||
                      format.fontStyle == FontStyle::kBoldItalic;
  if (style->bold || style->italic) {
    styled.fontStyle = bold && italic ? FontStyle::kBoldItalic
                       : bold         ? FontStyle::kBold
                                      : FontStyle::kItalic;
  }
  styled.underline = format.underline || style->underline;
  if (style->textColor != OmCellProperties::kNoColor) {
    styled.textColor = ColorText(style->textColor);
  }
  if (style->backgroundColor != OmCellProperties::kNoColor) {
    styled.backgroundColor = ColorText(style->backgroundColor);
  }
  // The enumerations of OmCellProperties start with kUnset as 0, those here as -1.
  Put(styled.horizontal, static_cast<Horizontal>(static_cast<int>(style->horizontal) - 1));
  Put(styled.vertical, static_cast<Vertical>(static_cast<int>(style->vertical) - 1));
  styled.decimalOffset = style->decimalOffset >= 0 ? style->decimalOffset : styled.decimalOffset;
  return styled;
}

}  // namespace om
