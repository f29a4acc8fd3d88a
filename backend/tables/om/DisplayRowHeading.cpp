#include "backend/tables/om/DisplayRowHeading.h"

#include <algorithm>
#include <numeric>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/DisplayRowHeadingData.h"
#include "backend/tables/om/PivotTable.h"

using ConstNode = OmDisplayRowHeading::ConstNode;
using Path = OmVector<ConstNode>;

namespace {

// Appends `levels` labels of a path, root first, null where it shows fewer or there is no path.
template <typename Labels>
void AppendLabels(Path* path, unsigned int levels, bool dimNamesInCorner, Labels& out) {
  ConstNode* const end = path != nullptr ? path->end() : nullptr;
  for (ConstNode* node = end; levels != 0 && path != nullptr && node != path->begin();) {
    const OmDimensionNode& payload = **--node;
    if (payload.IsGroup() && payload.HideLabels()) {
      break;
    }
    const bool inCorner = dimNamesInCorner && node == end - 1;
    if (!payload.Hide() && !inCorner) {
      out.push_back(node);
      --levels;
    }
  }
  out.insert(out.end(), levels, nullptr);
}

}  // namespace

std::vector<ConstNode*> CategoryDisplay(Path* path, unsigned int levels, bool dimNamesInCorner) {
  OM_HARDEN(path != nullptr && path->size() != 0, "CategoryDisplay");
  std::vector<ConstNode*> labels;
  AppendLabels(path, levels, dimNamesInCorner, labels);
  return labels;
}

std::vector<ConstNode*> Category(Path* path) {
  OM_HARDEN(path != nullptr && path->size() != 0, "Category");
  return {path->begin()};
}

OmDisplayRowHeading::Data::Data(OmDisplayLayerHeading& layer, const PuppetVector<short>& axis,
                                const PuppetVector<short>& other, bool skipEmpty_,
                                bool dimNamesInCorner_, bool collectCorner)
    : layerHeading(&layer),
      table(&layer.Table()),
      skipEmpty(skipEmpty_),
      dimNamesInCorner(dimNamesInCorner_),
      axisDims(axis) {
  std::reverse(axisDims.begin(), axisDims.end());
  placeCalculator = LayerData::PlaceCalculator(axisDims, table->SizeVector());
  if (skipEmpty) {
    Layer().FindNonEmptyHeaders(axisDims, other, nonEmptyPlaces);
  }
  placeCount = skipEmpty ? nonEmptyPlaces.size() : placeCalculator.Size();
  FindVisibleLevels();
  headingWidth = std::accumulate(levelsPerDim.begin(), levelsPerDim.end(), 0U);
  if (collectCorner) {
    CollectCornerLabels();
  }
}

std::vector<const Path*> OmDisplayRowHeading::Data::FindNodes(unsigned long long place) const {
  std::vector<const Path*> paths;
  // Not axisDims, which may have been lengthened by reading.
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    paths.push_back(PathAt(place, k));
  }
  return paths;
}

void OmDisplayRowHeading::Data::FindVisibleLevels() {
  Layer().FindVisibleLevels(nonEmptyPlaces, placeCalculator, levelsPerDim);
  const std::vector<const Path*> paths = FindNodes(0);
  for (unsigned long k = 0; dimNamesInCorner && k != paths.size(); ++k) {
    if (paths[k] != nullptr && levelsPerDim[k] != 0 && !(*(paths[k]->end() - 1))->Hide()) {
      --levelsPerDim[k];  // the root's label moves to the corner
    }
  }
}

bool OmDisplayRowHeading::Data::CollectCornerLabels() {
  bool found = false;
  const std::vector<const Path*> paths = FindNodes(0);
  for (unsigned long k = 0; dimNamesInCorner && k != paths.size(); ++k) {
    if (paths[k] != nullptr) {
      const ConstNode& root = *(paths[k]->end() - 1);
      const OmCellText* const name = root->Hide() ? nullptr : root->Text();
      cornerText.resize(cornerText.size() + levelsPerDim[k], nullptr);
      if (levelsPerDim[k] != 0 && name != nullptr) {
        cornerText[cornerText.size() - levelsPerDim[k]] = name;
        found = true;
      }
    }
  }
  if (!found && placeCount != 0 && headingWidth != 0) {
    cornerText.resize(headingWidth, nullptr);
    cornerText[0] = table->CornerText();
  }
  return found;
}

