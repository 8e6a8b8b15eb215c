// Medians, ratios and targets as Markdown tables.

#include "ratio_table.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "measure.h"

namespace kqbench {
namespace {

std::vector<Family>& families() {
  static std::vector<Family> all;
  return all;
}

std::string format(const char* pattern, double value) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

std::string nanoseconds(double value) {
  return format(value < 100 ? "%.1f" : "%.0f", value);
}

using Lines = std::vector<std::vector<std::string>>;

// Pads the columns, so that the table also reads well where nothing renders it. The first line is
// the heading.
void write_lines(std::ostream& out, const Lines& lines) {
  std::vector<size_t> widths(lines.front().size());
  for (const auto& line : lines) {
    for (size_t i = 0; i < line.size(); ++i) {
      widths[i] = std::max(widths[i], line[i].size());
    }
  }
  for (const auto& line : lines) {
    for (size_t i = 0; i < line.size(); ++i) {
      out << "| " << line[i] << std::string(widths[i] - line[i].size() + 1, ' ');
    }
    out << "|\n";
    if (&line == &lines.front()) {
      for (const size_t width : widths) {
        out << '|' << std::string(width + 2, '-');
      }
      out << "|\n";
    }
  }
}

}  // namespace

bool add_family(Family family) {
  families().push_back(std::move(family));
  return true;
}

bool RatioTable::ReportContext(const Context& context) {
  (void)context;
  return true;
}

void RatioTable::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
    } else if (run.run_type == Run::RT_Iteration) {
      auto& samples = samples_[run.run_name.function_name];
      samples.push_back(run.counters.at(kNanoseconds));
      repetitions_ = std::max(repetitions_, samples.size());
    }
  }
}

double RatioTable::median(const std::string& name) const {
  const auto found = samples_.find(name);
  if (found == samples_.end()) {
    return 0;
  }
  std::vector<double> sorted = found->second;
  std::sort(sorted.begin(), sorted.end());
  const size_t middle = sorted.size() / 2;
  return sorted.size() % 2 != 0 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

std::vector<std::string> RatioTable::cells(const Family& family, const Row& row) const {
  const double ours = median(row.operation + '/' + kOurs);
  std::vector<std::string> cells{row.text, nanoseconds(ours)};
  std::string holds = "-";
  for (const std::string& peer : family.peers) {
    const double theirs = median(row.operation + '/' + peer);
    if (theirs == 0) {
      cells.emplace_back("-");
      continue;
    }
    const double ratio = ours / theirs;
    cells.push_back(nanoseconds(theirs) + format(" (%.2f)", ratio));
    if (peer == row.peer) {
      holds = ratio <= row.target ? "yes" : "NO";
    }
  }
  cells.push_back(row.peer.empty() ? "-" : format("<= %.2f x ", row.target) + row.peer);
  cells.push_back(holds);
  return cells;
}

void RatioTable::write(std::ostream& out) const {
  out << "Nanoseconds per operation, medians of " << repetitions_
      << " repetitions; in brackets the ratio ours / peer.\n";
  for (const Family& family : families()) {
    Lines lines{{family.title, "ours"}};
    lines[0].insert(lines[0].end(), family.peers.begin(), family.peers.end());
    lines[0].insert(lines[0].end(), {"target", "holds"});
    for (const Row& row : family.rows) {
      if (median(row.operation + '/' + kOurs) != 0) {
        lines.push_back(cells(family, row));
      }
    }
    if (lines.size() > 1) {
      out << '\n';
      write_lines(out, lines);
    }
  }
}

}  // namespace kqbench
