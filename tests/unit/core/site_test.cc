// SPDX-License-Identifier: MIT
#include "core/site.h"

#include <string>

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

// The hash, spelled out byte by byte.
std::uint32_t hashOfText(const std::string &text) {
  std::uint32_t hash = 12345678;
  for (const char c : text) {
    const int byte = static_cast<signed char>(c);
    hash = (hash * 32) ^ static_cast<std::uint32_t>(byte);
  }
  return hash;
}

class SiteTest : public SolverTest {
 protected:
  Site *parent = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    parent = Site::create("parent", "here");
    parent->references = 1;
  }
  void TearDown() override {
    cs_end();
    EXPECT_EQ(parent->references, 1) << "the table has dropped its references";
    Site::release(parent);
  }
};

TEST_F(SiteTest, ASiteKeepsTheNameAndCopiesTheText) {
  static constexpr char kName[] = "cs_Add";
  char text[] = "main.c:12";
  Site *site = Site::create(kName, text);
  text[0] = 'X';
  EXPECT_EQ(site->name(), kName);
  EXPECT_STREQ(site->text(), "main.c:12");
  EXPECT_EQ(site->references, 0);
  Site::release(site);
}

TEST_F(SiteTest, TextsOfEveryLengthAreKeptWhole) {
  for (std::size_t length = 0; length < 40; ++length) {
    const std::string text(length, 'a');
    Site *site = Site::create("n", text.c_str());
    EXPECT_EQ(site->text(), text);
    Site::release(site);
  }
}

TEST_F(SiteTest, ASiteWithoutTextTakesTwoIntsAndLooksNothingUp) {
  const AllocationRule counted(allowAll());
  Site::release(Site::create("cs_Add", nullptr));
  EXPECT_EQ(AllocationRule::sizes(), (std::vector<std::size_t>{2 * sizeof(int)}));
}

