#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Use Koru as other projects would, from C99 and from C++20, each with the shared and the static library.
#
#   run.sh installed BUILD_DIR SCRATCH_DIR    install a build, move it, and use that: with find_package from a C and C++
#                                             project and from a C-only one, with pkg-config from a Makefile, by hand,
#                                             and from Python by ctypes; documents and examples are looked at, too
#   run.sh archive ARCHIVE SCRATCH_DIR        unpack an archive, and use that in the same ways
#   run.sh system PREFIX SCRATCH_DIR          use what is installed in the system, in the same ways
#   run.sh sources SOURCE_DIR SCRATCH_DIR     sources as a part of a project: with add_subdirectory, and with
#                                             FetchContent from an archive
#
# environment: CMAKE CMAKE_GENERATOR PKG_CONFIG CC CXX,
#              in a build for another system TOOLCHAIN TARGET_FLAGS, for Windows EMULATOR OBJDUMP
set -euo pipefail

mode=$1
origin=$2
scratch=$3
consumer=$(cd "$(dirname "$0")/consumer" && pwd)
prefix=$scratch/prefix
libdir=
programs=0

fail() {
  echo "package: $*" >&2
  exit 1
}

install_and_move() {
  "$CMAKE" --install "$origin" --prefix "$scratch/first" >"$scratch/install.log"
  mv "$scratch/first" "$prefix"
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
    readelf -d "$1" | grep -qE 'NEEDED.*libkoru(_threads)?\.so\.3\]'
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

# cmake_project NAME LANGUAGES ARGUMENT...
cmake_project() {
  local folder=$scratch/$1 languages=$2 language library
  shift 2
  "$CMAKE" -S "$consumer" -B "$folder" -DCONSUMER_LANGUAGES="$languages" -DCMAKE_BUILD_TYPE=Debug \
    ${TOOLCHAIN:+-DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN"} "$@"
  "$CMAKE" --build "$folder"
  for language in ${languages//;/ }; do
    for library in shared static; do
      check "$folder/consumer_${language}_$library" "$library"
    done
  done
}

# make_program c|cxx shared|static: by the Makefile, which knows the installed library from pkg-config alone.
make_program() {
  local program=$scratch/make_$1_$2 source=$consumer/consumer.c static=no
  if [[ $1 == cxx ]]; then source=$consumer/consumer.cc; fi
  if [[ $2 == static ]]; then static=yes; fi
  PKG_CONFIG_PATH=$pkgconfig make -s -f "$consumer/Makefile" "$1" CC="$CC ${TARGET_FLAGS:-}" CXX="$CXX ${TARGET_FLAGS:-}" \
    PKG_CONFIG="$PKG_CONFIG" SOURCE="$source" PROGRAM="$program" STATIC=$static
  check "$program" "$2"
}

# The static library in a C program that is otherwise linked as usual, with the libraries that the README names.
program_by_hand() {
  local program=$scratch/by_hand libraries=(-lstdc++ -lm)
  if grep -q -e -lbacktrace "$pkgconfig/koru.pc"; then libraries=(-lbacktrace "${libraries[@]}"); fi
  # shellcheck disable=SC2086 # the flags are words
  "$CC" ${TARGET_FLAGS:-} -DKORU_STATIC "$consumer/consumer.c" -I"$prefix/include" "$libdir/libkoru.a" "${libraries[@]}" \
    -o "$program"
  check "$program" static
}

# The shared library alone, from Python.
program_of_ctypes() {
  local output
  output=$(python3 -B "$consumer/consumer.py" "$libdir/libkoru.so.3") || fail "consumer.py: exit status $?"
  [[ $output == "$(cat "$consumer/expected.txt")" ]] || fail "consumer.py printed: $output"
  programs=$((programs + 1))
  echo "ok: consumer.py (shared)"
}

# The flavour for threads, where it was built: both libraries by pkg-config.
programs_with_threads() {
  local program=$scratch/threads
  [[ -f $pkgconfig/koru_threads.pc ]] || return 0
  # shellcheck disable=SC2086,SC2046 # the flags are words
  "$CC" ${TARGET_FLAGS:-} "$consumer/consumer.c" $(PKG_CONFIG_PATH=$pkgconfig "$PKG_CONFIG" --cflags --libs koru_threads) \
    -o "${program}_shared"
  # shellcheck disable=SC2086,SC2046
  "$CC" ${TARGET_FLAGS:-} -DKORU_STATIC "$consumer/consumer.c" -I"$prefix/include" "$libdir/libkoru_threads.a" \
    $(PKG_CONFIG_PATH=$pkgconfig "$PKG_CONFIG" --static --libs-only-l koru_threads | sed 's/-lkoru_threads//') \
    -o "${program}_static"
  check "${program}_shared" shared
  check "${program}_static" static
}

# What the headers name of documents and examples, and what the documents link to, is there.
check_documents() {
  local file name names=0
  documents=$prefix/share/doc/koru
  while IFS=: read -r file name; do
    [[ -f $documents/$name ]] || fail "${file##*/} names $name, which is not installed"
    names=$((names + 1))
  done < <(grep -roE '(docs|examples)/[a-z_/-]+\.[a-z]+' "$prefix"/include/koru*)
  ((names > 0)) || fail "the headers name no document"
  while IFS=: read -r file name; do
    [[ -f ${file%/*}/${name#"]("} ]] || fail "${file##*/} links to ${name#"]("}, which is not installed"
    names=$((names + 1))
  done < <(grep -roE --include='*.md' '\]\([^)#:]+' "$documents")
  echo "ok: $names names of documents and examples"
}

# The installed examples as somebody would compile them who copies one.
compile_examples() {
  local source program examples=0
  for source in "$documents"/examples/*.c; do
    program=$scratch/example_$(basename "$source" .c)
    PKG_CONFIG_PATH=$pkgconfig make -s -f "$consumer/Makefile" c CC="$CC ${TARGET_FLAGS:-}" PKG_CONFIG="$PKG_CONFIG" \
      SOURCE="$source" PROGRAM="$program"
    examples=$((examples + 1))
  done
  echo "ok: $examples examples compiled"
}

# use_prefix: the installation in `prefix`, in every way.
use_prefix() {
  local language library
  pkgconfig=$(dirname "$(find "$prefix" -name koru.pc)")
  libdir=$(dirname "$pkgconfig")
  if grep -rlF "$scratch" "$libdir/cmake" "$pkgconfig"; then fail "the files above name the folder they were installed to"; fi
  cmake_project package "C;CXX" -DKORU_FROM=package -DCMAKE_PREFIX_PATH="$prefix"
  cmake_project package_c C -DKORU_FROM=package -DCMAKE_PREFIX_PATH="$prefix"
  for language in c cxx; do
    for library in shared static; do make_program $language $library; done
  done
  if [[ -z ${EMULATOR:-} ]]; then
    program_by_hand
    program_of_ctypes
  fi
  programs_with_threads
  check_documents
  compile_examples
}

installed() {
  install_and_move
  use_prefix
}

archive() {
  mkdir "$prefix"
  (cd "$scratch" && "$CMAKE" -E tar xf "$origin")
  mv "$scratch"/koru-*/* "$prefix"
  use_prefix
}

system() {
  prefix=$origin
  use_prefix
}

sources() {
  cmake_project folder C -DKORU_FROM=folder -DKORU_SOURCES="$origin"
  (cd "$origin" && "$CMAKE" -E tar czf "$scratch/koru.tar.gz" CMakeLists.txt LICENSE cmake docs examples include profile src)
  cmake_project fetch "C;CXX" -DKORU_FROM=fetch -DKORU_ARCHIVE="file://$scratch/koru.tar.gz"
}

rm -rf "$scratch"
mkdir -p "$scratch"
"$mode"
echo "package: $programs programs built and run"
