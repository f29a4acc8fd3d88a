#include "examples/report/Procedures.h"

#include <functional>
#include <memory>
#include <string>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "examples/report/DocumentParts.h"
#include "examples/report/ProcedureError.h"
#include "examples/report/Statistics.h"
#include "examples/report/TableBuilder.h"
#include "platform/cells/CellTexts.h"

namespace report {

namespace {

using Axis = TableBuilder::Axis;
using Variables = std::vector<const Variable*>;

constexpr int kPercentDecimals = 1;

double Percent(double part, double whole) {
  return 100 * part / whole;
}

// Returns "1 case", "2 cases" or "2.50 cases".
std::string Cases(double count, int decimals) {
  return OmNumber(count, Qualtex_Format(Qualtex_Format::kFixed, 12, decimals)).Text() +
         (count == 1 ? " case" : " cases");
}

std::string Join(const Variables& variables, const std::string& separator) {
  std::string names;
  for (const Variable* variable : variables) {
    names += (names.empty() ? "" : separator) + variable->Name();
  }
  return names;
}

void RequireCategories(const Variable& variable) {
  if (variable.Kind() != Variable::Storage::kCategories) {
    throw ProcedureError(variable.Name() + " has more than " +
                         std::to_string(Variable::kMaxCategories) + " different values.");
  }
  if (variable.Categories().empty()) {
    throw ProcedureError(variable.Name() + " holds no value.");
  }
}

// One procedure at work: its heading in the document, and what its tables have in common.
class Procedure {
 public:
  Procedure(const DataSet& data_, const Plan& plan_, TreeNode heading_)
      : data(data_), plan(plan_), heading(heading_) {}
  virtual ~Procedure() = default;

  void Run(const std::string& title);

 protected:
  virtual void Build(const Weights& weights) = 0;
  [[nodiscard]] virtual Variables Used() const = 0;

  void AddNotes(const std::string& title);
  // Adds the summary of valid and missing cases, one row a label.
  void AddCaseProcessing(const Weights& weights, const std::vector<std::string>& labels,
                         const std::vector<double>& missing);
  void AddWarnings();

  const DataSet& data;
  const Plan& plan;
  TreeNode heading;
  std::vector<std::string> warnings;
  int countDecimals = 0;
};

void Procedure::Run(const std::string& title) {
  try {
    AddNotes(title);
    const Weights weights(data, plan.weight);
    if (weights.Total() == 0) {
      throw ProcedureError("No case has a weight.");
    }
    countDecimals = weights.AreWhole() ? 0 : 2;
    if (weights.LeftOut() != 0) {
      warnings.push_back(Cases(static_cast<double>(weights.LeftOut()), 0) +
                         " without a positive weight left out.");
    }
    Build(weights);
  } catch (const ProcedureError& error) {
    const std::string message = error.what();
    Amputate(heading, std::make_unique<OmStringCellUTF8>(title + " stopped").get(), message);
    warnings.push_back(message);
  }
  AddWarnings();
}

void Procedure::AddNotes(const std::string& title) {
  TableBuilder table(heading, "Notes", "Notes");
  OmDimension& notes = table.AddDimension(Axis::kRows, "Notes", false);
  int row = AddGroup(notes, "Input", {"File", "Cases in the file", "Weight"});
  table.Text({row++}, data.FileName());
  table.Text({row++}, std::to_string(data.cases));
  table.Text({row++}, plan.weight == nullptr ? "none" : plan.weight->Name());
  row = AddGroup(notes, "Request", {"Procedure", "Variables"});
  table.Text({row++}, title);
  table.Text({row++}, Join(Used(), ", "));
  row = AddCategories(notes, {"Missing values"});
  table.Text({row}, "Empty fields and NA are missing values.");
  table.End();
}

void Procedure::AddCaseProcessing(const Weights& weights, const std::vector<std::string>& labels,
                                  const std::vector<double>& missing) {
  enum { kValid, kMissing, kTotal };
  TableBuilder table(heading, "Case Processing Summary", "Case Processing Summary");
  table.Corner("Variables");
  AddCategories(table.AddDimension(Axis::kRows, "Variables", false), labels);
  AddCategories(table.AddDimension(Axis::kColumns, "Cases", true), {"Valid", "Missing", "Total"});
  AddCategories(table.AddDimension(Axis::kColumns, "Statistics", false), {"N", "Percent"});
  for (int row = 0; row < static_cast<int>(labels.size()); ++row) {
    const double left = missing[static_cast<std::size_t>(row)];
    const double counts[] = {weights.Total() - left, left, weights.Total()};
    for (int column = kValid; column <= kTotal; ++column) {
      const bool mark = column == kMissing && left != 0;
      table.Number({row, column, 0}, counts[column], countDecimals,
                   mark ? "Cases without a value are left out." : "");
      table.Number({row, column, 1}, Percent(counts[column], weights.Total()), kPercentDecimals);
    }
  }
  table.End();
}

void Procedure::AddWarnings() {
  if (warnings.empty()) {
    return;
  }
  TableBuilder table(heading, "Warnings", "Warnings");
  OmDimension& dimension = table.AddDimension(Axis::kRows, "Warnings", false);
  // The messages stand alone: their numbers are no labels to show.
  dimension.Root()->HideLabels(true);
  std::vector<std::string> labels;
  for (const std::string& warning : warnings) {
    labels.push_back(std::to_string(labels.size() + 1));
    table.Text({static_cast<int>(labels.size()) - 1}, warning);
  }
  AddCategories(dimension, labels);
  table.End();
}

// --- Frequencies
// ----------------------------------------------------------------------------------

class FrequenciesProcedure : public Procedure {
 public:
  using Procedure::Procedure;

