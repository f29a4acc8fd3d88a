#include "examples/report/DataSet.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <set>

#include "examples/report/CsvReader.h"
#include "examples/report/Progress.h"

namespace report {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Returns the finite number that the whole of `text` stands for, or NaN.
double ParseNumber(std::string_view text) {
  double value = kNaN;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end && std::isfinite(value) ? value : kNaN;
}

int CountDecimals(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos) {
    return 0;
  }
  const std::size_t end = std::min(text.find_first_of("eE"), text.size());
  return static_cast<int>(std::min<std::size_t>(end - point - 1, 9));
}

void TakeHeading(const std::string& path, const CsvRecord& record, DataSet& data) {
  std::set<std::string_view> names;
  for (const std::string_view name : record.fields) {
    if (name.empty()) {
      throw InputError(path, record.line,
                       "variable " + std::to_string(names.size() + 1) + " has no name");
    }
    if (!names.insert(name).second) {
      throw InputError(path, record.line,
                       "there are two variables named '" + std::string(name) + "'");
    }
    data.variables.emplace_back(std::string(name));
  }
}

}  // namespace

Variable::Variable(std::string name_) : name(std::move(name_)) {}

void Variable::Append(std::string_view field) {
  if (field.empty() || field == "NA") {
    codes.push_back(kMissing);
    if (storage == Storage::kNumbers) {
      numbers.push_back(kNaN);
    }
    return;
  }
  if (storage == Storage::kCategories) {
    const auto found = dictionary.find(field);
    if (found != dictionary.end()) {
      codes.push_back(found->second);
      ++(std::isnan(labelNumbers[found->second]) ? textCount : numberCount);
      return;
    }
  }
  const double number = ParseNumber(field);
  if (std::isnan(number)) {
    ++textCount;
  } else {
    ++numberCount;
    decimals = std::max(decimals, CountDecimals(field));
  }
  if (storage == Storage::kCategories && dictionary.size() == kMaxCategories) {
    DropCategories();
  }
  if (storage == Storage::kCategories) {
    const auto code = static_cast<std::uint32_t>(dictionary.size());
    dictionary.emplace(field, code);
    labels.emplace_back(field);
    labelNumbers.push_back(number);
    codes.push_back(code);
    return;
  }
  codes.push_back(0);
  if (storage == Storage::kNumbers) {
    numbers.push_back(number);
  }
}

void Variable::DropCategories() {
  storage = numberCount > textCount ? Storage::kNumbers : Storage::kTexts;
  for (std::uint32_t& code : codes) {
    if (storage == Storage::kNumbers) {
      numbers.push_back(code == kMissing ? kNaN : labelNumbers[code]);
    }
    code = code == kMissing ? kMissing : 0;
  }
  dictionary.clear();
  labels.clear();
  labelNumbers.clear();
}

void Variable::Finish() {
  dictionary.clear();
  std::vector<std::uint32_t> order(labels.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [this](std::uint32_t a, std::uint32_t b) {
    const bool aIsNumber = !std::isnan(labelNumbers[a]);
    const bool bIsNumber = !std::isnan(labelNumbers[b]);
    if (aIsNumber != bIsNumber) {
      return aIsNumber;
    }
    if (aIsNumber && labelNumbers[a] != labelNumbers[b]) {
      return labelNumbers[a] < labelNumbers[b];
    }
    return labels[a] < labels[b];
  });
  std::vector<std::string> sortedLabels;
  std::vector<double> sortedNumbers;
  std::vector<std::uint32_t> places(labels.size());
  for (const std::uint32_t code : order) {
    places[code] = static_cast<std::uint32_t>(sortedLabels.size());
    sortedLabels.push_back(std::move(labels[code]));
    sortedNumbers.push_back(labelNumbers[code]);
  }
  labels.swap(sortedLabels);
  labelNumbers.swap(sortedNumbers);
  if (storage == Storage::kCategories) {
    for (std::uint32_t& code : codes) {
      code = code == kMissing ? kMissing : places[code];
    }
  }
}

double Variable::Number(std::size_t row) const {
  switch (storage) {
    case Storage::kCategories:
      return codes[row] == kMissing ? kNaN : labelNumbers[codes[row]];
    case Storage::kNumbers:
      return numbers[row];
    case Storage::kTexts:
      break;
  }
  return kNaN;
}

const Variable& DataSet::Find(const std::string& name) const {
  std::string names;
  for (const Variable& variable : variables) {
    if (variable.Name() == name) {
      return variable;
    }
    names += (names.empty() ? "" : ", ") + variable.Name();
  }
  throw InputError(path, 1, "there is no variable '" + name + "'; there are: " + names);
}

DataSet ReadDataSet(const std::string& path) {
  DataSet data;
  data.path = path;
  Progress progress(path);
  ReadCsv(
      path,
      [&data, &path](const CsvRecord& record) {
        if (data.variables.empty()) {
          TakeHeading(path, record, data);
          return;
        }
        if (record.fields.size() != data.variables.size()) {
          throw InputError(path, record.line,
                           "the line has " + std::to_string(record.fields.size()) +
                               (record.fields.size() == 1 ? " field" : " fields") +
                               " where the heading has " + std::to_string(data.variables.size()));
        }
        for (std::size_t i = 0; i < record.fields.size(); ++i) {
          data.variables[i].Append(record.fields[i]);
        }
        ++data.cases;
      },
      [&data, &progress](std::uint64_t done, std::uint64_t total) {
        progress.Show(done, total, data.cases);
      });
  if (data.cases == 0) {
    throw InputError(
        path, 1,
        data.variables.empty() ? "the file is empty" : "there is no case below the heading");
  }
  for (Variable& variable : data.variables) {
    variable.Finish();
  }
  return data;
}

}  // namespace report
