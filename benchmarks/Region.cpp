// The memory region against the system's allocator (or what is loaded in its place) and the
// resources of the standard library.

#include <cstdlib>
#include <memory_resource>

#include "benchmarks/Measure.h"
#include "platform/memory/MemoryRegion.h"

namespace {

constexpr unsigned long kBlock = 40;

struct Ours {
  void* Take(unsigned long bytes) { return region.Allocate(bytes); }
  void Give(void* block, unsigned long /*bytes*/) { OmMemoryRegion::Release(block); }
  OmMemoryRegion region{false};
};

struct Malloc {
  void* Take(unsigned long bytes) {
    void* block = std::malloc(bytes);
    benchmark::DoNotOptimize(block);
    return block;
  }
  void Give(void* block, unsigned long /*bytes*/) { std::free(block); }
};

template <typename Resource>
struct Standard {
  void* Take(unsigned long bytes) { return resource.allocate(bytes); }
  void Give(void* block, unsigned long bytes) { resource.deallocate(block, bytes); }
  Resource resource;
};
using StandardPool = Standard<std::pmr::unsynchronized_pool_resource>;
using Monotonic = Standard<std::pmr::monotonic_buffer_resource>;

template <typename Memory>
void One(benchmark::State& state) {
  Memory memory;
  constexpr unsigned long kRounds = 2000000;
  for (auto _ : state) {
    Phase(state, "one", kRounds, [&] {
      for (unsigned long i = 0; i != kRounds; ++i) {
        void* block = memory.Take(kBlock);
        benchmark::DoNotOptimize(block);
        memory.Give(block, kBlock);
      }
    });
  }
}

template <typename Memory>
void Batch(benchmark::State& state) {
  Memory memory;
  std::vector<void*> blocks(1000);
  constexpr unsigned long kRounds = 3000;
  for (auto _ : state) {
    Phase(state, "batch", kRounds * blocks.size(), [&] {
      for (unsigned long i = 0; i != kRounds; ++i) {
        for (void*& block : blocks) {
          block = memory.Take(kBlock);
        }
        for (void* const block : blocks) {
          memory.Give(block, kBlock);
        }
      }
    });
  }
}

template <typename Memory>
void Replace(benchmark::State& state) {
  struct Held {
    void* block;
    unsigned long bytes;
  };
  struct Step {
    unsigned int index;
    unsigned int bytes;
  };
  constexpr unsigned int kLive = 10000;
  std::mt19937 random(3);
  std::vector<Step> steps(1000000);
  for (Step& step : steps) {
    step = {static_cast<unsigned int>(random()) % kLive,
            16 + static_cast<unsigned int>(random()) % 241};
  }
  Memory memory;
  std::vector<Held> held(kLive);
  for (unsigned int i = 0; i != kLive; ++i) {
    held[i] = {memory.Take(steps[i].bytes), steps[i].bytes};
  }
  const auto run = [&] {
    for (const Step& step : steps) {
      Held& old = held[step.index];
      memory.Give(old.block, old.bytes);
      old = {memory.Take(step.bytes), step.bytes};
      *static_cast<char*>(old.block) = 1;
    }
  };
  for (auto _ : state) {
    run();
    Phase(state, "replace", steps.size(), run);
  }
  for (const Held& block : held) {
    memory.Give(block.block, block.bytes);
  }
}

// What a million small blocks cost.
template <typename Memory>
void Density(benchmark::State& state) {
  constexpr unsigned long kBlocks = 1000000;
  std::vector<void*> blocks(kBlocks);
  for (auto _ : state) {
    const double before = ResidentBytes();
    Memory memory;
    for (void*& block : blocks) {
      block = memory.Take(kBlock);
      *static_cast<char*>(block) = 1;
    }
    state.counters["resident"] = (ResidentBytes() - before) / static_cast<double>(kBlocks);
    if constexpr (requires { memory.region; }) {
      state.counters["held"] =
          static_cast<double>(memory.region.BytesHeld()) / static_cast<double>(kBlocks);
    }
    for (void* const block : blocks) {
      memory.Give(block, kBlock);
    }
  }
}

template <typename Memory>
void Register(const std::string& side) {
  benchmark::RegisterBenchmark(("RegionOne/" + side).c_str(), One<Memory>)->Iterations(1);
  benchmark::RegisterBenchmark(("RegionBatch/" + side).c_str(), Batch<Memory>)->Iterations(1);
  benchmark::RegisterBenchmark(("RegionReplace/" + side).c_str(), Replace<Memory>)->Iterations(1);
  benchmark::RegisterBenchmark(("RegionDensity/" + side).c_str(), Density<Memory>)->Iterations(1);
}

[[maybe_unused]] const bool kRegistered = [] {
  Register<Ours>("ours");
  Register<Malloc>("malloc");
  Register<StandardPool>("pmr_pool");
  Register<Monotonic>("pmr_monotonic");
  return true;
}();

}  // namespace
