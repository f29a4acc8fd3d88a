// With libFuzzer: the fuzzer that the environment names in OM_FUZZER. Without: replays files.
//
//   om_fuzz NAME [FILE|FOLDER]...

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/Targets.h"

namespace {

// A failed expectation ends the process, as a finding.
void Begin() {
  int argc = 1;
  char name[] = "om_fuzz";
  char* argv[] = {name, nullptr};
  testing::InitGoogleTest(&argc, argv);
  GTEST_FLAG_SET(break_on_failure, true);
}

}  // namespace

#ifdef OM_LIBFUZZER

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const std::string name = [] {
    Begin();
    const char* const chosen = std::getenv("OM_FUZZER");
    return std::string(chosen != nullptr ? chosen : "");
  }();
  if (!PlayBytes(name, data, size)) {
    std::fputs("OM_FUZZER names no fuzzer\n", stderr);
    std::exit(2);
  }
  return 0;
}

#else

int main(int argc, char** argv) {
  Begin();
  unsigned long inputs = 0;
  const auto play = [&](const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    ++inputs;
    std::fprintf(stderr, "%s\r", path.filename().c_str());
    return PlayBytes(argv[1], reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  };
  for (int i = 2; i < argc; ++i) {
    bool known = true;
    if (std::filesystem::is_directory(argv[i])) {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
        known = known && play(entry.path());
      }
    } else {
      known = play(argv[i]);
    }
    if (!known) {
      std::fprintf(stderr, "no fuzzer %s\n", argv[1]);
      return 2;
    }
  }
  std::printf("%lu inputs\n", inputs);
  return inputs != 0 ? 0 : 2;
}

#endif
