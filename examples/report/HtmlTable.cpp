#include "examples/report/HtmlTable.h"

#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string_view>
#include <vector>

#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/PivotTable.h"
#include "examples/report/HtmlFootnotes.h"
#include "examples/report/HtmlGrid.h"
#include "examples/report/HtmlText.h"
#include "platform/cells/CellText.h"

namespace report {

namespace {

// Places for cells up to which a table is shown with its empty rows and columns.
constexpr double kMaxWholeCells = 250000;

double Places(const OmPivotTable& table) {
  double places = 1;
  for (const int size : table.SizeVector()) {
    places *= size;
  }
  return places;
}

// The layers of a table, one after the other, with or without what is empty.
class Layers {
 public:
  Layers(OmPivotTable& table, bool skipEmpty, const HtmlFootnotes& footnotes_)
      : footnotes(footnotes_),
        heading(table, skipEmpty),
        // A dense table without its empty rows has other rows in every layer.
        fixed(!skipEmpty || IsSparse(table)) {
    Next();
  }

  [[nodiscard]] bool AtEnd() const { return atEnd; }
  void Next() {
    atEnd = !heading.NextLayer();
    if (!fixed) {
      grid.reset();
    }
  }

  // Returns what the menus select the current layer by: the categories' subscripts.
  [[nodiscard]] std::string Key() const {
    std::vector<int> subscripts;
    heading.Fill(subscripts);
    std::string key;
    for (unsigned i = 0; i < heading.NDimensions(); ++i) {
      const auto dimension =
          static_cast<std::size_t>(heading.getDimensionIndex(static_cast<int>(i)));
      key += (i == 0 ? "" : ",") + std::to_string(subscripts[dimension]);
    }
    return key;
  }

  // Returns the current layer as markup.
  [[nodiscard]] std::string Markup() {
    if (!grid.has_value()) {
      grid.emplace(heading, footnotes);
    }
    std::ostringstream out;
    if (grid->IsEmpty()) {
      out << "<p class=none>This layer has no cells.</p>\n";
    } else {
      grid->Write(out);
    }
    return out.str();
  }

 private:
  const HtmlFootnotes& footnotes;
  OmDisplayLayerHeading heading;
  bool fixed;
  bool atEnd = false;
  std::optional<HtmlGrid> grid;
};

// What all layers of a table look like together.
struct Views {
  std::string markup;
  std::string initialKey;
  bool differ = false;  // with and without what is empty
  bool any = false;     // layer at all
  bool shown = false;   // a layer when the page is opened
};

class TableWriter {
 public:
  TableWriter(std::ostream& out_, OmPivotTable& table_, const HtmlTablePlace& place_)
      : out(out_),
        table(table_),
        place(place_),
        footnotes(table_, place_.id),
        tooLarge(Places(table_) > kMaxWholeCells),
        packedFirst(place_.skipEmpty || tooLarge) {}

  void Write();

 private:
  Views Render();
  void AddLayer(Views& views, const std::string& key, const char* view, const std::string& markup,
                bool initial);
  void WriteControls(const Views& views);
  void WriteMenu(int dimension, const std::string& selected);

