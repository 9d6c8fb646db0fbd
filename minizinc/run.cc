// SPDX-License-Identifier: MIT
// A search object labels everything. Only where several solutions of a satisfaction problem are asked for, variables
// that no solution shows are left out of it: a second one, inside, looks for a single completion of what is shown.
//
// A free search of a model that has annotations or an objective takes turns, with limits on fails that grow, so that it
// takes at most some times longer than the best of them: a search object that follows the annotations, without
// restarts; one that labels the annotated variables first, but in the order of failures, and looks into neighbourhoods
// of the best solution; and one, for proofs, that labels all variables alike, as those that the compilation has
// introduced may decide more. What is handed on is the best solution: as a bound, and as the values that are tried
// first.
#include "minizinc/run.h"

#include <cstdio>
#include <set>

#include "minizinc/check.h"
#include "minizinc/choose.h"
#include "minizinc/labels.h"
#include "minizinc/output.h"
#include "minizinc/ranks.h"
#include "minizinc/shared_bound.h"

namespace koru::fzn {

namespace {

constexpr int kFailsBetweenRestarts = 100;
constexpr long long kFirstTurn = 500;  // fails of each of the first turns
constexpr int kGrowth = 4;             // times as many fails for the next ones

constexpr long long kProgress = 100;  // milliseconds between two looks at the statistics

enum class Way { kAnnotated, kFree, kJoint };  // the phases of Labels

struct Turn {
  Way way;
  long long fails = 0;                  // limit; 0: none
  int neighbours = CS_NEIGHBOURS_NONE;  // of an objective's best solution
};

class Run;

// What a search object hands to callbacks.
struct Host : Chooser {
  Host(const std::vector<Phase> &phases, const Plan &plan, unsigned long long seed, Run &of)
      : Chooser(phases, plan, seed), run(of) {}
  Run &run;
};

class Run {
 public:
  Run(const Syntax &syntax, Model &model, const Options &options, Times times, Report &report)
      : s_(syntax),
        model_(model),
        o_(options),
        report_(report),
        statistics_(model, times, syntax.solve.goal != Goal::kSatisfy) {}

  bool go(bool posted) {
    tellStatistics(nullptr);
    if (!posted) {
      report_.end(Outcome::kUnsatisfiable);
      return true;
    }
    plan_ = readPlan(s_, model_.variables, o_.verbose);
    labels_ = labelsOf(s_, model_.variables, plan_, wantsSeveral());
    if (o_.ranks != nullptr) forgetFailures();
    if (isOptimisation()) objective_ = model_.variables.get(model_.variables.operand(s_.solve.objective));
    if (o_.bound != nullptr && !cs_eventRun(&objective_, 1, imposeBound, this)) {
      report_.end(Outcome::kUnsatisfiable);
      return true;
    }
    search();
    return right_;
  }

 private:
  bool isOptimisation() const { return s_.solve.goal != Goal::kSatisfy; }
  bool minimizes() const { return s_.solve.goal == Goal::kMinimize; }
  bool wantsSeveral() const { return !isOptimisation() && (o_.all || o_.solutions > 1); }

  // What no annotation names is labelled in an order that processes can share.
  void forgetFailures() {
    for (std::size_t i = plan_.phases.size(); i < labels_.annotated.size(); ++i)
      labels_.annotated[i].order = CS_ORDER_SMALLEST;
  }

  // --- Turns ---

  void search() {
    const bool free = o_.free || !isAnnotated();
    if (free && (isAnnotated() || isOptimisation()) && !wantsSeveral())
      report_.end(takeTurns());
    else
      report_.end(turn({free ? Way::kFree : Way::kAnnotated}));
  }

  bool isAnnotated() const { return !plan_.phases.empty(); }

  Outcome takeTurns() {
    int neighbours = CS_NEIGHBOURS_RANDOM;  // linked ones cost more to find
    for (long long fails = kFirstTurn;; fails *= kGrowth) {
      for (const Turn how :
           {Turn{Way::kAnnotated, fails}, Turn{Way::kFree, fails, neighbours}, Turn{Way::kJoint, fails}}) {
        if (!isOfUse(how.way)) continue;
        const Outcome outcome = turn(how);
        if (isOver(outcome)) return outcome;
      }
      neighbours = neighbours == CS_NEIGHBOURS_LINKED ? CS_NEIGHBOURS_RANDOM : CS_NEIGHBOURS_LINKED;
    }
  }

  // Without an objective and variables besides the annotated ones, labelling all alike is nothing new.
  bool isOfUse(Way way) const {
    if (way == Way::kAnnotated) return isAnnotated();
    return way == Way::kFree || isOptimisation() || labels_.free.size() > 1;
  }

  const std::vector<Phase> &phasesOf(Way way) const {
    return way == Way::kAnnotated ? labels_.annotated : way == Way::kFree ? labels_.free : labels_.joint;
  }

  bool isOver(Outcome outcome) const {
    return outcome == Outcome::kComplete || outcome == Outcome::kUnsatisfiable || enough() || !right_ || stopped_;
  }

