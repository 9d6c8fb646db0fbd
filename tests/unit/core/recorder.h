// SPDX-License-Identifier: MIT
// A constraint that only records how it is called, for tests of the engine that must know nothing of real constraints.
//
// A Journal belongs to one test. Each watcher posted on it has a number; its calls are noted in order, and the reaction
// registered under that number decides what it does and returns.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <vector>

#include "core/post.h"
#include "support/kit/solver_test.h"

namespace koru::test::journal {

struct Call {
  int watcher;
  CSint *variable;
  int code;
  int oldValue;
  int newValue;
  int index = -1;

  bool operator==(const Call &) const = default;
};

inline void PrintTo(const Call &call, std::ostream *out) {
  *out << "watcher " << call.watcher << " at [" << call.variable << "]." << call.index << " event " << call.code << ": "
       << call.oldValue << " -> " << call.newValue;
}

struct Journal {
  std::vector<Call> calls;
  std::map<int, std::function<bool(const Call &)>> reactions;

  std::vector<int> watchers() const {
    std::vector<int> result;
    for (const Call &call : calls) result.push_back(call.watcher);
    return result;
  }
};

struct Watcher {
  Journal *journal;
  int number;
  std::shared_ptr<int> life;  // shared with the test that wants to see the record die
};

template <int code>
bool hear(Watcher &watcher, const Event &event) {
  Journal &journal = *watcher.journal;
  const Call call{watcher.number, event.var, code, event.oldValue, event.newValue, event.index};
  journal.calls.push_back(call);
  const auto reaction = journal.reactions.find(call.watcher);
  return reaction == journal.reactions.end() || reaction->second(call);
}

// Hears all six events.
inline constexpr auto kHearsAll = handlers<Watcher>({.newMin = on<hear<kNewMin>>,
                                                     .newMax = on<hear<kNewMax>>,
                                                     .minBound = on<hear<kMinBound>>,
                                                     .maxBound = on<hear<kMaxBound>>,
                                                     .bound = on<hear<kBound>>,
                                                     .removed = on<hear<kRemoved>>});
inline constexpr auto kHearsNewMax = handlers<Watcher>({.newMax = on<hear<kNewMax>>});
inline constexpr auto kHearsNothing = handlers<Watcher>({});

struct Kind {
  const TableOf<Watcher> *table = &kHearsAll;  // constraints keep a pointer to it
  ConstraintFlags flags = kWoken;
  const char *name = "watch";
};

// Posts watcher `number` on the variables, in order, with their positions as indices.
inline bool watch(Journal &journal, int number, const std::vector<CSint *> &variables, const Kind &kind = {},
                  const std::shared_ptr<int> &life = nullptr) {
  Posting posting{kind.name};
  auto held = posting.add(*kind.table, Watcher{&journal, number, life}, kind.flags);
  for (std::size_t i = 0; i < variables.size(); ++i) held.attach(variables[i], static_cast<int>(i));
  return static_cast<bool>(posting);
}

// The fixture of tests that post watchers: variables over [0, 99], and a life to hand to a watcher.
class JournalTest : public SolverTest {
 protected:
  Journal journal;
  std::shared_ptr<int> life = std::make_shared<int>(0);
  CSint *x = nullptr;
  CSint *y = nullptr;
  CSint *z = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    for (CSint **each : {&x, &y, &z}) *each = cs_createCSint(0, 99);
  }
  bool alive() const { return life.use_count() > 1; }
  void fails(int number) {
    journal.reactions[number] = [](const Call &) { return false; };
  }
};

}  // namespace koru::test::journal
