// SPDX-License-Identifier: MIT
// Files that keep a search: written, read, cut off, damaged; and states that are of something else.
#include "parallel/checkpoint.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "parallel/party.h"
#include "parallel/transport_alone.h"
#include "support/kit/probe.h"

namespace koru::test {
namespace {

using parallel::Checkpoint;

class CheckpointTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char folder[] = "/tmp/koru_checkpoint.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    folder_ = folder;
    path = folder_ + "/state";
  }
  void TearDown() override {
    for (const std::string &each : {path, path + ".new"}) ::unlink(each.c_str());
    ::rmdir(path.c_str());
    ::rmdir(folder_.c_str());
  }
  void put(const std::string &bytes) const { std::ofstream(path, std::ios::binary) << bytes; }
  std::string bytes() const {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  bool read() {
    why.clear();
    return parallel::readCheckpoint(path, kept, why);
  }

  std::string folder_, path, why;
  Checkpoint kept;
};

TEST_F(CheckpointTest, GivesBackWhatWasWritten) {
  for (const Checkpoint &each : {Checkpoint{1, ""}, {300, std::string("\0\xff state", 8)}}) {
    ASSERT_TRUE(parallel::writeCheckpoint(path, each, why));
    ASSERT_TRUE(read()) << why;
    EXPECT_EQ(kept.search, each.search);
    EXPECT_EQ(kept.state, each.state);
  }
  EXPECT_NE(access((path + ".new").c_str(), F_OK), 0);
}

TEST_F(CheckpointTest, IsNotThereAtFirst) {
  ASSERT_TRUE(read());
  EXPECT_EQ(kept.search, 0U);
}

TEST_F(CheckpointTest, RefusesFilesThatAreCutOff) {
  ASSERT_TRUE(parallel::writeCheckpoint(path, {2, "the state of a search"}, why));
  const std::string all = bytes();
  for (std::size_t size = 0; size < all.size(); ++size) {
    put(all.substr(0, size));
    EXPECT_FALSE(read()) << size;
    EXPECT_NE(why.find("cut off"), std::string::npos);
    EXPECT_EQ(bytes().size(), size) << "it stays as it is";
  }
}

TEST_F(CheckpointTest, RefusesFilesThatAreDamaged) {
  ASSERT_TRUE(parallel::writeCheckpoint(path, {2, "the state of a search"}, why));
  const std::string all = bytes();
  for (std::size_t at = 0; at < all.size(); ++at)
    for (const int change : {1, 128, 255}) {
      std::string damaged = all;
      damaged[at] = static_cast<char>(damaged[at] ^ change);
      put(damaged);
      EXPECT_FALSE(read()) << at;
    }
  put(all + "x");
  EXPECT_FALSE(read());
}

TEST_F(CheckpointTest, SaysWhyItCannotBeReadOrWritten) {
  ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
  EXPECT_FALSE(read());
  EXPECT_EQ(why, std::strerror(EISDIR));
  EXPECT_FALSE(parallel::writeCheckpoint(path, {1, ""}, why)) << "a folder has its name";
  EXPECT_FALSE(parallel::writeCheckpoint(folder_ + "/none/state", {1, ""}, why));
  EXPECT_EQ(why, std::strerror(ENOENT));
}

// ----- states

// The least sum of n variables that differ.
class Leading : public SolverTest {
 protected:
  struct Run {
    Run(CSint **x, int n, CSint *cost)
        : ground({.mode = parallel::Mode::kMinimize, .array = x, .size = n, .select = cs_findFreeVar, .cost = cost}),
          leader(ground, transport, mail, {.choicePoints = 1}) {}

    parallel::Alone transport;
    parallel::Mail mail{transport};
    parallel::Ground ground;
    parallel::Leader leader;
  };

  std::unique_ptr<Run> run(int greatest = 4) {
    cs_end();
    cs_init();
    x_.clear();
    for (int i = 0; i < 4; ++i) x_.push_back(cs_createCSint(0, greatest));
    EXPECT_TRUE(cs_AllNeq(x_.data(), 4));
    return std::make_unique<Run>(x_.data(), 4, cs_Sub(CSINT(9), cs_Sigma(x_.data(), 4)));
  }

 private:
  std::vector<CSint *> x_;
};

// A state in which passes have ended and one is under way.
std::string stateOf(parallel::Leader &leader) {
  for (int i = 0; i < 40 && leader.told() < 3; ++i) EXPECT_TRUE(leader.step());
  EXPECT_EQ(leader.told(), 3);
  return leader.state();
}

// Solutions told, choice points and fails.
std::array<long long, 3> finish(parallel::Leader &leader) {
  while (leader.step()) continue;
  EXPECT_EQ(leader.why(), "");
  return {leader.told(), leader.counts().choicePoints, leader.counts().fails};
}

TEST_F(Leading, GoesOnFromAState) {
  const auto expected = finish(run()->leader);
  const std::string state = stateOf(run()->leader);
  auto rest = run();
  ASSERT_TRUE(rest->leader.restore(state));
  EXPECT_EQ(finish(rest->leader), expected);
}

TEST_F(Leading, RefusesAnotherModel) {
  const std::string state = stateOf(run()->leader);
  auto other = run(5);
  EXPECT_FALSE(other->leader.restore(state));
  EXPECT_EQ(other->leader.why(), "it is of another model");
}

TEST_F(Leading, RefusesStatesThatAreNone) {
  const std::string state = stateOf(run()->leader);
  for (std::size_t size = 0; size < state.size(); ++size) EXPECT_FALSE(run()->leader.restore(state.substr(0, size)));
  EXPECT_FALSE(run()->leader.restore(state + "x"));
}

}  // namespace
}  // namespace koru::test
