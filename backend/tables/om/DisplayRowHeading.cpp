#include "backend/tables/om/DisplayRowHeading.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/DisplayRowHeadingData.h"
#include "backend/tables/om/PivotTable.h"

namespace {

using ConstNode = OmDisplayRowHeading::ConstNode;
using Path = OmVector<ConstNode>;

// Categories whose labels are listed together.
constexpr unsigned long kBlock = 256;
// Nodes that are looked at together: as many as there are on most paths with a group.
constexpr unsigned long kTogether = 3;
// The mark of more nodes than a mark can tell of.
constexpr unsigned long long kNoMark = ~0ULL;
constexpr unsigned long long kNothingHidden = 0;
// A run of equal labels that is worth an insertion of its own.
constexpr unsigned long long kLongRun = 64;
// The most labels for one insertion: whole nodes of the deque, and so few that what is reserved is
// still at hand when it is filled.
constexpr unsigned long kAtOnce = 128;

// Calls `sink` with each of the `levels` labels of a path, root first, and null where there are
// fewer.
template <typename Sink>
void ForEachLabel(Path& path, unsigned int levels, bool dimNamesInCorner, Sink sink) {
  ConstNode* const root = path.end() - 1;
  ConstNode* node = path.end();
  while (levels != 0 && node != path.begin()) {
    --node;
    if ((*node)->IsGroup() && (*node)->HideLabels()) {
      break;
    }
    if (!(*node)->Hide() && !(dimNamesInCorner && node == root)) {
      sink(node);
      --levels;
    }
  }
  for (; levels != 0; --levels) {
    sink(static_cast<ConstNode*>(nullptr));
  }
}

// Returns label `level` of a path as ForEachLabel gives it.
ConstNode* LabelAt(Path* path, unsigned int level, bool dimNamesInCorner) {
  ConstNode* label = nullptr;
  if (path != nullptr) {
    ForEachLabel(*path, level + 1, dimNamesInCorner, [&](ConstNode* node) { label = node; });
  }
  return label;
}

}  // namespace

std::vector<ConstNode*> CategoryDisplay(Path* path, unsigned int levels, bool dimNamesInCorner) {
  OM_HARDEN(path != nullptr && path->size() != 0, "CategoryDisplay");
  std::vector<ConstNode*> labels;
  labels.reserve(levels);
  ForEachLabel(*path, levels, dimNamesInCorner, [&](ConstNode* node) { labels.push_back(node); });
  return labels;
}

std::vector<ConstNode*> Category(Path* path) {
  OM_HARDEN(path != nullptr && path->size() != 0, "Category");
  return {path->begin()};
}

// --- The record ---------------------------------------------------------------------------------

OmDisplayRowHeading::Data::Data(OmDisplayLayerHeading& layer, const PuppetVector<short>& axis,
                                const PuppetVector<short>& other, bool skipEmpty_,
                                bool dimNamesInCorner_, bool collectCorner)
    : layerHeading(&layer),
      table(&layer.Table()),
      skipEmpty(skipEmpty_),
      dimNamesInCorner(dimNamesInCorner_),
      axisDims(axis) {
  std::reverse(axisDims.begin(), axisDims.end());
  PuppetVector<short> otherDims = other;
  std::reverse(otherDims.begin(), otherDims.end());
  placeCalculator = LayerData::PlaceCalculator(axisDims, table->SizeVector());
  if (skipEmpty) {
    Layer().FindNonEmptyHeaders(axisDims, otherDims, nonEmptyPlaces);
  }
  placeCount = skipEmpty ? nonEmptyPlaces.size() : placeCalculator.Size();
  FindVisibleLevels();
  headingWidth = std::accumulate(levelsPerDim.begin(), levelsPerDim.end(), 0U);
  if (collectCorner) {
    CollectCornerLabels();
  }
}

OmDisplayRowHeading::Data::LayerData& OmDisplayRowHeading::Data::Layer() const noexcept {
  return *layerHeading->data;
}

