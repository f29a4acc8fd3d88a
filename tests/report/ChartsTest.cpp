// The charts and models against sums that are worked out here in a plainer way.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "backend/tables/om/Heading.h"
#include "backend/tables/om/OutputTree.h"
#include "backend/tables/om/TextBlock.h"
#include "examples/report/Charts.h"
#include "examples/report/ChartsBars.h"
#include "examples/report/ChartsModel.h"
#include "examples/report/ChartsTree.h"
#include "examples/report/Options.h"
#include "platform/cells/CellText.h"

namespace {

using report::DataSet;
using report::Weights;

DataSet MakeData(const std::vector<std::string>& names,
                 const std::vector<std::vector<std::string>>& cases) {
  DataSet data;
  data.path = "data.csv";
  data.cases = cases.size();
  for (std::size_t i = 0; i < names.size(); ++i) {
    data.variables.emplace_back(names[i]);
    for (const std::vector<std::string>& fields : cases) {
      data.variables.back().Append(fields[i]);
    }
    data.variables.back().Finish();
  }
  return data;
}

// Titles of what AddCharts places, and the texts in place of what failed.
std::vector<std::string> Items(const DataSet& data, const report::Options& options) {
  OmOutputTree document;
  report::AddCharts(data, report::MakePlan(data, options), document);
  std::vector<std::string> items;
  for (ListTreeData<OmOutputPart*>& entry : document.List()) {
    const auto* block = dynamic_cast<OmTextBlock*>(entry.Data());
    items.push_back(entry.Data()->Title()->Text() + (block != nullptr ? ": " + block->Text() : ""));
  }
  items.erase(items.begin());
  return items;
}

TEST(Charts, AgreeWithPlainSums) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int round = 0; round < 40; ++round) {
    const auto wide = 1 + random() % 70;
    std::vector<std::vector<std::string>> cases;
    const auto size = 60 + random() % 200;
    for (unsigned i = 0; i < size; ++i) {
      const std::string outcome(1, static_cast<char>('a' + random() % 9));
      cases.push_back({std::to_string(random() % wide), random() % 9 == 0 ? "" : outcome,
                       std::to_string(random() % 3)});
    }
    const DataSet data = MakeData({"G", "O", "W"}, cases);
    const report::Variable& factor = data.Find("G");
    const report::Variable& outcome = data.Find("O");
    const Weights weights(data, &data.Find("W"));

    const report::Bars bars = report::CountBars(data, factor, &outcome, weights);
    EXPECT_EQ(bars.categories.size(), std::min<std::size_t>(factor.Categories().size(), 40));
    EXPECT_EQ(bars.series.size(), std::min<std::size_t>(outcome.Categories().size(), 6));
    double n = 0;
    std::map<std::string, double> plain;
    std::map<std::string, std::map<std::string, double>> pairs;
    std::map<std::string, double> outcomes;
    for (const std::vector<std::string>& fields : cases) {
      const double weight = std::stod(fields[2]);
      if (weight > 0 && !fields[1].empty()) {
        plain[fields[0]] += weight;
        pairs[fields[0]][fields[1]] += weight;
        outcomes[fields[1]] += weight;
        n += weight;
      }
    }
    double drawn = 0;
    for (std::size_t i = 0; i < bars.categories.size(); ++i) {
      const std::string& category = bars.categories[i];
      const double count = std::accumulate(bars.values[i].begin(), bars.values[i].end(), 0.0);
      const double expected = plain.count(category) != 0 ? plain.at(category) : 0;
      EXPECT_TRUE(category == "Others" || count == expected) << category;
      drawn += count;
    }
    EXPECT_EQ(drawn, n);
    double chiSquare = 0;
    for (const auto& [category, row] : plain) {
      for (const auto& [value, column] : outcomes) {
        const double expected = row * column / n;
        chiSquare += std::pow(pairs[category][value] - expected, 2) / expected;
      }
    }
    if (plain.size() > 1) {
      const report::Split split = report::BestSplit(data, outcome, {&factor, &factor}, weights);
      const double freedom = static_cast<double>(std::min(plain.size(), outcomes.size()) - 1);
      EXPECT_NEAR(split.chiSquare, chiSquare, 1e-6 * chiSquare);
      EXPECT_NEAR(split.cramersV, std::sqrt(chiSquare / n / freedom), 1e-6);
    }
  }
}

TEST(Charts, ALineWeighsItsCases) {
  const DataSet data = MakeData(
      {"X", "Y", "W"},
      {{"1", "2", "1"}, {"1", "5", "2"}, {"3", "8", "3"}, {"7", "NA", "9"}, {"9", "9", "0"}});
  const report::Regression line(data, data.Find("Y"), data.Find("X"),
                                Weights(data, &data.Find("W")));
  EXPECT_NEAR(line.slope, 2, 1e-9);
  EXPECT_NEAR(line.intercept, 2, 1e-9);
  EXPECT_NEAR(line.rSquared, 0.8, 1e-9);
}

TEST(Charts, WhatCannotBeDoneIsSaidOrLeftOut) {
  using Titles = std::vector<std::string>;
  report::Options options;
  EXPECT_EQ(Items(MakeData({"X"}, {{"1.5"}, {"2.5"}}), options), Titles());
  EXPECT_EQ(Items(MakeData({"G"}, {{"a"}, {"b"}}), options),
            (Titles{"Charts and Models", "G", "G in every combination"}));
  const DataSet numbers = MakeData({"X", "Y"}, {{"1.5", "2"}, {"1.5", "3.5"}});
  EXPECT_EQ(Items(numbers, options), (Titles{"Charts and Models", "Regression of X on Y"}));
  options.measures = {"Y", "X"};
  EXPECT_EQ(Items(numbers, options),
            (Titles{"Charts and Models", "Model left out: X does not vary where Y has a value."}));
  options = report::Options();
  options.rows = {"G"};
  options.columns = {"H"};
  EXPECT_EQ(
      Items(MakeData({"G", "H"}, {{"a", ""}, {"", "x"}}), options),
      (Titles{"Charts and Models", "Bar chart left out: No case has a value of every variable.",
              "H in every combination", "Naive Bayes model of H",
              "Tree left out: No factor tells anything about H."}));
}

}  // namespace
