// SPDX-License-Identifier: MIT
// What the examples of koru_costs are made of: a constraint, or a few of one kind, on variables that are bound one
// after the other.
#pragma once

#include <cstddef>
#include <deque>
#include <initializer_list>
#include <span>
#include <vector>

#include "instances.h"
#include "koru_extras.h"
#include "run.h"

namespace koru::bench::costs {

// A solver, and what its constraints keep.
class Model {
 public:
  Array &array(int size, int min, int max) { return labelled_.emplace_back(lifetime_.array(size, min, max)); }
  CSint *variable(int min, int max) { return array(1, min, max)[0]; }
  // Not bound by the measurement.
  Array &others(int size, int min, int max) { return lifetime_.array(size, min, max); }
  Array &others(std::initializer_list<CSint *> variables) { return lifetime_.array() = variables; }
  Array &constants(const std::vector<int> &values) {
    Array &result = lifetime_.array();
    for (const int value : values) result.push_back(CSINT(value));
    return result;
  }
  std::vector<int> &ints(std::vector<int> values) { return ints_.emplace_back(std::move(values)); }
  void require(bool posted) { consistent_ = consistent_ && posted; }

  bool consistent() const { return consistent_; }
  Array all() const {
    Array result;
    for (const Array &each : labelled_) result.insert(result.end(), each.begin(), each.end());
    return result;
  }
  Random random{1};

 private:
  Lifetime lifetime_;
  std::deque<Array> labelled_;
  std::deque<std::vector<int>> ints_;
  bool consistent_ = true;
};

struct Row {
  const char *function;
  const char *instance;
  void (*post)(Model &);
};

// Each family in a file of its own.
std::span<const Row> relationRows();
std::span<const Row> arrayRows();
std::span<const Row> scheduleRows();

template <class T>
int sizeOf(const std::vector<T> &x) {
  return static_cast<int>(x.size());
}

}  // namespace koru::bench::costs
