// SPDX-License-Identifier: MIT
// A problem held twice, by the library and by the twin engine: the same variables, the same constraint, the same
// random narrowings. After each one the results, every handler call in order and every domain must be the same, also
// after a failure.
#pragma once

#include <optional>
#include <random>
#include <sstream>

#include "support/kit/probe.h"
#include "support/kit/small_domains.h"
#include "support/twins/engine.h"

namespace koru::test::twin {

class Pair {
 public:
  explicit Pair(unsigned seed) : random(seed), seed_(seed) {
    cs_init();
    engine.mostCalls = 2000;
    log_.emplace();
  }
  ~Pair() {
    log_.reset();
    cs_end();
  }
  Pair(const Pair &) = delete;
  Pair &operator=(const Pair &) = delete;

  std::mt19937 random;
  Engine engine;
  std::vector<CSint *> real;

  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

  int add(const brute::Domain &domain) {
    real.push_back(brute::create(domain));
    return engine.create(domain.values);
  }
  int add(int min, int max) {
    real.push_back(cs_createCSint(min, max));
    return engine.create(min, max);
  }
  int addResult(CSint *variable) {
    real.push_back(variable);
    return static_cast<int>(real.size()) - 1;
  }
  std::vector<CSint *> variables(const std::vector<int> &numbers) const {
    std::vector<CSint *> result;
    for (const int v : numbers) result.push_back(real[static_cast<std::size_t>(v)]);
    return result;
  }

  // False when the problem has failed or was given up, or the two disagree.
  bool step(int value, int v, unsigned kind) {
    log_->calls.clear();
    engine.calls.clear();
    static constexpr int kMethods[] = {CS_METHOD_GE, CS_METHOD_LE, CS_METHOD_EQ, CS_METHOD_NEQ};
    const bool byTwin = engine.relate(v, kMethods[kind], value);
    if (engine.gaveUp) return false;
    const bool byLibrary = kRelationOf[kMethods[kind]](real[static_cast<std::size_t>(v)], value);
    history_ << "\n  kind " << kind << " on variable " << v << " value " << value;
    EXPECT_EQ(byLibrary, byTwin) << where();
    compareCalls();
    compareDomains();
    return byTwin && !::testing::Test::HasFailure();
  }

  // With values at and near the bounds and within them. No holes for wide domains, their bit arrays being large.
  void randomSteps(int count) {
    compareDomains();
    for (int i = 0; i < count; ++i) {
      const int v = number(0, static_cast<int>(real.size()) - 1);
      const int low = cs_getMin(real[static_cast<std::size_t>(v)]);
      const int high = cs_getMax(real[static_cast<std::size_t>(v)]);
      const int nearLow = satAdd(low, number(-1, 2));
      const int nearHigh = satAdd(high, number(-2, 1));
      const int values[] = {nearLow, nearHigh, number(low, high), number(low, high)};
      if (!step(values[number(0, 3)], v, static_cast<unsigned>(number(0, wide(v) ? 2 : 3)))) return;
      ++stepsDone;
    }
  }

  static inline int stepsDone = 0;  // that left the problem consistent, over all pairs

  std::string where() const {
    std::ostringstream text;
    text << "\n  seed " << seed_ << start_ << history_.str();
    return text.str();
  }
  void describe(const std::string &text) { start_ += text; }

  void compareDomains() {
    ASSERT_EQ(static_cast<int>(real.size()), engine.size()) << where();
    for (int v = 0; v < engine.size(); ++v) {
      CSint *x = real[static_cast<std::size_t>(v)];
      ASSERT_TRUE(cs_getMin(x) == engine.min(v) && cs_getMax(x) == engine.max(v))
          << "variable " << v << " is " << cs_getMin(x) << ".." << cs_getMax(x) << ", not "
          << static_cast<std::int64_t>(engine.min(v)) << ".." << static_cast<std::int64_t>(engine.max(v)) << where();
      if (engine.max(v) - engine.min(v) > 100) continue;
      for (Wide value = engine.min(v); value <= engine.max(v); ++value)
        ASSERT_EQ(cs_isIn(x, static_cast<int>(value)), engine.has(v, value))
            << "variable " << v << " value " << static_cast<int>(value) << where();
    }
  }

 private:
  bool wide(int v) const {
    const CSint *x = real[static_cast<std::size_t>(v)];
    return std::int64_t{x->initialMax} - x->initialMin > 1000000;
  }

  void compareCalls() {
    using Heard = std::tuple<bool, int, int>;  // consistent, variable, event code
    std::vector<Heard> byLibrary;
    for (const Call &call : log_->calls) {
      const auto found = std::ranges::find(real, call.variable);
      byLibrary.emplace_back(call.consistent, static_cast<int>(found - real.begin()), call.code);
    }
    std::vector<Heard> byTwin;
    for (const Engine::Call &call : engine.calls) byTwin.emplace_back(call.consistent, call.var, call.code);
    EXPECT_EQ(byLibrary, byTwin) << where();
  }

  unsigned seed_;
  std::optional<CallLog> log_;
  std::string start_;
  std::ostringstream history_;
};

}  // namespace koru::test::twin
