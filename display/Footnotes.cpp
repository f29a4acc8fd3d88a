#include "display/Footnotes.h"

#include <algorithm>
#include <array>
#include <set>
#include <tuple>
#include <utility>

#include "backend/tables/om/Footnote.h"
#include "backend/tables/om/PivotTable.h"
#include "display/ViewModelData.h"
#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellText.h"

namespace om {

namespace {

constexpr unsigned int kLetters = 26;

// The earliest cell that refers to a footnote.
struct FirstUse {
  Site layer;
  Site row;
  Site column;
  unsigned long ordinal;  // among the cell's references
  int footnote;

  [[nodiscard]] auto Key() const { return std::tie(layer, row, column, ordinal); }
};

}  // namespace

// Collects the footnotes of a view in reading order. To meet a text is to collect the footnotes
// that it refers to and that were not met before.
class VisibleFootnotes::Collector {
 public:
  Collector(const TableView& view_, MarkerStyle style_)
      : view(view_), style(style_), footnotes(view_.Table().Footnotes()) {
    open = static_cast<unsigned long>(
        std::count_if(footnotes.begin(), footnotes.end(),
                      [](const OmFootnote& footnote) { return footnote.Text() != nullptr; }));
    met.resize(footnotes.size(), false);
    Meet(view.Title());
  }

  // Returns whether there are footnotes that were not met.
  [[nodiscard]] bool Open() const noexcept { return open != 0; }
  void Meet(const OmCellText* text) {
    if (text == nullptr || !text->hasMeta()) {
      return;
    }
    for (const int footnote : text->getMeta().Footnotes()) {
      Meet(footnote);
    }
  }
  void MeetLabels(const std::vector<Label>& labels) {
    for (const Label& label : labels) {
      Meet(label.text);
    }
  }
  // Meets the labels of the current layer of a view, and the corner.
  void MeetLayer(const TableView& at) {
    for (const LayerCategory& category : at.LayerLabels()) {
      for (const ConstNode& node : category.labels) {
        Meet(node->Text());
      }
    }
    for (const CornerLabel& label : at.Corner()) {
      Meet(label.text);
    }
  }
  // Meets all row and column labels of the current layer of a view.
  void MeetHeads(const TableView& at) {
    std::vector<Label> labels = TableView::Data::Columns(at).FirstLabels();
    std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) {
      return std::tie(a.firstLevel, a.first) < std::tie(b.firstLevel, b.first);
    });
    MeetLabels(labels);
    labels = TableView::Data::Rows(at).FirstLabels();
    std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) {
      return std::tie(a.first, a.firstLevel) < std::tie(b.first, b.firstLevel);
    });
    MeetLabels(labels);
  }
  // Finds the first cell that refers to each footnote, in all layers or only in the one at site
  // `layer`.
  void FindUses(bool allLayers, Site layer);
  // Meets the cells of a layer.
  void MeetCells(Site layer) {
    for (; next != uses.size() && uses[next].layer <= layer; ++next) {
      Meet(uses[next].footnote);
    }
  }

  const TableView& view;
  MarkerStyle style;
  const OmVector<OmFootnote>& footnotes;
  std::vector<int> order;

 private:
  [[nodiscard]] bool IsFootnote(int footnote) const {
    const auto i = static_cast<unsigned long>(footnote);
    return footnote >= 0 && i < footnotes.size() && footnotes[i].Text() != nullptr;
  }
  void Meet(int footnote) {
    if (IsFootnote(footnote) && !met[static_cast<unsigned long>(footnote)]) {
      met[static_cast<unsigned long>(footnote)] = true;
      order.push_back(footnote);
      --open;
    }
  }

  std::vector<bool> met;
  unsigned long open = 0;
  std::vector<FirstUse> uses;  // in reading order
  unsigned long next = 0;      // position in `uses`
};

void VisibleFootnotes::Collector::FindUses(bool allLayers, Site layer) {
  const ViewModel& model = TableView::Data::Model(view);
  CellSites at(model);
  std::vector<unsigned long> byFootnote(footnotes.size(), 0);  // one more than its place in `uses`
  model.WalkCells([&](const std::vector<int>& subscripts, OmCellText& cell) {
    if (!cell.hasMeta() || cell.getMeta().Footnotes().size() == 0 || !at.Find(subscripts)) {
      return;
    }
    FirstUse use{layer, at.Rows().front(), at.Columns().front(), 0, 0};
    if (allLayers) {
      use.layer = at.Layers().front();
    } else if (!std::binary_search(at.Layers().begin(), at.Layers().end(), layer)) {
      return;
    }
    for (const int footnote : cell.getMeta().Footnotes()) {
      ++use.ordinal;
      if (!IsFootnote(footnote)) {
        continue;
      }
      use.footnote = footnote;
      unsigned long& known = byFootnote[static_cast<unsigned long>(footnote)];
      if (known == 0) {
        uses.push_back(use);
        known = uses.size();
      } else if (use.Key() < uses[known - 1].Key()) {
        uses[known - 1] = use;
      }
    }
  });
  std::sort(uses.begin(), uses.end(),
            [](const FirstUse& a, const FirstUse& b) { return a.Key() < b.Key(); });
}

