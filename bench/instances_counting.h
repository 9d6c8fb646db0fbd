// SPDX-License-Identifier: MIT
// Overlapping cardinality constraints and items to pack, the same for every solver and machine.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

namespace koru::bench {

// Splitmix64.
class Mixer {
 public:
  explicit Mixer(std::uint64_t seed) : state_(seed) {}

  int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
  void shuffle(std::vector<int> &values) {
    for (std::size_t i = values.size() - 1; i > 0; --i)
      std::swap(values[i], values[static_cast<std::size_t>(below(static_cast<int>(i) + 1))]);
  }

 private:
  std::uint64_t next() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15ULL;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ z >> 27) * 0x94d049bb133111ebULL;
    return z ^ z >> 31;
  }

  std::uint64_t state_;
};

// Variables whose domains have holes, and for each of a number of scopes how often each value is taken in it: bounds
// about what a hidden solution has.
struct Cardinalities {
  struct Sizes {
    int variables;
    int values;
    int constraints;
    int scope;
    int holes;  // per cent of the values of a domain
    int slack;  // of a bound, at most
  };
  struct Scope {
    std::vector<int> variables;
    std::vector<int> least;
    std::vector<int> most;
  };

  Cardinalities(const Sizes &sizes, int seed)
      : random_(static_cast<std::uint64_t>(seed * 91009 + sizes.variables * 13 + sizes.constraints)) {
    for (int i = 0; i < sizes.variables; ++i) hidden_.push_back(random_.below(sizes.values));
    for (const int value : hidden_) domains.push_back(drawDomain(sizes, value));
    for (int c = 0; c < sizes.constraints; ++c) scopes.push_back(drawScope(sizes));
  }

  std::vector<std::vector<int>> domains;
  std::vector<Scope> scopes;

 private:
  std::vector<int> drawDomain(const Sizes &sizes, int hidden) {
    std::vector<int> domain;
    for (int value = 0; value < sizes.values; ++value)
      if (value == hidden || random_.below(100) >= sizes.holes) domain.push_back(value);
    return domain;
  }

  Scope drawScope(const Sizes &sizes) {
    Scope scope;
    scope.variables.resize(static_cast<std::size_t>(sizes.variables));
    std::iota(scope.variables.begin(), scope.variables.end(), 0);
    random_.shuffle(scope.variables);
    scope.variables.resize(static_cast<std::size_t>(sizes.scope));
    std::sort(scope.variables.begin(), scope.variables.end());
    for (int value = 0; value < sizes.values; ++value) {
      const auto taken = static_cast<int>(std::count_if(scope.variables.begin(), scope.variables.end(), [&](int i) {
        return hidden_[static_cast<std::size_t>(i)] == value;
      }));
      scope.least.push_back(std::max(0, taken - random_.below(sizes.slack + 1)));
      scope.most.push_back(taken + random_.below(sizes.slack + 1));
    }
    return scope;
  }

  Mixer random_;
  std::vector<int> hidden_;
};

// Sizes of items within [low, high], largest first.
inline std::vector<int> itemSizes(int count, int low, int high, int seed) {
  Mixer random(static_cast<std::uint64_t>(seed * 93001 + count));
  std::vector<int> sizes;
  while (static_cast<int>(sizes.size()) < count) sizes.push_back(low + random.below(high - low + 1));
  std::sort(sizes.begin(), sizes.end(), std::greater<>());
  return sizes;
}

inline constexpr Cardinalities::Sizes kTightScopes{40, 8, 12, 16, 40, 1};
inline constexpr Cardinalities::Sizes kExactScopes{60, 10, 15, 20, 50, 0};

}  // namespace koru::bench
