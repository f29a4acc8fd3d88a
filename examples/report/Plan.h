// Which variable goes where.

#ifndef EXAMPLES_REPORT_PLAN_H
#define EXAMPLES_REPORT_PLAN_H

#include <string>
#include <vector>

#include "examples/report/DataSet.h"
#include "examples/report/Options.h"

namespace report {

// Pointers into the data set that the plan was made for.
struct Plan {
  std::vector<const Variable*> rows;
  std::vector<const Variable*> columns;
  std::vector<const Variable*> layers;
  const Variable* weight = nullptr;
  std::vector<const Variable*> measures;
  const Variable* by = nullptr;
  std::string title;

  // Returns the variables of the rows, the columns and the layers, in this order.
  [[nodiscard]] std::vector<const Variable*> AxisVariables() const;
};

// Finds the variables that the options name. Where the options name none for an axis, or no
// measures, the plan takes variables with few different values for the axes and other numbers for
// the measures. Throws InputError on a name that the data do not have, and on a variable that is on
// the axes twice.
[[nodiscard]] Plan MakePlan(const DataSet& data, const Options& options);

}  // namespace report

#endif
