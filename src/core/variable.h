// SPDX-License-Identifier: MIT
// CSint, the variable record, and what can be read off it without a call.
//
// Invariants: min <= max; without bits the domain is [min, max] and count its (32-bit) size; with bits it is the set
// bits within [min, max], count of them, the bits of min and max among them. Bits outside the bounds mean nothing.
// Only core/narrow, core/trail and core/create write domains.
#pragma once

#include "core/block_stack.h"
#include "core/domain_bits.h"
#include "core/state.h"
#include "koru.h"

namespace koru {
struct Entry;
}

// One cache line: a propagator that reads a variable's bounds, count and bits pays for one miss.
struct alignas(64) CSint {
  int initialMin;
  int initialMax;
  int min;
  int max;
  koru::DomainBits *bits;
  int count;
  int constraintCount;       // attachments ever made; never decreased
  char *name;                // owned, or null
  koru::Entry *constraints;  // newest first
  int reportedMin;           // the bounds as handlers last saw them
  int reportedMax;
  std::uint8_t traits;  // koru::Trait
};

namespace koru {

// In one place, so that one comparison tells of both.
enum Trait : std::uint8_t {
  kShifted =
      1,      // its oldest constraint is the sum with a constant that made it, and undoes itself at none of its events
  kEasy = 2,  // it has bits, all in one word, and the processor counts them by an instruction
};
inline bool has(const CSint *v, Trait trait) { return (v->traits & trait) != 0; }
inline bool isShiftedEasily(const CSint *v) { return v->traits == (kShifted | kEasy); }
inline void setTrait(CSint *v, Trait trait, bool on) {
  v->traits = static_cast<std::uint8_t>(on ? v->traits | trait : v->traits & ~trait);
}

// Gives v its bits, or none.
inline void setBits(CSint *v, DomainBits *bits) {
  v->bits = bits;
  setTrait(v, kEasy, bits != nullptr && bits->isOneWord() && countsByInstruction());
}

// Frees the bit array and the name.
void destroyDomain(CSint &v);

// count == 1 is what "instantiated" means; min == max may also hold for a count that was written back too high.
inline bool isInstantiated(const CSint *v) { return v->count == 1; }
// count > 1 is what "free" means. A count that has wrapped is neither.
inline bool isFree(const CSint *v) { return v->count > 1; }
inline bool isBound(const CSint *v) { return v->min == v->max; }
// The value of a variable that is bound.
inline int valueOf(const CSint *v) { return v->min; }

inline bool hasHoles(const CSint *v) { return rangeSize(v->min, v->max) != v->count; }

// The bits, when there are any, cover the creation range and so every value within the bounds.
inline bool contains(const CSint *v, int value) {
  return value >= v->min && value <= v->max && (v->bits == nullptr || v->bits->has(value));
}

// For a value of which nobody can foresee whether v holds it: without a jump that depends on that, where `contains` has
// up to three. A few instructions more, and up to a tenth less time. `holdsEasily` is of easy domains; of others
// `mayContain` tells whether the value lies within the bounds.
inline bool isWithin(const CSint *v, int value) { return (value >= v->min) & (value <= v->max); }
inline bool holdsEasily(const CSint *v, int value) {
  const std::uint64_t bit = v->bits->onlyWord() >> (v->bits->offset(value) % 64) & 1;
  return (bit & static_cast<std::uint64_t>(isWithin(v, value))) != 0;
}
inline bool mayContain(const CSint *v, int value) { return has(v, kEasy) ? holdsEasily(v, value) : isWithin(v, value); }

// Steps through a domain: the next (previous) value above (below) one within [min, max].
inline int valueAfter(const CSint *v, int value) { return nextPresent(v->bits, value); }
inline int valueBefore(const CSint *v, int value) { return previousPresent(v->bits, value); }

namespace solver {

inline KORU_STATE BlockStack<CSint> variables;  // the only owner of variables that the host sees
inline KORU_STATE bool named = false;           // since cs_init, one of them

}  // namespace solver
}  // namespace koru
