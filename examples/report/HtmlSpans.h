// HeadSpans joins the labels of a row or column heading: which labels stand once for many rows or
// columns, and over how many levels they reach.

#ifndef EXAMPLES_REPORT_HTMLSPANS_H
#define EXAMPLES_REPORT_HTMLSPANS_H

#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

#include "backend/tables/om/DisplayLayerHeading.h"

namespace report {

// A heading laid out: `places` rows or columns, each with a label or null on each of `levels`
// levels. Neighbours share a label where they have the same category in every outer dimension and
// the same nodes down to that level; a label also takes the empty levels behind it. Together the
// spans cover every place and level once.
class HeadSpans {
 public:
  using ConstNode = OmDisplayLayerHeading::ConstNode;
  using Nodes = std::deque<ConstNode*>;

  // Over how many places and levels a label goes; both 0 where another one covers it.
  struct Span {
    unsigned places = 0;
    unsigned levels = 0;
  };

  // `depths` has the number of levels of each dimension. `labels` and `categories` return the nodes
  // of a place, by level and by dimension.
  HeadSpans(unsigned places, const std::vector<unsigned>& depths,
            const std::function<Nodes(int)>& labels, const std::function<Nodes(int)>& categories);

  [[nodiscard]] unsigned Places() const noexcept { return placeCount; }
  [[nodiscard]] unsigned Levels() const noexcept { return levelCount; }
  [[nodiscard]] const Span& At(unsigned place, unsigned level) const {
    return spans[place * static_cast<std::size_t>(levelCount) + level];
  }
  // Returns the node whose label stands there, or null.
  [[nodiscard]] const ConstNode* Node(unsigned place, unsigned level) const {
    return nodes[place * static_cast<std::size_t>(levelCount) + level];
  }

 private:
  [[nodiscard]] bool IsBlank(unsigned place, unsigned places, unsigned level) const;
  void Join();

  unsigned placeCount;
  unsigned levelCount = 0;
  std::vector<const ConstNode*> nodes;  // of each place, level by level
  std::vector<Span> spans;              // likewise
  std::vector<unsigned> shared;         // of each place, the levels that it shares with the next
};

}  // namespace report

#endif
