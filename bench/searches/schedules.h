// SPDX-License-Identifier: MIT
// Schedules to find: job shops, open shops and projects with shared resources. Some are in examples/data, more can be
// read from a folder with published instances, the others are drawn.
#pragma once

#include <string>
#include <vector>

namespace koru::bench::searches {

struct Operation {
  int machine;
  int duration;

  bool operator==(const Operation &) const = default;
};

// Each job is a chain of operations; in an open shop they may come in any order, one at a time.
struct Shop {
  std::string name;
  int machines = 0;
  std::vector<std::vector<Operation>> jobs;

  int horizon() const;
};

// Activities that follow others and take of resources while they run.
struct Project {
  std::string name;
  std::vector<int> capacities;
  std::vector<int> durations;
  std::vector<std::vector<int>> uses;  // by resource
  std::vector<std::vector<int>> successors;

  int horizon() const;
};

// Tasks that one of several machines does.
struct Choices {
  static constexpr int kTasks = 200;
  static constexpr int kMachines = 10;

  std::vector<std::vector<int>> durations;  // by task and machine
  int horizon = 0;                          // a fifth more than the quickest machines need on average

  Choices();
};

// Where published instances are: .dzn, .sm, and job shops as numbers in files without an extension.
inline std::string dataFolder;

const std::vector<Shop> &jobShops();
const std::vector<Shop> &openShops();
const std::vector<Project> &projects();

}  // namespace koru::bench::searches
