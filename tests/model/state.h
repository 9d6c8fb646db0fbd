// SPDX-License-Identifier: MIT
// Two models of a solver without constraints, written without a look at how the solver stores anything.
//
// CopyModel keeps every domain as a set of values and every choice point as a copy of all of them. It predicts every
// programme that accepts a choice point only when none remains open around it.
//
// LogModel keeps bounds, element count and the values removed inside the bounds, and a log of undo records that are
// undone literally, newest first. It also predicts what an outer choice point still undoes after an inner one was
// accepted, where the element count may be written back higher than the domain is large.
#pragma once

#include <climits>
#include <iterator>
#include <set>
#include <vector>

namespace koru::test::model {

enum class Relation { kEQ, kNEQ, kLE, kLT, kGE, kGT };
enum class Close { kForget, kAccept, kRestore };

// A call of a cs_backtrack callback, or the registration of one.
struct Undone {
  int variable;
  int index;
  bool ext;
  bool operator==(const Undone &) const = default;
};

// What the queries must say about one variable.
struct View {
  int min;
  int max;
  int count;
  std::vector<int> values;  // within the bounds, increasing
};

class CopyModel {
 public:
  static constexpr bool kPredictsInnerAccept = false;

  void create(const std::set<int> &values) {
    created_.push_back(values);
    domains_.push_back(values);
  }
  int variables() const { return static_cast<int>(domains_.size()); }
  int contexts() const { return static_cast<int>(copies_.size()); }

  View view(int i) const {
    const std::set<int> &d = domain(i);
    return {*d.begin(), *d.rbegin(), static_cast<int>(d.size()), {d.begin(), d.end()}};
  }

  bool relate(int i, Relation relation, int v) {
    std::set<int> kept;
    for (int value : domain(i))
      if (holds(value, relation, v)) kept.insert(value);
    const bool vacuous = (relation == Relation::kLT && v == INT_MIN) || (relation == Relation::kGT && v == INT_MAX);
    if (vacuous) return true;
    if (kept.empty()) return false;
    domains_[static_cast<std::size_t>(i)] = kept;
    return true;
  }

  void registerCallback(const Undone &callback) { registered_.push_back(callback); }
  void save() { copies_.push_back({domains_, registered_.size()}); }

  // Closes contexts down to `label`; the callbacks that must run, in order.
  std::vector<Undone> close(int label, Close how) {
    const Copy copy = copies_[static_cast<std::size_t>(label - 1)];
    copies_.resize(static_cast<std::size_t>(label - 1));
    if (how == Close::kForget) return {};
    std::vector<Undone> calls(registered_.rbegin(), registered_.rend() - static_cast<std::ptrdiff_t>(copy.registered));
    registered_.resize(copy.registered);
    if (how == Close::kAccept) return {};
    for (std::size_t i = 0; i < domains_.size(); ++i)
      domains_[i] = i < copy.domains.size() ? copy.domains[i] : created_[i];
    return calls;
  }

 private:
  struct Copy {
    std::vector<std::set<int>> domains;
    std::size_t registered;
  };

  static bool holds(int value, Relation relation, int v) {
    switch (relation) {
      case Relation::kEQ:
        return value == v;
      case Relation::kNEQ:
        return value != v;
      case Relation::kLE:
        return value <= v;
      case Relation::kLT:
        return value < v;
      case Relation::kGE:
        return value >= v;
      case Relation::kGT:
        return value > v;
    }
    return false;
  }

  const std::set<int> &domain(int i) const { return domains_[static_cast<std::size_t>(i)]; }

  std::vector<std::set<int>> domains_;
  std::vector<std::set<int>> created_;
  std::vector<Copy> copies_;
  std::vector<Undone> registered_;
};

class LogModel {
 public:
  static constexpr bool kPredictsInnerAccept = true;

  void create(const std::set<int> &values) {
    Variable v{*values.begin(), *values.rbegin(), static_cast<int>(values.size()), {}};
    for (int value = v.min; value < v.max; ++value)
      if (values.count(value) == 0) v.removed.insert(value);
    v.hasBits = !v.removed.empty();
    variables_.push_back(v);
  }
  int variables() const { return static_cast<int>(variables_.size()); }
  int contexts() const { return static_cast<int>(marks_.size()); }

  View view(int i) const {
    const Variable &v = variables_[static_cast<std::size_t>(i)];
    View result{v.min, v.max, v.count, {}};
    for (long long value = v.min; value <= v.max; ++value)
      if (v.removed.count(static_cast<int>(value)) == 0) result.values.push_back(static_cast<int>(value));
    return result;
  }

  // An element count above the real one may let a bound rest on a removed value; what follows is then without meaning.
  bool meaningful() const {
    for (const Variable &v : variables_)
      if (v.removed.count(v.min) != 0 || v.removed.count(v.max) != 0) return false;
    return true;
  }

