// HtmlFile, a file that is there whole or not at all.

#ifndef EXAMPLES_REPORT_HTMLFILE_H
#define EXAMPLES_REPORT_HTMLFILE_H

#include <fstream>
#include <stdexcept>
#include <string>

namespace report {

// Reports that a file cannot be written, with its name and the reason.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Collects what is written in a file beside the one that is asked for. Commit puts it in place;
// without it, nothing stays. What is there already and is no regular file is left alone.
class HtmlFile {
 public:
  // Throws OutputError.
  explicit HtmlFile(const std::string& path);
  HtmlFile(const HtmlFile&) = delete;
  HtmlFile& operator=(const HtmlFile&) = delete;
  ~HtmlFile();

  [[nodiscard]] std::ostream& Stream() noexcept { return stream; }
  // Throws OutputError where anything could not be written.
  void Commit();

 private:
  std::string path;
  std::string target;     // what the path leads to
  std::string temporary;  // empty once it is gone
  std::ofstream stream;
};

}  // namespace report

#endif
