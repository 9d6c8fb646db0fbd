// SPDX-License-Identifier: MIT
#include "constraints/counting/flow.h"

#include <algorithm>

#include "core/bit_scan.h"

namespace koru::counting {

Flow::Flow(int n, int classes) : n_(n), classes_(classes), words_(wordsFor(classes + 1)) {
  const auto nodes = static_cast<unsigned>(classes) + 1;
  const auto words = static_cast<unsigned>(words_);
  if (!make(classOf_, static_cast<unsigned>(n)) || !make(links_, static_cast<unsigned>(n)) || !make(class_, nodes) ||
      !make(queue_, nodes) || !make(sets_, std::uint64_t{3} * words))
    return;
  components_ = Components(classes + 1);
  if (!components_ || !make(options_, static_cast<unsigned>(n) * std::uint64_t{words})) return;
  std::fill_n(options_.get(), static_cast<unsigned>(n) * std::uint64_t{words}, 0);
  for (int j = 0; j <= classes; ++j) class_[j] = {0, 0, 0, kNone, kNone};
  class_[unassigned()].taken = n;
  class_[unassigned()].first = n > 0 ? 0 : kNone;
  for (int i = 0; i < n; ++i) {
    classOf_[i] = unassigned();
    links_[i] = {i - 1, i + 1 < n ? i + 1 : kNone};
  }
}

void Flow::demand(int j, int least, int most) const {
  class_[j].least = least;
  class_[j].most = most;
}

void Flow::assign(int i, int j) {
  Class &old = class_[classOf_[i]];
  const auto [previous, next] = links_[i];
  (previous == kNone ? old.first : links_[previous].next) = next;
  if (next != kNone) links_[next].previous = previous;
  --old.taken;
  Class &now = class_[j];
  links_[i] = {kNone, now.first};
  if (now.first != kNone) links_[now.first].previous = i;
  now.first = i;
  ++now.taken;
  classOf_[i] = j;
}

// ----- paths

void Flow::chooseOnly(std::uint64_t *set, int j) const {
  std::fill_n(set, words_, 0);
  WordSet(set).set(j);
}

// Those that can spare a variable.
void Flow::chooseSpare(std::uint64_t *set, int except) const {
  std::fill_n(set, words_, 0);
  for (int j = 0; j < classes_; ++j)
    if (j != except && class_[j].taken > class_[j].least) WordSet(set).set(j);
}

// Those that have room for one more.
void Flow::chooseRoom(std::uint64_t *set, int except) const {
  std::fill_n(set, words_, 0);
  for (int j = 0; j < classes_; ++j)
    if (j != except && class_[j].taken < class_[j].most) WordSet(set).set(j);
}

// Along the shortest path from one set to the other, which are disjoint. False when there is none.
bool Flow::move() {
  int queued = 0;
  for (int k = 0; k < words_; ++k) {
    unseen()[k] = ~from()[k];
    forEachBit(k * kWordBits, from()[k], [&](int j) { queue_[queued++] = j; });
  }
  for (int taken = 0; taken < queued; ++taken) {
    queued = reach(queue_[taken], queued);
    if (queued == kNone) return true;
  }
  return false;
}

// The classes that variables of this one could go to. kNone when the path is complete, and followed.
int Flow::reach(int j, int queued) {
  for (int i = class_[j].first; i != kNone; i = links_[i].next)
    for (int k = 0; k < words_; ++k) {
      const std::uint64_t reached = options(i)[k] & unseen()[k];
      unseen()[k] &= ~reached;
      const bool onlyOnTheWay = forEachBit(k * kWordBits, reached, [&](int next) {
        class_[next].via = i;
        if (WordSet(to()).has(next)) {
          shift(next);
          return false;
        }
        queue_[queued++] = next;
        return true;
      });
      if (!onlyOnTheWay) return kNone;
    }
  return queued;
}

void Flow::shift(int j) {
  for (bool begun = false; !begun;) {
    const int i = class_[j].via;
    const int source = classOf_[i];
    assign(i, j);
    begun = WordSet(from()).has(source);
    j = source;
  }
}

// ----- flows

bool Flow::establish() {
  for (int i = 0; i < n_; ++i)
    if (classOf_[i] != unassigned() && !WordSet(options(i)).has(classOf_[i])) assign(i, unassigned());
  for (int j = classes_; j >= 0; --j)
    while (class_[j].taken > class_[j].most) {
      chooseOnly(from(), j);
      chooseRoom(to(), j);
      if (!move()) return false;
    }
  for (int j = 0; j < classes_; ++j)
    while (class_[j].taken < class_[j].least) {
      chooseSpare(from(), j);
      chooseOnly(to(), j);
      if (!move()) return false;
    }
  return true;
}

int Flow::mostOf(int j) {
  chooseOnly(to(), j);
  while (class_[j].taken < class_[j].most) {
    chooseSpare(from(), j);
    if (!move()) break;
  }
  return class_[j].taken;
}

int Flow::leastOf(int j) {
  chooseOnly(from(), j);
  while (class_[j].taken > class_[j].least) {
    chooseRoom(to(), j);
    if (!move()) break;
  }
  return class_[j].taken;
}

// An edge leads from a class to those that its variables could go to. One to the last node, or from it, says that a
// class has room for one more, or can spare one: an edge that lies on no cycle is taken by no flow.
void Flow::separate() {
  for (int j = 0; j < classes_; ++j) {
    std::uint64_t *row = components_.row(j);
    std::fill_n(row, words_, 0);
    for (int i = class_[j].first; i != kNone; i = links_[i].next)
      for (int k = 0; k < words_; ++k) row[k] |= options(i)[k];
    if (class_[j].taken < class_[j].most) WordSet(row).set(unassigned());
  }
  chooseSpare(components_.row(unassigned()), kNone);
  components_.find();
}

}  // namespace koru::counting
