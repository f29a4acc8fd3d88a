// The cell store of a pivot table: a tree of pointer vectors, one level per dimension, that grows
// as subscripts arrive.
//
// The root is indexed by the last dimension's subscript, the bottom vectors by the first
// dimension's. Bottom vectors hold cells, the ones above hold vectors; null is a place where
// nothing is stored. A vector is one longer than the largest subscript that was ever set through
// it. One pointer step per dimension reaches a cell.
//
// Vectors and cells live in the table's memory region. Callers reach cells through OmPivotTable.

#ifndef BACKEND_TABLES_OM_CELLSTORE_H
#define BACKEND_TABLES_OM_CELLSTORE_H

#include <algorithm>
#include <bit>
#include <new>
#include <utility>
#include <vector>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"

class OmCellText;

// A vector of one level of the store. The object and its elements come from one region.
//
// A vector with room for more than kMostUnmarked elements takes pages that nobody has touched,
// where the region has such, and marks the stretches of kStretch elements in which anything was
// stored. The other stretches hold nulls and cost no memory but in small tables; searches and
// growth pass over them.
// What stores an element, or hands one out for writing, marks its stretch: operator[] and
// push_back() are this class's own, the iterators and back() are for reading, and what moves
// elements is left out.
class OM_API OmPointerVector : public OmRegionManaged, public OmVector<void*> {
 public:
  explicit OmPointerVector(OmMemoryRegion* region_) noexcept : OmVector<void*>(region_) {}
  // Makes room for the notes, too.
  static void* operator new(unsigned long size, OmMemoryRegion* region) {
    void* const block = OmRegionManaged::operator new(size + sizeof(Notes), region);
    new (static_cast<char*>(block) + size) Notes;
    return block;
  }
  static void operator delete(void* block) noexcept { OmMemoryRegion::Release(block); }
  static void operator delete(void* block, OmMemoryRegion*) noexcept {
    OmMemoryRegion::Release(block);
  }

  // Appends nulls until there is a slot `s`, with the room that appending one by one would leave; a
  // jump beyond twice the room there is takes exactly what it needs.
  void GrowTo(unsigned long s);
  // Returns element `s`, or null where there is none, as for a negative `s`.
  [[nodiscard]] void* At(int s) const noexcept;

  // For the vectors of a store, which are made by new and changed by nothing else. They take slots
  // that are not negative and, but for Reach, in reach: there, or next and with room.
  // Makes a vector with slot `s` in reach.
  OmPointerVector(OmMemoryRegion* region_, int s);
  // Returns whether slot `s`, which may be negative, is in reach.
  [[nodiscard]] bool Reaches(int s) const noexcept;
  // Makes room for slot `s`, as GrowTo does, with nulls up to it.
  void Reach(int s);
  // Returns whether a slot holds something. As a rule this is told without the slot, whose memory
  // is seldom at hand where one sets at random: that it comes later keeps nobody waiting.
  [[nodiscard]] bool Holding(int s) const noexcept;
  // Stores a cell or a vector in a slot that holds nothing.
  void Put(int s, void* element) noexcept;
  // Appends null where the slot, which holds nothing, is next.
  void PutNull(int s) noexcept;
  // Leaves null in a slot that is there, and returns what it held.
  void* Take(int s) noexcept;
  // Returns whether no slot holds anything.
  [[nodiscard]] bool IsEmpty() const noexcept;

  [[nodiscard]] void*& operator[](unsigned long i);
  [[nodiscard]] void* const& operator[](unsigned long i) const;
  void reserve(unsigned long n);
  // Appends an element and returns its slot.
  void** push_back(void* value);
  [[nodiscard]] void* const* begin() const noexcept { return first; }
  [[nodiscard]] void* const* end() const noexcept { return last; }
  [[nodiscard]] void* const& back() const { return (*this)[size() - 1]; }
  template <typename... Args>
  void insert(Args...) = delete;
  template <typename... Args>
  void erase(Args...) = delete;
  template <typename... Args>
  void resize(Args...) = delete;

  static constexpr unsigned long kMostUnmarked = 128;
  static constexpr unsigned long kStretch = 8;
  // Returns the marks, a bit a stretch, or null where there are none: then anything may be stored
  // anywhere.
  [[nodiscard]] const unsigned long* Marks() const noexcept;
  // Returns how far from element `i` on, in whose stretch something was stored, elements may be
  // looked at without touching memory for nothing; not beyond the next stretch where there are
  // marks.
  [[nodiscard]] unsigned long StoredEnd(unsigned long i) const noexcept;
  // Ask for memory that a walk comes to: the first elements, or where there are marks the front of
  // the block, and, when that is there, the first stretches that are marked. Inlined, because a
  // compiler takes a function that does no more than this for one without effect.
  [[gnu::always_inline]] void AskForFront(long elements) const noexcept;
  [[gnu::always_inline]] void AskForStretches(int stretches) const noexcept;
  // Asks for the memory of vectors that come next in a walk over the children of this one, which
  // has come to child `at` from child `before`, or ~0UL at its start.
  OM_PRIVATE void AskForNext(unsigned long before, unsigned long at) const noexcept;

