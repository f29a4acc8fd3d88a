#include "backend/tables/om/CellStore.h"

#include <cstring>

#include "backend/tables/om/Assert.h"
#include "platform/cells/CellText.h"

namespace {

// Deletes the cell at `subscripts` below `v`, whose level is that of dimension `k`. Returns true
// where this left `v` with nothing but nulls.
bool DeleteBelow(OmPointerVector& v, const std::vector<int>& subscripts, unsigned long k) {
  const auto s = static_cast<unsigned long>(subscripts[k]);
  if (s >= v.size()) {
    return false;
  }
  void*& slot = v[s];
  if (k == 0) {
    delete static_cast<OmCellText*>(slot);
    slot = nullptr;
  } else {
    auto* const child = static_cast<OmPointerVector*>(slot);
    if (child == nullptr || !DeleteBelow(*child, subscripts, k - 1)) {
      return false;
    }
    delete child;
    slot = nullptr;
  }
  return FindNonZero(v, 0) == v.size();
}

}  // namespace

void OmPointerVector::GrowTo(unsigned long s) {
  if (s < size()) {
    return;
  }
  if (2 * capacity() < s) {
    reserve(s + 1);
  } else if (capacity() <= s) {
    // Where appending one by one would end up: each full vector grows to the next power of two.
    reserve(NextSize(s));
  }
  void** const end = first + s + 1;
  std::memset(last, 0, static_cast<unsigned long>(end - last) * sizeof(void*));
  last = end;
}

unsigned long FindNonZero(const OmPointerVector& v, unsigned long start) {
  const unsigned long size = v.size();
  void* const* const elements = v.begin();
  unsigned long i = start;
  while (i < size && elements[i] == nullptr) {
    ++i;
  }
  return i < size ? i : size;
}

void freeCellArray(OmPointerVector* v, int depth) {
  if (v == nullptr) {
    return;
  }
  OM_HARDEN(depth > 0, "freeCellArray");
  for (void* const element : *v) {
    if (element == nullptr) {
      continue;
    }
    if (depth != 1) {
      freeCellArray(static_cast<OmPointerVector*>(element), depth - 1);
    } else {
      delete static_cast<OmCellText*>(element);
    }
  }
  delete v;
}

void*& OmCellStore::Slot(OmPointerVector*& root, const std::vector<int>& subscripts,
                         OmMemoryRegion* region) {
  OM_HARDEN(!subscripts.empty(), "OmCellStore::Slot");
  if (root == nullptr) {
    root = new (region) OmPointerVector(region);
  }
  OmPointerVector* v = root;
  for (unsigned long k = subscripts.size() - 1; k > 0; --k) {
    const auto s = static_cast<unsigned long>(subscripts[k]);
    v->GrowTo(s);
    void*& slot = (*v)[s];
    if (slot == nullptr) {
      slot = new (region) OmPointerVector(region);
    }
    v = static_cast<OmPointerVector*>(slot);
  }
  const auto s = static_cast<unsigned long>(subscripts[0]);
  v->GrowTo(s);
  return (*v)[s];
}

OmCellText* OmCellStore::Find(const OmPointerVector* root, const std::vector<int>& subscripts) {
  const OmPointerVector* v = root;
  for (unsigned long k = subscripts.size(); v != nullptr && k-- > 0;) {
    const auto s = static_cast<unsigned long>(subscripts[k]);
    void* const element = s < v->size() ? (*v)[s] : nullptr;
    if (k == 0) {
      return static_cast<OmCellText*>(element);
    }
    v = static_cast<const OmPointerVector*>(element);
  }
  return nullptr;
}

void OmCellStore::Delete(OmPointerVector* root, const std::vector<int>& subscripts) {
  if (root != nullptr && !subscripts.empty()) {
    DeleteBelow(*root, subscripts, subscripts.size() - 1);
  }
}

OmPointerVector* OmCellStore::Raise(OmPointerVector* root, OmMemoryRegion* region) {
  if (root == nullptr) {
    return nullptr;
  }
  auto* const raised = new (region) OmPointerVector(region);
  try {
    raised->push_back(root);
  } catch (...) {
    delete raised;
    throw;
  }
  return raised;
}

OmPointerVector* OmCellStore::Lower(OmPointerVector* root) {
  if (root == nullptr) {
    return nullptr;
  }
  auto* const lowered = static_cast<OmPointerVector*>((*root)[0]);
  delete root;
  return lowered;
}
