// The cell texts of this platform: one string each, whatever the kind.

#ifndef PLATFORM_CELLS_CELLTEXT_H
#define PLATFORM_CELLS_CELLTEXT_H

#include <optional>
#include <string>

#include "backend/tables/om/Vector.h"

class OmCellMetaData {};
class OmCellProperties {};
class OmComposite;
class OmNumDataValue;
class OmNumber;
class OmStringCell;
class OmStringCellUTF8;
class OmStringDataValue;
class OmVariable;

class icuTracker {
 public:
  icuTracker(bool, const std::string&) {}
};

class OmCellText {
 public:
  class Visitor;

  OmCellText& operator=(const OmCellText&) = delete;
  virtual ~OmCellText() = default;

  static void* operator new(unsigned long size, OmMemoryRegion* region) {
    return OmMemoryRegion::SelectHeap(region)->Allocate(size);
  }
  static void operator delete(void* block) noexcept { OmMemoryRegion::Release(block); }
  static void operator delete(void* block, OmMemoryRegion*) noexcept {
    OmMemoryRegion::Release(block);
  }

  virtual OmCellText* Clone(OmMemoryRegion* region = nullptr) const = 0;
  virtual short Compare(const OmCellText& other) const;
  virtual unsigned long Kind() const noexcept = 0;
  virtual std::string Text() const { return text; }
  virtual void Print(unsigned int indent) const;
  virtual void Accept(Visitor& visitor) = 0;

  virtual void setICUTracker(icuTracker* t) { tracker = t; }
  icuTracker* getICUTracker() const noexcept { return tracker; }
  bool hasMeta() const noexcept { return meta.has_value(); }
  const OmCellMetaData& getMeta() const { return *meta; }
  void setMeta(const OmCellMetaData& value) { meta = value; }

 protected:
  explicit OmCellText(std::string text_) : text(std::move(text_)) {}
  OmCellText(const OmCellText& other) : text(other.text), meta(other.meta) {}

 private:
  std::string text;
  std::optional<OmCellMetaData> meta;
  icuTracker* tracker = nullptr;
};

class OmCellText::Visitor {
 public:
  virtual ~Visitor() = default;
  virtual void Visit(OmNumber& cell) = 0;
  virtual void Visit(OmStringCell& cell) = 0;
  virtual void Visit(OmStringCellUTF8& cell) = 0;
  virtual void Visit(OmVariable& cell) = 0;
  virtual void Visit(OmNumDataValue& cell) = 0;
  virtual void Visit(OmStringDataValue& cell) = 0;
  virtual void Visit(OmComposite& cell) = 0;
};

#endif
