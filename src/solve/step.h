// SPDX-License-Identifier: MIT
// A step of the path from the root to where a search stands.
#pragma once

#include "koru.h"
#include "solve/postponed.h"

namespace koru::solve {

// A decision in a context of its own; or, once that has been refuted, its opposite, in the context of the nearest step
// before it that has one. A step that goes from value to value imposes nothing of what it has left behind: all its
// values up to (or, downwards, from) lastTried are refuted.
struct Step {
  int position;
  CSvalueSelection decision;
  bool byValues;
  bool upwards = false;
  bool refuted = false;
  bool leftBehind = false;  // lastTried is one
  int lastTried = 0;
  bool putOff = false;          // refuted, and instead of its opposite the variable is postponed
  Postponed::Minimum before{};  // what that has taken the place of

  bool hasContext() const { return !refuted; }
  bool hasRefuted() const { return refuted || leftBehind; }
};

}  // namespace koru::solve
