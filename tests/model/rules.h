// SPDX-License-Identifier: MIT
// Filtering rules of a few constraints, written once more for the tests. An engine is anything with min, max, has,
// narrowMin, narrowMax, bind and remove over numbered variables: the twin, or the solver behind an adapter.
#pragma once

namespace koru::test::model {

enum class Kind { kNeq, kLe, kLt, kSum, kScript };

struct Rule {
  Kind kind;
  int x;
  int y;
  int z;  // kSum: x = y + z
};

template <class Engine>
bool removePresent(Engine &e, int v, int value) {
  return !e.has(v, value) || e.remove(v, value);
}

template <class Engine>
bool isBoundIn(Engine &e, int v) {
  return e.min(v) == e.max(v);
}

template <class Engine>
bool raise(Engine &e, int v, int bound) {
  return bound <= e.min(v) || e.narrowMin(v, bound);
}

template <class Engine>
bool lower(Engine &e, int v, int bound) {
  return bound >= e.max(v) || e.narrowMax(v, bound);
}

template <class Engine>
bool neqWoken(Engine &e, const Rule &r, int changed, int code) {
  return code < 2 || code == 5 || removePresent(e, changed == r.x ? r.y : r.x, e.min(changed));
}

template <class Engine>
bool orderWoken(Engine &e, const Rule &r, int changed, int code) {
  const int gap = r.kind == Kind::kLt ? 1 : 0;
  if ((code == 0 || code == 2 || code == 4) && changed == r.x && !raise(e, r.y, e.min(r.x) + gap)) return false;
  return !(code == 1 || code == 3 || code == 4) || changed != r.y || lower(e, r.x, e.max(r.y) - gap);
}

template <class Engine>
bool sumMinRaised(Engine &e, int s, int a, int b, int changed) {
  if (changed == a) return raise(e, s, e.min(a) + e.min(b)) && lower(e, b, e.max(s) - e.min(a));
  if (changed == b) return raise(e, s, e.min(a) + e.min(b)) && lower(e, a, e.max(s) - e.min(b));
  return raise(e, a, e.min(s) - e.max(b)) && raise(e, b, e.min(s) - e.max(a));
}

template <class Engine>
bool sumMaxLowered(Engine &e, int s, int a, int b, int changed) {
  if (changed == a) return lower(e, s, e.max(a) + e.max(b)) && raise(e, b, e.min(s) - e.max(a));
  if (changed == b) return lower(e, s, e.max(a) + e.max(b)) && raise(e, a, e.min(s) - e.max(b));
  return lower(e, a, e.max(s) - e.min(b)) && lower(e, b, e.max(s) - e.min(a));
}

template <class Engine>
bool sumOperandLost(Engine &e, int s, int other, int w) {
  if (isBoundIn(e, s) && !removePresent(e, other, e.min(s) - w)) return false;
  return !isBoundIn(e, other) || removePresent(e, s, e.min(other) + w);
}

template <class Engine>
bool sumLost(Engine &e, int s, int a, int b, int changed, int w) {
  if (changed == a) return sumOperandLost(e, s, b, w);
  if (changed == b) return sumOperandLost(e, s, a, w);
  if (isBoundIn(e, a) && !removePresent(e, b, w - e.min(a))) return false;
  return !isBoundIn(e, b) || removePresent(e, a, w - e.min(b));
}

template <class Engine>
bool sumWoken(Engine &e, const Rule &r, int changed, int code, int w) {
  if (code == 5) return sumLost(e, r.x, r.y, r.z, changed, w);
  if ((code == 0 || code == 2 || code == 4) && !sumMinRaised(e, r.x, r.y, r.z, changed)) return false;
  return code == 0 || code == 2 || sumMaxLowered(e, r.x, r.y, r.z, changed);
}

template <class Engine>
bool woken(Engine &e, const Rule &r, int changed, int code, int newValue) {
  if (r.kind == Kind::kNeq) return neqWoken(e, r, changed, code);
  if (r.kind == Kind::kSum) return sumWoken(e, r, changed, code, newValue);
  return orderWoken(e, r, changed, code);
}

// The first filtering at posting; a sum has none.
template <class Engine>
bool filterFirst(Engine &e, const Rule &r) {
  const int gap = r.kind == Kind::kLt ? 1 : 0;
  if (r.kind == Kind::kLe || r.kind == Kind::kLt)
    return raise(e, r.y, e.min(r.x) + gap) && lower(e, r.x, e.max(r.y) - gap);
  if (r.kind != Kind::kNeq) return true;
  if (isBoundIn(e, r.x)) return removePresent(e, r.y, e.min(r.x));
  return !isBoundIn(e, r.y) || removePresent(e, r.x, e.min(r.y));
}

}  // namespace koru::test::model
