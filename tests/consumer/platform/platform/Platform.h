// The whole platform but for the region. A cell text is one string, whatever the kind, and no code
// page is known.

#ifndef PLATFORM_PLATFORM_H
#define PLATFORM_PLATFORM_H

#include <cstdio>
#include <optional>
#include <string>

#include "backend/tables/om/Format.h"
#include "backend/tables/om/VectorTree.h"

class OmCellMetaData {};
class OmCellProperties {};
class OmComposite;
class OmNumDataValue;
class OmNumber;
class OmStringCell;
class OmStringCellUTF8;
class OmStringDataValue;
class OmVariable;

class BackendSettings {
 public:
  long long getMaxCells() const noexcept { return 1000000; }
  bool getFastTables() const noexcept { return false; }
  bool getUnicode() const noexcept { return true; }
  std::string getLocale() const { return ""; }
};

struct QualtexMBConverter;
extern "C" {
inline QualtexMBConverter* QualtexMBConverterNew_A(const char*) noexcept {
  return nullptr;
}
inline int QualtexMBU8ToGeneric(QualtexMBConverter*, std::string&, const std::string&) noexcept {
  return 1;
}
inline void QualtexMBConverterDelete_A(QualtexMBConverter*) noexcept {}
}

class icuTracker {
 public:
  icuTracker(bool, const std::string&) {}
};

class OmCellText {
 public:
  class Visitor {
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

  virtual ~OmCellText() = default;

  static void* operator new(unsigned long size, OmMemoryRegion* region) {
    return OmMemoryRegion::SelectHeap(region)->Allocate(size);
  }
  static void operator delete(void* block) noexcept { OmMemoryRegion::Release(block); }
  static void operator delete(void* block, OmMemoryRegion*) noexcept {
    OmMemoryRegion::Release(block);
  }

  virtual OmCellText* Clone(OmMemoryRegion* region = nullptr) const = 0;
  virtual short Compare(const OmCellText& other) const {
    const int order = Text().compare(other.Text());
    return static_cast<short>((order > 0) - (order < 0));
  }
  virtual unsigned long Kind() const noexcept = 0;
  virtual std::string Text() const { return text; }
  virtual void Print(unsigned int) const { std::printf("%s", text.c_str()); }
  virtual void Accept(Visitor& visitor) = 0;

  virtual void setICUTracker(icuTracker* t) { tracker = t; }
  icuTracker* getICUTracker() const noexcept { return tracker; }
  bool hasMeta() const noexcept { return meta.has_value(); }
  const OmCellMetaData& getMeta() const { return *meta; }
  void setMeta(const OmCellMetaData& value) { meta = value; }

 protected:
  explicit OmCellText(std::string text_) : text(std::move(text_)) {}

  std::string text;

 private:
  std::optional<OmCellMetaData> meta;
  icuTracker* tracker = nullptr;
};

template <typename Cell, unsigned long kind>
class OmCellTextOf : public OmCellText {
 public:
  explicit OmCellTextOf(std::string text_ = "", OmMemoryRegion* = nullptr, bool = false)
      : OmCellText(std::move(text_)) {}
  OmCellText* Clone(OmMemoryRegion* region = nullptr) const override {
    return new (region) Cell(static_cast<const Cell&>(*this));
  }
  unsigned long Kind() const noexcept override { return kind; }
  void Accept(Visitor& visitor) override { visitor.Visit(static_cast<Cell&>(*this)); }
};

class OmStringCell : public OmCellTextOf<OmStringCell, 1> {
  using OmCellTextOf::OmCellTextOf;
};
class OmStringCellUTF8 : public OmCellTextOf<OmStringCellUTF8, 2> {};
class OmNumber : public OmCellTextOf<OmNumber, 3> {
 public:
  explicit OmNumber(double value, const Qualtex_Format& format = kDefaultFormat) {
    char fixed[400];
    std::snprintf(fixed, sizeof fixed, "%.*f", format.Decimals(), value);
    text = fixed;
  }
};

class OmVariable : public OmCellTextOf<OmVariable, 4> {};
class OmNumDataValue : public OmCellTextOf<OmNumDataValue, 5> {};
class OmStringDataValue : public OmCellTextOf<OmStringDataValue, 6> {};
// Its tree stays empty: nothing on this platform composes texts.
class OmComposite : public OmCellTextOf<OmComposite, 7> {
 public:
  OmComposite() = default;
  OmComposite(const OmComposite& other) : OmCellTextOf(other) {}
  const OmVectorTree<OmCellText*>& Tree() const noexcept { return tree; }
  OmVectorTree<OmCellText*>& Tree() noexcept { return tree; }

 private:
  OmVectorTree<OmCellText*> tree{nullptr, nullptr};
};

#endif
