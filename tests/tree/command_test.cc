// SPDX-License-Identifier: MIT
// The command koru-tree on a record that is written here byte by byte: its texts, its page, its messages and its exit
// status; and records that are none.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/kit/temporary_path.h"
#include "tree/tree.h"

int koruTreeMain(int count, char **arguments);  // the command's main, under this name

namespace {

using koru::test::temporaryPath;
using testing::ExitedWithCode;

std::string text(const std::string &s) { return static_cast<char>(s.size()) + s; }

// a = 0 refused by cs_Neq, a = 1: b = 0 refused, b = 2 with the objective -3; then b != 2 and the end.
std::string record() {
  std::string r = "koru-tree 1\n";
  r += "\xCB\x01";                                          // begin
  r += "\xD7" + std::string(1, '\x04') + text("a<b");       // a name of variable 4
  r += "\x88";                                              // a level: 4
  r += "\xD6" + text("cs_Neq") + text("m.c\t12\t0\tmain");  // a place
  r += "\xD5\x01" + std::string(1, '\0');                   // by it: 0
  r += std::string(1, '\x40');                              // 1 accepted
  r += "\x8A";                                              // a level: 5
  r += std::string(1, '\0');                                // 0 refused
  r += "\x42\xCA\x05";                                      // 2 accepted, a solution: -3
  r += "\xD8\x07";                                          // 7 ms
  r += "\xD4\xCF\x01\xC0";                                  // the opposite: != 2 refused, and the level is left
  return r + "\xCC\x02";                                    // the end
}

class TreeCommandDeathTest : public testing::Test {
 protected:
  void SetUp() override { std::ofstream(path, std::ios::binary) << record(); }
  void TearDown() override {
    std::filesystem::remove(path);
    std::filesystem::remove(page);
  }

  static int run(std::vector<std::string> words) {
    std::vector<char *> arguments;
    words.insert(words.begin(), "koru-tree");
    for (std::string &word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return koruTreeMain(static_cast<int>(words.size()), arguments.data());
  }
  static std::string outputOf(const std::vector<std::string> &words, int status = 0) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(run(words), status);
    return testing::internal::GetCapturedStdout();
  }

