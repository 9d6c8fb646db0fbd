// SPDX-License-Identifier: MIT
// Reading FlatZinc: text in, items out, or the first mistake.
#ifndef KORU_MINIZINC_PARSER_H
#define KORU_MINIZINC_PARSER_H

#include "minizinc/syntax.h"

namespace koru::fzn {

// Reads syntax.text into the rest of `syntax`. False with the first mistake: text that is no FlatZinc, a name that is
// not declared before its use or twice, and what this solver does not take: floats and variables for sets.
// Cost: linear in the text; some three times its size in memory.
bool parse(Syntax &syntax, Mistake &mistake);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_PARSER_H
