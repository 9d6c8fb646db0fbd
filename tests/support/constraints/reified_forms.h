// SPDX-License-Identifier: MIT
// The twelve reified comparisons as a table, and what every one of them must do when it is posted.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/kit/probe.h"

namespace koru::test::reif {

using TwoVariables = CSint *(*)(CSint *, CSint *);
using WithInt = CSint *(*)(CSint *, int);

struct Form {
  const char *name;
  TwoVariables post;
  bool (*holds)(int, int);
  bool order;      // makes its site always, and listens to bounds only
  bool exchanged;  // posts on (y, x)
};

struct ConstForm {
  const char *name;
  WithInt post;
  bool (*holds)(int, int);
  bool order;
};

inline void PrintTo(const Form &form, std::ostream *out) { *out << form.name; }
inline void PrintTo(const ConstForm &form, std::ostream *out) { *out << form.name; }

inline bool equal(int x, int y) { return x == y; }
inline bool different(int x, int y) { return x != y; }
inline bool less(int x, int y) { return x < y; }
inline bool lessOrEqual(int x, int y) { return x <= y; }
inline bool greater(int x, int y) { return x > y; }
inline bool greaterOrEqual(int x, int y) { return x >= y; }

inline constexpr Form kEq{"cs_ReifEq", cs_ReifEq, equal, false, false};
inline constexpr Form kNeq{"cs_ReifNeq", cs_ReifNeq, different, false, false};
inline constexpr Form kLt{"cs_ReifLt", cs_ReifLt, less, true, false};
inline constexpr Form kLe{"cs_ReifLe", cs_ReifLe, lessOrEqual, true, false};
inline constexpr Form kGt{"cs_ReifGt", cs_ReifGt, greater, true, true};
inline constexpr Form kGe{"cs_ReifGe", cs_ReifGe, greaterOrEqual, true, true};
inline constexpr Form kForms[] = {kEq, kNeq, kLt, kLe, kGt, kGe};

inline constexpr ConstForm kEQ{"cs_ReifEQ", cs_ReifEQ, equal, false};
inline constexpr ConstForm kNEQ{"cs_ReifNEQ", cs_ReifNEQ, different, false};
inline constexpr ConstForm kLT{"cs_ReifLT", cs_ReifLT, less, true};
inline constexpr ConstForm kLE{"cs_ReifLE", cs_ReifLE, lessOrEqual, true};
inline constexpr ConstForm kGT{"cs_ReifGT", cs_ReifGT, greater, true};
inline constexpr ConstForm kGE{"cs_ReifGE", cs_ReifGE, greaterOrEqual, true};
inline constexpr ConstForm kConstForms[] = {kEQ, kNEQ, kLT, kLE, kGT, kGE};

template <class Form>
std::string formName(const ::testing::TestParamInfo<Form> &row) {
  return row.param.name;
}

// Counts how often a posting asks where in the host program it is.
class LocatorCalls {
 public:
  LocatorCalls() {
    count_ = 0;
    solver::ports.locator.text = [](void *) {
      ++count_;
      return "here";
    };
  }
  ~LocatorCalls() { solver::ports.locator.text = nullptr; }
  LocatorCalls(const LocatorCalls &) = delete;
  LocatorCalls &operator=(const LocatorCalls &) = delete;

  static int count() { return count_; }

 private:
  static inline int count_ = 0;
};

inline void expectFreeZeroOne(CSint *b) {
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->initialMin, 0);
  EXPECT_EQ(b->initialMax, 1);
  EXPECT_EQ(values(b), (std::vector{0, 1}));
  EXPECT_EQ(b->count, 2);
  EXPECT_EQ(b->bits, nullptr);
  EXPECT_EQ(cs_getName(b), nullptr);
  EXPECT_EQ(cs_getNbConstraints(b), 1);
}

