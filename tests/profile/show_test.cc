// SPDX-License-Identifier: MIT
// The table, the page and the JSON text that koru-profile makes of a profile.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "profile/profile.h"
#include "support/kit/temporary_path.h"

namespace {

using namespace koru::profile;
using koru::test::temporaryPath;

Profile sample() {
  Profile profile;
  profile.version = "3.8.0";
  profile.entries = {{"cs_AllNeq", "m.c", 12, "main", 1, 1500, 300}, {"cs_Neq", "m.c", 13, "main", 20, 500, 0}};
  profile.calls = 2000;
  profile.fails = 300;
  return profile;
}

std::string tableOf(const Profile &profile, std::size_t top, bool colours) {
  std::ostringstream out;
  writeTable(out, profile, top, colours);
  return out.str();
}

std::string pageOf(const Profile &profile) {
  std::ostringstream out;
  writePage(out, profile, "a <title>");
  return out.str();
}

bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

TEST(Table, ShowsSharesAndRatesInColumns) {
  EXPECT_EQ(tableOf(sample(), 0, false),
            "calls    share                fails  fail rate  posted  posted by  place\n"
            "1 500   75.0 %  #########...    300     20.0 %       1  cs_AllNeq  m.c:12 main\n"
            "  500   25.0 %  ###.........      0      0.0 %      20  cs_Neq     m.c:13 main\n"
            "2 000 calls, 300 fails at 2 places\n");
}

TEST(Table, ShowsTheTopOnly) {
  const std::string table = tableOf(sample(), 1, false);
  EXPECT_TRUE(has(table, "cs_AllNeq"));
  EXPECT_FALSE(has(table, "cs_Neq"));
  EXPECT_TRUE(has(table, "and 1 more\n"));
}

Profile detailed() {
  Profile profile = sample();
  profile.detailed = true;
  profile.entries[0].idle = 750;
  profile.entries[0].narrowings = 1250;
  profile.entries[0].nanoseconds = 1'000'000;
  profile.entries[1].idle = 500;
  profile.entries[1].nanoseconds = 3'000'000;
  std::swap(profile.entries[0], profile.entries[1]);
  profile.idle = 1250;
  profile.narrowings = 1250;
  profile.nanoseconds = 4'000'000;
  return profile;
}

TEST(Table, HasColumnsForDetails) {
  EXPECT_EQ(tableOf(detailed(), 0, false),
            " ms    share                calls  in vain  narrowings  fails  fail rate  posted  posted by  place\n"
            "3.0   75.0 %  #########...    500  100.0 %           0      0      0.0 %      20  cs_Neq     m.c:13 main\n"
            "1.0   25.0 %  ###.........  1 500   50.0 %       1 250    300     20.0 %       1  cs_AllNeq  m.c:12 main\n"
            "4.0 ms, 2 000 calls, 1 250 in vain, 1 250 narrowings, 300 fails at 2 places\n");
}

TEST(Table, OfNothing) { EXPECT_TRUE(has(tableOf(Profile{}, 0, false), "0 calls, 0 fails at 0 places\n")); }

TEST(Json, HasEverything) {
  Profile profile = sample();
  profile.startTime = 5;
  profile.entries[1].caller = "a \"b\"\\c\td";
  std::ostringstream out;
  writeJson(out, profile);
  EXPECT_EQ(
      out.str(),
      "{\"version\": \"3.8.0\", \"startTime\": 5, \"endTime\": 0, \"calls\": 2000, \"fails\": 300, \"places\": [\n"
      "{\"calls\": 1500, \"fails\": 300, \"posted\": 1, \"function\": \"cs_AllNeq\", \"file\": \"m.c\", "
      "\"line\": 12, \"caller\": \"main\"},\n"
      "{\"calls\": 500, \"fails\": 0, \"posted\": 20, \"function\": \"cs_Neq\", \"file\": \"m.c\", "
      "\"line\": 13, \"caller\": \"a \\\"b\\\"\\\\c\\u0009d\"}\n]}\n");
}

TEST(Json, HasTheDetails) {
  std::ostringstream out;
  writeJson(out, detailed());
  EXPECT_TRUE(
      has(out.str(), "\"fails\": 300, \"idle\": 1250, \"narrowings\": 1250, \"nanoseconds\": 4000000, \"places\""));
  EXPECT_TRUE(
      has(out.str(), "\"fails\": 0, \"idle\": 500, \"narrowings\": 0, \"nanoseconds\": 3000000, \"posted\": 20"));
}

TEST(Json, OfNothing) {
  std::ostringstream out;
  writeJson(out, Profile{});
  EXPECT_TRUE(out.str().ends_with("\"fails\": 0, \"places\": [\n]}\n")) << out.str();
}

TEST(Table, SendsNoControlCharactersToTheTerminal) {
  Profile profile = sample();
  profile.entries[0].file = "m\033[2J.c";
  EXPECT_FALSE(has(tableOf(profile, 0, false), "\033"));
  EXPECT_TRUE(has(tableOf(profile, 0, false), "m?[2J.c"));
  EXPECT_TRUE(has(tableOf(sample(), 0, true), "\033[38;5;173m"));
}

TEST(Page, NeedsNoOtherFileAndEscapesItsTexts) {
  Profile profile = sample();
  profile.entries[0].caller = "operator<<\"&\"";
  const std::string page = pageOf(profile);
  EXPECT_TRUE(has(page, "<title>a &lt;title&gt;</title>"));
  EXPECT_TRUE(has(page, "operator&lt;&lt;&quot;&amp;&quot;"));
  EXPECT_FALSE(has(page, "http"));
  EXPECT_FALSE(has(page, "src="));
}

TEST(Page, ShowsTheSourceAroundTheLineWhenItCanBeRead) {
  const std::filesystem::path source = temporaryPath();
  std::ofstream(source) << "one\ntwo\nthree\nfour\nfive < 6\nsix\nseven\neight\nnine\n";
  Profile profile = sample();
  profile.entries[0].file = source.string();
  profile.entries[0].line = 5;
  const std::string page = pageOf(profile);
  std::filesystem::remove(source);
  EXPECT_TRUE(has(page, "<b>    5  five &lt; 6</b>\n"));
  EXPECT_TRUE(has(page, "<pre>    2  two\n"));
  EXPECT_TRUE(has(page, "    8  eight\n</pre>"));
  EXPECT_FALSE(has(page.substr(0, page.find("class=heat>")), "nine"));
}

// Of a report with details and of one without.
TEST(Page, ShowsTheHeatOfTheLines) {
  const std::filesystem::path source = temporaryPath();
  std::ofstream file(source);
  for (int line = 1; line <= 40; ++line) file << "line <" << line << ">\n";
  file.close();
  for (Profile profile : {sample(), detailed()}) {
    profile.entries.push_back(profile.entries[0]);
    for (Entry &e : profile.entries) e.file = source.string();
    profile.entries[0].line = profile.entries[2].line = 7;
    profile.entries[1].line = 30;
    const std::string page = pageOf(profile);
    const std::string heat = page.substr(page.find("<h2>"));
    const bool timed = profile.detailed;
    EXPECT_TRUE(has(heat, "<span></span><i>2</i>line &lt;2&gt;</div>")) << heat;
    EXPECT_TRUE(has(heat, std::string("<span style=\"--hot:85.0%\">") + (timed ? "6.000 ms" : "3000") +
                              "</span><i>7</i>line &lt;7&gt;</div>"))
        << heat;
    EXPECT_TRUE(has(heat, std::string("<span style=\"--hot:14.2%\">") + (timed ? "1.000 ms" : "500") +
                              "</span><i>30</i>line &lt;30&gt;</div>"))
        << heat;
    EXPECT_TRUE(has(heat,
                    "<i>12</i>line &lt;12&gt;</div>\n<div><span></span><i>&#8942;</i></div>\n<div><span></span>"
                    "<i>25</i>"));
    EXPECT_TRUE(has(heat, "<i>35</i>"));
    EXPECT_FALSE(has(heat, "<i>1</i>"));
    EXPECT_FALSE(has(heat, "<i>36</i>"));
  }
  std::filesystem::remove(source);
  EXPECT_FALSE(has(pageOf(sample()), "<h2>")) << "there is no such file";
  Profile device = sample();
  device.entries[0].file = std::filesystem::temp_directory_path().string();
  EXPECT_FALSE(has(pageOf(device), "<h2>"));
}

TEST(Page, HasColumnsForDetails) {
  const std::string page = pageOf(detailed());
  EXPECT_TRUE(has(page, "<th aria-sort=descending><button type=button>ms</button>"));
  EXPECT_TRUE(
      has(page, "4.0 ms in 2000 calls of constraints, 1250 in vain, 1250 narrowings, 300 fails, from 2 places."));
  EXPECT_TRUE(has(page, "<tr><td class=n data-key=3000000>3.000</td><td class=share data-key=0.75>"));
  EXPECT_TRUE(
      has(page, "<td class=n data-key=500>500</td><td class=n data-key=1>100.0 %</td><td class=n data-key=0>0<"));
}

TEST(Page, SaysWhenTheProfileWasTaken) {
  Profile profile = sample();
  EXPECT_FALSE(has(pageOf(profile), "UTC"));
  profile.startTime = 1000000000;
  profile.endTime = 1000000061;
  EXPECT_TRUE(has(pageOf(profile), "From 2001-09-09 01:46:40 UTC to 2001-09-09 01:47:41 UTC"));
}

}  // namespace
