// SPDX-License-Identifier: MIT
// Explanations of random models, compared with enumeration: what is named has no solution, and has one without any one
// posting; what would have to go leaves one, and none when any one of it stays.
#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "koru_extras.h"
#include "support/kit/random.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

constexpr int kVariables = 4;
constexpr int kValues = 4;
using Assignment = std::array<int, kVariables>;

// A posting: how it is made, and what it means.
struct Statement {
  std::string place;
  std::function<bool(CSint **)> post;
  std::function<bool(const Assignment &)> holds;
};

struct RandomModel {
  std::vector<Statement> statements;
  bool inOnePhase = false;  // between cs_beginPosting and cs_endPosting
  std::string place;        // of the posting under way
  int runs = 0;

  static const char *locate(void *self) { return static_cast<RandomModel *>(self)->place.c_str(); }

  bool postAll(CSint **x) {
    for (const Statement &s : statements) {
      place = s.place;
      if (!s.post(x)) return false;
    }
    return true;
  }

  static int run(void *self) {
    auto &model = *static_cast<RandomModel *>(self);
    ++model.runs;
    cs_setProfilerLocator("text", locate, self);
    std::array<CSint *, kVariables> x{};
    for (CSint *&v : x) v = cs_createCSint(0, kValues - 1);
    if (model.inOnePhase) cs_beginPosting();
    const bool posted = model.postAll(x.data()) && cs_endPosting();
    return posted && cs_search(x.data(), kVariables, cs_findFreeVarNbElements) ? 1 : 0;
  }

  bool hasSolution(const std::vector<bool> &on) const {
    for (int code = 0; code < 256; ++code) {
      const Assignment a{code & 3, code >> 2 & 3, code >> 4 & 3, code >> 6 & 3};
      bool all = true;
      for (std::size_t i = 0; all && i < statements.size(); ++i) all = !on[i] || statements[i].holds(a);
      if (all) return true;
    }
    return false;
  }
};

Statement relation(int kind, int i, int j, int v) {
  const auto x = static_cast<std::size_t>(i);
  const auto y = static_cast<std::size_t>(j);
  switch (kind) {
    case 0:
      return {"", [=](CSint **a) { return cs_EQ(a[i], v); }, [=](const Assignment &a) { return a[x] == v; }};
    case 1:
      return {"", [=](CSint **a) { return cs_NEQ(a[i], v); }, [=](const Assignment &a) { return a[x] != v; }};
    case 2:
      return {"", [=](CSint **a) { return cs_GE(a[i], v); }, [=](const Assignment &a) { return a[x] >= v; }};
    case 3:
      return {"", [=](CSint **a) { return cs_Lt(a[i], a[j]); }, [=](const Assignment &a) { return a[x] < a[y]; }};
    case 4:
      return {"", [=](CSint **a) { return cs_Neq(a[i], a[j]); }, [=](const Assignment &a) { return a[x] != a[y]; }};
    case 5:
      return {"", [=](CSint **a) { return cs_EQ(cs_Add(a[i], a[j]), v); },
              [=](const Assignment &a) { return a[x] + a[y] == v; }};
    case 6:
      return {"", [=](CSint **a) { return cs_IfEq(a[i], a[j], v, 0); },
              [=](const Assignment &a) { return (a[x] == v) == (a[y] == 0); }};
    default:
      return {"", [=](CSint **a) { return cs_NotInInterval(a[i], v, v + 1) != 0; },
              [=](const Assignment &a) { return a[x] < v || a[x] > v + 1; }};
  }
}

bool allDifferent(const Assignment &a) {
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (a[i] == a[j]) return false;
  return true;
}

// Over all variables; those of koru_extras.h run when the queue is empty.
Statement global(int kind, int v) {
  static constexpr long long kOnes[] = {1, 1, 1, 1};
  switch (kind) {
    case 0:
      return {"", [](CSint **a) { return cs_AllNeq(a, kVariables) != 0; }, allDifferent};
    case 1:
      return {"", [](CSint **a) { return cs_AllNeqDomain(a, kVariables); }, allDifferent};
    case 2:
      return {"", [=](CSint **a) { return cs_Linear(a, kOnes, kVariables, CS_METHOD_LE, v); },
              [=](const Assignment &a) { return a[0] + a[1] + a[2] + a[3] <= v; }};
    default:
      return {"", [](CSint **a) { return cs_Increasing(a, kVariables); },
              [](const Assignment &a) { return a[0] <= a[1] && a[1] <= a[2] && a[2] <= a[3]; }};
  }
}

