// The snippets of docs/front-end.md: a front end that shows any document as a web page.

#include <deque>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backend/tables/om/om.h"

using om::Cell;

namespace {

using ConstNode = OmDisplayLayerHeading::ConstNode;

// [text]
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    escaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
  }
  return escaped;
}

// The marker of a footnote: its own, or its number.
std::string Marker(const OmPivotTable& table, int note) {
  const OmCellText* const marker = table.Footnotes()[static_cast<unsigned long>(note)].Marker();
  return marker != nullptr ? marker->Text() : std::to_string(note + 1);
}

// Any text of a table, with the markers of the footnotes that it refers to.
std::string Shown(const OmPivotTable& table, const OmCellText* text) {
  if (text == nullptr) {
    return "";
  }
  std::string shown = Escaped(text->Text());
  if (text->hasMeta()) {
    for (const int note : text->getMeta().Footnotes()) {
      shown += "<sup>" + Escaped(Marker(table, note)) + "</sup>";
    }
  }
  return shown;
}

std::string Shown(const OmPivotTable& table, const ConstNode* node) {
  return node != nullptr ? Shown(table, (*node)->Text()) : "";
}
// [text]

// [line]
// A row or a column that is shown: its number in the heading, its labels from the outermost to the
// innermost, and its category in each dimension of the axis.
struct Line {
  int number;
  std::deque<ConstNode*> labels;
  std::deque<ConstNode*> categories;
};

// Whether a row or column is left out. A heading numbers hidden categories too.
bool IsHidden(const Line& line) {
  for (const ConstNode* const category : line.categories) {
    if (category != nullptr && (*category)->Hide()) {
      return true;
    }
  }
  return false;
}

