// SPDX-License-Identifier: MIT
// Random programs with constraints: copies predict what every restore, forget and accept leaves behind.
#include "model/program.h"
#include "model/snapshot.h"

namespace koru::test::model {
namespace {

TEST(CopyingModelWithConstraints, PredictsDomainsAndAttachmentsAfterEveryRestore) {
  runPrograms<SnapshotModel>(1, 1000, 50);
}

TEST(CopyingModelWithConstraints, HeavyPredictsManyMorePrograms) { runPrograms<SnapshotModel>(1000000, 6000, 80); }

}  // namespace
}  // namespace koru::test::model
