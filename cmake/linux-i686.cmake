# SPDX-License-Identifier: MIT
# Toolchain: 32-bit Linux, built with Debian's g++-multilib. Its programs run on this machine, so nothing is cross-built.
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)

# Nobody packages GoogleTest for it.
set(KORU_GTEST_FROM_SOURCES ON)
