// SPDX-License-Identifier: MIT
// Schedules as programs for Koru, with the constraints and searches of docs/scheduling.md.
#include "searches/schedules.h"

#include <algorithm>

#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

struct Task {
  CSint *start;
  CSint *duration;
};

// One at a time, and which of two comes first is to be decided.
void postMachine(Model &model, const std::vector<Task> &tasks, int machine) {
  Array &starts = model.array();
  Array &durations = model.array();
  for (const Task &task : tasks) {
    for (std::size_t i = 0; i < starts.size(); ++i) {
      CSint *first = cs_createCSint(0, 1);
      model.orders.push_back({first, {starts[i], task.start}, {durations[i], task.duration}, machine});
      model.require(cs_EitherBefore(first, starts[i], durations[i], nullptr, task.start, task.duration, nullptr));
    }
    starts.push_back(task.start);
    durations.push_back(task.duration);
  }
  model.require(cs_DisjunctiveTasks(starts.data(), durations.data(), nullptr, static_cast<int>(starts.size())));
}

void postShop(Model &model, const Shop &shop, bool isOpen) {
  CSint *makespan = cs_createCSint(0, shop.horizon());
  std::vector<std::vector<Task>> lines(static_cast<std::size_t>(shop.machines));
  for (const auto &job : shop.jobs) {
    std::vector<Task> tasks;
    for (const Operation &operation : job) {
      const Task task{cs_createCSint(0, shop.horizon()), CSINT(operation.duration)};
      if (!isOpen && !tasks.empty())
        model.require(cs_PrecedenceIf(nullptr, tasks.back().start, tasks.back().duration, 0, task.start));
      model.require(cs_PrecedenceIf(nullptr, task.start, task.duration, 0, makespan));
      model.then.push_back(task.start);
      tasks.push_back(task);
      lines[static_cast<std::size_t>(operation.machine)].push_back(task);
    }
    if (isOpen) lines.push_back(tasks);
  }
  for (std::size_t m = 0; m < lines.size(); ++m) postMachine(model, lines[m], static_cast<int>(m));
  model.ordersBy = CS_ORDER_SLACK_WDEG;
  model.options.minimize = makespan;
  model.options.guided = true;
  model.options.restarts = CS_RESTARTS_GEOMETRIC;
}

// What a resource is asked for, in time times use, must fit before the end.
void boundByEnergy(Model &model, const Project &project, std::size_t resource, CSint *makespan) {
  long long energy = 0;
  for (std::size_t i = 0; i < project.durations.size(); ++i)
    energy += static_cast<long long>(project.durations[i]) * project.uses[resource][i];
  const int capacity = project.capacities[resource];
  model.require(cs_GE(makespan, static_cast<int>((energy + capacity - 1) / capacity)));
}

Array &postActivities(Model &model, const Project &project) {
  const auto n = static_cast<int>(project.durations.size());
  CSint *makespan = cs_createCSint(0, project.horizon());
  Array &starts = model.array(n, 0, project.horizon());
  Array &durations = model.array();
  for (const int duration : project.durations) durations.push_back(CSINT(duration));
  for (std::size_t i = 0; i < starts.size(); ++i) {
    model.require(cs_PrecedenceIf(nullptr, starts[i], durations[i], 0, makespan));
    for (const int next : project.successors[i])
      model.require(cs_PrecedenceIf(nullptr, starts[i], durations[i], 0, starts[static_cast<std::size_t>(next)]));
  }
  for (std::size_t r = 0; r < project.uses.size(); ++r) {
    Array &uses = model.array();
    for (const int use : project.uses[r]) uses.push_back(CSINT(use));
    boundByEnergy(model, project, r, makespan);
    model.require(
        cs_CumulativeTasks(starts.data(), durations.data(), uses.data(), nullptr, n, CSINT(project.capacities[r])));
  }
  model.options.minimize = makespan;
  return starts;
}

}  // namespace

void postJobShops(Model &model, int instance) {
  postShop(model, jobShops()[static_cast<std::size_t>(instance - 1)], false);
}

void postOpenShops(Model &model, int instance) {
  postShop(model, openShops()[static_cast<std::size_t>(instance - 1)], true);
}

void postProject(Model &model, int instance) {
  model.then = postActivities(model, projects()[static_cast<std::size_t>(instance - 1)]);
  model.thenBy = CS_ORDER_SET_TIMES;
}

void postProjectByFailures(Model &model, int instance) {
  model.vars = postActivities(model, projects()[static_cast<std::size_t>(instance - 1)]);
  model.options.order = CS_ORDER_DOM_WDEG;
  model.options.lastConflict = true;
  model.options.guided = true;
  model.options.restarts = CS_RESTARTS_GEOMETRIC;
}

void postChoices(Model &model, int) {
  const Choices choices;
  constexpr std::size_t kMachines = Choices::kMachines;
  std::vector<Array *> starts;
  std::vector<Array *> durations;
  std::vector<Array *> presents;
  for (std::size_t m = 0; m < kMachines; ++m) {
    starts.push_back(&model.array());
    durations.push_back(&model.array());
    presents.push_back(&model.array());
  }
  for (const auto &of : choices.durations) {
    Array &ownStarts = model.array();
    Array &ownDurations = model.array();
    Array &there = model.array(Choices::kMachines, 0, 1);
    CSint *duration = cs_createCSint(*std::min_element(of.begin(), of.end()), *std::max_element(of.begin(), of.end()));
    CSint *start = cs_createCSint(0, choices.horizon);
    CSint *end = cs_createCSint(0, choices.horizon);
    for (std::size_t m = 0; m < kMachines; ++m) {
      ownStarts.push_back(cs_createCSint(0, choices.horizon - of[m]));
      ownDurations.push_back(CSINT(of[m]));
      starts[m]->push_back(ownStarts.back());
      durations[m]->push_back(ownDurations.back());
      presents[m]->push_back(there[m]);
    }
    model.require(cs_PrecedenceIf(nullptr, start, duration, 0, end));
    model.require(cs_Alternative(start, duration, nullptr, ownStarts.data(), ownDurations.data(), there.data(),
                                 Choices::kMachines));
    model.vars.push_back(duration);
    model.then.push_back(start);
    model.then.insert(model.then.end(), there.begin(), there.end());
  }
  for (std::size_t m = 0; m < kMachines; ++m)
    model.require(cs_DisjunctiveTasks(starts[m]->data(), durations[m]->data(), presents[m]->data(), Choices::kTasks));
  model.options.solutions = 1;
}

}  // namespace koru::bench::searches
