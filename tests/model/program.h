// SPDX-License-Identifier: MIT
// A random program of narrowings and choice-point operations, run on the solver and on a model at the same time; with
// constraints, if the model has them. Everything observable is compared after each step; the steps taken are kept as
// text, so that a failing seed can be printed as the program it is.
//
// A Model has create or adopt, view, relate or take, registerCallback, save, close and compare, as those of state.h and
// snapshot.h.
#pragma once

#include <algorithm>
#include <deque>
#include <string>

#include "core/solver.h"
#include "model/state.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"

namespace koru::test::model {

// Callbacks are plain functions: they write here.
inline std::vector<Undone> undoneCalls;
inline std::vector<CSint *> callbackVariables;

inline void noteUndone(CSint *v, int index, bool ext) {
  int variable = -1;
  for (std::size_t i = 0; i < callbackVariables.size(); ++i)
    if (callbackVariables[i] == v) variable = static_cast<int>(i);
  undoneCalls.push_back({variable, index, ext});
}
inline void onUndo(CSint *v, int index) { noteUndone(v, index, false); }
inline void onUndoExt(CSint *v, int index) { noteUndone(v, index, true); }

template <class Model>
class Program {
 public:
  explicit Program(std::uint64_t seed) : random_(seed) {}

  void run(int steps) {
    callbackVariables.clear();
    undoneCalls.clear();
    cs_init();
    for (int i = 0; i < 3 || (Model::kPosts && i < 4); ++i) create();
    for (int i = 0; i < steps && !stopped_ && !::testing::Test::HasFailure(); ++i) step();
    cs_end();
    EXPECT_TRUE(undoneCalls.empty()) << "ending the solver calls nobody back";
    if (::testing::Test::HasFailure()) ADD_FAILURE() << text_;
  }

 private:
  void say(const std::string &line) { text_ += line + "\n"; }

  void step() {
    const int choice = random_.below(100);
    if (choice < 55) return Model::kPosts && random_.chance(40) ? post() : narrow();
    if (choice < 70) return save();
    if (choice < 90) return close();
    if (choice < 96) return registerCallback();
    if (model_.variables() < (Model::kPosts ? 12 : 8)) create();
  }

  // Mostly small domains; some span words of a bit array, some lie at an end of the int range. Sums of those would have
  // more values than can be looked at after each step.
  void create() {
    const int width = !Model::kPosts && random_.chance(20) ? random_.between(60, 140) : random_.between(0, 9);
    int low = random_.between(-5, 5);
    if (!Model::kPosts && random_.chance(8)) low = INT_MIN;
    if (!Model::kPosts && random_.chance(8)) low = INT_MAX - width;
    const bool holes = random_.chance(30);
    std::set<int> values;
    for (int offset = 0; offset <= width; ++offset)
      if (!holes || random_.chance(60)) values.insert(low + offset);
    if (values.empty()) values.insert(low);
    const bool interval = *values.rbegin() - *values.begin() + 1 == static_cast<int>(values.size());
    std::string list;
    for (int value : values) list += " " + std::to_string(value);
    say("v" + std::to_string(model_.variables()) + " = create" + list);
    CSint *v =
        interval ? cs_createCSint(*values.begin(), *values.rbegin()) : fromValues({values.rbegin(), values.rend()});
    callbackVariables.push_back(v);
    if constexpr (Model::kPosts)
      model_.adopt(v);
    else
      model_.create(values);
    compare(model_.variables() - 1);
  }

  int someVariable() { return random_.below(model_.variables()); }
  CSint *solverVariable(int i) { return callbackVariables[static_cast<std::size_t>(i)]; }

  int someValue(const View &view) {
    if (random_.chance(5)) return random_.chance(50) ? INT_MIN : INT_MAX;
    if (random_.chance(60)) return random_.pick(view.values);
    const long long value = (random_.chance(50) ? view.min : view.max) + static_cast<long long>(random_.between(-3, 3));
    return value < INT_MIN ? INT_MIN : value > INT_MAX ? INT_MAX : static_cast<int>(value);
  }

