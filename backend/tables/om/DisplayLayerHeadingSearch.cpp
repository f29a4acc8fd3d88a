// The search for the places of an axis that hold a cell.
//
// What decides is stated cell by cell. The dense search asks for every cell of a place until there
// is one; the sparse one takes the place of every cell that the iterators visit. Both are done here
// in one walk over the store's own vectors, which gives the same answers while places stay below
// the product of the sizes. Where they may not, the sparse search goes cell by cell.

#include <algorithm>
#include <bit>
#include <deque>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/CellStore.h"
#include "backend/tables/om/DisplayLayerHeadingData.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"

namespace {

using Places = std::vector<unsigned long long>;

// A set of places: a bit for each, or a list where the places are too many for that.
class PlaceSet {
 public:
  // Every place will be below `count`.
  explicit PlaceSet(unsigned long long count) {
    if (count <= kMostBits) {
      end = missing = count;
      words.resize((static_cast<unsigned long>(count) + 63) / 64);
    }
  }

  // Tells that no place can be added any more.
  [[nodiscard]] bool Full() const noexcept { return missing == 0; }
  // Tells that a place is known to be there; not every place that is there is known.
  [[nodiscard]] bool Has(unsigned long long place) const {
    return place < end && (words[static_cast<unsigned long>(place / 64)] >> place % 64 & 1) != 0;
  }

  void Add(unsigned long long place) {
    if (place < end) {
      if (!Has(place)) {
        words[static_cast<unsigned long>(place / 64)] |= 1UL << place % 64;
        --missing;
      }
      return;
    }
    if (list.size() >= limit) {
      Tidy();
      limit = std::max(kLeastLimit, 2 * list.size());
    }
    list.push_back(place);
  }

  // Returns the places in ascending order.
  [[nodiscard]] Places Take() {
    Tidy();
    if (end == 0) {
      return std::move(list);
    }
    Places places;
    places.reserve(static_cast<unsigned long>(end - missing) + list.size());
    for (unsigned long i = 0; i != words.size(); ++i) {
      for (unsigned long word = words[i]; word != 0; word &= word - 1) {
        places.push_back(64 * i + static_cast<unsigned long>(std::countr_zero(word)));
      }
    }
    places.insert(places.end(), list.begin(), list.end());
    return places;
  }

 private:
  static constexpr unsigned long long kMostBits = 1ULL << 24;
  static constexpr unsigned long kLeastLimit = 1024;

  void Tidy() {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
  }

  unsigned long long end = 0;        // of the places that have a bit
  std::vector<unsigned long> words;  // those bits
  Places list;                       // the others, repeats among them
  unsigned long limit = kLeastLimit;
  // How many places below `end` are not there yet, or a lot.
  unsigned long long missing = std::numeric_limits<unsigned long long>::max();
};

// What the walk does at one level of the store, which is one dimension.
struct Level {
  unsigned long begin = 0;  // the subscripts to follow
  unsigned long end = std::numeric_limits<unsigned long>::max();
  bool head = false;           // each subscript stands for leaves of a heading dimension
  const int* first = nullptr;  // by subscript below `end`, a leaf that carries it, or -1
  const int* next = nullptr;   // by leaf, another one of the same subscript, or -1; null for none
  unsigned long long weight = 0;  // what a leaf's position adds to the place, times the position
};

class StoreWalk {
 public:
  StoreWalk(const std::vector<Level>& levels_, PlaceSet& found_)
      : levels(levels_), found(found_), lowestHead(levels.size()) {
    for (unsigned long k = levels.size(); k-- != 0;) {
      lowestHead = levels[k].head ? k : lowestHead;
    }
  }

  // Adds the places of the cells below `v`, which is the vector of dimension `k`.
  void Walk(unsigned long k, const OmPointerVector& v, unsigned long long place) {
    if (k < lowestHead) {
      // The place is settled; one cell is enough.
      if (!found.Has(place) && HoldsCell(k, v)) {
        found.Add(place);
      }
      return;
    }
    const Level& level = levels[k];
    const unsigned long end = std::min(level.end, v.size());
    const unsigned long* const marks = v.Marks();
    if (marks == nullptr) {
      WalkSlots(k, v, level.begin, end, place);
      return;
    }
    // Only stretches that hold anything are looked at; the others may be on pages that nobody has
    // touched. What a wide vector costs is to wait for them, so each run is asked for one ahead.
    constexpr unsigned long kStretch = OmPointerVector::kStretch;
    unsigned long ready = NextMarked(marks, level.begin / kStretch, end);
    while (ready * kStretch < end) {
      const unsigned long first = ready;
      unsigned long last = first + 1;
      while (last * kStretch < end && (marks[last / 64] >> last % 64 & 1) != 0) {
        ++last;
      }
      ready = NextMarked(marks, last, end);
      if (ready * kStretch < end) {
        __builtin_prefetch(&v.begin()[ready * kStretch]);
      }
      WalkSlots(k, v, std::max(level.begin, first * kStretch), std::min(end, last * kStretch),
                place);
    }
  }

