// OmCellText, a cell value of any kind, and the visitors that distinguish the kinds.
//
// A text is in a memory region or on the default heap, and is deleted with `delete` in both cases;
// it may also be a local object. It may have metadata, which it owns, and be tied to an encoding
// tracker, which it does not own.
//
// Texts are ordered by value first: numbers (OmNumber, OmNumDataValue) come before all others, a
// missing number before every other number, and numbers are ordered by value; the other kinds are
// ordered by the bytes of their text. If these are equal, the kinds come in the order in which the
// visitor lists them, and texts of one kind are ordered by the rest of what they hold. Display
// format, flag, metadata and tracker are ignored.

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

// A text is used by one thread at a time. Every constructor of a kind copies its arguments into
// memory of its region argument, null for the default heap; the region has to outlive the text. If
// an allocation fails, nothing leaks.
class OM_PLATFORM_API OmCellText {
 public:
  class Visitor;
  class ConstVisitor;

  OmCellText(const OmCellText&) = delete;
  OmCellText& operator=(const OmCellText&) = delete;
  virtual ~OmCellText() {
    if (hasMeta()) {
      // A static function that gets `home`, not `this`: if `this` escaped, the destructors would
      // have to store the vtable pointer in every text, also in one without metadata.
      DropMeta(home);
    }
  }

  // Allocates an object on the default heap, or in `region` (null is the default heap).
  static void* operator new(unsigned long size);
  static void* operator new(unsigned long size, OmMemoryRegion* region) {
    return (region != nullptr ? region : OmMemoryRegion::DefaultHeap())->Allocate(size);
  }
  static void operator delete(void* block) noexcept { OmMemoryRegion::Release(block); }
  static void operator delete(void* block, OmMemoryRegion*) noexcept {
    OmMemoryRegion::Release(block);
  }

  // Returns a copy in `region` (null is the default heap); everything that it owns is allocated
  // from that region. The copy has the metadata and is tied to no tracker.
  [[nodiscard]] virtual OmCellText* Clone(OmMemoryRegion* region = nullptr) const = 0;

  // Orders two texts: negative, zero or positive. This is the total order over all kinds described
  // above.
  [[nodiscard]] virtual short Compare(const OmCellText& other) const;
  // Identifies the kind of a text. The kinds here are numbered in the order in which the visitor
  // lists them; of other kinds, only equality has a meaning.
  [[nodiscard]] virtual unsigned long Kind() const noexcept = 0;
  // Returns the text in UTF-8, a number by its display format.
  [[nodiscard]] virtual std::string Text() const = 0;
  // Writes the text to the standard output, indented by two spaces per step of `indent`, without a
  // line end.
  virtual void Print(unsigned int indent) const;
  // Calls the Visit overload of the text's own kind.
  virtual void Accept(Visitor& visitor) = 0;
  // The same for a const text. Calls the function above, which does not change the text.
  void Accept(ConstVisitor& visitor) const;

  // Ties the text to a tracker, which has to outlive the text or be replaced; null ties it to none.
  virtual void setICUTracker(icuTracker* tracker);
  [[nodiscard]] icuTracker* getICUTracker() const noexcept;

  [[nodiscard]] bool hasMeta() const noexcept { return (home & kNoMeta) == 0; }
  // Returns the metadata. Requires hasMeta().
  [[nodiscard]] const OmCellMetaData& getMeta() const;
  // Replaces the metadata by a copy of `meta` in the region of the text. If that fails, the old
  // metadata stays.
  void setMeta(const OmCellMetaData& meta);

  // Whether everything that the text owns is in `region`, so that the region may be released
  // without running the text's destructor. True for clones of the kinds here, as long as they have
  // no metadata. A result of true may be stored: metadata added later is in the region too.
  [[nodiscard]] bool GoesWith(const OmMemoryRegion* region) const noexcept {
    return home == (reinterpret_cast<unsigned long>(region) | kNoMeta | kWhole);
  }

 protected:
  // The values by which texts are ordered, most significant first.
  struct Key {
    bool number = false;
    double value = 0;
    std::string_view text;
    unsigned long kind = 0;
    std::string_view rest;
  };

  // Metadata will be allocated in `region`, null for the default heap.
  explicit OmCellText(OmMemoryRegion* region = nullptr) noexcept
      : home(reinterpret_cast<unsigned long>(region) | kNoMeta) {}
  // Copies the metadata, but not the tracker.
  OmCellText(const OmCellText& other, OmMemoryRegion* region) : OmCellText(region) {
    if (other.hasMeta()) {
      CopyMeta(other, region);
    }
  }

  // Marks a new clone that owns no memory except its own block, for GoesWith(). Does nothing if it
  // has metadata. Called by Clone of the kinds, not of derived classes.
  [[nodiscard]] static OmCellText* Whole(OmCellText* copy) noexcept {
    copy->home |= (copy->home & kNoMeta) * kWhole;
    return copy;
  }

  // Allocates an object with `trailing` bytes behind it, in the same block.
  static void* operator new(unsigned long size, OmMemoryRegion* region, unsigned long trailing);
  static void operator delete(void* block, OmMemoryRegion* region, unsigned long trailing) noexcept;

  // Returns the text's own key. A text that has to be composed is stored in `composed`, which must
  // live as long as the key.
  [[nodiscard]] virtual Key OrderKey(std::string& composed) const;

 private:
  // Flags in the low bits of `home`, which are 0 in the address of a region or of metadata: `home`
  // is a region, not metadata; and everything that the text owns is in that region.
  static constexpr unsigned long kNoMeta = 1;
  static constexpr unsigned long kWhole = 2;

  void CopyMeta(const OmCellText& other, OmMemoryRegion* region);
  static void DropMeta(unsigned long meta) noexcept;

  icuTracker* tracker = nullptr;  // not owned
  // The metadata or, with kNoMeta, the region in which metadata would be allocated. One word for
  // both, because metadata knows its own region.
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

// Visits a const cell value. A class of its own, because new functions in Visitor would break the
// binary interface of compiled visitors.
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
