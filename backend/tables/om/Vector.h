// OmVector, the growable array of everything that lives inside a table, and OmRegionManaged, the
// base of objects that are placed in a memory region.
//
// Every block comes from one OmMemoryRegion, so that a table's memory is charged to the table and
// released with it. The vector is simpler than std::vector on purpose: elements are moved as bytes,
// never through a copy or move constructor. An element may therefore hold no pointer into itself or
// into its neighbours, unless its owner corrects that pointer after each move. Appending costs
// amortised constant time; inserting and erasing cost one memory move. Indexing is not checked in a
// release build, and there is no assignment.

#ifndef BACKEND_TABLES_OM_VECTOR_H
#define BACKEND_TABLES_OM_VECTOR_H

#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "platform/memory/MemoryRegion.h"

// The base of objects that are created inside a region with `new (region) T(...)`. A null region
// means the default heap. `delete` releases the object to the region that it came from.
class OmRegionManaged {
 public:
  static void* operator new(unsigned long size, OmMemoryRegion* region) {
    return OmMemoryRegion::SelectHeap(region)->Allocate(size);
  }
  static void operator delete(void* block) noexcept { OmMemoryRegion::Release(block); }
  // Called if the constructor throws in a placement new expression.
  static void operator delete(void* block, OmMemoryRegion*) noexcept {
    OmMemoryRegion::Release(block);
  }
};

// Owns the storage of an OmVector.
//
// Invariants: first <= last <= limit; the three are null together or not at all; the block that
// they delimit came from `region`, which is never null while the vector lives.
template <typename T>
class OmVectorBase {
 public:
  // Allocates room for `n` elements and holds none. A null region means the default heap.
  OmVectorBase(OmMemoryRegion* region, unsigned long n);
  OmVectorBase(const OmVectorBase&) = delete;
  OmVectorBase& operator=(const OmVectorBase&) = delete;
  ~OmVectorBase();

 protected:
  // Returns a block with room for `n` elements.
  static T* AllocateBlock(OmMemoryRegion* region, unsigned long n);

  OmMemoryRegion* region;
  T* first;
  T* last;
  T* limit;
};

template <typename T>
class OmVectorTreeData;

// A vector of elements that may be moved as bytes.
//
// If an allocation or a copy fails, the elements are unchanged. The region has to outlive the
// vector. Any call that grows the vector invalidates pointers to its elements.
template <typename T>
class OmVector : public OmVectorBase<T> {
 public:
  explicit OmVector(OmMemoryRegion* region);
  OmVector(long n, const T& value, OmMemoryRegion* region);
  // Copies the `n` bytes at `s`, without a terminator.
  OmVector(const char* s, unsigned long n, OmMemoryRegion* region) requires std::is_same_v<T, char>;
  // A copy allocates exactly the room that its elements need, in the region of `other` or in
  // `region`.
  OmVector(const OmVector& other);
  OmVector(const OmVector& other, OmMemoryRegion* region);
  OmVector& operator=(const OmVector&) = delete;
  ~OmVector();

  [[nodiscard]] OmMemoryRegion* Region() const noexcept { return this->region; }
  [[nodiscard]] T* begin() noexcept { return this->first; }
  [[nodiscard]] const T* begin() const noexcept { return this->first; }
  [[nodiscard]] T* end() noexcept { return this->last; }
  [[nodiscard]] const T* end() const noexcept { return this->last; }
  [[nodiscard]] unsigned long size() const noexcept;
  [[nodiscard]] unsigned long capacity() const noexcept;
  // Unchecked in a release build, like back().
  [[nodiscard]] T& operator[](unsigned long i);
  [[nodiscard]] const T& operator[](unsigned long i) const;
  [[nodiscard]] T& back();

  // Reallocates to room for exactly `n` elements if there is room for fewer. Never shrinks.
  void reserve(unsigned long n);
  // Returns the first of 4, 8, 16, 32, … that is greater than `n`.
  [[nodiscard]] static unsigned long NextSize(unsigned long n);
  // Appends a copy of `value`, which may be one of the vector's own elements. Returns a pointer to
  // the copy.
  T* push_back(const T& value);
  // Inserts a copy of `value` in front of `position`, and returns a pointer to the copy. `value`
  // must not be an element of this vector: it is read after the elements have moved.
  T* insert(T* position, const T& value);
  // Destroys and removes the element at `position`. At or past the end it removes the last element
  // without destroying it, on purpose: OmDimension::Delete depends on it.
  void erase(T* position);
  void erase(T* from, T* to);
  // Appends copies of `value`, or removes elements from the end, until there are `n`.
  void resize(unsigned long n, T value);
  // Destroys the elements and releases the block.
  void clear();
  // Runs the destructor of every element, first to last, and does not change size().
  void destroy_elements();

