# SPDX-License-Identifier: MIT
# KORU_INSTRUMENT: compile and link everything with sanitizers, that for threads or the others, or for measuring coverage.
if(KORU_INSTRUMENT STREQUAL "sanitizers")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # The C examples load a C++ library, whose checks need this part of clang's runtime.
  add_link_options($<$<LINK_LANG_AND_ID:C,Clang>:-fsanitize-link-c++-runtime>)
  link_libraries($<$<LINK_LANG_AND_ID:C,Clang>:stdc++>)
elseif(KORU_INSTRUMENT STREQUAL "threads")
  add_compile_options(-fsanitize=thread)
  add_link_options(-fsanitize=thread)
elseif(KORU_INSTRUMENT STREQUAL "coverage")
  add_compile_options(-fprofile-arcs -ftest-coverage) # --coverage, but a target can take it back
  add_compile_definitions(KORU_COVERAGE)
  add_link_options(--coverage)
elseif(KORU_INSTRUMENT)
  message(FATAL_ERROR "KORU_INSTRUMENT is '${KORU_INSTRUMENT}'; it can be empty, sanitizers, threads or coverage.")
endif()

if(KORU_BUILD_FUZZER)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# koru_read_ahead TARGET: in an instrumented build, read the standard headers that most sources of the library include
# only once. The other builds show that each source includes what it needs.
function(koru_read_ahead target)
  if(KORU_INSTRUMENT)
    target_precompile_headers(${target} PRIVATE <algorithm> <bit> <cstddef> <cstdint> <cstring> <utility>)
  endif()
endfunction()
