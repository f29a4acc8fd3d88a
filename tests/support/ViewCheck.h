// The view of random tables, with every option and random hiding, against a plain second reading of
// places, spans, footnotes and both ways.

#ifndef TESTS_SUPPORT_VIEWCHECK_H
#define TESTS_SUPPORT_VIEWCHECK_H

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "backend/tables/om/Footnote.h"
#include "display/Footnotes.h"
#include "display/TableView.h"
#include "platform/cells/CellMetaData.h"
#include "tests/support/LayoutCheck.h"

namespace view_model {

using layout_model::Dims;
using layout_model::LayoutModel;
using layout_model::Payloads;
using layout_model::Subscripts;
using om::Absence;
using om::Place;
using om::PlaceRange;
using Combination = std::vector<unsigned long>;  // a leaf of each dimension of an axis
using Combinations = std::vector<Combination>;
using Axes = std::vector<Combinations>;  // of layers, rows, columns

// All that is said of a label: node, dimension, level, first level, levels, first place, places,
// whether it begins before the window and goes on behind it.
using Said =
    std::tuple<const OmDimensionNode*, int, unsigned, unsigned, unsigned, Place, Place, bool, bool>;

inline std::vector<Said> SaidOf(const std::vector<om::Label>& labels) {
  std::vector<Said> said;
  for (const om::Label& label : labels) {
    const OmDimensionNode* const node = label.IsBlank() ? nullptr : &*label.node;
    EXPECT_EQ(label.text, node != nullptr ? node->Text() : nullptr);
    said.emplace_back(node, label.dimension, label.level, label.firstLevel, label.levels,
                      label.first, label.places, label.before, label.behind);
  }
  return said;
}

// The view straight from the paths of the categories, by trying every place.
class Twin {
 public:
  Twin(const LayoutModel& model_, const om::ViewOptions& options_)
      : model(model_), options(options_), dims{model.layers, model.rows, model.columns} {
    for (const Dims& axis : dims) {
      all.push_back(Combine(axis));
      for (const unsigned long d : axis) {
        used.insert(d);
      }
    }
  }

  [[nodiscard]] unsigned long Count() const {
    return all[0].size() * std::max(1UL, all[1].size()) * std::max(1UL, all[2].size());
  }

  // Tries every place, and keeps what is to be shown.
  void Find() {
    for (const Combination& layer : all[0]) {
      std::vector<bool> filled[2] = {std::vector<bool>(all[1].size()),
                                     std::vector<bool>(all[2].size())};
      bool any = false;
      for (unsigned long r = 0; r != all[1].size(); ++r) {
        for (unsigned long c = 0; c != all[2].size(); ++c) {
          if (Cell(At(layer, all[1][r], all[2][c])) != nullptr) {
            any = filled[0][r] = filled[1][c] = true;
          }
        }
      }
      if (any || !options.skipEmptyLayers) {
        layers.push_back(layer);
        rows.push_back(Keep(all[1], filled[0], options.skipEmptyRows));
        columns.push_back(Keep(all[2], filled[1], options.skipEmptyColumns));
      }
    }
  }

  Subscripts At(const Combination& layer, const Combination& row, const Combination& column) const {
    Subscripts at(model.leaves.size(), 0);
    const Combination* const parts[] = {&layer, &row, &column};
    for (unsigned long a = 0; a != 3; ++a) {
      for (unsigned long k = 0; k != dims[a].size(); ++k) {
        at[dims[a][k]] = Subscript(dims[a][k], (*parts[a])[k]);
      }
    }
    return at;
  }
  OmCellText* Cell(const Subscripts& at) const {
    return std::any_of(at.begin(), at.end(), [](int s) { return s < 0; }) ? nullptr
                                                                          : model.table.Cell(at);
  }

