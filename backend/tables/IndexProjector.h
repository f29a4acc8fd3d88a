// OmIndexProjector, which scatters the digits of a place over a full vector of cell subscripts.

#ifndef BACKEND_TABLES_INDEXPROJECTOR_H
#define BACKEND_TABLES_INDEXPROJECTOR_H

#include <vector>

#include "backend/tables/om/Assert.h"

// Writes digit k at the k-th position. Nothing here is checked in a release build.
class OmIndexProjector {
 public:
  // Has no positions.
  OmIndexProjector() = default;

  // Replaces the positions.
  void Set(const std::vector<int>& positions_) { positions = positions_; }

  // Writes digits[k] to out[positions[k]] for every k, and leaves the other entries. There must be
  // as many digits as positions, and every position must be an index of `out`.
  template <typename DigitVector, typename IndexVector>
  void Spread(const DigitVector& digits, IndexVector& out) const;

 private:
  std::vector<int> positions;
};

template <typename DigitVector, typename IndexVector>
void OmIndexProjector::Spread(const DigitVector& digits, IndexVector& out) const {
  OM_HARDEN(digits.size() >= positions.size(), "OmIndexProjector::Spread");
  for (unsigned long k = 0; k != positions.size(); ++k) {
    const auto position = static_cast<unsigned long>(positions[k]);
    OM_HARDEN(position < out.size(), "OmIndexProjector::Spread");
    out[position] = static_cast<int>(digits[k]);
  }
}

#endif
