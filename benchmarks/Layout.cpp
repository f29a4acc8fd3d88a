// The display headings: the labels of every row, a whole column of labels, the search for rows that
// hold a cell, and a table that is read through its headings.

#include <malloc.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Stores.h"

namespace {

using ConstNode = OmDisplayLayerHeading::ConstNode;

const OmStringCell kText("text");

// Adds a dimension of `size` categories, `group` of them to a group, or without groups where that
// is 0.
void AddDimension(OmPivotTable& table, int size, int group) {
  OmDimension* const dimension = table.AddDimension(kText);
  for (int i = 0; i != size; ++i) {
    if (group != 0 && i % group == 0) {
      dimension->AddNewChild(dimension->Root(), kText, 0, true);
    }
    OmVectorTree<OmDimensionNode>::Node parent = dimension->Root();
    if (group != 0) {
      parent = parent[parent.Count() - 1];
    }
    dimension->AddNewChild(parent, kText, static_cast<unsigned long>(i), false);
  }
}

// Makes something large: once on memory that the process has not touched yet, then time and again
// on the memory that this left behind, which the system's allocator would give back otherwise. A
// single time after the first would tell how much of that memory happens to be in the cache.
template <typename Make>
void FirstAndNext(benchmark::State& state, const std::string& name, unsigned long n, Make make) {
  malloc_trim(0);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  Phase(state, (name + "_first").c_str(), n, [&] { benchmark::DoNotOptimize(make()); });
  constexpr unsigned long kTimes = 16;
  Phase(state, name.c_str(), n * kTimes, [&] {
    for (unsigned long i = 0; i != kTimes; ++i) {
      benchmark::DoNotOptimize(make());
    }
  });
}

// The least that a function does that returns a row: a deque, made at once from labels that are
// ready.
[[gnu::noinline]] std::deque<ConstNode*> Returned(ConstNode* const* labels, unsigned int n) {
  return std::deque<ConstNode*>(labels, labels + n);
}

// Rows of two dimensions with groups: every row, a deque filled with as many pointers as a row has
// labels, and one returned; one column of labels on fresh memory and on memory that was in use
// before, as that of the rows is, and a deque filled with as many pointers as the column has labels
// on either.
void Labels(benchmark::State& state) {
  OmPivotTable table(kText, kText, false);
  AddDimension(table, static_cast<int>(state.range(0)), 10);
  AddDimension(table, 1000, 10);
  table.Rows().push_back(0);
  table.Rows().push_back(1);
  table.EndTable();
  OmDisplayLayerHeading layers(table, false);
  layers.NextLayer();
  const OmDisplayRowHeading rows(layers, false, false);
  const unsigned int n = rows.NRows();
  const unsigned int width = rows.NColumns();
  for (auto _ : state) {
    Phase(state, "row", n, [&] {
      for (unsigned int r = 0; r != n; ++r) {
        benchmark::DoNotOptimize(rows.Row(static_cast<int>(r)));
      }
    });
    ConstNode* label = nullptr;
    benchmark::DoNotOptimize(label);
    Phase(state, "deque", n, [&] {
      for (unsigned int r = 0; r != n; ++r) {
        std::deque<ConstNode*> row;
        for (unsigned int c = 0; c != width; ++c) {
          row.push_back(label);
        }
        benchmark::DoNotOptimize(row);
      }
    });
    const std::vector<ConstNode*> labels(width, label);
    Phase(state, "returned", n, [&] {
      for (unsigned int r = 0; r != n; ++r) {
        benchmark::DoNotOptimize(Returned(labels.data(), width));
      }
    });
    const auto column = [&] { return rows.Column(static_cast<int>(width) - 1); };
    const auto filled = [&] { return std::deque<ConstNode*>(n, label); };
    FirstAndNext(state, "column", n, column);
    FirstAndNext(state, "filled", n, filled);
  }
}

// One percent of the cells, in every other row.
void NonEmpty(benchmark::State& state, int rowDimension) {
  const auto size = static_cast<int>(state.range(0));
  OmPivotTable table(kText, kText, false);
  AddDimension(table, size, 0);
  AddDimension(table, size, 0);
  std::mt19937 random(4);
  Subscripts at(2);
  const auto rowAt = static_cast<unsigned long>(rowDimension);
  for (long i = 0, n = static_cast<long>(size) * size / 100; i < n;) {
    at[rowAt] = static_cast<int>(random() % static_cast<unsigned int>(size / 2)) * 2;
    at[1 - rowAt] = static_cast<int>(random() % static_cast<unsigned int>(size));
    if (table.Cell(at) == nullptr) {
      table.Cell(at, OmNumber(1));
      ++i;
    }
  }
  table.Rows().push_back(static_cast<short>(rowDimension));
  table.Columns().push_back(static_cast<short>(1 - rowDimension));
  table.EndTable();
  OmDisplayLayerHeading layers(table, false);
  layers.NextLayer();
  for (auto _ : state) {
    unsigned long found = 0;
    Phase(state, "search", 1, [&] {
      const OmDisplayRowHeading rows(layers, true, false);
      found = rows.NRows();
    });
    unsigned long probed = 0;
    Phase(state, "probe", 1, [&] {
      for (at[rowAt] = 0; at[rowAt] != size; ++at[rowAt]) {
        at[1 - rowAt] = 0;
        while (at[1 - rowAt] != size && table.Cell(at) == nullptr) {
          ++at[1 - rowAt];
        }
        probed += at[1 - rowAt] != size ? 1 : 0;
      }
    });
    if (found != probed) {
      state.SkipWithError("the search and the probes disagree");
    }
  }
}

void NonEmptyOuter(benchmark::State& state) {
  NonEmpty(state, 1);
}
void NonEmptyInner(benchmark::State& state) {
  NonEmpty(state, 0);
}

// The headings of a full square table and every cell through them, and the same cells in the same
// order with subscripts that are ready made.
void Through(benchmark::State& state) {
  const auto size = static_cast<int>(state.range(0));
  OmPivotTable table(kText, kText, false);
  AddDimension(table, size, 0);
  AddDimension(table, size, 0);
  const Addresses cells = Addresses::All({size, size});
  cells.ForEach([&](const Subscripts& at) { table.Cell(at, OmNumber(at[0])); });
  table.Columns().push_back(0);
  table.Rows().push_back(1);
  table.EndTable();
  double sum = 0;
  const auto read = [&](const Subscripts& at) {
    sum += static_cast<const OmNumber*>(table.Cell(at))->Value();
  };
  for (auto _ : state) {
    Phase(state, "ready", cells.Size(), [&] { cells.ForEach(read); });
    Phase(state, "through", cells.Size(), [&] {
      OmDisplayLayerHeading layers(table, true);
      layers.NextLayer();
      const OmDisplayRowHeading rows(layers, true, true);
      const OmDisplayColumnHeading columns(layers, true);
      Subscripts at(2);
      layers.Fill(at);
      for (unsigned int r = 0; r != rows.NRows(); ++r) {
        rows.Fill(at, static_cast<int>(r));
        for (unsigned int c = 0; c != columns.NColumns(); ++c) {
          columns.Fill(at, static_cast<int>(c));
          read(at);
        }
      }
    });
  }
  benchmark::DoNotOptimize(sum);
}

BENCHMARK(Labels)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Iterations(1);
BENCHMARK(NonEmptyOuter)->Arg(100)->Arg(316)->Arg(1000)->Arg(3162)->Arg(10000)->Iterations(1);
BENCHMARK(NonEmptyInner)->Arg(100)->Arg(316)->Arg(1000)->Arg(3162)->Arg(10000)->Iterations(1);
BENCHMARK(Through)->Arg(10)->Arg(100)->Arg(316)->Arg(1000)->Arg(3162)->Iterations(1);

}  // namespace