 private:
  friend class OmCellStore;

  // What a vector of the store knows of its elements. Stands behind the object, in the block that
  // new made, and comes with it.
  struct Notes {
    // In a vector that is not wide, bit i % 64 of word i / 64 tells that element i is there and
    // null. Where elements come in order, nothing has to be written here.
    unsigned long holes[kMostUnmarked / 64] = {};
    // In a wide vector one more than the number of elements that are not null; 0 in any other.
    unsigned long wide = 0;
  };
  // Returns the address of slot `s`. A negative number becomes one that no vector reaches, whose
  // size is at most that of the positive ones; the shift cannot overflow. By numbers, because the
  // slot may be none.
  [[nodiscard]] void** SlotAt(int s) const noexcept {
    return reinterpret_cast<void**>(reinterpret_cast<unsigned long>(first) +
                                    Number(s) * sizeof(void*));
  }
  [[nodiscard]] static unsigned long Number(int s) noexcept { return static_cast<unsigned int>(s); }
  [[nodiscard]] Notes& GetNotes() noexcept { return *reinterpret_cast<Notes*>(this + 1); }
  [[nodiscard]] const Notes& GetNotes() const noexcept {
    return *reinterpret_cast<const Notes*>(this + 1);
  }
  template <typename Region>
  [[nodiscard]] static unsigned long* MarksOf(void* block) noexcept;
  // Returns a word whose lowest `n` bits are set, at most all.
  [[nodiscard]] static unsigned long Ones(unsigned long n) noexcept {
    return n == 0 ? 0 : ~0UL >> (64 - n);
  }
  [[nodiscard]] bool HoldingWide(void* const* slot) const noexcept;
  void PutWide(void** slot, void* element) noexcept;
  [[nodiscard]] bool IsWide() const noexcept { return capacity() > kMostUnmarked; }
  void NoteHoles(unsigned long from) noexcept;
  void Mark(void** slot) noexcept;
  void ReserveWide(unsigned long n);
  // Makes room for slot `s`, where there is none.
  void MakeRoom(unsigned long s);
  // Appends nulls up to `slot`, for which there is room.
  void Fill(void** slot) noexcept;
  void FillUpTo(void** slot) noexcept;
};

inline void* OmPointerVector::At(int s) const noexcept {
  void* const* const slot = SlotAt(s);
  return slot < last ? *slot : nullptr;
}

inline void OmPointerVector::GrowTo(unsigned long s) {
  if (s >= size()) {
    if (s >= capacity()) {
      MakeRoom(s);
    }
    Fill(first + s);
  }
}

inline bool OmPointerVector::Reaches(int s) const noexcept {
  const void* const* const slot = SlotAt(s);
  return slot <= last && slot != limit;
}

inline bool OmPointerVector::Holding(int s) const noexcept {
  const Notes& notes = GetNotes();
  const unsigned long i = Number(s);
  return notes.wide != 0 ? HoldingWide(SlotAt(s))
                         : SlotAt(s) != last && (notes.holes[i / 64] >> i % 64 & 1) == 0;
}

inline void OmPointerVector::Put(int s, void* element) noexcept {
  Notes& notes = GetNotes();
  void** const slot = SlotAt(s);
  if (notes.wide != 0) {
    PutWide(slot, element);
    return;
  }
  *slot = element;
  if (slot == last) {
    last = slot + 1;
  } else {
    const unsigned long i = Number(s);
    notes.holes[i / 64] &= ~(1UL << i % 64);
  }
}

inline void* OmPointerVector::Take(int s) noexcept {
  Notes& notes = GetNotes();
  void* const element = std::exchange(*SlotAt(s), nullptr);
  if (notes.wide != 0) {
    notes.wide -= static_cast<unsigned long>(element != nullptr);
  } else {
    const unsigned long i = Number(s);
    notes.holes[i / 64] |= 1UL << i % 64;
  }
  return element;
}

inline bool OmPointerVector::IsEmpty() const noexcept {
  const Notes& notes = GetNotes();
  if (notes.wide != 0) {
    return notes.wide == 1;
  }
  const unsigned long low = std::min(size(), 64UL);
  return notes.holes[0] == Ones(low) && notes.holes[1] == Ones(size() - low);
}

