// SPDX-License-Identifier: MIT
// The two engines that a World runs on: the solver, with constraints that only forward their handler calls, and the
// twin.
#pragma once

#include "core/narrow.h"
#include "core/post.h"
#include "core/solver.h"
#include "koru.h"
#include "model/world.h"
#include "support/twins/engine.h"

namespace koru::test::model {

// Variables of the solver by number.
class SolverEngine {
 public:
  int create(int min, int max) {
    variables.push_back(cs_createCSint(min, max));
    return static_cast<int>(variables.size()) - 1;
  }

  int size() const { return static_cast<int>(variables.size()); }
  int min(int v) const { return cs_getMin(at(v)); }
  int max(int v) const { return cs_getMax(at(v)); }
  int count(int v) const { return cs_getNbElements(at(v)); }
  bool has(int v, int value) const { return cs_isIn(at(v), value); }
  int attachments(int v) const { return cs_getNbConstraints(at(v)); }
  int reportedMin(int v) const { return at(v)->reportedMin; }
  int reportedMax(int v) const { return at(v)->reportedMax; }
  int contexts() const { return solver::contexts.count(); }

  bool narrowMin(int v, int bound) { return koru::narrowMin(at(v), bound); }
  bool narrowMax(int v, int bound) { return koru::narrowMax(at(v), bound); }
  bool bind(int v, int value) { return bindValue(at(v), value); }
  bool remove(int v, int value) { return removeValue(at(v), value); }

  void save() { cs_saveContext(); }
  void restore() { cs_restoreContext(); }
  void forget() { cs_forgetSaveContext(); }
  void accept() { cs_acceptContext(); }

  CSint *at(int v) const { return variables[static_cast<std::size_t>(v)]; }
  int number(const CSint *v) const {
    for (std::size_t i = 0; i < variables.size(); ++i)
      if (variables[i] == v) return static_cast<int>(i);
    return -1;
  }

  std::vector<CSint *> variables;
};

class RecordingSide : public SolverEngine {
 public:
  World<RecordingSide> *world = nullptr;

  bool post(int id, const Rule &rule, int flags);
};

// A constraint that hands its calls to the world.
struct Double {
  RecordingSide *side;
  int id;
  Rule rule;
};

template <int code>
bool forward(Double &d, const Event &e) {
  return d.side->world->called(d.id, d.rule, d.side->number(e.var), code, e.index, e.oldValue, e.newValue);
}

constexpr auto kDoubleTable = handlers<Double>({.newMin = on<forward<0>>,
                                                .newMax = on<forward<1>>,
                                                .minBound = on<forward<2>>,
                                                .maxBound = on<forward<3>>,
                                                .bound = on<forward<4>>,
                                                .removed = on<forward<5>>});

inline bool RecordingSide::post(int id, const Rule &rule, int flags) {
  Posting posting{"double"};
  auto c = posting.add(kDoubleTable, Double{this, id, rule}, static_cast<ConstraintFlags>(flags));
  c.attach(at(rule.x), 10);
  c.attach(at(rule.y), 11);
  if (rule.kind == Kind::kSum) c.attach(at(rule.z), 12);
  return posting && filterFirst(*this, rule);
}

// The naive engine, with ints.
class NaiveEngine : public twin::Engine {
 public:
  int min(int v) const { return static_cast<int>(Engine::min(v)); }
  int max(int v) const { return static_cast<int>(Engine::max(v)); }
  int count(int v) const { return static_cast<int>(Engine::count(v)); }
  int reportedMin(int v) const { return static_cast<int>(Engine::reportedMin(v)); }
  int reportedMax(int v) const { return static_cast<int>(Engine::reportedMax(v)); }
};

class TwinSide : public NaiveEngine {
 public:
  World<TwinSide> *world = nullptr;

  bool post(int id, const Rule &rule, int flags) {
    const auto handler = [this, id, rule](const Event &e) {
      return world->called(id, rule, e.var, e.code, e.index, static_cast<int>(e.oldValue),
                           static_cast<int>(e.newValue));
    };
    const int c = addConstraint(handler, flags);
    attach(c, rule.x, 10);
    attach(c, rule.y, 11);
    if (rule.kind == Kind::kSum) attach(c, rule.z, 12);
    return filterFirst(*this, rule);
  }
};

}  // namespace koru::test::model
