// The stores that are measured against each other: the table, and what an engineer would take off
// the shelf instead. All offer the same operations and hold the same cells.
//
// A peer owns each cell by itself, allocated by the system's allocator or by what is loaded in its
// place.

#ifndef BENCHMARKS_STORES_H
#define BENCHMARKS_STORES_H

#include <absl/container/btree_map.h>
#include <absl/container/flat_hash_map.h>

#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <memory_resource>
#include <unordered_map>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/PivotTable.h"
#include "benchmarks/Measure.h"
#include "platform/cells/Number.h"
#include "platform/cells/StringCell.h"

class TableStore {
 public:
  explicit TableStore(unsigned long dimensions) : table(title, title, false) {
    for (unsigned long d = 0; d != dimensions; ++d) {
      table.AddDimension(title);
    }
  }
  void Set(const Subscripts& at, double value) { table.Cell(at, OmNumber(value)); }
  [[nodiscard]] const OmNumber* Find(const Subscripts& at) {
    return static_cast<const OmNumber*>(table.Cell(at));
  }
  void Erase(const Subscripts& at) { table.deleteCell(at); }
  template <typename Visit>
  void Walk(Visit visit) const {
    for (OmPivotTable::ConstIterator cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
      visit(static_cast<const OmNumber&>(*cell.Cell()));
    }
  }

 private:
  OmStringCell title{"table"};
  OmPivotTable table;
};

// Keys, the first subscript least significant, so that an ordered map goes through the cells in the
// order of the table.
template <unsigned long N>
struct ArrayKey {
  using Type = std::array<int, N>;
  static Type Of(const Subscripts& at) {
    Type key;
    for (unsigned long d = 0; d != N; ++d) {
      key[N - 1 - d] = at[d];
    }
    return key;
  }
};

template <unsigned long N>
struct VectorKey {
  using Type = std::vector<int>;
  static Type Of(const Subscripts& at) { return {at.rbegin(), at.rend()}; }
};

template <unsigned long N>
struct PackedKey {
  using Type = std::uint64_t;
  static Type Of(const Subscripts& at) {
    Type key = 0;
    for (unsigned long d = N; d-- != 0;) {
      key = key << (64 / N) | static_cast<std::uint64_t>(at[d]);
    }
    return key;
  }
};

struct GlobalDelete {
  void operator()(const OmNumber* cell) const { ::delete cell; }
};
using OwnedNumber = std::unique_ptr<const OmNumber, GlobalDelete>;

template <typename Key, template <typename, typename> typename Map>
class MapStore {
 public:
  explicit MapStore(unsigned long /*dimensions*/) {}
  void Set(const Subscripts& at, double value) { cells[Key::Of(at)].reset(::new OmNumber(value)); }
  [[nodiscard]] const OmNumber* Find(const Subscripts& at) {
    const auto found = cells.find(Key::Of(at));
    return found != cells.end() ? found->second.get() : nullptr;
  }
  void Erase(const Subscripts& at) { cells.erase(Key::Of(at)); }
  template <typename Visit>
  void Walk(Visit visit) const {
    for (const auto& [key, cell] : cells) {
      visit(*cell);
    }
  }

 private:
  Map<typename Key::Type, OwnedNumber> cells;
};

struct MixedHash {
  template <typename Key>
  std::size_t operator()(const Key& key) const {
    std::uint64_t hash = 0;
    for (const int part : key) {
      hash = (hash ^ static_cast<std::uint64_t>(part)) * 0x9e3779b97f4a7c15ULL;
      hash ^= hash >> 32;
    }
    return hash;
  }
};

template <typename K, typename V>
using StdMap = std::map<K, V>;
template <typename K, typename V>
using UnorderedMap = std::unordered_map<K, V, MixedHash>;
template <typename K, typename V>
using FlatMap = absl::flat_hash_map<K, V>;
template <typename K, typename V>
using BTreeMap = absl::btree_map<K, V>;

template <unsigned long N>
using MapOfVectors = MapStore<VectorKey<N>, StdMap>;
template <unsigned long N>
using HashOfArrays = MapStore<ArrayKey<N>, UnorderedMap>;
template <unsigned long N>
using FlatOfArrays = MapStore<ArrayKey<N>, FlatMap>;
template <unsigned long N>
using FlatOfPacked = MapStore<PackedKey<N>, FlatMap>;
template <unsigned long N>
using BTreeOfArrays = MapStore<ArrayKey<N>, BTreeMap>;

// The table's own structure, a tree of pointer vectors that grow by doubling, without its region:
// over plain new, or over a pool of the standard library.
struct PlainNew {
  void* allocate(std::size_t bytes) { return ::operator new(bytes); }
  void deallocate(void* block, std::size_t) { ::operator delete(block); }
};

struct Pool {
  void* allocate(std::size_t bytes) { return pool.allocate(bytes); }
  void deallocate(void* block, std::size_t bytes) { pool.deallocate(block, bytes); }
  std::pmr::unsynchronized_pool_resource pool;
};

