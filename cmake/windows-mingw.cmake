# SPDX-License-Identifier: MIT
# What the toolchains for Windows share; they set KORU_WINDOWS_ARCH.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${KORU_WINDOWS_ARCH})
set(CMAKE_C_COMPILER ${KORU_WINDOWS_ARCH}-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER ${KORU_WINDOWS_ARCH}-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER ${KORU_WINDOWS_ARCH}-w64-mingw32-windres)

# Programs are looked for on this machine, headers and libraries where the toolchain keeps them, packages also where
# CMAKE_PREFIX_PATH says.
set(CMAKE_FIND_ROOT_PATH /usr/${KORU_WINDOWS_ARCH}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../tools/run_windows.sh;${KORU_WINDOWS_ARCH}")
