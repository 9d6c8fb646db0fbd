// SPDX-License-Identifier: MIT
// A random programme with constraints. What propagation makes of the domains is taken from the solver after each call,
// once it is known to have shrunk them only; what a choice point brings back is predicted by copies.
#pragma once

#include <algorithm>
#include <memory>
#include <string>

#include "model/program.h"

namespace koru::test::model {

// All that a restore must bring back of one variable.
struct Snapshot {
  std::vector<int> values;
  int count;
  std::vector<const Constraint *> attached;
  std::vector<int> indexes;
  bool operator==(const Snapshot &) const = default;
};

inline Snapshot snapshot(CSint *v) {
  Snapshot result{values(v), cs_getNbElements(v), {}, {}};
  for (const Entry *entry = v->constraints; entry != nullptr; entry = entry->next) {
    result.attached.push_back(entry->constraint);
    result.indexes.push_back(entry->index);
  }
  return result;
}

class ConstraintProgramme {
 public:
  explicit ConstraintProgramme(std::uint64_t seed) : random_(seed) {}

  void run(int steps) {
    callbackVariables.clear();
    undoneCalls.clear();
    cs_init();
    for (int i = 0; i < 4; ++i) create();
    for (int i = 0; i < steps && !::testing::Test::HasFailure(); ++i) step();
    cs_end();
    EXPECT_TRUE(undoneCalls.empty()) << "ending the solver calls nobody back";
    if (::testing::Test::HasFailure()) ADD_FAILURE() << text_;
  }

 private:
  struct Copy {
    std::vector<Snapshot> state;
    std::size_t registered;
  };

  void say(const std::string &line) { text_ += line + "\n"; }
  static std::string name(int i) { return "v" + std::to_string(i); }
  CSint *at(int i) { return callbackVariables[static_cast<std::size_t>(i)]; }
  int variables() const { return static_cast<int>(callbackVariables.size()); }
  int some() { return random_.below(variables()); }

  void step() {
    const int choice = random_.below(100);
    if (choice < 30) return shrink([this] { narrow(); });
    if (choice < 52) return shrink([this] { post(); });
    if (choice < 68) return save();
    if (choice < 90) return close();
    if (choice < 97) return registerCallback();
    if (variables() < 12) create();
  }

  void adopt(CSint *v) {
    if (v == nullptr) return;
    for (CSint *known : callbackVariables)
      if (known == v) return;
    callbackVariables.push_back(v);
    state_.push_back(snapshot(v));
    created_.push_back({values(v), cs_getNbElements(v), {}, {}});
    attachments_.push_back(cs_getNbConstraints(v));
  }

  void create() {
    const int low = random_.between(-4, 4);
    const int high = low + random_.between(0, 8);
    say(name(variables()) + " = create " + std::to_string(low) + ".." + std::to_string(high));
    adopt(cs_createCSint(low, high));
  }

  void narrow() {
    CSint *v = at(some());
    const int value = random_.between(cs_getMin(v) - 1, cs_getMax(v) + 1);
    const int relation = random_.below(4);
    say("narrow " + std::to_string(relation) + " to " + std::to_string(value));
    expectNarrowed(v, relation, value);
  }

  static void expectNarrowed(CSint *v, int relation, int value) {
    const bool present = cs_isIn(v, value);
    switch (relation) {
      case 0:
        EXPECT_TRUE(!cs_EQ(v, value) || (present && cs_getValue(v) == value));
        break;
      case 1:
        EXPECT_TRUE(!cs_NEQ(v, value) || !cs_isIn(v, value));
        break;
      case 2:
        EXPECT_TRUE(!cs_LE(v, value) || cs_getMax(v) <= value);
        break;
      default:
        EXPECT_TRUE(!cs_GE(v, value) || cs_getMin(v) >= value);
    }
  }

  void post() {
    const int kind = random_.below(8);
    const int i = some();
    const int j = some();
    say("post " + std::to_string(kind) + " on " + name(i) + ", " + name(j));
    CSint *x = at(i);
    CSint *y = at(j);
    if (kind < 4) return relate(kind, x, y);
    if (variables() >= 16) return;
    if (kind == 4) adopt(cs_Add(x, y));
    if (kind == 5) adopt(cs_Sub(x, y));
    if (kind == 6) adopt(cs_VAdd(3, x, y, at(some())));
    if (kind == 7) postAllNeq();
  }

