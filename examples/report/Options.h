// What the user asks the report for.

#ifndef EXAMPLES_REPORT_OPTIONS_H
#define EXAMPLES_REPORT_OPTIONS_H

#include <string>
#include <vector>

namespace report {

struct Options {
  std::string file;
  // Variables of the crosstabulation, the outermost first.
  std::vector<std::string> rows;
  std::vector<std::string> columns;
  std::vector<std::string> layers;
  std::string weight;  // empty without one
  std::vector<std::string> measures;
  std::string by;  // factor of the descriptives; empty without one
  std::string title;
  bool ascii = false;
  bool skipEmpty = false;
  std::string html;  // file of the page that is written instead of the text; empty without one
  int width = 0;     // columns of the terminal; 0 asks the terminal
};

// Reads the command line. Returns false where the program has nothing more to do and ends with
// `status`: after --help, or after a mistake, which is reported on the standard error.
[[nodiscard]] bool ParseCommandLine(int argc, char** argv, Options& options, int& status);

}  // namespace report

#endif
