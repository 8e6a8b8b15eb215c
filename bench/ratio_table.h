// The result of a run: per family of operations a table of what the library takes beside its peers.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace kqbench {

// One line: `operation` is the name under which its measurements are registered.
struct Row {
  std::string operation;
  std::string text;
  double target;     // the largest ratio of ours to the peer's that is good enough
  std::string peer;  // the peer that the target speaks of
};

struct Family {
  std::string title;
  std::vector<std::string> peers;  // the columns
  std::vector<Row> rows;
};

// Called before main, once by each family: `const bool kAdded = add_family({...});`.
bool add_family(Family family);

// Collects the measurements of a run.
class RatioTable : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  [[nodiscard]] bool empty() const { return samples_.empty(); }

  // Writes the tables of the families that something was measured of, as Markdown.
  void write(std::ostream& out) const;

 private:
  // The median of what was measured under a name, in nanoseconds; 0 when nothing was.
  [[nodiscard]] double median(const std::string& name) const;
  [[nodiscard]] std::vector<std::string> cells(const Family& family, const Row& row) const;

  std::map<std::string, std::vector<double>> samples_;
  size_t repetitions_ = 0;
};

}  // namespace kqbench
