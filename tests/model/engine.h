// SPDX-License-Identifier: MIT
// A second propagation engine, as naive as can be: domains are sets of holes, an event keeps a copy of its variable's
// whole list of attachments, the queue is a deque, undoing is replaying a log backwards. Handlers are the test's own.
#pragma once

#include <deque>
#include <functional>
#include <set>
#include <vector>

namespace koru::test::model {

struct TwinAttachment {
  int constraint;
  int index;
};

class TwinEngine {
 public:
  // (constraint, variable, code, index, old, new)
  using Handler = std::function<bool(int, int, int, int, int, int)>;
  // Told of every handler run and every failure: (consistent, variable, code, constraint)
  using Observer = std::function<void(bool, int, int, int)>;

  Handler handler;
  Observer observer;

  int create(int min, int max) {
    variables_.push_back({min, max, min, max, max - min + 1, false, {}, {}, min, max, 0});
    return static_cast<int>(variables_.size()) - 1;
  }

  // For a variable that is being built: nobody hears of it and nothing undoes it.
  void dropUnseen(int v, int value) {
    if (!has(v, value)) return;
    at(v).hasBits = true;
    at(v).removed.insert(value);
    --at(v).count;
  }

  int addConstraint(int flags) {
    flags_.push_back(flags);
    return static_cast<int>(flags_.size()) - 1;
  }

  void attach(int constraint, int v, int index) {
    at(v).list.insert(at(v).list.begin(), {constraint, index});
    trail_.push_back({6, v, 0, 0});
    ++at(v).attachmentsEver;
  }

  int size() const { return static_cast<int>(variables_.size()); }
  int min(int v) const { return at(v).min; }
  int max(int v) const { return at(v).max; }
  int count(int v) const { return at(v).count; }
  int attachments(int v) const { return at(v).attachmentsEver; }
  int reportedMin(int v) const { return at(v).reportedMin; }
  int reportedMax(int v) const { return at(v).reportedMax; }
  bool has(int v, int value) const {
    return value >= at(v).min && value <= at(v).max && at(v).removed.count(value) == 0;
  }
  int contexts() const { return static_cast<int>(contexts_.size()); }

  bool narrowMin(int v, int bound) {
    Variable &x = at(v);
    if (x.max < bound) return false;
    if (x.min >= bound) return true;
    trail_.push_back({0, v, x.min, x.count});
    if (holed(x)) {
      for (int value = x.min; value < bound; ++value) x.count -= has(v, value);
      while (!has(v, bound)) ++bound;
    } else {
      x.count = x.max - bound + 1;
    }
    x.min = bound;
    return signal(v, x.count == 1 ? 2 : 0, bound);
  }

  bool narrowMax(int v, int bound) {
    Variable &x = at(v);
    if (x.min > bound) return false;
    if (x.max <= bound) return true;
    trail_.push_back({1, v, x.max, x.count});
    if (holed(x)) {
      for (int value = x.max; value > bound; --value) x.count -= has(v, value);
      while (!has(v, bound)) --bound;
    } else {
      x.count = bound - x.min + 1;
    }
    x.max = bound;
    return signal(v, x.count == 1 ? 3 : 1, bound);
  }

  bool bind(int v, int value) {
    Variable &x = at(v);
    if (value < x.min || value > x.max) return false;
    if (x.count == 1) return true;
    if (!has(v, value)) return false;
    const int code = value == x.max ? 2 : value == x.min ? 3 : 4;
    if (code != 3) trail_.push_back({0, v, x.min, x.count});
    if (code != 2) trail_.push_back({1, v, x.max, x.count});
    x.min = x.max = value;
    x.count = 1;
    return signal(v, code, value);
  }

  bool remove(int v, int value) {
    Variable &x = at(v);
    if (value < x.min || value > x.max) return true;
    if (x.count == 1) return false;
    if (!has(v, value)) return true;
    if (value == x.min) return removeMin(v);
    if (value == x.max) return removeMax(v);
    trail_.push_back({5, v, value, x.count});
    x.hasBits = true;
    x.removed.insert(value);
    --x.count;
    return signal(v, 5, value);
  }

  void save() {
    const unsigned remembered = limit_;
    limit_ = depth_;
    if (!queue_.empty()) propagate();
    contexts_.push_back({trail_.size(), remembered});
  }

  void forget() { pop(); }
  void accept() { trail_.resize(pop()); }
  void restore() {
    const std::size_t mark = pop();
    for (; trail_.size() > mark;) {
      const Record record = trail_.back();
      trail_.pop_back();
      undo(record);
    }
  }

