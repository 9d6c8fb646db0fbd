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

static const Row *const kDeleteProfiler = findRow("cs_deleteProfiler");

Machine::Machine(const Trace &trace, const Settings &settings, Tally &tally)
    : trace_(trace), settings_(settings), tally_(tally), solutions_(settings.fault == Fault::kRelation) {
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
    if (line.script == kNull && failure_.empty()) execute(line);
  finish();
  return failure_;
}

// The solver is ended, and what belongs to the host freed: nothing may be left. A start that failed for want of memory
// leaves blocks to the next one.
void Machine::finish() {
  refuseNothing();
  if (!solver.initialised) start();
  end();
  releaseOwned();
  if (settings_.fault == Fault::kLeak && trace_.size() > 5) loseBlock();
  // Deliberately, deleting a profiler does not give its memory back.
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
  const int depth = solver.contexts.count();
  const int refusedBefore = refusedRequests();
  twin_.follow();
  const std::vector<Twin::Mark> marks = line.row->group == Group::kContext ? twin_.marks() : std::vector<Twin::Mark>{};
  if (scriptDepth_ == 0) refused_ = false;
  if (scriptDepth_ == 0) solutions_.follow(depth);
  if (line.row == kDeleteProfiler && profiler(line.args[0].number) != nullptr)
    deletedProfilers_.insert(profiler(line.args[0].number));
  if (scriptDepth_ > 0) observeInScript(line, depth);
  answer_ = 0;
  std::FILE *const outer = std::exchange(scratch_, nullptr);
  const bool related = line.row->group == Group::kRelation || line.row->group == Group::kFunction;
  const bool lacking = related && lacksVariable(line);
  Posted relation = related && scriptDepth_ == 0 ? posted(line) : Posted{};
  if (!seedFault(line)) line.row->run(*this, line);
  sayScratch(line);
  scratch_ = outer;
  if (refusedRequests() != refusedBefore) {
    effect(std::min(depth, solver.contexts.count()));
  } else if (solver.initialised && std::string_view(line.row->name).starts_with("cs_backtrack") &&
             line.args[2].number != kNull) {
    twin_.registered(variable(line.args[0].number),
                     line.args[1].number + (settings_.fault == Fault::kCallback ? 1 : 0));
  }
  if (line.row->group == Group::kContext) observeContext(line, depth, marks);
  if (line.row->group == Group::kCreate) observeCreation(line);
  if (scriptDepth_ > 0) return;
  if (lacking && answer_ != 0) fail(std::string("accepted without a variable: ") + line.row->name);
  if (related && !lacking && solver.initialised) observeRelation(line, std::move(relation), depth);
  if (line.row->group == Group::kSearch || line.row->group == Group::kNoGood) observeSearch(line, depth);
  if (line.row->group == Group::kEvent && line.row->result == 'b' && answer_ == 0) effect(depth);
  if (line.row->group == Group::kSelector && std::strcmp(line.row->name, "cs_selectValue") == 0) effect(depth);
  solutions_.follow(solver.contexts.count());
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

// ----- what the models are told

void Machine::effect(int depth) {
  refused_ = true;
  solutions_.unknownFrom(depth);
}

// Something that stays after the script, or that interferes with what runs around it.
void Machine::observeInScript(const Line &line, int depth) {
  const Group group = line.row->group;
  const std::string_view name = line.row->name;
  const bool changes = group == Group::kRelation || group == Group::kFunction || group == Group::kEvent ||
                       group == Group::kNoGood || name == "cs_selectValue" || name == "cs_minimize";
  const bool keeps = group == Group::kContext && (name.starts_with("cs_forget") || name.starts_with("cs_accept"));
  if (changes && depth <= scriptBase_) effect(scriptBase_);
  if (keeps) effect(scriptBase_);
  // Opening a context in a handler propagates what waits, and a failure of that is not reported.
  if (solver.queue.head != nullptr && (group == Group::kContext || group == Group::kSearch)) effect(scriptBase_);
  if (group == Group::kSearch) refused_ = true;
}

void Machine::observeContext(const Line &line, int depth, const std::vector<Twin::Mark> &marks) {
  const std::string_view name = line.row->name;
  const int now = solver.contexts.count();
  const bool outside = scriptDepth_ == 0;
  if (name.starts_with("cs_backtrack")) return;
  if (name == "cs_saveContext" || (name == "cs_restoreAndSaveContext" && depth == 0)) return twin_.saved(depth);
  const bool reopened = name == "cs_restoreAndSaveContext";
  if (now >= depth && !reopened) return;
  const int label = reopened ? depth : now + 1;
  if (name.starts_with("cs_restore")) {
    const std::string fault = twin_.restored(label, marks);
    if (!fault.empty()) fail(fault);
    tally_.restored += twin_.compared() ? 1 : 0;
    if (outside) solutions_.restored(label);
  } else {
    if (name.starts_with("cs_accept")) twin_.accepted(label, marks);
    twin_.follow();
    if (outside) solutions_.kept(now);
  }
  if (twin_.uncertain() && outside) effect(0);
}

void Machine::observeCreation(const Line &line) {
  const auto number = [&](std::size_t i) { return std::int64_t{line.args[i].number}; };
  CSint *v = variable(line.target);
  if (v == nullptr || answer_ == 0) return;
  std::vector<int> values;
  const std::string_view name = line.row->name;
  if (name == "cs_createCSintFromDomain") {
    const auto size = std::min<std::size_t>(line.args[0].list.size(), static_cast<std::size_t>(line.args[1].number));
    values.assign(line.args[0].list.begin(), line.args[0].list.begin() + static_cast<std::ptrdiff_t>(size));
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return solutions_.created(v, values);
  }
  const bool array = name == "cs_createCSintArray";
  const std::int64_t low = number(array ? 1 : 0);
  const std::int64_t high = name == "CSINT" ? low : number(array ? 2 : 1);
  if (high - low > 40) return;
  for (std::int64_t value = low; value <= high; ++value) values.push_back(static_cast<int>(value));
  solutions_.created(v, values);
  for (int i = 1; array && i < line.args[0].number; ++i)
    if (CSint *other = variable(line.target + i)) solutions_.created(other, values);
}

// Without tasks a resource needs no capacity.
bool Machine::lacksVariable(const Line &line) const {
  if (line.row->name == std::string_view("cs_Cumulative")) return false;
  for (std::size_t i = 0; i < line.args.size(); ++i)
    if (line.row->kinds[i] == 'v' && variable(line.args[i].number) == nullptr) return true;
  return false;
}

void Machine::observeRelation(const Line &line, Posted relation, int depth) {
  if (line.row->group == Group::kFunction && answer_ != 0) relation.z = variable(line.target);
  if (relation.z == nullptr && line.row->group == Group::kFunction && answer_ != 0) return effect(depth);
  if (!usual(relation)) return effect(depth);
  const bool accepted = answer_ != 0 || std::strcmp(line.row->name, "cs_Occur") == 0;
  if (!accepted && refused_) return solutions_.refusedUnknown(depth);
  if (!accepted) {
    const std::string fault = solutions_.refused(std::move(relation), depth);
    if (!fault.empty()) fail(fault);
    tally_.refuted += solutions_.checked() ? 1 : 0;
    return;
  }
  if (relation.z != nullptr && line.row->meaning.value == nullptr && std::ranges::count(relation.x, relation.z) == 0 &&
      relation.z->count <= 40 && relation.z->count > 0)
    solutions_.created(relation.z, valuesOf(relation.z));
  solutions_.post(std::move(relation));
  if (line.row->name == std::string_view("cs_Occur") && solutions_.none()) effect(depth);
}

// A search that has looked everywhere and found nothing is right only when there is nothing.
void Machine::observeSearch(const Line &line, int depth) {
  const std::string_view name = line.row->name;
  if (line.row->group == Group::kNoGood) {
    if (name == "cs_addNoGood" && line.args[0].number != kNull) effect(0);
    return;
  }
  if (name == "cs_cancelSearch") return;
  const bool complete = name == "cs_search" || name == "cs_findAll" || name == "cs_minimize" || name == "cs_Vsearch";
  const bool proper = line.args[0].number != kNull && line.args[1].number > 0 && line.args[2].number >= 0 &&
                      line.args[2].number < 4 && (name != "cs_minimize" || variable(line.args[4].number) != nullptr);
  if (complete && proper && answer_ == 0 && !refused_) {
    std::vector<CSint *> variables;
    const auto solutions = solutions_.all(variables);
    if (solutions && !solutions->empty() && !solutions_.mayRefuse())
      fail("search: nothing found though there is a solution: " + std::string(name));
    tally_.refuted += solutions ? 1 : 0;
  }
  if (name == "cs_minimize" && answer_ != 0) effect(depth);
  if (name == "cs_searchValueSelectorRestartNG" && set(line.args[7].number) != nullptr) effect(0);
  if (solver.contexts.count() > depth) solutions_.unknownFrom(depth + 1);
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
  std::optional<std::vector<Tuple>> expected = solutions_.all(variables);
  std::int64_t leaves = 1;
  for (CSint *v : variables) leaves = v->count < 1 ? INT_MAX : std::min<std::int64_t>(leaves * v->count, INT_MAX);
  if (!expected || variables.empty() || leaves > 4000 || solver.checked.countsMayLag) return say("  not compared");
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
  const bool right = solutions_.mayRefuse() ? std::ranges::includes(*expected, collected_) : *expected == collected_;
  if (!right) fail("solutions: the search finds others than there are");
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
  variables_.fill(nullptr);
  sets_.fill(nullptr);
  profilers_.fill(nullptr);
  shown_.clear();
  tied_.clear();
  kept_ = Kept{};
  twin_.clear();
  solutions_.clear();
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
  for (CSnoGoodSet *&known : sets_)
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
  const int base = std::exchange(scriptBase_, solver.contexts.count());
  ++scriptDepth_;
  for (const Line *line : script.lines)
    if (failure_.empty() && --scriptBudget_ > 0) execute(*line);
  static const Line restore{kNull, kNull, findRow("cs_restoreContext"), {}};
  while (solver.contexts.count() > scriptBase_) call(restore);
  --scriptDepth_;
  scriptBase_ = base;
}

void Machine::undone(CSint *v, int index) {
  if (ending_) return fail("callback: undone at the end");
  const std::string fault = twin_.undone(v, index);
  if (!fault.empty()) fail(fault);
}

}  // namespace koru::traces
