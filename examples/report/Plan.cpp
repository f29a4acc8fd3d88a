#include "examples/report/Plan.h"

#include <algorithm>
#include <set>

#include "examples/report/CsvReader.h"

namespace report {

namespace {

constexpr std::size_t kMaxDefaultTexts = 30;    // different texts of a variable on an axis
constexpr std::size_t kMaxDefaultNumbers = 12;  // different whole numbers of such a variable

std::vector<const Variable*> FindAll(const DataSet& data, const std::vector<std::string>& names) {
  std::vector<const Variable*> found;
  found.reserve(names.size());
  for (const std::string& name : names) {
    found.push_back(&data.Find(name));
  }
  return found;
}

bool LooksLikeMeasure(const Variable& variable) {
  return variable.IsNumeric() &&
         (variable.Kind() != Variable::Storage::kCategories || variable.HasFractions() ||
          variable.Categories().size() > kMaxDefaultNumbers);
}

bool LooksCategorical(const Variable& variable) {
  return variable.Kind() == Variable::Storage::kCategories && !LooksLikeMeasure(variable) &&
         !variable.Categories().empty() && variable.Categories().size() <= kMaxDefaultTexts;
}

// Lays up to four variables on the axes: the last one on the columns, the one before it on the
// layers, where there are three or more, and the rest on the rows.
void ChooseAxes(const std::vector<const Variable*>& candidates, Plan& plan) {
  std::vector<const Variable*> chosen(
      candidates.begin(),
      candidates.begin() + static_cast<long>(std::min<std::size_t>(candidates.size(), 4)));
  if (chosen.size() > 1) {
    plan.columns.push_back(chosen.back());
    chosen.pop_back();
  }
  if (chosen.size() > 1) {
    plan.layers.push_back(chosen.back());
    chosen.pop_back();
  }
  plan.rows = chosen;
}

}  // namespace

std::vector<const Variable*> Plan::AxisVariables() const {
  std::vector<const Variable*> all(rows);
  all.insert(all.end(), columns.begin(), columns.end());
  all.insert(all.end(), layers.begin(), layers.end());
  return all;
}

Plan MakePlan(const DataSet& data, const Options& options) {
  Plan plan;
  plan.rows = FindAll(data, options.rows);
  plan.columns = FindAll(data, options.columns);
  plan.layers = FindAll(data, options.layers);
  plan.measures = FindAll(data, options.measures);
  plan.weight = options.weight.empty() ? nullptr : &data.Find(options.weight);
  plan.by = options.by.empty() ? nullptr : &data.Find(options.by);
  plan.title = options.title;
  if (plan.title.empty()) {
    plan.title = "Report on " + data.FileName();
  }

  std::set<const Variable*> used;
  for (const Variable* variable : plan.AxisVariables()) {
    if (!used.insert(variable).second) {
      throw InputError(data.path, 1,
                       "the variable '" + variable->Name() + "' is on the axes twice");
    }
  }

  std::vector<const Variable*> categorical;
  std::vector<const Variable*> measures;
  for (const Variable& variable : data.variables) {
    if (&variable == plan.weight || used.count(&variable) != 0) {
      continue;
    }
    if (LooksCategorical(variable)) {
      categorical.push_back(&variable);
    } else if (LooksLikeMeasure(variable)) {
      measures.push_back(&variable);
    }
  }
  if (used.empty()) {
    ChooseAxes(categorical, plan);
  }
  if (plan.measures.empty()) {
    plan.measures = measures;
  }
  if (plan.by == nullptr && !plan.measures.empty()) {
    const std::vector<const Variable*> axes = plan.AxisVariables();
    plan.by = axes.empty() ? nullptr : axes.front();
  }
  return plan;
}

}  // namespace report