 private:
  [[nodiscard]] Variables Used() const override { return plan.AxisVariables(); }
  void Build(const Weights& weights) override;
  void AddTable(TableBuilder& table, const Variable& variable, const Weights& weights);
};

void FrequenciesProcedure::Build(const Weights& weights) {
  std::vector<std::string> labels;
  std::vector<double> missing;
  for (const Variable* variable : Used()) {
    double left = 0;
    for (std::size_t row = 0; row < data.cases; ++row) {
      left += variable->IsMissing(row) ? weights[row] : 0;
    }
    labels.push_back(variable->Name());
    missing.push_back(left);
  }
  AddCaseProcessing(weights, labels, missing);

  const TreeNode tables =
      Place(heading, std::make_unique<OmHeading>(OmStringCellUTF8("Frequency Tables")));
  for (const Variable* variable : Used()) {
    TableBuilder table(tables, variable->Name(), "Frequencies");
    try {
      AddTable(table, *variable, weights);
    } catch (const ProcedureError& error) {
      // This table alone is lost: the message takes its place.
      Amputate(table.Node(), nullptr, error.what());
      warnings.push_back(error.what());
    }
  }
}

void FrequenciesProcedure::AddTable(TableBuilder& table, const Variable& variable,
                                    const Weights& weights) {
  enum { kCount, kPercent, kValidPercent, kCumulativePercent };
  RequireCategories(variable);
  const Frequencies frequencies(data, variable, weights);
  if (frequencies.valid == 0) {
    throw ProcedureError(variable.Name() + " holds no value in a case that has a weight.");
  }
  if (frequencies.counts.size() == 1) {
    warnings.push_back(variable.Name() + " has one category only.");
  }

  OmDimension& rows = table.AddDimension(Axis::kRows, variable.Name(), true);
  AddCategories(table.AddDimension(Axis::kColumns, "Statistics", false),
                {"Count", "Percent", "Valid percent", "Cumulative percent"});
  double sum = 0;
  int row = AddGroup(rows, "Valid", variable);
  for (const double count : frequencies.counts) {
    sum += count;
    table.Number({row, kCount}, count, countDecimals);
    table.Number({row, kPercent}, Percent(count, weights.Total()), kPercentDecimals);
    table.Number({row, kValidPercent}, Percent(count, frequencies.valid), kPercentDecimals);
    table.Number({row, kCumulativePercent}, Percent(sum, frequencies.valid), kPercentDecimals);
    ++row;
  }
  table.Number({row, kCount}, frequencies.valid, countDecimals);
  table.Number({row, kPercent}, Percent(frequencies.valid, weights.Total()), kPercentDecimals);
  table.Number({row, kValidPercent}, 100, kPercentDecimals);
  if (frequencies.missing != 0) {
    row = AddGroup(rows, "Missing", std::vector<std::string>{"No value"});
    table.Number({row, kCount}, frequencies.missing, countDecimals,
                 "Left out of the valid and the cumulative percentages.");
    table.Number({row, kPercent}, Percent(frequencies.missing, weights.Total()), kPercentDecimals);
  }
  row = AddCategories(rows, {"Total"});
  table.Number({row, kCount}, weights.Total(), countDecimals);
  table.Number({row, kPercent}, 100, kPercentDecimals);
  table.End();
}

// --- Crosstabulation
// ------------------------------------------------------------------------------

class CrosstabulationProcedure : public Procedure {
 public:
  using Procedure::Procedure;