  void narrow() {
    static const char *const kNames[] = {"EQ", "NEQ", "LE", "LT", "GE", "GT"};
    const int i = someVariable();
    // Removals are the commonest: they make holes.
    const int relation = random_.chance(50) ? 1 : random_.below(6);
    const int value = someValue(model_.view(i));
    say(std::string(kNames[relation]) + "(v" + std::to_string(i) + ", " + std::to_string(value) + ")");
    CSint *v = solverVariable(i);
    if constexpr (Model::kPosts) {
      const bool result = twin::kRelationOf[relation](v, value);
      model_.take(callbackVariables);
      EXPECT_TRUE(!result || allSatisfy(v, {relation, value}));
    } else {
      const bool expected = model_.relate(i, relation, value);
      if (!stillMeaningful()) return;
      EXPECT_EQ(twin::kRelationOf[relation](v, value), expected);
    }
    compare(i);
  }

  static bool allSatisfy(CSint *v, const CSvalueSelection &r) {
    const std::vector<int> all = values(v);
    copies::Domain domain(all.begin(), all.end());
    return copies::keep(domain, r) && domain.size() == all.size();
  }

  void post() {
    if constexpr (Model::kPosts) {
      const int kind = random_.below(8);
      const int i = someVariable();
      const int j = someVariable();
      say("post " + std::to_string(kind) + " on v" + std::to_string(i) + ", v" + std::to_string(j));
      post(kind, solverVariable(i), solverVariable(j));
      model_.take(callbackVariables);
    }
  }

  void post(int kind, CSint *x, CSint *y) {
    const auto bounds = [](CSint *v) { return std::pair(cs_getMin(v), cs_getMax(v)); };
    const auto below = [&](auto a, auto b, int gap) { return a.first + gap <= b.first && a.second + gap <= b.second; };
    EXPECT_TRUE(kind != 0 || !cs_Neq(x, y) || x != y);
    EXPECT_TRUE(kind != 1 || !cs_Le(x, y) || below(bounds(x), bounds(y), 0));
    EXPECT_TRUE(kind != 2 || !cs_Lt(x, y) || below(bounds(x), bounds(y), 1));
    EXPECT_TRUE(kind != 3 || !cs_Eq(x, y) || values(x) == values(y));
    if (model_.variables() >= 16) return;
    if (kind == 4) adopt(cs_Add(x, y));
    if (kind == 5) adopt(cs_Sub(x, y));
    if (kind == 6) adopt(cs_VAdd(3, x, y, solverVariable(someVariable())));
    if (kind != 7) return;
    arrays_.emplace_back();
    for (int n = random_.between(1, 5); n > 0; --n) arrays_.back().push_back(solverVariable(someVariable()));
    cs_AllNeq(arrays_.back().data(), static_cast<int>(arrays_.back().size()) - 1);
  }

  // The result of a function, which may be an operand or none.
  void adopt(CSint *v) {
    if (v == nullptr || std::ranges::find(callbackVariables, v) != callbackVariables.end()) return;
    callbackVariables.push_back(v);
    model_.adopt(v);
  }

  void save() {
    if (model_.contexts() >= 12) return;
    say("saveContext");
    model_.save();
    EXPECT_EQ(cs_saveContext(), model_.contexts());
  }

  Close someClose(int label) {
    if (random_.chance(55)) return Close::kRestore;
    const bool acceptable = Model::kPredictsInnerAccept || label <= 1;
    return acceptable && random_.chance(50) ? Close::kAccept : Close::kForget;
  }

  // Labels out of range close nothing; a label of 0 stands for the forms without one.
  void close() {
    const int open = model_.contexts();
    const int form = random_.below(5);
    if (form == 0 && open > 0) return restoreAndSave();
    if (form == 1) return closeTo(1, 2, someClose(1));
    if (form == 2) {
      const int label = random_.between(-1, open + 2);
      return closeTo(label, 1, someClose(label));
    }
    closeTo(open, 0, someClose(open));
  }

