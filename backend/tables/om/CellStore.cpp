#include "backend/tables/om/CellStore.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "platform/cells/CellText.h"

namespace {

template <typename Region>
void* AllocateZeroed(Region& region, unsigned long bytes) {
  if constexpr (requires { region.AllocateZeroed(bytes); }) {
    return region.AllocateZeroed(bytes);
  } else {
    return region.Allocate(bytes);
  }
}

// Calls `visit` with the first slot and the end of every stretch of `v` that may hold something.
template <typename Visit>
void ForStretches(const OmPointerVector& v, const unsigned long* marks, Visit visit) {
  void* const* const first = v.begin();
  const unsigned long size = v.size();
  if (marks == nullptr) {
    visit(first, first + size);
    return;
  }
  constexpr unsigned long kWord = 64 * OmPointerVector::kStretch;
  for (unsigned long from = 0; from < size; from += kWord) {
    for (unsigned long word = *marks++; word != 0; word &= word - 1) {
      const unsigned long at =
          from + static_cast<unsigned long>(std::countr_zero(word)) * OmPointerVector::kStretch;
      visit(first + std::min(at, size), first + std::min(at + OmPointerVector::kStretch, size));
    }
  }
}

// Returns the first index from `i` on, which is before `end`, whose element is not null, or `end`.
unsigned long FindIn(void* const* elements, unsigned long i, unsigned long end) noexcept {
  constexpr unsigned long kStep = 8;
  const auto isZero = [elements](unsigned long at) {
    unsigned long any = 0;
    for (unsigned long k = 0; k != kStep; ++k) {
      any |= reinterpret_cast<unsigned long>(elements[at + k]);
    }
    return any == 0;
  };
  if (elements[i] != nullptr) {
    return i;
  }
  while (i + kStep <= end && isZero(i)) {
    __builtin_prefetch(elements + std::min(i + 128, end));
    i += kStep;
  }
  while (i < end && elements[i] == nullptr) {
    ++i;
  }
  return i;
}

// Returns the vector of dimension `k` on the way to `subscripts`.
inline OmPointerVector* VectorOf(OmPointerVector* root, const std::vector<int>& subscripts,
                                 unsigned long k) {
  OmPointerVector* v = root;
  for (unsigned long i = subscripts.size() - 1; i != k; --i) {
    v = static_cast<OmPointerVector*>(v->At(subscripts[i]));
  }
  return v;
}

// Deletes the vectors on the way to `subscripts` that hold nothing, from the bottom up and without
// the root.
[[gnu::noinline]] void Prune(OmPointerVector* root, const std::vector<int>& subscripts) {
  for (unsigned long k = 1; k != subscripts.size(); ++k) {
    OmPointerVector& v = *VectorOf(root, subscripts, k);
    delete static_cast<OmPointerVector*>(v.Take(subscripts[k]));
    if (!v.IsEmpty()) {
      return;
    }
  }
}

// Whether a cell in `region` may be given back without running its end, which nobody would see.
bool HasNoEnd(const OmCellText* cell, const OmMemoryRegion* region) noexcept {
  return cell != nullptr && OmCellStore::kCellsGo && OmCellStore::GoesWith(*cell, region);
}

// What Delete does apart, so that it keeps nothing across a call and stays short: at random its
// instructions decide how many of the next vectors are fetched meanwhile.

[[gnu::noinline]] void DeleteText(OmCellText* text) {
  delete text;
}

[[gnu::noinline]] void DeleteAndPrune(OmPointerVector* root, const std::vector<int>& subscripts,
                                      OmMemoryRegion* region, OmCellText* cell) {
  if (HasNoEnd(cell, region)) {
    OmMemoryRegion::Release(cell);
  } else {
    delete cell;
  }
  Prune(root, subscripts);
}

// How many elements ahead memory is asked for, so that it comes while nearer ones are worked on.
constexpr long kAhead = 96;

constexpr int kStretchesAhead = 16;

// Returns a vector without marks, or null for any other and for none.
const OmPointerVector* Narrow(const void* element) noexcept {
  const auto* const v = static_cast<const OmPointerVector*>(element);
  return v != nullptr && v->capacity() <= OmPointerVector::kMostUnmarked ? v : nullptr;
}

// Deletes the cells in `v`, and asks for the first of those in `next`, which may be null.
void FreeCells(const OmPointerVector& v, const OmPointerVector* next) {
  const long nextSize = next != nullptr ? static_cast<long>(next->size()) : 0;
  ForStretches(v, v.Marks(), [&](void* const* slot, void* const* end) {
    while (slot != end) {
      const long left = end - slot;
      if (left > kAhead) {
        __builtin_prefetch(slot[kAhead]);
      } else if (next != nullptr && kAhead - left < nextSize) {
        __builtin_prefetch(next->begin()[kAhead - left]);
      }
      delete static_cast<OmCellText*>(*slot++);
    }
  });
}

}  // namespace