  const std::string path = temporaryPath().string();
  const std::string page = temporaryPath().string();
};

TEST_F(TreeCommandDeathTest, PrintsASummary) {
  EXPECT_EQ(outputOf({path}),
            "4 choice points, 3 refusals, 1 solution, 1 run of 1 search, depth 2, 0.007 s\n"
            "\n       depth   decisions     refused   solutions\n"
            "           1           2           1           0\n"
            "           2           3           2           1\n"
            "\n     refused  by\n"
            "           3  cs_Neq  m.c:12\n"
            "\n     refused       tried  on\n"
            "           2           3  v5\n"
            "           1           2  a<b\n");
}

TEST_F(TreeCommandDeathTest, PrintsTheDecisionsThatLeadToANode) {
  EXPECT_EQ(outputOf({"--node", "4", path}),
            "const CSstep path[] = {\n    {4, {CS_METHOD_EQ, 1}},\n    {5, {CS_METHOD_EQ, 2}}};\n");
  EXPECT_EXIT(run({"--node", "9", path}), ExitedWithCode(2), "there is no such node");
}

TEST_F(TreeCommandDeathTest, ComparesTwoRecords) {
  EXPECT_EQ(outputOf({"--diff", path, path}), "the same: 6 nodes\n");
  const std::string other = page;
  std::string bytes = record();
  bytes.resize(bytes.size() - 8);
  std::ofstream(other, std::ios::binary) << bytes;
  EXPECT_EQ(outputOf({"--diff", path, other}, 1),
            "the same up to node 5; then\n  first : a<b = 1, v5 != 2  refused by cs_Neq  m.c:12\n  second: no more\n"
            "choice points 4 -> 4, refused 3 -> 2, solutions 1 -> 1\n  3 -> 2  cs_Neq  m.c:12\n");
}

TEST_F(TreeCommandDeathTest, WritesAPage) {
  EXPECT_EQ(run({"--html", page, "--nodes", "4", path}), 0);
  std::ifstream file(page);
  std::stringstream written;
  written << file.rdbuf();
  const std::string html = written.str();
  EXPECT_NE(html.find("\"nodes\":6"), std::string::npos);
  EXPECT_NE(html.find("\"4\":\"a\\u003cb\""), std::string::npos) << "no text ends the script";
  EXPECT_NE(html.find("3  cs_Neq  m.c:12"), std::string::npos) << "in words";
  EXPECT_EQ(run({"--html", page, path}), 0);
}

TEST_F(TreeCommandDeathTest, RefusesWhatItDoesNotUnderstand) {
  EXPECT_EXIT(run({"--help"}), ExitedWithCode(0), "");
  EXPECT_EXIT(run({}), ExitedWithCode(2), "one record");
  EXPECT_EXIT(run({"--diff", path}), ExitedWithCode(2), "two records");
  EXPECT_EXIT(run({"--wrong", path}), ExitedWithCode(2), "unknown option --wrong");
  EXPECT_EXIT(run({"--top"}), ExitedWithCode(2), "--top needs an argument");
  EXPECT_EXIT(run({"--top", "0", path}), ExitedWithCode(2), "0 is no such number");
  EXPECT_EXIT(run({"--top", "3x", path}), ExitedWithCode(2), "3x is no such number");
  EXPECT_EXIT(run({page}), ExitedWithCode(2), "cannot be opened");
  EXPECT_EXIT(run({"--html", "/no such folder/page.html", path}), ExitedWithCode(2), "cannot be written");
  std::ofstream(path) << "nothing";
  EXPECT_EXIT(run({path}), ExitedWithCode(2), "0: this is no record of a search");
}

// ----- what is wrong with a record

std::string faultOf(const std::string &bytes) {
  koru::tree::Tree tree;
  std::string error;
  return koru::tree::readTree("koru-tree 1\n" + bytes, tree, error) ? "" : error;
}

TEST(TreeFaults, AreNamedWithTheirPosition) {
  EXPECT_EQ(faultOf("\xCB\x01\x81\x40\xC0"), "");
  EXPECT_EQ(faultOf("\xF0"), "12: an item that is not known");
  EXPECT_EQ(faultOf("\xCD\x01"), "12: a run of no search");
  EXPECT_EQ(faultOf("\xCC\x01"), "12: an end of no search");
  EXPECT_EQ(faultOf("\x81"), "12: a level of no search");
  EXPECT_EQ(faultOf("\xC8"), "12: a solution of no search");
  EXPECT_EQ(faultOf("\x41"), "12: a decision without a level");
  EXPECT_EQ(faultOf("\xCB\x01\xC0"), "14: a level is left that is not there");
  EXPECT_EQ(faultOf("\xCB\x01\x83"), "14: no variable");
  EXPECT_EQ(faultOf("\xCB\x01\xBF\xFF\xFF\xFF\xFF\xFF\x01"), "14: no variable");
  EXPECT_EQ(faultOf("\xCB\x01\x82\x7F\xFF\xFF\xFF\xFF\x7F"), "15: no value");
  EXPECT_EQ(faultOf("\xCB\x01\x82\x7F\xFF\xFF\xFF\xFF\x1F"), "15: no value");
  EXPECT_EQ(faultOf("\xD5\x01"), "12: a place that was not named");
  EXPECT_EQ(faultOf("\xD7\xFF\xFF\xFF\xFF\x7F\x01x"), "12: no variable");
  EXPECT_EQ(faultOf("\xD8\xFF\xFF\xFF\xFF\xFF\xFF\x7F"), "12: no time");
  EXPECT_EQ(faultOf("\xCC\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"), "12: a number that does not end");
}

TEST(TreeFaults, AreNotMissingItems) {
  for (const char *cut : {"\xCB",
                          "\xD6\x06"
                          "cs",
                          "\xD8\xFF", "\xCB\x01\xBF"})
    EXPECT_EQ(faultOf(cut), "");
}

// Many depths, a large subtree without a solution, a neighbourhood, a solution that was turned down.
TEST(TreeSummary, HasTheLargestSubtreesWithoutASolution) {
  std::string bytes = std::string("\xCB\x01\xCD\x01") + std::string("\x80\x40", 2);
  for (int i = 0; i < 45; ++i) bytes += std::string("\x82\x40", 2);
  bytes += "\xC9\xCD\x01\x80\x41\xC8\xD8\x05";
  bytes.pop_back();
  koru::tree::Tree tree;
  std::string error;
  ASSERT_TRUE(koru::tree::readTree("koru-tree 1\n" + bytes, tree, error)) << error;
  std::ostringstream out;
  koru::tree::writeSummary(out, tree, 3);
  EXPECT_NE(out.str().find("the record is cut off\n"), std::string::npos);
  EXPECT_NE(out.str().find("         ...\n"), std::string::npos);
  EXPECT_NE(out.str().find("without a solution, after\n          46           1  v0 = 0\n"), std::string::npos);
  EXPECT_EQ(tree.decisionOf(0), "a neighbourhood");
}

}  // namespace
