// SPDX-License-Identifier: MIT
// What the models are told of each call, and what they say to it.
#include <algorithm>
#include <cstring>

#include "core/post.h"
#include "traces/calls.h"
#include "traces/machine.h"
#include "traces/show.h"

namespace koru::traces {
namespace {

// Of the array and size that a search is given: with a null in it, a built-in selection refuses it.
bool holdsNoNull(Machine &m, const Line &line) {
  Reader in(m, line);
  CSint **array = in.next<CSint **>();
  return array != nullptr && allPresent(array, in.next<int>());
}

}  // namespace

// A callback that the call makes may give numbers away again, and open contexts of its own: what they stand for, and
// what was known of the contexts, is noted before.
Machine::Before Machine::look(const Line &line) {
  world_.twin.follow();
  Before before{solver::contexts.count(), refusedRequests(), false, {}, std::nullopt};
  if (line.row->group == Group::kContext) before.marks = world_.twin.marks();
  if (line.row->constraint != nullptr) {
    before.lacking = lacksVariable(line);
    before.relation = posted(line);
  }
  if (scriptDepth_ == 0) {
    refused_ = false;
    world_.solutions.follow(before.depth);
  } else {
    observeInScript(line, before.depth);
  }
  return before;
}

void Machine::tellTwin(const Line &line, const Before &before) {
  if (refusedRequests() != before.refused) {
    effect(std::min(before.depth, solver::contexts.count()));
  } else if (std::string_view(line.row->name).starts_with("cs_backtrack") && solver::initialised &&
             line.args[2].number != kNull) {
    const int index = line.args[1].number;
    world_.twin.registered(variable(line.args[0].number), settings_.fault == Fault::kCallback ? ~index : index);
  }
  if (line.row->group == Group::kContext) observeContext(line, before.depth, before.marks);
  if (line.row->group == Group::kCreate) observeCreation(line);
}

void Machine::tellSolutions(const Line &line, Before &before) {
  const Row &row = *line.row;
  if (before.lacking && answer_ != 0) fail(std::string("accepted without a variable: ") + row.name);
  if (row.constraint != nullptr && !before.lacking && solver::initialised)
    observeRelation(line, std::move(*before.relation), before.depth);
  if (row.group == Group::kSearch || row.group == Group::kNoGood) observeSearch(line, before.depth);
  if (row.group == Group::kEvent && row.result == 'b' && answer_ == 0) effect(before.depth);
  if (row.name == std::string_view("cs_selectValue")) effect(before.depth);
  if (row.name == std::string_view("cs_endPosting") && answer_ == 0) effect(0);
  world_.solutions.follow(solver::contexts.count());
}

void Machine::effect(int depth) {
  refused_ = true;
  world_.solutions.unknownFrom(depth);
}

// Something that stays after the script, or that interferes with what runs around it.
void Machine::observeInScript(const Line &line, int depth) {
  const Group group = line.row->group;
  const std::string_view name = line.row->name;
  const bool changes = group == Group::kRelation || group == Group::kFunction || group == Group::kEvent ||
                       group == Group::kNoGood || name == "cs_selectValue" || name == "cs_minimize";
  const bool keeps = group == Group::kContext && (name.starts_with("cs_forget") || name.starts_with("cs_accept"));
  if (changes && depth <= scriptBase_) effect(scriptBase_);
  if (keeps) effect(0);  // also what was attached: the restore of an outer context leaves it
  // Opening a context in a handler propagates what waits, and a failure of that is not reported.
  if (!solver::events.empty() && (group == Group::kContext || group == Group::kSearch)) effect(scriptBase_);
  if (group == Group::kSearch) refused_ = true;
}

void Machine::observeContext(const Line &line, int depth, const std::vector<Twin::Mark> &marks) {
  const std::string_view name = line.row->name;
  const int now = solver::contexts.count();
  const bool outside = scriptDepth_ == 0;
  if (name.starts_with("cs_backtrack")) return;
  if (name == "cs_saveContext" || (name == "cs_restoreAndSaveContext" && depth == 0)) return world_.twin.saved(depth);
  const bool reopened = name == "cs_restoreAndSaveContext";
  if (now >= depth && !reopened) return;
  const int label = reopened ? depth : now + 1;
  if (name.starts_with("cs_restore")) {
    const std::string fault = world_.twin.restored(label, marks);
    if (!fault.empty()) fail(fault);
    tally_.restored += world_.twin.compared() ? 1 : 0;
    if (outside) world_.solutions.restored(label);
  } else {
    if (name.starts_with("cs_accept")) world_.twin.accepted(label, marks);
    world_.twin.follow();
    if (outside) world_.solutions.kept(now);
  }
  if (world_.twin.uncertain() && outside) effect(0);
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
    return world_.solutions.created(v, values);
  }
  const bool array = name == "cs_createCSintArray";
  const std::int64_t low = number(array ? 1 : 0);
  const std::int64_t high = name == "CSINT" ? low : number(array ? 2 : 1);
  if (high - low > 40) return;
  for (std::int64_t value = low; value <= high; ++value) values.push_back(static_cast<int>(value));
  world_.solutions.created(v, values);
  for (int i = 1; array && i < line.args[0].number; ++i)
    if (CSint *other = variable(line.target + i)) world_.solutions.created(other, values);
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
  if (!accepted && refused_) return world_.solutions.refusedUnknown(depth);
  if (!accepted) {
    const std::string fault = world_.solutions.refused(std::move(relation), depth);
    if (!fault.empty()) fail(fault);
    tally_.refuted += world_.solutions.checked() ? 1 : 0;
    return;
  }
  if (relation.z != nullptr && !line.row->computes() && std::ranges::count(relation.x, relation.z) == 0 &&
      relation.z->count <= 40 && relation.z->count > 0)
    world_.solutions.created(relation.z, valuesOf(relation.z));
  world_.solutions.post(std::move(relation));
  if (line.row->name == std::string_view("cs_Occur") && world_.solutions.none()) effect(depth);
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
  const bool selects = complete && line.args[2].number >= 0 && line.args[2].number < 4 &&
                       (name != "cs_minimize" || variable(line.args[4].number) != nullptr);
  const bool proper = line.args[0].number != kNull && line.args[1].number > 0;
  if (proper && (selects || name == "cs_nextSolution") && answer_ == 0 && !refused_ && holdsNoNull(*this, line)) {
    std::vector<CSint *> variables;
    const auto solutions = world_.solutions.all(variables);
    if (solutions && !solutions->empty() && !world_.solutions.mayRefuse())
      fail("search: nothing found though there is a solution: " + std::string(name));
    tally_.refuted += solutions ? 1 : 0;
  }
  if (name == "cs_minimize" && answer_ != 0) effect(depth);
  if (name == "cs_searchValueSelectorRestartNG" && set(line.args[7].number) != nullptr) effect(0);
  if (solver::contexts.count() > depth) world_.solutions.unknownFrom(depth + 1);
}

}  // namespace koru::traces
