// SPDX-License-Identifier: MIT
// The sites of every function that posts: their names, places, and what a profiler counts for them.
#include <algorithm>
#include <cstring>
#include <optional>
#include <set>
#include <string>

#include "catalogue/posting.h"
#include "core/solver.h"
#include "support/kit/batch.h"
#include "support/kit/probe.h"
#include "support/kit/solver_test.h"
#include "support/profiler/place_text.h"
#include "support/profiler/report_reader.h"

namespace {

using namespace koru;
using namespace koru::test;

class SitesTest : public SolverTest, public ::testing::WithParamInterface<const catalogue::Row *> {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    posting.emplace(*GetParam());
  }

  bool post() { return posting->post(); }

  // Gives all variables their values before the constraint hears of the first: it has to find out by itself.
  bool violate() {
    return together([&] { return posting->violate(); });
  }

  std::optional<catalogue::Posting> posting;
};

// The sites of all constraints on the variables.
std::set<const Site *> sitesOf(const catalogue::Posting &posting) {
  std::set<const Site *> sites;
  for (const CSint *v : posting.variables())
    for (const Entry *entry = v->constraints; entry != nullptr; entry = entry->next)
      sites.insert(entry->constraint->site);
  return sites;
}

TEST_P(SitesTest, ASiteHasTheFunctionsNameAndThePlaceOfItsCall) {
  ASSERT_TRUE(post());
  const std::set<const Site *> sites = sitesOf(*posting);
  ASSERT_EQ(sites.size(), 1U);
  EXPECT_STREQ((*sites.begin())->name(), GetParam()->site);
  const std::string place = (*sites.begin())->text();
  EXPECT_EQ(place.find(fileInPlace(GetParam()->door.file) + "\t" + std::to_string(GetParam()->door.line) + "\t" +
                       kAddressStart),
            0U)
      << place;
}

TEST_P(SitesTest, UnderAHostsLocatorAProfilerCountsCallsAndFailsOfTheSite) {
  cs_setProfilerLocator(
      "mine", [](void *) { return "here"; }, nullptr);
  ASSERT_TRUE(post());
  cs_setProfilerLocator(
      "mine", [](void *) { return "elsewhere"; }, nullptr);
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  const CallLog log;
  EXPECT_FALSE(violate());

  ProfileRow expected{"here", GetParam()->site, 0, 0};
  for (std::size_t i = 0; i < log.calls.size(); ++i) {
    if (std::strcmp(log.sites[i]->text(), "here") != 0) continue;
    ++expected.calls;
    expected.fails += log.calls[i].consistent ? 0 : 1;
  }
  std::vector<ProfileRow> rows = rowsOf(profiler);
  rows.erase(std::remove_if(rows.begin(), rows.end(), [](const ProfileRow &row) { return row.text != "here"; }),
             rows.end());
  EXPECT_EQ(rows, std::vector<ProfileRow>{expected});
  EXPECT_EQ(expected.fails, 1);
}

INSTANTIATE_TEST_SUITE_P(, SitesTest, ::testing::ValuesIn(catalogue::postingRows()),
                         [](const auto &row) { return std::string(row.param->name); });

}  // namespace
