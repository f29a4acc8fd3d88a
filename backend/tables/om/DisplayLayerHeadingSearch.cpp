// The search for the places of an axis that hold a cell.
//
// What decides is stated cell by cell. The dense search asks for every cell of a place until there
// is one; the sparse one takes the place of every cell that the iterators visit. Both are done here
// in one walk over what the store holds, which gives the same answers.

#include <algorithm>
#include <bit>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/DisplayLayerHeadingData.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"
#include "backend/tables/om/PointerVector.h"

namespace {

using Place = unsigned long long;
using Places = std::vector<Place>;

constexpr Place kNoLimit = std::numeric_limits<Place>::max();

// A set of places: a bit for each, or a list where they are too many for that.
class PlaceSet {
 public:
  // Every place will be below `count`.
  explicit PlaceSet(Place count) : missing(count) {
    if (count <= kMostBits) {
      words.resize((static_cast<unsigned long>(count) + 63) / 64);
    }
  }

  // Returns whether every place is there.
  [[nodiscard]] bool Full() const noexcept { return missing == 0; }
  // Returns whether a place is known to be there. Of a list only the last one is known.
  [[nodiscard]] bool Has(Place place) const {
    return words.empty() ? !list.empty() && list.back() == place
                         : (words[place / 64] >> place % 64 & 1) != 0;
  }

  void Add(Place place) {
    if (Has(place)) {
      return;
    }
    if (words.empty()) {
      list.push_back(place);
    } else {
      words[place / 64] |= 1UL << place % 64;
      --missing;
    }
  }

  // Returns the places in ascending order.
  [[nodiscard]] Places Take() {
    if (words.empty()) {
      std::sort(list.begin(), list.end());
      list.erase(std::unique(list.begin(), list.end()), list.end());
    }
    for (unsigned long i = 0; i != words.size(); ++i) {
      for (unsigned long word = words[i]; word != 0; word &= word - 1) {
        list.push_back(64 * i + static_cast<unsigned long>(std::countr_zero(word)));
      }
    }
    return std::move(list);
  }

 private:
  static constexpr Place kMostBits = 1ULL << 24;

  std::vector<unsigned long> words;  // a bit a place, or nothing
  Places list;                       // the places where there are no bits, some of them repeated
  Place missing;                     // places that have no bit yet
};

// What the walk does at one level of the store, which is one dimension.
struct Level {
  // For a dimension of the heading: its leaves, those below `leaves` count, and what the position
  // of one adds to the place, times the position.
  const OmDimHeader* header = nullptr;
  unsigned long leaves = 0;
  Place weight = 0;
  // The subscripts to follow.
  unsigned long begin = 0;
  unsigned long end = std::numeric_limits<unsigned long>::max();
  // Leaves that count beside the one in header->leafPositions, by subscript; as a rule none.
  std::multimap<int, unsigned long> others;
};

// Adds the places of the cells of a store to a set.
class StoreWalk {
 public:
  StoreWalk(const std::vector<Level>& levels_, PlaceSet& found_) : levels(levels_), found(found_) {
    while (lowestHead != levels.size() && levels[lowestHead].header == nullptr) {
      ++lowestHead;
    }
  }

  // Adds the places of the cells below `v`, which is the vector of dimension `k`.
  void Walk(unsigned long k, const OmPointerVector& v, Place place) {
    const Level& level = levels[k];
    const unsigned long end = std::min(level.end, v.size());
    for (unsigned long s = level.begin; s < end; ++s) {
      // Below the heading's dimensions the place is settled, and one cell is enough.
      if (found.Full() || (k < lowestHead && found.Has(place))) {
        return;
      }
      s = FindNonZero(v, s);
      if (s >= end) {
        return;
      }
      const void* const element = v.begin()[s];
      if (level.header == nullptr) {
        Descend(k, element, place);
        continue;
      }
      // A position of -1 is beyond all leaves.
      const auto p = static_cast<unsigned long>(level.header->leafPositions[s]);
      if (p < level.leaves) {
        Descend(k, element, place + p * level.weight);
      }
      const auto [first, last] = level.others.equal_range(static_cast<int>(s));
      for (auto other = first; other != last; ++other) {
        Descend(k, element, place + other->second * level.weight);
      }
    }
  }

 private:
  void Descend(unsigned long k, const void* element, Place place) {
    if (k == 0) {
      found.Add(place);
    } else {
      Walk(k - 1, *static_cast<const OmPointerVector*>(element), place);
    }
  }

  const std::vector<Level>& levels;
  PlaceSet& found;
  unsigned long lowestHead = 0;  // the lowest level that adds to the place; levels.size() for none
};

// Returns the places that the walk finds, ascending; all of them are below `count`.
Places FindPlaces(const OmPointerVector* root, const std::vector<Level>& levels, Place count) {
  PlaceSet found(count);
  if (root != nullptr && !levels.empty()) {
    StoreWalk(levels, found).Walk(levels.size() - 1, *root, 0);
  }
  return found.Take();
}

// Replaces every place by those with each of `count` values of a digit that is 0 so far.
void RepeatForEachDigit(Places& places, unsigned long count, Place weight) {
  Places all;
  all.reserve(places.size() * count);
  for (const Place place : places) {
    for (unsigned long digit = 0; digit != count; ++digit) {
      all.push_back(place + digit * weight);
    }
  }
  std::sort(all.begin(), all.end());
  places.swap(all);
}

bool Contains(const PuppetVector<short>& dims, unsigned long from, short d) {
  return std::find(dims.begin() + static_cast<long>(from), dims.end(), d) != dims.end();
}

}  // namespace

