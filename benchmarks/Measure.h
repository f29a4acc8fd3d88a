// What the benchmarks share: times of the phases of one run, resident memory, the work lists.
//
// A benchmark whose phases depend on each other, building, reading and destroying one store, runs
// them once in a process of its own, so that every build starts on untouched memory. It reports
// each phase as a counter, in nanoseconds an operation.

#ifndef BENCHMARKS_MEASURE_H
#define BENCHMARKS_MEASURE_H

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <vector>

// Seconds that this thread has worked, page faults included. What other programs take away from it
// does not count, so that a machine in use shows the same as an idle one, or nearly.
inline double SecondsWorked() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Runs `work`, which is `n` operations, and reports its time an operation.
template <typename Work>
void Phase(benchmark::State& state, const char* name, unsigned long n, Work work) {
  const double start = SecondsWorked();
  work();
  state.counters[name] = (SecondsWorked() - start) * 1e9 / static_cast<double>(n);
}

// Bytes of memory that the process has touched and not given back.
inline double ResidentBytes() {
  long pages = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "r"); file != nullptr) {
    if (std::fscanf(file, "%*d %ld", &pages) != 1) {
      pages = 0;
    }
    std::fclose(file);
  }
  return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

using Subscripts = std::vector<int>;

// The subscripts of cells, one cell after the other.
class Addresses {
 public:
  // Every cell of a table of these sizes, the first subscript fastest.
  static Addresses All(const Subscripts& sizes) {
    const unsigned long n = std::accumulate(sizes.begin(), sizes.end(), 1UL, std::multiplies<>());
    Addresses all(sizes.size(), n);
    Subscripts at(sizes.size(), 0);
    for (unsigned long i = 0; i != n; ++i) {
      all.Add(at);
      for (unsigned long d = 0; d != sizes.size() && ++at[d] == sizes[d]; ++d) {
        at[d] = 0;
      }
    }
    return all;
  }
  // `n` cells drawn at random; some come twice.
  static Addresses Random(const Subscripts& sizes, unsigned long n) {
    Addresses drawn(sizes.size(), n);
    std::mt19937 random(1);
    Subscripts at(sizes.size());
    for (unsigned long i = 0; i != n; ++i) {
      for (unsigned long d = 0; d != sizes.size(); ++d) {
        at[d] = static_cast<int>(random() % static_cast<unsigned int>(sizes[d]));
      }
      drawn.Add(at);
    }
    return drawn;
  }

  // Brings the cells into random order, in place: what is freed before a measurement would be
  // memory that is touched already.
  void Shuffle() {
    std::mt19937 random(2);
    const auto row = [this](unsigned long i) { return all.begin() + static_cast<long>(i * width); };
    for (unsigned long i = Size(); i > 1; --i) {
      const unsigned long k = random() % i;
      std::swap_ranges(row(k), row(k + 1), row(i - 1));
    }
  }
  [[nodiscard]] Addresses Shuffled() const {
    Addresses copy = *this;
    copy.Shuffle();
    return copy;
  }

  [[nodiscard]] unsigned long Size() const { return all.size() / width; }

  // Calls `visit` with the subscripts of every cell, in one vector that is filled anew each time.
  template <typename Visit>
  void ForEach(Visit visit) const {
    Subscripts at(width);
    for (const int* from = all.data(); from != all.data() + all.size(); from += width) {
      for (unsigned long d = 0; d != width; ++d) {
        at[d] = from[d];
      }
      visit(static_cast<const Subscripts&>(at));
    }
  }

 private:
  Addresses(unsigned long width_, unsigned long n) : width(width_) { all.reserve(n * width); }
  void Add(const Subscripts& at) { all.insert(all.end(), at.begin(), at.end()); }

  unsigned long width;
  std::vector<int> all;
};

#endif
