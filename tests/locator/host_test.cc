// SPDX-License-Identifier: MIT
// The built-in locator from outside: a program that uses the shared library, built at a fixed address, position-
// independent, and stripped, and modules that it loads and unloads.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "locator/loaded_module.h"
#include "support/profiler/place_text.h"
#include "support/profiler/report_reader.h"

namespace {

using koru::test::ProfileRow;

// What this build leaves to be found of the program's own functions.
enum class Finds { kModules, kSymbols, kLines };
constexpr Finds kFinds = Finds::KORU_TEST_FINDS;

struct Fields {
  std::string file, line, address, function;
};

Fields fieldsOf(const std::string &text) {
  std::vector<std::string> fields(1);
  for (const char c : text) {
    if (c == '\t')
      fields.emplace_back();
    else
      fields.back() += c;
  }
  fields.resize(4);
  return {fields[0], fields[1], fields[2], fields[3]};
}

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    cs_init();
    x = cs_createCSint(0, 9);
    y = cs_createCSint(0, 9);
    profiler = cs_createProfiler(0);
    cs_enableProfiler(profiler);
  }
  void TearDown() override { cs_end(); }

  // The place of the one site of that name, once every constraint on x has run.
  Fields placeOf(const std::string &name) {
    EXPECT_TRUE(cs_NEQ(x, removed++));
    return placeInReport(name);
  }
  Fields placeInReport(const std::string &name) const {
    std::vector<std::string> texts;
    for (const ProfileRow &row : koru::test::rowsOf(profiler))
      if (row.name == name) texts.push_back(row.text);
    EXPECT_EQ(texts.size(), 1U) << name;
    return fieldsOf(texts.empty() ? "" : texts[0]);
  }

  // Without its namespace and its parameters, which some compilers tell of each function.
  static std::string unqualified(const std::string &function) {
    const bool hasParameters = !function.empty() && function.back() == ')';
    const std::string name = function.substr(0, hasParameters ? function.rfind('(') : std::string::npos);
    return name.substr(name.rfind(':') + 1);
  }

  // `symbol` is how the linker knows the function; debug information may know it as one of its own that was inlined.
  static void expectHere(const Fields &place, int line, const char *function, const char *symbol) {
    EXPECT_EQ(place.address.substr(0, 2), koru::test::kAddressStart);
    if (kFinds == Finds::kLines) {
      EXPECT_EQ(place.file, koru::test::fileInPlace(__FILE__));
      EXPECT_EQ(place.line, std::to_string(line));
      EXPECT_EQ(unqualified(place.function), function);
      return;
    }
    EXPECT_NE(place.file.find("test_locator_"), std::string::npos) << "the module: " << place.file;
    EXPECT_EQ(place.line, "0");
    if (kFinds == Finds::kSymbols)
      EXPECT_NE(place.function.find(symbol), std::string::npos) << place.function;
    else
      EXPECT_EQ(place.function, "(unknown)");
  }

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSprofiler *profiler = nullptr;
  int removed = 1;
};

TEST_F(HostTest, AReportNamesFileLineAddressAndFunction) {
  const int line = __LINE__ + 1;
  ASSERT_TRUE(cs_Neq(x, y));
  expectHere(placeOf("cs_Neq"), line, "TestBody", "AReportNamesFileLineAddressAndFunction_Test::TestBody()");
}

TEST_F(HostTest, TheHeadNamesThePlatform) {
  const std::string lines = '\n' + std::string(koru::test::kPlatformLines) + "format: windows_pdb\n__DATA__\n";
  const std::string report = koru::test::reportOf(profiler);
  EXPECT_NE(report.find(lines), std::string::npos) << report;
}

TEST_F(HostTest, TwoCallsFromOneFunctionAreTwoPlaces) {
  ASSERT_TRUE(cs_Neq(x, y));
  ASSERT_TRUE(cs_Neq(x, cs_createCSint(0, 9)));
  ASSERT_TRUE(cs_NEQ(x, 4));
  const std::vector<ProfileRow> rows = koru::test::rowsOf(profiler);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_NE(rows[0].text, rows[1].text);
}

// What dbghelp says of code that was inlined is the function around it, and a line of that.
#ifndef _WIN32
[[gnu::always_inline]] inline bool postInline(CSint *a, CSint *b) { return cs_Lt(a, b); }
constexpr int kInlineLine = __LINE__ - 1;

TEST_F(HostTest, OfFunctionsThatAreInlinedTheInnermostIsNamed) {
  ASSERT_TRUE(postInline(x, y));
  ASSERT_TRUE(cs_GE(x, 2));
  expectHere(placeInReport("cs_Lt"), kInlineLine, "postInline",
             "OfFunctionsThatAreInlinedTheInnermostIsNamed_Test::TestBody()");
}
#endif

// ----- postings by the library itself

int callLine = 0;

