// SPDX-License-Identifier: MIT
// The public relations as steps of a narrowing, with what each must leave.
#pragma once

#include <ostream>
#include <string>

#include "semantic/harness/left.h"

namespace koru::test::brute {

struct Relate {
  const char *name;
  bool (*apply)(CSint *, int);
  Mask (*kept)(int bit);  // of the value's bit: those that satisfy it
};

inline constexpr Relate kEQ{"cs_EQ", cs_EQ, [](int bit) { return lowBits(bit + 1) & ~lowBits(bit); }};
inline constexpr Relate kNEQ{"cs_NEQ", cs_NEQ, [](int bit) { return ~lowBits(bit + 1) | lowBits(bit); }};
inline constexpr Relate kLE{"cs_LE", cs_LE, [](int bit) { return lowBits(bit + 1); }};
inline constexpr Relate kLT{"cs_LT", cs_LT, [](int bit) { return lowBits(bit); }};
inline constexpr Relate kGE{"cs_GE", cs_GE, [](int bit) { return ~lowBits(bit); }};
inline constexpr Relate kGT{"cs_GT", cs_GT, [](int bit) { return ~lowBits(bit + 1); }};
inline constexpr const Relate *kRelates[] = {&kEQ, &kNEQ, &kLE, &kGE, &kLT, &kGT};

// One way to split a domain in two.
struct Split {
  const Relate *left;
  const Relate *right;
};
inline constexpr Split kSplits[] = {{&kEQ, &kNEQ}, {&kLE, &kGT}, {&kNEQ, &kEQ}, {&kGE, &kLT}};

struct Step {
  const Relate *relate;
  std::size_t variable;
  int value;
  bool unheard = false;  // made before the events of the step before it were heard
};

inline std::ostream &operator<<(std::ostream &out, const Step &step) {
  return out << (step.unheard ? " & " : "; ") << step.relate->name << "(v" << step.variable << ", " << step.value
             << ")";
}

}  // namespace koru::test::brute