void OmPointerVector::MakeRoom(unsigned long s) {
  // Where appending one by one would end up: each full vector grows to the next power of two.
  reserve(2 * capacity() < s ? s + 1 : NextSize(s));
}

// Nulls from the end to `slot`.
void OmPointerVector::FillUpTo(void** slot) noexcept {
  // Beyond the end of a vector with marks is nothing but zeros.
  if (Marks() == nullptr) {
    std::memset(last, 0, static_cast<unsigned long>(slot + 1 - last) * sizeof(void*));
  }
}

// Makes room for exactly `n` elements, which are more than there is room for.
void OmPointerVector::ReserveWide(unsigned long n) {
  if (n > std::numeric_limits<unsigned long>::max() / sizeof(void*)) {
    throw std::bad_alloc();
  }
  auto** const block = static_cast<void**>(AllocateZeroed(*region, n * sizeof(void*)));
  unsigned long* const marks = MarksOf<OmMemoryRegion>(block);
  ForStretches(*this, Marks(), [&](void* const* from, void* const* to) {
    if (marks == nullptr) {
      std::copy(from, to, block + (from - first));
      return;
    }
    // Only what holds something: the rest is zeros already.
    for (; from < to; from += kStretch) {
      void* const* const end = std::min(from + kStretch, to);
      if (std::any_of(from, end, [](const void* element) { return element != nullptr; })) {
        const auto stretch = static_cast<unsigned long>(from - first) / kStretch;
        marks[stretch / 64] |= 1UL << stretch % 64;
        std::copy(from, end, block + (from - first));
      }
    }
  });
  last = block + size();
  limit = block + n;
  OmMemoryRegion::Release(first);
  first = block;
}

void OmPointerVector::Reach(int s) {
  const unsigned long at = Number(s);
  if (at >= capacity()) {
    MakeRoom(at);
  }
  Notes& notes = GetNotes();
  const unsigned long before = size();
  if (before < at) {
    Fill(first + at - 1);
  }
  if (!IsWide()) {
    NoteHoles(before);
  } else if (notes.wide == 0) {
    notes.wide = 1;
    if (before != 0) {
      const int holes = std::popcount(notes.holes[0]) + std::popcount(notes.holes[1]);
      notes.wide += before - static_cast<unsigned long>(holes);
    }
  }
}

// Notes that the elements from `from` on are null.
void OmPointerVector::NoteHoles(unsigned long from) noexcept {
  for (unsigned long i = from; i < size();) {
    const unsigned long next = std::min((i / 64 + 1) * 64, size());
    GetNotes().holes[i / 64] |= Ones(next - i) << i % 64;
    i = next;
  }
}

bool OmPointerVector::HoldingWide(void* const* slot) const noexcept {
  const auto i = static_cast<unsigned long>(slot - first);
  const unsigned long* const marks = Marks();
  const unsigned long stretch = i / kStretch;
  const bool isStored = marks == nullptr || (marks[stretch / 64] >> stretch % 64 & 1) != 0;
  return i < size() && isStored && *slot != nullptr;
}

