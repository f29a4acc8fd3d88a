#include <cstdio>
#include <cstdlib>
#include <new>

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

namespace {

std::string Fixed(double value, int decimals) {
  char text[400];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

}  // namespace

OmNumber::OmNumber(double value, const Qualtex_Format& format)
    : OmCellTextOf(Fixed(value, format.Decimals())) {}

QualtexMBConverter* QualtexMBConverterNew_A(const char*) noexcept {
  return nullptr;
}
int QualtexMBU8ToGeneric(QualtexMBConverter*, std::string&, const std::string&) noexcept {
  return 1;
}
void QualtexMBConverterDelete_A(QualtexMBConverter*) noexcept {}
