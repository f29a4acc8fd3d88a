#include "examples/report/HtmlFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace report {

namespace {

std::string Reason(int error) {
  return error != 0 ? std::strerror(error) : "it cannot be written";
}

}  // namespace

HtmlFile::HtmlFile(const std::string& path_) : path(path_), target(path_) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::exists(status)) {
    if (!fs::is_regular_file(status)) {
      throw OutputError(path + ": it is no regular file");
    }
    // Through a link the file behind it is replaced, not the link.
    target = fs::canonical(path, error).string();
    if (error) {
      throw OutputError(path + ": " + error.message());
    }
    if (access(target.c_str(), W_OK) != 0) {
      throw OutputError(path + ": " + Reason(errno));
    }
  }
  temporary = target + "." + std::to_string(getpid()) + ".tmp";
  errno = 0;
  std::FILE* created = std::fopen(temporary.c_str(), "wx");
  if (created == nullptr) {
    const int reason = errno;
    temporary.clear();
    throw OutputError(path + ": " + Reason(reason));
  }
  std::fclose(created);
  stream.open(temporary, std::ios::binary | std::ios::trunc);
}

HtmlFile::~HtmlFile() {
  if (!temporary.empty()) {
    std::remove(temporary.c_str());
  }
}

void HtmlFile::Commit() {
  errno = 0;
  stream.close();
  if (!stream || std::rename(temporary.c_str(), target.c_str()) != 0) {
    throw OutputError(path + ": " + Reason(errno));
  }
  temporary.clear();
}

}  // namespace report
