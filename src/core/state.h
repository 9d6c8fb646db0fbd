// SPDX-License-Identifier: MIT
// The storage of all mutable state. The library has two flavours of the same sources: in the usual one the state is the
// process's, in the one for threads each thread has its own. Constant initialisation keeps access free of guards.
#pragma once

#if defined(KORU_THREADS) && KORU_THREADS
#define KORU_STATE constinit thread_local
#else
#define KORU_STATE constinit
#endif

namespace koru {

#if defined(KORU_THREADS) && KORU_THREADS
constexpr bool kThreads = true;
#else
constexpr bool kThreads = false;
#endif

}  // namespace koru
