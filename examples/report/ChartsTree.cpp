#include "examples/report/ChartsTree.h"

#include <algorithm>
#include <cmath>

#include "examples/report/HtmlText.h"
#include "examples/report/ProcedureError.h"

namespace report {

namespace {

int Total(const Variable& variable) {
  return static_cast<int>(variable.Categories().size());
}

// Returns how far the counts are from independence, and how far they could be.
Split Measure(const CrossCounts& counts, const Variable& factor, const Variable& outcome) {
  Split split{&factor, 0, 0};
  const double n = counts.Valid();
  int rows = 0;
  for (int i = 0; i < Total(factor); ++i) {
    const double row = counts[{i, Total(outcome)}];
    rows += row > 0 ? 1 : 0;
    for (int k = 0; row > 0 && k < Total(outcome); ++k) {
      const double expected = row * counts[{Total(factor), k}] / n;
      if (expected > 0) {
        split.chiSquare += std::pow(counts[{i, k}] - expected, 2) / expected;
      }
    }
  }
  int columns = 0;
  for (int k = 0; k < Total(outcome); ++k) {
    columns += counts[{Total(factor), k}] > 0 ? 1 : 0;
  }
  const int freedom = std::min(rows, columns) - 1;
  if (freedom > 0) {
    split.cramersV = std::sqrt(split.chiSquare / (n * freedom));
  }
  return split;
}

// Writes a node with the counts of the outcome among the cases of one category, or of all.
std::string NodeStart(const CrossCounts& counts, const Variable& outcome, int category,
                      const std::string& attributes) {
  std::string xml =
      "<node" + attributes + " n=\"" + Number(counts[{category, Total(outcome)}]) + "\">";
  for (int k = 0; k < Total(outcome); ++k) {
    xml += "<count value=\"" + Escape(outcome.Categories()[static_cast<std::size_t>(k)]) +
           "\" n=\"" + Number(counts[{category, k}]) + "\"/>";
  }
  return xml;
}

}  // namespace

Split BestSplit(const DataSet& data, const Variable& outcome,
                const std::vector<const Variable*>& factors, const Weights& weights) {
  Split best;
  for (const Variable* factor : factors) {
    const Split split = Measure(CrossCounts(data, {factor, &outcome}, weights), *factor, outcome);
    if (split.cramersV > best.cramersV) {
      best = split;
    }
  }
  if (best.factor == nullptr) {
    throw ProcedureError("No factor tells anything about " + outcome.Name() + ".");
  }
  return best;
}

std::string SplitXml(const Split& split, const DataSet& data, const Variable& outcome,
                     const Weights& weights) {
  const Variable& factor = *split.factor;
  const CrossCounts counts(data, {&factor, &outcome}, weights);
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tree outcome=\"" +
                    Escape(outcome.Name()) + "\" split=\"" + Escape(factor.Name()) +
                    "\" chiSquare=\"" + Number(split.chiSquare) + "\" cramersV=\"" +
                    Number(split.cramersV) + "\">\n  " +
                    NodeStart(counts, outcome, Total(factor), "") + "\n";
  for (int category = 0; category < Total(factor); ++category) {
    const std::string& label = factor.Categories()[static_cast<std::size_t>(category)];
    xml += "    " + NodeStart(counts, outcome, category, " value=\"" + Escape(label) + "\"") +
           "</node>\n";
  }
  return xml + "  </node>\n</tree>\n";
}

}  // namespace report
