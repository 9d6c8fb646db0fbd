// SPDX-License-Identifier: MIT
// Random models of all constraints for the tests of walks and of processes, and what the searches of koru.h make of
// them.
#pragma once

#include <list>
#include <set>

#include "koru_extras.h"
#include "semantic/cases.h"
#include "support/kit/random.h"

namespace koru::test::brute {

// The domains of all variables, and how many contexts are open.
using State = std::vector<int>;

struct Outcome {
  bool result = false;
  std::vector<State> solutions;
  State end;
  long long fails = 0;
  long long choicePoints = 0;
  bool operator==(const Outcome &) const = default;
};

// A few constraints on shared variables, posted in the solver that runs.
class RandomModel {
 public:
  // Of any constraints, or of one alone.
  explicit RandomModel(std::uint64_t seed, const Case *only = nullptr) : random_(seed) {
    const std::vector<Case> &cases = allCases();
    const Case &first = only != nullptr ? *only : random_.pick(cases);
    const Constraint &form = random_.pick(first.forms);
    for (int i = 0; i < form.arity; ++i) {
      const Room &room = first.rooms[std::min(static_cast<std::size_t>(i), first.rooms.size() - 1)];
      all_.push_back(domain(room.low, room.width + random_.below(2)));
    }
    while (all_.size() < 4 || (all_.size() < 6 && random_.chance(50)))
      all_.push_back(domain(first.rooms.back().low, first.rooms.back().width + 1));
    consistent_ = add(form, false);
    for (int n = only != nullptr ? 0 : random_.below(3); n > 0 && consistent_; --n)
      consistent_ = add(random_.pick(random_.pick(cases).forms), true);
    for (CSint *v : all_)
      if (random_.chance(85) || labelled_.empty()) labelled_.push_back(v);
    select_ = std::array{cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin,
                         cs_findFreeVarNbConstraints}[static_cast<std::size_t>(random_.below(4))];
  }

  bool consistent() const { return consistent_; }
  const std::string &text() const { return text_; }
  CSint **array() { return labelled_.data(); }
  int size() const { return static_cast<int>(labelled_.size()); }
  CSfindFreeVar select() const { return select_; }
  CSint *cost() const { return all_.back(); }
  Random &random() { return random_; }

  State state() const {
    const int contexts = cs_saveContext();
    cs_restoreContext();
    State s{contexts};
    for (CSint *v : all_)
      for (const int value : values(v)) s.push_back(value);
    return s;
  }

 private:
  static std::vector<int> values(CSint *v) {
    std::vector<int> result{cs_getNbElements(v)};
    for (int value = cs_getMin(v);; value = cs_getNextValue(v, value)) {
      result.push_back(value);
      if (value == cs_getMax(v)) return result;
    }
  }

  CSint *domain(int low, int width) {
    std::vector<int> chosen;
    while (chosen.empty())
      for (int i = 0; i < width; ++i)
        if (random_.chance(75)) chosen.push_back(low + i);
    return cs_createCSintFromDomain(chosen.data(), static_cast<int>(chosen.size()));
  }

  bool add(const Constraint &form, bool anywhere) {
    std::vector<CSint *> x;
    for (int i = 0; i < form.arity; ++i) x.push_back(anywhere ? random_.pick(all_) : all_[static_cast<std::size_t>(i)]);
    text_ += form.name + "; ";
    CSint *made = nullptr;
    kept_.push_back(std::move(x));
    if (!form.post(kept_.back().data(), made)) return false;
    if (made != nullptr) all_.push_back(made);
    return true;
  }

