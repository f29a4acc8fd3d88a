#include "display/CellNumber.h"

#include "platform/cells/CellTexts.h"

namespace om {

std::optional<CellNumber> NumberOf(const OmCellText& cell) {
  if (const auto* const number = dynamic_cast<const OmNumber*>(&cell)) {
    return CellNumber{number->Value(), number->Format(), false};
  }
  if (const auto* const value = dynamic_cast<const OmNumDataValue*>(&cell)) {
    return CellNumber{value->Value(), value->Format(), !value->Label().empty()};
  }
  return std::nullopt;
}

}  // namespace om
