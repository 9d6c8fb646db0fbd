// SPDX-License-Identifier: MIT
// Whether this build is instrumented, and so slower and larger.
#pragma once

namespace koru::traces {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

}  // namespace koru::traces