  om::Location Locate(const Subscripts& at) const {
    std::vector<unsigned long> leaves(at.size(), 0);
    om::Location location;
    for (unsigned long d = 0; d != at.size(); ++d) {
      location.dimension = static_cast<int>(d);
      unsigned long shown = 0;
      bool hidden = false;
      for (unsigned long leaf = 0; leaf != model.leaves[d].size(); ++leaf) {
        if (Subscript(d, leaf) == at[d]) {
          if (Shows(d, leaf)) {
            ++shown;
            leaves[d] = leaf;
          } else {
            hidden = true;
          }
        }
      }
      const bool on = used.count(d) != 0;
      location.absence = at[d] < 0              ? Absence::kNoSubscript
                         : !on                  ? (at[d] != 0 ? Absence::kNoLeaf : Absence::kNone)
                         : shown == 0 && hidden ? Absence::kHidden
                         : shown == 0           ? Absence::kNoLeaf
                         : shown > 1            ? Absence::kSeveralLeaves
                                                : Absence::kNone;
      if (!location) {
        return location;
      }
    }
    location.dimension = -1;
    Combination wanted[3];
    for (unsigned long a = 0; a != 3; ++a) {
      for (const unsigned long d : dims[a]) {
        wanted[a].push_back(leaves[d]);
      }
    }
    const auto find = [&](const Combinations& from, const Combination& what, Place& place) {
      place = static_cast<Place>(std::find(from.begin(), from.end(), what) - from.begin());
      return place != from.size();
    };
    if (!find(layers, wanted[0], location.layer) ||
        !find(rows[location.layer], wanted[1], location.row) ||
        !find(columns[location.layer], wanted[2], location.column)) {
      location = {Absence::kEmpty, -1, 0, 0, 0};
    }
    return location;
  }

  // The labels of an axis in one layer: neighbours are compared label by label.
  std::vector<Said> Spans(unsigned long axis, const Combinations& places) const {
    const bool corner = axis == 1 && options.namesInCorner;
    const bool listed = axis == 1 ? options.skipEmptyRows : options.skipEmptyColumns;
    std::vector<unsigned long> starts{0};
    for (unsigned long k = 0; k != dims[axis].size(); ++k) {
      starts.push_back(starts.back() + Width(axis, k, listed ? &places : nullptr, corner));
    }
    std::vector<Payloads> shown;
    std::vector<unsigned long> shared;  // levels with the place before
    for (unsigned long i = 0; i != places.size(); ++i) {
      Payloads& row = shown.emplace_back(starts.back(), nullptr);
      shared.push_back(0);
      bool same = i != 0;
      for (unsigned long k = 0; k != dims[axis].size(); ++k) {
        const Payloads labels = LayoutModel::Labels(PathOf(axis, k, places[i]), corner);
        std::copy(labels.begin(), labels.end(), row.begin() + static_cast<long>(starts[k]));
        for (unsigned long level = starts[k]; same && level != starts[k + 1]; ++level) {
          same = shown[i - 1][level] == row[level];
          shared[i] += same ? 1 : 0;
        }
        same = same && places[i - 1][k] == places[i][k];
      }
    }
    std::vector<Said> spans;
    std::vector<std::vector<bool>> covered(places.size(), std::vector<bool>(starts.back()));
    for (unsigned long k = 0; k != dims[axis].size(); ++k) {
      for (unsigned long level = starts[k]; level != starts[k + 1]; ++level) {
        for (unsigned long i = 0; i != places.size(); ++i) {
          if (covered[i][level]) {
            continue;
          }
          unsigned long last = i + 1;
          while (last != places.size() && shared[last] > level) {
            ++last;
          }
          unsigned long bottom = level + 1;
          while (bottom != starts[k + 1] &&
                 std::all_of(shown.begin() + static_cast<long>(i),
                             shown.begin() + static_cast<long>(last),
                             [&](const Payloads& row) { return row[bottom] == nullptr; })) {
            ++bottom;
          }
          for (unsigned long j = i; j != last; ++j) {
            std::fill(covered[j].begin() + static_cast<long>(level),
                      covered[j].begin() + static_cast<long>(bottom), true);
          }
          spans.emplace_back(shown[i][level], static_cast<int>(dims[axis][k]),
                             static_cast<unsigned>(level - starts[k]), static_cast<unsigned>(level),
                             static_cast<unsigned>(bottom - level), i, last - i, false, false);
        }
      }
    }
    return spans;
  }

