#include "examples/report/HtmlGrid.h"

#include <ostream>
#include <string>

#include "backend/tables/om/PivotTable.h"
#include "examples/report/ShownCell.h"
#include "platform/cells/CellText.h"

namespace report {

namespace {

std::string Attribute(const char* name, unsigned span) {
  return span > 1 ? std::string(" ") + name + "=" + std::to_string(span) : std::string();
}

const OmCellText* TextOf(const HeadSpans::ConstNode* node) {
  return node == nullptr ? nullptr : (*node)->Text();
}

// Writes one label. `along` is its extent in the direction in which the heading runs.
void WriteLabel(std::ostream& out, const std::string& text, unsigned colspan, unsigned rowspan,
                const char* scope) {
  const std::string spans = Attribute("colspan", colspan) + Attribute("rowspan", rowspan);
  if (text.empty()) {
    out << "<td class=label" << spans << "></td>";
  } else {
    out << "<th class=label scope=" << scope << spans << ">" << text << "</th>";
  }
}

std::vector<unsigned> Widths(const OmDisplayRowHeading& rows) {
  std::vector<unsigned> widths;
  for (unsigned k = 0; k < rows.NDimensions(); ++k) {
    widths.push_back(rows.VisibleWidth(static_cast<int>(k)));
  }
  return widths;
}

std::vector<unsigned> Heights(const OmDisplayColumnHeading& columns) {
  std::vector<unsigned> heights;
  for (unsigned k = 0; k < columns.NDimensions(); ++k) {
    heights.push_back(columns.VisibleHeight(static_cast<int>(k)));
  }
  return heights;
}

}  // namespace

HtmlGrid::HtmlGrid(OmDisplayLayerHeading& layer_, const HtmlFootnotes& footnotes_)
    : layer(layer_),
      footnotes(footnotes_),
      rows(layer_, layer_.SkipEmpty(), true),
      columns(layer_, layer_.SkipEmpty()),
      rowSpans(
          rows.NRows(), Widths(rows), [this](int row) { return rows.Row(row); },
          [this](int row) { return rows.RowCategories(row); }),
      columnSpans(
          columns.NColumns(), Heights(columns),
          [this](int column) { return columns.Column(column); },
          [this](int column) { return columns.ColumnCategories(column); }) {}

void HtmlGrid::Write(std::ostream& out) const {
  out << "<table>\n";
  WriteLayerNames(out);
  WriteColumnGroups(out);
  WriteHead(out);
  WriteBody(out);
  out << "</table>\n";
}

void HtmlGrid::WriteLayerNames(std::ostream& out) const {
  std::string names;
  for (unsigned i = 0; i < layer.NDimensions(); ++i) {
    std::string name;
    for (const HeadSpans::ConstNode* node : layer.Nodes(static_cast<int>(i))) {
      const std::string text = footnotes.Marked(TextOf(node));
      name += (name.empty() || text.empty() ? "" : ": ") + text;
    }
    names += (names.empty() || name.empty() ? "" : ", ") + name;
  }
  if (!names.empty()) {
    out << "<caption class=layers>" << names << "</caption>\n";
  }
}

// One group for the row labels, and one for each label of the outermost level over the columns.
void HtmlGrid::WriteColumnGroups(std::ostream& out) const {
  if (rowSpans.Levels() != 0) {
    out << "<colgroup span=" << rowSpans.Levels() << "></colgroup>";
  }
  if (columnSpans.Levels() == 0) {
    out << "<colgroup span=" << columnSpans.Places() << "></colgroup>\n";
    return;
  }
  for (unsigned column = 0; column < columnSpans.Places(); ++column) {
    if (columnSpans.At(column, 0).places != 0) {
      out << "<colgroup span=" << columnSpans.At(column, 0).places << "></colgroup>";
    }
  }
  out << '\n';
}

// The corner's texts stand over the row labels, at the foot of the column labels.
void HtmlGrid::WriteCorner(std::ostream& out, unsigned headRows) const {
  const std::vector<const OmCellText*> corner = rows.CornerText();
  const unsigned width = rowSpans.Levels();
  for (unsigned column = 0; column < width;) {
    const OmCellText* text = column < corner.size() ? corner[column] : nullptr;
    unsigned colspan = 1;
    while (column + colspan < width &&
           (column + colspan >= corner.size() || corner[column + colspan] == nullptr)) {
      ++colspan;
    }
    const std::string spans = Attribute("colspan", colspan) + Attribute("rowspan", headRows);
    if (text != nullptr) {
      out << "<th class=corner scope=" << (colspan > 1 ? "colgroup" : "col") << spans << ">"
          << footnotes.Marked(text) << "</th>";
    } else {
      out << "<td class=corner" << spans << "></td>";
    }
    column += colspan;
  }
}

void HtmlGrid::WriteHead(std::ostream& out) const {
  const std::vector<const OmCellText*> corner = rows.CornerText();
  const bool hasCorner = std::any_of(corner.begin(), corner.end(),
                                     [](const OmCellText* text) { return text != nullptr; });
  const unsigned levels = columnSpans.Levels();
  const unsigned headRows = std::max(levels, hasCorner ? 1U : 0U);
  if (headRows == 0) {
    return;
  }
  out << "<thead>\n";
  for (unsigned row = 0; row < headRows; ++row) {
    out << "<tr>";
    if (row == 0) {
      WriteCorner(out, headRows);
    }
    if (levels == 0) {
      out << "<td class=label" << Attribute("colspan", columnSpans.Places()) << "></td>";
    }
    for (unsigned column = 0; column < columnSpans.Places() && row < levels; ++column) {
      const HeadSpans::Span& span = columnSpans.At(column, row);
      if (span.places != 0) {
        WriteLabel(out, footnotes.Marked(TextOf(columnSpans.Node(column, row))), span.places,
                   span.levels, span.places > 1 ? "colgroup" : "col");
      }
    }
    out << "</tr>\n";
  }
  out << "</thead>\n";
}

// Rows that share their outermost label form a body of their own.
void HtmlGrid::WriteBody(std::ostream& out) const {
  std::vector<int> subscripts;
  layer.Fill(subscripts);
  out << "<tbody>\n";
  for (unsigned row = 0; row < rowSpans.Places(); ++row) {
    if (row != 0 && rowSpans.Levels() > 1 && rowSpans.At(row, 0).places != 0) {
      out << "</tbody>\n<tbody>\n";
    }
    out << (row % 2 == 0 ? "<tr>" : "<tr class=alternate>");
    for (unsigned level = 0; level < rowSpans.Levels(); ++level) {
      const HeadSpans::Span& span = rowSpans.At(row, level);
      if (span.places != 0) {
        WriteLabel(out, footnotes.Marked(TextOf(rowSpans.Node(row, level))), span.levels,
                   span.places, span.places > 1 ? "rowgroup" : "row");
      }
    }
    rows.Fill(subscripts, static_cast<int>(row));
    WriteCells(out, subscripts);
    out << "</tr>\n";
  }
  out << "</tbody>\n";
}

void HtmlGrid::WriteCells(std::ostream& out, std::vector<int>& subscripts) const {
  for (unsigned column = 0; column < columnSpans.Places(); ++column) {
    columns.Fill(subscripts, static_cast<int>(column));
    OmCellText* const cell = ShownCell(layer.Table(), subscripts);
    if (cell == nullptr) {
      out << "<td></td>";
      continue;
    }
    out << (IsNumber(*cell) ? "<td>" : "<td class=text>") << footnotes.Marked(cell) << "</td>";
  }
}

}  // namespace report
