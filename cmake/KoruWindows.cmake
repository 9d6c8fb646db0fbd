# SPDX-License-Identifier: MIT
# Windows: how the project's libraries and programs are linked and placed there, by mingw-w64.
if(MINGW)
  # The compiler's own run-time libraries go into the files, so that they need nothing but the system's DLLs.
  add_link_options(-static)
  # A search takes stack for each level. Windows gives a program 1 MB unless it asks; with 16 MB a search
  # can be as deep as in the 8 MB of Linux, whose frames are smaller.
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-Wl,--stack,16777216>)
  # A program looks for koru.dll beside itself.
  if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  endif()
endif()
