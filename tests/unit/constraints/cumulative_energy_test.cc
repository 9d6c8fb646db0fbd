// SPDX-License-Identifier: MIT
// The profile of compulsory parts: heights and energies, by hand and against the twin's definitions.
#include "constraints/global/cumulative_energy.h"

#include "support/constraints/scheduling_problem.h"
#include "support/twins/cumulative_energy.h"

namespace {

using namespace koru;
using namespace koru::test;
using koru::cumulative::Profile;
using koru::cumulative::Tasks;
using koru::cumulative::Time;

class ProfileTest : public SchedulingTest {
 protected:
  Tasks tasks() { return {starts.data(), durations.data(), uses.data(), n()}; }
  Profile built() {
    Profile profile(n());
    profile.build(tasks());
    return profile;
  }
};

// Heights 1 in [0, 2), 3 in [2, 4), 2 in [4, 5), 0 in [5, 8), 4 in [8, 9).
class StepsTest : public ProfileTest {
 protected:
  void SetUp() override {
    ProfileTest::SetUp();
    add({0, 0}, 4, 1);
    add({1, 2}, exactly(4), {2, 5});  // runs for sure in [2, 5)
    add({8, 8}, 1, 4);
    add({0, 9}, 3, 9);  // never for sure
    add({6, 6}, 0, 9);
  }
};

TEST_F(StepsTest, HeightIsTheGreatestOverTheWindow) {
  const Profile profile = built();
  EXPECT_EQ(profile.height(-5, 20), 4);
  EXPECT_EQ(profile.height(0, 2), 1);
  EXPECT_EQ(profile.height(0, 3), 3);
  EXPECT_EQ(profile.height(3, 5), 3);
  EXPECT_EQ(profile.height(4, 8), 2);
  EXPECT_EQ(profile.height(4, 9), 4);
}

TEST_F(StepsTest, NothingIsHigherThanNothing) {
  const Profile profile = built();
  EXPECT_EQ(profile.height(-5, 0), 0);
  EXPECT_EQ(profile.height(5, 8), 0);
  EXPECT_EQ(profile.height(9, 20), 0);
}

TEST_F(StepsTest, EnergyIsHeightTimesTime) {
  const Profile profile = built();
  const int expected[] = {0, 1, 2, 5, 8, 10, 10, 10, 10, 14, 14};
  for (int t = 0; t <= 10; ++t) EXPECT_EQ(profile.energyTo(t), expected[t]) << t;
  EXPECT_EQ(profile.energyTo(-3), 0);
}

TEST_F(StepsTest, PartsOutsideTheWindowMayBeLeftOut) {
  Profile profile(n());
  profile.build(tasks(), 3, 9);
  EXPECT_EQ(profile.height(3, 5), 3);
  EXPECT_EQ(profile.height(8, 9), 4);
  profile.build(tasks(), 5, 8);
  EXPECT_EQ(profile.height(5, 8), 0);
}

// The worked example of docs/cumulative.md.
TEST_F(ProfileTest, TheWorkedExampleHasTheseFigures) {
  add({0, 1}, 4, 2);
  add({2, 6}, 3, 2);
  add({5, 5}, 3, 1);
  const Profile profile = built();
  EXPECT_EQ(profile.height(1, 4), 2);
  EXPECT_EQ(profile.height(4, 5), 0);
  EXPECT_EQ(profile.height(5, 8), 1);
  EXPECT_EQ(profile.energyTo(4), 6);
  EXPECT_EQ(profile.energyTo(8), 9);
  EXPECT_EQ(profile.energyTo(9) - profile.energyTo(2), 7);
  EXPECT_EQ(profile.energyTo(5) - profile.energyTo(2), 4);
}

TEST_F(ProfileTest, NegativeUsesLowerIt) {
  add({0, 0}, 9, 2);
  add({3, 3}, 2, -5);
  const Profile profile = built();
  EXPECT_EQ(profile.height(3, 5), -3);
  EXPECT_EQ(profile.height(3, 6), 2);
  EXPECT_EQ(profile.energyTo(9), 8);
}

TEST_F(ProfileTest, TimesBeyondTheIntsCount) {
  add({INT_MAX, INT_MAX}, INT_MAX, INT_MAX);
  const Profile profile = built();
  EXPECT_EQ(profile.height(2 * std::int64_t{INT_MAX} - 1, 2 * std::int64_t{INT_MAX}), INT_MAX);
  EXPECT_EQ(profile.energyTo(2 * std::int64_t{INT_MAX}), std::int64_t{INT_MAX} * INT_MAX);
}

TEST_F(ProfileTest, AgreesWithTheDefinitions) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    scheduling::Generator g(seed);
    starts.clear();
    durations.clear();
    uses.clear();
    for (int i = g.number(1, 8); i > 0; --i) add(g.interval(0, 12, 3), g.interval(0, 6, 2), g.interval(-1, 4, 2));
    const Profile profile = built();
    const twin_cumulative::Resource twin{starts.data(), durations.data(), uses.data(), nullptr, n(), {}, {}};
    for (Time a = -1; a < 20; ++a) {
      for (Time b = a + 1; b <= 20; ++b) {
        ASSERT_EQ(profile.height(a, b), twin_cumulative::profile(twin, a, b)) << seed << ": " << a << " to " << b;
        ASSERT_EQ(profile.energyTo(b) - profile.energyTo(a), twin_cumulative::compulsoryEnergy(twin, a, b)) << seed;
      }
    }
  }
}

}  // namespace
