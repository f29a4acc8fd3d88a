#include "platform/cells/CellChars.h"

#include <cstring>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Vector.h"
#include "platform/memory/MemoryRegion.h"

OmCellChars::OmCellChars(std::string_view first, std::string_view second, OmMemoryRegion* region)
    : chars(nullptr), firstSize(first.size()), size(first.size() + second.size()) {
  if (size == 0) {
    return;
  }
  chars = static_cast<char*>(OmMemoryRegion::SelectHeap(region)->Allocate(size));
  first.copy(chars, first.size());
  second.copy(chars + firstSize, second.size());
}

OmCellChars::OmCellChars(const OmCellChars& other, [[maybe_unused]] unsigned long trailing) noexcept
    : chars(reinterpret_cast<char*>(this + 1)), firstSize(other.firstSize), size(other.size) {
  OM_HARDEN(trailing == other.size, "OmCellChars::OmCellChars");
  if (size != 0) {
    std::memcpy(chars, other.chars, size);
  }
}

OmCellChars::~OmCellChars() {
  if (chars != reinterpret_cast<char*>(this + 1)) {
    OmMemoryRegion::Release(chars);
  }
}
