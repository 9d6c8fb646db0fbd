// SPDX-License-Identifier: MIT
// A constraint with a run that only notes that it comes, and does what it is told to, for tests of the agenda.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/post.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace koru::test::runner {

using Log = std::vector<std::string>;
using Action = std::function<bool()>;

// What a test's constraints share: they keep pointers to it.
struct Script {
  Log *log;
  const bool *started;
  std::string entry;
  Action action;

  bool play() const {
    log->push_back(entry);
    return action == nullptr || !*started || action();
  }
};

struct Runner : Deferred {
  Script *script;
};
inline bool runScript(Runner &c) { return c.script->play(); }
template <Rank rank>
inline constexpr auto kRunner = deferred<runScript>(rank);
inline constexpr TableOf<Runner> kRunners[] = {kRunner<Rank::kLinear>, kRunner<Rank::kSorting>,
                                               kRunner<Rank::kQuadratic>, kRunner<Rank::kHeavy>};

struct Hearer {
  Script *script;
};
inline bool playScript(Hearer &c, const Event &) { return c.script->play(); }
inline constexpr auto kHearer = handlers<Hearer>({.newMin = on<playScript>,
                                                  .newMax = on<playScript>,
                                                  .minBound = on<playScript>,
                                                  .maxBound = on<playScript>,
                                                  .bound = on<playScript>,
                                                  .removed = on<playScript>});

struct Listener {
  std::vector<std::pair<CSint *, int>> *heard;
};
inline bool noteConflict(Listener &c, const Event &e) {
  c.heard->push_back({e.var, e.newValue});
  return true;
}
inline constexpr auto kListener = handlers<Listener>({.newMin = on<noteConflict>,
                                                      .newMax = on<noteConflict>,
                                                      .minBound = on<noteConflict>,
                                                      .maxBound = on<noteConflict>,
                                                      .bound = on<noteConflict>,
                                                      .removed = on<noteConflict>});

struct Sighting {
  bool consistent;
  CSint *variable;
  int code;
  bool operator==(const Sighting &) const = default;
};
using Sightings = std::vector<Sighting>;

class RunnerTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 99);
    y = cs_createCSint(0, 99);
    z = cs_createCSint(0, 99);
  }
  void TearDown() override {
    SolverTest::TearDown();
    for (Script *script : scripts_) delete script;
  }

  // The log of a run says r and the number, that of a handler h.
  bool postRunner(int number, const std::vector<CSint *> &variables, Rank rank = Rank::kLinear,
                  Action action = nullptr) {
    Posting posting{"runner"};
    auto c = posting.add(kRunners[static_cast<int>(rank)], Runner{{}, script("r", number, std::move(action))});
    for (CSint *v : variables) c.attach(v);
    return posting && runSoon(*c);
  }
  void postHandler(int number, CSint *v, Action action = nullptr) {
    Posting posting{"hearer"};
    posting.add(kHearer, Hearer{script("h", number, std::move(action))}).attach(v);
    ASSERT_TRUE(posting);
  }
  static void postListener(CSint *v, std::vector<std::pair<CSint *, int>> &heard) {
    Posting posting{"listener"};
    posting.add(kListener, Listener{&heard}, kConflictListener).attach(v);
    ASSERT_TRUE(posting);
  }
  // Before it, what is run and woken does nothing else.
  void start() {
    log.clear();
    started_ = true;
  }
  void observe() { solver::ports.add(&observer_); }

  Log log;
  Sightings seen;
  CSint *x = nullptr;
  CSint *y = nullptr;
  CSint *z = nullptr;

 private:
  Script *script(const char *kind, int number, Action action) {
    scripts_.push_back(new Script{&log, &started_, kind + std::to_string(number), std::move(action)});
    return scripts_.back();
  }
  static void note(void *argument, bool consistent, CSint *variable, int code, Site *) {
    static_cast<Sightings *>(argument)->push_back({consistent, variable, code});
  }

  bool started_ = false;
  std::vector<Script *> scripts_;
  Observer observer_{note, nullptr, &seen, true, nullptr};
};

}  // namespace koru::test::runner