OmDisplayRowHeading::Data::Path* OmDisplayRowHeading::Data::PathAt(unsigned long k,
                                                                   unsigned int digit) const {
  OmDimHeader* const header = Layer().Header(placeCalculator.Dimensions()[k]);
  return header != nullptr && digit < header->nodePaths.size() ? &header->nodePaths[digit]
                                                               : nullptr;
}

template <typename Visit>
void OmDisplayRowHeading::Data::ForEachPath(unsigned long long place, Visit visit) const {
  // Not axisDims, which may have been lengthened by reading.
  const LayerData::PlaceDigits digits(placeCalculator, place);
  for (unsigned long k = 0; k != placeCalculator.Dimensions().size(); ++k) {
    visit(k, PathAt(k, digits[k]));
  }
}

void OmDisplayRowHeading::Data::FindVisibleLevels() {
  Layer().FindVisibleLevels(nonEmptyPlaces, placeCalculator, levelsPerDim);
  if (!dimNamesInCorner) {
    return;
  }
  for (unsigned long k = 0; k != levelsPerDim.size(); ++k) {
    // The root's label moves to the corner.
    Path* const path = PathAt(k, 0);
    if (path != nullptr && levelsPerDim[k] != 0 && !path->back()->Hide()) {
      --levelsPerDim[k];
    }
  }
}

std::vector<const OmDisplayRowHeading::Data::Path*> OmDisplayRowHeading::Data::FindNodes(
    unsigned long long place) const {
  std::vector<const Path*> paths;
  ForEachPath(place, [&](unsigned long, const Path* path) { paths.push_back(path); });
  return paths;
}

bool OmDisplayRowHeading::Data::CollectCornerLabels() {
  bool found = false;
  if (dimNamesInCorner) {
    const std::vector<const Path*> paths = FindNodes(0);
    for (unsigned long k = 0; k != paths.size(); ++k) {
      if (paths[k] == nullptr) {
        continue;
      }
      const ConstNode& root = *(paths[k]->end() - 1);
      const OmCellText* const name = root->Hide() ? nullptr : root->Text();
      cornerText.resize(cornerText.size() + levelsPerDim[k], nullptr);
      if (levelsPerDim[k] != 0 && name != nullptr) {
        cornerText[cornerText.size() - levelsPerDim[k]] = name;
        found = true;
      }
    }
  }
  if (placeCount != 0 && !found) {
    cornerText.resize(headingWidth, nullptr);
    if (headingWidth != 0) {
      cornerText[0] = table->CornerText();
    }
  }
  return found;
}

namespace {

// Repeats the last of some nodes until kTogether divides their number.
template <typename Nodes>
void FillUp(Nodes& nodes) {
  while (nodes.size() % kTogether != 0) {
    nodes.push_back(nodes.back());
  }
}

}  // namespace

// Takes two bits a node.
OmDisplayRowHeading::Data::Mark OmDisplayRowHeading::Data::MarkOf(const PathNode* node,
                                                                  const PathNode* end) noexcept {
  if (end - node >= 32) {
    return kNoMark;
  }
  Mark mark = 0;
  for (; node != end; ++node) {
    mark = mark << 2 | static_cast<Mark>((*node)->Hide()) << 1 |
           static_cast<Mark>((*node)->HideLabels());
  }
  return mark;
}

// Tells whether MarkOf() is anything but 0, at a third of its price.
inline bool OmDisplayRowHeading::Data::IsAnyHidden(const PathNode* node,
                                                   const PathNode* end) noexcept {
  unsigned char any = 0;
  for (; node != end; node += kTogether) {
    for (unsigned long i = 0; i != kTogether; ++i) {
      any = static_cast<unsigned char>(any | static_cast<unsigned char>(node[i]->Hide()) |
                                       static_cast<unsigned char>(node[i]->HideLabels()));
    }
  }
  return any != 0;
}

