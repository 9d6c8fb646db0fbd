// SPDX-License-Identifier: MIT
// One scheduling problem twice in one solver, under the library's constraint and under the twin: after every step the
// results, the handler calls, the undo records, windows of the tasks included, and the domains must be the same.
#pragma once

#include <optional>
#include <sstream>

#include "support/constraints/scheduling_problem.h"
#include "support/twins/cumulative.h"

namespace koru::test::scheduling {

// One of the two copies. Positions are numbers of variables.
struct Copy {
  std::vector<CSint *> variables;
  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> uses;
  CSint *capacity = nullptr;

  CSint *at(int v) const { return variables[static_cast<std::size_t>(v)]; }
  int numberOf(const CSint *v) const {
    const auto found = std::ranges::find(variables, v);
    return found == variables.end() ? -1 : static_cast<int>(found - variables.begin());
  }
};

// What a step did, in a form in which the copies can be compared.
struct Trace {
  bool consistent = false;
  std::vector<std::tuple<bool, int, int, std::string>> calls;
  std::vector<std::tuple<int, int, int>> records;  // variable or -1, kind, old value
  bool operator==(const Trace &) const = default;
};

inline void PrintTo(const Trace &trace, std::ostream *out) {
  *out << (trace.consistent ? "true" : "false") << " calls " << ::testing::PrintToString(trace.calls) << " records "
       << ::testing::PrintToString(trace.records);
}

class TwinPair : public Generator {
 public:
  explicit TwinPair(unsigned seed) : Generator(seed) {
    cs_init();
    log_.emplace();
    twin_cumulative::gaveUp = false;
    twin_cumulative::sweepsLeft = 2000;
    history_ << "\n  seed " << seed;
  }
  ~TwinPair() {
    log_.reset();
    cs_end();
  }
  TwinPair(const TwinPair &) = delete;
  TwinPair &operator=(const TwinPair &) = delete;

  int add(Interval domain) {
    history_ << "\n  variable " << twin_.variables.size() << " " << domain;
    for (Copy *copy : {&twin_, &library_}) copy->variables.push_back(make(domain));
    return count() - 1;
  }
  void addTask(int start, int duration, int use) {
    history_ << "\n  task " << start << " " << duration << " " << use;
    for (Copy *copy : {&twin_, &library_}) {
      copy->starts.push_back(copy->at(start));
      copy->durations.push_back(copy->at(duration));
      copy->uses.push_back(copy->at(use));
    }
  }
  int count() const { return static_cast<int>(twin_.variables.size()); }
  Interval domain(int v) const { return boundsOf(library_.at(v)); }

  // Applies a step to the twin and then to the library, unless the twin has found that this would abort. False when
  // the problem has failed, or the two disagree.
  template <class Step>
  bool both(const std::string &name, Step step) {
    history_ << "\n  " << name;
    const Trace expected = traced(twin_, step);
    if (twin_cumulative::gaveUp) return false;
    const Trace seen = traced(library_, step);
    EXPECT_EQ(seen, expected) << history_.str();
    compareDomains();
    return expected.consistent && !::testing::Test::HasFailure();
  }

  bool relate(int x, int y, bool (*relation)(CSint *, CSint *)) {
    return both("relation of " + std::to_string(x) + " and " + std::to_string(y),
                [&](Copy &copy) { return relation(copy.at(x), copy.at(y)); });
  }

  bool post(int capacity) {
    for (Copy *copy : {&twin_, &library_}) copy->capacity = copy->at(capacity);
    return posted_ = both("capacity " + std::to_string(capacity), [&](Copy &copy) {
             const bool twin = &copy == &twin_;
             const auto n = static_cast<int>(copy.starts.size());
             CSint **starts = copy.starts.data();
             return twin ? twin_cumulative::post(starts, copy.durations.data(), copy.uses.data(), n, copy.capacity)
                         : cs_Cumulative(starts, copy.durations.data(), copy.uses.data(), n, copy.capacity);
           });
  }

  // The attachments to the unit are known by their kind alone: it is no variable of the host.
  bool postDisjunctive() {
    CSint *unit = CSINT(1);
    twin_.uses.assign(twin_.starts.size(), unit);
    return posted_ = both("disjunctive", [&](Copy &copy) {
             const auto n = static_cast<int>(copy.starts.size());
             return &copy == &twin_ ? twin_cumulative::postDisjunctive(copy.starts.data(), copy.durations.data(),
                                                                       copy.uses.data(), n, unit)
                                    : cs_Disjunctive(copy.starts.data(), copy.durations.data(), n);
           });
  }

  // Narrowings of a posted problem at and within the bounds, contexts opened and restored in between. False when a step
  // has failed.
  bool randomSteps(int steps) {
    for (int i = 0; i < steps; ++i) {
      if (number(0, 3) == 0) cs_saveContext();
      if (!randomStep()) return false;
      stepsDone += posted_ ? 1 : 0;
      if (number(0, 5) == 0 && solver::contexts.count() > 0) restore();
    }
    return true;
  }

  // Back past the posting, also after a failure: nothing of it is left.
  void restoreAll() {
    if (::testing::Test::HasFailure() || twin_cumulative::gaveUp) return;
    cs_restoreAll();
    history_ << "\n  restored all";
    posted_ = false;
    compareDomains();
    randomSteps(2);
  }

  static inline int stepsDone = 0;  // after which the posted problem was consistent, over all pairs

 private:
  void restore() {
    cs_restoreContext();
    history_ << "\n  restored";
    compareDomains();
  }

  bool randomStep() {
    const int v = number(0, count() - 1);
    const Interval now = domain(v);
    const int values[] = {now.min, now.max, satAdd(now.min, 1), satAdd(now.max, -1), number(now.min, now.max)};
    const int value = values[number(0, 4)];
    const bool wide = std::int64_t{now.max} - now.min > 100000;
    static constexpr struct {
      const char *name;
      bool (*apply)(CSint *, int);
    } kSteps[] = {{">= ", cs_GE}, {"<= ", cs_LE}, {"= ", cs_EQ}, {"!= ", cs_NEQ}};
    const auto &step = kSteps[number(0, wide ? 2 : 3)];
    return both(std::to_string(v) + " " + step.name + std::to_string(value),
                [&](Copy &copy) { return step.apply(copy.at(v), value); });
  }

  template <class Step>
  Trace traced(Copy &copy, Step step) {
    log_->calls.clear();
    const int mark = solver::trail.count();
    Trace trace;
    trace.consistent = step(copy);
    for (const Call &call : log_->calls)
      trace.calls.emplace_back(call.consistent, copy.numberOf(call.variable), call.code, call.site);
    int at = 0;
    solver::trail.forEach([&](const TrailRecord &record) {
      if (at++ >= mark)
        trace.records.emplace_back(copy.numberOf(record.variable()), static_cast<int>(record.kind()), record.value);
    });
    return trace;
  }

  void compareDomains() const {
    for (int v = 0; v < count(); ++v) {
      const CSint *seen = library_.at(v);
      const CSint *expected = twin_.at(v);
      ASSERT_TRUE(seen->min == expected->min && seen->max == expected->max && seen->count == expected->count)
          << "variable " << v << " is " << seen->min << ".." << seen->max << ", not " << expected->min << ".."
          << expected->max << history_.str();
    }
  }

  bool posted_ = false;
  std::optional<CallLog> log_;
  Copy twin_;
  Copy library_;
  std::ostringstream history_;
};

}  // namespace koru::test::scheduling