const OmPointerVector* OmDisplayLayerHeading::Store(const OmPivotTable& table) noexcept {
  return table._my->root;
}

void OmDisplayLayerHeading::Data::FindNonEmptyHeaders(const PuppetVector<short>& headDims,
                                                      const PuppetVector<short>& otherDims,
                                                      Places& out) {
  if (headers.size() != table->NDimensions()) {
    // Dimensions were added since: the store has a level for each, and no header.
    throw OMSException("OmPivotTable::Cell() -- nind != _my->_dimensions.size()",
                       static_cast<double>(headers.size()),
                       static_cast<double>(table->NDimensions()));
  }
  if (isSparse) {
    FindNonEmptyHeadersSparse(headDims, otherDims, out);
  } else {
    FindNonEmptyHeadersDense(headDims, otherDims, out);
  }
}

void OmDisplayLayerHeading::Data::FindNonEmptyHeadersSparse(
    const PuppetVector<short>& headDims, const PuppetVector<short>& /*otherDims*/, Places& out) {
  // The iterators visit nothing where the first way down the store ends at a null.
  if (table->FirstCell().Cell() == nullptr) {
    return;
  }
  const PlaceCalculator calc(headDims, table->SizeVector());
  const std::vector<unsigned int> bases = calc.Base().Bases();
  std::vector<Level> levels(headers.size());
  bool inRange = true;  // no leaf stands at or beyond its dimension's size
  for (unsigned long k = 0; k != bases.size(); ++k) {
    const auto d = static_cast<unsigned long>(headDims[k]);
    const OmDimHeader& header = *headers[d];
    const Place weight = levels[d].weight + calc.Single().Weight(k);
    levels[d] = {&header, header.nodePaths.size(), weight, 0, header.leafPositions.size(), {}};
    inRange = inRange && header.nodePaths.size() <= bases[k];
  }
  // A place that takes more than 64 bits loses what does not fit, as DisplayPosition does.
  const bool limited = inRange && calc.Single().Fits();
  Places found = FindPlaces(Store(*table), levels, limited ? calc.Size() : kNoLimit);
  if (!inRange) {
    // Such a leaf shows as another place, which may be one where a leaf is missing.
    std::erase_if(found, [&](Place place) {
      unsigned long k = 0;
      while (k != bases.size() && PathAt(place, calc, k) != nullptr) {
        ++k;
      }
      return k != bases.size();
    });
  }
  out.insert(out.end(), found.begin(), found.end());
}

void OmDisplayLayerHeading::Data::FindNonEmptyHeadersDense(const PuppetVector<short>& headDims,
                                                           const PuppetVector<short>& otherDims,
                                                           Places& out) {
  out.clear();
  const std::vector<int> sizes = table->SizeVector();
  const PlaceCalculator head(headDims, sizes);
  const PlaceCalculator other(otherDims, sizes);
  const std::vector<unsigned int> bases = head.Base().Bases();
  if (other.Size() == 0) {
    return;  // no place to ask for, also where the product of the sizes wraps
  }

  std::vector<Level> levels(headers.size());
  for (unsigned long d = 0; d != levels.size(); ++d) {
    if (Contains(otherDims, 0, static_cast<short>(d))) {
      levels[d].end = static_cast<unsigned int>(sizes[d]);
    } else if (currentSubscripts[d] >= 0) {
      levels[d].begin = static_cast<unsigned long>(currentSubscripts[d]);
      levels[d].end = levels[d].begin + 1;
    } else {
      levels[d].end = 0;  // the current category has no subscript, so no cell
    }
  }
  for (unsigned long k = 0; k != bases.size(); ++k) {
    if (Contains(otherDims, 0, headDims[k])) {
      continue;
    }
    const OmDimHeader& header = *headers[static_cast<unsigned long>(headDims[k])];
    Level& level = levels[static_cast<unsigned long>(headDims[k])];
    const auto leaves = std::min<unsigned long>(bases[k], header.nodePaths.size());
    level = {&header, leaves, head.Single().Weight(k), 0, header.leafPositions.size(), {}};
    for (unsigned long p = 0; p != leaves; ++p) {
      const int s = header.leafSubscripts[p];
      if (s >= 0 && header.leafPositions[static_cast<unsigned long>(s)] != static_cast<int>(p)) {
        level.others.emplace(s, p);
      }
    }
  }

  Places found = FindPlaces(Store(*table), levels, head.Single().Fits() ? head.Size() : kNoLimit);
  found.erase(std::lower_bound(found.begin(), found.end(), head.Size()), found.end());
  // A dimension that comes again in a later place of the lists takes its subscript from there, so
  // that every leaf will do here.
  for (unsigned long k = 0; k != bases.size(); ++k) {
    if (Contains(otherDims, 0, headDims[k]) || Contains(headDims, k + 1, headDims[k])) {
      const unsigned long leaves =
          headers[static_cast<unsigned long>(headDims[k])]->nodePaths.size();
      RepeatForEachDigit(found, std::min<unsigned long>(bases[k], leaves), head.Single().Weight(k));
    }
  }
  out.swap(found);
}