  static void relate(int kind, CSint *x, CSint *y) {
    switch (kind) {
      case 0:
        EXPECT_TRUE(!cs_Neq(x, y) || x != y);
        break;
      case 1:
        EXPECT_TRUE(!cs_Le(x, y) || (cs_getMin(x) <= cs_getMin(y) && cs_getMax(x) <= cs_getMax(y)));
        break;
      case 2:
        EXPECT_TRUE(!cs_Lt(x, y) || (cs_getMin(x) < cs_getMin(y) && cs_getMax(x) < cs_getMax(y)));
        break;
      default:
        EXPECT_TRUE(!cs_Eq(x, y) || values(x) == values(y));
    }
  }

  void postAllNeq() {
    const int size = random_.between(0, 4);
    arrays_.push_back(std::make_unique<std::vector<CSint *>>(static_cast<std::size_t>(size) + 1));
    for (CSint *&v : *arrays_.back()) v = at(some());
    cs_AllNeq(arrays_.back()->data(), size);
  }

  // Whatever the call answers, it may take values away but never bring any back.
  template <class Call>
  void shrink(Call call) {
    call();
    for (int i = 0; i < static_cast<int>(state_.size()); ++i) {
      const auto at_ = static_cast<std::size_t>(i);
      const Snapshot now = snapshot(at(i));
      const std::vector<int> &before = state_[at_].values;
      EXPECT_TRUE(std::includes(before.begin(), before.end(), now.values.begin(), now.values.end())) << name(i);
      EXPECT_EQ(now.count, static_cast<int>(now.values.size())) << name(i);
      EXPECT_GE(now.attached.size(), state_[at_].attached.size()) << name(i);
      EXPECT_GE(cs_getNbConstraints(at(i)), attachments_[at_]) << name(i);
      EXPECT_GE(cs_getNbConstraints(at(i)), static_cast<int>(now.attached.size())) << name(i);
      state_[at_] = now;
      attachments_[at_] = cs_getNbConstraints(at(i));
    }
  }

  void save() {
    if (copies_.size() >= 10) return;
    say("saveContext");
    copies_.push_back({state_, registered_.size()});
    EXPECT_EQ(cs_saveContext(), static_cast<int>(copies_.size()));
  }

  void close() {
    const int label = random_.between(0, static_cast<int>(copies_.size()) + 1);
    const bool valid = label >= 1 && label <= static_cast<int>(copies_.size());
    const int how = random_.chance(60) ? 0 : random_.chance(60) ? 1 : 2;
    if (how == 2 && label > 1) return;  // accepting inside an outer context is not for copies to predict
    static const char *const kNames[] = {"restoreUntil ", "forgetUntil ", "acceptUntil "};
    say(kNames[how] + std::to_string(label));
    const std::vector<Undone> expected = valid ? predict(label, how) : std::vector<Undone>{};
    if (how == 0) cs_restoreContextUntil(label);
    if (how == 1) cs_forgetSaveContextUntil(label);
    if (how == 2) cs_acceptContextUntil(label);
    EXPECT_TRUE(undoneCalls == expected);
    undoneCalls.clear();
    for (int i = 0; i < variables(); ++i) {
      const auto at_ = static_cast<std::size_t>(i);
      EXPECT_TRUE(snapshot(at(i)) == state_[at_]) << name(i) << " has its domain and its constraints back";
      EXPECT_EQ(cs_getNbConstraints(at(i)), attachments_[at_]) << name(i) << ": the number never falls";
    }
  }

  std::vector<Undone> predict(int label, int how) {
    const Copy copy = copies_[static_cast<std::size_t>(label - 1)];
    copies_.resize(static_cast<std::size_t>(label - 1));
    if (how == 1) return {};
    const auto kept = static_cast<std::ptrdiff_t>(copy.registered);
    std::vector<Undone> calls(registered_.rbegin(), registered_.rend() - kept);
    registered_.resize(copy.registered);
    if (how == 2) return {};
    for (std::size_t i = 0; i < state_.size(); ++i) state_[i] = i < copy.state.size() ? copy.state[i] : created_[i];
    return calls;
  }

  void registerCallback() {
    const Undone callback{some(), random_.between(-9, 9), random_.chance(50)};
    say("backtrack");
    (callback.ext ? cs_backtrackExt : cs_backtrack)(at(callback.variable), callback.index,
                                                    callback.ext ? onUndoExt : onUndo);
    registered_.push_back(callback);
  }

  Random random_;
  std::string text_;
  std::vector<Snapshot> state_;
  std::vector<Snapshot> created_;
  std::vector<int> attachments_;
  std::vector<Copy> copies_;
  std::vector<Undone> registered_;
  std::vector<std::unique_ptr<std::vector<CSint *>>> arrays_;  // constraints keep them
};

}  // namespace koru::test::model
