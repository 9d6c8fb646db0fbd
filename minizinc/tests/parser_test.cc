// SPDX-License-Identifier: MIT
#include "minizinc/tests/support.h"

namespace koru::fzn {
namespace {

Syntax parsed(const std::string &text) {
  Syntax syntax;
  Mistake mistake;
  syntax.file = "m.fzn";
  syntax.text = text;
  EXPECT_TRUE(parse(syntax, mistake)) << describe(syntax, mistake);
  return syntax;
}

TEST(FznParser, ReadsEveryKindOfItem) {
  const Syntax s = parsed(R"(% a comment
predicate p(array [int] of var int: x, var set of int: s, float: f, set of 1..3: t);
array [1..3] of int: w = [1,-2,0x1F];
array [1..0] of bool: none = [];
int: five = 5; bool: yes = true; set of int: holes = {5,1,3,3};
array [1..2] of set of int: sets = [1..2,{}];
var bool: b :: output_var;
var -3..4: x:: is_defined_var = five;
var {7,2}: y;
var int: z;
array [1..3] of var int: a :: output_array([1..3]) = [x,y,z];
constraint int_le(a[2],w[1]) :: domain :: mzn_path("f|1|2;");
constraint set_in(x,holes);
solve :: seq_search([int_search(a,first_fail,indomain_min,complete)]) :: restart_geometric(1.5,100) minimize x;
)");
  ASSERT_EQ(s.declarations.size(), 11U);
  ASSERT_EQ(s.constraints.size(), 2U);
  EXPECT_EQ(s.list(s.declarations[0].value.part)[2].number, 31);
  const std::span<const long long> holes = s.numbersOf(s.declarations[4].value);
  EXPECT_EQ(std::vector<long long>(holes.begin(), holes.end()), (std::vector<long long>{1, 3, 5}));
  EXPECT_EQ(s.numbersOf(s.declarations[7].domain)[0], -3);
  EXPECT_NE(s.find(s.declarations[7].annotations, "is_defined_var"), nullptr);
  EXPECT_EQ(s.declarations[7].value.number, 2);  // the place of "five"
  EXPECT_EQ(s.solve.goal, Goal::kMinimize);
  const Expr *path = s.find(s.constraints[0].annotations, "mzn_path");
  ASSERT_NE(path, nullptr);
  EXPECT_EQ(s.string(s.list(path->part)[0]), "f|1|2;");
}

TEST(FznParser, AnArrayMayBeCalledByAnotherName) {
  const Syntax s = parsed("array [1..2] of int: a = [4,5]; array [1..2] of int: b = a; solve satisfy;");
  EXPECT_EQ(s.list(s.declarations[1].value.part)[1].number, 5);
}

// MiniZinc leaves such arrays where they are put out.
TEST(FznParser, ArraysOfSetVariablesMayHoldConstants) {
  EXPECT_EQ(mistakeIn("array [1..0] of var set of int: a :: output_array([1..0]) = []; solve satisfy;"), "");
  EXPECT_EQ(mistakeIn("array [1..1] of var set of 1..3: a = [{2}]; solve satisfy;"), "");
}

TEST(FznParser, TellsWhereAMistakeIs) {
  EXPECT_EQ(mistakeIn("solve satisfy"), "m.fzn:1:14: ';' is expected here");
  EXPECT_EQ(mistakeIn(""), "m.fzn:1:1: the solve item is missing");
  EXPECT_EQ(mistakeIn("var int: x;\nvar int: x;"), "m.fzn:2:10: \"x\" is declared twice");
  EXPECT_EQ(mistakeIn("constraint int_le(x,1);"), "m.fzn:1:19: \"x\" is not declared");
  EXPECT_EQ(mistakeIn("array [1..1] of int: a = [1];\nconstraint p(a[2]);"),
            "m.fzn:2:16: the index is outside of the array");
  EXPECT_EQ(mistakeIn("int: a = 1;\nconstraint p(a[1]);"), "m.fzn:2:14: \"a\" is not an array");
  EXPECT_EQ(mistakeIn("int: a = 99999999999999999999;"), "m.fzn:1:10: a number beyond 64 bits");
  EXPECT_EQ(mistakeIn("int: a = ?;"), "m.fzn:1:10: a character that FlatZinc does not have");
  EXPECT_EQ(mistakeIn("solve :: p(\"abc) satisfy;"), "m.fzn:1:12: a string without an end");
  EXPECT_EQ(mistakeIn("int: a;"), "m.fzn:1:7: a value is expected here");
  EXPECT_EQ(mistakeIn("array [1..1] of int: a = 3;"), "m.fzn:1:26: an array is expected here");
  EXPECT_EQ(mistakeIn("solve satisfy; solve satisfy;"), "m.fzn:1:16: nothing comes after the solve item");
  EXPECT_EQ(mistakeIn("var 1.5..2: x;").substr(0, 10), "m.fzn:1:5:");
}

TEST(FznParser, RefusesFloatsAndSetVariables) {
  EXPECT_EQ(mistakeIn("var float: x;"), "m.fzn:1:5: floats are not supported");
  EXPECT_EQ(mistakeIn("var 1.0..2.0: x;"), "m.fzn:1:5: floats are not supported");
  EXPECT_EQ(mistakeIn("constraint p(1.5);"), "m.fzn:1:14: floats are not supported");
  EXPECT_EQ(mistakeIn("constraint p(1e3);"), "m.fzn:1:14: floats are not supported");
  EXPECT_EQ(mistakeIn("var set of 1..3: s;"), "m.fzn:1:5: variables for sets are not supported");
}

TEST(FznParser, RefusesWhatIsNestedTooDeeply) {
  const std::string deep = "solve :: " + std::string(200, '[') + std::string(200, ']') + " satisfy;";
  EXPECT_NE(mistakeIn(deep), "");
  std::string calls;
  for (int i = 0; i < 200; ++i) calls += "p(";
  EXPECT_NE(mistakeIn("solve :: " + calls).find("nested too deeply"), std::string::npos);
}

// Every beginning of a file, and every file with one character changed, is read or refused.
TEST(FznParser, EndsForAnyText) {
  const std::string text =
      "predicate p(array [int] of var int: x);array [1..2] of int: w = [1,0o17];\nvar {1,3}: x :: output_var;"
      "var bool: b = true;constraint p([x,w[2]]) :: a(\"s\\\"\") :: q([1.5e3,b]);solve :: f(x) maximize x;";
  for (std::size_t i = 0; i <= text.size(); ++i) mistakeIn(text.substr(0, i));
  int refused = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    for (const char c : {'(', '"', '1', '-', ';', '\n', '.', '\xff'}) {
      std::string changed = text;
      changed[i] = c;
      refused += mistakeIn(changed).empty() ? 0 : 1;
    }
  }
  EXPECT_GT(refused, 100);
}

}  // namespace
}  // namespace koru::fzn
