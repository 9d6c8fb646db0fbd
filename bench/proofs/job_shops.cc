// SPDX-License-Identifier: MIT
// How often a search that prunes with cs_Disjunctive misses the least makespan of a job shop, and calls a longer one
// the best. Each shop is solved to the end with the orders of operations alone (cs_ReifLe both ways and cs_Neq, whose
// propagation refuses no schedule), with cs_Disjunctive on each machine besides, with cs_Disjunctive alone, the starts
// being labelled, and with cs_DisjunctiveTasks in the places of these two, which must never miss it. Every schedule
// found is checked by plain arithmetic, so a shorter one proves the longer "best" wrong. The same numbers on every
// platform.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "koru.h"
#include "koru_extras.h"

namespace {

struct Operation {
  int job;
  int machine;
  int duration;
};

struct Shop {
  int jobs;
  int machines;
  std::vector<Operation> operations;  // job by job, in the order of the job
};

// ----- instances

// A linear congruential generator (Knuth's MMIX multiplier), of which the upper bits are used.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  int below(int n) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<int>((state_ >> 33) % static_cast<unsigned>(n));
  }

 private:
  std::uint64_t state_;
};

// Every job visits all machines once, in a random order, for 1 to `longest` at each.
Shop randomShop(int jobs, int machines, int longest, int seed) {
  Random random(static_cast<std::uint64_t>(seed));
  Shop shop{jobs, machines, {}};
  for (int job = 0; job < jobs; ++job) {
    std::vector<int> order(machines);
    for (int k = 0; k < machines; ++k) order[k] = k;
    for (int k = machines - 1; k > 0; --k) std::swap(order[k], order[random.below(k + 1)]);
    for (const int machine : order) shop.operations.push_back({job, machine, 1 + random.below(longest)});
  }
  return shop;
}

// la03 of Lawrence (1984), whose least makespan is 597.
Shop la03() {
  static constexpr int kRows[10][10] = {{1, 23, 2, 45, 0, 82, 4, 84, 3, 38}, {2, 21, 1, 29, 0, 18, 4, 41, 3, 50},
                                        {2, 38, 3, 54, 4, 16, 0, 52, 1, 52}, {4, 37, 0, 54, 2, 74, 1, 62, 3, 57},
                                        {4, 57, 0, 81, 1, 61, 3, 68, 2, 30}, {4, 81, 0, 79, 1, 89, 2, 89, 3, 11},
                                        {3, 33, 2, 20, 0, 91, 4, 20, 1, 66}, {4, 24, 1, 84, 0, 32, 2, 55, 3, 8},
                                        {4, 56, 0, 7, 3, 54, 2, 64, 1, 39},  {4, 40, 1, 83, 0, 19, 2, 8, 3, 7}};
  Shop shop{10, 5, {}};
  for (int job = 0; job < 10; ++job)
    for (int k = 0; k < 10; k += 2) shop.operations.push_back({job, kRows[job][k], kRows[job][k + 1]});
  return shop;
}

// ----- the model

struct Pair {
  int first;
  int second;
  CSint *forward;
  CSint *backward;
};

// What the callbacks of a search are to know, which are given nothing but the variables that are labelled.
struct Model {
  const Shop *shop;
  std::vector<CSint *> starts;
  std::vector<CSint *> ends;
  std::vector<Pair> pairs;
  std::vector<std::pair<std::vector<CSint *>, std::vector<CSint *>>> machines;  // starts and durations
  CSint *makespan;
  int best;
  bool valid;
} model;

bool postJobs(const Shop &shop, int horizon) {
  CSint *previous = nullptr;
  for (std::size_t i = 0; i < shop.operations.size(); ++i) {
    CSint *start = cs_createCSint(0, horizon);
    CSint *end = cs_Add(start, CSINT(shop.operations[i].duration));
    if (i % static_cast<std::size_t>(shop.machines) != 0 && !cs_Le(previous, start)) return false;
    if (!cs_Le(end, model.makespan)) return false;
    model.starts.push_back(start);
    model.ends.push_back(end);
    previous = end;
  }
  return true;
}

bool postOrders(const Shop &shop) {
  const int n = static_cast<int>(shop.operations.size());
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      if (shop.operations[i].machine != shop.operations[j].machine) continue;
      CSint *forward = cs_ReifLe(model.ends[i], model.starts[j]);
      CSint *backward = cs_ReifLe(model.ends[j], model.starts[i]);
      if (!cs_Neq(forward, backward)) return false;
      model.pairs.push_back({i, j, forward, backward});
    }
  }
  return true;
}

bool postDisjunctives(const Shop &shop, bool sound) {
  model.machines.resize(static_cast<std::size_t>(shop.machines));
  for (std::size_t i = 0; i < shop.operations.size(); ++i) {
    auto &[starts, durations] = model.machines[static_cast<std::size_t>(shop.operations[i].machine)];
    starts.push_back(model.starts[i]);
    durations.push_back(CSINT(shop.operations[i].duration));
  }
  for (auto &[starts, durations] : model.machines) {
    const int n = static_cast<int>(starts.size());
    if (!(sound ? cs_DisjunctiveTasks(starts.data(), durations.data(), nullptr, n)
                : cs_Disjunctive(starts.data(), durations.data(), n)))
      return false;
  }
  return true;
}

// ----- the search

int room(int first, int second) { return cs_getMax(model.starts[second]) - cs_getMin(model.ends[first]); }

