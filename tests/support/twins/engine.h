// SPDX-License-Identifier: MIT
// The naive engine: a second propagation engine that shares no code with the library and is as plain as can be. Bounds
// are numbers of 128 bits, the values removed between them a set, the queue a deque, an event keeps a copy of its
// variable's whole list of attachments, and undoing is replaying a log backwards. What it does to each domain, and
// every handler call, can be compared with the library step by step. Handlers are the test's own.
//
// Its domain is kept as bounds, count and removed values, and undone record by record, because the library promises
// what becomes of each of them: after an inner context was accepted and an outer one restored, the count may be higher
// than the domain is large. What is true by definition, without a log, is in copies.h: a comparison of the library with
// this engine alone would not notice a restore that both got wrong.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <deque>
#include <functional>
#include <iterator>
#include <set>
#include <vector>

#include "koru.h"

namespace koru::test::twin {

#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
#else
using Wide = long long;  // all that 32-bit compilers have
#endif

// The library's relations with an int, by CS_METHOD_...
inline constexpr bool (*kRelationOf[])(CSint *, int) = {cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE, cs_GT};

// Variables and constraints are numbers, from 0. An engine can be copied, with all its contexts.
class Engine {
 public:
  struct Event {
    int var;
    int code;
    int index;
    Wide oldValue;
    Wide newValue;
  };
  using Handler = std::function<bool(const Event &)>;

  // A handler has run; for a failure, after all that the failure sets off.
  struct Call {
    bool consistent;
    int var;
    int code;
    int constraint;
  };
  std::vector<Call> calls;

  // Bounds of wide domains may settle one value at a time: with more calls than this a propagation is given up.
  std::size_t mostCalls = SIZE_MAX;
  bool gaveUp = false;

  std::vector<int> undone;  // the tokens that restores have met, newest first

  int create(Wide min, Wide max) {
    variables_.push_back({min, max, max - min + 1, false, {}, {}, min, max, 0});
    return size() - 1;
  }
  // From increasing values.
  int create(const std::vector<int> &values) {
    const int v = create(values.front(), values.back());
    for (int value = values.front(); value < values.back(); ++value)
      if (!std::ranges::binary_search(values, value)) dropUnseen(v, value);
    return v;
  }
  // For a variable that is being built: nobody hears of it and nothing undoes it.
  void dropUnseen(int v, Wide value) {
    if (!has(v, value)) return;
    at(v).hasBits = true;
    at(v).removed.insert(value);
    --at(v).count;
  }

  // Flags are those of a constraint of the library: 1 hears of conflicts, any but 0 is not woken.
  int addConstraint(Handler handler, int flags = 0) {
    constraints_.push_back({std::move(handler), flags});
    return static_cast<int>(constraints_.size()) - 1;
  }
  void attach(int constraint, int v, int index) {
    at(v).list.insert(at(v).list.begin(), {constraint, index});
    log_.push_back({kAttached, v, 0, 0});
    ++at(v).attachmentsEver;
  }
  // A token for `undone`, when a restore passes this point.
  void leaveToken(int token) { log_.push_back({kToken, token, 0, 0}); }

  int size() const { return static_cast<int>(variables_.size()); }
  Wide min(int v) const { return at(v).min; }
  Wide max(int v) const { return at(v).max; }
  Wide count(int v) const { return at(v).count; }
  int attachments(int v) const { return at(v).attachmentsEver; }
  Wide reportedMin(int v) const { return at(v).reportedMin; }
  Wide reportedMax(int v) const { return at(v).reportedMax; }
  bool has(int v, Wide value) const { return inside(v, value) && !at(v).removed.contains(value); }
  bool hasHoles(int v) const { return holesIn(at(v), min(v), max(v)) > 0; }
  int contexts() const { return static_cast<int>(contexts_.size()); }

