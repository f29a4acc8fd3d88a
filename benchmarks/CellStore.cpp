// The cell store against the maps that could stand in its place, and against its own structure over
// other allocators: setting, reading, walking, deleting, destroying, and the memory that it takes.

#include <memory>

#include "benchmarks/Measure.h"
#include "benchmarks/Stores.h"

namespace {

const Subscripts kTable{100, 100, 20, 5};

// The sizes of the scaling pages, by the number of cells.
Subscripts SizesFor(long cells) {
  Subscripts sizes = kTable;
  for (long n = 1000000; n < cells; n *= 10) {
    sizes[n == 1000000 ? 2 : 1] *= 10;
  }
  for (long n = 1000000; n > cells; n /= 10) {
    sizes[n == 1000000 ? 2 : 1] /= 10;
  }
  return sizes;
}

template <typename Store>
void SetAll(Store& store, const Addresses& cells) {
  cells.ForEach([&](const Subscripts& at) { store.Set(at, at[0]); });
}

template <typename Store>
double ReadAll(Store& store, const Addresses& cells) {
  double sum = 0;
  cells.ForEach([&](const Subscripts& at) {
    const OmNumber* const cell = store.Find(at);
    sum += cell != nullptr ? cell->Value() : 0;
  });
  return sum;
}

template <typename Store>
double WalkAll(const Store& store) {
  double sum = 0;
  store.Walk([&](const OmNumber& cell) { sum += cell.Value(); });
  return sum;
}

template <typename Store>
void InOrder(benchmark::State& state) {
  Addresses cells = Addresses::All(SizesFor(state.range(0)));
  for (auto _ : state) {
    const double before = ResidentBytes();
    auto store = std::make_unique<Store>(kTable.size());
    Phase(state, "set", cells.Size(), [&] { SetAll(*store, cells); });
    state.counters["bytes"] = (ResidentBytes() - before) / static_cast<double>(cells.Size());
    Phase(state, "walk", cells.Size(), [&] { benchmark::DoNotOptimize(WalkAll(*store)); });
    cells.Shuffle();
    Phase(state, "read", cells.Size(), [&] { benchmark::DoNotOptimize(ReadAll(*store, cells)); });
    Phase(state, "destroy", cells.Size(), [&] { store.reset(); });
  }
}

template <typename Store>
void AtRandom(benchmark::State& state) {
  Addresses mixed = Addresses::All(SizesFor(state.range(0)));
  mixed.Shuffle();
  for (auto _ : state) {
    Store store(kTable.size());
    Phase(state, "set", mixed.Size(), [&] { SetAll(store, mixed); });
  }
}

template <typename Store>
void Delete(benchmark::State& state) {
  const Addresses cells = Addresses::All(SizesFor(state.range(0)));
  const Addresses mixed = cells.Shuffled();
  for (auto _ : state) {
    Store store(kTable.size());
    const auto erase = [&](const Subscripts& at) { store.Erase(at); };
    SetAll(store, cells);
    Phase(state, "ordered", cells.Size(), [&] { cells.ForEach(erase); });
    SetAll(store, cells);
    Phase(state, "random", cells.Size(), [&] { mixed.ForEach(erase); });
  }
}

template <typename Store>
void Cached(benchmark::State& state) {
  const Addresses cells = Addresses::All({100, 20, 5, 2});
  const Addresses mixed = cells.Shuffled();
  Store store(kTable.size());
  SetAll(store, cells);
  constexpr unsigned long kRepeats = 25;
  benchmark::DoNotOptimize(ReadAll(store, mixed));
  for (auto _ : state) {
    Phase(state, "read", kRepeats * mixed.Size(), [&] {
      for (unsigned long i = 0; i != kRepeats; ++i) {
        benchmark::DoNotOptimize(ReadAll(store, mixed));
      }
    });
  }
}

template <typename Store>
void Sparse(benchmark::State& state, const Subscripts& sizes, unsigned long count) {
  const Addresses cells = Addresses::Random(sizes, count);
  for (auto _ : state) {
    const double before = ResidentBytes();
    auto store = std::make_unique<Store>(sizes.size());
    Phase(state, "build", cells.Size(), [&] { SetAll(*store, cells); });
    state.counters["bytes"] = (ResidentBytes() - before) / static_cast<double>(cells.Size());
    Phase(state, "walk", cells.Size(), [&] { benchmark::DoNotOptimize(WalkAll(*store)); });
    Phase(state, "destroy", cells.Size(), [&] { store.reset(); });
  }
}

template <typename Store>
void Wide(benchmark::State& state) {
  Sparse<Store>(state, {10000, 10000}, static_cast<unsigned long>(state.range(0)));
}

template <typename Store>
void Deep(benchmark::State& state) {
  Sparse<Store>(state, {1000, 1000, 20, 5}, static_cast<unsigned long>(state.range(0)));
}

// A store of kTable in every benchmark, and the trees where the structure is what is compared.
template <typename Store>
void Register(const std::string& side) {
  const auto once = [](benchmark::internal::Benchmark* b) { b->Iterations(1); };
  const std::string name = "/" + side;
  for (const long cells : {10000L, 100000L, 1000000L, 10000000L}) {
    benchmark::RegisterBenchmark(("InOrder" + name).c_str(), InOrder<Store>)
        ->Arg(cells)
        ->Apply(once);
    benchmark::RegisterBenchmark(("AtRandom" + name).c_str(), AtRandom<Store>)
        ->Arg(cells)
        ->Apply(once);
  }
  if constexpr (requires(Store store, Subscripts at) { store.Erase(at); }) {
    for (const long cells : {10000L, 100000L, 1000000L, 10000000L}) {
      benchmark::RegisterBenchmark(("Delete" + name).c_str(), Delete<Store>)
          ->Arg(cells)
          ->Apply(once);
    }
  }
  benchmark::RegisterBenchmark(("Cached" + name).c_str(), Cached<Store>)->Apply(once);
}

template <typename Store>
void RegisterTree(const std::string& side) {
  for (const long scale : {1L, 10L, 100L, 1000L}) {
    benchmark::RegisterBenchmark(("Wide/" + side).c_str(), Wide<Store>)
        ->Arg(100 * scale)
        ->Iterations(1);
    benchmark::RegisterBenchmark(("Deep/" + side).c_str(), Deep<Store>)
        ->Arg(1000 * scale)
        ->Iterations(1);
  }
}

[[maybe_unused]] const bool kRegistered = [] {
  Register<TableStore>("ours");
  Register<MapOfVectors<4>>("map_of_vectors");
  Register<HashOfArrays<4>>("hash_of_arrays");
  Register<FlatOfArrays<4>>("flat_of_arrays");
  Register<FlatOfPacked<4>>("flat_of_packed");
  Register<BTreeOfArrays<4>>("btree_of_arrays");
  Register<TreeStore<PlainNew>>("tree_of_new");
  Register<TreeStore<Pool>>("tree_of_pool");
  Register<TreeStore<Arena>>("tree_of_arena");
  RegisterTree<TableStore>("ours");
  RegisterTree<TreeStore<PlainNew>>("tree_of_new");
  RegisterTree<TreeStore<Pool>>("tree_of_pool");
  RegisterTree<TreeStore<Arena>>("tree_of_arena");
  return true;
}();

}  // namespace
