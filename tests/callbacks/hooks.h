// SPDX-License-Identifier: MIT
// A constraint whose handler is whatever the test says, and a bundle of everything a callback may do.
#pragma once

#include <cstdio>
#include <functional>

#include "core/post.h"
#include "support/kit/solver_test.h"
#include "support/kit/written_text.h"

namespace koru::test {

struct Hook {
  std::function<bool(CSint *)> run;
};

inline bool runHook(Hook &hook, const Event &e) {
  // A copy: the constraint may be detached, though not destroyed, by what it calls.
  const auto run = hook.run;
  return run(e.var);
}

constexpr auto kHookTable = handlers<Hook>({.newMin = on<runHook>,
                                            .newMax = on<runHook>,
                                            .minBound = on<runHook>,
                                            .maxBound = on<runHook>,
                                            .bound = on<runHook>,
                                            .removed = on<runHook>});

// Calls `run` at every event of v, until the attachment is undone.
inline bool hook(CSint *v, std::function<bool(CSint *)> run) {
  Posting posting{"hook"};
  auto c = posting.add(kHookTable, Hook{std::move(run)});
  c.attach(v);
  return static_cast<bool>(posting);
}

// Queries, creation, posting, narrowing, output, a balanced choice point and a nested search, with every answer
// checked. All it leaves behind are three variables of its own, which satisfy what it posted on them.
inline void doEverything() {
  CSint *own[3] = {cs_createNamedCSint(0, 3, "own"), cs_createCSint(0, 3), cs_createCSint(0, 3)};
  EXPECT_EQ(cs_getMax(own[0]), 3);
  const int label = cs_saveContext();
  EXPECT_EQ(cs_AllNeq(own, 3), 1);
  CSint *sum = cs_Add(own[0], own[1]);
  EXPECT_TRUE(cs_EQ(sum, 5));
  EXPECT_TRUE(cs_NEQ(own[0], 2));
  EXPECT_TRUE(cs_LE(own[1], 2));
  EXPECT_TRUE(cs_search(own, 3, cs_findFreeVar));
  EXPECT_EQ(cs_getValue(own[0]), 3);
  EXPECT_EQ(cs_getValue(own[1]), 2);
  EXPECT_EQ(cs_getValue(own[2]), 0);
  EXPECT_EQ(textOf([&own](std::FILE *file) { cs_fprintf(file, "%T|%D", own[0], own[2]); }), "own: 3|0");
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getNbElements(own[0]), 4);
  EXPECT_EQ(cs_getNbElements(sum), 7);
  int *domain = cs_getDomain(own[1]);
  EXPECT_EQ(domain[3], 3);
  cs_freeDomain(domain);
}

}  // namespace koru::test
