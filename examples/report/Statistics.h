// The sums behind the tables. Every case counts with its weight; nothing here knows of tables.

#ifndef EXAMPLES_REPORT_STATISTICS_H
#define EXAMPLES_REPORT_STATISTICS_H

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "examples/report/DataSet.h"

namespace report {

// The weights of the cases: 1 without a weight variable. A case whose weight is missing or zero
// weighs nothing and is left out everywhere.
class Weights {
 public:
  // Throws ProcedureError where a weight is negative.
  Weights(const DataSet& data, const Variable* variable);

  [[nodiscard]] double operator[](std::size_t row) const;
  // Returns the sum of all weights.
  [[nodiscard]] double Total() const noexcept { return total; }
  // Returns the number of cases that are left out.
  [[nodiscard]] std::uint64_t LeftOut() const noexcept { return leftOut; }
  [[nodiscard]] bool AreWhole() const noexcept { return whole; }

 private:
  const Variable* variable;
  double total = 0;
  std::uint64_t leftOut = 0;
  bool whole = true;
};

// How often each category of a variable occurs.
struct Frequencies {
  Frequencies(const DataSet& data, const Variable& variable, const Weights& weights);

  std::vector<double> counts;
  double valid = 0;
  double missing = 0;
};

// The counts of every combination of the categories of some variables and, for each variable, of
// all of its categories together: category n of a variable with n categories stands for them all.
// Only combinations that occur are held. A case with a missing value in any of the variables is
// left out.
class CrossCounts {
 public:
  // Throws ProcedureError where there are more combinations than can be numbered.
  CrossCounts(const DataSet& data, const std::vector<const Variable*>& variables,
              const Weights& weights);

  // Calls take(std::vector<int> categories, double count) for every combination that occurs, in no
  // particular order.
  template <typename Take>
  void ForEach(Take take) const {
    for (const auto& [place, count] : counts) {
      take(Categories(place), count);
    }
  }
  // Returns the count of a combination, 0 where it does not occur.
  [[nodiscard]] double operator[](const std::vector<int>& categories) const;
  [[nodiscard]] double Valid() const noexcept { return valid; }
  [[nodiscard]] double Missing() const noexcept { return missing; }

 private:
  [[nodiscard]] std::vector<int> Categories(std::uint64_t place) const;
  void AddTotals(std::size_t variable);

  std::vector<std::uint64_t> strides;
  std::vector<std::uint64_t> sizes;  // the category that stands for them all included
  std::unordered_map<std::uint64_t, double> counts;
  double valid = 0;
  double missing = 0;
};

// The moments of a sample, in one pass and without loss where the mean is large.
class Moments {
 public:
  void Add(double value, double weight);

  [[nodiscard]] double N() const noexcept { return n; }
  // The following are NaN where they are not defined: without a value, or for the deviation with no
  // more than a weight of one.
  [[nodiscard]] double Mean() const noexcept;
  [[nodiscard]] double Deviation() const noexcept;
  [[nodiscard]] double Minimum() const noexcept;
  [[nodiscard]] double Maximum() const noexcept;

 private:
  double n = 0;
  double mean = 0;
  double squares = 0;  // of the distances from the mean
  double minimum = 0;
  double maximum = 0;
};

}  // namespace report

#endif
