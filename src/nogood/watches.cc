// SPDX-License-Identifier: MIT
#include "nogood/watches.h"

namespace koru {

namespace {

const NoGoodElement &watchedElement(const CSnoGood &noGood, int which) {
  return noGood.elements()[noGood.watched[which]];
}

bool isEntailedElement(const CSnoGoodSet &set, const NoGoodElement &e) {
  return isEntailed(e.decision, set.array[e.index]);
}

void watch(CSnoGoodSet &set, CSnoGood &noGood, int which, int element) {
  noGood.watched[which] = element;
  noGood.nodes[which].linkAt(&set.watchLists[noGood.elements()[element].index]);
}

// Searches cyclically, from half the elements past the other watch on. -1 when every element but that is entailed.
int findWatch(const CSnoGoodSet &set, const CSnoGood &noGood, int other) {
  const int n = noGood.count;
  int element = (n / 2 + other) % n;
  for (int visits = 0; visits < n; ++visits) {
    if (element != other && !isEntailedElement(set, noGood.elements()[element])) return element;
    if (++element == n) element = 0;
  }
  return -1;
}

// All other elements hold, so this one must not.
bool imposeNegation(const CSnoGoodSet &set, const NoGoodElement &e) {
  CSint *v = set.array[e.index];
  if (!isUndecided(e.decision, v)) return !isEntailed(e.decision, v);
  const CSvalueSelection negation = negationOf(e.decision);
  return cs_selectValue(v, &negation);
}

bool isTriggered(const CSnoGoodSet &set, const CSnoGood &noGood, int which, int position) {
  const NoGoodElement &e = watchedElement(noGood, which);
  return e.index == position && isEntailedElement(set, e);
}

bool react(CSnoGoodSet &set, CSnoGood &noGood, int position) {
  if (noGood.count == 1) return imposeNegation(set, noGood.elements()[0]);
  for (const int which : {0, 1}) {
    if (!isTriggered(set, noGood, which, position)) continue;
    const int other = noGood.watched[1 - which];
    const int element = findWatch(set, noGood, other);
    if (element < 0) return imposeNegation(set, noGood.elements()[other]);
    noGood.nodes[which].unlink();
    watch(set, noGood, which, element);
  }
  return true;
}

bool hasWork(const CSnoGoodSet &set, const CSnoGood &noGood, int position) {
  if (noGood.deleted) return false;
  return noGood.count == 1 || isTriggered(set, noGood, 0, position) || isTriggered(set, noGood, 1, position);
}

// A node behind the one that is visited, so that the walk finds its way on wherever watches move. Those that arrive in
// this list come in front of it.
class Place : public WatchNode {
 public:
  explicit Place(WatchNode *after) { linkAt(&after->next); }
  Place(const Place &) = delete;
  Place &operator=(const Place &) = delete;
  ~Place() { unlink(); }
};

CSnoGood *firstFailing(CSnoGoodSet &set, int position) {
  WatchNode *node = set.watchLists[position];
  while (node != nullptr) {
    CSnoGood *noGood = node->noGood;
    if (noGood == nullptr || !hasWork(set, *noGood, position)) {
      node = node->next;
      continue;
    }
    const Place place(node);
    if (!react(set, *noGood, position)) return noGood;
    node = place.next;
  }
  return nullptr;
}

}  // namespace

void startWatching(CSnoGoodSet &set, CSnoGood &noGood) {
  watch(set, noGood, 0, 0);
  watch(set, noGood, 1, noGood.count > 1 ? 1 : 0);
}

void stopWatching(CSnoGood &noGood) {
  for (WatchNode &node : noGood.nodes) node.unlink();
}

bool propagateNoGoods(CSnoGoodSet &set, int position) {
  const Hold hold(set);
  CSnoGood *failed = firstFailing(set, position);
  if (failed == nullptr) return true;
  if (set.holds == 1) makeNewest(set, *failed);
  return false;
}

}  // namespace koru
