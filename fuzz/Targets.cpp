// The fuzzers over the library alone, and the program of all. libFuzzer plays the one
// that the environment names in OM_FUZZER; without it, files are replayed:
//
//   om_fuzz NAME [FILE|FOLDER]...
//   om_fuzz --list                  prints the names

#include <gtest/gtest.h>

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
#include "fuzz/Targets.h"
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

const Fuzzer fuzzers[] = {
    {"vector", PlayModel<VectorModel>},
    {"dimension", PlayModel<dimension_model::DimensionModel>},
    {"store", PlayModel<StoreModel>},
    {"footnotes", PlayModel<FootnoteModel>},
    {"headings", PlayModel<layout_model::LayoutPlay>},
    {"document", PlayModel<DocumentModel>},
    {"mapinfo", CheckMapInfo},
};

// Returns the fuzzer, whose failed expectations end the process as a finding.
Target Begin(const char* name) {
  int argc = 0;
  testing::InitGoogleTest(&argc, static_cast<char**>(nullptr));
  GTEST_FLAG_SET(break_on_failure, true);
  const auto target = Targets().find(name != nullptr ? name : "");
  if (target == Targets().end()) {
    std::fputs("which fuzzer?\n", stderr);
    std::exit(2);
  }
  return target->second;
}

// Prints the names of the fuzzers and ends the process if the arguments ask for that.
void ListIfAsked(int argc, char** argv) {
  if (argc != 2 || std::string(argv[1]) != "--list") {
    return;
  }
  for (const auto& [name, target] : Targets()) {
    std::puts(name.c_str());
  }
  std::exit(0);
}

}  // namespace

std::map<std::string, Target>& Targets() {
  static std::map<std::string, Target> targets;
  return targets;
}

#ifdef OM_LIBFUZZER

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  ListIfAsked(*argc, *argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const Target target = Begin(std::getenv("OM_FUZZER"));
  target(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}

#else

int main(int argc, char** argv) {
  ListIfAsked(argc, argv);
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
