// OmPointerVector, a vector of pointers that is as good wide and mostly empty as short and full.
// The cell store of a table is a tree of them.
//
// A slot holds a pointer or null. In front of the elements, in the same block, are the number of
// slots that are not null and a bitmap of them, a bit for each slot. So whether the vector is empty
// is known without a search, the next slot in use is found 64 slots at a time, and neither reads
// the elements. A block above 1 MiB is of zeros from pages that nobody has written to: a slot that
// was never used costs a bit, and the elements occupy memory only around those in use. Growing
// copies what is in use, and releasing clears no more.
//
// A slot costs 8 bytes and a bit; the vector itself 32 bytes, and its block up to 24 more. All
// operations but growing, releasing and searching cost constant time.

#ifndef BACKEND_TABLES_OM_POINTERVECTOR_H
#define BACKEND_TABLES_OM_POINTERVECTOR_H

#include <algorithm>
#include <bit>

#include "backend/tables/om/Export.h"
#include "backend/tables/om/Vector.h"

// The fields and the growth are those of an OmVector<void*>, the element operations its own, so
// that whatever changes an element changes the bitmap too. Owns its block, and not what the slots
// point to. The region has to outlive the vector. Growing may move the elements, which invalidates
// begin() and end(). If memory runs out, a call throws std::bad_alloc and the vector is unchanged.
//
// Slots are for subscripts, which are ints: no vector may have more than 2^31, and no slot number
// may be above 2^32. A release build checks neither, nor that a slot is there if it has to be.
//
// Invariants: first <= last <= limit, all null or none; the block begins FrontWords(capacity())
// words before `first`; bit i of the bitmap is set if and only if slot i is not null; the count is
// the number of bits that are set; what lies from `last` to `limit` is null.
class OM_API OmPointerVector : public OmRegionManaged, public OmVectorBase<void*> {
 public:
  // Empty, without a block. A null region means the default heap.
  explicit OmPointerVector(OmMemoryRegion* region_) noexcept;
  OmPointerVector(const OmPointerVector&) = delete;
  OmPointerVector& operator=(const OmPointerVector&) = delete;
  ~OmPointerVector();

  [[nodiscard]] OmMemoryRegion* Region() const noexcept { return region; }
  [[nodiscard]] unsigned long size() const noexcept {
    return static_cast<unsigned long>(last - first);
  }
  [[nodiscard]] unsigned long capacity() const noexcept {
    return static_cast<unsigned long>(limit - first);
  }
  // For reading; null without a block. In a wide vector whoever reads every slot touches memory for
  // nothing: walk by FindNonZero() instead.
  [[nodiscard]] void* const* begin() const noexcept { return first; }
  [[nodiscard]] void* const* end() const noexcept { return last; }
  // Returns slot `i`, which has to be there.
  [[nodiscard]] void* operator[](unsigned long i) const;
  [[nodiscard]] void* back() const { return (*this)[size() - 1]; }
  // Returns slot `s`, or null if there is none, as for a negative `s`.
  [[nodiscard]] void* At(int s) const noexcept;
  // Returns whether there is room for slot `s`.
  [[nodiscard]] bool HasRoom(unsigned long s) const noexcept { return SlotAt(s) < limit; }
  // Returns the first slot at or after `start` that is not null, or size().
  [[nodiscard]] unsigned long Find(unsigned long start) const noexcept;
  // Returns whether slot `s`, which has to be there, is not null. Does not read the slot.
  [[nodiscard]] bool IsSet(unsigned long s) const noexcept {
    return (Group(s / kGroup) >> s % kGroup & 1) != 0;
  }
  // Returns whether every slot is null.
  [[nodiscard]] bool IsEmpty() const noexcept { return first == nullptr || Count() == 0; }

  // Makes room for exactly `n` slots if there is room for fewer. Never shrinks.
  void reserve(unsigned long n);
  // Appends nulls until there is a slot `s`; does nothing if there is. If there is no room,
  // reserves what appending one by one would, a power of two and at least 4; or exactly s + 1 slots
  // if `s` is more than twice capacity().
  void GrowTo(unsigned long s);
  // Appends an element or null.
  void push_back(void* element);
  // Stores an element that is not null in slot `s`, which has to be there and null.
  void Put(unsigned long s, void* element) noexcept;
  // Stores an element or null in slot `s`, which has to be there, and returns what it held.
  void* Exchange(unsigned long s, void* element) noexcept;