  // Those of the spans that reach into a range, as rows or columns list them.
  static std::vector<Said> Cut(const std::vector<Said>& spans, PlaceRange range, bool rows) {
    std::vector<Said> cut;
    for (Said said : spans) {
      const Place first = std::get<5>(said);
      const Place last = first + std::get<6>(said);
      if (range.Size() != 0 && first < range.last && last > range.first) {
        std::get<7>(said) = first < range.first;
        std::get<8>(said) = last > range.last;
        cut.push_back(said);
      }
    }
    std::stable_sort(cut.begin(), cut.end(), [&](const Said& a, const Said& b) {
      const Place from[] = {std::max(std::get<5>(a), range.first),
                            std::max(std::get<5>(b), range.first)};
      const unsigned level[] = {std::get<3>(a), std::get<3>(b)};
      return rows ? std::tie(from[0], level[0]) < std::tie(from[1], level[1])
                  : std::tie(level[0], from[0]) < std::tie(level[1], from[1]);
    });
    return cut;
  }

  const Payloads& PathOf(unsigned long axis, unsigned long k, const Combination& at) const {
    return model.leaves[dims[axis][k]][at[k]];
  }

  const LayoutModel& model;
  om::ViewOptions options;
  std::vector<Dims> dims;  // of layers, rows, columns, outermost first
  Axes all;
  std::set<unsigned long> used;
  Combinations layers;  // that are shown, each with its rows and columns
  Axes rows, columns;

 private:
  int Subscript(unsigned long d, unsigned long leaf) const {
    return static_cast<int>(model.leaves[d][leaf].back()->Subscript());
  }
  bool Shows(unsigned long d, unsigned long leaf) const {
    return options.keepHidden || !model.leaves[d][leaf].back()->Hide();
  }
  Combinations Combine(const Dims& axis) const {
    Combinations made{{}};
    for (const unsigned long d : axis) {
      Combinations longer;
      for (const Combination& combination : made) {
        for (unsigned long leaf = 0; leaf != model.leaves[d].size(); ++leaf) {
          if (Shows(d, leaf)) {
            longer.push_back(combination);
            longer.back().push_back(leaf);
          }
        }
      }
      made.swap(longer);
    }
    return made;
  }
  static Combinations Keep(const Combinations& from, const std::vector<bool>& filled, bool skip) {
    Combinations kept;
    for (unsigned long i = 0; i != from.size(); ++i) {
      if (filled[i] || !skip) {
        kept.push_back(from[i]);
      }
    }
    return kept;
  }
  unsigned long Width(unsigned long axis, unsigned long k, const Combinations* places,
                      bool corner) const {
    const unsigned long d = dims[axis][k];
    unsigned long width = 0;
    for (unsigned long leaf = 0; leaf != model.leaves[d].size(); ++leaf) {
      const auto has = [&](const Combination& place) { return place[k] == leaf; };
      if (places != nullptr ? std::any_of(places->begin(), places->end(), has) : Shows(d, leaf)) {
        width = std::max(width, LayoutModel::Labels(model.leaves[d][leaf], corner).size());
      }
    }
    return width;
  }
};

// Makes a table, lets texts refer to footnotes, and looks at it through views.
class ViewPlay : public layout_model::LayoutPlay {
 public:
  explicit ViewPlay(Choices& random_) : LayoutPlay(random_), random(random_) {}

 protected:
  void Look(const LayoutModel& model) override {
    const om::ViewOptions options{random.OneIn(2), random.OneIn(2), random.OneIn(2),
                                  random.OneIn(2), random.OneIn(2)};
    Twin twin(model, options);
    if (twin.Count() > 20000) {
      return;
    }
    twin.Find();
    Mark(model);
    om::TableView view(model.table, options);
    ASSERT_FALSE(view.IsOutdated());
    CheckLayers(twin, view);
    if (twin.layers.empty()) {
      ASSERT_TRUE(view.Rows() == 0 && view.Columns() == 0 && !view.FirstLayer());
      return;
    }
    for (int i = 0; i != 3; ++i) {
      const auto layer = static_cast<Place>(random.Below(static_cast<int>(twin.layers.size())));
      view.SwitchLayer(layer);
      CheckGrid(twin, view, layer);
      CheckFootnotes(view);
      ASSERT_FALSE(testing::Test::HasFatalFailure());
    }
    CheckCorner(model);
  }