 private:
  // Returns the first marked stretch from `stretch` on, or one at or past `end`.
  static unsigned long NextMarked(const unsigned long* marks, unsigned long stretch,
                                  unsigned long end) {
    while (stretch * OmPointerVector::kStretch < end) {
      const unsigned long word = marks[stretch / 64] >> stretch % 64;
      if (word != 0) {
        return stretch + static_cast<unsigned long>(std::countr_zero(word));
      }
      stretch = (stretch / 64 + 1) * 64;
    }
    return stretch;
  }

  // Walks the elements from `s` to `end`, which may be looked at in advance.
  void WalkSlots(unsigned long k, const OmPointerVector& v, unsigned long s, unsigned long end,
                 unsigned long long place) {
    const unsigned long start = s;
    unsigned long asked = k != 0 ? s : end;
    for (; s < end; ++s) {
      if (asked < end && asked <= s + kAhead) {
        const unsigned long to = std::min(asked + kAhead, end);
        AskFor(v, std::max(start + kAhead, asked) - kAhead, asked, to, end);
        asked = to;
      }
      if (void* const element = v.begin()[s]; element != nullptr) {
        if (found.Full()) {
          return;
        }
        Visit(k, s, element, place);
      }
    }
  }

  // Asks for what the vectors from `s` to `to` begin with, for what those from `last` to `s` hold
  // first, and for the vectors behind them up to `end`: a vector of the store is as a rule nowhere
  // near the one before it, and most of the work is to wait for it. Many at once, because each is
  // on another page, and the searches for pages overlap only where they follow each other closely.
  // Inlined because a function that does no more than this is one without an effect to the
  // compiler, which drops its calls.
  [[gnu::always_inline]] static inline void AskFor(const OmPointerVector& v, unsigned long last,
                                                   unsigned long s, unsigned long to,
                                                   unsigned long end) {
    for (unsigned long i = to; i < std::min(to + kAhead, end); ++i) {
      __builtin_prefetch(v[i]);
    }
    for (unsigned long i = s; i < to; ++i) {
      if (v[i] != nullptr) {
        static_cast<const OmPointerVector*>(v[i])->AskForFront(kFirst);
      }
    }
    // These come first, and what is in front of them was asked for already.
    for (unsigned long i = last; i < s; ++i) {
      if (v[i] != nullptr) {
        static_cast<const OmPointerVector*>(v[i])->AskForStretches(1);
      }
    }
  }

  // Adds the places of the cells below element `s` of a vector of dimension `k`.
  void Visit(unsigned long k, unsigned long s, const void* element, unsigned long long place) {
    const Level& level = levels[k];
    if (!level.head) {
      Descend(k, element, place);
      return;
    }
    for (int p = level.first[s]; p >= 0; p = level.next != nullptr ? level.next[p] : -1) {
      Descend(k, element, place + static_cast<unsigned long long>(p) * level.weight);
    }
  }

  void Descend(unsigned long k, const void* element, unsigned long long place) {
    if (k == 0) {
      found.Add(place);
    } else {
      Walk(k - 1, *static_cast<const OmPointerVector*>(element), place);
    }
  }

  [[nodiscard]] bool HoldsCell(unsigned long k, const OmPointerVector& v) const {
    const Level& level = levels[k];
    const unsigned long end = std::min(level.end, v.size());
    for (unsigned long s = level.begin; s < end; ++s) {
      s = FindNonZero(v, s);
      if (s < end && (k == 0 || HoldsCell(k - 1, *static_cast<const OmPointerVector*>(v[s])))) {
        return true;
      }
    }
    return false;
  }

  static constexpr unsigned long kAhead = 16;  // vectors
  static constexpr long kFirst = 64;           // elements of each

