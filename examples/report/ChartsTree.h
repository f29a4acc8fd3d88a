// The first split of a classification tree: the factor that tells most about an outcome.

#ifndef EXAMPLES_REPORT_CHARTSTREE_H
#define EXAMPLES_REPORT_CHARTSTREE_H

#include <string>
#include <vector>

#include "examples/report/DataSet.h"
#include "examples/report/Statistics.h"

namespace report {

struct Split {
  const Variable* factor = nullptr;
  double chiSquare = 0;
  double cramersV = 0;  // from 0, nothing, to 1, everything
};

// Finds the factor with the largest V; the first of equals. Throws ProcedureError where none tells
// anything.
[[nodiscard]] Split BestSplit(const DataSet& data, const Variable& outcome,
                              const std::vector<const Variable*>& factors, const Weights& weights);

// Returns the tree in XML: the cases as a whole, and a node for each category of the factor.
[[nodiscard]] std::string SplitXml(const Split& split, const DataSet& data, const Variable& outcome,
                                   const Weights& weights);

}  // namespace report

#endif