// A constant that nothing is posted on, nor on the compared variables.
inline void expectFixed(CSint *b, int value, const std::vector<CSint *> &compared) {
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->initialMin, value);
  EXPECT_EQ(b->initialMax, value);
  EXPECT_EQ(values(b), std::vector{value});
  EXPECT_EQ(cs_getNbElements(b), 1);
  EXPECT_EQ(cs_getNbConstraints(b), 0);
  EXPECT_EQ(b->constraints, nullptr);
  for (CSint *v : compared) {
    EXPECT_EQ(cs_getNbConstraints(v), 0);
    EXPECT_EQ(v->constraints, nullptr);
  }
}

// A control constraint on b and a watch constraint on the compared variables, which share one site.
inline void expectPair(CSint *b, const std::vector<CSint *> &compared, const char *name, bool order) {
  const std::vector<std::pair<std::string, int>> once{{name, -1}};
  EXPECT_EQ(attachments(b), once);
  EXPECT_EQ(busySlots(b), "234");
  const Constraint *control = b->constraints->constraint;
  const Constraint *watch = compared.front()->constraints->constraint;
  EXPECT_NE(control, watch);
  EXPECT_EQ(control->site, watch->site);
  EXPECT_EQ(control->site->references, 2);
  EXPECT_STREQ(control->site->text(), "here");
  EXPECT_EQ(control->flags, kWoken);
  EXPECT_EQ(watch->flags, kWoken);
  for (CSint *v : compared) {
    EXPECT_EQ(attachments(v), once);
    EXPECT_EQ(busySlots(v), order ? "01234" : "012345");
    EXPECT_EQ(v->constraints->constraint, watch);
  }
}

// What an undecided posting makes, told of the variables in the order in which they are attached.
inline void expectUndecided(const std::function<CSint *()> &post, const std::vector<CSint *> &compared,
                            const char *name, bool order) {
  std::vector<std::vector<int>> before;
  for (CSint *v : compared) before.push_back(values(v));
  const int mark = solver::trail.count();
  const LocatorCalls locator;
  CSint *b = post();
  EXPECT_EQ(LocatorCalls::count(), 1);
  ASSERT_NO_FATAL_FAILURE(expectFreeZeroOne(b));
  std::vector<const CSint *> attached{b};
  attached.insert(attached.end(), compared.begin(), compared.end());
  EXPECT_EQ(attachOrder(mark), attached);
  expectPair(b, compared, name, order);
  std::vector<std::vector<int>> after;
  for (CSint *v : compared) after.push_back(values(v));
  EXPECT_EQ(before, after);
}

// What a decided posting makes: the order forms have asked for their place by then, the equality forms have not.
inline void expectDecided(const std::function<CSint *()> &post, const std::vector<CSint *> &compared, int value,
                          bool order) {
  const LocatorCalls locator;
  const int mark = solver::trail.count();
  CSint *b = post();
  ASSERT_NO_FATAL_FAILURE(expectFixed(b, value, compared));
  EXPECT_EQ(LocatorCalls::count(), order ? 1 : 0);
  EXPECT_EQ(solver::trail.count(), mark);
}

// Fills the last block of variables, so that the next one needs an allocation.
inline void fillVariables() {
  while (solver::variables.count() != solver::variables.blockCount() * BlockStack<CSint>::kCapacity) CSINT(0);
}

struct Operands {
  CSint *x;
  CSint *y;
};

// Every allocation of a posting fails in turn: its own, one more when the variable b needs a new block, and that of
// the trail for each of its records.
inline void expectFailuresReported(int allocations, const std::function<Operands()> &make,
                                   const std::function<CSint *(Operands)> &post) {
  const auto attempt = [&](Operands &o) { return post(o) != nullptr; };
  EXPECT_EQ(failEachAllocation(make, attempt), allocations);
  const auto full = [&] {
    const Operands o = make();
    fillVariables();
    return o;
  };
  EXPECT_EQ(failEachAllocation(full, attempt), allocations + 1);
  for (int room = 1; room <= 4; ++room) {
    const auto narrow = [&] {
      const Operands o = make();
      while ((solver::trail.count() + room) % Trail::kCapacity != 0) cs_backtrack(nullptr, 0, nullptr);
      return o;
    };
    EXPECT_GE(failEachAllocation(narrow, attempt), allocations);
  }
}

}  // namespace koru::test::reif