 private:
  [[nodiscard]] Variables Used() const override { return plan.AxisVariables(); }
  void Build(const Weights& weights) override;
  void AddCells(TableBuilder& table, const CrossCounts& counts);
};

void CrosstabulationProcedure::Build(const Weights& weights) {
  const Variables variables = Used();
  for (const Variable* variable : variables) {
    RequireCategories(*variable);
  }
  const CrossCounts counts(data, variables, weights);
  const std::string title = Join(variables, " by ");
  AddCaseProcessing(weights, {title}, {counts.Missing()});
  if (counts.Valid() == 0) {
    throw ProcedureError("No case has a value of every variable: " + Join(variables, ", ") + ".");
  }

  TableBuilder table(heading, title, "Crosstabulation");
  for (const Variable* variable : plan.rows) {
    table.AddDimension(Axis::kRows, *variable, true);
  }
  std::vector<std::string> statistics{"Count"};
  if (!plan.columns.empty()) {
    statistics.push_back("Row %");
  }
  if (!plan.rows.empty()) {
    statistics.push_back("Column %");
  }
  AddCategories(table.AddDimension(Axis::kRows, "Statistics", false), statistics);
  for (const Variable* variable : plan.columns) {
    table.AddDimension(Axis::kColumns, *variable, true);
  }
  for (const Variable* variable : plan.layers) {
    table.AddDimension(Axis::kLayers, *variable, true);
  }
  AddCells(table, counts);
  if (statistics.size() > 1) {
    table.Caption("Percentages are of the cases in the same row or column of the layer.");
  }
  if (counts.Missing() != 0) {
    table.MarkTitle(Cases(counts.Missing(), countDecimals) + " with a missing value left out.");
  }
  table.End();
}

// Combinations that do not occur have no cells.
void CrosstabulationProcedure::AddCells(TableBuilder& table, const CrossCounts& counts) {
  const std::size_t rowCount = plan.rows.size();
  const std::size_t columnEnd = rowCount + plan.columns.size();
  const Variables variables = Used();
  counts.ForEach([&](const std::vector<int>& categories, double count) {
    std::vector<int> wholeRow(categories);
    std::vector<int> wholeColumn(categories);
    for (std::size_t i = 0; i < columnEnd; ++i) {
      (i < rowCount ? wholeColumn : wholeRow)[i] =
          static_cast<int>(variables[i]->Categories().size());
    }
    std::vector<int> subscripts(categories);
    int& statistic = *subscripts.insert(subscripts.begin() + static_cast<long>(rowCount), 0);
    table.Number(subscripts, count, countDecimals);
    for (const std::vector<int>* whole : {&wholeRow, &wholeColumn}) {
      // Without variables on one axis, the other one is the whole.
      if (!(whole == &wholeRow ? plan.columns : plan.rows).empty()) {
        ++statistic;
        table.Number(subscripts, Percent(count, counts[*whole]), kPercentDecimals);
      }
    }
  });
}

// --- Descriptives
// ---------------------------------------------------------------------------------

class DescriptivesProcedure : public Procedure {
 public:
  using Procedure::Procedure;

 private:
  // The moments of a measure in one category of the factor, and what was left out of them.
  struct Sample {
    Moments moments;
    double missing = 0;
  };

