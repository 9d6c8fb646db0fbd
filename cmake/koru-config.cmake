# SPDX-License-Identifier: MIT
# find_package(koru): defines koru::koru (shared) and koru::koru_static.
include("${CMAKE_CURRENT_LIST_DIR}/koru-targets.cmake")

# CMake links a program with a static C++ library as C++, but cannot in a project that is in C only.
get_property(koru_languages GLOBAL PROPERTY ENABLED_LANGUAGES)
list(FIND koru_languages CXX koru_cxx)
if(koru_cxx EQUAL -1)
  set_property(TARGET koru::koru_static APPEND PROPERTY INTERFACE_LINK_LIBRARIES stdc++ m)
endif()
unset(koru_languages)
unset(koru_cxx)
