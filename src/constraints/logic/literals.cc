// SPDX-License-Identifier: MIT
#include "constraints/logic/literals.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "core/post.h"

namespace koru {

static bool acceptable(CSint *const *vars, int n) {
  return n == 0 || (n > 0 && vars != nullptr && allPresent(vars, n));
}

Literals::Literals(const ClauseArrays &arrays, CSint *condition) {
  const auto [positive, positives, negative, negatives] = arrays;
  const int conditions = condition != nullptr ? 1 : 0;
  if (!acceptable(positive, positives) || !acceptable(negative, negatives)) return;
  if (positives > kIntMax - conditions - negatives) return;
  positives_ = positives;
  count_ = positives + negatives + conditions;
  Buffer<CSint *> vars(count_);
  if (!vars) return;
  Buffer<int> order(count_);
  if (!order) return;
  vars_ = std::move(vars);
  CSint **const end = std::copy_n(negative, negatives, std::copy_n(positive, positives, vars_.get()));
  if (conditions != 0) *end = condition;
  alwaysHold_ = markRepeated(order);
  close();
}

// Places of the same variable are next to one another in an order by addresses, which decides nothing else. All of the
// same sign but the first become null; true when a variable has both signs.
bool Literals::markRepeated(Buffer<int> &order) {
  CSint **vars = vars_.get();
  for (int i = 0; i < count_; ++i) order[i] = i;
  std::sort(order.get(), order.get() + count_,
            [vars](int i, int j) { return vars[i] != vars[j] ? std::less<>{}(vars[i], vars[j]) : i < j; });
  bool both = false;
  CSint *previous = nullptr;
  for (int k = 0; k < count_; ++k) {
    const int i = order[k];
    if (vars[i] != previous) {
      previous = vars[i];
      continue;
    }
    both = both || isPositive(order[k - 1]) != isPositive(i);
    if (isPositive(order[k - 1]) == isPositive(i)) vars[i] = nullptr;
  }
  return both;
}

void Literals::close() {
  CSint **vars = vars_.get();
  int kept = 0;
  int positives = 0;
  for (int i = 0; i < count_; ++i) {
    if (vars[i] == nullptr) continue;
    if (isPositive(i)) ++positives;
    vars[kept++] = vars[i];
  }
  count_ = kept;
  positives_ = positives;
}

}  // namespace koru
