// SPDX-License-Identifier: MIT
// cs_createSearch and what is done with a search object; the engine is in engine.cc.
//
// Deliberate: everything that options ask for is allocated by the first cs_nextSolution, so that an object can be
// made, told and freed without memory to spare.
#include "solve/search_object.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "core/post.h"
#include "core/refusal.h"
#include "core/solver.h"
#include "search/branching.h"
#include "solve/engine.h"
#include "solve/limits.h"
#include "solve/options.h"

namespace koru::solve {

namespace {

// ----- life

void destroy(CSsearch *s) {
  if (s->status == CS_STATUS_SOLUTION && !s->running) tellEnd(CS_STATUS_STOPPED);
  solver::newestSearch = s->older;
  s->path.destroy();
  s->~CSsearch();
  deallocate(s);
}

// By cs_end, once for each that is left.
void releaseAtEnd(void *) { destroy(solver::newestSearch); }

// A posting phase that ends with the root may leave no solution, which the search then says.
bool openRoot(CSsearch &s) {
  const unsigned reports = solver::errors.memoryReports;
  s.refuted = solver::agenda.postingUnsettled() && !endPosting();
  const int open = solver::contexts.count();
  return solver::errors.memoryReports == reports && cs_saveContext() > open;
}

CSsearch *create(CSint *const *vars, int n) {
  void *memory = allocate(sizeof(CSsearch));
  if (memory == nullptr) return nullptr;
  auto *s = new (memory) CSsearch;
  s->older = solver::newestSearch;
  solver::newestSearch = s;
  s->options = withDefaults({});
  s->options.size = sizeof(CSsearchOptions);
  s->stats.secondsToFirst = s->stats.secondsToBest = -1;
  if (!s->labelled.add(vars, n, CS_ORDER_INPUT, CS_VALUE_MIN) || !openRoot(*s)) {
    destroy(s);
    return nullptr;
  }
  s->root = BranchStamp::now();
  s->openContexts = solver::contexts.count();
  s->atEnd = {nullptr, releaseAtEnd, nullptr, false, nullptr};
  solver::ports.add(&s->atEnd);
  return s;
}

// ----- the first call

bool needsWeights(const CSsearch &s) {
  return s.labelled.usesOrder(CS_ORDER_DOM_WDEG) || s.labelled.usesOrder(CS_ORDER_SLACK_WDEG) ||
         s.options.neighbours == CS_NEIGHBOURS_LINKED;
}

bool prepareLearning(CSsearch &s) {
  if (s.options.restarts == CS_RESTARTS_NONE || s.labelled.size() == 0 || s.labelled.usesOrder(CS_ORDER_SET_TIMES))
    return true;
  s.noGoods = cs_createNoGoodSet(s.labelled.variables(), s.labelled.size(), nullptr, 0, nullptr, nullptr);
  return s.noGoods != nullptr;
}

}  // namespace

bool prepare(CSsearch &s) {
  const CSsearchOptions &o = s.options;
  s.memoryReports = solver::errors.memoryReports;
  s.hostSize = s.labelled.size();
  s.objective = o.minimize != nullptr ? o.minimize : o.maximize;
  const int value = minimizes(s) ? CS_VALUE_MIN : CS_VALUE_MAX;
  if (s.objective != nullptr && !s.labelled.add(&s.objective, 1, CS_ORDER_INPUT, value)) return false;
  s.unsettled = BranchSet(s.labelled.size());
  if (!s.unsettled || !s.path.create()) return false;
  if (s.labelled.usesOrder(CS_ORDER_ACTIVITY) && !s.activity.create(s.labelled.variables(), s.labelled.size()))
    return false;
  if (needsWeights(s) && !s.weights.collect(s.labelled.variables(), s.labelled.size())) return false;
  if (o.neighbours != CS_NEIGHBOURS_NONE && !s.neighbourhood.create(s.hostSize, o.relaxed, s.weights.places()))
    return false;
  if (s.labelled.usesOrder(CS_ORDER_SET_TIMES) && !s.postponed.create(s.labelled.size())) return false;
  s.random = Random(o.seed);
  s.runLimits = RunLimits(o.restarts, o.restartFails, o.restartGrowth);
  return prepareLearning(s);
}

// ----- the calls

bool isItsTurn(const CSsearch &s) {
  return &s == solver::newestSearch && !s.running && !solver::trail.undoing() && s.root.stands() &&
         solver::contexts.count() == s.openContexts;
}

void closeRoot(CSsearch &s) {
  cs_restoreContextUntil(s.root.level);
  s.noGoods = nullptr;
}

namespace {

bool hasEnded(const CSsearch &s) { return hasBegun(s) && s.status != CS_STATUS_SOLUTION; }

void noteFailure(void *search, const Constraint *constraint) {
  static_cast<CSsearch *>(search)->weights.noteFailure(constraint);
}

bool mustEnd(void *search) { return mustEndNow(*static_cast<CSsearch *>(search)); }

// While the search runs, it is told of the constraints that fail, and asked whether propagation may go on.
class Listening {
 public:
  explicit Listening(CSsearch &s) : s_(s), listener_(solver::ports.failureListener) {
    if (s.weights.collected()) solver::ports.failureListener = {noteFailure, &s};
    s.outerSupervisor = solver::queue.supervisor;
    solver::queue.supervisor = {mustEnd, &s};
    solver::queue.untilAsked = 0;
    s.wakingsNoted = solver::queue.wakings;
  }
  Listening(const Listening &) = delete;
  Listening &operator=(const Listening &) = delete;
  ~Listening() {
    solver::ports.failureListener = listener_;
    solver::queue.supervisor = s_.outerSupervisor;
    noteWakings(s_);
  }

