// SPDX-License-Identifier: MIT
#include "nogood/shorten.h"

#include "core/solver.h"
#include "nogood/watches.h"
#include "search/branching.h"

namespace koru {

namespace {

bool post(const CSnoGoodSet &set, const CSnoGood &noGood, int i) {
  const NoGoodElement &e = noGood.elements()[i];
  return cs_selectValue(set.array[e.index], &e.decision);
}

// Posts the decisions in order, each in a context of its own, which is left open. The first that is refused; -1 when
// none is, or a context cannot be had.
int firstRefused(const CSnoGoodSet &set, const CSnoGood &noGood) {
  for (int i = 0; i < noGood.count; ++i) {
    if (!openContext()) return -1;
    if (!post(set, noGood, i)) return i;
  }
  return -1;
}

// How many decisions just before the refused one do not matter: they are taken back one by one until it is accepted.
int countIrrelevant(const CSnoGoodSet &set, const CSnoGood &noGood, int refused) {
  cs_restoreContext();
  for (int dropped = 0; dropped < refused; ++dropped) {
    cs_restoreContext();
    cs_saveContext();
    if (post(set, noGood, refused)) return dropped;
    cs_restoreContext();
  }
  return refused;
}

void drop(CSnoGoodSet &set, CSnoGood &noGood, int refused, int dropped) {
  stopWatching(noGood);
  noGood.elements()[refused - dropped] = noGood.elements()[refused];
  noGood.count = refused - dropped + 1;
  startWatching(set, noGood);
}

// True when it became shorter. A refusal for want of memory proves nothing.
bool shorten(CSnoGoodSet &set, CSnoGood &noGood) {
  const unsigned reportsBefore = solver::errors.memoryReports;
  if (!openContext()) return false;
  const int label = solver::contexts.count();
  const int refused = firstRefused(set, noGood);
  const int dropped = refused < 0 ? 0 : countIrrelevant(set, noGood, refused);
  cs_restoreContextUntil(label);
  if (dropped == 0 || solver::errors.memoryReports != reportsBefore) return false;
  drop(set, noGood, refused, dropped);
  return true;
}

}  // namespace

void shortenNewest(CSnoGoodSet &set) {
  const Hold hold(set);
  for (CSnoGood *noGood = set.newest; noGood != nullptr; noGood = noGood->older) {
    if (noGood->processed || noGood->deleted) continue;
    noGood->processed = true;
    if (!shorten(set, *noGood)) return;
  }
}

}  // namespace koru
