#include "examples/report/TableLook.h"

#include <memory>
#include <utility>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"

namespace report {

namespace {

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
    table.setAreaFormat(std::move(data));
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
  table.setAreaFormat(std::move(data));
  table.setAreaFormat(std::move(rows));

  auto columns = Area(area::kColumnLabels, kBottom, -1);
  columns->setFontStyle(kBold);
  columns->setTextColor("#27415f");
  table.setAreaFormat(std::move(columns));

  auto corner = Area(area::kCorner, kBottom, kLeft);
  corner->setFontStyle(kBold);
  corner->setTextColor("#27415f");
  table.setAreaFormat(std::move(corner));

  auto footnotes = std::make_unique<FormatArea>(area::kFootnotes);
  footnotes->setFontSize(9);
  footnotes->setMarginLeft(2);
  table.setAreaFormat(std::move(footnotes));
}

}  // namespace report
