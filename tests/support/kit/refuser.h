// SPDX-License-Identifier: MIT
// A constraint on one variable that is asked about every value the variable becomes bound to, and may refuse it.
#pragma once

#include <functional>
#include <vector>

#include "core/post.h"

namespace koru::test {

struct Refuser {
  std::function<bool(int)> *accepts;  // the test's, which outlives the solver
};

inline bool askRefuser(Refuser &c, const Event &e) { return (*c.accepts)(e.var->min); }

inline constexpr auto kRefuserTable =
    handlers<Refuser>({.minBound = on<askRefuser>, .maxBound = on<askRefuser>, .bound = on<askRefuser>});

inline bool postRefuser(CSint *v, std::function<bool(int)> &accepts) {
  Posting posting{"refuser"};
  auto c = posting.add(kRefuserTable, Refuser{&accepts});
  c.attach(v);
  return static_cast<bool>(posting);
}

}  // namespace koru::test
