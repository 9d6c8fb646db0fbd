// SPDX-License-Identifier: MIT
// What a host's profiler would see of postings, as one number: which handlers ran, in which order, with which result,
// and how the domain they ran for stood.
#pragma once

#include <bit>
#include <cstdint>
#include <iomanip>
#include <iostream>

#include "core/solver.h"

namespace koru::test::brute {

struct Calls {
  long long count = 0;
  std::uint64_t digest = 0;

  bool operator==(const Calls &) const = default;
  void add(std::uint64_t word) { digest = std::rotl(digest ^ word, 23) * 0x9e3779b97f4a7c15; }
};

inline std::ostream &operator<<(std::ostream &out, const Calls &calls) {
  return out << calls.count << " 0x" << std::hex << std::setw(16) << std::setfill('0') << calls.digest << std::dec;
}

inline std::istream &operator>>(std::istream &in, Calls &calls) {
  return in >> calls.count >> std::hex >> calls.digest >> std::dec;
}

// Adds to the calls while it lives, and lists them one by one if there is a stream. Ends before the solver does.
class Listener {
 public:
  explicit Listener(Calls &calls, std::ostream *list)
      : calls_(calls), list_(list), observer_{note, nullptr, this, true, nullptr} {
    solver::ports.add(&observer_);
  }
  ~Listener() { solver::ports.remove(&observer_); }
  Listener(const Listener &) = delete;
  Listener &operator=(const Listener &) = delete;

 private:
  static std::uint64_t pair(int first, int second) {
    return std::uint64_t{static_cast<std::uint32_t>(first)} << 32 | static_cast<std::uint32_t>(second);
  }

  // No event has been handled before it.
  static void noteRun(bool consistent, std::ostream *list, Site *site) {
    if (list != nullptr) *list << (consistent ? "  " : "! ") << site->name() << " runs\n";
  }

  static void note(void *self, bool consistent, CSint *v, int code, Site *site) {
    const auto &[calls, list, observer] = *static_cast<Listener *>(self);
    ++calls.count;
    calls.add(pair(code, consistent ? 1 : 0));
    if (v == nullptr) return noteRun(consistent, list, site);
    calls.add(pair(v->initialMin, v->initialMax));
    calls.add(pair(v->min, v->max));
    calls.add(pair(v->count, v->constraintCount));
    if (list == nullptr) return;
    *list << (consistent ? "  " : "! ") << site->name() << " " << code << ": " << v->min << ".." << v->max << " of "
          << v->initialMin << ".." << v->initialMax << "\n";
  }

  Calls &calls_;
  std::ostream *list_;
  Observer observer_;
};

}  // namespace koru::test::brute
