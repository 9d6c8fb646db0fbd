// SPDX-License-Identifier: MIT
#include "solve/learn.h"

#include "nogood/no_good_set.h"

namespace koru::solve {

namespace {

class Learner {
 public:
  Learner(CSsearch &s, Buffer<NoGoodElement> &elements) : s_(s), elements_(elements) {}

  // The refuted part of the step under the decisions gathered so far, then its own decision.
  bool take(const Step &step) {
    if (settled_) return true;
    if (step.hasRefuted() && !forbid({refutedBy(step), step.position})) return false;
    if (!step.refuted) gather({step.decision, step.position});
    return true;
  }

 private:
  static CSvalueSelection refutedBy(const Step &step) {
    if (step.refuted) return step.decision;
    const int last = step.lastTried;
    return {step.upwards ? CS_METHOD_LE : CS_METHOD_GE, last};
  }

  const CSint *variableOf(const NoGoodElement &e) const { return s_.labelled[e.index]; }
  bool isExcluded(const NoGoodElement &e) const { return isEntailed(negationOf(e.decision), variableOf(e)); }

  void gather(const NoGoodElement &e) {
    if (isExcluded(e)) settled_ = true;  // whatever is under it can't come back
    if (!isEntailed(e.decision, variableOf(e))) elements_[count_++] = e;
  }

  bool forbid(const NoGoodElement &e) {
    if (isExcluded(e)) return true;
    if (isEntailed(e.decision, variableOf(e))) return forbidGathered(count_);
    elements_[count_] = e;
    return forbidGathered(count_ + 1);
  }

  bool forbidGathered(int count) {
    if (count == 0) return false;
    ++s_.stats.noGoods;
    if (count == 1) {
      const CSvalueSelection opposite = negationOf(elements_[0].decision);
      return cs_selectValue(s_.labelled[elements_[0].index], &opposite);
    }
    addNoGood(*s_.noGoods, elements_.get(), count);
    return true;
  }

  CSsearch &s_;
  Buffer<NoGoodElement> &elements_;
  int count_ = 0;
  bool settled_ = false;
};

}  // namespace

bool learnFromPath(CSsearch &s) {
  Buffer<NoGoodElement> elements(s.path.count() + 1);
  if (!elements) return true;  // reported: the search ends for want of memory
  Learner learner(s, elements);
  bool consistent = true;
  s.path.forEach([&](const Step &step) { consistent = consistent && learner.take(step); });
  return consistent;
}

}  // namespace koru::solve
