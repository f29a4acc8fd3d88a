#include <algorithm>
#include <stdexcept>
#include <string>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"
#include "display/ShownAxisData.h"

namespace om {

ShownAxis::ShownAxis(const OmPivotTable& table, const PuppetVector<short>& axis, bool keepHidden,
                     ShownDimension::Role role) {
  dimensions.reserve(axis.size());
  bool none = false;
  // The axis lists its innermost dimension first.
  for (unsigned long i = axis.size(); i-- != 0;) {
    const short index = axis[i];
    if (index < 0 || static_cast<unsigned long>(index) >= table.NDimensions()) {
      throw std::invalid_argument("An axis of the table names dimension " + std::to_string(index) +
                                  ", and the table has " + std::to_string(table.NDimensions()) +
                                  " dimensions.");
    }
    dimensions.push_back({index, ShownDimension(*table.Dimension(index), keepHidden, role), 0});
    none = none || dimensions.back().shown.Leaves().empty();
  }
  if (none) {
    sites = 0;
    return;
  }
  for (auto dimension = dimensions.rbegin(); dimension != dimensions.rend(); ++dimension) {
    dimension->inner = sites;
    if (__builtin_mul_overflow(sites, dimension->shown.Leaves().size(), &sites) ||
        sites > Site{1} << 63) {
      throw std::length_error("An axis of the table has more than 2^63 places.");
    }
  }
}

void ShownAxis::SetDigits(Site site, Digits& digits) const {
  digits.resize(dimensions.size());
  for (unsigned long k = 0; k != dimensions.size(); ++k) {
    digits[k] = static_cast<unsigned int>(site / dimensions[k].inner);
    site %= dimensions[k].inner;
  }
}

unsigned long ShownAxis::Advance(Site site, Site to, Digits& digits, unsigned int& old) const {
  unsigned long k = 0;
  if (to == site + 1) {
    k = dimensions.size() - 1;
    while (digits[k] + 1 == dimensions[k].shown.Leaves().size()) {
      digits[k--] = 0;
    }
    old = digits[k]++;
    return k;
  }
  Site rest = to;
  while (rest / dimensions[k].inner == digits[k]) {
    rest %= dimensions[k++].inner;
  }
  old = digits[k];
  for (unsigned long i = k; i != dimensions.size(); ++i) {
    digits[i] = static_cast<unsigned int>(rest / dimensions[i].inner);
    rest %= dimensions[i].inner;
  }
  return k;
}

void ShownAxis::Fill(const Digits& digits, std::vector<int>& subscripts) const {
  for (unsigned long k = 0; k != dimensions.size(); ++k) {
    subscripts[static_cast<unsigned long>(dimensions[k].index)] =
        dimensions[k].shown.Leaves()[digits[k]].subscript;
  }
}

Site ShownAxis::SiteOf(const std::vector<unsigned int>& leaves) const {
  Site site = 0;
  for (const Dimension& dimension : dimensions) {
    site += leaves[static_cast<unsigned long>(dimension.index)] * dimension.inner;
  }
  return site;
}

std::vector<ConstNode> ShownAxis::Categories(Site site) const {
  Digits digits;
  SetDigits(site, digits);
  std::vector<ConstNode> categories;
  for (unsigned long k = 0; k != dimensions.size(); ++k) {
    categories.push_back(dimensions[k].shown.Category(digits[k]));
  }
  return categories;
}

AxisInLayer::AxisInLayer(const ShownAxis& axis_) : axis(&axis_), places(axis_.Sites()) {
  for (const ShownAxis::Dimension& dimension : axis->Dimensions()) {
    dimensionLevels.push_back(dimension.shown.Levels());
  }
  SetFirstLevels();
}

// Only the categories that the layer shows determine the number of levels.
AxisInLayer::AxisInLayer(const ShownAxis& axis_, const Site* listed, Place count)
    : axis(&axis_), list(listed), places(count) {
  const std::vector<ShownAxis::Dimension>& dimensions = axis->Dimensions();
  dimensionLevels.resize(dimensions.size(), 0);
  unsigned long open = dimensions.size();  // dimensions that may have more levels
  Digits digits;
  for (Place place = 0; place != places && open != 0; ++place) {
    axis->SetDigits(list[place], digits);
    open = 0;
    for (unsigned long k = 0; k != dimensions.size(); ++k) {
      dimensionLevels[k] = std::max(dimensionLevels[k], dimensions[k].shown.LevelsOf(digits[k]));
      open += dimensionLevels[k] != dimensions[k].shown.Levels() ? 1U : 0U;
    }
  }
  SetFirstLevels();
}

void AxisInLayer::SetFirstLevels() {
  for (const unsigned int n : dimensionLevels) {
    firstLevels.push_back(levels);
    levels += n;
  }
}

// Walks over the places of a range and appends each label at the first place of the range that it
// covers.
class AxisInLayer::Reader {
 public:
  Reader(const AxisInLayer& my_, PlaceRange range_, std::vector<Label>& out_)
      : my(my_), dimensions(my_.axis->Dimensions()), range(range_), out(out_) {}

