// om::NumberOf, the number in a cell text, for front ends that align, sort or compute.

#ifndef DISPLAY_CELLNUMBER_H
#define DISPLAY_CELLNUMBER_H

#include <optional>

#include "backend/tables/om/Format.h"
#include "display/Export.h"

class OmCellText;

namespace om {

// A number and the format that its text follows. NaN is a missing value.
struct CellNumber {
  double value;
  Qualtex_Format format;
  bool labelled;  // the text is a label in place of the number
};

// Returns the number of an OmNumber or an OmNumDataValue, or nothing for any other kind of text.
[[nodiscard]] OM_DISPLAY_API std::optional<CellNumber> NumberOf(const OmCellText& cell);

}  // namespace om

#endif