 private:
  // A tree constructs, moves and removes its records in place.
  template <typename U>
  friend class OmVectorTreeData;

  void CopyElements(const OmVector& other);
  void MoveTo(T* block, unsigned long n) noexcept;
  // Appends an element constructed from `args`. They may refer to elements of this vector, which
  // move only after the new element is complete.
  template <typename... Args>
  T* Emplace(Args&&... args);
};

template <typename T>
T* OmVectorBase<T>::AllocateBlock(OmMemoryRegion* region_, unsigned long n) {
  if (n > std::numeric_limits<unsigned long>::max() / sizeof(T)) {
    throw std::bad_alloc();
  }
  return static_cast<T*>(region_->Allocate(n * sizeof(T)));
}

template <typename T>
OmVectorBase<T>::OmVectorBase(OmMemoryRegion* region_, unsigned long n)
    : region(OmMemoryRegion::SelectHeap(region_)), first(nullptr), last(nullptr), limit(nullptr) {
  static_assert(alignof(T) <= 16, "a region aligns its blocks to 16 bytes");
  if (n != 0) {
    first = last = AllocateBlock(region, n);
    limit = first + n;
  }
}

template <typename T>
OmVectorBase<T>::~OmVectorBase() {
  OmMemoryRegion::Release(first);
  region = nullptr;
  first = last = limit = nullptr;
}

template <typename T>
OmVector<T>::OmVector(OmMemoryRegion* region_) : OmVectorBase<T>(region_, 0) {}

template <typename T>
OmVector<T>::OmVector(long n, const T& value, OmMemoryRegion* region_)
    : OmVectorBase<T>(region_, static_cast<unsigned long>(n)) {
  try {
    while (this->last != this->limit) {
      new (this->last) T(value);
      ++this->last;
    }
  } catch (...) {
    destroy_elements();
    throw;
  }
}

template <typename T>
OmVector<T>::OmVector(const char* s, unsigned long n,
                      OmMemoryRegion* region_) requires std::is_same_v<T, char>
    : OmVectorBase<T>(region_, n) {
  if (n != 0) {
    std::memcpy(this->first, s, n);
    this->last = this->limit;
  }
}

template <typename T>
OmVector<T>::OmVector(const OmVector& other) : OmVector(other, other.Region()) {}

template <typename T>
OmVector<T>::OmVector(const OmVector& other, OmMemoryRegion* region_)
    : OmVectorBase<T>(region_, other.size()) {
  CopyElements(other);
}

template <typename T>
OmVector<T>::~OmVector() {
  destroy_elements();
}

// Fills the block of a new vector. If a copy throws, the destructor of the base releases the block.
template <typename T>
void OmVector<T>::CopyElements(const OmVector& other) {
  if constexpr (std::is_trivially_copyable_v<T>) {
    if (other.first != other.last) {
      std::memcpy(static_cast<void*>(this->first), other.first, other.size() * sizeof(T));
      this->last = this->first + other.size();
    }
  } else {
    try {
      for (const T& element : other) {
        new (this->last) T(element);
        ++this->last;
      }
    } catch (...) {
      destroy_elements();
      throw;
    }
  }
}

template <typename T>
unsigned long OmVector<T>::size() const noexcept {
  return static_cast<unsigned long>(this->last - this->first);
}

template <typename T>
unsigned long OmVector<T>::capacity() const noexcept {
  return static_cast<unsigned long>(this->limit - this->first);
}

template <typename T>
T& OmVector<T>::operator[](unsigned long i) {
  OM_HARDEN(i < size(), "OmVector::operator[]");
  return this->first[i];
}

template <typename T>
const T& OmVector<T>::operator[](unsigned long i) const {
  OM_HARDEN(i < size(), "OmVector::operator[]");
  return this->first[i];
}

