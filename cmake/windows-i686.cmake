# SPDX-License-Identifier: MIT
# Toolchain: 32-bit Windows, built with Debian's g++-mingw-w64-i686-posix and run under wine.
set(KORU_WINDOWS_ARCH i686)
include("${CMAKE_CURRENT_LIST_DIR}/windows-mingw.cmake")