 private:
  static constexpr unsigned long kGroup = 64;  // slots of a word of the bitmap

  // Words in front of `n` slots: the count, a word for each group, and one more if needed to keep
  // the elements aligned to 16 bytes.
  [[nodiscard]] static unsigned long FrontWords(unsigned long n) noexcept {
    return (1 + (n + kGroup - 1) / kGroup + 1) / 2 * 2;
  }
  // Returns the address of slot `s`, which may be none. Computed as a number, because a pointer
  // must not leave its block. A negative subscript, taken as an unsigned int, is beyond every
  // vector.
  [[nodiscard]] void** SlotAt(unsigned long s) const noexcept {
    return reinterpret_cast<void**>(reinterpret_cast<unsigned long>(first) + s * sizeof(void*));
  }
  // The front grows backwards from the first element: the count, then group 0, 1, …
  [[nodiscard]] unsigned long& Count() const noexcept {
    return reinterpret_cast<unsigned long*>(first)[-1];
  }
  [[nodiscard]] unsigned long& Group(unsigned long g) const noexcept {
    return reinterpret_cast<unsigned long*>(first)[-2 - static_cast<long>(g)];
  }
  // Calls `visit(g, slots)` for each group g that has a slot in use, `slots` being its length.
  template <typename Visit>
  void ForEachGroup(Visit visit) const;
  void MakeRoom(unsigned long s);
  void ReleaseBlock() noexcept;
};

// The same as v.Find(start).
OM_API unsigned long FindNonZero(const OmPointerVector& v, unsigned long start);
// Deletes a tree of vectors of `depth` levels, and the cells in those at its bottom: if `depth` is
// 1, `v` itself holds the cells. Null is ignored.
OM_API void freeCellArray(OmPointerVector* v, int depth);

inline OmPointerVector::OmPointerVector(OmMemoryRegion* region_) noexcept
    : OmVectorBase<void*>(region_, 0) {}

inline void* OmPointerVector::operator[](unsigned long i) const {
  OM_HARDEN(i < size(), "OmPointerVector::operator[]");
  return first[i];
}

inline void* OmPointerVector::At(int s) const noexcept {
  void* const* const slot = SlotAt(static_cast<unsigned int>(s));
  return slot < last ? *slot : nullptr;
}

inline unsigned long OmPointerVector::Find(unsigned long start) const noexcept {
  const unsigned long n = size();
  unsigned long g = start / kGroup;
  for (unsigned long above = ~0UL << start % kGroup; g * kGroup < n; ++g, above = ~0UL) {
    if (const unsigned long word = Group(g) & above; word != 0) {
      return g * kGroup + static_cast<unsigned long>(std::countr_zero(word));
    }
  }
  return n;
}

inline void OmPointerVector::GrowTo(unsigned long s) {
  if (!HasRoom(s)) {
    MakeRoom(s);
  }
  // What follows the last slot is null already.
  last = std::max(last, first + s + 1);
}

inline void OmPointerVector::Put(unsigned long s, void* element) noexcept {
  OM_HARDEN(s < size() && !IsSet(s) && element != nullptr, "OmPointerVector::Put");
  Group(s / kGroup) |= 1UL << s % kGroup;
  ++Count();
  first[s] = element;
}

inline void* OmPointerVector::Exchange(unsigned long s, void* element) noexcept {
  OM_HARDEN(s < size(), "OmPointerVector::Exchange");
  // A slot that is null is not read: nobody waits for its memory.
  void* old = nullptr;
  if (IsSet(s)) {
    old = std::exchange(first[s], nullptr);
    Group(s / kGroup) &= ~(1UL << s % kGroup);
    --Count();
  }
  if (element != nullptr) {
    Put(s, element);
  }
  return old;
}

template <typename Visit>
void OmPointerVector::ForEachGroup(Visit visit) const {
  for (unsigned long at = 0, n = size(); at < n; at += kGroup) {
    if (Group(at / kGroup) != 0) {
      visit(at / kGroup, std::min(kGroup, n - at));
    }
  }
}

#endif