std::vector<Line> Lines(const OmDisplayRowHeading& rows) {
  std::vector<Line> lines;
  for (int r = 0; r < static_cast<int>(rows.NRows()); ++r) {
    Line line{r, rows.Row(r), rows.RowCategories(r)};
    if (!IsHidden(line)) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}
// [line]

std::vector<Line> Lines(const OmDisplayColumnHeading& columns) {
  std::vector<Line> lines;
  for (int c = 0; c < static_cast<int>(columns.NColumns()); ++c) {
    Line line{c, columns.Column(c), columns.ColumnCategories(c)};
    if (!IsHidden(line)) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

// [owners]
// The dimension of the axis that each label of a row or column belongs to. `width` is how many
// labels a dimension has: VisibleWidth of a row heading, VisibleHeight of a column heading.
template <typename Heading>
std::vector<unsigned int> Owners(const Heading& heading,
                                 unsigned short (Heading::*width)(int) const) {
  std::vector<unsigned int> owners;
  for (unsigned int k = 0; k < heading.NDimensions(); ++k) {
    owners.insert(owners.end(), (heading.*width)(static_cast<int>(k)), k);
  }
  return owners;
}
// [owners]

// [spans]
// Whether label `i` of two neighbours is one label that spans both: it is the same node, below the
// same categories of all outer dimensions. These count even if their labels are hidden.
bool IsShared(const Line& a, const Line& b, unsigned long i, unsigned int owner) {
  if (a.labels[i] == nullptr || b.labels[i] == nullptr || *a.labels[i] != *b.labels[i]) {
    return false;
  }
  for (unsigned int k = 0; k < owner; ++k) {
    if (*a.categories[k] != *b.categories[k]) {
      return false;
    }
  }
  return true;
}

// Returns how many lines label `i` of line `from` spans, or 0 if an earlier line's label covers it.
unsigned long Span(const std::vector<Line>& lines, unsigned long from, unsigned long i,
                   unsigned int owner) {
  if (from != 0 && IsShared(lines[from - 1], lines[from], i, owner)) {
    return 0;
  }
  unsigned long end = from + 1;
  while (end != lines.size() && IsShared(lines[end - 1], lines[end], i, owner)) {
    ++end;
  }
  return end - from;
}
// [spans]

// [grid]
void ShowGrid(OmPivotTable& table, OmDisplayLayerHeading& layers) {
  const OmDisplayRowHeading rows(layers, true, true);  // without empty rows, names in the corner
  const OmDisplayColumnHeading columns(layers, true);
  const std::vector<Line> across = Lines(columns);
  const auto columnOwners = Owners(columns, &OmDisplayColumnHeading::VisibleHeight);
  const auto rowOwners = Owners(rows, &OmDisplayRowHeading::VisibleWidth);

  std::cout << "<table>\n";
  // Without a dimension on the columns there is one line, for the corner.
  for (unsigned long i = 0; i == 0 || i < columnOwners.size(); ++i) {
    const bool last = i + 1 >= columnOwners.size();
    std::cout << "<tr>";
    for (const OmCellText* const corner : rows.CornerText()) {
      std::cout << "<td>" << (last ? Shown(table, corner) : "") << "</td>";
    }
    for (unsigned long c = 0; c < across.size() && i < columnOwners.size(); ++c) {
      if (const unsigned long span = Span(across, c, i, columnOwners[i]); span != 0) {
        std::cout << "<th colspan=" << span << ">" << Shown(table, across[c].labels[i]) << "</th>";
      }
    }
    std::cout << "</tr>\n";
  }

  const std::vector<Line> down = Lines(rows);
  std::vector<int> subscripts;
  layers.Fill(subscripts);
  for (unsigned long r = 0; r < down.size(); ++r) {
    std::cout << "<tr>";
    for (unsigned long i = 0; i < rowOwners.size(); ++i) {
      if (const unsigned long span = Span(down, r, i, rowOwners[i]); span != 0) {
        std::cout << "<th rowspan=" << span << ">" << Shown(table, down[r].labels[i]) << "</th>";
      }
    }
    rows.Fill(subscripts, down[r].number);
    for (const Line& column : across) {
      columns.Fill(subscripts, column.number);
      std::cout << "<td>" << Shown(table, table.Cell(subscripts)) << "</td>";
    }
    std::cout << "</tr>\n";
  }
  std::cout << "</table>\n";
}
// [grid]

// [layers]
void ShowTable(OmPivotTable& table) {
  const OmCellText* const title =
      table.TableTitle() != nullptr ? table.TableTitle() : table.Title();
  std::cout << "<h2>" << Shown(table, title) << "</h2>\n";
  OmDisplayLayerHeading layers(table, true);  // only layers that hold a cell
  for (int n = 0; layers.SwitchLayer(n); ++n) {
    for (int i = 0; i < static_cast<int>(layers.NDimensions()); ++i) {
      for (const ConstNode* const node : layers.Nodes(i)) {
        std::cout << "<b>" << Shown(table, node) << "</b> ";
      }
    }
    ShowGrid(table, layers);  // its headings are those of this layer
  }
  if (table.showCaption() && table.Caption() != nullptr) {
    std::cout << "<p>" << Shown(table, table.Caption()) << "</p>\n";
  }
  const OmVector<OmFootnote>& notes = std::as_const(table).Footnotes();
  for (int note = 0; note < static_cast<int>(notes.size()); ++note) {
    std::cout << "<p><sup>" << Marker(table, note) << "</sup> "
              << Shown(table, notes[static_cast<unsigned long>(note)].Text()) << "</p>\n";
  }
}
// [layers]

// [walk]
class Page : public OmOutputPart::Visitor {
 public:
  void Visit(OmPivotTable& part) override {
    if (part.Show()) {
      ShowTable(part);
    }
  }
  void Visit(OmHeading& part) override {
    if (part.Title() != nullptr) {  // null after a setter that failed
      std::cout << "<h1>" << Escaped(part.Title()->Text()) << "</h1>\n";
    }
  }
  void Visit(OmTextBlock& part) override {
    std::cout << "<pre>" << Escaped(part.Text()) << "</pre>\n";
  }
  void Visit(OmChart&) override { std::cout << "<p>(a chart)</p>\n"; }
  void Visit(OmDendrix&) override { std::cout << "<p>(a tree diagram)</p>\n"; }
  void Visit(OmModel&) override { std::cout << "<p>(a model)</p>\n"; }
  void Visit(OmInteractive&) override { std::cout << "<p>(a visualisation)</p>\n"; }
};

void ShowDocument(OmOutputTree& document) {
  Page page;
  for (auto& entry : document.List()) {
    if (entry.Data() != nullptr) {
      entry.Data()->Accept(page);
    }
  }
}
// [walk]

void Add(OmPivotTable& table, const char* name, const std::vector<const char*>& labels) {
  OmDimension& dimension = *table.AddDimension(Cell(name));
  for (const char* const label : labels) {
    dimension.Child(dimension.Root(), Cell(label), dimension.NumCategories(), false);
  }
}

std::unique_ptr<OmPivotTable> Trips() {
  auto table = std::make_unique<OmPivotTable>(Cell("Trips"), Cell("Trips"), false);
  Add(*table, "Year", {"2023", "2024"});
  Add(*table, "Statistics", {"Count", "Share"});
  Add(*table, "Purpose", {"Work", "Leisure"});
  Add(*table, "Means", {"Train"});
  OmDimension& means = *table->Dimension(3);
  const auto road = means.Child(means.Root(), Cell("Road"), OmDimensionNode::kNoSubscript, true);
  means.Child(road, Cell("Bus"), 1, false);
  means.Child(road, Cell("Car"), 2, false);
  table->Layers().push_back(0);
  table->Rows().push_back(1);  // varies fastest
  table->Rows().push_back(2);
  table->Columns().push_back(3);
  int count = 10;
  for (int purpose = 0; purpose < 2; ++purpose) {
    for (int m = 0; m < 3; ++m) {
      table->Cell({1, 0, purpose, m}, Cell(++count));
      table->Cell({1, 1, purpose, m}, Cell(count / 75.0));
    }
  }
  const auto text = Cell("Estimated.");
  OmCellMetaData meta;
  meta.Footnotes().push_back(table->Footnote(OmFootnote(&text, nullptr, nullptr), false));
  table->Cell({1, 0, 1, 2})->setMeta(meta);
  const auto caption = Cell("Source: survey");
  table->Caption(&caption);
  table->EndTable();
  return table;
}

}  // namespace

int main() {
  OmOutputTree document;
  auto heading = document.Root().Child(std::make_unique<OmHeading>(Cell("Travel")));
  heading.Child(Trips());
  ShowDocument(document);
}
