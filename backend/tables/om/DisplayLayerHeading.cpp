#include "backend/tables/om/DisplayLayerHeading.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/DisplayLayerHeadingData.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/PivotTable.h"

bool IsSparse(OmPivotTable& table) {
  const unsigned long long threshold = (Product(table.SizeVector()) + 50) / 100;
  // An iterator visits every cell, or none where the first way down the store ends at a null.
  const unsigned long count = table.FirstCell().Cell() != nullptr ? table.StoredCells() : 0;
  return count < threshold;
}

// --- Places -------------------------------------------------------------------------------------

OmDisplayLayerHeading::Data::PlaceCalculator::PlaceCalculator(const PuppetVector<short>& dims,
                                                              const std::vector<int>& sizes)
    : dimensions(dims) {
  std::vector<unsigned int> bases;
  for (const short dim : dims) {
    if (dim < 0 || static_cast<unsigned long>(dim) >= sizes.size()) {
      throw OMSException(
          "OmDisplayLayerHeading::Data::PlaceCalculator() -- 0 <= dim && dim < sizes.size()", dim,
          static_cast<double>(sizes.size()));
    }
    bases.push_back(static_cast<unsigned int>(sizes[static_cast<unsigned long>(dim)]));
  }
  projector.Set(std::vector<int>(dims.begin(), dims.end()));
  base = MultiBase(bases);
  single = PlaceDigits(bases);
}

void OmDisplayLayerHeading::Data::PlaceCalculator::Fill(unsigned long long place,
                                                        std::vector<int>& out) const {
  projector.Spread(Digits(place), out);
}

// --- The record ---------------------------------------------------------------------------------

// A record without headers, which the destructor can destroy if the rest of the construction fails.
OmDisplayLayerHeading::Data::Data(OmPivotTable& table_)
    : OmMemoryRegion(false),
      table(&table_),
      currentSubscripts(table_.NDimensions(), 0),
      reservedZeros(static_cast<long>(table_.NDimensions()), 0, this),
      isSparse(IsSparse(table_)) {}

OmDisplayLayerHeading::Data::Data(OmPivotTable& table_, bool skipEmpty_) : Data(table_) {
  skipEmpty = skipEmpty_;
  layerDims = table->Layers();
  std::reverse(layerDims.begin(), layerDims.end());
  placeCalculator = PlaceCalculator(layerDims, table->SizeVector());
  CollectHeaderInfo();
  for (const short d : layerDims) {
    if (OmDimHeader* const header = Header(d); header != nullptr) {
      layerHeaders.push_back(header);
    }
  }
  if (skipEmpty) {
    FindNonEmptyLayers();
    layerCount = nonEmptyLayers.size();
  } else {
    layerCount = placeCalculator.Size();
  }
}

OmDisplayLayerHeading::Data::~Data() {
  WorkingRelease(false);
  for (OmDimHeader* const header : headers) {
    delete header;
  }
}

void OmDisplayLayerHeading::Data::CollectHeaderInfo() {
  const unsigned long n = table->NDimensions();
  headers.reserve(n);
  for (unsigned long d = 0; d != n; ++d) {
    headers.push_back(new (this) OmDimHeader(table->Dimension(static_cast<int>(d)), this));
  }
}

void OmDisplayLayerHeading::Data::FindNonEmptyLayers() {
  PuppetVector<short> others = table->Columns();
  for (const short d : std::as_const(*table).Rows()) {
    others.push_back(d);
  }
  FindNonEmptyHeaders(layerDims, others, nonEmptyLayers);
}

OmDimHeader* OmDisplayLayerHeading::Data::Header(int d) {
  const auto i = static_cast<unsigned long>(d);  // a negative one is too large then
  OM_HARDEN(i >= headers.size() || headers[i]->IsCurrent(), "OmDisplayLayerHeading::Data::Header");
  return i < headers.size() && headers[i]->IsCurrent() ? headers[i] : nullptr;
}

bool OmDisplayLayerHeading::Data::CurrentPlace(unsigned long long& place) const {
  // A restored number may have no layer. A negative one becomes larger than any layer number.
  const auto number = static_cast<unsigned long>(currentLayer);
  if (number >= layerCount) {
    return false;
  }
  place = skipEmpty ? nonEmptyLayers[number] : number;
  return true;
}

