// SPDX-License-Identifier: MIT
// cs_createNoGoodSet and what is done with a set: no-goods of an array as one constraint.
// Consistency: unit propagation.  Cost and state: see watches.h; an insertion looks at every no-good there is.
// Wakes: at every event.  A no-good that is added while its elements hold already is not looked at before one of its
// two watched variables changes.
// Deliberate: cs_addNoGood takes only indexes below the number of elements as well as of variables, and hosts may rely
// on the rest being discarded; recorded no-goods may have any.
#include "nogood/no_good_set.h"

#include <algorithm>

#include "core/lifetime.h"
#include "core/post.h"
#include "nogood/watches.h"

using koru::kIntMax;

CSnoGoodSet::CSnoGoodSet(CSint **variables, int variableCount, CSnoGoodFilter addFilter, void *argument, int most)
    : array(variables),
      size(variableCount),
      filter(addFilter),
      extra(argument),
      watchLists(variableCount),
      maximum(most > 0 ? most : kIntMax) {
  if (watchLists) std::fill_n(watchLists.get(), size, nullptr);
}

CSnoGoodSet::~CSnoGoodSet() {
  if (release != nullptr) {
    const koru::HostAsked asked;
    release(this, extra);
  }
  while (newest != nullptr) {
    CSnoGood *noGood = newest;
    newest = noGood->older;
    koru::deallocate(noGood);
  }
}

namespace koru {

namespace {

// ----- the list

void linkNewest(CSnoGoodSet &set, CSnoGood &noGood) {
  noGood.newer = nullptr;
  noGood.older = set.newest;
  (set.newest != nullptr ? set.newest->newer : set.oldest) = &noGood;
  set.newest = &noGood;
}

void unlink(CSnoGoodSet &set, const CSnoGood &noGood) {
  (noGood.newer != nullptr ? noGood.newer->older : set.newest) = noGood.older;
  (noGood.older != nullptr ? noGood.older->newer : set.oldest) = noGood.newer;
}

// For the time of a hold.
void markDeleted(CSnoGoodSet &set, CSnoGood &noGood) {
  if (noGood.deleted) return;
  noGood.deleted = true;
  noGood.nextDeleted = set.deleted;
  set.deleted = &noGood;
  --set.count;
}

void deleteMarked(CSnoGoodSet &set) {
  while (set.deleted != nullptr) {
    CSnoGood *noGood = set.deleted;
    set.deleted = noGood->nextDeleted;
    stopWatching(*noGood);
    unlink(set, *noGood);
    deallocate(noGood);
  }
}

void deleteOldestUntil(CSnoGoodSet &set, int most) {
  const Hold hold(set);
  for (CSnoGood *noGood = set.oldest; set.count > most; noGood = noGood->newer) markDeleted(set, *noGood);
}

// ----- insertion

// Deletes the no-goods that it makes superfluous, up to the first that makes it superfluous itself.
bool isSubsumed(CSnoGoodSet &set, const CSnoGood &added) {
  for (CSnoGood *noGood = set.newest; noGood != nullptr; noGood = noGood->older) {
    if (noGood->deleted || !agree(*noGood, added)) continue;
    if (noGood->count <= added.count) return true;
    markDeleted(set, *noGood);
  }
  return false;
}

bool isWanted(CSnoGoodSet &set, CSnoGood &added) {
  if (set.filter != nullptr) {
    const HostAsked asked;
    if (!set.filter(&set, &added, set.array, set.size, set.extra)) return false;
  }
  const Hold hold(set);
  return !isSubsumed(set, added);
}

void insert(CSnoGoodSet &set, CSnoGood *added) {
  if (!isWanted(set, *added)) return deallocate(added);
  if (set.count >= set.maximum) deleteOldestUntil(set, set.count - 1);
  linkNewest(set, *added);
  ++set.count;
  startWatching(set, *added);
}

// ----- the constraint

bool changed(CSnoGoodSet &set, const Event &e) { return propagateNoGoods(set, e.index); }

constexpr auto kTable = handlers<CSnoGoodSet>({.newMin = on<changed>,
                                               .newMax = on<changed>,
                                               .minBound = on<changed>,
                                               .maxBound = on<changed>,
                                               .bound = on<changed>,
                                               .removed = on<changed>});

CSnoGoodSet *post(const Poster &poster, CSint **array, int size, CSnoGoodFilter filter, int most,
                  CSnoGoodRelease release, void *extra) {
  if (size < 1 || array == nullptr || !allPresent(array, size)) return nullptr;
  Posting posting{poster};
  if (!posting) return nullptr;
  CSnoGoodSet set(array, size, filter, extra, most);
  if (!set.watchLists) return nullptr;
  auto c = posting.add(kTable, std::move(set));
  for (int i = 0; i < size; ++i) c.attach(array[i], i);
  if (!posting) return nullptr;
  c->release = release;
  return &*c;
}

bool areIndexes(const int *indexes, int count, int size) {
  const int end = std::min(count, size);
  return std::all_of(indexes, indexes + count, [=](int index) { return index >= 0 && index < end; });
}

bool areDecisions(const CSvalueSelection *decisions, int count) {
  return std::all_of(decisions, decisions + count, [](const CSvalueSelection &d) { return isMethod(d.method); });
}

}  // namespace

Hold::~Hold() {
  if (--set_.holds == 0) deleteMarked(set_);
}

void makeNewest(CSnoGoodSet &set, CSnoGood &noGood) {
  unlink(set, noGood);
  linkNewest(set, noGood);
}

void addNoGood(CSnoGoodSet &set, const NoGoodElement *elements, int count) {
  const auto isOutside = [&](const NoGoodElement &e) { return e.index < 0 || e.index >= set.size; };
  if (std::any_of(elements, elements + count, isOutside)) return;
  CSnoGood *added = createNoGood(count);
  if (added == nullptr) return;
  std::copy_n(elements, count, added->elements());
  insert(set, added);
}

}  // namespace koru

