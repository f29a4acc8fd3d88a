// Document outlines: what the linear scans cost an entry, and how they add up.

#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "benchmarks/Measure.h"
#include "platform/cells/StringCell.h"

namespace {

// Builds an outline of headings with `kItems` texts each, then looks for the end of the document
// from the root, and walks the children of every heading.
void Outline(benchmark::State& state) {
  constexpr long kItems = 10;
  const OmStringCell title("An item");
  const long n = state.range(0);
  for (auto _ : state) {
    OmOutputTree tree;
    OmOutputTree::Node root(tree, tree.List().begin());
    Phase(state, "build", static_cast<unsigned long>(n), [&] {
      for (long i = 0; i < n; i += kItems) {
        OmOutputTree::Node heading = root.Child(new OmHeading(title));
        for (long k = 1; k < kItems; ++k) {
          heading.Child(new OmTextBlock(title, "text"));
        }
      }
    });
    constexpr int kScans = 20;
    Phase(state, "scan", static_cast<unsigned long>(n * kScans), [&] {
      for (int i = 0; i != kScans; ++i) {
        benchmark::DoNotOptimize(root.End());
      }
    });
    Phase(state, "walk", static_cast<unsigned long>(n), [&] {
      for (auto heading = root.Begin(), last = root.End(); heading != last; ++heading) {
        for (auto item = heading.Begin(), end = heading.End(); item != end; ++item) {
          benchmark::DoNotOptimize(*item);
        }
      }
    });
  }
}

BENCHMARK(Outline)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1);

}  // namespace
