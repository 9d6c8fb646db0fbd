// SPDX-License-Identifier: MIT
// The scenarios of the memory campaign: a call, or a piece of a host program, and what it works on.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "catalogue/posting.h"
#include "koru.h"
#include "support/kit/solver_test.h"

namespace koru::test {

// Of which domains a stage is made.
struct StageDomains {
  int min = 0;
  int max = 9;
  int constant = 3;
};

// What scenarios find, a letter each. Arrays are kept until the solver has ended, as posters ask.
class Stage {
 public:
  CSint *const x;
  CSint *const y;
  CSint *const z;
  CSint *const b = cs_createCSint(0, 1);
  CSint *const h = fromValues({0, 5, 9});
  CSint *const n = cs_createCSint(-6, 6);
  CSint *const t;
  // Watched: c < d and c != e.
  CSint *const c;
  CSint *const d;
  CSint *const e;

  explicit Stage(const StageDomains &domains = {})
      : x(cs_createCSint(domains.min, domains.max)),
        y(cs_createCSint(domains.min, domains.max)),
        z(cs_createCSint(domains.min, domains.max)),
        t(CSINT(domains.constant)),
        c(cs_createCSint(domains.min, domains.max)),
        d(cs_createCSint(domains.min, domains.max)),
        e(cs_createCSint(domains.min, domains.max)) {
    cs_NEQ(n, 0);
    cs_NEQ(n, 2);
    cs_setName(h, "short");
    // Their places are known: reports have none to look up, which would allocate where the platform can.
    cs_setProfilerLocator(
        nullptr, [](void *) { return "stage"; }, nullptr);
    cs_Lt(c, d);
    cs_Neq(c, e);
    cs_setProfilerLocator(nullptr, nullptr, nullptr);
    for (std::size_t i = 0; kLetters[i] != '\0'; ++i) sizes_.push_back(cs_getNbElements(at(kLetters[i])));
  }
  Stage(const Stage &) = delete;
  Stage &operator=(const Stage &) = delete;

  CSint *at(char letter) const {
    CSint *const all[] = {x, y, z, b, h, n, t, c, d, e};
    return all[std::string(kLetters).find(letter)];
  }
  // Whether it has the values that it began with.
  bool isWhole(char letter) const { return cs_getNbElements(at(letter)) == sizes_[std::string(kLetters).find(letter)]; }
  CSint **array(const char *letters) {
    std::vector<CSint *> made;
    for (; *letters != '\0'; ++letters) made.push_back(at(*letters));
    return keep(std::move(made));
  }
  CSint **keep(std::vector<CSint *> array) { return arrays_.emplace_back(std::move(array)).data(); }

  // What a scenario has seen beyond domains and constraints: texts, counters, solutions.
  std::string seen;
  // What has been prepared.
  std::deque<catalogue::Posting> postings;
  std::vector<CSint *> variables;

 private:
  static constexpr char kLetters[] = "xyzbhntcde";

  std::deque<std::vector<CSint *>> arrays_;
  std::vector<int> sizes_;
};

struct Scenario {
  // A function that is exported, and what it is given: "cs_Eq/xh". Other scenarios have names of their own.
  std::string name;
  // Whether it succeeded.
  std::function<bool(Stage &)> run;
  // Each failed allocation makes a call fail at once; a longer scenario may get on without.
  bool failsAtOnce = true;
  // Whether all is as a failed call has to leave it; what a restore brings back is looked at in any case.
  std::function<bool(Stage &)> afterFailure = {};
  // What there is before memory runs out, and how many times as many of its pushes are made to fail as of others.
  std::function<void(Stage &)> prepare = {};
  int rooms = 1;

  std::string function() const { return name.substr(0, name.find('/')); }
};

class Scenarios {
 public:
  void add(std::string name, std::function<bool(Stage &)> run, std::function<bool(Stage &)> afterFailure = {}) {
    all_.push_back({std::move(name), std::move(run), true, std::move(afterFailure)});
  }
  // One that goes on from what there is.
  void addPrepared(std::string name, std::function<void(Stage &)> prepare, std::function<bool(Stage &)> run) {
    all_.push_back({std::move(name), std::move(run), true, {}, std::move(prepare), 3});
  }
  // One that may go on after a failed allocation.
  void addLenient(std::string name, std::function<bool(Stage &)> run) {
    all_.push_back({std::move(name), std::move(run), false});
  }
  const std::vector<Scenario> &all() const { return all_; }

 private:
  std::vector<Scenario> all_;
};

// Each family in a file of its own.
void addRelations(Scenarios &scenarios);
void addGlobals(Scenarios &scenarios);
void addPostings(Scenarios &scenarios);  // of each row of the catalogue
void addVariables(Scenarios &scenarios);
void addCallbacks(Scenarios &scenarios);
void addNarrowings(Scenarios &scenarios);
void addSearches(Scenarios &scenarios);
void addPrograms(Scenarios &scenarios);

inline const std::vector<Scenario> &allScenarios() {
  static const Scenarios scenarios = [] {
    Scenarios made;
    for (const auto add :
         {addPostings, addRelations, addGlobals, addVariables, addCallbacks, addNarrowings, addSearches, addPrograms})
      add(made);
    return made;
  }();
  return scenarios.all();
}

}  // namespace koru::test
