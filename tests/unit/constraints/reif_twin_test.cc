// SPDX-License-Identifier: MIT
// The reified comparisons and conditional equality beside a second implementation, on twin sets of variables: after
// every step of a random program both sides have the same domains, the same result and the same handler calls.
#include <memory>
#include <random>
#include <sstream>

#include "support/constraints/reified_forms.h"
#include "support/kit/instrumented.h"
#include "support/kit/probe.h"
#include "support/kit/refuser.h"
#include "support/kit/small_domains.h"
#include "unit/constraints/reif_twin.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr reif::TwoVariables kTwins[] = {reif_twin::eq, reif_twin::neq, reif_twin::lt,
                                         reif_twin::le, reif_twin::gt,  reif_twin::ge};
constexpr reif::WithInt kConstTwins[] = {reif_twin::EQ, reif_twin::NEQ, reif_twin::LT,
                                         reif_twin::LE, reif_twin::GT,  reif_twin::GE};

constexpr bool (*kRelations[])(CSint *, int) = {cs_EQ, cs_NEQ, cs_LE, cs_GE, cs_LT, cs_GT};
constexpr bool (*kNarrowings[])(CSint *, int) = {
    [](CSint *v, int value) { return bindValue(v, value); }, [](CSint *v, int value) { return removeValue(v, value); },
    [](CSint *v, int value) { return narrowMax(v, value); }, [](CSint *v, int value) { return narrowMin(v, value); }};
constexpr bool (*kNoise[])(CSint *, CSint *) = {cs_Le, cs_Neq, cs_Eq};

// Numbers drawn once and used on both sides.
struct Step {
  std::size_t form;
  std::size_t a;
  std::size_t b;
  int v;
  int w;
};

struct Seen {
  long long calls = 0;
  int failures = 0;
  int decided = 0;
  int undecided = 0;
};

// One of the two sides: its variables, and whose constraints it posts.
class Side {
 public:
  explicit Side(bool library) : library_(library) {}

  std::vector<CSint *> variables;

  bool narrow(const Step &s) { return kRelations[s.form % 6](at(s.a), s.v); }

  bool post(const Step &s) {
    CSint *result = nullptr;
    if (s.form < 6) {
      result = library_ ? reif::kForms[s.form].post(at(s.a), at(s.b)) : kTwins[s.form](at(s.a), at(s.b));
    } else if (s.form < 12) {
      result = library_ ? reif::kConstForms[s.form - 6].post(at(s.a), s.v) : kConstTwins[s.form - 6](at(s.a), s.v);
    } else if (s.form < 14) {
      const auto ifEq = library_ ? cs_IfEq : reif_twin::ifEq;
      const auto ifNeq = library_ ? cs_IfNeq : reif_twin::ifNeq;
      return (s.form == 12 ? ifEq : ifNeq)(at(s.a), at(s.b), s.v, s.w);
    } else {
      return kNoise[s.form - 14](at(s.a), at(s.b));
    }
    if (result != nullptr) variables.push_back(result);
    return result != nullptr;
  }

  // Several changes whose events are all queued before the first of them is heard.
  bool burst(const std::vector<Step> &steps) {
    std::function<bool(int)> body = [&](int) {
      for (const Step &s : steps)
        if (!kNarrowings[s.form % 4](at(s.a), s.v)) return false;
      return true;
    };
    CSint *trigger = cs_createCSint(0, 1);
    return postRefuser(trigger, body) && cs_EQ(trigger, 1);
  }

  std::string domains() const {
    std::ostringstream text;
    for (CSint *v : variables) text << ::testing::PrintToString(values(v)) << "#" << v->count << " ";
    return text.str();
  }

  std::string callsOf(const CallLog &log) const {
    std::ostringstream text;
    for (const Call &call : log.calls) {
      const auto found = std::ranges::find(variables, call.variable);
      text << call.site << (found - variables.begin()) << "/" << call.code << (call.consistent ? " " : "! ");
    }
    return text.str();
  }

 private:
  CSint *at(std::size_t i) const { return variables[i % variables.size()]; }

