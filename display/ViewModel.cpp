#include <algorithm>
#include <utility>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/PivotTable.h"
#include "display/ViewModelData.h"

namespace om {

namespace {

bool AnyNegative(const std::vector<int>& subscripts) {
  return std::any_of(subscripts.begin(), subscripts.end(), [](int s) { return s < 0; });
}

// A set of pairs of a layer and a row or column in it. A pair may be added any number of times:
// memory is needed for at most twice as many pairs as are different, or for 2^16.
class SitePairs {
 public:
  void Add(Site layer, Site site) {
    if (pairs.empty() || pairs.back() != std::pair(layer, site)) {
      if (pairs.size() >= limit) {
        Compact();
        limit = std::max(limit, pairs.size() * 2);
      }
      pairs.emplace_back(layer, site);
    }
  }

  // Moves the pairs to one list per layer. If `layers` is empty, fills it first.
  void MoveTo(std::vector<Site>& layers, FilledSites::Lists& lists) {
    Compact();
    if (layers.empty()) {
      for (const auto& [layer, site] : pairs) {
        if (layers.empty() || layers.back() != layer) {
          layers.push_back(layer);
        }
      }
    }
    lists.sites.reserve(pairs.size());
    for (const auto& [layer, site] : pairs) {
      while (lists.starts.size() < layers.size() && layers[lists.starts.size()] <= layer) {
        lists.starts.push_back(lists.sites.size());
      }
      lists.sites.push_back(site);
    }
    lists.starts.resize(layers.size() + 1, lists.sites.size());
  }

 private:
  void Compact() {
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
  }