bool narrowByArray(int, int, CSint **, int, void *extra) {
  const int values[] = {2, 3, 5};
  const bool consistent = cs_InArray(static_cast<CSint *>(extra), values, 3) != 0;
  callLine = __LINE__ - 1;
  return consistent && callLine > 0;
}

TEST_F(HostTest, WhatTheLibraryPostsForTheHostIsOnTheLineOfTheHostsCall) {
  ASSERT_TRUE(cs_eventKnown(&x, 1, narrowByArray, y));
  ASSERT_TRUE(cs_EQ(x, 5));
  expectHere(placeInReport("cs_LE"), callLine, "narrowByArray",
             "(anonymous namespace)::narrowByArray(int, int, CSint**, int, void*)");
}

bool searchOther(int, int, CSint **, int, void *extra) {
  auto *other = static_cast<CSint *>(extra);
  cs_saveContext();
  const bool found = cs_search(&other, 1, cs_findFreeVar);
  callLine = __LINE__ - 1;
  cs_restoreContext();
  return found && callLine > 0;
}

TEST_F(HostTest, DecisionsOfASearchAreOnTheLineThatStartedIt) {
  ASSERT_TRUE(cs_eventKnown(&x, 1, searchOther, y));
  ASSERT_TRUE(cs_EQ(x, 5));
  expectHere(placeInReport("cs_EQ"), callLine, "searchOther",
             "(anonymous namespace)::searchOther(int, int, CSint**, int, void*)");
}

// Compilers put several levels into one frame.
bool searchDeep(int, int, CSint **, int, void *) {
  CSint *many[1000];
  for (CSint *&v : many) v = cs_createCSint(0, 1);
  cs_saveContext();
  const bool found = cs_search(many, 1000, cs_findFreeVar);
  cs_restoreContext();
  return found;
}

TEST_F(HostTest, TooFarBelowTheHostsCallAPlaceIsUnknown) {
  ASSERT_TRUE(cs_eventKnown(&x, 1, searchDeep, nullptr));
  ASSERT_TRUE(cs_EQ(x, 5));
  int known = 0;
  int unknown = 0;
  for (const ProfileRow &row : koru::test::rowsOf(profiler)) {
    if (row.name != "cs_EQ") continue;
    ++(row.text == "(unknown)\t0\t0\t(unknown)" ? unknown : known);
  }
  EXPECT_EQ(known, 1) << "one place for all decisions near the call";
  EXPECT_EQ(unknown, 1) << "and one for the others";
}

// ----- modules that come and go

class Plugin {
 public:
  explicit Plugin(const char *path) : handle_(koru::test::openModule(path)) { EXPECT_NE(handle_, nullptr) << path; }
  ~Plugin() { unload(); }
  Plugin(const Plugin &) = delete;
  Plugin &operator=(const Plugin &) = delete;

  bool post(CSint *a, CSint *b) const {
    return reinterpret_cast<bool (*)(CSint *, CSint *)>(at("postFromPlugin"))(a, b);
  }
  int line() const { return reinterpret_cast<int (*)()>(at("lineOfPlugin"))(); }
  void unload() {
    if (handle_ != nullptr) koru::test::closeModule(handle_);
    handle_ = nullptr;
  }

 private:
  void *at(const char *name) const { return koru::test::symbolOf(handle_, name); }
  void *handle_;
};

void expectPlugin(const Fields &place, int line) {
  EXPECT_NE(place.file.find("plugin.c"), std::string::npos) << place.file;
  EXPECT_EQ(place.line, std::to_string(line));
  EXPECT_EQ(place.function, "postFromPlugin");
}

TEST_F(HostTest, AModuleLoadedAfterTheFirstLookIsFound) {
  ASSERT_TRUE(cs_Lt(x, cs_createCSint(0, 20)));
  placeOf("cs_Lt");
  const Plugin plugin(KORU_TEST_PLUGIN_1);
  ASSERT_TRUE(plugin.post(x, y));
  expectPlugin(placeOf("cs_Neq"), plugin.line());
}

TEST_F(HostTest, AModuleInTheSpaceOfAnotherIsToldFromIt) {
  Plugin first(KORU_TEST_PLUGIN_1);
  const int firstLine = first.line();
  ASSERT_TRUE(first.post(x, y));
  expectPlugin(placeOf("cs_Neq"), firstLine);
  first.unload();
  cs_end();
  SetUp();
  const Plugin second(KORU_TEST_PLUGIN_2);
  ASSERT_NE(second.line(), firstLine);
  ASSERT_TRUE(second.post(x, y));
  expectPlugin(placeOf("cs_Neq"), second.line());
}

TEST_F(HostTest, APlaceInAModuleThatIsGoneIsUnknown) {
  Plugin plugin(KORU_TEST_PLUGIN_1);
  ASSERT_TRUE(plugin.post(x, y));
  plugin.unload();
  EXPECT_EQ(placeOf("cs_Neq").file, "(unknown)");
}

}  // namespace
