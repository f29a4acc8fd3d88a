// The procedure that draws and models: a chart, an interactive view, a model and a tree diagram of
// the variables of a plan.

#ifndef EXAMPLES_REPORT_CHARTS_H
#define EXAMPLES_REPORT_CHARTS_H

#include "examples/report/DataSet.h"
#include "examples/report/Plan.h"

class OmOutputTree;

namespace report {

// Appends a heading with those items that the plan's variables allow; nothing where they allow
// none. The first column variable, or else the last variable on the axes, is the outcome, the
// others on the axes are its factors. An item that fails leaves a message in its place.
void AddCharts(const DataSet& data, const Plan& plan, OmOutputTree& document);

}  // namespace report

#endif
