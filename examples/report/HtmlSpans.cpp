#include "examples/report/HtmlSpans.h"

#include <algorithm>
#include <numeric>

namespace report {

namespace {

using Nodes = HeadSpans::Nodes;

bool SameNode(const HeadSpans::ConstNode* a, const HeadSpans::ConstNode* b) {
  return a == nullptr || b == nullptr ? a == b : *a == *b;
}

// Returns how many levels two neighbours have in common, from the outermost one.
unsigned SharedLevels(const std::vector<unsigned>& depths, const Nodes& labelsA,
                      const Nodes& labelsB, const Nodes& categoriesA, const Nodes& categoriesB) {
  unsigned level = 0;
  for (std::size_t dimension = 0; dimension < depths.size(); ++dimension) {
    for (unsigned i = 0; i < depths[dimension]; ++i, ++level) {
      if (!SameNode(labelsA[level], labelsB[level])) {
        return level;
      }
    }
    if (!SameNode(categoriesA[dimension], categoriesB[dimension])) {
      return level;
    }
  }
  return level;
}

}  // namespace

HeadSpans::HeadSpans(unsigned places, const std::vector<unsigned>& depths,
                     const std::function<Nodes(int)>& labels,
                     const std::function<Nodes(int)>& categories)
    : placeCount(places), levelCount(std::accumulate(depths.begin(), depths.end(), 0U)) {
  const std::size_t count = static_cast<std::size_t>(placeCount) * levelCount;
  nodes.reserve(count);
  spans.resize(count);
  shared.reserve(placeCount);
  Nodes labelsBefore;
  Nodes categoriesBefore;
  for (unsigned place = 0; place < placeCount; ++place) {
    Nodes labelsHere = labels(static_cast<int>(place));
    Nodes categoriesHere = categories(static_cast<int>(place));
    nodes.insert(nodes.end(), labelsHere.begin(), labelsHere.end());
    if (place != 0) {
      shared.push_back(
          SharedLevels(depths, labelsBefore, labelsHere, categoriesBefore, categoriesHere));
    }
    labelsBefore.swap(labelsHere);
    categoriesBefore.swap(categoriesHere);
  }
  shared.push_back(0);
  Join();
}

bool HeadSpans::IsBlank(unsigned place, unsigned places, unsigned level) const {
  for (unsigned i = place; i < place + places; ++i) {
    if (Node(i, level) != nullptr) {
      return false;
    }
  }
  return true;
}

void HeadSpans::Join() {
  std::vector<unsigned> covered(placeCount, 0);  // the levels of each place that are laid out
  for (unsigned level = 0; level < levelCount; ++level) {
    for (unsigned place = 0; place < placeCount;) {
      if (covered[place] > level) {
        ++place;
        continue;
      }
      Span& span = spans[place * static_cast<std::size_t>(levelCount) + level];
      span.places = 1;
      while (shared[place + span.places - 1] > level) {
        ++span.places;
      }
      span.levels = 1;
      while (level + span.levels < levelCount && IsBlank(place, span.places, level + span.levels)) {
        ++span.levels;
      }
      std::fill_n(covered.begin() + place, span.places, level + span.levels);
      place += span.places;
    }
  }
}

}  // namespace report