inline OmPointerVector::OmPointerVector(OmMemoryRegion* region_, int s) : OmPointerVector(region_) {
  if (s == 0) {
    // What Reach comes to, and most vectors begin with.
    constexpr unsigned long kFew = 4;
    first = last = AllocateBlock(region, kFew);
    limit = first + kFew;
  } else {
    Reach(s);
  }
}

inline void OmPointerVector::Fill(void** slot) noexcept {
  if (slot != last || IsWide()) {
    FillUpTo(slot);
  } else {
    *slot = nullptr;
  }
  last = slot + 1;
}

inline void*& OmPointerVector::operator[](unsigned long i) {
  void*& slot = OmVector<void*>::operator[](i);
  Mark(&slot);
  return slot;
}

inline void* const& OmPointerVector::operator[](unsigned long i) const {
  return OmVector<void*>::operator[](i);
}

inline void OmPointerVector::reserve(unsigned long n) {
  if (n <= kMostUnmarked) {
    OmVector<void*>::reserve(n);
  } else if (n > capacity()) {
    ReserveWide(n);
  }
}

inline void** OmPointerVector::push_back(void* value) {
  GrowTo(size());
  Mark(last - 1);
  last[-1] = value;
  return last - 1;
}

// A region that has no pages of zeros gives blocks without marks.
template <typename Region>
unsigned long* OmPointerVector::MarksOf(void* block) noexcept {
  if constexpr (requires { Region::Marks(block); }) {
    static_assert(Region::kMarkedBytes == kStretch * sizeof(void*));
    static_assert(Region::kMostUnmarked == kMostUnmarked * sizeof(void*));
    return Region::Marks(block);
  } else {
    return nullptr;
  }
}

inline const unsigned long* OmPointerVector::Marks() const noexcept {
  return IsWide() ? MarksOf<OmMemoryRegion>(first) : nullptr;
}

inline void OmPointerVector::Mark(void** slot) noexcept {
  if (IsWide()) {
    if (unsigned long* const marks = MarksOf<OmMemoryRegion>(first); marks != nullptr) {
      const auto stretch = static_cast<unsigned long>(slot - first) / kStretch;
      unsigned long& word = marks[stretch / 64];
      if (const unsigned long bit = 1UL << stretch % 64; (word & bit) == 0) {
        word |= bit;
        // A page that is read before it is written costs two faults.
        *slot = nullptr;
      }
    }
  }
}

inline unsigned long OmPointerVector::StoredEnd(unsigned long i) const noexcept {
  const unsigned long* const marks = Marks();
  if (marks == nullptr) {
    return size();
  }
  unsigned long stretch = i / kStretch + 1;
  if (stretch * kStretch < size() && (marks[stretch / 64] >> stretch % 64 & 1) != 0) {
    ++stretch;
  }
  return std::min(stretch * kStretch, size());
}

inline void OmPointerVector::AskForFront(long elements) const noexcept {
  constexpr long kLine = 8;  // elements
  if (IsWide()) {
    // Addresses. The marks, a bit for 64 bytes, stand in front of what stands in front.
    const auto start = reinterpret_cast<unsigned long>(first);
    __builtin_prefetch(reinterpret_cast<const void*>(start - 64));
    __builtin_prefetch(reinterpret_cast<const void*>(start - 64 - capacity() / 64));
    return;
  }
  for (long i = 0, n = std::min(elements, last - first); i < n; i += kLine) {
    __builtin_prefetch(first + i);
  }
}

inline void OmPointerVector::AskForStretches(int stretches) const noexcept {
  const unsigned long* marks = Marks();
  if (marks == nullptr) {
    return;
  }
  constexpr unsigned long kWord = 64 * kStretch;
  for (unsigned long from = 0, n = size(); from < n; from += kWord) {
    for (unsigned long word = *marks++; word != 0; word &= word - 1) {
      const unsigned long at = from + static_cast<unsigned long>(std::countr_zero(word)) * kStretch;
      __builtin_prefetch(first + at);
      if (--stretches == 0) {
        return;
      }
    }
  }
}

// Returns the first index at or after `start` whose element is not null, or v.size().
OM_API unsigned long FindNonZero(const OmPointerVector& v, unsigned long start);

// Deletes the subtree of `depth` levels at `v`, the cells at its bottom included. Null is ignored.
OM_API void freeCellArray(OmPointerVector* v, int depth);