 private:
  struct Variable {
    int initialMin, initialMax;
    int min, max, count;
    bool hasBits;
    std::set<int> removed;  // strictly inside the bounds of their time
    std::vector<TwinAttachment> list;
    int reportedMin, reportedMax;
    int attachmentsEver;
  };
  struct Record {
    int kind, variable, value, count;
  };
  struct Event {
    int variable, code, value;
    std::vector<TwinAttachment> list;
  };
  struct Mark {
    std::size_t trail;
    unsigned limit;
  };

  Variable &at(int v) { return variables_[static_cast<std::size_t>(v)]; }
  const Variable &at(int v) const { return variables_[static_cast<std::size_t>(v)]; }
  int flags(int constraint) const { return flags_[static_cast<std::size_t>(constraint)]; }
  static bool holed(const Variable &x) { return x.hasBits && x.max - x.min + 1 != x.count; }

  bool removeMin(int v) {
    Variable &x = at(v);
    const bool holes = holed(x);
    trail_.push_back({0, v, x.min, x.count});
    x.count = holes ? x.count - 1 : x.max - x.min;
    do ++x.min;
    while (holes && x.removed.count(x.min) != 0);
    return signal(v, x.count == 1 ? 2 : 0, x.min);
  }

  bool removeMax(int v) {
    Variable &x = at(v);
    const bool holes = holed(x);
    trail_.push_back({1, v, x.max, x.count});
    x.count = holes ? x.count - 1 : x.max - x.min;
    do --x.max;
    while (holes && x.removed.count(x.max) != 0);
    return signal(v, x.count == 1 ? 3 : 1, x.max);
  }

  bool signal(int v, int code, int value) {
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
  bool arguments(const Event &event, int &oldValue, int &newValue) {
    Variable &x = at(event.variable);
    oldValue = newValue = event.value;
    if (event.code == 5) return event.value > x.min && event.value < x.max;
    if (event.code == 4) {
      oldValue = x.reportedMin;
      newValue = x.reportedMax;
      x.reportedMin = x.reportedMax = x.min;
      return true;
    }
    if (event.code == 0 && event.value < x.min) return false;
    if (event.code == 1 && event.value > x.max) return false;
    int &reported = event.code == 0 || event.code == 2 ? x.reportedMin : x.reportedMax;
    oldValue = reported;
    reported = event.value;
    return true;
  }

  void propagate() {
    ++depth_;
    // The rest of the list in which the first conflict listener was met, from it on.
    std::vector<TwinAttachment> listeners;
    while (!queue_.empty()) {
      const Event event = queue_.front();
      queue_.pop_front();
      int oldValue = 0;
      int newValue = 0;
      if (!arguments(event, oldValue, newValue)) continue;
      for (std::size_t i = 0; i < event.list.size(); ++i) {
        const auto [constraint, index] = event.list[i];
        if (flags(constraint) != 0) {
          if (listeners.empty() && (flags(constraint) & 1) != 0)
            listeners.assign(event.list.begin() + static_cast<std::ptrdiff_t>(i), event.list.end());
        } else if (handler(constraint, event.variable, event.code, index, oldValue, newValue)) {
          if (observer) observer(true, event.variable, event.code, constraint);
        } else {
          return fail(event, constraint, listeners, oldValue, newValue);
        }
      }
    }
    --depth_;
  }

  void fail(const Event &event, int failing, const std::vector<TwinAttachment> &listeners, int oldValue, int newValue) {
    for (const auto &[constraint, index] : listeners)
      if ((flags(constraint) & 1) != 0) handler(constraint, event.variable, event.code, index, oldValue, newValue);
    queue_.clear();
    ++failures_;
    --depth_;
    if (observer) observer(false, event.variable, event.code, failing);
  }

  std::size_t pop() {
    const Mark mark = contexts_.back();
    contexts_.pop_back();
    limit_ = mark.limit;
    return mark.trail;
  }

  void undo(const Record &record) {
    Variable &x = at(record.variable);
    if (record.kind == 6) {
      if (!x.list.empty()) x.list.erase(x.list.begin());
      return;
    }
    x.count = record.count;
    if (record.kind == 0) x.min = x.reportedMin = record.value;
    if (record.kind == 1) x.max = x.reportedMax = record.value;
    if (record.kind == 5) x.removed.erase(record.value);
  }

  std::vector<Variable> variables_;
  std::vector<int> flags_;
  std::vector<Record> trail_;
  std::vector<Mark> contexts_;
  std::deque<Event> queue_;
  unsigned depth_ = 0;
  unsigned limit_ = 0;
  int failures_ = 0;
};

}  // namespace koru::test::model
