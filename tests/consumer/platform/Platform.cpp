#include <cstdio>
#include <cstdlib>
#include <new>

#include "backend/tables/om/Vector.h"
#include "platform/cells/CellMetaData.h"
#include "platform/cells/CellTexts.h"
#include "platform/support/Converter.h"

OmMemoryRegion::OmMemoryRegion(bool) {}

OmMemoryRegion::~OmMemoryRegion() {
  while (blocks.next != &blocks) {
    Release(blocks.next + 1);
  }
}

void* OmMemoryRegion::Allocate(unsigned long bytes) {
  auto* const link = static_cast<Link*>(std::malloc(sizeof(Link) + bytes));
  if (link == nullptr) {
    throw std::bad_alloc();
  }
  link->previous = &blocks;
  link->next = blocks.next;
  blocks.next->previous = link;
  blocks.next = link;
  return link + 1;
}

// A block leaves the list by its neighbours, so it need not know its region.
void OmMemoryRegion::Release(void* block) noexcept {
  if (block != nullptr) {
    Link* const link = static_cast<Link*>(block) - 1;
    link->previous->next = link->next;
    link->next->previous = link->previous;
    std::free(link);
  }
}

OmMemoryRegion* OmMemoryRegion::DefaultHeap() noexcept {
  static OmMemoryRegion heap(true);
  return &heap;
}

OmCellText::OmCellText(std::string text_) : text(std::move(text_)) {}
OmCellText::~OmCellText() = default;
OmCellText::Visitor::~Visitor() = default;

void* OmCellText::operator new(unsigned long size) {
  return OmMemoryRegion::DefaultHeap()->Allocate(size);
}
void* OmCellText::operator new(unsigned long size, OmMemoryRegion* region) {
  return OmMemoryRegion::SelectHeap(region)->Allocate(size);
}
void OmCellText::operator delete(void* block) noexcept {
  OmMemoryRegion::Release(block);
}
void OmCellText::operator delete(void* block, OmMemoryRegion*) noexcept {
  OmMemoryRegion::Release(block);
}

short OmCellText::Compare(const OmCellText& other) const {
  if (Kind() != other.Kind()) {
    return Kind() < other.Kind() ? -1 : 1;
  }
  const int order = Text().compare(other.Text());
  return static_cast<short>((order > 0) - (order < 0));
}

void OmCellText::Print(unsigned int indent) const {
  std::printf("%*s%s", static_cast<int>(2 * indent), "", Text().c_str());
}

void OmCellText::setMeta(const OmCellMetaData& value) {
  meta = std::make_unique<OmCellMetaData>(value);
}

namespace {

std::string Fixed(double value, int decimals) {
  char text[400];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

template <typename Cell>
OmCellText* WithMeta(const OmCellText& from, Cell* copy) {
  if (from.hasMeta()) {
    copy->setMeta(from.getMeta());
  }
  return copy;
}

}  // namespace

OmNumber::OmNumber(double value_, const Qualtex_Format& format_)
    : OmCellText(Fixed(value_, format_.Decimals())), value(value_), format(format_) {}

OmCellText* OmStringCell::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmStringCell(Text()));
}
OmCellText* OmStringCellUTF8::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmStringCellUTF8(Text()));
}
OmCellText* OmNumber::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmNumber(value, format));
}
OmCellText* OmVariable::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmVariable(Text()));
}
OmCellText* OmNumDataValue::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmNumDataValue(Text()));
}
OmCellText* OmStringDataValue::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmStringDataValue(Text()));
}
OmCellText* OmComposite::Clone(OmMemoryRegion* region) const {
  return WithMeta(*this, new (region) OmComposite());
}

void OmStringCell::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
void OmStringCellUTF8::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
void OmNumber::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
void OmVariable::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
void OmNumDataValue::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
void OmStringDataValue::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}
void OmComposite::Accept(Visitor& visitor) {
  visitor.Visit(*this);
}

QualtexMBConverter* QualtexMBConverterNew_A(const char*) noexcept {
  return nullptr;
}
int QualtexMBU8ToGeneric(QualtexMBConverter*, std::string&, const std::string&) noexcept {
  return 1;
}
void QualtexMBConverterDelete_A(QualtexMBConverter*) noexcept {}
