// Measuring one operation on input that is new in every iteration, and registering the measurement.
//
// What a program repeats, the branch predictor learns: ten nanoseconds for a search that takes
// sixty on keys it has not seen. So an iteration prepares new input, and only the batch of
// operations on it is timed: by the processor time of the thread, the kernel's included, because
// other programs take their share of the machine.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

namespace kqbench {

// The counter that holds the result of a measurement, in nanoseconds per operation.
inline constexpr const char* kNanoseconds = "ns_per_op";

// The library's own name as a contestant.
inline constexpr const char* kOurs = "kqsupt";

// A generator of random words for the standard library's shuffles (SplitMix64).
class Random {
 public:
  using result_type = uint64_t;
  static constexpr uint64_t min() { return 0; }
  static constexpr uint64_t max() { return std::numeric_limits<uint64_t>::max(); }
  uint64_t operator()() {
    uint64_t word = state_ += 0x9E3779B97F4A7C15;
    word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9;
    word = (word ^ (word >> 27)) * 0x94D049BB133111EB;
    return word ^ (word >> 31);
  }
  uint32_t between(uint32_t low, uint32_t high) {  // both included
    return low + static_cast<uint32_t>(operator()() % (uint64_t{high} - low + 1));
  }

 private:
  uint64_t state_ = 1;
};

// One sequence for the whole run: no repetition sees the input of another one.
inline Random& fresh() {
  static Random random;
  return random;
}

inline double processor_seconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Ends the program when a measured operation did not do its work: how fast it failed is no result.
inline void require(bool done) {
  if (!done) [[unlikely]] {
    std::fputs("kqsupt-bench: a measured operation failed\n", stderr);
    std::abort();
  }
}

// Registers the measurement of `contestant` in the row `operation` of the table. An iteration times
// `measured(input)`, which is `operations` operations, on the result of one call of `prepare()`.
template <class Prepare, class Measured>
void add_measurement(const std::string& operation, const char* contestant, size_t operations,
                     Prepare prepare, Measured measured) {
  const auto run = [=](benchmark::State& state) {
    for (auto _ : state) {
      auto input = prepare();
      benchmark::ClobberMemory();
      const double start = processor_seconds();
      measured(input);
      benchmark::ClobberMemory();
      state.SetIterationTime(processor_seconds() - start);
    }
    using benchmark::Counter;
    const double total = static_cast<double>(state.iterations()) * static_cast<double>(operations);
    state.counters[kNanoseconds] = Counter(total * 1e-9, Counter::kIsRate | Counter::kInvert);
  };
  benchmark::RegisterBenchmark((operation + '/' + contestant).c_str(), run)->UseManualTime();
}

}  // namespace kqbench