template <typename T>
T& OmVector<T>::back() {
  OM_HARDEN(this->first != this->last, "OmVector::back");
  return this->last[-1];
}

template <typename T>
void OmVector<T>::reserve(unsigned long n) {
  if (capacity() >= n) {
    return;
  }
  MoveTo(this->AllocateBlock(this->region, n), n);
}

// Moves the elements to `block`, which has room for `n`, and releases the old block.
template <typename T>
void OmVector<T>::MoveTo(T* block, unsigned long n) noexcept {
  const unsigned long count = size();
  if (count != 0) {
    // The old elements are not destroyed: their bytes live on in the new block.
    std::memcpy(static_cast<void*>(block), this->first, count * sizeof(T));
  }
  this->last = block + count;
  this->limit = block + n;
  OmMemoryRegion::Release(this->first);
  this->first = block;
}

template <typename T>
unsigned long OmVector<T>::NextSize(unsigned long n) {
  OM_HARDEN(n < ~(~0UL >> 1), "OmVector::NextSize");
  unsigned long next = 4;
  while (next <= n) {
    next *= 2;
  }
  return next;
}

template <typename T>
T* OmVector<T>::push_back(const T& value) {
  return Emplace(value);
}

template <typename T>
template <typename... Args>
T* OmVector<T>::Emplace(Args&&... args) {
  if (this->last != this->limit) {
    new (this->last) T(std::forward<Args>(args)...);
  } else {
    const unsigned long count = size();
    const unsigned long room = NextSize(count);
    T* const block = this->AllocateBlock(this->region, room);
    try {
      new (block + count) T(std::forward<Args>(args)...);
    } catch (...) {
      OmMemoryRegion::Release(block);
      throw;
    }
    MoveTo(block, room);
  }
  return this->last++;
}

template <typename T>
T* OmVector<T>::insert(T* position, const T& value) {
  OM_HARDEN(this->first <= position && position <= this->last, "OmVector::insert");
  OM_HARDEN(&value < this->first || this->last <= &value, "OmVector::insert");
  const auto index = static_cast<unsigned long>(position - this->first);
  if (this->last == this->limit) {
    reserve(NextSize(size()));
  }
  T* const place = this->first + index;
  const unsigned long tail = (size() - index) * sizeof(T);
  if (tail != 0) {
    std::memmove(static_cast<void*>(place + 1), place, tail);
  }
  if constexpr (std::is_nothrow_copy_constructible_v<T>) {
    new (place) T(value);
  } else {
    try {
      new (place) T(value);
    } catch (...) {
      std::memmove(static_cast<void*>(place), place + 1, tail);
      throw;
    }
  }
  ++this->last;
  return place;
}

template <typename T>
void OmVector<T>::erase(T* position) {
  OM_HARDEN(this->first != this->last && this->first <= position, "OmVector::erase");
  if (position < this->last) {
    position->~T();
    const auto tail = static_cast<unsigned long>(this->last - (position + 1)) * sizeof(T);
    if (tail != 0) {
      std::memmove(static_cast<void*>(position), position + 1, tail);
    }
  }
  --this->last;
}

template <typename T>
void OmVector<T>::erase(T* from, T* to) {
  OM_HARDEN(this->first <= from && from <= to && to <= this->last, "OmVector::erase");
  for (T* element = from; element != to; ++element) {
    element->~T();
  }
  const auto tail = static_cast<unsigned long>(this->last - to) * sizeof(T);
  if (tail != 0) {
    std::memmove(static_cast<void*>(from), to, tail);
  }
  this->last -= to - from;
}

template <typename T>
void OmVector<T>::resize(unsigned long n, T value) {
  if (n < size()) {
    erase(this->first + n, this->last);
    return;
  }
  reserve(n);
  const unsigned long count = size();
  try {
    while (size() < n) {
      push_back(value);
    }
  } catch (...) {
    erase(this->first + count, this->last);
    throw;
  }
}

template <typename T>
void OmVector<T>::clear() {
  destroy_elements();
  OmMemoryRegion::Release(this->first);
  this->first = this->last = this->limit = nullptr;
}

template <typename T>
void OmVector<T>::destroy_elements() {
  if constexpr (!std::is_trivially_destructible_v<T>) {
    for (T* element = this->first; element != this->last; ++element) {
      element->~T();
    }
  }
}

#endif
