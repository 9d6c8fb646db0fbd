// SPDX-License-Identifier: MIT
// Formatted output, read back from a stream.
#include <cinttypes>
#include <climits>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <string>

#include "core/narrow.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "support/kit/written_text.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

template <class... Arguments>
std::string text(const char *format, Arguments... arguments) {
  return textOf([=](std::FILE *stream) { cs_fprintf(stream, format, arguments...); });
}

std::string domain(const std::vector<int> &domainValues) { return text("%D", fromValues(domainValues)); }

using FormatTest = SolverTest;

// ----- domains

TEST_F(FormatTest, AConstantIsADigitWithoutBraces) {
  EXPECT_EQ(text("%D", CSINT(4)), "4");
  EXPECT_EQ(text("%D", CSINT(kIntMin)), "-2147483648");
  EXPECT_EQ(domain({7}), "7");
}

TEST_F(FormatTest, AnIntervalOfTwoIsAPairAndALargerOneARange) {
  EXPECT_EQ(text("%D", cs_createCSint(0, 1)), "{0, 1}");
  EXPECT_EQ(text("%D", cs_createCSint(0, 2)), "{0..2}");
  EXPECT_EQ(text("%D", cs_createCSint(0, 9)), "{0..9}");
  EXPECT_EQ(text("%D", cs_createCSint(-5, -3)), "{-5..-3}");
}

TEST_F(FormatTest, RunsOfThreeAreRangesAndPairsAreNot) {
  EXPECT_EQ(domain({1, 2, 3, 5, 7, 8, 9, 10}), "{1..3, 5, 7..10}");
  EXPECT_EQ(domain({1, 5, 6}), "{1, 5, 6}");
  EXPECT_EQ(domain({1, 2, 5}), "{1, 2, 5}");
  EXPECT_EQ(domain({1, 2, 4, 5, 6, 8}), "{1, 2, 4..6, 8}");
  EXPECT_EQ(domain({1, 3}), "{1, 3}");
  EXPECT_EQ(domain({-4, -3, -2, 0, 2}), "{-4..-2, 0, 2}");
}

TEST_F(FormatTest, ABitArrayWithoutHolesPrintsAsOneRun) {
  EXPECT_EQ(domain({1, 2}), "{1, 2}");
  EXPECT_EQ(domain({1, 2, 3}), "{1..3}");
  EXPECT_EQ(domain({1, 2, 3, 4}), "{1..4}");
}

TEST_F(FormatTest, EverySubsetOfASmallRangePrintsItsRuns) {
  for (unsigned mask = 1; mask < 256; ++mask) {
    std::string expected;
    std::vector<int> present;
    for (int i = 0; i < 8; ++i)
      if ((mask >> i & 1) != 0) present.push_back(i - 3);
    for (std::size_t i = 0; i < present.size();) {
      std::size_t last = i;
      while (last + 1 < present.size() && present[last + 1] == present[last] + 1) ++last;
      if (last < i + 2) last = i;
      expected += (expected.empty() ? "" : ", ") + std::to_string(present[i]);
      if (last > i) expected += ".." + std::to_string(present[last]);
      i = last + 1;
    }
    if (present.size() > 1) expected = "{" + expected + "}";
    ASSERT_EQ(domain(present), expected);
  }
}

TEST_F(FormatTest, BitsOutsideTheBoundsArePrintedNowhere) {
  CSint *v = fromValues({1, 2, 3, 4, 6, 7, 8, 9});
  ASSERT_TRUE(narrowMin(v, 3) && narrowMax(v, 7));
  EXPECT_EQ(text("%D", v), "{3, 4, 6, 7}");
  ASSERT_TRUE(narrowMin(v, 6));
  EXPECT_EQ(text("%D", v), "{6, 7}");
}

