// Measuring what several processes do at the same time: the time from the word to go until the last
// of them has ended, by the clock on the wall, divided by all their operations.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "measure.h"

namespace kqbench {

inline double wall_seconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Seconds that `processes` children take for `work`, the making of the children left out.
template <class Work>
double seconds_of_processes(int processes, const Work& work) {
  int go[2];
  int ready[2];
  require(pipe(go) == 0 && pipe(ready) == 0);
  std::vector<pid_t> children;
  for (int i = 0; i < processes; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      char byte = 0;
      close(go[1]);
      require(write(ready[1], &byte, 1) == 1 && read(go[0], &byte, 1) == 0);
      work();
      _exit(0);
    }
    children.push_back(child);
  }
  char byte = 0;
  for (int i = 0; i < processes; ++i) {
    require(read(ready[0], &byte, 1) == 1);
  }
  const double start = wall_seconds();
  close(go[1]);
  for (const pid_t child : children) {
    int status = 0;
    require(waitpid(child, &status, 0) == child && status == 0);
  }
  const double taken = wall_seconds() - start;
  for (const int descriptor : {go[0], ready[0], ready[1]}) {
    close(descriptor);
  }
  return taken;
}

// Registers the measurement of `contestant`: each process does `work()`, which is `operations`
// operations, on the result of one call of `prepare()` in the process that measures.
template <class Prepare, class Work>
void add_process_measurement(const std::string& operation, const char* contestant, int processes,
                             size_t operations, Prepare prepare, Work work) {
  const auto run = [=](benchmark::State& state) {
    for (auto _ : state) {
      auto input = prepare();
      state.SetIterationTime(seconds_of_processes(processes, [&] { work(input); }));
    }
    using benchmark::Counter;
    const double total = static_cast<double>(state.iterations()) * static_cast<double>(operations) *
                         static_cast<double>(processes);
    state.counters[kNanoseconds] = Counter(total * 1e-9, Counter::kIsRate | Counter::kInvert);
  };
  benchmark::RegisterBenchmark((operation + '/' + contestant).c_str(), run)->UseManualTime();
}

}  // namespace kqbench