TEST_F(SiteTest, PostingsAtOnePlaceHaveSitesOfTheirOwnAndOnePoster) {
  const Poster poster("cs_Add");
  const int before = solver::posters.count();
  Site *first = Site::create(poster, nullptr);
  Site *second = Site::create(poster, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(solver::posters.count(), before + 1);
  for (Site *site : {first, second}) {
    EXPECT_EQ(site->name(), poster.name);
    EXPECT_EQ(site->address(), poster.caller);
    Site::release(site);
  }
}

TEST_F(SiteTest, WhereThereIsATextTheAddressIsForgotten) {
  const Poster poster("cs_Add");
  Site *located = Site::create(poster, "here");
  Site *there = Site::create({poster.name, &poster}, "there");
  Site *nowhere = Site::create({poster.name, nullptr}, nullptr);
  const int posters = solver::posters.count();
  Site *plain = Site::create(poster, nullptr);
  EXPECT_EQ(solver::posters.count(), posters + 1) << "the first three are one";
  EXPECT_EQ(located->address(), nullptr);
  EXPECT_EQ(there->address(), nullptr);
  EXPECT_EQ(nowhere->address(), nullptr);
  EXPECT_EQ(plain->address(), poster.caller);
  EXPECT_STREQ(located->text(), "here");
  EXPECT_STREQ(there->text(), "there");
  EXPECT_STREQ(nowhere->text(), kUnknownPlace);
  for (Site *site : {located, there, nowhere, plain}) {
    EXPECT_EQ(site->name(), poster.name);
    Site::release(site);
  }
}

TEST_F(SiteTest, WithoutTextItIsThatOfTheAddress) {
  Site *site = Site::create({"cs_Add", __builtin_return_address(0)}, nullptr);
  EXPECT_STREQ(site->text(), placeOf(__builtin_return_address(0)));
  Site::release(site);
}

TEST_F(SiteTest, AnUnknownPlaceHasFourFields) {
  Site *site = Site::create({"cs_Add", nullptr}, nullptr);
  EXPECT_STREQ(site->text(), "(unknown)\t0\t0\t(unknown)");
  Site::release(site);
}

TEST_F(SiteTest, APosterTakesTheAddressThatItsFunctionReturnsTo) {
  const Poster poster("cs_Add");
  EXPECT_EQ(poster.caller, __builtin_return_address(0));
}

TEST_F(SiteTest, PlacesAreComparedByTheirText) {
  const void *nowhere = reinterpret_cast<const void *>(16);
  Site *found = solver::sites.find(parent, {"n", nullptr}, nullptr);
  EXPECT_EQ(solver::sites.find(parent, {"n", nullptr}, nullptr), found);
  EXPECT_EQ(solver::sites.find(parent, {"n", nowhere}, nullptr), found);
  EXPECT_EQ(solver::sites.find(parent, "n", kUnknownPlace), found);
  EXPECT_NE(solver::sites.find(parent, {"n", __builtin_return_address(0)}, nullptr), found);
  EXPECT_NE(solver::sites.find(parent, "n", ""), found);
}

TEST_F(SiteTest, ReleasingDropsOneReferenceAtATime) {
  Site *site = Site::create("n", "t");
  site->references = 3;
  Site::release(site);
  EXPECT_EQ(site->references, 2);
  Site::release(site);
  EXPECT_EQ(site->references, 1);
  Site::release(site);
  Site::release(nullptr);
}

TEST_F(SiteTest, ARefusedSiteIsNullAndReportedOnce) {
  const AllocationRule none(refuseAll());
  EXPECT_EQ(Site::create("n", "t"), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(Site::create("n", nullptr), nullptr);
  EXPECT_EQ(memoryReports, 2);
}

// The table of posters has its first block from a solver's first site.
TEST_F(SiteTest, WithoutMemoryForItsPosterASiteIsNullAndReportedOnce) {
  for (const char *text : {static_cast<const char *>(nullptr), "t"}) {
    Site::release(parent);
    cs_end();
    SolverTest::SetUp();
    {
      const AllocationRule rule(refuseOnly(0));
      EXPECT_EQ(Site::create("n", text), nullptr);
      EXPECT_EQ(AllocationRule::count(), 1) << "it stops at once";
    }
    EXPECT_EQ(memoryReports, 1);
    EXPECT_EQ(solver::posters.count(), 0);
    memoryReports = 0;
    parent = Site::create("n", text);
    ASSERT_NE(parent, nullptr);
    parent->references = 1;
  }
}

TEST_F(SiteTest, TheHashCombinesParentTextAndName) {
  for (const char *text : {"", "x", "a longer text with more than seven letters", "\xff\x80\x7f"}) {
    for (const char *name : {"cs_Eq", "\xe9"}) {
      const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(parent));
      EXPECT_EQ(siteHash(parent, name, text), address ^ hashOfText(text) ^ hashOfText(name));
    }
  }
  EXPECT_EQ(siteHash(nullptr, "", ""), 0U);
}

TEST_F(SiteTest, AMissMakesASiteThatTheTableHoldsAndCountsTheParent) {
  Site *site = solver::sites.find(parent, "cs_EQ", "there");
  ASSERT_NE(site, nullptr);
  EXPECT_STREQ(site->name(), "cs_EQ");
  EXPECT_STREQ(site->text(), "there");
  EXPECT_EQ(site->references, 1);
  EXPECT_EQ(parent->references, 2);
}

TEST_F(SiteTest, AHitReturnsTheStoredSiteAndCountsNothing) {
  Site *site = solver::sites.find(parent, "cs_EQ", "there");
  const AllocationRule counted(allowAll());
  // Texts are compared, not pointers.
  EXPECT_EQ(solver::sites.find(parent, std::string("cs_EQ").c_str(), std::string("there").c_str()), site);
  EXPECT_EQ(AllocationRule::count(), 0);
  EXPECT_EQ(site->references, 1);
  EXPECT_EQ(parent->references, 2);
}

TEST_F(SiteTest, EveryPartOfTheKeyTellsSitesApart) {
  Site *other = Site::create("parent", "here");
  other->references = 1;
  Site *site = solver::sites.find(parent, "cs_EQ", "there");
  EXPECT_NE(solver::sites.find(parent, "cs_NEQ", "there"), site);
  EXPECT_NE(solver::sites.find(parent, "cs_EQ", "elsewhere"), site);
  EXPECT_NE(solver::sites.find(parent, "cs_EQ", ""), site);
  EXPECT_NE(solver::sites.find(other, "cs_EQ", "there"), site);
  EXPECT_EQ(parent->references, 5);
  EXPECT_EQ(other->references, 2);
  Site::release(other);
}

TEST_F(SiteTest, KeysThatShareABucketAreToldApart) {
  std::vector<Site *> sites;
  std::vector<std::string> texts;
  for (int i = 0; i < 500; ++i) texts.push_back("place " + std::to_string(i));
  for (const std::string &text : texts) sites.push_back(solver::sites.find(parent, "cs_EQ", text.c_str()));
  EXPECT_EQ(parent->references, 501);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(sites[i]->text(), texts[i]);
    EXPECT_EQ(solver::sites.find(parent, "cs_EQ", texts[i].c_str()), sites[i]);
  }
}

TEST_F(SiteTest, WithoutAParentThereIsNoSite) {
  EXPECT_EQ(solver::sites.find(nullptr, "cs_EQ", "there"), nullptr);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(SiteTest, ATableThatCouldNotBeMadeAnswersNull) {
  SiteTable table;
  EXPECT_EQ(table.find(parent, "cs_EQ", "there"), nullptr);
  const AllocationRule none(refuseAll());
  EXPECT_FALSE(table.create());
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(table.find(parent, "cs_EQ", "there"), nullptr);
  EXPECT_EQ(memoryReports, 1);
  table.destroy();
}

TEST_F(SiteTest, AMissThatMemoryRefusesIsNullLeavesNothingAndIsReportedOnce) {
  for (const int refused : {0, 1}) {
    memoryReports = 0;
    const AllocationRule rule(refuseOnly(refused));
    EXPECT_EQ(solver::sites.find(parent, "cs_EQ", "there"), nullptr);
    EXPECT_EQ(memoryReports, 1);
    EXPECT_EQ(parent->references, 1);
  }
  EXPECT_NE(solver::sites.find(parent, "cs_EQ", "there"), nullptr);
}

}  // namespace