TEST_F(FormatTest, DomainsAtTheIntLimitsEnd) {
  EXPECT_EQ(text("%D", cs_createCSint(kIntMin, kIntMax)), "{-2147483648..2147483647}");
  EXPECT_EQ(text("%D", cs_createCSint(0, kIntMax)), "{0..2147483647}");
  EXPECT_EQ(domain({kIntMax - 2, kIntMax - 1, kIntMax}), "{2147483645..2147483647}");
  EXPECT_EQ(domain({kIntMax - 3, kIntMax - 1, kIntMax}), "{2147483644, 2147483646, 2147483647}");
  EXPECT_EQ(domain({kIntMin, kIntMin + 1, kIntMin + 3}), "{-2147483648, -2147483647, -2147483645}");
}

// ----- variables

TEST_F(FormatTest, ANamedVariablePrintsItsNameFirst) {
  EXPECT_EQ(text("%T", cs_createNamedCSint(0, 9, "x")), "x: {0..9}");
  EXPECT_EQ(text("%T", cs_createNamedCSint(4, 4, "x")), "x: 4");
  EXPECT_EQ(text("%D", cs_createNamedCSint(0, 9, "x")), "{0..9}");
  EXPECT_EQ(text("%T", cs_createNamedCSint(0, 9, "100%d")), "100%d: {0..9}");
}

TEST_F(FormatTest, AnUnnamedVariablePrintsOnlyItsDomain) { EXPECT_EQ(text("%T", cs_createCSint(0, 9)), "{0..9}"); }

TEST_F(FormatTest, AnArrayPrintsItsVariablesSeparatedByCommas) {
  CSint *array[] = {cs_createNamedCSint(0, 1, "a"), CSINT(7), fromValues({1, 5})};
  EXPECT_EQ(text("[%A]", array, 3), "[a: {0, 1}, 7, {1, 5}]");
  EXPECT_EQ(text("[%A]", array, 1), "[a: {0, 1}]");
}

TEST_F(FormatTest, AnArrayOfNothingPrintsNothing) {
  CSint *array[] = {CSINT(7)};
  EXPECT_EQ(text("[%A]", array, 0), "[]");
  EXPECT_EQ(text("[%A]", array, -3), "[]");
  EXPECT_EQ(text("[%A]", static_cast<CSint **>(nullptr), 3), "[]");
}

TEST_F(FormatTest, NullVariablesPrintAsNull) {
  CSint *array[] = {CSINT(7), nullptr};
  EXPECT_EQ(text("%D", static_cast<CSint *>(nullptr)), "(null)");
  EXPECT_EQ(text("%T", static_cast<CSint *>(nullptr)), "(null)");
  EXPECT_EQ(text("%A", array, 2), "7, (null)");
}

TEST_F(FormatTest, VariableConversionsTakeNoFlagsOrWidth) {
  EXPECT_EQ(text("%D5", CSINT(4)), "45");
  EXPECT_EQ(text("%DD%T%T", CSINT(1), CSINT(2), CSINT(3)), "1D23");
}

// ----- literal text and percent signs

TEST_F(FormatTest, TextWithoutConversionsIsWrittenUnchanged) {
  EXPECT_EQ(text(""), "");
  EXPECT_EQ(text("a line\n"), "a line\n");
}

TEST_F(FormatTest, DoubledPercentSignsStayDoubledBeforeTheFirstConversion) {
  EXPECT_EQ(text("100%% "), "100%% ");
  EXPECT_EQ(text("100%% %D", cs_createCSint(0, 9)), "100%% {0..9}");
  EXPECT_EQ(text("%%d"), "%%d");
  EXPECT_EQ(text("%%%d", 5), "%%5");
}

TEST_F(FormatTest, DoubledPercentSignsStayDoubledAfterVariableConversions) {
  CSint *array[] = {CSINT(7)};
  EXPECT_EQ(text("%D%% ", CSINT(4)), "4%% ");
  EXPECT_EQ(text("%T%%", CSINT(4)), "4%%");
  EXPECT_EQ(text("%A%%x", array, 1), "7%%x");
}

TEST_F(FormatTest, DoubledPercentSignsBecomeSingleAfterStandardConversions) {
  EXPECT_EQ(text("%d%% %D", 50, cs_createCSint(0, 9)), "50% {0..9}");
  EXPECT_EQ(text("%d%%%% a%%b", 50), "50%% a%b");
  EXPECT_EQ(text("%d%%%d", 1, 2), "1%2");
}

