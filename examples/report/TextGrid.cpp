#include "examples/report/TextGrid.h"

#include <algorithm>
#include <array>
#include <ostream>

#include "examples/report/DisplayText.h"

namespace report {

namespace {

constexpr int kFrame = 3;  // columns that a cell takes beside its text: one line, two blanks
constexpr int kMinTextWidth = 12;  // a text is not broken narrower than this
constexpr int kMaxHeadWidth = 32;  // nor is one in a heading column left wider than this

constexpr unsigned kUp = 1;
constexpr unsigned kDown = 2;
constexpr unsigned kLeft = 4;
constexpr unsigned kRight = 8;

// The character where the lines of these directions meet.
const char* Junction(unsigned directions, bool ascii) {
  static constexpr std::array<const char*, 16> kBox = {" ", "│", "│", "│", "─", "┘", "┐", "┤",
                                                       "─", "└", "┌", "├", "─", "┴", "┬", "┼"};
  if (!ascii) {
    return kBox[directions];
  }
  const bool vertical = (directions & (kUp | kDown)) != 0;
  const bool horizontal = (directions & (kLeft | kRight)) != 0;
  return vertical && horizontal ? "+" : vertical ? "|" : horizontal ? "-" : " ";
}

void Pad(std::string& line, int count) {
  line.append(static_cast<std::size_t>(std::max(count, 0)), ' ');
}

// Returns the width of a cell's text, its marker counted, when it is broken at `limit`.
int TextWidth(const TextGrid::Cell& cell, int limit) {
  int width = 0;
  for (const std::string& line : BreakLines(cell.text, limit)) {
    width = std::max(width, DisplayWidth(line));
  }
  return width + DisplayWidth(cell.marker);
}

}  // namespace

// The heading columns and a run of others, as they stand side by side.
class TextGrid::Block {
 public:
  Block(const TextGrid& grid_, int pageWidth) : grid(&grid_) {
    textLimit = std::clamp((pageWidth - 2 * kFrame - 1) / 2, kMinTextWidth, kMaxHeadWidth);
    for (std::size_t column = 0; column < grid->headColumns; ++column) {
      Append(column);
    }
    textLimit = std::max(kMinTextWidth, pageWidth - Width() - kFrame);
  }

  void Append(std::size_t column) { columns.push_back(Measure(column)); }
  void DropLast() { columns.pop_back(); }
  // Widens columns until the headings that stand over several of them fit. Called once, at the end.
  void FitSpans();
  // Returns the width with all frames, the headings over several columns counted.
  [[nodiscard]] int Width() const;
  void Draw(std::ostream& out, bool ascii) const;

 private:
  struct Column {
    std::size_t column;
    int width;        // of the texts, markers included
    int markerWidth;  // of the markers behind numbers
  };
  // A run of places that show one text.
  struct Span {
    std::size_t first;
    std::size_t last;
    const Cell* cell;
    int width;
  };

  using Rest = std::vector<std::vector<std::string>>;

  [[nodiscard]] Column Measure(std::size_t column) const;
  [[nodiscard]] bool Joined(std::size_t row, std::size_t place) const;
  [[nodiscard]] std::vector<Span> Spans(std::size_t row) const;
  [[nodiscard]] std::vector<std::string> Lines(const Span& span) const;
  [[nodiscard]] bool Flows(std::size_t row, std::size_t place) const;
  void DrawRow(std::ostream& out, std::size_t row, bool ascii, Rest& rest) const;
  void DrawRule(std::ostream& out, std::size_t row, bool ascii) const;