  void Read() {
    Site before = 0;
    for (place = range.first; place != range.last; ++place) {
      site = my.SiteAt(place);
      unsigned long k = 0;
      if (place == range.first) {
        my.axis->SetDigits(site, digits);
      } else {
        unsigned int old = 0;
        k = my.axis->Advance(before, site, digits, old);
        base = 0;
        for (unsigned long i = 0; i != k; ++i) {
          base += digits[i] * dimensions[i].inner;
        }
        ReadDimension(k, dimensions[k].shown.Leaves()[old].label, old);
        ++k;
      }
      for (; k != dimensions.size(); ++k) {
        ReadDimension(k, kNone, kNone);
      }
      before = site;
    }
  }

 private:
  using LabelNode = ShownDimension::LabelNode;
  static constexpr unsigned int kNone = ShownDimension::kNone;

  // Appends the labels of dimension `k`, outermost first, except those that also cover the place
  // before. That place has category `beforeLeaf` with the innermost label `beforeLabel`; both are
  // kNone if no label can cover both places. Adds the dimension's digit to `base`, the first site
  // with the same outer categories.
  void ReadDimension(unsigned long k, unsigned int beforeLabel, unsigned int beforeLeaf) {
    const ShownDimension& shown = dimensions[k].shown;
    const std::vector<LabelNode>& labels = shown.Labels();
    chain.clear();
    for (unsigned int i = shown.Leaves()[digits[k]].label; i != kNone; i = labels[i].parent) {
      if (beforeLeaf != kNone && labels[i].first <= beforeLeaf) {
        break;  // and so do all labels around it
      }
      chain.push_back(i);
    }
    while (!chain.empty()) {
      const unsigned int i = chain.back();
      chain.pop_back();
      const bool goesOn = labels[i].record == nullptr && beforeLabel != kNone &&
                          labels[beforeLabel].record == nullptr &&
                          labels[beforeLabel].parent == labels[i].parent;
      if (!goesOn) {
        Append(k, i);
      }
    }
    base += digits[k] * dimensions[k].inner;
  }

  void Append(unsigned long k, unsigned int i) {
    const LabelNode& node = dimensions[k].shown.Labels()[i];
    const unsigned int depth = my.dimensionLevels[k];
    if (node.level >= depth) {
      return;
    }
    PlaceRange extent = ExtentOf(k, node);
    unsigned int reach = depth - node.level;
    if (node.record != nullptr) {
      const bool reaches = node.below == ShownDimension::Below::kNothing ||
                           (node.below == ShownDimension::Below::kSome && my.list != nullptr &&
                            IsBare(k, i, extent));
      reach = reaches ? reach : 1;
    } else {
      if (IsReached(k, node)) {
        return;
      }
      if (my.list != nullptr) {
        Widen(k, node, extent);
      }
    }
    Label& label = out.emplace_back();
    if (node.record != nullptr) {
      label.node = ConstNode(node.record, node.depth);
      label.text = node.record->Data().Text();
    }
    label.dimension = dimensions[k].index;
    label.level = node.level;
    label.firstLevel = my.firstLevels[k] + node.level;
    label.levels = reach;
    label.first = extent.first;
    label.places = extent.Size();
    label.before = extent.first < range.first;
    label.behind = extent.last > range.last;
  }

  // Returns the place of the first site at or behind `at`. Searches from place `from` in both
  // directions with doubled steps.
  [[nodiscard]] Place PlaceFrom(Site at, Place from) const {
    if (my.list == nullptr) {
      return at;
    }
    Place step = 1;
    Place low = from;
    Place high = from;
    while (low != 0 && my.list[low - 1] >= at) {
      high = low;
      low -= std::min(low, step);
      step *= 2;
    }
    for (step = 1; high != my.places && my.list[high] < at; step *= 2) {
      low = high + 1;
      high += std::min(my.places - high, step);
    }
    return static_cast<Place>(std::lower_bound(my.list + low, my.list + high, at) - my.list);
  }

