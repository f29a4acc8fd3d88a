#include "backend/tables/om/CellStoreData.h"

#include "backend/tables/om/Assert.h"
#include "platform/cells/CellText.h"

namespace {

OmPointerVector* VectorIn(void* element) {
  return static_cast<OmPointerVector*>(element);
}

unsigned long Slot(int subscript) {
  return static_cast<unsigned int>(subscript);
}

}  // namespace

OmPointerVector& OmCellStore::Reach(OmPointerVector*& root, const std::vector<int>& subscripts,
                                    OmMemoryRegion& region) {
  if (root == nullptr) {
    root = new (&region) OmPointerVector(&region);
  }
  OmPointerVector* v = root;
  for (unsigned long k = subscripts.size() - 1; k != 0; --k) {
    const int s = subscripts[k];
    OmPointerVector* child = VectorIn(v->At(s));
    if (child == nullptr) {
      v->GrowTo(Slot(s));
      child = new (&region) OmPointerVector(&region);
      v->Put(Slot(s), child);
    }
    v = child;
  }
  v->GrowTo(Slot(subscripts[0]));
  return *v;
}

bool OmCellStore::Delete(OmPointerVector* root, const std::vector<int>& subscripts) {
  OmPointerVector* v = VectorOf(root, subscripts, 0);
  if (v == nullptr || Slot(subscripts[0]) >= v->size()) {
    return false;
  }
  const bool held = v->At(subscripts[0]) != nullptr;
  delete static_cast<OmCellText*>(v->Exchange(Slot(subscripts[0]), nullptr));
  // The vectors that are left empty, from the bottom up and without the root.
  for (unsigned long k = 1; k != subscripts.size() && v->IsEmpty(); ++k) {
    v = VectorOf(root, subscripts, k);
    delete VectorIn(v->Exchange(Slot(subscripts[k]), nullptr));
  }
  return held;
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
  OmPointerVector* const lowered = VectorIn(root->At(0));
  delete root;
  return lowered;
}

void OmCellStore::Verify([[maybe_unused]] const OmPointerVector* root,
                         [[maybe_unused]] unsigned long levels) {
#if defined(OM_HARDENING) && OM_HARDENING
  if (root == nullptr) {
    return;
  }
  OM_HARDEN(root->begin() <= root->end() && root->size() <= root->capacity(),
            "OmCellStore::Verify");
  for (unsigned long i = root->Find(0); i != root->size(); i = root->Find(i + 1)) {
    OM_HARDEN((*root)[i] != nullptr, "OmCellStore::Verify");
    if (levels > 1) {
      const OmPointerVector* const child = VectorIn((*root)[i]);
      OM_HARDEN(child->Region() == root->Region(), "OmCellStore::Verify");
      Verify(child, levels - 1);
    }
  }
#endif
}
