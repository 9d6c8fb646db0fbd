// SPDX-License-Identifier: MIT
// What a search object costs over cs_findAll, on problems whose nodes are cheap and whose trees are the same: CPU times
// of runs in turn. Instructions are counted by callgrind in the two functions of C linkage, which it finds by name:
//
//   valgrind --tool=callgrind --toggle-collect=koru_plain koru_searches --only pigeons --instances 1
//   valgrind --tool=callgrind --toggle-collect=koru_object koru_searches --only pigeons --instances 1
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "run.h"
#include "searches/problem.h"

namespace koru::bench::searches {

namespace {

struct Labelling {
  const char *name;
  bool (*post)(Model &model);
  CSfindFreeVar select;
  int order;
};

bool postPigeons(Model &model) {
  constexpr int kPigeons = 9;
  model.vars = model.array(kPigeons, 0, kPigeons - 2);
  for (std::size_t i = 0; i < kPigeons; ++i)
    for (std::size_t j = i + 1; j < kPigeons; ++j) model.require(cs_Neq(model.vars[i], model.vars[j]));
  return model.consistent;
}

bool postQueens(Model &model) {
  constexpr int kQueens = 10;
  model.vars = model.array(kQueens, 0, kQueens - 1);
  Array &up = model.array();
  Array &down = model.array();
  for (int i = 0; i < kQueens; ++i) {
    up.push_back(cs_Add(model.vars[static_cast<std::size_t>(i)], CSINT(i)));
    down.push_back(cs_Sub(model.vars[static_cast<std::size_t>(i)], CSINT(i)));
  }
  for (Array *each : {&model.vars, &up, &down}) model.require(cs_AllNeq(each->data(), kQueens));
  return model.consistent;
}

constexpr Labelling kLabellings[] = {
    {"overhead, pigeons 9", postPigeons, cs_findFreeVar, CS_ORDER_INPUT},
    {"overhead, queens 10", postQueens, cs_findFreeVarNbElements, CS_ORDER_SMALLEST},
};

}  // namespace
}  // namespace koru::bench::searches

using koru::bench::searches::Labelling;
using koru::bench::searches::Model;

// Both: everything, from the first choice to the last undo. The number of choice points.
extern "C" [[gnu::noinline]] long long koru_plain(Model *model, const Labelling *l) {
  cs_findAll(model->vars.data(), static_cast<int>(model->vars.size()), l->select, nullptr);
  return cs_getNbChoicePoints();
}

extern "C" [[gnu::noinline]] long long koru_object(Model *model, const Labelling *l) {
  CSsearchOptions options{};
  options.size = sizeof options;
  options.order = l->order;
  options.branching = CS_BRANCH_VALUES;
  CSsearch *search = cs_createSearch(model->vars.data(), static_cast<int>(model->vars.size()));
  cs_setSearchOptions(search, &options);
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
  CSsearchStats stats{};
  cs_getSearchStats(search, &stats, sizeof stats);
  cs_freeSearch(search);
  return stats.choicePoints;
}

namespace koru::bench::searches {

namespace {

// Seconds of a run, the least of those so far.
long long timed(long long (*search)(Model *, const Labelling *), const Labelling &l, double &least) {
  Model model;
  if (!l.post(model)) return -1;
  const double start = cpuSeconds();
  const long long choicePoints = search(&model, &l);
  least = std::min(least, cpuSeconds() - start);
  return choicePoints;
}

}  // namespace

void measureOverhead(const char *only, int rounds) {
  for (const Labelling &l : kLabellings) {
    if (std::strstr(l.name, only) == nullptr) continue;
    double plain = 1e9;
    double object = 1e9;
    long long choicePoints = 0;
    bool same = true;
    for (int i = 0; i < rounds; ++i) {
      choicePoints = timed(koru_plain, l, plain);
      same = same && timed(koru_object, l, object) == choicePoints;
    }
    std::printf(
        "%-20s cs_findAll %.1f ns, search object %.1f ns for each of %lld choice points, %.3f times as much%s\n",
        l.name, plain * 1e9 / static_cast<double>(choicePoints), object * 1e9 / static_cast<double>(choicePoints),
        choicePoints, object / plain, same ? "" : ", NOT THE SAME TREE");
  }
}

}  // namespace koru::bench::searches
