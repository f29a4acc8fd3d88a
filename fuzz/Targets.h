// The fuzzers. Each registers itself under its name, which is that of its folder in fuzz/corpus.

#ifndef FUZZ_TARGETS_H
#define FUZZ_TARGETS_H

#include <map>
#include <string>

// Tries bytes, as a stream of decisions or as a record; a failed expectation is a finding.
using Target = void (*)(const std::string& bytes);

// Returns all fuzzers by name.
std::map<std::string, Target>& Targets();

struct Fuzzer {
  Fuzzer(const char* name, Target target) { Targets().emplace(name, target); }
};

#endif
