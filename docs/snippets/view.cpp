// The snippets of docs/front-end-view.md.

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "backend/tables/om/om.h"
#include "display/display.h"
#include "platform/cells/CellTexts.h"

namespace {

void Add(OmPivotTable& table, const char* name, const std::vector<const char*>& labels) {
  OmDimension* const dimension = table.AddDimension(OmStringCell(name));
  for (const char* const label : labels) {
    dimension->Child(dimension->Root(), OmStringCell(label), dimension->NumCategories(), false);
  }
}

void Build(OmPivotTable& table) {
  Add(table, "Year", {"2023", "2024"});
  Add(table, "Town", {"Oslo", "Rome"});
  Add(table, "Kind", {"Tea", "Coffee"});
  table.Dimension(2)->Root()->Hide(true);  // without its name
  table.Rows().push_back(2);               // the innermost first
  table.Rows().push_back(1);
  table.Columns().push_back(0);
  const OmStringCell estimated("estimated");
  OmCellMetaData meta;
  meta.Footnotes().push_back(table.Footnote(OmFootnote(&estimated, nullptr, nullptr), false));
  OmNumber nine(9);
  nine.setMeta(meta);
  auto* const data = new FormatArea(FormatArea::kArea6);
  data->setUseAltRowColors(true);
  data->setAlternateBackgroundColor("#f3f5f8");
  table.setAreaFormat(data);
  table.Cell({0, 0, 0}, OmNumber(12));
  table.Cell({1, 0, 1}, OmNumber(7));
  table.Cell({0, 1, 1}, nine);
  table.EndTable();
}

// [text]
// Returns a text with the markers of its footnotes; nothing for null.
std::string Marked(const om::VisibleFootnotes& notes, const OmCellText* text) {
  if (text == nullptr) {
    return "";
  }
  std::string marked = text->Text();
  for (const std::string& marker : notes.Markers(*text)) {
    marked += "^" + marker;
  }
  return marked;
}
// [text]

// [head]
void WriteLabel(const std::string& text, om::Place rows, om::Place columns) {
  std::cout << "<th";
  if (rows > 1) {
    std::cout << " rowspan=" << rows;
  }
  if (columns > 1) {
    std::cout << " colspan=" << columns;
  }
  std::cout << ">" << text << "</th>";
}

// The corner is in the first row of column labels and spans all of these rows.
void WriteHead(const om::TableView& view, const om::VisibleFootnotes& notes) {
  const std::vector<om::Label> labels = view.ColumnLabels({0, view.Columns()});
  for (unsigned int level = 0; level != view.ColumnLevels(); ++level) {
    std::cout << "<tr>";
    if (level == 0) {
      for (const om::CornerLabel& corner : view.Corner()) {
        WriteLabel(Marked(notes, corner.text), view.ColumnLevels(), corner.levels);
      }
    }
    for (const om::Label& label : labels) {
      if (label.firstLevel == level) {
        WriteLabel(Marked(notes, label.text), label.levels, label.places);
      }
    }
    std::cout << "</tr>\n";
  }
}
// [head]

// [body]
void WriteBody(const om::TableView& view, const om::VisibleFootnotes& notes) {
  constexpr om::Place kAtOnce = 1000;
  om::Window window;
  for (om::Place first = 0; first < view.Rows(); first += kAtOnce) {
    view.Read({first, std::min(first + kAtOnce, view.Rows())}, {0, view.Columns()}, window);
    auto label = window.rowLabels.begin();
    for (om::Place row = window.rows.first; row != window.rows.last; ++row) {
      std::cout << "<tr>";
      for (; label != window.rowLabels.end() && label->first <= row; ++label) {
        if (!label->before) {  // an earlier window has written the others
          WriteLabel(Marked(notes, label->text), label->places, label->levels);
        }
      }
      for (om::Place column = 0; column != view.Columns(); ++column) {
        std::cout << "<td>" << Marked(notes, window.Cell(row, column)) << "</td>";
      }
      std::cout << "</tr>\n";
    }
  }
}
// [body]

}  // namespace

int main() {
  OmPivotTable table(OmStringCell("Sales"), OmStringCell("Sales"), false);
  Build(table);
  // [make]
  om::TableView view(table);
  const om::VisibleFootnotes notes(view, om::MarkerStyle::kLetters);
  std::cout << view.Title()->Text() << ", " << view.Rows() << " x " << view.Columns() << '\n';
  WriteHead(view, notes);
  WriteBody(view, notes);
  for (const om::VisibleFootnote& note : notes.List()) {
    std::cout << note.marker << " " << note.text->Text() << '\n';
  }
  // [make]

  // [window]
  const om::Window window = view.Read({1, 3}, {0, 1});
  for (const om::Label& label : window.rowLabels) {
    std::cout << label.text->Text() << ": rows " << label.first << " to "
              << label.first + label.places - 1 << (label.before ? ", begins before\n" : "\n");
  }
  // [window]

  // [formats]
  const om::TableFormats formats(table);
  for (om::Place row = 0; row != view.Rows(); ++row) {
    const om::AreaFormat& area = formats.Of(om::TableArea::kData, row);
    const om::AreaFormat shown = om::Styled(area, formats.CellStyle(view, row, 0));
    std::cout << "row " << row << ": '" << shown.backgroundColor << "'\n";
  }
  // [formats]

  // [locate]
  table.Dimension(1)->Root()[0]->Hide(true);  // Oslo
  std::cout << "outdated: " << view.IsOutdated() << '\n';
  view.Renew({.skipEmptyRows = true});
  const om::Location rome = view.Locate({0, 1, 1});
  std::cout << "row " << rome.row << ", column " << rome.column << '\n';
  std::cout << "hidden: " << (view.Locate({0, 0, 0}).absence == om::Absence::kHidden) << '\n';
  std::cout << "empty: " << (view.Locate({0, 1, 0}).absence == om::Absence::kEmpty) << '\n';
  // [locate]

  // [compare]
  OmPivotTable later(OmStringCell("Sales"), OmStringCell("Sales"), false);
  Build(later);
  later.Cell({1, 0, 1}, OmNumber(8));
  table.Dimension(1)->Root()[0]->Hide(false);
  for (const om::Difference& difference : om::Compare(om::TableView(table), om::TableView(later))) {
    std::cout << difference.where << ": " << difference.first << " became " << difference.second
              << '\n';
  }
  // [compare]

  table.Columns().clear();
  table.Layers().push_back(0);
  // [layers]
  view.Renew();  // the years were moved to the layers
  for (bool more = view.FirstLayer(); more; more = view.NextLayer()) {
    for (const om::LayerCategory& category : view.LayerLabels()) {
      for (const om::ConstNode& label : category.labels) {
        std::cout << label->Text()->Text() << ": ";
      }
    }
    std::cout << "layer " << view.Layer() << " of " << view.Layers() << '\n';
  }
  // [layers]
}
