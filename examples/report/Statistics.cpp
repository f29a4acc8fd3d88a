#include "examples/report/Statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "examples/report/ProcedureError.h"

namespace report {

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
}  // namespace

Weights::Weights(const DataSet& data, const Variable* variable_) : variable(variable_) {
  for (std::size_t row = 0; row < data.cases; ++row) {
    const double weight = (*this)[row];
    if (weight < 0) {
      throw ProcedureError("The weight variable " + variable->Name() + " is negative in case " +
                           std::to_string(row + 1) + ".");
    }
    leftOut += weight == 0 ? 1 : 0;
    total += weight;
    whole = whole && weight == std::floor(weight);
  }
}

double Weights::operator[](std::size_t row) const {
  if (variable == nullptr) {
    return 1;
  }
  const double weight = variable->Number(row);
  return std::isnan(weight) ? 0 : weight;
}

Frequencies::Frequencies(const DataSet& data, const Variable& variable, const Weights& weights)
    : counts(variable.Categories().size()) {
  for (std::size_t row = 0; row < data.cases; ++row) {
    const double weight = weights[row];
    if (variable.IsMissing(row)) {
      missing += weight;
    } else {
      valid += weight;
      counts[variable.Code(row)] += weight;
    }
  }
}

CrossCounts::CrossCounts(const DataSet& data, const std::vector<const Variable*>& variables,
                         const Weights& weights) {
  std::uint64_t stride = 1;
  for (const Variable* variable : variables) {
    const std::uint64_t size = variable->Categories().size() + 1;
    if (stride > std::numeric_limits<std::uint64_t>::max() / size) {
      throw ProcedureError("The variables have too many combinations of categories.");
    }
    strides.push_back(stride);
    sizes.push_back(size);
    stride *= size;
  }
  for (std::size_t row = 0; row < data.cases; ++row) {
    const double weight = weights[row];
    if (weight == 0) {
      continue;
    }
    std::uint64_t place = 0;
    bool complete = true;
    for (std::size_t i = 0; i < variables.size() && complete; ++i) {
      complete = !variables[i]->IsMissing(row);
      place += complete ? variables[i]->Code(row) * strides[i] : 0;
    }
    if (complete) {
      counts[place] += weight;
      valid += weight;
    } else {
      missing += weight;
    }
  }
  for (std::size_t i = 0; i < variables.size(); ++i) {
    AddTotals(i);
  }
}

void CrossCounts::AddTotals(std::size_t variable) {
  std::unordered_map<std::uint64_t, double> totals;
  for (const auto& [place, count] : counts) {
    const std::uint64_t category = place / strides[variable] % sizes[variable];
    totals[place + (sizes[variable] - 1 - category) * strides[variable]] += count;
  }
  counts.merge(totals);
}

std::vector<int> CrossCounts::Categories(std::uint64_t place) const {
  std::vector<int> categories;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    categories.push_back(static_cast<int>(place / strides[i] % sizes[i]));
  }
  return categories;
}

double CrossCounts::operator[](const std::vector<int>& categories) const {
  std::uint64_t place = 0;
  for (std::size_t i = 0; i < categories.size(); ++i) {
    place += static_cast<std::uint64_t>(categories[i]) * strides[i];
  }
  const auto found = counts.find(place);
  return found == counts.end() ? 0 : found->second;
}

void Moments::Add(double value, double weight) {
  if (weight == 0) {
    return;
  }
  minimum = n == 0 ? value : std::min(minimum, value);
  maximum = n == 0 ? value : std::max(maximum, value);
  n += weight;
  const double distance = value - mean;
  mean += distance * weight / n;
  squares += weight * distance * (value - mean);
}

double Moments::Mean() const noexcept {
  return n == 0 ? kNaN : mean;
}

double Moments::Deviation() const noexcept {
  return n > 1 ? std::sqrt(squares / (n - 1)) : kNaN;
}

double Moments::Minimum() const noexcept {
  return n == 0 ? kNaN : minimum;
}

double Moments::Maximum() const noexcept {
  return n == 0 ? kNaN : maximum;
}

}  // namespace report
