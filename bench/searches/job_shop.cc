// SPDX-License-Identifier: MIT
// Job shops la01 to la05 of Lawrence (1984): 10 jobs on 5 machines, the least makespan. Which of two operations on a
// machine comes first is a 0/1 variable; those are labelled, and then the starts.
#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

constexpr int kJobs = 10;
constexpr int kMachines = 5;

struct Operation {
  int machine;
  int duration;
};

constexpr Operation kShops[][kJobs][kMachines] = {{{{1, 21}, {0, 53}, {4, 95}, {3, 55}, {2, 34}},
                                                   {{0, 21}, {3, 52}, {4, 16}, {2, 26}, {1, 71}},
                                                   {{3, 39}, {4, 98}, {1, 42}, {2, 31}, {0, 12}},
                                                   {{1, 77}, {0, 55}, {4, 79}, {2, 66}, {3, 77}},
                                                   {{0, 83}, {3, 34}, {2, 64}, {1, 19}, {4, 37}},
                                                   {{1, 54}, {2, 43}, {4, 79}, {0, 92}, {3, 62}},
                                                   {{3, 69}, {4, 77}, {1, 87}, {2, 87}, {0, 93}},
                                                   {{2, 38}, {0, 60}, {1, 41}, {3, 24}, {4, 83}},
                                                   {{3, 17}, {1, 49}, {4, 25}, {0, 44}, {2, 98}},
                                                   {{4, 77}, {3, 79}, {2, 43}, {1, 75}, {0, 96}}},
                                                  {{{0, 20}, {3, 87}, {1, 31}, {4, 76}, {2, 17}},
                                                   {{4, 25}, {2, 32}, {0, 24}, {1, 18}, {3, 81}},
                                                   {{1, 72}, {2, 23}, {4, 28}, {0, 58}, {3, 99}},
                                                   {{2, 86}, {1, 76}, {4, 97}, {0, 45}, {3, 90}},
                                                   {{4, 27}, {0, 42}, {3, 48}, {2, 17}, {1, 46}},
                                                   {{1, 67}, {0, 98}, {4, 48}, {3, 27}, {2, 62}},
                                                   {{4, 28}, {1, 12}, {3, 19}, {0, 80}, {2, 50}},
                                                   {{1, 63}, {0, 94}, {2, 98}, {3, 50}, {4, 80}},
                                                   {{4, 14}, {0, 75}, {2, 50}, {1, 41}, {3, 55}},
                                                   {{4, 72}, {2, 18}, {1, 37}, {3, 79}, {0, 61}}},
                                                  {{{1, 23}, {2, 45}, {0, 82}, {4, 84}, {3, 38}},
                                                   {{2, 21}, {1, 29}, {0, 18}, {4, 41}, {3, 50}},
                                                   {{2, 38}, {3, 54}, {4, 16}, {0, 52}, {1, 52}},
                                                   {{4, 37}, {0, 54}, {2, 74}, {1, 62}, {3, 57}},
                                                   {{4, 57}, {0, 81}, {1, 61}, {3, 68}, {2, 30}},
                                                   {{4, 81}, {0, 79}, {1, 89}, {2, 89}, {3, 11}},
                                                   {{3, 33}, {2, 20}, {0, 91}, {4, 20}, {1, 66}},
                                                   {{4, 24}, {1, 84}, {0, 32}, {2, 55}, {3, 8}},
                                                   {{4, 56}, {0, 7}, {3, 54}, {2, 64}, {1, 39}},
                                                   {{4, 40}, {1, 83}, {0, 19}, {2, 8}, {3, 7}}},
                                                  {{{0, 12}, {2, 94}, {3, 92}, {4, 91}, {1, 7}},
                                                   {{1, 19}, {3, 11}, {4, 66}, {2, 21}, {0, 87}},
                                                   {{1, 14}, {0, 75}, {3, 13}, {4, 16}, {2, 20}},
                                                   {{2, 95}, {4, 66}, {0, 7}, {3, 7}, {1, 77}},
                                                   {{1, 45}, {3, 6}, {4, 89}, {0, 15}, {2, 34}},
                                                   {{3, 77}, {2, 20}, {0, 76}, {4, 88}, {1, 53}},
                                                   {{2, 74}, {1, 88}, {0, 52}, {3, 27}, {4, 9}},
                                                   {{1, 88}, {3, 69}, {0, 62}, {4, 98}, {2, 52}},
                                                   {{2, 61}, {4, 9}, {0, 62}, {1, 52}, {3, 90}},
                                                   {{2, 54}, {4, 5}, {3, 59}, {1, 15}, {0, 88}}},
                                                  {{{1, 72}, {0, 87}, {4, 95}, {2, 66}, {3, 60}},
                                                   {{4, 5}, {3, 35}, {0, 48}, {2, 39}, {1, 54}},
                                                   {{1, 46}, {3, 20}, {2, 21}, {0, 97}, {4, 55}},
                                                   {{0, 59}, {3, 19}, {4, 46}, {1, 34}, {2, 37}},
                                                   {{4, 23}, {2, 73}, {3, 25}, {1, 24}, {0, 28}},
                                                   {{3, 28}, {0, 45}, {4, 5}, {1, 78}, {2, 83}},
                                                   {{0, 53}, {3, 71}, {1, 37}, {4, 29}, {2, 12}},
                                                   {{4, 12}, {2, 87}, {3, 33}, {1, 55}, {0, 38}},
                                                   {{2, 49}, {3, 83}, {1, 40}, {0, 48}, {4, 7}},
                                                   {{2, 65}, {3, 17}, {0, 90}, {4, 27}, {1, 23}}}};

struct Placed {
  CSint *start;
  CSint *end;
};

void order(Model &model, const Placed &a, const Placed &b) {
  CSint *first = cs_ReifLe(a.end, b.start);
  CSint *second = cs_ReifLe(b.end, a.start);
  model.require(cs_Neq(first, second));
  model.vars.push_back(first);
}

}  // namespace

void postJobShop(Model &model, int instance) {
  const auto &shop = kShops[instance - 1];
  int horizon = 0;
  for (const auto &job : shop)
    for (const Operation &operation : job) horizon += operation.duration;
  CSint *makespan = cs_createCSint(0, horizon);
  std::vector<Placed> onMachine[kMachines];
  for (const auto &job : shop) {
    CSint *previous = nullptr;
    for (const Operation &operation : job) {
      CSint *start = cs_createCSint(0, horizon);
      CSint *end = cs_Add(start, CSINT(operation.duration));
      model.require((previous == nullptr || cs_Le(previous, start)) && cs_Le(end, makespan));
      onMachine[operation.machine].push_back({start, end});
      model.then.push_back(start);
      previous = end;
    }
  }
  for (const auto &operations : onMachine)
    for (std::size_t i = 0; i < operations.size(); ++i)
      for (std::size_t j = i + 1; j < operations.size(); ++j) order(model, operations[i], operations[j]);
  model.options.order = CS_ORDER_DOM_WDEG;
  model.options.guided = true;
  model.options.minimize = makespan;
  model.options.lastConflict = true;
  model.options.restarts = CS_RESTARTS_GEOMETRIC;
  model.options.restartFails = 100;
}

}  // namespace koru::bench::searches
