// SPDX-License-Identifier: MIT
// Random programmes without constraints: the models predict every domain, every result and every undo callback.
#include "model/program.h"

namespace koru::test::model {
namespace {

TEST(CopyingModel, PredictsEveryDomainResultAndUndoCallback) { runProgrammes<CopyModel>(1, 1500, 50); }

TEST(CopyingModel, PredictsProgrammesWithDeepStacksOfContexts) { runProgrammes<CopyModel>(100000, 60, 600); }

TEST(LogModel, PredictsWhatAnOuterContextUndoesAfterAnInnerWasAccepted) { runProgrammes<LogModel>(1, 1500, 50); }

TEST(CopyingModel, HeavyPredictsManyMoreProgrammes) { runProgrammes<CopyModel>(1000000, 30000, 60); }

TEST(LogModel, HeavyPredictsManyMoreProgrammes) { runProgrammes<LogModel>(1000000, 30000, 60); }

}  // namespace
}  // namespace koru::test::model
