#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Install a build into a scratch prefix, move it, and build and run programs against it: with find_package from a C and
# C++ project and from a C-only one, and with pkg-config; each with the shared and the static library.
#
#   run.sh BUILD_DIR SCRATCH_DIR      environment: CMAKE CMAKE_GENERATOR PKG_CONFIG CC CXX,
#                                     in a build for another system TOOLCHAIN TARGET_FLAGS, for Windows EMULATOR OBJDUMP
set -euo pipefail

build=$1
scratch=$2
consumer=$(cd "$(dirname "$0")/consumer" && pwd)
prefix=$scratch/prefix
programs=0

fail() {
  echo "package: $*" >&2
  exit 1
}

install_and_move() {
  rm -rf "$scratch"
  mkdir -p "$scratch"
  "$CMAKE" --install "$build" --prefix "$scratch/first" >"$scratch/install.log"
  mv "$scratch/first" "$prefix"
  pkgconfig=$(dirname "$(find "$prefix" -name koru.pc)")
  libdir=$(dirname "$pkgconfig")
}

# The DLLs that a program built for Windows needs are looked for beside koru.dll and where the compiler has its own.
run() {
  if [[ -z ${EMULATOR:-} ]]; then
    LD_LIBRARY_PATH=$libdir "$1"
  else
    local emulator dlls=$prefix/bin library
    read -ra emulator <<<"$EMULATOR"
    for library in libstdc++-6.dll libwinpthread-1.dll; do
      dlls+=";$(dirname "$("$CXX" -print-file-name="$library")")"
    done
    WINEPATH=$dlls "${emulator[@]}" "$1.exe" | tr -d '\r'
  fi
}

uses_shared() {
  if [[ -z ${EMULATOR:-} ]]; then
    readelf -d "$1" | grep -q 'NEEDED.*libkoru\.so\.3\]'
  else
    [[ $("$OBJDUMP" -p "$1.exe") == *"DLL Name: koru.dll"* ]]
  fi
}

# check PROGRAM shared|static: the expected output, and from the expected library.
check() {
  local program=$1 kind=$2 output
  output=$(run "$program") || fail "$program: exit status $?"
  [[ $output == "$(cat "$consumer/expected.txt")" ]] || fail "$program printed: $output"
  local needed=static
  if uses_shared "$program"; then needed=shared; fi
  [[ $needed == "$kind" ]] || fail "$program uses the $needed library instead of the $kind one"
  programs=$((programs + 1))
  echo "ok: ${program#"$scratch"/} ($kind)"
}

# find_package_project FOLDER LANGUAGES
find_package_project() {
  local folder=$scratch/$1 language library
  "$CMAKE" -S "$consumer" -B "$folder" -DCMAKE_PREFIX_PATH="$prefix" \
    ${TOOLCHAIN:+-DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN"} -DCONSUMER_LANGUAGES="$2"
  "$CMAKE" --build "$folder"
  for language in ${2//;/ }; do
    for library in shared static; do
      check "$folder/consumer_${language}_$library" "$library"
    done
  done
}

# pkg_config_program COMPILER SOURCE NAME FLAGS...
pkg_config_program() {
  local compiler=$1 source=$2 program=$scratch/pkg_config_$3
  shift 3
  # shellcheck disable=SC2046,SC2086 # the flags are words
  "$compiler" ${TARGET_FLAGS:-} "$@" "$consumer/$source" -o "$program" \
    $(PKG_CONFIG_PATH=$pkgconfig "$PKG_CONFIG" --cflags --libs ${static:+--static} koru)
}

pkg_config_programs() {
  local static=
  pkg_config_program "$CC" consumer.c c_shared -std=c99 -Wall -Wextra -Wpedantic -Werror
  check "$scratch/pkg_config_c_shared" shared
  pkg_config_program "$CXX" consumer.cc cxx_shared
  check "$scratch/pkg_config_cxx_shared" shared
  static=yes
  pkg_config_program "$CC" consumer.c c_static -static -std=c99
  check "$scratch/pkg_config_c_static" static
  pkg_config_program "$CXX" consumer.cc cxx_static -static
  check "$scratch/pkg_config_cxx_static" static
}

install_and_move
if grep -rlF "$scratch" "$libdir/cmake" "$pkgconfig"; then fail "the files above name the folder they were installed to"; fi
find_package_project cmake_both "C;CXX"
find_package_project cmake_c C
pkg_config_programs
echo "package: $programs programs built and run"
