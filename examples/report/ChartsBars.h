// A bar chart: what it shows, the drawing, and the description that a front end can draw anew.

#ifndef EXAMPLES_REPORT_CHARTSBARS_H
#define EXAMPLES_REPORT_CHARTSBARS_H

#include <string>
#include <vector>

#include "examples/report/DataSet.h"
#include "examples/report/Statistics.h"

namespace report {

// One bar for each series in each category; values[category][series].
struct Bars {
  std::string title;
  std::string categoryName;
  std::string seriesName;  // empty where there is one series without a name
  std::vector<std::string> categories;
  std::vector<std::string> series;
  std::vector<std::vector<double>> values;
};

// Counts the cases by the categories of `variable`, in a series for each category of `by`, which
// may be null. What is too much to draw comes together as "Others". Throws ProcedureError where no
// case has a value.
[[nodiscard]] Bars CountBars(const DataSet& data, const Variable& variable, const Variable* by,
                             const Weights& weights);

// Returns a drawing in SVG, in light or dark colours as its reader prefers.
[[nodiscard]] std::string DrawBars(const Bars& bars);
// Returns a description in JSON.
[[nodiscard]] std::string DescribeBars(const Bars& bars);

}  // namespace report

#endif