void OmDisplayRowHeading::Data::GetRowNodes(unsigned long long place, Labels& out) const {
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    AppendLabels(PathAt(place, k), levelsPerDim[k], dimNamesInCorner, out);
  }
}

void OmDisplayRowHeading::Data::GetRowNodeCategories(unsigned long long place, Labels& out) const {
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    Path* const path = PathAt(place, k);
    out.push_back(path != nullptr ? path->begin() : nullptr);
  }
}

// Returns the place of row `r`, or where no row is listed under that number, the number itself.
unsigned long long OmDisplayRowHeading::Data::PlaceOf(int r) const {
  OM_HARDEN(r >= 0, "OmDisplayRowHeading::Data::PlaceOf");
  const auto i = static_cast<unsigned long>(r);
  return skipEmpty && i < nonEmptyPlaces.size() ? nonEmptyPlaces[i] : i;
}

// The same for a caller who has to name a row that is listed.
unsigned long long OmDisplayRowHeading::Data::ListedPlaceOf(int r) const {
  OM_HARDEN(!skipEmpty || static_cast<unsigned long>(r) < nonEmptyPlaces.size(),
            "OmDisplayRowHeading::Data::ListedPlaceOf");
  return PlaceOf(r);
}

// One digit of a place decides entry `c` of its labels, so each label is looked up once.
OmDisplayRowHeading::Data::Labels OmDisplayRowHeading::Data::Column(int c) const {
  OM_HARDEN(placeCount == 0 || (c >= 0 && static_cast<unsigned int>(c) < headingWidth),
            "OmDisplayRowHeading::Data::Column");
  Labels column(static_cast<unsigned long>(placeCount));
  auto level = static_cast<unsigned int>(c);
  unsigned long k = 0;
  for (; k != levelsPerDim.size() && level >= levelsPerDim[k]; ++k) {
    level -= levelsPerDim[k];
  }
  OmDimHeader* const header =
      k != levelsPerDim.size() ? Layer().Header(placeCalculator.Dimensions()[k]) : nullptr;
  if (header == nullptr) {
    return column;
  }
  std::vector<ConstNode*> labels;  // by digit
  for (Path& path : header->nodePaths) {
    labels.push_back(CategoryDisplay(&path, level + 1, dimNamesInCorner).back());
  }
  // Rows without gaps need no division: each label is that of `run` rows, and they take turns.
  const PlaceDigits& digits = placeCalculator.Single();
  const bool gaps = skipEmpty || !digits.Fits();
  const unsigned long long run = digits.Weight(k);
  const unsigned int base = placeCalculator.Base().Bases()[k];
  unsigned int digit = 0;
  for (unsigned long long r = 0, left = run; ConstNode * &label : column) {
    if (gaps) {
      digit = digits.Digit(skipEmpty ? nonEmptyPlaces[r++] : r++, k);
    } else if (left-- == 0) {
      left = run - 1;
      digit = digit + 1 == base ? 0 : digit + 1;
    }
    label = digit < labels.size() ? labels[digit] : nullptr;
  }
  return column;
}

unsigned short OmDisplayRowHeading::Data::VisibleLevels(int k) const {
  const auto i = static_cast<unsigned long>(k);
  OM_HARDEN(i < levelsPerDim.size(), "OmDisplayRowHeading::Data::VisibleLevels");
  return i < levelsPerDim.size() ? levelsPerDim[i] : static_cast<unsigned short>(0);
}

std::vector<int> OmDisplayRowHeading::Data::LabelDimensions() const {
  std::vector<int> dimensions;
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    dimensions.insert(dimensions.end(), levelsPerDim[k], static_cast<int>(k));
  }
  return dimensions;
}

