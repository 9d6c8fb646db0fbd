// SPDX-License-Identifier: MIT
// The FlatZinc reader behind libFuzzer: any text is read or refused, and what is read is posted. Files with large
// numbers are only read, as their domains may take all memory.
#include <algorithm>
#include <cstdlib>

#include "minizinc/model.h"
#include "minizinc/output.h"
#include "minizinc/parser.h"
#include "minizinc/plan.h"

namespace {

using namespace koru::fzn;

bool isSmall(long long number) { return number >= -300 && number <= 300; }

bool isSmall(const Syntax &syntax) {
  return std::all_of(syntax.numbers.begin(), syntax.numbers.end(), [](long long n) { return isSmall(n); }) &&
         std::all_of(syntax.exprs.begin(), syntax.exprs.end(), [](const Expr &e) { return isSmall(e.number); }) &&
         std::all_of(syntax.declarations.begin(), syntax.declarations.end(), [](const Declaration &d) {
           return !d.isVar || d.isArray || d.base == Base::kBool || d.domain.kind != Kind::kNone;
         });
}

void post(const Syntax &syntax) {
  cs_init();
  Mistake mistake;
  Model model(syntax, mistake);
  if (model.post()) {
    readPlan(syntax, model.variables, false);
    textOf(syntax, valuesOf(syntax, model.variables));
  } else if (mistake.isSet()) {
    describe(syntax, mistake);
  }
  cs_end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  Syntax syntax;
  syntax.file = "m.fzn";
  syntax.text.assign(reinterpret_cast<const char *>(data), size);
  Mistake mistake;
  if (!parse(syntax, mistake)) {
    if (!mistake.isSet() || describe(syntax, mistake).find('\n') != std::string::npos) std::abort();
    return 0;
  }
  if (isSmall(syntax)) post(syntax);
  return 0;
}