  bool narrowMin(int v, Wide bound) {
    Variable &x = at(v);
    if (x.max < bound) return false;
    if (x.min >= bound) return true;
    log_.push_back({kMin, v, x.min, x.count});
    if (holed(x)) {
      x.count -= bound - x.min - holesIn(x, x.min, bound - 1);
      while (x.removed.contains(bound)) ++bound;
    } else {
      x.count = x.max - bound + 1;
    }
    x.min = bound;
    return signal(v, x.count == 1 ? 2 : 0, bound);
  }

  bool narrowMax(int v, Wide bound) {
    Variable &x = at(v);
    if (x.min > bound) return false;
    if (x.max <= bound) return true;
    log_.push_back({kMax, v, x.max, x.count});
    if (holed(x)) {
      x.count -= x.max - bound - holesIn(x, bound + 1, x.max);
      while (x.removed.contains(bound)) --bound;
    } else {
      x.count = bound - x.min + 1;
    }
    x.max = bound;
    return signal(v, x.count == 1 ? 3 : 1, bound);
  }

  bool bind(int v, Wide value) {
    Variable &x = at(v);
    if (!inside(v, value)) return false;
    if (x.count == 1) return true;
    if (!has(v, value)) return false;
    const int code = value == x.max ? 2 : value == x.min ? 3 : 4;
    if (code != 3) log_.push_back({kMin, v, x.min, x.count});
    if (code != 2) log_.push_back({kMax, v, x.max, x.count});
    x.min = x.max = value;
    x.count = 1;
    return signal(v, code, value);
  }

  bool remove(int v, Wide value) {
    Variable &x = at(v);
    if (!inside(v, value)) return true;
    if (x.count == 1 || x.min == x.max) return false;  // whatever the count claims, the last value stays
    if (!has(v, value)) return true;
    if (value == x.min) return narrowMin(v, value + 1);
    if (value == x.max) return narrowMax(v, value - 1);
    log_.push_back({kRemoved, v, value, x.count});
    x.hasBits = true;
    x.removed.insert(value);
    --x.count;
    return signal(v, 5, value);
  }

  // As the library's relations with an int, by CS_METHOD_...: nothing is below the smallest int, which excludes
  // nothing.
  bool relate(int v, int method, int value) {
    switch (method) {
      case CS_METHOD_EQ:
        return bind(v, value);
      case CS_METHOD_NEQ:
        return remove(v, value);
      case CS_METHOD_LE:
        return narrowMax(v, value);
      case CS_METHOD_LT:
        return value == INT_MIN || narrowMax(v, Wide{value} - 1);
      case CS_METHOD_GE:
        return narrowMin(v, value);
      default:
        return value == INT_MAX || narrowMin(v, Wide{value} + 1);
    }
  }

  void save() {
    const int remembered = limit_;
    limit_ = depth_;
    if (!queue_.empty()) propagate();
    contexts_.push_back({log_.size(), remembered});
  }
  void forget() { close(); }
  void accept() { log_.resize(close()); }
  void restore() {
    for (const std::size_t mark = close(); log_.size() > mark;) {
      const Record record = log_.back();
      log_.pop_back();
      undo(record);
    }
  }

 private:
  struct Attachment {
    int constraint;
    int index;
  };
  struct Variable {
    Wide min, max, count;
    bool hasBits;
    std::set<Wide> removed;        // strictly inside the bounds of their time
    std::vector<Attachment> list;  // newest first
    Wide reportedMin, reportedMax;
    int attachmentsEver;
  };
  struct Constraint {
    Handler handler;
    int flags;
  };
  enum What { kMin, kMax, kRemoved, kAttached, kToken };
  struct Record {
    What what;
    int variable;
    Wide value, count;
  };
  struct Queued {
    int variable, code;
    Wide value;
    std::vector<Attachment> list;
  };
  struct Context {
    std::size_t mark;
    int limit;
  };

