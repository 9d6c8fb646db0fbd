// SPDX-License-Identifier: MIT
// koru_curves: how times and memory grow with the size of a model, up to 10^6 variables and 10^7 constraints.
//
//   koru_curves [--most N] [--only TEXT]
//
// A row for each curve and size: nanoseconds of CPU time and bytes of heap for each unit (least of several runs), and
// the exponent of growth from the size before: 1 is linear. Memory that no cache holds any more makes single steps
// exceed 1; what is superlinear exceeds it from size to size.
#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "instances.h"
#include "koru_extras.h"
#include "run.h"

using namespace koru::bench;

namespace {

struct Cost {
  double seconds = 0;
  double bytes = 0;
};

double heapInUse() {
  const auto use = mallinfo2();
  return static_cast<double>(use.uordblks + use.hblkhd);
}

[[noreturn]] void giveUp(const char *what) {
  std::fprintf(stderr, "koru_curves: %s failed\n", what);
  std::exit(1);
}

void require(bool held, const char *what) {
  if (!held) giveUp(what);
}

// What `step` takes, and leaves on the heap.
template <class Step>
Cost costOf(Step step) {
  const double bytes = heapInUse();
  const double start = cpuSeconds();
  require(step(), "a step");
  return {cpuSeconds() - start, heapInUse() - bytes};
}

constexpr int kRaises = 5;

// Variable i in i..i+kRaises.
Array &slackVariables(Lifetime &lifetime, int n) {
  Array &x = lifetime.array();
  x.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) x.push_back(cs_createCSint(i, i + kRaises));
  return x;
}

bool postOrder(const Array &x) {
  for (std::size_t i = 1; i < x.size(); ++i)
    if (!cs_Lt(x[i - 1], x[i])) return false;
  return true;
}

// Each raise moves all variables that follow.
bool raiseFirst(CSint *first) {
  const int from = cs_getMin(first);
  for (int q = 1; q <= kRaises; ++q)
    if (!cs_GE(first, from + q)) return false;
  return true;
}

Cost makeVariables(int n) {
  Lifetime lifetime;
  Array &x = lifetime.array();
  x.reserve(static_cast<std::size_t>(n));
  return costOf([&] {
    for (int i = 0; i < n; ++i) x.push_back(cs_createCSint(0, 9));
    return x.back() != nullptr;
  });
}

Cost postChain(int n) {
  Lifetime lifetime;
  Array &x = slackVariables(lifetime, n);
  return costOf([&] { return postOrder(x); });
}

Cost raiseChain(int n) {
  Lifetime lifetime;
  Array &x = slackVariables(lifetime, n);
  require(postOrder(x), "a chain");
  return costOf([&] { return raiseFirst(x[0]); });
}

Cost undoChain(int n) {
  Lifetime lifetime;
  Array &x = slackVariables(lifetime, n);
  require(postOrder(x), "a chain");
  cs_saveContext();
  require(raiseFirst(x[0]), "raising");
  return costOf([] {
    cs_restoreContext();
    return true;
  });
}

Cost endChain(int n) {
  cs_init();
  Array x;
  for (int i = 0; i < n; ++i) x.push_back(cs_createCSint(i, i + kRaises));
  require(postOrder(x), "a chain");
  return costOf([] {
    cs_end();
    return true;
  });
}

Cost raiseLadder(int n) {
  Lifetime lifetime;
  CSint *const first = cs_createCSint(0, kRaises);
  CSint *last = first;
  for (int i = 0; i < n; ++i) last = cs_Add(last, cs_createCSint(0, 1));
  return costOf([&] { return last != nullptr && raiseFirst(first); });
}

Cost postPairs(int n) {
  Random random(1);
  const Pairs pairs = differentPairs(random, kPairVariables, static_cast<std::size_t>(n));
  Lifetime lifetime;
  Array &x = lifetime.array(kPairVariables, 0, 9);
  return costOf([&] {
    for (const auto &[a, b] : pairs)
      if (!cs_Neq(x[static_cast<std::size_t>(a)], x[static_cast<std::size_t>(b)])) return false;
    return true;
  });
}

