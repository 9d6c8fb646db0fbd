# SPDX-License-Identifier: MIT
# Gecode, for the comparison benchmarks: defines Gecode::Gecode. Debian package: libgecode-dev.
include(FindPackageHandleStandardArgs)

find_path(Gecode_INCLUDE_DIR gecode/int.hh)
set(Gecode_LIBRARIES)
# Order matters to static linking: each library before those it uses.
foreach(part minimodel search int kernel support)
  find_library(Gecode_${part}_LIBRARY gecode${part})
  mark_as_advanced(Gecode_${part}_LIBRARY)
  list(APPEND Gecode_LIBRARIES "${Gecode_${part}_LIBRARY}")
endforeach()
mark_as_advanced(Gecode_INCLUDE_DIR)

find_package_handle_standard_args(
  Gecode REQUIRED_VARS Gecode_INCLUDE_DIR Gecode_minimodel_LIBRARY Gecode_search_LIBRARY Gecode_int_LIBRARY
                       Gecode_kernel_LIBRARY Gecode_support_LIBRARY)

if(Gecode_FOUND AND NOT TARGET Gecode::Gecode)
  add_library(Gecode::Gecode INTERFACE IMPORTED)
  target_include_directories(Gecode::Gecode INTERFACE "${Gecode_INCLUDE_DIR}")
  target_link_libraries(Gecode::Gecode INTERFACE ${Gecode_LIBRARIES})
endif()
