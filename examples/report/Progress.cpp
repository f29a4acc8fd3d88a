#include "examples/report/Progress.h"

#include <unistd.h>

#include <cstdio>

namespace report {

namespace {
constexpr char kClearLine[] = "\r\x1b[K";
}  // namespace

Progress::Progress(const std::string& path_)
    : path(path_),
      next(std::chrono::steady_clock::now() + std::chrono::seconds(1)),
      terminal(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown) {
    std::fputs(kClearLine, stderr);
  }
}

void Progress::Show(std::uint64_t done, std::uint64_t total, std::uint64_t cases) {
  const auto now = std::chrono::steady_clock::now();
  if (!terminal || now < next) {
    return;
  }
  next = now + std::chrono::milliseconds(200);
  shown = true;
  std::string line = kClearLine + std::string("Reading ") + path + ": ";
  if (total != 0) {
    line += std::to_string(done * 100 / total) + " %, ";
  }
  line += std::to_string(cases) + " cases";
  std::fputs(line.c_str(), stderr);
}

}  // namespace report
