// SPDX-License-Identifier: MIT
// Random programs without constraints: the models predict every domain, every result and every undo callback.
#include "model/program.h"

namespace koru::test::model {
namespace {

TEST(CopyingModel, PredictsEveryDomainResultAndUndoCallback) { runPrograms<CopyModel>(1, 1500, 50); }

TEST(CopyingModel, PredictsProgramsWithDeepStacksOfContexts) { runPrograms<CopyModel>(100000, 60, 600); }

TEST(LogModel, PredictsWhatAnOuterContextUndoesAfterAnInnerWasAccepted) { runPrograms<LogModel>(1, 1500, 50); }

TEST(CopyingModel, HeavyPredictsManyMorePrograms) { runPrograms<CopyModel>(1000000, 30000, 60); }

TEST(LogModel, HeavyPredictsManyMorePrograms) { runPrograms<LogModel>(1000000, 30000, 60); }

}  // namespace
}  // namespace koru::test::model