int OmDisplayRowHeading::Data::DimensionIndex(int k) {
  OM_HARDEN(k >= 0, "OmDisplayRowHeading::Data::DimensionIndex");
  return k < 0 ? -1 : axisDims[static_cast<unsigned long>(k)];
}

void OmDisplayRowHeading::Data::DimCatNodes(int r, std::vector<ConstNode*>& dimNodes,
                                            std::vector<ConstNode*>& catNodes) const {
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    Path* const path = PathAt(PlaceOf(r), k);
    if (path != nullptr && path->size() > 1) {
      dimNodes.push_back(&path->back());
      catNodes.push_back(path->begin());
    }
  }
}

void OmDisplayRowHeading::Data::DimAllNodes(int r, std::vector<ConstNode*>& out) const {
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    LayerData::AppendNodes(PathAt(PlaceOf(r), k), out);
  }
}

const std::vector<unsigned long long>& OmDisplayRowHeading::Data::Places() {
  if (!skipEmpty && nonEmptyPlaces.empty()) {
    nonEmptyPlaces.resize(static_cast<unsigned long>(placeCalculator.Size()));
    std::iota(nonEmptyPlaces.begin(), nonEmptyPlaces.end(), 0ULL);
  }
  return nonEmptyPlaces;
}

OmDisplayRowHeading::OmDisplayRowHeading(OmDisplayLayerHeading& layer, bool skipEmpty,
                                         bool dimNamesInCorner)
    : data(new Data(layer, layer.Table().Rows(), layer.Table().Columns(), skipEmpty,
                    dimNamesInCorner, true)) {}

OmDisplayRowHeading::~OmDisplayRowHeading() {
  delete data;
}

unsigned int OmDisplayRowHeading::NRows() const noexcept {
  return static_cast<unsigned int>(data->placeCount);
}

unsigned int OmDisplayRowHeading::NColumns() const noexcept {
  return data->headingWidth;
}

unsigned short OmDisplayRowHeading::VisibleWidth(int k) const {
  return data->VisibleLevels(k);
}

unsigned int OmDisplayRowHeading::NDimensions() const noexcept {
  return static_cast<unsigned int>(data->axisDims.size());
}

int OmDisplayRowHeading::getDimensionIndex(int k) const {
  return data->DimensionIndex(k);
}

bool OmDisplayRowHeading::DimNamesInCorner() const noexcept {
  return data->dimNamesInCorner;
}

bool OmDisplayRowHeading::SkipEmpty() const noexcept {
  return data->skipEmpty;
}

OmPivotTable& OmDisplayRowHeading::Table() const noexcept {
  return data->layerHeading->Table();
}

std::vector<const OmCellText*> OmDisplayRowHeading::CornerText() const {
  return data->cornerText;
}

const std::vector<unsigned long long>& OmDisplayRowHeading::getNonEmptyRows() const {
  return data->Places();
}

std::deque<ConstNode*> OmDisplayRowHeading::Row(int r) const {
  std::deque<ConstNode*> row;
  data->GetRowNodes(data->ListedPlaceOf(r), row);
  return row;
}

std::vector<int> OmDisplayRowHeading::LabelDimensions() const {
  return data->LabelDimensions();
}

std::deque<ConstNode*> OmDisplayRowHeading::RowCategories(int r) const {
  std::deque<ConstNode*> row;
  data->GetRowNodeCategories(data->ListedPlaceOf(r), row);
  return row;
}

std::deque<ConstNode*> OmDisplayRowHeading::Column(int c) const {
  return data->Column(c);
}

void OmDisplayRowHeading::DimCatNodes(int r, std::vector<ConstNode*>& dimNodes,
                                      std::vector<ConstNode*>& catNodes) const {
  data->DimCatNodes(r, dimNodes, catNodes);
}

void OmDisplayRowHeading::DimAllNodes(int r, std::vector<ConstNode*>& out) const {
  data->DimAllNodes(r, out);
}

void OmDisplayRowHeading::Fill(std::vector<int>& subscripts, int r) const {
  data->Layer().Fill(data->ListedPlaceOf(r), data->placeCalculator, subscripts);
}
