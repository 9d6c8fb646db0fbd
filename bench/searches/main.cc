// SPDX-License-Identifier: MIT
// koru_searches: search objects on problems where the way of searching decides, as a table of what each comes to within
// a limit of processor time, when it had its best, and whether that was proved; quasigroups, schedules, car lines and
// rectangles also by Gecode, where it is there.
//
//   koru_searches [--seconds S] [--instances N] [--only NAME] [--by koru|gecode] [--order N]
//                 [--quasigroup ORDER/PERCENT] [--data FOLDER]
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "run.h"
#include "searches/cars.h"
#include "searches/problem.h"
#include "searches/processor_limit.h"
#include "searches/quasigroup.h"
#include "searches/rectangles.h"
#include "searches/schedules.h"

namespace koru::bench::searches {

namespace {

struct Arguments {
  double seconds = 10;
  int instances = 20;
  int order = -1;  // of variables, instead of the problem's own
  const char *only = "";
  const char *by = "";  // the name of the solver, when the other one is to be left out
};

#if !KORU_BENCH_HAS_GECODE
constexpr auto searchQuasigroupByGecode = nullptr;
constexpr auto searchJobShopByGecode = nullptr;
constexpr auto searchOpenShopByGecode = nullptr;
constexpr auto searchProjectByGecode = nullptr;
constexpr auto searchChoicesByGecode = nullptr;
constexpr auto searchCarsByGecode = nullptr;
constexpr auto searchCarsByFailuresByGecode = nullptr;
constexpr auto searchRectanglesByGecode = nullptr;
#endif

constexpr Problem kProblems[] = {
    {"quasigroup", 1000, false, postQuasigroup, searchQuasigroupByGecode},
    {"golfers 5-3-6", 5, false, postGolfers},
    {"job shop la01-05", 5, true, postJobShop},
    {"shop", 0, true, postJobShops, searchJobShopByGecode},
    {"open shop", 0, true, postOpenShops, searchOpenShopByGecode},
    {"project, set times", 0, true, postProject, searchProjectByGecode},
    {"project, failures", 0, true, postProjectByFailures},
    {"choices", 1, false, postChoices, searchChoicesByGecode},
    {"cars", 0, false, postCars, searchCarsByGecode},
    {"cars, failures", 0, false, postCarsByFailures, searchCarsByFailuresByGecode},
    {"rectangles", 0, true, postRectangles, searchRectanglesByGecode},
};

// Of a problem whose instances were read or drawn.
template <class Take>
void ofMany(const Problem &problem, const Take &take) {
  if (problem.post == postJobShops) take(jobShops());
  if (problem.post == postOpenShops) take(openShops());
  if (problem.post == postProject || problem.post == postProjectByFailures) take(projects());
  if (problem.post == postCars || problem.post == postCarsByFailures) take(carLines());
  if (problem.post == postRectangles) take(strips());
}

int instancesOf(const Problem &problem) {
  int count = problem.instances;
  ofMany(problem, [&](const auto &all) { count = static_cast<int>(all.size()); });
  return count;
}

std::string nameOf(const Problem &problem, int instance) {
  std::string name = std::to_string(instance);
  ofMany(problem, [&](const auto &all) { name = all[static_cast<std::size_t>(instance - 1)].name; });
  return name;
}

bool prepare(CSsearch *search, const Model &model) {
  return cs_setSearchOptions(search, &model.options) &&
         cs_addSearchOrders(search, model.orders.data(), static_cast<int>(model.orders.size()), model.ordersBy,
                            CS_VALUE_SLACK) &&
         cs_addSearchPhase(search, const_cast<CSint **>(model.then.data()), static_cast<int>(model.then.size()),
                           model.thenBy, CS_VALUE_MIN);
}

CSstatus searchFor(CSsearch *search, bool optimizes, double seconds) {
  const ProcessorLimit limit(search, seconds);
  CSstatus status = cs_nextSolution(search);
  while (optimizes && status == CS_STATUS_SOLUTION) status = cs_nextSolution(search);
  return status;
}

Result searchFor(const Model &model, double seconds) {
  CSsearch *search = cs_createSearch(const_cast<CSint **>(model.vars.data()), static_cast<int>(model.vars.size()));
  if (!prepare(search, model)) return {"refused"};
  const CSstatus status = searchFor(search, model.options.minimize != nullptr, seconds);
  CSsearchStats stats;
  cs_getSearchStats(search, &stats, sizeof stats);
  const char *name = status == CS_STATUS_STOPPED ? "time limit" : cs_getStatusName(status);
  Result result{name,          stats.solutions > 0, stats.objective, stats.secondsToBest,
                stats.seconds, stats.choicePoints,  stats.fails};
  cs_freeSearch(search);
  return result;
}

Result solve(const Problem &problem, int instance, const Arguments &arguments) {
  Model model;
  problem.post(model, instance);
  if (!model.consistent) return {"refused"};
  if (arguments.order >= 0) model.options.order = arguments.order;
  return searchFor(model, arguments.seconds);
}

void print(const Problem &problem, int instance, const char *solver, const Result &r, double time) {
  std::printf("%-20s %-16s  %-7s %-10s", problem.name, nameOf(problem, instance).c_str(), solver, r.status.c_str());
  if (r.found) {
    std::printf(" %6d", r.objective);
  } else {
    std::printf(" %6s", "-");
  }
  std::printf("  best after %8.3f s of %8.3f s, CPU time %8.3f s, %9lld choice points, %9lld fails\n", r.secondsToBest,
              r.seconds, time, r.choicePoints, r.fails);
  std::fflush(stdout);
}

struct Sum {
  int instances = 0;
  int found = 0;
  int proved = 0;
  double seconds = 0;