  bool relate(int i, Relation relation, int value) {
    Variable &v = variables_[static_cast<std::size_t>(i)];
    switch (relation) {
      case Relation::kEQ:
        return bind(v, i, value);
      case Relation::kNEQ:
        return remove(v, i, value);
      case Relation::kLE:
        return lowerMax(v, i, value);
      case Relation::kLT:
        return value == INT_MIN || lowerMax(v, i, value - 1);
      case Relation::kGE:
        return raiseMin(v, i, value);
      case Relation::kGT:
        return value == INT_MAX || raiseMin(v, i, value + 1);
    }
    return false;
  }

  void registerCallback(const Undone &callback) { log_.push_back({Kind::kCallback, 0, 0, 0, callback}); }
  void save() { marks_.push_back(log_.size()); }

  std::vector<Undone> close(int label, Close how) {
    const std::size_t mark = marks_[static_cast<std::size_t>(label - 1)];
    marks_.resize(static_cast<std::size_t>(label - 1));
    std::vector<Undone> calls;
    if (how == Close::kForget) return calls;
    for (; log_.size() > mark; log_.pop_back())
      if (how == Close::kRestore) undo(log_.back(), calls);
    return calls;
  }

 private:
  enum class Kind { kMin, kMax, kRemoved, kCallback };
  struct Record {
    Kind kind;
    int variable;
    int value;
    int count;
    Undone callback;
  };
  struct Variable {
    int min;
    int max;
    int count;
    std::set<int> removed;
    bool hasBits = false;
  };

  static int size(const Variable &v) { return v.max - v.min + 1; }
  static bool holes(const Variable &v) { return v.hasBits && size(v) != v.count; }
  static int present(const Variable &v, int low, int high) {
    int count = 0;
    for (long long value = low; value <= high; ++value) count += v.removed.count(static_cast<int>(value)) == 0;
    return count;
  }
  void note(Kind kind, int i, int value, int count) { log_.push_back({kind, i, value, count, {}}); }

  bool raiseMin(Variable &v, int i, int bound) {
    if (v.max < bound) return false;
    if (v.min >= bound) return true;
    note(Kind::kMin, i, v.min, v.count);
    if (holes(v)) {
      v.count -= present(v, v.min, bound - 1);
      while (v.removed.count(bound) != 0) ++bound;
    } else {
      v.count = v.max - bound + 1;
    }
    v.min = bound;
    return true;
  }

  bool lowerMax(Variable &v, int i, int bound) {
    if (v.min > bound) return false;
    if (v.max <= bound) return true;
    note(Kind::kMax, i, v.max, v.count);
    if (holes(v)) {
      v.count -= present(v, bound + 1, v.max);
      while (v.removed.count(bound) != 0) --bound;
    } else {
      v.count = bound - v.min + 1;
    }
    v.max = bound;
    return true;
  }

  bool bind(Variable &v, int i, int value) {
    if (value < v.min || value > v.max) return false;
    if (v.count == 1) return true;
    if (v.removed.count(value) != 0) return false;
    if (value == v.max || value != v.min) note(Kind::kMin, i, v.min, v.count);
    if (value != v.max) note(Kind::kMax, i, v.max, v.count);
    v.min = v.max = value;
    v.count = 1;
    return true;
  }

  bool remove(Variable &v, int i, int value) {
    if (value < v.min || value > v.max) return true;
    if (v.count == 1 || v.min == v.max) return false;  // whatever the count claims, the last value stays
    if (v.removed.count(value) != 0) return true;
    const bool holed = holes(v);
    if (value == v.min) {
      note(Kind::kMin, i, v.min, v.count);
      v.count = holed ? v.count - 1 : v.max - value;
      do ++v.min;
      while (holed && v.removed.count(v.min) != 0);
    } else if (value == v.max) {
      note(Kind::kMax, i, v.max, v.count);
      v.count = holed ? v.count - 1 : value - v.min;
      do --v.max;
      while (holed && v.removed.count(v.max) != 0);
    } else {
      note(Kind::kRemoved, i, value, v.count);
      v.removed.insert(value);
      v.hasBits = true;
      --v.count;
    }
    return true;
  }

  void undo(const Record &record, std::vector<Undone> &calls) {
    if (record.kind == Kind::kCallback) return calls.push_back(record.callback);
    Variable &v = variables_[static_cast<std::size_t>(record.variable)];
    v.count = record.count;
    if (record.kind == Kind::kMin) v.min = record.value;
    if (record.kind == Kind::kMax) v.max = record.value;
    if (record.kind == Kind::kRemoved) v.removed.erase(record.value);
  }

  std::vector<Variable> variables_;
  std::vector<Record> log_;
  std::vector<std::size_t> marks_;
};

}  // namespace koru::test::model
