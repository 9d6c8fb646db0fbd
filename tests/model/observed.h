// SPDX-License-Identifier: MIT
// The library's own relations and sums under observation, and the twin with the same constraints.
#pragma once

#include <utility>

#include "core/alloc.h"
#include "core/solver.h"
#include "model/sides.h"

namespace koru::test::model {

class ObservedSide : public SolverEngine {
 public:
  World<ObservedSide> *world = nullptr;

  ObservedSide() { solver::ports.add(&observer_); }
  ~ObservedSide() { solver::ports.remove(&observer_); }
  ObservedSide(const ObservedSide &) = delete;
  ObservedSide &operator=(const ObservedSide &) = delete;

  bool narrowMin(int v, int bound) { return told(SolverEngine::narrowMin(v, bound)); }
  bool narrowMax(int v, int bound) { return told(SolverEngine::narrowMax(v, bound)); }
  bool bind(int v, int value) { return told(cs_EQ(at(v), value)); }
  bool remove(int v, int value) { return told(cs_NEQ(at(v), value)); }

  bool post(int id, const Rule &rule, int) {
    CSint *x = at(rule.x);
    CSint *y = at(rule.y);
    if (rule.kind == Kind::kSum) return postSum(id, y, at(rule.z));
    const bool result = rule.kind == Kind::kNeq ? cs_Neq(x, y) : rule.kind == Kind::kLe ? cs_Le(x, y) : cs_Lt(x, y);
    sites_.emplace_back(y->constraints->constraint->site, id);
    return told(result);
  }

 private:
  struct Heard {
    bool consistent;
    CSint *variable;
    int code;
    const Site *site;
  };

  static void hear(void *self, bool consistent, CSint *variable, int code, Site *site) {
    static_cast<ObservedSide *>(self)->heard_.push_back({consistent, variable, code, site});
  }

  bool postSum(int id, CSint *y, CSint *z) {
    CSint *sum = cs_Add(y, z);
    if (sum == nullptr) return false;
    variables.push_back(sum);
    if (sum->constraints != nullptr) sites_.emplace_back(sum->constraints->constraint->site, id);
    return told(true);
  }

  // A site's address may be used again after a restore: the latest posting counts.
  int idOf(const Site *site) const {
    for (auto it = sites_.rbegin(); it != sites_.rend(); ++it)
      if (it->first == site) return it->second;
    return -1;
  }

  // What was heard during a posting is passed on when its site is known.
  bool told(bool result) {
    for (const Heard &h : heard_) world->observed(h.consistent, number(h.variable), h.code, idOf(h.site));
    heard_.clear();
    return result;
  }

  std::vector<Heard> heard_;
  std::vector<std::pair<const Site *, int>> sites_;
  Observer observer_{hear, nullptr, this, true, nullptr};
};

class ObservedTwin : public NaiveEngine {
 public:
  World<ObservedTwin> *world = nullptr;

  bool narrowMin(int v, int bound) { return told(Engine::narrowMin(v, bound)); }
  bool narrowMax(int v, int bound) { return told(Engine::narrowMax(v, bound)); }
  bool bind(int v, int value) { return told(Engine::bind(v, value)); }
  bool remove(int v, int value) { return told(Engine::remove(v, value)); }

  bool post(int id, const Rule &rule, int) {
    if (rule.kind == Kind::kSum) return postSum(id, rule);
    attachAll(id, rule, {rule.x, rule.y});
    return told(filterFirst(engine(), rule));
  }

 private:
  // The engine without a word to the world.
  NaiveEngine &engine() { return *this; }

  bool told(bool result) {
    for (const Call &c : calls)
      world->observed(c.consistent, c.var, c.code, ids_[static_cast<std::size_t>(c.constraint)]);
    calls.clear();
    return result;
  }

  void attachAll(int id, const Rule &rule, const std::vector<int> &variables) {
    const int c = addConstraint(
        [this, rule](const Event &e) { return woken(engine(), rule, e.var, e.code, static_cast<int>(e.newValue)); });
    ids_.push_back(id);
    for (const int v : variables) attach(c, v, -1);
  }

  bool postSum(int id, const Rule &rule) {
    const int a = rule.y;
    const int b = rule.z;
    const int s = create(min(a) + min(b), max(a) + max(b));
    if (min(s) == max(s)) return true;
    if (isBoundIn(*this, a)) {
      copyHoles(s, b, min(a));
    } else if (isBoundIn(*this, b)) {
      copyHoles(s, a, min(b));
    }
    attachAll(id, {Kind::kSum, s, a, b}, {s, a, b});
    return true;
  }

  void copyHoles(int s, int from, int shift) {
    for (int value = min(from); value <= max(from); ++value)
      if (!has(from, value)) dropUnseen(s, value + shift);
  }

  std::vector<int> ids_;  // of the constraints
};

}  // namespace koru::test::model