  [[nodiscard]] Variables Used() const override;
  void Build(const Weights& weights) override;
  [[nodiscard]] std::vector<Sample> Collect(const Variable& measure, const Weights& weights);
  void AddRow(TableBuilder& table, const Variable& measure, std::vector<int> subscripts,
              const Sample& sample);
};

Variables DescriptivesProcedure::Used() const {
  Variables used(plan.measures);
  if (plan.by != nullptr) {
    used.push_back(plan.by);
  }
  return used;
}

// Returns one sample a category of the factor and, last, one of all cases that have a category.
std::vector<DescriptivesProcedure::Sample> DescriptivesProcedure::Collect(const Variable& measure,
                                                                          const Weights& weights) {
  std::vector<Sample> samples(plan.by == nullptr ? 1 : plan.by->Categories().size() + 1);
  for (std::size_t row = 0; row < data.cases; ++row) {
    const double weight = weights[row];
    if (weight == 0 || (plan.by != nullptr && plan.by->IsMissing(row))) {
      continue;
    }
    const double value = measure.Number(row);
    const auto add = [value, weight](Sample& sample) {
      if (value == value) {
        sample.moments.Add(value, weight);
      } else {
        sample.missing += weight;
      }
    };
    if (plan.by != nullptr) {
      add(samples[plan.by->Code(row)]);
    }
    add(samples.back());
  }
  return samples;
}

void DescriptivesProcedure::AddRow(TableBuilder& table, const Variable& measure,
                                   std::vector<int> subscripts, const Sample& sample) {
  const int decimals = measure.Decimals();
  const Moments& moments = sample.moments;
  const std::string footnote =
      sample.missing == 0 ? std::string()
                          : Cases(sample.missing, countDecimals) + " without a number left out.";
  subscripts.push_back(0);
  table.Number(subscripts, moments.N(), countDecimals, footnote);
  const std::pair<double, int> others[] = {{moments.Mean(), decimals + 2},
                                           {moments.Deviation(), decimals + 2},
                                           {moments.Minimum(), decimals},
                                           {moments.Maximum(), decimals}};
  for (const auto& [value, places] : others) {
    ++subscripts.back();
    table.Number(subscripts, value, places);
  }
}

void DescriptivesProcedure::Build(const Weights& weights) {
  std::vector<std::string> labels;
  std::vector<double> missing;
  std::vector<std::vector<Sample>> samples;
  if (plan.by != nullptr) {
    RequireCategories(*plan.by);
  }
  for (const Variable* measure : plan.measures) {
    samples.push_back(Collect(*measure, weights));
    labels.push_back(measure->Name());
    missing.push_back(weights.Total() - samples.back().back().moments.N());
  }
  AddCaseProcessing(weights, labels, missing);

  TableBuilder table(
      heading, Join(plan.measures, ", ") + (plan.by != nullptr ? " by " + plan.by->Name() : ""),
      "Descriptives");
  AddCategories(table.AddDimension(Axis::kRows, "Measure", true), labels);
  if (plan.by != nullptr) {
    table.AddDimension(Axis::kRows, *plan.by, true);
  }
  AddCategories(table.AddDimension(Axis::kColumns, "Statistics", false),
                {"N", "Mean", "Std. deviation", "Minimum", "Maximum"});
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const Variable& measure = *plan.measures[i];
    if (samples[i].back().moments.N() == 0) {
      throw ProcedureError(measure.Name() + " holds no number.");
    }
    if (!measure.IsNumeric()) {
      warnings.push_back(measure.Name() + " holds values that are no numbers; they are left out.");
    }
    for (std::size_t category = 0; category < samples[i].size(); ++category) {
      std::vector<int> subscripts{static_cast<int>(i)};
      if (plan.by != nullptr) {
        subscripts.push_back(static_cast<int>(category));
      }
      AddRow(table, measure, subscripts, samples[i][category]);
    }
  }
  table.End();
}

template <typename Kind>
void Run(const DataSet& data, const Plan& plan, TreeNode root, const std::string& title,
         const std::string& command) {
  const TreeNode heading = Place(
      root, std::make_unique<OmProcedure>(OmStringCellUTF8(title), command, plan.title, data.path));
  Kind(data, plan, heading).Run(title);
}

}  // namespace

void BuildDocument(const DataSet& data, const Plan& plan, OmOutputTree& document) {
  const TreeNode root(document, document.List().begin());
  Place(root, std::make_unique<OmPageTitle>(plan.title));
  Place(root, std::make_unique<OmTextBlock>(OmStringCellUTF8("Log"),
                                            Cases(static_cast<double>(data.cases), 0) + " and " +
                                                std::to_string(data.variables.size()) +
                                                " variables read from " + data.FileName() + "."));
  if (!plan.AxisVariables().empty()) {
    Run<FrequenciesProcedure>(data, plan, root, "Frequencies", "frequencies");
    Run<CrosstabulationProcedure>(data, plan, root, "Crosstabulation", "crosstabulation");
  }
  if (!plan.measures.empty()) {
    Run<DescriptivesProcedure>(data, plan, root, "Descriptives", "descriptives");
  }
}

}  // namespace report
