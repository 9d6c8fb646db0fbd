# SPDX-License-Identifier: MIT
# What CPack makes: Debian packages, one for each component, and archives of everything. For builds that install to /usr
# (the preset "packages"); see docs/packages.md.
set(CPACK_PACKAGE_NAME koru)
set(CPACK_PACKAGE_VENDOR "The Koru authors")
set(CPACK_PACKAGE_CONTACT "The Koru authors <koru@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 1)
string(TOLOWER "koru-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" CPACK_PACKAGE_FILE_NAME)
set(CPACK_COMPONENTS_ALL runtime development tools minizinc documents python)
set(CPACK_COMPONENT_TOOLS_GROUP tools)
set(CPACK_COMPONENT_MINIZINC_GROUP tools)
if(NOT KORU_DEBIAN)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL python)
endif()
if(NOT TARGET fzn-koru)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL minizinc)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(about "Koru solves finite-domain constraint problems over 32-bit signed integers:\nschedules, rosters, configurations, puzzles.")
# koru_deb(COMPONENT PACKAGE SECTION TEXT): a package, its copyright and its changelog.
function(koru_deb component package section text)
  string(TOUPPER ${component} name)
  set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${name}_DESCRIPTION "${about}\n.\n${text}" PARENT_SCOPE)
  install(
    FILES "${PROJECT_SOURCE_DIR}/packaging/copyright" "${PROJECT_BINARY_DIR}/changelog.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}"
    COMPONENT ${component})
endfunction()

if(KORU_DEBIAN)
  execute_process(
    COMMAND gzip -9nc "${PROJECT_SOURCE_DIR}/packaging/changelog" OUTPUT_FILE "${PROJECT_BINARY_DIR}/changelog.gz"
                                                                              COMMAND_ERROR_IS_FATAL ANY)
  koru_deb(runtime libkoru3 libs "This package has the shared libraries.")
  koru_deb(
    development libkoru-dev libdevel "This package has the headers for C and C++, the static libraries, and files\nfor CMake and pkg-config.")
  koru_deb(tools koru-tools devel "This package has koru-profile and koru-tree, which show profiles and trees of\nsearches, and fzn-koru, the solver for MiniZinc.")
  koru_deb(python python3-koru python "This package has the module koru for Python 3.")
  koru_deb(documents koru-doc doc "This package has the documents and the examples in C, C++ and Python.")
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/runtime/triggers")
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libkoru3 (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libkoru3 (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS minizinc)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), libkoru3 (>= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/python/postinst"
                                                "${PROJECT_SOURCE_DIR}/packaging/python/prerm")
  set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_ARCHITECTURE all)
  install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/python/koru"
    DESTINATION lib/python3/dist-packages
    COMPONENT python
    FILES_MATCHING
    PATTERN "*.py"
    PATTERN "py.typed"
    PATTERN "__pycache__" EXCLUDE)
endif()
# Archives are unpacked anywhere.
file(WRITE "${PROJECT_BINARY_DIR}/archives.cmake"
     "if(NOT CPACK_GENERATOR STREQUAL \"DEB\")\n  set(CPACK_PACKAGING_INSTALL_PREFIX \"/\")\nendif()\n")
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_BINARY_DIR}/archives.cmake")
include(CPack)