// ----- standard conversions

TEST_F(FormatTest, IntegersOfEveryLength) {
  EXPECT_EQ(text("%d %i %u", -5, 6, 7U), "-5 6 7");
  EXPECT_EQ(text("%o %x %X", 8U, 255U, 255U), "10 ff FF");
  EXPECT_EQ(text("%hhd %hd", 300, 70000), "44 4464");
  EXPECT_EQ(text("%ld %lu", LONG_MIN, ULONG_MAX), std::to_string(LONG_MIN) + ' ' + std::to_string(ULONG_MAX));
  EXPECT_EQ(text("%lld %llx", -5000000000LL, 0xfedcba9876543210ULL), "-5000000000 fedcba9876543210");
  EXPECT_EQ(text("%jd %zu %td", std::intmax_t{-1} * 5000000000, SIZE_MAX, std::ptrdiff_t{-7}),
            "-5000000000 " + std::to_string(SIZE_MAX) + " -7");
}

TEST_F(FormatTest, FloatingPointConversions) {
  EXPECT_EQ(text("%f %F", 1.5, 2.5), "1.500000 2.500000");
  EXPECT_EQ(text("%e %E", 1.5, 1.5), "1.500000e+00 1.500000E+00");
  EXPECT_EQ(text("%g %G", 1e-10, 1e-10), "1e-10 1E-10");
  EXPECT_EQ(text("%a", 1.0), "0x1p+0");
  EXPECT_EQ(text("%Lf %lf", 1.25L, 1.25), "1.250000 1.250000");
}

TEST_F(FormatTest, AnUpperCaseAIsOursEvenWhereItWouldBeAHexadecimalFloat) {
  CSint *array[] = {CSINT(7)};
  EXPECT_EQ(text("%A", array, 1), "7");
  EXPECT_EQ(text("%.0A|", 1.0), "0X1P+0|") << "with a precision it is the standard one";
}

TEST_F(FormatTest, CharactersStringsAndPointers) {
  char expected[32];
  std::snprintf(expected, sizeof expected, "%p", static_cast<void *>(expected));
  EXPECT_EQ(text("%c%c", 'a', 'b'), "ab");
  EXPECT_EQ(text("<%s>", "text"), "<text>");
  EXPECT_EQ(text("%p", static_cast<void *>(expected)), expected);
  EXPECT_EQ(text("%ls %lc", L"wide", static_cast<std::wint_t>(L'w')), "wide w");
}

TEST_F(FormatTest, FlagsWidthAndPrecision) {
  EXPECT_EQ(text("%5d|%-5d|%05d|%+d|% d|%#x", 42, 42, 42, 42, 42, 42), "   42|42   |00042|+42| 42|0x2a");
  EXPECT_EQ(text("%.2f|%8.3f|%.3s|%10s|", 3.14159, 3.14159, "abcdef", "right"), "3.14|   3.142|abc|     right|");
  EXPECT_EQ(text("%-+8.3d|", 42), "+042    |");
  EXPECT_EQ(text("%.d|%5.d|", 0, 0), "|     |");
}

TEST_F(FormatTest, WidthAndPrecisionFromTheArguments) {
  EXPECT_EQ(text("%*d|%-*d|", 5, 42, 5, 42), "   42|42   |");
  EXPECT_EQ(text("%.*f|", 2, 3.14159), "3.14|");
  EXPECT_EQ(text("%*.*f|%d", 8, 2, 3.14159, 7), "    3.14|7");
  EXPECT_EQ(text("%*lld|", 12, -5000000000LL), " -5000000000|");
  EXPECT_EQ(text("%*s|", -6, "ab"), "ab    |");
}

TEST_F(FormatTest, StandardAndVariableConversionsTakeTheirArgumentsInOrder) {
  CSint *array[] = {CSINT(7), CSINT(8)};
  EXPECT_EQ(text("%s=%D, %d: %A; %ld %T %.1f", "x", CSINT(1), 2, array, 2, 3L, cs_createNamedCSint(4, 4, "y"), 5.0),
            "x=1, 2: 7, 8; 3 y: 4 5.0");
}