  Variable &at(int v) { return variables_[static_cast<std::size_t>(v)]; }
  const Variable &at(int v) const { return variables_[static_cast<std::size_t>(v)]; }
  bool inside(int v, Wide value) const { return value >= min(v) && value <= max(v); }
  int flags(int constraint) const { return constraints_[static_cast<std::size_t>(constraint)].flags; }
  static bool holed(const Variable &x) { return x.hasBits && x.max - x.min + 1 != x.count; }
  static Wide holesIn(const Variable &x, Wide low, Wide high) {
    return std::distance(x.removed.lower_bound(low), x.removed.upper_bound(high));
  }

  bool signal(int v, int code, Wide value) {
    Variable &x = at(v);
    if (x.list.empty()) {
      x.reportedMin = x.min;
      x.reportedMax = x.max;
      return true;
    }
    const bool first = queue_.empty();
    queue_.push_back({v, code, value, x.list});
    if (!first || depth_ > limit_) return true;
    const int failuresBefore = failures_;
    propagate();
    const bool consistent = failures_ == failuresBefore;
    failures_ = failuresBefore;
    return consistent;
  }

  // False for a stale event.
  bool open(const Queued &q, Event &event) {
    Variable &x = at(q.variable);
    event = {q.variable, q.code, -1, q.value, q.value};
    if (q.code == 5) return q.value > x.min && q.value < x.max;
    if (q.code == 4) {
      event.oldValue = x.reportedMin;
      event.newValue = x.reportedMax;
      x.reportedMin = x.reportedMax = x.min;
      return true;
    }
    if (q.code == 0 && q.value < x.min) return false;
    if (q.code == 1 && q.value > x.max) return false;
    Wide &reported = q.code == 0 || q.code == 2 ? x.reportedMin : x.reportedMax;
    event.oldValue = reported;
    reported = q.value;
    return true;
  }

  bool handle(const Attachment &a, Event &event) {
    event.index = a.index;
    return constraints_[static_cast<std::size_t>(a.constraint)].handler(event);
  }

  void propagate() {
    ++depth_;
    // The rest of the list in which the first conflict listener was met, from it on.
    std::vector<Attachment> listeners;
    while (!queue_.empty() && !gaveUp) {
      const Queued q = queue_.front();
      queue_.pop_front();
      Event event{};
      if (!open(q, event)) continue;
      for (std::size_t i = 0; i < q.list.size(); ++i) {
        const int constraint = q.list[i].constraint;
        if (flags(constraint) != 0) {
          if (listeners.empty() && (flags(constraint) & 1) != 0)
            listeners.assign(q.list.begin() + static_cast<std::ptrdiff_t>(i), q.list.end());
        } else if (handle(q.list[i], event)) {
          calls.push_back({true, q.variable, q.code, constraint});
        } else {
          return fail(event, constraint, listeners);
        }
      }
      gaveUp = calls.size() > mostCalls;
    }
    --depth_;
  }

  void fail(Event event, int failing, const std::vector<Attachment> &listeners) {
    for (const Attachment &a : listeners)
      if ((flags(a.constraint) & 1) != 0) handle(a, event);
    queue_.clear();
    ++failures_;
    --depth_;
    calls.push_back({false, event.var, event.code, failing});
  }

  std::size_t close() {
    const Context context = contexts_.back();
    contexts_.pop_back();
    limit_ = context.limit;
    return context.mark;
  }

  void undo(const Record &record) {
    if (record.what == kToken) return undone.push_back(record.variable);
    Variable &x = at(record.variable);
    if (record.what == kAttached) {
      if (!x.list.empty()) x.list.erase(x.list.begin());
      return;
    }
    x.count = record.count;
    if (record.what == kMin) x.min = x.reportedMin = record.value;
    if (record.what == kMax) x.max = x.reportedMax = record.value;
    if (record.what == kRemoved) x.removed.erase(record.value);
  }

  std::vector<Variable> variables_;
  std::deque<Constraint> constraints_;  // handlers may add some while they run
  std::vector<Record> log_;
  std::vector<Context> contexts_;
  std::deque<Queued> queue_;
  int depth_ = 0;
  int limit_ = 0;
  int failures_ = 0;
};

}  // namespace koru::test::twin