// The order with the least room left (an integer form of Smith and Cheng, 1993); of it, the tighter way is refused
// last.
CSint *selectOrder() {
  CSint *selected = nullptr;
  std::int64_t best = INT64_MAX;
  for (const Pair &pair : model.pairs) {
    if (!cs_isFree(pair.forward)) continue;
    const int forward = room(pair.first, pair.second);
    const int backward = room(pair.second, pair.first);
    const std::int64_t urgency = std::int64_t{4} * std::min(forward, backward) + std::max(forward, backward);
    if (urgency >= best) continue;
    best = urgency;
    selected = forward >= backward ? pair.backward : pair.forward;
  }
  return selected;
}

CSint *selectNext(CSint **starts, int size) {
  if (CSint *order = selectOrder()) return order;
  CSint *selected = nullptr;
  for (int i = 0; i < size; ++i)
    if (cs_isFree(starts[i]) && (selected == nullptr || cs_getMin(starts[i]) < cs_getMin(selected)))
      selected = starts[i];
  return selected == nullptr && cs_isFree(model.makespan) ? model.makespan : selected;
}

bool overlap(const Operation &a, int startOfA, const Operation &b, int startOfB) {
  return startOfA < startOfB + b.duration && startOfB < startOfA + a.duration;
}

// Whether the starts are a schedule of that makespan, by what a job shop is.
bool isSchedule(const Shop &shop, CSint **starts, int makespan) {
  const int n = static_cast<int>(shop.operations.size());
  for (int i = 0; i < n; ++i) {
    const Operation &a = shop.operations[i];
    const int start = cs_getValue(starts[i]);
    if (start < 0 || start + a.duration > makespan) return false;
    for (int j = i + 1; j < n; ++j) {
      const Operation &b = shop.operations[j];
      if (a.job == b.job && start + a.duration > cs_getValue(starts[j])) return false;
      if (a.machine == b.machine && overlap(a, start, b, cs_getValue(starts[j]))) return false;
    }
  }
  return true;
}

void keepSchedule(CSint **starts, int, CSint *makespan) {
  model.best = cs_getValue(makespan);
  model.valid = model.valid && isSchedule(*model.shop, starts, model.best);
}

enum Machines { kOrders, kBoth, kDisjunctive, kTasksToo, kTasks };

long long fails = 0;  // of the last search

// The makespan at which the search ends.
int solve(const Shop &shop, Machines machines) {
  cs_init();
  int horizon = 0;
  for (const Operation &operation : shop.operations) horizon += operation.duration;
  model = {&shop, {}, {}, {}, {}, cs_createCSint(0, horizon), -1, true};
  const bool posted = postJobs(shop, horizon) && (machines == kDisjunctive || machines == kTasks || postOrders(shop)) &&
                      (machines == kOrders || postDisjunctives(shop, machines >= kTasksToo));
  if (posted)
    cs_minimize(model.starts.data(), static_cast<int>(model.starts.size()), selectNext, model.makespan, keepSchedule);
  fails = cs_getNbFails();
  cs_end();
  if (!posted || !model.valid) std::puts("there is no model, or a schedule is none");
  return model.best;
}

// ----- what is printed

struct Tally {
  int wrong = 0;
  int most = 0;
  long long fails = 0;

  void note(int least, int found) {
    if (found > least) ++wrong;
    if (found < least) std::puts("the orders alone missed a schedule");
    most = std::max(most, found - least);
    fails += ::fails;
  }
};

std::string asText(const Tally &tally) {
  return std::to_string(tally.wrong) + ", by at most " + std::to_string(tally.most);
}

// Labelling starts takes minutes, so it is left out for larger shops and longer durations.
void printRow(int jobs, int machines, int count, int longest) {
  const bool labelsStarts = jobs <= 5 && longest <= 9;
  Tally both;
  Tally alone;
  Tally tasksToo;
  Tally tasks;
  Tally orders;
  for (int seed = 1; seed <= count; ++seed) {
    const Shop shop = randomShop(jobs, machines, longest, seed);
    const int least = solve(shop, kOrders);
    orders.note(least, least);
    both.note(least, solve(shop, kBoth));
    tasksToo.note(least, solve(shop, kTasksToo));
    if (!labelsStarts) continue;
    alone.note(least, solve(shop, kDisjunctive));
    tasks.note(least, solve(shop, kTasks));
  }
  std::printf("| %d jobs, %d machines, 1 to %d | %d | %s | %s | %d | %s | %lld | %lld |\n", jobs, machines, longest,
              count, asText(both).c_str(), labelsStarts ? asText(alone).c_str() : "", tasksToo.wrong,
              labelsStarts ? std::to_string(tasks.wrong).c_str() : "", orders.fails, tasksToo.fails);
  std::fflush(stdout);
}

}  // namespace

int main() {
  std::puts(
      "| shops, durations | solved | too long with orders and cs_Disjunctive | too long with cs_Disjunctive alone "
      "| too long with cs_DisjunctiveTasks | alone | fails with orders | and cs_DisjunctiveTasks |");
  std::puts("|---|---|---|---|---|---|---|---|");
  for (const int longest : {9, 99}) {
    printRow(5, 5, 200, longest);
    printRow(6, 5, 100, longest);
    printRow(7, 5, 40, longest);
  }
  const Shop shop = la03();
  const int least = solve(shop, kOrders);
  std::printf("\nla03: %d with the orders alone, %d with cs_Disjunctive besides, %d with cs_DisjunctiveTasks\n", least,
              solve(shop, kBoth), solve(shop, kTasksToo));
}