// Returns a block of categories of the innermost dimension.
OmDisplayRowHeading::Data::Block& OmDisplayRowHeading::Data::InnerBlock(std::deque<Path>& paths,
                                                                        unsigned long block) {
  innerBlocks.resize(paths.size() / kBlock + 1);
  Block& kept = innerBlocks[block];
  if (kept.marks.empty()) {
    Block made;
    const unsigned long begin = block * kBlock;
    const unsigned long end = std::min(begin + kBlock, paths.size());
    for (unsigned long p = begin; p != end; ++p) {
      made.depth = std::max(made.depth, paths[p].size());
    }
    made.depth += (kTogether - made.depth % kTogether) % kTogether;
    made.labels.reserve((end - begin) * levelsPerDim.back());
    made.nodes.reserve((end - begin) * made.depth);
    made.marks.reserve(end - begin);
    for (unsigned long p = begin; p != end; ++p) {
      for (const ConstNode& node : paths[p]) {
        made.nodes.push_back(&*node);
      }
      made.nodes.resize((p - begin + 1) * made.depth, made.nodes.back());
      const PathNode* const last = made.nodes.data() + made.nodes.size();
      made.marks.push_back(MarkOf(last - made.depth, last));
      made.marked += made.marks.back() != 0 ? 1 : 0;
      ForEachLabel(paths[p], levelsPerDim.back(), dimNamesInCorner,
                   [&](ConstNode* node) { made.labels.push_back(node); });
    }
    kept = std::move(made);
  }
  return kept;
}

// Makes `shown` the run that `place` is in. Not a part of what calls it, which mostly need not.
[[gnu::noinline]] void OmDisplayRowHeading::Data::EnterRun(unsigned long long place) {
  const LayerData::PlaceDigits digits(placeCalculator, place);
  const unsigned long dims = levelsPerDim.size();
  shown.length = 0;
  shown.outerNodes.clear();
  shown.outerLabels.clear();
  for (unsigned long k = 0; k + 1 < dims; ++k) {
    if (Path* const path = PathAt(k, digits[k]); path != nullptr) {
      for (const ConstNode& node : *path) {
        shown.outerNodes.push_back(&*node);
      }
      ForEachLabel(*path, levelsPerDim[k], dimNamesInCorner,
                   [&](ConstNode* node) { shown.outerLabels.push_back(node); });
    } else {
      shown.outerLabels.insert(shown.outerLabels.end(), levelsPerDim[k], nullptr);
    }
  }
  FillUp(shown.outerNodes);
  shown.outerMark =
      MarkOf(shown.outerNodes.data(), shown.outerNodes.data() + shown.outerNodes.size());

  const unsigned int digit = dims != 0 ? digits[dims - 1] : 0;
  if (dims == 0 || PathAt(dims - 1, digit) == nullptr) {
    shown.outerLabels.resize(headingWidth, nullptr);
    shown.labels = nullptr;
    shown.width = 0;
    shown.nodes = nullptr;
    shown.depth = 0;
    shown.marks = &kNothingHidden;
    shown.plain = shown.outerMark == 0;
    shown.first = place;
    shown.length = 1;
    return;
  }
  std::deque<Path>& paths = Layer().Header(placeCalculator.Dimensions()[dims - 1])->nodePaths;
  // The first digit of a place may be beyond its base, no other one.
  unsigned long end = paths.size();
  if (dims != 1) {
    end = std::min<unsigned long>(end, LayerData::DigitReader(placeCalculator, dims - 1).Base());
  }
  Block& block = InnerBlock(paths, digit / kBlock);
  const unsigned long category = digit % kBlock;
  const PathNode* const nodes = block.nodes.data() + category * block.depth;
  Mark& listed = block.marks[category];
  if (const Mark mark = MarkOf(nodes, nodes + block.depth); mark != listed || mark == kNoMark) {
    ConstNode** label = block.labels.data() + category * levelsPerDim.back();
    ForEachLabel(paths[digit], levelsPerDim.back(), dimNamesInCorner,
                 [&](ConstNode* node) { *label++ = node; });
    block.marked += mark != 0 ? 1 : 0;
    block.marked -= listed != 0 ? 1 : 0;
    listed = mark;
  }
  shown.labels = block.labels.data();
  shown.width = levelsPerDim.back();
  shown.nodes = block.nodes.data();
  shown.depth = block.depth;
  shown.marks = block.marks.data();
  shown.plain = shown.outerMark == 0 && block.marked == 0;
  shown.first = place - category;
  shown.length = std::min(kBlock, end - digit / kBlock * kBlock);
}

