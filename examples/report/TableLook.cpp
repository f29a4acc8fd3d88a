#include "examples/report/TableLook.h"

#include <memory>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"

namespace report {

namespace {

// Hands a format over to the table.
void Set(OmPivotTable& table, std::unique_ptr<FormatArea> format) {
  table.setAreaFormat(format.get());
  static_cast<void>(format.release());
}

std::unique_ptr<FormatArea> Area(FormatArea::Area which, int vertical, int horizontal) {
  auto format = std::make_unique<FormatArea>(which);
  format->setMarginLeft(7);
  format->setMarginRight(7);
  format->setMarginTop(3);
  format->setMarginBottom(3);
  format->setVerticalAlignment(vertical);
  format->setHorizontalAlignment(horizontal);
  return format;
}

// Tells whether labels go over several rows.
bool HasRowGroups(const OmPivotTable& table) {
  if (table.Rows().size() != 1) {
    return !table.Rows().empty();
  }
  const OmDimension& dimension = *table.Dimension(table.Rows()[0]);
  for (auto node = dimension.Root().Begin(); node != dimension.Root().End(); ++node) {
    if (node->IsGroup()) {
      return true;
    }
  }
  return false;
}

}  // namespace

void ApplyLook(OmPivotTable& table) {
  auto data = Area(area::kData, kTop, -1);
  if (table.IsWarnings()) {
    data->setTextColor("#7a2e0e");
    data->setBackgroundColor("#fdf1e7");
    data->setHorizontalAlignment(kLeft);
    Set(table, std::move(data));
    return;
  }
  auto rows = Area(area::kRowLabels, kTop, kLeft);
  rows->setTextColor("#27415f");
  if (!HasRowGroups(table)) {
    for (FormatArea* format : {data.get(), rows.get()}) {
      format->setUseAltRowColors(true);
      format->setAlternateBackgroundColor("#f3f5f8");
    }
  }
  Set(table, std::move(data));
  Set(table, std::move(rows));

  auto columns = Area(area::kColumnLabels, kBottom, -1);
  columns->setFontStyle(kBold);
  columns->setTextColor("#27415f");
  Set(table, std::move(columns));

  auto corner = Area(area::kCorner, kBottom, kLeft);
  corner->setFontStyle(kBold);
  corner->setTextColor("#27415f");
  Set(table, std::move(corner));

  auto footnotes = std::make_unique<FormatArea>(area::kFootnotes);
  footnotes->setFontSize(9);
  footnotes->setMarginLeft(2);
  Set(table, std::move(footnotes));
}

}  // namespace report
