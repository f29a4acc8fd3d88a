// OmCellChars, the characters of a cell text: one string or two, in one block. Used by the kinds of
// texts, not by their callers.

#ifndef PLATFORM_CELLS_CELLCHARS_H
#define PLATFORM_CELLS_CELLCHARS_H

#include <string_view>

class OmMemoryRegion;

// Must be the last member of its owner: a copy stores its characters directly behind itself, in the
// Size() trailing bytes that its owner was allocated with. Empty strings need no block.
//
// Invariant: `chars` is null, or the address behind this object, or that of a block of its own.
class OmCellChars {
 public:
  // Copies both strings into a block of `region`, null for the default heap.
  OmCellChars(std::string_view first, std::string_view second, OmMemoryRegion* region);
  // Copies the characters of `other` directly behind this object. The owner must have been
  // allocated with `trailing` bytes behind it, which must be other.Size().
  OmCellChars(const OmCellChars& other, unsigned long trailing) noexcept;
  OmCellChars(const OmCellChars&) = delete;
  OmCellChars& operator=(const OmCellChars&) = delete;
  ~OmCellChars();

  [[nodiscard]] std::string_view First() const noexcept { return {chars, firstSize}; }
  [[nodiscard]] std::string_view Second() const noexcept {
    return {chars + firstSize, size - firstSize};
  }
  [[nodiscard]] unsigned long Size() const noexcept { return size; }

 private:
  char* chars;
  unsigned long firstSize;
  unsigned long size;
};

#endif
