// SPDX-License-Identifier: MIT
// Changes made by a handler are queued until it returns; this makes several changes in one such handler, so that the
// later ones are there before the events of the earlier ones are heard.
#pragma once

#include <functional>

#include "core/post.h"

namespace koru::test {

struct Batch {
  const std::function<bool()> *body;
};

inline bool runBatch(Batch &c, const Event &) { return (*c.body)(); }

inline constexpr auto kBatchTable = handlers<Batch>({.maxBound = on<runBatch>});

// The result of the propagation that the changes set off.
inline bool together(const std::function<bool()> &body) {
  CSint *trigger = cs_createCSint(0, 1);
  Posting posting{"batch"};
  posting.add(kBatchTable, Batch{&body}).attach(trigger);
  return posting && cs_EQ(trigger, 0);
}

}  // namespace koru::test
