# SPDX-License-Identifier: MIT
# Installation: headers, both libraries, the CMake package, the pkg-config file, documents and examples.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(KORU_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/koru")

set(KORU_THREADS_TARGETS)
if(TARGET koru_threads)
  set(KORU_THREADS_TARGETS koru_threads koru_threads_static)
endif()
set(KORU_MPI_TARGETS)
if(TARGET koru_mpi)
  set(KORU_MPI_TARGETS koru_mpi)
endif()
install(
  TARGETS koru koru_static ${KORU_THREADS_TARGETS} ${KORU_MPI_TARGETS}
  EXPORT koru-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime # koru.dll
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT runtime
          NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  INCLUDES
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
set(KORU_LEFT_OUT)
if(NOT TARGET koru_mpi)
  set(KORU_LEFT_OUT PATTERN "koru_mpi.h*" EXCLUDE)
endif()
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/include/"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp" ${KORU_LEFT_OUT})

# The names that koru.dll exports, from which Microsoft's lib makes an import library of its own.
if(WIN32)
  file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/exports.txt" names)
  file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/exports_extras.txt" more)
  list(JOIN names "\n  " names)
  list(JOIN more "\n  " more)
  file(WRITE "${PROJECT_BINARY_DIR}/koru.def" "LIBRARY koru\nEXPORTS\n  ${names}\n  ${more}\n")
  install(FILES "${PROJECT_BINARY_DIR}/koru.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
endif()

# With the folders named as here: the headers and the documents speak of docs/ and examples/.
if(NOT KORU_DEBIAN) # where each package has a file of the kind
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documents)
endif()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documents)
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/examples"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT documents
  PATTERN "CMakeLists.txt" EXCLUDE
  PATTERN "*.cmake" EXCLUDE)
if(KORU_MANUAL)
  install(DIRECTORY "${KORU_MANUAL}/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/manual" COMPONENT documents)
endif()

install(EXPORT koru-targets NAMESPACE koru:: DESTINATION "${KORU_CMAKE_DIR}" COMPONENT development)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/koru-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_SOURCE_DIR}/cmake/koru-config.cmake" "${PROJECT_BINARY_DIR}/koru-config-version.cmake"
        DESTINATION "${KORU_CMAKE_DIR}" COMPONENT development)

# The prefix in koru.pc is relative to the file's own place, so an installed tree can be moved.
file(RELATIVE_PATH KORU_PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" KORU_PC_PREFIX "${KORU_PC_PREFIX}")
if(KORU_HAS_BACKTRACE)
  set(KORU_PC_BACKTRACE "-lbacktrace ")
endif()
function(koru_pkgconfig KORU_PC_NAME)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/koru.pc.in" "${PROJECT_BINARY_DIR}/${KORU_PC_NAME}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${KORU_PC_NAME}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
          COMPONENT development)
endfunction()
koru_pkgconfig(koru)
if(TARGET koru_threads)
  set(KORU_PC_DEFINE " -DKORU_THREADS") # for koru.hpp
  koru_pkgconfig(koru_threads)
endif()
if(TARGET koru_mpi)
  set(KORU_PC_DEFINE "")
  set(KORU_PC_LIBRARIES " -lkoru")
  koru_pkgconfig(koru_mpi)
endif()
