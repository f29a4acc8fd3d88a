// Thousands of small tables, as a procedure makes them: the bare store of each, and whole tables
// with dimensions, titles and axes.

#include <memory>

#include "backend/tables/om/CellStoreData.h"
#include "backend/tables/om/Dimension.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Stores.h"

namespace {

const Subscripts kSizes{4, 5, 2};

template <typename Store>
class Bare : public Store {
 public:
  Bare() : Store(kSizes.size()) {}
};

// A region with a store in it, as a table holds them, and nothing else of a table. What numbers and
// vectors are is all in the region, and goes with it.
class BareStore {
 public:
  BareStore() : region(false) {}
  BareStore(const BareStore&) = delete;
  BareStore& operator=(const BareStore&) = delete;
  // Makes the cell in its place, as the peers do. What copying costs is in the whole table.
  void Set(const Subscripts& at, double value) {
    OmCellStore::Reach(root, at, region)
        .Put(static_cast<unsigned long>(at[0]),
             new (&region) OmNumber(value, kDefaultFormat, &region));
  }

 private:
  OmMemoryRegion region;
  OmPointerVector* root = nullptr;
};

// With categories, as a procedure fills it, or without, so that what the table itself holds shows.
template <bool kCategories>
class WholeTable {
 public:
  WholeTable() : table(OmStringCell("Frequencies"), OmStringCell("Frequencies"), false) {
    for (unsigned long d = 0; d != kSizes.size(); ++d) {
      OmDimension* const dimension = table.AddDimension(OmStringCell("Dimension"));
      for (int i = 0; kCategories && i != kSizes[d]; ++i) {
        dimension->AddNewChild(dimension->Root(), OmStringCell("Category"),
                               static_cast<unsigned long>(i), false);
      }
    }
    const OmStringCell text("A title");
    table.SetTableTitle(text);
    table.Caption(&text);
    table.CornerText(&text);
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Layers().push_back(2);
    table.EndTable();
  }
  void Set(const Subscripts& at, double value) { table.Cell(at, OmNumber(value)); }

 private:
  OmPivotTable table;
};

template <typename Table>
void Small(benchmark::State& state) {
  const auto tables = static_cast<unsigned long>(state.range(0));
  std::vector<std::unique_ptr<Table>> all(tables);
  Subscripts at(kSizes.size());
  const auto build = [&] {
    auto table = std::make_unique<Table>();
    for (at[2] = 0; at[2] != kSizes[2]; ++at[2]) {
      for (at[1] = 0; at[1] != kSizes[1]; ++at[1]) {
        for (at[0] = 0; at[0] != kSizes[0]; ++at[0]) {
          table->Set(at, at[0]);
        }
      }
    }
    return table;
  };
  for (auto _ : state) {
    const double before = ResidentBytes();
    double built = 0;
    Phase(state, "alive", tables, [&] {
      std::generate(all.begin(), all.end(), build);
      built = ResidentBytes();
      for (auto& table : all) {
        table.reset();
      }
    });
    state.counters["bytes"] = (built - before) / static_cast<double>(tables);
    Phase(state, "life", tables, [&] {
      for (unsigned long i = 0; i != tables; ++i) {
        benchmark::DoNotOptimize(build());
      }
    });
  }
}

template <typename Table>
void Register(const std::string& side) {
  for (const long tables : {100L, 1000L, 10000L, 100000L}) {
    benchmark::RegisterBenchmark(("Small/" + side).c_str(), Small<Table>)
        ->Arg(tables)
        ->Iterations(1);
  }
}

[[maybe_unused]] const bool kRegistered = [] {
  Register<BareStore>("ours");
  Register<WholeTable<true>>("whole_table");
  Register<WholeTable<false>>("table_without_categories");
  Register<Bare<MapOfVectors<3>>>("map_of_vectors");
  Register<Bare<HashOfArrays<3>>>("hash_of_arrays");
  Register<Bare<FlatOfArrays<3>>>("flat_of_arrays");
  Register<Bare<FlatOfPacked<3>>>("flat_of_packed");
  Register<Bare<BTreeOfArrays<3>>>("btree_of_arrays");
  Register<Bare<TreeStore<PlainNew>>>("tree_of_new");
  Register<Bare<TreeStore<Pool>>>("tree_of_pool");
  Register<Bare<TreeStore<Arena>>>("tree_of_arena");
  return true;
}();

}  // namespace
