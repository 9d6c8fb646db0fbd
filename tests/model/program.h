// SPDX-License-Identifier: MIT
// A random programme of narrowings and choice-point operations, run on the solver and on a model at the same time.
// Everything observable is compared after each step; the steps taken are kept as text, so that a failing seed can be
// printed as the programme it is.
#pragma once

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
class Programme {
 public:
  explicit Programme(std::uint64_t seed) : random_(seed) {}

  void run(int steps) {
    callbackVariables.clear();
    undoneCalls.clear();
    cs_init();
    for (int i = 0; i < 3; ++i) create();
    for (int i = 0; i < steps && !stopped_ && !::testing::Test::HasFailure(); ++i) step();
    cs_end();
    EXPECT_TRUE(undoneCalls.empty()) << "ending the solver calls nobody back";
    if (::testing::Test::HasFailure()) ADD_FAILURE() << text_;
  }

 private:
  static constexpr int kRelations = 6;

  void say(const std::string &line) { text_ += line + "\n"; }

  void step() {
    const int choice = random_.below(100);
    if (choice < 55) return narrow();
    if (choice < 70) return save();
    if (choice < 90) return close();
    if (choice < 96) return registerCallback();
    if (model_.variables() < 8) create();
  }

  // Mostly small domains; some span words of a bit array, some lie at an end of the int range.
  void create() {
    const int width = random_.chance(20) ? random_.between(60, 140) : random_.between(0, 9);
    int low = random_.between(-5, 5);
    if (random_.chance(8)) low = INT_MIN;
    if (random_.chance(8)) low = INT_MAX - width;
    const bool holes = random_.chance(30);
    std::set<int> values;
    for (int offset = 0; offset <= width; ++offset)
      if (!holes || random_.chance(60)) values.insert(low + offset);
    if (values.empty()) values.insert(low);
    if (*values.rbegin() - *values.begin() + 1 == static_cast<int>(values.size())) {
      callbackVariables.push_back(cs_createCSint(*values.begin(), *values.rbegin()));
    } else {
      callbackVariables.push_back(fromValues({values.rbegin(), values.rend()}));
    }
    model_.create(values);
    std::string list;
    for (int value : values) list += " " + std::to_string(value);
    say("v" + std::to_string(model_.variables() - 1) + " = create" + list);
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

  static bool relate(CSint *v, Relation relation, int value) {
    switch (relation) {
      case Relation::kEQ:
        return cs_EQ(v, value);
      case Relation::kNEQ:
        return cs_NEQ(v, value);
      case Relation::kLE:
        return cs_LE(v, value);
      case Relation::kLT:
        return cs_LT(v, value);
      case Relation::kGE:
        return cs_GE(v, value);
      case Relation::kGT:
        return cs_GT(v, value);
    }
    return false;
  }

  void narrow() {
    static const char *const kNames[kRelations] = {"EQ", "NEQ", "LE", "LT", "GE", "GT"};
    const int i = someVariable();
    // Removals are the commonest: they make holes.
    const int relation = random_.chance(50) ? 1 : random_.below(kRelations);
    const int value = someValue(model_.view(i));
    say(std::string(kNames[relation]) + "(v" + std::to_string(i) + ", " + std::to_string(value) + ")");
    const bool expected = model_.relate(i, static_cast<Relation>(relation), value);
    if (!stillMeaningful()) return;
    EXPECT_EQ(relate(solverVariable(i), static_cast<Relation>(relation), value), expected);
    compare(i);
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
};

template <class Model>
void runProgrammes(std::uint64_t firstSeed, int count, int steps) {
  for (int i = 0; i < count; ++i) {
    SCOPED_TRACE("seed " + std::to_string(firstSeed + static_cast<std::uint64_t>(i)));
    Programme<Model>(firstSeed + static_cast<std::uint64_t>(i)).run(steps);
    if (::testing::Test::HasFailure()) return;
  }
}

}  // namespace koru::test::model