 private:
  CSsearch &s_;
  FailureListener listener_;
};

CSstatus next(CSsearch &s) {
  s.running = true;
  s.clock.resume();
  if (!hasBegun(s) && !prepare(s)) {
    s.status = CS_STATUS_MEMORY;
  } else {
    const Listening listening(s);
    s.status = goOn(s);
  }
  if (hasEnded(s)) closeRoot(s);
  s.openContexts = solver::contexts.count();
  if (s.status == CS_STATUS_SOLUTION) tellProgress(s);
  s.clock.pause();
  s.stats.seconds = s.clock.seconds();
  s.running = false;
  return s.status;
}

constexpr const char *kNames[] = {"ready",      "solution",           "optimal",        "exhausted", "time limit",
                                  "fail limit", "choice point limit", "solution limit", "stopped",   "memory exhausted",
                                  "out of turn"};

}  // namespace
}  // namespace koru::solve

using namespace koru;
using namespace koru::solve;

// Deliberate: none while something is undone, as branches cannot be told apart then.
CSsearch *cs_createSearch(CSint **vars, int n) {
  if (!solver::initialised || solver::trail.undoing() || n < 0 || (n > 0 && (vars == nullptr || !allPresent(vars, n))))
    return nullptr;
  return create(vars, n);
}

bool cs_setSearchOptions(CSsearch *search, const CSsearchOptions *options) {
  if (search == nullptr || options == nullptr || hasBegun(*search) || !isAcceptable(*options)) return false;
  search->options = withDefaults(*options);
  Phase &first = search->labelled.firstPhase();
  first.order = options->order;
  first.value = options->value;
  return true;
}

bool cs_addSearchPhase(CSsearch *search, CSint **vars, int n, int order, int value) {
  if (search == nullptr || hasBegun(*search) || n < 0 || (n > 0 && (vars == nullptr || !allPresent(vars, n))))
    return false;
  if (!isOrder(order, false, search->options) || !isValueOrder(value, false, search->options)) return false;
  return search->labelled.add(vars, n, order, value);
}

static bool isWhole(const CSorder &o) {
  return o.first != nullptr && o.starts[0] != nullptr && o.starts[1] != nullptr && o.durations[0] != nullptr &&
         o.durations[1] != nullptr;
}

bool cs_addSearchOrders(CSsearch *search, const CSorder *orders, int n, int order, int value) {
  if (search == nullptr || hasBegun(*search) || n < 0 || (n > 0 && orders == nullptr)) return false;
  if (!std::all_of(orders, orders + n, isWhole)) return false;
  if (!isOrder(order, true, search->options) || !isValueOrder(value, true, search->options)) return false;
  return search->labelled.addOrders(orders, n, order, value);
}

bool cs_setSearchHint(CSsearch *search, int index, int value) {
  if (search == nullptr || hasBegun(*search) || index < 0 || index >= search->labelled.size()) return false;
  search->labelled.setWish(index, value);
  return true;
}

CSstatus cs_nextSolution(CSsearch *search) {
  if (search == nullptr) return CS_STATUS_REFUSED;
  if (hasEnded(*search)) return search->status;
  const AtWork atWork;
  return isItsTurn(*search) ? next(*search) : CS_STATUS_REFUSED;
}

CSstatus cs_getSearchStatus(const CSsearch *search) { return search != nullptr ? search->status : CS_STATUS_REFUSED; }

const char *cs_getStatusName(CSstatus status) {
  const auto i = static_cast<unsigned>(status);
  return i < std::size(kNames) ? kNames[i] : "unknown";
}

const int *cs_getBestSolution(const CSsearch *search) {
  return search != nullptr && hasSolution(*search) ? search->labelled.solution() : nullptr;
}

bool cs_getSearchStats(const CSsearch *search, CSsearchStats *stats, size_t size) {
  if (search == nullptr || stats == nullptr || size != sizeof(CSsearchStats)) return false;
  *stats = search->stats;
  return true;
}

// From a signal handler it has to be lock-free.
static_assert(std::atomic<bool>::is_always_lock_free);

void cs_stopSearch(CSsearch *search) {
  if (search != nullptr) search->stopped.store(true, std::memory_order_relaxed);
}

bool cs_freeSearch(CSsearch *search) {
  if (search == nullptr || search != solver::newestSearch || search->running) return false;
  if (search->root.stands()) closeRoot(*search);
  solver::ports.remove(&search->atEnd);
  destroy(search);
  return true;
}
