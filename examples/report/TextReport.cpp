#include "examples/report/TextReport.h"

#include <deque>
#include <ostream>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/TextBlock.h"
#include "backend/tables/om/Vector.h"
#include "examples/report/CellFootnotes.h"
#include "examples/report/DisplayText.h"
#include "examples/report/ShownCell.h"
#include "examples/report/TextGrid.h"
#include "platform/cells/CellTexts.h"

namespace report {

namespace {

using ConstNode = OmVectorTree<OmDimensionNode>::ConstNode;
using Labels = std::deque<ConstNode*>;

// Tells whether two headings show one label in place `i`, below or beside the same ones.
bool SameLabels(const Labels& a, const Labels& b, std::size_t i) {
  for (std::size_t k = 0; k <= i; ++k) {
    const bool same = a[k] == nullptr || b[k] == nullptr ? a[k] == b[k] : *a[k] == *b[k];
    if (!same) {
      return false;
    }
  }
  return true;
}

// Tells for each heading level whether it is the last one of its dimension.
template <typename Levels>
std::vector<bool> DimensionEnds(unsigned dimensions, Levels levels) {
  std::vector<bool> ends;
  for (unsigned k = 0; k < dimensions; ++k) {
    const std::size_t count = levels(static_cast<int>(k));
    ends.resize(ends.size() + count, false);
    if (count != 0) {
      ends.back() = true;
    }
  }
  return ends;
}

const OmCellText* LabelText(const ConstNode* node) {
  return node == nullptr ? nullptr : (*node)->Text();
}

}  // namespace

// One layer of a table on its way into a grid: the corner, the column heads, the row heads, the
// cells.
class TextReport::LayerGrid {
 public:
  LayerGrid(const TextReport& report_, OmPivotTable& table_, OmDisplayLayerHeading& layer_)
      : report(report_),
        table(table_),
        layer(layer_),
        rows(layer_, report_.style.skipEmpty, true),
        columns(layer_, report_.style.skipEmpty),
        corner(rows.CornerText()),
        headRows(columns.NRows()),
        headColumns(rows.NColumns()) {
    for (const OmCellText* text : corner) {
      headRows = std::max<std::size_t>(headRows, text != nullptr ? 1 : 0);
    }
  }

  [[nodiscard]] bool IsEmpty() const { return rows.NRows() == 0 || columns.NColumns() == 0; }
  [[nodiscard]] TextGrid Build() const;

 private:
  void Set(TextGrid::Cell& cell, const OmCellText* text, TextGrid::Align align) const;
  void BuildCorner(TextGrid& grid) const;
  void BuildColumnHeads(TextGrid& grid) const;
  void BuildRowHeads(TextGrid& grid) const;
  void BuildCells(TextGrid& grid) const;