  Random random_;
  std::vector<CSint *> all_, labelled_;
  std::list<std::vector<CSint *>> kept_;  // posters may keep the arrays
  CSfindFreeVar select_ = nullptr;
  bool consistent_ = false;
  std::string text_;
};

inline RandomModel *model = nullptr;
inline Outcome *outcome = nullptr;

inline int cancelAfter = -1;  // so many solutions; never when negative

inline void note(CSint **, int) {
  outcome->solutions.push_back(model->state());
  if (static_cast<int>(outcome->solutions.size()) == cancelAfter) cs_cancelSearch();
}
inline void noteCost(CSint **array, int size, CSint *) { note(array, size); }

// The last two are of search objects, without an objective and with one.
enum class Mode { kAll, kFirst, kMinimize, kObject, kObjective };

inline bool isObject(Mode mode) { return mode == Mode::kObject || mode == Mode::kObjective; }

// A value selector with nothing to remember, and choices of the host's: all the same at the same node.
inline int lastUnbound(CSint **vars, int n, void *) {
  while (n > 0 && !cs_isFree(vars[n - 1])) --n;
  return n - 1;
}
inline bool notTheGreatest(CSvalueSelection *decision, int index, CSint **vars, int, void *) {
  *decision = {CS_METHOD_NEQ, cs_getMax(vars[index])};
  return true;
}

// A search object with any options that a walk can follow.
inline CSsearch *createSearch(RandomModel &m, Mode mode) {
  Random &random = m.random();
  const int first = random.between(0, m.size());
  CSsearch *search = cs_createSearch(m.array(), first);
  static CSvalueSelector *selectors[64];
  for (int i = 0; i < 64; ++i) selectors[i] = cs_getValueSelector(i % 6);  // and null
  CSsearchOptions how = {};
  how.size = sizeof how;
  how.chooseVariable = lastUnbound;
  how.chooseValue = notTheGreatest;
  how.selectors = selectors;
  if (mode == Mode::kObjective) (random.chance(50) ? how.minimize : how.maximize) = m.cost();
  const std::vector<int> orders = {
      CS_ORDER_INPUT,       CS_ORDER_SMALLEST, CS_ORDER_LARGEST,          CS_ORDER_SMALLEST_MIN,
      CS_ORDER_LARGEST_MAX, CS_ORDER_REGRET,   CS_ORDER_MOST_CONSTRAINED, CS_ORDER_HOST};
  const std::vector<int> values = {CS_VALUE_MIN,       CS_VALUE_MIDDLE, CS_VALUE_MEDIAN,   CS_VALUE_LOW_HALF,
                                   CS_VALUE_HIGH_HALF, CS_VALUE_HOST,   CS_VALUE_SELECTOR, CS_VALUE_MAX};
  how.branching = how.maximize == nullptr && random.chance(40) ? CS_BRANCH_VALUES : CS_BRANCH_BINARY;
  const auto anyValue = [&] {
    const int value = random.pick(values);
    return how.branching == CS_BRANCH_VALUES && (value == CS_VALUE_MAX || random.chance(70)) ? CS_VALUE_MIN : value;
  };
  how.order = random.pick(orders);
  how.value = anyValue();
  EXPECT_TRUE(cs_setSearchOptions(search, &how));
  EXPECT_TRUE(cs_addSearchPhase(search, m.array() + first, m.size() - first, random.pick(orders), anyValue()));
  return search;
}

// What a search object says of its search, and the state.
inline State endOf(RandomModel &m, const CSsearch *search) {
  State end = m.state();
  CSsearchStats stats;
  EXPECT_TRUE(cs_getSearchStats(search, &stats, sizeof stats));
  for (const long long n : {stats.choicePoints, stats.fails, stats.solutions}) end.push_back(static_cast<int>(n));
  for (const int n : {static_cast<int>(cs_getSearchStatus(search)), stats.objective, stats.bound}) end.push_back(n);
  const int *best = cs_getBestSolution(search);
  for (int i = 0; best != nullptr && i < m.size(); ++i) end.push_back(best[i]);
  return end;
}

// A solution of an object, whose contexts are its own. False when that was enough.
inline bool noteObject(CSsearch *search, void *) {
  State state = model->state();
  state[0] = cs_getBestSolution(search)[0];
  outcome->solutions.push_back(state);
  return static_cast<int>(outcome->solutions.size()) != cancelAfter;
}

inline Outcome byObject(RandomModel &m, Mode mode) {
  Outcome o;
  model = &m;
  outcome = &o;
  CSsearch *search = createSearch(m, mode);
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION)
    if (!noteObject(search, nullptr)) cs_stopSearch(search);
  CSsearchStats stats;
  cs_getSearchStats(search, &stats, sizeof stats);
  o.result = stats.solutions > 0;
  o.fails = stats.fails;
  o.choicePoints = stats.choicePoints;
  o.end = endOf(m, search);
  return o;
}

inline Outcome bySearch(RandomModel &m, Mode mode) {
  if (isObject(mode)) return byObject(m, mode);
  Outcome o;
  model = &m;
  outcome = &o;
  if (mode == Mode::kAll) o.result = cs_findAll(m.array(), m.size(), m.select(), note);
  if (mode == Mode::kFirst) o.result = cs_search(m.array(), m.size(), m.select());
  if (mode == Mode::kMinimize) o.result = cs_minimize(m.array(), m.size(), m.select(), m.cost(), noteCost);
  if (mode == Mode::kFirst && o.result) note(m.array(), m.size());
  o.fails = cs_getNbFails();
  o.choicePoints = cs_getNbChoicePoints();
  o.end = m.state();
  return o;
}

}  // namespace koru::test::brute
