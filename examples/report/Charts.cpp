#include "examples/report/Charts.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Dendrix.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/Interactive.h"
#include "backend/tables/om/Model.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "examples/report/ChartsBars.h"
#include "examples/report/ChartsModel.h"
#include "examples/report/ChartsTree.h"
#include "examples/report/DocumentParts.h"
#include "examples/report/HtmlText.h"
#include "examples/report/ProcedureError.h"
#include "platform/cells/CellTexts.h"

namespace report {

namespace {

using Variables = std::vector<const Variable*>;
using Part = std::unique_ptr<OmOutputPart>;

constexpr unsigned kChunk = 4096;
constexpr std::size_t kMaxRecords = 5000;
constexpr int kClassification = 1;

// Hands a payload over in chunks.
void Deliver(const std::string& bytes, const std::function<void(const char*, unsigned)>& take) {
  for (std::size_t i = 0; i < bytes.size(); i += kChunk) {
    take(bytes.data() + i, static_cast<unsigned>(std::min<std::size_t>(kChunk, bytes.size() - i)));
  }
}

class ChartsProcedure {
 public:
  ChartsProcedure(const DataSet& data, const Plan& plan);

  [[nodiscard]] bool HasItems() const { return outcome != nullptr || plan.measures.size() > 1; }
  void Run(TreeNode heading);

 private:
  [[nodiscard]] Part MakeChart(const Weights& weights) const;
  [[nodiscard]] Part MakeInteractive(const Weights& weights) const;
  [[nodiscard]] Part MakeModel(const Weights& weights) const;
  [[nodiscard]] Part MakeTree(const Weights& weights) const;