  // One search object from the root on, and how the run stands after it.
  Outcome turn(Turn how) {
    cs_saveContext();
    again_ = shown_ > 0 && how.neighbours != CS_NEIGHBOURS_NONE;
    if (!imposeBest()) {
      cs_restoreContext();
      return Outcome::kComplete;
    }
    const std::vector<Phase> &phases = phasesOf(how.way);
    Host host(phases, plan_, o_.seed, *this);
    CSsearch *search = createSearch(phases, optionsOf(how, phases, host), how.way);
    report_.setSearch(search);
    const CSstatus status = goThrough(search);
    statistics_.add(search);
    tellStatistics(nullptr);
    report_.setSearch(nullptr);
    if (report_.isStopping()) return shown_ > 0 ? Outcome::kSolutions : Outcome::kUnknown;  // undoing may take long
    cs_freeSearch(search);
    cs_restoreContext();
    return outcomeOf(status);
  }

  // A turn with neighbourhoods begins with the best solution once more.
  bool imposeBest() const {
    if (!isOptimisation() || shown_ == 0) return true;
    if (again_) return minimizes() ? cs_LE(objective_, best_) : cs_GE(objective_, best_);
    return imposeBetter(objective_, minimizes(), best_);
  }

  // What other processes have found, whenever the objective changes; not while the best solution is to come once more.
  static bool imposeBound(CSint **objective, int, void *extra) {
    const Run &run = *static_cast<const Run *>(extra);
    return run.again_ || run.o_.bound->impose(*objective);
  }

  CSstatus goThrough(CSsearch *search) {
    if (o_.ranks != nullptr) {
      if (isShared(search)) return share(search);
      if (o_.ranks->rank > 0) return CS_STATUS_STOPPED;
    }
    CSstatus status = CS_STATUS_READY;
    while (right_ && !enough()) {
      status = cs_nextSolution(search);
      if (status != CS_STATUS_SOLUTION) break;
      complete(search);
    }
    return status;
  }

  // All processes say the same of it. Others than the first leave a search that is not shared to that.
  bool isShared(const CSsearch *search) const {
    const char *obstacle = cs_findUnwalkableOption(search);
    if (obstacle == nullptr) obstacle = cs_findConstraintWithMemory();
    if (obstacle != nullptr && o_.verbose)
      std::fprintf(stderr, "searched by the first process alone, because of %s\n", obstacle);
    return obstacle == nullptr;
  }

  CSstatus share(CSsearch *search) {
    const auto found = [](CSsearch *of, void *extra) {
      Run &run = *static_cast<Run *>(extra);
      run.complete(of);
      return run.right_ && !run.enough();
    };
    const CSstatus status = o_.ranks->solve(search, found, this);
    return status == CS_STATUS_STOPPED ? CS_STATUS_SOLUTION : status;
  }

  bool enough() const {
    if (report_.isStopping()) return true;
    if (isOptimisation()) return false;
    if (o_.all && o_.solutions == 0) return false;
    return shown_ >= std::max(1LL, o_.solutions);
  }

  Outcome outcomeOf(CSstatus status) {
    const bool through = status == CS_STATUS_EXHAUSTED || status == CS_STATUS_OPTIMAL;
    if (status == CS_STATUS_STOPPED || status == CS_STATUS_MEMORY) stopped_ = true;
    if (through && !stopped_) return shown_ > 0 ? Outcome::kComplete : Outcome::kUnsatisfiable;
    return shown_ > 0 ? Outcome::kSolutions : Outcome::kUnknown;
  }

  // --- Search objects ---

  CSsearchOptions optionsOf(Turn turn, const std::vector<Phase> &phases, Host &host) const {
    CSsearchOptions how = {};
    how.size = sizeof how;
    how.order = phases[0].order;
    how.value = phases[0].value;
    how.seed = o_.seed;
    how.fails = turn.fails;
    how.chooseVariable = Chooser::chooseVariable;
    how.chooseValue = Chooser::chooseValue;
    if (o_.ranks == nullptr) {
      how.progress = tellProgress;
      how.progressMilliseconds = kProgress;
    }
    how.extra = static_cast<Chooser *>(&host);
    how.guided = !plan_.hints.empty();
    if (isOptimisation() && !plan_.relaxed.empty()) {
      how.neighbours = CS_NEIGHBOURS_HOST;
      how.chooseRelaxed = Chooser::chooseRelaxed;
    }
    if (isOptimisation()) (minimizes() ? how.minimize : how.maximize) = objective_;
    setRestarts(how);
    if (turn.way != Way::kAnnotated) setFree(how, turn);
    return how;
  }

  void setRestarts(CSsearchOptions &how) const {
    how.restarts = plan_.restarts;
    how.restartFails = plan_.restartFails;
    how.restartGrowth = plan_.restartGrowth;
    if (o_.restarts == "none") how.restarts = CS_RESTARTS_NONE;
    if (o_.restarts == "constant") how.restarts = CS_RESTARTS_CONSTANT;
    if (o_.restarts == "luby") how.restarts = CS_RESTARTS_LUBY;
    if (o_.restarts == "geometric") how.restarts = CS_RESTARTS_GEOMETRIC;
  }