  std::vector<std::pair<Site, Site>> pairs;
  unsigned long limit = 1UL << 16;
};

}  // namespace

bool CellSites::Find(const std::vector<int>& subscripts) {
  for (unsigned long d = 0; d != subscripts.size(); ++d) {
    if (model.deciding[d] == nullptr && subscripts[d] != 0) {
      return false;
    }
  }
  return FindOn(model.layers, subscripts, layers) && FindOn(model.rows, subscripts, rows) &&
         FindOn(model.columns, subscripts, columns);
}

bool CellSites::FindOn(const ShownAxis& axis, const std::vector<int>& subscripts,
                       std::vector<Site>& sites) {
  sites.assign(axis.Sites() != 0 ? 1 : 0, 0);
  for (const ShownAxis::Dimension& dimension : axis.Dimensions()) {
    const ShownDimension& shown = dimension.shown;
    const auto d = static_cast<unsigned long>(dimension.index);
    const bool decides = model.deciding[d] == &dimension;
    const auto [first, last] =
        decides ? shown.Find(subscripts[d])
                : std::pair(0U, static_cast<unsigned int>(shown.Leaves().size()));
    more.clear();
    for (const Site site : sites) {
      for (unsigned int i = first; i != last; ++i) {
        more.push_back(site + (decides ? shown.BySubscript()[i] : i) * dimension.inner);
      }
    }
    sites.swap(more);
  }
  return !sites.empty();
}

ViewModel::ViewModel(OmPivotTable& table_, const ViewOptions& options_)
    : table(&table_),
      options(options_),
      layers(table_, std::as_const(table_).Layers(), options.keepHidden,
             ShownDimension::Role::kLayers),
      rows(
          table_, std::as_const(table_).Rows(), options.keepHidden,
          options.namesInCorner ? ShownDimension::Role::kCornerNamed : ShownDimension::Role::kHead),
      columns(table_, std::as_const(table_).Columns(), options.keepHidden,
              ShownDimension::Role::kHead),
      deciding(table_.NDimensions(), nullptr),
      fingerprint(Fingerprint(table_)) {
  for (const ShownAxis* const axis : {&layers, &rows, &columns}) {
    for (const ShownAxis::Dimension& dimension : axis->Dimensions()) {
      deciding[static_cast<unsigned long>(dimension.index)] = &dimension;
      anyWithout = anyWithout || dimension.shown.AnyWithout();
    }
  }
  if (SkipsAny()) {
    FindFilled();
  }
}

void ViewModel::FindFilled() {
  CellSites at(*this);
  SitePairs inRows;
  SitePairs inColumns;
  WalkCells([&](const std::vector<int>& subscripts, OmCellText&) {
    if (!at.Find(subscripts)) {
      return;
    }
    for (const Site layer : at.Layers()) {
      // The rows also determine the list of layers, so they are added in any case.
      for (const Site row : at.Rows()) {
        inRows.Add(layer, options.skipEmptyRows ? row : 0);
      }
      for (const Site column : at.Columns()) {
        if (options.skipEmptyColumns) {
          inColumns.Add(layer, column);
        }
      }
    }
  });
  inRows.MoveTo(filled.layers, filled.rows);
  inColumns.MoveTo(filled.layers, filled.columns);
}

AxisInLayer ViewModel::Listed(const ShownAxis& axis, const FilledSites::Lists& lists,
                              Site layer) const {
  const auto found = std::lower_bound(filled.layers.begin(), filled.layers.end(), layer);
  if (found == filled.layers.end() || *found != layer) {
    return AxisInLayer(axis, lists.sites.data(), 0);
  }
  const auto i = static_cast<unsigned long>(found - filled.layers.begin());
  return AxisInLayer(axis, lists.sites.data() + lists.starts[i],
                     lists.starts[i + 1] - lists.starts[i]);
}

OmCellText* ViewModel::Cell(const std::vector<int>& subscripts) const {
  return anyWithout && AnyNegative(subscripts) ? nullptr : table->Cell(subscripts);
}

void ViewModel::WalkCells(
    const std::function<void(const std::vector<int>& subscripts, OmCellText& cell)>& visit) const {
  OmPivotTable::Iterator cell = table->FirstCell();
  if (cell.Cell() != nullptr || table->getNumCells() == 0 || layers.Sites() == 0 ||
      rows.Sites() == 0 || columns.Sites() == 0) {
    for (; cell.Cell() != nullptr; ++cell) {
      visit(cell.Index(), *cell.Cell());
    }
    return;
  }
  // A null that was stored first ends the iterators at once, although there may be cells behind it.
  // So every cell that could be shown is looked up.
  std::vector<int> subscripts(table->NDimensions(), 0);
  Digits digits;
  for (Site layer = 0; layer != layers.Sites(); ++layer) {
    for (Site row = 0; row != rows.Sites(); ++row) {
      for (Site column = 0; column != columns.Sites(); ++column) {
        for (const auto& [axis, site] :
             {std::pair(&layers, layer), std::pair(&rows, row), std::pair(&columns, column)}) {
          axis->SetDigits(site, digits);
          axis->Fill(digits, subscripts);
        }
        if (OmCellText* const found = Cell(subscripts); found != nullptr) {
          visit(subscripts, *found);
        }
      }
    }
  }
}

Location ViewModel::Locate(const std::vector<int>& subscripts, bool layersOnly) const {
  Location location;
  std::vector<unsigned int> leaves(subscripts.size(), 0);
  for (unsigned long d = 0; d != subscripts.size(); ++d) {
    const ShownAxis::Dimension* const dimension = deciding[d];
    const auto onLayers = [&](const ShownAxis::Dimension& other) {
      return static_cast<unsigned long>(other.index) == d;
    };
    if (layersOnly &&
        std::none_of(layers.Dimensions().begin(), layers.Dimensions().end(), onLayers)) {
      continue;
    }
    location.dimension = static_cast<int>(d);
    if (subscripts[d] < 0) {
      location.absence = Absence::kNoSubscript;
      return location;
    }
    if (dimension == nullptr) {
      if (subscripts[d] != 0) {
        location.absence = Absence::kNoLeaf;
        return location;
      }
      continue;
    }
    const auto [first, last] = dimension->shown.Find(subscripts[d]);
    if (last - first != 1) {
      location.absence = last != first                              ? Absence::kSeveralLeaves
                         : dimension->shown.IsHidden(subscripts[d]) ? Absence::kHidden
                                                                    : Absence::kNoLeaf;
      return location;
    }
    leaves[d] = dimension->shown.BySubscript()[first];
  }
  location.dimension = -1;
  location.layer = layers.SiteOf(leaves);
  if (!layersOnly) {
    location.row = rows.SiteOf(leaves);
    location.column = columns.SiteOf(leaves);
  }
  return location;
}

void ViewModel::Number(Location& location, bool layersOnly) const {
  if (!location) {
    return;
  }
  const Site layer = location.layer;
  const auto found = std::lower_bound(filled.layers.begin(), filled.layers.end(), layer);
  const bool known = found != filled.layers.end() && *found == layer;
  const auto i = static_cast<unsigned long>(found - filled.layers.begin());
  const auto number = [&](Place& place, const FilledSites::Lists& lists) {
    const auto begin = lists.sites.begin() + static_cast<long>(known ? lists.starts[i] : 0);
    const auto end = known ? lists.sites.begin() + static_cast<long>(lists.starts[i + 1]) : begin;
    const auto at = std::lower_bound(begin, end, place);
    if (at == end || *at != place) {
      location.absence = Absence::kEmpty;
    } else {
      place = static_cast<Place>(at - begin);
    }
  };
  if (options.skipEmptyLayers) {
    location.layer = i;
    location.absence = known ? Absence::kNone : Absence::kEmpty;
  }
  if (options.skipEmptyRows && !layersOnly) {
    number(location.row, filled.rows);
  }
  if (options.skipEmptyColumns && !layersOnly) {
    number(location.column, filled.columns);
  }
  if (!location) {
    location.layer = location.row = location.column = 0;
  }
}

}  // namespace om
