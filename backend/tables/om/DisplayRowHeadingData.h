// The private record of a heading over any axis, described in terms of rows. It is not installed.

#ifndef BACKEND_TABLES_OM_DISPLAYROWHEADINGDATA_H
#define BACKEND_TABLES_OM_DISPLAYROWHEADINGDATA_H

#include <deque>
#include <vector>

#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/DisplayLayerHeadingData.h"
#include "backend/tables/om/DisplayRowHeading.h"

struct OmDisplayRowHeading::Data {
  using LayerData = OmDisplayLayerHeading::Data;
  using Path = LayerData::Path;
  using Labels = std::deque<ConstNode*>;

  Data(OmDisplayLayerHeading& layer, const PuppetVector<short>& axis,
       const PuppetVector<short>& other, bool skipEmpty_, bool dimNamesInCorner_,
       bool collectCorner);

  void FindVisibleLevels();
  // Returns the path of each axis dimension's category, null where no leaf stands.
  [[nodiscard]] std::vector<const Path*> FindNodes(unsigned long long place) const;
  // Returns whether a dimension's name was placed in the corner.
  bool CollectCornerLabels();
  // Appends the labels of the categories at a place, levelsPerDim of each axis dimension.
  void GetRowNodes(unsigned long long place, Labels& out) const;
  // Appends the category of each axis dimension at a place, null where no leaf stands.
  void GetRowNodeCategories(unsigned long long place, Labels& out) const;

  // What the row and the column heading offer alike.
  [[nodiscard]] LayerData& Layer() const noexcept { return *layerHeading->data; }
  // Returns the path of the category of axis dimension `k`, or null where no leaf stands.
  [[nodiscard]] Path* PathAt(unsigned long long place, unsigned long k) const {
    return Layer().PathAt(place, placeCalculator, k);
  }
  [[nodiscard]] unsigned long long PlaceOf(int r) const;
  [[nodiscard]] unsigned long long ListedPlaceOf(int r) const;
  [[nodiscard]] Labels Column(int c) const;
  [[nodiscard]] unsigned short VisibleLevels(int k) const;
  [[nodiscard]] std::vector<int> LabelDimensions() const;
  [[nodiscard]] int DimensionIndex(int k);
  void DimCatNodes(int r, std::vector<ConstNode*>& dimNodes,
                   std::vector<ConstNode*>& catNodes) const;
  void DimAllNodes(int r, std::vector<ConstNode*>& out) const;
  [[nodiscard]] const std::vector<unsigned long long>& Places();

  OmDisplayLayerHeading* layerHeading;  // not owned
  OmPivotTable* table;                  // not owned
  bool skipEmpty;
  bool dimNamesInCorner;
  PuppetVector<short> axisDims;               // the axis reversed; reads past its end lengthen it
  std::vector<const OmCellText*> cornerText;  // one per heading column, some null; not owned
  std::vector<unsigned long long> nonEmptyPlaces;  // without skipEmpty all places, once asked for
  LayerData::PlaceCalculator placeCalculator;      // over the axis, without what reads added to it
  std::vector<unsigned short> levelsPerDim;        // heading columns of each axis dimension
  unsigned long long placeCount = 0;               // rows
  unsigned int headingWidth = 0;                   // sum of levelsPerDim
};

#endif
