// SPDX-License-Identifier: MIT
#include "constraints/arith/weighted_totals.h"

#include <cstddef>
#include <cstring>

#include "core/int_math.h"

// Elsewhere terms are taken one at a time. Windows keeps the stack less aligned than the registers want it.
#if defined(__x86_64__) && !defined(_WIN32)
#include <immintrin.h>
#define KORU_BY_FOURS 1
#endif

namespace koru::scal_prod {

// From term `first` on, added to the totals of those before it. Out of line, so that nobody else saves registers for
// it.
[[gnu::noinline]] static void addTermsFrom(const Terms &terms, int first, Totals &totals) {
  std::int64_t low = totals.low;
  std::int64_t high = totals.high;
  std::int64_t widest = totals.widest;
  for (int i = first; i < terms.n; ++i) {
    const std::int64_t atMin = std::int64_t{terms.coefficients[i]} * terms.vars[i]->min;
    const std::int64_t atMax = std::int64_t{terms.coefficients[i]} * terms.vars[i]->max;
    const std::int64_t least = atMin < atMax ? atMin : atMax;
    const std::int64_t greatest = atMin < atMax ? atMax : atMin;
    low += least;
    high += greatest;
    if (greatest - least > widest) widest = greatest - least;
  }
  totals = {low, high, widest};
}

#ifdef KORU_BY_FOURS

// Minimum and maximum, low half first.
static_assert(offsetof(CSint, max) == offsetof(CSint, min) + sizeof(int));
static std::int64_t boundsOf(const CSint *v) {
  std::int64_t both = 0;
  std::memcpy(&both, reinterpret_cast<const char *>(v) + offsetof(CSint, min), sizeof both);
  return both;
}

[[gnu::target("avx2"), gnu::always_inline]] static inline __m128i boundsOfTwo(CSint *const *vars) {
  return _mm_insert_epi64(_mm_cvtsi64_si128(boundsOf(vars[0])), boundsOf(vars[1]), 1);
}

// Of each number the second one where `sign` is negative.
[[gnu::target("avx2"), gnu::always_inline]] static inline __m256i choose(__m256i a, __m256i b, __m256i sign) {
  return _mm256_castpd_si256(
      _mm256_blendv_pd(_mm256_castsi256_pd(a), _mm256_castsi256_pd(b), _mm256_castsi256_pd(sign)));
}

[[gnu::target("avx2"), gnu::always_inline]] static inline __m256i greater(__m256i a, __m256i b) {
  return choose(a, b, _mm256_cmpgt_epi64(b, a));
}

// The sums of the four numbers of each. One of the parts may leave 64 bits where their total does not.
[[gnu::target("avx2"), gnu::always_inline]] static inline __m128i sumsOf(__m256i a, __m256i b) {
  const __m256i two = _mm256_add_epi64(_mm256_unpacklo_epi64(a, b), _mm256_unpackhi_epi64(a, b));
  return _mm_add_epi64(_mm256_castsi256_si128(two), _mm256_extracti128_si256(two, 1));
}

[[gnu::target("avx2"), gnu::always_inline]] static inline std::int64_t greatestOf(__m256i numbers) {
  const __m256i two = greater(numbers, _mm256_permute4x64_epi64(numbers, 0b1110));
  return _mm256_extract_epi64(greater(two, _mm256_unpackhi_epi64(two, two)), 0);
}

// Of the first terms, a multiple of four. Each has its least value and its width.
[[gnu::target("avx2")]] static void addTermsByFours(const Terms &terms, Totals &totals) {
  const unsigned byFours = static_cast<unsigned>(terms.n) / 4 * 4;
  const int *coefficient = terms.coefficients;
  CSint *const *vars = terms.vars;
  __m256i lows = _mm256_setzero_si256();
  __m256i widths = lows;
  __m256i widests = lows;
  for (const int *end = coefficient + byFours; coefficient != end; coefficient += 4, vars += 4) {
    const __m256i c = _mm256_cvtepi32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i *>(coefficient)));
    const __m256i min = _mm256_set_m128i(boundsOfTwo(vars + 2), boundsOfTwo(vars));
    const __m256i max = _mm256_srli_epi64(min, 32);
    const __m256i low = _mm256_mul_epi32(choose(min, max, c), c);
    const __m256i width = _mm256_mul_epu32(_mm256_sub_epi32(max, min), _mm256_abs_epi32(c));
    lows = _mm256_add_epi64(lows, low);
    widths = _mm256_add_epi64(widths, width);
    widests = greater(widests, width);
  }
  const __m128i sums = sumsOf(lows, widths);
  totals.low = _mm_cvtsi128_si64(sums);
  totals.high = wrapAdd64(totals.low, _mm_extract_epi64(sums, 1));
  totals.widest = greatestOf(widests);
  if (terms.n % 4 == 0) return;
  _mm256_zeroupper();  // the compiler leaves it out before a call that it makes a jump
  addTermsFrom(terms, static_cast<int>(byFours), totals);
}

static bool goesByFours() { return __builtin_cpu_supports("avx2") != 0; }

#else

static bool goesByFours() { return false; }
static void addTermsByFours(const Terms &, Totals &) {}

#endif

// With fewer terms adding up the four parts takes what they save.
constexpr int kFewest = 8;

void computeTotals(const Terms &terms, Totals &totals) {
  if (terms.n >= kFewest && goesByFours()) return addTermsByFours(terms, totals);  // GCOVR_EXCL_BR_LINE: of the machine
  totals = {};
  addTermsFrom(terms, 0, totals);
}

}  // namespace koru::scal_prod
