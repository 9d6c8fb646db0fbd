// SPDX-License-Identifier: MIT
// koru_costs: what constraints take out and cost, each by itself on an example. Its variables are bound in random order
// to random values that are left, until one is refused or all are bound, each in a context of its own; then all is
// undone, and it begins anew. docs/constraints.md has the table.
//
//   koru_costs [NAME]     the rows whose functions have NAME in their names
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "costs/row.h"

namespace koru::bench::costs {

namespace {

constexpr int kWalks = 100;
constexpr int kRounds = 7;

struct Totals {
  long long changes = 0;
  long long refused = 0;
  long long removed = 0;  // values, but for those of the variable that was bound
};

int anyValue(CSint *v, Random &random) {
  const int value = cs_getMin(v) + random.below(cs_getMax(v) - cs_getMin(v) + 1);
  return cs_isIn(v, value) ? value : cs_getNextValue(v, value);
}

long long valuesIn(const Array &x) {
  long long count = 0;
  for (CSint *v : x) count += cs_getNbElements(v);
  return count;
}

// One walk from the root to a refusal or a solution.
template <bool counts>
void walk(const Array &x, Random &random, Totals &totals) {
  const int label = cs_saveContext();
  bool accepted = true;
  for (const int i : random.permutation(static_cast<int>(x.size()))) {
    CSint *v = x[static_cast<std::size_t>(i)];
    if (!accepted || !cs_isFree(v)) continue;
    const int value = anyValue(v, random);
    const long long before = counts ? valuesIn(x) - cs_getNbElements(v) + 1 : 0;
    cs_saveContext();
    accepted = cs_EQ(v, value);
    ++totals.changes;
    if (!accepted) ++totals.refused;
    if (counts && accepted) totals.removed += before - valuesIn(x);
  }
  cs_restoreContextUntil(label);
}

template <bool counts>
Totals walkOften(const Array &x) {
  Totals totals;
  Random random(7);
  for (int i = 0; i < kWalks; ++i) walk<counts>(x, random, totals);
  return totals;
}

void measure(const Row &row) {
  Model model;
  row.post(model);
  if (!model.consistent()) {
    std::printf("| %s | %s | a post failed |\n", row.function, row.instance);
    return;
  }
  const Array x = model.all();
  const Totals totals = walkOften<true>(x);
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < kRounds; ++i) {
    const double start = cpuSeconds();
    walkOften<false>(x);
    best = std::min(best, cpuSeconds() - start);
  }
  const auto changes = static_cast<double>(totals.changes);
  std::printf("| %s | %s | %.1f | %.0f %% | %.0f |\n", row.function, row.instance,
              static_cast<double>(totals.removed) / changes, 100 * static_cast<double>(totals.refused) / kWalks,
              best * 1e9 / changes);
  std::fflush(stdout);
}

void measureAll(const char *only) {
  std::puts("| function | example | values taken out | walks refused | ns |\n|---|---|--:|--:|--:|");
  for (const std::span<const Row> rows : {relationRows(), arrayRows(), scheduleRows()})
    for (const Row &row : rows)
      if (std::strstr(row.function, only) != nullptr) measure(row);
}

}  // namespace
}  // namespace koru::bench::costs

int main(int argc, char **argv) {
  koru::bench::costs::measureAll(argc > 1 ? argv[1] : "");
  return 0;
}
