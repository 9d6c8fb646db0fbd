// SPDX-License-Identifier: MIT
// Moment: a point of a propagation at which a constraint has computed something of domains.
//
// While it lasts, no domain changes and no code of the host runs, so what was computed holds on: each change takes a
// place on the trail, and only code of the host takes places back. Where such code may be called meanwhile, no moment
// lasts at all.
#pragma once

#include <cstdint>

#include "core/queue.h"
#include "core/trail.h"

namespace koru {

class Moment {
 public:
  static Moment now() { return canBeUnheard() ? Moment{solver::queue.propagations, solver::trail.count()} : Moment{}; }

  bool lasts() const { return isOfThisPropagation() && changes_ == solver::trail.count() && canBeUnheard(); }
  // Of one that lasted until the caller itself changed what does not matter: it goes on.
  void goOn() {
    if (isOfThisPropagation()) changes_ = solver::trail.count();
  }

  Moment() = default;

 private:
  static constexpr std::uint64_t kNever = 0;

  Moment(std::uint64_t propagation, int changes) : propagation_(propagation), changes_(changes) {}
  bool isOfThisPropagation() const { return propagation_ == solver::queue.propagations && propagation_ != kNever; }

  std::uint64_t propagation_ = kNever;
  int changes_ = 0;  // places taken on the trail
};

}  // namespace koru
