// Reads comma-separated text in UTF-8, record by record, in one pass and constant memory.
//
// Fields may be quoted and then hold commas, line breaks and doubled quotes. Blanks around an
// unquoted field are dropped, and so are lines that hold nothing. A byte-order mark in front is
// skipped.

#ifndef EXAMPLES_REPORT_CSVREADER_H
#define EXAMPLES_REPORT_CSVREADER_H

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace report {

// Reports what is wrong with an input file, with the name of the file and the line where it was
// found.
class InputError : public std::runtime_error {
 public:
  // A line of 0 means the file as a whole.
  InputError(const std::string& file, std::uint64_t line, const std::string& message);
};

// One record. `line` is the line of the file on which it starts.
struct CsvRecord {
  std::uint64_t line;
  std::vector<std::string_view> fields;
};

// Hands every record of `path` to `take`, the heading among them, and after each block tells
// `progress` how many of how many bytes are read (0 where the size is not known). Throws InputError
// where the file cannot be read, a quote is out of place, or the text is not valid UTF-8.
void ReadCsv(const std::string& path, const std::function<void(const CsvRecord&)>& take,
             const std::function<void(std::uint64_t, std::uint64_t)>& progress);

}  // namespace report

#endif
