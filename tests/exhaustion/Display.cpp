// The table of operations: what front ends ask of a table.

#include "display/display.h"
#include "backend/tables/om/om.h"
#include "tests/exhaustion/Exhaustion.h"

namespace {

const std::string kText("twenty-four bytes of it.");
const OmStringCell kCell(kText);

std::string Show(const std::vector<om::LayerCategory>& categories) {
  std::string shown;
  for (const om::LayerCategory& category : categories) {
    shown += Fields(category.dimension, category.subscript, Show(category.category->Text()),
                    category.labels.size());
  }
  return shown;
}

std::string Show(const std::vector<om::Label>& labels) {
  std::string shown;
  for (const om::Label& label : labels) {
    shown += Fields(::Show(label.text), label.firstLevel, label.levels, label.first, label.places);
  }
  return shown;
}

std::string Show(const om::Window& window) {
  std::string shown = Show(window.rowLabels) + Show(window.columnLabels);
  for (const OmCellText* const cell : window.cells) {
    shown += ::Show(cell);
  }
  return shown;
}

std::string Show(const om::VisibleFootnotes& notes) {
  std::string shown;
  for (const om::VisibleFootnote& note : notes.List()) {
    shown += Fields(note.index, note.marker);
  }
  return shown;
}

std::string Show(const std::vector<om::ConstNode>& nodes) {
  std::string shown;
  for (const om::ConstNode& node : nodes) {
    shown += ::Show(node->Text());
  }
  return shown;
}

// A view with several layers, of which some places are left out, and a table that differs.
struct Views : ExhaustionFixture {
  Views() { Fill(table), Fill(other), other.Cell({0, 1, 0}, OmNumber(3)), view.Renew(); }
  static void Fill(OmPivotTable& table) {
    for (const char* name : {"row", "column", "layer"}) {
      OmDimension& dimension = *table.AddDimension(OmStringCell(name));
      const auto group = dimension.Child(dimension.Root(), OmStringCell("group"), ~0UL, true);
      for (unsigned long i = 0; i != 3; ++i) {
        dimension.Child(i != 2 ? group : dimension.Root(),
                        OmStringCell(kText + name + std::to_string(i)), i, false);
      }
    }
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    table.Footnote(OmFootnote(&kCell, nullptr, nullptr), true);
    table.Footnote(OmFootnote(&kCell, &kCell, nullptr), true);
    OmCellMetaData meta;
    meta.Footnotes().push_back(1);
    meta.Footnotes().push_back(0);
    meta.Style(0);
    OmStringCell marked("marked");
    marked.setMeta(meta);
    table.Cell({0, 1, 0}, marked);
    table.Cell({2, 2, 1}, OmNumber(1));
    table.cellStyles().resize(1);
    table.cellStyles()[0].fontFamily = kText;
    table.emptyCellStyles()[0] = 0;
    table.setLayerLoc(1);
  }
  std::string State() {
    return Fields(view.Layers(), view.Layer(), view.Rows(), view.Columns(), view.RowLevels(),
                  view.ColumnLevels(), view.Options().skipEmptyRows, view.Title() != nullptr,
                  view.Caption() != nullptr, &view.Table() == &table) +
           Show(view.Read({0, view.Rows()}, {0, view.Columns()}));
  }
  void Readers() {
    const om::Location at = view.Locate({2, 2, 1});
    seen = Fields(view.IsOutdated(), view.TableLayer().value_or(9), Show(view.LayerLabels()),
                  Show(view.LayerLabels(0)), ListOf(view.LayerDimensions()),
                  Show(view.LayerCategories(0)), view.Corner().size(), at.layer, at.row,
                  ::Show(view.Cell(0, 0)), ListOf(view.Subscripts(0, 0)),
                  Show(view.RowLabels({0, 1})), Show(view.ColumnLabels({0, 1})),
                  Show(view.RowCategories(0)), Show(view.ColumnCategories(0)));
  }
  void Again() {
    om::Window window = view.Read({0, 1}, {0, 1});
    view.Read({0, view.Rows()}, {0, view.Columns()}, window);
    seen = Show(window);
  }
  void Notes() {
    const om::VisibleFootnotes notes(view, om::MarkerStyle::kLetters);
    const om::VisibleFootnotes some(view, view.Read({0, 1}, {0, 1}), om::MarkerStyle::kSymbols);
    const OmCellText& cell = *table.Cell({0, 1, 0});
    seen = Fields(Show(notes), Show(some), ListOf(notes.Of(cell)), ListOf(notes.Markers(cell)),
                  Show(om::VisibleFootnotes::OfAllLayers(view, om::MarkerStyle::kNumbers)),
                  om::VisibleFootnotes::Marker(om::MarkerStyle::kSymbols, 99));
  }
  void Formats() {
    const om::TableFormats formats(table);
    const OmCellProperties* const style = formats.CellStyle(*table.Cell({0, 1, 0}));
    seen = Fields(om::Styled(formats.Of(om::TableArea::kData, 1), style).fontName,
                  formats.Alternates(om::TableArea::kData), formats.Any(),
                  formats.CellStyle(view, 0, 0) == style,
                  om::TableFormats::EmptyCellNumber(table, {1, 1, 1}));
  }
  void Compare() {
    std::string told;
    for (const om::Difference& difference : om::Compare(view, om::TableView(other))) {
      told += Fields(difference.where, difference.first, difference.second);
    }
    seen = told;
  }

  OmPivotTable table{OmStringCell("title"), OmStringCell("template"), true};
  OmPivotTable other{OmStringCell("other"), OmStringCell("template"), true};
  om::TableView view{table, {.skipEmptyRows = true, .skipEmptyColumns = true}};
};

TEST(Exhaustion, Views) {
  UNCHANGED(Views, f.Readers(), f.Again(), f.Notes(), f.Formats(), f.Compare(), f.view.Renew(),
            f.view.Renew({.skipEmptyLayers = true}), f.view = om::TableView(f.table),
            om::TableView(f.view).Renew(), f.view.SwitchLayer(0), f.view.SwitchToLayerOf({0, 0, 2}),
            f.view.FirstLayer(), f.view.NextLayer(),
            f.seen = Fields(om::NumberOf(kCell).has_value()));
}

}  // namespace
