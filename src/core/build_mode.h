// SPDX-License-Identifier: MIT
// What a build was made for, as constants: code for test builds stands in plain `if constexpr`.
#pragma once

namespace koru {

#if defined(KORU_CHECKED) && KORU_CHECKED
constexpr bool kChecked = true;  // invariant checks, injectable allocation failure, no memory pooling
#else
constexpr bool kChecked = false;
#endif

#if defined(KORU_LOGGING) && KORU_LOGGING
constexpr bool kLogging = true;  // a line on the standard error stream per domain change and handler call
#else
constexpr bool kLogging = false;
#endif

}  // namespace koru
