// SPDX-License-Identifier: MIT
// Texts of places, found by address and kept.
#include <cstdio>
#include <string>
#include <vector>

#include "core/ports.h"
#include "core/site.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"
#include "support/profiler/place_text.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

using PlaceTest = SolverTest;

__attribute__((noinline)) const void *callerOfThis() { return __builtin_return_address(0); }

// Its name has no parameters, which some compilers tell of each C++ function. The line is volatile so that the call is
// not made the last step, a jump.
extern "C" __attribute__((noinline)) const void *placeInThis(volatile int *line) {
  const void *here = callerOfThis();
  *line = __LINE__ - 1;
  return here;
}

TEST_F(PlaceTest, HasFileLineAddressAndFunctionOfTheCallItself) {
  volatile int line = 0;
  const void *here = placeInThis(&line);
  char place[400];
  std::snprintf(place, sizeof place, "%s\t%d\t%p\tplaceInThis", fileInPlace(__FILE__).c_str(), line,
                static_cast<const void *>(static_cast<const char *>(here) - 1));
  EXPECT_STREQ(placeOf(here), place);
}

TEST_F(PlaceTest, IsUnknownWithoutAnAddress) { EXPECT_STREQ(placeOf(nullptr), kUnknownPlace); }

TEST_F(PlaceTest, IsUnknownOutsideAllModules) {
  const char onTheStack = 0;
  EXPECT_STREQ(placeOf(&onTheStack), kUnknownPlace);
  EXPECT_STREQ(placeOf(reinterpret_cast<const void *>(1)), kUnknownPlace);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(PlaceTest, IsLookedUpOnce) {
  const void *here = callerOfThis();
  const char *text = placeOf(here);
  const AllocationRule counted(allowAll());
  EXPECT_EQ(placeOf(here), text);
  EXPECT_EQ(AllocationRule::count(), 0);
}

TEST_F(PlaceTest, ManyAreKeptApart) {
  const void *here = callerOfThis();
  const auto *module = static_cast<const char *>(here);
  std::vector<std::string> texts;
  for (int i = 0; i < 2000; ++i) texts.emplace_back(placeOf(module + i));
  for (int i = 0; i < 2000; ++i) {
    char address[40];
    std::snprintf(address, sizeof address, "\t%p\t", static_cast<const void *>(module + i - 1));
    EXPECT_EQ(placeOf(module + i), texts[static_cast<std::size_t>(i)]);
    EXPECT_NE(texts[static_cast<std::size_t>(i)].find(address), std::string::npos)
        << texts[static_cast<std::size_t>(i)];
  }
}

TEST_F(PlaceTest, IsUnknownWhileMemoryIsExhausted) {
  const void *here = callerOfThis();
  {
    const FailingAllocator failing(0, Failing::kOnce);
    EXPECT_STREQ(placeOf(here), kUnknownPlace);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_STRNE(placeOf(here), kUnknownPlace);
}

TEST_F(PlaceTest, AllAreForgottenAtTheEnd) {
  const void *here = callerOfThis();
  placeOf(here);
  cs_end();
  cs_init();
  const AllocationRule counted(allowAll());
  placeOf(here);
  EXPECT_EQ(AllocationRule::count(), 1);
}

}  // namespace