  const TextReport& report;
  OmPivotTable& table;
  OmDisplayLayerHeading& layer;
  OmDisplayRowHeading rows;
  OmDisplayColumnHeading columns;
  std::vector<const OmCellText*> corner;
  std::size_t headRows;
  std::size_t headColumns;
};

void TextReport::LayerGrid::Set(TextGrid::Cell& cell, const OmCellText* text,
                                TextGrid::Align align) const {
  if (text != nullptr) {
    cell.text = text->Text();
    cell.marker = report.Markers(table, *text);
    cell.align = align;
  }
}

// The corner's texts stand at the foot of the column heads, each over the columns of its dimension.
void TextReport::LayerGrid::BuildCorner(TextGrid& grid) const {
  const std::vector<bool> ends =
      DimensionEnds(rows.NDimensions(), [this](int k) { return rows.VisibleWidth(k); });
  for (std::size_t row = 0; row < headRows; ++row) {
    for (std::size_t column = 0; column < headColumns; ++column) {
      TextGrid::Cell& cell = grid.At(row, column);
      cell.joinDown = row + 1 < headRows;
      cell.joinRight = !ends[column];
      if (!cell.joinDown) {
        Set(cell, corner[column], TextGrid::Align::kLeft);
      }
    }
  }
}

void TextReport::LayerGrid::BuildColumnHeads(TextGrid& grid) const {
  const std::size_t labelRows = columns.NRows();
  const std::vector<bool> ends =
      DimensionEnds(columns.NDimensions(), [this](int k) { return columns.VisibleHeight(k); });
  Labels labels = columns.Column(0);
  for (std::size_t column = 0; column < columns.NColumns(); ++column) {
    const bool last = column + 1 == columns.NColumns();
    Labels next = last ? Labels() : columns.Column(static_cast<int>(column + 1));
    for (std::size_t row = 0; row < labelRows; ++row) {
      TextGrid::Cell& cell = grid.At(row, headColumns + column);
      cell.joinRight = !last && SameLabels(labels, next, row);
      // A label goes on downwards where its dimension has nothing below it.
      cell.joinDown = !ends[row] && labels[row + 1] == nullptr;
      const bool anchor = column == 0 || !grid.At(row, headColumns + column - 1).joinRight;
      if (anchor) {
        Set(cell, LabelText(labels[row]), TextGrid::Align::kCentre);
      }
    }
    labels.swap(next);
  }
}

void TextReport::LayerGrid::BuildRowHeads(TextGrid& grid) const {
  const std::vector<bool> ends =
      DimensionEnds(rows.NDimensions(), [this](int k) { return rows.VisibleWidth(k); });
  Labels labels = rows.Row(0);
  Labels before;
  for (std::size_t row = 0; row < rows.NRows(); ++row) {
    const bool last = row + 1 == rows.NRows();
    Labels next = last ? Labels() : rows.Row(static_cast<int>(row + 1));
    // The first column in which the next row has another label; a rule begins there unless it is
    // the innermost one.
    std::size_t change = 0;
    while (!last && change < headColumns && SameLabels(labels, next, change)) {
      ++change;
    }
    const bool rule = !last && change + 1 < headColumns;
    for (std::size_t column = 0; column < grid.Columns(); ++column) {
      TextGrid::Cell& cell = grid.At(headRows + row, column);
      cell.joinDown = !last && (!rule || column < change);
      if (column >= headColumns) {
        continue;
      }
      cell.joinRight = !ends[column] && labels[column + 1] == nullptr;
      const bool repeated =
          !before.empty() && column < before.size() && SameLabels(before, labels, column);
      if (!repeated || column + 1 == headColumns) {
        Set(cell, LabelText(labels[column]), TextGrid::Align::kLeft);
      }
    }
    before.swap(labels);
    labels.swap(next);
  }
}

void TextReport::LayerGrid::BuildCells(TextGrid& grid) const {
  std::vector<int> subscripts;
  layer.Fill(subscripts);
  for (std::size_t row = 0; row < rows.NRows(); ++row) {
    rows.Fill(subscripts, static_cast<int>(row));
    for (std::size_t column = 0; column < columns.NColumns(); ++column) {
      columns.Fill(subscripts, static_cast<int>(column));
      if (OmCellText* const cell = ShownCell(table, subscripts); cell != nullptr) {
        Set(grid.At(headRows + row, headColumns + column), cell,
            IsNumber(*cell) ? TextGrid::Align::kRight : TextGrid::Align::kLeft);
      }
    }
  }
}

TextGrid TextReport::LayerGrid::Build() const {
  TextGrid grid(headRows + rows.NRows(), headColumns + columns.NColumns(), headRows, headColumns);
  BuildCorner(grid);
  BuildColumnHeads(grid);
  BuildRowHeads(grid);
  BuildCells(grid);
  return grid;
}

TextReport::TextReport(std::ostream& out_, const TextStyle& style_) : out(out_), style(style_) {}

void TextReport::Write(OmOutputTree& document) {
  for (ListTreeData<OmOutputPart*>& entry : document.List()) {
    level = entry.Level();
    if (entry.Data() != nullptr) {
      entry.Data()->Accept(*this);
    }
  }
}

void TextReport::Heading(const std::string& text, const char* line) {
  int width = 0;
  for (const std::string& part : BreakLines(text, style.width)) {
    out << part << '\n';
    width = std::max(width, DisplayWidth(part));
  }
  for (int i = 0; i < width; ++i) {
    out << line;
  }
  out << "\n\n";
}

void TextReport::Paragraph(const std::string& text) {
  for (const std::string& line : BreakLines(text, style.width)) {
    out << line << '\n';
  }
}

void TextReport::Visit(OmHeading& part) {
  if (level == 0) {
    return;  // the document as a whole, which the page title names
  }
  const bool top = level == 1;
  Heading(part.Title()->Text(), style.ascii ? (top ? "=" : "-") : (top ? "═" : "─"));
}

void TextReport::Visit(OmPageTitle& part) {
  Heading(part.Text(), style.ascii ? "=" : "═");
}

void TextReport::Visit(OmTextBlock& part) {
  if (!part.IsLog()) {
    Paragraph(part.Title()->Text() + ":");
  }
  Paragraph(part.Text());
  for (const std::string& line : part.Lines()) {
    Paragraph(line);
  }
  out << '\n';
}

void TextReport::Picture(const char* kind, OmOutputPart& part) {
  Paragraph(std::string("[") + kind + "] " + part.Title()->Text());
  out << '\n';
}

void TextReport::Visit(OmChart& part) {
  Picture("chart", part);
}

void TextReport::Visit(OmDendrix& part) {
  Picture("tree diagram", part);
}

void TextReport::Visit(OmModel& part) {
  Picture("model", part);
}

void TextReport::Visit(OmInteractive& part) {
  Picture("interactive", part);
}

void TextReport::Visit(OmPivotTable& part) {
  if (!part.Show()) {
    return;
  }
  OmDisplayLayerHeading layer(part, style.skipEmpty);
  if (!layer.NextLayer()) {
    TableTitle(part);
    out << "(empty)\n\n";
    return;
  }
  do {
    Layer(part, layer);
  } while (layer.NextLayer() && out);
}

void TextReport::TableTitle(OmPivotTable& table) {
  const OmCellText* title = table.TableTitle() != nullptr ? table.TableTitle() : table.Title();
  Paragraph(title->Text() + Markers(table, *title));
}

void TextReport::Layer(OmPivotTable& table, OmDisplayLayerHeading& layer) {
  TableTitle(table);
  for (unsigned i = 0; i < layer.NDimensions(); ++i) {
    std::string line;
    for (const ConstNode* node : layer.Nodes(static_cast<int>(i))) {
      if (const OmCellText* text = LabelText(node)) {
        line += (line.empty() ? "" : ": ") + text->Text() + Markers(table, *text);
      }
    }
    Paragraph(line);
  }
  const LayerGrid grid(*this, table, layer);
  if (grid.IsEmpty()) {
    out << "(empty)\n";
  } else {
    grid.Build().Draw(out, style.width, style.ascii);
  }
  if (table.Caption() != nullptr && table.showCaption()) {
    Paragraph(table.Caption()->Text() + Markers(table, *table.Caption()));
  }
  Footnotes(table);
  out << '\n';
}

void TextReport::Footnotes(const OmPivotTable& table) {
  const OmVector<OmFootnote>& footnotes = table.Footnotes();
  for (unsigned long i = 0; i < footnotes.size(); ++i) {
    if (footnotes[i].Text() != nullptr) {
      Paragraph(Marker(table, static_cast<int>(i)) + " " + footnotes[i].Text()->Text());
    }
  }
}

// Returns the footnote's own marker, or one made from its place in the list: a, b, …, then 27, 28,
// …
std::string TextReport::Marker(const OmPivotTable& table, int footnote) const {
  static const char* const kRaised[] = {"ᵃ", "ᵇ", "ᶜ", "ᵈ", "ᵉ", "ᶠ", "ᵍ", "ʰ",
                                        "ⁱ", "ʲ", "ᵏ", "ˡ", "ᵐ", "ⁿ", "ᵒ", "ᵖ"};
  constexpr int kRaisedCount = sizeof(kRaised) / sizeof(kRaised[0]);
  const OmCellText* own = table.Footnotes()[static_cast<unsigned long>(footnote)].Marker();
  if (own != nullptr) {
    return "[" + own->Text() + "]";
  }
  if (!style.ascii && footnote < kRaisedCount) {
    return kRaised[footnote];
  }
  return "[" +
         (footnote < 26 ? std::string(1, static_cast<char>('a' + footnote))
                        : std::to_string(footnote + 1)) +
         "]";
}

std::string TextReport::Markers(const OmPivotTable& table, const OmCellText& text) const {
  std::string markers;
  for (const int footnote : FootnotesOf(text)) {
    if (footnote >= 0 && static_cast<unsigned long>(footnote) < table.Footnotes().size()) {
      markers += Marker(table, footnote);
    }
  }
  return markers;
}

}  // namespace report
