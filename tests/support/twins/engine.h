// SPDX-License-Identifier: MIT
// A propagation engine over plain sets of values that shares no code with the library: the same queue discipline, but
// every rule written out, and every bound computed in 128 bits. What it does to each domain, and every handler call,
// can be compared with the library step by step.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <set>
#include <tuple>
#include <vector>

namespace koru::test::twin {

#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
#else
using Wide = long long;  // all that 32-bit compilers have
#endif

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
  using Call = std::tuple<bool, int, int>;  // consistent, variable, event code

  std::vector<Call> calls;

  // Bounds of wide domains may settle one value at a time: a propagation is given up after so many calls.
  static constexpr std::size_t kMostCalls = 2000;
  bool gaveUp = false;

  int add(Wide min, Wide max) {
    vars_.push_back({min, max, {}, min, max, {}});
    return static_cast<int>(vars_.size()) - 1;
  }
  int add(const std::vector<int> &values) {
    const int v = add(values.front(), values.back());
    for (int value = values.front(); value < values.back(); ++value)
      if (!std::ranges::binary_search(values, value)) vars_.back().holes.insert(value);
    return v;
  }
  int addConstraint(Handler handler) {
    handlers_.push_back(std::move(handler));
    return static_cast<int>(handlers_.size()) - 1;
  }
  void attach(int constraint, int v, int index) { at(v).entries.push_back({constraint, index}); }

  Wide min(int v) const { return at(v).min; }
  Wide max(int v) const { return at(v).max; }
  bool hasHoles(int v) const {
    return std::ranges::any_of(at(v).holes, [&](Wide h) { return inside(v, h); });
  }
  bool has(int v, Wide value) const { return inside(v, value) && !at(v).holes.contains(value); }
  int count() const { return static_cast<int>(vars_.size()); }

  bool narrowMin(int v, Wide bound) {
    if (max(v) < bound) return false;
    if (min(v) >= bound) return true;
    at(v).min = bound;
    while (!has(v, min(v))) ++at(v).min;
    return signal(v, min(v) == max(v) ? 2 : 0, min(v));
  }
  bool narrowMax(int v, Wide bound) {
    if (min(v) > bound) return false;
    if (max(v) <= bound) return true;
    at(v).max = bound;
    while (!has(v, max(v))) --at(v).max;
    return signal(v, min(v) == max(v) ? 3 : 1, max(v));
  }
  bool bindValue(int v, Wide value) {
    if (!inside(v, value)) return false;
    if (min(v) == max(v)) return true;
    if (!has(v, value)) return false;
    const int code = value == max(v) ? 2 : value == min(v) ? 3 : 4;
    at(v).min = at(v).max = value;
    return signal(v, code, value);
  }
  bool removeValue(int v, Wide value) {
    if (!inside(v, value)) return true;
    if (min(v) == max(v)) return false;
    if (!has(v, value)) return true;
    if (value == min(v)) return narrowMin(v, value + 1);
    if (value == max(v)) return narrowMax(v, value - 1);
    at(v).holes.insert(value);
    return signal(v, 5, value);
  }

 private:
  struct Entry {
    int constraint;
    int index;
  };
  struct Variable {
    Wide min;
    Wide max;
    std::set<Wide> holes;
    Wide reportedMin;
    Wide reportedMax;
    std::vector<Entry> entries;  // oldest first
  };
  struct Queued {
    int var;
    int code;
    Wide value;
    std::size_t entries;
  };

  Variable &at(int v) { return vars_[static_cast<std::size_t>(v)]; }
  const Variable &at(int v) const { return vars_[static_cast<std::size_t>(v)]; }
  bool inside(int v, Wide value) const { return value >= min(v) && value <= max(v); }

  bool signal(int v, int code, Wide value) {
    if (at(v).entries.empty()) {
      at(v).reportedMin = min(v);
      at(v).reportedMax = max(v);
      return true;
    }
    queue_.push_back({v, code, value, at(v).entries.size()});
    if (running_ || queue_.size() > 1) return true;
    running_ = true;
    const bool consistent = drain();
    queue_.clear();
    running_ = false;
    return consistent;
  }

  bool drain() {
    while (!queue_.empty() && !gaveUp) {
      const Queued q = queue_.front();
      queue_.pop_front();
      Event event{q.var, q.code, -1, 0, 0};
      if (open(q, event) && !wake(q, event)) return false;
    }
    return true;
  }

  bool open(const Queued &q, Event &event) {
    Variable &v = at(q.var);
    event.newValue = event.oldValue = q.value;
    if (q.code == 5) return q.value > v.min && q.value < v.max;
    if (q.code == 4) {
      event.oldValue = v.reportedMin;
      event.newValue = v.reportedMax;
      v.reportedMin = v.reportedMax = v.min;
      return true;
    }
    if ((q.code == 0 && q.value < v.min) || (q.code == 1 && q.value > v.max)) return false;
    Wide &reported = q.code % 2 == 0 ? v.reportedMin : v.reportedMax;
    event.oldValue = reported;
    reported = q.value;
    return true;
  }

  bool wake(const Queued &q, Event event) {
    for (std::size_t i = q.entries; i-- > 0;) {
      const Entry entry = at(q.var).entries[i];
      event.index = entry.index;
      const bool consistent = handlers_[static_cast<std::size_t>(entry.constraint)](event);
      calls.emplace_back(consistent, q.var, q.code);
      if (!consistent) return false;
    }
    gaveUp = calls.size() > kMostCalls;
    return true;
  }

  std::vector<Variable> vars_;
  std::vector<Handler> handlers_;
  std::deque<Queued> queue_;
  bool running_ = false;
};

}  // namespace koru::test::twin
