// SPDX-License-Identifier: MIT
// What a trace may ask for: calls that the library forbids, and those that would not end in reasonable time, are left
// out when they come up.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "traces/machine.h"

namespace koru::traces {
namespace {

constexpr std::int64_t kWide = 4000;

std::int64_t width(const CSint *v) { return std::int64_t{v->initialMax} - v->initialMin + 1; }

bool oneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

bool Machine::allowed(const Line &line) {
  if (line.row->name == std::string_view("cs_init") || line.row->name == std::string_view("script"))
    return scriptDepth_ == 0;
  return (scriptDepth_ == 0 || allowedInScript(line)) && affordable(line) && allowedWide(line) &&
         (line.row->group != Group::kSearch || allowedSearch(line));
}

// A callback neither ends the solver nor closes what it did not open, and frees nothing that may be in use.
bool Machine::allowedInScript(const Line &line) const {
  const std::string_view name = line.row->name;
  if (line.row->group == Group::kHarness || oneOf(name, {"cs_init", "cs_end", "cs_acceptAll", "cs_restoreAll",
                                                         "cs_freeValueSelector", "cs_freeSearchNotify"}))
    return false;
  if (line.row->group != Group::kContext || oneOf(name, {"cs_saveContext", "cs_backtrack", "cs_backtrackExt"}))
    return true;
  if (name.ends_with("Until"))
    return line.args[0].number > scriptBase_ || line.args[0].number > solver::contexts.count() ||
           line.args[0].number < 1;
  return solver::contexts.count() > scriptBase_;
}

bool Machine::affordable(const Line &line) {
  const std::string_view name = line.row->name;
  const auto number = [&](std::size_t i) { return std::int64_t{line.args[i].number}; };
  if (name == "cs_createCSintArray") return number(0) <= 16;
  if (name == "cs_NotInInterval") {
    const CSint *v = variable(line.args[0].number);
    return v == nullptr ||
           std::min<std::int64_t>(number(2), v->max) - std::max<std::int64_t>(number(1), v->min) < 20000;
  }
  if (name == "cs_InArray") {
    const CSint *v = variable(line.args[0].number);
    return v == nullptr || std::int64_t{v->max} - v->min < 20000;
  }
  if (name.ends_with("If") || name.ends_with("Iff")) {
    const bool byValues = name.find("InArray") != name.npos || name.find("InInterval") != name.npos;
    const CSint *v = byValues ? variable(line.args[1].number) : nullptr;
    return v == nullptr || std::int64_t{v->max} - v->min < 20000;
  }
  if (name == "cs_setErrHandler") return number(0) != CS_ERR_MEMORY || line.args[1].number != kNull;  // it aborts
  if (name == "cs_Cumulative") return !usesItsCapacity(line);
  return solver::variables.count() < 200;
}

// A capacity that is a use as well may make the library abort, as it says.
bool Machine::usesItsCapacity(const Line &line) const {
  const CSint *capacity = variable(line.args[4].number);
  return std::ranges::any_of(line.args[2].list, [&](int use) { return variable(use) == capacity; });
}

// Bounds of wide variables that depend on each other in a circle creep towards each other value by value, so each two
// may be tied together once.
bool Machine::allowedWide(const Line &line) {
  if (line.row->group != Group::kRelation && line.row->group != Group::kFunction) return true;
  std::vector<const CSint *> wide;
  std::size_t all = line.row->group == Group::kFunction ? 1 : 0;
  const auto add = [&](int reference) {
    const CSint *v = variable(reference);
    ++all;
    if (v != nullptr && width(v) > kWide) wide.push_back(v);
  };
  std::size_t i = 0;
  for (const char *kind = line.row->kinds; *kind != '\0'; ++kind) {
    const Arg &arg = line.args[i++];
    if (catalogue::isVariable(*kind)) add(arg.number);
    if (catalogue::isArray(*kind)) std::ranges::for_each(arg.list, add);
  }
  if (wide.empty() || all < 2) return true;
  if (line.target != kNull && world_.wideTies > 3) return false;
  return tie(wide);
}

bool Machine::tie(std::vector<const CSint *> &wide) {
  std::ranges::sort(wide);
  if (std::ranges::adjacent_find(wide) != wide.end()) return false;
  for (const CSint *v : wide)
    if (world_.tied.count(v) != 0) return false;
  world_.tied.insert(wide.begin(), wide.end());
  ++world_.wideTies;
  return true;
}

// The leaves of a search are paid for in advance.
bool Machine::allowedSearch(const Line &line) {
  if (line.row->name == std::string_view("cs_cancelSearch")) return true;
  if (solver::checked.countsMayLag) return false;  // a selection may go on offering a variable
  std::int64_t leaves = 1;
  for (const int reference : line.args[0].list) {
    const CSint *v = variable(reference);
    if (v == nullptr) continue;
    if (v->count < 1 || v->count > 1000 || width(v) > kWide) return false;
    leaves = std::min<std::int64_t>(leaves * v->count, 1 << 20);
  }
  if (leaves > (scriptDepth_ == 0 ? 2000 : 64) || leaves > searchBudget_) return false;
  searchBudget_ -= static_cast<int>(leaves);
  return true;
}

}  // namespace koru::traces
