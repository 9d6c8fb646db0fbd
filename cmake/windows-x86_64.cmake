# SPDX-License-Identifier: MIT
# Toolchain: 64-bit Windows, built with Debian's g++-mingw-w64-x86-64-posix and run under wine.
set(KORU_WINDOWS_ARCH x86_64)
include("${CMAKE_CURRENT_LIST_DIR}/windows-mingw.cmake")
