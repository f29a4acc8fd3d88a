#include "examples/report/ChartsModel.h"

#include <cmath>

#include "examples/report/HtmlText.h"
#include "examples/report/ProcedureError.h"

namespace report {

namespace {

std::string Attribute(const char* name, const std::string& value) {
  return std::string(" ") + name + "=\"" + Escape(value) + "\"";
}

std::string CategoricalField(const Variable& variable) {
  std::string xml = "    <DataField" + Attribute("name", variable.Name()) +
                    " optype=\"categorical\" dataType=\"string\">\n";
  for (const std::string& category : variable.Categories()) {
    xml += "      <Value" + Attribute("value", category) + "/>\n";
  }
  return xml + "    </DataField>\n";
}

std::string NumericField(const Variable& variable) {
  return "    <DataField" + Attribute("name", variable.Name()) +
         " optype=\"continuous\" dataType=\"double\"/>\n";
}

std::string Document(const std::string& fields, const std::string& model) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<PMML version=\"4.4\" xmlns=\"http://www.dmg.org/PMML-4_4\">\n  <Header/>\n"
         "  <DataDictionary>\n" +
         fields + "  </DataDictionary>\n" + model + "</PMML>\n";
}

std::string MiningField(const Variable& variable, const char* usage) {
  return "      <MiningField" + Attribute("name", variable.Name()) + Attribute("usageType", usage) +
         "/>\n";
}

}  // namespace

// Two passes: sums of products about the means do not lose what the plain sums would.
Regression::Regression(const DataSet& data, const Variable& outcome, const Variable& predictor,
                       const Weights& weights) {
  const auto forEach = [&](auto take) {
    for (std::size_t row = 0; row < data.cases; ++row) {
      const double x = predictor.Number(row);
      const double y = outcome.Number(row);
      if (weights[row] > 0 && std::isfinite(x) && std::isfinite(y)) {
        take(x, y, weights[row]);
      }
    }
  };
  double meanX = 0;
  double meanY = 0;
  forEach([&](double x, double y, double weight) {
    n += weight;
    meanX += (x - meanX) * weight / n;
    meanY += (y - meanY) * weight / n;
  });
  double xx = 0;
  double xy = 0;
  double yy = 0;
  forEach([&](double x, double y, double weight) {
    xx += weight * (x - meanX) * (x - meanX);
    xy += weight * (x - meanX) * (y - meanY);
    yy += weight * (y - meanY) * (y - meanY);
  });
  if (!(xx > 0)) {
    throw ProcedureError(predictor.Name() + " does not vary where " + outcome.Name() +
                         " has a value.");
  }
  slope = xy / xx;
  intercept = meanY - slope * meanX;
  rSquared = yy > 0 ? xy * xy / (xx * yy) : 1;
}

std::string RegressionPmml(const Regression& regression, const Variable& outcome,
                           const Variable& predictor) {
  return Document(
      NumericField(outcome) + NumericField(predictor),
      "  <RegressionModel functionName=\"regression\" algorithmName=\"least squares\">\n"
      "    <MiningSchema>\n" +
          MiningField(outcome, "target") + MiningField(predictor, "active") +
          "    </MiningSchema>\n    <ModelExplanation>\n      <PredictiveModelQuality" +
          Attribute("targetField", outcome.Name()) +
          Attribute("numOfRecordsWeighted", Number(regression.n)) +
          Attribute("r-squared", Number(regression.rSquared)) +
          "/>\n    </ModelExplanation>\n    <RegressionTable" +
          Attribute("intercept", Number(regression.intercept)) + ">\n      <NumericPredictor" +
          Attribute("name", predictor.Name()) + Attribute("coefficient", Number(regression.slope)) +
          "/>\n    </RegressionTable>\n  </RegressionModel>\n");
}

std::string NaiveBayesPmml(const DataSet& data, const Variable& outcome,
                           const std::vector<const Variable*>& factors, const Weights& weights) {
  std::string fields = CategoricalField(outcome);
  std::string schema = MiningField(outcome, "target");
  std::string inputs;
  const auto outcomes = static_cast<int>(outcome.Categories().size());
  const auto pairs = [&outcome, outcomes](auto count) {
    std::string xml;
    for (int i = 0; i < outcomes; ++i) {
      xml += "<TargetValueCount" +
             Attribute("value", outcome.Categories()[static_cast<std::size_t>(i)]) +
             Attribute("count", Number(count(i))) + "/>";
    }
    return xml;
  };
  for (const Variable* factor : factors) {
    fields += CategoricalField(*factor);
    schema += MiningField(*factor, "active");
    const CrossCounts counts(data, {factor, &outcome}, weights);
    inputs += "      <BayesInput" + Attribute("fieldName", factor->Name()) + ">\n";
    for (int value = 0; value < static_cast<int>(factor->Categories().size()); ++value) {
      inputs += "        <PairCounts" +
                Attribute("value", factor->Categories()[static_cast<std::size_t>(value)]) +
                "><TargetValueCounts>" + pairs([&](int i) {
                  return counts[{value, i}];
                }) +
                "</TargetValueCounts></PairCounts>\n";
    }
    inputs += "      </BayesInput>\n";
  }
  const Frequencies frequencies(data, outcome, weights);
  return Document(
      fields,
      "  <NaiveBayesModel functionName=\"classification\" threshold=\"0.001\">\n"
      "    <MiningSchema>\n" +
          schema + "    </MiningSchema>\n    <BayesInputs>\n" + inputs +
          "    </BayesInputs>\n    <BayesOutput" + Attribute("fieldName", outcome.Name()) +
          "><TargetValueCounts>" +
          pairs([&](int i) { return frequencies.counts[static_cast<std::size_t>(i)]; }) +
          "</TargetValueCounts></BayesOutput>\n  </NaiveBayesModel>\n");
}

}  // namespace report
