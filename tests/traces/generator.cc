// SPDX-License-Identifier: MIT
#include "traces/generator.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <map>
#include <string_view>

namespace koru::traces {

// Weights of the groups, in the order of Group without kHarness.
struct Generator::Flavour {
  int groups[12];
  int variables;  // to begin with, at most
  int lines;
  int wrong;    // in a hundred
  int wide;     // variables over large ranges, in a hundred
  int scripts;  // defined at the beginning, at most
  bool acting;
  bool failing;  // memory runs out now and then
  int solve;     // in a hundred lines
};

//  life create query context relation function event search selector nogood profiler output
const Generator::Flavour Generator::kFlavours[] = {
    {{0, 2, 1, 2, 25, 25, 0, 2, 0, 0, 0, 0}, 4, 12, 0, 0, 0, false, false, 25},     // relations, enumerated
    {{0, 1, 1, 8, 18, 22, 0, 2, 0, 0, 0, 0}, 3, 14, 0, 0, 0, false, false, 25},     // the same among choice points
    {{1, 3, 2, 25, 20, 15, 0, 4, 1, 1, 0, 0}, 4, 40, 2, 2, 0, false, false, 4},     // choice points
    {{1, 3, 2, 15, 12, 8, 10, 8, 2, 3, 1, 1}, 4, 35, 2, 0, 4, true, false, 2},      // callbacks that act
    {{0, 2, 1, 10, 15, 10, 12, 10, 2, 1, 0, 1}, 3, 20, 1, 0, 3, false, false, 12},  // callbacks that look on
    {{1, 2, 1, 8, 10, 8, 2, 20, 14, 10, 1, 1}, 4, 35, 2, 0, 5, true, false, 2},     // searches and no-goods
    {{6, 6, 12, 8, 12, 12, 4, 6, 8, 6, 8, 12}, 4, 40, 12, 10, 3, true, false, 1},   // wrong use, all families
    {{1, 8, 8, 8, 20, 14, 2, 0, 0, 1, 0, 2}, 3, 30, 4, 45, 1, false, false, 1},     // the ends of the int range
    {{2, 6, 3, 12, 15, 15, 8, 8, 5, 6, 5, 3}, 4, 35, 3, 2, 3, true, true, 1},       // memory runs out
};
const Generator::Flavour Generator::kRestoring[] = {
    {{0, 3, 0, 30, 18, 18, 0, 4, 1, 2, 0, 0}, 5, 45, 1, 3, 0, false, false, 0},
    {{0, 3, 0, 30, 12, 12, 10, 8, 4, 8, 0, 0}, 4, 45, 1, 0, 5, true, false, 0},
    {{0, 3, 0, 30, 12, 14, 6, 8, 4, 6, 2, 0}, 4, 40, 2, 1, 3, true, true, 0},
};

// Turns are drawn apart, so that all else is the same with and without them.
Generator::Generator(std::uint64_t seed, Mix mix) : random_(seed), turns_(~seed) {
  byTurns_ = turns_.chance(20);
  flavour_ = mix == Mix::kAll ? &kFlavours[random_.below(static_cast<int>(std::size(kFlavours)))]
                              : &kRestoring[random_.below(static_cast<int>(std::size(kRestoring)))];
  acting_ = flavour_->acting;
}

int Generator::wrongChance() const { return flavour_->wrong; }
int Generator::wideChance() const { return flavour_->wide; }

Trace generate(std::uint64_t seed, Mix mix) { return Generator(seed, mix).run(); }

Trace Generator::run() {
  begin();
  const int lines = random_.between(3, flavour_->lines);
  for (int i = 0; i < lines; ++i) step();
  finish();
  return trace_;
}

void Generator::add(Line line) {
  const std::string_view name = line.row->name;
  if (line.script == kNull && name == "cs_saveContext") ++depth_;
  if (line.script == kNull && name == "cs_end") {
    depth_ = 0;
    variables_.clear();
  }
  trace_.push_back(std::move(line));
}

// The first time, another solver begins.
void Generator::changeSolvers() {
  add(make(turns_.chance(90) ? "cs_detachSolver" : "cs_attachSolver"));
  if (trace_.back().row->name == std::string_view("cs_attachSolver")) return;
  std::swap(variables_, otherVariables_);
  std::swap(depth_, otherDepth_);
  if (variables_.empty())
    for (int i = 0; i < 3; ++i) add(make(Group::kCreate));
}

void Generator::begin() {
  if (random_.chance(98)) add(make("cs_init"));
  const int variables = random_.between(2, flavour_->variables);
  for (int i = 0; i < variables; ++i) add(make(Group::kCreate));
  scripts();
}

void Generator::scripts() {
  scriptCount_ = std::min(random_.between(0, flavour_->scripts), kScripts);
  for (int i = 0; i < scriptCount_; ++i) {
    Line line = make("script");
    line.target = i;
    line.args[0].number = acting_ && random_.chance(30) ? random_.between(1, 12) : 0;
    line.args[1].number = random_.chance(10) ? 99 : random_.between(-2, 5);
    add(std::move(line));
  }
  for (int i = 0; i < scriptCount_; ++i) scriptLines(i);
}

// Scripts that only look on may still open choice points and do anything inside.
void Generator::scriptLines(int script) {
  const int lines = random_.chance(40) ? 0 : random_.between(1, 4);
  const bool inside = !acting_ || random_.chance(40);
  const auto put = [&](Line line) {
    line.script = script;
    add(std::move(line));
  };
  if (byTurns_) put(make("cs_detachSolver"));
  if (inside && lines > 1) put(make("cs_saveContext"));
  for (int i = 0; i < lines; ++i) {
    const bool free = inside ? lines > 1 : acting_;
    static constexpr Group kAny[] = {Group::kRelation, Group::kRelation, Group::kRelation, Group::kFunction,
                                     Group::kCreate,   Group::kSearch,   Group::kContext,  Group::kEvent,
                                     Group::kOutput,   Group::kNoGood};
    static constexpr Group kLooking[] = {Group::kQuery, Group::kOutput};
    if (free && random_.chance(75)) {
      const Group group = kAny[random_.below(static_cast<int>(std::size(kAny)))];
      Line line = make(group);
      const std::string_view name = line.row->name;
      if (acting_ || (group != Group::kContext && group != Group::kSearch && name != "cs_setName"))
        put(std::move(line));
    } else {
      put(make(kLooking[random_.below(2)]));
    }
  }
  if (inside && lines > 1) put(make("cs_restoreContext"));
}

void Generator::step() {
  if (byTurns_ && turns_.chance(10)) changeSolvers();
  if (flavour_->failing && random_.chance(12)) {
    Line line = make("fail");
    line.args[0].number = random_.chance(15) ? kNull : random_.below(12);
    line.args[1].number = random_.chance(40) ? 1 : 0;
    add(std::move(line));
  }
  if (random_.chance(flavour_->solve)) return add(make("solve"));
  add(make(pickGroup()));
}

void Generator::finish() {
  if (flavour_->solve > 0) add(make("solve"));
  if (depth_ > 0 && random_.chance(70)) {
    add(make("cs_restoreAll"));
    if (flavour_->solve > 5) add(make("solve"));
  }
  if (random_.chance(10)) {
    add(make("cs_end"));
    add(make("cs_init"));
    for (int i = 0; i < 3; ++i) step();
  }
}

Group Generator::pickGroup() {
  int total = 0;
  for (const int weight : flavour_->groups) total += weight;
  int choice = random_.below(total);
  int group = 0;
  while (choice >= flavour_->groups[group]) choice -= flavour_->groups[group++];
  return static_cast<Group>(group);
}

const Row *Generator::pick(Group group) {
  static const std::vector<std::vector<const Row *>> byGroup = [] {
    std::vector<std::vector<const Row *>> result(13);
    for (const Row *row : rows())
      for (int i = 0; i < row->weight; ++i) result[static_cast<std::size_t>(row->group)].push_back(row);
    return result;
  }();
  return random_.pick(byGroup[static_cast<std::size_t>(group)]);
}

Line Generator::make(Group group) { return make(pick(group)); }
Line Generator::make(const char *name) { return make(findRow(name)); }

Line Generator::make(const Row *row) {
  Line line;
  line.row = row;
  fill(line);
  return line;
}

Line Generator::anyLine() { return make(pickGroup()); }

void Generator::know(const Trace &trace) {
  for (const Line &line : trace) {
    if (line.target == kNull) continue;
    const char letter = targetLetter(*line.row);
    if (letter == 'v')
      variables_.resize(std::max(variables_.size(), static_cast<std::size_t>(line.target) + 1), {0, 4});
    if (letter == 's') scriptCount_ = std::max(scriptCount_, line.target + 1);
    if (const char *at = std::strchr("qhgp", letter))
      known_[at - "qhgp"] = std::max(known_[at - "qhgp"], line.target + 1);
  }
}

}  // namespace koru::traces