// ----- what is no conversion

TEST_F(FormatTest, WritingThroughAPointerIsRefused) {
  int written = 77;
  EXPECT_EQ(text("ab%n|%d", &written, 5), "ab%n|5");
  EXPECT_EQ(text("ab%lln|%d", &written, 5), "ab%lln|5");
  EXPECT_EQ(written, 77);
}

TEST_F(FormatTest, UnknownConversionsArePrintedAsTheyStandAndTakeAnInt) {
  EXPECT_EQ(text("%y|%d", 1, 5), "%y|5");
  EXPECT_EQ(text("%5q|%d", 1, 5), "%5q|5");
  EXPECT_EQ(text("%y%D%y%D", 1, CSINT(3), 2, CSINT(4)), "%y3%y4");
}

TEST_F(FormatTest, RefusedConversionsTakeOneArgumentOfTheSizeThatTheirLettersSay) {
  const char *const pointer = "text";
  EXPECT_EQ(text("%Ld|%d", 1LL, 5), "%Ld|5");
  EXPECT_EQ(text("%hs|%lp|%d", pointer, pointer, 5), "%hs|%lp|5");
  EXPECT_EQ(text("%jjd|%zzd|%d", std::intmax_t{1}, std::size_t{1}, 5), "%jjd|%zzd|5");
  EXPECT_EQ(text("%hf|%zg|%d %.1f", 1.5, 2.5, 5, 3.5), "%hf|%zg|5 3.5");
  EXPECT_EQ(text("%hc|%Lc|%d", 'a', 'b', 5), "%hc|%Lc|5");
  EXPECT_EQ(text("%ly|%lly|%ty|%d", 1L, 1LL, std::ptrdiff_t{1}, 5), "%ly|%lly|%ty|5");
  EXPECT_EQ(text("%Ly|%.1Lf|%d", 1.5L, 2.5L, 5), "%Ly|2.5|5");
}

TEST_F(FormatTest, TheStarsOfRefusedConversionsTakeTheirArgumentsToo) {
  EXPECT_EQ(text("%*.*y|%d", 8, 2, 1, 5), "%*.*y|5");
}

TEST_F(FormatTest, AnUnfinishedConversionIsPrintedAsItStands) {
  EXPECT_EQ(text("50%"), "50%");
  EXPECT_EQ(text("50%-"), "50%-");
  EXPECT_EQ(text("50%5."), "50%5.");
  EXPECT_EQ(text("50%ll"), "50%ll");
  EXPECT_EQ(text("%5%d", 7), "%57");
}

// ----- streams and failures

TEST_F(FormatTest, PrintfWritesToTheStandardOutput) {
  testing::internal::CaptureStdout();
  cs_printf("%T and %d%%\n", cs_createNamedCSint(0, 9, "x"), 5);
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "x: {0..9} and 5%\n");
}

TEST_F(FormatTest, NullFormatsAndStreamsAreIgnored) {
  testing::internal::CaptureStdout();
  cs_printf(nullptr);
  cs_fprintf(nullptr, "text %d", 5);
  EXPECT_EQ(text(nullptr), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(FormatTest, APieceThatMemoryRefusesIsReportedOnceAndTheRestIsNotPrinted) {
  CSint *v = CSINT(4);
  const AllocationRule rule(refuseOnly(1));
  EXPECT_EQ(text("a %d b %d c %d %D", 1, 2, 3, v), "a 1 b ");
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(AllocationRule::count(), 2);
}

TEST_F(FormatTest, VariablesAndTextNeedNoMemory) {
  CSint *array[] = {fromValues({1, 5, 6, 7}), CSINT(8)};
  const AllocationRule none(refuseAll());
  EXPECT_EQ(text("a %A%% b", array, 2), "a {1, 5..7}, 8%% b");
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(FormatTest, PrintingChangesNoDomain) {
  CSint *v = fromValues({1, 5, 6, 7});
  text("%T", v);
  EXPECT_EQ(values(v), (std::vector<int>{1, 5, 6, 7}));
  EXPECT_EQ(solver::trail.count(), 0);
}

}  // namespace
