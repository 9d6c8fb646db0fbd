// SPDX-License-Identifier: MIT
#include "traces/machine.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "traces/blocks.h"
#include "traces/calls.h"
#include "traces/show.h"

namespace koru::traces {

Machine *Machine::current = nullptr;

Machine::Machine(const Trace &trace, const Settings &settings, Tally &tally)
    : trace_(trace),
      settings_(settings),
      tally_(tally),
      world_(settings.fault == Fault::kRelation),
      otherWorld_(settings.fault == Fault::kRelation) {
  current = this;
  watchRequests();
  refuseNothing();
}

Machine::~Machine() { current = nullptr; }

void Machine::fail(const std::string &what) {
  if (failure_.empty()) failure_ = what;
}

const std::string &Machine::run() {
  ++tally_.traces;
  for (const Line &line : trace_)
    if (line.script != kNull) scripts_[static_cast<std::size_t>(line.script)].lines.push_back(&line);
  for (const Line &line : trace_)
    if (line.script == kNull && failure_.empty()) {
      byHand_ = std::string_view(line.row->name).ends_with("ValueSelector") ||
                line.row->name == std::string_view("cs_selectNextValue");
      execute(line);
    }
  finish();
  return failure_;
}

// The solvers are ended, and what belongs to the host freed: nothing may be left. A start that failed for want of
// memory leaves blocks to the next one.
void Machine::finish() {
  refuseNothing();
  if (!solver::initialised) start();
  end();
  if (parked_ != nullptr) endParked();
  releaseOwned();
  if (settings_.fault == Fault::kLeak && trace_.size() > 5) loseBlock();
  if (liveBlocks() != before_ + std::ssize(deletedProfilers_) && failure_.empty())
    fail("leak: blocks are left after the end");
}

void Machine::execute(const Line &line) {
  if (settings_.transcript) say(print(line));
  const std::size_t row = indexOf(line.row);
  if (!allowed(line)) {
    ++tally_.skipped[row];
    return say("  left out");
  }
  ++tally_.calls[row];
  call(line);
  if (settings_.transcript && scriptDepth_ == 0) sayChanges();
}

void Machine::call(const Line &line) {
  Before before = look(line);
  std::FILE *const outer = std::exchange(scratch_, nullptr);
  answer_ = 0;
  if (!seedFault(line)) line.row->run(*this, line);
  sayScratch(line);
  scratch_ = outer;
  tellTwin(line, before);
  if (scriptDepth_ == 0) tellSolutions(line, before);
}

// What is done wrong on purpose; true when it takes the place of the call.
bool Machine::seedFault(const Line &line) {
  if (settings_.fault == Fault::kRestore && line.row->name == std::string_view("cs_restoreContext")) {
    cs_forgetSaveContext();
    return true;
  }
  if (scriptDepth_ > 0 || tally_.calls[indexOf(findRow("cs_NEQ"))] == 0) return false;
  if (settings_.fault == Fault::kCrash) std::abort();
  for (volatile bool hang = settings_.fault == Fault::kHang; hang;) continue;
  return false;
}

// ----- solutions

void Machine::collect(CSint **array, int size) {
  Tuple tuple;
  for (int i = 0; i < size; ++i) tuple.push_back(cs_getMin(array[i]));
  collected_.push_back(std::move(tuple));
}

// All solutions by the library, and by enumeration.
void Machine::solve() {
  std::vector<CSint *> variables;
  std::optional<std::vector<Tuple>> expected = world_.solutions.all(variables);
  std::int64_t leaves = 1;
  for (CSint *v : variables) leaves = v->count < 1 ? INT_MAX : std::min<std::int64_t>(leaves * v->count, INT_MAX);
  if (!expected || variables.empty() || leaves > 4000 || solver::checked.countsMayLag) return say("  not compared");
  const int label = cs_saveContext();
  collected_.clear();
  refused_ = false;
  const int refusedBefore = refusedRequests();
  cs_findAll(variables.data(), static_cast<int>(variables.size()), cs_findFreeVar,
             [](CSint **array, int size) { current->collect(array, size); });
  cs_restoreContextUntil(label);
  std::ranges::sort(collected_);
  say("  " + std::to_string(collected_.size()) + " solutions");
  if (refused_ || refusedRequests() != refusedBefore) return;
  ++tally_.solved;
  const bool sound = world_.solutions.mayAccept() || std::ranges::includes(*expected, collected_);
  const bool complete = world_.solutions.mayRefuse() || std::ranges::includes(collected_, *expected);
  const bool once = std::ranges::adjacent_find(collected_) == collected_.end();
  if (!sound || !complete || !once) fail("solutions: the search finds others than there are");
}

// ----- life

static void noteMemory(CSint *, void *) {}

void Machine::start() {
  cs_init();
  cs_setErrHandler(CS_ERR_MEMORY, noteMemory, nullptr);
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, noteMemory, nullptr);
}

void Machine::end() {
  ending_ = true;
  cs_end();
  ending_ = false;
  world_.variables.fill(nullptr);
  world_.sets.fill(nullptr);
  world_.profilers.fill(nullptr);
  world_.shown.clear();
  world_.tied.clear();
  world_.kept = Kept{};
  world_.twin.clear();
  world_.solutions.clear();
}

void Machine::releaseOwned() {
  for (int i = 0; i < kReferences; ++i) {
    forgetSelector(i);
    forgetHooks(i);
  }
  std::ranges::for_each(spareSelectors_, cs_freeValueSelector);
  std::ranges::for_each(spareHooks_, cs_freeSearchNotify);
}

void Machine::forgetSelector(int number) {
  if (CSvalueSelector *selector = this->selector(number)) {
    cs_freeValueSelector(selector);
    std::ranges::replace(selectors_, selector, nullptr);
  }
}

void Machine::forgetHooks(int number) {
  if (CSsearchNotify *record = hooks(number)) {
    cs_freeSearchNotify(record);
    std::ranges::replace(hooks_, record, nullptr);
  }
}

void Machine::released(const CSnoGoodSet *set) {
  for (CSnoGoodSet *&known : world_.sets)
    if (known == set) known = nullptr;
}

void Machine::failAllocations(int first, bool all) { refuseRequest(first, all); }

// ----- callbacks

void Machine::defineScript(const Line &line) {
  Script &script = scripts_[static_cast<std::size_t>(line.target == kNull ? 0 : line.target)];
  script.refusesFrom = line.args[0].number;
  script.answer = line.args[1].number;
}

bool Machine::callback(int number) {
  Script &script = scripts_[static_cast<std::size_t>(number)];
  ++script.calls;
  const bool accepted = script.refusesFrom <= 0 || script.calls < script.refusesFrom;
  if (!accepted) refused_ = true;
  if (scriptDepth_ < kDepth) runScript(script);
  return accepted;
}

void Machine::runScript(const Script &script) {
  const int base = std::exchange(scriptBase_, solver::contexts.count());
  ++scriptDepth_;
  for (const Line *line : script.lines)
    if (failure_.empty() && --scriptBudget_ > 0) execute(*line);
  static const Line restore{kNull, kNull, findRow("cs_restoreContext"), {}};
  while (solver::contexts.count() > scriptBase_) call(restore);
  --scriptDepth_;
  scriptBase_ = base;
}

void Machine::undone(CSint *v, int index) {
  if (ending_) return fail("callback: undone at the end");
  const std::string fault = world_.twin.undone(v, index);
  if (!fault.empty()) fail(fault);
}

}  // namespace koru::traces