OmDimHeader* OmDisplayLayerHeading::Data::LeafAt(unsigned long long place,
                                                 const PlaceCalculator& calc, unsigned long k,
                                                 unsigned long& position) {
  OmDimHeader* const header = Header(calc.Dimensions()[k]);
  position = calc.Single().Digit(place, k);
  if (header == nullptr || position >= header->leafSubscripts.size()) {
    return nullptr;
  }
  OM_HARDEN(static_cast<int>((*header->nodePaths[position].begin())->Subscript()) ==
                header->leafSubscripts[position],
            "OmDisplayLayerHeading::Data::LeafAt");
  return header;
}

OmDisplayLayerHeading::Data::Path* OmDisplayLayerHeading::Data::PathAt(unsigned long long place,
                                                                       const PlaceCalculator& calc,
                                                                       unsigned long k) {
  unsigned long position = 0;
  OmDimHeader* const header = LeafAt(place, calc, k, position);
  return header != nullptr ? &header->nodePaths[position] : nullptr;
}

void OmDisplayLayerHeading::Data::AppendNodes(Path* path, std::vector<ConstNode*>& out) {
  if (path != nullptr && path->size() > 1) {
    for (ConstNode* node = path->end(); node != path->begin();) {
      out.push_back(--node);
    }
  }
}

OmDisplayLayerHeading::Data::Path* OmDisplayLayerHeading::Data::FindNodes(unsigned long long place,
                                                                          int layerDim) {
  // Reads may have lengthened layerDims, but never layerHeaders.
  const auto i = static_cast<unsigned long>(layerDim);
  return i < layerHeaders.size() ? PathAt(place, placeCalculator, i) : nullptr;
}

OmDisplayLayerHeading::Data::Path* OmDisplayLayerHeading::Data::CurrentNodes(int layerDim) {
  unsigned long long place = 0;
  return CurrentPlace(place) ? FindNodes(place, layerDim) : nullptr;
}

void OmDisplayLayerHeading::Data::Fill(unsigned long long place, const PlaceCalculator& calc,
                                       std::vector<int>& subscripts) {
  subscripts.resize(headers.size(), 0);
  for (unsigned long k = 0; k != calc.Dimensions().size(); ++k) {
    unsigned long position = 0;
    if (const OmDimHeader* const header = LeafAt(place, calc, k, position); header != nullptr) {
      const auto d = static_cast<unsigned long>(calc.Dimensions()[k]);
      subscripts[d] = header->leafSubscripts[position];
    }
  }
}

unsigned long long OmDisplayLayerHeading::Data::DisplayPosition(const std::vector<int>& subscripts,
                                                                const PlaceCalculator& calc) {
  std::vector<unsigned int> digits;
  for (const short d : calc.Dimensions()) {
    const auto subscript = static_cast<unsigned long>(subscripts[static_cast<unsigned long>(d)]);
    digits.push_back(static_cast<unsigned int>(Header(d)->leafPositions[subscript]));
  }
  return digits.empty() ? 0 : calc.Base().Value(digits);
}

void OmDisplayLayerHeading::Data::FindVisibleLevels(const Places& places,
                                                    const PlaceCalculator& calc,
                                                    std::vector<unsigned short>& out) {
  for (unsigned long k = 0; k != calc.Dimensions().size(); ++k) {
    const OmDimHeader* const header = Header(calc.Dimensions()[k]);
    if (header == nullptr) {
      out.push_back(0);  // the dimension was edited since; there is one entry per axis dimension
      continue;
    }
    // The result of OmDimHeader::VisibleLevels for the leaves shown, without a list of marks.
    // Usually the first place ends the loop.
    int levels = places.empty() ? header->maxVisibleLevels : 0;
    for (auto place = places.begin(); place != places.end() && levels < header->maxVisibleLevels;
         ++place) {
      // A digit may be beyond the leaves if subscripts are missing.
      const unsigned int digit = calc.Single().Digit(*place, k);
      if (digit < header->visibleLevels.size()) {
        levels = std::max<int>(levels, header->visibleLevels[digit]);
      }
    }
    out.push_back(static_cast<unsigned short>(levels));
  }
}

// --- The heading --------------------------------------------------------------------------------

OmDisplayLayerHeading::OmDisplayLayerHeading(OmPivotTable& table, bool skipEmpty)
    : data(new Data(table, skipEmpty)) {}