  void restoreAndSave() {
    say("restoreAndSaveContext");
    const std::vector<Undone> expected = model_.close(model_.contexts(), Close::kRestore);
    model_.save();
    if (!stillMeaningful()) return;
    EXPECT_EQ(cs_restoreAndSaveContext(), model_.contexts());
    compareAll(expected);
  }

  // form 0: the newest, 1: Until, 2: All
  void closeTo(int label, int form, Close how) {
    static const char *const kNames[] = {"forget", "accept", "restore"};
    static const char *const kForms[] = {"", "Until", "All"};
    // There is no function that forgets all: the Until form with label 1 does it.
    if (form == 2 && how == Close::kForget) form = 1;
    say(std::string(kNames[static_cast<int>(how)]) + kForms[form] + "(" + std::to_string(label) + ")");
    std::vector<Undone> expected;
    if (label >= 1 && label <= model_.contexts()) expected = model_.close(label, how);
    if (!stillMeaningful()) return;
    call(label, form, how);
    compareAll(expected);
  }

  static void call(int label, int form, Close how) {
    if (form == 0)
      return how == Close::kForget   ? cs_forgetSaveContext()
             : how == Close::kAccept ? cs_acceptContext()
                                     : cs_restoreContext();
    if (form == 1)
      return how == Close::kForget   ? cs_forgetSaveContextUntil(label)
             : how == Close::kAccept ? cs_acceptContextUntil(label)
                                     : cs_restoreContextUntil(label);
    return how == Close::kAccept ? cs_acceptAll() : cs_restoreAll();
  }

  void registerCallback() {
    const Undone callback{random_.chance(10) ? -1 : someVariable(), random_.between(-9, 9), random_.chance(50)};
    say("backtrack(v" + std::to_string(callback.variable) + ", " + std::to_string(callback.index) + ")");
    CSint *v = callback.variable < 0 ? nullptr : solverVariable(callback.variable);
    if (callback.ext)
      cs_backtrackExt(v, callback.index, onUndoExt);
    else
      cs_backtrack(v, callback.index, onUndo);
    model_.registerCallback(callback);
  }

  bool stillMeaningful() {
    if constexpr (Model::kPredictsInnerAccept) stopped_ = stopped_ || !model_.meaningful();
    return !stopped_;
  }

  void compareAll(const std::vector<Undone> &expectedCalls) {
    for (int i = 0; i < model_.variables(); ++i) compare(i);
    EXPECT_TRUE(undoneCalls == expectedCalls) << "callbacks: which ones, in which order, with which arguments";
    undoneCalls.clear();
    EXPECT_EQ(solver::contexts.count(), model_.contexts());
  }

  void compare(int i) {
    CSint *v = solverVariable(i);
    const View expected = model_.view(i);
    if constexpr (Model::kPosts) model_.compare(i, v);
    EXPECT_EQ(cs_getMin(v), expected.min) << "v" << i;
    EXPECT_EQ(cs_getMax(v), expected.max) << "v" << i;
    EXPECT_EQ(cs_getNbElements(v), expected.count) << "v" << i;
    EXPECT_EQ(cs_isFree(v), expected.count > 1) << "v" << i;
    EXPECT_EQ(cs_isInstantiated(v), expected.count == 1) << "v" << i;
    EXPECT_EQ(values(v), expected.values) << "v" << i;
    const int probe = someValue(expected);
    bool present = false;
    for (int value : expected.values) present = present || value == probe;
    EXPECT_EQ(cs_isIn(v, probe), present) << "v" << i << " " << probe;
  }

  Random random_;
  Model model_;
  std::string text_;
  bool stopped_ = false;
  std::deque<std::vector<CSint *>> arrays_;  // constraints keep them
};

template <class Model>
void runPrograms(std::uint64_t firstSeed, int count, int steps) {
  for (int i = 0; i < count; ++i) {
    SCOPED_TRACE("seed " + std::to_string(firstSeed + static_cast<std::uint64_t>(i)));
    Program<Model>(firstSeed + static_cast<std::uint64_t>(i)).run(steps);
    if (::testing::Test::HasFailure()) return;
  }
}

}  // namespace koru::test::model
