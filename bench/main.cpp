// kqsupt-bench [--table=FILE] [--benchmark_...]: measures the library beside its peers, prints the
// table of ratios and, when asked, writes it to a file too.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string_view>
#include <vector>

#include "ratio_table.h"

namespace {

// The arguments of the program, behind what stands in for those that are not given.
std::vector<char*> with_defaults(int argc, char** argv) {
  static char repetitions[] = "--benchmark_repetitions=7";
  static char interleaved[] = "--benchmark_enable_random_interleaving=true";
  static char min_time[] = "--benchmark_min_time=0.04";
  std::vector<char*> arguments{argv[0], repetitions, interleaved, min_time};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  return arguments;
}

// Takes the name of the table's file out of the arguments.
std::string_view take_table(std::vector<char*>& arguments) {
  constexpr std::string_view kPrefix = "--table=";
  std::string_view path;
  std::erase_if(arguments, [&](std::string_view argument) {
    const bool is_table = argument.substr(0, kPrefix.size()) == kPrefix;
    if (is_table) {
      path = argument.substr(kPrefix.size());
    }
    return is_table;
  });
  return path;
}

}  // namespace

int main(int argc, char** argv) {
  // All contestants take their memory from malloc. GLib decides when it is loaded, and its own
  // allocator would hand out the nodes of earlier trees in the order in which those were freed.
  if (getenv("G_SLICE") == nullptr) {
    setenv("G_SLICE", "always-malloc", 1);
    execv("/proc/self/exe", argv);
  }
  // The heap keeps what it got: no measurement pays for the pages that another one gave back.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);

  std::vector<char*> arguments = with_defaults(argc, argv);
  const std::string table_path(take_table(arguments));
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
    return 2;
  }

  kqbench::RatioTable table;
  benchmark::RunSpecifiedBenchmarks(&table);
  if (table.empty()) {
    return 0;  // asked for something else, such as the list of the measurements
  }
  table.write(std::cout);
  if (!table_path.empty()) {
    std::ofstream file(table_path);
    table.write(file);
    if (!file.flush()) {
      std::cerr << table_path << ": cannot be written\n";
      return 1;
    }
  }
  return 0;
}
