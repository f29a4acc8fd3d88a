// The whole road of a large table: built, laid out, read through its headings and destroyed; and
// the same work on what an engineer would take off the shelf, a map from subscripts to cells.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <array>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "backend/tables/om/PivotTable.h"
#include "platform/cells/Number.h"
#include "platform/cells/StringCell.h"

namespace {

// 1,000,000 cells: 2,000 rows of two nested dimensions by 100 columns on 5 layers.
constexpr std::array<int, 4> kSizes{100, 100, 20, 5};

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

// Calls `set` for every combination of subscripts, the first one fastest.
template <typename Set>
void ForEachCell(Set set) {
  std::vector<int> at(kSizes.size());
  for (at[3] = 0; at[3] < kSizes[3]; ++at[3]) {
    for (at[2] = 0; at[2] < kSizes[2]; ++at[2]) {
      for (at[1] = 0; at[1] < kSizes[1]; ++at[1]) {
        for (at[0] = 0; at[0] < kSizes[0]; ++at[0]) {
          set(at);
        }
      }
    }
  }
}

void WholeTable(benchmark::State& state) {
  double sum = 0;
  for (auto _ : state) {
    OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
    for (unsigned int d = 0; d < kSizes.size(); ++d) {
      OmDimension* const dimension = table.AddDimension(OmStringCell("d" + std::to_string(d)));
      for (int i = 0; i < kSizes[d]; ++i) {
        dimension->AddNewChild(dimension->Root(), OmStringCell(std::to_string(i)),
                               static_cast<unsigned long>(i), false);
      }
    }
    table.Rows().push_back(0);
    table.Rows().push_back(2);
    table.Columns().push_back(1);
    table.Layers().push_back(3);
    table.EndTable();
    ForEachCell([&](const std::vector<int>& at) { table.Cell(at, OmNumber(at[0])); });

    OmDisplayLayerHeading layers(table, true);
    std::vector<int> at(kSizes.size());
    while (layers.NextLayer()) {
      const OmDisplayRowHeading rows(layers, true, true);
      const OmDisplayColumnHeading columns(layers, true);
      layers.Fill(at);
      for (unsigned int c = 0; c < columns.NColumns(); ++c) {
        benchmark::DoNotOptimize(columns.Column(static_cast<int>(c)));
      }
      for (unsigned int r = 0; r < rows.NRows(); ++r) {
        benchmark::DoNotOptimize(rows.Row(static_cast<int>(r)));
        rows.Fill(at, static_cast<int>(r));
        for (unsigned int c = 0; c < columns.NColumns(); ++c) {
          columns.Fill(at, static_cast<int>(c));
          sum += static_cast<const OmNumber*>(table.Cell(at))->Value();
        }
      }
    }
  }
  benchmark::DoNotOptimize(sum);
  state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK(WholeTable)->Unit(benchmark::kMillisecond)->UseRealTime();

void MapOfVectors(benchmark::State& state) {
  double sum = 0;
  for (auto _ : state) {
    std::map<std::vector<int>, std::unique_ptr<OmNumber>> cells;
    ForEachCell([&](const std::vector<int>& at) { cells[at] = std::make_unique<OmNumber>(at[0]); });
    ForEachCell([&](const std::vector<int>& at) { sum += cells.find(at)->second->Value(); });
  }
  benchmark::DoNotOptimize(sum);
  state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK(MapOfVectors)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
