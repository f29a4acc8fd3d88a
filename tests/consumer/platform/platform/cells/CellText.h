// The cell texts of this platform: one string each, and a number where the kind has one.

#ifndef PLATFORM_CELLS_CELLTEXT_H
#define PLATFORM_CELLS_CELLTEXT_H

#include <memory>
#include <string>

class OmCellMetaData;
class OmComposite;
class OmMemoryRegion;
class OmNumDataValue;
class OmNumber;
class OmStringCell;
class OmStringCellUTF8;
class OmStringDataValue;
class OmVariable;
class icuTracker;

class OmCellText {
 public:
  class Visitor;

  OmCellText(const OmCellText&) = delete;
  OmCellText& operator=(const OmCellText&) = delete;
  virtual ~OmCellText();

  static void* operator new(unsigned long size);
  static void* operator new(unsigned long size, OmMemoryRegion* region);
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, OmMemoryRegion* region) noexcept;

  virtual OmCellText* Clone(OmMemoryRegion* region = nullptr) const = 0;
  virtual short Compare(const OmCellText& other) const;
  virtual unsigned long Kind() const noexcept = 0;
  virtual std::string Text() const { return text; }
  virtual void Print(unsigned int indent) const;
  virtual void Accept(Visitor& visitor) = 0;

  virtual void setICUTracker(icuTracker* t) { tracker = t; }
  icuTracker* getICUTracker() const noexcept { return tracker; }
  bool hasMeta() const noexcept { return meta != nullptr; }
  const OmCellMetaData& getMeta() const { return *meta; }
  void setMeta(const OmCellMetaData& value);

 protected:
  explicit OmCellText(std::string text_);

 private:
  std::string text;
  std::unique_ptr<OmCellMetaData> meta;
  icuTracker* tracker = nullptr;
};

class OmCellText::Visitor {
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
