// OmCellText, a cell value of any kind, and the visitor that tells the kinds apart.
//
// A text lives in a memory region or on the default heap and is deleted with `delete` wherever it
// lives. It may carry metadata, which it owns, and be tied to an encoding tracker, which it does not
// own.

#ifndef PLATFORM_CELLS_CELLTEXT_H
#define PLATFORM_CELLS_CELLTEXT_H

#include <string>

#include "platform/Export.h"

class OmCellMetaData;
class OmComposite;
class OmMemoryRegion;
class OmNumber;
class OmNumDataValue;
class OmStringCell;
class OmStringCellUTF8;
class OmStringDataValue;
class OmVariable;
class icuTracker;

class OM_PLATFORM_API OmCellText {
 public:
  class Visitor;

  OmCellText(const OmCellText&) = delete;
  OmCellText& operator=(const OmCellText&) = delete;
  virtual ~OmCellText();

  // Makes an object in the default heap, or in `region` (null is the default heap).
  static void* operator new(unsigned long size);
  static void* operator new(unsigned long size, OmMemoryRegion* region);
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, OmMemoryRegion* region) noexcept;

  // Returns a copy in `region` (null is the default heap) that takes all that it holds, its characters
  // included, from that region. The copy carries the metadata and is tied to no tracker.
  [[nodiscard]] virtual OmCellText* Clone(OmMemoryRegion* region = nullptr) const = 0;

  // Orders two texts: negative, zero or positive. A total order over all kinds.
  [[nodiscard]] virtual short Compare(const OmCellText& other) const = 0;
  // Identifies the kind of a text; only equality of two kinds has a meaning.
  [[nodiscard]] virtual unsigned long Kind() const noexcept = 0;
  // Returns the text in UTF-8, a number by its display format.
  [[nodiscard]] virtual std::string Text() const = 0;
  // Writes the text to the standard output, after `indent` times two blanks, without a line end.
  virtual void Print(unsigned int indent) const;
  virtual void Accept(Visitor& visitor) = 0;

  // Ties the text to a tracker, which has to outlive the text or be replaced; null ties it to none.
  virtual void setICUTracker(icuTracker* tracker);
  [[nodiscard]] icuTracker* getICUTracker() const noexcept;

  [[nodiscard]] bool hasMeta() const noexcept;
  // Returns the metadata; only where hasMeta().
  [[nodiscard]] const OmCellMetaData& getMeta() const;
  // Stores a copy of `meta` in the region of the text.
  void setMeta(const OmCellMetaData& meta);

 protected:
  OmCellText() noexcept;
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

#endif