// The operations of a table on its store. `root` is the table's root vector, null until the first
// cell is set; `subscripts` has one element per dimension, none of them negative.
class OM_API OmCellStore {
 public:
  // Where a search for a slot ended: the last vector on the way, and its subscript. Without a root
  // no vector, and the end of the subscripts.
  struct Place {
    OmPointerVector* vector;
    const int* subscript;
  };
  // Returns whether the slot at `subscripts` is in reach, and sets `place` to it; elsewhere to the
  // vector that has no such slot, or null in it. Unlike MakeSlot, and like Find, it takes
  // subscripts that may be negative: there is no such slot. They are not none where there is a
  // root.
  [[nodiscard]] static bool FindSlot(OmPointerVector* root, const std::vector<int>& subscripts,
                                     Place& place) noexcept;
  // Makes in `region` what is missing from `place` on, where FindSlot ended for these subscripts,
  // and returns the place of the slot. Where that fails, what was made stays in the tree, which
  // remains whole.
  [[nodiscard]] static Place MakeSlot(OmPointerVector*& root, const int* subscripts,
                                      OmMemoryRegion& region, Place place);
  // Returns the cell at `subscripts`, which are not none, or null. Makes nothing.
  [[nodiscard]] static OmCellText* Find(const OmPointerVector* root,
                                        const std::vector<int>& subscripts) noexcept;
  // Whether one of `subscripts` is negative.
  [[nodiscard]] static bool AnyNegative(const std::vector<int>& subscripts) noexcept;
  // Cells of one store that are deleted and whose end is postponed, where the region can do that.
  template <typename Region>
  class PostponedIn {
   public:
    // Takes a cell, and returns the one to be deleted in its place, or null.
    [[nodiscard]] OmCellText* Exchange(Region& /*region*/, OmCellText* cell) noexcept {
      return cell;
    }
  };
  using Postponed = PostponedIn<OmMemoryRegion>;
  // Deletes the cell at `subscripts`, which are not none, and every vector but the root that this
  // leaves without an element. `postponed` is null unless all cells of the store may go with the
  // region. The vectors, as MakeSlot and Raise make them, were made by new.
  static void Delete(OmPointerVector* root, const std::vector<int>& subscripts,
                     Postponed* postponed);
  // Puts a new root above `root`, which moves every cell to subscript 0 of one more dimension.
  [[nodiscard]] static OmPointerVector* Raise(OmPointerVector* root, OmMemoryRegion* region);
  // Undoes Raise: returns the root from before.
  [[nodiscard]] static OmPointerVector* Lower(OmPointerVector* root);

  // Where hardening is on, walks the store of `levels` levels at `root`, which may be null, and
  // holds each vector against what it has to be: whole, as its notes say, and in the region of the
  // one above.
  static void Verify(const OmPointerVector* root, unsigned long levels);

  // Whether a stored cell may go with the region that the store is in, without freeCellArray. Cells
  // that cannot tell may not.
  template <typename Text>
  [[nodiscard]] static bool GoesWith(const Text& cell, const OmMemoryRegion* region) noexcept {
    if constexpr (requires { cell.GoesWith(region); }) {
      return cell.GoesWith(region);
    } else {
      return false;
    }
  }
  // What holds of a store without cells. Where hardening is on, every end is run and checked.
#if defined(OM_HARDENING) && OM_HARDENING
  static constexpr bool kCellsGo = false;
#else
  static constexpr bool kCellsGo = true;
#endif

 private:
  // Deletes a cell.
  static void End(void* cell);
};

// The same where the region can.
template <typename Region>
requires requires {
  typename Region::Postponed;
}
class OmCellStore::PostponedIn<Region> {
 public:
  // Takes a cell, and returns the one that has waited longest, or null.
  [[nodiscard]] OmCellText* Exchange(Region& region, OmCellText* cell) noexcept {
    return static_cast<OmCellText*>(region.Postpone(cells, cell));
  }

 private:
  typename Region::Postponed cells{&End};
};

inline OmCellText* OmCellStore::Find(const OmPointerVector* root,
                                     const std::vector<int>& subscripts) noexcept {
  const int* const first = subscripts.data();
  void* element = const_cast<OmPointerVector*>(root);
  for (const int* s = first + subscripts.size(); element != nullptr && s != first;) {
    element = static_cast<const OmPointerVector*>(element)->At(*--s);
  }
  return static_cast<OmCellText*>(element);
}

inline bool OmCellStore::FindSlot(OmPointerVector* root, const std::vector<int>& subscripts,
                                  Place& place) noexcept {
  const int* const first = subscripts.data();
  place = {root, first + subscripts.size()};
  if (root == nullptr) {
    return false;
  }
  while (--place.subscript != first) {
    void* const child = place.vector->At(*place.subscript);
    if (child == nullptr) {
      return false;
    }
    place.vector = static_cast<OmPointerVector*>(child);
  }
  return place.vector->Reaches(*place.subscript);
}

inline bool OmCellStore::AnyNegative(const std::vector<int>& subscripts) noexcept {
  for (const int subscript : subscripts) {
    if (subscript < 0) {
      return true;
    }
  }
  return false;
}

#endif
