#include "examples/report/CsvReader.h"

#include <csv.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>

#include "examples/report/DisplayText.h"

namespace report {

namespace {

constexpr std::size_t kBlockSize = 1 << 16;

// Gathers the fields of one record. The characters stand in one buffer, because a field's place is
// known only once the buffer has stopped growing.
struct RecordBuffer {
  std::string text;
  std::vector<std::size_t> ends;
  bool complete = false;
  std::exception_ptr failure;  // must not pass through the parser, which is C
};

void TakeField(void* field, std::size_t size, void* buffer_) {
  auto* buffer = static_cast<RecordBuffer*>(buffer_);
  try {
    buffer->text.append(static_cast<const char*>(field), size);
    buffer->ends.push_back(buffer->text.size());
  } catch (...) {
    buffer->failure = std::current_exception();
  }
}

void TakeEnd(int, void* buffer) {
  static_cast<RecordBuffer*>(buffer)->complete = true;
}

class Parser {
 public:
  Parser(const std::string& path_, const std::function<void(const CsvRecord&)>& take_)
      : path(path_), take(take_) {
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0) {
      throw std::bad_alloc();
    }
  }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  ~Parser() { csv_free(&parser); }

  // Takes one line, its end included; so no more than one record ends in it.
  void Line(std::string_view bytes) {
    ++line;
    if (!open) {
      record.line = line;
    }
    if (csv_parse(&parser, bytes.data(), bytes.size(), TakeField, TakeEnd, &buffer) !=
        bytes.size()) {
      Fail();
    }
    Finish();
  }

  void End() {
    if (csv_fini(&parser, TakeField, TakeEnd, &buffer) != 0) {
      throw InputError(path, record.line, "a quoted field that begins here does not end");
    }
    Finish();
  }

 private:
  [[noreturn]] void Fail() {
    if (csv_error(&parser) == CSV_EPARSE) {
      throw InputError(path, line, "a quotation mark is out of place");
    }
    throw std::bad_alloc();
  }

  void Finish() {
    if (buffer.failure) {
      std::rethrow_exception(buffer.failure);
    }
    if (!buffer.complete) {
      // The line ends within a quoted field, or it holds nothing and begins no record.
      open = parser.pstate != 0;
      return;
    }
    std::size_t begin = 0;
    for (const std::size_t end : buffer.ends) {
      record.fields.push_back(std::string_view(buffer.text).substr(begin, end - begin));
      begin = end;
    }
    if (!IsUtf8(buffer.text)) {
      throw InputError(path, record.line, "the text is not valid UTF-8");
    }
    take(record);
    record.fields.clear();
    buffer.text.clear();
    buffer.ends.clear();
    buffer.complete = false;
    open = false;
  }

  const std::string& path;
  const std::function<void(const CsvRecord&)>& take;
  csv_parser parser;
  RecordBuffer buffer;
  CsvRecord record{0, {}};
  std::uint64_t line = 0;
  bool open = false;  // a record has begun and not ended
};

// Returns the length of the first line of `bytes`, its end included, or 0 where its end is not
// there. CR LF, LF and a lone CR end a line.
std::size_t LineLength(std::string_view bytes) {
  std::size_t end = 0;  // a search for either of two characters costs a call for each it passes
  while (end != bytes.size() && bytes[end] != '\n' && bytes[end] != '\r') {
    ++end;
  }
  if (end == bytes.size()) {
    return 0;
  }
  if (bytes[end] == '\n') {
    return end + 1;
  }
  if (end + 1 == bytes.size()) {
    return 0;  // a line feed may follow in the next block
  }
  return bytes[end + 1] == '\n' ? end + 2 : end + 1;
}

}  // namespace

InputError::InputError(const std::string& file, std::uint64_t line, const std::string& message)
    : std::runtime_error(file + (line != 0 ? ":" + std::to_string(line) : std::string()) + ": " +
                         message) {}

void ReadCsv(const std::string& path, const std::function<void(const CsvRecord&)>& take,
             const std::function<void(std::uint64_t, std::uint64_t)>& progress) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (file == nullptr) {
    throw InputError(path, 0, std::string("the file cannot be opened: ") + std::strerror(errno));
  }
  struct stat status;
  const bool sized = fstat(fileno(file.get()), &status) == 0 && S_ISREG(status.st_mode);
  const std::uint64_t total = sized ? static_cast<std::uint64_t>(status.st_size) : 0;

  Parser parser(path, take);
  std::string pending;
  std::vector<char> block(kBlockSize);
  std::uint64_t done = 0;
  while (const std::size_t size = std::fread(block.data(), 1, block.size(), file.get())) {
    std::string_view bytes(block.data(), size);
    if (std::memchr(block.data(), 0, size) != nullptr) {
      throw InputError(path, 0, "the file is not text");
    }
    pending.append(bytes);
    if (done == 0 && pending.compare(0, 3, "\xEF\xBB\xBF") == 0) {
      pending.erase(0, 3);
    }
    std::string_view rest(pending);
    while (const std::size_t length = LineLength(rest)) {
      parser.Line(rest.substr(0, length));
      rest.remove_prefix(length);
    }
    pending.erase(0, pending.size() - rest.size());
    done += size;
    progress(done, total);
  }
  if (std::ferror(file.get()) != 0) {
    throw InputError(path, 0, std::string("the file cannot be read: ") + std::strerror(errno));
  }
  if (!pending.empty()) {
    parser.Line(pending);
  }
  parser.End();
}

}  // namespace report
