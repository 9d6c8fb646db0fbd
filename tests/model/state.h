// SPDX-License-Identifier: MIT
// Two models of a solver without constraints, written without a look at how the solver stores anything.
//
// CopyModel keeps every domain as a set of values and every choice point as a copy of all of them. It predicts every
// program that accepts a choice point only when none remains open around it.
//
// LogModel is the naive engine, whose undo records are undone literally, newest first. It also predicts what an outer
// choice point still undoes after an inner one was accepted, where the element count may be written back higher than
// the domain is large.
#pragma once

#include <set>
#include <vector>

#include "support/twins/copies.h"
#include "support/twins/engine.h"

namespace koru::test::model {

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

template <class State>
class CopyingModel : public copies::CopiesOf<State> {
 public:
  static constexpr bool kPredictsInnerAccept = false;

  void registerCallback(const Undone &callback) { registered_.push_back(callback); }
  void save() {
    copies::CopiesOf<State>::save();
    marks_.push_back(registered_.size());
  }

  // Closes contexts down to `label`; the callbacks that must run, in order.
  std::vector<Undone> close(int label, Close how) {
    const std::size_t kept = marks_[static_cast<std::size_t>(label - 1)];
    marks_.resize(static_cast<std::size_t>(label - 1));
    while (this->contexts() >= label) how == Close::kRestore ? this->restore() : copies::CopiesOf<State>::close();
    if (how == Close::kForget) return {};
    std::vector<Undone> calls(registered_.rbegin(), registered_.rend() - static_cast<std::ptrdiff_t>(kept));
    registered_.resize(kept);
    return how == Close::kRestore ? calls : std::vector<Undone>{};
  }

 private:
  std::vector<Undone> registered_;
  std::vector<std::size_t> marks_;  // how many were registered when a context was opened
};

class CopyModel : public CopyingModel<copies::Domain> {
 public:
  static constexpr bool kPosts = false;

  void create(const copies::Domain &values) { CopiesOf::create(values, values); }
  View view(int i) const {
    const copies::Domain &d = variable(i);
    return {*d.begin(), *d.rbegin(), static_cast<int>(d.size()), {d.begin(), d.end()}};
  }
  bool relate(int i, int method, int value) { return copies::keep(variable(i), {method, value}); }
};

class LogModel {
 public:
  static constexpr bool kPredictsInnerAccept = true;
  static constexpr bool kPosts = false;

  void create(const std::set<int> &values) { engine_.create(std::vector<int>(values.begin(), values.end())); }
  int variables() const { return engine_.size(); }
  int contexts() const { return engine_.contexts(); }

  View view(int i) const {
    const auto number = [](twin::Wide value) { return static_cast<int>(value); };
    View result{number(engine_.min(i)), number(engine_.max(i)), number(engine_.count(i)), {}};
    for (twin::Wide value = engine_.min(i); value <= engine_.max(i); ++value)
      if (engine_.has(i, value)) result.values.push_back(number(value));
    return result;
  }

  // An element count above the real one may let a bound rest on a removed value; what follows is then without meaning.
  bool meaningful() const {
    for (int i = 0; i < variables(); ++i)
      if (!engine_.has(i, engine_.min(i)) || !engine_.has(i, engine_.max(i))) return false;
    return true;
  }

  bool relate(int i, int method, int value) { return engine_.relate(i, method, value); }

  void registerCallback(const Undone &callback) {
    engine_.leaveToken(static_cast<int>(registered_.size()));
    registered_.push_back(callback);
  }
  void save() { engine_.save(); }

  std::vector<Undone> close(int label, Close how) {
    engine_.undone.clear();
    while (engine_.contexts() >= label) {
      if (how == Close::kForget) engine_.forget();
      if (how == Close::kAccept) engine_.accept();
      if (how == Close::kRestore) engine_.restore();
    }
    std::vector<Undone> calls;
    for (const int token : engine_.undone) calls.push_back(registered_[static_cast<std::size_t>(token)]);
    return calls;
  }

 private:
  twin::Engine engine_;
  std::vector<Undone> registered_;
};

}  // namespace koru::test::model
