// SPDX-License-Identifier: MIT
// Many generated traces: batches in child processes, failures attributed to their trace, shrunk and written to files.
#pragma once

#include <string>

#include "traces/child.h"
#include "traces/generator.h"

namespace koru::traces {

struct Campaign {
  std::uint64_t from = 1;
  std::uint64_t count = 1000;
  int jobs = 1;
  Mix mix = Mix::kAll;
  Settings settings;
  std::string folder = ".";  // for failing traces
  bool figures = false;      // a line for each function
};

struct Result {
  Tally tally{};
  int failures = 0;
  int neverCalled = 0;  // exported functions
};

Result run(const Campaign &campaign);

}  // namespace koru::traces