void OmPointerVector::PutWide(void** slot, void* element) noexcept {
  Mark(slot);
  *slot = element;
  ++GetNotes().wide;
  last = std::max(last, slot + 1);
}

void OmPointerVector::PutNull(int s) noexcept {
  if (void** const slot = SlotAt(s); slot == last) {
    Fill(slot);
    if (!IsWide()) {
      NoteHoles(Number(s));
    }
  }
}

// Each stage needs what an earlier one asked for: the vector, what stands in front of its elements
// and tells where to look, and the elements.
void OmPointerVector::AskForNext(unsigned long before, unsigned long at) const noexcept {
  if (Narrow(first[at]) != nullptr) {
    const auto child = [this, at, end = StoredEnd(at)](unsigned long i) {
      return at + i < end ? static_cast<const OmPointerVector*>(first[at + i]) : nullptr;
    };
    __builtin_prefetch(child(6));
    if (const OmPointerVector* const v = child(4); v != nullptr) {
      v->AskForFront(kAhead);
    }
    return;
  }
  // Wide ones by the stretch: each is on pages of its own, and the searches for pages overlap only
  // where they follow each other closely.
  const unsigned long stretch = at / kStretch;
  if (before / kStretch == stretch) {
    return;
  }
  const unsigned long* const marks = Marks();
  const auto ask = [this, marks](unsigned long i, auto what) {
    // Looking into empty stretches takes memory.
    const unsigned long end = std::min((i + 1) * kStretch, size());
    if (i * kStretch < end && (marks == nullptr || (marks[i / 64] >> i % 64 & 1) != 0)) {
      for (unsigned long k = i * kStretch; k != end; ++k) {
        if (first[k] != nullptr) {
          what(*static_cast<const OmPointerVector*>(first[k]));
        }
      }
    }
  };
  const auto forVector = [](const OmPointerVector& v) { __builtin_prefetch(&v); };
  const auto forFront = [](const OmPointerVector& v) { v.AskForFront(0); };
  const auto forElements = [](const OmPointerVector& v) { v.AskForStretches(kStretchesAhead); };
  if (before / kStretch + 1 != stretch) {
    ask(stretch, forVector);
    ask(stretch + 1, forVector);
    ask(stretch, forFront);
    ask(stretch + 2, forVector);
    ask(stretch + 1, forFront);
    ask(stretch, forElements);
  }
  ask(stretch + 3, forVector);
  ask(stretch + 2, forFront);
  ask(stretch + 1, forElements);
}

unsigned long FindNonZero(const OmPointerVector& v, unsigned long start) {
  const unsigned long size = v.size();
  const unsigned long* const marks = v.Marks();
  if (marks == nullptr) {
    return start < size ? FindIn(v.begin(), start, size) : size;
  }
  constexpr unsigned long kStretch = OmPointerVector::kStretch;
  for (unsigned long i = start; i < size;) {
    const unsigned long stretch = i / kStretch;
    const unsigned long word = marks[stretch / 64] >> stretch % 64;
    if ((word & 1) != 0) {
      const unsigned long end = std::min((stretch + 1) * kStretch, size);
      i = FindIn(v.begin(), i, end);
      if (i != end) {
        return i;
      }
    } else {
      const unsigned long passed =
          word != 0 ? static_cast<unsigned long>(std::countr_zero(word)) : 64 - stretch % 64;
      i = (stretch + passed) * kStretch;
    }
  }
  return size;
}

void freeCellArray(OmPointerVector* v, int depth) {
  if (v == nullptr) {
    return;
  }
  OM_HARDEN(depth > 0, "freeCellArray");
  if (depth == 1) {
    FreeCells(*v, nullptr);
  } else {
    unsigned long before = ~0UL;
    ForStretches(*v, v->Marks(), [&](void* const* slot, void* const* end) {
      for (; slot != end; ++slot) {
        auto* const child = static_cast<OmPointerVector*>(*slot);
        if (child != nullptr && depth == 2) {
          const bool more = slot + 1 != end;
          const auto at = static_cast<unsigned long>(slot - v->begin());
          v->AskForNext(std::exchange(before, at), at);
          FreeCells(*child, more ? Narrow(slot[1]) : nullptr);
          delete child;
        } else {
          freeCellArray(child, depth - 1);
        }
      }
    });
  }
  delete v;
}