// Tells whether what is kept of place `i` of the run is no longer what its nodes say.
inline bool OmDisplayRowHeading::Data::IsStale(unsigned long i) const noexcept {
  const PathNode* const inner = shown.nodes + i * shown.depth;
  const PathNode* const outer = shown.outerNodes.data();
  const PathNode* const innerEnd = inner + shown.depth;
  const PathNode* const outerEnd = outer + shown.outerNodes.size();
  if (shown.plain) {
    return IsAnyHidden(inner, innerEnd) || IsAnyHidden(outer, outerEnd);
  }
  const Mark innerMark = MarkOf(inner, innerEnd);
  const Mark outerMark = MarkOf(outer, outerEnd);
  return innerMark != shown.marks[i] || outerMark != shown.outerMark || innerMark == kNoMark ||
         outerMark == kNoMark;
}

namespace {

// A way through two arrays, one behind the other. A container that is made from it copies each
// label once, and none that was written just before, which it would have to wait for.
class Joined {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = ConstNode*;
  using difference_type = long;
  using pointer = ConstNode* const*;
  using reference = ConstNode* const&;

  // Begins `left` labels before the end.
  Joined(const std::vector<ConstNode*>& front, ConstNode* const* back_, unsigned int left_) noexcept
      : at(front.empty() ? back_ : front.data()),
        frontEnd(front.data() + front.size()),
        back(back_),
        left(left_) {}

  reference operator*() const noexcept { return *at; }
  Joined& operator++() noexcept {
    --left;
    if (++at == frontEnd) {
      at = back;
    }
    return *this;
  }
  friend bool operator==(const Joined& a, const Joined& b) noexcept { return a.left == b.left; }

 private:
  ConstNode* const* at;
  ConstNode* const* frontEnd;
  ConstNode* const* back;
  unsigned int left;
};

}  // namespace

OmDisplayRowHeading::Data::Labels OmDisplayRowHeading::Data::GetRowNodes(unsigned long long place) {
  if (place - shown.first >= shown.length || IsStale(place - shown.first)) {
    EnterRun(place);
  }
  ConstNode* const* const label = shown.labels + (place - shown.first) * shown.width;
  // At once: filling a deque one by one costs more than anything else here.
  return Labels(Joined(shown.outerLabels, label, headingWidth),
                Joined(shown.outerLabels, label, 0));
}

