// SPDX-License-Identifier: MIT
#include "constraints/arith/weighted_totals.h"

#include <algorithm>
#include <cstddef>

#include "core/int_math.h"

// Elsewhere terms are taken one at a time. Windows keeps the stack less aligned than the registers want it.
#if defined(__x86_64__) && !defined(_WIN32)
#include <immintrin.h>
#define KORU_BY_FOURS 1
#endif

namespace koru::scal_prod {

// From term `first` on, added to the totals of those before it.
static Totals totalsFrom(const Terms &terms, int first, Totals totals) {
  for (int i = first; i < terms.n; ++i) {
    const std::int64_t atMin = std::int64_t{terms.coefficients[i]} * terms.vars[i]->min;
    const std::int64_t atMax = std::int64_t{terms.coefficients[i]} * terms.vars[i]->max;
    const std::int64_t low = atMin < atMax ? atMin : atMax;
    const std::int64_t high = atMin < atMax ? atMax : atMin;
    totals.low += low;
    totals.high += high;
    if (high - low > totals.widest) totals.widest = high - low;
  }
  return totals;
}

#ifdef KORU_BY_FOURS

// Minimum and maximum, low half first.
static_assert(offsetof(CSint, max) == offsetof(CSint, min) + sizeof(int));
[[gnu::target("avx2"), gnu::always_inline]] static inline __m128i boundsOf(const CSint *v) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(&v->min));
}

[[gnu::target("avx2"), gnu::always_inline]] static inline __m256i boundsOfFour(CSint *const *vars) {
  const __m128i first = _mm_unpacklo_epi64(boundsOf(vars[0]), boundsOf(vars[1]));
  const __m128i second = _mm_unpacklo_epi64(boundsOf(vars[2]), boundsOf(vars[3]));
  return _mm256_set_m128i(second, first);
}

// Of each number the second one where `sign` is negative.
[[gnu::target("avx2"), gnu::always_inline]] static inline __m256i choose(__m256i a, __m256i b, __m256i sign) {
  return _mm256_castpd_si256(
      _mm256_blendv_pd(_mm256_castsi256_pd(a), _mm256_castsi256_pd(b), _mm256_castsi256_pd(sign)));
}

// One of the parts may leave 64 bits where their total does not.
static std::int64_t sumOf(const std::int64_t (&parts)[4]) {
  return wrapAdd64(wrapAdd64(parts[0], parts[1]), wrapAdd64(parts[2], parts[3]));
}

// Of so many terms, a multiple of four.
[[gnu::target("avx2")]] static Totals totalsByFours(const Terms &terms, int count) {
  __m256i lows = _mm256_setzero_si256();
  __m256i highs = lows;
  __m256i widests = lows;
  for (int i = 0; i < count; i += 4) {
    const __m256i c = _mm256_cvtepi32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i *>(terms.coefficients + i)));
    const __m256i bounds = boundsOfFour(terms.vars + i);
    const __m256i atMin = _mm256_mul_epi32(bounds, c);
    const __m256i atMax = _mm256_mul_epi32(_mm256_srli_epi64(bounds, 32), c);
    const __m256i low = choose(atMin, atMax, c);
    const __m256i high = choose(atMax, atMin, c);
    const __m256i width = _mm256_sub_epi64(high, low);
    lows = _mm256_add_epi64(lows, low);
    highs = _mm256_add_epi64(highs, high);
    widests = choose(widests, width, _mm256_cmpgt_epi64(width, widests));
  }
  alignas(32) std::int64_t low[4];
  alignas(32) std::int64_t high[4];
  alignas(32) std::int64_t widest[4];
  _mm256_store_si256(reinterpret_cast<__m256i *>(low), lows);
  _mm256_store_si256(reinterpret_cast<__m256i *>(high), highs);
  _mm256_store_si256(reinterpret_cast<__m256i *>(widest), widests);
  return {sumOf(low), sumOf(high), std::max(std::max(widest[0], widest[1]), std::max(widest[2], widest[3]))};
}

static bool goesByFours() { return __builtin_cpu_supports("avx2") != 0; }

#else

static bool goesByFours() { return false; }
static Totals totalsByFours(const Terms &, int) { return {}; }

#endif

// With fewer terms adding up the four parts takes what they save.
constexpr int kFewest = 8;

Totals totalsOf(const Terms &terms) {
  const bool pays = terms.n >= kFewest && goesByFours();  // GCOVR_EXCL_BR_LINE: of the machine
  const int byFours = pays ? terms.n - terms.n % 4 : 0;
  return totalsFrom(terms, byFours, byFours > 0 ? totalsByFours(terms, byFours) : Totals{});
}

}  // namespace koru::scal_prod