using namespace koru;

CSnoGoodSet *cs_createNoGoodSet(CSint **array, int size, CSnoGoodFilter filter, int maxNbNoGoods,
                                CSnoGoodRelease release, void *extra) {
  return door(post("cs_createNoGoodSet", array, size, filter, maxNbNoGoods, release, extra));
}

void cs_addNoGood(CSnoGoodSet *set, const int *indexes, const CSvalueSelection *decisions, int n) {
  if (set == nullptr || indexes == nullptr || decisions == nullptr || n < 1) return;
  if (!areIndexes(indexes, n, set->size) || !areDecisions(decisions, n)) return;
  CSnoGood *added = createNoGood(n);
  if (added == nullptr) return;
  for (int i = 0; i < n; ++i) added->elements()[i] = {decisions[i], indexes[i]};
  insert(*set, added);
}

void cs_filterNoGood(CSnoGoodSet *set, CSnoGoodFilter keep) {
  if (set == nullptr || keep == nullptr) return;
  const HostAsked asked;
  const Hold hold(*set);
  const CSnoGood *last = set->newest;  // those that `keep` adds are not asked about
  for (CSnoGood *noGood = set->oldest; noGood != nullptr; noGood = noGood == last ? nullptr : noGood->newer)
    if (!noGood->deleted && !keep(set, noGood, set->array, set->size, set->extra)) markDeleted(*set, *noGood);
}

void cs_setMaxNbNoGoods(CSnoGoodSet *set, int max) {
  if (set == nullptr || max < 0) return;
  if (max > 0) deleteOldestUntil(*set, max);
  set->maximum = max > 0 ? max : kIntMax;
}

int cs_getNbNoGoods(CSnoGoodSet *set) { return set != nullptr ? set->count : 0; }

int cs_getNbNoGoodElements(CSnoGood *ng) { return ng != nullptr ? ng->count : 0; }

void cs_getNoGoodElementAt(int *index, CSvalueSelection *r, CSnoGood *ng, int i) {
  const bool exists = ng != nullptr && i >= 0 && i < ng->count;
  if (index != nullptr) *index = exists ? ng->elements()[i].index : -1;
  if (r != nullptr && exists) *r = ng->elements()[i].decision;
}
