// OmCellChars, the characters of a cell text: one string or two, in one block. Used by the kinds of
// texts, not by their callers.

#ifndef PLATFORM_CELLS_CELLCHARS_H
#define PLATFORM_CELLS_CELLCHARS_H

#include <string_view>

class OmMemoryRegion;

// Has to be the last member of its owner. Then what a block holds behind the owner starts where the
// characters end, and a copy whose owner was made with Size() trailing bytes keeps its characters
// there. Empty strings need no block.
//
// Invariant: the characters are at `chars`, which is null, the end of this object, or a block of
// its own.
class OmCellChars {
 public:
  // Copies both strings into a block of `region`, null for the default heap.
  OmCellChars(std::string_view first, std::string_view second, OmMemoryRegion* region);
  // Copies `other` behind this object, where its owner has to have other.Size() bytes.
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
