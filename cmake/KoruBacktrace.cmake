# SPDX-License-Identifier: MIT
# libbacktrace, with which profiler reports name the file and line of each posting on Linux. It comes with gcc, as a
# static library beside the compiler's own, and is built into the library; without it, places are module and function.
include(CheckCXXSourceCompiles)
include(CMakeDependentOption)

cmake_dependent_option(KORU_BACKTRACE "Find files and lines for profiler reports with libbacktrace, if it is there" ON
                       "CMAKE_SYSTEM_NAME STREQUAL Linux" OFF)

# Sets KORU_HAS_BACKTRACE to 1 or 0.
#
# Only gcc looks for the header where it is, beside headers of gcc that no other compiler should see: it is copied.
set(KORU_HAS_BACKTRACE 0)
if(KORU_BACKTRACE)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libbacktrace.a OUTPUT_VARIABLE koru_backtrace_archive
                  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  get_filename_component(koru_backtrace_folder "${koru_backtrace_archive}" DIRECTORY)
  if(koru_backtrace_folder AND EXISTS "${koru_backtrace_folder}/include/backtrace.h")
    set(koru_backtrace_include "${PROJECT_BINARY_DIR}/backtrace")
    file(COPY "${koru_backtrace_folder}/include/backtrace.h" "${koru_backtrace_folder}/include/backtrace-supported.h"
         DESTINATION "${koru_backtrace_include}")
    set(CMAKE_REQUIRED_INCLUDES "${koru_backtrace_include}")
    set(CMAKE_REQUIRED_FLAGS "-fPIC -shared")
    set(CMAKE_REQUIRED_LIBRARIES backtrace)
    check_cxx_source_compiles(
      "#include <backtrace.h>
       #include <backtrace-supported.h>
       #if !BACKTRACE_SUPPORTED || !BACKTRACE_SUPPORTS_DATA
       #error
       #endif
       backtrace_state *make() { return backtrace_create_state(nullptr, 0, nullptr, nullptr); }"
      KORU_BACKTRACE_WORKS)
    unset(CMAKE_REQUIRED_INCLUDES)
    unset(CMAKE_REQUIRED_FLAGS)
    unset(CMAKE_REQUIRED_LIBRARIES)
    if(KORU_BACKTRACE_WORKS)
      set(KORU_HAS_BACKTRACE 1)
    endif()
  endif()
endif()

# Let the sources of a library target use it.
function(koru_use_backtrace target)
  target_compile_definitions(${target} PRIVATE KORU_HAS_BACKTRACE=${KORU_HAS_BACKTRACE})
  if(KORU_HAS_BACKTRACE)
    target_include_directories(${target} SYSTEM PRIVATE "${PROJECT_BINARY_DIR}/backtrace")
    target_link_libraries(${target} PRIVATE backtrace)
  endif()
endfunction()