  const TextGrid* grid;
  int textLimit;  // no text of a column is left wider
  std::vector<Column> columns;
};

// Returns what a column needs by itself: its numbers in full, its texts and then its heads in
// lines.
TextGrid::Block::Column TextGrid::Block::Measure(std::size_t column) const {
  int numbers = 0;
  int texts = 1;
  int markers = 0;
  for (std::size_t row = grid->rows; row-- > 0;) {
    const Cell& cell = grid->At(row, column);
    if (cell.joinRight || (column > 0 && grid->At(row, column - 1).joinRight)) {
      continue;
    }
    const bool head = row < grid->headRows;
    if (cell.align == Align::kRight && !head) {
      numbers = std::max(numbers, DisplayWidth(cell.text));
      markers = std::max(markers, DisplayWidth(cell.marker));
    } else {
      // The rows come from below, so a head finds the width of what stands under it.
      const int body = std::max(numbers + markers, texts);
      texts = std::max(texts, TextWidth(cell, head ? std::max(body, kMinTextWidth) : textLimit));
    }
  }
  return {column, std::max(numbers + markers, texts), markers};
}

bool TextGrid::Block::Joined(std::size_t row, std::size_t place) const {
  return place + 1 < columns.size() && grid->At(row, columns[place].column).joinRight;
}

std::vector<TextGrid::Block::Span> TextGrid::Block::Spans(std::size_t row) const {
  std::vector<Span> spans;
  for (std::size_t first = 0; first < columns.size();) {
    std::size_t last = first;
    int width = columns[first].width;
    while (Joined(row, last)) {
      ++last;
      width += columns[last].width + kFrame;
    }
    // The text may stand in a cell further left that an earlier block holds.
    std::size_t anchor = columns[first].column;
    while (anchor > 0 && grid->At(row, anchor - 1).joinRight) {
      --anchor;
    }
    spans.push_back({first, last, &grid->At(row, anchor), width});
    first = last + 1;
  }
  return spans;
}

void TextGrid::Block::FitSpans() {
  for (std::size_t row = 0; row < grid->rows; ++row) {
    for (const Span& span : Spans(row)) {
      if (!span.cell->joinRight) {
        continue;
      }
      const int need = TextWidth(*span.cell, std::max(span.width, kMinTextWidth));
      const auto count = static_cast<int>(span.last - span.first + 1);
      for (int i = 0; i < need - span.width; ++i) {
        ++columns[span.first + static_cast<std::size_t>(i % count)].width;
      }
    }
  }
}

int TextGrid::Block::Width() const {
  int width = 1;
  for (const Column& column : columns) {
    width += column.width + kFrame;
  }
  return width;
}

// Returns the lines of a span, each as wide as the span.
std::vector<std::string> TextGrid::Block::Lines(const Span& span) const {
  const Cell& cell = *span.cell;
  const int markerWidth = DisplayWidth(cell.marker);
  const bool number = cell.align == Align::kRight;
  // Numbers keep the room of the widest marker free, so that they stand one below the other.
  const int room = number ? std::max(columns[span.first].markerWidth, markerWidth) : 0;
  std::vector<std::string> lines =
      BreakLines(cell.text, std::max(1, span.width - std::max(room, markerWidth)));
  for (std::string& line : lines) {
    const bool last = &line == &lines.back();
    const int used = DisplayWidth(line) + (last || number ? markerWidth : 0);
    const int left = span.width - used - (number ? room - markerWidth : 0);
    const int before = number ? left : cell.align == Align::kCentre ? left / 2 : 0;
    std::string padded;
    Pad(padded, before);
    padded += line;
    if (last) {
      padded += cell.marker;
    }
    Pad(padded, span.width - DisplayWidth(padded));
    line = padded;
  }
  return lines;
}

void TextGrid::Block::DrawRule(std::ostream& out, std::size_t row, bool ascii) const {
  // The rule stands above `row`; row 0 and the one past the end have the frame there.
  const bool top = row == 0;
  const bool bottom = row == grid->rows;
  const auto segment = [&](std::size_t place) {
    return top || bottom || !grid->At(row - 1, columns[place].column).joinDown;
  };
  std::string line;
  bool any = false;
  for (std::size_t place = 0; place <= columns.size(); ++place) {
    const bool edge = place == 0 || place == columns.size();
    unsigned directions = 0;
    directions |= !top && (edge || !Joined(row - 1, place - 1)) ? kUp : 0;
    directions |= !bottom && (edge || !Joined(row, place - 1)) ? kDown : 0;
    directions |= place > 0 && segment(place - 1) ? kLeft : 0;
    directions |= place < columns.size() && segment(place) ? kRight : 0;
    line += Junction(directions, ascii);
    if (place < columns.size()) {
      const bool drawn = segment(place);
      any = any || drawn;
      for (int i = 0; i < columns[place].width + kFrame - 1; ++i) {
        line += drawn ? Junction(kLeft | kRight, ascii) : " ";
      }
    }
  }
  if (any) {
    out << line << '\n';
  }
}

// Tells whether the text of a heading goes on in the row below.
bool TextGrid::Block::Flows(std::size_t row, std::size_t place) const {
  const std::size_t column = columns[place].column;
  const bool heading = row < grid->headRows || column < grid->headColumns;
  return heading && grid->At(row, column).joinDown && grid->At(row + 1, column).text.empty();
}

// Draws one row. `rest` holds, for each place, the lines that the rows above had no room for.
void TextGrid::Block::DrawRow(std::ostream& out, std::size_t row, bool ascii, Rest& rest) const {
  const char* vertical = Junction(kUp | kDown, ascii);
  const std::vector<Span> spans = Spans(row);
  std::vector<std::vector<std::string>> texts;
  std::size_t height = 1;
  for (const Span& span : spans) {
    std::vector<std::string>& left = rest[span.first];
    texts.push_back(left.empty() ? Lines(span) : std::move(left));
    left.clear();
    if (!Flows(row, span.first)) {
      height = std::max(height, texts.back().size());
    }
  }
  for (std::size_t i = 0; i < height; ++i) {
    std::string line = vertical;
    for (std::size_t s = 0; s < spans.size(); ++s) {
      line += ' ';
      if (i < texts[s].size()) {
        line += texts[s][i];
      } else {
        Pad(line, spans[s].width);
      }
      line += std::string(" ") + vertical;
    }
    out << line << '\n';
  }
  for (std::size_t s = 0; s < spans.size(); ++s) {
    if (texts[s].size() > height) {
      rest[spans[s].first].assign(texts[s].begin() + static_cast<long>(height), texts[s].end());
    }
  }
}

void TextGrid::Block::Draw(std::ostream& out, bool ascii) const {
  Rest rest(columns.size());
  for (std::size_t row = 0; row < grid->rows && out; ++row) {
    DrawRule(out, row, ascii);
    DrawRow(out, row, ascii, rest);
  }
  DrawRule(out, grid->rows, ascii);
}

TextGrid::TextGrid(std::size_t rows_, std::size_t columns_, std::size_t headRows_,
                   std::size_t headColumns_)
    : rows(rows_),
      columns(columns_),
      headRows(headRows_),
      headColumns(headColumns_),
      cells(rows_ * columns_) {}

TextGrid::Cell& TextGrid::At(std::size_t row, std::size_t column) {
  return cells[row * columns + column];
}

const TextGrid::Cell& TextGrid::At(std::size_t row, std::size_t column) const {
  return cells[row * columns + column];
}

void TextGrid::Draw(std::ostream& out, int width, bool ascii) const {
  std::size_t next = headColumns;
  do {
    if (next > headColumns) {
      out << "\n(continued)\n";
    }
    // At least one column, and then as many as fit.
    Block block(*this, width);
    std::size_t count = 0;
    while (next + count < columns && (count == 0 || block.Width() <= width)) {
      block.Append(next + count);
      ++count;
    }
    Block fitted(block);
    fitted.FitSpans();
    while (count > 1 && fitted.Width() > width) {
      block.DropLast();
      --count;
      fitted = block;
      fitted.FitSpans();
    }
    fitted.Draw(out, ascii);
    next += count;
  } while (next < columns && out);
}

}  // namespace report
