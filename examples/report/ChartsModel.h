// Statistical models of a data set, written in PMML.

#ifndef EXAMPLES_REPORT_CHARTSMODEL_H
#define EXAMPLES_REPORT_CHARTSMODEL_H

#include <string>
#include <vector>

#include "examples/report/DataSet.h"
#include "examples/report/Statistics.h"

namespace report {

// The line that predicts one number from another with the least squared error.
struct Regression {
  // Throws ProcedureError where fewer than two different values of `predictor` are there to fit.
  Regression(const DataSet& data, const Variable& outcome, const Variable& predictor,
             const Weights& weights);

  double n = 0;
  double intercept = 0;
  double slope = 0;
  double rSquared = 0;  // 1 where the outcome does not vary
};

[[nodiscard]] std::string RegressionPmml(const Regression& regression, const Variable& outcome,
                                         const Variable& predictor);

// Returns a naive Bayes model that predicts a category from categories: how often each category of
// each factor goes with each of the outcome.
[[nodiscard]] std::string NaiveBayesPmml(const DataSet& data, const Variable& outcome,
                                         const std::vector<const Variable*>& factors,
                                         const Weights& weights);

}  // namespace report

#endif
