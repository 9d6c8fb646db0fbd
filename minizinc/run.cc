// SPDX-License-Identifier: MIT
// One search object labels everything. Only where several solutions of a satisfaction problem are asked for, variables
// that no solution shows are left out of it: a second one, inside, looks for a single completion of what is shown.
#include "minizinc/run.h"

#include <sys/resource.h>

#include <cstdio>
#include <set>
#include <unordered_set>

#include "minizinc/check.h"
#include "minizinc/choose.h"
#include "minizinc/output.h"

namespace koru::fzn {

namespace {

constexpr int kFailsBetweenRestarts = 100;

class Run {
 public:
  Run(const Syntax &syntax, Model &model, const Options &options, Times times, Report &report)
      : s_(syntax), model_(model), o_(options), times_(times), report_(report) {}

  bool go(bool posted) {
    tellStatistics(nullptr);
    if (!posted) {
      report_.end(Outcome::kUnsatisfiable);
      return true;
    }
    makePhases();
    search();
    return right_;
  }

 private:
  bool isOptimisation() const { return s_.solve.goal != Goal::kSatisfy; }
  bool wantsSeveral() const { return !isOptimisation() && (o_.all || o_.solutions > 1); }

  // --- What is labelled ---

  void makePhases() {
    plan_ = readPlan(s_, model_.variables, o_.verbose);
    free_ = o_.free || plan_.phases.empty();
    if (free_ && !plan_.phases.empty()) freePhases();
    for (const Phase &phase : plan_.phases) seen_.insert(phase.variables.begin(), phase.variables.end());
    hidesSome_ = wantsSeveral();
    const bool annotated = !seen_.empty();
    if (hidesSome_) addPhase(shown());
    mayRepeat_ = hidesSome_ && annotated;
    (hidesSome_ ? hidden_ : rest_) = others(false);
    const Array introduced = others(true);
    if (hidesSome_) {
      hidden_.insert(hidden_.end(), introduced.begin(), introduced.end());
    } else {
      addPhase(rest_);
      addPhase(introduced);
    }
    if (plan_.phases.empty()) plan_.phases.emplace_back();
  }

  // The variables and values of the annotations, but in an order that failures decide.
  void freePhases() {
    for (Phase &phase : plan_.phases) {
      phase.order = CS_ORDER_DOM_WDEG;
      phase.ownOrder = OwnOrder::kNone;
    }
    Phase &first = plan_.phases[0];
    for (std::size_t i = 1; i < plan_.phases.size(); ++i) {
      const Array &more = plan_.phases[i].variables;
      first.variables.insert(first.variables.end(), more.begin(), more.end());
    }
    plan_.phases.resize(1);
  }

  void addPhase(Array variables) {
    if (variables.empty()) return;
    Phase phase;
    phase.variables = std::move(variables);
    phase.order = CS_ORDER_DOM_WDEG;
    plan_.phases.push_back(std::move(phase));
  }

  Array shown() {
    Array all;
    for (const Operand &o : outputOf(s_, model_.variables)) {
      CSint *v = model_.variables.get(o);
      if (seen_.insert(v).second) all.push_back(v);
    }
    return all;
  }

  // Variables that nothing has named yet: those of the model, or those that its compilation has introduced.
  Array others(bool introduced) {
    Array all;
    for (std::uint32_t i = 0; i < s_.declarations.size(); ++i) {
      const Declaration &d = s_.declarations[i];
      if (!d.isVar || d.isArray) continue;
      const bool made =
          s_.find(d.annotations, "var_is_introduced") != nullptr || s_.find(d.annotations, "is_defined_var") != nullptr;
      if (made != introduced) continue;
      Expr e;
      e.kind = Kind::kDeclared;
      e.number = i;
      const Operand o = model_.variables.operand(e);
      CSint *v = o.isConstant ? nullptr : model_.variables.get(o);
      if (v != nullptr && cs_getMin(v) != cs_getMax(v) && seen_.insert(v).second) all.push_back(v);
    }
    return all;
  }

  // --- The search ---

