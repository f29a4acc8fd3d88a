#include "backend/tables/om/PointerVector.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "platform/cells/CellText.h"

namespace {

// Bytes from which on a block is worth being cleared for its next user before it is released.
constexpr unsigned long kLeastCleared = 4096;

void* AllocateZeros(auto& region, unsigned long bytes) {
  if constexpr (requires { region.AllocateZeroed(bytes); }) {
    return region.AllocateZeroed(bytes);
  } else {
    return std::memset(region.Allocate(bytes), 0, bytes);
  }
}

template <typename Region>
void ReleaseZeros(void* block) noexcept {
  if constexpr (requires { Region::ReleaseZeroed(block); }) {
    Region::ReleaseZeroed(block);
  } else {
    Region::Release(block);
  }
}

}  // namespace

OmPointerVector::~OmPointerVector() {
  ReleaseBlock();
  first = last = limit = nullptr;
}

void OmPointerVector::reserve(unsigned long n) {
  if (n <= capacity()) {
    return;
  }
  constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max() / sizeof(void*) / 2;
  if (n > kMost) {
    throw std::bad_alloc();
  }
  const unsigned long front = FrontWords(n);
  OmPointerVector grown(region);
  grown.first = static_cast<void**>(AllocateZeros(*region, (front + n) * sizeof(void*))) + front;
  grown.last = grown.first + size();
  grown.limit = grown.first + n;
  // Written before it is read: a page that is read first costs two faults.
  grown.Count() = first != nullptr ? Count() : 0;
  ForEachGroup([&](unsigned long g, unsigned long slots) {
    grown.Group(g) = Group(g);
    std::copy_n(first + g * kGroup, slots, grown.first + g * kGroup);
  });
  std::swap(first, grown.first);
  std::swap(last, grown.last);
  std::swap(limit, grown.limit);
}

void OmPointerVector::MakeRoom(unsigned long s) {
  // Appending one by one ends there: each full vector grows to the next power of two.
  reserve(2 * capacity() < s ? s + 1 : OmVector<void*>::NextSize(s));
}

void OmPointerVector::push_back(void* element) {
  const unsigned long s = size();
  GrowTo(s);
  Exchange(s, element);
}

void OmPointerVector::ReleaseBlock() noexcept {
  if (first == nullptr) {
    return;
  }
  const unsigned long front = FrontWords(capacity());
  void** const block = first - front;
  if (capacity() * sizeof(void*) < kLeastCleared) {
    OmMemoryRegion::Release(block);
    return;
  }
  ForEachGroup([&](unsigned long g, unsigned long slots) {
    std::fill_n(first + g * kGroup, slots, nullptr);
  });
  std::fill_n(block, front, nullptr);
  ReleaseZeros<OmMemoryRegion>(block);
}

unsigned long FindNonZero(const OmPointerVector& v, unsigned long start) {
  return v.Find(start);
}

void freeCellArray(OmPointerVector* v, int depth) {
  if (v == nullptr) {
    return;
  }
  OM_HARDEN(depth > 0, "freeCellArray");
  for (unsigned long i = v->Find(0); i != v->size(); i = v->Find(i + 1)) {
    if (depth == 1) {
      delete static_cast<OmCellText*>((*v)[i]);
    } else {
      freeCellArray(static_cast<OmPointerVector*>((*v)[i]), depth - 1);
    }
  }
  delete v;
}
