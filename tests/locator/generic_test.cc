// SPDX-License-Identifier: MIT
// The built-in locator of platforms that cannot look at a running program.
#include <gtest/gtest.h>

#include "profiler/platform.h"

namespace {

using namespace koru;

TEST(GenericLocatorTest, KnowsNoPlace) {
  platform::Place place;
  EXPECT_FALSE(platform::find(__builtin_return_address(0), place));
  EXPECT_EQ(platform::unloads(), 0U);
  EXPECT_STREQ(platform::kReportHead, "platform: generic\n");
}

TEST(GenericLocatorTest, TakesEveryAddressForTheHosts) {
  EXPECT_EQ(platform::firstOutside(__builtin_return_address(0)), __builtin_return_address(0));
}

}  // namespace