  CSsearchOptions searchOptions(Chooser &chooser) {
    CSsearchOptions how = {};
    how.size = sizeof how;
    how.order = plan_.phases[0].order;
    how.value = plan_.phases[0].value;
    how.seed = o_.seed;
    how.chooseVariable = Chooser::chooseVariable;
    how.chooseValue = Chooser::chooseValue;
    how.extra = &chooser;
    how.guided = !plan_.hints.empty();
    setRestarts(how);
    if (isOptimisation()) {
      CSint *objective = model_.variables.get(model_.variables.operand(s_.solve.objective));
      (s_.solve.goal == Goal::kMinimize ? how.minimize : how.maximize) = objective;
    }
    if (free_) setFree(how);
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

  void setFree(CSsearchOptions &how) const {
    if (o_.restarts.empty() && plan_.restarts == CS_RESTARTS_NONE) {
      how.restarts = CS_RESTARTS_LUBY;
      how.restartFails = kFailsBetweenRestarts;
    }
    how.lastConflict = true;
    if (!isOptimisation()) return;
    how.guided = true;
    how.neighbours = CS_NEIGHBOURS_LINKED;
  }

  CSsearch *createSearch(const CSsearchOptions &how) {
    Phase &first = plan_.phases[0];
    CSsearch *search = cs_createSearch(first.variables.data(), sizeOf(first.variables));
    cs_setSearchOptions(search, &how);
    for (std::size_t i = 1; i < plan_.phases.size(); ++i) {
      Phase &phase = plan_.phases[i];
      cs_addSearchPhase(search, phase.variables.data(), sizeOf(phase.variables), phase.order, phase.value);
    }
    setHints(search);
    return search;
  }

  void setHints(CSsearch *search) const {
    int index = 0;
    for (const Phase &phase : plan_.phases) {
      for (const CSint *v : phase.variables) {
        for (const auto &[hinted, value] : plan_.hints) {
          if (hinted == v) cs_setSearchHint(search, index, value);
        }
        ++index;
      }
    }
  }

  void search() {
    Chooser chooser(plan_.phases, o_.seed);
    const CSsearchOptions how = searchOptions(chooser);
    CSsearch *search = createSearch(how);
    report_.setSearch(search);
    CSstatus status = CS_STATUS_READY;
    while (right_ && !enough()) {
      status = cs_nextSolution(search);
      if (status != CS_STATUS_SOLUTION) break;
      if (!complete(search)) continue;
    }
    tellStatistics(search);
    report_.setSearch(nullptr);
    report_.end(outcome(status));
    if (!report_.isStopping()) cs_freeSearch(search);
  }

  bool enough() const {
    if (report_.isStopping()) return true;
    if (isOptimisation() || o_.all) return o_.all && o_.solutions > 0 && !isOptimisation() && shown_ >= o_.solutions;
    return shown_ >= std::max(1LL, o_.solutions);
  }

  Outcome outcome(CSstatus status) const {
    const bool through = status == CS_STATUS_EXHAUSTED || status == CS_STATUS_OPTIMAL;
    if (through && !stopped_) return shown_ > 0 ? Outcome::kComplete : Outcome::kUnsatisfiable;
    return shown_ > 0 ? Outcome::kSolutions : Outcome::kUnknown;
  }

  // What is shown stands: look for values of the rest, if need be, and put it out.
  bool complete(CSsearch *outer) {
    Array open;
    for (CSint *v : hidden_) {
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
    const bool found = status == CS_STATUS_SOLUTION && put(outer);
    if (status != CS_STATUS_SOLUTION && status != CS_STATUS_EXHAUSTED) stopped_ = true;
    report_.setSearch(outer);
    cs_freeSearch(inner);
    return found;
  }

  bool put(const CSsearch *search) {
    const std::vector<long long> values = valuesOf(s_, model_.variables);
    Mistake wrong;
    if (o_.verify && !isSolution(s_, values, wrong)) {
      std::fprintf(stderr, "%s\n", describe(s_, wrong).c_str());
      return right_ = false;
    }
    std::string text = textOf(s_, values);
    if (mayRepeat_ && !texts_.insert(text).second) return false;
    ++shown_;
    report_.solution(std::move(text));
    tellStatistics(search);
    return true;
  }

  // --- Statistics ---

  void tellStatistics(const CSsearch *search) {
    if (!o_.statistics) return;
    CSsearchStats stats = {};
    cs_getSearchStats(search, &stats, sizeof stats);
    line("nodes", stats.choicePoints);
    line("openNodes", 0);
    if (isOptimisation() && stats.solutions > 0) line("objective", stats.objective);
    if (isOptimisation() && search != nullptr) line("objectiveBound", stats.bound);
    line("failures", stats.fails);
    line("restarts", stats.restarts);
    line("variables", model_.variables.nbMade());
    line("intVariables", model_.variables.nbMade() - model_.variables.nbBools());
    line("boolVariables", model_.variables.nbBools());
    line("propagators", model_.nbPosted());
    line("propagations", stats.wakings);
    line("peakDepth", stats.peakDepth);
    line("nogoods", stats.noGoods);
    line("backjumps", 0);
    line("nSolutions", shown_);
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    seconds("peakMem", static_cast<double>(usage.ru_maxrss) / 1024);
    seconds("initTime", times_.parse + times_.post);
    seconds("solveTime", stats.seconds);
    report_.setStatistics(std::move(lines_));
    lines_.clear();
  }

  void line(const char *key, long long value) {
    lines_ += std::string("%%%mzn-stat: ") + key + "=" + std::to_string(value) + "\n";
  }
  void seconds(const char *key, double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    lines_ += std::string("%%%mzn-stat: ") + key + "=" + text + "\n";
  }

  const Syntax &s_;
  Model &model_;
  const Options &o_;
  Times times_;
  Report &report_;
  Plan plan_;
  bool free_ = false;
  bool hidesSome_ = false, mayRepeat_ = false;
  bool stopped_ = false, right_ = true;
  std::unordered_set<CSint *> seen_;
  Array hidden_, rest_;
  std::set<std::string> texts_;
  std::string lines_;
  long long shown_ = 0;
};

}  // namespace

bool run(const Syntax &syntax, Model &model, bool posted, const Options &options, Times times, Report &report) {
  return Run(syntax, model, options, times, report).go(posted);
}

}  // namespace koru::fzn
