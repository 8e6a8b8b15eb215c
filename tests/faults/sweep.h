// Failing every allocation of an export in turn.
//
// A row names the export, what its call works on, the call, and what it answers when memory is
// short. The sweep runs the call with allocation 1, 2, 3 … failing until it succeeds, each once
// alone and once with all later ones. Each time the answer is one of those the row names, the
// object is as it was, nothing is lost but what the row names, and the call repeated succeeds.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kqsupt/frame.h"

namespace kqsupt::tests {

// The answers of a call that ran out of memory, each with the number of blocks that it loses on
// purpose.
using Failures = std::map<SMStatus, int64_t>;

struct Row {
  std::string name;
  Failures failures;
  std::function<std::shared_ptr<void>()> prepare;
  std::function<SMStatus(void*)> call;
  std::function<bool(void*)> unchanged;
};

// `State` is made by its default constructor, holds all that the call works on and makes, and frees
// it when it goes. What the call returns as an object is answered as a status by `call`.
template <class State>
Row row(const std::string& name, const Failures& failures, SMStatus (*call)(State&),
        bool (*unchanged)(State&)) {
  return {name, failures, [] { return std::make_shared<State>(); },
          [call](void* state) { return call(*static_cast<State*>(state)); },
          [unchanged](void* state) { return unchanged(*static_cast<State*>(state)); }};
}

inline void PrintTo(const Row& row, std::ostream* out) {
  *out << row.name;
}

// The rows of each room.
std::vector<Row> frame_rows();
std::vector<Row> containers_rows();
std::vector<Row> sdo_rows();
std::vector<Row> text_rows();
std::vector<Row> os_rows();
std::vector<Row> net_rows();
std::vector<Row> ipc_rows();
std::vector<Row> log_rows();
std::vector<Row> config_rows();

}  // namespace kqsupt::tests