// The least that such a region could do: blocks one behind the other, each after a word that would
// tell whose it is, in a first chunk and then in pages that nobody has touched. Nothing is used
// again. What the tree costs over it is about what its structure costs in itself.
struct Arena {
  static constexpr std::size_t kPages = 1UL << 32;
  static constexpr bool kGoesAsAWhole = true;

  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena() {
    if (pages != nullptr) {
      munmap(pages, kPages);
    }
  }
  void* allocate(std::size_t bytes) {
    const std::size_t stride = (bytes + sizeof(unsigned long) + 15) / 16 * 16;
    if (static_cast<std::size_t>(end - next) < stride) {
      pages = mmap(nullptr, kPages, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
      if (pages == MAP_FAILED) {
        throw std::bad_alloc();
      }
      next = static_cast<char*>(pages) + sizeof(unsigned long);
      end = static_cast<char*>(pages) + kPages;
    }
    auto* const tag = reinterpret_cast<unsigned long*>(next);
    *tag = bytes;
    next += stride;
    return tag + 1;
  }
  void deallocate(void*, std::size_t) {}

  alignas(16) char first[4096];
  char* next = first + sizeof(unsigned long);
  char* end = first + sizeof(first);
  void* pages = nullptr;
};

template <typename Memory>
class TreeStore {
 public:
  explicit TreeStore(unsigned long dimensions) : depth(dimensions), root(NewVector()) {}
  TreeStore(const TreeStore&) = delete;
  TreeStore& operator=(const TreeStore&) = delete;
  ~TreeStore() {
    if constexpr (!requires { Memory::kGoesAsAWhole; }) {
      Free(root, depth);
    }
  }

  void Set(const Subscripts& at, double value) {
    Vector* v = root;
    for (unsigned long k = depth - 1; k != 0; --k) {
      void*& slot = Slot(*v, static_cast<unsigned long>(at[k]));
      if (slot == nullptr) {
        slot = NewVector();
      }
      v = static_cast<Vector*>(slot);
    }
    void*& slot = Slot(*v, static_cast<unsigned long>(at[0]));
    FreeCell(slot);
    slot = ::new (memory.allocate(sizeof(OmNumber))) OmNumber(value);
  }
  [[nodiscard]] const OmNumber* Find(const Subscripts& at) {
    void* element = root;
    for (unsigned long k = depth; k-- != 0 && element != nullptr;) {
      const auto s = static_cast<unsigned long>(at[k]);
      const Vector& v = *static_cast<const Vector*>(element);
      element = s < v.size ? v.slots[s] : nullptr;
    }
    return static_cast<const OmNumber*>(element);
  }
  template <typename Visit>
  void Walk(Visit visit) const {
    WalkBelow(*root, depth, visit);
  }

 private:
  struct Vector {
    void** slots = nullptr;
    unsigned long size = 0;
    unsigned long room = 0;
  };

  Vector* NewVector() { return new (memory.allocate(sizeof(Vector))) Vector; }

  void*& Slot(Vector& v, unsigned long s) {
    if (s >= v.room) {
      unsigned long room = s + 1;
      if (2 * v.room >= s) {
        for (room = 4; room <= s;) {
          room *= 2;
        }
      }
      auto** const slots = static_cast<void**>(memory.allocate(room * sizeof(void*)));
      std::copy(v.slots, v.slots + v.size, slots);
      FreeSlots(v);
      v.slots = slots;
      v.room = room;
    }
    while (v.size <= s) {
      v.slots[v.size++] = nullptr;
    }
    return v.slots[s];
  }

  void FreeSlots(Vector& v) {
    if (v.slots != nullptr) {
      memory.deallocate(v.slots, v.room * sizeof(void*));
    }
  }

  void FreeCell(void* cell) {
    if (cell != nullptr) {
      static_cast<OmNumber*>(cell)->~OmNumber();
      memory.deallocate(cell, sizeof(OmNumber));
    }
  }

  void Free(Vector* v, unsigned long levels) {
    for (unsigned long s = 0; s != v->size; ++s) {
      if (levels == 1) {
        FreeCell(v->slots[s]);
      } else if (v->slots[s] != nullptr) {
        Free(static_cast<Vector*>(v->slots[s]), levels - 1);
      }
    }
    FreeSlots(*v);
    memory.deallocate(v, sizeof(Vector));
  }

  template <typename Visit>
  static void WalkBelow(const Vector& v, unsigned long levels, Visit visit) {
    for (unsigned long s = 0; s != v.size; ++s) {
      if (v.slots[s] == nullptr) {
        continue;
      }
      if (levels == 1) {
        visit(*static_cast<const OmNumber*>(v.slots[s]));
      } else {
        WalkBelow(*static_cast<const Vector*>(v.slots[s]), levels - 1, visit);
      }
    }
  }

  Memory memory;
  unsigned long depth;
  Vector* root;
};

#endif