  const DataSet& data;
  const Plan& plan;
  const Variable* outcome = nullptr;
  Variables factors;
};

ChartsProcedure::ChartsProcedure(const DataSet& data_, const Plan& plan_)
    : data(data_), plan(plan_) {
  for (const Variable* variable : plan.AxisVariables()) {
    if (variable->Kind() == Variable::Storage::kCategories && !variable->Categories().empty()) {
      factors.push_back(variable);
    }
  }
  if (factors.empty()) {
    return;
  }
  auto chosen = factors.end() - 1;
  if (!plan.columns.empty()) {
    const auto column = std::find(factors.begin(), factors.end(), plan.columns.front());
    chosen = column != factors.end() ? column : chosen;
  }
  outcome = *chosen;
  factors.erase(chosen);
}

void ChartsProcedure::Run(TreeNode heading) {
  try {
    const Weights weights(data, plan.weight);
    const auto add = [&](const char* title, Part (ChartsProcedure::*make)(const Weights&) const) {
      Part part;
      try {
        part = (this->*make)(weights);
      } catch (const ProcedureError& error) {
        part = std::make_unique<OmTextBlock>(OmStringCellUTF8(std::string(title) + " left out"),
                                             error.what());
      }
      Place(heading, std::move(part));
    };
    if (outcome != nullptr) {
      add("Bar chart", &ChartsProcedure::MakeChart);
      add("Interactive view", &ChartsProcedure::MakeInteractive);
    }
    if (plan.measures.size() > 1 || !factors.empty()) {
      add("Model", &ChartsProcedure::MakeModel);
    }
    if (!factors.empty()) {
      add("Tree", &ChartsProcedure::MakeTree);
    }
  } catch (const ProcedureError& error) {
    Amputate(heading, std::make_unique<OmStringCellUTF8>("Charts and Models stopped").get(),
             error.what());
  }
}

Part ChartsProcedure::MakeChart(const Weights& weights) const {
  const bool single = factors.empty();
  const Bars bars =
      CountBars(data, single ? *outcome : *factors.front(), single ? nullptr : outcome, weights);
  auto chart = std::make_unique<OmChart>(OmStringCellUTF8(bars.title), "", 1);
  Deliver(DrawBars(bars), [&](const char* at, unsigned n) { chart->SetImageStream(at, n); });
  Deliver(DescribeBars(bars), [&](const char* at, unsigned n) { chart->SetViZJSON(at, n); });
  const int editing[] = {0, 1};
  chart->Done(reinterpret_cast<const char*>(editing));
  return chart;
}

// Every combination that occurs, with its count.
Part ChartsProcedure::MakeInteractive(const Weights& weights) const {
  Variables variables(factors);
  variables.push_back(outcome);
  const CrossCounts counts(data, variables, weights);
  std::vector<std::vector<int>> places;
  counts.ForEach([&](const std::vector<int>& place, double) {
    for (std::size_t i = 0; i < place.size(); ++i) {
      if (place[i] == static_cast<int>(variables[i]->Categories().size())) {
        return;
      }
    }
    places.push_back(place);
  });
  if (places.size() > kMaxRecords) {
    throw ProcedureError("More than " + std::to_string(kMaxRecords) + " combinations occur.");
  }
  std::sort(places.begin(), places.end());
  std::string names;
  for (const Variable* variable : variables) {
    names += (names.empty() ? "" : ", ") + JsonString(variable->Name());
  }
  std::string json =
      "{\n  \"type\": \"mosaic\",\n  \"variables\": [" + names + "],\n  \"records\": [";
  const char* separator = "\n";
  for (const std::vector<int>& place : places) {
    json += std::string(separator) + "    {\"at\": [";
    for (std::size_t i = 0; i < place.size(); ++i) {
      json += (i == 0 ? "" : ", ") +
              JsonString(variables[i]->Categories()[static_cast<std::size_t>(place[i])]);
    }
    json += "], \"count\": " + Number(counts[place]) + "}";
    separator = ",\n";
  }
  json += "\n  ]\n}\n";

  auto interactive = std::make_unique<OmInteractive>(
      OmStringCellUTF8(outcome->Name() + " in every combination"), "", 2);
  interactive->setProcedureName("charts");
  Deliver(json, [&](const char* at, unsigned n) { interactive->setInteractiveJSON(at, n); });
  return interactive;
}

// A line through two measures, or, without them, the outcome from its factors.
Part ChartsProcedure::MakeModel(const Weights& weights) const {
  std::string title;
  std::string pmml;
  if (plan.measures.size() > 1) {
    const Variable& predicted = *plan.measures[0];
    const Variable& predictor = *plan.measures[1];
    title = "Regression of " + predicted.Name() + " on " + predictor.Name();
    pmml = RegressionPmml(Regression(data, predicted, predictor, weights), predicted, predictor);
  } else {
    title = "Naive Bayes model of " + outcome->Name();
    pmml = NaiveBayesPmml(data, *outcome, factors, weights);
  }
  auto model = std::make_unique<OmModel>(OmStringCellUTF8(title));
  Deliver(pmml, [&](const char* at, unsigned n) { model->SetPMML(at, n); });
  return model;
}

Part ChartsProcedure::MakeTree(const Weights& weights) const {
  static const std::string kOrigin = "charts";  // the item keeps a reference to it
  const Split split = BestSplit(data, *outcome, factors, weights);
  auto tree = std::make_unique<OmDendrix>(
      OmStringCellUTF8(outcome->Name() + " split by " + split.factor->Name()), kOrigin);
  tree->SetTreeType(kClassification);
  Deliver(SplitXml(split, data, *outcome, weights),
          [&](const char* at, unsigned n) { tree->SetUncompressedXML(at, n); });
  tree->Done();
  return tree;
}

}  // namespace

void AddCharts(const DataSet& data, const Plan& plan, OmOutputTree& document) {
  ChartsProcedure procedure(data, plan);
  if (!procedure.HasItems()) {
    return;
  }
  const TreeNode root(document, document.List().begin());
  procedure.Run(Place(root, std::make_unique<OmProcedure>(OmStringCellUTF8("Charts and Models"),
                                                          "charts", plan.title, data.path)));
}

}  // namespace report