OmDisplayLayerHeading::~OmDisplayLayerHeading() {
  delete data;
}

unsigned int OmDisplayLayerHeading::NDimensions() const noexcept {
  return static_cast<unsigned int>(data->layerDims.size());
}

int OmDisplayLayerHeading::getDimensionIndex(int i) const {
  OM_HARDEN(i >= 0, "OmDisplayLayerHeading::getDimensionIndex");
  return i < 0 ? -1 : data->layerDims[static_cast<unsigned long>(i)];
}

int OmDisplayLayerHeading::VisibleWidth(int i) const {
  const int d = getDimensionIndex(i);
  OM_HARDEN(d >= 0, "OmDisplayLayerHeading::VisibleWidth");
  const OmDimHeader* const header = data->Header(d);
  return header != nullptr ? header->maxVisibleLevels : 0;
}

unsigned long long OmDisplayLayerHeading::NLayers() const noexcept {
  return data->layerCount;
}

const std::vector<unsigned long long>& OmDisplayLayerHeading::getNonEmptyLayers() const {
  if (!data->skipEmpty && data->nonEmptyLayers.empty()) {
    data->nonEmptyLayers.resize(static_cast<unsigned long>(data->layerCount));
    std::iota(data->nonEmptyLayers.begin(), data->nonEmptyLayers.end(), 0ULL);
  }
  return data->nonEmptyLayers;
}

int OmDisplayLayerHeading::getLayer() const noexcept {
  return data->currentLayer;
}

std::vector<int> OmDisplayLayerHeading::getCurrentCellIndex() const {
  return data->currentSubscripts;
}

OmPivotTable& OmDisplayLayerHeading::Table() const noexcept {
  return *data->table;
}

bool OmDisplayLayerHeading::SkipEmpty() const noexcept {
  return data->skipEmpty;
}

void OmDisplayLayerHeading::Fill(std::vector<int>& subscripts) const {
  unsigned long long place = 0;
  if (data->CurrentPlace(place)) {
    data->Fill(place, data->placeCalculator, subscripts);
  }
}

void OmDisplayLayerHeading::DimCatNodes(int i, ConstNode*& dimNode, ConstNode*& catNode) const {
  Data::Path* const path = data->CurrentNodes(i);
  if (path != nullptr && path->size() > 1) {
    dimNode = &path->back();
    catNode = path->begin();
  }
}

void OmDisplayLayerHeading::DimAllNodes(int i, std::vector<ConstNode*>& out) const {
  Data::AppendNodes(data->CurrentNodes(i), out);
}

std::deque<OmDisplayLayerHeading::ConstNode*> OmDisplayLayerHeading::Nodes(int i) const {
  std::deque<ConstNode*> nodes;
  Data::Path* const path = data->CurrentNodes(i);
  if (path == nullptr) {
    return nodes;
  }
  for (ConstNode* node = path->end(); node != path->begin();) {
    --node;
    if ((*node)->Hide()) {
      nodes.push_back(nullptr);
    } else if ((*node)->IsGroup() && (*node)->HideLabels()) {
      break;
    } else {
      nodes.push_back(node);
    }
  }
  return nodes;
}

bool OmDisplayLayerHeading::SwitchLayer(int n) {
  if (n < 0 || static_cast<unsigned long long>(n) >= data->layerCount) {
    if (n == -1) {
      data->currentLayer = -1;
    }
    return false;
  }
  const auto number = static_cast<unsigned long>(n);
  const unsigned long long place = data->skipEmpty ? data->nonEmptyLayers[number] : number;
  data->Fill(place, data->placeCalculator, data->currentSubscripts);
  data->currentLayer = n;
  return true;
}

bool OmDisplayLayerHeading::NextLayer() {
  // Unsigned, because a restored number may be the largest int.
  return SwitchLayer(static_cast<int>(static_cast<unsigned int>(data->currentLayer) + 1U));
}

bool OmDisplayLayerHeading::LastLayer() {
  const unsigned long long last = data->layerCount - 1;  // without layers -1 as an int
  constexpr int kLargest = std::numeric_limits<int>::max();
  return (data->layerCount == 0 || last <= kLargest) && SwitchLayer(static_cast<int>(last));
}

int OmDisplayLayerHeading::restoreLayer() const {
  data->currentLayer = data->table->getLayerLoc();
  return data->currentLayer;
}
