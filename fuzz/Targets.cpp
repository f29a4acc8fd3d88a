// The fuzzers: each takes bytes as a stream of decisions, or as a record. libFuzzer plays the one
// that the environment names in OM_FUZZER; without it, files are replayed:
//
//   om_fuzz NAME [FILE|FOLDER]...

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "backend/tables/om/Chart.h"
#include "examples/report/CsvReader.h"
#include "fuzz/Twins.h"
#include "tests/support/DimensionModel.h"
#include "tests/support/DocumentModel.h"
#include "tests/support/LayoutCheck.h"
#include "tests/support/StoreModel.h"
#include "tests/support/VectorModel.h"

namespace {

template <typename Model>
void PlayModel(const std::string& bytes) {
  Choices choices(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  Model model(choices);
  // The bound is for steps that take no choice.
  for (int step = 0; step != 3000 && !choices.Done(); ++step) {
    model.Step();
  }
  model.End();
}

// The map information of a chart, delivered in two chunks.
void CheckMapInfo(const std::string& record) {
  const auto half = static_cast<unsigned int>(record.size() / 2);
  OmChart chart(OmStringCell("chart"), "", 1);
  chart.SetMapInfo(record.data(), half);
  chart.SetMapInfo(record.data() + half, static_cast<unsigned int>(record.size()) - half);
  std::vector<std::string> texts(4, "old");
  chart.getMapInfo(texts[0], texts[1], texts[2], texts[3]);
  EXPECT_EQ(chart.hasMap(), !record.empty());
  EXPECT_EQ(texts, ReadMapInfo(record));
}

// The sample program's comma-separated files.
void CheckCsv(const std::string& text) {
  const int file = memfd_create("csv", 0);
  ASSERT_EQ(write(file, text.data(), text.size()), static_cast<long>(text.size()));
  lseek(file, 0, SEEK_SET);
  std::vector<std::vector<std::string>> records;
  bool broken = false;
  try {
    report::ReadCsv(
        "/proc/self/fd/" + std::to_string(file),
        [&](const auto& record) {
          records.emplace_back(record.fields.begin(), record.fields.end());
        },
        [](auto, auto) {});
  } catch (const report::InputError&) {
    broken = true;
  }
  close(file);
  const CsvTwin twin(text);
  EXPECT_EQ(broken, twin.broken);
  EXPECT_EQ(records, twin.records);
}

using Target = void (*)(const std::string& bytes);
const std::map<std::string, Target> kTargets = {
    {"vector", PlayModel<VectorModel>},
    {"dimension", PlayModel<dimension_model::DimensionModel>},
    {"store", PlayModel<StoreModel>},
    {"footnotes", PlayModel<FootnoteModel>},
    {"headings", PlayModel<layout_model::LayoutPlay>},
    {"document", PlayModel<DocumentModel>},
    {"mapinfo", CheckMapInfo},
    {"csv", CheckCsv},
};

// Returns the fuzzer, whose failed expectations end the process as a finding.
Target Begin(const char* name) {
  int argc = 0;
  testing::InitGoogleTest(&argc, static_cast<char**>(nullptr));
  GTEST_FLAG_SET(break_on_failure, true);
  const auto target = kTargets.find(name != nullptr ? name : "");
  if (target == kTargets.end()) {
    std::fputs("which fuzzer?\n", stderr);
    std::exit(2);
  }
  return target->second;
}

}  // namespace

#ifdef OM_LIBFUZZER

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const Target target = Begin(std::getenv("OM_FUZZER"));
  target(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}

#else

int main(int, char** argv) {
  namespace fs = std::filesystem;
  const Target target = Begin(argv[1]);
  unsigned long inputs = 0;
  const auto play = [&](const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::fprintf(stderr, "%s\r", path.filename().c_str());
    target(std::string(std::istreambuf_iterator<char>(file), {}));
    ++inputs;
  };
  for (char** path = argv + 2; *path != nullptr; ++path) {
    if (fs::is_directory(*path)) {
      std::for_each(fs::directory_iterator(*path), fs::directory_iterator(), play);
    } else {
      play(*path);
    }
  }
  std::printf("%lu inputs\n", inputs);
  return inputs != 0 ? 0 : 2;
}

#endif
