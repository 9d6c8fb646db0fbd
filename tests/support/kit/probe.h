// SPDX-License-Identifier: MIT
// What the unit tests of constraints look through: an observer that logs every handler call, allocations that fail on
// demand, and the six ways to change a domain.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "core/narrow.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace koru::test {

// One handler call, or one narrowing by a relation with an int, as an observer is told of it.
struct Call {
  bool consistent;
  const CSint *variable;
  int code;
  std::string site;
  bool operator==(const Call &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const Call &call) {
  return out << "{" << call.consistent << ", " << call.variable << ", " << call.code << ", " << call.site << "}";
}

// Observes from its creation to its end. One per solver at a time; must end before the solver does.
class CallLog {
 public:
  CallLog() { solver::ports.add(&observer_); }
  ~CallLog() { solver::ports.remove(&observer_); }
  CallLog(const CallLog &) = delete;
  CallLog &operator=(const CallLog &) = delete;

  std::vector<Call> calls;
  std::vector<Site *> sites;  // of the calls, one by one

 private:
  static void note(void *self, bool consistent, CSint *variable, int code, Site *site) {
    auto *log = static_cast<CallLog *>(self);
    log->calls.push_back({consistent, variable, code, site->name()});
    log->sites.push_back(site);
  }

  Observer observer_{note, nullptr, this, true, nullptr};
};

// Makes the k-th allocation from now on fail, counting from 0, and only that one; -1 lets all succeed.
class FailingAllocation {
 public:
  explicit FailingAllocation(int k) {
    remaining_ = k;
    failed_ = false;
    allocationHook = allow;
  }
  ~FailingAllocation() { allocationHook = nullptr; }
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;

  static bool failed() { return failed_; }

 private:
  static bool allow(std::size_t) {
    if (remaining_-- != 0) return true;
    failed_ = true;
    return false;
  }

  static inline int remaining_ = -1;
  static inline bool failed_ = false;
};

// Lets no trail record be stored until the end of its life.
class FullTrail {
 public:
  FullTrail() {
    while (solver::trail.count() % Trail::kCapacity != 0 || solver::trail.count() == 0)
      cs_backtrack(nullptr, 0, nullptr);
    allocationHook = [](std::size_t) { return false; };
  }
  ~FullTrail() { allocationHook = nullptr; }
  FullTrail(const FullTrail &) = delete;
  FullTrail &operator=(const FullTrail &) = delete;
};

// Runs `attempt` (true on success) in a fresh solver once for each allocation it makes, that one failing. `prepare`
// makes what the attempt works on. The number of failures that were seen is returned. The table of posters, which a
// solver's first posting makes, is there before.
template <class Prepare, class Attempt>
int failEachAllocation(Prepare prepare, Attempt attempt) {
  for (int k = 0;; ++k) {
    int reports = 0;
    cs_end();
    cs_init();
    cs_setErrHandler(
        CS_ERR_MEMORY, [](CSint *, void *extra) { ++*static_cast<int *>(extra); }, &reports);
    Site::release(Site::create("before", nullptr));
    auto subject = prepare();
    cs_saveContext();
    bool failed = false;
    bool result = false;
    {
      const FailingAllocation failing(k);
      result = attempt(subject);
      failed = FailingAllocation::failed();
    }
    if (!failed) {
      EXPECT_TRUE(result);
      EXPECT_EQ(reports, 0);
      return k;
    }
    EXPECT_FALSE(result) << "allocation " << k;
    EXPECT_EQ(reports, 1) << "allocation " << k;
    EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY) << "allocation " << k;
    cs_restoreContext();
    cs_initErr();
    EXPECT_TRUE(attempt(subject)) << "again after the failure of allocation " << k;
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    if (::testing::Test::HasFailure()) return k;
  }
}

// The constraints of a variable, newest first, as (site name, index).
inline std::vector<std::pair<std::string, int>> attachments(const CSint *v) {
  std::vector<std::pair<std::string, int>> result;
  for (const Entry *entry = v->constraints; entry != nullptr; entry = entry->next)
    result.emplace_back(entry->constraint->site->name(), entry->index);
  return result;
}

// Which slots of the newest constraint on a variable do something: a letter each, "012345" when all do.
inline std::string busySlots(const CSint *v) {
  std::string result;
  for (int code = 0; code < kEventCodes; ++code)
    if (v->constraints->constraint->table->handlers[code] != doNothing) result += static_cast<char>('0' + code);
  return result;
}

// The order in which attachments were made since a mark, as the variables that the trail names.
inline std::vector<const CSint *> attachOrder(int mark) {
  std::vector<const CSint *> order;
  int at = 0;
  solver::trail.forEach([&](const TrailRecord &record) {
    if (at++ >= mark && record.kind() == TrailKind::kAttached) order.push_back(record.variable());
  });
  return order;
}

inline int trailRecords(TrailKind kind) {
  int count = 0;
  solver::trail.forEach([&](const TrailRecord &record) { count += record.kind() == kind ? 1 : 0; });
  return count;
}

inline std::vector<int> range(int low, int high) {
  std::vector<int> result;
  for (int value = low; value <= high; ++value) result.push_back(value);
  return result;
}

inline std::vector<int> without(std::vector<int> from, int value) {
  std::erase(from, value);
  return from;
}

}  // namespace koru::test
