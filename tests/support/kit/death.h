// SPDX-License-Identifier: MIT
// How a program that aborts has ended.
#pragma once

#include <gtest/gtest.h>

#include <csignal>

namespace koru::test {

#ifdef _WIN32
inline const testing::ExitedWithCode kAborted(3);  // Windows has no signals; this is the status that abort leaves
#else
inline const testing::KilledBySignal kAborted(SIGABRT);
#endif

}  // namespace koru::test
