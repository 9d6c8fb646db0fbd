// SPDX-License-Identifier: MIT
// Random small problems with all their solutions by enumeration, and random options to search them with.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "koru_extras.h"
#include "support/kit/random.h"

namespace koru::test::solve {

using Values = std::vector<int>;

// Variables over 0..3 or so, and relations between two or three of them, some through a sum that is not labelled.
class SmallProblem {
 public:
  explicit SmallProblem(Random &random) {
    const int n = random.between(2, 5);
    for (int i = 0; i < n; ++i) sizes_.push_back(random.between(1, 4));
    for (int i = random.between(1, 5); i > 0; --i)
      relations_.push_back(
          {random.between(0, 4), random.between(0, n - 1), random.between(0, n - 1), random.between(0, 5)});
    for (int i = 0; i < n; ++i) costs_.push_back(random.between(-2, 3));
  }

  // False when a posting has found that there is no solution.
  bool post() {
    vars.clear();
    for (const int size : sizes_) vars.push_back(cs_createCSint(0, size - 1));
    cost = cs_ScalProd(vars.data(), costs_.data(), size());
    bool consistent = cost != nullptr;
    for (const Relation &r : relations_) consistent = consistent && post(r);
    return consistent;
  }

  int size() const { return static_cast<int>(sizes_.size()); }
  int costOf(const Values &v) const {
    int sum = 0;
    for (std::size_t i = 0; i < v.size(); ++i) sum += costs_[i] * v[i];
    return sum;
  }

  std::vector<Values> solutions() const {
    std::vector<Values> found;
    Values v(sizes_.size(), 0);
    for (;;) {
      if (holds(v)) found.push_back(v);
      std::size_t i = 0;
      while (i < v.size() && ++v[i] == sizes_[i]) v[i++] = 0;
      if (i == v.size()) return found;
    }
  }

  std::vector<CSint *> vars;
  CSint *cost = nullptr;

 private:
  struct Relation {
    int kind, x, y, k;
  };

  CSint *at(int i) const { return vars[static_cast<std::size_t>(i)]; }
  bool post(const Relation &r) const {
    switch (r.kind) {
      case 0:
        return r.x == r.y || cs_Neq(at(r.x), at(r.y));
      case 1:
        return cs_Le(at(r.x), at(r.y));
      case 2:
        return cs_LE(cs_Add(at(r.x), at(r.y)), r.k);
      case 3:
        return cs_NEQ(cs_Add(at(r.x), at(r.y)), r.k);
      default:
        return cs_IfNeq(at(r.x), at(r.y), r.k % 4, r.k % 3);
    }
  }
  bool holds(const Values &v) const {
    for (const Relation &r : relations_) {
      const int x = v[static_cast<std::size_t>(r.x)];
      const int y = v[static_cast<std::size_t>(r.y)];
      const bool kept[] = {r.x == r.y || x != y, x <= y, x + y <= r.k, x + y != r.k, x != r.k % 4 || y != r.k % 3};
      if (!kept[r.kind]) return false;
    }
    return true;
  }

  std::vector<int> sizes_;
  std::vector<Relation> relations_;
  std::vector<int> costs_;
};

inline int anyUnbound(CSint **vars, int n, void *extra) {
  const int from = static_cast<Random *>(extra)->between(0, n - 1);
  for (int i = 0; i < n; ++i)
    if (cs_isFree(vars[(from + i) % n])) return (from + i) % n;
  return -1;
}

// Now and then one that makes no sense.
inline bool anyDecision(CSvalueSelection *decision, int index, CSint **vars, int, void *extra) {
  Random &random = *static_cast<Random *>(extra);
  *decision = {random.between(-1, 6), random.between(cs_getMin(vars[index]) - 1, cs_getMax(vars[index]) + 1)};
  return random.between(0, 9) > 0;
}

inline void anyRelaxed(bool *relaxed, const int *, int n, void *extra) {
  for (int i = 0; i < n; ++i) relaxed[i] = static_cast<Random *>(extra)->between(0, 1) == 1;
}

// One of each kind, one that answers nonsense, one that does not begin, and none.
inline CSvalueSelector **anySelectors() {
  static CSvalueSelector nonsense{nullptr,
                                  [](CSvalueSelection *r, int, CSint **, int, void *) {
                                    *r = {77, 0};
                                    return true;
                                  },
                                  nullptr};
  static CSvalueSelector unwilling{[](int, CSint **, int, void *) { return false; }, nullptr, nullptr};
  static CSvalueSelector *selectors[] = {cs_getValueSelector(CS_SELECT_DESCENDING),
                                         cs_getValueSelector(CS_SELECT_LOWER_HALF),
                                         cs_getValueSelector(CS_SELECT_MEDIAN),
                                         &nonsense,
                                         cs_getValueSelector(CS_SELECT_UPPER_HALF),
                                         &unwilling,
                                         nullptr,
                                         cs_getValueSelector(CS_SELECT_ASCENDING)};
  return selectors;
}

// Whatever can be asked for, but limits.
inline CSsearchOptions anyOptions(Random &random, Random &hosts) {
  CSsearchOptions o{};
  o.size = sizeof o;
  o.order = random.between(CS_ORDER_INPUT, CS_ORDER_ACTIVITY);
  o.value = random.between(CS_VALUE_MIN, CS_VALUE_SELECTOR);
  o.selectors = anySelectors() + random.between(0, 3);
  o.branching = random.between(CS_BRANCH_BINARY, CS_BRANCH_VALUES);
  o.lastConflict = random.between(0, 1) == 1;
  o.randomTies = random.between(0, 1) == 1;
  o.guided = random.between(0, 1) == 1;
  o.seed = static_cast<unsigned long long>(random.between(0, 1000));
  o.restarts = random.between(CS_RESTARTS_NONE, CS_RESTARTS_GEOMETRIC);
  o.restartFails = random.between(1, 3);
  o.restartGrowth = random.between(0, 100);
  o.chooseVariable = anyUnbound;
  o.chooseValue = anyDecision;
  o.chooseRelaxed = anyRelaxed;
  o.extra = &hosts;
  return o;
}

inline std::string textOf(const CSsearchOptions &o) {
  std::string text;
  const std::map<std::string, long long> fields{
      {"order", o.order},           {"value", o.value},        {"branching", o.branching},
      {"conflict", o.lastConflict}, {"ties", o.randomTies},    {"guided", o.guided},
      {"restarts", o.restarts},     {"fails", o.restartFails}, {"growth", o.restartGrowth},
      {"neighbours", o.neighbours}, {"relaxed", o.relaxed}};
  for (const auto &[name, value] : fields) text += name + " " + std::to_string(value) + "  ";
  return text;
}

}  // namespace koru::test::solve