void OmDisplayRowHeading::Data::GetRowNodeCategories(unsigned long long place, Labels& out) const {
  ForEachPath(place, [&](unsigned long, Path* path) {
    out.push_back(path != nullptr ? path->begin() : nullptr);
  });
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

unsigned short OmDisplayRowHeading::Data::VisibleLevels(int k) const {
  const auto i = static_cast<unsigned long>(k);
  OM_HARDEN(i < levelsPerDim.size(), "OmDisplayRowHeading::Data::VisibleLevels");
  return i < levelsPerDim.size() ? levelsPerDim[i] : static_cast<unsigned short>(0);
}

int OmDisplayRowHeading::Data::DimensionIndex(int k) {
  OM_HARDEN(k >= 0, "OmDisplayRowHeading::Data::DimensionIndex");
  return k < 0 ? -1 : axisDims[static_cast<unsigned long>(k)];
}

// Gives what entry `c` of every Row() is, from the one digit that decides it.
OmDisplayRowHeading::Data::Labels OmDisplayRowHeading::Data::Column(int c) const {
  OM_HARDEN(placeCount == 0 || (c >= 0 && static_cast<unsigned int>(c) < headingWidth),
            "OmDisplayRowHeading::Data::Column");
  Labels column;
  auto level = static_cast<unsigned int>(c);
  unsigned long k = 0;
  while (k != levelsPerDim.size() && level >= levelsPerDim[k]) {
    level -= levelsPerDim[k++];
  }
  if (placeCount == 0 || k == levelsPerDim.size()) {
    column.resize(static_cast<unsigned long>(placeCount));
    return column;
  }

  const LayerData::DigitReader digitOf(placeCalculator, k);
  const auto labelOf = [&](unsigned int digit) {
    return LabelAt(PathAt(k, digit), level, dimNamesInCorner);
  };
  if (skipEmpty) {
    column.resize(nonEmptyPlaces.size());
    auto entry = column.begin();
    unsigned int last = digitOf(nonEmptyPlaces[0]);
    ConstNode* label = labelOf(last);
    for (const unsigned long long place : nonEmptyPlaces) {
      if (const unsigned int digit = digitOf(place); digit != last) {
        last = digit;
        label = labelOf(digit);
      }
      *entry++ = label;
    }
    return column;
  }

  // Every label stands for a run of rows, and the runs repeat. A deque takes many entries at once
  // at a fraction of what each alone costs.
  const unsigned long long stride = digitOf.Stride() == 0 ? placeCount : digitOf.Stride();
  const auto left = [&] { return placeCount - column.size(); };
  if (stride >= kLongRun) {
    for (unsigned int digit = 0; left() != 0; digit = digit + 1 == digitOf.Base() ? 0 : digit + 1) {
      column.insert(column.end(), std::min(stride, left()), labelOf(digit));
    }
    return column;
  }
  // The labels of a period, and those that follow it, so that every insertion begins where a node
  // of the deque does, and fills it.
  const auto period = static_cast<unsigned long>(std::min(stride * digitOf.Base(), placeCount));
  std::vector<ConstNode*> labels;
  labels.reserve(period + std::max<unsigned long>(stride, kAtOnce));
  for (unsigned int digit = 0; labels.size() < period; ++digit) {
    labels.insert(labels.end(), stride, labelOf(digit));
  }
  labels.resize(period);
  for (unsigned long i = 0; i != kAtOnce; ++i) {
    labels.push_back(labels[i]);
  }
  for (unsigned long from = 0; left() != 0; from = (from + kAtOnce) % period) {
    const unsigned long n = std::min<unsigned long>(kAtOnce, left());
    column.insert(column.end(), &labels[from], &labels[from] + n);
  }
  return column;
}

void OmDisplayRowHeading::Data::DimCatNodes(int r, std::vector<ConstNode*>& dimNodes,
                                            std::vector<ConstNode*>& catNodes) const {
  ForEachPath(PlaceOf(r), [&](unsigned long, Path* path) {
    if (path != nullptr && path->size() > 1) {
      dimNodes.push_back(&path->back());
      catNodes.push_back(path->begin());
    }
  });
}

void OmDisplayRowHeading::Data::DimAllNodes(int r, std::vector<ConstNode*>& out) const {
  ForEachPath(PlaceOf(r), [&](unsigned long, Path* path) {
    if (path == nullptr || path->size() <= 1) {
      return;
    }
    for (ConstNode* node = path->end(); node != path->begin();) {
      out.push_back(--node);
    }
  });
}

void OmDisplayRowHeading::Data::Fill(std::vector<int>& subscripts, int r) const {
  Layer().Fill(ListedPlaceOf(r), placeCalculator, subscripts);
}

const std::vector<unsigned long long>& OmDisplayRowHeading::Data::Places() {
  if (!skipEmpty && nonEmptyPlaces.empty()) {
    nonEmptyPlaces.resize(static_cast<unsigned long>(placeCalculator.Size()));
    std::iota(nonEmptyPlaces.begin(), nonEmptyPlaces.end(), 0ULL);
  }
  return nonEmptyPlaces;
}

// --- The heading --------------------------------------------------------------------------------

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

// Flat, because calls are a good part of what a row costs beside its memory.
[[gnu::flatten]] std::deque<ConstNode*> OmDisplayRowHeading::Row(int r) const {
  return data->GetRowNodes(data->ListedPlaceOf(r));
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
  data->Fill(subscripts, r);
}