OmCellStore::Place OmCellStore::MakeSlot(OmPointerVector*& root, const int* subscripts,
                                         OmMemoryRegion& region, Place place) {
  OM_HARDEN(place.vector != nullptr || place.subscript != subscripts, "OmCellStore::MakeSlot");
  OmPointerVector* v = place.vector;
  const int* s = place.subscript;
  if (v == nullptr) {
    v = root = new (&region) OmPointerVector(&region, *--s);
  } else if (!v->Reaches(*s)) {
    v->Reach(*s);
  }
  // All below is new.
  while (s != subscripts) {
    auto* const child = new (&region) OmPointerVector(&region, *(s - 1));
    v->Put(*s, child);
    v = child;
    --s;
  }
  return {v, s};
}

void OmCellStore::Delete(OmPointerVector* root, const std::vector<int>& subscripts,
                         Postponed* postponed) {
  void* element = root;
  for (unsigned long k = subscripts.size(); --k != 0 && element != nullptr;) {
    element = static_cast<const OmPointerVector*>(element)->At(subscripts[k]);
  }
  auto* const v = static_cast<OmPointerVector*>(element);
  const int s = subscripts[0];
  if (v == nullptr || static_cast<unsigned long>(s) >= v->size()) {
    return;
  }
  auto* cell = static_cast<OmCellText*>(v->Take(s));
  if (postponed != nullptr) {
    cell = postponed->Exchange(*v->region, cell);
  }
  if (v->IsEmpty()) {
    DeleteAndPrune(root, subscripts, v->region, cell);
  } else if (HasNoEnd(cell, v->region)) {
    OmMemoryRegion::Release(cell);
  } else {
    DeleteText(cell);
  }
}

void OmCellStore::End(void* cell) {
  delete static_cast<OmCellText*>(cell);
}

OmPointerVector* OmCellStore::Raise(OmPointerVector* root, OmMemoryRegion* region) {
  if (root == nullptr) {
    return nullptr;
  }
  auto* const raised = new (region) OmPointerVector(region, 0);
  raised->Put(0, root);
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

void OmCellStore::Verify([[maybe_unused]] const OmPointerVector* root,
                         [[maybe_unused]] unsigned long levels) {
#if defined(OM_HARDENING) && OM_HARDENING
  if (root == nullptr) {
    return;
  }
  OM_HARDEN(root->begin() <= root->end() && root->size() <= root->capacity(),
            "OmCellStore::Verify");
  // Looking into empty stretches takes memory.
  const bool isWide = root->capacity() > OmPointerVector::kMostUnmarked;
  const auto next = [root, isWide](unsigned long i) { return isWide ? FindNonZero(*root, i) : i; };
  unsigned long held = 0;
  bool agrees = true;
  for (unsigned long i = next(0); i < root->size(); i = next(i + 1)) {
    const void* const element = root->begin()[i];
    held += static_cast<unsigned long>(element != nullptr);
    agrees = agrees && root->Holding(static_cast<int>(i)) == (element != nullptr);
  }
  const unsigned long wide = root->GetNotes().wide;
  OM_HARDEN(agrees && (wide == 0 || wide == held + 1), "OmCellStore::Verify");
  for (unsigned long i = levels > 1 ? FindNonZero(*root, 0) : root->size(); i < root->size();
       i = FindNonZero(*root, i + 1)) {
    const auto* const child = static_cast<const OmPointerVector*>(root->begin()[i]);
    OM_HARDEN(child->Region() == root->Region(), "OmCellStore::Verify");
    Verify(child, levels - 1);
  }
#endif
}