  const std::vector<Level>& levels;
  PlaceSet& found;
  unsigned long lowestHead;  // the lowest level that adds to the place; levels.size() for none
};

// Returns the places that the walk finds, ascending; all of them are below `count`.
Places FindPlaces(const OmPointerVector* root, const std::vector<Level>& levels,
                  unsigned long long count) {
  PlaceSet found(count);
  if (root != nullptr && !levels.empty()) {
    StoreWalk(levels, found).Walk(levels.size() - 1, *root, 0);
  }
  return found.Take();
}

// Returns what each digit counts for in the place.
Places Weights(const std::vector<unsigned int>& bases) {
  Places weights(bases.size(), 1);
  for (unsigned long k = bases.size(); k-- > 1;) {
    weights[k - 1] = weights[k] * bases[k];
  }
  return weights;
}

// Tells whether the number of places fits 64 bits. Product() wraps where it does not.
bool FitsPlaces(const std::vector<unsigned int>& bases) {
  unsigned long long product = 1;
  return std::none_of(bases.begin(), bases.end(), [&product](unsigned int base) {
    return __builtin_mul_overflow(product, base, &product);
  });
}

// Replaces every place by those with each of `count` values of a digit that is 0 so far.
void RepeatForEachDigit(Places& places, unsigned long count, unsigned long long weight) {
  const unsigned long n = places.size();
  Places all;
  all.reserve(n * count);
  for (const unsigned long long place : places) {
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

bool OmDisplayLayerHeading::Data::HasLeaves(const std::vector<int>& subscripts,
                                            const PlaceCalculator& calc) {
  return std::all_of(calc.Dimensions().begin(), calc.Dimensions().end(), [&](short d) {
    const OmVector<int>& positions = Header(d)->leafPositions;
    const auto subscript = static_cast<unsigned long>(subscripts[static_cast<unsigned long>(d)]);
    return subscript < positions.size() && positions[subscript] >= 0;
  });
}

void OmDisplayLayerHeading::Data::FindNonEmptyHeadersSparse(
    const PuppetVector<short>& headDims, const PuppetVector<short>& /*otherDims*/, Places& out) {
  const PlaceCalculator calc(headDims, table->SizeVector());
  const std::vector<unsigned int> bases = calc.Base().Bases();
  const Places weights = Weights(bases);

  std::vector<Level> levels(headers.size());
  bool inRange = true;  // no leaf stands at or beyond its dimension's size
  for (unsigned long k = 0; k != bases.size(); ++k) {
    const auto d = static_cast<unsigned long>(headDims[k]);
    const OmDimHeader& header = *headers[d];
    Level& level = levels[d];
    level.head = true;
    level.first = header.leafPositions.begin();
    level.end = header.leafPositions.size();
    level.weight += weights[k];
    inRange = inRange && header.nodePaths.size() <= bases[k];
  }

  // The iterators visit nothing where the first way down the store ends at a null.
  if (table->FirstCell().Cell() == nullptr) {
    return;
  }
  if (inRange && FitsPlaces(bases)) {
    Places found = FindPlaces(Store(*table), levels, calc.Size());
    found.insert(found.begin(), out.begin(), out.end());
    out.swap(found);
    return;
  }
  std::set<unsigned long long> places;
  for (OmPivotTable::ConstIterator cell = std::as_const(*table).FirstCell(); cell.Cell() != nullptr;
       ++cell) {
    if (const std::vector<int> index = cell.Index(); HasLeaves(index, calc)) {
      places.insert(DisplayPosition(index, calc));
    }
  }
  Places found(places.begin(), places.end());
  if (!inRange) {
    // Such a leaf shows as another place, which may be one where a leaf is missing.
    const auto lacksLeaf = [&](unsigned long long place) {
      for (unsigned long k = 0; k != bases.size(); ++k) {
        if (PathAt(place, calc, k) == nullptr) {
          return true;
        }
      }
      return false;
    };
    found.erase(std::remove_if(found.begin(), found.end(), lacksLeaf), found.end());
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
  const Places weights = Weights(bases);

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
  std::deque<std::vector<int>> lists;  // what the levels refer to
  for (unsigned long k = 0; k != bases.size(); ++k) {
    const OmDimHeader& header = *Header(headDims[k]);
    if (Contains(otherDims, 0, headDims[k])) {
      continue;
    }
    Level& level = levels[static_cast<unsigned long>(headDims[k])];
    level.head = true;
    std::vector<int>& first = lists.emplace_back(header.leafPositions.size(), -1);
    std::vector<int>& next = lists.emplace_back(header.nodePaths.size(), -1);
    for (unsigned long p = std::min<unsigned long>(bases[k], next.size()); p-- != 0;) {
      if (header.leafSubscripts[p] >= 0) {
        int& leaf = first[static_cast<unsigned long>(header.leafSubscripts[p])];
        next[p] = std::exchange(leaf, static_cast<int>(p));
      }
    }
    level.first = first.data();
    level.next = next.data();
    level.begin = 0;
    level.end = first.size();
    level.weight = weights[k];
  }

  if (other.Size() == 0) {
    return;  // no place to ask for, also where the product of the sizes wraps
  }
  Places found = FindPlaces(Store(*table), levels, head.Size());
  found.erase(std::lower_bound(found.begin(), found.end(), head.Size()), found.end());
  // A dimension that comes again in a later place of the lists takes its subscript from there, so
  // that every leaf will do here.
  for (unsigned long k = 0; k != bases.size(); ++k) {
    if (Contains(otherDims, 0, headDims[k]) || Contains(headDims, k + 1, headDims[k])) {
      RepeatForEachDigit(found,
                         std::min<unsigned long>(bases[k], Header(headDims[k])->nodePaths.size()),
                         weights[k]);
    }
  }
  out.swap(found);
}
