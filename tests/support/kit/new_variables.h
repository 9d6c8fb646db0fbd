// SPDX-License-Identifier: MIT
// For the tests of constraints that return a new variable: bounds as pairs, what a posting left on each variable, and
// postings whose allocations and trail fail one by one.
#pragma once

#include <climits>

#include "core/post.h"
#include "support/kit/probe.h"

namespace koru::test {

using Bounds2 = std::pair<int, int>;
inline Bounds2 bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

using Attached = std::vector<std::pair<std::string, int>>;

inline Site *siteOf(const CSint *v) { return v->constraints->constraint->site; }
inline Constraint *constraintOf(const CSint *v) { return v->constraints->constraint; }

// A posting on up to three operands; true when it gave a result.
struct Posted {
  CSint *x[3];
};

template <class Make, class Post>
void expectAllocations(Make make, Post post, int wanted) {
  EXPECT_EQ(failEachAllocation(make, post), wanted);
  // And with the trail needing a new block after each of the first records.
  for (int room = 1; room <= 6; ++room) {
    const auto prepare = [&] {
      Posted operands = make();
      while ((solver::trail.count() + room) % Trail::kCapacity != 0) cs_backtrack(nullptr, 0, nullptr);
      return operands;
    };
    EXPECT_GE(failEachAllocation(prepare, post), wanted);
  }
}

inline Posted threeOf(int low, int high) {
  return {{cs_createCSint(low, high), cs_createCSint(low, high), cs_createCSint(low, high)}};
}

// A test double on one variable: notes the minimum of another one whenever it is woken.
struct MinimumNote {
  CSint *watched;
  std::vector<int> *notes;
};
inline bool noteMinimum(MinimumNote &c, const Event &) {
  c.notes->push_back(cs_getMin(c.watched));
  return true;
}
inline constexpr auto kMinimumNoteTable = handlers<MinimumNote>({.newMin = on<noteMinimum>});

inline void noteMinimumWhenRaised(CSint *v, CSint *watched, std::vector<int> &notes) {
  Posting posting{"note"};
  auto c = posting.add(kMinimumNoteTable, MinimumNote{watched, &notes});
  c.attach(v);
}

}  // namespace koru::test
