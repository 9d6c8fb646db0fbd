// SPDX-License-Identifier: MIT
// Benchmark problems of tasks in time, as programs for Koru.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "instances.h"
#include "run.h"

namespace koru::bench {

// ----- job shop, each pair of operations on a machine with a 0/1 variable for each order

struct Operation {
  int machine;
  int duration;
};

// Each job visits all machines, in an order of its own.
struct Shop {
  int horizon = 0;  // the sum of all durations
  std::vector<std::vector<Operation>> jobs;

  Shop(int jobCount, int machines) {
    Random random(6);
    for (int j = 0; j < jobCount; ++j) {
      jobs.emplace_back();
      for (const int machine : random.permutation(machines)) {
        jobs.back().push_back({machine, 1 + random.below(9)});
        horizon += jobs.back().back().duration;
      }
    }
  }
};

struct PlacedOperation {
  int machine;
  CSint *start;
  CSint *end;
};

// One after the other, the last one before `makespan`.
inline bool postJob(const std::vector<Operation> &job, CSint *makespan, std::vector<PlacedOperation> &operations,
                    int horizon) {
  CSint *previous = nullptr;
  for (const Operation &operation : job) {
    CSint *start = cs_createCSint(0, horizon);
    CSint *end = cs_Add(start, CSINT(operation.duration));
    if (previous != nullptr && !cs_Le(previous, start)) return false;
    operations.push_back({operation.machine, start, end});
    previous = end;
  }
  return cs_Le(previous, makespan);
}

inline bool postOrder(Array &orders, const PlacedOperation &a, const PlacedOperation &b) {
  orders.push_back(cs_ReifLe(a.end, b.start));
  CSint *other = cs_ReifLe(b.end, a.start);
  return orders.back() != nullptr && other != nullptr && cs_Neq(orders.back(), other);
}

inline bool postShop(const Shop &shop, Array &orders, CSint *makespan) {
  std::vector<PlacedOperation> operations;
  for (const std::vector<Operation> &job : shop.jobs)
    if (!postJob(job, makespan, operations, shop.horizon)) return false;
  for (std::size_t i = 0; i < operations.size(); ++i)
    for (std::size_t j = i + 1; j < operations.size(); ++j)
      if (operations[i].machine == operations[j].machine && !postOrder(orders, operations[i], operations[j]))
        return false;
  return true;
}

template <int jobs, int machines>
Outcome jobShop() {
  const Shop shop(jobs, machines);
  Lifetime lifetime;
  Outcome outcome;
  Array &decisions = lifetime.array();
  CSint *makespan = cs_createCSint(0, shop.horizon);
  if (!postShop(shop, decisions, makespan)) return outcome;
  decisions.push_back(makespan);
  minimize(outcome, decisions, cs_findFreeVar, makespan);
  return outcome;
}

// ----- one resource: tasks start a little later, one after the other

// Tasks in the order of their starts, about three at a time. Every second one is fixed, the others may move by up to
// `slack` / 100 of the whole time.
struct Tasks {
  static constexpr int kCapacity = 8;

  std::vector<int> starts;
  std::vector<int> rooms;
  std::vector<int> durations;
  std::vector<int> uses;

  Tasks(int n, int slack) {
    Random random(1);
    for (int i = 0; i < n; ++i) {
      starts.push_back(i / 3 * 10 + random.below(3));
      rooms.push_back(i % 2 == 0 ? 0 : 8 + random.below(1 + n / 3 * 10 * slack / 100));
      durations.push_back(4 + random.below(5));
      uses.push_back(1 + random.below(2));
    }
  }
};

using PostCumulative = bool (*)(CSint **starts, CSint **durations, CSint **uses, int n, CSint *capacity);

// The same as variables and a constraint over them.
struct Schedule {
  Array &starts;
  Array &durations;
  Array &uses;
  CSint *capacity = cs_createCSint(Tasks::kCapacity, Tasks::kCapacity);

  Schedule(Lifetime &lifetime, const Tasks &tasks)
      : starts(lifetime.array()), durations(lifetime.array()), uses(lifetime.array()) {
    for (std::size_t i = 0; i < tasks.starts.size(); ++i) {
      starts.push_back(cs_createCSint(tasks.starts[i], tasks.starts[i] + tasks.rooms[i]));
      durations.push_back(CSINT(tasks.durations[i]));
      uses.push_back(CSINT(tasks.uses[i]));
    }
  }

  bool post(PostCumulative cumulative) const {
    return cumulative(starts.data(), durations.data(), uses.data(), static_cast<int>(starts.size()), capacity);
  }
};

// Each raise is a sweep over all tasks, at least.
inline bool raiseEach(const Array &starts) {
  for (CSint *start : starts)
    if (!cs_isInstantiated(start) && !cs_GE(start, cs_getMin(start) + 1)) return false;
  return true;
}

template <int n, int times>
Outcome cumulative() {
  Lifetime lifetime;
  Outcome outcome;
  const Schedule schedule(lifetime, Tasks(n, 0));
  if (!schedule.post(cs_Cumulative)) return outcome;
  for (int i = 0; i < times; ++i) {
    cs_saveContext();
    if (!raiseEach(schedule.starts)) return Outcome{};
    cs_restoreContext();
    outcome.units += n / 2;
  }
  return outcome;
}

}  // namespace koru::bench
