// SPDX-License-Identifier: MIT
// A random program over numbered variables and constraints that any engine can run. Every choice is drawn from the
// seed and from what the engine answers, so two engines that agree write the same transcript, and the first line in
// which they differ is the first thing they disagree about.
//
// Script constraints do what a handler may do at all: narrow anything, post, create, fail, and open choice points.
#pragma once

#include <array>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "model/rules.h"
#include "support/kit/random.h"

namespace koru::test::model {

struct Line {
  const char *what;
  std::array<int, 6> numbers;
  bool operator==(const Line &other) const { return numbers == other.numbers && std::string_view(what) == other.what; }
};

inline std::ostream &operator<<(std::ostream &out, const Line &line) {
  out << line.what;
  for (int number : line.numbers) out << ' ' << number;
  return out;
}

// The end of the common part and the first difference.
inline std::string difference(const std::vector<Line> &solverSaid, const std::vector<Line> &twinSaid) {
  std::size_t at = 0;
  while (at < solverSaid.size() && at < twinSaid.size() && solverSaid[at] == twinSaid[at]) ++at;
  std::ostringstream text;
  for (std::size_t i = at < 200 ? 0 : at - 200; i < at; ++i) text << "  " << solverSaid[i] << '\n';
  text << "solver: ";
  if (at < solverSaid.size()) text << solverSaid[at];
  text << "\ntwin:   ";
  if (at < twinSaid.size()) text << twinSaid[at];
  return text.str();
}

// The engine of a World derives from nothing; it offers the operations of rules.h and create, size, count,
// attachments, reportedMin, reportedMax, contexts, save, restore, forget, accept, and post(rule, flags) which attaches
// and filters and whose constraints call World::called.
template <class Engine>
class World {
 public:
  World(Engine &engine, std::uint64_t seed, bool scripts = true)
      : e(engine), seed_(seed), random_(seed), scripts_(scripts) {}

  std::vector<Line> transcript;
  Engine &e;

  void run(int steps) {
    const int variables = random_.between(4, 8);
    for (int i = 0; i < variables; ++i) create(random_);
    for (int i = 0; i < variables; ++i) recover(post(random_));
    for (int i = 0; i < steps; ++i) {
      step();
      for (int v = 0; v < e.size(); ++v) dump(v);
    }
  }

  // A handler of constraint `id` runs.
  bool called(int id, const Rule &rule, int v, int code, int index, int oldValue, int newValue) {
    note("called", {id, v, code, index, oldValue, newValue});
    const bool result = rule.kind == Kind::kScript ? script(id) : woken(e, rule, v, code, newValue);
    note("left", {id, result});
    return result;
  }

  // An observer heard that constraint `id` ran.
  void observed(bool consistent, int v, int code, int id) { note("observed", {consistent, v, code, id}); }

 private:
  static constexpr std::size_t kLongEnough = 2500;
  static constexpr int kMaxConstraints = 25;
  static constexpr int kMaxVariables = 14;
  static constexpr int kWidest = 200;

  void note(const char *what, std::array<int, 6> numbers) { transcript.push_back({what, numbers}); }

  void dump(int v) {
    int domain = 0;
    for (int value = e.min(v); value <= e.max(v); ++value) domain = domain * 2 % 1000003 + (e.has(v, value) ? 1 : 0);
    note("variable", {v, e.min(v), e.max(v), e.count(v), domain, e.attachments(v)});
    note("reported", {v, e.reportedMin(v), e.reportedMax(v), e.contexts()});
  }

  void step() {
    const int choice = random_.below(100);
    if (choice < 45) {
      recover(narrow(random_));
    } else if (choice < 60) {
      recover(post(random_));
    } else if (choice < 85) {
      note("save", {});
      e.save();
    } else if (choice < 97) {
      close(random_, 0);
    } else {
      create(random_);
    }
  }

  // What a search does after a failure, mostly.
  void recover(bool consistent) {
    if (consistent || e.contexts() == 0 || random_.chance(20)) return;
    note("recover", {});
    e.restore();
    e.save();
  }

  void create(Random &random) {
    if (e.size() >= kMaxVariables) return;
    const int low = random.between(-4, 4);
    const int high = low + random.between(0, 24);
    note("create", {e.size(), low, high});
    e.create(low, high);
  }

  bool narrow(Random &random) {
    const int v = random.below(e.size());
    const int operation = random.below(4);
    const int value = operation == 0   ? e.min(v) + random.between(0, 3)
                      : operation == 1 ? e.max(v) - random.between(0, 3)
                                       : random.between(e.min(v) - 1, e.max(v) + 1);
    note("narrow", {operation, v, value});
    const bool result = operation == 0   ? e.narrowMin(v, value)
                        : operation == 1 ? e.narrowMax(v, value)
                        : operation == 2 ? e.bind(v, value)
                                         : e.remove(v, value);
    note("narrowed", {result});
    return result;
  }

  bool post(Random &random) {
    if (constraints_ == kMaxConstraints) return true;
    static constexpr Kind kKinds[] = {Kind::kNeq, Kind::kLe, Kind::kLt, Kind::kSum, Kind::kScript, Kind::kScript};
    const Kind kind = kKinds[random.below(scripts_ ? 6 : 4)];
    const int x = random.below(e.size());
    const int y = (x + random.between(1, e.size() - 1)) % e.size();
    const Rule rule{kind, x, y, random.below(e.size())};
    if (kind == Kind::kSum && e.max(y) + e.max(rule.z) - e.min(y) - e.min(rule.z) > kWidest) return true;
    int flags = 0;
    if (kind == Kind::kScript && random.chance(30)) flags = random.between(1, 3);
    note("post", {constraints_, static_cast<int>(kind), x, y, rule.z, flags});
    const bool result = e.post(constraints_++, rule, flags);
    note("posted", {result});
    return result;
  }

  // Closes the newest choice point when more than `kept` are open. Accepting is left for when no other one is open.
  void close(Random &random, int kept) {
    if (e.contexts() <= kept) return;
    const int how = random.below(10);
    note("close", {how});
    if (how < 6) return e.restore();
    if (how < 8 || e.contexts() > 1) return e.forget();
    e.accept();
  }

  bool script(int id) {
    if (transcript.size() > kLongEnough || nested_ == 3) return true;
    Random random(seed_ * 1000003 + static_cast<std::uint64_t>(id) * 7919 + static_cast<std::uint64_t>(calls_++));
    const int choice = random.below(100);
    ++nested_;
    bool result = true;
    if (choice < 45) {
      result = narrow(random);
    } else if (choice < 57) {
      result = explore(random);
    } else if (choice < 62) {
      result = post(random);
    } else if (choice < 64) {
      create(random);
    } else if (choice < 67) {
      result = false;
    }
    --nested_;
    return result;
  }

  // Opens a choice point, changes something inside it and closes it again.
  bool explore(Random &random) {
    const int before = e.contexts();
    note("explore", {before});
    e.save();
    bool consistent = true;
    for (int i = random.between(1, 3); i > 0 && consistent; --i)
      consistent = random.chance(75) ? narrow(random) : post(random);
    while (e.contexts() > before) close(random, before);
    note("explored", {consistent});
    return consistent || random.chance(70);
  }

  std::uint64_t seed_;
  Random random_;
  bool scripts_;
  int constraints_ = 0;
  int calls_ = 0;
  int nested_ = 0;
};

}  // namespace koru::test::model
