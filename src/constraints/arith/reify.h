// SPDX-License-Identifier: MIT
// What the four shapes of reified comparisons share: the 0/1 variable b, and the posting of the two constraints that
// tie it to a comparison. The control constraint waits for b and imposes the comparison or its negation; the watch
// constraint waits for the compared variables, and binds b when the comparison is decided.
#pragma once

#include "core/post.h"

namespace koru::reify {

inline CSint *decided(bool holds) { return createVariable(holds ? 1 : 0, holds ? 1 : 0); }

// b, with the control constraint on b and the watch constraint on x and, for two variables, y; null on failure.
template <class Control, class Watch>
CSint *post(Posting &posting, CSint *x, CSint *y, const TableOf<Control> &controlTable, const Control &control,
            const TableOf<Watch> &watchTable, Watch watch) {
  if (!posting) return nullptr;
  CSint *b = createVariable(0, 1);
  if (b == nullptr) return nullptr;
  watch.b = b;
  auto onB = posting.add(controlTable, control);
  onB.attach(b);
  auto onCompared = posting.add(watchTable, watch);
  onCompared.attach(x);
  if (y != nullptr) onCompared.attach(y);
  return posting ? b : nullptr;
}

}  // namespace koru::reify