  bool library_;
};

class Trial {
 public:
  Trial(unsigned seed, Seen &seen) : random_(seed), seen_(seen), profiled_(seed % 2 == 0) {
    for (int i = 0; i < 3; ++i) {
      const brute::Domain domain = brute::randomDomain(random_, -3, 9);
      for (Side *side : sides()) side->variables.push_back(brute::create(domain));
    }
    cs_saveContext();
  }

  void run() {
    for (int i = 0; i < 5 && !::testing::Test::HasFailure(); ++i) step(70);
    for (int i = 0; i < 40 && !::testing::Test::HasFailure(); ++i) step(below(100));
    cs_restoreAll();
  }

 private:
  std::vector<Side *> sides() { return {&library_, &twin_}; }

  unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }

  // Mostly a free variable and a value within its bounds, so that most changes are possible.
  Step draw() {
    const auto count = static_cast<unsigned>(library_.variables.size());
    std::size_t a = below(count);
    for (int i = 0; i < 3 && !cs_isFree(library_.variables[a]); ++i) a = below(count);
    const CSint *v = library_.variables[a];
    const int within = v->min + static_cast<int>(below(static_cast<unsigned>(v->max - v->min + 1)));
    const int anywhere = static_cast<int>(below(12)) - 4;
    return {below(17), a, below(1000), below(8) == 0 ? anywhere : within, static_cast<int>(below(8)) - 2};
  }

  void step(unsigned kind) {
    if (kind >= 92) return closeOne();
    const Step s = draw();
    std::vector<Step> steps(2 + below(3));
    for (Step &each : steps) each = draw();
    const std::size_t known = library_.variables.size();
    const std::string before = library_.domains();
    bool results[2] = {};
    std::string calls[2];
    cs_saveContext();
    for (std::size_t i = 0; i < 2; ++i) {
      Side &side = *sides()[i];
      std::unique_ptr<CallLog> log;
      if (profiled_) log = std::make_unique<CallLog>();
      results[i] = kind < 45 ? side.narrow(s) : kind < 70 ? side.burst(steps) : side.post(s);
      if (!log) continue;
      calls[i] = side.callsOf(*log);
      seen_.calls += std::ssize(log->calls);
    }
    EXPECT_EQ(results[0], results[1]) << text(kind, s, before);
    EXPECT_EQ(calls[0], calls[1]) << text(kind, s, before);
    EXPECT_EQ(library_.domains(), twin_.domains()) << text(kind, s, before);
    if (library_.variables.size() > known) ++(cs_isFree(library_.variables.back()) ? seen_.undecided : seen_.decided);
    if (!results[0]) {
      ++seen_.failures;
      cs_restoreContext();
    } else if (kind >= 70) {
      cs_forgetSaveContext();  // constraints stay until the context around them closes
    }
  }

  void closeOne() {
    if (solver::contexts.count() > 1) cs_restoreContext();
    EXPECT_EQ(library_.domains(), twin_.domains());
  }

  static std::string text(unsigned kind, const Step &s, const std::string &before) {
    std::ostringstream out;
    out << "kind " << kind << " form " << s.form << " on " << s.a << " " << s.b << " with " << s.v << " " << s.w
        << "\nbefore: " << before;
    return out.str();
  }

  std::mt19937 random_;
  Seen &seen_;
  bool profiled_;
  Side library_{true};
  Side twin_{false};
};

TEST(ReifTwin, RandomProgramsOnBothImplementationsCannotBeToldApart) {
  Seen seen;
  for (unsigned seed = 1; seed <= rounds(1500U); ++seed) {
    cs_init();
    Trial(seed, seen).run();
    cs_end();
    ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed;
  }
  EXPECT_GT(seen.calls, rounds(40000));
  EXPECT_GT(seen.failures, rounds(5000));
  EXPECT_GT(seen.decided, rounds(1000));
  EXPECT_GT(seen.undecided, rounds(1000));
  RecordProperty("calls", std::to_string(seen.calls));
  RecordProperty("failures", seen.failures);
}

}  // namespace
