// SPDX-License-Identifier: MIT
// z = |x| for the twin engine, x above the smallest int.
#pragma once

#include "support/twins/engine.h"

namespace koru::test::twin {

struct Abs {
  Engine &e;
  int z;
  int x;

  bool raise(int v, Wide bound) const { return bound <= e.min(v) || e.narrowMin(v, bound); }
  bool lower(int v, Wide bound) const { return bound >= e.max(v) || e.narrowMax(v, bound); }
  bool remove(int v, Wide value) const { return !e.has(v, value) || e.remove(v, value); }

  bool xMoved() const {
    const Wide min = e.min(x);
    const Wide max = e.max(x);
    const Wide low = min >= 0 ? min : max > 0 ? 0 : -max;
    const Wide high = min >= 0 ? max : max < 1 || max < -min ? -min : max;
    return raise(z, low) && lower(z, high);
  }
  bool xBound() const {
    const Wide v = e.min(x) < 0 ? -e.min(x) : e.min(x);
    return e.has(z, v) && e.bind(z, v);
  }
  bool xRemoved(Wide w) const { return e.has(x, -w) || remove(z, w > -w ? w : -w); }

  bool zRaised(Wide old, Wide m) const {
    if (e.min(x) >= 0) return raise(x, m);
    if (e.max(x) <= 0) return lower(x, -m);
    if (m > -e.min(x)) return raise(x, m);
    if (m > e.max(x)) return lower(x, -m);
    for (Wide k = old; k <= m - 1; ++k)
      if (!remove(x, k) || !remove(x, -k)) return false;
    return true;
  }
  bool zLowered(Wide m) const {
    if (e.min(x) >= 0) return lower(x, m);
    if (e.max(x) > 0) return lower(x, m) && raise(x, -m);
    return raise(x, -m);
  }
  bool zBound() const {
    const Wide v = e.min(z);
    if (!e.has(x, v)) return e.has(x, -v) && e.bind(x, -v);
    if (!e.has(x, -v)) return e.bind(x, v);
    if (!raise(x, -v) || !lower(x, v)) return false;
    for (Wide k = -v + 1; k < v; ++k)
      if (!remove(x, k)) return false;
    return true;
  }

  bool onX(const Engine::Event &event) const {
    return event.code == 5 ? xRemoved(event.newValue) : event.code == 4 ? xBound() : xMoved();
  }
  bool onZ(const Engine::Event &event) const {
    if (event.code == 5) return remove(x, event.newValue) && remove(x, -event.newValue);
    if (event.code == 4) return zBound();
    return event.code % 2 == 0 ? zRaised(event.oldValue, event.newValue) : zLowered(event.newValue);
  }
};

// withBits: x has a bit array, so that its holes pass to z.
inline int postAbs(Engine &e, int x, bool withBits) {
  const Wide min = e.min(x);
  const Wide max = e.max(x);
  Wide low = min >= 0 ? min : max <= 0 ? -max : 0;
  const Wide high = min >= 0 ? max : max <= 0 ? -min : std::max(max, -min);
  if (min < 0 && max > 0 && e.hasHoles(x)) {
    const Wide m = std::min(-min, max);
    while (low < m && !e.has(x, low) && !e.has(x, -low)) ++low;
  }
  std::vector<int> values;
  for (Wide v = low; v <= high; ++v)
    if (!withBits || e.has(x, v) || e.has(x, -v)) values.push_back(static_cast<int>(v));
  const Abs rule{e, e.create(values), x};
  e.attach(e.addConstraint([rule](const Engine::Event &event) { return rule.onX(event); }), x, -1);
  e.attach(e.addConstraint([rule](const Engine::Event &event) { return rule.onZ(event); }), rule.z, -1);
  return rule.z;
}

}  // namespace koru::test::twin