RandomModel randomModel(Random &random) {
  RandomModel model;
  const int n = random.between(1, 11);
  for (int k = 0; k < n; ++k) {
    const int i = random.between(0, kVariables - 1);
    const int j = (i + random.between(1, kVariables - 1)) % kVariables;
    const int v = random.between(0, kValues - 1);
    Statement s = random.between(0, 4) == 0 ? global(random.between(0, 3), v) : relation(random.between(0, 7), i, j, v);
    s.place = "model.c\t" + std::to_string(random.between(1, 5)) + "\t0\trota";
    model.statements.push_back(std::move(s));
  }
  model.inOnePhase = random.between(0, 3) == 0;
  return model;
}

// The positions are those of the statements where all are recorded, since each makes one call that restricts.
std::vector<bool> setOf(const CSexplanation &e, std::size_t n) {
  std::vector<bool> in(n, false);
  for (int i = 0; i < e.size; ++i) in[static_cast<std::size_t>(e.reasons[i].position - 1)] = true;
  return in;
}

std::vector<bool> inverse(std::vector<bool> set) {
  set.flip();
  return set;
}

void expectMinimal(const RandomModel &model, const CSexplanation &e) {
  const auto made = [&](std::vector<bool> set) { return model.hasSolution(e.nearest ? inverse(std::move(set)) : set); };
  const std::vector<bool> set = setOf(e, model.statements.size());
  EXPECT_EQ(made(set), e.nearest);
  for (std::size_t i = 0; i < set.size(); ++i) {
    if (!set[i]) continue;
    std::vector<bool> smaller = set;
    smaller[i] = false;
    EXPECT_NE(made(smaller), e.nearest) << "without posting " << i;
  }
}

void expectNamed(const RandomModel &model, const CSexplanation &e) {
  std::vector<std::string> places;
  for (int i = 0; i < e.size; ++i) {
    const CSreason &reason = e.reasons[i];
    const std::string line = std::to_string(reason.line);
    const auto position = static_cast<std::size_t>(reason.position - 1);
    EXPECT_EQ(model.statements[position].place, std::string(reason.file) + "\t" + line + "\t0\t" + reason.caller);
    EXPECT_TRUE(reason.number >= 1 && reason.number <= reason.numberOf);
    EXPECT_TRUE(i == 0 || reason.position > e.reasons[i - 1].position);
    places.push_back(line + reason.function);
  }
  std::ranges::sort(places);
  const auto distinct = std::unique(places.begin(), places.end()) - places.begin();
  EXPECT_EQ(e.places, distinct);
}

// How many had something to explain.
int explainModels(unsigned long long seed, int models, bool nearest) {
  Random random(seed);
  int explained = 0;
  for (int k = 0; k < models; ++k) {
    RandomModel model = randomModel(random);
    CSexplainOptions options = {};
    options.size = sizeof options;
    options.nearest = nearest;
    const CSexplanation *e = cs_explainFailure(RandomModel::run, &model, &options);
    if (e == nullptr) ADD_FAILURE() << "no explanation";
    if (e == nullptr) return 0;
    const bool feasible = model.hasSolution(std::vector<bool>(model.statements.size(), true));
    EXPECT_EQ(e->status, feasible ? CS_EXPLAINED_SOLUTION : CS_EXPLAINED_MINIMAL) << "model " << k;
    EXPECT_EQ(e->checks, model.runs);
    if (!feasible) {
      ++explained;
      expectMinimal(model, *e);
      expectNamed(model, *e);
    }
    cs_freeExplanation(e);
    if (::testing::Test::HasFailure()) return explained;
  }
  return explained;
}

TEST(RandomModels, HaveNoSolutionForTheReasonsGivenAndOneWithoutAnyOfThem) {
  EXPECT_GT(explainModels(1, 400, false), 150);
}

TEST(RandomModels, HaveASolutionWithoutWhatHasToGoAndNoneWhenAnyOfItStays) {
  EXPECT_GT(explainModels(2, 400, true), 150);
}

// A limit makes the set larger, never wrong.
TEST(RandomModels, HaveNoSolutionForWhatIsKnownAtALimit) {
  Random random(3);
  int partly = 0;
  for (int k = 0; k < 60; ++k) {
    RandomModel model = randomModel(random);
    for (int most = 1; most < 20; ++most) {
      CSexplainOptions options = {};
      options.size = sizeof options;
      options.maxChecks = most;
      const CSexplanation *e = cs_explainFailure(RandomModel::run, &model, &options);
      ASSERT_NE(e, nullptr);
      EXPECT_LE(e->checks, most);
      if (e->size > 0) {
        EXPECT_FALSE(model.hasSolution(setOf(*e, model.statements.size())));
      }
      if (e->status == CS_EXPLAINED_PARTLY) ++partly;
      cs_freeExplanation(e);
    }
  }
  EXPECT_GT(partly, 100);
}

}  // namespace
}  // namespace koru::test
