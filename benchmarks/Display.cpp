// The view of a table: a window out of many rows and columns, all spans of a heading, and what
// making a view costs in time and memory.

#include "display/TableView.h"

#include <malloc.h>

#include <random>
#include <string>
#include <vector>

#include "backend/tables/om/DimHeader.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/PivotTable.h"
#include "benchmarks/Measure.h"
#include "platform/cells/Number.h"
#include "platform/cells/StringCell.h"

namespace {

const OmStringCell kText("text");

// Adds a dimension of `size` categories, `group` of them to a group, or without groups where that
// is 0.
void AddDimension(OmPivotTable& table, int size, int group) {
  OmDimension* const dimension = table.AddDimension(kText);
  OmVectorTree<OmDimensionNode>::Node parent = dimension->Root();
  for (int i = 0; i != size; ++i) {
    if (group != 0 && i % group == 0) {
      parent = dimension->AddNewChild(dimension->Root(), kText, 0, true);
    }
    dimension->AddNewChild(parent, OmStringCell("c" + std::to_string(i)),
                           static_cast<unsigned long>(i), false);
  }
}

// Windows of 40 x 15 at random places of 1,000 times the argument rows and 1,000 columns, two
// dimensions nested on each side, with as many cells as rows stored at random: labels with spans,
// and the values of the cells. Reading the same cells by ready subscripts is shown beside it.
//
// The dimension that varies fastest in display is the first of its side, or with `turned` the last:
// the store then has a vector of its own for hardly more than each single cell.
void Window(benchmark::State& state, bool turned) {
  const auto outer = static_cast<int>(state.range(0));
  OmPivotTable table(kText, kText, false);
  const Subscripts sizes =
      turned ? Subscripts{outer, 1000, 40, 25} : Subscripts{1000, outer, 25, 40};
  for (const int size : sizes) {
    AddDimension(table, size, 0);
  }
  for (const int d : turned ? std::vector<int>{1, 0} : std::vector<int>{0, 1}) {
    table.Rows().push_back(static_cast<short>(d));
    table.Columns().push_back(static_cast<short>(d + 2));
  }
  table.EndTable();
  const unsigned long rows = static_cast<unsigned long>(outer) * 1000;
  Addresses::Random(sizes, rows).ForEach([&](const Subscripts& at) {
    table.Cell(at, OmNumber(at[0]));
  });
  constexpr unsigned long kTimes = 2000;
  std::mt19937 random(3);
  std::vector<om::PlaceRange> places;
  for (unsigned long i = 0; i != kTimes; ++i) {
    const om::Place row = random() % (rows - 40);
    const om::Place column = random() % (1000 - 15);
    places.push_back({row, row + 40});
    places.push_back({column, column + 15});
  }
  double sum = 0;
  for (auto _ : state) {
    const om::TableView view(table);
    Phase(state, "window", kTimes, [&] {
      for (unsigned long i = 0; i != places.size(); i += 2) {
        const om::Window window = view.Read(places[i], places[i + 1]);
        for (const OmCellText* const cell : window.cells) {
          sum += cell != nullptr ? static_cast<const OmNumber*>(cell)->Value() : 0;
        }
        sum += static_cast<double>(window.rowLabels.size() + window.columnLabels.size());
      }
    });
    Phase(state, "labels", kTimes, [&] {
      for (unsigned long i = 0; i != places.size(); i += 2) {
        sum += static_cast<double>(view.RowLabels(places[i]).size() +
                                   view.ColumnLabels(places[i + 1]).size());
      }
    });
    Phase(state, "cells", kTimes, [&] {
      Subscripts at(4);
      for (unsigned long i = 0; i != places.size(); i += 2) {
        for (om::Place r = places[i].first; r != places[i].last; ++r) {
          for (om::Place c = places[i + 1].first; c != places[i + 1].last; ++c) {
            const auto slow = static_cast<unsigned long>(turned ? 0 : 1);
            at[slow] = static_cast<int>(r / 1000);
            at[1 - slow] = static_cast<int>(r % 1000);
            at[2 + slow] = static_cast<int>(c / 25);
            at[3 - slow] = static_cast<int>(c % 25);
            sum += table.Cell(at) != nullptr ? 1 : 0;
          }
        }
      }
    });
  }
  benchmark::DoNotOptimize(sum);
}

// All labels of 1,000 times the argument rows, of two dimensions with groups, with their spans, and
// the labels of every row read once.
void Spans(benchmark::State& state) {
  OmPivotTable table(kText, kText, false);
  AddDimension(table, static_cast<int>(state.range(0)), 10);
  AddDimension(table, 1000, 10);
  table.Rows().push_back(1);
  table.Rows().push_back(0);
  table.EndTable();
  OmDisplayLayerHeading layers(table, false);
  layers.NextLayer();
  const OmDisplayRowHeading rows(layers, false, true);
  const om::TableView view(table);
  const unsigned int n = rows.NRows();
  for (auto _ : state) {
    Phase(state, "row", n, [&] {
      for (unsigned int r = 0; r != n; ++r) {
        benchmark::DoNotOptimize(rows.Row(static_cast<int>(r)));
      }
    });
    om::Window window;
    Phase(state, "spans", n, [&] {
      for (om::Place first = 0; first != n; first += 1000) {
        view.Read({first, first + 1000}, {0, 0}, window);
        benchmark::DoNotOptimize(window.rowLabels.data());
      }
    });
  }
}

// A view of 1,000 times the argument categories in groups of ten, on rows of as many times 1,000
// places: what making it costs a category, beside the flat headers of the same dimensions, and the
// bytes that it keeps.
void Make(benchmark::State& state) {
  OmPivotTable table(kText, kText, false);
  const auto categories = static_cast<unsigned long>(state.range(0)) * 1000;
  AddDimension(table, static_cast<int>(categories), 10);
  AddDimension(table, 1000, 0);
  table.Rows().push_back(1);
  table.Rows().push_back(0);
  table.EndTable();
  const auto used = [] {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
  };
  for (auto _ : state) {
    Phase(state, "header", categories, [&] {
      for (int d = 0; d != 2; ++d) {
        benchmark::DoNotOptimize(OmDimHeader(table.Dimension(d), nullptr).maxVisibleLevels);
      }
    });
    Phase(state, "make", categories, [&] { benchmark::DoNotOptimize(om::TableView(table)); });
    const double before = used();
    const om::TableView view(table);
    state.counters["bytes"] = (used() - before) / static_cast<double>(categories + 1000);
  }
}

BENCHMARK_CAPTURE(Window, view, false)
    ->Arg(1)
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Iterations(1);
BENCHMARK_CAPTURE(Window, turned, true)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Iterations(1);
BENCHMARK(Spans)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Iterations(1);
BENCHMARK(Make)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Iterations(1);

}  // namespace
