// SPDX-License-Identifier: MIT
// Small models at random, one constraint or two of every kind with variables in any places: the program finds as many
// solutions as enumeration does, each verified.
#include <map>

#include "minizinc/check.h"
#include "minizinc/tests/support.h"

#include "tests/support/kit/instrumented.h"

namespace koru::fzn {
namespace {

class Random {
 public:
  explicit Random(unsigned seed) : state_(seed * 2654435761U + 1) {}
  int below(int n) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<int>((state_ >> 33) % static_cast<unsigned>(n));
  }

 private:
  unsigned long long state_;
};

// In a template: x an int variable or a constant, b a bool one, v an int variable, c a constant, p a positive one, each
// after a percent sign. A star stands for _reif, _imp or nothing: with it comes a truth value at the end.
const char *const kTemplates[] = {
    "int_eq*(%x,%x)",
    "int_ne*(%x,%x)",
    "int_le*(%x,%x)",
    "int_lt*(%x,%x)",
    "int_ge*(%x,%x)",
    "int_gt*(%x,%x)",
    "bool_eq*(%b,%b)",
    "bool_ne*(%b,%b)",
    "bool_not*(%b,%b)",
    "bool_le*(%b,%b)",
    "bool_lt*(%b,%b)",
    "bool_xor(%b,%b,%b)",
    "bool_xor*(%b,%b)",
    "bool_and(%b,%b,%b)",
    "bool_or(%b,%b,%b)",
    "bool_and_imp(%b,%b,%b)",
    "bool_or_imp(%b,%b,%b)",
    "bool2int(%b,%x)",
    "set_in*(%x,{-1,1,3})",
    "set_in*(%x,0..2)",
    "set_in*(%x,{})",
    "set_in*(%x,%c..%c)",
    "int_lin_eq*([%c,%c],[%x,%x],%c)",
    "int_lin_ne*([%c,%c,1],[%x,%x,%x],%c)",
    "int_lin_le*([%c,%c,-1],[%x,%x,%x],%c)",
    "int_lin_eq*([1,-1],[%x,%x],%c)",
    "int_lin_eq([1,-1,%c],[%x,%v,%x],%c)",
    "int_lin_lt*([%c,%c],[%x,%x],%c)",
    "int_lin_ge*([%c,%c],[%x,%x],%c)",
    "int_lin_gt*([%c,%c],[%x,%x],%c)",
    "int_lin_le*([1,-1],[%x,%x],0)",
    "int_lin_ne([1,-1],[%x,%x],0)",
    "int_lin_le([4000000000,-4000000000],[%x,%x],4000000000)",
    "bool_lin_eq*([1,%c,2],[%b,%b,%b],%x)",
    "bool_lin_le*([1,%c,2],[%b,%b,%b],%c)",
    "int_plus(%x,%x,%x)",
    "int_minus(%x,%x,%x)",
    "int_times(%x,%x,%x)",
    "int_times(%v,%v,%x)",
    "int_div(%x,%x,%x)",
    "int_mod(%x,%x,%x)",
    "int_pow(%x,%x,%x)",
    "int_pow_fixed(%x,%c,%x)",
    "int_abs(%x,%x)",
    "int_max(%x,%x,%x)",
    "int_min(%x,%x,%x)",
    "array_int_maximum(%x,[%x,%x,%x])",
    "array_int_minimum(%x,[%x,%x])",
    "bool_clause*([%b,%b],[%b])",
    "bool_clause*([],[%b,%b])",
    "bool_clause*([%b],[])",
    "array_bool_or([%b,%b,%b],%b)",
    "array_bool_and([%b,%b,%b],%b)",
    "array_bool_and([%b,%b,%b,%b,%b],%b)",
    "array_bool_or_imp([%b,%b],%b)",
    "array_bool_and_imp([%b,%b],%b)",
    "array_bool_xor*([%b,%b,%b])",
    "array_int_element(%x,[%c,%c,%c],%x)",
    "array_bool_element(%x,[true,false,true],%b)",
    "array_var_int_element(%x,[%x,%x,%x],%x)",
    "array_var_int_element(%x,[%x,1000,%x,-500],%x)",
    "array_var_int_element(%x,[1000,%x,%x,3],%x)",
    "array_var_bool_element(%x,[%b,%b],%b)",
    "koru_all_different([%x,%x,%x])",
    "koru_all_different([%v,%v,%v,%v]) :: domain",
    "koru_all_different([%v,%v,%v]) :: bounds",
    "koru_table([%x,%x],[0,1,2,%c,3,3,1,%c])",
    "koru_table([%x,%b],[0,1,2,0])",
    "koru_regular([%x,%x,%x],2,3,[1,2,0,2,1,%p],1,{%p})",
    "koru_regular_nfa([%x,%x],2,2,[{1,2},{2},{},1..%p],1,{2})",
    "koru_mdd([%x,%x],3,[1,2,2],4,[1,1,2,3],[{1,2},{3},0..2,{%c}],[2,3,0,0])",
    "koru_inverse([%x,%x,%x],[%x,%x,%x],1,1)",
    "koru_inverse([%v,%v],[%v,%v],0,2)",
    "koru_circuit([%x,%x,%x],1)",
    "koru_circuit([%v,%v],0)",
    "koru_subcircuit([%x,%x,%x],1)",
    "koru_subcircuit([%v,%v,%v],-1)",
    "koru_count([%x,%x,%x],%x,%x)",
    "koru_count([%x,%x,%x],%c,%x)",
    "koru_count([%v,%v,%v],%c,%c)",
    "koru_member([%x,%x],%x)",
    "koru_global_cardinality([%x,%x,%x],[1,2],[%x,%x])",
    "koru_global_cardinality_closed([%x,%x,%x],[0,2,1,2],[%x,%x,%x,%x])",
    "koru_global_cardinality_low_up([%x,%x,%x],[1,2],[0,%c],[1,%p])",
    "koru_global_cardinality_low_up_closed([%x,%x],[1,2],[0,0],[%p,%p])",
    "koru_nvalue(%x,[%x,%x,%x])",
    "koru_bin_packing_load([%x,%x],[%x,%x,%x],[1,2,1],1)",
    "koru_bin_packing_load([%x,%x],[%x,%x],[1,0],-1)",
    "koru_bin_packing_capa([2,%p],[%x,%x,%x],[1,2,1],1)",
    "koru_bin_packing(%p,[%x,%x,%x],[1,2,1])",
    "koru_cumulative([%x,%x,%x],[2,1,%p],[1,%p,1],%p)",
    "koru_cumulative([%x,%x],[%x,2],[1,%x],%x)",
    "koru_cumulative_opt([%x,%x,%x],[2,1,%p],[1,%p,1],2,[%b,%b,true])",
    "koru_disjunctive([%x,%x,%x],[1,%p,%c])",
    "koru_disjunctive([%x,%x],[%x,%x])",
    "koru_disjunctive_opt([%x,%x,%x],[2,%p,1],[%b,%b,%b])",
    "koru_diffn([%x,%x,%x],[%x,1,%x],[2,1,%p],[1,%p,2])",
    "koru_diffn([%x,%x],[%x,%x],[%c,2],[1,%x])",
    "koru_increasing([%x,%x,%x])",
    "koru_decreasing([%x,%x,%x])",
    "koru_strictly_increasing([%x,%x])",
    "koru_strictly_decreasing([%x,%x,%x])",
    "koru_lex_less([%x,%x],[%x,%x])",
    "koru_lex_lesseq([%x,%x],[%x,%x])",
    "koru_lex_less([%x,%x],[%x])",
    "koru_lex_lesseq([%x],[%x,%x])",
    "koru_value_precede(%p,%c,[%x,%x,%x])",
};

constexpr int kInts = 3, kBools = 3;

std::string filled(std::string_view text, Random &random) {
  std::string result;
  const auto one = [&](std::string_view prefix, int count) {
    return std::string(prefix) + std::to_string(random.below(count));
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    switch (text[++i]) {
      case 'x':
        result += random.below(8) == 0 ? std::to_string(random.below(5) - 1) : one("x", kInts);
        break;
      case 'v':
        result += one("x", kInts);
        break;
      case 'b':
        result += random.below(10) == 0 ? (random.below(2) == 0 ? "true" : "false") : one("b", kBools);
        break;
      case 'p':
        result += std::to_string(1 + random.below(2));
        break;
      default:
        result += std::to_string(random.below(6) - 2);
    }
  }
  return result;
}

std::string constraintOf(std::string_view form, Random &random) {
  std::string text(form);
  const std::size_t star = text.find('*');
  if (star != text.npos) {
    const int kind = random.below(3);
    text.replace(star, 1, kind == 0 ? "" : kind == 1 ? "_reif" : "_imp");
    if (kind > 0) text.insert(text.rfind(')'), ",%b");
  }
  text = filled(text, random);
  if (random.below(3) == 0) text += " :: defines_var(x" + std::to_string(random.below(kInts)) + ")";
  return "constraint " + text + ";\n";
}

std::string domainOf(Random &random) {
  static const char *const kDomains[] = {"0..3", "-2..2", "1..3", "{-1,1,3}", "{0,2,3}", "1..2", "0..4", "-3..0"};
  return kDomains[random.below(8)];
}

std::string modelOf(std::string_view form, Random &random, const std::string &goal = "satisfy") {
  std::string text;
  for (int i = 0; i < kInts; ++i) text += "var " + domainOf(random) + ": x" + std::to_string(i) + " :: output_var;\n";
  for (int i = 0; i < kBools; ++i) text += "var bool: b" + std::to_string(i) + " :: output_var;\n";
  text += constraintOf(form, random);
  if (random.below(3) == 0)
    text += constraintOf(kTemplates[random.below(static_cast<int>(std::size(kTemplates)))], random);
  return text + "solve " + goal + ";\n";
}

// What enumeration of all values from -3 to 4 finds; domains are left to the check.
struct Found {
  long long count = 0;
  long long least = 100, greatest = -100;  // of x0
};

Found enumerate(const std::string &text) {
  Syntax syntax;
  Mistake mistake;
  syntax.text = text;
  EXPECT_TRUE(parse(syntax, mistake)) << describe(syntax, mistake) << "\n" << text;
  Found found;
  for (int code = 0; code < 8 * 8 * 8 * 8; ++code) {
    std::vector<long long> values;
    int rest = code;
    for (int i = 0; i < kInts; ++i, rest /= 8) values.push_back(rest % 8 - 3);
    for (int i = 0; i < kBools; ++i, rest /= 2) values.push_back(rest % 2);
    Mistake wrong;
    if (!isSolution(syntax, values, wrong)) continue;
    ++found.count;
    found.least = std::min(found.least, values[0]);
    found.greatest = std::max(found.greatest, values[0]);
  }
  return found;
}

void compare(const std::string &options, const std::string &text) {
  const Ran ran = solve("-a " + options, text);
  ASSERT_EQ(ran.status, 0) << ran.output << text;
  long long found = 0;
  for (std::size_t at = 0; (at = ran.output.find("----------", at)) != std::string::npos; ++at) ++found;
  const long long expected = enumerate(text).count;
  ASSERT_EQ(found, expected) << text;
  const char *end = expected > 0 ? "==========\n" : "=====UNSATISFIABLE=====\n";
  ASSERT_TRUE(ran.output.ends_with(end)) << ran.output << text;
}

void compareAll(unsigned from, unsigned to, const std::string &options) {
  for (unsigned seed = from; seed < to; ++seed) {
    for (const char *form : kTemplates) {
      Random random(seed * 977 + static_cast<unsigned>(form[5]) + static_cast<unsigned>(std::string_view(form).size()));
      ASSERT_NO_FATAL_FAILURE(compare(options, modelOf(form, random)));
    }
  }
}

// The last solution is the best, and proved to be.
void compareOptimum(const std::string &options, const std::string &text, bool minimizes) {
  const Ran ran = solve(options, text);
  ASSERT_EQ(ran.status, 0) << ran.output << text;
  const Found expected = enumerate(text);
  if (expected.count == 0) {
    ASSERT_EQ(ran.output, "=====UNSATISFIABLE=====\n") << text;
    return;
  }
  const std::string best = "x0 = " + std::to_string(minimizes ? expected.least : expected.greatest) + ";\n";
  const std::size_t last = ran.output.rfind("x0 = ");
  ASSERT_NE(last, std::string::npos) << ran.output << text;
  ASSERT_EQ(ran.output.substr(last, best.size()), best) << options << text;
  ASSERT_TRUE(ran.output.ends_with("==========\n")) << ran.output << text;
}

TEST(FznRandomModels, HaveTheOptimumThatEnumerationFinds) {
  static const char *const kOptions[] = {"",        "-f",   "-a -f",     "--restart luby", "-a --restart geometric",
                                         "-f -r 7", "-p 3", "-a -f -p 2"};
  unsigned seed = 1;
  for (const char *form : kTemplates) {
    Random random(++seed * 31);
    const bool minimizes = random.below(2) == 0;
    const std::string annotation =
        random.below(2) == 0 ? "" : ":: int_search([x1,x0,x2],first_fail,indomain_max,complete) ";
    const char *relaxing = random.below(3) > 0 ? "" : ":: relax_and_reconstruct([x1,x0,x2],60) :: restart_luby(3) ";
    const std::string goal = relaxing + annotation + (minimizes ? "minimize x0" : "maximize x0");
    ASSERT_NO_FATAL_FAILURE(
        compareOptimum(kOptions[seed % std::size(kOptions)], modelOf(form, random, goal), minimizes));
  }
}

TEST(FznRandomModels, HaveTheSolutionsThatEnumerationFinds) { compareAll(0, koru::test::rounds(3U), ""); }
TEST(FznRandomModels, HaveThemInFreeSearch) { compareAll(3, 4, "-f"); }
TEST(FznRandomModels, HeavyMany) { compareAll(10, 200, ""); }

}  // namespace
}  // namespace koru::fzn
