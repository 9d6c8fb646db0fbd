// SPDX-License-Identifier: MIT
// Random programmes with constraints: copies predict what every restore, forget and accept leaves behind.
#include "model/snapshot.h"

namespace koru::test::model {
namespace {

void runAll(std::uint64_t firstSeed, int count, int steps) {
  for (int i = 0; i < count; ++i) {
    SCOPED_TRACE("seed " + std::to_string(firstSeed + static_cast<std::uint64_t>(i)));
    ConstraintProgramme(firstSeed + static_cast<std::uint64_t>(i)).run(steps);
    if (::testing::Test::HasFailure()) return;
  }
}

TEST(CopyingModelWithConstraints, PredictsDomainsAndAttachmentsAfterEveryRestore) { runAll(1, 1000, 50); }

TEST(CopyingModelWithConstraints, HeavyPredictsManyMoreProgrammes) { runAll(1000000, 6000, 80); }

}  // namespace
}  // namespace koru::test::model
