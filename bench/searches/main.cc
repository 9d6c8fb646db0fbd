// SPDX-License-Identifier: MIT
// koru_searches: search objects on problems where the way of searching decides, as a table of what each comes to within
// a limit, when it had its best, and whether that was proved; quasigroups also by Gecode, where it is there.
//
//   koru_searches [--seconds S] [--instances N] [--only NAME] [--order N]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

struct Arguments {
  double seconds = 10;
  int instances = 20;
  int order = -1;  // of variables, instead of the problem's own
  const char *only = "";
};

constexpr Problem kProblems[] = {
    {"quasigroup 30/42 %", 1000, false, postQuasigroup},
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
  int found = 0;
  int proved = 0;
  double seconds = 0;

  void add(const Result &r) {
    found += r.found ? 1 : 0;
    proved += isProof(r) ? 1 : 0;
    seconds += r.seconds;
  }
  void print(const char *name, const char *solver, int instances, bool optimizes) const {
    std::printf("%-20s  all  %-7s %d of %d solved", name, solver, found, instances);
    if (optimizes) std::printf(", %d proved", proved);
    std::printf(", %.1f s\n\n", seconds);
  }
};

template <class Solve>
void run(const Problem &problem, const char *solver, const Arguments &arguments, const Solve &solveOne) {
  Sum sum;
  const int instances = std::min(problem.instances, arguments.instances);
  for (int instance = 1; instance <= instances; ++instance) {
    const Result result = solveOne(instance);
    print(problem.name, instance, solver, result);
    sum.add(result);
  }
  sum.print(problem.name, solver, instances, problem.optimizes);
}

void runAll(const Arguments &arguments) {
  if (std::strstr("stopping", arguments.only) != nullptr) measureStopping();
  measureOverhead(arguments.only, arguments.instances);
  for (const Problem &problem : kProblems) {
    if (std::strstr(problem.name, arguments.only) == nullptr) continue;
    run(problem, "koru", arguments, [&](int instance) { return solve(problem, instance, arguments); });
#if KORU_BENCH_HAS_GECODE
    if (problem.post == postQuasigroup)
      run(problem, "gecode", arguments,
          [&](int instance) { return searchQuasigroupByGecode(instance, arguments.seconds); });
#endif
  }
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
    std::fputs("usage: koru_searches [--seconds S] [--instances N] [--only NAME] [--order N]\n", stderr);
    return 2;
  }
  koru::bench::searches::runAll(arguments);
  return 0;
}