  std::ostream& out;
  OmPivotTable& table;
  const HtmlTablePlace& place;
  HtmlFootnotes footnotes;
  bool tooLarge;
  bool packedFirst;  // whether the page starts without what is empty
};

void TableWriter::AddLayer(Views& views, const std::string& key, const char* view,
                           const std::string& markup, bool initial) {
  // Layers of the view that the page starts with are marked for readers without scripts.
  const bool starts = view != std::string_view(packedFirst ? "whole" : "packed");
  views.markup += std::string("<div class=") + (starts ? "\"layer start\"" : "layer") +
                  " data-key=\"" + key + "\" data-view=" + view + (initial ? ">\n" : " hidden>\n") +
                  markup + "</div>\n";
  views.any = true;
  views.shown = views.shown || initial;
}

// The layers that hold cells come in the order of all layers, so both are walked side by side.
Views TableWriter::Render() {
  Views views;
  Layers packed(table, true, footnotes);
  if (tooLarge) {
    views.initialKey = packed.AtEnd() ? "" : packed.Key();
    for (; !packed.AtEnd(); packed.Next()) {
      AddLayer(views, packed.Key(), "packed", packed.Markup(), !views.any);
    }
    return views;
  }

  Layers whole(table, false, footnotes);
  int initial = packedFirst ? -1 : std::max(table.getLayerLoc(), 0);
  if (packedFirst && !packed.AtEnd()) {
    views.initialKey = packed.Key();
  }
  for (; !whole.AtEnd(); whole.Next(), --initial) {
    const std::string key = whole.Key();
    const std::string markup = whole.Markup();
    if (initial == 0) {
      views.initialKey = key;
    }
    const bool current = packedFirst ? views.initialKey == key : initial == 0;
    if (packed.AtEnd() || packed.Key() != key) {
      AddLayer(views, key, "whole", markup, current && !packedFirst);
      views.differ = true;
      continue;
    }
    const std::string packedMarkup = packed.Markup();
    packed.Next();
    if (markup == packedMarkup) {
      AddLayer(views, key, "both", markup, current);
    } else {
      AddLayer(views, key, "whole", markup, current && !packedFirst);
      AddLayer(views, key, "packed", packedMarkup, current && packedFirst);
      views.differ = true;
    }
  }
  return views;
}

// Writes the menu of a layer dimension, with one option for each category.
void TableWriter::WriteMenu(int dimension, const std::string& selected) {
  const OmDimHeader header(table.Dimension(dimension), nullptr);
  bool named = false;
  for (unsigned long leaf = 0; leaf < header.leafSubscripts.size(); ++leaf) {
    const OmDimHeader::Path& path = header.nodePaths[leaf];
    if (!named) {
      const OmCellText* name = path[path.size() - 1]->Text();
      out << "<label>" << (name != nullptr ? Escape(name->Text()) : "Layer")
          << " <select autocomplete=off>";
      named = true;
    }
    std::string label;
    for (unsigned long i = path.size() - 1; i-- > 0;) {
      const OmCellText* text = path[i]->Text();
      if (text != nullptr && (!path[i]->Hide() || i == 0)) {
        label += (label.empty() ? "" : " › ") + Escape(text->Text());
      }
    }
    const std::string value = std::to_string(header.leafSubscripts[leaf]);
    out << "<option value=" << value << (value == selected ? " selected" : "") << ">" << label
        << "</option>";
  }
  out << (named ? "</select></label>\n" : "");
}

void TableWriter::WriteControls(const Views& views) {
  const OmDisplayLayerHeading heading(table, false);
  if (heading.NDimensions() == 0 && !views.differ) {
    return;
  }
  out << "<div class=controls>\n";
  std::istringstream key(views.initialKey);
  for (unsigned i = 0; i < heading.NDimensions(); ++i) {
    std::string selected;
    std::getline(key, selected, ',');
    WriteMenu(heading.getDimensionIndex(static_cast<int>(i)), selected);
  }
  if (views.differ) {
    out << "<label><input type=checkbox class=skip autocomplete=off"
        << (packedFirst ? " checked" : "") << "> Skip empty rows, columns and layers</label>\n";
  }
  out << "</div>\n";
}

void TableWriter::Write() {
  const OmCellText* title = table.TableTitle() != nullptr ? table.TableTitle() : table.Title();
  const char* kind = table.IsWarnings() ? " warnings" : table.IsNotes() ? " notes" : "";
  const Views views = Render();
  out << "<figure class=\"table" << kind << (place.look.empty() ? "" : " ") << place.look
      << "\" id=\"" << place.id << "\" tabindex=-1>\n";
  if (table.IsNotes()) {
    out << "<details class=notes-body><summary class=title id=\"" << place.id << "-title\">"
        << footnotes.Marked(title) << "</summary>\n";
  } else {
    out << "<figcaption class=title id=\"" << place.id << "-title\">" << footnotes.Marked(title)
        << "</figcaption>\n";
  }
  WriteControls(views);
  out << "<div class=scroll role=region tabindex=0 aria-labelledby=\"" << place.id << "-title\">\n"
      << views.markup << "<p class=none" << (views.shown ? " hidden" : "")
      << ">This layer has no cells.</p>\n</div>\n";
  if (tooLarge) {
    out << "<p class=note>Empty rows, columns and layers are left out.</p>\n";
  }
  if (table.Caption() != nullptr && table.showCaption()) {
    out << "<p class=caption>" << footnotes.Marked(table.Caption()) << "</p>\n";
  }
  footnotes.Write(out);
  out << (table.IsNotes() ? "</details>\n" : "") << "</figure>\n";
}

}  // namespace

void WriteTable(std::ostream& out, OmPivotTable& table, const HtmlTablePlace& place) {
  TableWriter(out, table, place).Write();
}

}  // namespace report
