// OmCellText, a cell value of any kind, and the visitor that tells the kinds apart.
//
// A text lives in a memory region or on the default heap and is deleted with `delete` wherever it
// lives; it may also be a local object. It may carry metadata, which it owns, and be tied to an
// encoding tracker, which it does not own.
//
// Texts are ordered by value first: numbers (OmNumber, OmNumDataValue) come before all others, a
// missing number before every other number, and numbers go by value; the other kinds go by the
// bytes of their text. Where that is equal, the kinds come in the order in which the visitor lists
// them, and texts of one kind go by the rest of what they hold. A display format, a flag, metadata
// and the tracker take no part.

#ifndef PLATFORM_CELLS_CELLTEXT_H
#define PLATFORM_CELLS_CELLTEXT_H

#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/memory/MemoryRegion.h"

class OmCellMetaData;
class OmComposite;
class OmNumber;
class OmNumDataValue;
class OmStringCell;
class OmStringCellUTF8;
class OmStringDataValue;
class OmVariable;
class icuTracker;

// A text is used by one thread at a time. Every constructor of a kind copies what it is given and
// takes the memory for it from its region argument, null for the default heap; the region has to
// outlive the text. Where an allocation fails, nothing is left behind.
class OM_PLATFORM_API OmCellText {
 public:
  class Visitor;
  class ConstVisitor;

  OmCellText(const OmCellText&) = delete;
  OmCellText& operator=(const OmCellText&) = delete;
  virtual ~OmCellText() {
    if (hasMeta()) {
      // It is not told the text, so that a text without metadata is not written to in its end.
      DropMeta(home);
    }
  }

  // Makes an object in the default heap, or in `region` (null is the default heap).
  static void* operator new(unsigned long size);
  static void* operator new(unsigned long size, OmMemoryRegion* region) {
    return (region != nullptr ? region : OmMemoryRegion::DefaultHeap())->Allocate(size);
  }
  static void operator delete(void* block) noexcept { OmMemoryRegion::Release(block); }
  static void operator delete(void* block, OmMemoryRegion*) noexcept {
    OmMemoryRegion::Release(block);
  }

  // Returns a copy in `region` (null is the default heap) that takes all that it holds, its
  // characters included, from that region. The copy carries the metadata and is tied to no tracker.
  [[nodiscard]] virtual OmCellText* Clone(OmMemoryRegion* region = nullptr) const = 0;

  // Orders two texts: negative, zero or positive. A total order over all kinds, stated above.
  [[nodiscard]] virtual short Compare(const OmCellText& other) const;
  // Identifies the kind of a text. The kinds here are numbered in the order in which the visitor
  // lists them; of any others only equality has a meaning.
  [[nodiscard]] virtual unsigned long Kind() const noexcept = 0;
  // Returns the text in UTF-8, a number by its display format.
  [[nodiscard]] virtual std::string Text() const = 0;
  // Writes the text to the standard output, after `indent` times two blanks, without a line end.
  virtual void Print(unsigned int indent) const;
  // Calls the Visit overload of the text's own kind.
  virtual void Accept(Visitor& visitor) = 0;
  // The same for a text that is only read. Goes through the function above, which changes no text.
  void Accept(ConstVisitor& visitor) const;

  // Ties the text to a tracker, which has to outlive the text or be replaced; null ties it to none.
  virtual void setICUTracker(icuTracker* tracker);
  [[nodiscard]] icuTracker* getICUTracker() const noexcept;

  [[nodiscard]] bool hasMeta() const noexcept { return (home & kNoMeta) == 0; }
  // Returns the metadata; only where hasMeta().
  [[nodiscard]] const OmCellMetaData& getMeta() const;
  // Stores a copy of `meta` in the region of the text, in place of what was there. Where that
  // fails, the old metadata stays.
  void setMeta(const OmCellMetaData& meta);

  // Whether all that the text holds is in `region`, so that it may go with the region as it stands,
  // without its end. True of what the kinds here clone, as long as it has no metadata; metadata
  // that it gets later changes nothing, because that lives in the region too.
  [[nodiscard]] bool GoesWith(const OmMemoryRegion* region) const noexcept {
    return home == (reinterpret_cast<unsigned long>(region) | kNoMeta | kWhole);
  }

 protected:
  // What the order of texts goes by, most significant first.
  struct Key {
    bool number = false;
    double value = 0;
    std::string_view text;
    unsigned long kind = 0;
    std::string_view rest;
  };

  // Metadata will live in `region`, null for the default heap.
  explicit OmCellText(OmMemoryRegion* region = nullptr) noexcept
      : home(reinterpret_cast<unsigned long>(region) | kNoMeta) {}
  // Takes over a copy of the metadata, and no tracker.
  OmCellText(const OmCellText& other, OmMemoryRegion* region) : OmCellText(region) {
    if (other.hasMeta()) {
      CopyMeta(other, region);
    }
  }

  // Tells of a copy that a kind has just made for itself that it holds nothing but its own block.
  [[nodiscard]] static OmCellText* Whole(OmCellText* copy) noexcept {
    copy->home |= (copy->home & kNoMeta) * kWhole;
    return copy;
  }

  // Makes an object with `trailing` bytes behind it, in the same block.
  static void* operator new(unsigned long size, OmMemoryRegion* region, unsigned long trailing);
  static void operator delete(void* block, OmMemoryRegion* region, unsigned long trailing) noexcept;

  // Returns the text's own key. A text that has to be composed is put into `composed`, which has to
  // live as long as the key.
  [[nodiscard]] virtual Key OrderKey(std::string& composed) const;

 private:
  // Mark `home` as a region, which is aligned to more than these, and as the region that everything
  // is in.
  static constexpr unsigned long kNoMeta = 1;
  static constexpr unsigned long kWhole = 2;

  void CopyMeta(const OmCellText& other, OmMemoryRegion* region);
  static void DropMeta(unsigned long meta) noexcept;

  icuTracker* tracker = nullptr;  // not owned
  // The metadata or, with kNoMeta, the region that it would live in: a text without
  // metadata has no other use for the word.
  unsigned long home;
};

// Visits a cell value by its kind.
class OM_PLATFORM_API OmCellText::Visitor {
 public:
  virtual ~Visitor();
  virtual void Visit(OmNumber& cell) = 0;
  virtual void Visit(OmStringCell& cell) = 0;
  virtual void Visit(OmStringCellUTF8& cell) = 0;
  virtual void Visit(OmVariable& cell) = 0;
  virtual void Visit(OmNumDataValue& cell) = 0;
  virtual void Visit(OmStringDataValue& cell) = 0;
  virtual void Visit(OmComposite& cell) = 0;
};

// Visits a cell value that is only read. A class of its own, so that the functions of Visitor, and
// their order, stay what visitors are compiled for.
class OM_PLATFORM_API OmCellText::ConstVisitor {
 public:
  virtual ~ConstVisitor();
  virtual void Visit(const OmNumber& cell) = 0;
  virtual void Visit(const OmStringCell& cell) = 0;
  virtual void Visit(const OmStringCellUTF8& cell) = 0;
  virtual void Visit(const OmVariable& cell) = 0;
  virtual void Visit(const OmNumDataValue& cell) = 0;
  virtual void Visit(const OmStringDataValue& cell) = 0;
  virtual void Visit(const OmComposite& cell) = 0;
};

#endif
