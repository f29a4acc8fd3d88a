#include "platform/cells/CellText.h"

#include <cmath>
#include <iostream>
#include <limits>
#include <new>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/Vector.h"
#include "platform/cells/CellMetaData.h"
#include "platform/memory/MemoryRegion.h"

namespace {

OmCellMetaData* NewMeta(const OmCellMetaData& meta, OmMemoryRegion* region) {
  void* const block = OmMemoryRegion::SelectHeap(region)->Allocate(sizeof(OmCellMetaData));
  try {
    return new (block) OmCellMetaData(meta, region);
  } catch (...) {
    OmMemoryRegion::Release(block);
    throw;
  }
}

void DeleteMeta(OmCellMetaData* meta) noexcept {
  meta->~OmCellMetaData();
  OmMemoryRegion::Release(meta);
}

template <typename T>
short ThreeWay(const T& a, const T& b) {
  return static_cast<short>((b < a) - (a < b));
}

short CompareNumbers(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) {
    return ThreeWay(!std::isnan(a), !std::isnan(b));
  }
  return ThreeWay(a, b);
}

// Passes a text on to a ConstVisitor.
class Reader : public OmCellText::Visitor {
 public:
  explicit Reader(OmCellText::ConstVisitor& to_) noexcept : to(to_) {}
  void Visit(OmNumber& cell) override { to.Visit(cell); }
  void Visit(OmStringCell& cell) override { to.Visit(cell); }
  void Visit(OmStringCellUTF8& cell) override { to.Visit(cell); }
  void Visit(OmVariable& cell) override { to.Visit(cell); }
  void Visit(OmNumDataValue& cell) override { to.Visit(cell); }
  void Visit(OmStringDataValue& cell) override { to.Visit(cell); }
  void Visit(OmComposite& cell) override { to.Visit(cell); }

 private:
  OmCellText::ConstVisitor& to;
};

}  // namespace

void OmCellText::Accept(ConstVisitor& visitor) const {
  Reader reader(visitor);
  // The only virtual function that dispatches on the kind takes a mutable text. It does not change
  // it.
  const_cast<OmCellText*>(this)->Accept(reader);
}

void OmCellText::CopyMeta(const OmCellText& other, OmMemoryRegion* region) {
  home = reinterpret_cast<unsigned long>(NewMeta(other.getMeta(), region));
}

void OmCellText::DropMeta(unsigned long meta) noexcept {
  DeleteMeta(reinterpret_cast<OmCellMetaData*>(meta));
}

void* OmCellText::operator new(unsigned long size) {
  return OmMemoryRegion::DefaultHeap()->Allocate(size);
}

void* OmCellText::operator new(unsigned long size, OmMemoryRegion* region, unsigned long trailing) {
  if (trailing > std::numeric_limits<unsigned long>::max() - size) {
    throw std::bad_alloc();
  }
  return OmMemoryRegion::SelectHeap(region)->Allocate(size + trailing);
}

void OmCellText::operator delete(void* block, OmMemoryRegion*, unsigned long) noexcept {
  OmMemoryRegion::Release(block);
}

short OmCellText::Compare(const OmCellText& other) const {
  std::string composed;
  std::string otherComposed;
  const Key a = OrderKey(composed);
  const Key b = other.OrderKey(otherComposed);
  if (a.number != b.number) {
    return ThreeWay(b.number, a.number);
  }
  if (const short order = a.number ? CompareNumbers(a.value, b.value) : ThreeWay(a.text, b.text);
      order != 0) {
    return order;
  }
  if (a.kind != b.kind) {
    return ThreeWay(a.kind, b.kind);
  }
  return ThreeWay(a.rest, b.rest);
}

OmCellText::Key OmCellText::OrderKey(std::string& composed) const {
  composed = Text();
  Key key;
  key.text = composed;
  key.kind = Kind();
  return key;
}

void OmCellText::Print(unsigned int indent) const {
  for (unsigned int i = 0; i < indent; ++i) {
    std::cout << "  ";
  }
  std::cout << Text();
}

void OmCellText::setICUTracker(icuTracker* tracker_) {
  tracker = tracker_;
}

icuTracker* OmCellText::getICUTracker() const noexcept {
  return tracker;
}

const OmCellMetaData& OmCellText::getMeta() const {
  OM_HARDEN(hasMeta(), "OmCellText::getMeta");
  return *reinterpret_cast<const OmCellMetaData*>(home);
}

void OmCellText::setMeta(const OmCellMetaData& meta) {
  auto* const old = hasMeta() ? reinterpret_cast<OmCellMetaData*>(home) : nullptr;
  OmMemoryRegion* const region =
      old != nullptr ? old->Region()
                     : reinterpret_cast<OmMemoryRegion*>(home & ~(kNoMeta | kWhole));
  // Copied before the old metadata is deleted, because that may be `meta`.
  home = reinterpret_cast<unsigned long>(NewMeta(meta, region));
  if (old != nullptr) {
    DeleteMeta(old);
  }
}

OmCellText::Visitor::~Visitor() = default;
OmCellText::ConstVisitor::~ConstVisitor() = default;
