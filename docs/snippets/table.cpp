// The snippets of docs/build-a-table.md.

#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "backend/tables/om/om.h"

namespace {

// [marked]
// Returns a text with the markers of its footnotes, which its metadata lists.
std::string Marked(const OmPivotTable& table, const OmCellText& text) {
  std::string marked = text.Text();
  if (text.hasMeta()) {  // getMeta() requires it
    for (const int note : text.getMeta().Footnotes()) {
      const OmCellText* const marker = table.Footnotes()[static_cast<unsigned long>(note)].Marker();
      marked += "^" + (marker != nullptr ? marker->Text() : "*");
    }
  }
  return marked;
}
// [marked]

}  // namespace

int main() {
  // [create]
  OmPivotTable table(OmStringCell("Survival by class"), OmStringCell("Counts"), false);
  table.SetTableTitle(OmStringCell("Survival by class"));
  table.setBackendSettings(BackendSettings());
  // [create]

  // [dimensions]
  OmDimension* const fate = table.AddDimension(OmStringCell("Fate"));  // dimension 0
  fate->Child(fate->Root(), OmStringCell("Saved"), 0, false);
  fate->Child(fate->Root(), OmStringCell("Lost"), 1, false);

  OmDimension* const cls = table.AddDimension(OmStringCell("Class"));  // dimension 1
  auto passengers = cls->Child(cls->Root(), OmStringCell("Passengers"),
                               OmDimensionNode::kNoSubscript, true);  // a group
  cls->Child(passengers, OmStringCell("First"), 0, false);
  cls->Child(passengers, OmStringCell("Second"), 1, false);
  cls->Child(cls->Root(), OmStringCell("Crew"), 2, false);
  // [dimensions]

  // [axes]
  table.Columns().push_back(0);
  table.Rows().push_back(1);
  // [axes]

  // [cells]
  const Qualtex_Format whole(Qualtex_Format::kFixed, 8, 0);
  const int saved[] = {203, 118, 212};
  const int lost[] = {122, 167, 673};
  for (int c = 0; c < 3; ++c) {
    table.Cell({0, c}, OmNumber(saved[c], whole));  // one subscript per dimension
    table.Cell({1, c}, OmNumber(lost[c], whole));
  }
  // [cells]

  // [footnotes]
  const OmStringCell text("Third class left out.");
  const OmStringCell marker("a");
  const int note = table.Footnote(OmFootnote(&text, &marker, nullptr), false);
  OmCellMetaData meta;
  meta.Footnotes().push_back(note);
  table.Cell({0, 1})->setMeta(meta);  // the cell of those saved in second class
  // [footnotes]

  // [formats]
  auto titles = std::make_unique<FormatArea>(FormatArea::kArea1);
  titles->setFontName("Serif");
  titles->setFontSize(11);
  table.setAreaFormat(std::move(titles));  // the table owns it now
  const OmStringCell caption("Source: the board of inquiry");
  table.Caption(&caption);
  table.CornerText(nullptr);  // none
  // [formats]

  // [end]
  table.EndTable();  // every dimension has to be on an axis
  // [end]

  // [print]
  table.Print();
  // [print]

  // [layers]
  OmPivotTable byPort(OmStringCell("Survival by port"), OmStringCell("Counts"), false);
  byPort.CopyDimensions(table);
  OmDimension* const port = byPort.AddDimension(OmStringCell("Port"));  // dimension 2
  port->Child(port->Root(), OmStringCell("Cherbourg"), 0, false);
  port->Child(port->Root(), OmStringCell("Queenstown"), 1, false);
  byPort.Columns().push_back(0);
  byPort.Rows().push_back(1);
  byPort.Layers().push_back(2);
  byPort.setLayerLoc(1);  // Queenstown first
  byPort.EndTable();
  // [layers]
  std::cout << Marked(table, *table.Cell({0, 1})) << '\n';
}
