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
    if (step.hasRefuted() && !forbid({refutedBy(step), step.position})) return false;
    if (!step.refuted) elements_[count_++] = {step.decision, step.position};
    return true;
  }

 private:
  static CSvalueSelection refutedBy(const Step &step) {
    if (step.refuted) return step.decision;
    return {step.upwards ? CS_METHOD_LE : CS_METHOD_GE, step.lastTried};
  }

  // Under no decision the opposite holds, at the root.
  bool forbid(const NoGoodElement &e) {
    ++s_.stats.noGoods;
    if (count_ == 0) {
      const CSvalueSelection opposite = negationOf(e.decision);
      return cs_selectValue(s_.labelled[e.index], &opposite);
    }
    elements_[count_] = e;
    addNoGood(*s_.noGoods, elements_.get(), count_ + 1);
    s_.noGoodBytes += sizeof(CSnoGood) + static_cast<unsigned>(count_ + 1) * sizeof(NoGoodElement);
    return true;
  }

  CSsearch &s_;
  Buffer<NoGoodElement> &elements_;
  int count_ = 0;
};

}  // namespace

bool learnFromPath(CSsearch &s) {
  if (s.noGoods == nullptr) return true;
  Buffer<NoGoodElement> elements(s.path.count() + 1);
  if (!elements) return true;  // reported: the search ends for want of memory
  Learner learner(s, elements);
  bool consistent = true;
  s.path.forEach([&](const Step &step) { consistent = consistent && learner.take(step); });
  return consistent;
}

}  // namespace koru::solve