  [[nodiscard]] PlaceRange ExtentOf(unsigned long k, const LabelNode& node) const {
    const Site inner = dimensions[k].inner;
    return {PlaceFrom(base + node.first * inner, place),
            PlaceFrom(base + node.last * inner, place)};
  }

  // Returns the innermost label of dimension `k` at a place with the same outer categories.
  [[nodiscard]] const LabelNode& LabelAt(unsigned long k, Place at) const {
    const ShownDimension& shown = dimensions[k].shown;
    return shown.Labels()[shown.Leaves()[(my.list[at] - base) / dimensions[k].inner].label];
  }

  // Returns whether none of the places that label `i` covers shows a further label.
  [[nodiscard]] bool IsBare(unsigned long k, unsigned int i, PlaceRange extent) const {
    for (Place at = extent.first; at != extent.last;) {
      const LabelNode& label = LabelAt(k, at);
      if (label.record != nullptr || label.parent != i) {
        return false;
      }
      at = std::min(PlaceFrom(base + label.last * dimensions[k].inner, at), extent.last);
    }
    return true;
  }

  // Returns whether the label around a blank covers it.
  [[nodiscard]] bool IsReached(unsigned long k, const LabelNode& blank) const {
    if (blank.parent == kNone) {
      return false;
    }
    const LabelNode& around = dimensions[k].shown.Labels()[blank.parent];
    return around.below == ShownDimension::Below::kNothing ||
           (my.list != nullptr && IsBare(k, blank.parent, ExtentOf(k, around)));
  }

  // Extends a blank over neighbouring blanks of the same label if no shown label is between them.
  void Widen(unsigned long k, const LabelNode& blank, PlaceRange& extent) const {
    const Site inner = dimensions[k].inner;
    const Site all = dimensions[k].shown.Leaves().size() * inner;
    const PlaceRange most{PlaceFrom(base, extent.first), PlaceFrom(base + all, extent.first)};
    const auto same = [&](const LabelNode& other) {
      return other.record == nullptr && other.parent == blank.parent;
    };
    while (extent.first != most.first && same(LabelAt(k, extent.first - 1))) {
      extent.first = PlaceFrom(base + LabelAt(k, extent.first - 1).first * inner, extent.first - 1);
    }
    while (extent.last != most.last && same(LabelAt(k, extent.last))) {
      extent.last = PlaceFrom(base + LabelAt(k, extent.last).last * inner, extent.last);
    }
  }

  const AxisInLayer& my;
  const std::vector<ShownAxis::Dimension>& dimensions;
  PlaceRange range;
  std::vector<Label>& out;
  Place place = 0;
  Site site = 0;
  Site base = 0;
  Digits digits;
  std::vector<unsigned int> chain;
};

void AxisInLayer::Labels(PlaceRange range, std::vector<Label>& out) const {
  if (levels != 0) {
    Reader(*this, range, out).Read();
  }
}

std::vector<Label> AxisInLayer::FirstLabels() const {
  std::vector<Label> found;
  if (list != nullptr) {
    constexpr Place kAtOnce = 4096;
    std::vector<Label> labels;
    for (Place first = 0; first < places; first += kAtOnce) {
      labels.clear();
      Labels({first, std::min(places, first + kAtOnce)}, labels);
      for (const Label& label : labels) {
        // Most texts have no metadata, and so no footnotes.
        if (label.text != nullptr && label.text->hasMeta()) {
          found.push_back(label);
        }
      }
    }
    return found;
  }
  for (unsigned long k = 0; places != 0 && k != axis->Dimensions().size(); ++k) {
    const ShownAxis::Dimension& dimension = axis->Dimensions()[k];
    for (const ShownDimension::LabelNode& node : dimension.shown.Labels()) {
      if (node.record != nullptr && node.level < dimensionLevels[k]) {
        Label& label = found.emplace_back();
        label.node = ConstNode(node.record, node.depth);
        label.text = node.record->Data().Text();
        label.dimension = dimension.index;
        label.firstLevel = firstLevels[k] + node.level;
        label.first = node.first * dimension.inner;
      }
    }
  }
  return found;
}

}  // namespace om
