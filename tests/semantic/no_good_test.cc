// SPDX-License-Identifier: MIT
// Sets of no-goods step by step against the twin, with backtracking.
#include "support/twins/no_goods.h"
#include "support/twins/pair.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  Literal literal(int variables) { return {below(variables), below(kMethods), below(5) - 2}; }
  Literals literals(int variables, int most) {
    Literals result(static_cast<std::size_t>(1 + below(most)));
    for (Literal &l : result) l = literal(variables);
    return result;
  }
  std::vector<Literals> noGoods(int variables, int most, int mostLiterals) {
    std::vector<Literals> result(static_cast<std::size_t>(1 + below(most)));
    for (Literals &l : result) l = literals(variables, mostLiterals);
    return result;
  }
  brute::Domain domain() { return brute::randomDomain(random_, -2, 5); }

 private:
  std::mt19937 random_;
};

// A problem in the library and in the twin, and the states to come back to.
class Twins {
 public:
  explicit Twins(unsigned seed) : pair_(seed), generator_(seed * 7 + 1) {
    const int variables = 2 + generator_.below(4);
    std::vector<int> numbers;
    for (int i = 0; i < variables; ++i) numbers.push_back(pair_.add(generator_.domain()));
    if (generator_.below(4) == 0) numbers.push_back(0);
    array_ = pair_.variables(numbers);
    set_ = cs_createNoGoodSet(array_.data(), size(), nullptr, 0, nullptr, nullptr);
    twin_.emplace(pair_.engine, numbers);
    addSome();
  }

  // Narrowings, returns to an earlier state and additions, as they come. Returns the number of narrowings.
  int run(int steps) {
    int done = 0;
    for (int i = 0; i < steps && !::testing::Test::HasFailure(); ++i) {
      const int what = generator_.below(8);
      if (what == 0) addSome();
      if (what <= 2) save();
      if (what == 3 || !narrow()) goBack();
      expectSound(set_);
      EXPECT_EQ(watchedContents(set_), twin_->contents()) << pair_.where();
      ++done;
    }
    return done;
  }

 private:
  int size() const { return static_cast<int>(array_.size()); }

  void addSome() {
    for (const Literals &n : generator_.noGoods(size(), 4, 6)) {
      addFreely(set_, n);
      twin_->add(n);
    }
  }
  void save() {
    cs_saveContext();
    saved_.push_back(pair_.engine);
  }
  void goBack() {
    if (saved_.empty()) return;
    const int label = 1 + generator_.below(static_cast<int>(saved_.size()));
    cs_restoreContextUntil(label);
    pair_.engine = saved_[static_cast<std::size_t>(label - 1)];
    saved_.resize(static_cast<std::size_t>(label - 1));
    pair_.compareDomains();
  }
  bool narrow() {
    const int v = generator_.below(static_cast<int>(pair_.real.size()));
    return pair_.step(generator_.below(7) - 3, v, static_cast<unsigned>(generator_.below(4)));
  }

  twin::Pair pair_;
  Generator generator_;
  std::vector<CSint *> array_;
  CSnoGoodSet *set_;
  std::optional<TwinSet> twin_;
  std::vector<twin::Engine> saved_;
};

void compareWithTwin(unsigned firstSeed, unsigned count) {
  int steps = 0;
  for (unsigned seed = firstSeed; seed < firstSeed + count && !::testing::Test::HasFailure(); ++seed) {
    Twins twins(seed);
    steps += twins.run(30);
  }
  EXPECT_EQ(steps, static_cast<int>(count) * 30);
}

TEST(NoGoodSemanticTest, CallsDomainsAndOrderAreThoseOfTheTwin) { compareWithTwin(1, 300); }
TEST(NoGoodSemanticTest, CallsDomainsAndOrderAreThoseOfTheTwinHeavy) { compareWithTwin(1000, 8000); }

}  // namespace