  void setFree(CSsearchOptions &how, Turn turn) const {
    if (o_.restarts.empty() && plan_.restarts == CS_RESTARTS_NONE) {
      how.restarts = CS_RESTARTS_LUBY;
      how.restartFails = kFailsBetweenRestarts;
    }
    how.lastConflict = true;
    if (!isOptimisation()) return;
    how.guided = true;
    how.neighbours = turn.neighbours;
  }

  CSsearch *createSearch(const std::vector<Phase> &phases, const CSsearchOptions &how, Way way) const {
    const auto array = [](const Phase &phase) { return const_cast<CSint **>(phase.variables.data()); };
    CSsearch *search = cs_createSearch(array(phases[0]), sizeOf(phases[0].variables));
    cs_setSearchOptions(search, &how);
    for (std::size_t i = 1; i < phases.size(); ++i)
      cs_addSearchPhase(search, array(phases[i]), sizeOf(phases[i].variables), phases[i].order, phases[i].value);
    setHints(search, phases, way != Way::kAnnotated && shown_ > 0 ? bestValues_ : plan_.hints);
    return search;
  }

  static void setHints(CSsearch *search, const std::vector<Phase> &phases, const Hints &hints) {
    int index = 0;
    for (const Phase &phase : phases) {
      for (CSint *v : phase.variables) {
        if (const auto it = hints.find(v); it != hints.end()) cs_setSearchHint(search, index, it->second);
        ++index;
      }
    }
  }

  // --- Solutions ---

  // What is shown stands: look for values of the rest, if need be, and put it out.
  void complete(CSsearch *outer) {
    Array open;
    for (CSint *v : labels_.hidden) {
      if (cs_getMin(v) != cs_getMax(v)) open.push_back(v);
    }
    if (open.empty()) return put(outer);
    CSsearchOptions how = {};
    how.size = sizeof how;
    how.order = CS_ORDER_DOM_WDEG;
    how.restarts = CS_RESTARTS_LUBY;
    CSsearch *inner = cs_createSearch(open.data(), sizeOf(open));
    cs_setSearchOptions(inner, &how);
    report_.setSearch(inner);
    const CSstatus status = cs_nextSolution(inner);
    if (status == CS_STATUS_SOLUTION) put(outer);
    if (status != CS_STATUS_SOLUTION && status != CS_STATUS_EXHAUSTED) stopped_ = true;
    report_.setSearch(outer);
    cs_freeSearch(inner);
  }

  void put(const CSsearch *search) {
    again_ = false;
    if (!isNews()) return;
    const std::vector<long long> values = valuesOf(s_, model_.variables);
    Mistake wrong;
    if (o_.verify && !isSolution(s_, values, wrong)) {
      std::fprintf(stderr, "%s\n", describe(s_, wrong).c_str());
      right_ = false;
      return;
    }
    std::string text = textOf(s_, values);
    if (labels_.mayRepeat && !texts_.insert(text).second) return;
    ++shown_;
    keepBest();
    if (o_.tellsObjective) text += "%%%koru-objective=" + std::to_string(best_) + "\n";
    if (report_.solution(std::move(text)) && o_.bound != nullptr) o_.bound->tell(best_);
    tellStatistics(search);
  }

  // Not the best solution once more.
  bool isNews() const {
    if (!isOptimisation() || shown_ == 0) return true;
    const int value = cs_getMin(objective_);
    return minimizes() ? value < best_ : value > best_;
  }

  void keepBest() {
    if (!isOptimisation()) return;
    best_ = cs_getMin(objective_);
    if (!o_.free && isAnnotated()) return;
    for (const Phase &phase : labels_.free) {
      for (CSint *v : phase.variables) bestValues_[v] = cs_getMin(v);
    }
  }

  // So that statistics are fresh when the run is ended from outside.
  static void tellProgress(CSsearch *search, const CSsearchStats *, void *extra) {
    static_cast<Host *>(static_cast<Chooser *>(extra))->run.tellStatistics(search);
  }

  void tellStatistics(const CSsearch *search) {
    if (o_.statistics) report_.setStatistics(statistics_.lines(search, shown_));
  }

  const Syntax &s_;
  Model &model_;
  const Options &o_;
  Report &report_;
  Statistics statistics_;
  Plan plan_;
  Labels labels_;
  CSint *objective_ = nullptr;
  int best_ = 0;  // of the objective, once there is a solution
  Hints bestValues_;
  bool again_ = false;  // the turn is to begin with the best solution
  bool stopped_ = false, right_ = true;
  std::set<std::string> texts_;
  long long shown_ = 0;
};

}  // namespace

bool run(const Syntax &syntax, Model &model, bool posted, const Options &options, Times times, Report &report) {
  return Run(syntax, model, options, times, report).go(posted);
}

}  // namespace koru::fzn
