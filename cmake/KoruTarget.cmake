# SPDX-License-Identifier: MIT
# What the project's own targets have in common: warnings, and how a library target is compiled and linked.

# The warnings that the code base is kept free of, for both compilers.
function(koru_warnings target)
  target_compile_options(
    ${target}
    PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
            $<$<BOOL:${KORU_WERROR}>:-Werror>)
endfunction()

# koru_wide_clock TARGET: a clock of 64 bits in 32-bit code, which the GNU C library has since 2.34.
function(koru_wide_clock target)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_definitions(${target} PRIVATE _TIME_BITS=64 _FILE_OFFSET_BITS=64)
  endif()
endfunction()

# Exception tables stay on: the library throws nothing, but a callback of the host may throw through it, and the
# guards on the way must run.
function(koru_library target)
  koru_warnings(${target})
  target_include_directories(
    ${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
  koru_use_backtrace(${target})
  target_compile_definitions(${target} PRIVATE $<$<BOOL:${KORU_LOGGING}>:KORU_LOGGING=1>)
  # Fields that are written one after the other are not worth a vector register: it takes more to fill one.
  target_compile_options(${target} PRIVATE -fno-rtti -fno-semantic-interposition -fno-tree-slp-vectorize)
  # The library throws nothing and catches nothing: what the compiler adds for that is not to count as branches.
  if(KORU_INSTRUMENT STREQUAL "coverage")
    target_compile_options(${target} PRIVATE -fno-exceptions)
    # A branch counts once, not once for each place that a function is written out in.
    target_compile_definitions(${target} PRIVATE always_inline=unused flatten=unused)
  endif()
  # Only by frame pointers can 32-bit Windows follow the library's calls back to the host's.
  if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(${target} PRIVATE -fno-omit-frame-pointer)
  endif()
  koru_wide_clock(${target})
  set_target_properties(
    ${target}
    PROPERTIES POSITION_INDEPENDENT_CODE ON
               C_VISIBILITY_PRESET hidden
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# What is shipped is compiled for speed, in release builds: 2 % fewer instructions than with -O2. A function begins where
# a cache line does, which takes 0.987 of the time, and a change of one does not move all others.
function(koru_fast target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O3;-falign-functions=64>)
  koru_guide(${target})
endfunction()

# Compile by counts of what runs (KORU_GUIDE). A build that counts leaves a file for each source in KORU_COUNTS. Files and
# functions go by the source alone, so that all libraries of the same sources use them, in whichever folder they are
# made; one that differs in a library is compiled without. Only jumps are counted, no values, among which are addresses:
# so the counts are the same each time.
function(koru_guide target)
  if(NOT KORU_GUIDE)
    return()
  endif()
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    message(FATAL_ERROR "KORU_GUIDE is for gcc.")
  endif()
  target_compile_options(${target} PRIVATE "-fprofile-prefix-path=${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/${target}.dir"
                                           --param=profile-func-internal-id=1)
  if(KORU_GUIDE STREQUAL "count")
    target_compile_options(${target} PRIVATE "-fprofile-generate=${KORU_COUNTS}" -fprofile-update=single -fno-profile-values)
    target_link_options(${target} PUBLIC -fprofile-generate)
  elseif(KORU_GUIDE STREQUAL "use")
    target_compile_options(${target} PRIVATE "-fprofile-use=${KORU_COUNTS}" -fno-profile-values -fprofile-partial-training
                                             -Wno-missing-profile -Wno-error=coverage-mismatch)
  else()
    message(FATAL_ERROR "KORU_GUIDE is '${KORU_GUIDE}'; it can be empty, count or use.")
  endif()
endfunction()

# Let the shared library export the names listed in cmake/exports.txt and cmake/exports_extras.txt and no others.
function(koru_export_list target)
  set(lists "${PROJECT_SOURCE_DIR}/cmake/exports.txt" "${PROJECT_SOURCE_DIR}/cmake/exports_extras.txt")
  set(script "${PROJECT_BINARY_DIR}/koru.map")
  set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${lists})
  set(names)
  foreach(list IN LISTS lists)
    file(STRINGS "${list}" more)
    list(APPEND names ${more})
  endforeach()
  list(JOIN names ";\n    " KORU_EXPORTS)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/koru.map.in" "${script}" @ONLY)
  target_link_options(${target} PRIVATE "-Wl,--version-script=${script}" -Wl,-Bsymbolic-functions -Wl,--as-needed)
  # A sanitized library finds the sanitizers' own symbols in the program that loads it.
  if(NOT KORU_INSTRUMENT STREQUAL "sanitizers")
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
endfunction()