  void add(const Result &r, double time) {
    ++instances;
    found += r.found ? 1 : 0;
    proved += isProof(r) ? 1 : 0;
    seconds += time;
  }
  void print(const Problem &problem, const char *solver) const {
    if (instances == 0) return;
    std::printf("%-20s  all  %-7s %d of %d solved", problem.name, solver, found, instances);
    if (problem.optimizes) std::printf(", %d proved", proved);
    std::printf(", %.1f s of CPU time\n", seconds);
  }
};

// Solves an instance and adds the result; the time of the sum is CPU time, which other programs disturb less.
template <class Solve>
void run(const Problem &problem, int instance, const char *solver, Sum &sum, const Solve &solveOne) {
  const double start = cpuSeconds();
  const Result result = solveOne();
  const double time = cpuSeconds() - start;
  sum.add(result, time);
  print(problem, instance, solver, result, time);
}

// Solvers take turns, so that what else the machine does slows all of them.
void runAll(const Problem &problem, const Arguments &arguments) {
  Sum koru;
  Sum gecode;
  const int instances = std::min(instancesOf(problem), arguments.instances);
  for (int instance = 1; instance <= instances; ++instance) {
    if (std::strstr("koru", arguments.by) != nullptr)
      run(problem, instance, "koru", koru, [&] { return solve(problem, instance, arguments); });
    if (problem.peer != nullptr && std::strstr("gecode", arguments.by) != nullptr)
      run(problem, instance, "gecode", gecode, [&] { return problem.peer(instance, arguments.seconds); });
  }
  koru.print(problem, "koru");
  gecode.print(problem, "gecode");
}

void runAll(const Arguments &arguments) {
  if (std::strstr("stopping", arguments.only) != nullptr) measureStopping();
  measureOverhead(arguments.only, arguments.instances);
  for (const Problem &problem : kProblems)
    if (std::strstr(problem.name, arguments.only) != nullptr) runAll(problem, arguments);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("the most memory at a time: %ld kB\n", usage.ru_maxrss);
}

bool read(int argc, char **argv, Arguments &arguments) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const char *value = argv[i + 1];
    if (std::strcmp(argv[i], "--seconds") == 0) {
      arguments.seconds = std::atof(value);
    } else if (std::strcmp(argv[i], "--instances") == 0) {
      arguments.instances = std::atoi(value);
    } else if (std::strcmp(argv[i], "--only") == 0) {
      arguments.only = value;
    } else if (std::strcmp(argv[i], "--by") == 0) {
      arguments.by = value;
    } else if (std::strcmp(argv[i], "--order") == 0) {
      arguments.order = std::atoi(value);
    } else if (std::strcmp(argv[i], "--data") == 0) {
      dataFolder = value;
    } else if (std::strcmp(argv[i], "--quasigroup") == 0) {
      if (std::sscanf(value, "%d/%d", &shape.order, &shape.percent) != 2) return false;
    } else {
      return false;
    }
  }
  return argc % 2 == 1;
}

}  // namespace
}  // namespace koru::bench::searches

int main(int argc, char **argv) {
  koru::bench::searches::Arguments arguments;
  if (!koru::bench::searches::read(argc, argv, arguments)) {
    std::fputs(
        "usage: koru_searches [--seconds S] [--instances N] [--only NAME] [--by koru|gecode] [--order N] "
        "[--quasigroup ORDER/PERCENT] [--data FOLDER]\n",
        stderr);
    return 2;
  }
  koru::bench::searches::runAll(arguments);
  return 0;
}
