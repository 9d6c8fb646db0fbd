// SPDX-License-Identifier: MIT
// What tests know of the build they are part of.
#pragma once

#if defined(__has_feature)
#define KORU_HAS_FEATURE(feature) __has_feature(feature)
#else
#define KORU_HAS_FEATURE(feature) 0
#endif

namespace koru::test {

// Checked by sanitizers: stack frames are many times larger, and everything takes many times longer.
#if defined(__SANITIZE_ADDRESS__) || KORU_HAS_FEATURE(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// How often tests with random problems go round, and how much they must have seen: with the sanitizers, which look for
// other faults and take some six times as long, a quarter of what other builds do.
template <class Count>
constexpr Count rounds(Count count) {
  return kSanitized ? (count + 3) / 4 : count;
}

#ifdef __OPTIMIZE__
constexpr bool kOptimised = true;
#else
constexpr bool kOptimised = false;
#endif

}  // namespace koru::test
