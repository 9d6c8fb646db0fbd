// SPDX-License-Identifier: MIT
// The built-in locator on Linux, built without libbacktrace: modules and exported functions are all it finds.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "profiler/platform.h"

namespace {

using namespace koru;

TEST(PlainLocatorTest, FindsModuleAndExportedFunction) {
  const auto *code = static_cast<const char *>(dlsym(RTLD_DEFAULT, "gnu_get_libc_version")) + 1;
  platform::Place place;
  ASSERT_TRUE(platform::find(code, place));
  EXPECT_NE(std::string(place.file).find("libc"), std::string::npos) << place.file;
  EXPECT_EQ(place.line, 0);
  EXPECT_EQ(place.address, code - 1);
  EXPECT_STREQ(place.function, "gnu_get_libc_version");
}

TEST(PlainLocatorTest, KnowsNoFunctionThatIsNotExported) {
  platform::Place place;
  ASSERT_TRUE(platform::find(__builtin_return_address(0), place));
  EXPECT_NE(place.file, nullptr);
}

TEST(PlainLocatorTest, FindsNothingOutsideAllModules) {
  platform::Place place;
  EXPECT_FALSE(platform::find(reinterpret_cast<const void *>(4096), place));
}

}  // namespace
