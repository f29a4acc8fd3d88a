// The fuzzers: each takes bytes as a stream of decisions, or as a record, and ends the process
// where the library and a naive twin differ.

#ifndef FUZZ_TARGETS_H
#define FUZZ_TARGETS_H

#include <string>

// Plays the bytes with the fuzzer of that name. Returns false where there is none.
bool PlayBytes(const std::string& name, const unsigned char* data, unsigned long size);

#endif
