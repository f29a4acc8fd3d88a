// A line on the standard error that tells how far the reading of a file has come.

#ifndef EXAMPLES_REPORT_PROGRESS_H
#define EXAMPLES_REPORT_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace report {

// Shows nothing within the first second, and nothing at all where the standard error is no
// terminal. The line is gone once the object is.
class Progress {
 public:
  explicit Progress(const std::string& path);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // A total of 0 means that it is not known.
  void Show(std::uint64_t done, std::uint64_t total, std::uint64_t cases);

 private:
  std::string path;
  std::chrono::steady_clock::time_point next;  // when the line is written again
  bool terminal;
  bool shown = false;
};

}  // namespace report

#endif
