// SPDX-License-Identifier: MIT
// koru_searches: search objects on problems where the way of searching decides, as a table of what each comes to within
// a limit, when it had its best, and whether that was proved; quasigroups also by Gecode, where it is there.
//
//   koru_searches [--seconds S] [--instances N] [--only NAME] [--order N] [--quasigroup ORDER/PERCENT]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "run.h"
#include "searches/problem.h"
#include "searches/quasigroup.h"

namespace koru::bench::searches {

namespace {

struct Arguments {
  double seconds = 10;
  int instances = 20;
  int order = -1;  // of variables, instead of the problem's own
  const char *only = "";
};

constexpr Problem kProblems[] = {
    {"quasigroup", 1000, false, postQuasigroup},
    {"golfers 5-3-6", 5, false, postGolfers},
    {"job shop la01-05", 5, true, postJobShop},
};

Result searchFor(Model &model, double seconds) {
  model.options.milliseconds = static_cast<long long>(seconds * 1000);
  CSsearch *search = cs_createSearch(model.vars.data(), static_cast<int>(model.vars.size()));
  const bool told = cs_setSearchOptions(search, &model.options) &&
                    cs_addSearchPhase(search, model.then.data(), static_cast<int>(model.then.size()),
                                      CS_ORDER_SMALLEST_MIN, CS_VALUE_MIN);
  if (!told) return {"refused"};
  const bool optimizes = model.options.minimize != nullptr;
  CSstatus status = cs_nextSolution(search);
  while (optimizes && status == CS_STATUS_SOLUTION) status = cs_nextSolution(search);
  CSsearchStats stats;
  cs_getSearchStats(search, &stats, sizeof stats);
  Result result{cs_getStatusName(status), stats.solutions > 0, stats.objective, stats.secondsToBest, stats.seconds,
                stats.choicePoints,       stats.fails};
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

void print(const char *name, int instance, const char *solver, const Result &r) {
  std::printf("%-20s %4d  %-7s %-10s", name, instance, solver, r.status.c_str());
  if (r.found) {
    std::printf(" %6d", r.objective);
  } else {
    std::printf(" %6s", "-");
  }
  std::printf("  best after %8.3f s of %8.3f s, %9lld choice points, %9lld fails\n", r.secondsToBest, r.seconds,
              r.choicePoints, r.fails);
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
  sum.add(result, cpuSeconds() - start);
  print(problem.name, instance, solver, result);
}

// Solvers take turns, so that what else the machine does slows all of them.
void runAll(const Problem &problem, const Arguments &arguments) {
  Sum koru;
  Sum gecode;
  const int instances = std::min(problem.instances, arguments.instances);
  for (int instance = 1; instance <= instances; ++instance) {
    run(problem, instance, "koru", koru, [&] { return solve(problem, instance, arguments); });
#if KORU_BENCH_HAS_GECODE
    if (problem.post == postQuasigroup)
      run(problem, instance, "gecode", gecode, [&] { return searchQuasigroupByGecode(instance, arguments.seconds); });
#endif
  }
  koru.print(problem, "koru");
  gecode.print(problem, "gecode");
}

void runAll(const Arguments &arguments) {
  if (std::strstr("stopping", arguments.only) != nullptr) measureStopping();
  measureOverhead(arguments.only, arguments.instances);
  for (const Problem &problem : kProblems)
    if (std::strstr(problem.name, arguments.only) != nullptr) runAll(problem, arguments);
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
    } else if (std::strcmp(argv[i], "--order") == 0) {
      arguments.order = std::atoi(value);
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
        "usage: koru_searches [--seconds S] [--instances N] [--only NAME] [--order N] [--quasigroup ORDER/PERCENT]\n",
        stderr);
    return 2;
  }
  koru::bench::searches::runAll(arguments);
  return 0;
}
