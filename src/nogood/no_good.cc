// SPDX-License-Identifier: MIT
#include "nogood/no_good.h"

#include <algorithm>
#include <new>

#include "core/alloc.h"

namespace koru {

CSvalueSelection negationOf(const CSvalueSelection &decision) {
  constexpr int kNegated[kMethods] = {CS_METHOD_NEQ, CS_METHOD_EQ, CS_METHOD_GT,
                                      CS_METHOD_GE,  CS_METHOD_LT, CS_METHOD_LE};
  return {kNegated[decision.method], decision.value};
}

bool isUndecided(const CSvalueSelection &decision, const CSint *v) {
  const int value = decision.value;
  switch (decision.method) {
    case CS_METHOD_EQ:
    case CS_METHOD_NEQ:
      return isFree(v) && contains(v, value);
    case CS_METHOD_LE:
    case CS_METHOD_GT:
      return v->min <= value && value < v->max;
    default:
      return v->min < value && value <= v->max;
  }
}

CSnoGood *createNoGood(int count) {
  void *memory = allocateArray(sizeof(CSnoGood), static_cast<std::size_t>(count), sizeof(NoGoodElement));
  if (memory == nullptr) return nullptr;
  auto *noGood = new (memory) CSnoGood{};
  noGood->count = count;
  for (WatchNode &node : noGood->nodes) node.noGood = noGood;
  return noGood;
}

static bool equal(const NoGoodElement &a, const NoGoodElement &b) {
  return a.decision.method == b.decision.method && a.decision.value == b.decision.value && a.index == b.index;
}

bool agree(const CSnoGood &a, const CSnoGood &b) {
  return std::equal(a.elements(), a.elements() + std::min(a.count, b.count), b.elements(), equal);
}

}  // namespace koru
