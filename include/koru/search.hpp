// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: searching. The options are those of CSsearchOptions (koru_extras.h), in the same order of meaning.
#pragma once

#include "constraints.hpp"

namespace koru {
inline namespace v1 {

namespace detail {

// Rounded up: a limit that is small is still one.
KORU_APART inline long long milliseconds(double seconds) {
  if (!(seconds > -1e15 && seconds < 1e15)) throw std::invalid_argument("koru: a time that is no number of seconds");
  const auto whole = static_cast<long long>(seconds * 1000);
  return static_cast<double>(whole) < seconds * 1000 ? whole + 1 : whole;
}

}  // namespace detail

/// How a search stands, or has ended.
enum class Status {
  ready = CS_STATUS_READY,
  solution = CS_STATUS_SOLUTION,
  optimal = CS_STATUS_OPTIMAL,
  exhausted = CS_STATUS_EXHAUSTED,
  time_limit = CS_STATUS_TIME,
  fail_limit = CS_STATUS_FAILS,
  choice_limit = CS_STATUS_CHOICE_POINTS,
  solution_limit = CS_STATUS_SOLUTIONS,
  stopped = CS_STATUS_STOPPED,
  memory = CS_STATUS_MEMORY
};
using enum Status;

inline std::ostream &operator<<(std::ostream &out, Status status) {
  return out << cs_getStatusName(static_cast<CSstatus>(status));
}

/// What a search has done; the fields are those of CSsearchStats.
struct Statistics : CSsearchStats {};

inline std::ostream &operator<<(std::ostream &out, const Statistics &s) {
  return out << s.choicePoints << " choice points, " << s.fails << " fails, " << s.solutions << " solutions, "
             << s.restarts << " restarts, " << s.wakings << " wakings, depth " << s.peakDepth << ", " << s.seconds
             << " s";
}

/// The values of all variables of a model in one solution. While the search stands at it, one that is handed over by
/// reference reads the solver; a copy keeps the values, at the cost of one look at each variable.
class Solution {
 public:
  Solution() = default;  ///< none
  KORU_APART ~Solution() = default;
  explicit Solution(detail::State &live) : state_(&live), live_(true) {}
  KORU_APART Solution(const Solution &other) : state_(other.state_), values_(other.values_), open_(other.open_) {
    if (other.live_) keep();
  }
  KORU_APART Solution(Solution &&other) noexcept = default;  // what is live stays so
  Solution &operator=(Solution other) noexcept {
    std::swap(state_, other.state_);
    std::swap(live_, other.live_);
    values_.swap(other.values_);
    open_.swap(other.open_);
    return *this;
  }

  explicit operator bool() const { return state_ != nullptr; }

  /// The value; std::logic_error for a variable that the search has left open, and where there is no solution.
  KORU_APART int operator[](IntVar v) const {
    if (state_ == nullptr || v.state_ != state_) throw std::logic_error("koru: no solution for this variable");
    if (live_) return v.value();
    if (v.index_ >= values_.size() || open_[v.index_] != 0)
      throw std::logic_error("koru: a variable that was left open");
    return values_[v.index_];
  }
  KORU_APART long long operator[](const Linear &sum) const {
    long long total = sum.constant();
    for (const Term &term : sum.terms())
      total = detail::added(total, detail::multiplied(term.coefficient, (*this)[term.var]));
    return total;
  }
  KORU_APART std::vector<int> operator[](Vars vars) const {
    std::vector<int> all;
    for (const IntVar &v : vars) all.push_back((*this)[v]);
    return all;
  }

 private:
  KORU_APART void keep() {
    for (CSint *v : detail::stateOf(state_).vars) {
      values_.push_back(cs_getMin(v));
      open_.push_back(cs_getMin(v) != cs_getMax(v));
    }
  }

  detail::State *state_ = nullptr;
  bool live_ = false;
  std::vector<int> values_;
  std::vector<int> open_;  // truth values; of ints, as there is such a vector to compile already
};

/// A decision on a variable: an int stands for "= it".
struct Decision {
  Decision(int v) : value(v) {}
  Decision(Relation r, int v) : relation(r), value(v) {}

  Relation relation = Relation::eq;
  int value;
};

/// A constant below. They are literals: a program has nothing to make of those that it does not use.
struct OrderName {
  int kind;
};
struct ValueName {
  int kind;
};

/// Which variable comes next: one of the constants below, or a function that returns its position in the span.
struct Order {
  int kind = CS_ORDER_INPUT;
  std::function<std::size_t(std::span<const IntVar>)> choose{};

  explicit Order(int k) : kind(k) {}
  Order(OrderName name) : kind(name.kind) {}
  KORU_APART Order() = default;
  KORU_APART Order(const Order &) = default;
  KORU_APART Order &operator=(const Order &) = default;
  KORU_APART ~Order() = default;
  template <std::invocable<std::span<const IntVar>> F>
  Order(F f) : kind(CS_ORDER_HOST), choose(std::move(f)) {}
};

/// Which decision is taken first: one of the constants, prefer(values), select(selectors), or a function of the
/// variable.
struct Value {
  int kind = CS_VALUE_MIN;
  std::function<Decision(IntVar)> choose{};
  std::vector<int> preferred{};
  std::vector<CSvalueSelector *> selectors{};

  explicit Value(int k) : kind(k) {}
  Value(ValueName name) : kind(name.kind) {}
  KORU_APART Value() = default;
  KORU_APART Value(const Value &) = default;
  KORU_APART Value &operator=(const Value &) = default;
  KORU_APART ~Value() = default;
  template <std::invocable<IntVar> F>
  Value(F f) : kind(CS_VALUE_HOST), choose(std::move(f)) {}
};

inline constexpr OrderName input_order{CS_ORDER_INPUT}, smallest{CS_ORDER_SMALLEST}, largest{CS_ORDER_LARGEST},
    smallest_min{CS_ORDER_SMALLEST_MIN}, largest_max{CS_ORDER_LARGEST_MAX}, regret{CS_ORDER_REGRET},
    most_constrained{CS_ORDER_MOST_CONSTRAINED}, dom_wdeg{CS_ORDER_DOM_WDEG}, activity{CS_ORDER_ACTIVITY},
    set_times{CS_ORDER_SET_TIMES}, slack{CS_ORDER_SLACK}, slack_wdeg{CS_ORDER_SLACK_WDEG};
inline constexpr ValueName min_value{CS_VALUE_MIN}, max_value{CS_VALUE_MAX}, middle_value{CS_VALUE_MIDDLE},
    median_value{CS_VALUE_MEDIAN}, low_half{CS_VALUE_LOW_HALF}, high_half{CS_VALUE_HIGH_HALF},
    random_value{CS_VALUE_RANDOM}, slack_value{CS_VALUE_SLACK};

/// The value for each of the labelled variables to try first, until there is a solution; then that of the last one.
inline Value prefer(std::vector<int> values, Value otherwise = Value()) {
  otherwise.preferred = std::move(values);
  return otherwise;
}

/// The first decision of a value selector of koru.h, for each of the labelled variables; they outlive the search. Null:
/// the minimum.
inline Value select(std::vector<CSvalueSelector *> selectors) {
  Value value(CS_VALUE_SELECTOR);
  value.selectors = std::move(selectors);
  return value;
}

/// When the search begins again, having learnt.
struct Restart {
  int kind = CS_RESTARTS_NONE;
  int fails = 0;
  int growth = 0;
};
inline Restart constant(int fails) { return {CS_RESTARTS_CONSTANT, fails, 0}; }
inline Restart luby(int fails) { return {CS_RESTARTS_LUBY, fails, 0}; }
inline Restart geometric(int fails, int percent) { return {CS_RESTARTS_GEOMETRIC, fails, percent}; }

/// Which variables are let go for a while, in a search with an objective.
struct Neighbours {
  int kind = CS_NEIGHBOURS_NONE;
  int fails = 0;
  int percent = 0;
  std::function<std::vector<std::size_t>(std::span<const int>)> choose{};
};
inline Neighbours random_neighbours(int fails = 0, int percent = 0) { return {CS_NEIGHBOURS_RANDOM, fails, percent}; }
inline Neighbours linked_neighbours(int fails = 0, int percent = 0) { return {CS_NEIGHBOURS_LINKED, fails, percent}; }
/// Orders of tasks (Search::orders) that are let go: around a moment, of whole machines, of some tasks.
inline Neighbours window_neighbours(int fails = 0, int percent = 0) { return {CS_NEIGHBOURS_WINDOW, fails, percent}; }
inline Neighbours machine_neighbours(int fails = 0, int percent = 0) {
  return {CS_NEIGHBOURS_MACHINES, fails, percent};
}
inline Neighbours task_neighbours(int fails = 0, int percent = 0) { return {CS_NEIGHBOURS_TASKS, fails, percent}; }
/// Those at the positions that a function returns, which is handed the values of the best solution.
inline Neighbours chosen_neighbours(std::function<std::vector<std::size_t>(std::span<const int>)> choose,
                                    int fails = 0) {
  return {CS_NEIGHBOURS_HOST, fails, 0, std::move(choose)};
}

/// Variables to be labelled after the others, in an order of their own; the order and the value are constants.
struct Phase {
  std::vector<IntVar> vars;
  Order order{};
  Value value{};
};

/// Which of two tasks on a machine comes first, by a truth value and either_before(); machines have any numbers.
struct TaskOrder {
  IntVar first;
  IntVar start;
  IntVar duration;
  IntVar other_start;
  IntVar other_duration;
  int machine = 0;
};

/// Orders of tasks, labelled after the variables and before the phases; cs_addSearchOrders.
struct Orders {
  std::vector<TaskOrder> tasks{};
  Order order = slack_wdeg;
  Value value = slack_value;
};

enum class Branching { binary = CS_BRANCH_BINARY, values = CS_BRANCH_VALUES };

/// What a search is to do, as designated initialisers in this order: {.vars = x, .order = dom_wdeg, .seconds = 5}.
struct Search {
  std::vector<IntVar> vars{};  ///< to be labelled; none, and no orders: all that the model has made
  Order order{};
  Value value{};
  Orders orders{};
  std::vector<Phase> then{};
  Branching branching = Branching::binary;
  Restart restart{};
  Neighbours neighbours{};
  bool last_conflict = false;
  bool random_ties = false;
  bool guided = false;  ///< the value of the last solution before all others
  unsigned long long seed = 0;
  double seconds = 0;  ///< limits; 0: none
  long long fails = 0;
  long long choice_points = 0;
  long long solutions = 0;
  long long memory = 0;
  std::function<void(const Solution &)> found{};       ///< at each solution of solve, minimize and maximize
  std::function<bool(const Statistics &)> progress{};  ///< at each solution and every progress_seconds; false: stop
  double progress_seconds = 0;
};

/// What solve, minimize and maximize have come to.
struct Result {
  Status status = Status::exhausted;
  Solution best{};  ///< the last solution, or none: if (result.best)
  Statistics statistics{};
};

/// A search that goes on from solution to solution: a range, or a loop of next().
class Solutions {
 public:
  KORU_APART Solutions(std::shared_ptr<detail::State> state, const Search &how, CSint *minimize = nullptr,
                       CSint *maximize = nullptr)
      : run_(new Run(std::move(state), how)) {
    run_->begin(minimize, maximize);
  }

  /// Go on. False when there is no other solution, or none was found: status() tells why.
  bool next() { return run_->next(); }
  /// Instead of next(): the whole search by a function that calls `told` at each solution, as cs_mpiSolve does; see
  /// koru_mpi.hpp. @return the last solution.
  using Whole = CSstatus (*)(CSsearch *search, bool (*told)(CSsearch *, void *), void *extra);
  Solution through(Whole whole) { return run_->through(whole); }
  /// While next() is true. A copy keeps its values.
  const Solution &solution() const { return run_->solution; }
  Status status() const { return run_->status(); }
  Statistics statistics() const { return run_->statistics(); }
  /// Ends the search at its next choice point. For any thread, and signal handlers.
  void stop() { cs_stopSearch(run_->search); }

  class Iterator {
   public:
    explicit Iterator(Solutions *all) : all_(all) { ++*this; }
    const Solution &operator*() const { return all_->solution(); }
    Iterator &operator++() {
      if (!all_->next()) all_ = nullptr;
      return *this;
    }
    bool operator==(std::nullptr_t) const { return all_ == nullptr; }

   private:
    Solutions *all_;
  };
  Iterator begin() { return Iterator(this); }
  std::nullptr_t end() const { return nullptr; }

 private:
  // What the callbacks are handed: stays where it is when the range is moved.
  struct Run {
    std::shared_ptr<detail::State> state;
    const Search how;
    std::vector<IntVar> vars;  // that are labelled, also in later phases
    CSsearch *search = nullptr;
    Solution solution{};
    Solution last{};  // of through()

    KORU_APART Run(std::shared_ptr<detail::State> s, const Search &h) : state(std::move(s)), how(h), vars(h.vars) {
      state->use();
    }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    KORU_APART ~Run() {
      try {
        state->use();
        cs_freeSearch(search);
      } catch (const std::logic_error &) {  // within a callback of another model: cs_end will free it
      }
    }

    KORU_APART void begin(CSint *minimize, CSint *maximize) {
      state->rethrow();
      if (vars.empty() && how.orders.tasks.empty()) vars = state->all();
      if (cs_getNbRefused() > 0) return;  // there is no solution
      search = cs_createSearch(state->pointers(vars).data(), detail::sizeOf(vars.size()));
      state->rethrow();
      if (search == nullptr) throw std::logic_error("koru: no search can be begun here");
      try {
        tell(minimize, maximize);
      } catch (...) {
        cs_freeSearch(std::exchange(search, nullptr));
        throw;
      }
    }

    KORU_APART void tell(CSint *minimize, CSint *maximize) {
      CSsearchOptions o = options();
      o.minimize = minimize;
      o.maximize = maximize;
      const auto accept = [](bool taken) {
        if (!taken) throw std::invalid_argument("koru: an option of a search is out of its range");
      };
      accept(cs_setSearchOptions(search, &o));
      hints(accept);
      if (!how.orders.tasks.empty()) accept(addOrders(how.orders));
      for (const Phase &phase : how.then) {
        accept(phase.value.selectors.empty());  // they are for the first variables
        accept(cs_addSearchPhase(search, state->pointers(phase.vars).data(), detail::sizeOf(phase.vars.size()),
                                 phase.order.kind, phase.value.kind));
        for (const IntVar &v : phase.vars) vars.push_back(v);
      }
      state->rethrow();
    }

    KORU_APART bool addOrders(const Orders &orders) {
      const int n = detail::sizeOf(orders.tasks.size());
      const std::unique_ptr<CSorder[]> all(new CSorder[orders.tasks.size()]);
      const auto pointer = [&](const IntVar &v) { return state->pointer(v); };
      CSorder *next = all.get();
      for (const TaskOrder &t : orders.tasks) {
        *next++ = {pointer(t.first),
                   {pointer(t.start), pointer(t.other_start)},
                   {pointer(t.duration), pointer(t.other_duration)},
                   t.machine};
        vars.push_back(t.first);
      }
      return orders.value.selectors.empty() &&
             cs_addSearchOrders(search, all.get(), n, orders.order.kind, orders.value.kind);
    }

    template <class Accept>
    KORU_APART void hints(Accept accept) {
      const std::vector<int> &preferred = how.value.preferred;
      if (preferred.empty()) return;
      detail::sameSize(preferred.size(), vars.size());
      for (std::size_t i = 0; i < vars.size(); ++i) accept(cs_setSearchHint(search, static_cast<int>(i), preferred[i]));
    }

    KORU_APART CSsearchOptions options() {
      CSsearchOptions o{};
      o.size = sizeof o;
      o.order = how.order.kind;
      o.value = how.value.kind;
      o.branching = static_cast<int>(how.branching);
      o.lastConflict = how.last_conflict;
      o.randomTies = how.random_ties;
      o.guided = how.guided || !how.value.preferred.empty();
      o.seed = how.seed;
      o.restarts = how.restart.kind;
      o.restartFails = how.restart.fails;
      o.restartGrowth = how.restart.growth;
      o.neighbours = how.neighbours.kind;
      o.neighbourFails = how.neighbours.fails;
      o.relaxed = how.neighbours.percent;
      o.milliseconds = detail::milliseconds(how.seconds);
      o.fails = how.fails;
      o.choicePoints = how.choice_points;
      o.solutions = how.solutions;
      o.memory = how.memory;
      o.chooseVariable = how.order.choose ? chooseVariable : nullptr;
      o.chooseValue = how.value.choose ? chooseValue : nullptr;
      o.chooseRelaxed = how.neighbours.choose ? chooseRelaxed : nullptr;
      if (!how.value.selectors.empty()) detail::sameSize(how.value.selectors.size(), vars.size());
      o.selectors = const_cast<CSvalueSelector **>(how.value.selectors.data());  // which are read only
      o.progress = how.progress ? progress : nullptr;
      o.progressMilliseconds = detail::milliseconds(how.progress_seconds);
      o.extra = this;
      return o;
    }

    KORU_APART bool next() {
      if (search == nullptr) return false;
      state->use();
      state->rethrow();
      if (cs_getSearchStatus(search) == CS_STATUS_READY && cs_getNbRefused() > 0) {  // refused since it was made
        cs_freeSearch(std::exchange(search, nullptr));
        return false;
      }
      CSsearch *outer = std::exchange(state->active, search);
      const CSstatus now = cs_nextSolution(search);
      state->active = outer;
      if (now == CS_STATUS_REFUSED) throw std::logic_error("koru: a search that was begun later is still open");
      if (now == CS_STATUS_MEMORY) state->outOfMemory = false;  // told by the status; all has been undone
      state->rethrow();
      solution = now == CS_STATUS_SOLUTION ? Solution(*state) : Solution();
      return now == CS_STATUS_SOLUTION;
    }

    KORU_APART Solution through(Whole whole) {
      if (search == nullptr) return {};
      state->use();
      state->rethrow();
      CSsearch *outer = std::exchange(state->active, search);
      const CSstatus now = whole(search, tellSolution, this);
      state->active = outer;
      if (now == CS_STATUS_REFUSED) throw std::logic_error("koru: a search that has begun, or is not the newest one");
      state->rethrow();
      return last ? std::move(last) : again();
    }

    static bool tellSolution(CSsearch *, void *extra) {
      auto *run = static_cast<Run *>(extra);
      return run->state->guard(false, [run] {
        run->solution = Solution(*run->state);
        if (run->how.found) run->how.found(run->solution);
        run->last = Solution(run->solution);
        return true;
      });
    }

    // A process that was not told of the last solution goes there by what was labelled.
    KORU_APART Solution again() {
      const int *values = cs_getBestSolution(search);
      if (values == nullptr) return {};
      const int open = cs_saveContext();
      bool stands = true;
      for (std::size_t i = 0; stands && i < vars.size(); ++i) stands = cs_EQ(state->pointer(vars[i]), values[i]);
      const Solution there(*state);
      Solution kept = stands ? Solution(there) : Solution();
      cs_restoreContextUntil(open);
      return kept;
    }

    KORU_APART Status status() const {
      return search == nullptr ? Status::exhausted : static_cast<Status>(cs_getSearchStatus(search));
    }

    KORU_APART Statistics statistics() const {
      Statistics s{};
      cs_getSearchStats(search, &s, sizeof(CSsearchStats));
      return s;
    }

    static int chooseVariable(CSint **, int, void *extra) {
      auto *run = static_cast<Run *>(extra);
      return run->state->guard(-1, [run] { return detail::sizeOf(run->how.order.choose(run->vars)); });
    }

    static bool chooseValue(CSvalueSelection *decision, int index, CSint **, int, void *extra) {
      auto *run = static_cast<Run *>(extra);
      return run->state->guard(false, [&] {
        const Decision d = run->how.value.choose(run->vars[static_cast<std::size_t>(index)]);
        *decision = {static_cast<int>(d.relation), d.value};
        return true;
      });
    }

    static void chooseRelaxed(bool *relaxed, const int *best, int n, void *extra) {
      auto *run = static_cast<Run *>(extra);
      const std::size_t size = static_cast<std::size_t>(n);
      run->state->guard(false, [&] {
        for (const std::size_t i : run->how.neighbours.choose({best, size})) {
          if (i >= size) throw std::out_of_range("koru: no position of a variable");
          relaxed[i] = true;
        }
        return true;
      });
    }

    static void progress(CSsearch *search, const CSsearchStats *stats, void *extra) {
      auto *run = static_cast<Run *>(extra);
      if (!run->state->guard(true, [&] { return run->how.progress(Statistics{*stats}); })) cs_stopSearch(search);
    }
  };

  std::unique_ptr<Run> run_;
};

}  // namespace v1
}  // namespace koru