// One event of a sum, and of a scalar product.
Cost moveTerm(int n) {
  Lifetime lifetime;
  Array &x = lifetime.array(n, 0, 1);
  std::vector<int> coefficients(x.size(), 2);
  require(cs_Sigma(x.data(), n) != nullptr && cs_ScalProd(x.data(), coefficients.data(), n) != nullptr, "a sum");
  return costOf([&] { return cs_EQ(x[0], 1); });
}

// A level for each variable, no fails.
Array &levels(Lifetime &lifetime, int n) {
  Array &x = lifetime.array(n, 0, 1);
  for (std::size_t i = 1; i < x.size(); ++i) require(cs_Le(x[i - 1], x[i]), "an order");
  require(cs_EQ(x.back(), 1), "the last one");
  return x;
}

Cost searchHere(int n) {
  Lifetime lifetime;
  Array &x = levels(lifetime, n);
  return costOf([&] { return cs_search(x.data(), n, cs_findFreeVar); });
}

Cost searchByObject(int n) {
  Lifetime lifetime;
  Array &x = levels(lifetime, n);
  CSsearch *const object = cs_createSearch(x.data(), n);
  require(object != nullptr, "a search object");
  return costOf([&] { return cs_nextSolution(object) == CS_STATUS_SOLUTION; });
}

// A level takes 80 bytes of stack.
Cost search(int n) {
  struct Task {
    int size;
    Cost cost;
  } task{n, {}};
  pthread_attr_t attributes;
  pthread_t thread;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, std::size_t{128} * static_cast<std::size_t>(n) + (std::size_t{1} << 20));
  const auto run = [](void *argument) -> void * {
    auto *given = static_cast<Task *>(argument);
    given->cost = searchHere(given->size);
    return nullptr;
  };
  require(pthread_create(&thread, &attributes, run, &task) == 0, "a thread");
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  return task.cost;
}

struct Curve {
  const char *name;
  const char *unit;
  int unitsPerSize;
  int most;
  Cost (*run)(int n);
};

constexpr int kMillion = 1000000;
constexpr Curve kCurves[] = {
    {"variables made", "variable", 1, kMillion, makeVariables},
    {"chain posted", "constraint", 1, kMillion, postChain},
    {"chain raised", "event", kRaises, kMillion, raiseChain},
    {"chain undone", "event", kRaises, kMillion, undoChain},
    {"chain ended", "constraint", 1, kMillion, endChain},
    {"ladder raised", "event", kRaises, kMillion, raiseLadder},
    {"disequalities posted", "constraint", 1, 10 * kMillion, postPairs},
    {"term of two sums moved", "term", 1, kMillion, moveTerm},
    {"first solution", "level", 1, kMillion, search},
    {"the same, search object", "level", 1, kMillion, searchByObject},
};

Cost best(const Curve &curve, int n) {
  Cost least = curve.run(n);
  for (int runs = 1; least.seconds < 2 && (runs < 3 || (runs < 50 && least.seconds * runs < 0.01)); ++runs) {
    const Cost cost = curve.run(n);
    least = {std::min(least.seconds, cost.seconds), std::min(least.bytes, cost.bytes)};
  }
  return least;
}

void draw(const Curve &curve, int most) {
  double before = 0;
  for (int n = 1000; n <= std::min(most, curve.most); n *= 10) {
    const Cost cost = best(curve, n);
    const double units = static_cast<double>(n) * curve.unitsPerSize;
    std::printf("%-24s %9d %-11s %9.1f %9.1f", curve.name, n, curve.unit, cost.seconds * 1e9 / units,
                std::max(cost.bytes, 0.0) / units);
    if (before > 0) std::printf(" %9.2f", std::log10(cost.seconds / before));
    std::printf("\n");
    std::fflush(stdout);
    before = cost.seconds;
  }
}

}  // namespace

int main(int argc, char **argv) {
  mallopt(M_ARENA_MAX, 1);  // what heapInUse tells of
  int most = 10 * kMillion;
  std::string only;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--most") == 0) most = std::atoi(argv[i + 1]);
    if (std::strcmp(argv[i], "--only") == 0) only = argv[i + 1];
  }
  std::printf("%-24s %9s %-11s %9s %9s %9s\n", "curve", "size", "unit", "ns/unit", "bytes", "exponent");
  for (const Curve &curve : kCurves)
    if (std::string(curve.name).find(only) != std::string::npos) draw(curve, most);
}