VisibleFootnotes::VisibleFootnotes(const TableView& view, MarkerStyle style)
    : VisibleFootnotes([&] {
        Collector collector(view, style);
        if (collector.Open() && view.Layers() != 0) {
          const Site layer = TableView::Data::Model(view).LayerSite(view.Layer());
          collector.MeetLayer(view);
          collector.MeetHeads(view);
          collector.FindUses(false, layer);
          collector.MeetCells(layer);
        }
        return collector;
      }()) {}

VisibleFootnotes::VisibleFootnotes(const TableView& view, const Window& window, MarkerStyle style)
    : VisibleFootnotes([&] {
        Collector collector(view, style);
        if (collector.Open()) {
          collector.MeetLayer(view);
          collector.MeetLabels(window.columnLabels);
          collector.MeetLabels(window.rowLabels);
          for (const OmCellText* const cell : window.cells) {
            collector.Meet(cell);
          }
        }
        return collector;
      }()) {}

VisibleFootnotes VisibleFootnotes::OfAllLayers(const TableView& view, MarkerStyle style) {
  Collector collector(view, style);
  if (collector.Open()) {
    TableView at(view);
    collector.FindUses(true, 0);
    const ViewModel& model = TableView::Data::Model(view);
    const bool same = !view.Options().skipEmptyRows && !view.Options().skipEmptyColumns;
    for (bool more = at.FirstLayer(); more && collector.Open(); more = at.NextLayer()) {
      collector.MeetLayer(at);
      if (at.Layer() == 0 || !same) {
        collector.MeetHeads(at);
      }
      collector.MeetCells(model.LayerSite(at.Layer()));
    }
  }
  return VisibleFootnotes(std::move(collector));
}

VisibleFootnotes::VisibleFootnotes(Collector&& collector)
    : positions(collector.footnotes.size(), -1) {
  collector.Meet(collector.view.Caption());
  std::set<std::string> own;
  for (const int index : collector.order) {
    const OmFootnote& footnote = collector.footnotes[static_cast<unsigned long>(index)];
    VisibleFootnote& note = list.emplace_back();
    note.index = index;
    note.text = footnote.Text();
    note.marker = footnote.Marker() != nullptr ? footnote.Marker()->Text() : "";
    note.own = !note.marker.empty();
    if (note.own) {
      own.insert(note.marker);
    }
    positions[static_cast<unsigned long>(index)] = static_cast<int>(list.size() - 1);
  }
  unsigned int next = 0;
  for (VisibleFootnote& note : list) {
    while (note.marker.empty() || (!note.own && own.count(note.marker) != 0)) {
      note.marker = Marker(collector.style, next++);
    }
  }
}

std::vector<unsigned int> VisibleFootnotes::Of(const OmCellText& text) const {
  std::vector<unsigned int> found;
  if (!text.hasMeta()) {
    return found;
  }
  for (const int footnote : text.getMeta().Footnotes()) {
    const auto i = static_cast<unsigned long>(footnote);
    if (footnote < 0 || i >= positions.size() || positions[i] < 0) {
      continue;
    }
    const auto position = static_cast<unsigned int>(positions[i]);
    if (std::find(found.begin(), found.end(), position) == found.end()) {
      found.push_back(position);
    }
  }
  return found;
}

std::vector<std::string> VisibleFootnotes::Markers(const OmCellText& text) const {
  std::vector<std::string> markers;
  for (const unsigned int position : Of(text)) {
    markers.push_back(list[position].marker);
  }
  return markers;
}

std::string VisibleFootnotes::Marker(MarkerStyle style, unsigned int i) {
  static constexpr std::array<const char*, 6> kSymbols = {"*", "†", "‡", "§", "‖", "¶"};
  std::string marker;
  switch (style) {
    case MarkerStyle::kNumbers:
      return std::to_string(i + 1ULL);
    case MarkerStyle::kSymbols:
      for (unsigned int n = 0; n <= i / kSymbols.size(); ++n) {
        marker += kSymbols[i % kSymbols.size()];
      }
      return marker;
    case MarkerStyle::kLetters:
      break;
  }
  // Letters count without a zero: z is followed by aa.
  for (unsigned long n = i + 1UL; n != 0; n = (n - 1) / kLetters) {
    marker.insert(marker.begin(), static_cast<char>('a' + (n - 1) % kLetters));
  }
  return marker;
}

}  // namespace om
