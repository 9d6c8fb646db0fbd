// SPDX-License-Identifier: MIT
// Trial: a search imposes a value in a context of its own, and no code of the host's is called meanwhile.
//
// A value that is refused is undone before the host can look, so what handlers were told of bounds need not be right
// where nobody of ours asks; and all counts are right. That is what core/follow.h takes advantage of.
#pragma once

#include "core/context_stack.h"
#include "core/queue.h"
#include "core/trail.h"

namespace koru {

class Trial {
 public:
  // `hostLooks`: at what a refused value leaves.
  explicit Trial(bool hostLooks) {
    solver::queue.trying = !hostLooks && canBeUnheard() && !solver::acceptedInside && solver::trail.isRead();
  }
  Trial(const Trial &) = delete;
  Trial &operator=(const Trial &) = delete;
  ~Trial() { solver::queue.trying = false; }
};

}  // namespace koru
