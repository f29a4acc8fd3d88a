// The fuzzers: each takes bytes as a stream of decisions, or as a record, and ends the process
// where the library and a naive twin differ. With libFuzzer: the one that the environment names in
// OM_FUZZER. Without: replays files.
//
//   om_fuzz NAME [FILE|FOLDER]...

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/Records.h"
#include "tests/support/DimensionModel.h"
#include "tests/support/DocumentModel.h"
#include "tests/support/LayoutCheck.h"
#include "tests/support/StoreModel.h"
#include "tests/support/VectorModel.h"

namespace {

template <typename Model>
void PlayModel(const unsigned char* data, unsigned long size) {
  Choices choices(data, size);
  Model model(choices);
  // The bound is for steps that take no choice.
  for (int step = 0; step != 3000 && !choices.Done(); ++step) {
    model.Step();
  }
  model.End();
}

struct Target {
  const char* name;
  void (*play)(const unsigned char* data, unsigned long size);
};

constexpr Target kTargets[] = {
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
const Target& Begin(const char* name) {
  int argc = 0;
  testing::InitGoogleTest(&argc, static_cast<char**>(nullptr));
  GTEST_FLAG_SET(break_on_failure, true);
  for (const Target& target : kTargets) {
    if (name != nullptr && target.name == std::string(name)) {
      return target;
    }
  }
  std::fputs("which fuzzer?\n", stderr);
  std::exit(2);
}

}  // namespace

#ifdef OM_LIBFUZZER

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const Target& target = Begin(std::getenv("OM_FUZZER"));
  target.play(data, size);
  return 0;
}

#else

int main(int, char** argv) {
  namespace fs = std::filesystem;
  const Target& target = Begin(argv[1]);
  unsigned long inputs = 0;
  const auto play = [&](const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    std::fprintf(stderr, "%s\r", path.filename().c_str());
    target.play(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
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