 private:
  PlaceRange Range(Place n) {
    const auto a = static_cast<Place>(random.Below(static_cast<int>(n) + 1));
    const auto b = static_cast<Place>(random.Below(static_cast<int>(n) + 1));
    return {std::min(a, b), std::max(a, b)};
  }

  void CheckLayers(const Twin& twin, om::TableView& view) {
    ASSERT_EQ(view.Layers(), twin.layers.size());
    for (Place n = 0; n != view.Layers(); ++n) {
      const std::vector<om::LayerCategory> labels = view.LayerLabels(n);
      ASSERT_EQ(labels.size(), twin.dims[0].size());
      for (unsigned long k = 0; k != labels.size(); ++k) {
        const Payloads& path = twin.PathOf(0, k, twin.layers[n]);
        Payloads expected = LayoutModel::Labels(path, false, true);
        std::erase(expected, nullptr);
        Payloads shown;
        for (const om::ConstNode& node : labels[k].labels) {
          shown.push_back(&*node);
        }
        ASSERT_EQ(shown, expected);
        ASSERT_EQ(&*labels[k].category, path.back());
        ASSERT_EQ(labels[k].subscript, static_cast<int>(path.back()->Subscript()));
      }
    }
  }

  static void CheckCategories(const Twin& twin, unsigned long axis, const Combination& at,
                              const std::vector<om::ConstNode>& found) {
    ASSERT_EQ(found.size(), at.size());
    for (unsigned long k = 0; k != at.size(); ++k) {
      ASSERT_EQ(&*found[k], twin.PathOf(axis, k, at).back());
    }
  }

  void CheckGrid(const Twin& twin, om::TableView& view, Place layer) {
    const Combinations& rows = twin.rows[layer];
    const Combinations& columns = twin.columns[layer];
    ASSERT_EQ(view.Rows(), rows.size());
    ASSERT_EQ(view.Columns(), columns.size());
    const std::vector<Said> spans[] = {twin.Spans(1, rows), twin.Spans(2, columns)};
    for (int i = 0; i != 4; ++i) {
      const PlaceRange r = i == 0 ? PlaceRange{0, rows.size()} : Range(rows.size());
      const PlaceRange c = i == 0 ? PlaceRange{0, columns.size()} : Range(columns.size());
      const om::Window window = view.Read(r, c);
      ASSERT_EQ(SaidOf(window.rowLabels), Twin::Cut(spans[0], r, true));
      ASSERT_EQ(SaidOf(window.columnLabels), Twin::Cut(spans[1], c, false));
      for (Place row = r.first; row != r.last; ++row) {
        CheckCategories(twin, 1, rows[row], view.RowCategories(row));
        for (Place column = c.first; column != c.last; ++column) {
          const Subscripts at = twin.At(twin.layers[layer], rows[row], columns[column]);
          ASSERT_EQ(view.Subscripts(row, column), at);
          ASSERT_EQ(window.Cell(row, column), twin.Cell(at));
        }
      }
      for (Place column = c.first; column != c.last; ++column) {
        CheckCategories(twin, 2, columns[column], view.ColumnCategories(column));
      }
    }
    for (int i = 0; i != 20; ++i) {
      Subscripts at;
      if (!rows.empty() && !columns.empty() && random.OneIn(2)) {
        at = view.Subscripts(Range(rows.size() - 1).first, Range(columns.size() - 1).last);
      } else {
        for (const std::vector<Payloads>& leaves : twin.model.leaves) {
          at.push_back(random.Below(static_cast<int>(leaves.size()) + 2) - random.OneIn(20));
        }
      }
      const om::Location expected = twin.Locate(at);
      const om::Location found = view.Locate(at);
      ASSERT_EQ(found.absence, expected.absence);
      ASSERT_EQ(std::tie(found.dimension, found.layer, found.row, found.column),
                std::tie(expected.dimension, expected.layer, expected.row, expected.column));
    }
  }

