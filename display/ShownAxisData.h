// One axis as a view shows it: the combinations of its dimensions' categories in mixed radix, and
// the part of it that one layer shows, with the labels.

#ifndef DISPLAY_SHOWNAXISDATA_H
#define DISPLAY_SHOWNAXISDATA_H

#include <vector>

#include "backend/tables/PuppetVector.h"
#include "display/ShownDimensionData.h"
#include "display/TableView.h"

class OmPivotTable;

namespace om {

// A *site* is the number of a combination of shown categories; the innermost dimension varies
// fastest. A *place* is the number of a site among the sites that a layer shows.
using Site = unsigned long long;
using Digits = std::vector<unsigned int>;

class ShownAxis {
 public:
  struct Dimension {
    int index;  // in the table
    ShownDimension shown;
    Site inner;  // number of sites of each category
  };

  ShownAxis(const OmPivotTable& table, const PuppetVector<short>& axis, bool keepHidden,
            ShownDimension::Role role);

  // Outermost first.
  [[nodiscard]] const std::vector<Dimension>& Dimensions() const noexcept { return dimensions; }
  [[nodiscard]] Site Sites() const noexcept { return sites; }
  void SetDigits(Site site, Digits& digits) const;
  // Changes `digits` from those of `site` to those of the later site `to`. Returns the outermost
  // dimension whose digit changed, and sets `old` to the previous value of that digit.
  [[nodiscard]] unsigned long Advance(Site site, Site to, Digits& digits, unsigned int& old) const;
  // Writes the subscripts of the categories.
  void Fill(const Digits& digits, std::vector<int>& subscripts) const;
  // Returns the site of one category per dimension of the table.
  [[nodiscard]] Site SiteOf(const std::vector<unsigned int>& leaves) const;
  [[nodiscard]] std::vector<ConstNode> Categories(Site site) const;

 private:
  std::vector<Dimension> dimensions;
  Site sites = 1;
};

// The sites of an axis that a layer shows: all, or a list.
class AxisInLayer {
 public:
  AxisInLayer() = default;
  // Shows all sites.
  explicit AxisInLayer(const ShownAxis& axis);
  // Shows the `count` sites at `listed`, which must be ascending and outlive this object.
  AxisInLayer(const ShownAxis& axis, const Site* listed, Place count);

  [[nodiscard]] Place Places() const noexcept { return places; }
  [[nodiscard]] unsigned int Levels() const noexcept { return levels; }
  // Return the number of label levels of a dimension, and the first of them.
  [[nodiscard]] unsigned int LevelsOf(unsigned long k) const { return dimensionLevels[k]; }
  [[nodiscard]] unsigned int FirstLevelOf(unsigned long k) const { return firstLevels[k]; }
  [[nodiscard]] const ShownAxis& Axis() const noexcept { return *axis; }
  [[nodiscard]] Site SiteAt(Place place) const { return list == nullptr ? place : list[place]; }
  // Appends the labels that cover a place of the range, place by place.
  void Labels(PlaceRange range, std::vector<Label>& out) const;
  // Returns labels for a search of footnotes, without blanks: at least the first label of every
  // shown node whose text has metadata. Their order is not defined.
  [[nodiscard]] std::vector<Label> FirstLabels() const;

 private:
  class Reader;

  void SetFirstLevels();

  const ShownAxis* axis = nullptr;
  const Site* list = nullptr;
  Place places = 0;
  std::vector<unsigned int> dimensionLevels;
  std::vector<unsigned int> firstLevels;
  unsigned int levels = 0;
};

}  // namespace om

#endif
