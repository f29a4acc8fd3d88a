// The variables of a data file, in memory.
//
// A variable is stored as one category code a case, or, where it has more different values than
// Variable::kMaxCategories, as one number a case. A million cases of a categorical variable take 4
// MB.

#ifndef EXAMPLES_REPORT_DATASET_H
#define EXAMPLES_REPORT_DATASET_H

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace report {

// An empty field and NA are missing values. A missing number is NaN.
class Variable {
 public:
  // The kinds of contents: a dictionary of categories, numbers too many to list, or texts too many
  // to list, of which nothing is kept but whether they are missing.
  enum class Storage { kCategories, kNumbers, kTexts };

  static constexpr std::uint32_t kMissing = std::numeric_limits<std::uint32_t>::max();
  static constexpr std::size_t kMaxCategories = 4096;

  explicit Variable(std::string name);

  void Append(std::string_view field);
  // Sorts the categories, numbers by value and in front of texts. Called once, after the last
  // Append.
  void Finish();

  [[nodiscard]] const std::string& Name() const noexcept { return name; }
  [[nodiscard]] Storage Kind() const noexcept { return storage; }
  [[nodiscard]] bool IsMissing(std::size_t row) const { return codes[row] == kMissing; }
  // Returns the category of a case, or kMissing; only where Kind() is kCategories.
  [[nodiscard]] std::uint32_t Code(std::size_t row) const { return codes[row]; }
  // Returns the value of a case, NaN where it is missing or no number.
  [[nodiscard]] double Number(std::size_t row) const;
  // Returns the texts of the categories, in the order of their codes.
  [[nodiscard]] const std::vector<std::string>& Categories() const noexcept { return labels; }
  // Returns the number that a category's text stands for, or NaN.
  [[nodiscard]] double CategoryNumber(std::uint32_t code) const { return labelNumbers[code]; }

  [[nodiscard]] bool HasNumbers() const noexcept { return numberCount != 0; }
  // Tells whether every value that is not missing is a number.
  [[nodiscard]] bool IsNumeric() const noexcept { return HasNumbers() && textCount == 0; }
  [[nodiscard]] bool HasFractions() const noexcept { return decimals != 0; }
  // Returns the largest number of decimal places that a value is written with.
  [[nodiscard]] int Decimals() const noexcept { return decimals; }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
      return std::hash<std::string_view>()(text);
    }
  };

  void DropCategories();

  std::string name;
  Storage storage = Storage::kCategories;
  // One entry a case: the category, or, without categories, kMissing or 0.
  std::vector<std::uint32_t> codes;
  std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> dictionary;
  std::vector<std::string> labels;
  std::vector<double> labelNumbers;
  std::vector<double> numbers;  // one entry a case where `storage` is kNumbers
  std::uint64_t numberCount = 0;
  std::uint64_t textCount = 0;
  int decimals = 0;
};

// Every variable has as many entries as there are cases.
struct DataSet {
  std::string path;
  std::vector<Variable> variables;
  std::size_t cases = 0;

  // Returns the name of the file without its folder.
  [[nodiscard]] std::string FileName() const { return path.substr(path.rfind('/') + 1); }
  // Returns the variable of that name. Throws InputError where there is none.
  [[nodiscard]] const Variable& Find(const std::string& name) const;
};

// Reads a file whose first record names the variables. Throws InputError on a file that cannot be
// read, holds nothing, or has a record of another length than the first.
[[nodiscard]] DataSet ReadDataSet(const std::string& path);

}  // namespace report

#endif