  // Lets labels and cells refer to footnotes at random.
  void Mark(const LayoutModel& model) {
    OmPivotTable& table = model.table;
    const OmStringCell noted("note");
    for (int i = random.Below(6); i != 0; --i) {
      table.Footnote(OmFootnote(&noted, random.OneIn(4) ? &noted : nullptr, nullptr), true);
    }
    const auto mark = [&](OmCellText* on) {
      for (int n = random.OneIn(4) ? 1 + random.Below(2) : 0; n != 0; --n) {
        OmCellMetaData meta;
        if (on->hasMeta()) {
          meta = on->getMeta();
        }
        meta.Footnotes().push_back(random.Below(8) - 1);  // now and then none of the table's
        on->setMeta(meta);
      }
    };
    for (unsigned long d = 0; d != table.NDimensions(); ++d) {
      for (auto node = table.Dimension(static_cast<int>(d))->Root().Begin();
           node != table.Dimension(static_cast<int>(d))->Root().End(); ++node) {
        mark(node->Text());
      }
    }
    for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
      mark(cell.Cell());
    }
    if (table.CornerText() != nullptr) {
      mark(table.CornerText());
    }
  }

  // Meets the footnotes of a text, and appends those that are new to `met`.
  static void Meet(const om::TableView& view, const OmCellText* text, std::vector<int>& met) {
    if (text != nullptr && text->hasMeta()) {
      for (const int note : text->getMeta().Footnotes()) {
        if (note >= 0 && note < static_cast<int>(view.Table().Footnotes().size()) &&
            std::find(met.begin(), met.end(), note) == met.end()) {
          met.push_back(note);
        }
      }
    }
  }
  static void MeetWindow(const om::TableView& view, const om::Window& window,
                         std::vector<int>& met) {
    for (const om::LayerCategory& category : view.LayerLabels()) {
      for (const om::ConstNode& node : category.labels) {
        Meet(view, node->Text(), met);
      }
    }
    for (const om::CornerLabel& label : view.Corner()) {
      Meet(view, label.text, met);
    }
    for (const std::vector<om::Label>* const labels : {&window.columnLabels, &window.rowLabels}) {
      for (const om::Label& label : *labels) {
        Meet(view, label.text, met);
      }
    }
    for (const OmCellText* const cell : window.cells) {
      Meet(view, cell, met);
    }
  }
  static void CheckList(const om::VisibleFootnotes& notes, const std::vector<int>& met) {
    std::vector<int> listed;
    for (const om::VisibleFootnote& note : notes.List()) {
      listed.push_back(note.index);
      ASSERT_EQ(note.own, note.marker == "note");
    }
    ASSERT_EQ(listed, met);
  }

  void CheckFootnotes(const om::TableView& view) {
    const om::MarkerStyle style = om::MarkerStyle::kLetters;
    const om::Window all = view.Read({0, view.Rows()}, {0, view.Columns()});
    std::vector<int> met;
    MeetWindow(view, all, met);
    CheckList(om::VisibleFootnotes(view, style), met);
    const om::Window some = view.Read(Range(view.Rows()), Range(view.Columns()));
    met.clear();
    MeetWindow(view, some, met);
    CheckList(om::VisibleFootnotes(view, some, style), met);
    met.clear();
    om::TableView at(view);
    for (bool more = at.FirstLayer(); more; more = at.NextLayer()) {
      MeetWindow(at, at.Read({0, at.Rows()}, {0, at.Columns()}), met);
    }
    CheckList(om::VisibleFootnotes::OfAllLayers(view, style), met);
  }

  static void CheckCorner(const LayoutModel& model) {
    OmDisplayLayerHeading layers(model.table, false);
    layers.NextLayer();
    const om::TableView view(model.table, {.keepHidden = true});
    const OmDisplayRowHeading rows(layers, false, true);
    std::vector<const OmCellText*> corner(view.RowLevels(), nullptr);
    for (const om::CornerLabel& label : view.Corner()) {
      corner[label.firstLevel] = label.text;
    }
    if (rows.NRows() != 0 && view.Rows() != 0) {
      ASSERT_EQ(corner, rows.CornerText());
    }
  }

  Choices& random;
};

}  // namespace view_model

#endif
